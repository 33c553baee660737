// The example programs of the log and of relative time.

#include "support/gqtoolProgram.h"
#include "support/logFolder.h"
#include "support/timeZone.h"

static QString example(const char* name)
{
    return QString(EXAMPLES) + "/" + name;
}

class SavedLog : public LogFolder {};

TEST_F(SavedLog, containsEveryLineOfEachThreadInOrder)
{
    EXPECT_EQ(runProgram(example("savedLog"), {path("log"), "2000"}).exitCode, 0);
    const QStringList lines = QString::fromStdString(content("log")).split('\n', Qt::SkipEmptyParts);
    EXPECT_EQ(lines.size(), 4000);
    for (const char* writer : {"first", "second"}) {
        int next = 1;
        for (const QString& line : lines) {
            if (line.section(' ', 1, 1) == writer) {
                ASSERT_EQ(line.section(' ', 2), QString::number(next++));
            }
        }
        EXPECT_EQ(next, 2001);
    }
}

TEST_F(SavedLog, reportsThatItCannotBeWritten)
{
    const QString file = path("no folder") + "/log";
    const Outcome outcome = runProgram(example("savedLog"), {file, "10"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "savedLog: cannot write " + file + "\n");
}

TEST(RelativeTime, printsMomentAndText)
{
    const TimeZone berlin("Europe/Berlin");
    // 2021-03-31 10:20:30 in Berlin; the 5th of its month began at 2021-03-04 23:00:00 UTC
    EXPECT_EQ(runProgram(example("relativeTime"), {"155", "1617178830"}).output,
              QString::fromUtf8("1614898800: 5号\n"));
}
