// The programs of examples/ run against peers, as a user would try them.

#include "support/deviceLink.h"
#include "support/gqtoolProgram.h"
#include "support/hex.h"

#include <QTemporaryFile>

#include <cstdlib>
#include <memory>

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

static QString example(const char* name)
{
    return QString(EXAMPLES) + "/" + name;
}

// --- TCP and UDP --------------------------------------------------------------------------------------------------

TEST(FirstProgram, printsTheRepliesOfTheStation)
{
    RunningStation station;
    const Outcome outcome = runProgram(example("firstProgram"), {station.endpoint.section(':', 1)});
    EXPECT_EQ(outcome.exitCode, 0);
    const QStringList lines = outcome.output.split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], "setRecvOverTm:0, 9000");
    EXPECT_TRUE(lines[1].startsWith("time "));
    EXPECT_EQ(lines[2], "5 values, the last one 240");
}

// Writes a script for a station to a file.
class UdpClient : public testing::Test {
protected:
    QString script(const char* lines)
    {
        file.open();
        file.write(lines);
        file.close();
        return file.fileName();
    }

private:
    QTemporaryFile file;
};

TEST_F(UdpClient, ignoresLateAndDuplicateReplies)
{
    RunningStation station({"--udp", "--script",
                            script("reply 2 silent\n"
                                   "reply 4 late 300\n" // during the wait of the second attempt
                                   "reply 6 split 20\n"
                                   "reply 8 close-after 0\n"
                                   "reply 10 together\n")});
    QStringList states;
    for (int state = 100; state < 110; ++state)
        states += QString::number(state);
    const Outcome outcome = runProgram(example("udpClient"), station.endpoint.split(':') + QStringList{"200"} + states);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.output.split('\n', Qt::SkipEmptyParts), states);
}

TEST_F(UdpClient, reportsTheCodeOfAnErrorFrameWithoutRetrying)
{
    RunningStation station({"--udp", "--script", script("reply 1 error -7\n")});
    const Outcome outcome =
        runProgram(example("udpClient"), station.endpoint.split(':') + QStringList{"5000", "1", "2"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "no reply: -7\n");
}

TEST_F(UdpClient, reportsAServerThatIsGone)
{
    QStringList endpoint;
    {
        RunningStation station({"--udp"});
        endpoint = station.endpoint.split(':');
    }
    const Outcome outcome = runProgram(example("udpClient"), endpoint + QStringList{"5000", "1"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "no reply: -1\n");
}

// Returns a port that was free a moment ago.
static int freePort()
{
    const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in end = {};
    end.sin_family = AF_INET;
    socklen_t size = sizeof end;
    EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&end), size), 0);
    getsockname(descriptor, reinterpret_cast<sockaddr*>(&end), &size);
    close(descriptor);
    return ntohs(end.sin_port);
}

TEST(MulticastReceiver, printsDatagramsOfTheGroupWithTheirSender)
{
    const QString port = QString::number(freePort());
    RunningProgram receiver(example("multicastReceiver"), {"239.255.77.1", port, "127.0.0.1"});
    ASSERT_EQ(receiver.nextLine(), "listening");

    // Not sent by the example: its datagrams are not looped back to this machine.
    const int sender = socket(AF_INET, SOCK_DGRAM, 0);
    const in_addr loopback = {htonl(INADDR_LOOPBACK)};
    setsockopt(sender, IPPROTO_IP, IP_MULTICAST_IF, &loopback, sizeof loopback);
    sockaddr_in group = {};
    group.sin_family = AF_INET;
    group.sin_port = htons(port.toUShort());
    group.sin_addr.s_addr = inet_addr("239.255.77.1");
    EXPECT_EQ(sendto(sender, "\x01\xff", 2, 0, reinterpret_cast<const sockaddr*>(&group), sizeof group), 2);
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    getsockname(sender, reinterpret_cast<sockaddr*>(&own), &size);
    EXPECT_EQ(receiver.nextLine(), QString("127.0.0.1:%1  01 ff").arg(ntohs(own.sin_port)));
    close(sender);
}

TEST(MulticastReceiver, reportsThatItCannotJoin)
{
    const Outcome outcome = runProgram(example("multicastReceiver"), {"127.0.0.1", "5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "multicastReceiver: cannot join 127.0.0.1\n");
}

TEST(MulticastSender, sendsOnAnInterface)
{
    const Outcome outcome = runProgram(example("multicastSender"), {"239.255.77.1", "5000", "hello", "127.0.0.1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
}

// --- Serial line --------------------------------------------------------------------------------------------------

// A field device at the other end of a serial line: the master of a pseudo terminal.
class ModbusPoll : public testing::Test {
protected:
    ModbusPoll()
    {
        grantpt(device);
        unlockpt(device);
        const char* name = ptsname(device);
        line = std::make_unique<DeviceLink>(name != nullptr ? name : "");
    }
    ~ModbusPoll() override { close(device); }

    void SetUp() override
    {
        if (!line->isMade())
            GTEST_SKIP() << "cannot create names in /dev";
    }

    // Receives a request of exactly this size.
    QByteArray request(int size) const
    {
        QByteArray bytes;
        pollfd wait = {device, POLLIN, 0};
        while (bytes.size() < size && poll(&wait, 1, waitMs) == 1) {
            char part[64];
            const ssize_t count = read(device, part, size_t(size - bytes.size()));
            if (count > 0)
                bytes.append(part, int(count));
            else
                usleep(1000); // the line is not open yet
        }
        return bytes;
    }

    void reply(const QByteArray& bytes) const
    {
        EXPECT_EQ(write(device, bytes.constData(), size_t(bytes.size())), bytes.size());
    }

    const int device = posix_openpt(O_RDWR | O_NOCTTY);
    std::unique_ptr<DeviceLink> line;
};

TEST_F(ModbusPoll, readsRegistersThatArriveInParts)
{
    RunningProgram poll(example("modbusPoll"), {QString::number(line->number()), "17", "107", "3"});
    EXPECT_EQ(hex(request(8)), hex("11 03 006b 0003 7687"_hex)); // the example of the Modbus reference, with CRC
    reply("11 03 06 ae41"_hex);
    reply("5652 4340 49ad"_hex);
    EXPECT_EQ(poll.nextLine(), "107: 44609");
    EXPECT_EQ(poll.nextLine(), "108: 22098");
    EXPECT_EQ(poll.nextLine(), "109: 17216");
}

TEST_F(ModbusPoll, refusesAReplyWithAWrongCrc)
{
    RunningProgram poll(example("modbusPoll"), {QString::number(line->number()), "17", "107", "1"});
    EXPECT_EQ(request(8).size(), 8);
    reply("11 03 02 ae41 0000"_hex);
    EXPECT_TRUE(poll.nextError().startsWith("openComm: /dev/ttyS")); // printed by the library
    EXPECT_EQ(poll.nextError(), "openComm success");
    EXPECT_EQ(poll.nextError(), "no good reply: 11 03 02 ae 41 00 00");
}

// --- Texts and usage ----------------------------------------------------------------------------------------------

TEST(EnglishTexts, printsACodeInBothLanguages)
{
    const Outcome outcome = runProgram(example("englishTexts"), {});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, QString::fromUtf8("155: 5号\n155: 5 (day of the month)\n"));
}

TEST(Examples, printTheirUsage)
{
    for (const char* name :
         {"boundedRequest", "canListener",    "childProgram",  "epollClient",  "framesByHand",      "framesByLibrary",
          "gbkTexts",       "hostNames",      "manySockets",   "modbusPoll",   "multicastReceiver", "multicastSender",
          "pointClient",    "pollingService", "promptSocket",  "qtClient",     "relativeTime",      "returningClient",
          "savedLog",       "sendAll",        "setServerTime", "silentClient", "udpClient"}) {
        const Outcome outcome = runProgram(example(name), {});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_TRUE(outcome.errors.startsWith(QString("usage: %1 ").arg(name))) << outcome.errors.toStdString();
    }
}
