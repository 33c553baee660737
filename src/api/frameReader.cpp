#include "frameReader.h"

#include "byteCursor.h"
#include "socketApi.h"

#include <QDateTime>

#include <algorithm>
#include <cstring>

namespace gqdb {

static const int headerSize = CSocketAPI::headerSize;

// Size that a header announces: length field plus header and tail, in 32 bits. A length near either end of its range
// wraps, here and in the check.
static int wholeSize(const char* header)
{
    return static_cast<int>(load32(header + 1) + unsigned(CSocketAPI::frameOverhead));
}

// Moves bytes into the frame until it has `wanted`, but at least one, and as far as the input goes.
static void take(const char* buf, int size, int& pos, QByteArray& frame, int wanted)
{
    const int count = std::min(std::max(wanted - frame.size(), 1), size - pos);
    frame.append(buf + pos, count);
    pos += count;
}

// Frames up to this size get their memory at once; a larger one grows as its bytes come, however much a header
// announces.
static const int largestPrepared = 4 << 20;

// Skips to a start byte and takes it. Where the whole header is at hand, what there is of the frame comes with it.
static void begin(const char* buf, int size, int& pos, QByteArray& frame, int& frameSize)
{
    const void* start = std::memchr(buf + pos, CSocketAPI::frameStart, static_cast<size_t>(size - pos));
    if (start == nullptr) {
        pos = size;
        return;
    }
    pos = static_cast<int>(static_cast<const char*>(start) - buf);
    frameSize = 0;
    const int left = size - pos;
    if (left >= headerSize && wholeSize(buf + pos) > headerSize) {
        frameSize = wholeSize(buf + pos);
        frame.reserve(std::min(frameSize, std::max(left, largestPrepared)));
        take(buf, size, pos, frame, frameSize);
    } else {
        take(buf, size, pos, frame, 1);
    }
}

bool feedFrame(const char* buf, int size, int& pos, QByteArray& frame, int& frameSize)
{
    while (pos < size) {
        if (frame.isEmpty()) {
            begin(buf, size, pos, frame, frameSize);
            if (frameSize > 0 && frame.size() >= frameSize)
                return true;
        } else if (frameSize > 0) {
            take(buf, size, pos, frame, frameSize);
            if (frame.size() >= frameSize)
                return true;
        } else {
            take(buf, size, pos, frame, headerSize);
            if (frame.size() >= headerSize)
                frameSize = wholeSize(frame.constData()); // 0 or below where it wraps: then every byte lands here
        }
    }
    return false;
}

bool isFrameOk(const QByteArray& frame, int frameSize, int& len)
{
    if (frameSize < headerSize + 1 || frameSize > frame.size())
        return false;
    len = static_cast<int>(load32(frame.constData() + 1));
    return wholeSize(frame.constData()) <= frameSize && frame.at(frameSize - 1) == CSocketAPI::frameEnd;
}

bool isErrorFrame(const QByteArray& frame)
{
    return frame.size() > headerSize && static_cast<unsigned char>(frame.at(9)) == CSocketAPI::errorCommand;
}

int errorCode(const QByteArray& frame, int len)
{
    return std::min(len, frame.size() - headerSize) < 4 ? -2 : static_cast<int>(load32(frame.constData() + headerSize));
}

const char* framePayload(const QByteArray& frame, int& len)
{
    const int start = std::min(headerSize, frame.size());
    len = std::min(len, frame.size() - start); // the check lets a length near 2^31 pass, whose sum has wrapped
    return frame.constData() + start;
}

void dropFrame(QByteArray& frame, int& frameSize)
{
    if (frame.capacity() > CSocketAPI::rawBufferSize)
        frame.clear();
    else
        frame.resize(0); // the next frame goes into the same memory
    frameSize = 0;
}

int frameResult(QByteArray& frame, int& frameSize, int& len)
{
    const bool isOk = isFrameOk(frame, frameSize, len);
    if (isOk && !isErrorFrame(frame))
        return 1;
    const int result = isOk ? errorCode(frame, len) : 0;
    dropFrame(frame, frameSize);
    return result;
}

static int receiveList(QByteArray& frame, int& frameSize, const ReceiveFrame& receive,
                       const std::function<int(const char* payload, int len)>& parse,
                       const std::function<bool()>& isComplete)
{
    do {
        int len = 0;
        int result = receive(len);
        if (result != 1)
            return result;
        const char* payload = framePayload(frame, len);
        result = parse(payload, len);
        dropFrame(frame, frameSize);
        if (result <= 0)
            return result;
    } while (!isComplete());
    return 1;
}

int receiveBytes(CSocketAPI& client, QByteArray& frame, int& frameSize, const ReceiveFrame& receive, int count,
                 std::vector<unsigned char>& out)
{
    return receiveList(
        frame, frameSize, receive, [&](const char* payload, int len) { return client.parseBytes(payload, len, out); },
        [&] { return static_cast<int>(out.size()) >= count; });
}

int receiveInts(CSocketAPI& client, QByteArray& frame, int& frameSize, const ReceiveFrame& receive, int count,
                std::vector<int>& out)
{
    return receiveList(
        frame, frameSize, receive, [&](const char* payload, int len) { return client.parseInts(payload, len, out); },
        [&] { return static_cast<int>(out.size()) >= count; });
}

int receiveStrings(CSocketAPI& client, QByteArray& frame, int& frameSize, const ReceiveFrame& receive, int count,
                   QStringList& out)
{
    return receiveList(
        frame, frameSize, receive, [&](const char* payload, int len) { return client.parseStrings(payload, len, out); },
        [&] { return out.size() >= count; });
}

int currentTime()
{
    return static_cast<int>(QDateTime::currentSecsSinceEpoch());
}

} // namespace gqdb
