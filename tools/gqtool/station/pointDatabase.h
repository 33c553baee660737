#pragma once

#include <QByteArray>

// The small point database that the simulated station serves: records in their byte forms, made anew for each request,
// so that values move. What the fields of the records mean is the station's own, as in stationProtocol.h.

// The bytes that answer a database command; empty for any other.
QByteArray databaseReply(unsigned char command);
