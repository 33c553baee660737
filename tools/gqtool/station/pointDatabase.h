#pragma once

#include <QByteArray>

// The small point database that the simulated station serves: records in their byte forms, made for each request, so
// that values change. The station defines what the fields mean, as in stationProtocol.h.

// Returns the reply to a database command; empty for other commands.
QByteArray databaseReply(unsigned char command);
