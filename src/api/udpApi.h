#pragma once

#include "gqLibExport.h"
#include "socketApi.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // a virtual destructor would add slots to the vtables

class CUdpClient;

namespace gqdb {

// Request and reply client over datagrams, with the frames, payloads and results of CSocketAPI and nearly the
// operations of CTcpAPI. Nothing holds a link together: connect opens a socket and fixes the peer, no greeting comes,
// and nothing reconnects. What a user has to know:
//   - A plain object can't read a reply: it has no read buffer, so that a reply which comes gives -1 and closes the
//     socket. Derive a class whose constructor puts `new char[rawBufferSize]` into recvBuffer, which ~CSocketAPI gives
//     back; docs/guide/fieldLinks.md shows one.
//   - Frames have 64 bytes at least: addEnd of this class pads the payload with zeros, which every standard form
//     ignores.
//   - A wait is recvOverTm long, 3000 ms from the start, for each datagram; a time-out gives 0 and leaves the socket
//     open. 0 polls, and a negative time gives -1. setSendOverTm has no effect.
//   - A refused reply, an error frame among them, leaves isConnected() as it was. A failed send or read clears it and
//     closes the socket; connect opens it again. The requests don't look at it.
//
// One thread at a time on one object.
class GQLIB_EXPORT CUdpAPI : public CSocketAPI {
public:
    CUdpAPI(); // opens no socket
    ~CUdpAPI();

    // --- Link ---

    // Opens a socket if none is open, and fixes the peer. Nothing is sent: 1 says nothing about a server.
    //    1  and isConnected()
    //   -1  failed
    int connect(const std::string& host, int port);

    // The same, with neither address nor flag kept.
    int connectServer(const std::string& host, int port);

    // Closes the socket and clears the connected flag. 1.
    int close();

    // --- Ready-made commands, as CTcpAPI has them ---

    int systemState();                  // command 1, payload: the current time in seconds since 1970
    int systemTime();                   // command 2, likewise
    int clear();                        // command 3, likewise
    int setTime(int first, int second); // command 5, a list of two integers: over TCP the two stand bare
    int setState(int value);            // command 6, one integer

    // --- Requests: send, receive ---

    // `frame` is finished, with its tail. `count` and `out` as for the recv operation of the same kind.
    int requestInt(const QByteArray& frame);
    int requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out);
    int requestInts(const QByteArray& frame, int count, std::vector<int>& out);
    int requestStrings(const QByteArray& frame, int count, QStringList& out);

    // The payload is one integer, or a list of integers, and the padding.
    int requestInt(unsigned char command, int value);
    int requestInt(unsigned char command, const std::vector<int>& values);

    // --- Sending: 1, or -1 with the socket closed and the connected flag cleared ---

    // Pads to 61 bytes, then does what CSocketAPI::addEnd does. 1; or 0 below 4 bytes, with `data` untouched.
    static int addEnd(QByteArray& data);

    // The frame as it stands. Above 65507 bytes it fits no datagram: -1, with the socket closed.
    int sendDatas(const QByteArray& frame);
    int sendInt(unsigned char command, int value);
    int sendInts(unsigned char command, const std::vector<int>& values);

    // --- Receiving ---

    // One frame: the integer of its payload, or a code.
    int recvInt();

    // Frames, a datagram each, until `out`, which is appended to, holds `count` elements in total, those on entry
    // included; a single frame if `count` is 0 or below. 1, or the first code of a frame; what came ahead of it stays
    // in `out`.
    int recvBytes(int count, std::vector<unsigned char>& out);
    int recvInts(int count, std::vector<int>& out);
    int recvStrings(int count, QStringList& out);

    // --- Frame by frame, for derived clients ---

    // Waits for one datagram and reads it.
    //     1  recvFrame holds a checked frame; `len` is its payload length. As for CTcpAPI::recvDatas
    //     0  no datagram in time; or no whole frame in it, whose part then stays for the next call; or a frame that
    //        failed its check and was dropped; or, with the socket closed, a datagram that was gone when it was read
    //    -1  the wait failed; or the read did, with the socket closed
    //   any other  an error frame's code, -2 if it has none
    int recvDatas(int& len);

    // As for CTcpAPI.
    bool recvData(const char* buf, int size, int& pos);
    bool isRecvOk(int& len);

protected:
    CUdpClient* socket; // owned
};

} // namespace gqdb

#pragma GCC diagnostic pop
