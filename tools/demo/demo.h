#pragma once

#include <QString>

#include <tcpApi.h>

// Prints a heading for the lines that follow.
void printHeading(const QString& text);

// Prints a request, the bytes in both directions since the previous one, and the result; marks an unexpected result.
void show(const QString& request, int result, bool asExpected, const QString& meaning);

// Returns the frame of a request to the station: a command and one integer.
QByteArray stationRequest(gqdb::CTcpAPI& client, unsigned char command, int value);

// Requests records. Returns 1 and the bytes of the byte list, or the code of the failure and no bytes.
int fetch(gqdb::CTcpAPI& client, unsigned char command, QByteArray& bytes);
