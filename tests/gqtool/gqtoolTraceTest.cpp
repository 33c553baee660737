#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/plainSockets.h"

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include <arpa/inet.h>
#include <poll.h>

// A trace between the test's own client and station.
class RunningTrace : public RunningProgram {
public:
    explicit RunningTrace(int stationPort, const QStringList& options = {})
        : RunningProgram(GQTOOL, QStringList{"trace", "--listen", "0"} + options +
                                     QStringList{QString("127.0.0.1:%1").arg(stationPort)})
    {
        const QString first = nextLine();
        const QRegularExpressionMatch found = QRegularExpression("127\\.0\\.0\\.1:(\\d+)").match(first);
        EXPECT_TRUE(found.hasMatch()) << first.toStdString();
        port = found.captured(1).toInt();
    }

    // The next line, without its time.
    std::string nextText()
    {
        const QString line = nextLine();
        EXPECT_TRUE(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d ").match(line).hasMatch())
            << line.toStdString();
        return line.mid(13).toStdString();
    }

    int port = 0;
};

// A client and the station, connected through a trace.
struct Link {
    Link(Listener& station, const RunningTrace& trace)
        : client(connected("127.0.0.1", trace.port)), server(station.accept())
    {
    }

    Descriptor client;
    Descriptor server;
};

static void give(int descriptor, const QByteArray& bytes)
{
    EXPECT_EQ(::send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL), bytes.size());
}

static std::string taken(int descriptor, int size)
{
    return hex(QByteArray::fromStdString(received(descriptor, size_t(size))));
}

static bool wasReset(int descriptor)
{
    char byte = 0;
    return ::recv(descriptor, &byte, 1, 0) < 0 && errno == ECONNRESET;
}

static QString contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

static const QByteArray request = "68 04000000 0400 00 00 06 07000000 0000 16"_hex;
static const QByteArray reply = "68 04000000 0400 00 00 06 f9ffffff 0000 16"_hex;

// --- Bytes --------------------------------------------------------------------------------------------------------

TEST(GqtoolTrace, passesEveryPieceAtOnceAndUnchanged)
{
    QByteArray bytes = "16 00 ff"_hex + request + "68 fbffffff"_hex + reply.left(12); // garbage, frames, faults
    for (int value = 0; value < 256; ++value)
        bytes += char(value);
    Listener station(5);
    const RunningTrace trace(station.port());
    for (const int size : {1, 2, 3, 7, 1000}) {
        SCOPED_TRACE(size);
        const Link link(station, trace);
        for (int pos = 0; pos < bytes.size(); pos += size) {
            const QByteArray piece = bytes.mid(pos, size);
            give(link.client, piece); // the next one waits until this one is through
            EXPECT_EQ(taken(link.server, piece.size()), hex(piece));
            give(link.server, piece);
            EXPECT_EQ(taken(link.client, piece.size()), hex(piece));
        }
    }
}

TEST(GqtoolTrace, keepsBytesThatTheOtherSideDoesNotAcceptYet)
{
    QByteArray bytes(16 << 20, '\0');
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i % 251);
    Listener station(5);
    const RunningTrace trace(station.port());
    const Link link(station, trace);
    std::thread sender([&] { give(link.client, bytes); }); // more than the sockets hold
    give(link.server, reply);
    EXPECT_EQ(taken(link.client, reply.size()), hex(reply)); // the other direction does not wait for it
    EXPECT_TRUE(received(link.server, size_t(bytes.size())) == bytes.toStdString());
    sender.join();
}

TEST(GqtoolTrace, servesSeveralClientsAtTheSameTime)
{
    Listener station(5);
    RunningTrace trace(station.port());
    const Link first(station, trace);
    const Link second(station, trace);
    EXPECT_TRUE(trace.nextText().find("1 connected from 127.0.0.1:") == 0);
    EXPECT_TRUE(trace.nextText().find("2 connected from 127.0.0.1:") == 0);
    give(first.client, request.left(9));
    EXPECT_EQ(taken(first.server, 9), hex(request.left(9)));
    give(second.client, request);
    EXPECT_EQ(taken(second.server, 17), hex(request));
    give(first.client, request.mid(9));
    EXPECT_EQ(taken(first.server, 8), hex(request.mid(9)));
    EXPECT_EQ(trace.nextText(), "2 -> setState, sequence 4, 4 bytes: 7");
    EXPECT_EQ(trace.nextText(), "1 -> setState, sequence 4, 4 bytes: 7");
}

// --- Ends ---------------------------------------------------------------------------------------------------------

TEST(GqtoolTrace, passesTheEndOfTheClientBeforeThatOfTheStation)
{
    Listener station(5);
    RunningTrace trace(station.port());
    const Link link(station, trace);
    trace.nextLine();
    give(link.client, request.left(4));
    ::shutdown(link.client, SHUT_WR);
    EXPECT_EQ(taken(link.server, 4), "68 04 00 00");
    EXPECT_TRUE(isAtEnd(link.server));
    EXPECT_EQ(trace.nextText(), "1 -> cut, 4 of the 10 bytes of a header: 68 04 00 00");
    EXPECT_EQ(trace.nextText(), "1 the client ended its stream");

    give(link.server, reply); // all the same
    EXPECT_EQ(taken(link.client, 17), hex(reply));
    EXPECT_EQ(trace.nextText(), "1 <- setState, sequence 4, 4 bytes: -7");
    ::shutdown(link.server, SHUT_WR);
    EXPECT_TRUE(isAtEnd(link.client));
    EXPECT_EQ(trace.nextText(), "1 the station ended its stream");
}

TEST(GqtoolTrace, passesTheEndOfTheStation)
{
    Listener station(5);
    const RunningTrace trace(station.port());
    const Link link(station, trace);
    ::shutdown(link.server, SHUT_WR);
    EXPECT_TRUE(isAtEnd(link.client));
    give(link.client, request);
    EXPECT_EQ(taken(link.server, 17), hex(request));
    ::shutdown(link.client, SHUT_WR);
    EXPECT_TRUE(isAtEnd(link.server));
}

TEST(GqtoolTrace, passesAResetToEitherSide)
{
    Listener station(5);
    RunningTrace trace(station.port());
    {
        Link link(station, trace);
        trace.nextLine();
        give(link.server, reply.left(11)); // the frame that it cuts off is printed
        EXPECT_EQ(taken(link.client, 11), hex(reply.left(11)));
        reset(link.server);
        EXPECT_TRUE(wasReset(link.client));
        EXPECT_EQ(trace.nextText(), "1 <- cut, 11 of 17 bytes: setState, sequence 4, 4 bytes: f9");
        EXPECT_EQ(trace.nextText(), "1 the station broke the connection: Connection reset by peer");
    }
    {
        Link link(station, trace);
        trace.nextLine();
        reset(link.client);
        EXPECT_TRUE(wasReset(link.server));
        EXPECT_EQ(trace.nextText(), "2 the client broke the connection: Connection reset by peer");
    }
    {
        Link link(station, trace);
        trace.nextLine();
        ::shutdown(link.client, SHUT_WR); // a reset after an end counts too
        EXPECT_TRUE(isAtEnd(link.server));
        reset(link.client);
        EXPECT_TRUE(becomes(link.server, POLLERR));
        EXPECT_EQ(option(link.server, SOL_SOCKET, SO_ERROR), EPIPE); // the result of a reset after an end
    }
}

TEST(GqtoolTrace, resetsAClientIfTheStationIsUnreachable)
{
    const Listener nobody; // refuses
    RunningTrace trace(nobody.port());
    const Descriptor client = connected("127.0.0.1", trace.port);
    EXPECT_TRUE(wasReset(client));
    trace.nextLine();
    EXPECT_EQ(trace.nextText(), "1 the station is unreachable: Connection refused");
}

TEST(GqtoolTrace, printsCutFramesAtItsEnd)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        Listener station(5);
        RunningTrace trace(station.port());
        const Link link(station, trace);
        trace.nextLine();
        give(link.client, request.left(12));
        EXPECT_EQ(taken(link.server, 12), hex(request.left(12)));
        EXPECT_EQ(trace.end(signal), 0);
        EXPECT_EQ(trace.nextText(), "1 -> cut, 12 of 17 bytes: setState, sequence 4, 4 bytes: 07 00");
        EXPECT_EQ(trace.nextError(), "no line"); // the summary is for terminals
    }
}

TEST(GqtoolTrace, endsQuietlyWhenItsReaderHasGone)
{
    Listener station(5);
    QProcess process;
    process.start("bash", {"-o", "pipefail", "-c",
                           QString("%1 trace --listen 0 127.0.0.1:%2 | head -1").arg(GQTOOL).arg(station.port())});
    ASSERT_TRUE(process.waitForReadyRead(waitMs));
    const QString line = process.readLine();
    const int port = QRegularExpression("127\\.0\\.0\\.1:(\\d+)").match(line).captured(1).toInt();
    // It finds out by the first line that nobody takes; head may be there still for some.
    while (process.state() == QProcess::Running) {
        const Descriptor client = connected("127.0.0.1", port);
        process.waitForFinished(100);
    }
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_EQ(process.readAllStandardError(), "");
}

// --- Lines and files ----------------------------------------------------------------------------------------------

TEST(GqtoolTrace, printsFramesGarbageAndFaultsInOrder)
{
    Listener station(5);
    RunningTrace trace(station.port());
    const Link link(station, trace);
    trace.nextLine();
    give(link.server, "0d 0a"_hex + reply + request + "68 00000000 0100 00 00 20 0000 17"_hex);
    EXPECT_EQ(trace.nextText(), "1 <- garbage, 2 bytes: 0d 0a");
    EXPECT_EQ(trace.nextText(), "1 <- setState, sequence 4, 4 bytes: -7");
    EXPECT_EQ(trace.nextText(), "1 <- setState, sequence 4, 4 bytes: 7");
    EXPECT_EQ(trace.nextText(), "1 <- wrong end 0x17 instead of 0x16: command 0x20, sequence 1, 0 bytes");
}

TEST(GqtoolTrace, printsAJsonObjectPerLine)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--json"});
    const Link link(station, trace);
    const auto nextObject = [&] {
        return trace.nextLine().replace(QRegularExpression("\"time\":\"[-0-9]{10}T[:0-9]{8}\\.[0-9]{6}Z\""), "TIME");
    };
    const QString connectedLine = nextObject().replace(QRegularExpression("127.0.0.1:\\d+"), "CLIENT");
    EXPECT_EQ(connectedLine, R"({"client":"CLIENT","connection":1,"event":"connected",TIME})");
    give(link.client, request);
    EXPECT_EQ(nextObject(), R"({"arg1":0,"arg2":0,"check":"0000","command":6,"connection":1,"end":"16",)"
                            R"("from":"client","length":4,"offset":0,"payload":"07000000","sequence":4,TIME})");
    ::shutdown(link.server, SHUT_WR);
    EXPECT_EQ(nextObject(), R"({"connection":1,"event":"stationEnded",TIME})");
}

// Puts words for the times and the client's port, which no test knows.
static QString withoutTimes(QString text)
{
    text.replace(QRegularExpression("[-0-9]{10}T[:0-9]{8}\\.[0-9]{6}Z"), "TIME");
    const QString port = QRegularExpression("127\\.0\\.0\\.1:(\\d+) calls").match(text).captured(1);
    return text.replace(port, "PORT");
}

TEST(GqtoolTrace, writesEveryPieceToAFileAtOnce)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("pieces");
    Listener station(5);
    RunningTrace trace(station.port(), {"--write", path});
    const Link link(station, trace);
    give(link.client, request.left(3));
    EXPECT_EQ(taken(link.server, 3), "68 04 00");
    give(link.client, request.mid(3));
    trace.nextLine();
    trace.nextLine(); // that of the whole frame; the file is written by then
    give(link.server, reply);
    trace.nextLine();
    EXPECT_EQ(withoutTimes(contentOf(path)).toStdString(),
              "# 1: 127.0.0.1:PORT calls 127.0.0.1:" + std::to_string(station.port()) +
                  "; text2pcap -r '^1 (?<dir>[IO]) (?<time>\\S+) (?<data>[0-9a-f]+)$' -t ISO -T PORT," +
                  std::to_string(station.port()) +
                  " FILE 1.pcapng\n"
                  "1 I TIME 680400\n"
                  "1 I TIME 0000040000000607000000000016\n"
                  "1 O TIME 680400000004000000"
                  "06f9ffffff000016\n");
}

TEST(GqtoolTrace, writesAFileThatText2pcapConverts)
{
    if (QStandardPaths::findExecutable("text2pcap").isEmpty() || QStandardPaths::findExecutable("tshark").isEmpty())
        GTEST_SKIP() << "no text2pcap or no tshark";
    const QTemporaryDir folder;
    const QString path = folder.filePath("pieces");
    const QString capture = folder.filePath("1.pcapng");
    Listener station(5);
    {
        RunningTrace trace(station.port(), {"--write", path});
        const Link link(station, trace);
        const Link other(station, trace);
        give(link.client, request.left(3));
        EXPECT_EQ(taken(link.server, 3), "68 04 00");
        give(other.client, request); // of another connection, amid the pieces of the first
        EXPECT_EQ(taken(other.server, 17), hex(request));
        give(link.client, request.mid(3));
        EXPECT_EQ(taken(link.server, 14), hex(request.mid(3)));
        give(link.server, reply);
        EXPECT_EQ(taken(link.client, 17), hex(reply));
        EXPECT_EQ(trace.end(), 0);
    }
    // The command in the file.
    const QString content = contentOf(path);
    const QString command = content.section("; ", 1).section('\n', 0, 0).replace(" FILE 1.pcapng", " '%1' '%2'");
    const Outcome made = runProgram("bash", {"-c", command.arg(path, capture)});
    EXPECT_EQ(made.exitCode, 0) << made.errors.toStdString();

    const QString client = QRegularExpression("-T (\\d+),").match(content).captured(1);
    const QString server = QString::number(station.port());
    const QStringList fields = {"frame.packet_flags_direction", "tcp.srcport", "tcp.dstport", "tcp.payload"};
    const Outcome read = runProgram(
        "tshark", {"-r", capture, "-T", "fields", "-e", fields[0], "-e", fields[1], "-e", fields[2], "-e", fields[3]});
    EXPECT_EQ(read.output.toStdString(), QString("0x00000001\t%1\t%2\t680400\n"
                                                 "0x00000001\t%1\t%2\t0000040000000607000000000016\n"
                                                 "0x00000002\t%2\t%1\t68040000000400000006f9ffffff000016\n")
                                             .arg(client, server)
                                             .toStdString());
}

TEST(GqtoolTrace, continuesWhenItsFileIsFull)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--write", "/dev/full"});
    const Link link(station, trace);
    EXPECT_EQ(trace.nextError(),
              "gqtool: cannot write to /dev/full, the trace continues without it: No space left on device");
    give(link.client, request);
    EXPECT_EQ(taken(link.server, 17), hex(request));
    EXPECT_EQ(trace.end(), 1);
}

// --- Datagrams ----------------------------------------------------------------------------------------------------

class DatagramSocket {
public:
    DatagramSocket() : descriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = loopback(0);
        EXPECT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        const timeval limit = {limitMs / 1000, 0};
        ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }

    int port() const
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

    void sendTo(int toPort, const QByteArray& bytes)
    {
        const sockaddr_in address = loopback(toPort);
        EXPECT_EQ(::sendto(descriptor, bytes.constData(), size_t(bytes.size()), 0,
                           reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  bytes.size());
    }

    // The next datagram, and where it comes from.
    std::string take(int* fromPort = nullptr)
    {
        QByteArray bytes(65536, '\0');
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        const ssize_t count =
            ::recvfrom(descriptor, bytes.data(), size_t(bytes.size()), 0, reinterpret_cast<sockaddr*>(&address), &size);
        if (fromPort != nullptr)
            *fromPort = ntohs(address.sin_port);
        return count < 0 ? "none" : hex(bytes.left(int(count)));
    }

private:
    static sockaddr_in loopback(int port)
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(uint16_t(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    Descriptor descriptor;
};

TEST(GqtoolTraceUdp, passesDatagramsAndTheirRepliesToTheRightClient)
{
    DatagramSocket station;
    RunningTrace trace(station.port(), {"--udp"});
    DatagramSocket first;
    DatagramSocket second;
    int firstPort = 0;
    int secondPort = 0;
    first.sendTo(trace.port, request);
    EXPECT_EQ(station.take(&firstPort), hex(request));
    second.sendTo(trace.port, "0102"_hex);
    EXPECT_EQ(station.take(&secondPort), "01 02");
    station.sendTo(firstPort, reply);
    int from = 0;
    EXPECT_EQ(first.take(&from), hex(reply));
    EXPECT_EQ(from, trace.port);
    station.sendTo(secondPort, request.left(5));
    EXPECT_EQ(second.take(), hex(request.left(5)));

    EXPECT_EQ(trace.nextText(), "1 connected from 127.0.0.1:" + std::to_string(first.port()));
    EXPECT_EQ(trace.nextText(), "1 -> setState, sequence 4, 4 bytes: 7");
    EXPECT_EQ(trace.nextText(), "2 connected from 127.0.0.1:" + std::to_string(second.port()));
    EXPECT_EQ(trace.nextText(), "2 -> garbage, 2 bytes: 01 02");
    EXPECT_EQ(trace.nextText(), "1 <- setState, sequence 4, 4 bytes: -7");
    EXPECT_EQ(trace.nextText(), "2 <- cut, 5 of the 10 bytes of a header: 68 04 00 00 00");
}

TEST(GqtoolTraceUdp, passesEmptyAndLargestDatagrams)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("pieces");
    DatagramSocket station;
    RunningTrace trace(station.port(), {"--udp", "--write", path});
    DatagramSocket client;
    client.sendTo(trace.port, QByteArray());
    EXPECT_EQ(station.take(), "");
    const QByteArray largest(65507, '\5');
    client.sendTo(trace.port, largest);
    EXPECT_EQ(station.take(), hex(largest));
    EXPECT_EQ(trace.end(), 0);
    const QString content = contentOf(path);
    EXPECT_TRUE(content.contains(" -t ISO -u "));
    EXPECT_EQ(content.count('\n'), 2);
}

TEST(GqtoolTraceUdp, reportsThatTheStationIsUnreachable)
{
    int port = 0;
    {
        const DatagramSocket gone;
        port = gone.port();
    }
    RunningTrace trace(port, {"--udp"});
    DatagramSocket client;
    client.sendTo(trace.port, request);
    trace.nextLine();
    trace.nextLine();
    EXPECT_EQ(trace.nextText(), "1 the station is unreachable: Connection refused");
}

// --- Usage --------------------------------------------------------------------------------------------------------

TEST(GqtoolTrace, requiresAPortAndAStation)
{
    EXPECT_EQ(run({"trace", "127.0.0.1:5000"}).exitCode, 2);
    EXPECT_EQ(run({"trace", "--listen", "0"}).exitCode, 2);
    EXPECT_EQ(run({"trace", "--listen", "65536", "127.0.0.1:5000"}).exitCode, 2);
    EXPECT_EQ(run({"trace", "--listen", "0", "local host:5000"}).exitCode, 2);
    EXPECT_EQ(run({"trace", "--listen", "0", "127.0.0.1"}).exitCode, 2);
    EXPECT_EQ(run({"trace", "--listen", "0", "--address", "here", "127.0.0.1:5000"}).exitCode, 2);
}

TEST(GqtoolTrace, reportsWhyItCannotStart)
{
    const Listener taken(1);
    const QString port = QString::number(taken.port());
    Outcome outcome = run({"trace", "--listen", port, "127.0.0.1:5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot listen on 127.0.0.1:" + port + ": Address already in use\n");
    outcome = run({"trace", "--listen", "0", "--write", "/nowhere/pieces", "127.0.0.1:5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /nowhere/pieces: No such file or directory\n");
}
