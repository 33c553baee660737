#pragma once

#include <QByteArray>

// The front-end processor that the simulated station serves: a node, its lines to field devices, and their signals.
// The station defines what the fields mean, as in stationProtocol.h.

// Returns the reply to a front-end command; empty for other commands.
QByteArray frontEndReply(unsigned char command);
