#include "support/frames.h"
#include "support/gqtoolProgram.h"
#include "support/inputFile.h"
#include "support/scriptedServer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// `gqtool call --map` with the simulated station.

class GqtoolMap : public ::testing::Test {
protected:
    void write(const QByteArray& text) { writeTo(path, text); }

    Outcome call(const QStringList& words) { return run(QStringList{"call", "--map", path, station.endpoint} + words); }

    const QTemporaryDir folder;
    const QString path = folder.filePath("plant.map");
    RunningStation station;
};

static const char* const values = "0x35 currentValues int bytes:pointRealDatas\n";

TEST_F(GqtoolMap, printsALineForEachRecord)
{
    write(values);
    const Outcome outcome = call({"currentValues", "0"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    const QStringList lines = outcome.output.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(lines[i].contains(QRegularExpression("^pointKind [123], pointId [123]00[0-2], value [-.0-9e]+, "
                                                         "intValue \\d+, stamp1 \\d+, stamp2 \\d+, flag1 \\d+, "
                                                         "flag2 \\d+$")))
            << lines[i].toStdString();
    EXPECT_EQ(call({"0x35", "0"}).output.count('\n'), 5); // by its number too
    EXPECT_EQ(call({"53", "0"}).output.count('\n'), 5);
}

TEST_F(GqtoolMap, printsALineForEachFieldOfASingleRecord)
{
    write("0x38 object int bytes:objectBlob\n");
    const Outcome outcome = call({"object", "0"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.output.contains("\nword1 ")) << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.contains("\nproperties[0].value.kind ")) << outcome.output.toStdString();
}

TEST_F(GqtoolMap, printsRecordsAsJson)
{
    write(values);
    const Outcome outcome = run({"call", "--map", path, "--json", station.endpoint, "currentValues", "0"});
    const QJsonObject json = QJsonDocument::fromJson(outcome.output.toUtf8()).object();
    EXPECT_EQ(json["result"], "good");
    ASSERT_EQ(json["value"].toArray().size(), 5);
    EXPECT_EQ(json["value"].toArray()[0].toObject()["pointId"], 1000);
}

TEST_F(GqtoolMap, makesTheRequestAndReadsTheReplyInTheirForms)
{
    write("0x20 someInts int ints\n"
          "0x21 someBytes hex bytes\n"
          "0x22 someTexts int strings\n"
          "5 clock intPair int\n"
          "6 mode ints int\n"
          "1 state - int\n");
    EXPECT_EQ(call({"someInts", "2"}).output, "200\n210\n");
    EXPECT_EQ(call({"someBytes", "03", "00", "00", "00"}).output, "00 01 02\n");
    EXPECT_EQ(call({"someTexts", "2"}).output.count('\n'), 2);
    EXPECT_EQ(call({"clock", "7", "8"}).exitCode, 0);
    EXPECT_EQ(call({"mode", "-4", "5"}).exitCode, 0);
    Outcome outcome = run({"call", station.endpoint, "systemState"});
    EXPECT_EQ(outcome.output, "2\n"); // the count of the list
    outcome = call({"state"});        // the station wants an integer
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: request 'state' to " + station.endpoint + " failed with -11: "))
        << outcome.errors.toStdString();
}

TEST_F(GqtoolMap, readsFramesUntilTheListHasItsCount)
{
    write("0x20 someInts int ints\n");
    EXPECT_EQ(call({"someInts", "250"}).output.count('\n'), 100); // the first frame
    EXPECT_EQ(run({"call", "--map", path, "--count", "250", station.endpoint, "someInts", "250"}).output.count('\n'),
              250);
}

TEST_F(GqtoolMap, reportsAReplyThatHasAnotherForm)
{
    write("0x35 currentValues int bytes:pointInfos\n");
    const Outcome outcome = call({"currentValues", "0"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(
        QRegularExpression("^gqtool: request 'currentValues' to \\S+ failed with -5: bad-frame: invalid pointInfos in "
                           "139 bytes: byte \\d+: \\[0\\]\\.")))
        << outcome.errors.toStdString();

    const Outcome json = run({"call", "--json", "--map", path, station.endpoint, "currentValues", "0"});
    EXPECT_EQ(json.exitCode, 1);
    const QJsonObject object = QJsonDocument::fromJson(json.output.toUtf8()).object();
    EXPECT_EQ(object["result"], "failed");
    EXPECT_EQ(object["code"], -5);
    EXPECT_EQ(object["cause"], "bad-frame");
    EXPECT_TRUE(object["meaning"].toString().startsWith("invalid pointInfos in 139 bytes: byte "));

    const Outcome run3 = run({"call", "--repeat", "3", "--map", path, station.endpoint, "currentValues", "0"});
    EXPECT_EQ(run3.exitCode, 1);
    EXPECT_TRUE(run3.output.startsWith(
        "requests    3\nfailures    3\n            3 failed with -5: bad-frame: invalid pointInfos in 139 bytes\n"))
        << run3.output.toStdString();
}

TEST_F(GqtoolMap, warnsOfBytesAfterTheRecords)
{
    write("0x21 picture int bytes:boolData\n");
    const Outcome outcome = call({"picture", "12"}); // a boolData has 10 bytes
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "value 0\nstamp1 67305985\nstamp2 134678021\nflag1 9\n");
    EXPECT_TRUE(outcome.errors.endsWith(": warning: 2 of the 12 bytes are left over after the boolData\n"))
        << outcome.errors.toStdString();
    const Outcome runs = run({"call", "--repeat", "3", "--map", path, station.endpoint, "picture", "12"});
    EXPECT_EQ(runs.exitCode, 0);
    EXPECT_TRUE(
        runs.output.startsWith("requests    3\nfailures    0\nwarnings    3\n            the first: 2 of the 12 "
                               "bytes are left over after the boolData\n"))
        << runs.output.toStdString();
    const Outcome json = run({"call", "--json", "--repeat", "3", "--map", path, station.endpoint, "picture", "12"});
    const QJsonObject sum = QJsonDocument::fromJson(json.output.section('\n', 3, 3).toUtf8()).object();
    EXPECT_EQ(sum["requests"], 3);
    EXPECT_EQ(sum["warnings"], 3);
}

TEST_F(GqtoolMap, listsTwentyErrorsAndCountsTheOthers)
{
    write(QByteArray("x\n").repeated(25));
    const QStringList errors = call({"x"}).errors.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(errors.size(), 21);
    EXPECT_TRUE(errors[19].contains(": line 20: ")) << errors[19].toStdString();
    EXPECT_EQ(errors[20], "gqtool: 5 more errors");
}

TEST_F(GqtoolMap, printsNoControlCharacterOfTheFile)
{
    write("\x1b[2J\a\n");
    EXPECT_TRUE(call({"x"}).errors.endsWith(", got '\uFFFD[2J\uFFFD'\n"));
}

TEST_F(GqtoolMap, failsIfTheListOfBytesIsEmpty)
{
    write("0x21 picture int bytes:boolData\n");
    ScriptedServer server{{sends(greeting), receives(17), sends("68 04000000 0000 00 00 21 00000000 0000 16"_hex)}};
    const Outcome outcome = run({"call", "--map", path, QString("127.0.0.1:%1").arg(server.port()), "picture", "0"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.contains(" failed with -5: bad-frame: invalid boolData in 0 bytes: byte 0: "))
        << outcome.errors.toStdString();
}

TEST_F(GqtoolMap, decodesTheRecordsOfFrames)
{
    write("0x35 states int bytes:boolDatas\n0x36 state int bytes:boolData\n");
    const QStringList decode = {"decode", "--as", "frames", "--map", path};
    const QString list = "68 1c000000 0100 00 00 35 18000000 02000000 01 02000000 03000000 04 "
                         "00 05000000 06000000 07 0000 16";
    const QString single = "68 0e000000 0100 00 00 36 0a000000 01 02000000 03000000 04 0000 16";
    Outcome outcome = run(decode + QStringList{list, single});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    QStringList rows; // without bytes
    for (const QString& line : outcome.output.split('\n'))
        rows.append(QRegularExpression("^ *(\\d+)  .{27}  (\\S+) *(.*)$").match(line).capturedTexts().mid(1).join(' '));
    EXPECT_EQ(rows[5], "9 [0].command 0x35");
    EXPECT_TRUE(rows[6].startsWith("10 [0].payload [{\"value\": 1, ")) << rows[6].toStdString();
    const QStringList expected = {"14 [0].payload.count 2",     "18 [0].payload[0].value 1",
                                  "19 [0].payload[0].stamp1 2", "23 [0].payload[0].stamp2 3",
                                  "27 [0].payload[0].flag1 4",  "28 [0].payload[1].value 0"};
    EXPECT_EQ(rows.mid(7, 6), expected) << outcome.output.toStdString();
    EXPECT_TRUE(rows.contains("55 [1].payload.value 1")) << outcome.output.toStdString();

    outcome = run(decode + QStringList{"--json", list});
    const QJsonObject json = QJsonDocument::fromJson(outcome.output.toUtf8()).object();
    const QJsonObject frame = json["value"].toArray()[0].toObject();
    EXPECT_EQ(frame["command"], 53);
    EXPECT_EQ(frame["name"], "states");
    EXPECT_EQ(frame["form"], "bytes:boolDatas");
    EXPECT_EQ(frame["content"].toArray()[0].toObject()["stamp2"], 3);
    const InputFile frames(outcome.output.toUtf8());
    EXPECT_EQ(run({"encode", frames.path}).output.remove(QRegularExpression("\\s")), QString(list).remove(' '));

    outcome = run(decode + QStringList{"68 0d000000 0100 00 00 36 09000000 01 02000000 03000000 0000 16"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors.section('\n', 0, 0),
              "gqtool: BYTES: byte 10: in the records, byte 9: flag1 needs 1 byte, but only 0 bytes remain");
    EXPECT_EQ(run({"decode", "--as", "boolData", "--map", path, "00"}).exitCode, 2);
}

TEST_F(GqtoolMap, reportsWrongArguments)
{
    write(QByteArray(values) + "0x21 pair intPair int\n0x22 nothing - int\n0x23 bytes_ hex int\n");
    const auto errorOf = [&](const QStringList& words) {
        const Outcome outcome = call(words);
        EXPECT_EQ(outcome.exitCode, 2);
        return outcome.errors.section('\n', 0, 0).toStdString();
    };
    EXPECT_EQ(errorOf({"currentValues"}),
              "gqtool: currentValues requires INTEGER, got none; line 1 of the map has the request form int");
    EXPECT_EQ(errorOf({"currentValues", "1", "2"}),
              "gqtool: currentValues requires INTEGER, got '1 2'; line 1 of the map has the request form int");
    EXPECT_EQ(errorOf({"pair", "1"}),
              "gqtool: pair requires INTEGER INTEGER, got '1'; line 2 of the map has the request form intPair");
    EXPECT_EQ(errorOf({"nothing", "1"}),
              "gqtool: nothing takes no arguments, got '1'; line 3 of the map has the request form -");
    EXPECT_EQ(errorOf({"pair", "1", "x"}), "gqtool: INTEGER must be a 4-byte integer, got 'x'");
    EXPECT_TRUE(QString::fromStdString(errorOf({"bytes_", "0g"})).startsWith("gqtool: bytes_: line 1"));
    EXPECT_EQ(errorOf({"currentValue"}), "gqtool: unknown COMMAND 'currentValue'; did you mean 'currentValues'?");
    EXPECT_EQ(run({"call", "--map", path, station.endpoint, "--command", "6", "1"}).exitCode, 2);
    EXPECT_EQ(run({"call", "--count", "6", station.endpoint, "systemState"}).exitCode, 2);
}

TEST_F(GqtoolMap, reportsAWrongLineOrAMissingFile)
{
    write("# plant\n0x35 currentValues int bytes:values\n");
    Outcome outcome = call({"currentValues", "0"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors,
              "gqtool: " + path + ": line 2: REPLY has no form 'values'; gqtool decode --list prints the forms\n");
    outcome = run({"call", "--map", "/nowhere/plant.map", station.endpoint, "systemState"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot read /nowhere/plant.map: No such file or directory\n");
    outcome = run({"decode", "--as", "frames", "--map", "/nowhere/plant.map", "00"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot read /nowhere/plant.map: No such file or directory\n");
    outcome = run({"call", "--map", "/dev/zero", station.endpoint, "systemState"});
    EXPECT_EQ(outcome.errors, "gqtool: cannot read /dev/zero: more than 1048576 bytes\n");
}
