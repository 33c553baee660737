#pragma once

#include "gqSocketUnix.h"
#include "tcpApi.h"
#include "udpApi.h"

#include <atomic>
#include <string>
#include <vector>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // the base classes have no virtual destructor either

// Clients that recover from every failure of their link. A program calls ready() before each request:
//
//     gqdb::CReturningTcpClient client("192.0.2.7", 5000, 3000);
//     if (client.ready() == 1)
//         state = client.systemState();
//
// If ready() does not return 1, make no request; call ready() again later. It makes one attempt and does not pause. A
// request that failed is not repeated: the server may have carried it out. A failed allocation is passed on to the
// caller: call close() before the next ready().
//
// `host` is dotted IPv4 text. Host names are not resolved and give -1; resolve them with getaddrinfo(3). `timeoutMs` is
// the receive and the send time-out; setRecvOverTm and setSendOverTm change them. For TCP, 0 means no time-out.
//
// Only one thread may use an object at a time; this includes ready(). Different objects need no lock. The classes are
// inline and add no symbol to the library.

namespace gqdb {

// A TCP client that reconnects.
//
//   state                                             ready()
//   connected, nothing unread                         returns 1 after one select(2); the connection stays
//   connected, bytes unread: rest of an old reply,    reconnects
//     unrequested frame, or the server's close
//   not connected: new, closed, or after a time-out,  reconnects
//     a failure, or any refused reply
//
// Reconnecting closes the socket, discards a partial frame, opens a socket with both time-outs, connects and reads the
// greeting. The send time-out limits connecting. The receive time-out limits each read of the greeting, not the whole
// greeting: a server that keeps sending single bytes can prolong it indefinitely. setRecvOverTm prints its line to
// standard output each time.
//
// TCP replies are matched to requests by their order alone. A server must therefore send one greeting and one reply per
// request; a further frame that arrives after ready() has returned is taken for the reply. Receive the reply to each
// request that sendDatas, sendInt or sendInts sent, or call close(), before the next ready().
class CReturningTcpClient : public CTcpAPI {
public:
    // Does not connect yet.
    CReturningTcpClient(const std::string& host, int port, int timeoutMs)
    {
        serverHost = host;
        serverPort = port;
        recvOverTm = timeoutMs;
        sendOverTm = timeoutMs;
    }

    //    1  connected: make the request
    //    0  no connection within the send time-out; or no greeting in time, or the server closed or refused
    //   -1  connection refused, unreachable, no address, no descriptor or no memory
    int ready()
    {
        if (isIdle())
            return 1;
        return reopen() ? connect(serverHost, serverPort) : -1;
    }

    // As in CTcpAPI, but every result other than 1 also clears isConnected(): further frames of a refused reply may be
    // on their way.
    int requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out);
    int requestInts(const QByteArray& frame, int count, std::vector<int>& out);
    int requestStrings(const QByteArray& frame, int count, QStringList& out);
    int recvBytes(int count, std::vector<unsigned char>& out);
    int recvInts(int count, std::vector<int>& out);
    int recvStrings(int count, QStringList& out);
    int recvDatas(int& len);

protected:
    // These open sockets without time-outs; ready() replaces them.
    using CTcpAPI::checkConnect;
    using CTcpAPI::connect;
    using CTcpAPI::connectServer;

    // Returns true if connected with nothing unread. A server that has closed the connection counts as unread.
    bool isIdle() { return connected && socket->isReadable(0) == 0; }

    // Replaces the socket by an unconnected one with both time-outs and discards a partial frame, which would swallow
    // the greeting. Returns false if no socket could be opened.
    bool reopen()
    {
        close();
        recvFrame.clear();
        recvFrameSize = 0;
        if (socket->open() != 1)
            return false;
        setRecvOverTm(recvOverTm);
        setSendOverTm(sendOverTm);
        return true;
    }

private:
    int keepIfGood(int result)
    {
        connected = connected && result == 1;
        return result;
    }
};

inline int CReturningTcpClient::requestBytes(const QByteArray& frame, int count, std::vector<unsigned char>& out)
{
    return keepIfGood(CTcpAPI::requestBytes(frame, count, out));
}

inline int CReturningTcpClient::requestInts(const QByteArray& frame, int count, std::vector<int>& out)
{
    return keepIfGood(CTcpAPI::requestInts(frame, count, out));
}

inline int CReturningTcpClient::requestStrings(const QByteArray& frame, int count, QStringList& out)
{
    return keepIfGood(CTcpAPI::requestStrings(frame, count, out));
}

inline int CReturningTcpClient::recvBytes(int count, std::vector<unsigned char>& out)
{
    return keepIfGood(CTcpAPI::recvBytes(count, out));
}

inline int CReturningTcpClient::recvInts(int count, std::vector<int>& out)
{
    return keepIfGood(CTcpAPI::recvInts(count, out));
}

inline int CReturningTcpClient::recvStrings(int count, QStringList& out)
{
    return keepIfGood(CTcpAPI::recvStrings(count, out));
}

inline int CReturningTcpClient::recvDatas(int& len)
{
    return keepIfGood(CTcpAPI::recvDatas(len));
}

// A UDP client with a read buffer. Each ready() opens a new socket: a late or doubled reply to an earlier request is
// sent to that request's local port, which is closed.
//
// The program's last 4096 requests, over all objects, did not use that port. The system alone would soon give a closed
// port to another client of the same server: with 50 clients, 8000 requests and 5000 late or doubled replies a second,
// about 4 replies a second were wrong. If the system has fewer free ports than that, one may be used again earlier.
// Sequence numbers are not compared, because servers need not return them.
//
// States: each ready() makes the object connected and idle, whatever happened before. As with every CUdpAPI,
// isConnected() says nothing about the server, and the integer requests return a reply of 0 and a time-out alike;
// recvDatas distinguishes them. The receive time-out applies to each datagram, and 0 polls.
//
// Firewalls and servers must accept a changing source port. Call ready() before each request, also if the reply to the
// previous one has arrived: it may arrive twice. If one reply consists of several datagrams, doubled or reordered ones
// among them are not recognised; use TCP for such lists.
class CReturningUdpClient : public CUdpAPI {
public:
    // Opens no socket yet.
    CReturningUdpClient(const std::string& host, int port, int timeoutMs)
    {
        serverHost = host;
        serverPort = port;
        recvOverTm = timeoutMs;
        sendOverTm = timeoutMs;
        recvBuffer = new char[rawBufferSize]; // the base class frees it
    }

    //    1  make the request
    //   -1  no socket, no route, or no address
    int ready()
    {
        for (int attempt = 0; attempt < 16; ++attempt) {
            close();
            std::string address;
            int port = 0;
            if (connect(serverHost, serverPort) != 1 || socket->getSockName(address, port) != 1)
                return -1;
            if (isFresh(port))
                break;
        }
        return 1;
    }

protected:
    // ready() replaces these.
    using CUdpAPI::connect;
    using CUdpAPI::connectServer;

private:
    // Notes the use of a local port. Returns false if it is one of the last 4096 for which this returned true.
    static bool isFresh(int port)
    {
        static std::atomic<unsigned int> uses{0};
        static std::atomic<unsigned int> lastUse[65536]; // by port, counted from 1; 0 means unused
        const unsigned int now = uses + 1;
        const unsigned int before = lastUse[port & 0xFFFF].exchange(now);
        if (before != 0 && now - before <= 4096)
            return false;
        ++uses;
        return true;
    }
};

} // namespace gqdb

#pragma GCC diagnostic pop
