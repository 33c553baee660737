#pragma once

#include "captureFile.h"
#include "traceOutput.h"

#include <QString>

#include <netinet/in.h>

// Relay between clients and a station until `stopper` becomes readable. Bytes are passed on unchanged and immediately,
// before they are printed and captured.
//   listener  a bound non-blocking socket; for streams, a listening one
// Return false, with errno, if the relay itself fails.

// Also relays the end of a stream, a close, a reset, and that the station is unreachable.
bool relayStreams(int listener, const sockaddr_in& station, int stopper, TraceOutput& output, CaptureFile& capture);

// Each client has a socket of its own to the station, so that replies reach the right client.
bool relayDatagrams(int listener, const sockaddr_in& station, int stopper, TraceOutput& output, CaptureFile& capture);
