#include "stationAnswers.h"

#include <socketApi.h>
#include <udpApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;
using gqdb::CUdpAPI;

bool hasPayload(const StationRequest& request, const QByteArray& payload)
{
    const QByteArray& own = request.frame.payload;
    const int filledSize = 51; // payload of the shortest datagram
    if (!request.isDatagram || own.size() != filledSize || payload.size() > filledSize)
        return own == payload;
    return own == payload + QByteArray(filledSize - payload.size(), '\0');
}

QByteArray intPayload(int value)
{
    QByteArray payload;
    CByte2Val::int2Byte(value, payload);
    return payload;
}

static QByteArray frameOf(unsigned char command, int sequence, const QByteArray& payload, bool isDatagram)
{
    QByteArray frame;
    CSocketAPI::addHeader(command, 0, 0, sequence, 0, frame);
    frame += payload;
    isDatagram ? CUdpAPI::addEnd(frame) : CSocketAPI::addEnd(frame);
    return frame;
}

QByteArray replyFrame(const StationRequest& request, const QByteArray& payload)
{
    return frameOf(request.frame.command, request.frame.sequence, payload, request.isDatagram);
}

QByteArray errorFrame(const StationRequest& request, int code)
{
    return frameOf(CSocketAPI::errorCommand, request.frame.sequence, intPayload(code), request.isDatagram);
}

QByteArray greetingFrame(int value)
{
    return frameOf(0, 0, intPayload(value), false);
}

std::vector<TimedFrame> spaced(const QByteArrayList& frames, int gapMs)
{
    std::vector<TimedFrame> reply;
    for (const QByteArray& frame : frames)
        reply.push_back({frame, reply.empty() ? 0 : gapMs});
    return reply;
}
