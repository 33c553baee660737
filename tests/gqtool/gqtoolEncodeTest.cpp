// gqtool encode: the bytes of golden files, and its errors. decodeAgreementTest.cpp encodes more of them.

#include "support/goldenRecords.h"
#include "support/gqtoolProgram.h"
#include "support/hex.h"

#include <QJsonDocument>
#include <QTemporaryFile>

#include <gtest/gtest.h>

static Outcome encode(const QByteArray& json)
{
    QProcess process;
    process.start(GQTOOL, {"encode"});
    process.write(json);
    process.closeWriteChannel();
    if (!process.waitForFinished(waitMs))
        return {-1, QString(), "did not end"};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

static std::string hexOf(const Outcome& outcome)
{
    EXPECT_EQ(outcome.errors.toStdString(), "");
    EXPECT_EQ(outcome.exitCode, 0);
    return hex(QByteArray::fromHex(outcome.output.toLatin1()));
}

// A record of each family, a list, a wave; goldenRecordsTest.cpp has them all, without the program.
TEST(GqtoolEncode, makesTheBytesOfGoldenFiles)
{
    for (const char* path : {"records/floatPoints", "records/commItems", "records/objectBlob", "records/blobDatas",
                             "records/oneSecQuery", "records/intPoints", "records/ybItemsWritten", "waves/quantised",
                             "waves/floatsOdd", "records/variantFloat"}) {
        const Outcome outcome = run({"encode", QString(GQLIB_GOLDEN "/") + path + ".json"});
        EXPECT_EQ(hexOf(outcome), hex(goldenFile(std::string(path) + ".hex"))) << path;
    }
}

TEST(GqtoolEncode, makesTheBytesOfGoldenFrames)
{
    for (const char* name :
         {"twoFrames", "replyStringsOverrun", "cutTail", "cutHeader", "cutPayload", "impossibleLength", "wrongEnd",
          "garbageAhead", "udpSetTimeRequest", "replyBytesShort", "sequenceWrap"}) {
        const Outcome outcome = run({"encode", QString(GQLIB_GOLDEN "/frames/%1.json").arg(name)});
        EXPECT_EQ(hexOf(outcome), hex(goldenFile(std::string("frames/") + name + ".hex"))) << name;
    }
}

TEST(GqtoolEncode, acceptsWhatDecodePrints)
{
    const Outcome decoded = run({"decode", "--json", "--as", "variant", "05 0000c07f 2a"});
    EXPECT_EQ(hexOf(encode(decoded.output.toUtf8())), "05 00 00 c0 7f 2a");
    const Outcome frame = run({"decode", "--json", "--as", "frames", "68 01000000 0700 02 03 20 aa 0000 16"});
    EXPECT_EQ(hexOf(encode(frame.output.toUtf8())), "68 01 00 00 00 07 00 02 03 20 aa 00 00 16");
}

TEST(GqtoolEncode, acceptsWhatDecodePrintsOfWaves)
{
    for (const char* name : {"floats", "quantised", "raw"}) {
        const std::string path = std::string("waves/") + name + ".hex";
        const Outcome decoded =
            run({"decode", "--json", "--as", "wave", "--file", GQLIB_GOLDEN "/" + QString::fromStdString(path)});
        EXPECT_EQ(decoded.exitCode, 0);
        EXPECT_EQ(hexOf(encode(decoded.output.toUtf8())), hex(goldenFile(path))) << name;
    }
}

TEST(GqtoolEncode, acceptsATextWithAZeroByte)
{
    const char* json = R"({"as": "variant", "value": {"kind": 10, "textValue": "a\u0000b"}, "behind": "\u0000"})";
    EXPECT_EQ(hexOf(encode(json)), "0a 03 00 61 00 62 00");
}

TEST(GqtoolEncode, printsRawBytes)
{
    QProcess process;
    process.start(GQTOOL, {"encode", "--raw"});
    process.write(R"({"as": "variant", "value": {"kind": 0, "intValue": 657930}})");
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(waitMs));
    EXPECT_EQ(hex(process.readAllStandardOutput()), "00 0a 0a 0a 00");
}

TEST(GqtoolEncode, computesWhatAFrameLeavesOut)
{
    EXPECT_EQ(hexOf(encode(R"({"as": "frames", "value": [
        {"command": 6, "arg1": 1, "arg2": 2, "sequence": 258, "payload": "03000000"}]})")),
              "68 04 00 00 00 02 01 02 01 06 03 00 00 00 00 00 16");
}

TEST(GqtoolEncode, prefersStoredIntegersToSamples)
{
    QJsonObject json = goldenJson("waves/raw.json");
    QJsonObject value = json["value"].toObject();
    value.remove("samples");
    json["value"] = value;
    EXPECT_EQ(hexOf(encode(QJsonDocument(json).toJson())), hex(goldenFile("waves/raw.hex")));
    value["samples"] = QJsonArray{1};
    json["value"] = value;
    EXPECT_EQ(hexOf(encode(QJsonDocument(json).toJson())), hex(goldenFile("waves/raw.hex")));
}

// --- Faults -------------------------------------------------------------------------------------------------------

TEST(GqtoolEncode, reportsErrorsWithThePathOfTheField)
{
    struct Wrong {
        const char* json;
        const char* errors; // lines, without the program's name
    };
    for (
        const Wrong& wrong : {
            Wrong{R"({"as": "intData", "value": {"value": 2147483648, "stamp1": -1, "stamp2": 1.5, "flag1": "1"}})",
                  "value.value must be an integer from -2147483648 to 2147483647, got 2147483648\n"
                  "value.stamp1 must be an integer from 0 to 4294967295, got -1\n"
                  "value.stamp2 must be an integer from 0 to 4294967295, got 1.5\n"
                  "value.flag1 must be an integer from 0 to 255, got \"1\"\n"
                  "value.flag2 is missing\n"},
            Wrong{R"({"as": "boolDatas", "value": [{"value": 1, "stamp1": 1, "stamp2": 1, "flag1": 1}, 7]})",
                  "value[1] must be an object, got 7\n"},
            Wrong{R"({"as": "boolData", "value": {"value": 1, "stamp1": 1, "stamp2": 1, "flag1": 1, "flag2": 1}})",
                  "value.flag2 is unknown; the fields are value, stamp1, stamp2, flag1\n"},
            Wrong{R"({"as": "boolDatas", "value": {}})", "value must be an array, got {}\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 5, "floatValue": 1e39}})",
                  "value.floatValue must fit into a float, got 1e+39\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 5, "floatValue": {"nan": "3f800000"}}})",
                  "value.floatValue.nan must be the bits of a NaN, got \"3f800000\"\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 6, "doubleValue": "1"}})",
                  "value.doubleValue must be a number, \"inf\", \"-inf\", \"-0\" or {\"nan\": 16 DIGITS}, got \"1\"\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 10, "textValue": {"hex": "0"}}})",
                  "value.textValue must be a string of valid Unicode or {\"hex\": DIGITS}, got {\"hex\":\"0\"}\n"},
            Wrong{R"({"as": "yxItem", "value": {"itemId": 1, "text1": {"hex": "ff"}, "text2": "", "text3": "",
                      "flag1": 0, "word1": 0, "word2": 0, "flag2": 0, "word3": 0, "flag3": 0, "flag4": 0, "flag5": 0,
                      "flag6": 0, "text4": ""}})",
                  "value.text1 must be UTF-8: the library writes this text as UTF-8\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 5, "floatValue": true}})",
                  "value.floatValue must be a number, \"inf\", \"-inf\", \"-0\" or {\"nan\": 8 DIGITS}, got true\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 6, "doubleValue": {"nan": "3ff0000000000000"}}})",
                  "value.doubleValue.nan must be the bits of a NaN, got \"3ff0000000000000\"\n"},
            Wrong{R"({"as": "float", "value": 1})", "as must be a form of 'gqtool decode --list', got \"float\"\n"},
            Wrong{R"({"as": "wave"})", "value is missing\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 1}, "rest": 1})",
                  "rest is unknown; the members are as, behind, direction, faults, fields, form, library, "
                  "moreFaults, transport, value\n"},
            Wrong{R"({"as": "variant", "value": {"kind": 1}, "behind": 5})",
                  "behind must be a string of valid Unicode or {\"hex\": DIGITS}, got 5\n"},
            Wrong{R"({"as": "frames", "value": 5})", "value must be an array, got 5\n"},
            Wrong{R"({"as": "frames", "value": [5, {"command": 256, "arg1": 0, "arg2": 0, "sequence": 0}]})",
                  "value[0] must be an object, got 5\n"
                  "value[1].command must be an integer from 0 to 255, got 256\n"
                  "value[1].payload is missing\n"},
            Wrong{R"({"as": "frames", "value": [{"command": 1, "arg1": 0, "arg2": 0, "payload": "0", "content": 1}]})",
                  "value[0].sequence is missing\n"
                  "value[0].payload must be a string of hex digits, two per byte, got \"0\"\n"},
            Wrong{
                R"({"as": "frames", "value": [{"command": 1, "arg1": 0, "arg2": 0, "sequence": 0, "payload": "07000000",
                      "length": 5, "check": "000000", "end": ""}]})",
                "value[0].length must be the size of the payload, 4, got 5\n"
                "value[0].end must have 1 byte, got 0\n"
                "value[0].check must have 2 bytes, got 3\n"},
            Wrong{
                R"({"as": "frames", "value": [{"garbage": "00", "sequense": 0}]})",
                "value[0].sequense is unknown; the members are offset, garbage, header, length, sequence, arg2, arg1, "
                "command, name, payload, form, content, rest, check, end, fault\n"},
        }) {
        SCOPED_TRACE(wrong.json);
        const Outcome outcome = encode(wrong.json);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(QString(outcome.errors).remove("gqtool: standard input: ").toStdString(), wrong.errors);
    }
}

// Members of a fixed number of bytes or items.
TEST(GqtoolEncode, refusesAnotherNumberOfBytesOrItems)
{
    const auto errorsWith = [](const char* path, const char* member, const QJsonValue& replacement) {
        QJsonObject json = goldenJson(path);
        QJsonObject value = json["value"].toObject();
        value[member] = replacement;
        json["value"] = value;
        const Outcome outcome = encode(QJsonDocument(json).toJson());
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        return outcome.errors;
    };
    EXPECT_EQ(errorsWith("waves/raw.json", "headFill1", "abc"),
              "gqtool: standard input: value.headFill1 must have 30 bytes, got 3\n");
    EXPECT_EQ(errorsWith("waves/raw.json", "marks", QJsonArray{1, 2}),
              "gqtool: standard input: value.marks must have markCount items, 3, got 2\n");
    EXPECT_EQ(errorsWith("records/floatPoint.json", "levels", QJsonArray{1, 2}),
              "gqtool: standard input: value.levels must have 8 items, got 2\n");
    QJsonArray properties;
    for (int i = 0; i < 65536; ++i)
        properties.append(QJsonObject());
    EXPECT_TRUE(errorsWith("records/object.json", "properties", properties)
                    .startsWith("gqtool: standard input: value.properties must have at most 65535 items, got 65536\n"));
}

TEST(GqtoolEncode, refusesATextThatIsTooLongForItsLength)
{
    const QByteArray text(65536, 'x');
    EXPECT_EQ(encode("{\"as\": \"variant\", \"value\": {\"kind\": 10, \"textValue\": \"" + text + "\"}}").errors,
              "gqtool: standard input: value.textValue must have at most 65535 bytes, got 65536\n");
    EXPECT_EQ(encode("{\"as\": \"variantBlob\", \"value\": {\"kind\": 10, \"textValue\": \"" + text + "\"}}").errors,
              "gqtool: standard input: value.textValue must have at most 256 bytes, got 65536\n");
}

TEST(GqtoolEncode, reportsWhereJsonIsInvalid)
{
    const Outcome outcome = encode("{\"as\": \"wave\",\n \"value\": }");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: standard input: line 2, column ")) << outcome.errors.toStdString();
    EXPECT_EQ(encode("[]").exitCode, 1);
    EXPECT_EQ(run({"encode", "/nonexistent"}).exitCode, 1);
    EXPECT_EQ(run({"encode", "a", "b"}).exitCode, 2);
}
