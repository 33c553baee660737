#pragma once

#include "gqLibExport.h"
#include "socketApi.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

class CUdpClient;

namespace gqdb {

// Request and reply client over datagrams, with nearly the operations of CTcpAPI. CSocketAPI documents frames, payloads
// and results. connect opens a socket and sets the peer; there is no greeting, and nothing reconnects. Behaviour to
// know in advance:
//   - A plain object cannot receive: it has no read buffer, so that a reply returns -1 and closes the socket. Derive a
//     class whose constructor sets recvBuffer to `new char[rawBufferSize]`, which ~CSocketAPI deletes;
//     docs/guide/fieldLinks.md shows one.
//   - The frames that it builds have at least 64 bytes: addEnd of this class pads the payload with zeros, which every
//     standard payload allows.
//   - recvOverTm, initially 3000 ms, is the wait for each datagram. A time-out returns 0 and leaves the socket open. A
//     time of 0 polls; a negative one returns -1 and leaves the socket open. setSendOverTm has no effect.
//   - A refused reply, including an error frame, does not change isConnected(). A failed send or read clears it and
//     closes the socket; connect opens it again. The requests do not check it.
class GQLIB_EXPORT CUdpAPI : public CSocketAPI {
public:
    CUdpAPI(); // opens no socket
    ~CUdpAPI();

    // --- Link ---

    // Opens a socket if none is open, and sets the peer (dotted IPv4 text, port in host byte order). Sends nothing:
    // success does not mean that a server exists. Returns 1 and sets the connected flag, or -1 and clears it.
    int connect(const std::string& host, int port);

    // Does the same without changing the connected flag.
    int connectServer(const std::string& host, int port);

    // Closes the socket and clears the connected flag. Returns 1.
    int close();

    // --- Ready-made commands: return the integer of the reply, or a code ---

    int systemState();                  // command 1, payload: the current time in seconds since 1970
    int systemTime();                   // command 2, payload: the current time in seconds since 1970
    int clear();                        // command 3, payload: the current time in seconds since 1970
    int setTime(int first, int second); // command 5, payload: a list of the two integers, unlike over TCP
    int setState(int value);            // command 6, payload: the integer

    // --- Requests: send, receive ---

    // `frame` is complete, with its tail. `count` and `out` are those of the recv operation.
    int requestInt(const QByteArray& frame);
    int requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out);
    int requestInts(const QByteArray& frame, int count, std::vector<int>& out);
    int requestStrings(const QByteArray& frame, int count, QStringList& out);

    // Send one integer or a list of integers.
    int requestInt(unsigned char command, int value);
    int requestInt(unsigned char command, const std::vector<int>& values);

    // --- Sending: 1; or -1, with the socket closed and the connected flag cleared ---

    // Pads with zeros to 61 bytes, then calls CSocketAPI::addEnd. Returns 1, or 0 if `data` has fewer than 4 bytes
    // (unchanged).
    static int addEnd(QByteArray& data);

    // Sends the frame unchanged, as one datagram. Returns -1 if it is empty or has more than 65507 bytes.
    int sendDatas(const QByteArray& frame);
    int sendInt(unsigned char command, int value);
    int sendInts(unsigned char command, const std::vector<int>& values);

    // --- Receiving ---

    // Receives one frame and returns the integer of its payload, or a code.
    int recvInt();

    // Receive frames, one per datagram, and append their elements to `out` until it has `count` elements, including
    // those on entry; at least one frame. Return 1, or the first other code; elements received before it stay in `out`.
    int recvBytes(int count, std::vector<unsigned char>& out);
    int recvInts(int count, std::vector<int>& out);
    int recvStrings(int count, QStringList& out);

    // --- Frame by frame, for derived clients ---

    // Waits for one datagram, reads and checks it. `len` receives the payload length.
    //     1  received: the caller parses recvFrame as documented for CTcpAPI::recvDatas
    //     0  time-out; or the datagram ended before the frame, which the next call continues; or the frame failed its
    //        check and was dropped; or a non-blocking socket had nothing to read after all and was closed
    //    -1  the wait failed; or the datagram was empty or the read failed, and the socket was closed
    //   any other  the code of an error frame, -2 if it has none
    int recvDatas(int& len);

    // As documented for CTcpAPI.
    bool recvData(const char* buf, int size, int& pos);
    bool isRecvOk(int& len);

protected:
    CUdpClient* socket; // owned
};

} // namespace gqdb

#pragma GCC diagnostic pop
