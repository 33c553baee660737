// gqtool trace --record FILE and gqtool station --replay FILE.

#include "stationClients.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>

struct ReplayingStation : ScriptFile, RunningStation {
    explicit ReplayingStation(const QByteArray& recording, const QStringList& options = {"--gap", "0"})
        : ScriptFile(recording, "recording.json"), RunningStation(QStringList{"--replay", path} + options)
    {
    }
};

// A line of a recording: the time in ms, from whom, the sequence, the command and the payload.
static QByteArray line(int ms, const char* from, int sequence, int command, const char* payload, int connection = 1)
{
    return QString("{\"time\": \"2026-01-02T03:04:%1.%2Z\", \"connection\": %3, \"from\": \"%4\", \"sequence\": %5, "
                   "\"command\": %6, \"payload\": \"%7\"}\n")
        .arg(ms / 1000, 2, 10, QChar('0'))
        .arg(ms % 1000 * 1000, 6, 10, QChar('0'))
        .arg(connection)
        .arg(from)
        .arg(sequence)
        .arg(command)
        .arg(payload)
        .toUtf8();
}

// A frame with a payload of 4 bytes.
static QByteArray frame(const char* sequence, const char* command, const char* payload)
{
    return QByteArray::fromHex(QByteArray("68 04000000 ") + sequence + "00 00 00" + command + payload + "0000 16");
}

static const QByteArray recordedGreeting = line(0, "station", 0, 0, "05000000");
static const QByteArray greeting5 = frame("00", "00", "05000000");

TEST(GqtoolReplay, sendsTheRecordedGreetingsAndRepliesInTheirOrder)
{
    const ReplayingStation station(recordedGreeting + line(1, "client", 0, 64, "07000000") +
                                   line(2, "station", 0, 64, "01000000") + line(3, "client", 1, 64, "07000000") +
                                   line(4, "station", 1, 64, "02000000") +
                                   line(5, "station", 0, 0, "06000000", 2)); // another connection
    PlainClient first(station);
    EXPECT_NEXT(first, greeting5);
    PlainClient second(station);
    EXPECT_NEXT(second, frame("00", "00", "06000000"));
    EXPECT_NEXT(PlainClient(station), frame("00", "00", "06000000"));
    first.send(frame("03", "40", "07000000"));
    EXPECT_NEXT(first, frame("03", "40", "01000000"));
    second.send(frame("09", "40", "07000000"));
    EXPECT_NEXT(second, frame("09", "40", "02000000"));
    first.send(frame("04", "40", "07000000"));
    EXPECT_NEXT(first, frame("04", "40", "02000000"));
}

TEST(GqtoolReplay, writesALogToo)
{
    const QTemporaryDir folder;
    const QString log = folder.filePath("station.log");
    const ReplayingStation station(recordedGreeting + line(1, "client", 0, 64, "07000000"),
                                   {"--gap", "0", "--log", log});
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
}

TEST(GqtoolReplay, refusesWhatWasNotRecorded)
{
    const ReplayingStation station(recordedGreeting + line(1, "client", 0, 64, "07000000") +
                                   line(2, "station", 0, 64, "01000000"));
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    client.send(frame("00", "40", "08000000")); // another payload
    EXPECT_NEXT(client, frame("00", "ff", "f6ffffff"));
    client.send(frame("00", "01", "07000000")); // another command, although a ready-made one
    EXPECT_NEXT(client, frame("00", "ff", "f6ffffff"));
}

TEST(GqtoolReplay, ignoresTheClockInReadyMadeRequests)
{
    for (const char* command : {"01", "02", "03"}) {
        const ReplayingStation station(recordedGreeting + line(1, "client", 0, command[1] - '0', "07000000") +
                                       line(2, "station", 0, command[1] - '0', "09000000"));
        PlainClient client(station);
        EXPECT_NEXT(client, greeting5);
        client.send(frame("00", command, "08000000"));
        EXPECT_NEXT(client, frame("00", command, "09000000"));
    }
}

TEST(GqtoolReplay, sendsAllFramesOfAReplyAsTheyWere)
{
    const QByteArray odd = R"({"from": "station", "sequence": 77, "command": 64, "arg1": 1, "arg2": 2, "payload": "",
                               "check": "abcd", "end": "17", "fault": "end"})";
    const ReplayingStation station(recordedGreeting + line(1, "client", 5, 64, "07000000") +
                                   line(2, "station", 5, 64, "01000000") + line(3, "station", 5, 255, "f9ffffff") +
                                   QByteArray(odd).replace('\n', ' ') + "\n" +
                                   R"({"from": "station", "garbage": "c0ffee"})" + "\n");
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    client.send(frame("06", "40", "07000000"));
    EXPECT_NEXT(client, frame("06", "40", "01000000") + frame("06", "ff", "f9ffffff") +
                            "68 00000000 4d00 02 01 40 abcd 17 c0ffee"_hex); // not the sequence of its request
}

TEST(GqtoolReplay, changesNoBytesThatAreNotAFrame)
{
    const ReplayingStation station(
        recordedGreeting + line(1, "client", 5, 64, "07000000") + line(2, "station", 5, 64, "01000000") +
        R"({"from": "station", "sequence": 5, "command": 64, "garbage": "c0ffeec0ffeec0ff"})" + "\n" +
        R"({"from": "station", "sequence": 5, "command": 64, "garbage": "c0"})" + "\n" +
        R"({"from": "station", "sequence": 5, "length": 4294967295})" + "\n"); // began no frame
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    client.send(frame("06", "40", "07000000"));
    EXPECT_NEXT(client, frame("06", "40", "01000000") + "c0ffeec0ffeec0ff c0 68"_hex);
}

TEST(GqtoolReplay, takesOnlyWholeFramesOfTheClientForRequests)
{
    const ReplayingStation station(recordedGreeting + line(1, "client", 5, 64, "07000000") +
                                   R"({"from": "client", "garbage": "c0"})" + "\n" +
                                   R"({"from": "client", "command": 0, "payload": "", "end": "17", "fault": "end"})" +
                                   "\n" + R"({"from": "station", "garbage": "c0ffee"})" + "\n");
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    client.send(frame("06", "40", "07000000"));
    EXPECT_NEXT(client, "c0ffee"_hex);
}

TEST(GqtoolReplay, staysSilentWhereTheServerDid)
{
    const ReplayingStation station(recordedGreeting + line(1, "client", 0, 64, "07000000") +
                                   line(2, "client", 1, 65, "07000000") + line(3, "station", 1, 65, "01000000"));
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    client.send(frame("00", "40", "07000000") + frame("00", "41", "07000000"));
    EXPECT_NEXT(client, frame("00", "41", "01000000"));
}

TEST(GqtoolReplay, keepsRepliesOfAServerThatReturnsNoSequenceWithTheirRequests)
{
    const ReplayingStation station(
        recordedGreeting + line(1, "client", 0, 64, "01000000") + line(2, "station", 0, 64, "0a000000") +
        line(3, "client", 1, 65, "02000000") +                                         // without a reply
        line(4, "client", 2, 64, "03000000") + line(5, "station", 0, 64, "0b000000") + // not to the first
        line(6, "station", 0, 64, "0c000000") +                                        // a second frame
        line(7, "client", 3, 64, "04000000") +                                         // without a reply
        line(8, "client", 4, 64, "05000000") + line(9, "station", 0, 64, "0e000000") +
        line(10, "client", 5, 64, "06000000") + line(11, "station", 4, 64, "0f000000")); // its own count
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    const char* const requests[] = {"01000000", "03000000", "05000000", "06000000"};
    const QByteArray replies[] = {frame("09", "40", "0a000000"),
                                  frame("00", "40", "0b000000") + frame("00", "40", "0c000000"),
                                  frame("00", "40", "0e000000"), frame("04", "40", "0f000000")};
    for (int i = 0; i < 4; ++i) {
        client.send(frame("09", "40", requests[i]));
        EXPECT_NEXT(client, replies[i]) << "request " << i;
    }
}

TEST(GqtoolReplay, keepsALateReplyWithTheRequestWhoseSequenceItReturns)
{
    const ReplayingStation station(recordedGreeting + line(1, "client", 1, 64, "01000000") +
                                   line(2, "client", 2, 64, "02000000") + line(3, "station", 1, 64, "0a000000") +
                                   line(4, "station", 2, 64, "0b000000"));
    PlainClient client(station);
    EXPECT_NEXT(client, greeting5);
    client.send(frame("07", "40", "01000000"));
    EXPECT_NEXT(client, frame("07", "40", "0a000000"));
    client.send(frame("08", "40", "02000000"));
    EXPECT_NEXT(client, frame("08", "40", "0b000000"));
}

TEST(GqtoolReplay, waitsAsLongAsTheServerOnlyIfAsked)
{
    const QByteArray recording = recordedGreeting + line(10000, "client", 0, 64, "07000000") +
                                 line(10300, "station", 0, 64, "01000000") + line(10500, "station", 0, 64, "02000000");
    const auto timeOfReply = [&](const QStringList& options) {
        const ReplayingStation station(recording, options);
        PlainClient client(station);
        EXPECT_NEXT(client, greeting5);
        const Clock::time_point start = Clock::now();
        client.send(frame("00", "40", "07000000"));
        EXPECT_NEXT(client, frame("00", "40", "01000000") + frame("00", "40", "02000000"));
        return msSince(start);
    };
    EXPECT_GE(timeOfReply({"--as-timed"}), 500);
    EXPECT_GE(timeOfReply({"--gap", "200"}), 200);
}

TEST(GqtoolReplay, refusesABadRecordingWithItsLine)
{
    const struct {
        QByteArray line;
        const char* message;
    } lines[] = {
        {R"({"from": "station", "command": 64, "length": 70000, "payload": "0102"})",
         "the payload is cut: it has 2 of 70000 bytes; record with 'gqtool trace --record'"},
        {R"({"from": "station", "command": 64, "length": 4, "payload": "0102", "fault": "cut"})",
         "the frame is incomplete and cannot be replayed; remove the line"},
        {R"({"from": "server", "command": 64, "payload": ""})", "from must be client or station, got \"server\""},
        {R"({"from": "client", "command": 256, "payload": ""})", "command must be an integer from 0 to 255, got 256"},
        {R"({"from": "client", "payload": ""})", "command is missing"},
        {R"({"connection": "first", "from": "client", "command": 64, "payload": ""})",
         "connection must be an integer from 0 to 2147483647, got \"first\""},
        {R"({"event": 5})", "event must be a string, got 5"},
        {R"({"from": "client", "command": 64, "payload": "0"})",
         "payload must be hex digits, two for each of its bytes, got \"0\""},
        {R"({"from": "client", "command": 64, "payload": "", "end": "zz"})",
         "end must be hex digits for 1 byte, got \"zz\""},
        {R"({"from": "client", "command": 64, "length": 1, "payload": ""})",
         "the payload is cut: it has 0 of 1 byte; record with 'gqtool trace --record'"},
        {"68 04", "must be a JSON object of 'gqtool trace --record'"},
    };
    for (const auto& bad : lines) {
        SCOPED_TRACE(bad.line.constData());
        const ScriptFile file(recordedGreeting + line(1, "client", 0, 64, "07000000") + bad.line + "\n", "recording");
        const Outcome outcome = run({"station", "--replay", file.path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.toStdString(),
                  QString("gqtool: %1: line 3: %2\n").arg(file.path, bad.message).toStdString());
    }
    const ScriptFile noTime(R"({"from": "client", "command": 64, "payload": ""})", "recording");
    EXPECT_TRUE(run({"station", "--as-timed", "--replay", noTime.path}).errors.contains("line 1: time must be"));
    const ScriptFile two(R"({"event": 5, "time": "noon"})", "recording"); // of two mistakes, the last is reported
    EXPECT_TRUE(run({"station", "--as-timed", "--replay", two.path}).errors.contains("line 1: event must be a string"));
    const ScriptFile empty("", "recording");
    EXPECT_EQ(run({"station", "--replay", empty.path}).errors, "gqtool: " + empty.path + ": contains no request\n");
    EXPECT_EQ(run({"station", "--replay", "/nowhere/recording"}).errors,
              "gqtool: cannot read /nowhere/recording: No such file or directory\n");
    EXPECT_EQ(run({"station", "--replay", "/proc/self/mem"}).errors, // its first page has no memory
              "gqtool: cannot read /proc/self/mem: Input/output error\n");
}

TEST(GqtoolReplay, readsAPipe)
{
    const Outcome outcome = runProgram("sh", {"-c", "printf '\\nx\\n' | \"$0\" station --replay /dev/stdin", GQTOOL});
    EXPECT_EQ(outcome.errors, "gqtool: /dev/stdin: line 2: must be a JSON object of 'gqtool trace --record'\n");
}

// --- Recording ----------------------------------------------------------------------------------------------------

struct RecordingTrace : RunningProgram {
    RecordingTrace(const RunningStation& station, const QStringList& options)
        : RunningProgram(GQTOOL, QStringList{"trace", "--listen", "0"} + options + QStringList{station.endpoint})
    {
        endpoint = nextLine().section(" on ", 1).section(' ', 0, 0);
    }

    QString endpoint;
};

TEST(GqtoolReplay, answersLikeTheServerThatWasRecorded)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("recording.json");
    const QList<QStringList> requests = {{"systemState"},  {"setState", "7"}, {"systemState"},  {"ints", "150"},
                                         {"strings", "3"}, {"error", "-9"},   {"bytes", "4100"}};
    const QStringList gap = {"--gap", "500"}; // a client loses frames that arrive together
    RunningStation server(gap);
    RecordingTrace trace(server, {"--record", path});
    QList<Outcome> outcomes;
    for (const QStringList& request : requests)
        outcomes.append(run(QStringList{"call", trace.endpoint, "--"} + request));
    EXPECT_EQ(trace.end(), 0);
    server.end();

    RunningStation replay(QStringList{"--replay", path} + gap);
    for (int i = 0; i < requests.size(); ++i) {
        Outcome outcome = run(QStringList{"call", replay.endpoint, "--"} + requests[i]);
        EXPECT_EQ(outcome.exitCode, outcomes[i].exitCode);
        EXPECT_EQ(outcome.output.toStdString(), outcomes[i].output.toStdString());
        EXPECT_EQ(outcome.errors.replace(replay.endpoint, trace.endpoint).toStdString(),
                  outcomes[i].errors.toStdString());
    }
}

TEST(GqtoolReplay, answersDatagramsFromARecordingOfDatagrams)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("recording.json");
    RunningStation server({"--udp"});
    RecordingTrace trace(server, {"--udp", "--record", path});
    EXPECT_EQ(run({"call", "--udp", trace.endpoint, "setState", "7"}).output, "7\n");
    EXPECT_EQ(trace.end(), 0);
    server.end();
    RunningStation replay({"--udp", "--replay", path});
    EXPECT_EQ(replay.callByUdp({"setState", "7"}).output, "7\n");
    EXPECT_EQ(replay.callByUdp({"setState", "8"}).exitCode, 1);
}

TEST(GqtoolReplay, recordsWholePayloads)
{
    const ScriptFile payload(QByteArray(100000, 'x'), "payload");
    const ScriptFile commands(
        R"({"commands": [{"command": 64, "reply": {"file": ")" + payload.path.toUtf8() + R"("}}]})", "commands.json");
    RunningStation server({"--commands", commands.path});
    RecordingTrace trace(server, {"--record", payload.folder.filePath("recording.json")});
    run({"call", "--command", "64", trace.endpoint, "1"});
    EXPECT_EQ(trace.end(), 0);
    QFile recording(payload.folder.filePath("recording.json"));
    ASSERT_TRUE(recording.open(QIODevice::ReadOnly));
    EXPECT_TRUE(recording.readAll().contains(QByteArray(100000, 'x').toHex()));
}

TEST(GqtoolReplay, reportsARecordingThatCannotBeWritten)
{
    const Outcome outcome = run({"trace", "--listen", "0", "--record", "/missing/file", "127.0.0.1:1"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /missing/file: No such file or directory\n");
}

// --- The example --------------------------------------------------------------------------------------------------

TEST(RecordingFromCapture, isReplayed)
{
    if (QStandardPaths::findExecutable("tshark").isEmpty())
        GTEST_SKIP() << "no tshark";
    const QTemporaryDir home; // tshark finds the dissector there
    const QString recording = home.filePath("plant.json");
    const Outcome outcome =
        runProgram("sh", {"-c",
                          "export HOME=\"$0\" && mkdir -p \"$0/.local/lib/wireshark/plugins\" && "
                          "cp \"$1\" \"$0/.local/lib/wireshark/plugins\" && \"$2\" \"$3\" 5000 >\"$4\"",
                          home.path(), GQFRAME, GQLIB_EXAMPLES "/recordingFromCapture",
                          GQLIB_GOLDEN "/dumps/station.pcap", recording});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    RunningStation station({"--replay", recording});
    EXPECT_EQ(station.call({"ints", "3"}).output, "200\n210\n220\n");
    EXPECT_TRUE(station.call({"ints", "4"}).errors.contains(" failed with -10: "));
}

TEST(RecordingFromCapture, requiresACaptureAndAPort)
{
    const Outcome outcome = runProgram(GQLIB_EXAMPLES "/recordingFromCapture", {"plant.pcap"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.errors, "recordingFromCapture: CAPTURE and PORT are required\n");
}
