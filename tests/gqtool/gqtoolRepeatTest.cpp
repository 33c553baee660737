// gqtool call --repeat: a run of requests and its output.

#include "support/gqtoolProgram.h"
#include "support/inputFile.h"
#include "support/plainSockets.h"
#include "support/terminal.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

static bool matches(const QString& text, const QString& pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

static QString scriptIn(const QTemporaryDir& folder, const QByteArray& text)
{
    const QString path = folder.filePath("faults.txt");
    writeTo(path, text);
    return path;
}

TEST(GqtoolRepeat, printsCountRateAndTimes)
{
    RunningStation station;
    const Outcome outcome = station.call({"--repeat", "20", "systemState"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(matches(outcome.output, "requests    20\n"
                                        "failures    0\n"
                                        "per second  \\d+\\.\\d\n"
                                        "least       \\d+\\.\\d{3} ms\n"
                                        "median      \\d+\\.\\d{3} ms\n"
                                        "largest     \\d+\\.\\d{3} ms\n"))
        << outcome.output.toStdString();
}

TEST(GqtoolRepeat, usesOneConnection)
{
    RunningStation station;
    station.call({"--repeat", "3", "systemState"});
    EXPECT_TRUE(station.nextLine().endsWith(" connected"));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(station.nextLine().endsWith(": answered with 17 bytes"));
    EXPECT_TRUE(station.nextLine().endsWith(" gone"));
}

TEST(GqtoolRepeat, sortsOnlyTheTimesOfSuccessfulReplies)
{
    const QTemporaryDir folder;
    RunningStation station({"--script", scriptIn(folder, "reply 1 late 300\n"
                                                         "reply 2 late 100\n"
                                                         "reply 3 late 200\n"
                                                         "reply 4 error -7\n")});
    const QStringList lines = station.call({"--repeat", "4", "systemState"}).output.split('\n');
    ASSERT_EQ(lines.size(), 8);
    EXPECT_EQ(lines[1], "failures    1");
    EXPECT_EQ(lines[2], "            1 failed with -7: error-frame: the server's own code, from an error frame");
    const double least = lines[4].split(' ', Qt::SkipEmptyParts)[1].toDouble();
    const double median = lines[5].split(' ', Qt::SkipEmptyParts)[1].toDouble();
    const double largest = lines[6].split(' ', Qt::SkipEmptyParts)[1].toDouble();
    EXPECT_GE(least, 100);
    EXPECT_GE(median, 200);
    EXPECT_GE(largest, 300);
    EXPECT_LE(least, median);
    EXPECT_LE(median, largest);
}

TEST(GqtoolRepeat, reconnectsAfterEachKindOfFailure)
{
    const QTemporaryDir folder;
    const QString script = scriptIn(folder, "reply 2 wrong-end\n"
                                            "reply 4 close-after 12\n"
                                            "reply 6 error -7\n"
                                            "reply 8 silent\n"
                                            "reply 10 close-after 0\n");
    RunningStation station({"--udp", "--script", script});
    const Outcome outcome = station.call({"--repeat", "11", "--timeout", "1000", "setState", "7"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.output.startsWith("requests    11\nfailures    5\n            1 failed with -1: "))
        << outcome.output.toStdString();
}

TEST(GqtoolRepeat, ignoresTheRestOfAFailedReply)
{
    const QTemporaryDir folder;
    // Both frames of a list are bad. The second one is still to come when the first one has failed.
    const QString script = scriptIn(folder, "reply 1 wrong-end\nreply 3 wrong-end");
    RunningStation station({"--udp", "--gap", "300", "--script", script});
    for (const char* transport : {"--timeout=9000", "--udp"}) {
        const Outcome outcome = station.call({transport, "--repeat", "2", "ints", "101"});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.output.startsWith("requests    2\nfailures    1\n")) << outcome.output.toStdString();
    }
}

TEST(GqtoolRepeat, continuesWithoutAServer)
{
    const Listener deaf;
    const Outcome outcome = run({"call", QString("127.0.0.1:%1").arg(deaf.port()), "--repeat", "3", "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(matches(
        outcome.output,
        "requests    3\n"
        "failures    3\n"
        "            3 failed with -1: refused: the host is up, but nothing listens on this port: Connection refused\n"
        "per second  \\d+\\.\\d\n"))
        << outcome.output.toStdString();
}

TEST(GqtoolRepeat, sendsDatagrams)
{
    RunningStation station({"--udp"});
    const Outcome outcome = station.call({"--udp", "--repeat", "5", "systemState"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.startsWith("requests    5\nfailures    0\nper second "));
}

TEST(GqtoolRepeat, keepsAnInterval)
{
    RunningStation station;
    const Clock::time_point start = Clock::now();
    station.call({"--repeat", "4", "--interval", "100", "systemState"});
    EXPECT_GE(msSince(start), 300);
}

TEST(GqtoolRepeat, printsItsTotalsWhenInterrupted)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        SCOPED_TRACE(signal);
        RunningStation station;
        RunningProgram call(
            GQTOOL, {"call", station.endpoint, "--json", "--repeat", "9", "--interval", "3600000", "systemState"});
        EXPECT_TRUE(call.nextLine().contains("\"request\":1"));
        EXPECT_EQ(call.end(signal), 0);
        const QString sum = call.nextLine();
        EXPECT_TRUE(sum.startsWith("{\"failures\":0,") && sum.endsWith(",\"requests\":1}")) << sum.toStdString();
    }
}

TEST(GqtoolRepeat, doesNotCountTheInterruptedRequest)
{
    RunningStation station({"--silent"});
    RunningProgram call(GQTOOL, {"call", station.endpoint, "--repeat", "9", "--timeout", "3600000", "systemState"});
    EXPECT_TRUE(station.nextLine().endsWith(" connected"));
    EXPECT_TRUE(station.nextLine().endsWith(": not answered")) << "so it waits for the reply";
    EXPECT_EQ(call.end(SIGINT), 0);
    EXPECT_EQ(call.nextLine(), "requests    0");
}

TEST(GqtoolRepeat, showsItsProgressOnATerminal)
{
    Terminal terminal;
    RunningStation station;
    QProcess process;
    process.setProcessEnvironment(englishEnvironment());
    process.setStandardErrorFile(terminal.name());
    process.start(GQTOOL, {"call", "--repeat", "3", station.endpoint, "systemState"});
    ASSERT_TRUE(process.waitForFinished(waitMs));
    const std::string shown = terminal.shown();
    EXPECT_EQ(shown.substr(0, 4 + 16), clearLine + "1 of 3, 0 failed");
    EXPECT_EQ(shown.substr(shown.size() - 4), clearLine);
    EXPECT_TRUE(process.readAllStandardOutput().startsWith("requests    3\n"));
}

// The reader of the totals may print them on the same terminal, as in 'gqtool call ... | tee FILE'.
TEST(GqtoolRepeat, clearsItsProgressBeforeTheTotals)
{
    Terminal terminal;
    Pipe output; // which is full, so that the totals are not printed yet
    fcntl(output.writeEnd, F_SETFL, O_NONBLOCK);
    while (write(output.writeEnd, "x", 1) == 1) {
    }
    RunningStation station;
    QProcess process;
    process.setProcessEnvironment(englishEnvironment());
    process.setStandardErrorFile(terminal.name());
    process.setStandardOutputFile(QString("/proc/self/fd/%1").arg(output.writeEnd));
    process.start(GQTOOL, {"call", "--repeat", "1", station.endpoint, "systemState"});
    const std::string expected = clearLine + "1 of 1, 0 failed" + clearLine;
    EXPECT_EQ(terminal.read(expected.size()), expected);
    std::string filling(1 << 20, '\0');
    EXPECT_GT(read(output.readEnd, filling.data(), filling.size()), 0);
    EXPECT_TRUE(process.waitForFinished(waitMs));
}
