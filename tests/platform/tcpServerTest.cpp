#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/tcpConnection.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

// --- CTcpServer ---

static int portOf(CTcpServer& server)
{
    std::string address;
    int port = -1;
    EXPECT_EQ(server.getSockName(address, port), 1);
    return port;
}

TEST(TcpServerOpen, listensOnEveryInterfaceForTheLoopbackAddress)
{
    for (const char* given : {"", "127.0.0.1", "0.0.0.0"}) {
        CTcpServer server;
        ASSERT_EQ(server.open(given, 0, 5), 1);
        std::string address;
        int port = 0;
        EXPECT_EQ(server.getSockName(address, port), 1);
        EXPECT_EQ(address, "0.0.0.0");
        EXPECT_GE(connected("127.0.0.1", port), 0);
        EXPECT_GE(connected("127.0.0.2", port), 0);
    }
}

TEST(TcpServerOpen, listensOnOneAddressOtherwise)
{
    CTcpServer server;
    ASSERT_EQ(server.open("127.1", 0, 5), 1);
    EXPECT_GE(connected("127.0.0.1", portOf(server)), 0);
    EXPECT_LT(connected("127.0.0.2", portOf(server)), 0);
}

TEST(TcpServerOpen, createsASocketWithItsOptions)
{
    const Descriptor plain = plainSocket();
    Open<CTcpServer> server;
    ASSERT_EQ(server.open("127.1", 0, 5), 1);
    EXPECT_TRUE(server.isValid());
    EXPECT_TRUE(server.opened);
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_ACCEPTCONN), 1);
    EXPECT_EQ(option(*server.handle, IPPROTO_TCP, TCP_NODELAY), 0);
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_EQ(lingerOf(*server.handle).l_onoff, 0);
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_RCVBUF), option(plain, SOL_SOCKET, SO_RCVBUF));
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_SNDBUF), option(plain, SOL_SOCKET, SO_SNDBUF));
}

TEST(TcpServerOpen, ignoresSigpipe)
{
    std::signal(SIGPIPE, SIG_DFL);
    CTcpServer server;
    EXPECT_FALSE(isIgnored(SIGPIPE));
    EXPECT_EQ(server.open("127.1", 0, 5), 1);
    EXPECT_TRUE(isIgnored(SIGPIPE));
}

TEST(TcpServerOpen, leaksADescriptorThatCouldNotBind)
{
    const Listener listener(5);
    const std::set<int> before = openDescriptors();
    {
        Open<CTcpServer> server;
        EXPECT_EQ(server.open("127.1", listener.port(), 5), 0);
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_FALSE(server.opened);
        EXPECT_TRUE(server.isValid());
        server.close();
        EXPECT_TRUE(isOpen(*server.handle));

        EXPECT_EQ(server.open("127.1", 0, 5), 1); // replaces it
    }
    const std::set<int> left = openedSince(before);
    EXPECT_EQ(left.size(), 1u);
    for (const int descriptor : left)
        ::close(descriptor);
}

TEST(TcpServerOpen, listensAgainAfterClosing)
{
    const Listener reserved;
    CTcpServer server;
    ASSERT_EQ(server.open("127.1", reserved.port(), 5), 1);
    EXPECT_GE(connected("127.0.0.1", reserved.port()), 0);
    server.close();
    EXPECT_LT(connected("127.0.0.1", reserved.port()), 0);
    EXPECT_EQ(server.open("127.1", reserved.port(), 5), 1);
    EXPECT_GE(connected("127.0.0.1", reserved.port()), 0);
}

// Accepts, and finally closes the leaked descriptor.
class Acceptance {
public:
    explicit Acceptance(CTcpServer& server) : before(openDescriptors()), socket(server.accept()) {}

    ~Acceptance()
    {
        socket.reset();
        for (const int descriptor : openedSince(before))
            ::close(descriptor);
    }

    std::set<int> before;
    std::unique_ptr<CTcpSocket> socket;
};

class TcpServerAccept : public testing::Test {
protected:
    TcpServerAccept()
    {
        EXPECT_EQ(server.open("127.1", 0, 5), 1);
        client = connected("127.0.0.1", portOf(server));
        EXPECT_GE(client, 0);
    }

    CTcpServer server;
    Descriptor client;
};

TEST_F(TcpServerAccept, returnsTheConnection)
{
    const Acceptance accepted(server);
    ASSERT_NE(accepted.socket, nullptr);
    EXPECT_EQ(accepted.socket->send("reply", 5), 5);
    EXPECT_EQ(received(client, 5), "reply");
    ::send(client, "x", 1, 0);
    char byte = 0;
    EXPECT_EQ(accepted.socket->recv(&byte, 1), 1);
    EXPECT_EQ(byte, 'x');

    sockaddr_in local = {};
    socklen_t size = sizeof local;
    ::getsockname(client, reinterpret_cast<sockaddr*>(&local), &size);
    std::string address;
    int port = 0;
    EXPECT_EQ(accepted.socket->getPeerName(address, port), 1);
    EXPECT_EQ(address, "127.0.0.1");
    EXPECT_EQ(port, ntohs(local.sin_port));
}

TEST_F(TcpServerAccept, leaksOneMoreDescriptor)
{
    Acceptance accepted(server);
    ASSERT_NE(accepted.socket, nullptr);
    const int connection = descriptorOf(*accepted.socket);
    std::set<int> added = openedSince(accepted.before);
    EXPECT_EQ(added.size(), 2u);
    EXPECT_EQ(added.erase(connection), 1u);

    accepted.socket.reset();
    EXPECT_EQ(openedSince(accepted.before), added);
    ASSERT_EQ(added.size(), 1u);
    EXPECT_EQ(option(*added.begin(), SOL_SOCKET, SO_TYPE), SOCK_STREAM);
}

TEST_F(TcpServerAccept, setsTheOptionsOfATakeoverOnTheConnection)
{
    const Acceptance accepted(server);
    ASSERT_NE(accepted.socket, nullptr);
    const int connection = descriptorOf(*accepted.socket);
    EXPECT_EQ(option(connection, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_EQ(lingerOf(connection).l_onoff, 1);
    EXPECT_EQ(lingerOf(connection).l_linger, 0);
    EXPECT_FALSE(isNonBlocking(connection));
}

TEST_F(TcpServerAccept, closesTheConnectionWithTheObject)
{
    Acceptance accepted(server);
    ASSERT_NE(accepted.socket, nullptr);
    accepted.socket.reset();
    EXPECT_TRUE(isAtEnd(client));
}

TEST_F(TcpServerAccept, returnsConnectionsInOrder)
{
    const Descriptor second = connected("127.0.0.1", portOf(server));
    const Acceptance first(server);
    const Acceptance next(server);
    ASSERT_NE(first.socket, nullptr);
    ASSERT_NE(next.socket, nullptr);
    first.socket->send("1", 1);
    next.socket->send("2", 1);
    EXPECT_EQ(received(client, 1), "1");
    EXPECT_EQ(received(second, 1), "2");
}

TEST(TcpServerAcceptFailure, returnsNullWithoutAServer)
{
    const Pipe input;
    const Replacement standardInput(STDIN_FILENO, input.readEnd); // used by a server that was never opened
    const std::set<int> before = openDescriptors();
    CTcpServer server;
    EXPECT_EQ(server.accept(), nullptr);
    EXPECT_EQ(errno, ENOTSOCK);

    ASSERT_EQ(server.open("127.1", 0, 5), 1);
    server.close();
    EXPECT_EQ(server.accept(), nullptr);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpServerAcceptFailure, returnsNullOnATimeOut)
{
    CTcpServer server;
    ASSERT_EQ(server.open("127.1", 0, 5), 1);
    server.setRecvOverTm(20);
    EXPECT_EQ(server.accept(), nullptr);
    EXPECT_EQ(errno, EAGAIN);
}

TEST(TcpServerDestroy, closesTheListener)
{
    const Listener reserved;
    {
        CTcpServer server;
        ASSERT_EQ(server.open("127.1", reserved.port(), 5), 1);
        EXPECT_GE(connected("127.0.0.1", reserved.port()), 0);
    }
    EXPECT_LT(connected("127.0.0.1", reserved.port()), 0);
}

// --- CGqSocket ---

static TcpSocketStatus row(CTcpSocket& socket)
{
    TcpSocketStatus status;
    status.socket = &socket;
    status.readable = 91;
    status.writable = 92;
    status.exceptional = 93;
    return status;
}

static void expectRow(const TcpSocketStatus& status, int readable, int writable, int exceptional)
{
    EXPECT_EQ(status.readable, readable);
    EXPECT_EQ(status.writable, writable);
    EXPECT_EQ(status.exceptional, exceptional);
}

TEST(GqSocketSelect, sleepsOnAnEmptyList)
{
    std::vector<TcpSocketStatus> rows;
    EXPECT_EQ(CGqSocket::select(rows, 0), 0);
    const auto start = Clock::now();
    EXPECT_EQ(CGqSocket::select(rows, 30), 0);
    EXPECT_GE(msSince(start), 30);
    EXPECT_EQ(CGqSocket::select(rows, -1), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST(GqSocketSelect, reportsTheStateOfEachSocket)
{
    Connection quiet;
    Connection full;
    Connection talking;
    full.fill();
    ::send(talking.peer, "x", 1, 0);
    ASSERT_EQ(talking.socket.isReadable(limitMs), 1);

    std::vector<TcpSocketStatus> rows = {row(quiet.socket), row(full.socket), row(talking.socket)};
    EXPECT_EQ(CGqSocket::select(rows, limitMs), 3);
    expectRow(rows[0], 0, 1, 0);
    expectRow(rows[1], 0, 0, 0);
    expectRow(rows[2], 1, 1, 0);
}

TEST(GqSocketSelect, returnsZerosOnATimeOut)
{
    Connection first;
    Connection second;
    first.fill();
    second.fill();
    std::vector<TcpSocketStatus> rows = {row(first.socket), row(second.socket)};
    const auto start = Clock::now();
    EXPECT_EQ(CGqSocket::select(rows, 30), 0);
    EXPECT_GE(msSince(start), 30);
    expectRow(rows[0], 0, 0, 0);
    expectRow(rows[1], 0, 0, 0);
}

TEST(GqSocketSelect, leavesTheRowsWhenItFails)
{
    Connection connection;
    std::vector<TcpSocketStatus> rows = {row(connection.socket)};
    EXPECT_EQ(CGqSocket::select(rows, -1), -1);
    expectRow(rows[0], 91, 92, 93);

    Open<CTcpSocket> stale; // its descriptor has been closed by others
    ::close(*stale.handle);
    stale.opened = false;
    rows.push_back(row(stale));
    EXPECT_EQ(CGqSocket::select(rows, 0), -1);
    EXPECT_EQ(errno, EBADF);
    expectRow(rows[0], 91, 92, 93);
    expectRow(rows[1], 91, 92, 93);
}

TEST(GqSocketSelect, worksWithAClosedSocketInTheList)
{
    Connection connection;
    CTcpSocket closed;
    closed.close();
    std::vector<TcpSocketStatus> rows = {row(closed), row(connection.socket), row(closed)};
    EXPECT_EQ(CGqSocket::select(rows, limitMs), 1); // closed ones are not counted
    expectRow(rows[0], 1, 1, 1);
    expectRow(rows[1], 0, 1, 0);
    expectRow(rows[2], 1, 1, 1);
}

// --- Threads ---

TEST(Endpoints, workIndependentlyOnSeparateThreads)
{
    const auto exchange = [] {
        Connection connection;
        for (int round = 0; round < 50; ++round) {
            EXPECT_EQ(connection.socket.send("request", 7), 7);
            EXPECT_EQ(received(connection.peer, 7), "request");
            ::send(connection.peer, "x", 1, 0);
            EXPECT_EQ(connection.socket.isReadable(limitMs), 1);
            std::vector<TcpSocketStatus> rows = {row(connection.socket)};
            EXPECT_EQ(CGqSocket::select(rows, limitMs), 2);
            char byte = 0;
            EXPECT_EQ(connection.socket.recv(&byte, 1), 1);
        }
        connection.socket.close();
    };
    std::thread first(exchange);
    std::thread second(exchange);
    first.join();
    second.join();
}
