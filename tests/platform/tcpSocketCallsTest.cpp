#include "support/endpointCalls.h"
#include "support/hex.h"
#include "support/openEndpoints.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

// --- The classes ---

static_assert(std::is_convertible_v<CTcpSocket*, CAbstractSocket*>); // a public base
static_assert(std::is_convertible_v<CTcpServer*, CAbstractSocket*>);
static_assert(sizeof(CTcpSocket) == sizeof(CAbstractSocket)); // no field added
static_assert(sizeof(CTcpServer) == sizeof(CAbstractSocket));
static_assert(!std::has_virtual_destructor_v<CTcpSocket>);
static_assert(!std::has_virtual_destructor_v<CTcpServer>);

static_assert(std::is_same_v<decltype(&CTcpSocket::open), int (CTcpSocket::*)()>);
static_assert(std::is_same_v<decltype(&CTcpSocket::connect), int (CTcpSocket::*)(const std::string&, int, bool)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::setSocket), void (CTcpSocket::*)(SocketOwner)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::bind), int (CTcpSocket::*)(const std::string&, int)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::isWritable), int (CTcpSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::select), int (CTcpSocket::*)(int, int&, int&, int&)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::recv), int (CTcpSocket::*)(char*, int)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::send), int (CTcpSocket::*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&CTcpServer::open), int (CTcpServer::*)(const std::string&, int, int)>);
static_assert(std::is_same_v<decltype(&CTcpServer::accept), CTcpSocket* (CTcpServer::*)()>);
static_assert(std::is_same_v<decltype(&CGqSocket::select), int (*)(std::vector<TcpSocketStatus>&, int)>);

// A pointer to an inherited operation has the type of the base, even if named through the derived class.
static_assert(std::is_same_v<decltype(&CTcpSocket::setRecvOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::setSendOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CTcpServer::setRecvOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CTcpServer::setSendOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CTcpSocket::close), void (CTcpSocket::*)()>);
static_assert(std::is_same_v<decltype(&CTcpServer::close), void (CTcpServer::*)()>);

template <typename Endpoint, typename = void>
static constexpr bool testsForWriting = false;
template <typename Endpoint>
static constexpr bool testsForWriting<Endpoint, std::void_t<decltype(&Endpoint::isWritable)>> = true;
template <typename Endpoint, typename = void>
static constexpr bool selects = false;
template <typename Endpoint>
static constexpr bool selects<Endpoint, std::void_t<decltype(&Endpoint::select)>> = true;

static_assert(testsForWriting<CTcpSocket> && !testsForWriting<CTcpServer> && !testsForWriting<CAbstractSocket>);
static_assert(selects<CTcpSocket> && !selects<CTcpServer> && !selects<CAbstractSocket>);

static_assert(sizeof(SocketOwner) == 4);
static_assert(std::is_trivially_copyable_v<SocketOwner> && std::is_trivially_destructible_v<SocketOwner>);

static_assert(std::is_same_v<decltype(TcpSocketStatus::socket), CTcpSocket*>);
static_assert(offsetof(TcpSocketStatus, socket) == 0);
static_assert(offsetof(TcpSocketStatus, readable) == sizeof(void*));
static_assert(offsetof(TcpSocketStatus, writable) == sizeof(void*) + 4);
static_assert(offsetof(TcpSocketStatus, exceptional) == sizeof(void*) + 8);

// --- Creating a socket ---

using TcpSocketConstructCalls = EndpointCalls;

TEST_F(TcpSocketConstructCalls, opensASocket)
{
    calls.answer("socket", 7);
    const Open<CTcpSocket> socket;
    EXPECT_EQ(calls.take(), opening(7));
    EXPECT_EQ(*socket.handle, 7);
    EXPECT_TRUE(socket.opened);
    EXPECT_EQ(socket.address, "");
    EXPECT_EQ(socket.port, 0);
}

TEST_F(TcpSocketConstructCalls, staysClosedWithoutASocket)
{
    calls.refuse("socket", EMFILE);
    {
        Open<CTcpSocket> socket;
        EXPECT_EQ(errno, EMFILE);
        EXPECT_EQ(*socket.handle, -1);
        EXPECT_FALSE(socket.opened);
        EXPECT_FALSE(socket.isValid());
    }
    EXPECT_EQ(calls.take(), makesSocket);
}

// A socket opened by its constructor with descriptor 7. The recorded calls are discarded.
class TcpSocketCalls : public EndpointCalls {
protected:
    TcpSocketCalls() : socket(newSocket()) { calls.take(); }

    Open<CTcpSocket> socket;

    void close()
    {
        socket.close();
        calls.take();
    }

private:
    Open<CTcpSocket> newSocket()
    {
        calls.answer("socket", 7);
        return Open<CTcpSocket>();
    }
};

using TcpSocketOpenCalls = TcpSocketCalls;

TEST_F(TcpSocketOpenCalls, setsTheOptionsInOrder)
{
    close();
    calls.answer("socket", 8);
    EXPECT_EQ(socket.open(), 1);
    EXPECT_EQ(calls.take(), opening(8));
    EXPECT_EQ(*socket.handle, 8);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketOpenCalls, acceptsDescriptorOne)
{
    close();
    calls.answer("socket", 1);
    EXPECT_EQ(socket.open(), 1);
    EXPECT_EQ(calls.take(), opening(1));
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketOpenCalls, returnsZeroBelowDescriptorOneAndStoresTheValue)
{
    for (const int descriptor : {0, -1, -2}) {
        close();
        calls.answer("socket", descriptor);
        EXPECT_EQ(socket.open(), 0);
        EXPECT_EQ(calls.take(), makesSocket);
        EXPECT_EQ(*socket.handle, descriptor);
        EXPECT_FALSE(socket.opened);
    }
}

TEST_F(TcpSocketOpenCalls, ignoresRefusedOptions)
{
    close();
    calls.answer("socket", 8);
    for (const int error : {EINVAL, EPERM, ENOBUFS, ENOBUFS, ENOBUFS})
        calls.refuse("setsockopt", error);
    calls.refuse("signal", EINVAL);
    EXPECT_EQ(socket.open(), 1);
    EXPECT_EQ(calls.take(), opening(8));
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketOpenCalls, replacesAnOpenSocketWithoutClosingIt)
{
    calls.answer("socket", 8);
    EXPECT_EQ(socket.open(), 1);
    EXPECT_EQ(calls.take(), opening(8));
    EXPECT_EQ(*socket.handle, 8);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketOpenCalls, losesAnOpenSocketEvenWithoutANewOne)
{
    calls.refuse("socket", EMFILE);
    EXPECT_EQ(socket.open(), 0);
    EXPECT_EQ(calls.take(), makesSocket);
    EXPECT_EQ(*socket.handle, -1);
    EXPECT_TRUE(socket.opened); // only the descriptor changes
}

// --- Connecting ---

using TcpSocketConnectCalls = TcpSocketCalls;

TEST_F(TcpSocketConnectCalls, passesTheAddressInNetworkOrder)
{
    const struct {
        const char* text;
        int port;
        const char* shown; // port and address, in memory order
    } targets[] = {
        {"127.0.0.1", 1502, "05 de, 7f 00 00 01"}, // no special address here
        {"192.168.10.20", 80, "00 50, c0 a8 0a 14"},
        {"0.0.0.0", 1502, "05 de, 00 00 00 00"},
        {"127.1", 1502, "05 de, 7f 00 00 01"},
        {"255.255.255.255", 65535, "ff ff, ff ff ff ff"},
        {"", 1502, "05 de, ff ff ff ff"}, // inet_addr() fails
        {"localhost", 1502, "05 de, ff ff ff ff"},
        {"127.0.0.1.", 1502, "05 de, ff ff ff ff"},
        {"127.0.0.1", 0, "00 00, 7f 00 00 01"}, // only the low 16 bits of a port are used
        {"127.0.0.1", 65536 + 1502, "05 de, 7f 00 00 01"},
        {"127.0.0.1", -1, "ff ff, 7f 00 00 01"},
        {"127.0.0.1", -65536, "00 00, 7f 00 00 01"},
    };
    for (const auto& [text, port, shown] : targets) {
        EXPECT_EQ(socket.connect(text, port, false), 1);
        EXPECT_EQ(calls.take(), std::string("connect(7, {AF_INET, ") + shown + "}, 16)\n");
    }
}

TEST_F(TcpSocketConnectCalls, returnsOneOnSuccess)
{
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), 1);
    calls.answer("connect", 5);
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), 1);

    errno = EINPROGRESS; // from an earlier call
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), 1);
}

TEST_F(TcpSocketConnectCalls, mapsEachErrorNumberAndLeavesErrno)
{
    const struct {
        int error;
        int result;
    } outcomes[] = {
        {EINPROGRESS, 0}, {EISCONN, 1},        {0, -1},         {EAGAIN, -1},   {EALREADY, -1},
        {EINTR, -1},      {ECONNREFUSED, -1},  {ETIMEDOUT, -1}, {EBADF, -1},    {ENETUNREACH, -1},
        {EINVAL, -1},     {EADDRNOTAVAIL, -1}, {EPERM, -1},     {ENOTCONN, -1}, {ECONNRESET, -1},
    };
    for (const auto& [error, result] : outcomes) {
        calls.refuse("connect", error);
        EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), result) << error;
        EXPECT_EQ(errno, error);
    }
}

TEST_F(TcpSocketConnectCalls, closesNothingWhenItFails)
{
    calls.refuse("connect", ECONNREFUSED);
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), -1);
    EXPECT_EQ(calls.take(), "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    EXPECT_EQ(*socket.handle, 7);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketConnectCalls, ignoresAsyncOnAnOpenSocket)
{
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, true), 1);
    EXPECT_EQ(calls.take(), "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(TcpSocketConnectCalls, opensAClosedSocketBeforeConnecting)
{
    close();
    calls.answer("socket", 8);
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(calls.take(), opening(8) + "connect(8, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    EXPECT_EQ(*socket.handle, 8);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketConnectCalls, opensAClosedSocketNonBlockingIfAsync)
{
    close();
    calls.answer("socket", 8);
    calls.answer("fcntl", 2);
    calls.refuse("connect", EINPROGRESS);
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, true), 0);
    EXPECT_EQ(calls.take(), opening(8) + "fcntl(8, F_GETFL, 0)\n"
                                         "fcntl(8, F_SETFL, 2050)\n"
                                         "connect(8, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(TcpSocketConnectCalls, connectsEvenIfItCannotBeMadeNonBlocking)
{
    close();
    calls.answer("socket", 8);
    calls.refuse("fcntl", EPERM);
    calls.refuse("fcntl", EPERM);
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, true), 1);
}

TEST_F(TcpSocketConnectCalls, connectsEvenIfNoSocketCanBeOpened)
{
    for (const bool async : {false, true}) {
        close();
        calls.refuse("socket", EMFILE);
        calls.refuse("connect", EBADF);
        EXPECT_EQ(socket.connect("127.0.0.1", 1502, async), -1);
        EXPECT_EQ(calls.take(), makesSocket +
                                    (async ? "fcntl(-1, F_GETFL, 0)\n"
                                             "fcntl(-1, F_SETFL, 2048)\n"
                                           : "") +
                                    "connect(-1, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
        EXPECT_FALSE(socket.opened);
    }
}

TEST_F(TcpSocketConnectCalls, usesTheOpenedFlagAndNotTheDescriptor)
{
    socket.opened = false; // although it has descriptor 7
    calls.answer("socket", 8);
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(calls.take(), opening(8) + "connect(8, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(TcpSocketConnectCalls, storesNeitherAddressNorPort)
{
    EXPECT_EQ(socket.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(socket.address, "");
    EXPECT_EQ(socket.port, 0);
}

// --- setSocket ---

using TcpSocketSetSocketCalls = TcpSocketCalls;

TEST_F(TcpSocketSetSocketCalls, takesOverTheDescriptorWithoutClosingTheOldOne)
{
    socket.setSocket({9});
    EXPECT_EQ(calls.take(), takeover(9));
    EXPECT_EQ(*socket.handle, 9);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketSetSocketCalls, opensAClosedObjectAndIgnoresRefusedOptions)
{
    close();
    calls.refuse("setsockopt", ENOTSOCK);
    calls.refuse("setsockopt", ENOTSOCK);
    socket.setSocket({9});
    EXPECT_EQ(calls.take(), takeover(9));
    EXPECT_EQ(*socket.handle, 9);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketSetSocketCalls, doesNotCheckTheDescriptor)
{
    socket.setSocket({-1});
    EXPECT_EQ(calls.take(), "setsockopt(-1, SOL_SOCKET, SO_REUSEADDR, [01 00 00 00], 4)\n"
                            "setsockopt(-1, SOL_SOCKET, SO_LINGER, [01 00 00 00 00 00 00 00], 8)\n");
    EXPECT_EQ(*socket.handle, -1);
    EXPECT_TRUE(socket.opened);
}

// --- Binding ---

using TcpSocketBindCalls = TcpSocketCalls;

TEST_F(TcpSocketBindCalls, passesTheAddressInNetworkOrder)
{
    for (const auto& [text, port, shown] : localAddresses) {
        EXPECT_EQ(socket.bind(text, port), 1);
        EXPECT_EQ(calls.take(), std::string("bind(7, {AF_INET, ") + shown + "}, 16)\n");
    }
}

TEST_F(TcpSocketBindCalls, comparesTheWholeAddressIncludingZeroBytes)
{
    EXPECT_EQ(socket.bind(std::string("127.0.0.1\0", 10), 1502), 1);
    EXPECT_EQ(calls.take(), "bind(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(TcpSocketBindCalls, returnsZeroAndLeavesErrnoWhenItFails)
{
    calls.refuse("bind", EADDRINUSE);
    EXPECT_EQ(socket.bind("", 1502), 0);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_EQ(calls.take(), "bind(7, {AF_INET, 05 de, 00 00 00 00}, 16)\n");
    EXPECT_EQ(*socket.handle, 7);
    EXPECT_TRUE(socket.opened);
}

TEST_F(TcpSocketBindCalls, opensNoSocket)
{
    close();
    calls.refuse("bind", EBADF);
    EXPECT_EQ(socket.bind("", 1502), 0);
    EXPECT_EQ(calls.take(), "bind(-1, {AF_INET, 05 de, 00 00 00 00}, 16)\n");
}

// --- isWritable ---

using TcpSocketIsWritableCalls = TcpSocketCalls;

TEST_F(TcpSocketIsWritableCalls, queriesTheErrorAndThePeerOnceWritable)
{
    calls.answerSelect(1, {}, {7}, {});
    calls.answer("getsockopt", 0, "00000000"_hex);
    calls.answer("getpeername", 0, peerBytes);
    EXPECT_EQ(socket.isWritable(1500), 1);
    EXPECT_EQ(calls.take(), "select(8, null, {7}, {7}, {1, 500000})\n"
                            "getsockopt(7, SOL_SOCKET, SO_ERROR, 4)\n"
                            "getpeername(7, 16)\n");
}

TEST_F(TcpSocketIsWritableCalls, passesTheTimeToTheSystem)
{
    for (const auto& [ms, text] : selectTimes) {
        socket.isWritable(ms);
        EXPECT_EQ(calls.take(), std::string("select(8, null, {7}, {7}, ") + text + ")\n");
    }
}

TEST_F(TcpSocketIsWritableCalls, returnsMinusOneOnATimeOutOrWhenSelectFails)
{
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(socket.isWritable(20), -1); // isReadable() returns 0
    calls.answerSelect(0, {}, {7}, {});
    EXPECT_EQ(socket.isWritable(20), -1);
    for (const int error : {EINTR, EINVAL}) {
        calls.refuse("select", error);
        EXPECT_EQ(socket.isWritable(20), -1);
        EXPECT_EQ(errno, error);
    }
    calls.answer("select", -5);
    EXPECT_EQ(socket.isWritable(20), -1);

    const std::string once = "select(8, null, {7}, {7}, {0, 20000})\n";
    EXPECT_EQ(calls.take(), once + once + once + once + once);
}

TEST_F(TcpSocketIsWritableCalls, returnsZeroWhenNotWritableOrExceptional)
{
    const std::string once = "select(8, null, {7}, {7}, {0, 20000})\n";
    const struct {
        int result;
        SystemCalls::Descriptors writable;
        SystemCalls::Descriptors exceptional;
    } sets[] = {{1, {}, {7}}, {2, {7}, {7}}, {1, {}, {}}, {1, {6}, {}}};
    for (const auto& [result, writable, exceptional] : sets) {
        calls.answerSelect(result, {}, writable, exceptional);
        EXPECT_EQ(socket.isWritable(20), 0);
        EXPECT_EQ(calls.take(), once);
    }
}

TEST_F(TcpSocketIsWritableCalls, returnsMinusOneWhenTheConnectFailed)
{
    for (const char* error : {"6f000000", "00000100", "ffffffff"}) { // 111 is ECONNREFUSED
        calls.answerSelect(1, {}, {7}, {});
        calls.answer("getsockopt", 0, QByteArray::fromHex(error));
        EXPECT_EQ(socket.isWritable(20), -1);
        EXPECT_EQ(calls.take(), "select(8, null, {7}, {7}, {0, 20000})\n"
                                "getsockopt(7, SOL_SOCKET, SO_ERROR, 4)\n");
    }
}

TEST_F(TcpSocketIsWritableCalls, usesErrnoWhenTheErrorQueryFails)
{
    calls.answerSelect(1, {}, {7}, {});
    calls.refuse("getsockopt", ENOTSOCK);
    EXPECT_EQ(socket.isWritable(20), -1);
    EXPECT_EQ(errno, ENOTSOCK);
    EXPECT_EQ(calls.take(), "select(8, null, {7}, {7}, {0, 20000})\n"
                            "getsockopt(7, SOL_SOCKET, SO_ERROR, 4)\n");

    calls.answerSelect(1, {}, {7}, {});
    calls.refuse("getsockopt", 0); // no error
    calls.answer("getpeername", 0, peerBytes);
    EXPECT_EQ(socket.isWritable(20), 1);
}

TEST_F(TcpSocketIsWritableCalls, ignoresAPreviousErrno)
{
    calls.answerSelect(1, {}, {7}, {});
    calls.answer("getpeername", 0, peerBytes);
    errno = ECONNREFUSED;
    EXPECT_EQ(socket.isWritable(20), 1);
}

TEST_F(TcpSocketIsWritableCalls, returnsZeroWithoutAPeer)
{
    calls.answerSelect(1, {}, {7}, {});
    calls.refuse("getpeername", ENOTCONN);
    EXPECT_EQ(socket.isWritable(20), 0);
    EXPECT_EQ(errno, ENOTCONN);

    calls.answerSelect(1, {}, {7}, {});
    calls.answer("getpeername", 0, "0200 0000 7f000001 0000000000000000"_hex); // port 0
    EXPECT_EQ(socket.isWritable(20), 0);

    calls.answerSelect(1, {}, {7}, {});
    calls.answer("getpeername", 0, "0200 0001 00000000 0000000000000000"_hex); // port 1
    EXPECT_EQ(socket.isWritable(20), 1);
}

TEST_F(TcpSocketIsWritableCalls, watchesNothingAndReturnsMinusOneOnceClosed)
{
    close();
    EXPECT_EQ(socket.isWritable(1500), -1);
    EXPECT_EQ(calls.take(), "select(0, null, {}, {}, {1, 500000})\n");
}

TEST_F(TcpSocketIsWritableCalls, watchesDescriptorsBeyondAnFdSet)
{
    for (const int descriptor : edgeDescriptors) {
        *socket.handle = descriptor;
        calls.answerSelect(1, {}, {descriptor}, {});
        calls.answer("getpeername", 0, peerBytes);
        EXPECT_EQ(socket.isWritable(0), 1);
        EXPECT_EQ(calls.take(), on(descriptor, "select(+, null, {#}, {#}, {0, 0})\n"
                                               "getsockopt(#, SOL_SOCKET, SO_ERROR, 4)\n"
                                               "getpeername(#, 16)\n"));
    }
}

// --- select of one socket ---

class TcpSocketSelectCalls : public TcpSocketCalls {
protected:
    int readable = 91;
    int writable = 92;
    int exceptional = 93;

    int select(int ms) { return socket.select(ms, readable, writable, exceptional); }

    void expect(int wantedReadable, int wantedWritable, int wantedExceptional) const
    {
        EXPECT_EQ(readable, wantedReadable);
        EXPECT_EQ(writable, wantedWritable);
        EXPECT_EQ(exceptional, wantedExceptional);
    }
};

TEST_F(TcpSocketSelectCalls, watchesItsDescriptorInAllThreeSets)
{
    select(1500);
    EXPECT_EQ(calls.take(), "select(8, {7}, {7}, {7}, {1, 500000})\n");
}

TEST_F(TcpSocketSelectCalls, passesTheTimeToTheSystem)
{
    for (const auto& [ms, text] : selectTimes) {
        select(ms);
        EXPECT_EQ(calls.take(), std::string("select(8, {7}, {7}, {7}, ") + text + ")\n");
    }
}

TEST_F(TcpSocketSelectCalls, returnsEachBitAndTheResultOfTheSystem)
{
    calls.answerSelect(1, {7}, {}, {});
    EXPECT_EQ(select(20), 1);
    expect(1, 0, 0);

    calls.answerSelect(1, {}, {7}, {});
    EXPECT_EQ(select(20), 1);
    expect(0, 1, 0);

    calls.answerSelect(1, {}, {}, {7});
    EXPECT_EQ(select(20), 1);
    expect(0, 0, 1);

    calls.answerSelect(2, {7}, {7}, {});
    EXPECT_EQ(select(20), 2);
    expect(1, 1, 0);

    calls.answerSelect(3, {7}, {7}, {7});
    EXPECT_EQ(select(20), 3);
    expect(1, 1, 1);

    calls.answerSelect(5, {6}, {}, {7}); // the count is not recomputed
    EXPECT_EQ(select(20), 5);
    expect(0, 0, 1);
}

TEST_F(TcpSocketSelectCalls, returnsZerosOnATimeOut)
{
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(select(20), 0);
    expect(0, 0, 0);
}

TEST_F(TcpSocketSelectCalls, returnsTheFailureAndLeavesTheOutputs)
{
    for (const int error : {EINTR, EINVAL, EBADF}) {
        calls.refuse("select", error);
        EXPECT_EQ(select(20), -1);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "select(8, {7}, {7}, {7}, {0, 20000})\n");
    }
    calls.answer("select", -5);
    EXPECT_EQ(select(20), -5);
    expect(91, 92, 93);
}

TEST_F(TcpSocketSelectCalls, watchesNothingAndReturnsSetBitsOnceClosed)
{
    close();
    EXPECT_EQ(select(1500), 0);
    EXPECT_EQ(calls.take(), "select(0, {}, {}, {}, {1, 500000})\n");
    expect(1, 1, 1);
}

TEST_F(TcpSocketSelectCalls, watchesDescriptorsBeyondAnFdSet)
{
    for (const int descriptor : edgeDescriptors) {
        *socket.handle = descriptor;
        calls.answerSelect(2, {descriptor}, {}, {descriptor});
        EXPECT_EQ(select(0), 2);
        expect(1, 0, 1);
        EXPECT_EQ(calls.take(), on(descriptor, "select(+, {#}, {#}, {#}, {0, 0})\n"));
    }
}

// --- Reading and writing ---

using TcpSocketRecvCalls = TcpSocketCalls;

TEST_F(TcpSocketRecvCalls, readsOnce)
{
    char buffer[8] = "-------";
    calls.answer("recv", 3, "68 0d 16"_hex);
    EXPECT_EQ(socket.recv(buffer, 7), 3);
    EXPECT_EQ(calls.take(), "recv(7, 7, MSG_NOSIGNAL)\n");
    EXPECT_STREQ(buffer, "\x68\x0d\x16----");
}

TEST_F(TcpSocketRecvCalls, returnsTheCount)
{
    char buffer[4] = {};
    for (const int count : {1, 3, 4}) {
        calls.answer("recv", count);
        errno = EINTR;
        EXPECT_EQ(socket.recv(buffer, 4), count);
    }
}

TEST_F(TcpSocketRecvCalls, returnsMinusOneAtTheEndWhateverErrno)
{
    char buffer[4] = {};
    for (const int error : {0, EAGAIN, EINTR}) {
        calls.answer("recv", 0);
        errno = error;
        EXPECT_EQ(socket.recv(buffer, 4), -1);
    }
}

static const struct {
    int error;
    int result;
} transferFailures[] = {
    {0, 0},         {EAGAIN, 0},       {EINTR, -1},   {EBADF, -1},     {ECONNRESET, -1}, {EPIPE, -1},
    {ENOTCONN, -1}, {EINPROGRESS, -1}, {EISCONN, -1}, {ETIMEDOUT, -1}, {ENOBUFS, -1},    {EPERM, -1},
};

TEST_F(TcpSocketRecvCalls, mapsEachErrorNumberAndLeavesErrno)
{
    char buffer[4] = {};
    for (const auto& [error, result] : transferFailures) {
        calls.refuse("recv", error);
        EXPECT_EQ(socket.recv(buffer, 4), result) << error;
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "recv(7, 4, MSG_NOSIGNAL)\n");
    }
}

TEST_F(TcpSocketRecvCalls, doesNotCheckTheDescriptor)
{
    close();
    char buffer[4] = {};
    calls.refuse("recv", EBADF);
    EXPECT_EQ(socket.recv(buffer, 4), -1);
    EXPECT_EQ(calls.take(), "recv(-1, 4, MSG_NOSIGNAL)\n");
}

using TcpSocketSendCalls = TcpSocketCalls;

TEST_F(TcpSocketSendCalls, writesOnce)
{
    calls.answer("send", 3);
    EXPECT_EQ(socket.send("\x68\x0d\x16", 3), 3);
    EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n");
}

TEST_F(TcpSocketSendCalls, returnsTheCountAndDoesNotSendTheRest)
{
    for (const int count : {0, 1, 2}) {
        calls.answer("send", count);
        errno = EINTR;
        EXPECT_EQ(socket.send("\x68\x0d\x16", 3), count);
        EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n");
    }
}

TEST_F(TcpSocketSendCalls, mapsEachErrorNumberAndLeavesErrno)
{
    for (const auto& [error, result] : transferFailures) {
        calls.refuse("send", error);
        EXPECT_EQ(socket.send("\x68", 1), result) << error;
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "send(7, [68], 1, MSG_NOSIGNAL)\n");
    }
}

TEST_F(TcpSocketSendCalls, doesNotCheckTheDescriptor)
{
    close();
    calls.refuse("send", EBADF);
    EXPECT_EQ(socket.send("\x68", 1), -1);
    EXPECT_EQ(calls.take(), "send(-1, [68], 1, MSG_NOSIGNAL)\n");
}

// --- Closing ---

using TcpSocketCloseCalls = TcpSocketCalls;

TEST_F(TcpSocketCloseCalls, shutsDownAndClosesOnce)
{
    socket.close();
    EXPECT_EQ(calls.take(), closing(7));
    EXPECT_EQ(*socket.handle, -1);
    EXPECT_FALSE(socket.opened);

    socket.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(TcpSocketCloseCalls, ignoresTheResults)
{
    calls.refuse("shutdown", ENOTCONN);
    calls.refuse("close", EIO);
    socket.close();
    EXPECT_EQ(calls.take(), closing(7));
    EXPECT_EQ(*socket.handle, -1);
    EXPECT_FALSE(socket.opened);
}

TEST_F(TcpSocketCloseCalls, leavesTheDescriptorIfNotOpened)
{
    socket.opened = false;
    socket.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*socket.handle, 7);
}

TEST_F(TcpSocketCloseCalls, closesAnyDescriptorIfOpened)
{
    for (const int descriptor : {0, -1}) {
        socket.opened = true;
        *socket.handle = descriptor;
        socket.close();
        EXPECT_EQ(calls.take(), closing(descriptor));
        EXPECT_EQ(*socket.handle, -1);
    }
}

TEST_F(TcpSocketCloseCalls, clearsTheFlagWithoutACell)
{
    delete socket.handle;
    socket.handle = nullptr;
    socket.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_FALSE(socket.opened);
}

TEST_F(TcpSocketCloseCalls, isVirtual)
{
    CAbstractSocket& base = socket;
    base.close();
    EXPECT_EQ(calls.take(), closing(7));
}

using TcpSocketDestroyCalls = EndpointCalls;

TEST_F(TcpSocketDestroyCalls, closesAnOpenSocketOnly)
{
    {
        calls.answer("socket", 7);
        const CTcpSocket socket;
        calls.take();
    }
    EXPECT_EQ(calls.take(), closing(7));
    {
        calls.answer("socket", 7);
        CTcpSocket socket;
        socket.close();
        calls.take();
    }
    EXPECT_EQ(calls.take(), "");
}
