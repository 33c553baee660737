#include "support/hex.h"
#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/prints.h"

#include "gqSerialUnix.h"
#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <linux/can.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

// Only for the guest machine. It has the CAN interfaces vcan0 (up) and vcan1 (down), the programs of can-utils,
// canListener, and /dev/ttyS1 with a peer at its other end that answers each byte with its complement.

// --- CAN ---

// Number of sockets that receive all frames of vcan0.
static int receivers()
{
    std::ifstream table("/proc/net/can/rcvlist_all");
    int count = 0;
    for (std::string line; std::getline(table, line);)
        count += line.find(" vcan0 ") != std::string::npos && line.find("no entry") == std::string::npos ? 1 : 0;
    return count;
}

// candump on vcan0, ready for frames. It ends after the last one.
class Candump {
public:
    explicit Candump(int frames)
    {
        const int before = receivers();
        const std::string command = "candump -L -T 5000 -n " + std::to_string(frames) + " vcan0";
        program = ::popen(command.c_str(), "r");
        while (receivers() == before)
            std::this_thread::yield();
    }

    ~Candump() { ::pclose(program); }

    Candump(const Candump&) = delete;
    Candump& operator=(const Candump&) = delete;

    // Returns the next frame as identifier#data.
    std::string frame()
    {
        char line[200] = {};
        char text[200] = {};
        if (std::fgets(line, sizeof line, program) != nullptr)
            std::sscanf(line, "(%*[^)]) vcan0 %199s", text);
        return text;
    }

private:
    std::FILE* program = nullptr;
};

// Sends a frame, given as identifier#data, from another program.
static void cansend(const std::string& frame)
{
    EXPECT_EQ(std::system(("cansend vcan0 " + frame).c_str()), 0);
}

class CanLink : public testing::Test {
protected:
    ~CanLink() override { can.close(); }

    int open(const std::string& name, bool nonBlocking = false)
    {
        return prints.of([&] { return can.open(name, 0, 0, nonBlocking); });
    }

    // Returns the number of data bytes of the next frame and the data in hex.
    std::string received()
    {
        char buffer[8] = {};
        EXPECT_EQ(can.isReadable(limitMs), 1);
        const int size = can.recv(buffer, sizeof buffer);
        return std::to_string(size) + ": " + hex(QByteArray(buffer, size));
    }

    Prints prints;
    Open<CSocketCan> can;
};

using CanLinkOpen = CanLink;

TEST_F(CanLinkOpen, bindsToAnInterfaceByItsName)
{
    EXPECT_EQ(open("vcan0"), 1);
    EXPECT_TRUE(can.isValid());
    EXPECT_FALSE(can.opened);
    EXPECT_EQ(receivers(), 1);
    EXPECT_FALSE(isNonBlocking(*can.handle));

    std::ifstream file("/sys/class/net/vcan0/ifindex");
    unsigned int index = 0;
    file >> index;
    char text[80];
    std::snprintf(text, sizeof text, "vcan0 can_ifindex = %x\ncan ret:-1", index); // Linux does not support the option
    EXPECT_EQ(prints.take(), text);
}

TEST_F(CanLinkOpen, returnsMinusOneForAMissingInterface)
{
    const auto before = openDescriptors();
    EXPECT_EQ(open("nowhere"), -1);
    EXPECT_EQ(prints.take(),
              "Can't get interface index for can0, code= -1, can0 ifr_ifindex value: 0, name: nowhere\n");
    EXPECT_EQ(*can.handle, 0);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CanLinkOpen, returnsMinusOneForANameThatIsTooLong)
{
    const std::string name(5000, 'c');
    EXPECT_EQ(open(name), -1);
    EXPECT_EQ(prints.take(),
              "Can't get interface index for can0, code= -1, can0 ifr_ifindex value: 0, name: " + name + "\n");
}

TEST_F(CanLinkOpen, returnsMinusOneForAnInterfaceOfAnotherKind)
{
    const auto before = openDescriptors();
    EXPECT_EQ(open("lo"), -1);
    EXPECT_EQ(prints.take(), "lo can_ifindex = 1\nbind error\n");
    EXPECT_EQ(*can.handle, 0);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(CanLinkOpen, bindsToAnInterfaceThatIsDownButCannotSend)
{
    EXPECT_EQ(open("vcan1"), 1);
    EXPECT_EQ(can.send("\xd0", 1, 0x123), -1);
    EXPECT_EQ(errno, ENETDOWN);
}

using CanLinkSend = CanLink;

TEST_F(CanLinkSend, reachesAnotherProgram)
{
    ASSERT_EQ(open("vcan0"), 1);
    Candump candump(6);
    EXPECT_EQ(can.send("\xd0\xd1\xd2", 3, 0x123), 16);
    EXPECT_EQ(can.send("\xd0\xd1\xd2\xd3\xd4\xd5\xd6\xd7", 8, 0x7ff), 16);
    EXPECT_EQ(can.send("", 0, 0), 16);
    EXPECT_EQ(can.send("\xff", 1, int(CAN_EFF_FLAG | 0x12345678)), 16);
    EXPECT_EQ(can.send("", 0, int(CAN_RTR_FLAG | 0x123)), 16);
    EXPECT_EQ(can.send("", 0, int(CAN_EFF_FLAG | CAN_RTR_FLAG | 0x1)), 16);

    EXPECT_EQ(candump.frame(), "123#D0D1D2");
    EXPECT_EQ(candump.frame(), "7FF#D0D1D2D3D4D5D6D7");
    EXPECT_EQ(candump.frame(), "000#");
    EXPECT_EQ(candump.frame(), "12345678#FF");
    EXPECT_EQ(candump.frame(), "123#R");
    EXPECT_EQ(candump.frame(), "00000001#R");
}

TEST_F(CanLinkSend, reachesAnotherEndpointOfTheProgram)
{
    CSocketCan other;
    ASSERT_EQ(open("vcan0"), 1);
    ASSERT_EQ(prints.of([&] { return other.open("vcan0", 0, 0, false); }), 1);
    EXPECT_EQ(other.send("\xd0\xd1", 2, 0x123), 16);
    EXPECT_EQ(received(), "2: d0 d1");
    other.close();
}

TEST_F(CanLinkSend, isNotReceivedByItsSender)
{
    ASSERT_EQ(open("vcan0"), 1);
    Candump candump(1);
    EXPECT_EQ(can.send("\xee", 1, 0x123), 16);
    EXPECT_EQ(candump.frame(), "123#EE"); // it was sent
    cansend("124#D0");
    EXPECT_EQ(received(), "1: d0");
    EXPECT_EQ(can.isReadable(0), 0);
}

using CanLinkRecv = CanLink;

TEST_F(CanLinkRecv, returnsTheDataOfAnotherProgramsFramesInOrder)
{
    ASSERT_EQ(open("vcan0"), 1);
    for (const char* frame : {"123#D0D1D2", "7FF#D0D1D2D3D4D5D6D7", "12345678#00FF", "123#", "123#R", "001#AA"})
        cansend(frame);

    EXPECT_EQ(received(), "3: d0 d1 d2");
    EXPECT_EQ(received(), "8: d0 d1 d2 d3 d4 d5 d6 d7");
    EXPECT_EQ(received(), "2: 00 ff");
    EXPECT_EQ(received(), "0: ");
    EXPECT_EQ(received(), "0: "); // a remote frame, which has no data
    EXPECT_EQ(received(), "1: aa");
    EXPECT_EQ(can.isReadable(0), 0);
}

TEST_F(CanLinkRecv, isLimitedByIsReadable)
{
    ASSERT_EQ(open("vcan0"), 1);
    const auto start = Clock::now();
    EXPECT_EQ(can.isReadable(150), 0);
    EXPECT_GE(msSince(start), 150);

    cansend("123#D0");
    EXPECT_EQ(can.isReadable(limitMs), 1);
}

TEST_F(CanLinkRecv, waitsIndefinitelyWhateverTimeIsSet)
{
    ASSERT_EQ(open("vcan0"), 1); // requests a time of one second
    EXPECT_EQ(prints.of([&] { return can.setRecvOverTm(50); }), 1);
    EXPECT_EQ(timeOutMs(*can.handle, SO_RCVTIMEO), 0);

    std::atomic<bool> hasEnded = false;
    int size = -1;
    std::thread reader([&] {
        char buffer[8];
        size = can.recv(buffer, sizeof buffer);
        hasEnded = true;
    });
    const Descriptor none(::eventfd(0, 0));
    EXPECT_FALSE(becomes(none, POLLIN, 1300)); // longer than both times
    EXPECT_FALSE(hasEnded);
    cansend("123#D0D1");
    reader.join();
    EXPECT_EQ(size, 2);
}

TEST_F(CanLinkRecv, returnsZeroImmediatelyIfOpenedAsync)
{
    ASSERT_EQ(open("vcan0", true), 1);
    EXPECT_TRUE(isNonBlocking(*can.handle));
    char buffer[8];
    EXPECT_EQ(can.recv(buffer, sizeof buffer), 0);
    EXPECT_EQ(errno, EAGAIN);

    cansend("123#D0");
    EXPECT_EQ(received(), "1: d0");
}

TEST_F(CanLinkRecv, returnsZeroOnceTheInterfaceIsDown)
{
    ASSERT_EQ(open("vcan1"), 1);
    char buffer[8];
    EXPECT_EQ(can.recv(buffer, sizeof buffer), 0); // blocking, but an error is pending
    EXPECT_EQ(errno, ENETDOWN);
}

using CanLinkTimeOuts = CanLink;

TEST_F(CanLinkTimeOuts, areRefusedByTheSystemAndReturnOne)
{
    ASSERT_EQ(open("vcan0"), 1);
    prints.take();
    EXPECT_EQ(prints.of([&] { return can.setRecvOverTm(1000); }), 1);
    EXPECT_EQ(prints.take(), "ret:-1\n");
    EXPECT_EQ(can.setSendOverTm(1000), 1);
    EXPECT_EQ(errno, ENOPROTOOPT);
    EXPECT_EQ(timeOutMs(*can.handle, SO_SNDTIMEO), 0);
}

using CanLinkClose = CanLink;

TEST_F(CanLinkClose, releasesTheSocket)
{
    ASSERT_EQ(open("vcan0"), 1);
    const int descriptor = *can.handle;
    can.close();
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_EQ(receivers(), 0);
    EXPECT_FALSE(can.isValid());
    EXPECT_EQ(open("vcan0"), 1);
}

TEST_F(CanLinkClose, isNeededBeforeTheDestructor)
{
    int descriptor = -1;
    {
        Open<CSocketCan> other;
        ASSERT_EQ(prints.of([&] { return other.open("vcan0", 0, 0, false); }), 1);
        descriptor = *other.handle;
    }
    const Descriptor left(descriptor);
    EXPECT_TRUE(isOpen(left));
    EXPECT_EQ(receivers(), 1);
}

// The program of examples/, which runs until no frame has arrived for ten seconds.
TEST(CanListener, printsTheDataOfEachFrame)
{
    const int before = receivers();
    std::FILE* listener = ::popen("timeout 2 canListener vcan0", "r");
    ASSERT_NE(listener, nullptr);
    while (receivers() == before)
        std::this_thread::yield();
    cansend("123#0102FF");
    cansend("124#");
    std::string lines;
    char line[200];
    while (std::fgets(line, sizeof line, listener) != nullptr)
        lines += line;
    EXPECT_NE(::pclose(listener), 0);                                          // killed
    EXPECT_EQ(lines.substr(lines.find('\n') + 1), "can ret:-1\n01 02 ff\n\n"); // after the line with the index
}

// --- Serial ---

class SerialPort : public testing::Test {
protected:
    static constexpr int portNumber = 1;

    termios settings() const
    {
        termios result = {};
        EXPECT_EQ(::tcgetattr(device, &result), 0);
        return result;
    }

    // Receives until there are `size` bytes or the limit has passed.
    std::string received(size_t size)
    {
        std::string bytes;
        while (bytes.size() < size && becomes(device, POLLIN)) {
            char buffer[256];
            const int count = serial.recv(buffer, sizeof buffer);
            if (count > 0)
                bytes.append(buffer, size_t(count));
        }
        return bytes;
    }

    Descriptor device{::open("/dev/ttyS1", O_RDWR | O_NOCTTY | O_NONBLOCK)}; // the same line, to query it
    CSerial serial;
};

static std::string complement(std::string bytes)
{
    for (char& byte : bytes)
        byte = char(~byte);
    return bytes;
}

using SerialPortOpen = SerialPort;

TEST_F(SerialPortOpen, setsTheLine)
{
    EXPECT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    EXPECT_TRUE(serial.isOpen());
    const termios line = settings();
    EXPECT_EQ(::cfgetispeed(&line), speed_t(B115200));
    EXPECT_EQ(::cfgetospeed(&line), speed_t(B115200));
    EXPECT_EQ(line.c_cflag & (CSIZE | CSTOPB | PARENB | CREAD | CLOCAL), tcflag_t(CS8 | CREAD | CLOCAL));
    EXPECT_EQ(line.c_iflag & (BRKINT | INPCK | ISTRIP | IGNCR | ICRNL | IXON | IXANY | IXOFF), 0u);
    EXPECT_EQ(line.c_oflag & (ONLCR | OCRNL), 0u);
    EXPECT_EQ(line.c_lflag, 0u);
    EXPECT_EQ(line.c_cc[VTIME], 150);
    EXPECT_EQ(line.c_cc[VMIN], 0);
}

// Linux has devices for ports that do not exist. They can be opened but are not terminals.
TEST_F(SerialPortOpen, returnsZeroForANumberWithoutAPortAndKeepsTheDescriptor)
{
    const auto before = openDescriptors();
    EXPECT_EQ(serial.open(3, 9600, 8, 1, 0, 0), 0);
    EXPECT_FALSE(serial.isOpen());
    EXPECT_EQ(openedSince(before).size(), 1u);
    serial.close();
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SerialPortOpen, returnsZeroForANumberWithoutADevice)
{
    EXPECT_EQ(serial.open(1000, 9600, 8, 1, 0, 0), 0);
    EXPECT_EQ(errno, ENOENT);
}

using SerialPortSetPara = SerialPort;

TEST_F(SerialPortSetPara, setsTheSpeedAndUnknownSpeedsTo9600)
{
    ASSERT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    const struct {
        int baud;
        speed_t speed;
    } speeds[] = {
        {1200, B1200},   {2400, B2400},     {4800, B4800},  {9600, B9600},   {19200, B19200},
        {38400, B38400}, {115200, B115200}, {57600, B9600}, {230400, B9600},
    };
    for (const auto& [baud, speed] : speeds) {
        EXPECT_EQ(serial.setPara(baud, 8, 1, 0, 0), 1);
        const termios line = settings();
        EXPECT_EQ(::cfgetospeed(&line), speed) << baud;
        EXPECT_EQ(::cfgetispeed(&line), speed) << baud;
    }
}

TEST_F(SerialPortSetPara, setsBitsAndParity)
{
    ASSERT_EQ(serial.open(portNumber, 9600, 8, 1, 0, 0), 1);
    const struct {
        int dataBits, stopBits, parity;
        tcflag_t flags;
    } forms[] = {
        {8, 1, 0, CS8},
        {7, 1, 2, CS7 | PARENB},
        {7, 2, 1, CS7 | CSTOPB | PARENB | PARODD},
        {5, 2, 2, CS5 | CSTOPB | PARENB},
        {6, 1, 1, CS6 | PARENB | PARODD},
        {9, 0, 3, CS8 | PARODD}, // PARODD is unchanged and ignored without parity
    };
    for (const auto& [dataBits, stopBits, parity, flags] : forms) {
        EXPECT_EQ(serial.setPara(9600, dataBits, stopBits, parity, 0), 1);
        EXPECT_EQ(settings().c_cflag & (CSIZE | CSTOPB | PARENB | PARODD), flags);
    }
}

TEST_F(SerialPortSetPara, isVisibleInStty)
{
    ASSERT_EQ(serial.open(portNumber, 57600, 8, 1, 0, 0), 1);
    EXPECT_EQ(std::system("test $(stty -F /dev/ttyS1 speed) = 9600"), 0);
    ASSERT_EQ(serial.setPara(115200, 7, 2, 2, 0), 1);
    EXPECT_EQ(std::system("test $(stty -F /dev/ttyS1 speed) = 115200"), 0);
    EXPECT_EQ(std::system("stty -a -F /dev/ttyS1 2>&1 | grep -q ' *parenb -parodd.* cs7 .*cstopb'"), 0);
}

TEST_F(SerialPortSetPara, dropsUnreadInput)
{
    ASSERT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    ASSERT_EQ(serial.send("old", 3), 3);
    int waiting = 0;
    while (waiting < 3) {
        ASSERT_EQ(::ioctl(device, TIOCINQ, &waiting), 0);
        std::this_thread::yield();
    }
    EXPECT_EQ(serial.setPara(115200, 8, 1, 0, 0), 1);
    EXPECT_EQ(serial.send("new", 3), 3);
    EXPECT_EQ(received(3), complement("new"));
}

using SerialPortCarry = SerialPort;

TEST_F(SerialPortCarry, transfersEveryByteUnchangedBothWays)
{
    ASSERT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    std::string bytes;
    for (int value = 0; value < 512; ++value)
        bytes += char(value);
    EXPECT_EQ(serial.send(bytes.data(), int(bytes.size())), int(bytes.size()));
    EXPECT_EQ(received(bytes.size()), complement(bytes));
}

TEST_F(SerialPortCarry, transfersBytesAtTheSlowestSpeed)
{
    ASSERT_EQ(serial.open(portNumber, 1200, 8, 1, 0, 0), 1);
    EXPECT_EQ(serial.send("slow", 4), 4);
    EXPECT_EQ(received(4), complement("slow"));
}

TEST_F(SerialPortCarry, returnsMinusOneImmediatelyWithoutData)
{
    ASSERT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    const auto start = Clock::now();
    char buffer[8];
    EXPECT_EQ(serial.recv(buffer, sizeof buffer), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_LT(msSince(start), 5000); // not the 15 s set on the line
}

TEST_F(SerialPortCarry, sendsAPartAndReturnsMinusOneWhenFull)
{
    ASSERT_EQ(serial.open(portNumber, 1200, 8, 1, 0, 0), 1);
    const std::string much(1 << 16, 'x');
    int count = serial.send(much.data(), int(much.size()));
    EXPECT_GT(count, 0);
    EXPECT_LT(count, int(much.size()));
    for (int times = 0; count > 0 && times < 1000; ++times) // transmitted bytes make room
        count = serial.send(much.data(), int(much.size()));
    EXPECT_EQ(count, -1);
    EXPECT_EQ(errno, EAGAIN);

    EXPECT_EQ(serial.setPara(115200, 8, 1, 0, 0), 1); // drops them, otherwise closing would wait for them
    EXPECT_EQ(serial.send("#", 1), 1);
    std::string answers;
    while (answers.find(complement("#")) == std::string::npos) { // none is left for the next tests
        const std::string more = received(1);
        ASSERT_FALSE(more.empty());
        answers += more;
    }
}

using SerialPortClose = SerialPort;

TEST_F(SerialPortClose, releasesTheLineAndReopens)
{
    const auto before = openDescriptors();
    ASSERT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    serial.close();
    EXPECT_EQ(openDescriptors(), before);
    ASSERT_EQ(serial.open(portNumber, 115200, 8, 1, 0, 0), 1);
    EXPECT_EQ(serial.send("again", 5), 5);
    EXPECT_EQ(received(5), complement("again"));
}
