#include "replyFrame.h"

#include "byteOrder.h"
#include "byteRoom.h"
#include "shortText.h"
#include "socketApi.h"

#include <algorithm>
#include <cstring>

namespace gqdb {

static const int headerSize = CSocketAPI::headerSize;
static const int largestRead = CSocketAPI::rawBufferSize;

// Returns the frame size that a header announces: payload length plus header and tail, in 32 bits. A length near 2^31
// or 2^32 wraps, here and in isOk.
static int wholeSize(const char* header)
{
    return static_cast<int>(load32(header + 1) + unsigned(CSocketAPI::frameOverhead));
}

// --- Assembling ---------------------------------------------------------------------------------------------------

// Appends bytes until the frame has `wantedSize`, but at least one, and no more than the input has. Inlined, because a
// frame can arrive in many small reads.
[[gnu::always_inline]] inline void CReplyFrame::take(const char* buf, int size, int& pos, int wantedSize)
{
    const int count = std::min(std::max(wantedSize - static_cast<int>(frame.size()), 1), size - pos);
    copyText(buf + pos, static_cast<size_t>(count), grow(frame, count));
    pos += count;
}

bool CReplyFrame::feed(const char* buf, int size, int& pos)
{
    while (pos < size) {
        if (frame.isEmpty()) {
            begin(buf, size, pos);
            if (frameSize > 0 && frame.size() >= frameSize)
                return true;
        } else if (frameSize > 0) {
            if (frame.size() > frameSize / 2 && frame.capacity() - frame.size() < size - pos)
                frame.reserve(frameSize); // at least half has arrived; until then QByteArray doubles its memory
            take(buf, size, pos, frameSize);
            if (frame.size() >= frameSize)
                return true;
        } else {
            take(buf, size, pos, headerSize);
            if (frame.size() >= headerSize)
                frameSize = wholeSize(frame.constData()); // if it is 0 or below, this branch takes all further bytes
        }
    }
    return false;
}

// Skips to a start byte and takes it; if the whole header is present, also takes the part of the frame that is present.
void CReplyFrame::begin(const char* buf, int size, int& pos)
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
        // A larger frame grows as its bytes arrive, so that a header alone cannot claim memory.
        frame.reserve(std::min(frameSize, std::max(left, largestRead)));
        take(buf, size, pos, frameSize);
    } else {
        frame.append(buf[pos++]); // gives a null array more room than grow()
    }
}

void CReplyFrame::drop()
{
    if (frame.capacity() > largestRead)
        frame.clear();
    else
        frame.resize(0); // the next frame uses the same memory
    frameSize = 0;
}

// --- Checking -----------------------------------------------------------------------------------------------------

bool CReplyFrame::isOk(int& len) const
{
    if (frameSize < headerSize + 1 || frameSize > frame.size())
        return false;
    len = static_cast<int>(load32(frame.constData() + 1));
    return wholeSize(frame.constData()) <= frameSize && frame.at(frameSize - 1) == CSocketAPI::frameEnd;
}

bool CReplyFrame::isError() const
{
    return frame.size() > headerSize && static_cast<unsigned char>(frame.at(9)) == CSocketAPI::errorCommand;
}

int CReplyFrame::errorCode(int len) const
{
    return std::min(len, static_cast<int>(frame.size()) - headerSize) < 4
               ? -2
               : static_cast<int>(load32(frame.constData() + headerSize));
}

int CReplyFrame::result(int& len)
{
    const bool ok = isOk(len);
    if (ok && !isError())
        return 1;
    const int code = ok ? errorCode(len) : 0;
    drop();
    return code;
}

// --- Parsing ------------------------------------------------------------------------------------------------------

const char* CReplyFrame::payload(int& len) const
{
    const int size = static_cast<int>(frame.size());
    const int start = std::min(headerSize, size);
    len = std::min(len, size - start); // isOk accepts a length near 2^31, whose sum has wrapped
    return frame.constData() + start;
}

int CReplyFrame::receiveInt(CSocketAPI& client, ReceiveFrame receive, int& value)
{
    int len = 0;
    int result = receive(client, len);
    if (result == 1) {
        const char* buf = payload(len);
        result = client.parseInt(buf, len, value);
        drop();
    }
    return result;
}

int CReplyFrame::receiveBytes(CSocketAPI& client, ReceiveFrame receive, int count, std::vector<unsigned char>& out)
{
    int result;
    do {
        int len = 0;
        result = receive(client, len);
        if (result == 1) {
            const char* buf = payload(len);
            result = client.parseBytes(buf, len, out);
            drop();
        }
    } while (result == 1 && static_cast<int>(out.size()) < count);
    return result;
}

int CReplyFrame::receiveInts(CSocketAPI& client, ReceiveFrame receive, int count, std::vector<int>& out)
{
    int result;
    do {
        int len = 0;
        result = receive(client, len);
        if (result == 1) {
            const char* buf = payload(len);
            result = client.parseInts(buf, len, out);
            drop();
        }
    } while (result == 1 && static_cast<int>(out.size()) < count);
    return result;
}

int CReplyFrame::receiveStrings(CSocketAPI& client, ReceiveFrame receive, int count, QStringList& out)
{
    int result;
    do {
        int len = 0;
        result = receive(client, len);
        if (result == 1) {
            const char* buf = payload(len);
            result = client.parseStrings(buf, len, out);
            drop();
        }
    } while (result == 1 && out.size() < count);
    return result;
}

} // namespace gqdb
