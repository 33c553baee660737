// gqtool under odd input: numbers with leading zeros, addresses that are none.

#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <gtest/gtest.h>

TEST(GqtoolCall, takesLeadingZerosForADecimalNumber)
{
    RunningStation station;
    EXPECT_EQ(station.call({"setState", "010"}).output, "10\n");
}

TEST(GqtoolCall, takesLeadingZerosForADecimalPort)
{
    const Outcome outcome = run({"call", "127.0.0.1:00008", "systemState"}); // one like any other: nobody listens
    EXPECT_EQ(outcome.exitCode, 1) << outcome.errors.toStdString();
}

TEST(GqtoolStation, refusesAnAddressThatIsNone)
{
    for (const char* address : {"nonsense", "localhost", "300.1.1.1", "127.1 nonsense", ""}) {
        SCOPED_TRACE(address);
        const Outcome outcome = run({"station", "--address", address});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
    }
}

TEST(GqtoolStation, tellsThatItsScriptCantBeRead)
{
    const Outcome outcome = run({"station", "--script", "/proc/self/mem"}); // opens, and fails to be read
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: can't read /proc/self/mem: Input/output error\n"))
        << outcome.errors.toStdString();
}

TEST(GqtoolStation, readsItsScriptBehindAZeroByte)
{
    const InputFile script(QByteArray("# \0\nnonsense\n", 13));
    const Outcome outcome = run({"station", "--script", script.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(", line 2: ")) << outcome.errors.toStdString();
}
