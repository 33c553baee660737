// gqtool decode: what it finds in bytes, against the golden files, faults, and the library's own readers.

#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/recordDecoding.h"
#include "support/chance.h"
#include "support/goldenRecords.h"
#include "support/gqtoolProgram.h"
#include "support/hex.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

// --- Agreement ----------------------------------------------------------------------------------------------------

// What is found, as the library holds it.
static std::string foundIn(const Decoded& decoded, const Form& form)
{
    const std::unique_ptr<Content> found = form.make();
    // In an array, as older parsers take no other value alone.
    const QJsonDocument document = QJsonDocument::fromJson(QString("[%1]").arg(decoded.value).toUtf8());
    EXPECT_TRUE(document.isArray()) << decoded.value.toStdString();
    EXPECT_EQ(takeJson(document[0], *found).join('\n').toStdString(), "");
    return jsonOf(*found).toStdString();
}

static void findsWhatIsTold(const GoldenRecord& golden)
{
    const Decoded decoded = decode(*golden.form, golden.bytes + golden.behind);
    EXPECT_TRUE(decoded.faults.empty());
    EXPECT_EQ(decoded.disagreement.toStdString(), "");
    EXPECT_EQ(hex(decoded.behind), hex(golden.behind));
    EXPECT_EQ(foundIn(decoded, *golden.form), jsonOf(*golden.content()).toStdString());

    QByteArray fields;
    for (const DecodedField& field : decoded.fields) {
        if (field.offset >= 0) {
            EXPECT_EQ(field.offset, fields.size()) << field.name.toStdString();
            fields += field.bytes;
        }
    }
    EXPECT_EQ(hex(fields), hex(golden.bytes));
}

TEST(GqtoolDecode, findsInTheGoldenFilesWhatTheyTell)
{
    forEachGoldenRecord("records", 90, findsWhatIsTold);
    forEachGoldenRecord("waves", 10, findsWhatIsTold);
}

// Most lengths of long files differ in the place within a text alone.
static int step(int size)
{
    return size < 120 ? 1 : size / 40;
}

static void agreesOnEveryLength(const GoldenRecord& golden)
{
    const QByteArray whole = golden.bytes + golden.behind;
    const int size = golden.bytes.size();
    for (int length = 0; length < whole.size(); length += step(whole.size())) {
        SCOPED_TRACE(length);
        const Decoded decoded = decode(*golden.form, whole.left(length));
        EXPECT_EQ(decoded.disagreement.toStdString(), "");
        const bool isCutWave = golden.form->name == std::string("wave") && length >= 96;
        EXPECT_TRUE(length >= size || isCutWave || !decoded.faults.empty());
        for (const Fault& fault : decoded.faults)
            EXPECT_LE(fault.offset, length);
    }
}

TEST(GqtoolDecode, agreesWithTheLibraryOnFilesOfEveryLength)
{
    forEachGoldenRecord("records", 90, agreesOnEveryLength);
}

TEST(GqtoolDecode, agreesWithTheLibraryOnWavesOfEveryLength)
{
    forEachGoldenRecord("waves", 10, agreesOnEveryLength);
}

TEST(GqtoolDecode, agreesWithTheLibraryOnSpoiltFiles)
{
    Chance chance(1);
    int faulty = 0;
    const auto spoils = [&](const GoldenRecord& golden) {
        const QByteArray whole = golden.bytes + golden.behind;
        for (int round = 0; round < 8 && !whole.isEmpty(); ++round) {
            QByteArray spoilt = whole;
            const int at = chance.below(std::min(whole.size(), 120));
            spoilt[at] = static_cast<char>(chance.word());
            SCOPED_TRACE(hex(spoilt));
            const Decoded decoded = decode(*golden.form, spoilt);
            EXPECT_EQ(decoded.disagreement.toStdString(), "");
            faulty += !decoded.faults.empty();
        }
    };
    forEachGoldenRecord("records", 90, spoils);
    forEachGoldenRecord("waves", 10, spoils);
    EXPECT_GT(faulty, 50);
}

static QJsonArray parts(const Decoded& decoded)
{
    return QJsonDocument::fromJson(decoded.value.toUtf8()).array();
}

TEST(GqtoolDecode, findsInTheGoldenFramesWhatTheyTell)
{
    const QStringList names = QDir(GQLIB_GOLDEN "/frames").entryList({"*.json"});
    EXPECT_GE(names.size(), 30);
    for (const QString& name : names) {
        const std::string path = "frames/" + name.chopped(5).toStdString();
        SCOPED_TRACE(path);
        const QJsonObject json = goldenJson(path + ".json");
        const FrameSource source{json["transport"] == "udp", json["direction"] == "request", json["form"].toString()};
        const QByteArray bytes = goldenFile(path + ".hex");
        const Decoded decoded = decodeFrames(bytes, source);
        EXPECT_EQ(parts(decoded), json["value"].toArray()) << decoded.value.toStdString();
        EXPECT_EQ(decoded.disagreement.toStdString(), "");
        for (int length = 0; length < bytes.size(); ++length)
            EXPECT_EQ(decodeFrames(bytes.left(length), source).disagreement.toStdString(), "") << length;
    }
}

// --- Text ---------------------------------------------------------------------------------------------------------

TEST(GqtoolDecode, printsEachFieldWithItsOffsetAndBytes)
{
    const Outcome outcome = run({"decode", "--as", "pointInfo", "07000000 0400 70756d70 01000000 0200 c2b0 02000000"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.toStdString(), "     0  07 00 00 00                  pointId  7\n"
                                            "     4  04 00 70 75 6d 70            text1    \"pump\"\n"
                                            "    10  01 00 00 00                  code1    1\n"
                                            "    14  02 00 c2 b0                  text2    \"°\"\n"
                                            "    18  02 00 00 00                  code2    2\n"
                                            "library: 22, good, 22 bytes\n");
}

TEST(GqtoolDecode, printsListsAndWhatStandsBehindThem)
{
    const Outcome outcome =
        run({"decode", "--as", "boolDatas", "01000000 01 10270000 fa000000 02", "0a 0b 0c 0d 0e 0f 10 11 12"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.toStdString(), "     0  01 00 00 00                  count       1\n"
                                            "     4  01                           [0].value   1\n"
                                            "     5  10 27 00 00                  [0].stamp1  10000\n"
                                            "     9  fa 00 00 00                  [0].stamp2  250\n"
                                            "    13  02                           [0].flag1   2\n"
                                            "    14  0a 0b 0c 0d 0e 0f 10 11 ...  (behind), 9 bytes\n"
                                            "library: 1, good\n");
}

TEST(GqtoolDecode, printsJson)
{
    const Outcome outcome = run({"decode", "--json", "--as", "variant", "05 0000c07f 2a"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.toStdString(),
              R"({"as": "variant", "value": {"kind": 5, "floatValue": {"nan": "7fc00000"}}, "behind": "*", )"
              R"("fields": [{"offset": 0, "bytes": "05", "name": "kind", "value": 5}, )"
              R"({"offset": 1, "bytes": "0000c07f", "name": "floatValue", "value": {"nan": "7fc00000"}}], )"
              R"("faults": [], "library": {"result": 5, "meaning": "good, 5 bytes"}})"
              "\n");
}

TEST(GqtoolDecode, printsJsonThatParsesOfFaultyBytesToo)
{
    for (const QString bytes : {"01", "03000000 01", "03000000 01000000 0200 50", "03000000 01000000 0000 02000000"}) {
        const Outcome outcome = run({"decode", "--json", "--as", "pointInfos", bytes});
        SCOPED_TRACE(outcome.output.toStdString());
        EXPECT_EQ(outcome.exitCode, 1);
        QJsonParseError error;
        const QJsonDocument json = QJsonDocument::fromJson(outcome.output.toUtf8(), &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError);
        EXPECT_EQ(json["faults"].toArray().isEmpty(), false);
    }
}

TEST(GqtoolDecode, printsFrames)
{
    const Outcome outcome = run(
        {"decode", "--as", "frames", "--payload", "ints", "00", "68 08000000 0700 00 00 20 01000000 64000000 0000 16"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.toStdString(), "     0  00                           [0].garbage   \"00\"\n"
                                            "     1  68                           [1].start     \n"
                                            "     2  08 00 00 00                  [1].length    8\n"
                                            "     6  07 00                        [1].sequence  7\n"
                                            "     8  00                           [1].arg2      0\n"
                                            "     9  00                           [1].arg1      0\n"
                                            "    10  20                           [1].command   32\n"
                                            "    11  01 00 00 00 64 00 00 00      [1].payload   [100]\n"
                                            "    19  00 00                        [1].check     \"0000\"\n"
                                            "    21  16                           [1].end       \"16\"\n"
                                            "library: 1, good\n");
}

// --- Faults -------------------------------------------------------------------------------------------------------

struct Faulty {
    const char* form;
    const char* bytes;
    const char* errors; // lines, without the program's name
    const char* reader; // the last line of the output
};

TEST(GqtoolDecode, saysWhatIsWrongAndWhere)
{
    const char* const emptyIntPoint = "07000000 0000 01000000 0000 0000 0000 02000000 03000000 04000000 0000 00 00"
                                      "05000000 06000000 07000000 08000000"
                                      "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000";
    for (const Faulty& faulty : {
             Faulty{"pointInfo", "07000000 0400 7075", "byte 4: text1 has 4 bytes, 2 are left\n",
                    "library: 0, too short, or a text is not whole"},
             Faulty{"boolData", "01 10270000 fa00", "byte 5: stamp2 wants 4 bytes, 2 are left\n",
                    "library: -5, too short"},
             Faulty{"floatRealDatas", "00000000",
                    "byte 4: the library's reader wants 22 bytes, and there are 4; the others may have any value\n",
                    "library: -5, below the bytes that a list must have, or that its count wants"},
             Faulty{"oneSecQuery", "07000000 01000000 02000000 03000000 04000000 0000",
                    "byte 22: the library's reader wants 23 bytes, and there are 22; the others may have any value\n",
                    "library: 0, the text is not whole, or no byte stands behind it"},
             Faulty{"intPoint", emptyIntPoint,
                    "byte 80: the library's reader wants 81 bytes, and there are 80; the others may have any value\n",
                    "library: 0, too short, or a text is not whole"},
             Faulty{"eventStates", "ffffffff 01000000",
                    "byte 0: 4294967295 items can't be in the 4 bytes that are left\n"
                    "byte 8: [0].switch1 wants 1 byte, 0 are left\n",
                    "library: not asked: it believes the number, and would ask for that much memory"},
             Faulty{"blobRealData", "67000000 10270000 fa000000 01 02 ffffffff 61",
                    "byte 14: bytes has 4294967295 bytes, 1 are left\n",
                    "library: not asked: it believes the number, and would ask for that much memory"},
             Faulty{"intPointWritten", "07000000", "byte 4: text1 wants 2 bytes, 0 are left\n",
                    "library: not asked: the library writes this form, and does not read it"},
             Faulty{"frames", "68 00000000 0000 00 00 20 0000 17 68 04000000 0000 00 00 20 0700",
                    "byte 12: the last byte of a frame is 16; a client drops this one\n"
                    "byte 25: the frame from byte 13 on wants 17 bytes, and there are 12\n",
                    "library: 0, [0] is no good frame to a client"},
             Faulty{"frames", "68 02000000 0000 00 00 01 0700 0000 16",
                    "byte 10: the payload has 2 bytes, its form (int) wants 4\n",
                    "library: -5, [0] has a payload that is shorter than its form"},
             Faulty{"frames", "00 01", "byte 0: there is no frame\n", "library: 1, good"},
             Faulty{"wave", "00 04", "byte 2: headFill1 wants 30 bytes, 0 are left\n",
                    "library: 0, refused: head, marks or samples are not whole"},
         }) {
        SCOPED_TRACE(faulty.form);
        const Outcome outcome = run({"decode", "--as", faulty.form, faulty.bytes});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(QString(outcome.errors).remove("gqtool: ").toStdString(), faulty.errors);
        EXPECT_EQ(outcome.output.trimmed().section('\n', -1).toStdString(), faulty.reader);
    }
}

TEST(GqtoolDecode, goesOnBehindATextThatIsTooLongForItsSlot)
{
    const QByteArray tooLong = "0a"_hex + "0101"_hex + QByteArray(256, 'x');
    const Form& form = *findForm("variantBlob");
    const Decoded decoded = decode(form, tooLong);
    ASSERT_EQ(decoded.faults.size(), 1u);
    EXPECT_EQ(decoded.faults[0].text, "textValue has 257 bytes, and its slot room for 256");
    EXPECT_EQ(decoded.faults[0].offset, 1);
    EXPECT_EQ(decoded.fields.size(), 2u);
    EXPECT_EQ(decoded.result, -1);
    EXPECT_EQ(decoded.disagreement, "");
}

TEST(GqtoolDecode, saysWhereTheListReaderOfCommItemsLosesStep)
{
    const QByteArray item = "05000000 0000 0000 0000 01 02 0000 09000000 0000"_hex; // with a text4 of 0 bytes
    const Decoded decoded = decode(*findForm("commItems"), "02000000"_hex + item + item + QByteArray(9, 'x'));
    ASSERT_EQ(decoded.faults.size(), 1u);
    EXPECT_EQ(decoded.faults[0].offset, 24);
    EXPECT_EQ(decoded.faults[0].text,
              "the library's list reader goes on at byte 22, for the text4 ahead has not 2 bytes");
    EXPECT_EQ(decoded.behind, QByteArray(9, 'x'));
}

TEST(GqtoolDecode, readsMarksAndSamplesOfAWaveThatTheLibraryRefuses)
{
    QByteArray wave(96, '\0');
    wave[52] = 1;
    const Decoded decoded = decode(*findForm("wave"), wave + "07000000 0000c03f"_hex);
    ASSERT_EQ(decoded.faults.size(), 1u);
    EXPECT_EQ(decoded.faults[0].offset, 96);
    EXPECT_EQ(decoded.faults[0].text, "1 marks, and the 96 bytes of samples that the library's reader wants behind "
                                      "marks, are 100 bytes; 8 are left");
    EXPECT_TRUE(decoded.value.endsWith("\"marks\": [7], \"samples\": [1.5]}")) << decoded.value.toStdString();
    EXPECT_EQ(decoded.result, 0);
}

TEST(GqtoolDecode, saysWhatIsWrongWithACompressedBlock)
{
    QByteArray wave = goldenFile("waves/floatsPacked.hex");
    EXPECT_EQ(decode(*findForm("wave"), wave.chopped(1)).faults.at(0).text, "the zlib stream is cut");
    wave[108] = 'x' + 1;
    const Decoded decoded = decode(*findForm("wave"), wave);
    EXPECT_EQ(decoded.faults.at(0).offset, 108);
    EXPECT_EQ(decoded.faults.at(0).text, "no zlib stream: incorrect header check");
    EXPECT_EQ(decoded.disagreement, "");
}

// --- Usage --------------------------------------------------------------------------------------------------------

TEST(GqtoolDecode, listsTheForms)
{
    const Outcome outcome = run({"decode", "--list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.count('\n'), static_cast<int>(recordForms().size()) + 2); // a title, frames
    EXPECT_TRUE(outcome.output.startsWith("Forms:\n  pointInfo          a point, short form\n"));
    EXPECT_TRUE(run({"decode", "--help"}).output.contains("\n  wave               a stored wave\n"));
}

TEST(GqtoolDecode, listsTheFormsAsJson)
{
    const Outcome outcome = run({"decode", "--list", "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.count('\n'), static_cast<int>(recordForms().size()) + 1); // frames
    EXPECT_TRUE(outcome.output.startsWith(R"({"content":"a point, short form","form":"pointInfo"})"
                                          "\n"));
}

TEST(GqtoolDecode, endsWithTwoOnWrongUsage)
{
    struct Usage {
        QStringList words;
        const char* message;
    };
    for (const Usage& usage :
         {Usage{{}, "what are the bytes? say --as FORM; --list shows the forms"},
          Usage{{"01"}, "what are the bytes? say --as FORM; --list shows the forms"},
          Usage{{"--as", "float", "01"}, "no form 'float'; --list shows the forms"},
          Usage{{"--as", "wave"}, "no bytes; give hex text, --file FILE, or - for standard input"},
          Usage{{"--as", "wave", "--udp", "00"}, "--udp, --request and --payload go with --as frames"},
          Usage{{"--as", "frames", "--payload", "floats", "00"},
                "no payload 'floats'; one of int, ints, bytes, strings"},
          Usage{{"--nonsense"}, "Unknown option 'nonsense'."}}) {
        SCOPED_TRACE(usage.words.join(' ').toStdString());
        const Outcome outcome = run(QStringList{"decode"} + usage.words);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.toStdString(),
                  std::string("gqtool: ") + usage.message + "\ngqtool: see 'gqtool decode --help'\n");
    }
}
