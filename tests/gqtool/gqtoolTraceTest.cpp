#include "support/inputFile.h"
#include "support/processState.h"
#include "support/runningTrace.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <poll.h>

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

TEST(GqtoolTrace, namesALengthInTheWrongByteOrder)
{
    Listener station(5);
    RunningTrace trace(station.port());
    Link link(station, trace);
    trace.nextLine();
    give(link.server, "68 00000004 0000 00 00 00 00000001 0000 16"_hex);
    EXPECT_EQ(taken(link.client, 17), "68 00 00 00 04 00 00 00 00 00 00 00 00 01 00 00 16");
    ::shutdown(link.server, SHUT_WR);
    EXPECT_EQ(trace.nextText(), "1 <- length in the wrong byte order, 67108864 instead of 4; a client would wait for "
                                "the rest of it");
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
        EXPECT_EQ(trace.nextText(), "2 the client closed the connection (reset)");
    }
    {
        Link link(station, trace);
        trace.nextLine();
        ::shutdown(link.client, SHUT_WR); // a reset after an end counts too
        EXPECT_TRUE(isAtEnd(link.server));
        reset(link.client);
        EXPECT_TRUE(becomes(link.server, POLLERR));
        EXPECT_EQ(option(link.server, SOL_SOCKET, SO_ERROR), EPIPE); // the result of a reset after an end
        EXPECT_EQ(trace.nextText(), "3 the client ended its stream");
        EXPECT_EQ(trace.nextText(), "3 the client closed the connection (reset)"); // as a client of the library does
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

TEST(GqtoolTrace, resetsAClientIfTheStationHasNoRoute)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("all.pcap");
    RunningProgram trace(GQTOOL,
                         {"trace", "--listen", "0", "--pcap", path, "255.255.255.255:5000"}); // no host's address
    const QString first = trace.nextLine();
    const Descriptor client = connected("127.0.0.1", first.section(' ', 3, 3).section(':', 1).toInt());
    EXPECT_TRUE(wasReset(client));
    trace.nextLine();
    EXPECT_EQ(trace.nextLine().mid(13).toStdString(), "1 the station is unreachable: Network is unreachable");
    EXPECT_EQ(QFileInfo(path).size(), 24 + 16 + 48); // the client's SYN alone, with 8 bytes of options
}

TEST(GqtoolTrace, hasTheReasonOfAnEventInItsJson)
{
    int port = 0;
    {
        const DatagramSocket gone;
        port = gone.port();
    }
    const auto nextReason = [](RunningTrace& trace, const QString& event) {
        QJsonObject line;
        while (line["event"] != event && !line.contains("none"))
            line = QJsonDocument::fromJson(trace.nextLine().replace("no line", "{\"none\": 0}").toUtf8()).object();
        return line["reason"].toString().toStdString();
    };
    const Listener nobody; // refuses
    RunningTrace streams(nobody.port(), {"--json"});
    const Descriptor client = connected("127.0.0.1", streams.port);
    EXPECT_EQ(nextReason(streams, "stationUnreachable"), "Connection refused");
    RunningTrace datagrams(port, {"--json", "--udp"});
    DatagramSocket sender;
    sender.sendTo(datagrams.port, request);
    EXPECT_EQ(nextReason(datagrams, "stationUnreachable"), "Connection refused");

    Listener station(5);
    RunningTrace trace(station.port(), {"--json"});
    Link link(station, trace);
    give(link.server, reply);
    EXPECT_EQ(taken(link.client, reply.size()), hex(reply)); // the connection to the station is complete
    reset(link.server);
    EXPECT_EQ(nextReason(trace, "stationReset"), "Connection reset by peer");
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

TEST(GqtoolTrace, endsWhenItsReaderHasGone)
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
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_EQ(process.readAllStandardError(), "gqtool: cannot write to standard output: Broken pipe\n");
}

// --- Lines ------------------------------------------------------------------------------------------------------

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

// A reply has sequence 4 and command 6 like the request, or sequence 0, or counts on, or is an error frame.
TEST(GqtoolTrace, marksAReplyThatDoesNotMatchTheRequest)
{
    const QByteArray otherCommand = "68 00000000 0400 00 00 05 0000 16"_hex;
    const QByteArray otherSequence = "68 00000000 0900 00 00 06 0000 16"_hex;
    Listener station(5);
    {
        RunningTrace trace(station.port());
        const Link link(station, trace);
        trace.nextLine();
        const auto expectReply = [&](const QByteArray& bytes, const std::string& text) {
            give(link.server, bytes);
            EXPECT_EQ(trace.nextText(), "1 <- " + text);
        };
        expectReply(otherCommand, "setTime, sequence 4, 0 bytes"); // before any request: a greeting
        give(link.client, request);
        EXPECT_EQ(trace.nextText(), "1 -> setState, sequence 4, 4 bytes: 7");
        expectReply(reply, "setState, sequence 4, 4 bytes: -7");
        expectReply("68 00000000 0000 00 00 06 0000 16"_hex, "setState, sequence 0, 0 bytes");
        expectReply("68 00000000 0100 00 00 06 0000 16"_hex, "setState, sequence 1, 0 bytes");
        expectReply("68 04000000 0400 00 00 ff ffffffff 0000 16"_hex, "error, sequence 4, 4 bytes: code -1");
        expectReply(otherCommand, "setTime, sequence 4, 0 bytes (does not match the request: setState, sequence 4)");
        expectReply(otherSequence, "setState, sequence 9, 0 bytes (does not match the request: setState, sequence 4)");
    }
    RunningTrace trace(station.port(), {"--json"});
    const Link link(station, trace);
    trace.nextLine();
    const auto nextObject = [&] { return QJsonDocument::fromJson(trace.nextLine().toUtf8()).object(); };
    give(link.client, request);
    nextObject();
    const struct {
        QByteArray frame;
        QJsonValue command;
        QJsonValue sequence;
    } replies[] = {{reply, QJsonValue::Undefined, QJsonValue::Undefined},
                   {otherCommand, 6, QJsonValue::Undefined},
                   {otherSequence, QJsonValue::Undefined, 4}};
    for (const auto& each : replies) {
        give(link.server, each.frame);
        const QJsonObject line = nextObject();
        EXPECT_EQ(line["requestCommand"], each.command);
        EXPECT_EQ(line["requestSequence"], each.sequence);
    }
}

TEST(GqtoolTrace, recordsLongerPayloadsOnDemand)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("recording.json");
    Listener station(5);
    for (const int limit : {4194304, 4194305}) {
        RunningTrace trace(station.port(), limit == 4194304
                                               ? QStringList{"--record", path}
                                               : QStringList{"--record", path, "--max-payload", "4194305"});
        const Link link(station, trace);
        trace.nextLine();
        std::thread sender(
            [&] { give(link.server, "68 01004000 0000 00 00 20"_hex + QByteArray(4194305, 'z') + "000016"_hex); });
        received(link.client, 4194305 + 13);
        sender.join();
        trace.nextLine();
        EXPECT_EQ(trace.end(SIGTERM), 0);
        const QByteArray last = contentOf(path).trimmed().split('\n').last();
        EXPECT_EQ(QJsonDocument::fromJson(last).object()["payload"].toString().size(), 2 * limit);
    }
    EXPECT_EQ(run({"trace", "--listen", "0", "--max-payload", "5", "127.0.0.1:5000"}).exitCode, 2);
}

TEST(GqtoolTrace, showsCommandsAndRecordsByAMap)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("plant.map");
    writeTo(path, "6 mode int bytes:boolData\n");
    Listener station(5);
    const QByteArray records = "68 0e000000 0400 00 00 06 0a000000 01 02000000 03000000 04 0000 16"_hex;
    {
        RunningTrace trace(station.port(), {"--map", path});
        const Link link(station, trace);
        trace.nextLine();
        give(link.client, request);
        EXPECT_EQ(trace.nextText(), "1 -> mode, sequence 4, 4 bytes: 7");
        give(link.server, records);
        EXPECT_EQ(trace.nextText(), "1 <- mode, sequence 4, 14 bytes: boolData: value 1, stamp1 2, stamp2 3, flag1 4");
    }
    RunningTrace trace(station.port(), {"--map", path, "--json"});
    const Link link(station, trace);
    trace.nextLine();
    give(link.server, records);
    const QJsonObject line = QJsonDocument::fromJson(trace.nextLine().toUtf8()).object();
    EXPECT_EQ(line["command"], 6);
    EXPECT_EQ(line["name"], "mode");
    EXPECT_EQ(line["form"], "bytes:boolData");
    EXPECT_EQ(line["content"], QJsonObject({{"value", 1}, {"stamp1", 2}, {"stamp2", 3}, {"flag1", 4}}));
    EXPECT_FALSE(line.contains("fault"));
    give(link.server, reply); // 4 bytes, which are no boolData
    EXPECT_EQ(QJsonDocument::fromJson(trace.nextLine().toUtf8()).object()["fault"], "form");

    writeTo(path, "6 mode int bytes:boolData\n6 state int int\n");
    const Outcome outcome = run({"trace", "--listen", "0", "--map", path, "127.0.0.1:5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: " + path + ": line 2: COMMAND 0x06 is also in line 1\n");
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

static qint64 microsecondsNow()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

TEST(GqtoolTrace, printsTheTimeOfEachEventInMicrosecondsAsJson)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--json"});
    const Link link(station, trace);
    trace.nextLine();
    for (int i = 0; i < 20; ++i) {
        const qint64 before = microsecondsNow();
        give(link.client, request);
        const QString line = trace.nextLine();
        const qint64 after = microsecondsNow();
        const QString text = QJsonDocument::fromJson(line.toUtf8()).object()["time"].toString(); // ends with .123456Z
        const QDateTime second = QDateTime::fromString(text.left(19) + 'Z', Qt::ISODate);
        const qint64 time = second.toSecsSinceEpoch() * 1000000 + text.mid(20, 6).toInt();
        EXPECT_GE(time, before) << text.toStdString();
        EXPECT_LE(time, after) << text.toStdString();
    }
}

TEST(GqtoolTrace, printsUpTo65536BytesOfAPayloadAsJson)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("recording.json");
    Listener station(5);
    RunningTrace trace(station.port(), {"--json", "--record", path});
    const Link link(station, trace);
    trace.nextLine();
    give(link.client, "68 01000100 0000 00 00 20"_hex + QByteArray(65537, '\x5a') + "000016"_hex);
    const QJsonObject line = QJsonDocument::fromJson(trace.nextLine().toUtf8()).object();
    EXPECT_EQ(line["length"], 65537);
    EXPECT_EQ(line["payload"], QString("5a").repeated(65536));
    const QByteArray last = contentOf(path).trimmed().split('\n').last();
    EXPECT_EQ(QJsonDocument::fromJson(last).object()["payload"], QString("5a").repeated(65537));
}

TEST(GqtoolTrace, continuesIfTheRecordingCannotBeWritten)
{
    Listener station(5);
    RunningTrace trace(station.port(), {"--record", "/dev/full"});
    EXPECT_EQ(trace.nextError(),
              "gqtool: cannot write to /dev/full, the trace continues without it: No space left on device");
    const Link link(station, trace);
    give(link.client, request);
    EXPECT_EQ(taken(link.server, 17), hex(request));
    EXPECT_EQ(trace.end(), 1);
}

// --- Datagrams ----------------------------------------------------------------------------------------------------

// The system refuses a broadcast that nobody asked for; without a network, there is no route for it.
TEST(GqtoolTraceUdp, reportsADatagramThatItCannotPassOn)
{
    RunningProgram trace(GQTOOL, {"trace", "--udp", "--listen", "0", "255.255.255.255:5000"});
    const QString first = trace.nextLine();
    DatagramSocket client;
    const QRegularExpression error(QString("^gqtool: datagram from 127\\.0\\.0\\.1:%1 lost: "
                                           "(Permission denied|Network is unreachable)$")
                                       .arg(client.port()));
    const int port = first.section(' ', 3, 3).section(':', 1).toInt();
    const int before = descriptorsOf(trace.pid());
    for (int i = 0; i < 3; ++i) {
        client.sendTo(port, request);
        const QString line = trace.nextError();
        EXPECT_TRUE(error.match(line).hasMatch()) << line.toStdString();
    }
    EXPECT_TRUE(comesTrue([&] { return descriptorsOf(trace.pid()) == before; }));
}

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
    DatagramSocket station;
    RunningTrace trace(station.port(), {"--udp"});
    DatagramSocket client;
    client.sendTo(trace.port, QByteArray());
    EXPECT_EQ(station.take(), "");
    trace.nextLine();
    EXPECT_EQ(trace.nextText(), "1 -> an empty datagram");
    const QByteArray largest(65507, '\5');
    client.sendTo(trace.port, largest);
    EXPECT_EQ(station.take(), hex(largest));
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

// The route to the station is prohibited between two datagrams of a client.
TEST(GqtoolTraceUdp, printsADatagramBeforeItsLoss)
{
    const QString network = "ip link set lo up && ip route add 198.51.100.9 dev lo && "
                            "close() { ip route replace prohibit 198.51.100.9; }";
    if (runProgram("unshare", {"-n", "bash", "-c", network + " && close"}).exitCode != 0)
        GTEST_SKIP() << "needs the right to make network namespaces, and the program ip";
    const QTemporaryDir folder;
    const QString lines = folder.filePath("lines");
    const QString commands = " && { \"$0\" trace --udp --listen 5000 198.51.100.9:5000 >\"$1\" & } && "
                             "until grep -q listening \"$1\"; do sleep 0.01; done; "
                             "exec 3<>/dev/udp/127.0.0.1/5000; printf a >&3; "
                             "until grep -q '1 byte' \"$1\"; do sleep 0.01; done; "
                             "close; printf ab >&3; "
                             "until grep -q lost \"$1\"; do sleep 0.01; done; kill $!; wait $!; cut -c14- \"$1\"";
    const Outcome outcome = runProgram("unshare", {"-n", "bash", "-c", network + commands, GQTOOL, lines});
    EXPECT_TRUE(outcome.output.endsWith("1 -> garbage, 1 byte: 61\n"
                                        "1 -> garbage, 2 bytes: 61 62\n"
                                        "1 datagram of 2 bytes lost: Permission denied\n"))
        << outcome.output.toStdString() << outcome.errors.toStdString();
}

// A router on the way, in another namespace, prohibits the datagram.
TEST(GqtoolTraceUdp, reportsThatARouterProhibitsTheWay)
{
    const QString network = "ip link set lo up && ip link add v0 type veth peer name v1 && "
                            "ip addr add 192.0.2.1/24 dev v0 && ip link set v0 up && "
                            "{ unshare -n sleep 10 & } && router=$! && "
                            "until ! [ /proc/$router/ns/net -ef /proc/self/ns/net ]; do sleep 0.01; done && "
                            "ip link set v1 netns $router && inRouter() { nsenter -t $router -n \"$@\"; } && "
                            "inRouter ip addr add 192.0.2.2/24 dev v1 && inRouter ip link set v1 up && "
                            "inRouter sysctl -qw net.ipv4.ip_forward=1 && "
                            "inRouter ip route add prohibit 198.51.100.0/24 && ip route add default via 192.0.2.2";
    if (runProgram("unshare", {"-n", "sh", "-c", network + "; result=$?; kill $router; exit $result"}).exitCode != 0)
        GTEST_SKIP() << "needs the right to make network namespaces, and the programs ip and sysctl";
    const QTemporaryDir folder;
    const QString lines = folder.filePath("lines");
    const QString commands = " && { \"$0\" trace --udp --listen 5000 198.51.100.9:5000 >\"$1\" & } && "
                             "until grep -q listening \"$1\"; do sleep 0.01; done; "
                             "\"$0\" call --udp --timeout 300 127.0.0.1:5000 systemState; "
                             "until grep -q unreachable \"$1\"; do sleep 0.01; done; kill $! $router; cat \"$1\"";
    const Outcome outcome = runProgram("unshare", {"-n", "sh", "-c", network + commands, GQTOOL, lines});
    EXPECT_TRUE(outcome.output.contains(" 1 the station is unreachable: No route to host\n"))
        << outcome.output.toStdString() << outcome.errors.toStdString();
}

// --- Usage --------------------------------------------------------------------------------------------------------

TEST(GqtoolTrace, requiresAPortAndAStation)
{
    EXPECT_TRUE(run({"trace", "--help"}).output.startsWith("Usage: gqtool trace [OPTIONS] HOST:PORT\n"));
    EXPECT_EQ(run({"trace", "127.0.0.1:5000"}).errors,
              "gqtool: --listen PORT is required\ngqtool: see 'gqtool trace --help'\n");
    EXPECT_EQ(run({"trace", "127.0.0.1:5000"}).exitCode, 2);
    EXPECT_EQ(run({"trace", "--listen", "0"}).errors,
              "gqtool: HOST:PORT is required\ngqtool: see 'gqtool trace --help'\n");
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
    outcome = run({"trace", "--listen", "0", "--pcap", "/nowhere/file.pcap", "127.0.0.1:5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /nowhere/file.pcap: No such file or directory\n");
}

TEST(GqtoolTrace, refusesToRelayToItself)
{
    const Listener reserved; // keeps the port free for trace
    const QString port = QString::number(reserved.port());
    for (const QStringList& kind : {QStringList(), QStringList{"--udp"}}) {
        const Outcome outcome = run(QStringList{"trace", "--listen", port} + kind + QStringList{"127.0.0.1:" + port});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, "gqtool: 127.0.0.1:" + port + " is the address of the trace itself\n");
    }
}

TEST(GqtoolTrace, refusesFilesWithoutAName)
{
    for (const char* option : {"--pcap", "--record"}) {
        const Outcome outcome = run({"trace", "--listen", "0", option, "", "127.0.0.1:5000"});
        EXPECT_EQ(outcome.exitCode, 1) << option;
        EXPECT_EQ(outcome.output, "") << option;
        EXPECT_TRUE(outcome.errors.contains("cannot write to : ")) << outcome.errors.toStdString();
    }
}
