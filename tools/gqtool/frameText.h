#pragma once

#include "frameStream.h"

#include <QJsonObject>
#include <QString>

// "systemTime, sequence 4, 4 bytes: 1700000000": name or number of the command, and the payload, which is told by the
// standard form that its bytes fit: the frame itself does not say which one it is.
QString frameText(const Frame& frame);

// Whatever stands in a stream, on one line: a frame as above, garbage as hex, faults in words.
QString itemText(const StreamItem& item);

// The same for scripts: kind, offset, size; the fields of the header, the payload in hex, the code of an error frame.
QJsonObject itemJson(const StreamItem& item);
