#pragma once

#include "byte2Fep.h"
#include "byte2Rdb.h"
#include "gqLibExport.h"

#include <QByteArray>
#include <QStringList>

#include <string>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

namespace gqdb {

// The frame that clients and servers exchange, and the state that the TCP and the UDP client share. This class has no
// socket: programs use CTcpAPI or CUdpAPI, or a class derived from one of them.
//
// A frame has L + 13 bytes, the same in both directions, every value little-endian:
//    0  1  start, 0x68
//    1  4  L, the number of payload bytes, without header and tail
//    5  2  sequence, the sender's frame counter; ignored on reception
//    7  1  arg2, 0 in every frame that the clients build themselves
//    8  1  arg1, 0 in every frame that the clients build themselves
//    9  1  command; 0xFF in a reply marks an error frame, whose payload is the error code (4 bytes, signed)
//   10  L  payload
//  10+L 2  checksum: reserved, sent as 0, ignored on reception
//  12+L 1  end, 0x16
//
// To build a frame, call addHeader on an empty array, append the payload, then call addEnd of the client that sends it.
//
// Results of the clients' operations:
//     1  success
//     n  recvInt and the operations that end with it (requestInt, the ready-made commands): the integer of the reply,
//        any value. The result 0 can be a reply or a time-out: over TCP isConnected() is false after a time-out, over
//        UDP only recvDatas distinguishes them
//     0  time-out, bad frame, refused greeting, or a string item that overruns its payload
//    -1  broken link: the peer closed, a socket call failed, sending timed out, no memory
//    -2  error frame with a payload of fewer than 4 bytes
//    -5  payload too short for its form
//   any other  the code in an error frame of the server, which may also be one of the values above
//
// A failed allocation is passed on to the caller. A frame that was being built is not sent. If the request was sent,
// the part of its reply that was read is lost, except elements in the caller's list. The socket and the connected flag
// are unchanged, except that connect may leave the socket open and the flag clear. The rest of the reply can still
// arrive, and a partial frame would swallow the greeting of the next connection: replace a CTcpAPI with a new object;
// for the clients in returningClient.h, call close() before the next ready().
//
// Nothing is locked: one thread at a time may use an object. The destructors are not virtual: delete an object through
// its own type.
class GQLIB_EXPORT CSocketAPI : public CByte2Rdb, public CByte2Fep {
public:
    static constexpr char frameStart = 0x68;
    static constexpr char frameEnd = 0x16;
    static constexpr unsigned char errorCommand = 0xFF;
    static constexpr int headerSize = 10; // the payload begins here
    static constexpr int frameOverhead = 13;
    static constexpr int rawBufferSize = 655350; // limits one read, not a frame

    // The commands of the ready-made operations of CTcpAPI and CUdpAPI, which document the payloads.
    enum Command : unsigned char {
        systemStateCommand = 1,
        systemTimeCommand = 2,
        clearCommand = 3,
        setTimeCommand = 5,
        setStateCommand = 6,
    };

    CSocketAPI();
    ~CSocketAPI();
    CSocketAPI(const CSocketAPI&) = delete;
    CSocketAPI& operator=(const CSocketAPI&) = delete;

    // Store the time-out in milliseconds and have no other effect. Return 1.
    virtual int setRecvOverTm(int ms);
    virtual int setSendOverTm(int ms);

    // Appends the 10 header bytes with a length of 0 and the object's counter as sequence, then increments the counter:
    // 0 for the first frame of an object, 0 again after 65535. connect and close do not reset it. Each call uses a
    // number, even if the frame is never sent.
    void addHeader(unsigned char command, unsigned char arg1, unsigned char arg2, QByteArray& data);

    // Appends the header with the low 16 bits of `seq` as sequence, for servers. The fifth argument is ignored.
    static void addHeader(unsigned char command, unsigned char arg1, unsigned char arg2, int seq, int,
                          QByteArray& data);

    // Writes the length, which is the size of `data` less 10, and appends the tail. Returns 1, or 0 if `data` has fewer
    // than 4 bytes (unchanged). A whole header is not required: the length of 4 to 9 bytes is negative.
    static int addEnd(QByteArray& data);

    // The standard payloads. `buf` points to the payload, `len` is its length L; further bytes are ignored. The list
    // operations append to `out`, so that a reply can consist of several frames.

    // 0 value (4 bytes). Returns 1, or -5 if len < 4 (`value` unchanged).
    int parseInt(const char* buf, int len, int& value);

    // 0 count n (4 bytes), 4 the n integers (4 bytes each). Returns 1, or -5 if they exceed `len` (`out` unchanged).
    int parseInts(const char* buf, int len, std::vector<int>& out);

    // 0 count n (4 bytes), 4 the n bytes. Returns 1, or -5 if they exceed `len` (`out` unchanged).
    int parseBytes(const char* buf, int len, std::vector<unsigned char>& out);

    // 0 count n (4 bytes), then n items: 0 outer length M (2 bytes), 2 M bytes, which begin with a string (0 length K
    // (2 bytes), 2 the K bytes of UTF-8). Each text has two length fields.
    //    1  all items read; an item whose string does not fit into its M bytes is an empty text
    //    0  an item overruns the payload; the texts before it are in `out`
    //   -5  too short for the count and n outer lengths (`out` unchanged)
    // The sum 4 + 2 n is computed in 32 bits and compared as signed, so that a count of 0x3FFFFFFE or more can pass
    // although the payload is too short for it. The result is then 0 or -5 at the first item outside the payload, and
    // the texts before it are in `out`.
    int parseStrings(const char* buf, int len, QStringList& out);

    // CTcpAPI: set by a successful connect, checkConnect or request; cleared by a failed connect, a time-out, a broken
    // link, any failed recvInt and close(). A refused list reply does not clear it.
    // CUdpAPI: set by a successful connect; cleared only by a failed connect, send or read and by close().
    bool isConnected();

protected:
    std::string serverHost; // dotted IPv4 text, kept for reconnecting
    int serverPort;         // host byte order
    bool connected;
    char* recvBuffer;     // rawBufferSize bytes from new[], or null; owned
    QByteArray recvFrame; // the frame being assembled or just received, beginning with its start byte
    int recvFrameSize;    // its expected size; 0 while the header is incomplete
    int sendSeq;          // 0 to 65535
    int reserved1;
    int recvOverTm; // ms
    int sendOverTm; // ms
    int reserved2;
    int reserved3;
};

} // namespace gqdb

#pragma GCC diagnostic pop
