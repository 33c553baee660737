#pragma once

#include "support/openEndpoints.h"
#include "support/scriptedDatagramPeer.h"

#include "gqSocketUnix.h"
#include "udpApi.h"

#include <gtest/gtest.h>

#include <string>

#include <poll.h>
#include <sys/socket.h>

// CUdpAPI with its state in the open.
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

    // What is to be seen of the link, such as "down, open": the flag, the socket.
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

// With a read buffer, as a program's own client makes one; the base frees it.
class BufferedUdpClient : public OpenUdpClient {
public:
    BufferedUdpClient() { recvBuffer = new char[rawBufferSize]; }
};

// Connected to a peer in the hands of the test. Each `give` is a datagram that waits for the client, each `take` is one
// that the client has sent. The client waits long enough for what was given; where nothing was, let `quickly` make it
// wait for 20 ms only.
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

    // The peer's port is closed, and the client's socket knows it: its next call fails.
    void refuse()
    {
        peer.goAway();
        EXPECT_EQ(::send(descriptor(), "", 0, 0), 0);
        pollfd state = {descriptor(), 0, 0}; // an error is told unasked
        EXPECT_EQ(::poll(&state, 1, 5000), 1);
    }

    DatagramPeer peer;
};
