#include "frameStream.h"

#include <QtEndian>

#include <algorithm>
#include <socketApi.h>
#include <utility>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int lengthEnd = 5; // of the length field within a header
static const int checkSize = 2;

long long fittingSwappedLength(unsigned int length, const QByteArray& afterHeader)
{
    const unsigned int swapped = qbswap(length);
    const long long size = static_cast<long long>(swapped) + checkSize + 1;
    if (afterHeader.size() < size || afterHeader[static_cast<int>(size) - 1] != CSocketAPI::frameEnd)
        return -1;
    const bool isExact = afterHeader.size() == size || afterHeader[static_cast<int>(size)] == CSocketAPI::frameStart;
    return isExact ? static_cast<long long>(swapped) : -1;
}

FrameStream::FrameStream(int kept, unsigned int largest) : keptBytes(kept), largestLength(largest) {}

void FrameStream::add(StreamItem item)
{
    item.offset = offset;
    offset += item.size;
    if (item.kind == StreamItem::garbage && !items.empty() && items.back().kind == StreamItem::badLength)
        items.back().swappedLength =
            fittingSwappedLength(items.back().content.length, item.bytes.mid(CSocketAPI::headerSize - 1));
    if (item.kind == StreamItem::cut && item.size == CSocketAPI::headerSize + item.content.payload.size())
        item.swappedLength = fittingSwappedLength(item.content.length, item.content.payload);
    items.push_back(std::move(item));
}

// Reads the header at `pos` and returns the position after it. An incomplete header is kept for the next piece. If the
// length is too large, the byte at `pos` is not a start byte: a frame may begin at any byte after it.
int FrameStream::begin(const QByteArray& input, int pos)
{
    const char* start = input.constData() + pos;
    const int left = input.size() - pos;
    const unsigned int length = left < lengthEnd ? 0 : CByte2Val::byte2UInt(start + 1);
    if (length > largestLength) {
        StreamItem falseStart;
        falseStart.kind = StreamItem::badLength;
        falseStart.size = 1;
        falseStart.content.length = length;
        add(falseStart);
        return pos + 1;
    }
    if (left < CSocketAPI::headerSize) {
        header = input.mid(pos);
        return input.size();
    }
    current.kind = StreamItem::cut;
    current.size = CSocketAPI::headerSize;
    Frame& frame = current.content;
    frame.length = length;
    frame.sequence = CByte2Val::byte2UShort(start + 5);
    frame.arg2 = static_cast<unsigned char>(start[7]);
    frame.arg1 = static_cast<unsigned char>(start[8]);
    frame.command = static_cast<unsigned char>(start[9]);
    return pos + CSocketAPI::headerSize;
}

// Reads the available bytes of the next part of the current frame (payload, check or end) and returns the position
// after them.
int FrameStream::take(const QByteArray& input, int pos)
{
    Frame& frame = current.content;
    const int left = input.size() - pos;
    const long long payloadLeft = CSocketAPI::headerSize + static_cast<long long>(frame.length) - current.size;
    int count = 1;
    if (payloadLeft > 0) {
        count = static_cast<int>(std::min<long long>(payloadLeft, left));
        const int room = keptBytes - static_cast<int>(frame.payload.size());
        frame.payload.append(input.constData() + pos, std::min(count, room));
    } else if (frame.check.size() < checkSize) {
        frame.check.append(input.at(pos));
    } else {
        frame.end = static_cast<unsigned char>(input.at(pos));
        current.kind = frame.end == CSocketAPI::frameEnd ? StreamItem::frame : StreamItem::wrongEnd;
    }
    current.size += count;
    if (current.kind != StreamItem::cut)
        add(std::exchange(current, StreamItem()));
    return pos + count;
}

std::vector<StreamItem> FrameStream::feed(const QByteArray& piece)
{
    const QByteArray input = std::exchange(header, QByteArray()) + piece;
    for (int pos = 0; pos < input.size();) {
        if (current.size > 0) {
            pos = take(input, pos);
            continue;
        }
        const int found = input.indexOf(CSocketAPI::frameStart, pos);
        const int start = found < 0 ? input.size() : found;
        if (start > pos) {
            StreamItem garbage;
            garbage.size = start - pos;
            garbage.bytes = input.mid(pos, start - pos);
            add(garbage);
        }
        pos = start < input.size() ? begin(input, start) : start;
    }
    return std::exchange(items, {});
}

std::vector<StreamItem> FrameStream::end()
{
    if (!header.isEmpty()) {
        current.kind = StreamItem::cutHeader;
        current.size = header.size();
        current.bytes = std::exchange(header, QByteArray());
    }
    if (current.size > 0)
        add(std::exchange(current, StreamItem()));
    offset = 0;
    return std::exchange(items, {});
}

Frame firstFrame(const QByteArray& bytes)
{
    FrameStream stream;
    const std::vector<StreamItem> items = stream.feed(bytes);
    return items.empty() ? Frame() : items[0].content;
}
