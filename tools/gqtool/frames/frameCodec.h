#pragma once

#include "gqtool/records/decodeListener.h"
#include "gqtool/records/decoding.h"
#include "payloadForm.h"

#include <QStringList>

// Decodes the bytes of one direction, like decode() for records. Continues after each fault. The result is that of a
// client that reads the same bytes.
Decoding decodeFrames(ByteWindow& bytes, const FrameSource& source, DecodeListener& listener, size_t mostFaults);

// Encodes an item that decodeFrames has found. Returns the errors, each with the path of its field; empty on success.
// Only the fields of the frame are used: offset, form, content and rest are ignored.
QStringList encodeFrame(const Json& part, const QString& path, QByteArray& bytes);
