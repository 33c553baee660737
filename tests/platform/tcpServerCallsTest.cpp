#include "support/endpointCalls.h"
#include "support/openEndpoints.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

// --- The server ---

class TcpServerCalls : public EndpointCalls {
protected:
    Open<CTcpServer> server;

    // Listens with descriptor 7 and discards the recorded calls.
    void listen()
    {
        calls.answer("socket", 7);
        EXPECT_EQ(server.open("", 1502, 5), 1);
        calls.take();
    }
};

using TcpServerConstructCalls = TcpServerCalls;

TEST_F(TcpServerConstructCalls, createsNoSocket)
{
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*server.handle, 0);
    EXPECT_FALSE(server.opened);
    EXPECT_FALSE(server.isValid());
}

TEST_F(TcpServerConstructCalls, refusesSettersWithoutASocket)
{
    EXPECT_EQ(server.setRecvOverTm(9000), 0);
    EXPECT_EQ(server.setSendOverTm(9000), 0);
    EXPECT_EQ(server.setRecvBuf(1000), 0);
    EXPECT_EQ(server.setSendBuf(1000), 0);
    EXPECT_EQ(calls.take(), "");
}

using TcpServerOpenCalls = TcpServerCalls;

// The calls of open() before bind(2), with socket(2) returning 7.
static const std::string serverOptions = "socket(AF_INET, SOCK_STREAM, 0)\n"
                                         "setsockopt(7, IPPROTO_TCP, TCP_NODELAY, [01], 1)\n"
                                         "setsockopt(7, SOL_SOCKET, SO_REUSEADDR, [01 00 00 00], 4)\n"
                                         "signal(SIGPIPE, SIG_IGN)\n";

TEST_F(TcpServerOpenCalls, createsASocketBindsAndListens)
{
    calls.answer("socket", 7);
    EXPECT_EQ(server.open("192.168.10.20", 1502, 5), 1);
    EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, 05 de, c0 a8 0a 14}, 16)\n"
                                            "listen(7, 5)\n");
    EXPECT_EQ(*server.handle, 7);
    EXPECT_TRUE(server.opened);
    EXPECT_EQ(server.address, ""); // not stored
    EXPECT_EQ(server.port, 0);
}

TEST_F(TcpServerOpenCalls, passesTheAddressInNetworkOrder)
{
    for (const auto& [text, port, shown] : localAddresses) {
        calls.answer("socket", 7);
        EXPECT_EQ(server.open(text, port, 5), 1);
        EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, " + shown + "}, 16)\n" + "listen(7, 5)\n");
        server.close();
        calls.take();
    }
}

TEST_F(TcpServerOpenCalls, passesTheBacklogUnchanged)
{
    for (const int backlog : {0, 1, 128, 100000, -1}) {
        calls.answer("socket", 7);
        EXPECT_EQ(server.open("", 0, backlog), 1);
        EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, 00 00, 00 00 00 00}, 16)\n" + "listen(7, " +
                                    std::to_string(backlog) + ")\n");
    }
}

TEST_F(TcpServerOpenCalls, acceptsDescriptorsFromOneUp)
{
    for (const int descriptor : {0, -1}) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(server.open("", 1502, 5), 0);
        EXPECT_EQ(calls.take(), makesSocket);
        EXPECT_EQ(*server.handle, descriptor);
        EXPECT_FALSE(server.opened);
    }
    calls.answer("socket", 1);
    EXPECT_EQ(server.open("", 1502, 5), 1);
    EXPECT_EQ(*server.handle, 1);
    EXPECT_TRUE(server.opened);
}

TEST_F(TcpServerOpenCalls, ignoresRefusedOptions)
{
    calls.answer("socket", 7);
    calls.refuse("setsockopt", EINVAL);
    calls.refuse("setsockopt", EINVAL);
    calls.refuse("signal", EINVAL);
    EXPECT_EQ(server.open("", 1502, 5), 1);
    EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, 05 de, 00 00 00 00}, 16)\n"
                                            "listen(7, 5)\n");
}

TEST_F(TcpServerOpenCalls, leaksTheSocketWhenBindFails)
{
    {
        Open<CTcpServer> other;
        calls.answer("socket", 7);
        calls.refuse("bind", EADDRINUSE);
        EXPECT_EQ(other.open("", 1502, 5), 0);
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, 05 de, 00 00 00 00}, 16)\n");
        EXPECT_EQ(*other.handle, 7);
        EXPECT_FALSE(other.opened);
        other.close();
        EXPECT_EQ(*other.handle, 7);
    }
    EXPECT_EQ(calls.take(), "");
}

TEST_F(TcpServerOpenCalls, leaksTheSocketWhenListenFails)
{
    {
        Open<CTcpServer> other;
        calls.answer("socket", 7);
        calls.refuse("listen", EADDRINUSE);
        EXPECT_EQ(other.open("", 1502, 5), 0);
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, 05 de, 00 00 00 00}, 16)\n"
                                                "listen(7, 5)\n");
        EXPECT_EQ(*other.handle, 7);
        EXPECT_FALSE(other.opened);
        other.close();
        EXPECT_EQ(*other.handle, 7);
    }
    EXPECT_EQ(calls.take(), "");
}

TEST_F(TcpServerOpenCalls, replacesASocketWithoutClosingIt)
{
    calls.answer("socket", 6);
    calls.refuse("bind", EADDRINUSE);
    EXPECT_EQ(server.open("", 1502, 5), 0);
    calls.take();

    listen();
    EXPECT_EQ(*server.handle, 7);

    calls.answer("socket", 7);
    EXPECT_EQ(server.open("", 1502, 5), 1); // also while listening
    EXPECT_EQ(calls.take(), serverOptions + "bind(7, {AF_INET, 05 de, 00 00 00 00}, 16)\n"
                                            "listen(7, 5)\n");
}

using TcpServerAcceptCalls = TcpServerCalls;

TEST_F(TcpServerAcceptCalls, createsASocketAndReplacesItsDescriptorWithoutClosingIt)
{
    listen();
    calls.answer("accept", 9, peerBytes);
    calls.answer("socket", 10);
    {
        const std::unique_ptr<CTcpSocket> accepted(server.accept());
        ASSERT_NE(accepted, nullptr);
        EXPECT_EQ(descriptorOf(*accepted), 9);
        EXPECT_EQ(calls.take(), "accept(7, 16)\n" + opening(10) + takeover(9));
    }
    EXPECT_EQ(calls.take(), "shutdown(9, SHUT_RDWR)\n"
                            "close(9)\n"); // 10 stays open
    EXPECT_TRUE(server.opened);
    EXPECT_EQ(*server.handle, 7);
}

TEST_F(TcpServerAcceptCalls, returnsTheConnectionEvenWithoutASocketOfItsOwn)
{
    listen();
    calls.answer("accept", 9, peerBytes);
    calls.refuse("socket", EMFILE);
    const std::unique_ptr<CTcpSocket> accepted(server.accept());
    ASSERT_NE(accepted, nullptr);
    EXPECT_EQ(descriptorOf(*accepted), 9);
    EXPECT_EQ(calls.take(), "accept(7, 16)\n" + makesSocket + takeover(9));
}

TEST_F(TcpServerAcceptCalls, acceptsDescriptorZero)
{
    listen();
    calls.answer("accept", 0, peerBytes);
    calls.answer("socket", 10);
    const std::unique_ptr<CTcpSocket> accepted(server.accept());
    ASSERT_NE(accepted, nullptr);
    EXPECT_EQ(descriptorOf(*accepted), 0);
}

TEST_F(TcpServerAcceptCalls, returnsNullAndLeavesErrnoWhenItFails)
{
    listen();
    for (const int error : {EINTR, EAGAIN, ECONNABORTED, EMFILE}) {
        calls.refuse("accept", error);
        EXPECT_EQ(server.accept(), nullptr);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "accept(7, 16)\n");
    }
}

TEST_F(TcpServerAcceptCalls, doesNotCheckTheDescriptor)
{
    calls.refuse("accept", ENOTSOCK);
    EXPECT_EQ(server.accept(), nullptr);
    EXPECT_EQ(calls.take(), "accept(0, 16)\n");

    listen();
    server.close();
    calls.take();
    calls.refuse("accept", EBADF);
    EXPECT_EQ(server.accept(), nullptr);
    EXPECT_EQ(calls.take(), "accept(-1, 16)\n");
}

using TcpServerCloseCalls = TcpServerCalls;

TEST_F(TcpServerCloseCalls, shutsDownAndClosesOnce)
{
    listen();
    server.close();
    EXPECT_EQ(calls.take(), closing(7));
    EXPECT_EQ(*server.handle, -1);
    EXPECT_FALSE(server.opened);

    server.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(TcpServerCloseCalls, ignoresTheResults)
{
    listen();
    calls.refuse("shutdown", ENOTCONN);
    calls.refuse("close", EIO);
    server.close();
    EXPECT_EQ(calls.take(), closing(7));
    EXPECT_EQ(*server.handle, -1);
    EXPECT_FALSE(server.opened);
}

TEST_F(TcpServerCloseCalls, doesNothingOnAServerThatWasNeverOpened)
{
    server.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*server.handle, 0);
}

TEST_F(TcpServerCloseCalls, clearsTheFlagWithoutACell)
{
    listen();
    delete server.handle;
    server.handle = nullptr;
    server.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_FALSE(server.opened);
}

using TcpServerDestroyCalls = EndpointCalls;

TEST_F(TcpServerDestroyCalls, closesAListeningServerOnly)
{
    {
        const CTcpServer server;
    }
    EXPECT_EQ(calls.take(), "");
    {
        CTcpServer server;
        calls.answer("socket", 7);
        server.open("", 1502, 5);
        calls.take();
    }
    EXPECT_EQ(calls.take(), closing(7));
}

// --- select of many sockets ---

class GqSocketSelectCalls : public EndpointCalls {
protected:
    // Adds a row with a socket on that descriptor and recognisable outputs.
    void add(int descriptor)
    {
        calls.answer("socket", 7);
        sockets.push_back(std::make_unique<Open<CTcpSocket>>());
        *sockets.back()->handle = descriptor;
        TcpSocketStatus row;
        row.socket = sockets.back().get();
        row.readable = 91;
        row.writable = 92;
        row.exceptional = 93;
        row.context = this;
        rows.push_back(row);
        calls.take();
    }

    void expect(size_t index, int readable, int writable, int exceptional) const
    {
        EXPECT_EQ(rows[index].readable, readable) << "row " << index;
        EXPECT_EQ(rows[index].writable, writable) << "row " << index;
        EXPECT_EQ(rows[index].exceptional, exceptional) << "row " << index;
    }

    std::vector<std::unique_ptr<Open<CTcpSocket>>> sockets;
    std::vector<TcpSocketStatus> rows;
};

TEST_F(GqSocketSelectCalls, sleepsOnAnEmptyList)
{
    for (const auto& [ms, text] : selectTimes) {
        EXPECT_EQ(CGqSocket::select(rows, ms), 0);
        EXPECT_EQ(calls.take(), std::string("select(1, {}, {}, {}, ") + text + ")\n");
    }
    for (const int result : {-1, -5, 2}) {
        calls.answer("select", result);
        EXPECT_EQ(CGqSocket::select(rows, 0), result);
    }
    EXPECT_TRUE(rows.empty());
}

TEST_F(GqSocketSelectCalls, watchesEverySocketInAllThreeSets)
{
    add(9);
    add(70);
    add(8);
    CGqSocket::select(rows, 1500);
    EXPECT_EQ(calls.take(), "select(71, {8, 9, 70}, {8, 9, 70}, {8, 9, 70}, {1, 500000})\n");
}

TEST_F(GqSocketSelectCalls, passesTheTimeToTheSystem)
{
    add(7);
    for (const auto& [ms, text] : selectTimes) {
        CGqSocket::select(rows, ms);
        EXPECT_EQ(calls.take(), std::string("select(8, {7}, {7}, {7}, ") + text + ")\n");
    }
}

TEST_F(GqSocketSelectCalls, setsTheBitsOfEachRowAndReturnsTheTotal)
{
    add(9);
    add(70);
    add(8);
    calls.answerSelect(5, {9}, {9, 70}, {8, 70});
    EXPECT_EQ(CGqSocket::select(rows, 20), 5);
    expect(0, 1, 1, 0);
    expect(1, 0, 1, 1);
    expect(2, 0, 0, 1);

    calls.answerSelect(8, {8}, {}, {9}); // the count is not recomputed
    EXPECT_EQ(CGqSocket::select(rows, 20), 8);
    expect(0, 0, 0, 1);
    expect(1, 0, 0, 0);
    expect(2, 1, 0, 0);
}

TEST_F(GqSocketSelectCalls, leavesTheCallersFieldsOfARow)
{
    add(9);
    calls.answerSelect(1, {9}, {}, {});
    CGqSocket::select(rows, 20);
    EXPECT_EQ(rows[0].socket, sockets[0].get());
    EXPECT_EQ(rows[0].context, this);
    EXPECT_EQ(*sockets[0]->handle, 9);
}

TEST_F(GqSocketSelectCalls, writesZerosToEveryRowOnATimeOut)
{
    add(9);
    add(8);
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(CGqSocket::select(rows, 20), 0);
    expect(0, 0, 0, 0);
    expect(1, 0, 0, 0);
}

TEST_F(GqSocketSelectCalls, returnsTheFailureAndLeavesTheRows)
{
    add(9);
    add(8);
    for (const int error : {EINTR, EINVAL, EBADF}) {
        calls.refuse("select", error);
        EXPECT_EQ(CGqSocket::select(rows, 20), -1);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "select(10, {8, 9}, {8, 9}, {8, 9}, {0, 20000})\n");
    }
    calls.answer("select", -5);
    EXPECT_EQ(CGqSocket::select(rows, 20), -5);
    expect(0, 91, 92, 93);
    expect(1, 91, 92, 93);
}

TEST_F(GqSocketSelectCalls, fillsBothRowsOfASocketListedTwice)
{
    add(9);
    rows.push_back(rows[0]);
    calls.answerSelect(1, {}, {9}, {});
    EXPECT_EQ(CGqSocket::select(rows, 20), 1);
    EXPECT_EQ(calls.take(), "select(10, {9}, {9}, {9}, {0, 20000})\n");
    expect(0, 0, 1, 0);
    expect(1, 0, 1, 0);
}

TEST_F(GqSocketSelectCalls, watchesSocketsInAnyState)
{
    add(9);
    add(0);
    sockets[0]->opened = false;
    sockets[1]->opened = false;
    calls.answerSelect(2, {0, 9}, {}, {});
    EXPECT_EQ(CGqSocket::select(rows, 20), 2);
    EXPECT_EQ(calls.take(), "select(10, {0, 9}, {0, 9}, {0, 9}, {0, 20000})\n");
    expect(0, 1, 0, 0);
    expect(1, 1, 0, 0);
}

TEST_F(GqSocketSelectCalls, returnsSetBitsForAClosedSocketAmongOthers)
{
    add(-1);
    add(9);
    add(-1);
    calls.answerSelect(1, {}, {9}, {});
    EXPECT_EQ(CGqSocket::select(rows, 20), 1);
    EXPECT_EQ(calls.take(), "select(10, {9}, {9}, {9}, {0, 20000})\n");
    expect(0, 1, 1, 1);
    expect(1, 0, 1, 0);
    expect(2, 1, 1, 1);
}

TEST_F(GqSocketSelectCalls, returnsSetBitsForAClosedSocketAlone)
{
    add(-1);
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(CGqSocket::select(rows, 20), 0);
    EXPECT_EQ(calls.take(), "select(1, {}, {}, {}, {0, 20000})\n"); // the maximum starts at 0
    expect(0, 1, 1, 1);
}

TEST_F(GqSocketSelectCalls, watchesDescriptorsBeyondAnFdSet)
{
    add(7);
    add(20000);
    add(-1);
    add(1023);
    add(1024);
    calls.answerSelect(4, {20000}, {7, 1024}, {1023});
    EXPECT_EQ(CGqSocket::select(rows, 20), 4);
    const std::string set = ", {7, 1023, 1024, 20000}";
    EXPECT_EQ(calls.take(), "select(20001" + set + set + set + ", {0, 20000})\n");
    expect(0, 0, 1, 0);
    expect(1, 1, 0, 0);
    expect(2, 1, 1, 1);
    expect(3, 0, 0, 1);
    expect(4, 0, 1, 0);
}
