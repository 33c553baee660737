#pragma once

#include <QString>

#include <tcpApi.h>

// A heading in front of the lines that follow.
void say(const QString& text);

// One request and its result: what was called, the bytes in both directions since the last one, what came back, and
// whether that is right.
void show(const QString& request, int result, bool asExpected, const QString& meaning);

// A request of the station: a command and one integer.
QByteArray stationRequest(gqdb::CTcpAPI& client, unsigned char command, int value);

// Asks the station for records. 1 and the bytes of its byte list, or the code of the failure and none.
int fetch(gqdb::CTcpAPI& client, unsigned char command, QByteArray& bytes);
