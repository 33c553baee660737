// gqtool station --log FILE.

#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <unistd.h>

static QStringList linesOf(const QString& path)
{
    return QString::fromUtf8(contentOf(path)).split('\n', Qt::SkipEmptyParts);
}

TEST(GqtoolLog, holdsTheLinesOfTheConsoleWithTheirTime)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("station.log");
    const QDateTime before = QDateTime::currentDateTime();
    RunningStation station({"--log", path});
    station.call({"systemState"});
    QStringList console = {"listening on " + station.endpoint};
    for (int i = 0; i < 3; ++i) // connected, answered, gone
        console.append(station.nextLine());
    const QDateTime after = QDateTime::currentDateTime();
    station.end();

    QStringList logged;
    for (const QString& line : linesOf(path)) {
        const auto match = QRegularExpression("^<(\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d)> (.*)$").match(line);
        EXPECT_TRUE(match.hasMatch()) << line.toStdString();
        QDateTime time(before.date(), QTime::fromString(match.captured(1), "hh:mm:ss.zzz"));
        if (time < before) // logged after midnight
            time = time.addDays(1);
        EXPECT_LE(time, after) << line.toStdString();
        logged.append(match.captured(2));
    }
    EXPECT_EQ(logged, console);
}

TEST(GqtoolLog, holdsTheLinesOfAQuietStation)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("station.log");
    RunningStation station({"--quiet", "--log", path});
    station.call({"systemState"});
    station.end();
    EXPECT_EQ(station.outcome().output, "");
    EXPECT_GE(linesOf(path).size(), 2); // listening, connected; the others may come too late
}

TEST(GqtoolLog, appendsToTheFile)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("station.log");
    for (int i = 1; i <= 2; ++i) {
        RunningStation station({"--log", path});
        station.end();
        EXPECT_EQ(linesOf(path).size(), i);
    }
}

TEST(GqtoolLog, isGivenUpIfTheDiskIsFull)
{
    RunningStation station({"--log", "/dev/full"});
    EXPECT_EQ(station.nextError(),
              "gqtool: cannot write to /dev/full, the station continues without it: No space left on device");
    EXPECT_EQ(station.call({"systemState"}).output, "1\n");
    usleep(500000); // the log would be saved again
    station.end();
    EXPECT_EQ(station.outcome().errors, "");
}

TEST(GqtoolLog, exitsWith1IfTheFileCannotBeWritten)
{
    const QTemporaryDir folder;
    const Outcome outcome = run({"station", "--log", folder.filePath("missing/station.log")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: cannot write to ")) << outcome.errors.toStdString();
}
