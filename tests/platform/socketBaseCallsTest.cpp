#include "support/endpointCalls.h"
#include "support/hex.h"
#include "support/openEndpoints.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <iostream>
#include <string>
#include <type_traits>

#include <fcntl.h>

// The base with only its pure virtual operation added.
class PlainEndpoint : public CAbstractSocket {
public:
    void close() override {}
};

class SocketBase : public EndpointCalls {
protected:
    Open<PlainEndpoint> endpoint;

    void setDescriptor(int descriptor) { *endpoint.handle = descriptor; }
};

static const int noDescriptors[] = {0, -1, INT_MIN};

// --- The class ---

static_assert(std::is_abstract_v<CAbstractSocket>);
static_assert(!std::has_virtual_destructor_v<CAbstractSocket>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::setRecvOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::setSendOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::close), void (CAbstractSocket::*)()>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::isValid), bool (CAbstractSocket::*)()>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::setAsyncMode), int (CAbstractSocket::*)()>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::setRecvBuf), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::setSendBuf), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::getPeerName), int (CAbstractSocket::*)(std::string&, int&)>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::getSockName), int (CAbstractSocket::*)(std::string&, int&)>);
static_assert(std::is_same_v<decltype(&CAbstractSocket::isReadable), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CGqSocket::startup), void (*)()>);
static_assert(std::is_same_v<decltype(&CGqSocket::cleanup), void (*)()>);

static_assert(std::is_same_v<decltype(Open<PlainEndpoint>::handle), int*>);
static_assert(std::is_same_v<decltype(Open<PlainEndpoint>::opened), bool>);
static_assert(std::is_same_v<decltype(Open<PlainEndpoint>::address), std::string>);
static_assert(std::is_same_v<decltype(Open<PlainEndpoint>::port), int>);

using SocketBaseConstruct = SocketBase;

TEST_F(SocketBaseConstruct, startsWithDescriptorZeroInItsOwnCell)
{
    ASSERT_NE(endpoint.handle, nullptr);
    EXPECT_EQ(*endpoint.handle, 0);
    EXPECT_FALSE(endpoint.opened);
    EXPECT_EQ(endpoint.address, "");
    EXPECT_EQ(endpoint.port, 0);

    const char* cell = reinterpret_cast<const char*>(endpoint.handle);
    const char* object = reinterpret_cast<const char*>(&endpoint);
    EXPECT_TRUE(cell < object || cell >= object + sizeof endpoint);
}

TEST_F(SocketBaseConstruct, makesNoSystemCall)
{
    EXPECT_EQ(calls.take(), "");
}

using SocketBaseDestroy = SocketBase;

TEST_F(SocketBaseDestroy, leavesAnOpenDescriptorOpen)
{
    {
        Open<PlainEndpoint> other;
        *other.handle = 7;
        other.opened = true;
    }
    EXPECT_EQ(calls.take(), "");
}

TEST_F(SocketBaseDestroy, acceptsAMissingCell)
{
    Open<PlainEndpoint> other;
    delete other.handle;
    other.handle = nullptr;
}

// --- isValid ---

using SocketBaseIsValid = SocketBase;

TEST_F(SocketBaseIsValid, acceptsDescriptorsFromOneUp)
{
    for (const int descriptor : {1, 7, INT_MAX}) {
        setDescriptor(descriptor);
        EXPECT_TRUE(endpoint.isValid()) << descriptor;
    }
    for (const int descriptor : noDescriptors) {
        setDescriptor(descriptor);
        EXPECT_FALSE(endpoint.isValid()) << descriptor;
    }
    EXPECT_EQ(calls.take(), "");
}

TEST_F(SocketBaseIsValid, usesTheDescriptorAndNotTheOpenedFlag)
{
    endpoint.opened = true;
    EXPECT_FALSE(endpoint.isValid());

    endpoint.opened = false;
    setDescriptor(7);
    EXPECT_TRUE(endpoint.isValid());
}

TEST_F(SocketBaseIsValid, refusesAMissingCell)
{
    delete endpoint.handle;
    endpoint.handle = nullptr;
    EXPECT_FALSE(endpoint.isValid());
}

// --- Time-outs ---

// The 16 bytes of a timeval: seconds and microseconds, 8 bytes each. Both parts are truncated and keep the sign.
static const struct {
    int ms;
    const char* bytes;
} optionTimes[] = {
    {0, "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
    {1, "00 00 00 00 00 00 00 00 e8 03 00 00 00 00 00 00"},       //  0 s, 1000
    {999, "00 00 00 00 00 00 00 00 58 3e 0f 00 00 00 00 00"},     //  0 s, 999000
    {1500, "01 00 00 00 00 00 00 00 20 a1 07 00 00 00 00 00"},    //  1 s, 500000
    {9000, "09 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},    //  9 s
    {INT_MAX, "9b c4 20 00 00 00 00 00 58 df 09 00 00 00 00 00"}, //  2147483 s, 647000
    {-1, "00 00 00 00 00 00 00 00 18 fc ff ff ff ff ff ff"},      //  0 s, -1000
    {-999, "00 00 00 00 00 00 00 00 a8 c1 f0 ff ff ff ff ff"},    //  0 s, -999000
    {-1000, "ff ff ff ff ff ff ff ff 00 00 00 00 00 00 00 00"},   // -1 s
    {-1500, "ff ff ff ff ff ff ff ff e0 5e f8 ff ff ff ff ff"},   // -1 s, -500000
    {INT_MIN, "65 3b df ff ff ff ff ff c0 1c f6 ff ff ff ff ff"}, // -2147483 s, -648000
};

using SocketBaseSetRecvOverTm = SocketBase;

TEST_F(SocketBaseSetRecvOverTm, passesTheTimeToTheSystem)
{
    setDescriptor(7);
    for (const auto& [ms, bytes] : optionTimes) {
        EXPECT_EQ(endpoint.setRecvOverTm(ms), 1);
        EXPECT_EQ(calls.take(), "setsockopt(7, SOL_SOCKET, SO_RCVTIMEO, " + timeOption(bytes) + ")\n");
        EXPECT_EQ(takeOutput(), "setRecvOverTm:0, " + std::to_string(ms) + "\n");
    }
}

TEST_F(SocketBaseSetRecvOverTm, printsTheResultAndTheTimeAndFlushes)
{
    setDescriptor(7);
    endpoint.setRecvOverTm(9000);
    EXPECT_EQ(takeOutput(), "setRecvOverTm:0, 9000\n");

    endpoint.setRecvOverTm(-1500);
    EXPECT_EQ(takeOutput(), "setRecvOverTm:0, -1500\n");
}

TEST_F(SocketBaseSetRecvOverTm, returnsOneAndPrintsMinusOneWhenTheSystemRefuses)
{
    setDescriptor(7);
    calls.refuse("setsockopt", EDOM);
    EXPECT_EQ(endpoint.setRecvOverTm(-1500), 1);
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(takeOutput(), "setRecvOverTm:-1, -1500\n");
}

TEST_F(SocketBaseSetRecvOverTm, printsDecimalWhateverTheStreamFlags)
{
    setDescriptor(7);
    calls.refuse("setsockopt", EDOM);
    const auto usual = std::cout.flags();
    std::cout << std::hex << std::showbase << std::showpos;
    endpoint.setRecvOverTm(9000);
    endpoint.setRecvOverTm(-1500);
    const auto left = std::cout.flags(usual);

    EXPECT_EQ(takeOutput(), "setRecvOverTm:-1, 9000\nsetRecvOverTm:0, -1500\n");
    EXPECT_EQ(left & std::ios_base::basefield, std::ios_base::hex) << "the stream flags of the program must be kept";
    EXPECT_TRUE((left & std::ios_base::showbase) != 0 && (left & std::ios_base::showpos) != 0);
}

TEST_F(SocketBaseSetRecvOverTm, doesAndPrintsNothingWithoutADescriptor)
{
    for (const int descriptor : noDescriptors) {
        setDescriptor(descriptor);
        EXPECT_EQ(endpoint.setRecvOverTm(9000), 0) << descriptor;
    }
    EXPECT_EQ(calls.take(), "");
}

TEST_F(SocketBaseSetRecvOverTm, acceptsDescriptorOne)
{
    setDescriptor(1);
    EXPECT_EQ(endpoint.setRecvOverTm(1000), 1);
    EXPECT_EQ(calls.take(), "setsockopt(1, SOL_SOCKET, SO_RCVTIMEO, " +
                                timeOption("01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") + ")\n");
    EXPECT_EQ(takeOutput(), "setRecvOverTm:0, 1000\n");
}

using SocketBaseSetSendOverTm = SocketBase;

TEST_F(SocketBaseSetSendOverTm, passesTheTimeToTheSystemAndPrintsNothing)
{
    setDescriptor(7);
    for (const auto& [ms, bytes] : optionTimes) {
        EXPECT_EQ(endpoint.setSendOverTm(ms), 1);
        EXPECT_EQ(calls.take(), "setsockopt(7, SOL_SOCKET, SO_SNDTIMEO, " + timeOption(bytes) + ")\n");
    }
}

// --- Buffer sizes ---

static const struct {
    int size;
    const char* bytes;
} bufferSizes[] = {
    {0, "00 00 00 00"},       {1, "01 00 00 00"},  {921600, "00 10 0e 00"},
    {INT_MAX, "ff ff ff 7f"}, {-2, "fe ff ff ff"}, {INT_MIN, "00 00 00 80"},
};

using SocketBaseSetRecvBuf = SocketBase;

TEST_F(SocketBaseSetRecvBuf, passesTheSizeToTheSystem)
{
    setDescriptor(7);
    for (const auto& [size, bytes] : bufferSizes) {
        EXPECT_EQ(endpoint.setRecvBuf(size), 1);
        EXPECT_EQ(calls.take(), std::string("setsockopt(7, SOL_SOCKET, SO_RCVBUF, [") + bytes + "], 4)\n");
    }
}

using SocketBaseSetSendBuf = SocketBase;

TEST_F(SocketBaseSetSendBuf, passesTheSizeToTheSystem)
{
    setDescriptor(7);
    for (const auto& [size, bytes] : bufferSizes) {
        EXPECT_EQ(endpoint.setSendBuf(size), 1);
        EXPECT_EQ(calls.take(), std::string("setsockopt(7, SOL_SOCKET, SO_SNDBUF, [") + bytes + "], 4)\n");
    }
}

// --- The silent setters together ---

static constexpr int (CAbstractSocket::*silentSetters[])(int) = {
    &CAbstractSocket::setSendOverTm,
    &CAbstractSocket::setRecvBuf,
    &CAbstractSocket::setSendBuf,
};

using SocketBaseSilentSetters = SocketBase;

TEST_F(SocketBaseSilentSetters, returnOneAndLeaveErrnoWhenTheSystemRefuses)
{
    setDescriptor(7);
    for (const auto setter : silentSetters) {
        calls.refuse("setsockopt", ENOPROTOOPT);
        errno = 0;
        EXPECT_EQ((endpoint.*setter)(1000), 1);
        EXPECT_EQ(errno, ENOPROTOOPT);
    }
}

TEST_F(SocketBaseSilentSetters, doNothingWithoutADescriptor)
{
    for (const auto setter : silentSetters) {
        for (const int descriptor : noDescriptors) {
            setDescriptor(descriptor);
            EXPECT_EQ((endpoint.*setter)(1000), 0) << descriptor;
        }
    }
    EXPECT_EQ(calls.take(), "");
}

TEST_F(SocketBaseSilentSetters, acceptDescriptorOne)
{
    setDescriptor(1);
    for (const auto setter : silentSetters)
        EXPECT_EQ((endpoint.*setter)(1000), 1);
    EXPECT_EQ(calls.take(), "setsockopt(1, SOL_SOCKET, SO_SNDTIMEO, " +
                                timeOption("01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") +
                                ")\n"
                                "setsockopt(1, SOL_SOCKET, SO_RCVBUF, [e8 03 00 00], 4)\n"
                                "setsockopt(1, SOL_SOCKET, SO_SNDBUF, [e8 03 00 00], 4)\n");
}

// --- Non-blocking mode ---

static_assert(O_NONBLOCK == 0x800); // 2048, added to the flags below

using SocketBaseSetAsyncMode = SocketBase;

TEST_F(SocketBaseSetAsyncMode, addsTheFlagToTheSetOnes)
{
    setDescriptor(7);
    calls.answer("fcntl", 2); // O_RDWR
    EXPECT_EQ(endpoint.setAsyncMode(), 1);
    EXPECT_EQ(calls.take(), "fcntl(7, F_GETFL, 0)\n"
                            "fcntl(7, F_SETFL, 2050)\n");

    calls.answer("fcntl", 2050); // already set: set again
    EXPECT_EQ(endpoint.setAsyncMode(), 1);
    EXPECT_EQ(calls.take(), "fcntl(7, F_GETFL, 0)\n"
                            "fcntl(7, F_SETFL, 2050)\n");
}

TEST_F(SocketBaseSetAsyncMode, returnsWhetherTheSecondCallSucceeded)
{
    setDescriptor(7);
    calls.answer("fcntl", 2);
    calls.answer("fcntl", 1);
    EXPECT_EQ(endpoint.setAsyncMode(), 1);

    calls.answer("fcntl", 2);
    calls.refuse("fcntl", EPERM);
    EXPECT_EQ(endpoint.setAsyncMode(), 0);
    EXPECT_EQ(errno, EPERM);
}

TEST_F(SocketBaseSetAsyncMode, usesTheResultOfAFailedFirstCall)
{
    setDescriptor(7);
    calls.refuse("fcntl", EBADF);
    EXPECT_EQ(endpoint.setAsyncMode(), 1);
    EXPECT_EQ(calls.take(), "fcntl(7, F_GETFL, 0)\n"
                            "fcntl(7, F_SETFL, -1)\n");
}

TEST_F(SocketBaseSetAsyncMode, doesNotCheckTheDescriptor)
{
    EXPECT_EQ(endpoint.setAsyncMode(), 1);
    EXPECT_EQ(calls.take(), "fcntl(0, F_GETFL, 0)\n"
                            "fcntl(0, F_SETFL, 2048)\n");
    setDescriptor(-1);
    EXPECT_EQ(endpoint.setAsyncMode(), 1);
    EXPECT_EQ(calls.take(), "fcntl(-1, F_GETFL, 0)\n"
                            "fcntl(-1, F_SETFL, 2048)\n");
}

// --- Names ---

using SocketBaseNames = SocketBase;

static const struct {
    const char* function;
    int (CAbstractSocket::*query)(std::string&, int&);
} nameQueries[] = {
    {"getpeername", &CAbstractSocket::getPeerName},
    {"getsockname", &CAbstractSocket::getSockName},
};

TEST_F(SocketBaseNames, returnAddressAndPort)
{
    setDescriptor(7);
    const struct {
        const char* bytes; // sockaddr_in: 0 family, 2 port and 4 address in network order, 8 filler
        const char* text;
        int number;
    } names[] = {
        {"0200 05de 7f000001 0000000000000000", "127.0.0.1", 1502},
        {"0200 0000 00000000 0000000000000000", "0.0.0.0", 0},
        {"0200 ffff ffffffff 0000000000000000", "255.255.255.255", 65535},
        {"0200 8000 c0a80a14 0000000000000000", "192.168.10.20", 32768},
    };
    for (const auto& [function, query] : nameQueries) {
        for (const auto& name : names) {
            calls.answer(function, 0, QByteArray::fromHex(name.bytes));
            std::string text = "a text that was there, longer than any address";
            int number = -1;
            EXPECT_EQ((endpoint.*query)(text, number), 1);
            EXPECT_EQ(text, name.text);
            EXPECT_EQ(number, name.number);
            EXPECT_EQ(calls.take(), std::string(function) + "(7, 16)\n");
        }
    }
}

TEST_F(SocketBaseNames, leaveBothOutputsAndErrnoOnFailure)
{
    setDescriptor(7);
    for (const auto& [function, query] : nameQueries) {
        calls.refuse(function, ENOTCONN);
        std::string text = "before";
        int number = 99;
        EXPECT_EQ((endpoint.*query)(text, number), 0);
        EXPECT_EQ(errno, ENOTCONN);
        EXPECT_EQ(text, "before");
        EXPECT_EQ(number, 99);
    }
}

TEST_F(SocketBaseNames, treatAnyNonzeroResultAsFailure)
{
    setDescriptor(7);
    for (const auto& [function, query] : nameQueries) {
        calls.answer(function, 1, "0200 05de 7f000001 0000000000000000"_hex);
        std::string text = "before";
        int number = 99;
        EXPECT_EQ((endpoint.*query)(text, number), 0);
        EXPECT_EQ(text, "before");
        EXPECT_EQ(number, 99);
    }
}

TEST_F(SocketBaseNames, doNotCheckTheDescriptor)
{
    for (const auto& [function, query] : nameQueries) {
        for (const int descriptor : {0, -1}) {
            setDescriptor(descriptor);
            calls.refuse(function, EBADF);
            std::string text;
            int number = 0;
            EXPECT_EQ((endpoint.*query)(text, number), 0);
            EXPECT_EQ(calls.take(), function + on(descriptor, "(#, 16)\n"));
        }
    }
}

TEST_F(SocketBaseNames, leaveTheFieldsAddressAndPort)
{
    setDescriptor(7);
    for (const auto& [function, query] : nameQueries) {
        calls.answer(function, 0, "0200 05de 7f000001 0000000000000000"_hex);
        std::string text;
        int number = 0;
        (endpoint.*query)(text, number);
    }
    EXPECT_EQ(endpoint.address, "");
    EXPECT_EQ(endpoint.port, 0);
}

// --- isReadable ---

using SocketBaseIsReadable = SocketBase;

TEST_F(SocketBaseIsReadable, watchesItsDescriptorForReading)
{
    setDescriptor(7);
    calls.answerSelect(1, {7}, {}, {});
    EXPECT_EQ(endpoint.isReadable(1500), 1);
    EXPECT_EQ(calls.take(), "select(8, {7}, null, null, {1, 500000})\n");
}

TEST_F(SocketBaseIsReadable, passesTheTimeToTheSystem)
{
    setDescriptor(7);
    for (const auto& [ms, text] : selectTimes) {
        EXPECT_EQ(endpoint.isReadable(ms), 0);
        EXPECT_EQ(calls.take(), std::string("select(8, {7}, null, null, ") + text + ")\n");
    }
}

TEST_F(SocketBaseIsReadable, returnsZeroOnATimeOut)
{
    setDescriptor(7);
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(endpoint.isReadable(20), 0);
}

TEST_F(SocketBaseIsReadable, returnsMinusOneAndLeavesErrnoWhenSelectFails)
{
    setDescriptor(7);
    for (const int error : {EINTR, EINVAL, EBADF}) {
        calls.refuse("select", error);
        EXPECT_EQ(endpoint.isReadable(20), -1);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "select(8, {7}, null, null, {0, 20000})\n");
    }
    calls.answer("select", -5);
    EXPECT_EQ(endpoint.isReadable(20), -1);
}

TEST_F(SocketBaseIsReadable, returnsTheBitAndNotTheCount)
{
    setDescriptor(7);
    calls.answerSelect(1, {}, {}, {});
    EXPECT_EQ(endpoint.isReadable(20), 0);

    calls.answerSelect(3, {7}, {}, {});
    EXPECT_EQ(endpoint.isReadable(20), 1);

    calls.answerSelect(0, {7}, {}, {});
    EXPECT_EQ(endpoint.isReadable(20), 1);

    calls.answerSelect(1, {6}, {}, {});
    EXPECT_EQ(endpoint.isReadable(20), 0);
}

TEST_F(SocketBaseIsReadable, watchesStandardInputBeforeItWasEverOpened)
{
    calls.answerSelect(1, {0}, {}, {});
    EXPECT_EQ(endpoint.isReadable(20), 1);
    EXPECT_EQ(calls.take(), "select(1, {0}, null, null, {0, 20000})\n");
}

TEST_F(SocketBaseIsReadable, watchesNothingAndReturnsOneOnceClosed)
{
    setDescriptor(-1);
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(endpoint.isReadable(1500), 1);
    EXPECT_EQ(calls.take(), "select(0, {}, null, null, {1, 500000})\n");

    calls.refuse("select", EINTR);
    EXPECT_EQ(endpoint.isReadable(1500), -1);
}

TEST_F(SocketBaseIsReadable, watchesDescriptorsBeyondAnFdSet)
{
    for (const int descriptor : edgeDescriptors) {
        setDescriptor(descriptor);
        calls.answerSelect(1, {descriptor}, {}, {});
        EXPECT_EQ(endpoint.isReadable(0), 1);
        calls.answerSelect(0, {}, {}, {});
        EXPECT_EQ(endpoint.isReadable(0), 0);
        EXPECT_EQ(calls.take(), on(descriptor, "select(+, {#}, null, null, {0, 0})\n"
                                               "select(+, {#}, null, null, {0, 0})\n"));
    }
}

// --- Start and end ---

using GqSocketStartupAndCleanup = EndpointCalls;

TEST_F(GqSocketStartupAndCleanup, makeNoSystemCall)
{
    CGqSocket::startup();
    CGqSocket::startup();
    CGqSocket::cleanup();
    CGqSocket::cleanup();
    EXPECT_EQ(calls.take(), "");
}
