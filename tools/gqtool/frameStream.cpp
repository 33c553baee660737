#include "frameStream.h"

#include <algorithm>
#include <socketApi.h>
#include <utility>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int lengthEnd = 5; // the bytes of a header that the length needs
static const int tailSize = CSocketAPI::frameOverhead - CSocketAPI::headerSize;

FrameStream::FrameStream(int kept) : keptBytes(kept) {}

void FrameStream::add(StreamItem item)
{
    item.offset = offset;
    offset += item.size;
    items.push_back(std::move(item));
}

// Reads the header that begins at `pos`, and gives the place behind it. Of a bad length that is the next byte: a frame
// may begin there. A header that the input cuts is kept for the next piece.
int FrameStream::begin(const QByteArray& input, int pos)
{
    const char* start = input.constData() + pos;
    const int left = input.size() - pos;
    if (left >= lengthEnd) {
        const int length = CByte2Val::byte2Int(start + 1);
        if (length < 0 || length > INT_MAX - CSocketAPI::frameOverhead) {
            StreamItem item;
            item.kind = StreamItem::badLength;
            item.size = 1;
            item.content.length = length;
            add(item);
            return pos + 1;
        }
    }
    if (left < CSocketAPI::headerSize) {
        header = input.mid(pos);
        return input.size();
    }
    current = StreamItem();
    current.kind = StreamItem::cut;
    current.size = CSocketAPI::headerSize;
    current.content.length = CByte2Val::byte2Int(start + 1);
    current.content.sequence = CByte2Val::byte2UShort(start + 5);
    current.content.arg2 = static_cast<unsigned char>(start[7]);
    current.content.arg1 = static_cast<unsigned char>(start[8]);
    current.content.command = static_cast<unsigned char>(start[9]);
    tail.clear();
    return pos + CSocketAPI::headerSize;
}

// Takes payload and tail of the current frame, and gives the place behind what it took.
int FrameStream::take(const QByteArray& input, int pos)
{
    Frame& frame = current.content;
    const long long payloadEnd = CSocketAPI::headerSize + static_cast<long long>(frame.length);
    const int payload = static_cast<int>(std::clamp<long long>(payloadEnd - current.size, 0, input.size() - pos));
    frame.payload.append(input.constData() + pos, std::min(payload, keptBytes - frame.payload.size()));
    const int rest = std::min(tailSize - tail.size(), input.size() - pos - payload);
    tail.append(input.constData() + pos + payload, rest);
    current.size += payload + rest;
    if (tail.size() == tailSize) {
        frame.checksum = CByte2Val::byte2UShort(tail.constData());
        frame.end = static_cast<unsigned char>(tail.at(2));
        current.kind = tail.at(2) == CSocketAPI::frameEnd ? StreamItem::frame : StreamItem::wrongEnd;
        add(std::exchange(current, StreamItem()));
    }
    return pos + payload + rest;
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
        current.kind = StreamItem::cut; // with no field known
        current.size = header.size();
    }
    if (current.size > 0)
        add(std::exchange(current, StreamItem()));
    header.clear();
    offset = 0;
    return std::exchange(items, {});
}
