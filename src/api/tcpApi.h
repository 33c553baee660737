#pragma once

#include "gqLibExport.h"
#include "socketApi.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

class CTcpSocket;

namespace gqdb {

// Request and reply client over one TCP connection. Call order: construct, connect, any number of request* or
// ready-made commands, close. Frames, payloads and the results of every operation: see CSocketAPI.
//
// A lost link is rebuilt by the next request: request* and the ready-made commands except setTime call checkConnect
// first. Habits to know before they are met:
//   - The time-outs are set on the socket that the constructor opens. A socket that a later connect opens anew has
//     none: its wait for the greeting and each read last until the peer closes. A derived class opens the socket itself
//     and sets the times before the request; setting them after it is too late for the greeting.
//   - A reply that recvInt refuses (error frame, bad frame, short payload) marks the link down but leaves the socket
//     open. The next request then waits for a greeting that does not come, ends with 0 and closes the socket; only the
//     one after it succeeds. A reply that recvBytes, recvInts or recvStrings refuses leaves the link up.
//   - What a read brought after the end of a frame is lost: the protocol is strictly one request, one reply.
//   - One send(2) a request; a partial write counts as success.
//
// One thread at a time on one object.
class GQLIB_EXPORT CTcpAPI : public CSocketAPI {
public:
    // Opens a socket at once, with both time-outs at 9000 ms. That prints "setRecvOverTm:0, 9000" on standard output,
    // as each setRecvOverTm on an open socket prints its line, and sets SIGPIPE to be ignored in the whole process.
    CTcpAPI();
    ~CTcpAPI();

    // Keep the time in milliseconds and set it on the socket as it stands. 1, also on a closed socket.
    int setRecvOverTm(int ms) override;
    int setSendOverTm(int ms) override;

    // --- Link ---

    // First connect, to dotted IPv4 text and a port in host byte order; keeps both for reconnecting and allocates the
    // read buffer.
    //    1  connected and greeted
    //    0  not greeted: silence, a server that closed first, or a greeting of 0 or below; or the connect is still in
    //       progress
    //   -1  refused, unreachable, no memory
    // On a link that is up it waits for a second greeting, which does not come: 0, with the link down.
    int connect(const std::string& host, int port);

    // One attempt: endpoint connect, then the server's greeting, a frame with one integer above 0. An error frame with
    // a code above 1 passes as a greeting too. Neither keeps the address nor sets the connected flag. 1, 0 or -1 as
    // above.
    int connectServer(const std::string& host, int port);

    // 1 if connected, else one attempt with the address that connect kept. connect comes first: the read buffer is
    // made there.
    int checkConnect();

    // Closes the socket and clears the connected flag. 1.
    int close();

    // --- Ready-made commands: the integer of the reply, or a code ---
    // What they make a server do, what its integer means and what the two integers of setTime stand for is agreed with
    // the server; the library only carries them.

    int systemState();                  // command 1, payload: the current time in seconds since 1970
    int systemTime();                   // command 2, likewise
    int clear();                        // command 3, likewise
    int setTime(int first, int second); // command 5, two bare integers; does not reconnect
    int setState(int value);            // command 6, one integer

    // --- Requests: checkConnect, send, receive; the first result other than 1 ends them ---

    // `frame` is finished, with its tail. `count` and `out` as for the recv operation of the same kind.
    int requestInt(const QByteArray& frame);
    int requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out);
    int requestInts(const QByteArray& frame, int count, std::vector<int>& out);
    int requestStrings(const QByteArray& frame, int count, QStringList& out);

    // The payload is one integer, or a list of integers.
    int requestInt(unsigned char command, int value);
    int requestInt(unsigned char command, const std::vector<int>& values);

    // --- Sending: 1, or -1 with the socket closed and the link down. None of these reconnects ---

    // The frame as it stands, in one send(2).
    int sendDatas(const QByteArray& frame);
    int sendDatas(unsigned char command); // no payload
    // A frame that holds these, in the standard payload.
    int sendInt(unsigned char command, int value);
    int sendInts(unsigned char command, const std::vector<int>& values);

    // --- Receiving ---

    // One frame: the integer of its payload, or a code. Every code but a reply's integer marks the link down.
    int recvInt();

    // Frames until `out`, which is appended to, holds `count` elements in total, those on entry included; a single
    // frame if `count` is 0 or below. 1, or the first code of a frame; what came ahead of it stays in `out`.
    int recvBytes(int count, std::vector<unsigned char>& out);
    int recvInts(int count, std::vector<int>& out);
    int recvStrings(int count, QStringList& out);

    // --- Frame by frame, for derived clients ---

    // Reads until one checked frame stands in recvFrame and gives its payload length.
    //     1  recvFrame holds it; parse from offset headerSize, then clear recvFrame and set recvFrameSize to 0. An
    //        error frame that holds 1 gives 1 too, but leaves recvFrame empty: look before parsing
    //     0  time-out, with the socket closed; or a frame that failed its check and was dropped
    //    -1  the peer closed or the read failed, with the socket closed
    //   any other  an error frame's code, -2 if it has none
    int recvDatas(int& len);

    // Feeds bytes from `pos` on into recvFrame, moving `pos`. True once the frame is whole; false when the bytes ended
    // first, and the next call goes on. Bytes ahead of a start byte are skipped. A false start byte is not found out:
    // the frame taken from it fails its check at its end.
    bool recvData(const char* buf, int size, int& pos);

    // Whether lengths and end byte of the frame in recvFrame hold; `len` gets its payload length.
    bool isRecvOk(int& len);

protected:
    CTcpSocket* socket; // owned; its open() gives it a new descriptor
};

} // namespace gqdb

#pragma GCC diagnostic pop
