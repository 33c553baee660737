// gqtool ahead of a reader that goes away, as in 'gqtool ... | head -n 1': it ends quietly.

#include "support/gqtoolProgram.h"

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

    void expectQuietEnd()
    {
        EXPECT_TRUE(tool.waitForFinished(waitMs));
        EXPECT_EQ(tool.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(tool.exitCode(), 0);
        EXPECT_EQ(tool.readAllStandardError(), "");
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
        station.expectQuietEnd();
    }
}

TEST(GqtoolPipe, endsARunOfCalls)
{
    RunningStation station;
    Pipeline calls({"call", "--repeat", "1000000", "--json", station.endpoint, "systemState"});
    EXPECT_TRUE(calls.line().startsWith("{"));
    calls.expectQuietEnd();
}

TEST(GqtoolPipe, endsAList)
{
    Pipeline list({"time", "--list", "--json"});
    EXPECT_TRUE(list.line().startsWith("{"));
    list.expectQuietEnd();
}
