// What gqload and gqsoak share: the station that they start, and the memory and descriptors of a process.

#include "support/gqtoolProgram.h"
#include "support/plainSockets.h"

#include "shared/processFigures.h"
#include "shared/stationProcess.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

// --- The figures of a process -------------------------------------------------------------------------------------

TEST(ProcessFigures, includeMemoryThatIsUsed)
{
    const size_t size = 64 << 20;
    void* block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(block, MAP_FAILED);
    const int before = residentMemory(getpid());
    std::memset(block, 1, size);
    const int after = residentMemory(getpid());
    munmap(block, size);
    EXPECT_GT(before, 1000);
    EXPECT_NEAR(after - before, size / 1024, 8192);
}

TEST(ProcessFigures, includeEachDescriptor)
{
    const int before = openDescriptorsOf(getpid());
    const Pipe pipe;
    EXPECT_EQ(openDescriptorsOf(getpid()), before + 2);
}

TEST(ProcessFigures, areZeroForAProcessThatIsGone)
{
    EXPECT_EQ(residentMemory(-1), 0);
    EXPECT_EQ(openDescriptorsOf(-1), 0);
}

TEST(ProcessFigures, allowATenthAndAMebibyteMore)
{
    EXPECT_FALSE((Memory{20000, 23024}.hasGrown()));
    EXPECT_TRUE((Memory{20000, 23025}.hasGrown()));
    EXPECT_FALSE((Memory{0, 23025}.hasGrown()));
    EXPECT_EQ((Memory{20000, 23024}.verdict()), "");
    EXPECT_EQ((Memory{20000, 23025}.verdict()), "  GROWN");
    EXPECT_EQ((Memory{0, 23025}.verdict()), "  TOO SHORT TO COMPARE");
}

// --- The station --------------------------------------------------------------------------------------------------

static bool isListening(int port)
{
    const Outcome outcome = run({"call", QString("127.0.0.1:%1").arg(port), "systemState"});
    return outcome.exitCode == 0 && outcome.output == "1\n";
}

TEST(StationProcess, listensUntilItIsStopped)
{
    const std::set<int> before = openDescriptors();
    StationProcess station(GQTOOL, {"--quiet"});
    ASSERT_TRUE(station.start(0));
    EXPECT_GT(station.port(), 0);
    EXPECT_TRUE(isListening(station.port()));
    const pid_t pid = station.pid();
    EXPECT_EQ(kill(pid, 0), 0);

    station.stop();
    EXPECT_EQ(kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    EXPECT_EQ(station.pid(), 0);
    EXPECT_TRUE(openedSince(before).empty());
    station.stop(); // does nothing
}

TEST(StationProcess, listensOnAPortOfItsChoice)
{
    StationProcess station(GQTOOL, {"--quiet"});
    ASSERT_TRUE(station.start(0));
    const int port = station.port();
    station.stop();
    if (!station.start(port))
        GTEST_SKIP() << "another program has taken the port";
    EXPECT_EQ(station.port(), port);
    EXPECT_TRUE(isListening(port));
}

TEST(StationProcess, endsWithItsOwner)
{
    pid_t pid = 0;
    {
        StationProcess station(GQTOOL, {"--quiet"});
        ASSERT_TRUE(station.start(0));
        pid = station.pid();
    }
    EXPECT_EQ(kill(pid, 0), -1);
}

TEST(StationProcess, reportsThatItDoesNotStart)
{
    StationProcess missing("/nowhere/gqtool", {});
    EXPECT_FALSE(missing.start(0));
    StationProcess refused(GQTOOL, {"--late", "-1"});
    EXPECT_FALSE(refused.start(0));
}

// --- gqload -------------------------------------------------------------------------------------------------------

TEST(Gqload, printsWhatItFound)
{
    const Outcome outcome = runProgram(GQLOAD, {"--clients", "2", "--requests", "40", GQTOOL});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    const QRegularExpression report("^clients     2\n"
                                    "seconds     [\\d.]+\n"
                                    "requests    80\n"
                                    "errors      0\n"
                                    "per second  \\d+\n"
                                    "wraps       0, of the sequence from 65535 to 0\n"
                                    "\n"
                                    "memory      once warm    at the end\n"
                                    "clients                0 kB (?=.{10} kB) *\\d{4,7} kB  TOO SHORT TO COMPARE\n"
                                    "station                0 kB (?=.{10} kB) *\\d{4,7} kB  TOO SHORT TO COMPARE\n$");
    EXPECT_TRUE(report.match(outcome.output).hasMatch()) << outcome.output.toStdString();
}

// A program that passes its arguments on to gqtool, and `more` after them.
class StationWith {
public:
    explicit StationWith(const QByteArray& more, const QByteArray& content = {}) : program(folder.filePath("gqtool"))
    {
        QFile file(folder.filePath("file"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
        QFile script(program);
        EXPECT_TRUE(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nexec " GQTOOL " \"$@\" " + more + ' ' + QFile::encodeName(file.fileName()) + '\n');
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }

private:
    QTemporaryDir folder;

public:
    const QString program; // in the folder
};

TEST(Gqload, reportsAStationThatDoesNotStart)
{
    const Outcome outcome = runProgram(GQLOAD, {"/bin/false"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "gqload: the station did not start\n");
}

TEST(Gqload, reportsAClientThatCannotConnect)
{
    const StationWith station("--script", "greeting 1 close-after 0\n");
    const Outcome outcome = runProgram(GQLOAD, {"--clients", "1", station.program});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "gqload: a client cannot connect to the station\n");
}

static QString lineOf(const Outcome& outcome, const QString& beginning)
{
    for (const QString& line : outcome.output.split('\n')) {
        if (line.startsWith(beginning))
            return line;
    }
    return "no such line";
}

// A state, 2 integers, 75 bytes and 4 texts; the last element of each is wrong.
TEST(Gqload, countsEachWrongReply)
{
    QByteArray bytes;
    for (char i = 0; i < 74; ++i)
        bytes += i;
    const StationWith station("--commands",
                              R"({"commands": [{"command": 6, "reply": {"int": 1}},
                                               {"command": 32, "reply": {"ints": [200, 211]}},
                                               {"command": 33, "reply": {"bytes": ")" +
                                  bytes.toHex() + R"(4b"}},
                                               {"command": 34, "reply": {"strings": ["unit 1 temperature 1",
                                  "unit 1 temperature 2", "unit 1 temperature 3", "unit 1 temperature 5"]}}]})");
    const Outcome outcome = runProgram(GQLOAD, {"--clients", "1", "--requests", "4", station.program});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(lineOf(outcome, "requests"), "requests    4");
    EXPECT_EQ(lineOf(outcome, "errors"), "errors      4");
}

TEST(Gqload, countsEachRefusedRequestAndEachFailedConnect)
{
    const StationWith refusing("--commands", R"({"commands": [{"command": 6, "error": -7}, {"command": 32, "error": -7},
                                                {"command": 33, "error": -7}, {"command": 34, "error": -7}]})");
    const Outcome refused = runProgram(GQLOAD, {"--clients", "1", "--requests", "4", refusing.program});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(lineOf(refused, "requests"), "requests    4");
    EXPECT_EQ(lineOf(refused, "errors"), "errors      4");

    const StationWith closing("--script", "reply 1 close-after 0\ngreeting 2 close-after 0\n");
    const Outcome closed = runProgram(GQLOAD, {"--clients", "1", "--requests", "4", closing.program});
    EXPECT_EQ(closed.exitCode, 1);
    EXPECT_EQ(lineOf(closed, "requests"), "requests    4");
    EXPECT_EQ(lineOf(closed, "errors"), "errors      2"); // the first request and the connect after it
}

// --- gqsoak -------------------------------------------------------------------------------------------------------

TEST(Gqsoak, refusesADurationThatIsNoPositiveNumber)
{
    for (const char* minutes : {"0", "-1", "x", "nan", "inf"}) {
        const Outcome outcome = runProgram(GQSOAK, {GQTOOL, "--", minutes});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_TRUE(
            outcome.errors.startsWith(QString("gqsoak: MINUTES must be a number above 0, got '%1'\n").arg(minutes)))
            << outcome.errors.toStdString();
    }
}

TEST(Gqsoak, reportsAStationThatDoesNotStart)
{
    const Outcome outcome = runProgram(GQSOAK, {"/bin/false", "1"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "gqsoak: the station did not start\n");
}

TEST(Gqsoak, countsWrongValues)
{
    const StationWith station("--commands", R"({"commands": [{"command": 6, "reply": {"int": 1000000000}}]})");
    const Outcome outcome = runProgram(GQSOAK, {station.program, "0.05"});
    EXPECT_EQ(outcome.exitCode, 1);
    const QRegularExpression report("^requests      [1-9]\\d*\n"
                                    "failures      \\d+\n"
                                    "recoveries    \\d+\n"
                                    "wrong values  [1-9]\\d*\n"
                                    "\n"
                                    "descriptors  at the start  at the end\n"
                                    "clients +\\d+ +\\d+\n"
                                    "station +\\d+ +\\d+\n"
                                    "\n"
                                    "memory      once warm    at the end\n"
                                    "clients .*\n"
                                    "station .*\n$");
    EXPECT_TRUE(report.match(outcome.output).hasMatch()) << outcome.output.toStdString();
}
