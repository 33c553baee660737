#pragma once

#include <QByteArray>

#include <climits>
#include <vector>

// A frame, or what there is of it. docs/formats/frame.md has its layout.
struct Frame {
    unsigned int length = 0; // of the payload, as the header says
    int sequence = 0;
    unsigned char arg2 = 0;
    unsigned char arg1 = 0;
    unsigned char command = 0;
    QByteArray payload; // as far as it came and was kept
    QByteArray check;   // 2 bytes
    unsigned char end = 0;
};

// A run of bytes in a stream. Together and in order the items are the stream.
struct StreamItem {
    enum Kind {
        frame,
        garbage,   // bytes ahead of a start byte
        wrongEnd,  // a whole frame that does not end in 0x16: a client drops it
        badLength, // a start byte alone, for the length behind it gives a frame of 2 GiB or more: a client waits for it
        cut,       // a frame that the stream ends in
        cutHeader, // the same, with fewer than 10 bytes
    };

    Kind kind = garbage;
    long long offset = 0; // of the first byte, from the start of the stream
    long long size = 0;   // in bytes
    Frame content;        // empty of garbage and of a cut header; of badLength, the length alone
    QByteArray bytes;     // of garbage and of a cut header
};

// Takes a stream of bytes apart into frames, as a client does, but goes on behind a frame's end in the same piece, and
// right behind a start byte with a bad length. Keeps no more of the stream than the frame being taken apart.
class FrameStream {
public:
    explicit FrameStream(int keptBytes = INT_MAX); // of each payload

    // The items that became whole with this piece. Garbage does so at the end of each piece.
    std::vector<StreamItem> feed(const QByteArray& piece);

    // The stream is over: the frame that it was in, if any. The next piece begins a new stream.
    std::vector<StreamItem> end();

private:
    void add(StreamItem item);
    int begin(const QByteArray& input, int pos);
    int take(const QByteArray& input, int pos);

    int keptBytes;
    long long offset = 0; // of the item being taken apart
    StreamItem current;   // a frame from its whole header on; `size` counts the bytes that came
    QByteArray header;    // the bytes of one that is not whole yet
    std::vector<StreamItem> items;
};
