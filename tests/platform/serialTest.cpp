#include "support/deviceLink.h"
#include "support/plainSockets.h"

#include "gqSerialUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

// The other end of a serial line is the master of a pseudo terminal.
class SerialLine : public testing::Test {
protected:
    SerialLine()
    {
        ::grantpt(peer);
        ::unlockpt(peer);
        const char* name = ::ptsname(peer);
        link = std::make_unique<DeviceLink>(name != nullptr ? name : "");
    }

    void SetUp() override
    {
        if (!link->isMade())
            GTEST_SKIP() << "cannot create names in /dev";
    }

    int open(int baud = 9600, int dataBits = 8, int stopBits = 1, int parity = 0, int flowControl = 0)
    {
        return serial.open(link->number(), baud, dataBits, stopBits, parity, flowControl);
    }

    // The current settings. A pseudo terminal replaces all sizes and parities by 8 bits without parity.
    termios settings() const
    {
        termios result = {};
        EXPECT_EQ(::tcgetattr(peer, &result), 0);
        return result;
    }

    // Receives from the serial line until there are `size` bytes or the limit has passed.
    std::string received(size_t size, int atOnce = 256)
    {
        std::string bytes;
        const Clock::time_point start = Clock::now();
        while (bytes.size() < size && msSince(start) < limitMs) {
            char buffer[256];
            const int count = serial.recv(buffer, atOnce);
            if (count > 0)
                bytes.append(buffer, size_t(count));
            else
                std::this_thread::yield();
        }
        return bytes;
    }

    // Receives from the peer until there are `size` bytes or the limit has passed.
    std::string receivedByPeer(size_t size) const
    {
        std::string bytes;
        char buffer[256];
        while (bytes.size() < size && becomes(peer, POLLIN)) {
            const ssize_t count = ::read(peer, buffer, sizeof buffer);
            if (count <= 0)
                break;
            bytes.append(buffer, size_t(count));
        }
        return bytes;
    }

    Descriptor peer{::posix_openpt(O_RDWR | O_NOCTTY)};
    std::unique_ptr<DeviceLink> link;
    CSerial serial;
};

// Every byte value twice, to detect bytes that the line translates or interprets.
static std::string allBytes()
{
    std::string bytes;
    for (int value = 0; value < 512; ++value)
        bytes += char(value);
    return bytes;
}

using SerialLineOpen = SerialLine;

TEST_F(SerialLineOpen, setsTheParametersOfTheDevice)
{
    EXPECT_EQ(open(115200, 8, 2, 0, 0), 1);
    EXPECT_TRUE(serial.isOpen());

    const termios line = settings();
    EXPECT_EQ(::cfgetispeed(&line), speed_t(B115200));
    EXPECT_EQ(::cfgetospeed(&line), speed_t(B115200));
    EXPECT_EQ(line.c_cflag & (CSIZE | CSTOPB | CREAD | CLOCAL), tcflag_t(CS8 | CSTOPB | CREAD | CLOCAL));
    EXPECT_EQ(line.c_iflag & (BRKINT | INPCK | ISTRIP | IGNCR | ICRNL | IXON | IXANY | IXOFF), 0u);
    EXPECT_EQ(line.c_oflag & (ONLCR | OCRNL), 0u);
    EXPECT_EQ(line.c_oflag & OPOST, tcflag_t(OPOST)); // unchanged
    EXPECT_EQ(line.c_lflag, 0u);
    EXPECT_EQ(line.c_cc[VTIME], 150);
    EXPECT_EQ(line.c_cc[VMIN], 0);
}

TEST_F(SerialLineOpen, uses9600ForAnUnknownSpeed)
{
    EXPECT_EQ(open(57600), 1);
    const termios line = settings();
    EXPECT_EQ(::cfgetospeed(&line), speed_t(B9600));
}

TEST_F(SerialLineOpen, leavesTheParametersOfAnOpenLine)
{
    EXPECT_EQ(open(19200), 1);
    EXPECT_EQ(open(1200), 1);
    const termios line = settings();
    EXPECT_EQ(::cfgetospeed(&line), speed_t(B19200));
}

TEST_F(SerialLineOpen, leavesTheTranslationsUnlessFlowControlIsZero)
{
    ASSERT_NE(settings().c_iflag & ICRNL, 0u); // default of a new terminal
    ASSERT_NE(settings().c_oflag & ONLCR, 0u);
    EXPECT_EQ(open(9600, 8, 1, 0, 1), 1);
    EXPECT_NE(settings().c_iflag & ICRNL, 0u);
    EXPECT_NE(settings().c_oflag & ONLCR, 0u);

    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(settings().c_iflag & ICRNL, 0u);
    EXPECT_EQ(settings().c_oflag & ONLCR, 0u);
}

TEST_F(SerialLineOpen, doesNotMakeTheLineTheControllingTerminal)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid(); // without a controlling terminal, which the next opened terminal would become
        const bool opened = open() == 1;
        const bool hasTerminal = ::open("/dev/tty", O_RDWR) >= 0;
        ::_exit(opened && !hasTerminal ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(SerialLineOpen, returnsZeroForAMissingDevice)
{
    const DeviceLink missing("/nowhere/ttyS"); // no other test takes the name meanwhile
    ASSERT_TRUE(missing.isMade());
    const std::set<int> before = openDescriptors();
    EXPECT_EQ(serial.open(missing.number(), 9600, 8, 1, 0, 0), 0);
    EXPECT_FALSE(serial.isOpen());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SerialLineOpen, returnsZeroForANegativeNumber)
{
    EXPECT_EQ(serial.open(-1, 9600, 8, 1, 0, 0), 0);
    EXPECT_FALSE(serial.isOpen());
}

using SerialLineCarry = SerialLine;

TEST_F(SerialLineCarry, transfersEveryByteUnchangedBothWays)
{
    ASSERT_EQ(open(), 1);
    const std::string bytes = allBytes();
    EXPECT_EQ(serial.send(bytes.data(), int(bytes.size())), int(bytes.size()));
    EXPECT_EQ(receivedByPeer(bytes.size()), bytes);

    EXPECT_EQ(::write(peer, bytes.data(), bytes.size()), ssize_t(bytes.size()));
    EXPECT_EQ(received(bytes.size()), bytes);
}

TEST_F(SerialLineCarry, returnsTheAvailableBytesUpToTheLength)
{
    ASSERT_EQ(open(), 1);
    ASSERT_EQ(::write(peer, "abcdef", 6), 6);
    ASSERT_EQ(received(1, 1), "a");

    char buffer[4] = {'.', '.', '.', '.'};
    int count = -1;
    while (count < 0)
        count = serial.recv(buffer, 3);
    EXPECT_EQ(std::string(buffer, 4),
              std::string("bcd").substr(0, size_t(count)) + std::string(size_t(4 - count), '.'));
    EXPECT_EQ(received(size_t(5 - count)), std::string("bcdef").substr(size_t(count)));
}

TEST_F(SerialLineCarry, returnsMinusOneImmediatelyWithoutData)
{
    ASSERT_EQ(open(), 1);
    const Clock::time_point start = Clock::now();
    char buffer[8];
    EXPECT_EQ(serial.recv(buffer, sizeof buffer), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_LT(msSince(start), 1000); // not the 15 s set on the line
    EXPECT_TRUE(serial.isOpen());
}

TEST_F(SerialLineCarry, sendsAPartAndReturnsMinusOneWhenFull)
{
    ASSERT_EQ(open(), 1);
    const std::string much(1 << 20, 'x');
    const int first = serial.send(much.data(), int(much.size()));
    EXPECT_GT(first, 0);
    EXPECT_LT(first, int(much.size()));

    int count = first;
    for (int times = 0; count >= 0 && times < 1000; ++times) // the line accepts the last bytes gradually
        count = serial.send(much.data(), int(much.size()));
    EXPECT_EQ(count, -1);
    EXPECT_EQ(errno, EAGAIN);
}

using SerialLineSetPara = SerialLine;

TEST_F(SerialLineSetPara, dropsUnreadInput)
{
    ASSERT_EQ(open(), 1);
    const Descriptor line(::open(::ptsname(peer), O_RDWR | O_NOCTTY));
    ASSERT_EQ(::write(peer, "old", 3), 3);
    int waiting = 0;
    while (waiting < 3) {
        ASSERT_EQ(::ioctl(line, TIOCINQ, &waiting), 0);
        std::this_thread::yield();
    }

    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(::write(peer, "new", 3), 3);
    EXPECT_EQ(received(3), "new");
}

TEST_F(SerialLineSetPara, changesAnOpenLine)
{
    ASSERT_EQ(open(9600), 1);
    EXPECT_EQ(serial.setPara(38400, 8, 2, 0, 0), 1);
    const termios line = settings();
    EXPECT_EQ(::cfgetospeed(&line), speed_t(B38400));
    EXPECT_NE(line.c_cflag & CSTOPB, 0u);
    EXPECT_TRUE(serial.isOpen());
}

using SerialLineClose = SerialLine;

TEST_F(SerialLineClose, releasesTheDescriptorAndReopens)
{
    const std::set<int> before = openDescriptors();
    ASSERT_EQ(open(), 1);
    EXPECT_EQ(openedSince(before).size(), 1u);
    serial.close();
    EXPECT_EQ(openDescriptors(), before);

    ASSERT_EQ(open(), 1);
    EXPECT_EQ(serial.send("again", 5), 5);
    EXPECT_EQ(receivedByPeer(5), "again");
}

TEST_F(SerialLineClose, isCalledByTheDestructor)
{
    const std::set<int> before = openDescriptors();
    {
        CSerial other;
        ASSERT_EQ(other.open(link->number(), 9600, 8, 1, 0, 0), 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SerialLineClose, isNeededAfterOpeningANonTerminal)
{
    const DeviceLink none("/dev/null");
    const std::set<int> before = openDescriptors();
    std::set<int> left;
    {
        CSerial other;
        EXPECT_EQ(other.open(none.number(), 9600, 8, 1, 0, 0), 0);
        EXPECT_FALSE(other.isOpen());
        left = openedSince(before);
    }
    ASSERT_EQ(left.size(), 1u);
    const Descriptor held(*left.begin());
    EXPECT_TRUE(isOpen(held)); // although the object is destroyed

    EXPECT_EQ(serial.open(none.number(), 9600, 8, 1, 0, 0), 0);
    EXPECT_EQ(open(), 1); // as it has a descriptor
    EXPECT_FALSE(serial.isOpen());
    serial.close();
    EXPECT_EQ(open(), 1);
    EXPECT_TRUE(serial.isOpen());
}
