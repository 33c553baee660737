#pragma once

#include <QByteArray>

// The front-end processor that the simulated station serves: a node, its lines to field devices, and the signals behind
// them. What the fields of the records mean is the station's own, as in stationProtocol.h.

// The bytes that answer a front-end command; empty for any other.
QByteArray frontEndReply(unsigned char command);
