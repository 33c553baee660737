// gqtool with --encoding: texts of records that are not UTF-8.

#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/inputFile.h"
#include "support/runningTrace.h"

// A PointInfo: pointId 7, text1 of 4 bytes, code1 1, an empty text2, code2 2. "锅炉" is b9f8 c2af in GBK.
static const QString boilerInGbk = "07000000 0400 b9f8c2af 01000000 0000 02000000";

static QString jsonWith(const QString& text1)
{
    return QString(R"({"as": "pointInfo", "value": )"
                   R"({"pointId": 7, "text1": %1, "code1": 1, "text2": "", "code2": 2}})")
        .arg(text1);
}

static Outcome encode(const QString& text1, const QStringList& options)
{
    const InputFile json(jsonWith(text1).toUtf8());
    Outcome outcome = run(QStringList{"encode"} + options + QStringList{json.path});
    outcome.errors.remove(json.path);
    return outcome;
}

static std::string encoded(const QString& text1, const QStringList& options)
{
    const Outcome outcome = encode(text1, options);
    EXPECT_EQ(outcome.errors.toStdString(), "");
    EXPECT_EQ(outcome.exitCode, 0);
    return hex(QByteArray::fromHex(outcome.output.toLatin1()).mid(4, 6));
}

TEST(GqtoolEncoding, decodesTextsOfRecords)
{
    const Outcome table = run({"decode", "--as", "pointInfo", "--encoding", "GBK", boilerInGbk});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_TRUE(table.output.contains("text1    \"锅炉\"\n")) << table.output.toStdString();
    const Outcome json = run({"decode", "--json", "--as", "pointInfo", "--encoding", "gbk", boilerInGbk});
    EXPECT_TRUE(json.output.contains(R"("text1": "锅炉")")) << json.output.toStdString();
    EXPECT_TRUE(json.output.contains(R"("name": "text1", "value": "锅炉")")) << json.output.toStdString();
}

TEST(GqtoolEncoding, isUtf8UnlessSet)
{
    EXPECT_TRUE(run({"decode", "--as", "pointInfo", boilerInGbk}).output.contains(R"({"hex": "b9f8c2af"})"));
    EXPECT_EQ(encoded("\"Größ\"", {}), "06 00 47 72 c3 b6");
    EXPECT_EQ(encoded("\"Größ\"", {"--encoding", "utf-8"}), "06 00 47 72 c3 b6");
}

TEST(GqtoolEncoding, isSuggestedOnceForTextsThatAreNotUtf8)
{
    EXPECT_EQ(run({"decode", "--as", "pointInfo", "07000000 0400 c3a90041 01000000 0000 02000000"}).errors, "");
    const QString hint = "gqtool: some texts are not UTF-8; --encoding NAME, such as GBK, converts them\n";
    EXPECT_EQ(run({"decode", "--as", "pointInfo", boilerInGbk}).errors, hint);
    EXPECT_EQ(run({"decode", "--json", "--as", "pointInfos", "02000000" + boilerInGbk + boilerInGbk}).errors, hint);
    EXPECT_EQ(run({"decode", "--as", "pointInfo", "--encoding", "GBK", boilerInGbk}).errors, "");
    const QString utf8 = "07000000 0300 e99485 01000000 0000 02000000";
    EXPECT_EQ(run({"decode", "--as", "pointInfo", utf8}).errors, "");
    const InputFile map("64 boiler - bytes:pointInfo\n");
    EXPECT_EQ(run({"decode", "--as", "frames", "--map", map.path,
                   "68 18000000 0000 00 00 40 14000000 07000000 0400 b9f8c2af 01000000 0000 02000000 0000 16"})
                  .errors,
              hint);
}

TEST(GqtoolEncoding, encodesTextsOfRecords)
{
    EXPECT_EQ(encoded("\"锅炉\"", {"--encoding", "GBK"}), "04 00 b9 f8 c2 af");
    EXPECT_EQ(encoded("\"é+++\"", {"--encoding", "ISO-8859-1"}), "04 00 e9 2b 2b 2b");
    EXPECT_EQ(encoded("\"锅炉\"", {"--encoding", "UTF-16LE"}), "04 00 05 95 89 70") << "without a byte order mark";
    EXPECT_EQ(encoded(R"("a\u0000锅")", {"--encoding", "GBK"}), "04 00 61 00 b9 f8");
    EXPECT_EQ(encoded(R"({"hex": "ff00fe01"})", {"--encoding", "GBK"}), "04 00 ff 00 fe 01");
}

TEST(GqtoolEncoding, printsBytesThatAreNoTextInTheEncoding)
{
    for (const char* bytes : {"b9f8c2", "410a42"}) { // cut, a control character
        const QString record = QString("07000000 0300 %1 01000000 0000 02000000").arg(bytes);
        const Outcome outcome = run({"decode", "--as", "pointInfo", "--encoding", "GBK", record});
        EXPECT_TRUE(outcome.output.contains(QString(R"(text1    {"hex": "%1"})").arg(bytes)))
            << outcome.output.toStdString();
        const Outcome table =
            run({"decode", "--as", "pointInfos", "--encoding", "GBK", "--csv", "-", "01000000" + record});
        EXPECT_EQ(table.output,
                  QString("pointId,text1,code1,text2,code2\n7,\"{\"\"hex\"\": \"\"%1\"\"}\",1,,2\n").arg(bytes));
    }
}

TEST(GqtoolEncoding, refusesTextsThatTheEncodingLacks)
{
    const Outcome outcome = encode("\"😀\"", {"--encoding", "GBK"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.toStdString(),
              "gqtool: : value.text1 must be a text that can be written in GBK, or {\"hex\": DIGITS}, got \"😀\"\n");
}

TEST(GqtoolEncoding, isNamedAsTheUserDoes)
{
    EXPECT_TRUE(encode("\"😀\"", {"--encoding", "GB2312"}).errors.contains(" that can be written in GB2312, or "));
}

// The library writes the texts of front-end records as UTF-8.
TEST(GqtoolEncoding, leavesFrontEndRecordsInUtf8)
{
    const QString path = GQLIB_GOLDEN "/records/commItem";
    const Outcome plain = run({"decode", "--json", "--as", "commItem", "--file", path + ".hex"});
    const Outcome gbk = run({"decode", "--json", "--as", "commItem", "--encoding", "GBK", "--file", path + ".hex"});
    EXPECT_EQ(plain.output.toStdString(), gbk.output.toStdString());
    EXPECT_EQ(run({"encode", "--encoding", "GBK", path + ".json"}).output, run({"encode", path + ".json"}).output);
}

TEST(GqtoolEncoding, printsTextsOfRepliesByAMap)
{
    const InputFile answers(R"({"commands": [{"command": 64, "reply": {"bytes": ")" +
                            QString(boilerInGbk).remove(' ').toLatin1() + R"("}}]})");
    const InputFile map("64 boiler - bytes:pointInfo\n");
    const QStringList options = {"--map", map.path, "--encoding", "GBK"};
    RunningStation station({"--commands", answers.path, "--gap", "0"});
    const Outcome records = station.call(QStringList{"boiler"} + options);
    EXPECT_EQ(records.exitCode, 0) << records.errors.toStdString();
    EXPECT_TRUE(records.output.contains("\ntext1 \"锅炉\"\n")) << records.output.toStdString();
    EXPECT_EQ(records.errors, "");
    const Outcome utf8 = station.call({"boiler", "--map", map.path});
    EXPECT_EQ(utf8.exitCode, 0);
    EXPECT_EQ(utf8.errors, "gqtool: some texts are not UTF-8; --encoding NAME, such as GBK, converts them\n");
    const Outcome json = station.call(QStringList{"boiler", "--json"} + options);
    EXPECT_TRUE(json.output.contains(R"("text1":"锅炉")")) << json.output.toStdString();

    RunningTrace trace(station.port(), options);
    run(QStringList{"call", QString("127.0.0.1:%1").arg(trace.port), "boiler"} + options);
    QString line;
    while (!line.contains("<- boiler") && line != "no line")
        line = trace.nextLine();
    EXPECT_TRUE(line.contains(R"(text1 "锅炉")")) << line.toStdString();
}

TEST(GqtoolEncoding, refusesAnUnknownEncoding)
{
    const QStringList map = {"--map", "/dev/null", "127.0.0.1:5000"};
    for (const QStringList& command : {QStringList{"decode", "--as", "pointInfo", boilerInGbk}, QStringList{"encode"},
                                       QStringList{"call"} + map, QStringList{"trace", "--listen", "0"} + map}) {
        const Outcome outcome = run(command + QStringList{"--encoding", "nonsense"});
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_TRUE(outcome.errors.startsWith("gqtool: --encoding must be an encoding that Qt knows, such as GBK, got "
                                              "'nonsense'\n"))
            << outcome.errors.toStdString();
    }
}
