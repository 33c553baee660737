#pragma once

#include "callClient.h"
#include "gqtool/map/commandMap.h"

#include <QStringList>

// Payloads of requests from the words of the command line. Those that return bool return false and the reason in `error`.

bool readInts(const QStringList& words, std::vector<int>& values, QString& error);

// 4 bytes each, without a count.
QByteArray intsPayload(const std::vector<int>& values);

// Reads the payload that the map gives the command, and sets command and form of the reply.
bool readMapped(const MappedCommand& command, const QStringList& words, CallRequest& request, QString& error);
