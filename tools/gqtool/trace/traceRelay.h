#pragma once

#include "traceOutput.h"

#include <QString>

#include <netinet/in.h>

// "127.0.0.1:5000"
QString endpointText(const sockaddr_in& address);

// Stand between clients and a station until `stopper` becomes readable. What comes from one side goes to the other
// unchanged and at once, ahead of being told.
//   listener  a bound socket that does not block; a listening one for streams
// False when the relay itself fails, with errno.

// Ends pass too: a side that ends its stream, that closes, that resets; and a station that can't be reached.
bool relayStreams(int listener, const sockaddr_in& station, int stopper, TraceOutput& output);

// Each client has a socket of its own to the station, so that replies find back.
bool relayDatagrams(int listener, const sockaddr_in& station, int stopper, TraceOutput& output);
