#pragma once

#include <QByteArray>
#include <QStringList>

#include <vector>

namespace gqdb {

class CSocketAPI;

// Receives one frame for a client: calls its recvDatas.
using ReceiveFrame = int (*)(CSocketAPI& client, int& len);

// The frame that a client receives: assembled from the bytes of its reads, checked, parsed and dropped. Works on the
// client's fields recvFrame and recvFrameSize, which derived classes may read and change, and has no other state.
// Internal.
class CReplyFrame {
public:
    CReplyFrame(QByteArray& recvFrame, int& recvFrameSize) : frame(recvFrame), frameSize(recvFrameSize) {}

    // Appends bytes of `buf`, from `pos` on, and moves `pos` past every byte examined. Bytes before a start byte are
    // skipped. Returns true once the frame is complete, false if the input ended first; the next call continues.
    bool feed(const char* buf, int size, int& pos);

    // Returns true if lengths and end byte are consistent. Checksum, sequence and command are not examined. `len`
    // receives the length field, also if a later check fails.
    bool isOk(int& len) const;

    // Checks a complete frame and drops it unless it is to be parsed.
    //     1  the frame is to be parsed, its payload has `len` bytes; or it was an error frame with code 1, now dropped
    //     0  the check failed
    //    -2  an error frame with a payload of fewer than 4 bytes
    //   any other  the code of an error frame
    int result(int& len);

    // Returns the payload and limits `len` to the bytes present: 0 if the frame has been dropped.
    const char* payload(int& len) const;

    // Discards the frame, complete or partial.
    void drop();

    // Receives one frame and parses its integer. Returns 1 or the first other result of receiving and parsing.
    int receiveInt(CSocketAPI& client, ReceiveFrame receive, int& value);

    // Receive and parse frames until `out` holds `count` elements, but at least one frame. Return 1 or the first other
    // result of receiving and parsing.
    int receiveBytes(CSocketAPI& client, ReceiveFrame receive, int count, std::vector<unsigned char>& out);
    int receiveInts(CSocketAPI& client, ReceiveFrame receive, int count, std::vector<int>& out);
    int receiveStrings(CSocketAPI& client, ReceiveFrame receive, int count, QStringList& out);

private:
    void begin(const char* buf, int size, int& pos);
    void take(const char* buf, int size, int& pos, int wantedSize);
    bool isError() const;
    int errorCode(int len) const;

    QByteArray& frame;
    int& frameSize; // 0 while the header is incomplete
};

} // namespace gqdb
