#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/tcpConnection.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

TEST(SocketTimeOuts, areSetOnTheDescriptorInMilliseconds)
{
    Open<CTcpSocket> socket;
    EXPECT_EQ(socket.setRecvOverTm(1500), 1);
    EXPECT_EQ(socket.setSendOverTm(2300), 1);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_RCVTIMEO), 1500);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_SNDTIMEO), 2300);
}

TEST(SocketTimeOuts, areRemovedByZero)
{
    Open<CTcpSocket> socket;
    socket.setRecvOverTm(1500);
    socket.setSendOverTm(1500);
    EXPECT_EQ(socket.setRecvOverTm(0), 1);
    EXPECT_EQ(socket.setSendOverTm(0), 1);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_RCVTIMEO), 0);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_SNDTIMEO), 0);
}

TEST(SocketTimeOuts, areKeptWhenTheSystemRefusesANegativeFraction)
{
    Open<CTcpSocket> socket;
    socket.setRecvOverTm(2000);
    socket.setSendOverTm(2000);
    EXPECT_EQ(socket.setRecvOverTm(-1500), 1);
    EXPECT_EQ(socket.setSendOverTm(-1500), 1);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_RCVTIMEO), 2000);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_SNDTIMEO), 2000);
}

TEST(SocketTimeOuts, endAReadImmediatelyIfNegativeByAWholeSecond)
{
    Connection connection;
    connection.socket.setRecvOverTm(limitMs); // limits the test if the next one is refused
    EXPECT_EQ(connection.socket.setRecvOverTm(-1000), 1);
    const auto start = Clock::now();
    char byte = 0;
    EXPECT_EQ(connection.socket.recv(&byte, 1), 0);
    EXPECT_LT(msSince(start), limitMs / 2);
}

TEST(SocketTimeOuts, areLostWithTheDescriptor)
{
    const Listener listener(5);
    Open<CTcpSocket> socket;
    socket.setRecvOverTm(1500);
    socket.close();
    EXPECT_EQ(socket.setRecvOverTm(1500), 0);
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), 1);
    EXPECT_EQ(timeOutMs(*socket.handle, SO_RCVTIMEO), 0);
}

TEST(SocketTimeOuts, arePrintedOnlyForReading)
{
    Pipe output;
    {
        CTcpSocket socket;
        CTcpServer server;
        std::fflush(stdout); // what the test program has buffered
        const Replacement standardOutput(STDOUT_FILENO, output.writeEnd);
        socket.setRecvOverTm(9000);
        socket.setSendOverTm(9000);
        socket.setRecvBuf(1000);
        socket.setSendBuf(1000);
        socket.setRecvOverTm(-1500);
        server.setRecvOverTm(9000);
    }
    output.writeEnd.close();
    char text[200] = {};
    EXPECT_GT(::read(output.readEnd, text, sizeof text - 1), 0);
    EXPECT_STREQ(text, "setRecvOverTm:0, 9000\nsetRecvOverTm:-1, -1500\n");
}

TEST(SocketBuffers, areSetAsOnAPlainSocket)
{
    const int size = 10000;
    const Descriptor plain = plainSocket();
    ::setsockopt(plain, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    ::setsockopt(plain, SOL_SOCKET, SO_SNDBUF, &size, sizeof size);

    Open<CTcpSocket> socket;
    EXPECT_EQ(socket.setRecvBuf(size), 1);
    EXPECT_EQ(socket.setSendBuf(size), 1);
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_RCVBUF), option(plain, SOL_SOCKET, SO_RCVBUF));
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_SNDBUF), option(plain, SOL_SOCKET, SO_SNDBUF));
}

TEST(SocketSetAsyncMode, makesTheDescriptorNonBlocking)
{
    Open<CTcpSocket> socket;
    EXPECT_FALSE(isNonBlocking(*socket.handle));
    EXPECT_EQ(socket.setAsyncMode(), 1);
    EXPECT_TRUE(isNonBlocking(*socket.handle));
    EXPECT_EQ(socket.setAsyncMode(), 1);
    EXPECT_TRUE(isNonBlocking(*socket.handle));
}

TEST(SocketSetAsyncMode, failsOnAClosedSocket)
{
    CTcpSocket socket;
    socket.close();
    EXPECT_EQ(socket.setAsyncMode(), 0);
    EXPECT_EQ(errno, EBADF);
}

TEST(SocketNames, returnBothEndsOfAConnection)
{
    Connection connection;
    std::string address;
    int port = 0;
    EXPECT_EQ(connection.socket.getPeerName(address, port), 1);
    EXPECT_EQ(address, "127.0.0.1");
    EXPECT_EQ(port, connection.listener.port());

    sockaddr_in local = {};
    socklen_t size = sizeof local;
    ::getpeername(connection.peer, reinterpret_cast<sockaddr*>(&local), &size);
    EXPECT_EQ(connection.socket.getSockName(address, port), 1);
    EXPECT_EQ(address, "127.0.0.1");
    EXPECT_EQ(port, ntohs(local.sin_port));
}

TEST(SocketNames, leaveTheOutputsWithoutAPeerOrASocket)
{
    CTcpSocket socket;
    std::string address = "before";
    int port = 99;
    EXPECT_EQ(socket.getPeerName(address, port), 0);
    EXPECT_EQ(errno, ENOTCONN);
    socket.close();
    EXPECT_EQ(socket.getPeerName(address, port), 0);
    EXPECT_EQ(socket.getSockName(address, port), 0);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(address, "before");
    EXPECT_EQ(port, 99);
}

TEST(SocketIsReadable, reportsDataAndTheEndOfTheStream)
{
    Connection connection;
    EXPECT_EQ(connection.socket.isReadable(0), 0);
    EXPECT_EQ(connection.socket.isReadable(20), 0);

    ::send(connection.peer, "x", 1, 0);
    EXPECT_EQ(connection.socket.isReadable(limitMs), 1);
    char byte = 0;
    EXPECT_EQ(connection.socket.recv(&byte, 1), 1);
    EXPECT_EQ(connection.socket.isReadable(0), 0);

    connection.peer.close();
    EXPECT_EQ(connection.socket.isReadable(limitMs), 1);
}

TEST(SocketIsReadable, reportsAPendingConnection)
{
    CTcpServer server;
    ASSERT_EQ(server.open("127.1", 0, 5), 1);
    EXPECT_EQ(server.isReadable(0), 0);
    std::string address;
    int port = 0;
    server.getSockName(address, port);
    const Descriptor client = connected("127.0.0.1", port);
    EXPECT_EQ(server.isReadable(limitMs), 1);
}

TEST(SocketIsReadable, refusesANegativeTime)
{
    Connection connection;
    for (const int ms : {-1, -1000}) {
        EXPECT_EQ(connection.socket.isReadable(ms), -1);
        EXPECT_EQ(errno, EINVAL);
    }
}

TEST(SocketIsReadable, watchesStandardInputBeforeItWasEverOpened)
{
    const Pipe input;
    const Replacement standardInput(STDIN_FILENO, input.readEnd);
    CTcpServer server;
    EXPECT_EQ(server.isReadable(0), 0);
    EXPECT_EQ(::write(input.writeEnd, "x", 1), 1);
    EXPECT_EQ(server.isReadable(limitMs), 1);
}

// Every form waits the full time on a closed socket. The following read fails.
TEST(ClosedSocket, returnsSetBitsOnATimeOut)
{
    CTcpSocket socket;
    socket.close();

    auto start = Clock::now();
    EXPECT_EQ(socket.isReadable(30), 1);
    EXPECT_GE(msSince(start), 30);
    char byte = 0;
    EXPECT_EQ(socket.recv(&byte, 1), -1);

    start = Clock::now();
    EXPECT_EQ(socket.isWritable(30), -1);
    EXPECT_GE(msSince(start), 30);

    start = Clock::now();
    int readable = 91;
    int writable = 92;
    int exceptional = 93;
    EXPECT_EQ(socket.select(30, readable, writable, exceptional), 0);
    EXPECT_GE(msSince(start), 30);
    EXPECT_EQ(readable, 1);
    EXPECT_EQ(writable, 1);
    EXPECT_EQ(exceptional, 1);

    std::vector<TcpSocketStatus> rows(1);
    rows[0].socket = &socket;
    start = Clock::now();
    EXPECT_EQ(CGqSocket::select(rows, 30), 0);
    EXPECT_GE(msSince(start), 30);
    EXPECT_EQ(rows[0].readable, 1);
    EXPECT_EQ(rows[0].writable, 1);
    EXPECT_EQ(rows[0].exceptional, 1);
}

// A connection whose descriptor is beyond the 1024 bits of an fd_set.
class HighDescriptor : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &kept), 0);
        if (kept.rlim_max != RLIM_INFINITY && kept.rlim_max < 2000)
            GTEST_SKIP() << "the system allows only " << kept.rlim_max << " descriptors";
        rlimit raised = kept;
        raised.rlim_cur = std::max<rlim_t>(kept.rlim_cur, 2000);
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &raised), 0);

        connection = std::make_unique<Connection>();
        moveTo(socket(), 1500);
    }

    void TearDown() override
    {
        connection.reset();
        ::setrlimit(RLIMIT_NOFILE, &kept);
    }

    CTcpSocket& socket() { return connection->socket; }

    rlimit kept = {};
    std::unique_ptr<Connection> connection;
};

TEST_F(HighDescriptor, isWatchedForReading)
{
    EXPECT_EQ(socket().isReadable(0), 0);
    ::send(connection->peer, "x", 1, 0);
    EXPECT_EQ(socket().isReadable(limitMs), 1);
    EXPECT_EQ(socket().isReadable(-1), -1);
}

TEST_F(HighDescriptor, isWatchedForWriting)
{
    EXPECT_EQ(socket().isWritable(limitMs), 1);
    EXPECT_EQ(socket().isWritable(-1), -1);
}

TEST_F(HighDescriptor, isWatchedForAllAtOnce)
{
    int readable = 91;
    int writable = 92;
    int exceptional = 93;
    EXPECT_EQ(socket().select(limitMs, readable, writable, exceptional), 1);
    EXPECT_EQ(readable, 0);
    EXPECT_EQ(writable, 1);
    EXPECT_EQ(exceptional, 0);
}

TEST_F(HighDescriptor, isWatchedInAListWithOthers)
{
    Connection low;
    CTcpSocket closed;
    closed.close();
    std::vector<TcpSocketStatus> rows(3);
    rows[0].socket = &closed;
    rows[1].socket = &socket();
    rows[2].socket = &low.socket;
    ::send(connection->peer, "x", 1, 0);
    ASSERT_TRUE(becomes(connection->descriptor(), POLLIN));
    for (const int descriptor : {1500, 1025}) { // 1025 needs the smallest set that is allocated
        SCOPED_TRACE(descriptor);
        moveTo(socket(), descriptor);
        EXPECT_EQ(CGqSocket::select(rows, limitMs), 3);
        EXPECT_EQ(rows[0].readable, 1);
        EXPECT_EQ(rows[1].readable, 1);
        EXPECT_EQ(rows[2].readable, 0);
        EXPECT_EQ(rows[1].writable, 1);
        EXPECT_EQ(rows[2].writable, 1);
        EXPECT_EQ(rows[1].exceptional, 0);
        EXPECT_EQ(rows[2].exceptional, 0);
    }
}
