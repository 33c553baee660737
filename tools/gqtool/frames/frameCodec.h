#pragma once

#include "gqtool/records/recordDecoding.h"
#include "payloadForm.h"

#include <QJsonValue>
#include <QStringList>

// Decodes the bytes of one direction, as decode() does records. Continues after every fault.
Decoded decodeFrames(const QByteArray& bytes, const FrameSource& source);

// Makes bytes from the parts that decodeFrames finds. Returns the errors, each with the path of its field; empty on
// success. The bytes follow from the fields of the frame alone: offset, form, content and rest are ignored.
QStringList encodeFrames(const QJsonValue& parts, QByteArray& bytes);
