#pragma once

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <vector>

// What the clients share: reassembly and check of a reply frame, above all. Its state is the pair `frame` and
// `frameSize`, the fields recvFrame and recvFrameSize of CSocketAPI. Internal.
namespace gqdb {

class CSocketAPI;

// Feeds `buf` from `pos` on into the frame and moves `pos` past every byte looked at. True when the frame is whole;
// false when the input ended first, and the next call goes on from there.
bool feedFrame(const char* buf, int size, int& pos, QByteArray& frame, int& frameSize);

// Whether lengths and end byte of an assembled frame hold; delivers its payload length as soon as it can be read.
// Checksum, sequence and command are not looked at.
bool isFrameOk(const QByteArray& frame, int frameSize, int& len);

// Whether a checked frame is an error frame. Its code: what the server put there, or -2 if the payload is too short.
bool isErrorFrame(const QByteArray& frame);
int errorCode(const QByteArray& frame, int len);

// The payload of a received frame. An error frame that held 1 reads as success and has left no frame behind: `len`
// becomes 0 then, so that the parse finds an empty payload.
const char* framePayload(const QByteArray& frame, int& len);

// Gives the frame up, whole or partial.
void dropFrame(QByteArray& frame, int& frameSize);

// What a read ends in once its frame is whole: 1 with the frame left to parse and its payload length in `len`; 0 if it
// fails its check, or an error frame's code, with the frame given up. A code of 1 is possible and reads as success.
int frameResult(QByteArray& frame, int& frameSize, int& len);

// List replies: receive frame after frame into recvFrame of `client` by `receive`, its recvDatas, and parse each
// payload, until `out` holds `count` elements. 1, or the first code of a frame.
using ReceiveFrame = std::function<int(int& len)>;
int receiveBytes(CSocketAPI& client, QByteArray& frame, int& frameSize, const ReceiveFrame& receive, int count,
                 std::vector<unsigned char>& out);
int receiveInts(CSocketAPI& client, QByteArray& frame, int& frameSize, const ReceiveFrame& receive, int count,
                std::vector<int>& out);
int receiveStrings(CSocketAPI& client, QByteArray& frame, int& frameSize, const ReceiveFrame& receive, int count,
                   QStringList& out);

// What the ready-made commands tell a server: seconds since 1970.
int currentTime();

} // namespace gqdb
