// The example programs of the log and of relative time.

#include "support/gqtoolProgram.h"
#include "support/logFolder.h"
#include "support/timeZone.h"

#include <QFile>
#include <QThread>

#include <memory>

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

class PollingService : public LogFolder {
protected:
    // Starts the service against a station, and waits until it has asked for the values twice.
    std::unique_ptr<RunningProgram> startAgainst(RunningStation& station, const QString& point) const
    {
        auto service = std::make_unique<RunningProgram>(example("pollingService"),
                                                        station.endpoint.split(':') + QStringList{path("log"), point});
        EXPECT_TRUE(station.nextLine().endsWith(" connected"));
        EXPECT_TRUE(station.nextLine().contains("command 0x35"));
        EXPECT_TRUE(station.nextLine().contains("command 0x35"));
        return service;
    }

    QStringList lines() const { return QString::fromStdString(content("log")).split('\n', Qt::SkipEmptyParts); }
};

TEST_F(PollingService, savesEveryLineBeforeASignalEndsIt)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        RunningStation station;
        const auto service = startAgainst(station, "3000"); // a breaker, which is closed
        EXPECT_EQ(service->end(signal), 0);
        QStringList texts;
        for (const QString& line : lines())
            texts += line.section(' ', 1);
        ASSERT_GE(texts.size(), 3);
        EXPECT_EQ(texts.takeLast(), "ended");
        for (const QString& text : texts)
            EXPECT_EQ(text, "point 3000: 1");
        QFile::remove(path("log"));
    }
}

TEST_F(PollingService, logsAPointThatTheServerLacks)
{
    RunningStation station;
    EXPECT_EQ(startAgainst(station, "7")->end(), 0);
    EXPECT_EQ(lines().value(0).section(' ', 1), "no point 7");
}

TEST_F(PollingService, logsThatThereIsNoServer)
{
    RunningProgram service(example("pollingService"), {"host", "5000", path("log"), "1"});
    while (lines().isEmpty())
        QThread::msleep(10);
    EXPECT_EQ(service.end(), 0);
    EXPECT_EQ(lines().value(0).section(' ', 1), "no values: -1");
}

TEST_F(PollingService, endsIfTheLogCannotBeWritten)
{
    const QString file = path("no folder") + "/log";
    const Outcome outcome = runProgram(example("pollingService"), {"host", "5000", file, "1"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "pollingService: cannot write " + file + "\n");
}

TEST(RelativeTime, printsMomentAndText)
{
    const TimeZone berlin("Europe/Berlin");
    // 2021-03-31 10:20:30 in Berlin; the 5th of its month began at 2021-03-04 23:00:00 UTC
    EXPECT_EQ(runProgram(example("relativeTime"), {"155", "1617178830"}).output,
              QString::fromUtf8("1614898800: 5号\n"));
}
