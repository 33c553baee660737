#include "support/systemCalls.h"

#include "gqSerialUnix.h"

#include <QByteArray>
#include <QDebug>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <string>
#include <type_traits>
#include <utility>

#include <termios.h>

// A serial line with public access to its state.
class OpenSerial : public CSerial {
public:
    using CSerial::handle;
    using CSerial::opened;
};

static const QByteArray zeros(sizeof(termios), '\0');
static const QByteArray ones(sizeof(termios), '\xff');

// Records messages of qDebug() among the calls, in order.
class SerialCalls : public testing::Test {
protected:
    SerialCalls() { noted = this; }

    ~SerialCalls() override
    {
        noted = nullptr;
        qInstallMessageHandler(programsHandler);
    }

    // Returns the messages and calls since the last time.
    std::string take()
    {
        seen += calls.take();
        return std::exchange(seen, {});
    }

    // Opens the line with descriptor 7.
    void open(int baud = 9600, int dataBits = 8, int stopBits = 1, int parity = 0, int flowControl = 0)
    {
        calls.answer("open", 7);
        calls.answer("isatty", 1);
        ASSERT_EQ(serial.open(5, baud, dataBits, stopBits, parity, flowControl), 1);
        take();
    }

    // Opens a device that is not a terminal, with descriptor 7.
    void openStray()
    {
        calls.answer("open", 7);
        ASSERT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 0);
        take();
    }

    // Returns the settings that a line with the settings `before` gets.
    termios settings(const QByteArray& before, int baud, int dataBits, int stopBits, int parity, int flowControl)
    {
        *serial.handle = 7;
        calls.answer("tcgetattr", 0, before);
        EXPECT_EQ(serial.setPara(baud, dataBits, stopBits, parity, flowControl), 1);
        return calls.lineSettings();
    }

private:
    static void note(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        if (noted == nullptr)
            return;
        noted->seen += noted->calls.take();
        noted->seen += type == QtDebugMsg ? "qDebug: " : "a message of another type: ";
        noted->seen += text.toStdString() + "\n";
    }

    // At the first message, Qt makes system calls to read its settings.
    static QtMessageHandler installed()
    {
        const QtMessageHandler former = qInstallMessageHandler(note);
        qDebug();
        return former;
    }

    static inline SerialCalls* noted = nullptr;
    QtMessageHandler programsHandler = installed();
    std::string seen;

protected:
    SystemCalls calls;
    OpenSerial serial;
};

// --- The class ---

static_assert(!std::is_polymorphic_v<CSerial>);
static_assert(std::is_same_v<decltype(&CSerial::isOpen), bool (CSerial::*)()>);
static_assert(std::is_same_v<decltype(&CSerial::open), int (CSerial::*)(int, int, int, int, int, int)>);
static_assert(std::is_same_v<decltype(&CSerial::setPara), int (CSerial::*)(int, int, int, int, int)>);
static_assert(std::is_same_v<decltype(&CSerial::send), int (CSerial::*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&CSerial::recv), int (CSerial::*)(char*, int)>);
static_assert(std::is_same_v<decltype(&CSerial::close), void (CSerial::*)()>);
static_assert(std::is_same_v<decltype(OpenSerial::opened), bool>);
static_assert(std::is_same_v<decltype(OpenSerial::handle), int*>);

TEST(SerialClass, keepsTheOrderOfItsFields)
{
    const OpenSerial serial;
    const char* object = reinterpret_cast<const char*>(&serial);
    EXPECT_EQ(reinterpret_cast<const char*>(&serial.opened) - object, 0);
    EXPECT_EQ(reinterpret_cast<const char*>(&serial.handle) - object, ptrdiff_t(sizeof(void*)));
    EXPECT_EQ(sizeof(CSerial), 2 * sizeof(void*));
}

using SerialConstruct = SerialCalls;

TEST_F(SerialConstruct, startsClosedWithItsOwnCell)
{
    ASSERT_NE(serial.handle, nullptr);
    EXPECT_EQ(*serial.handle, -1);
    EXPECT_FALSE(serial.opened);
    EXPECT_EQ(take(), "");

    const OpenSerial other;
    EXPECT_NE(other.handle, serial.handle);
}

using SerialDestroy = SerialCalls;

TEST_F(SerialDestroy, closesAnOpenLine)
{
    {
        CSerial other;
        calls.answer("open", 8);
        calls.answer("isatty", 1);
        ASSERT_EQ(other.open(5, 9600, 8, 1, 0, 0), 1);
        take();
    }
    EXPECT_EQ(take(), "close(8)\n");
}

TEST_F(SerialDestroy, leavesTheDescriptorOfANonTerminalOpen)
{
    {
        CSerial other;
        calls.answer("open", 8);
        ASSERT_EQ(other.open(5, 9600, 8, 1, 0, 0), 0);
        take();
    }
    EXPECT_EQ(take(), "");
}

TEST_F(SerialDestroy, closesNothingBeforeOpeningAndAfterClosing)
{
    {
        const CSerial never;
        CSerial other;
        calls.answer("open", 8);
        calls.answer("isatty", 1);
        ASSERT_EQ(other.open(5, 9600, 8, 1, 0, 0), 1);
        other.close();
        take();
    }
    EXPECT_EQ(take(), "");
}

// --- isOpen ---

using SerialIsOpen = SerialCalls;

TEST_F(SerialIsOpen, usesOnlyTheFlag)
{
    *serial.handle = 7;
    EXPECT_FALSE(serial.isOpen());

    *serial.handle = -1;
    serial.opened = true;
    EXPECT_TRUE(serial.isOpen());
    EXPECT_EQ(take(), "");
}

// --- open ---

using SerialOpen = SerialCalls;

TEST_F(SerialOpen, opensTheDeviceAndSetsItsParameters)
{
    calls.answer("open", 7);
    calls.answer("isatty", 1);
    EXPECT_EQ(serial.open(5, 19200, 7, 2, 1, 0), 1);
    EXPECT_EQ(take(), "qDebug: openComm: /dev/ttyS5\n"
                      "open(/dev/ttyS5, O_RDWR | O_NOCTTY | O_NONBLOCK)\n"
                      "isatty(7)\n"
                      "tcgetattr(7)\n"
                      "tcflush(7, TCIOFLUSH)\n"
                      "tcsetattr(7, TCSANOW)\n"
                      "qDebug: openComm success\n");
    EXPECT_EQ(calls.lineSettings().c_cflag, tcflag_t(B19200 | CS7 | CREAD | CLOCAL | CSTOPB | PARENB | PARODD));
    EXPECT_TRUE(serial.isOpen());
    EXPECT_EQ(*serial.handle, 7);
}

TEST_F(SerialOpen, passesTheFlowControlOn)
{
    for (const int flowControl : {0, 1}) {
        calls.answer("open", 7);
        calls.answer("isatty", 1);
        calls.answer("tcgetattr", 0, ones);
        EXPECT_EQ(serial.open(5, 9600, 8, 1, 2, flowControl), 1);
        EXPECT_EQ(calls.lineSettings().c_iflag & IXON, tcflag_t(flowControl == 0 ? 0 : IXON));
        serial.close();
    }
}

TEST_F(SerialOpen, derivesTheDeviceNameFromTheNumber)
{
    const struct {
        int number;
        const char* name;
    } devices[] = {
        {0, "/dev/ttyS0"},
        {1, "/dev/ttyS1"},
        {31, "/dev/ttyS31"},
        {100, "/dev/ttyS100"},
        {INT_MAX, "/dev/ttyS2147483647"},
        {-1, "/dev/ttyS-1"},
        {INT_MIN, "/dev/ttyS-2147483648"},
    };
    for (const auto& [number, name] : devices) {
        calls.refuse("open", ENOENT);
        EXPECT_EQ(serial.open(number, 9600, 8, 1, 0, 0), 0);
        EXPECT_EQ(take(),
                  std::string("qDebug: openComm: ") + name + "\nopen(" + name + ", O_RDWR | O_NOCTTY | O_NONBLOCK)\n");
    }
}

TEST_F(SerialOpen, returnsZeroSilentlyWhenTheSystemRefuses)
{
    calls.refuse("open", EACCES);
    EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 0);
    EXPECT_EQ(take(), "qDebug: openComm: /dev/ttyS5\n"
                      "open(/dev/ttyS5, O_RDWR | O_NOCTTY | O_NONBLOCK)\n");
    EXPECT_FALSE(serial.isOpen());
    EXPECT_EQ(*serial.handle, -1);
}

TEST_F(SerialOpen, storesTheResultOfTheSystem)
{
    calls.answer("open", -5);
    EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 0);
    EXPECT_EQ(*serial.handle, -5);
}

TEST_F(SerialOpen, reopensAfterAFailureAndAfterClosing)
{
    calls.refuse("open", EACCES);
    EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 0);

    for (const int descriptor : {7, 8}) {
        calls.answer("open", descriptor);
        calls.answer("isatty", 1);
        EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 1);
        EXPECT_EQ(*serial.handle, descriptor);
        serial.close();
    }
}

TEST_F(SerialOpen, acceptsDescriptorZero)
{
    calls.answer("open", 0);
    calls.answer("isatty", 1);
    EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(take(), "qDebug: openComm: /dev/ttyS5\n"
                      "open(/dev/ttyS5, O_RDWR | O_NOCTTY | O_NONBLOCK)\n"
                      "isatty(0)\n"
                      "tcgetattr(0)\n"
                      "tcflush(0, TCIOFLUSH)\n"
                      "tcsetattr(0, TCSANOW)\n"
                      "qDebug: openComm success\n");
    EXPECT_TRUE(serial.isOpen());

    EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(take(), "");
}

TEST_F(SerialOpen, refusesANonTerminalAndKeepsItsDescriptor)
{
    for (const auto& [answer, text] : {std::pair(0, "0"), std::pair(2, "2"), std::pair(-1, "-1")}) {
        calls.answer("open", 7);
        calls.answer("isatty", answer);
        EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 0);
        EXPECT_EQ(take(), std::string("qDebug: openComm: /dev/ttyS5\n"
                                      "open(/dev/ttyS5, O_RDWR | O_NOCTTY | O_NONBLOCK)\n"
                                      "isatty(7)\n"
                                      "qDebug: isatty: ") +
                              text + "\n");
        EXPECT_FALSE(serial.isOpen());
        EXPECT_EQ(*serial.handle, 7);
        serial.close();
        take();
    }
}

TEST_F(SerialOpen, returnsOneEvenIfNoParameterCanBeSet)
{
    calls.answer("open", 7);
    calls.answer("isatty", 1);
    calls.refuse("tcgetattr", EIO);
    calls.refuse("tcflush", EIO);
    calls.refuse("tcsetattr", EIO);
    EXPECT_EQ(serial.open(5, 9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(take(), "qDebug: openComm: /dev/ttyS5\n"
                      "open(/dev/ttyS5, O_RDWR | O_NOCTTY | O_NONBLOCK)\n"
                      "isatty(7)\n"
                      "tcgetattr(7)\n"
                      "tcflush(7, TCIOFLUSH)\n"
                      "tcsetattr(7, TCSANOW)\n"
                      "qDebug: openComm success\n");
    EXPECT_TRUE(serial.isOpen());
}

TEST_F(SerialOpen, returnsOneAndDoesNothingOnAnOpenLine)
{
    open();
    EXPECT_EQ(serial.open(6, 115200, 7, 2, 2, 1), 1);
    EXPECT_EQ(take(), "");
    EXPECT_EQ(*serial.handle, 7);
}

// --- The state after opening a device that is not a terminal ---

using SerialStray = SerialCalls;

TEST_F(SerialStray, returnsOneFromOpenWithoutAnyCall)
{
    openStray();
    EXPECT_EQ(serial.open(6, 9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(take(), "");
    EXPECT_FALSE(serial.isOpen());
    EXPECT_EQ(*serial.handle, 7);
}

TEST_F(SerialStray, neitherSendsNorReceives)
{
    openStray();
    char buffer[4] = {};
    EXPECT_EQ(serial.send("data", 4), -1);
    EXPECT_EQ(serial.recv(buffer, sizeof buffer), -1);
    EXPECT_EQ(take(), "");
}

TEST_F(SerialStray, acceptsParameters)
{
    openStray();
    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 1);
    EXPECT_EQ(take(), "tcgetattr(7)\n"
                      "tcflush(7, TCIOFLUSH)\n"
                      "tcsetattr(7, TCSANOW)\n");
    EXPECT_FALSE(serial.isOpen());
}

TEST_F(SerialStray, canBeClosed)
{
    openStray();
    serial.close();
    EXPECT_EQ(take(), "close(7)\n");
    EXPECT_EQ(*serial.handle, -1);
}

// --- setPara ---

using SerialSetPara = SerialCalls;

TEST_F(SerialSetPara, flushesTheQueuesBeforeSetting)
{
    open();
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 1);
        EXPECT_EQ(take(), "tcgetattr(7)\n"
                          "tcflush(7, TCIOFLUSH)\n"
                          "tcsetattr(7, TCSANOW)\n");
    }
}

TEST_F(SerialSetPara, returnsZeroWithoutADescriptor)
{
    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 0);

    open();
    serial.close();
    take();
    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 0);

    *serial.handle = INT_MIN;
    serial.opened = true;
    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 0);
    EXPECT_EQ(take(), "");
}

TEST_F(SerialSetPara, setsAnEightBitLineWithoutParity)
{
    const termios line = settings(zeros, 115200, 8, 1, 0, 0);
    EXPECT_EQ(line.c_iflag, 0u);
    EXPECT_EQ(line.c_oflag, 0u);
    EXPECT_EQ(line.c_cflag, tcflag_t(B115200 | CS8 | CREAD | CLOCAL));
    EXPECT_EQ(line.c_lflag, 0u);
}

TEST_F(SerialSetPara, setsTheSpeedInBothDirectionsAndUnknownSpeedsTo9600)
{
    const struct {
        int baud;
        speed_t speed;
    } speeds[] = {
        {1200, B1200},   {2400, B2400},   {4800, B4800},     {9600, B9600},         {19200, B19200},
        {38400, B38400}, {57600, B9600},  {115200, B115200}, {300, B9600},          {600, B9600},
        {1800, B9600},   {230400, B9600}, {115201, B9600},   {1201, B9600},         {0, B9600},
        {1, B9600},      {-9600, B9600},  {INT_MAX, B9600},  {int(B115200), B9600},
    };
    for (const QByteArray& before : {zeros, ones}) {
        for (const auto& [baud, speed] : speeds) {
            const termios line = settings(before, baud, 8, 1, 0, 0);
            EXPECT_EQ(::cfgetispeed(&line), speed) << baud;
            EXPECT_EQ(::cfgetospeed(&line), speed) << baud;
            EXPECT_EQ(line.c_ispeed, speed) << baud;
            EXPECT_EQ(line.c_ospeed, speed) << baud;
        }
    }
}

TEST_F(SerialSetPara, setsTheDataBitsAndUnknownNumbersToEight)
{
    const struct {
        int dataBits;
        tcflag_t size;
    } sizes[] = {
        {5, CS5}, {6, CS6}, {7, CS7}, {8, CS8}, {9, CS8}, {4, CS8}, {0, CS8}, {-1, CS8}, {-5, CS8}, {INT_MAX, CS8},
    };
    for (const QByteArray& before : {zeros, ones}) {
        for (const auto& [dataBits, size] : sizes) {
            const termios line = settings(before, 9600, dataBits, 1, 0, 0);
            EXPECT_EQ(line.c_cflag & CSIZE, size) << dataBits;
            EXPECT_EQ(line.c_cflag & (CREAD | CLOCAL), tcflag_t(CREAD | CLOCAL));
        }
    }
}

TEST_F(SerialSetPara, setsTwoStopBitsOnlyForTwo)
{
    for (const QByteArray& before : {zeros, ones}) {
        EXPECT_EQ(settings(before, 9600, 8, 2, 0, 0).c_cflag & CSTOPB, tcflag_t(CSTOPB));
        for (const int stopBits : {1, 0, 3, -2, INT_MAX})
            EXPECT_EQ(settings(before, 9600, 8, stopBits, 0, 0).c_cflag & CSTOPB, 0u) << stopBits;
    }
}

TEST_F(SerialSetPara, setsOddParityForOne)
{
    for (const QByteArray& before : {zeros, ones})
        EXPECT_EQ(settings(before, 9600, 8, 1, 1, 1).c_cflag & (PARENB | PARODD), tcflag_t(PARENB | PARODD));
}

TEST_F(SerialSetPara, setsEvenParityForTwo)
{
    for (const QByteArray& before : {zeros, ones})
        EXPECT_EQ(settings(before, 9600, 8, 1, 2, 1).c_cflag & (PARENB | PARODD), tcflag_t(PARENB));
}

TEST_F(SerialSetPara, clearsPARENBForOtherValuesButKeepsPARODD)
{
    for (const int parity : {0, 3, -1, INT_MAX}) {
        EXPECT_EQ(settings(zeros, 9600, 8, 1, parity, 1).c_cflag & (PARENB | PARODD), 0u) << parity;
        EXPECT_EQ(settings(ones, 9600, 8, 1, parity, 1).c_cflag & (PARENB | PARODD), tcflag_t(PARODD)) << parity;
    }
}

TEST_F(SerialSetPara, neverEnablesINPCK)
{
    for (const int parity : {1, 2}) {
        EXPECT_EQ(settings(zeros, 9600, 8, 1, parity, 1).c_iflag & INPCK, 0u);
        EXPECT_EQ(settings(ones, 9600, 8, 1, parity, 1).c_iflag & INPCK, tcflag_t(INPCK));
        EXPECT_EQ(settings(ones, 9600, 8, 1, parity, 0).c_iflag & INPCK, 0u);
    }
    EXPECT_EQ(settings(ones, 9600, 8, 1, 0, 1).c_iflag & INPCK, 0u);
}

// Bit 31 of the input flags: libc marks an input speed of 0 with it and clears it for any other speed.
static constexpr tcflag_t zeroSpeedMark = 0x80000000;

static constexpr tcflag_t translations = BRKINT | INPCK | ISTRIP | IGNCR | ICRNL | IXON | IXANY | IXOFF;

TEST_F(SerialSetPara, clearsFlowControlAndTranslationsForFlowControlZero)
{
    const termios line = settings(ones, 9600, 8, 1, 2, 0);
    EXPECT_EQ(line.c_iflag, ~(translations | zeroSpeedMark));
    EXPECT_EQ(line.c_oflag, ~tcflag_t(ONLCR | OCRNL));
}

TEST_F(SerialSetPara, leavesFlowControlAndTranslationsForAnyOtherNumber)
{
    for (const int flowControl : {1, 2, -1, INT_MAX}) {
        const termios line = settings(ones, 9600, 8, 1, 2, flowControl);
        EXPECT_EQ(line.c_iflag, ~zeroSpeedMark) << flowControl;
        EXPECT_EQ(line.c_oflag, ~tcflag_t(0)) << flowControl;
    }
}

TEST_F(SerialSetPara, enablesNoFlowControlOrTranslation)
{
    for (const int flowControl : {0, 1, 2, -1}) {
        for (const int parity : {0, 1, 2}) {
            const termios line = settings(zeros, 9600, 8, 1, parity, flowControl);
            EXPECT_EQ(line.c_iflag, 0u) << flowControl;
            EXPECT_EQ(line.c_oflag, 0u) << flowControl;
        }
    }
}

TEST_F(SerialSetPara, leavesAllOtherControlFlags)
{
    for (const int flowControl : {0, 1}) {
        EXPECT_EQ(settings(ones, 115200, 5, 1, 2, flowControl).c_cflag,
                  (~tcflag_t(CBAUD | CSIZE | CSTOPB | PARODD) | B115200 | CS5)); // CRTSCTS is kept
        EXPECT_EQ(settings(zeros, 115200, 5, 1, 2, flowControl).c_cflag,
                  tcflag_t(B115200 | CS5 | CREAD | CLOCAL | PARENB));
    }
}

TEST_F(SerialSetPara, setsRawModeWithATimeOfFifteenSeconds)
{
    for (const int flowControl : {0, 1}) {
        const termios line = settings(ones, 9600, 8, 1, 0, flowControl);
        EXPECT_EQ(line.c_lflag, 0u); // lines, echo and signals are off
        EXPECT_EQ(line.c_cc[VTIME], 150);
        EXPECT_EQ(line.c_cc[VMIN], 0);

        const termios other = settings(zeros, 9600, 8, 1, 0, flowControl);
        EXPECT_EQ(other.c_lflag, 0u);
        EXPECT_EQ(other.c_cc[VTIME], 150);
        EXPECT_EQ(other.c_cc[VMIN], 0);
    }
}

TEST_F(SerialSetPara, leavesTheOtherControlCharactersAndTheLineDiscipline)
{
    for (const auto& [before, byte] : {std::pair(zeros, 0), std::pair(ones, 0xff)}) {
        const termios line = settings(before, 9600, 8, 1, 0, 0);
        for (int place = 0; place < NCCS; ++place) {
            if (place != VTIME && place != VMIN) {
                EXPECT_EQ(line.c_cc[place], byte) << place;
            }
        }
        EXPECT_EQ(line.c_line, byte);
    }
}

TEST_F(SerialSetPara, startsFromZerosIfTheSettingsCannotBeRead)
{
    open(1200, 5, 2, 1, 0);
    calls.refuse("tcgetattr", EIO);
    EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 1), 1);
    const termios line = calls.lineSettings();
    EXPECT_EQ(line.c_iflag, 0u);
    EXPECT_EQ(line.c_oflag, 0u);
    EXPECT_EQ(line.c_cflag, tcflag_t(B9600 | CS8 | CREAD | CLOCAL));
    EXPECT_EQ(line.c_line, 0);
    EXPECT_EQ(line.c_cc[VINTR], 0);
}

TEST_F(SerialSetPara, returnsOneWhateverTheSystemReturns)
{
    open();
    for (const char* function : {"tcgetattr", "tcflush", "tcsetattr"}) {
        calls.refuse(function, EIO);
        EXPECT_EQ(serial.setPara(9600, 8, 1, 0, 0), 1);
        EXPECT_EQ(take(), "tcgetattr(7)\n"
                          "tcflush(7, TCIOFLUSH)\n"
                          "tcsetattr(7, TCSANOW)\n");
    }
}

// --- send and recv ---

using SerialSend = SerialCalls;

TEST_F(SerialSend, writesOnceAndReturnsTheResult)
{
    open();
    for (const int result : {4, 3, 0}) {
        calls.answer("write", result);
        EXPECT_EQ(serial.send("\x01\x00\xfe\xff", 4), result);
        EXPECT_EQ(take(), "write(7, [01 00 fe ff], 4)\n");
    }
}

TEST_F(SerialSend, returnsMinusOneAndLeavesErrnoWhenTheSystemRefuses)
{
    open();
    for (const int error : {EAGAIN, EINTR, EIO}) {
        calls.refuse("write", error);
        EXPECT_EQ(serial.send("a", 1), -1);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(take(), "write(7, [61], 1)\n");
    }
    EXPECT_TRUE(serial.isOpen());
}

TEST_F(SerialSend, writesAnEmptyBuffer)
{
    open();
    EXPECT_EQ(serial.send("a", 0), 0);
    EXPECT_EQ(take(), "write(7, [], 0)\n");
}

TEST_F(SerialSend, returnsMinusOneBeforeOpeningAndAfterClosing)
{
    EXPECT_EQ(serial.send("a", 1), -1);
    open();
    serial.close();
    take();
    EXPECT_EQ(serial.send("a", 1), -1);
    EXPECT_EQ(take(), "");
}

TEST_F(SerialSend, usesOnlyTheFlag)
{
    serial.opened = true;
    calls.refuse("write", EBADF);
    EXPECT_EQ(serial.send("a", 1), -1);
    EXPECT_EQ(take(), "write(-1, [61], 1)\n");
}

using SerialRecv = SerialCalls;

TEST_F(SerialRecv, readsOnceAndReturnsTheResult)
{
    open();
    char buffer[5] = {'.', '.', '.', '.', '.'};
    calls.answer("read", 3, QByteArray("\x01\x00\xff", 3));
    EXPECT_EQ(serial.recv(buffer, 4), 3);
    EXPECT_EQ(std::string(buffer, 5), std::string("\x01\x00\xff..", 5));
    EXPECT_EQ(take(), "read(7, 4)\n");

    calls.answer("read", 0);
    EXPECT_EQ(serial.recv(buffer, 5), 0);
    EXPECT_EQ(take(), "read(7, 5)\n");
}

TEST_F(SerialRecv, returnsMinusOneAndLeavesErrnoWhenTheSystemRefuses)
{
    open();
    char letter = '.';
    for (const int error : {EAGAIN, EINTR, EIO}) {
        calls.refuse("read", error);
        EXPECT_EQ(serial.recv(&letter, 1), -1);
        EXPECT_EQ(errno, error);
        EXPECT_EQ(take(), "read(7, 1)\n");
    }
    EXPECT_EQ(letter, '.');
    EXPECT_TRUE(serial.isOpen());
}

TEST_F(SerialRecv, returnsMinusOneBeforeOpeningAndAfterClosing)
{
    char letter = '.';
    EXPECT_EQ(serial.recv(&letter, 1), -1);
    open();
    serial.close();
    take();
    EXPECT_EQ(serial.recv(&letter, 1), -1);
    EXPECT_EQ(take(), "");
}

TEST_F(SerialRecv, usesOnlyTheFlag)
{
    serial.opened = true;
    char letter = '.';
    calls.refuse("read", EBADF);
    EXPECT_EQ(serial.recv(&letter, 1), -1);
    EXPECT_EQ(take(), "read(-1, 1)\n");
}

// --- close ---

using SerialClose = SerialCalls;

TEST_F(SerialClose, closesTheDescriptorWhateverTheSystemReturns)
{
    for (const int answer : {0, -1}) {
        open();
        calls.answer("close", answer);
        serial.close();
        EXPECT_EQ(take(), "close(7)\n");
        EXPECT_FALSE(serial.isOpen());
        EXPECT_EQ(*serial.handle, -1);
    }
}

TEST_F(SerialClose, closesDescriptorZero)
{
    *serial.handle = 0;
    serial.opened = true;
    serial.close();
    EXPECT_EQ(take(), "close(0)\n");
    EXPECT_FALSE(serial.isOpen());
    EXPECT_EQ(*serial.handle, -1);
}

TEST_F(SerialClose, doesNothingWithoutADescriptor)
{
    serial.close();
    EXPECT_EQ(*serial.handle, -1);

    *serial.handle = -5;
    serial.opened = true;
    serial.close();
    EXPECT_EQ(*serial.handle, -5);
    EXPECT_TRUE(serial.isOpen());
    EXPECT_EQ(take(), "");
}
