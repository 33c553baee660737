#pragma once

#include "gqSocketUnix.h"
#include "tcpApi.h"

#include <gtest/gtest.h>

#include <string>

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

// CTcpAPI with public access to its state.
class OpenTcpClient : public gqdb::CTcpAPI {
public:
    using CTcpAPI::connected;
    using CTcpAPI::recvBuffer;
    using CTcpAPI::recvFrame;
    using CTcpAPI::recvFrameSize;
    using CTcpAPI::recvOverTm;
    using CTcpAPI::sendOverTm;
    using CTcpAPI::sendSeq;
    using CTcpAPI::serverHost;
    using CTcpAPI::serverPort;
    using CTcpAPI::socket;

    bool isOpen() { return socket->isValid(); }

    // The link state as text, such as "down, open": the flag, then the socket.
    std::string link() { return std::string(connected ? "up, " : "down, ") + (isOpen() ? "open" : "closed"); }

    bool holdsNoFrame() { return recvFrame.isEmpty() && recvFrameSize == 0; }

    int descriptor()
    {
        struct OpenSocket : CTcpSocket {
            static int* CAbstractSocket::*cell() { return &OpenSocket::handle; }
        };
        return *(socket->*OpenSocket::cell());
    }

    // The socket's current SO_RCVTIMEO or SO_SNDTIMEO in milliseconds; 0 means no time-out.
    int timeOut(int option)
    {
        timeval time = {-1, 0};
        socklen_t size = sizeof time;
        EXPECT_EQ(::getsockopt(descriptor(), SOL_SOCKET, option, &time, &size), 0);
        return int(time.tv_sec * 1000 + time.tv_usec / 1000);
    }

    // Removes the client's endpoint.
    void loseSocket()
    {
        delete socket;
        socket = nullptr;
    }
};

// A client whose link is up without a server: its endpoint is one end of a local socket pair that keeps message
// boundaries. Each `give` is one read of the client, each `take` one write. A read without data ends after 20 ms.
class LinkedTcpClient : public OpenTcpClient {
public:
    explicit LinkedTcpClient(int type = SOCK_SEQPACKET)
    {
        int ends[2] = {-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends), 0);
        socket->close();
        socket->setSocket({ends[0]});
        peer = ends[1];
        const timeval limit = {0, 20000};
        ::setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        ::setsockopt(ends[0], SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
        recvBuffer = new char[rawBufferSize]; // the base frees it
        connected = true;
    }

    ~LinkedTcpClient() { hangUp(); }

    void give(const QByteArray& bytes)
    {
        EXPECT_EQ(::send(peer, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT), bytes.size());
    }

    // Returns an empty array if the client has written nothing more.
    QByteArray take()
    {
        QByteArray bytes(100000, '\0');
        const ssize_t count = ::recv(peer, bytes.data(), size_t(bytes.size()), MSG_DONTWAIT);
        return bytes.left(count > 0 ? int(count) : 0);
    }

    void hangUp()
    {
        if (peer >= 0)
            ::close(peer);
        peer = -1;
    }

    int peer; // the other end, -1 after hanging up
};
