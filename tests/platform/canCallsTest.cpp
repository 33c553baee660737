#include "support/endpointCalls.h"
#include "support/hex.h"
#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/prints.h"
#include "support/systemCalls.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <iostream>
#include <string>
#include <type_traits>

#include <fcntl.h>
#include <linux/can.h>

// Fails the test if printed output was not taken.
class CanCalls : public testing::Test {
protected:
    ~CanCalls() override { EXPECT_EQ(prints.take(), ""); }

    // Operations of `can` that print.
    int open(const std::string& name, bool nonBlocking = false, int ifaceArg = 0, int reservedArg = 0)
    {
        return prints.of([&] { return can.open(name, ifaceArg, reservedArg, nonBlocking); });
    }

    int setRecvOverTm(int ms)
    {
        return prints.of([&] { return can.setRecvOverTm(ms); });
    }

    int setSendOverTm(int ms)
    {
        return prints.of([&] { return can.setSendOverTm(ms); });
    }

    // The system returns this socket and interface 5.
    void answerOpening(int descriptor)
    {
        calls.answer("socket", descriptor);
        calls.answer("ioctl", 0, "05000000"_hex);
    }

    void setDescriptor(int descriptor) { *can.handle = descriptor; }

    Prints prints; // before `calls`, as it makes system calls of its own
    SystemCalls calls;
    Open<CSocketCan> can;
};

// --- The class ---

static_assert(std::is_base_of_v<CAbstractSocket, CSocketCan> && std::is_convertible_v<CSocketCan*, CAbstractSocket*>);
static_assert(sizeof(CSocketCan) == sizeof(CAbstractSocket));
static_assert(std::is_same_v<decltype(&CSocketCan::open), int (CSocketCan::*)(const std::string&, int, int, bool)>);
static_assert(std::is_same_v<decltype(&CSocketCan::recv), int (CSocketCan::*)(char*, int)>);
static_assert(std::is_same_v<decltype(&CSocketCan::send), int (CSocketCan::*)(const char*, int, int)>);
static_assert(std::is_same_v<decltype(&CSocketCan::setRecvOverTm), int (CSocketCan::*)(int)>);
static_assert(std::is_same_v<decltype(&CSocketCan::setSendOverTm), int (CSocketCan::*)(int)>);
static_assert(std::is_same_v<decltype(&CSocketCan::close), void (CSocketCan::*)()>);

using CanConstruct = CanCalls;

TEST_F(CanConstruct, opensNothing)
{
    EXPECT_EQ(*can.handle, 0);
    EXPECT_FALSE(can.isValid());
    EXPECT_FALSE(can.opened);
    EXPECT_EQ(can.address, "");
    EXPECT_EQ(can.port, 0);
    EXPECT_EQ(calls.take(), "");
}

using CanDestroy = CanCalls;

TEST_F(CanDestroy, leavesTheSocketOpen)
{
    {
        CSocketCan other;
        answerOpening(7);
        ASSERT_EQ(prints.of([&] { return other.open("can0", 0, 0, false); }), 1);
        calls.take();
        prints.take();
    }
    EXPECT_EQ(calls.take(), "");
}

// --- open ---

static const std::string makesCanSocket = "socket(AF_CAN, SOCK_RAW, 1)\n"; // CAN_RAW

// The calls after the look-up of interface 5.
static const std::string ignoresItsOwnFrames = "setsockopt(#, SOL_CAN_RAW, CAN_RAW_RECV_OWN_MSGS, [00 00 00 00], 4)\n";
static const std::string binds = "bind(#, {AF_CAN, 5}, 16)\n";
static const std::string asksForASecond =
    "setsockopt(#, SOL_CAN_RAW, 20, " + timeOption("01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") + ")\n";

using CanOpen = CanCalls;

TEST_F(CanOpen, bindsToTheInterface)
{
    answerOpening(7);
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(calls.take(), "socket(AF_CAN, SOCK_RAW, 1)\n"
                            "ioctl(7, SIOCGIFINDEX, can0)\n"
                            "setsockopt(7, SOL_CAN_RAW, CAN_RAW_RECV_OWN_MSGS, [00 00 00 00], 4)\n"
                            "bind(7, {AF_CAN, 5}, 16)\n"
                            "setsockopt(7, SOL_CAN_RAW, 20, " +
                                timeOption("01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") + ")\n");
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\ncan ret:0");
    EXPECT_EQ(*can.handle, 7);
    EXPECT_TRUE(can.isValid());
    EXPECT_FALSE(can.opened); // never set
}

TEST_F(CanOpen, doesNotBlockIfAsync)
{
    answerOpening(7);
    calls.answer("fcntl", 2); // O_RDWR
    EXPECT_EQ(open("can0", true), 1);
    EXPECT_EQ(calls.take(), "socket(AF_CAN, SOCK_RAW, 1)\n"
                            "ioctl(7, SIOCGIFINDEX, can0)\n"
                            "setsockopt(7, SOL_CAN_RAW, CAN_RAW_RECV_OWN_MSGS, [00 00 00 00], 4)\n"
                            "bind(7, {AF_CAN, 5}, 16)\n"
                            "fcntl(7, F_GETFL, 0)\n"
                            "fcntl(7, F_SETFL, 2050)\n" // 2048 O_NONBLOCK
                            "setsockopt(7, SOL_CAN_RAW, 20, " +
                                timeOption("01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") + ")\n");
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\ncan ret:0");
}

TEST_F(CanOpen, printsTheNameAndTheIndexInHex)
{
    const struct {
        const char* name;
        QByteArray index;
        const char* text;
        const char* bound;
    } interfaces[] = {
        {"vcan12", "0a000000"_hex, "vcan12 can_ifindex = a\ncan ret:0", "{AF_CAN, 10}"},
        {"slcan-a", "ff010000"_hex, "slcan-a can_ifindex = 1ff\ncan ret:0", "{AF_CAN, 511}"},
        {"%s%n", "ffffff7f"_hex, "%s%n can_ifindex = 7fffffff\ncan ret:0", "{AF_CAN, 2147483647}"},
        {"fifteen-letters", "05000000"_hex, "fifteen-letters can_ifindex = 5\ncan ret:0", "{AF_CAN, 5}"},
    };
    for (const auto& [name, index, text, bound] : interfaces) {
        calls.answer("socket", 7);
        calls.answer("ioctl", 0, index);
        EXPECT_EQ(open(name), 1);
        EXPECT_EQ(prints.take(), text);
        const std::string made = calls.take();
        EXPECT_NE(made.find(std::string("ioctl(7, SIOCGIFINDEX, ") + name + ")\n"), std::string::npos) << made;
        EXPECT_NE(made.find(std::string("bind(7, ") + bound + ", 16)\n"), std::string::npos) << made;
    }
}

TEST_F(CanOpen, storesNameAndArgumentButUsesNeitherArgument)
{
    const struct {
        int ifaceArg;
        int reservedArg;
    } arguments[] = {{1, 2}, {250000, INT_MAX}, {-1, INT_MIN}};
    for (const auto& [ifaceArg, reservedArg] : arguments) {
        answerOpening(7);
        EXPECT_EQ(open("can1", false, ifaceArg, reservedArg), 1);
        EXPECT_EQ(can.address, "can1");
        EXPECT_EQ(can.port, ifaceArg);
        EXPECT_EQ(calls.take(), makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can1)\n" + ignoresItsOwnFrames + binds +
                                                           asksForASecond));
        EXPECT_EQ(prints.take(), "can1 can_ifindex = 5\ncan ret:0");
    }
}

TEST_F(CanOpen, leavesTheReplacedSocketOpen)
{
    answerOpening(7);
    EXPECT_EQ(open("can0"), 1);
    answerOpening(8);
    calls.take();
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(calls.take(),
              makesCanSocket + on(8, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds + asksForASecond));
    EXPECT_EQ(*can.handle, 8);
    prints.take();
}

TEST_F(CanOpen, storesTheResultAndReturnsMinusOneWithoutASocket)
{
    for (const int answer : {-1, -5}) {
        calls.answer("socket", answer);
        EXPECT_EQ(open("can3", true, 9), -1);
        EXPECT_EQ(calls.take(), makesCanSocket);
        EXPECT_EQ(prints.take(), "can error\n");
        EXPECT_EQ(*can.handle, answer);
        EXPECT_FALSE(can.isValid());
        EXPECT_EQ(can.address, "can3"); // stored first
        EXPECT_EQ(can.port, 9);
    }
}

TEST_F(CanOpen, acceptsDescriptorZero)
{
    answerOpening(0);
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(calls.take(),
              makesCanSocket + on(0, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds + asksForASecond));
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\ncan ret:0");
    EXPECT_FALSE(can.isValid());
}

TEST_F(CanOpen, closesAndReportsCan0WhenTheLookUpFails)
{
    calls.answer("socket", 7);
    calls.answer("ioctl", -1, "00000000"_hex);
    EXPECT_EQ(open("vcan9", true), -1);
    EXPECT_EQ(calls.take(), makesCanSocket + "ioctl(7, SIOCGIFINDEX, vcan9)\nclose(7)\n");
    EXPECT_EQ(prints.take(), "Can't get interface index for can0, code= -1, can0 ifr_ifindex value: 0, name: vcan9\n");
    EXPECT_EQ(*can.handle, 0);
}

TEST_F(CanOpen, treatsAnyNonzeroLookUpResultAsFailure)
{
    calls.answer("socket", 7);
    calls.answer("ioctl", 3, "00000000"_hex);
    EXPECT_EQ(open("can0"), -1);
    EXPECT_EQ(calls.take(), makesCanSocket + "ioctl(7, SIOCGIFINDEX, can0)\nclose(7)\n");
    EXPECT_EQ(prints.take(), "Can't get interface index for can0, code= 3, can0 ifr_ifindex value: 0, name: can0\n");
}

TEST_F(CanOpen, continuesWithANonzeroIndexAlthoughTheLookUpFailed)
{
    calls.answer("socket", 7);
    calls.answer("ioctl", -1, "05000000"_hex);
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(calls.take(),
              makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds + asksForASecond));
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\ncan ret:0");
}

TEST_F(CanOpen, continuesWithIndexZeroIfTheLookUpSucceeded)
{
    calls.answer("socket", 7);
    calls.answer("ioctl", 0, "00000000"_hex);
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(calls.take(), makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames +
                                                       "bind(#, {AF_CAN, 0}, 16)\n" + asksForASecond));
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 0\ncan ret:0");
}

TEST_F(CanOpen, leavesDescriptorZeroOpenWhenTheLookUpFails)
{
    calls.answer("socket", 0);
    calls.answer("ioctl", -1, "00000000"_hex);
    EXPECT_EQ(open("can0"), -1);
    EXPECT_EQ(calls.take(), makesCanSocket + "ioctl(0, SIOCGIFINDEX, can0)\n");
    prints.take();
}

// The system has 16 bytes for a name, including the zero byte.
TEST_F(CanOpen, failsAsAfterAFailedLookUpIfTheNameIsTooLong)
{
    for (const size_t size : {16u, 17u, 20u, 24u, 40u, 5000u}) {
        const std::string name(size, 'c');
        calls.answer("socket", 7);
        calls.refuse("ioctl", ENODEV);
        EXPECT_EQ(open(name), -1) << size;
        EXPECT_EQ(*can.handle, 0);
        EXPECT_EQ(calls.take(), makesCanSocket + "ioctl(7, SIOCGIFINDEX, )\nclose(7)\n");
        EXPECT_EQ(prints.take(),
                  "Can't get interface index for can0, code= -1, can0 ifr_ifindex value: 0, name: " + name + "\n");
    }
}

TEST_F(CanOpen, closesWhenBindingFails)
{
    for (const int answer : {-1, -5}) {
        answerOpening(7);
        calls.answer("bind", answer);
        EXPECT_EQ(open("can0", true), -1);
        EXPECT_EQ(calls.take(), makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds +
                                                           "close(#)\n"));
        EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\nbind error\n");
        EXPECT_EQ(*can.handle, 0);
        EXPECT_FALSE(can.opened);
    }
}

TEST_F(CanOpen, treatsAPositiveResultOfBindAsSuccess)
{
    answerOpening(7);
    calls.answer("bind", 1);
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\ncan ret:0");
}

// Its close() counts the calls and keeps the descriptor.
class CanWithOwnClose : public Open<CSocketCan> {
public:
    void close() override { ++closed; }

    int closed = 0;
};

TEST_F(CanOpen, closesThroughTheVirtualOperation)
{
    CanWithOwnClose own;
    calls.answer("socket", 7);
    calls.answer("ioctl", -1, "00000000"_hex);
    EXPECT_EQ(prints.of([&] { return own.open("can0", 0, 0, false); }), -1);
    EXPECT_EQ(own.closed, 1);

    answerOpening(7);
    calls.refuse("bind", ENODEV);
    EXPECT_EQ(prints.of([&] { return own.open("can0", 0, 0, false); }), -1);
    EXPECT_EQ(own.closed, 2);

    EXPECT_EQ(*own.handle, 7);
    EXPECT_EQ(calls.take().find("close"), std::string::npos);
    prints.take();
}

TEST_F(CanOpen, returnsMinusTwoAndStaysOpenIfItStaysBlocking)
{
    for (const int answer : {-1, -5}) {
        answerOpening(7);
        calls.answer("fcntl", 2);
        calls.answer("fcntl", answer);
        EXPECT_EQ(open("can0", true), -2);
        EXPECT_EQ(calls.take(), makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds +
                                                           "fcntl(#, F_GETFL, 0)\n"
                                                           "fcntl(#, F_SETFL, 2050)\n"));
        EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\n");
        EXPECT_EQ(*can.handle, 7);
        EXPECT_TRUE(can.isValid());
    }
}

TEST_F(CanOpen, setsTheFlagEvenIfTheOthersCannotBeRead)
{
    answerOpening(7);
    calls.refuse("fcntl", EBADF);
    EXPECT_EQ(open("can0", true), 1);
    EXPECT_EQ(calls.take(), makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds +
                                                       "fcntl(#, F_GETFL, 0)\n"
                                                       "fcntl(#, F_SETFL, -1)\n" +
                                                       asksForASecond));
    prints.take();
}

TEST_F(CanOpen, returnsOneEvenIfNoOptionCanBeSet)
{
    answerOpening(7);
    calls.refuse("setsockopt", ENOPROTOOPT);
    calls.refuse("setsockopt", ENOPROTOOPT); // Linux always refuses the last one
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(calls.take(),
              makesCanSocket + on(7, "ioctl(#, SIOCGIFINDEX, can0)\n" + ignoresItsOwnFrames + binds + asksForASecond));
    EXPECT_EQ(prints.take(), "can0 can_ifindex = 5\ncan ret:-1");
}

TEST_F(CanOpen, reopensAfterClosingAndAfterAFailure)
{
    answerOpening(7);
    EXPECT_EQ(open("can0"), 1);
    can.close();
    calls.refuse("socket", EAFNOSUPPORT);
    EXPECT_EQ(open("can0"), -1);
    answerOpening(8);
    EXPECT_EQ(open("can0"), 1);
    EXPECT_EQ(*can.handle, 8);
    prints.take();
}

// --- recv ---

using CanRecv = CanCalls;

TEST_F(CanRecv, returnsTheDataBytesOfOneFrame)
{
    setDescriptor(7);
    const struct {
        const char* frame; // 0 identifier, 4 number of data bytes, 5 filler, 8 data
        int size;
        const char* data;
    } frames[] = {
        {"23010000 01 000000 d0d1d2d3d4d5d6d7", 1, "d0 2e 2e 2e 2e 2e 2e 2e"},
        {"23010000 03 000000 d0d1d2d3d4d5d6d7", 3, "d0 d1 d2 2e 2e 2e 2e 2e"},
        {"ffffffff 07 ffffff 00ff00ff00ff00ff", 7, "00 ff 00 ff 00 ff 00 2e"},
        {"23010080 08 000000 d0d1d2d3d4d5d6d7", 8, "d0 d1 d2 d3 d4 d5 d6 d7"},
    };
    for (const auto& [frame, size, data] : frames) {
        calls.answer("read", 16, QByteArray::fromHex(frame));
        std::vector<char> buffer = heapBytes("........"); // exactly 8 bytes
        EXPECT_EQ(can.recv(buffer.data(), 8), size);
        EXPECT_EQ(hex(QByteArray(buffer.data(), 8)), data);
        EXPECT_EQ(calls.take(), "read(7, 16)\n");
    }
}

TEST_F(CanRecv, ignoresTheLength)
{
    setDescriptor(7);
    for (const int length : {8, 1, 0, -1, INT_MAX, INT_MIN}) {
        calls.answer("read", 16, "23010000 08 000000 d0d1d2d3d4d5d6d7"_hex);
        std::vector<char> buffer = heapBytes("........");
        EXPECT_EQ(can.recv(buffer.data(), length), 8);
        EXPECT_EQ(hex(QByteArray(buffer.data(), 8)), "d0 d1 d2 d3 d4 d5 d6 d7");
        EXPECT_EQ(calls.take(), "read(7, 16)\n");
    }
}

TEST_F(CanRecv, returnsAtMostEightBytes)
{
    setDescriptor(7);
    for (const char* frame : {"23010000 09 000000 d0d1d2d3d4d5d6d7", "23010000 ff 000000 d0d1d2d3d4d5d6d7"}) {
        calls.answer("read", 16, QByteArray::fromHex(frame)); // no system returns this
        std::vector<char> buffer = heapBytes("........");
        EXPECT_EQ(can.recv(buffer.data(), 8), 8);
        EXPECT_EQ(hex(QByteArray(buffer.data(), 8)), "d0 d1 d2 d3 d4 d5 d6 d7");
    }
}

TEST_F(CanRecv, returnsZeroForAFrameWithoutData)
{
    setDescriptor(7);
    calls.answer("read", 16, "23010000 00 000000 d0d1d2d3d4d5d6d7"_hex);
    char buffer[8] = {'.', '.', '.', '.', '.', '.', '.', '.'};
    EXPECT_EQ(can.recv(buffer, 8), 0);
    EXPECT_EQ(std::string(buffer, 8), "........");
}

TEST_F(CanRecv, returnsZeroAndLeavesErrnoWithoutAFrame)
{
    setDescriptor(7);
    char buffer[8] = {'.', '.', '.', '.', '.', '.', '.', '.'};
    for (const int error : {EAGAIN, EINTR, ENETDOWN}) {
        calls.refuse("read", error);
        EXPECT_EQ(can.recv(buffer, 8), 0);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "read(7, 16)\n");
    }
    calls.answer("read", 0);
    EXPECT_EQ(can.recv(buffer, 8), 0);
    EXPECT_EQ(std::string(buffer, 8), "........");
    EXPECT_EQ(*can.handle, 7);
}

TEST_F(CanRecv, usesTheFrameAndNotTheResult)
{
    setDescriptor(7);
    char buffer[3] = {};
    for (const int result : {-1, 0, 1}) {
        calls.answer("read", result, "23010000 03 000000 d0d1d2d3d4d5d6d7"_hex);
        EXPECT_EQ(can.recv(buffer, 8), 3) << result;
        EXPECT_EQ(hex(QByteArray(buffer, 3)), "d0 d1 d2");
    }
}

TEST_F(CanRecv, returnsZerosAfterTheBytesRead)
{
    setDescriptor(7);
    calls.answer("read", 16, "23010000 08 000000 d0d1d2d3d4d5d6d7"_hex);
    calls.answer("read", 9, "23010000 04 000000 e0"_hex);
    char buffer[8] = {};
    EXPECT_EQ(can.recv(buffer, 8), 8);
    EXPECT_EQ(can.recv(buffer, 8), 4);
    EXPECT_EQ(hex(QByteArray(buffer, 8)), "e0 00 00 00 d4 d5 d6 d7");
}

TEST_F(CanRecv, doesNotCheckTheDescriptor)
{
    char buffer[8] = {};
    EXPECT_EQ(can.recv(buffer, 8), 0);
    EXPECT_EQ(calls.take(), "read(0, 16)\n"); // standard input

    setDescriptor(7);
    can.close();
    calls.take();
    EXPECT_EQ(can.recv(buffer, 8), 0);
    EXPECT_EQ(calls.take(), "read(0, 16)\n");

    setDescriptor(-1);
    calls.refuse("read", EBADF);
    EXPECT_EQ(can.recv(buffer, 8), 0);
    EXPECT_EQ(calls.take(), "read(-1, 16)\n");
}

// --- send ---

class CanSend : public CanCalls {
protected:
    // The written frame with .. for bytes that nobody reads: three padding bytes and those after the data.
    std::string written(int size)
    {
        std::string line = calls.take();
        const size_t frame = line.find('[') + 1;
        for (size_t byte = 5; byte < 16; ++byte) {
            if (byte < 8 || byte >= size_t(8 + size))
                line.replace(frame + 3 * byte, 2, "..");
        }
        return line;
    }
};

TEST_F(CanSend, writesOneFrame)
{
    setDescriptor(7);
    calls.answer("write", 16);
    EXPECT_EQ(can.send("\xd0\xd1\xd2", 3, 0x123), 16);
    EXPECT_EQ(written(3), "write(7, [23 01 00 00 03 .. .. .. d0 d1 d2 .. .. .. .. ..], 16)\n");

    calls.answer("write", 16);
    EXPECT_EQ(can.send("\xd0\xd1\xd2\xd3\xd4\xd5\xd6\xd7", 8, 0x7ff), 16);
    EXPECT_EQ(written(8), "write(7, [ff 07 00 00 08 .. .. .. d0 d1 d2 d3 d4 d5 d6 d7], 16)\n");

    calls.answer("write", 16);
    EXPECT_EQ(can.send("\0\xff", 2, 0), 16);
    EXPECT_EQ(written(2), "write(7, [00 00 00 00 02 .. .. .. 00 ff .. .. .. .. .. ..], 16)\n");
}

TEST_F(CanSend, writesAFrameWithoutData)
{
    setDescriptor(7);
    calls.answer("write", 16);
    EXPECT_EQ(can.send("", 0, 0x123), 16);
    EXPECT_EQ(written(0), "write(7, [23 01 00 00 00 .. .. .. .. .. .. .. .. .. .. ..], 16)\n");
}

TEST_F(CanSend, writesAtMostEightBytesAndTheLowBitsOfTheLength)
{
    setDescriptor(7);
    const std::vector<char> bytes = heapBytes(QByteArray("\xd0\xd1\xd2\xd3\xd4\xd5\xd6\xd7").repeated(40));
    can.send(bytes.data(), 9, 0x123);
    EXPECT_EQ(written(8), "write(7, [23 01 00 00 09 .. .. .. d0 d1 d2 d3 d4 d5 d6 d7], 16)\n");
    can.send(bytes.data(), 0x103, 0x123);
    EXPECT_EQ(written(3), "write(7, [23 01 00 00 03 .. .. .. d0 d1 d2 .. .. .. .. ..], 16)\n");
    can.send(bytes.data(), -1, 0x123);
    EXPECT_EQ(written(0), "write(7, [23 01 00 00 ff .. .. .. .. .. .. .. .. .. .. ..], 16)\n");
}

TEST_F(CanSend, writesTheIdentifierWithItsFlagsUnchanged)
{
    setDescriptor(7);
    const struct {
        unsigned int identifier;
        const char* bytes;
    } identifiers[] = {
        {0x800, "00 08 00 00"}, // more than 11 bits without the extended flag
        {CAN_EFF_FLAG | 0x12345678, "78 56 34 92"},
        {CAN_RTR_FLAG | 0x123, "23 01 00 40"},
        {CAN_ERR_FLAG | 0x4, "04 00 00 20"},
        {CAN_EFF_FLAG | CAN_RTR_FLAG | CAN_ERR_FLAG | CAN_EFF_MASK, "ff ff ff ff"},
    };
    for (const auto& [identifier, bytes] : identifiers) {
        can.send("\xd0", 1, int(identifier));
        EXPECT_EQ(written(1), std::string("write(7, [") + bytes + " 01 .. .. .. d0 .. .. .. .. .. .. ..], 16)\n");
    }
}

TEST_F(CanSend, returnsTheResultOfTheSystem)
{
    setDescriptor(7);
    for (const int result : {16, 5, 0, -1}) {
        calls.answer("write", result);
        EXPECT_EQ(can.send("\xd0", 1, 0x123), result);
    }
    for (const int error : {EAGAIN, ENOBUFS, ENETDOWN}) {
        calls.refuse("write", error);
        EXPECT_EQ(can.send("\xd0", 1, 0x123), -1);
        EXPECT_EQ(errno, error);
    }
}

TEST_F(CanSend, doesNotCheckTheDescriptor)
{
    can.send("\xd0", 1, 0x123);
    EXPECT_EQ(written(1), "write(0, [23 01 00 00 01 .. .. .. d0 .. .. .. .. .. .. ..], 16)\n");

    setDescriptor(-1);
    can.send("\xd0", 1, 0x123);
    EXPECT_EQ(written(1), "write(-1, [23 01 00 00 01 .. .. .. d0 .. .. .. .. .. .. ..], 16)\n");
}

// --- Time-outs ---

// The 16 bytes of a timeval: seconds and microseconds, 8 bytes each. Both parts are truncated and keep the sign.
static const struct {
    int ms;
    const char* bytes;
} optionTimes[] = {
    {0, "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
    {999, "00 00 00 00 00 00 00 00 58 3e 0f 00 00 00 00 00"},     //  0 s, 999000
    {1500, "01 00 00 00 00 00 00 00 20 a1 07 00 00 00 00 00"},    //  1 s, 500000
    {INT_MAX, "9b c4 20 00 00 00 00 00 58 df 09 00 00 00 00 00"}, //  2147483 s, 647000
    {-1500, "ff ff ff ff ff ff ff ff e0 5e f8 ff ff ff ff ff"},   // -1 s, -500000
    {INT_MIN, "65 3b df ff ff ff ff ff c0 1c f6 ff ff ff ff ff"}, // -2147483 s, -648000
};

using CanSetRecvOverTm = CanCalls;

TEST_F(CanSetRecvOverTm, setsOption20AndPrintsTheResult)
{
    setDescriptor(7);
    for (const auto& [ms, bytes] : optionTimes) {
        EXPECT_EQ(setRecvOverTm(ms), 1);
        EXPECT_EQ(calls.take(), "setsockopt(7, SOL_CAN_RAW, 20, " + timeOption(bytes) + ")\n");
        EXPECT_EQ(prints.take(), "ret:0\n");
    }
}

TEST_F(CanSetRecvOverTm, returnsOneAndPrintsMinusOneWhenTheSystemRefuses)
{
    setDescriptor(7);
    calls.refuse("setsockopt", ENOPROTOOPT); // Linux always does
    EXPECT_EQ(setRecvOverTm(1000), 1);
    EXPECT_EQ(prints.take(), "ret:-1\n");
}

TEST_F(CanSetRecvOverTm, printsDecimalWhateverTheStreamFlags)
{
    setDescriptor(7);
    calls.refuse("setsockopt", ENOPROTOOPT);
    const auto usual = std::cout.flags();
    std::cout << std::hex << std::showpos;
    setRecvOverTm(1000);
    setRecvOverTm(1000);
    std::cout.flags(usual);
    EXPECT_EQ(prints.take(), "ret:-1\nret:0\n");
}

TEST(CanSetRecvOverTmTrouble, leavesErrnoAsTheSystemSetIt)
{
    const Descriptor full(::open("/dev/full", O_WRONLY));
    if (full < 0)
        GTEST_SKIP() << "no /dev/full";
    Open<CSocketCan> can;
    *can.handle = 7;
    std::fflush(stdout);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    int result = 0;
    int error = 0;
    {
        const Replacement standardOutput(STDOUT_FILENO, full); // printing sets errno
        SystemCalls calls;
        calls.refuse("setsockopt", ENOPROTOOPT);
        result = can.setRecvOverTm(1000);
        error = errno;
    }
    std::clearerr(stdout);
    static char buffer[BUFSIZ];
    std::setvbuf(stdout, buffer, _IOLBF, sizeof buffer);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(error, ENOPROTOOPT);
}

using CanSetSendOverTm = CanCalls;

TEST_F(CanSetSendOverTm, setsOption21AndPrintsNothing)
{
    setDescriptor(7);
    for (const auto& [ms, bytes] : optionTimes) {
        EXPECT_EQ(setSendOverTm(ms), 1);
        EXPECT_EQ(calls.take(), "setsockopt(7, SOL_CAN_RAW, 21, " + timeOption(bytes) + ")\n");
    }
    calls.refuse("setsockopt", ENOPROTOOPT);
    EXPECT_EQ(setSendOverTm(1000), 1);
    EXPECT_EQ(errno, ENOPROTOOPT);
    EXPECT_EQ(prints.take(), "");
}

using CanTimeSetters = CanCalls;

TEST_F(CanTimeSetters, doAndPrintNothingWithoutADescriptor)
{
    for (const int descriptor : {0, -1, INT_MIN}) {
        setDescriptor(descriptor);
        EXPECT_EQ(setRecvOverTm(1000), 0) << descriptor;
        EXPECT_EQ(setSendOverTm(1000), 0) << descriptor;
    }
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(prints.take(), "");
}

TEST_F(CanTimeSetters, acceptDescriptorOne)
{
    setDescriptor(1);
    EXPECT_EQ(setRecvOverTm(0), 1);
    EXPECT_EQ(setSendOverTm(0), 1);
    EXPECT_EQ(calls.take(), "setsockopt(1, SOL_CAN_RAW, 20, " +
                                timeOption("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") +
                                ")\n"
                                "setsockopt(1, SOL_CAN_RAW, 21, " +
                                timeOption("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") + ")\n");
    prints.take();
}

TEST_F(CanTimeSetters, overrideTheVirtualOperationsOfTheBase)
{
    setDescriptor(7);
    CAbstractSocket& base = can;
    EXPECT_EQ(prints.of([&] { return base.setRecvOverTm(0); }), 1);
    EXPECT_EQ(base.setSendOverTm(0), 1);
    base.close();
    EXPECT_EQ(calls.take(), "setsockopt(7, SOL_CAN_RAW, 20, " +
                                timeOption("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") +
                                ")\n"
                                "setsockopt(7, SOL_CAN_RAW, 21, " +
                                timeOption("00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00") +
                                ")\n"
                                "close(7)\n");
    EXPECT_EQ(*can.handle, 0);
    prints.take();
}

// --- close ---

using CanClose = CanCalls;

TEST_F(CanClose, closesDescriptorsFromOneUpAndResetsToZero)
{
    for (const int descriptor : {1, 7, INT_MAX}) {
        setDescriptor(descriptor);
        can.close();
        EXPECT_EQ(calls.take(), on(descriptor, "close(#)\n"));
        EXPECT_EQ(*can.handle, 0);
    }
    setDescriptor(7);
    calls.refuse("close", EIO);
    can.close();
    EXPECT_EQ(*can.handle, 0);
}

TEST_F(CanClose, ignoresTheOpenedFlag)
{
    setDescriptor(7);
    can.opened = true;
    can.close();
    EXPECT_EQ(calls.take(), "close(7)\n");

    can.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(CanClose, doesNothingWithoutADescriptor)
{
    for (const int descriptor : {0, -1, INT_MIN}) {
        setDescriptor(descriptor);
        can.close();
        EXPECT_EQ(*can.handle, descriptor);
    }
    EXPECT_EQ(calls.take(), "");
}

// --- Inherited operations ---

using CanBase = CanCalls;

TEST_F(CanBase, waitsForAFrameWithATimeOut)
{
    setDescriptor(7);
    calls.answerSelect(1, {7}, {}, {});
    EXPECT_EQ(can.isReadable(1500), 1);
    EXPECT_EQ(can.isReadable(1500), 0);
    EXPECT_EQ(calls.take(), "select(8, {7}, null, null, {1, 500000})\n"
                            "select(8, {7}, null, null, {1, 500000})\n");
}

TEST_F(CanBase, watchesStandardInputAfterClosing)
{
    setDescriptor(7);
    can.close();
    EXPECT_EQ(can.isReadable(0), 0);
    EXPECT_EQ(calls.take(), "close(7)\n"
                            "select(1, {0}, null, null, {0, 0})\n");
}
