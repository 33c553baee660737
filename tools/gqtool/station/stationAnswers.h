#pragma once

#include "gqtool/frames/frameStream.h"

#include <QByteArrayList>

#include <vector>

// A request as it arrived.
struct StationRequest {
    Frame frame;
    long long size = 0; // in bytes
    bool isDatagram = false;
};

// A complete frame to send, after a pause.
struct TimedFrame {
    QByteArray bytes;
    int pauseMs = 0;
};

// Returns true if the request has that payload. Zeros that fill up a short datagram do not count.
bool hasPayload(const StationRequest& request, const QByteArray& payload);

// Decides what a station answers.
class StationAnswers {
public:
    StationAnswers() = default;
    virtual ~StationAnswers() = default;
    StationAnswers(const StationAnswers&) = delete;
    StationAnswers& operator=(const StationAnswers&) = delete;

    // Returns what a new connection is sent.
    virtual std::vector<TimedFrame> greeting() = 0;

    // Carries out a request. Returns the frames of its reply; none means no reply.
    virtual std::vector<TimedFrame> answer(const StationRequest& request) = 0;
};

// Return a complete frame. A reply has the request's sequence and its transport's least size.
QByteArray replyFrame(const StationRequest& request, const QByteArray& payload);
QByteArray errorFrame(const StationRequest& request, int code);
QByteArray greetingFrame(int value);

QByteArray intPayload(int value);

// Returns the frames with a pause before each except the first.
std::vector<TimedFrame> spaced(const QByteArrayList& frames, int gapMs);
