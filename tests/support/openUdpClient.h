#pragma once

#include "support/openEndpoints.h"
#include "support/scriptedDatagramPeer.h"

#include "gqSocketUnix.h"
#include "udpApi.h"

#include <gtest/gtest.h>

#include <string>

#include <poll.h>
#include <sys/socket.h>

// CUdpAPI with public access to its state.
class OpenUdpClient : public gqdb::CUdpAPI {
public:
    using CUdpAPI::connected;
    using CUdpAPI::recvBuffer;
    using CUdpAPI::recvFrame;
    using CUdpAPI::recvFrameSize;
    using CUdpAPI::recvOverTm;
    using CUdpAPI::sendOverTm;
    using CUdpAPI::sendSeq;
    using CUdpAPI::serverHost;
    using CUdpAPI::serverPort;
    using CUdpAPI::socket;

    bool isOpen() const { return socket->isValid(); }

    // The link state as text, such as "down, open": the flag, then the socket.
    std::string link() const { return std::string(connected ? "up, " : "down, ") + (isOpen() ? "open" : "closed"); }

    bool holdsNoFrame() const { return recvFrame.isEmpty() && recvFrameSize == 0; }

    void dropFrame()
    {
        recvFrame.clear();
        recvFrameSize = 0;
    }

    int descriptor() const { return descriptorOf(*socket); }

    int localPort() const
    {
        std::string address;
        int port = -1;
        EXPECT_EQ(socket->getSockName(address, port), 1);
        return port;
    }
};

// With a read buffer, as a derived client may create one. The base class frees it.
class BufferedUdpClient : public OpenUdpClient {
public:
    BufferedUdpClient() { recvBuffer = new char[rawBufferSize]; }
};

// Connected to a peer that the test controls. Each `give` queues a datagram for the client, each `take` returns one
// that the client has sent. The client waits long enough for what was given. If nothing was given, use `quickly`, which
// limits the wait to 20 ms.
class LinkedUdpClient : public BufferedUdpClient {
public:
    LinkedUdpClient()
    {
        recvOverTm = 5000;
        EXPECT_EQ(connect("127.0.0.1", peer.port()), 1);
    }

    void give(const QByteArray& bytes) { peer.give(localPort(), bytes); }
    QByteArray take() { return peer.take(); }
    void quickly() { recvOverTm = 20; }

    // Closes the peer's port and waits until the client's socket has the error: its next call fails.
    void refuse()
    {
        peer.goAway();
        EXPECT_EQ(::send(descriptor(), "", 0, 0), 0);
        pollfd state = {descriptor(), 0, 0}; // errors are reported without asking
        EXPECT_EQ(::poll(&state, 1, 5000), 1);
    }

    DatagramPeer peer;
};
