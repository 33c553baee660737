#pragma once

#include "frameStream.h"

#include <QJsonObject>
#include <QString>

// "systemTime, sequence 4, 4 bytes: 1700000000": name or number of the command, and the payload, which is told by the
// standard form that its bytes fit: the frame itself does not say which one it is.
QString frameText(const Frame& frame);

// Whatever stands in a stream, on one line: a frame as above, garbage as hex, faults in words.
QString itemText(const StreamItem& item);

// The same for scripts, as tests/golden/README.md tells it; of frames, the fields that are known without the form of
// the payload.
QJsonObject itemJson(const StreamItem& item);
