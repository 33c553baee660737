#pragma once

#include "callClient.h"
#include "gqtool/map/commandMap.h"

#include <QStringList>

// Payloads of requests, made from words of the command line. A function that fails returns false and the reason in
// `error`.

bool readInts(const QStringList& words, std::vector<int>& values, QString& error);

// Returns the integers as 4 bytes each, without a count.
QByteArray intsPayload(const std::vector<int>& values);

// Returns the form of one of the names replyForms().
ReplyForm replyFormOf(const QString& name);

// Makes the request of a command of the map: its number, the payload, and the form of the reply.
bool readMapped(const MappedCommand& command, const QStringList& words, CallRequest& request, QString& error);
