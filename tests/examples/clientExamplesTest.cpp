// The example programs of the TCP client, of its records and of its socket.

#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/plainSockets.h"
#include "support/scriptedServer.h"

#include <chrono>
#include <future>
#include <memory>

static QString example(const char* name)
{
    return QString(EXAMPLES) + "/" + name;
}

static QStringList linesOf(const QString& text)
{
    return text.split('\n', Qt::SkipEmptyParts);
}

// The next line that was not printed by the library.
static QString nextWord(RunningProgram& program)
{
    QString line = program.nextLine();
    while (line.startsWith("setRecvOverTm:"))
        line = program.nextLine();
    return line;
}

TEST(ReturningClient, reconnectsOnceTheStationIsBack)
{
    const ReservedPort reserved;
    const QString port = QString::number(reserved.number());
    auto station = std::make_unique<RunningStation>(QStringList{"--port", port});
    RunningProgram client(example("returningClient"), {"127.0.0.1", port});
    EXPECT_EQ(nextWord(client), "state 1");
    station.reset();
    QString line;
    do
        line = nextWord(client);
    while (line == "state 1");
    EXPECT_EQ(line, "no answer, -1");

    const RunningStation another({"--port", port});
    do
        line = nextWord(client);
    while (line == "no answer, -1");
    EXPECT_EQ(line, "state 1");
}

TEST(BoundedRequest, acceptsAReplyInPieces)
{
    RunningStation station({"--pieces", "1"});
    const Outcome outcome = runProgram(example("boundedRequest"), station.endpoint.split(':') + QStringList{"5000"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(linesOf(outcome.output).last(), "state 1");
}

TEST(BoundedRequest, givesUpOnAReplyThatStops)
{
    const QByteArray greeting = "68 04000000 0000 00 00 00 01000000 0000 16"_hex;
    ScriptedServer server{{sends(greeting), receives(17), sends(greeting.left(16))}};
    const Outcome outcome = runProgram(example("boundedRequest"), {"127.0.0.1", QString::number(server.port()), "100"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "no state: 0\n");
}

TEST(BoundedRequest, reportsTheCodeOfAnErrorFrame)
{
    const QByteArray greeting = "68 04000000 0000 00 00 00 01000000 0000 16"_hex;
    const QByteArray error = "68 04000000 0000 00 00 ff f6ffffff 0000 16"_hex; // -10
    ScriptedServer server{{sends(greeting), receives(17), sends(error)}};
    const Outcome outcome =
        runProgram(example("boundedRequest"), {"127.0.0.1", QString::number(server.port()), "5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "no state: -10\n");
}

TEST(SetServerTime, connectsBeforeTheCommand)
{
    RunningStation station;
    const Outcome outcome =
        runProgram(example("setServerTime"), station.endpoint.split(':') + QStringList{"86400", "0"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(linesOf(outcome.output), (QStringList{"setRecvOverTm:0, 9000", "answer 1"}));
    // The station's clock was set.
    EXPECT_TRUE(station.call({"systemTime"}).output.startsWith("8640"));
}

TEST(SilentClient, printsOnlyTheState)
{
    RunningStation station;
    const Outcome outcome = runProgram(example("silentClient"), station.endpoint.split(':'));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "1\n");
}

TEST(PointClient, printsTheValuesOfTheStationsPoints)
{
    RunningStation station;
    const Outcome outcome = runProgram(example("pointClient"), station.endpoint.split(':'));
    EXPECT_EQ(outcome.exitCode, 0);
    const QStringList lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 6);
    EXPECT_TRUE(lines[1].startsWith("point 1000: "));
    EXPECT_TRUE(lines[2].startsWith("point 1001: "));
    EXPECT_TRUE(lines[3].startsWith("point 1002: "));
    EXPECT_TRUE(lines[4].startsWith("point 2000: "));
    EXPECT_TRUE(lines[5].startsWith("point 3000: "));
}

TEST(PointClient, reportsTheCodeOfAFailedRequest)
{
    RunningStation station({"--wrong-end"});
    const Outcome outcome = runProgram(example("pointClient"), station.endpoint.split(':'));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "no values: 0\n");
}

TEST(ReadableRecords, readsBackWhatItWrote)
{
    const Outcome outcome = runProgram(example("readableRecords"), {});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(linesOf(outcome.output), (QStringList{"PUMPS: running pumps", "level: in the tank",
                                                    "any length, the second one", "no values: 1"}));
}

TEST(WaveRoundTrip, readsEachSampleWithinAStep)
{
    const Outcome outcome = runProgram(example("waveRoundTrip"), {});
    EXPECT_EQ(outcome.exitCode, 0);
    const QStringList lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_TRUE(lines[0].startsWith("2000 samples in "));
    EXPECT_TRUE(lines[0].endsWith(" bytes of 8096"));
    EXPECT_EQ(lines[1], "2000 samples and 2 marks read");
    EXPECT_EQ(lines[2], "from -1.000 to 1.000, each within a step");
}

// --- Programs with an event loop, names and texts -----------------------------------------------------------------

TEST(QtClient, keepsItsEventLoopRunningDuringARequest)
{
    const QByteArray greeting = "68 04000000 0000 00 00 00 01000000 0000 16"_hex;
    const QByteArray reply = "68 04000000 0000 00 00 01 2a000000 0000 16"_hex;
    std::promise<void> seen; // set once the loop has run while the request was waiting
    const auto awaitsSeen = [&seen](ScriptedServer::Connection&) {
        return seen.get_future().wait_for(std::chrono::milliseconds(waitMs)) == std::future_status::ready;
    };
    ScriptedServer server{{sends(greeting), receives(17), awaitsSeen, sends(reply)}};
    RunningProgram client(example("qtClient"), {"127.0.0.1", QString::number(server.port()), "1"});
    server.received(0);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(nextWord(client), "clock");
    seen.set_value();
    QString line;
    do
        line = nextWord(client);
    while (line == "clock");
    EXPECT_EQ(line, "state 42");
    EXPECT_EQ(client.outcome().exitCode, 0);
}

TEST(QtClient, reportsAServerThatIsGone)
{
    const ReservedPort nobody;
    const Outcome outcome = runProgram(example("qtClient"), {"127.0.0.1", QString::number(nobody.number()), "1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(linesOf(outcome.output).last(), "no answer, -1");
}

TEST(HostNames, connectsByName)
{
    RunningStation station;
    const Outcome outcome = runProgram(example("hostNames"), {"localhost", QString::number(station.port())});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(linesOf(outcome.output).last(), "127.0.0.1: state 1");
}

TEST(HostNames, reportsAHostWithoutIpv4Address)
{
    const Outcome outcome = runProgram(example("hostNames"), {"::1", "5000"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "hostNames: cannot resolve ::1: Address family for hostname not supported\n");
}

TEST(HostNames, reportsAHostThatDoesNotAnswer)
{
    const ReservedPort nobody;
    const Outcome outcome = runProgram(example("hostNames"), {"localhost", QString::number(nobody.number())});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "hostNames: no answer from localhost\n");
}

TEST(GbkTexts, areReadAsTheyWereWritten)
{
    const Outcome outcome = runProgram(example("gbkTexts"), {QString::fromUtf8("1号炉"), "ab"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, QString::fromUtf8("e8 03 00 00 05 00 31 ba c5 c2 af 00 00 00 00 00 00 00 00 00 00\n"
                                                "record: 1号炉\n"
                                                "e8 03 00 00 02 00 61 62 00 00 00 00 00 00 00 00 00 00\n"
                                                "record: ab\n"
                                                "list: 1号炉\n"
                                                "list: ab\n"));
}

TEST(GbkTexts, mustBePossibleInGbk)
{
    const Outcome outcome = runProgram(example("gbkTexts"), {QString::fromUtf8("Größe")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, QString::fromUtf8("gbkTexts: Größe is not possible in GBK\n"));
}

// --- Sockets ------------------------------------------------------------------------------------------------------

TEST(SendAll, sendsTheRestToAPeerThatWasNotReading)
{
    Listener peer(1);
    const int size = 10000000; // more than the buffers of both ends hold
    RunningProgram sender(example("sendAll"), {"127.0.0.1", QString::number(peer.port()), QString::number(size)});
    Descriptor connection = peer.accept();
    EXPECT_TRUE(sender.nextLine().startsWith("no room, "));

    const std::string bytes = received(connection, size);
    ASSERT_EQ(bytes.size(), size_t(size));
    for (int i = 0; i < size; i += 1009)
        ASSERT_EQ(bytes[size_t(i)], static_cast<char>(i % 251)) << i;
    QString line;
    do
        line = sender.nextLine();
    while (line.startsWith("no room, "));
    EXPECT_EQ(line, "sent");
}

TEST(SendAll, endsWhenThePeerCloses)
{
    Listener peer(1);
    RunningProgram sender(example("sendAll"), {"127.0.0.1", QString::number(peer.port()), "10000000"});
    Descriptor connection = peer.accept();
    EXPECT_TRUE(sender.nextLine().startsWith("no room, "));
    reset(connection);
    EXPECT_EQ(sender.nextError(), "sendAll: cannot send to 127.0.0.1");
}

TEST(PromptSocket, sendsEachWord)
{
    Listener peer(1);
    RunningProgram sender(example("promptSocket"), {"127.0.0.1", QString::number(peer.port()), "one", "two"});
    Descriptor connection = peer.accept();
    EXPECT_EQ(received(connection, 8), "one\ntwo\n");
}

TEST(ManySockets, reportsConnectionsAndReceivedBytes)
{
    RunningStation station;
    RunningStation greetsWithTwo({"--greeting", "2"});
    const Listener nobody; // refuses connections
    const QString gone = "127.0.0.1:" + QString::number(nobody.port());
    const Outcome outcome =
        runProgram(example("manySockets"), {station.endpoint, gone, "no address", greetsWithTwo.endpoint});
    EXPECT_EQ(outcome.exitCode, 0);
    QStringList lines = linesOf(outcome.output);
    lines.sort();
    QStringList expected = {gone + " is not there",
                            "no address is not there",
                            station.endpoint + " is there",
                            station.endpoint + " says 68 04 00 00 00 00 00 00 00 00 01 00 00 00 00 00 16",
                            greetsWithTwo.endpoint + " is there",
                            greetsWithTwo.endpoint + " says 68 04 00 00 00 00 00 00 00 00 02 00 00 00 00 00 16"};
    expected.sort();
    EXPECT_EQ(lines.join('\n').toStdString(), expected.join('\n').toStdString());
}

TEST(LocalServer, echoesToEachClientWithOneDescriptorEach)
{
    RunningProgram server(example("localServer"), {});
    const QString listening = server.nextLine();
    ASSERT_TRUE(listening.startsWith("listening on 127.0.0.1:")) << listening.toStdString();
    for (int i = 0; i < 3; ++i) {
        Descriptor client = connected("127.0.0.1", listening.section(':', 1).toInt());
        ASSERT_EQ(send(client, "hello", 5, MSG_NOSIGNAL), 5);
        EXPECT_EQ(received(client, 5), "hello");
    }
}

TEST(ChildProgram, canBeKilledBySigpipe)
{
    EXPECT_EQ(runProgram(example("childProgram"), {"sh", "-c", "kill -PIPE $$; echo alive"}).output,
              "ended by signal 13\n");
    EXPECT_EQ(runProgram(example("childProgram"), {"sh", "-c", "exit 3"}).output, "ended with 3\n");
}
