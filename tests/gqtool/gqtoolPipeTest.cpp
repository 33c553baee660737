// gqtool as the writer of a pipe whose reader goes away, as in 'gqtool ... | head -n 1', and with full or closed standard
// streams: no data is lost silently.

#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

class Pipeline {
public:
    explicit Pipeline(const QStringList& arguments)
    {
        tool.setStandardOutputProcess(&head);
        head.start("head", {"-n", "1"});
        tool.start(GQTOOL, arguments);
    }

    ~Pipeline() { tool.terminate(), tool.waitForFinished(waitMs); }

    // What the reader has taken, which is gone then.
    QString line()
    {
        EXPECT_TRUE(head.waitForFinished(waitMs));
        return head.readAllStandardOutput();
    }

    void expectEnd()
    {
        EXPECT_TRUE(tool.waitForFinished(waitMs));
        EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(tool.exitCode(), 1);
        EXPECT_EQ(tool.readAllStandardError(), "gqtool: cannot write to standard output: Broken pipe\n");
    }

private:
    QProcess head;
    QProcess tool;
};

TEST(GqtoolPipe, endsAStationAtItsNextLine)
{
    for (const QStringList& options : {QStringList{}, QStringList{"--json"}}) {
        Pipeline station(QStringList{"station"} + options);
        const QString endpoint = QRegularExpression("127[.0-9]+:\\d+").match(station.line()).captured();
        run({"call", endpoint, "systemState"});
        station.expectEnd();
    }
}

TEST(GqtoolPipe, endsARunOfCalls)
{
    RunningStation station;
    Pipeline calls({"call", "--repeat", "1000000", "--json", station.endpoint, "systemState"});
    EXPECT_TRUE(calls.line().startsWith("{"));
    calls.expectEnd();
}

TEST(GqtoolPipe, endsADecoding)
{
    const InputFile bytes(QByteArray::fromHex("68000000000700000020000016").repeated(10000)); // as text, 5 MB
    Pipeline frames({"decode", "--as", "frames", "--raw", "--file", bytes.path});
    EXPECT_TRUE(frames.line().startsWith("     0  68"));
    frames.expectEnd();
}

// A command line of the shell's, in which $gqtool is the program.
static Outcome runInShell(const QString& line)
{
    return runProgram("sh", {"-c", "gqtool=$0; " + line, GQTOOL});
}

TEST(GqtoolStreams, reportThatStandardOutputIsFull)
{
    for (const char* command : {"sum 01", "time 5 --json", "station", "--help", "--version"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = runInShell(QString("$gqtool %1 > /dev/full").arg(command));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors, "gqtool: cannot write to standard output: No space left on device\n");
    }
}

// The programs share their console.
TEST(GqtoolStreams, nameTheProgramInMessages)
{
    const Outcome outcome =
        runProgram("sh", {"-c", "\"$0\" \"$1\" --clients 1 --requests 4 > /dev/full", GQLOAD, GQTOOL});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqload: cannot write to standard output: No space left on device\n");
}

TEST(Gqload, refusesWrongArguments)
{
    const Outcome number = runProgram(GQLOAD, {"--clients", "0", GQTOOL});
    EXPECT_EQ(number.exitCode, 2);
    EXPECT_TRUE(number.errors.startsWith("gqload: --clients must be an integer from 1 to 2147483647, got '0'\n"))
        << number.errors.toStdString();
    const Outcome option = runProgram(GQLOAD, {"--client", "1", GQTOOL});
    EXPECT_EQ(option.exitCode, 2);
    EXPECT_TRUE(option.errors.startsWith("gqload: unknown option '--client'; did you mean '--clients'?\n"))
        << option.errors.toStdString();
    EXPECT_TRUE(runProgram(GQLOAD, {}).errors.startsWith("gqload: GQTOOL is required\n"));
}

TEST(GqtoolStreams, reportThatStandardOutputIsClosed)
{
    const Outcome outcome = runInShell("$gqtool sum 01 >&-");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to standard output: Bad file descriptor\n");
}

TEST(GqtoolStreams, reportThatStandardInputIsClosed)
{
    const Outcome outcome = runInShell("$gqtool sum - <&-");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot read standard input: Bad file descriptor\n");
}

TEST(GqtoolStreams, keepMessagesOutOfTheDataIfInputAndErrorsAreClosed)
{
    const Outcome outcome = runInShell("$gqtool sum zz <&- 2>&-");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
}

// gqtool opens "/" in place of each closed stream, and nowhere else.
TEST(GqtoolStreams, areLeftAloneIfAllAreOpen)
{
    RunningStation station;
    const QDir descriptors(QString("/proc/%1/fd").arg(station.pid()));
    const QFileInfoList all = descriptors.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    EXPECT_GE(all.size(), 3);
    for (const QFileInfo& descriptor : all)
        EXPECT_NE(descriptor.symLinkTarget(), "/") << descriptor.fileName().toStdString();
}
