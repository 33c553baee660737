// gqtool probe against a real peer for each cause; and call, which names the same causes.

#include "support/frames.h"
#include "support/gqtoolProgram.h"
#include "support/inputFile.h"
#include "support/plainSockets.h"
#include "support/scriptedDatagramPeer.h"
#include "support/scriptedServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <thread>

// --- The two sides ------------------------------------------------------------------------------------------------

static const QByteArray state7 = "68 04000000 0000 00 00 01 07000000 0000 16"_hex;
static const QByteArray time1000000000 = "68 04000000 0100 00 00 02 00ca9a3b 0000 16"_hex;
static const QByteArray greeting0 = "68 04000000 0000 00 00 00 00000000 0000 16"_hex;

static const int frameSize = 17; // of a request over TCP

static QString endpointOf(int port)
{
    return QString("127.0.0.1:%1").arg(port);
}

static QJsonObject objectOf(const Outcome& outcome)
{
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.count('\n'), 1) << outcome.output.toStdString();
    return QJsonDocument::fromJson(outcome.output.toUtf8()).object();
}

// What probe found: "resolve connect greeting! silent" with ! after a stage that failed.
static std::string summaryOf(const Outcome& outcome)
{
    const QJsonObject object = objectOf(outcome);
    QStringList words;
    for (const QJsonValue stage : object["stages"].toArray())
        words += stage["stage"].toString() + (stage["ok"].toBool() ? "" : "!");
    words += object["cause"].toString();
    if (object.contains("protocol"))
        words += object["protocol"].toString();
    if (object.contains("code"))
        words += QString::number(object["code"].toInt());
    EXPECT_EQ(outcome.exitCode, object["cause"] == "healthy" ? 0 : 1);
    return words.join(' ').toStdString();
}

static std::string probe(int port, const QStringList& options = {})
{
    return summaryOf(run(QStringList{"probe", "--json", "--timeout", "300"} + options + QStringList{endpointOf(port)}));
}

static QJsonObject call(int port, const QStringList& options = {})
{
    return objectOf(run(QStringList{"call", "--json", "--timeout", "300"} + options +
                        QStringList{endpointOf(port), "systemState"}));
}

static std::string callCause(int port, const QStringList& options = {})
{
    return call(port, options)["cause"].toString().toStdString();
}

// --- What it sends and prints -------------------------------------------------------------------------------------

TEST(GqtoolProbe, asksForStateAndTimeInFramesAlone)
{
    ScriptedServer server{
        {sends(greeting), receives(frameSize), sends(state7), receives(frameSize), sends(time1000000000)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState systemTime healthy");
    // Sequence and command differ; the payload is the present time.
    EXPECT_EQ(hex(server.received(0).left(10)), hex("68 04000000 0000 00 00 01"_hex));
    EXPECT_EQ(hex(server.received(0).right(3)), hex("0000 16"_hex));
    EXPECT_EQ(hex(server.received(1).left(10)), hex("68 04000000 0200 00 00 02"_hex));
    EXPECT_EQ(hex(server.received(1).right(3)), hex("0000 16"_hex));
}

TEST(GqtoolProbe, sendsNothingAfterTheGreetingIfAskedToStopThere)
{
    ScriptedServer server{{sends(greeting)}};
    EXPECT_EQ(probe(server.port(), {"--greeting-only"}), "resolve connect greeting healthy");
}

TEST(GqtoolProbe, printsOneObject)
{
    ScriptedServer server{{sends("SSH-2.0-x\r\n")}};
    const Outcome outcome = run({"probe", "--json", endpointOf(server.port())});
    QJsonObject object = objectOf(outcome);
    QJsonArray stages;
    for (const QJsonValue value : object["stages"].toArray()) {
        QJsonObject stage = value.toObject();
        EXPECT_TRUE(stage["ms"].isDouble());
        stage.remove("ms");
        stages.append(stage);
    }
    const QString from = stages[1].toObject()["detail"].toString();
    EXPECT_TRUE(from.startsWith("from 127.0.0.1:")) << from.toStdString();
    object["stages"] = stages;
    const QString expected =
        R"({"cause":"foreign","protocol":"ssh","stages":[)"
        R"({"bytes":"","detail":"127.0.0.1","ok":true,"stage":"resolve"},)"
        R"({"bytes":"","detail":"%1","ok":true,"stage":"connect"},)"
        R"({"bytes":"5353482d322e302d780d0a","detail":"no frame, but \"SSH-2.0-x\\r\\n\"","ok":false,"stage":"greeting"})"
        R"(],"target":"%2"})";
    EXPECT_EQ(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString(),
              expected.arg(from, endpointOf(server.port())).toStdString());
}

TEST(GqtoolProbe, printsALineForEachStageThenTheCause)
{
    ScriptedServer server{{sends(greeting), receives(frameSize), sends(errorMinus7)}};
    const Outcome outcome = run({"probe", endpointOf(server.port())});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "");
    const QStringList lines = outcome.output.split('\n');
    ASSERT_EQ(lines.size(), 8) << outcome.output.toStdString();
    const char* const stages[] = {
        "resolve     @ ms  ok      127\\.0\\.0\\.1",
        "connect     @ ms  ok      from 127\\.0\\.0\\.1:[0-9]+",
        "greeting    @ ms  ok      a greeting of 1",
        "systemState @ ms  failed  an error frame with code -7",
    };
    for (int i = 0; i < 4; ++i) { // @ is the time, of 9 columns
        const QString line = QString("^%1$").arg(stages[i]).replace('@', "(?=.{9} ms) *[0-9]+\\.[0-9]");
        EXPECT_TRUE(QRegularExpression(line).match(lines[i]).hasMatch()) << lines[i].toStdString();
    }
    EXPECT_TRUE(lines[4].startsWith("bytes       68 04 00 00 00 00 00 00 00 ff f9 ff ff ff 00 00 16"));
    EXPECT_TRUE(lines[5].startsWith("error-frame: "));
    EXPECT_TRUE(lines[6].startsWith("Look the code up"));
    EXPECT_EQ(lines[7], "");
}

TEST(GqtoolProbe, keepsTheFirst64BytesReceived)
{
    ScriptedServer server{{sends("SSH-" + QByteArray(100, 'x'))}};
    const QJsonObject object = objectOf(run({"probe", "--json", endpointOf(server.port())}));
    EXPECT_EQ(object["stages"].toArray()[2].toObject()["bytes"].toString(),
              QString("5353482d" + QByteArray(60, 'x').toHex()));
}

TEST(GqtoolProbe, measuresEachStage)
{
    Listener server(1); // the system accepts, nobody else does
    const QJsonObject object = objectOf(run({"probe", "--json", "--timeout", "200", endpointOf(server.port())}));
    const QJsonArray stages = object["stages"].toArray();
    EXPECT_LT(stages[1].toObject()["ms"].toDouble(), 200);
    EXPECT_GE(stages[2].toObject()["ms"].toDouble(), 400); // the greeting, then the reply to a request
}

// --- Causes before the first byte ---------------------------------------------------------------------------------

TEST(GqtoolProbe, findsAPortThatRefuses)
{
    const ReservedPort port;
    EXPECT_EQ(probe(port.number()), "resolve connect! refused");
    EXPECT_EQ(callCause(port.number()), "refused");
}

TEST(GqtoolProbe, findsAServerThatDropsTheConnectionRequest)
{
    const CrowdedListener listener;
    EXPECT_EQ(probe(listener.port()), "resolve connect! connect-timeout");
    EXPECT_EQ(callCause(listener.port()), "connect-timeout");
}

TEST(GqtoolProbe, findsANameThatHasNoAddress)
{
    const Outcome outcome = run({"probe", "--json", "nosuchhost.invalid:5000"});
    EXPECT_EQ(summaryOf(outcome), "resolve! unresolved");
    EXPECT_EQ(objectOf(outcome)["target"].toString(), "nosuchhost.invalid:5000");
}

TEST(GqtoolProbe, findsAServerByName)
{
    ScriptedServer server{{sends(greeting)}};
    const QString target = QString("localhost:%1").arg(server.port());
    EXPECT_EQ(summaryOf(run({"probe", "--json", "--greeting-only", target})), "resolve connect greeting healthy");
}

// gqtool in namespaces of its own: a network or a file system that nobody else sees.
class GqtoolProbeNamespace : public testing::Test {
protected:
    // Commands of a shell, then gqtool with these arguments.
    Outcome runApart(const QString& kind, const QString& commands, const QString& arguments)
    {
        return runProgram("unshare", {kind, "sh", "-c", commands + " && exec " + GQTOOL + ' ' + arguments});
    }

    static bool isAllowed(const QString& kind, const QString& commands)
    {
        return runProgram("unshare", {kind, "sh", "-c", commands}).exitCode == 0;
    }
};

TEST_F(GqtoolProbeNamespace, findsAHostWithoutAWayToIt)
{
    const QString route = "ip link set lo up && ip route add unreachable 10.9.0.0/16";
    if (!isAllowed("-n", route))
        GTEST_SKIP() << "needs the right to make a network namespace, and the program ip";
    EXPECT_EQ(summaryOf(runApart("-n", route, "probe --json 10.9.0.1:5000")), "resolve connect! unreachable");
    EXPECT_EQ(summaryOf(runApart("-n", route, "probe --json 10.8.0.1:5000")), "resolve connect! unreachable");
    EXPECT_EQ(summaryOf(runApart("-n", route, "probe --udp --json 10.9.0.1:5000")), "resolve connect! unreachable");
    EXPECT_EQ(objectOf(runApart("-n", route, "call --json 10.9.0.1:5000 systemState"))["cause"], "unreachable");
    EXPECT_EQ(objectOf(runApart("-n", route, "call --udp --json 10.9.0.1:5000 systemState"))["cause"], "unreachable");
}

TEST_F(GqtoolProbeNamespace, saysThatANameHasOnlyAnAddressOfIpv6)
{
    const InputFile hosts("2001:db8::1 six\n");
    const QString mount = "mount --bind " + hosts.path + " /etc/hosts";
    if (!isAllowed("-m", mount))
        GTEST_SKIP() << "needs the right to make a mount namespace";
    const Outcome outcome = runApart("-m", mount, "probe --json six:5000");
    EXPECT_EQ(summaryOf(outcome), "resolve! unresolved");
    EXPECT_TRUE(outcome.output.contains("only IPv6 addresses (2001:db8::1)")) << outcome.output.toStdString();
}

TEST_F(GqtoolProbeNamespace, triesTheFirstOfSeveralAddresses)
{
    ScriptedServer server{{sends(greeting)}};
    const InputFile hosts("127.0.0.1 two\n127.0.0.2 two\n");
    const QString mount = "mount --bind " + hosts.path + " /etc/hosts";
    if (!isAllowed("-m", mount))
        GTEST_SKIP() << "needs the right to make a mount namespace";
    const Outcome outcome = runApart("-m", mount, QString("probe --greeting-only two:%1").arg(server.port()));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.section('\n', 0, 0).endsWith("ok      127.0.0.1, the first of 2 addresses"))
        << outcome.output.toStdString();
}

TEST_F(GqtoolProbeNamespace, waitsForTheResolverNoLongerThanForAnyStage)
{
    const InputFile servers("nameserver 10.8.0.2\n"); // a wire without anybody
    const QString wire = "mount --bind " + servers.path +
                         " /etc/resolv.conf && ip link add name near type veth peer name far && " +
                         "ip link set near up && ip link set far up && ip addr add 10.8.0.1/24 dev near";
    if (!isAllowed("-nm", wire))
        GTEST_SKIP() << "needs the right to make network and mount namespaces, and the program ip";
    const Outcome outcome = runApart("-nm", wire, "probe --json --timeout 200 somehost.invalid:5000");
    EXPECT_EQ(summaryOf(outcome), "resolve! unresolved");
    EXPECT_TRUE(outcome.output.contains("no answer within 200 ms")) << outcome.output.toStdString();
}

// --- Causes in place of a greeting --------------------------------------------------------------------------------

TEST(GqtoolProbe, findsAServerThatIsSilent)
{
    {
        ScriptedServer server{{receives(frameSize)}};
        EXPECT_EQ(probe(server.port()), "resolve connect greeting! silent");
    }
    {
        ScriptedServer server{{}};
        EXPECT_EQ(callCause(server.port()), "silent");
    }
}

TEST(GqtoolProbe, staysWithSilentIfTheServerAnswersWithoutAGreeting)
{
    ScriptedServer server{{receives(frameSize), sends(state7)}};
    const Outcome outcome = run({"probe", "--json", "--timeout", "300", endpointOf(server.port())});
    EXPECT_EQ(summaryOf(outcome), "resolve connect greeting! silent");
    EXPECT_TRUE(outcome.output.contains("it answers a request with 7")) << outcome.output.toStdString();
}

// As a TLS server does that sends no alert.
TEST(GqtoolProbe, findsAServerThatClosesUponTheRequest)
{
    ScriptedServer server{{receives(frameSize), closes()}};
    const Outcome outcome = run({"probe", "--timeout", "300", endpointOf(server.port())});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.output.contains(
        "failed  no greeting within 300 ms; after a request: the server closed the connection\nclosed: "))
        << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.contains("another service, such as one with TLS.\n")) << outcome.output.toStdString();
}

TEST(GqtoolProbe, saysThatTheGreetingComesLate)
{
    ScriptedServer server{{receives(frameSize), sends(greeting)}, {receives(frameSize), sends(greeting0)}};
    const Outcome outcome = run({"probe", "--timeout", "300", endpointOf(server.port())});
    const QRegularExpression late("failed  no greeting within 300 ms; a greeting of 1 came late, after (\\d+) ms\n");
    const QRegularExpressionMatch found = late.match(outcome.output);
    EXPECT_TRUE(found.hasMatch()) << outcome.output.toStdString();
    EXPECT_GE(found.captured(1).toInt(), 300);
    EXPECT_TRUE(outcome.output.contains("\nsilent: "));
    EXPECT_TRUE(outcome.output.contains("use a --timeout of more than " + found.captured(1) + " ms."));
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! not-greeted");
}

TEST(GqtoolProbe, findsAServerThatCloses)
{
    ScriptedServer server{{closes()}, {resets()}, {closes()}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! closed");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! closed");
    EXPECT_EQ(callCause(server.port()), "closed");
}

TEST(GqtoolProbe, findsServersOfOtherProtocols)
{
    ScriptedServer server{{sends("SSH-2.0-x\r\n")}, {sends("220 mail\r\n")}, {sends("SSH-2.0-x\r\n")}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! foreign ssh");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! foreign unknown");
    EXPECT_EQ(callCause(server.port()), "foreign");
}

TEST(GqtoolProbe, makesServersOfOtherProtocolsShowThemselvesByARequest)
{
    ScriptedServer server{
        {receives(frameSize), sends("HTTP/1.1 400 Bad Request\r\n\r\n"), closes()},
        {receives(frameSize), sends("15 0301 0002 0246"_hex), closes()},
        {receives(frameSize), sends("huh?\r\n")},
    };
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! foreign http");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! foreign tls");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! foreign unknown");
}

TEST(GqtoolProbe, endsItsSideForServersThatWaitForTheEndOfALine)
{
    Listener listener(1);
    std::thread server([&] {
        const Descriptor connection = listener.accept();
        EXPECT_EQ(received(connection, 1000).size(), size_t(frameSize)); // then the stream ends
        const std::string page = "<html>";
        EXPECT_EQ(::send(connection, page.data(), page.size(), 0), ssize_t(page.size()));
    });
    EXPECT_EQ(probe(listener.port()), "resolve connect greeting! foreign http");
    server.join();
}

TEST(GqtoolProbe, findsAGreetingThatIsCutOrGarbled)
{
    const QByteArray garbled = "68 04000000 0000 00 00 00 01000000 0000 17"_hex;
    ScriptedServer server{{sends(greeting.left(5)), closes()},
                          {sends(greeting.left(16))},
                          {sends(garbled)},
                          {sends(greeting.left(5)), closes()},
                          {sends(garbled)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! bad-frame");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! bad-frame");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! bad-frame");
    EXPECT_EQ(callCause(server.port()), "bad-frame");
    EXPECT_EQ(callCause(server.port()), "bad-frame");
}

TEST(GqtoolProbe, findsAGreetingThatRefuses)
{
    ScriptedServer server{{sends(greeting0)}, {sends(greeting0)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! not-greeted");
    EXPECT_EQ(callCause(server.port()), "not-greeted");
}

TEST(GqtoolProbe, findsAnErrorFrameInPlaceOfTheGreeting)
{
    ScriptedServer server{{sends(errorMinus7)}, {sends(error5)}, {sends(errorMinus7)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! error-frame -7");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! error-frame 5");
    EXPECT_EQ(callCause(server.port()), "error-frame");
}

// To the library's client an error frame with a code above 1 is a greeting.
TEST(GqtoolCall, isGreetedByAnErrorFrameWithACodeAboveOne)
{
    ScriptedServer server{{sends(error5), receives(frameSize), sends(state7)}};
    const QJsonObject reply = call(server.port());
    EXPECT_FALSE(reply.contains("cause"));
    EXPECT_EQ(reply["value"].toInt(), 7);
}

TEST(GqtoolProbe, takesAGreetingInTwoPieces)
{
    ScriptedServer server{{sends(greeting.left(5)), sends(greeting.mid(5))}};
    EXPECT_EQ(probe(server.port(), {"--greeting-only"}), "resolve connect greeting healthy");
}

// --- Causes in place of a reply -----------------------------------------------------------------------------------

TEST(GqtoolProbe, findsWhatComesInPlaceOfAReply)
{
    const struct {
        ScriptedServer::Script reply;
        const char* cause;
    } cases[] = {
        {{}, "no-reply"},
        {{closes()}, "closed"},
        {{sends(errorMinus7)}, "error-frame -7"},
        {{sends(errorOfTwoBytes)}, "error-frame -2"},
        {{sends(wrongEnd)}, "bad-frame"},
        {{sends(noPayload)}, "bad-frame"},
        {{sends(state7.left(12)), closes()}, "bad-frame"},
        {{sends(state7.left(12))}, "bad-frame"},
    };
    for (const auto& example : cases) {
        SCOPED_TRACE(example.cause);
        const std::string cause = example.cause;
        ScriptedServer::Script script = {sends(greeting), receives(frameSize)};
        script.insert(script.end(), example.reply.begin(), example.reply.end());
        ScriptedServer server{script, script};
        EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState! " + cause);
        EXPECT_EQ(callCause(server.port()), cause.substr(0, cause.find(' ')));
    }
}

static const QByteArray reply54 = "68 04000000 0000 00 00 36 07000000 0000 16"_hex;
static const QByteArray state7Of9 = "68 04000000 0900 00 00 01 07000000 0000 16"_hex;

static std::string detailOf(int port, const QStringList& options, int stage)
{
    const Outcome outcome =
        run(QStringList{"probe", "--json", "--timeout", "300"} + options + QStringList{endpointOf(port)});
    return objectOf(outcome)["stages"].toArray()[stage].toObject()["detail"].toString().toStdString();
}

TEST(GqtoolProbe, findsAReplyToAnotherRequest)
{
    const ScriptedServer::Script other = {sends(greeting), receives(frameSize), sends(reply54)};
    const ScriptedServer::Script outOfTurn = {sends(greeting), receives(frameSize), sends(state7Of9)};
    ScriptedServer server{other, other, outOfTurn, outOfTurn};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState! bad-frame");
    EXPECT_EQ(detailOf(server.port(), {}, 3), "reply of command 0x36, expected 0x01");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState! bad-frame");
    EXPECT_EQ(detailOf(server.port(), {}, 3), "reply of sequence 9, expected 0");
}

// As a server does that repeats the reply before.
TEST(GqtoolProbe, findsAReplyToTheRequestBefore)
{
    ScriptedServer server{{sends(greeting), receives(frameSize), sends(state7), receives(frameSize), sends(state7)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState systemTime! bad-frame");
}

TEST(GqtoolProbe, acceptsAServerThatReturnsNoSequenceOrCountsItsOwnFrames)
{
    const QByteArray state = "68 04000000 0600 00 00 01 07000000 0000 16"_hex;
    const QByteArray time = "68 04000000 0700 00 00 02 00ca9a3b 0000 16"_hex;
    const QByteArray greeting5 = "68 04000000 0500 00 00 00 01000000 0000 16"_hex;
    const QByteArray timeOf0 = "68 04000000 0000 00 00 02 00ca9a3b 0000 16"_hex;
    ScriptedServer server{{sends(greeting5), receives(frameSize), sends(state), receives(frameSize), sends(time)},
                          {sends(greeting), receives(frameSize), sends(state7), receives(frameSize), sends(timeOf0)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState systemTime healthy");
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState systemTime healthy");
    ScriptedDatagramPeer peer{{state}, {time}};
    EXPECT_EQ(probe(peer.port(), {"--udp"}), "resolve connect systemState systemTime healthy");
}

// It returns the sequence of the request and one more, which the first reply alone does not show.
TEST(GqtoolProbe, findsAServerWhoseSequencesAreOffByOne)
{
    const QByteArray state = "68 04000000 0100 00 00 01 07000000 0000 16"_hex;
    const QByteArray time = "68 04000000 0300 00 00 02 00ca9a3b 0000 16"_hex;
    ScriptedServer server{{sends(greeting), receives(frameSize), sends(state), receives(frameSize), sends(time)}};
    EXPECT_EQ(detailOf(server.port(), {}, 4), "reply of sequence 3, expected 2");
}

TEST(GqtoolProbe, findsASecondFrameThatComesTogetherWithTheFirst)
{
    const ScriptedServer::Step request = receives(frameSize);
    ScriptedServer server{{sends(greeting + state7)},
                          {sends(greeting), request, sends(state7 + state7)},
                          {sends(greeting), request, sends(state7), request, sends(time1000000000 + reply54)}};
    EXPECT_EQ(detailOf(server.port(), {}, 2),
              "a greeting of 1; then another frame: systemState, sequence 0, 4 bytes: 7");
    EXPECT_EQ(detailOf(server.port(), {}, 3), "7; then another frame: systemState, sequence 0, 4 bytes: 7");
    const Outcome outcome = run({"probe", endpointOf(server.port())});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.output.contains("1000000000; then another frame: command 0x36, sequence 0, 4 bytes: 7\n"))
        << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.contains("\nbad-frame: ")) << outcome.output.toStdString();
    EXPECT_TRUE(
        outcome.output.endsWith("\nThe server sends frames that were not requested. A client drops such a frame "
                                "if it comes together with a reply, and otherwise takes it for the next reply.\n"))
        << outcome.output.toStdString();
    ScriptedDatagramPeer peer{{state7 + state7}};
    EXPECT_EQ(probe(peer.port(), {"--udp"}), "resolve connect systemState! bad-frame");
}

TEST(GqtoolProbe, takesAnEchoServerForAForeignOne)
{
    Listener listener(1);
    std::thread echo([&] {
        const Descriptor connection = listener.accept();
        const std::string request = received(connection, frameSize);
        EXPECT_EQ(::send(connection, request.data(), request.size(), MSG_NOSIGNAL), ssize_t(frameSize));
    });
    EXPECT_EQ(probe(listener.port()), "resolve connect greeting! foreign unknown");
    echo.join();
}

TEST(GqtoolProbe, takesNoServerThatGreetsForAForeignOne)
{
    ScriptedServer server{{sends(greeting), receives(frameSize), sends("HTTP/1.1 400 Bad Request\r\n")}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState! bad-frame");
}

TEST(GqtoolProbe, stopsAtTheTimeIfOnlyTheStateIsAnswered)
{
    ScriptedServer server{{sends(greeting), receives(frameSize), sends(state7), receives(frameSize)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState systemTime! no-reply");
}

// --- UDP ----------------------------------------------------------------------------------------------------------

TEST(GqtoolProbeUdp, asksInDatagramsAndAwaitsNoGreeting)
{
    ScriptedDatagramPeer server{{state7}, {time1000000000}};
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState systemTime healthy");
    const std::vector<QByteArray> received = server.received();
    ASSERT_EQ(received.size(), 2U);
    EXPECT_EQ(hex(received[0].left(10)), hex("68 33000000 0000 00 00 01"_hex)); // no datagram is below 64 bytes
    EXPECT_EQ(received[0].size(), 64);
    EXPECT_EQ(hex(received[1].left(10)), hex("68 33000000 0200 00 00 02"_hex));
}

TEST(GqtoolProbeUdp, findsAPortThatRefuses)
{
    DatagramPeer peer;
    peer.goAway();
    EXPECT_EQ(probe(peer.port(), {"--udp"}), "resolve connect systemState! refused");
    EXPECT_EQ(callCause(peer.port(), {"--udp"}), "refused");
}

TEST(GqtoolProbeUdp, findsSilence)
{
    ScriptedDatagramPeer server{{}, {}};
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState! no-reply");
    EXPECT_EQ(callCause(server.port(), {"--udp"}), "no-reply");
}

// Sends the next `count` datagrams back.
static void echo(DatagramPeer& peer, int count)
{
    for (int i = 0; i < count; ++i) {
        const QByteArray request = peer.take();
        peer.give(peer.senderPort(), request);
    }
}

TEST(GqtoolProbeUdp, takesAnEchoServerForAForeignOne)
{
    DatagramPeer peer;
    std::thread server([&] { echo(peer, 2); });
    const Outcome outcome = run({"probe", "--udp", "--json", endpointOf(peer.port())});
    EXPECT_EQ(summaryOf(outcome), "resolve connect systemState! foreign unknown");
    EXPECT_TRUE(outcome.output.contains("the request itself came back, as from an echo server"));
    EXPECT_EQ(call(peer.port(), {"--udp"})["warning"].toString(),
              "the request itself came back, as from an echo server");
    server.join();
}

// Without a greeting, the first sequence can be the server's own count. The second one cannot.
TEST(GqtoolProbeUdp, findsAWrongSequence)
{
    const QByteArray timeOf9 = "68 04000000 0900 00 00 02 00ca9a3b 0000 16"_hex;
    ScriptedDatagramPeer server{{state7Of9}, {timeOf9}};
    EXPECT_EQ(detailOf(server.port(), {"--udp"}, 3), "reply of sequence 9, expected 2");
}

TEST(GqtoolProbeUdp, findsWhatComesInPlaceOfAReply)
{
    ScriptedDatagramPeer server{{errorMinus7},     {wrongEnd},        {state7.left(12), state7.mid(12)},
                                {QByteArray("")},  {"who is there?"}, {state7},
                                {"who is there?"}, {errorMinus7},     {wrongEnd},
                                {QByteArray("")}};
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState! error-frame -7");
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState! bad-frame");
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState! bad-frame"); // a client takes one datagram
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState! bad-frame");
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState! foreign unknown");
    EXPECT_EQ(probe(server.port(), {"--udp"}), "resolve connect systemState systemTime! bad-frame");
    EXPECT_EQ(callCause(server.port(), {"--udp"}), "error-frame");
    EXPECT_EQ(callCause(server.port(), {"--udp"}), "bad-frame");
    EXPECT_EQ(callCause(server.port(), {"--udp"}), "bad-frame"); // an empty datagram
}

// --- Advice -------------------------------------------------------------------------------------------------------

static std::string adviceOf(int port, const QStringList& options = {})
{
    const Outcome outcome = run(QStringList{"probe", "--timeout", "300"} + options + QStringList{endpointOf(port)});
    return outcome.output.split('\n', Qt::SkipEmptyParts).last().toStdString();
}

TEST(GqtoolProbe, advisesForTheStageAndTheTransport)
{
    const ScriptedServer::Step request = receives(frameSize);
    ScriptedServer server{{sends(errorMinus7)},
                          {sends(greeting), request, sends(errorMinus7)},
                          {sends(greeting), request},
                          {sends(greeting), request, closes()},
                          {sends(greeting), request, sends(reply54)},
                          {sends(errorOfTwoBytes)},
                          {sends(greeting), request, sends(errorOfNoBytes)}};
    EXPECT_EQ(adviceOf(server.port()), "Look the code up in the server's documentation.");
    EXPECT_EQ(adviceOf(server.port()), "Look the code up in the server's documentation. If the server lacks this "
                                       "command, use --greeting-only.");
    EXPECT_EQ(adviceOf(server.port()), "The server may be busy: try a longer --timeout. If the server lacks this "
                                       "command, use --greeting-only.");
    EXPECT_EQ(adviceOf(server.port()), "The server may have crashed on this request, or not accept it. Read its log.");
    EXPECT_EQ(adviceOf(server.port()), "The server answers another request, or sends more than one frame for one. A "
                                       "client takes such a frame for the reply.");
    EXPECT_EQ(adviceOf(server.port()), "The error frame has no code that says why. Read the server's log.");
    EXPECT_EQ(adviceOf(server.port()),
              "The error frame has no code that says why. Read the server's log. If the server "
              "lacks this command, use --greeting-only.");
    ScriptedServer notGreeting{{receives(frameSize), sends(state7)}};
    EXPECT_EQ(adviceOf(notGreeting.port()), "The server answers, but clients of this library wait for a greeting. "
                                            "Check its settings, and that it is meant for these clients.");
    ScriptedDatagramPeer peer{{errorMinus7}, {}, {errorOfNoBytes}};
    EXPECT_EQ(adviceOf(peer.port(), {"--udp"}), "Look the code up in the server's documentation. If it means an "
                                                "unknown command, the link itself works.");
    EXPECT_EQ(adviceOf(peer.port(), {"--udp"}),
              "The server may be busy: try a longer --timeout. Or a firewall drops the datagrams, or the server does "
              "not run, or it lacks this command.");
    EXPECT_EQ(adviceOf(peer.port(), {"--udp"}),
              "The error frame has no code that says why. Read the server's log. If it "
              "means an unknown command, the link itself works.");
}

// --- The same in call and probe -----------------------------------------------------------------------------------

TEST(GqtoolProbe, hasTheCodeOfAnErrorFrameInCommonWithCall)
{
    const QByteArray errorMinus17 = "68 04000000 0000 00 00 ff efffffff 0000 16"_hex;
    const ScriptedServer::Script inReply = {sends(greeting), receives(frameSize), sends(errorMinus17)};
    ScriptedServer server{{sends(errorMinus17)}, {sends(errorMinus17)}, inReply, inReply,
                          {sends(error1)},       {sends(error1)}};
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! error-frame -17");
    const QJsonObject refused = call(server.port());
    EXPECT_EQ(refused["code"].toInt(), -17);
    EXPECT_EQ(refused["target"].toString(), endpointOf(server.port()));
    EXPECT_EQ(probe(server.port()), "resolve connect greeting systemState! error-frame -17");
    EXPECT_EQ(call(server.port())["code"].toInt(), -17);
    EXPECT_EQ(probe(server.port()), "resolve connect greeting! error-frame 1");
    const QJsonObject one = call(server.port());
    EXPECT_EQ(one["code"].toInt(), 1);
    EXPECT_EQ(one["result"].toString(), "failed");
}

// --- Command lines ------------------------------------------------------------------------------------------------

TEST(GqtoolProbe, endsWithTwoOnWrongUsage)
{
    for (const QStringList& words : {QStringList{},
                                     {"localhost:1", "surplus"},
                                     {"localhost:1", "--timeout", "0"},
                                     {"localhost:1", "--timeout", "x"},
                                     {"localhost:1", "--udp", "--greeting-only"},
                                     {"localhost:1", "--nonsense"}}) {
        SCOPED_TRACE(words.join(' ').toStdString());
        const Outcome outcome = run(QStringList{"probe"} + words);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
    }
}

// Judging these 400,000 bytes takes longer than the peer waits before its next byte, so each read finds a byte.
TEST(GqtoolProbe, endsAtTheTimeOutWhileBytesArrive)
{
    Listener listener(5);
    std::thread server([&] {
        const Descriptor peer = listener.accept();
        const QByteArray start = "68 68 68 68 ff ff ff ff"_hex.repeated(50000);
        EXPECT_GT(::send(peer, start.constData(), size_t(start.size()), MSG_NOSIGNAL), 0);
        while (::send(peer, "x", 1, MSG_NOSIGNAL) == 1)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    const QJsonObject object = objectOf(run({"probe", "--json", "--timeout", "300", endpointOf(listener.port())}));
    server.join();
    EXPECT_EQ(object["cause"], "bad-frame");
    const QJsonArray stages = object["stages"].toArray();
    EXPECT_TRUE(stages.last().toObject()["detail"].toString().endsWith("; then the time-out of 300 ms ended"))
        << stages.last().toObject()["detail"].toString().toStdString();
}

TEST(GqtoolProbe, saysThatAPeerSendsMoreThanItExamines)
{
    Listener listener(5);
    std::thread server([&] {
        const Descriptor peer = listener.accept();
        const QByteArray line = QByteArray("no frame\r\n").repeated(1000);
        while (::send(peer, line.constData(), size_t(line.size()), MSG_NOSIGNAL) > 0) {
        }
    });
    const QJsonObject object = objectOf(run({"probe", "--json", "--timeout", "20000", endpointOf(listener.port())}));
    server.join();
    EXPECT_EQ(object["cause"], "foreign");
    const QString detail = object["stages"].toArray().last().toObject()["detail"].toString();
    EXPECT_TRUE(detail.endsWith("; then more bytes came")) << detail.toStdString();
}
