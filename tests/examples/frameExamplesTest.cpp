// The example programs that build, assemble or parse frames without the clients of the library.

#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/scriptedServer.h"

#include <algorithm>

static QString example(const char* name)
{
    return QString(EXAMPLES) + "/" + name;
}

static const QByteArray greeting = "68 04000000 0000 00 00 00 01000000 0000 16"_hex;

// --- epollClient --------------------------------------------------------------------------------------------------

static QString lineOfEpollClient(const ScriptedServer& server)
{
    const QString endpoint = "127.0.0.1:" + QString::number(server.port());
    const Outcome outcome = runProgram(example("epollClient"), {"5000", endpoint});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.startsWith(endpoint + " ")) << outcome.output.toStdString();
    return outcome.output.mid(endpoint.size() + 1).trimmed();
}

TEST(EpollClient, asksServersAtTheSameTime)
{
    const RunningStation whole;
    const RunningStation inPieces({"--pieces", "1"});
    const RunningStation refusing({"--greeting", "0"});
    const RunningStation silent({"--silent"});
    const ReservedPort nobody;
    const QString gone = "127.0.0.1:" + QString::number(nobody.number());
    const Outcome outcome = runProgram(example("epollClient"), {"500", silent.endpoint, whole.endpoint, gone, "name:1",
                                                                refusing.endpoint, inPieces.endpoint});
    EXPECT_EQ(outcome.exitCode, 0);
    QStringList lines = outcome.output.split('\n', Qt::SkipEmptyParts);
    lines.sort();
    QStringList expected = {"name:1 is no address",         gone + " closed",
                            whole.endpoint + " state 1",    refusing.endpoint + " refused: 0",
                            silent.endpoint + " no answer", inPieces.endpoint + " state 1"};
    expected.sort();
    EXPECT_EQ(lines.join('\n').toStdString(), expected.join('\n').toStdString());
}

TEST(EpollClient, sendsAFrameWithoutPadding)
{
    ScriptedServer server{{sends(greeting), receives(17), sends("68 04000000 0000 00 00 01 07000000 0000 16"_hex)}};
    EXPECT_EQ(lineOfEpollClient(server), "state 7");
    EXPECT_EQ(hex(server.received(0)), hex("68 04000000 0000 00 00 01 00000000 0000 16"_hex));
}

TEST(EpollClient, keepsAFrameThatFollowsInTheSameRead)
{
    ScriptedServer server{{sends(greeting + "68 04000000 0000 00 00 01 07000000 0000 16"_hex), receives(17)}};
    EXPECT_EQ(lineOfEpollClient(server), "state 7");
}

TEST(EpollClient, reportsTheCodeOfAnErrorFrame)
{
    ScriptedServer server{{sends(greeting), receives(17), sends("68 04000000 0000 00 00 ff 01000000 0000 16"_hex)}};
    EXPECT_EQ(lineOfEpollClient(server), "refused: 1");
}

TEST(EpollClient, refusesRepliesWithoutAnInteger)
{
    ScriptedServer shortError{{sends(greeting), receives(17), sends("68 02000000 0000 00 00 ff 0700 0000 16"_hex)}};
    EXPECT_EQ(lineOfEpollClient(shortError), "refused: -2");
    ScriptedServer shortReply{{sends(greeting), receives(17), sends("68 02000000 0000 00 00 01 0700 0000 16"_hex)}};
    EXPECT_EQ(lineOfEpollClient(shortReply), "refused: -5");
    ScriptedServer wrongEnd{{sends(greeting), receives(17), sends("68 04000000 0000 00 00 01 07000000 0000 17"_hex)}};
    EXPECT_EQ(lineOfEpollClient(wrongEnd), "refused: 0");
}

// --- framesByHand and framesByLibrary -----------------------------------------------------------------------------

class FramesBy : public testing::TestWithParam<const char*> {
protected:
    Outcome runAgainst(const ScriptedServer& server)
    {
        return runProgram(example(GetParam()), {"127.0.0.1", QString::number(server.port()), "3"});
    }
};

INSTANTIATE_TEST_SUITE_P(Programs, FramesBy, testing::Values("framesByHand", "framesByLibrary"));

static QString withoutLinesOfTheLibrary(QString output)
{
    QStringList lines = output.split('\n');
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const QString& line) { return line.startsWith("setRecvOverTm:"); }),
                lines.end());
    return lines.join('\n');
}

TEST_P(FramesBy, sendsTheSameBytesAndPrintsTheSameValues)
{
    const QByteArray reply = "68 10000000 0700 00 00 20 03000000 64000000 ffffffff 70110100 0000 16"_hex;
    ScriptedServer server{
        {sends(greeting), receives(17), sends(reply.left(3)), sends(reply.mid(3, 9)), sends(reply.mid(12))}};
    const Outcome outcome = runAgainst(server);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(withoutLinesOfTheLibrary(outcome.output), "100\n-1\n70000\n");
    EXPECT_EQ(hex(server.received(0)), hex("68 04000000 0000 00 00 20 03000000 0000 16"_hex));
}

TEST_P(FramesBy, refusesAnErrorFrame)
{
    ScriptedServer server{{sends(greeting), receives(17), sends("68 04000000 0000 00 00 ff f5ffffff 0000 16"_hex)}};
    const Outcome outcome = runAgainst(server);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith(QString(GetParam()) + ": no values")) << outcome.errors.toStdString();
}

TEST_P(FramesBy, refusesACountBeyondThePayload)
{
    ScriptedServer server{
        {sends(greeting), receives(17), sends("68 08000000 0000 00 00 20 03000000 64000000 0000 16"_hex)}};
    const Outcome outcome = runAgainst(server);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith(QString(GetParam()) + ": no values")) << outcome.errors.toStdString();
}
