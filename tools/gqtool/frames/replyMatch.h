#pragma once

#include "frameStream.h"
#include "shared/text.h"

// Returns true if the sequence of a reply belongs to the request. Servers return the sequence of the request, return 0,
// or count their own frames: `lastSequence` is that of the server's previous frame, or -1 if there is none.
bool isSequenceOfReply(const Frame& reply, const Frame& request, int lastSequence);

// Says why a frame cannot be the reply to the request; empty if it can. A client compares neither command nor sequence
// and takes it.
Text mismatchText(const Frame& reply, const Frame& request, int lastSequence);

// Returns true if the reply is equal to the request, as some servers reply to some commands.
bool isRepeated(const Frame& reply, const Frame& request);

// Returns true if the reply repeats the request, and a server that knows the command would not.
bool isEcho(const Frame& reply, const Frame& request);

// The remark on such a reply.
Text echoText();
