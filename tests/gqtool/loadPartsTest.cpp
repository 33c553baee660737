// What gqload and gqsoak share: the station that they start, and the memory and descriptors of a process.

#include "support/gqtoolProgram.h"
#include "support/plainSockets.h"

#include "shared/processFigures.h"
#include "shared/stationProcess.h"

#include <QRegularExpression>

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
                                    "clients                0 kB +\\d{4,7} kB  TOO SHORT TO COMPARE\n"
                                    "station                0 kB +\\d{4,7} kB  TOO SHORT TO COMPARE\n$");
    EXPECT_TRUE(report.match(outcome.output).hasMatch()) << outcome.output.toStdString();
}
