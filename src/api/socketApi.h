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

// The frame that clients and servers exchange, and the state that the TCP and the UDP client share. It owns no socket
// and moves no byte itself; programs use CTcpAPI or CUdpAPI, or a class derived from one of them.
//
// A frame has L + 13 bytes, the same in both directions, every value little-endian:
//    0  1  start, 0x68
//    1  4  L, the number of payload bytes: header and tail are not counted
//    5  2  sequence, the sender's frame counter; never compared on reading
//    7  1  arg2, 0 in every frame that the library builds itself
//    8  1  arg1, 0 likewise
//    9  1  command; 0xFF in a reply marks an error frame, its payload is the error code (4 bytes, signed)
//   10  L  payload
//  10+L 2  checksum, a reserved place: written as zero, never looked at
//  12+L 1  end, 0x16
//
// To build one: addHeader on an empty array, codec writes for the payload, then addEnd of the class that sends it.
//
// Results of the clients' operations, one set for all of them:
//     1  success
//     n  recvInt and what ends in it (requestInt, the ready-made commands): the integer of the reply, any value.
//        A reply of 0 and a time-out read the same: over TCP isConnected() tells them apart, over UDP only recvDatas
//        does
//     0  time-out, bad frame, refused greeting, or a string item that overruns its payload
//    -1  dead link: the peer closed, a socket failure, no room to send in time, no memory
//    -2  error frame with a payload below 4 bytes
//    -5  payload shorter than its form demands
//   any other  the code that the server put into an error frame, unchanged
//
// Nothing is locked: one thread at a time on one object. Objects are destroyed through their own type, for the
// destructors are not virtual.
class GQLIB_EXPORT CSocketAPI : public CByte2Rdb, public CByte2Fep {
public:
    static constexpr char frameStart = 0x68;
    static constexpr char frameEnd = 0x16;
    static constexpr unsigned char errorCommand = 0xFF;
    static constexpr int headerSize = 10; // the payload begins here
    static constexpr int frameOverhead = 13;
    static constexpr int rawBufferSize = 655350; // bounds one read, not a frame

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

    // Keep the time in milliseconds, nothing else. 1.
    virtual int setRecvOverTm(int ms);
    virtual int setSendOverTm(int ms);

    // Appends the 10 header bytes, length still 0, with the object's counter as sequence, then steps the counter: 0 for
    // the first frame of an object, 0 again after 65535. Neither connect nor close resets it, and a frame that is
    // never sent has used its number up.
    void addHeader(unsigned char command, unsigned char arg1, unsigned char arg2, QByteArray& data);

    // The same with the low 16 bits of `seq`, and no counter: for servers and tests. The fifth argument is ignored.
    static void addHeader(unsigned char command, unsigned char arg1, unsigned char arg2, int seq, int,
                          QByteArray& data);

    // Stamps the length, all bytes behind the first 10, and appends the tail. 1; or 0 below 4 bytes, with `data`
    // untouched. A whole header is not asked for: 4 to 9 bytes get a negative length.
    static int addEnd(QByteArray& data);

    // The standard payloads. `buf` points at the payload, `len` is its length L; bytes after the form are ignored.
    // The lists append to `out`, so that a reply in several frames gathers there. A count that could not fit into
    // `len` gives -5, however large it is.

    // 0 value (4 bytes). 1; or -5 below 4 bytes, with `value` untouched.
    int parseInt(const char* buf, int len, int& value);

    // 0 count n (4 bytes), 4 the n integers (4 bytes each). 1; or -5, with `out` untouched.
    int parseInts(const char* buf, int len, std::vector<int>& out);

    // 0 count n (4 bytes), 4 the n bytes. 1; or -5, with `out` untouched.
    int parseBytes(const char* buf, int len, std::vector<unsigned char>& out);

    // 0 count n (4 bytes), then n items: 0 outer length M (2 bytes), 2 M bytes which begin with a string of their own
    // (0 length K, 2 the K bytes of UTF-8). Each text stands behind two length fields, and a server writes both.
    //    1  all items read; an item whose string does not fit into its M bytes gives an empty text
    //    0  an item overruns the payload; the texts ahead of it are in `out`
    //   -5  too short for the count and n outer lengths, with `out` untouched (a count that wraps 32 bits is found out
    //       only at the item that lies outside, after the texts read so far)
    int parseStrings(const char* buf, int len, QStringList& out);

    // CTcpAPI: true from a successful connect, checkConnect or request on; cleared by a failed connect, a time-out, a
    // dead link, any failed recvInt and close(). A list reply that was refused leaves it.
    // CUdpAPI: set by connect; cleared by a failed connect, send or read and by close() alone.
    bool isConnected();

protected:
    std::string serverHost; // dotted IPv4 text, kept for reconnecting
    int serverPort;         // host byte order
    bool connected;
    char* recvBuffer;     // rawBufferSize bytes from new[], or null; owned
    QByteArray recvFrame; // the frame being assembled or just received, from its start byte on
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
