#pragma once

#include "gqLibExport.h"
#include "socketApi.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

class CTcpSocket;

namespace gqdb {

// Request and reply client over one TCP connection. Call connect once, then any number of request* operations and
// ready-made commands, then close. CSocketAPI documents frames, payloads and results.
//
// If the link is down, request* and the ready-made commands except setTime reconnect first, by checkConnect.
// Behaviour to know in advance:
//   - The time-outs are set on the socket that the constructor opens. A socket that a later connect opens has none:
//     the wait for the greeting and each read can last until the peer closes. CReturningTcpClient, in
//     returningClient.h, sets them on every socket.
//   - If recvInt refuses a reply (error frame, bad frame, short payload), it marks the link down but leaves the socket
//     open. The next request then waits for a greeting that does not come, returns 0 and closes the socket; the request
//     after it reconnects. If recvBytes, recvInts or recvStrings refuses a reply, the link stays up.
//   - Bytes that a read brings after the end of a frame are lost: each request has one reply.
//   - A request is one send(2); a partial write counts as success.
class GQLIB_EXPORT CTcpAPI : public CSocketAPI {
public:
    // Opens a socket and sets both time-outs to 9000 ms. This prints "setRecvOverTm:0, 9000" to standard output, as
    // every setRecvOverTm on an open socket prints a line, and makes the process ignore SIGPIPE.
    CTcpAPI();
    ~CTcpAPI();

    // Store the time-out in milliseconds and set it on the socket if it is open. Return 1, also if it is closed.
    int setRecvOverTm(int ms) override;
    int setSendOverTm(int ms) override;

    // --- Link ---

    // Allocates the read buffer, stores the address (dotted IPv4 text, port in host byte order) for reconnecting, and
    // connects.
    //    1  connected, greeting received
    //    0  no greeting: time-out, closed by the server, or a greeting of 0 or below; or still connecting
    //   -1  refused, unreachable, no memory
    // If the link is up, connect waits for a second greeting, which does not come. It then returns 0, and the link is
    // down.
    int connect(const std::string& host, int port);

    // Connects once and receives the server's greeting, a frame with one integer above 0; an error frame with a code
    // above 1 is accepted too. Stores no address and does not set the connected flag. Returns 1, 0 or -1 as above.
    int connectServer(const std::string& host, int port);

    // If not connected, calls connectServer with the stored address and sets the connected flag if that returns 1.
    // Returns 1, or the result of connectServer. connect must have been called before: it allocates the read buffer.
    int checkConnect();

    // Closes the socket and clears the connected flag. Returns 1.
    int close();

    // --- Ready-made commands: return the integer of the reply, or a code ---
    // The server defines their effect and the meaning of the integers.

    int systemState();                  // command 1, payload: the current time in seconds since 1970
    int systemTime();                   // command 2, payload: the current time in seconds since 1970
    int clear();                        // command 3, payload: the current time in seconds since 1970
    int setTime(int first, int second); // command 5, payload: the two integers without a count; does not reconnect
    int setState(int value);            // command 6, payload: the integer

    // --- Requests: checkConnect, send, receive. The first step that fails determines the result ---

    // `frame` is complete, with its tail. `count` and `out` are those of the recv operation.
    int requestInt(const QByteArray& frame);
    int requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out);
    int requestInts(const QByteArray& frame, int count, std::vector<int>& out);
    int requestStrings(const QByteArray& frame, int count, QStringList& out);

    // Send one integer or a list of integers.
    int requestInt(unsigned char command, int value);
    int requestInt(unsigned char command, const std::vector<int>& values);

    // --- Sending: 1; or -1, with the socket closed and the link down. They do not reconnect ---

    // Sends the frame unchanged, with one send(2). Returns -1 if it is empty.
    int sendDatas(const QByteArray& frame);
    int sendDatas(unsigned char command); // sends a frame without a payload
    // Send a frame with the standard payload.
    int sendInt(unsigned char command, int value);
    int sendInts(unsigned char command, const std::vector<int>& values);

    // --- Receiving ---

    // Receives one frame and returns the integer of its payload, or a code, after which the link is down.
    int recvInt();

    // Receive frames and append their elements to `out` until it has `count` elements, including those on entry; at
    // least one frame. Return 1, or the first other code; elements received before it stay in `out`.
    int recvBytes(int count, std::vector<unsigned char>& out);
    int recvInts(int count, std::vector<int>& out);
    int recvStrings(int count, QStringList& out);

    // --- Frame by frame, for derived clients ---

    // Reads until recvFrame is a complete frame, then checks it. `len` receives its payload length.
    //     1  received: the caller parses recvFrame from offset headerSize, then clears it and sets recvFrameSize to 0.
    //        An error frame with code 1 also returns 1, but leaves recvFrame empty: check before parsing
    //     0  time-out, and the socket was closed; or the frame failed its check and was dropped
    //    -1  the peer closed or the read failed, and the socket was closed
    //   any other  the code of an error frame, -2 if it has none
    int recvDatas(int& len);

    // Appends bytes of `buf`, from `pos` on, to recvFrame and advances `pos`. Returns true once the frame is complete,
    // false if the bytes ended first; the next call continues. Bytes before a start byte are skipped. Garbage that
    // contains a start byte is taken for a frame, which isRecvOk then refuses unless length and end byte happen to be
    // consistent.
    bool recvData(const char* buf, int size, int& pos);

    // Returns true if length and end byte of recvFrame are consistent. `len` receives its payload length.
    bool isRecvOk(int& len);

protected:
    CTcpSocket* socket; // owned
};

} // namespace gqdb

#pragma GCC diagnostic pop
