#pragma once

#include "gqtool/records/recordDecoding.h"

#include <QJsonValue>
#include <QStringList>

// What the bytes of frames do not tell themselves. tests/golden/README.md has the forms of payloads.
struct FrameSource {
    bool isUdp = false;
    bool isRequest = false;
    QString form; // of the payloads of commands that are no business of the library; empty if unknown
};

// Takes the frames of one direction apart, as decode() does records. Goes on behind every fault.
Decoded decodeFrames(const QByteArray& bytes, const FrameSource& source);

// The way back, of the parts that decodeFrames tells. What is wrong, each with the path of its field; empty if nothing
// is.
QStringList encodeFrames(const QJsonValue& parts, const FrameSource& source, QByteArray& bytes);
