#pragma once

#include <QString>

#include <tcpApi.h>

// Prints a heading for the lines that follow.
void printHeading(const QString& text);

// Prints a request and its result: the request, the bytes in both directions since the last one, the result, and whether
// it is the expected one.
void show(const QString& request, int result, bool asExpected, const QString& meaning);

// Makes a request of the station: a command and one integer.
QByteArray stationRequest(gqdb::CTcpAPI& client, unsigned char command, int value);

// Requests records. Returns 1 and the bytes of the byte list, or the code of the failure and no bytes.
int fetch(gqdb::CTcpAPI& client, unsigned char command, QByteArray& bytes);
