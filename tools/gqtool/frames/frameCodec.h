#pragma once

#include "gqtool/records/recordDecoding.h"
#include "payloadForm.h"

#include <QJsonValue>
#include <QStringList>

// Decodes the bytes of one direction, like decode() for records. Continues after each fault.
Decoded decodeFrames(const QByteArray& bytes, const FrameSource& source);

// Encodes the parts that decodeFrames returns. Returns the errors, each with the path of its field; empty on success.
// Only the fields of the frame are used: offset, form, content and rest are ignored.
QStringList encodeFrames(const QJsonValue& parts, QByteArray& bytes);
