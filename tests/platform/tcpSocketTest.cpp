#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/tcpConnection.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

TEST(TcpSocketOpen, createsASocketWithItsOptions)
{
    const int asked = 921600;
    const Descriptor plain = plainSocket();
    ::setsockopt(plain, SOL_SOCKET, SO_RCVBUF, &asked, sizeof asked);
    ::setsockopt(plain, SOL_SOCKET, SO_SNDBUF, &asked, sizeof asked);

    Open<CTcpSocket> socket;
    ASSERT_TRUE(socket.isValid());
    EXPECT_TRUE(socket.opened);
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_TYPE), SOCK_STREAM);
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_DOMAIN), AF_INET);
    EXPECT_EQ(option(*socket.handle, IPPROTO_TCP, TCP_NODELAY), 0); // Nagle's algorithm stays on
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_EQ(lingerOf(*socket.handle).l_onoff, 1);
    EXPECT_EQ(lingerOf(*socket.handle).l_linger, 0);
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_RCVBUF), option(plain, SOL_SOCKET, SO_RCVBUF));
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_SNDBUF), option(plain, SOL_SOCKET, SO_SNDBUF));
    EXPECT_EQ(option(*socket.handle, SOL_SOCKET, SO_KEEPALIVE), 0);
    EXPECT_FALSE(isNonBlocking(*socket.handle));
}

TEST(TcpSocketOpen, ignoresSigpipeEachTime)
{
    CTcpSocket socket;
    EXPECT_TRUE(isIgnored(SIGPIPE));
    std::signal(SIGPIPE, SIG_DFL);
    socket.close();
    EXPECT_EQ(socket.open(), 1);
    EXPECT_TRUE(isIgnored(SIGPIPE));
}

TEST(TcpSocketOpen, leavesTheReplacedSocketOpen)
{
    Open<CTcpSocket> socket;
    const Descriptor first(*socket.handle);
    EXPECT_EQ(socket.open(), 1);
    EXPECT_NE(*socket.handle, first);
    EXPECT_TRUE(isOpen(first));
    EXPECT_TRUE(isOpen(*socket.handle));
}

TEST(TcpSocketConnect, connectsAndTransfersBytesBothWays)
{
    Connection connection;
    EXPECT_EQ(connection.socket.send("request", 7), 7);
    EXPECT_EQ(received(connection.peer, 7), "request");

    EXPECT_EQ(::send(connection.peer, "reply", 5, 0), 5);
    char buffer[20] = {};
    ASSERT_EQ(connection.socket.isReadable(limitMs), 1);
    EXPECT_EQ(connection.socket.recv(buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "reply");
}

TEST(TcpSocketConnect, returnsOneOnAConnectedSocket)
{
    Connection connection;
    EXPECT_EQ(connection.socket.connect("127.0.0.1", connection.listener.port(), false), 1);
    EXPECT_EQ(errno, EISCONN);
}

TEST(TcpSocketConnect, leavesTheSocketOpenWhenRefused)
{
    Listener listener;
    Open<CTcpSocket> socket;
    const int descriptor = *socket.handle;
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_TRUE(socket.opened);
    EXPECT_EQ(*socket.handle, descriptor);

    listener.listen(5);
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), 1);
}

TEST(TcpSocketConnect, resolvesNoNames)
{
    const Listener listener(5);
    for (const char* address : {"", "localhost", "localhost.", "no.such.host.invalid"}) {
        CTcpSocket socket;
        EXPECT_EQ(socket.connect(address, listener.port(), false), -1) << address;
    }
}

TEST(TcpSocketConnect, usesTheLowBitsOfThePort)
{
    const Listener listener(5);
    CTcpSocket socket;
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port() + 65536, false), 1);
}

TEST(TcpSocketConnect, blocksOnANewSocketWhateverAsync)
{
    const Listener listener(5);
    Open<CTcpSocket> socket;
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), true), 1);
    EXPECT_FALSE(isNonBlocking(*socket.handle));
}

TEST(TcpSocketConnect, reopensAClosedSocket)
{
    Listener listener(5);
    Open<CTcpSocket> socket;
    socket.close();
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), 1);
    EXPECT_TRUE(socket.opened);
    EXPECT_FALSE(isNonBlocking(*socket.handle));
    EXPECT_EQ(lingerOf(*socket.handle).l_onoff, 1);
    EXPECT_EQ(socket.send("x", 1), 1);
    EXPECT_EQ(received(listener.accept(), 1), "x");
}

TEST(TcpSocketConnect, doesNotWaitOnAClosedSocketIfAsync)
{
    const Listener listener(5);
    Open<CTcpSocket> socket;
    socket.close();
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), true), 0);
    EXPECT_TRUE(isNonBlocking(*socket.handle));
    EXPECT_EQ(socket.isWritable(limitMs), 1);
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), true), 1);
}

TEST(TcpSocketConnect, staysInProgressUntilTheOtherSideAnswers)
{
    const CrowdedListener listener;
    CTcpSocket socket;
    socket.close();
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), true), 0);
    EXPECT_EQ(errno, EINPROGRESS);
    EXPECT_EQ(socket.isWritable(20), -1); // not in time
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), true), -1);
    EXPECT_EQ(errno, EALREADY);
}

TEST(TcpSocketConnect, waitsAgainOnABlockingSocketInProgress)
{
    const CrowdedListener listener;
    CTcpSocket socket;
    socket.setSendOverTm(50);
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), 0);
    const auto start = Clock::now();
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), -1);
    EXPECT_EQ(errno, EALREADY);
    EXPECT_GE(msSince(start), 40);
}

TEST(TcpSocketIsWritable, reportsARefusedConnect)
{
    const Listener listener;
    CTcpSocket socket;
    socket.close();
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), true), 0);
    EXPECT_EQ(socket.isWritable(limitMs), -1);
}

TEST(TcpSocketIsWritable, returnsZeroOnASocketThatNeverConnected)
{
    CTcpSocket socket;
    EXPECT_EQ(socket.isWritable(limitMs), 0);
    EXPECT_EQ(errno, ENOTCONN);
}

TEST(TcpSocketIsWritable, returnsOneOnAConnectedSocketWithRoom)
{
    Connection connection;
    EXPECT_EQ(connection.socket.isWritable(0), 1);
    connection.fill();
    EXPECT_EQ(connection.socket.isWritable(0), -1);
}

TEST(TcpSocketIsWritable, returnsZeroWhileUrgentDataIsPending)
{
    Connection connection;
    ::send(connection.peer, "x", 1, MSG_OOB);
    ASSERT_TRUE(becomes(connection.descriptor(), POLLPRI));
    EXPECT_EQ(connection.socket.isWritable(limitMs), 0);
    char urgent = 0;
    EXPECT_EQ(::recv(connection.descriptor(), &urgent, 1, MSG_OOB), 1);
    EXPECT_EQ(connection.socket.isWritable(limitMs), 1);
}

TEST(TcpSocketIsWritable, returnsMinusOneAfterAReset)
{
    Connection connection;
    reset(connection.peer);
    EXPECT_EQ(connection.socket.isReadable(limitMs), 1);
    EXPECT_EQ(connection.socket.isWritable(0), -1);
}

TEST(TcpSocketIsWritable, refusesANegativeTime)
{
    Connection connection;
    EXPECT_EQ(connection.socket.isWritable(-1), -1);
    EXPECT_EQ(errno, EINVAL);
}

class TcpSocketSelect : public testing::Test {
protected:
    Connection connection;
    int readable = 91;
    int writable = 92;
    int exceptional = 93;

    int select(int ms) { return connection.socket.select(ms, readable, writable, exceptional); }

    void expect(int wantedReadable, int wantedWritable, int wantedExceptional) const
    {
        EXPECT_EQ(readable, wantedReadable);
        EXPECT_EQ(writable, wantedWritable);
        EXPECT_EQ(exceptional, wantedExceptional);
    }
};

TEST_F(TcpSocketSelect, returnsImmediatelyWithRoomToWrite)
{
    const auto start = Clock::now();
    EXPECT_EQ(select(limitMs), 1);
    EXPECT_LT(msSince(start), limitMs / 2);
    expect(0, 1, 0);
}

TEST_F(TcpSocketSelect, reportsDataToRead)
{
    ::send(connection.peer, "x", 1, 0);
    ASSERT_EQ(connection.socket.isReadable(limitMs), 1);
    EXPECT_EQ(select(0), 2);
    expect(1, 1, 0);
}

TEST_F(TcpSocketSelect, reportsUrgentDataAsAnException)
{
    ::send(connection.peer, "x", 1, MSG_OOB);
    ASSERT_TRUE(becomes(connection.descriptor(), POLLPRI));
    EXPECT_EQ(select(0), 2);
    expect(0, 1, 1);

    ::send(connection.peer, "xx", 2, MSG_OOB); // only the second byte is urgent
    ASSERT_TRUE(becomes(connection.descriptor(), POLLIN));
    EXPECT_EQ(select(0), 3);
    expect(1, 1, 1);
}

TEST_F(TcpSocketSelect, returnsZerosOnATimeOut)
{
    connection.fill();
    const auto start = Clock::now();
    EXPECT_EQ(select(30), 0);
    EXPECT_GE(msSince(start), 30);
    expect(0, 0, 0);
}

TEST_F(TcpSocketSelect, refusesANegativeTimeAndLeavesTheOutputs)
{
    EXPECT_EQ(select(-1), -1);
    EXPECT_EQ(errno, EINVAL);
    expect(91, 92, 93);
}

TEST(TcpSocketRecv, readsTheAvailableBytes)
{
    Connection connection;
    EXPECT_EQ(::send(connection.peer, "abcdef", 6, 0), 6);
    char buffer[20] = {};
    ASSERT_EQ(connection.socket.isReadable(limitMs), 1);
    EXPECT_EQ(connection.socket.recv(buffer, 4), 4);
    EXPECT_EQ(connection.socket.recv(buffer + 4, 16), 2);
    EXPECT_STREQ(buffer, "abcdef");
}

TEST(TcpSocketRecv, returnsZeroOnATimeOut)
{
    Connection connection;
    connection.socket.setRecvOverTm(30);
    const auto start = Clock::now();
    char byte = 'x';
    EXPECT_EQ(connection.socket.recv(&byte, 1), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_GE(msSince(start), 25); // the system rounds to ticks
    EXPECT_EQ(byte, 'x');
}

TEST(TcpSocketRecv, returnsZeroImmediatelyOnANonBlockingSocket)
{
    Connection connection;
    connection.socket.setAsyncMode();
    char byte = 0;
    EXPECT_EQ(connection.socket.recv(&byte, 1), 0);
}

TEST(TcpSocketRecv, returnsMinusOneAtTheEndOfTheStream)
{
    Connection connection;
    ::send(connection.peer, "x", 1, 0);
    connection.peer.close();
    char byte = 0;
    EXPECT_EQ(connection.socket.recv(&byte, 1), 1);
    EXPECT_EQ(connection.socket.recv(&byte, 1), -1);
    EXPECT_EQ(connection.socket.recv(&byte, 1), -1);
}

TEST(TcpSocketRecv, returnsMinusOneWhenThePeerResets)
{
    Connection connection;
    reset(connection.peer);
    char byte = 0;
    EXPECT_EQ(connection.socket.recv(&byte, 1), -1);
    EXPECT_EQ(errno, ECONNRESET);
}

TEST(TcpSocketRecv, returnsMinusOneOnAClosedOrUnconnectedSocket)
{
    CTcpSocket socket;
    char byte = 0;
    EXPECT_EQ(socket.recv(&byte, 1), -1);
    EXPECT_EQ(errno, ENOTCONN);
    socket.close();
    EXPECT_EQ(socket.recv(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(TcpSocketSend, returnsZeroOnATimeOut)
{
    Connection connection;
    connection.fill();
    ::fcntl(connection.descriptor(), F_SETFL, 0); // blocks again
    connection.socket.setSendOverTm(30);
    const auto start = Clock::now();
    EXPECT_EQ(connection.socket.send("x", 1), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_GE(msSince(start), 25); // the system rounds to ticks
}

TEST(TcpSocketSend, returnsThePartOfAWriteThatFits)
{
    Connection connection;
    connection.socket.setSendBuf(4096);
    connection.socket.setAsyncMode();
    const std::string block(8000000, 'x');
    const int count = connection.socket.send(block.data(), int(block.size()));
    EXPECT_GT(count, 0);
    EXPECT_LT(count, int(block.size()));
}

TEST(TcpSocketSend, returnsMinusOneWithoutASignalWhenThePeerIsGone)
{
    Connection connection;
    std::signal(SIGPIPE, SIG_DFL); // a signal would end the test program
    reset(connection.peer);
    ASSERT_EQ(connection.socket.isReadable(limitMs), 1);
    EXPECT_EQ(connection.socket.send("x", 1), -1);
    EXPECT_EQ(errno, ECONNRESET);
    EXPECT_EQ(connection.socket.send("x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
}

TEST(TcpSocketSend, returnsMinusOneOnAClosedSocket)
{
    CTcpSocket socket;
    socket.close();
    EXPECT_EQ(socket.send("x", 1), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(TcpSocketBind, treatsTheLoopbackAddressAsEveryInterface)
{
    const struct {
        const char* given;
        const char* bound;
    } addresses[] = {
        {"", "0.0.0.0"},        {"127.0.0.1", "0.0.0.0"},   {"0.0.0.0", "0.0.0.0"},
        {"127.1", "127.0.0.1"}, {"127.0.0.2", "127.0.0.2"},
    };
    for (const auto& [given, bound] : addresses) {
        CTcpSocket socket;
        EXPECT_EQ(socket.bind(given, 0), 1) << given;
        std::string address;
        int port = 0;
        EXPECT_EQ(socket.getSockName(address, port), 1);
        EXPECT_EQ(address, bound);
        EXPECT_GT(port, 0);
    }
}

TEST(TcpSocketBind, setsTheLocalEndOfAConnection)
{
    Listener listener(5);
    CTcpSocket socket;
    EXPECT_EQ(socket.bind("127.0.0.3", 0), 1);
    EXPECT_EQ(socket.connect("127.0.0.1", listener.port(), false), 1);
    std::string address;
    int port = 0;
    socket.getSockName(address, port);
    EXPECT_EQ(address, "127.0.0.3");
}

TEST(TcpSocketBind, returnsZeroOnAPortInUseAndOnAClosedSocket)
{
    const Listener listener(5);
    CTcpSocket socket;
    EXPECT_EQ(socket.bind("", listener.port()), 0);
    EXPECT_EQ(errno, EADDRINUSE);
    socket.close();
    EXPECT_EQ(socket.bind("", 0), 0);
    EXPECT_EQ(errno, EBADF);
}

TEST(TcpSocketSetSocket, takesOverADescriptorAndLeavesTheOldOneOpen)
{
    Listener listener(5);
    Descriptor client = connected("127.0.0.1", listener.port());
    const int noDelay = 1;
    ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
    const int receiveBuffer = option(client, SOL_SOCKET, SO_RCVBUF);
    const int taken = client;

    std::signal(SIGPIPE, SIG_DFL);
    {
        Open<CTcpSocket> socket;
        const Descriptor old(*socket.handle);
        std::signal(SIGPIPE, SIG_DFL);
        socket.setSocket({client.release()});
        EXPECT_EQ(*socket.handle, taken);
        EXPECT_TRUE(socket.opened);
        EXPECT_TRUE(isOpen(old));
        EXPECT_FALSE(isIgnored(SIGPIPE));
        EXPECT_EQ(option(taken, SOL_SOCKET, SO_REUSEADDR), 1);
        EXPECT_EQ(lingerOf(taken).l_onoff, 1);
        EXPECT_EQ(lingerOf(taken).l_linger, 0);
        EXPECT_EQ(option(taken, IPPROTO_TCP, TCP_NODELAY), 1);
        EXPECT_EQ(option(taken, SOL_SOCKET, SO_RCVBUF), receiveBuffer);
        EXPECT_EQ(socket.send("x", 1), 1);
        EXPECT_EQ(received(listener.accept(), 1), "x");
    }
    EXPECT_FALSE(isOpen(taken));
}

TEST(TcpSocketClose, endsTheStreamForThePeer)
{
    Connection connection;
    const int descriptor = connection.descriptor();
    connection.socket.close();
    EXPECT_TRUE(isAtEnd(connection.peer));
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(connection.socket.isValid());
    EXPECT_FALSE(connection.socket.opened);
    connection.socket.close();
}

TEST(TcpSocketClose, dropsUnsentData)
{
    Connection connection;
    const size_t sent = connection.fill();
    connection.socket.close();
    size_t arrived = 0;
    while (const size_t count = received(connection.peer, 4096).size())
        arrived += count;
    EXPECT_LT(arrived, sent);
}

TEST(TcpSocketClose, leavesADescriptorThatReusesItsNumber)
{
    CTcpSocket socket;
    const int descriptor = descriptorOf(socket);
    socket.close();
    const Descriptor other(::fcntl(STDERR_FILENO, F_DUPFD, descriptor));
    ASSERT_EQ(other, descriptor);
    socket.close();
    EXPECT_TRUE(isOpen(other));
}

TEST(TcpSocketDestroy, closesTheConnection)
{
    int descriptor = -1;
    Descriptor peer;
    {
        Connection connection;
        descriptor = connection.descriptor();
        peer = std::move(connection.peer);
    }
    EXPECT_TRUE(isAtEnd(peer));
    EXPECT_FALSE(isOpen(descriptor));
}
