// gqtool --json: an object a line, of station, call and time.

#include "support/gqtoolProgram.h"
#include "support/timeZone.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>

static QJsonObject object(const QString& line)
{
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8(), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << line.toStdString();
    return document.object();
}

static QList<QJsonObject> objects(const Outcome& outcome)
{
    QList<QJsonObject> list;
    for (const QString& line : outcome.output.split('\n', Qt::SkipEmptyParts))
        list.append(object(line));
    return list;
}

// An object without the members that differ from run to run, as text; they are there.
static std::string text(QJsonObject object, const QStringList& varying)
{
    for (const QString& name : varying)
        EXPECT_FALSE(object.take(name).isUndefined()) << name.toStdString();
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

// --- call ---------------------------------------------------------------------------------------------------------

TEST(GqtoolJson, holdsTheReplyOfACall)
{
    RunningStation station;
    const struct {
        QStringList words;
        const char* value;
    } calls[] = {
        {{"systemState"}, "1"},
        {{"ints", "2"}, "[200,210]"},
        {{"bytes", "17"}, R"({"hex":"000102030405060708090a0b0c0d0e0f10"})"},
        {{"strings", "2"}, R"(["unit 1 temperature 1","unit 1 temperature 2"])"},
    };
    for (const auto& call : calls) {
        const Outcome outcome = station.call(QStringList{"--json"} + call.words);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
        ASSERT_EQ(outcome.output.count('\n'), 1);
        EXPECT_EQ(text(object(outcome.output), {"ms", "target"}),
                  std::string(R"({"code":1,"meaning":"success","result":"good","value":)") + call.value + "}");
    }
}

TEST(GqtoolJson, holdsTheFailureOfACall)
{
    RunningStation station;
    const Outcome outcome = station.call({"--json", "error", "--", "-7"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(
        text(object(outcome.output), {"ms", "target"}),
        R"({"cause":"error-frame","code":-7,"meaning":"the server's own code, from an error frame","result":"failed","value":null})");
}

TEST(GqtoolJson, holdsTheTimeOfACall)
{
    RunningStation station({"--late", "50"});
    EXPECT_GE(object(station.call({"--json", "systemState"}).output)["ms"].toDouble(), 50);
}

TEST(GqtoolJson, holdsEachReplyOfARunAndTheTotals)
{
    const QTemporaryDir folder;
    QFile script(folder.filePath("faults.txt"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("reply 2 error -7");
    script.close();
    RunningStation station({"--script", script.fileName()});
    const Outcome outcome = station.call({"--json", "--repeat", "3", "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    const QList<QJsonObject> lines = objects(outcome);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(text(lines[0], {"ms", "target"}),
              R"({"code":1,"meaning":"success","request":1,"result":"good","value":1})");
    EXPECT_EQ(text(lines[1], {"ms", "target", "meaning"}),
              R"({"cause":"error-frame","code":-7,"request":2,"result":"failed","value":null})");
    EXPECT_EQ(text(lines[2], {"ms", "target"}),
              R"({"code":1,"meaning":"success","request":3,"result":"good","value":1})");
    EXPECT_EQ(text(lines[3], {"perSecond", "leastMs", "medianMs", "largestMs"}), R"({"failures":1,"requests":3})");
    const double first = lines[0]["ms"].toDouble();
    const double third = lines[2]["ms"].toDouble();
    EXPECT_DOUBLE_EQ(lines[3]["leastMs"].toDouble(), std::min(first, third));
    EXPECT_DOUBLE_EQ(lines[3]["medianMs"].toDouble(), (first + third) / 2);
    EXPECT_DOUBLE_EQ(lines[3]["largestMs"].toDouble(), std::max(first, third));
}

// --- station ------------------------------------------------------------------------------------------------------

TEST(GqtoolJson, holdsTheEventsOfAStation)
{
    const QTemporaryDir folder;
    QFile script(folder.filePath("faults.txt"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("reply 2 silent\nreply 3 close-after 12\ngreeting 3 close-after 5\nreply 4 down 1");
    script.close();
    RunningProgram station(GQTOOL, {"station", "--json", "--udp", "--script", script.fileName()});
    const QJsonObject listening = object(station.nextLine());
    const QString endpoint = listening["endpoint"].toString();
    EXPECT_TRUE(endpoint.startsWith("127.0.0.1:"));
    EXPECT_EQ(text(listening, {"endpoint"}), R"({"event":"listening"})");
    const auto expectNext = [&](const char* expected) {
        EXPECT_EQ(text(object(station.nextLine()), {"peer"}), expected);
    };

    run({"call", endpoint, "ints", "2"});
    expectNext(R"({"event":"connected"})");
    expectNext(
        R"({"bytes":17,"command":32,"event":"request","outcome":"answered","reply":1,"sent":25,"transport":"TCP"})");
    expectNext(R"({"event":"gone"})");
    run({"call", "--udp", "--timeout", "100", endpoint, "systemState"});
    expectNext(
        R"({"bytes":64,"command":1,"event":"request","outcome":"not answered","reply":2,"sent":0,"transport":"UDP"})");
    run({"call", endpoint, "systemState"});
    expectNext(R"({"event":"connected"})");
    expectNext(
        R"({"bytes":17,"command":1,"event":"request","outcome":"closed","reply":3,"sent":12,"transport":"TCP"})");
    run({"call", endpoint, "systemState"});
    expectNext(R"({"event":"connected"})");
    expectNext(R"({"event":"closed","sent":5})");
    run({"call", endpoint, "systemState"});
    expectNext(R"({"event":"connected"})");
    expectNext(R"({"bytes":17,"command":1,"event":"request","outcome":"closed","reply":4,"sent":0,"transport":"TCP"})");
    EXPECT_EQ(text(object(station.nextLine()), {}), R"({"event":"down","ms":1})");
    EXPECT_EQ(text(object(station.nextLine()), {}), R"({"event":"up"})");
}

// --- time ---------------------------------------------------------------------------------------------------------

TEST(GqtoolJson, holdsTheMomentAndTheTextsOfACode)
{
    const QStringList inBerlin = {"time", "--json", "--zone", "Europe/Berlin", "--base", "2021-03-31 10:20:30"};
    EXPECT_EQ(text(object(run(inBerlin + QStringList{"155"}).output), {"english"}),
              R"({"base":1617178830,"code":155,"local":"2021-03-05 00:00:00+01:00","moment":1614898800,"text":"5号"})");
    EXPECT_EQ(object(run(inBerlin + QStringList{"155"}).output)["english"].toString(), "5 (day of the month)");
    const QJsonObject none = object(run(inBerlin + QStringList{"1133"}).output);
    EXPECT_TRUE(none["moment"].isNull());
    EXPECT_TRUE(none["local"].isNull());
}

TEST(GqtoolJson, holdsTheNumberLine)
{
    const QList<QJsonObject> families =
        objects(run({"time", "--json", "--list", "--base", "1617178830", "--zone", "UTC"}));
    ASSERT_GT(families.size(), 40);
    EXPECT_EQ(families[2]["meaning"].toString(), "start of the day N days before (code - 2)");
    EXPECT_EQ(families[2]["first"].toObject()["code"].toInt(), 3);
    EXPECT_EQ(families[2]["first"].toObject()["moment"].toInt(), 1617062400);
    EXPECT_EQ(families[2]["last"].toObject()["code"].toInt(), 33);
}
