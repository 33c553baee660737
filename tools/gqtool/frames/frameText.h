#pragma once

#include "frameStream.h"
#include "payloadForm.h"
#include "shared/text.h"

#include <QString>

// "systemTime, sequence 4, 4 bytes: 1700000000": name or number of the command, and the payload. A frame does not
// state the form of its payload, which is therefore shown in the form that the map of `source` gives it, otherwise in the
// standard form that its bytes fit.
Text frameText(const Frame& frame, const FrameSource& source = {});

// "systemTime", the name in the map of `source`, or "command 0x35".
Text commandLabel(unsigned char command, const FrameSource& source);

// Says that the length of an item is in the wrong byte order, if it has a swappedLength.
Text swappedText(const StreamItem& item);

// Any item of a stream on one line: a frame as above, garbage as hex, faults in words.
Text itemText(const StreamItem& item, const FrameSource& source = {});
