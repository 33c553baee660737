#pragma once

#include <QByteArray>

#include <climits>
#include <socketApi.h>
#include <vector>

// A frame, or the part of it that has arrived. docs/formats/frame.md has its layout.
struct Frame {
    unsigned int length = 0; // of the payload, as the header says
    int sequence = 0;
    unsigned char arg2 = 0;
    unsigned char arg1 = 0;
    unsigned char command = 0;
    QByteArray payload; // as far as it has arrived and is kept
    QByteArray check;   // 2 bytes
    unsigned char end = 0;
};

// A run of bytes in a stream. In order, the items make up the whole stream.
struct StreamItem {
    enum Kind {
        frame,
        garbage,   // bytes before a start byte; an empty datagram has 0
        wrongEnd,  // a whole frame that does not end in 0x16: a client drops it
        badLength, // a start byte alone: its length exceeds the limit
        cut,       // a frame that the end of the stream cuts off
        cutHeader, // a frame that the end of the stream cuts off within its header
    };

    Kind kind = garbage;
    long long offset = 0; // of the first byte, from the start of the stream
    long long size = 0;   // in bytes
    Frame content;        // empty for garbage and cutHeader; for badLength, only the length
    QByteArray bytes;     // of garbage and cutHeader

    // Of cut and badLength: the length in the wrong byte order, if it fits the bytes that came; otherwise -1.
    long long swappedLength = -1;
};

// Returns the length in the other byte order if a frame of that length ends exactly where the bytes do that follow
// the header, or before a start byte; otherwise -1.
long long fittingSwappedLength(unsigned int length, const QByteArray& afterHeader);

// Splits a stream of bytes into frames as a client does, except that it continues after a frame's end in the same piece
// and right after a start byte with a bad length. Keeps only the incomplete
// frame, and the rest of a piece while hasMore().
class FrameStream {
public:
    // A client accepts payloads up to this length; with one more byte, the frame would have 2 GiB.
    static constexpr unsigned int clientLimit = INT_MAX - gqdb::CSocketAPI::frameOverhead;

    // Keeps the first `keptBytes` of each payload. A start byte with a length above `largestLength` begins no frame.
    explicit FrameStream(int keptBytes = INT_MAX, unsigned int largestLength = clientLimit);

    // Returns the items that this piece completes: at most `mostItems`, or one more, since garbage and the bad length
    // after it belong together. Garbage is complete at the end of each piece.
    std::vector<StreamItem> feed(const QByteArray& piece, size_t mostItems = SIZE_MAX);

    // Returns true if the piece has further items. more() must return them before the next piece is fed.
    bool hasMore() const { return position < input.size(); }
    std::vector<StreamItem> more(size_t mostItems);

    // Ends the stream. Returns the incomplete frame, if any. The next piece begins a new stream.
    std::vector<StreamItem> end();

    // Payload length in the header of the incomplete frame; 0 if there is none.
    unsigned int announcedLength() const { return current.content.length; }

    // Number of bytes that are kept of the incomplete frame.
    int keptSize() const { return header.size() + current.content.payload.size(); }

private:
    void add(StreamItem item);
    bool isBetweenItems() const;
    void begin();
    void take();

    int keptBytes;
    unsigned int largestLength;
    long long offset = 0; // of the incomplete item
    StreamItem current;   // the incomplete frame, once its header is complete; `size` counts the bytes so far
    QByteArray header;    // the bytes of an incomplete header
    QByteArray input;     // an incomplete header and the piece after it
    int position = 0;     // in `input`
    std::vector<StreamItem> items;
};

// Reads the frame at the start of `bytes`, which must be whole.
Frame firstFrame(const QByteArray& bytes);
