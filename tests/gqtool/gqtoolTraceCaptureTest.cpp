#include "support/inputFile.h"
#include "support/runningTrace.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

#include <sys/stat.h>

// The capture of `gqtool trace --pcap`, read by tshark.

class GqtoolTraceCapture : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (QStandardPaths::findExecutable("tshark").isEmpty())
            GTEST_SKIP() << "no tshark";
    }

    // These fields of all packets, a line for each, tab-separated.
    std::string fields(const QStringList& names) const
    {
        QStringList arguments = {"-r", path, "-T", "fields"};
        for (const char* check : {"ip", "tcp", "udp"})
            arguments += {"-o", QString("%1.check_checksum:TRUE").arg(check)};
        for (const QString& name : names)
            arguments += {"-e", name};
        const Outcome outcome = runProgram("tshark", arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        return outcome.output.toStdString();
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath("all.pcap");
};

// Lines of tshark with words for the ports.
static std::string withPorts(const std::string& text, int client, int station)
{
    return QString::fromStdString(text)
        .replace(QString::number(client), "CLIENT")
        .replace(QString::number(station), "STATION")
        .toStdString();
}

static int clientPort(const Descriptor& client)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(client, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

TEST_F(GqtoolTraceCapture, showsAConnectionAsIfTheClientHadTalkedToTheStation)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--pcap", path});
    int port = 0;
    {
        const Link link(station, trace);
        port = clientPort(link.client);
        give(link.client, request.left(3));
        EXPECT_EQ(taken(link.server, 3), "68 04 00");
        give(link.client, request.mid(3));
        EXPECT_EQ(taken(link.server, 14), hex(request.mid(3)));
        give(link.server, reply);
        EXPECT_EQ(taken(link.client, 17), hex(reply));
        ::shutdown(link.client, SHUT_WR);
        EXPECT_TRUE(isAtEnd(link.server));
        ::shutdown(link.server, SHUT_WR);
        EXPECT_TRUE(isAtEnd(link.client));
    }
    EXPECT_EQ(trace.end(), 0);
    EXPECT_EQ(withPorts(fields({"tcp.srcport", "tcp.dstport", "tcp.flags", "tcp.seq", "tcp.ack", "tcp.payload"}), port,
                        station.port()),
              "CLIENT\tSTATION\t0x0002\t0\t0\t\n"
              "STATION\tCLIENT\t0x0012\t0\t1\t\n"
              "CLIENT\tSTATION\t0x0010\t1\t1\t\n"
              "CLIENT\tSTATION\t0x0018\t1\t1\t680400\n"
              "CLIENT\tSTATION\t0x0018\t4\t1\t0000040000000607000000000016\n"
              "STATION\tCLIENT\t0x0018\t1\t18\t68040000000400000006f9ffffff000016\n"
              "CLIENT\tSTATION\t0x0011\t18\t18\t\n"
              "STATION\tCLIENT\t0x0010\t18\t19\t\n"
              "STATION\tCLIENT\t0x0011\t18\t19\t\n"
              "CLIENT\tSTATION\t0x0010\t19\t19\t\n");
    std::string lines;
    for (int i = 0; i < 10; ++i)
        lines += "127.0.0.1\t127.0.0.1\t1\t1\t\n"; // good checksums, and nothing that tshark finds odd
    EXPECT_EQ(fields({"ip.src", "ip.dst", "ip.checksum.status", "tcp.checksum.status", "tcp.analysis.flags"}), lines);
}

TEST_F(GqtoolTraceCapture, hasTheTimeOfEachEvent)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    Listener station(5);
    RunningTrace trace(station.port(), {"--pcap", path});
    const Link link(station, trace);
    give(link.client, request);
    EXPECT_EQ(taken(link.server, 17), hex(request));
    EXPECT_EQ(trace.end(), 0);
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    qint64 last = before;
    for (const QString& line : QString::fromStdString(fields({"frame.time_epoch"})).split('\n', Qt::SkipEmptyParts)) {
        const qint64 time = qint64(line.toDouble() * 1000);
        EXPECT_GE(time, last);
        last = time;
    }
    EXPECT_LE(last, after);
}

TEST_F(GqtoolTraceCapture, holdsAllConnectionsAndShowsTheirFrames)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--pcap", path});
    {
        const Link first(station, trace);
        const Link second(station, trace);
        give(first.client, request.left(9));
        EXPECT_EQ(taken(first.server, 9), hex(request.left(9)));
        give(second.client, request);
        EXPECT_EQ(taken(second.server, 17), hex(request));
        give(first.client, request.mid(9));
        EXPECT_EQ(taken(first.server, 8), hex(request.mid(9)));
        give(first.server, reply);
        EXPECT_EQ(taken(first.client, 17), hex(reply));
        EXPECT_EQ(trace.end(), 0);
    }
    const Outcome read = runProgram("tshark", {"-r", path, "-X", QString("lua_script:") + GQFRAME, "-d",
                                               QString("tcp.port==%1,gqframe").arg(station.port()), "-Y", "gqframe",
                                               "-T", "fields", "-e", "tcp.stream", "-e", "_ws.col.Info"});
    EXPECT_EQ(read.output.toStdString(), "1\tsetState request\n0\tsetState request\n0\tsetState reply\n");
    EXPECT_EQ(fields({"tcp.analysis.flags"}).find_first_not_of('\n'), std::string::npos);
}

TEST_F(GqtoolTraceCapture, showsWhichSideBrokeAConnection)
{
    Listener station(5);
    {
        RunningTrace trace(station.port(), {"--pcap", path});
        Link first(station, trace);
        trace.nextLine();
        give(first.client, request);
        EXPECT_EQ(taken(first.server, 17), hex(request)); // now both connections are open
        reset(first.server);
        EXPECT_TRUE(wasReset(first.client));
        trace.nextLine();
        Link second(station, trace);
        give(second.client, request);
        EXPECT_EQ(taken(second.server, 17), hex(request));
        reset(second.client);
        EXPECT_TRUE(wasReset(second.server));
        EXPECT_EQ(trace.end(), 0);
    }
    const std::string port = std::to_string(station.port());
    const std::string lines = fields({"tcp.srcport", "tcp.flags"});
    EXPECT_NE(lines.find("\n" + port + "\t0x0014\n"), std::string::npos) << lines;
    EXPECT_EQ(lines.substr(lines.size() - 7), "0x0014\n");
    EXPECT_EQ(lines.find(port + "\t0x0014\n", lines.find("0x0014\n") + 1), std::string::npos) << lines;
}

TEST_F(GqtoolTraceCapture, showsThatTheStationRefuses)
{
    const Listener nobody;
    RunningTrace trace(nobody.port(), {"--pcap", path});
    const Descriptor client = connected("127.0.0.1", trace.port);
    EXPECT_TRUE(wasReset(client));
    EXPECT_EQ(trace.end(), 0);
    EXPECT_EQ(withPorts(fields({"tcp.srcport", "tcp.flags", "tcp.ack"}), clientPort(client), nobody.port()),
              "CLIENT\t0x0002\t0\nSTATION\t0x0014\t1\n");
}

TEST_F(GqtoolTraceCapture, splitsWhatIsTooLongForAPacket)
{
    QByteArray bytes(300000, '\0');
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i % 251);
    Listener station(5);
    RunningTrace trace(station.port(), {"--pcap", path});
    {
        const Link link(station, trace);
        std::thread sender([&] { give(link.client, bytes); });
        EXPECT_TRUE(received(link.server, size_t(bytes.size())) == bytes.toStdString());
        sender.join();
        EXPECT_EQ(trace.end(), 0);
    }
    QByteArray captured;
    for (const QString& line : QString::fromStdString(fields({"tcp.payload"})).split('\n'))
        captured += QByteArray::fromHex(line.toLatin1());
    EXPECT_TRUE(captured == bytes);
    EXPECT_EQ(fields({"tcp.analysis.flags", "_ws.malformed"}).find_first_not_of("\t\n"), std::string::npos);
}

TEST_F(GqtoolTraceCapture, isCompleteAfterEachLine)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--pcap", path});
    const int fileHead = 24;
    const int packetHead = 16;
    const int headers = 40;
    EXPECT_EQ(QFileInfo(path).size(), fileHead);
    const Link link(station, trace);
    give(link.client, request);
    trace.nextLine();
    trace.nextLine();
    const qint64 handshake = 3 * (packetHead + headers) + 16; // with options in two of its packets
    EXPECT_EQ(QFileInfo(path).size(), fileHead + handshake + packetHead + headers + 17);
    give(link.server, reply);
    trace.nextLine();
    EXPECT_EQ(QFileInfo(path).size(), fileHead + handshake + 2 * (packetHead + headers + 17));
}

TEST_F(GqtoolTraceCapture, showsDatagrams)
{
    DatagramSocket station;
    RunningTrace trace(station.port(), {"--udp", "--pcap", path});
    DatagramSocket client;
    int relay = 0;
    client.sendTo(trace.port, QByteArray());
    EXPECT_EQ(station.take(&relay), "");
    client.sendTo(trace.port, request);
    EXPECT_EQ(station.take(), hex(request));
    station.sendTo(relay, reply);
    EXPECT_EQ(client.take(), hex(reply));
    const QByteArray largest(65507, '\5');
    client.sendTo(trace.port, largest);
    EXPECT_EQ(station.take(), hex(largest));
    EXPECT_EQ(trace.end(), 0);
    EXPECT_EQ(withPorts(fields({"udp.srcport", "udp.dstport", "ip.checksum.status", "udp.checksum.status", "udp.length",
                                "_ws.malformed"}),
                        client.port(), station.port()),
              "CLIENT\tSTATION\t1\t1\t8\t\n"
              "CLIENT\tSTATION\t1\t1\t25\t\n"
              "STATION\tCLIENT\t1\t1\t25\t\n"
              "CLIENT\tSTATION\t1\t1\t65515\t\n");
}

// In UDP, 0 means that there is no checksum, so a checksum of 0 is sent as 0xffff. The payload makes the checksum 0.
TEST_F(GqtoolTraceCapture, writesAChecksumOfZeroAsFfff)
{
    DatagramSocket station;
    RunningTrace trace(station.port(), {"--udp", "--pcap", path});
    DatagramSocket client;
    // The words that are added up: twice 127.0.0.1, the protocol, the length, the ports and the length again.
    unsigned int sum = 2 * (0x7f00 + 0x0001) + 17 + 10 + unsigned(client.port()) + unsigned(station.port()) + 10;
    while (sum > 0xffff)
        sum = (sum & 0xffff) + (sum >> 16);
    const unsigned int missing = 0xffff - sum;
    client.sendTo(trace.port, QByteArray(1, char(missing >> 8)) + char(missing & 0xff));
    station.take();
    EXPECT_EQ(trace.end(), 0);
    EXPECT_EQ(fields({"udp.checksum", "udp.checksum.status"}), "0xffff\t1\n");
}

// --- Files --------------------------------------------------------------------------------------------------------

TEST_F(GqtoolTraceCapture, replacesAFileOnlyOnceItCanStart)
{
    writeTo(path, "an older capture");
    const Listener taken(1);
    EXPECT_EQ(run({"trace", "--listen", QString::number(taken.port()), "--pcap", path, "127.0.0.1:5000"}).exitCode, 1);
    EXPECT_EQ(contentOf(path), "an older capture");

    // No byte can be written.
    const Outcome outcome =
        runProgram("bash", {"-c", "trap '' XFSZ; ulimit -S -f 0; exec " GQTOOL " trace --listen 0 --pcap " + path +
                                      " 127.0.0.1:5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to " + path + ": File too large\n");
    EXPECT_EQ(contentOf(path), "an older capture");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"all.pcap"});

    RunningTrace trace(5000, {"--pcap", path});
    EXPECT_EQ(contentOf(path).size(), 24);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"all.pcap"});
}

// A capture begins as all.pcap.part.
TEST_F(GqtoolTraceCapture, keepsAnExistingPartFile)
{
    writeTo(path, "an older capture");
    writeTo(path + ".part", "something else");
    const Outcome outcome = run({"trace", "--listen", "0", "--pcap", path, "127.0.0.1:5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to " + path + ": " + path +
                                  ".part exists; if no other trace is writing it, remove it\n");
    EXPECT_EQ(contentOf(path), "an older capture");
    EXPECT_EQ(contentOf(path + ".part"), "something else");
}

TEST_F(GqtoolTraceCapture, replacesTheFileThatALinkPointsTo)
{
    const QString link = folder.filePath("link.pcap");
    writeTo(path, "an older capture");
    ASSERT_TRUE(QFile::link(path, link));
    const RunningTrace trace(5000, {"--pcap", link});
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(contentOf(path).size(), 24);
}

TEST_F(GqtoolTraceCapture, endsWithAWholePacketWhenTheDiskIsFull)
{
    Listener station(5);
    RunningProgram trace("bash", {"-c", QString("trap '' XFSZ; ulimit -S -f 1; exec %1 trace --listen 0 --pcap %2 "
                                                "127.0.0.1:%3") // at most 1024 bytes
                                            .arg(GQTOOL, path)
                                            .arg(station.port())});
    const QString line = trace.nextLine();
    const Descriptor client = connected("127.0.0.1", line.section(' ', 3, 3).section(':', 1).toInt());
    const Descriptor server = station.accept();
    for (int i = 0; i < 20; ++i) { // all bytes still pass
        give(client, request);
        EXPECT_EQ(taken(server, 17), hex(request));
    }
    EXPECT_EQ(trace.nextError(),
              QString("gqtool: cannot write to %1, the trace continues without it: File too large").arg(path));
    EXPECT_EQ(trace.end(), 1);
    const std::string payloads = fields({"tcp.payload"});
    EXPECT_EQ(payloads.substr(payloads.size() - 35), request.toHex().toStdString() + "\n");
    EXPECT_LE(contentOf(path).size(), 1024);
}

TEST_F(GqtoolTraceCapture, goesToAPipe)
{
    const QString pipe = folder.filePath("pipe");
    ASSERT_EQ(::mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
    RunningProgram reader("tshark", {"-r", pipe, "-T", "fields", "-e", "tcp.flags"});
    Listener station(5);
    RunningTrace trace(station.port(), {"--pcap", pipe});
    {
        Link link(station, trace);
        trace.nextLine();
        reset(link.client);
        trace.nextLine();
    }
    EXPECT_EQ(trace.end(), 0);
    EXPECT_EQ(reader.outcome().output, "0x0002\n0x0012\n0x0010\n0x0014\n");
}
