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

// Reads the header. An incomplete one is kept for the next piece. If the length is too large, its first byte is not a
// start byte: a frame may begin at any byte after it.
void FrameStream::begin()
{
    const char* start = input.constData() + position;
    const int left = input.size() - position;
    const unsigned int length = left < lengthEnd ? 0 : CByte2Val::byte2UInt(start + 1);
    if (length > largestLength) {
        StreamItem falseStart;
        falseStart.kind = StreamItem::badLength;
        falseStart.size = 1;
        falseStart.content.length = length;
        add(falseStart);
        ++position;
        return;
    }
    if (left < CSocketAPI::headerSize) {
        header = input.mid(position);
        position = input.size();
        return;
    }
    current.kind = StreamItem::cut;
    current.size = CSocketAPI::headerSize;
    Frame& frame = current.content;
    frame.length = length;
    frame.sequence = CByte2Val::byte2UShort(start + 5);
    frame.arg2 = static_cast<unsigned char>(start[7]);
    frame.arg1 = static_cast<unsigned char>(start[8]);
    frame.command = static_cast<unsigned char>(start[9]);
    position += CSocketAPI::headerSize;
}

// Reads the available bytes of the next part of the current frame: payload, check or end.
void FrameStream::take()
{
    Frame& frame = current.content;
    const int left = input.size() - position;
    const long long payloadLeft = CSocketAPI::headerSize + static_cast<long long>(frame.length) - current.size;
    int count = 1;
    if (payloadLeft > 0) {
        count = static_cast<int>(std::min<long long>(payloadLeft, left));
        const int room = keptBytes - static_cast<int>(frame.payload.size());
        frame.payload.append(input.constData() + position, std::min(count, room));
    } else if (frame.check.size() < checkSize) {
        frame.check.append(input.at(position));
    } else {
        frame.end = static_cast<unsigned char>(input.at(position));
        current.kind = frame.end == CSocketAPI::frameEnd ? StreamItem::frame : StreamItem::wrongEnd;
    }
    position += count;
    current.size += count;
    if (current.kind != StreamItem::cut)
        add(std::exchange(current, StreamItem()));
}

std::vector<StreamItem> FrameStream::feed(const QByteArray& piece, size_t mostItems)
{
    input = header.isEmpty() ? piece : std::exchange(header, QByteArray()) + piece;
    position = 0;
    return more(mostItems);
}

// The garbage after a bad length belongs to it: it shows whether the bytes of the length are in the wrong order.
bool FrameStream::isBetweenItems() const
{
    return items.back().kind != StreamItem::badLength || input.at(position) == CSocketAPI::frameStart;
}

std::vector<StreamItem> FrameStream::more(size_t mostItems)
{
    while (hasMore() && (items.size() < mostItems || !isBetweenItems())) {
        if (current.size > 0) {
            take();
            continue;
        }
        const int found = input.indexOf(CSocketAPI::frameStart, position);
        const int start = found < 0 ? input.size() : found;
        if (start > position) {
            StreamItem garbage;
            garbage.size = start - position;
            garbage.bytes = input.mid(position, start - position);
            position = start;
            add(garbage);
        } else {
            begin();
        }
    }
    if (!hasMore())
        input.clear();
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
