// gqtool decode: its output, faults and usage. decodeAgreementTest.cpp compares what it decodes with the library.

#include "support/decodedBytes.h"
#include "support/goldenFile.h"
#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/inputFile.h"

#include <QJsonDocument>
#include <QRegularExpression>

#include <gtest/gtest.h>

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

// From U+202E on, a terminal would print from right to left.
TEST(GqtoolDecode, escapesDirectionControls)
{
    const QStringList words = {"decode", "--as", "pointInfo", "07000000 0800 41e280ae42e281a6 01000000 0000 02000000"};
    for (const QStringList& form : {QStringList(), QStringList{"--json"}}) {
        const Outcome outcome = run(words + form);
        EXPECT_TRUE(outcome.output.contains(R"("A\u202eB\u2066")")) << outcome.output.toStdString();
    }
    const InputFile json(run(words + QStringList{"--json"}).output.toUtf8());
    EXPECT_EQ(run({"encode", json.path}).output.remove(QRegularExpression("\\s")), QString(words[3]).remove(' '));
}

TEST(GqtoolDecode, printsListsAndTheBytesAfterThem)
{
    const Outcome outcome =
        run({"decode", "--as", "boolDatas", "01000000 01 10270000 fa000000 02", "0a 0b 0c 0d 0e 0f 10 11 12"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.toStdString(), "     0  01 00 00 00                  count       1\n"
                                            "     4  01                           [0].value   1\n"
                                            "     5  10 27 00 00                  [0].stamp1  10000\n"
                                            "     9  fa 00 00 00                  [0].stamp2  250\n"
                                            "    13  02                           [0].flag1   2\n"
                                            "    14  0a 0b 0c 0d 0e 0f 10 11 ...  (rest), 9 bytes\n"
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

// JSON has no NaN; a float's shortest digits can give the adjacent float if they are read as a double first.
TEST(GqtoolDecode, printsNumbersThatJsonReadersKeep)
{
    EXPECT_TRUE(run({"decode", "--json", "--as", "variant", "06 010000000000f87f"})
                    .output.contains(R"({"kind": 6, "doubleValue": {"nan": "7ff8000000000001"}})"));
    EXPECT_TRUE(run({"decode", "--json", "--as", "variant", "05 fd43ae15"}) // 7.038531e-26
                    .output.contains(R"({"kind": 5, "floatValue": 7.038530691851209e-26})"));
}

TEST(GqtoolDecode, printsValidJsonForFaultyBytes)
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
                                            "    10  20                           [1].command   0x20\n"
                                            "    11  01 00 00 00 64 00 00 00      [1].payload   [100]\n"
                                            "    19  00 00                        [1].check     \"0000\"\n"
                                            "    21  16                           [1].end       \"16\"\n"
                                            "library: 1, good\n");
}

TEST(GqtoolDecode, printsHowFramesAreReadAsJson)
{
    const struct {
        QStringList options;
        const char* members;
    } cases[] = {
        {{}, R"("transport": "tcp", "direction": "reply", )"},
        {{"--request"}, R"("transport": "tcp", "direction": "request", )"},
        {{"--udp"}, R"("transport": "udp", "direction": "reply", )"},
        {{"--payload", "ints"}, R"("transport": "tcp", "direction": "reply", "form": "ints", )"},
    };
    for (const auto& example : cases) {
        const QStringList words = {"decode", "--as", "frames", "--json", "68 00000000 0700 00 00 20 0000 16"};
        const QString json = run(words + example.options).output;
        EXPECT_TRUE(json.startsWith(QString(R"({"as": "frames", %1"value": [)").arg(example.members)))
            << json.toStdString();
    }
}

TEST(GqtoolDecode, printsControlCharactersOfTextsAsEscapes)
{
    // a text of 4 bytes: A, DEL, and U+009B, which begins a command of a terminal
    const QString frame = "68 0c000000 0700 00 00 20 01000000 0600 0400 417fc29b 0000 16";
    for (const QStringList& options : {QStringList{}, QStringList{"--json"}}) {
        const Outcome outcome = run(QStringList{"decode", "--as", "frames", "--payload", "strings", frame} + options);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_TRUE(outcome.output.contains(R"(["A\u007f\u009b"])")) << outcome.output.toStdString();
    }
}

// --- Faults -------------------------------------------------------------------------------------------------------

struct Faulty {
    const char* form;
    const char* bytes;
    const char* errors; // lines, without the program's name
    const char* reader; // the last line of the output
};

TEST(GqtoolDecode, reportsFaultsWithTheirOffset)
{
    const char* const emptyIntPoint = "07000000 0000 01000000 0000 0000 0000 02000000 03000000 04000000 0000 00 00"
                                      "05000000 06000000 07000000 08000000"
                                      "00000000 00000000 00000000 00000000 00000000 00000000 00000000 00000000";
    for (const Faulty& faulty : {
             Faulty{"pointInfo", "07000000 0400 7075", "byte 4: text1 has a length of 4, but only 2 bytes remain\n",
                    "library: 0, too short, or a text is incomplete"},
             Faulty{"boolData", "01 10270000 fa00", "byte 5: stamp2 needs 4 bytes, but only 2 bytes remain\n",
                    "library: -5, too short"},
             Faulty{"floatRealDatas", "00000000",
                    "byte 4: the reader needs 22 bytes, got 4; the missing ones may have any value\n",
                    "library: -5, fewer bytes than a list must have or than its count needs"},
             Faulty{"oneSecQuery", "07000000 01000000 02000000 03000000 04000000 0000",
                    "byte 22: the reader needs 23 bytes, got 22; the missing ones may have any value\n",
                    "library: 0, the text is incomplete, or no byte follows it"},
             Faulty{"intPoint", emptyIntPoint,
                    "byte 80: the reader needs 81 bytes, got 80; the missing ones may have any value\n",
                    "library: 0, too short, or a text is incomplete"},
             Faulty{"eventStates", "ffffffff 01000000",
                    "byte 0: count is 4294967295, but only 4 bytes remain\n"
                    "byte 8: [0].switch1 needs 1 byte, but only 0 bytes remain\n",
                    "library: not called: the reader trusts this number and would allocate that much memory"},
             Faulty{"blobRealData", "67000000 10270000 fa000000 01 02 ffffffff 61",
                    "byte 14: bytes has a length of 4294967295, but only 1 byte remains\n",
                    "library: not called: the reader trusts this number and would allocate that much memory"},
             Faulty{"intPointWritten", "07000000", "byte 4: text1 needs 2 bytes, but only 0 bytes remain\n",
                    "library: not called: the library writes this form and has no reader for it"},
             Faulty{"frames", "68 00000000 0000 00 00 20 0000 17 68 04000000 0000 00 00 20 0700",
                    "byte 12: the last byte of a frame must be 16, got 17; a client drops this frame\n"
                    "byte 25: the frame at byte 13 needs 17 bytes, got 12\n",
                    "library: 0, a client does not accept [0]"},
             Faulty{"frames", "68 02000000 0000 00 00 01 0700 0000 16",
                    "byte 10: the payload has 2 bytes, but its form (int) needs 4\n",
                    "library: -5, the payload of [0] is shorter than its form"},
             Faulty{"frames", "68 02000000 0000 00 00 ff 0700 0000 16",
                    "byte 10: the payload has 2 bytes, but its form (error) needs 4\n",
                    "library: -5, the payload of [0] is shorter than its form"},
             Faulty{"frames", "68 00000004 0000 00 00 01 00000007 0000 16", // up to 4 MiB are decoded
                    "byte 0: length in the wrong byte order, 67108864 instead of 4; a client would wait for the rest "
                    "of it\n",
                    "library: 0, a client does not accept [0]"},
             Faulty{"frames", "68 00000400 0000 00 00 01", // 0x40000
                    "byte 10: the frame at byte 0 needs 262157 bytes, got 10\n",
                    "library: 0, a client does not accept [0]"},
             Faulty{"frames", "00 01", "byte 0: no frame found\n", "library: 0, no frame found"},
             Faulty{"wave", "00 04", "byte 2: headFill1 needs 30 bytes, but only 0 bytes remain\n",
                    "library: 0, refused: head, marks or samples are incomplete"},
         }) {
        SCOPED_TRACE(faulty.form);
        const Outcome outcome = run({"decode", "--as", faulty.form, faulty.bytes});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(QString(outcome.errors).remove("gqtool: BYTES: ").toStdString(), faulty.errors);
        EXPECT_EQ(outcome.output.trimmed().section('\n', -1).toStdString(), faulty.reader);
    }
}

TEST(GqtoolDecode, namesTheFileOfAFault)
{
    const InputFile file("00 01");
    EXPECT_EQ(run({"decode", "--as", "frames", "--file", file.path}).errors,
              "gqtool: " + file.path + ": byte 0: no frame found\n");
    EXPECT_EQ(runProgram("sh", {"-c", "echo 00 01 | \"$0\" decode --as frames -", GQTOOL}).errors,
              "gqtool: standard input: byte 0: no frame found\n");
}

TEST(GqtoolDecode, continuesAfterATextThatIsTooLongForItsSlot)
{
    const QByteArray tooLong = "0a"_hex + "0101"_hex + QByteArray(256, 'x');
    const Form& form = *findForm("variantBlob");
    const Decoded decoded = decodeBytes(form, tooLong);
    ASSERT_EQ(decoded.faults.size(), 1u);
    EXPECT_EQ(decoded.faults[0].text, "textValue has a length of 257, but its slot holds at most 256 bytes");
    EXPECT_EQ(decoded.faults[0].offset, 1);
    EXPECT_EQ(decoded.fields.size(), 2u);
    EXPECT_EQ(decoded.result, -1);
}

TEST(GqtoolDecode, reportsWhereTheListReaderOfCommItemsContinues)
{
    const QByteArray item = "05000000 0000 0000 0000 01 02 0000 09000000 0000"_hex; // with a text4 of 0 bytes
    const Decoded decoded = decodeBytes(*findForm("commItems"), "02000000"_hex + item + item + QByteArray(9, 'x'));
    ASSERT_EQ(decoded.faults.size(), 1u);
    EXPECT_EQ(decoded.faults[0].offset, 24);
    EXPECT_EQ(decoded.faults[0].text,
              "the library's list reader continues at byte 22, because the previous text4 is not 2 bytes long");
    EXPECT_EQ(decoded.rest, QByteArray(9, 'x'));
}

TEST(GqtoolDecode, printsMarksAndSamplesOfAWaveThatTheLibraryRefuses)
{
    QByteArray wave(96, '\0');
    wave[52] = 1;
    const Decoded decoded = decodeBytes(*findForm("wave"), wave + "07000000 0000c03f"_hex);
    ASSERT_EQ(decoded.faults.size(), 1u);
    EXPECT_EQ(decoded.faults[0].offset, 96);
    EXPECT_EQ(decoded.faults[0].text,
              "a wave with marks needs at least 96 bytes of samples: with markCount 1, 100 bytes "
              "after the head, got 8");
    EXPECT_NE(decoded.value.find("\"marks\": [7], \"samples\": [1.5]}"), std::string::npos) << decoded.value;
    EXPECT_EQ(decoded.result, 0);
}

TEST(GqtoolDecode, reportsWhyABlockCannotBeUnpacked)
{
    QByteArray wave = goldenFile("waves/floatsPacked.hex");
    EXPECT_EQ(decodeBytes(*findForm("wave"), wave.chopped(1)).faults.at(0).text,
              "the zlib stream ends early, after 160 unpacked bytes");
    wave[108] = 'x' + 1;
    const Decoded decoded = decodeBytes(*findForm("wave"), wave);
    EXPECT_EQ(decoded.faults.at(0).offset, 108);
    EXPECT_EQ(decoded.faults.at(0).text, "the zlib stream is invalid at its byte 2: incorrect header check");
}

// --- Usage --------------------------------------------------------------------------------------------------------

TEST(GqtoolDecode, listsTheForms)
{
    const Outcome outcome = run({"decode", "--list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.count('\n'), static_cast<int>(recordForms().size()) + 2); // a title, frames
    EXPECT_TRUE(outcome.output.startsWith("Forms:\n  pointInfo          a point, short form\n"));
    EXPECT_TRUE(outcome.output.endsWith("\n  wave               a stored wave\n"
                                        "  frames             frames of one direction, as a client or server receives "
                                        "them\n"))
        << outcome.output.right(200).toStdString();
    EXPECT_TRUE(run({"decode", "--help"}).output.contains('\n' + outcome.output + '\n'));
}

TEST(GqtoolDecode, listsTheFormsAsJson)
{
    const Outcome outcome = run({"decode", "--list", "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.count('\n'), static_cast<int>(recordForms().size()) + 1); // frames
    EXPECT_TRUE(outcome.output.startsWith(R"({"content":"a point, short form","form":"pointInfo"})"
                                          "\n"));
    EXPECT_EQ(outcome.output.section('\n', -2).toStdString(),
              R"({"content":"frames of one direction, as a client or server receives them","form":"frames"})"
              "\n");
}

TEST(GqtoolDecode, exitsWith2OnWrongUsage)
{
    struct Usage {
        QStringList words;
        const char* message;
    };
    for (const Usage& usage : {Usage{{}, "--as FORM is required; --list prints the forms"},
                               Usage{{"01"}, "--as FORM is required; --list prints the forms"},
                               Usage{{"--as", "float", "01"}, "--as must be a form of --list, got 'float'"},
                               Usage{{"--as", "wave"}, "BYTES, --file FILE or - is required"},
                               Usage{{"--as", "wave", "--udp", "00"},
                                     "--udp, --request, --payload, --map and --max-payload require --as frames"},
                               Usage{{"--as", "frames", "--payload", "floats", "00"},
                                     "--payload must be one of int, ints, bytes, strings, got 'floats'"},
                               Usage{{"--nonsense"}, "unknown option '--nonsense'"}}) {
        SCOPED_TRACE(usage.words.join(' ').toStdString());
        const Outcome outcome = run(QStringList{"decode"} + usage.words);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.toStdString(),
                  std::string("gqtool: ") + usage.message + "\ngqtool: see 'gqtool decode --help'\n");
    }
}

TEST(GqtoolDecode, namesTheCountThatAPayloadIsTooShortFor)
{
    const struct {
        const char* count;
        const char* error;
    } cases[] = {
        {"ffffffff", "and the count of its form (ints) is -1"},
        {"02000000", "but its form (ints) with a count of 2 needs 12"},
    };
    for (const auto& example : cases) {
        const QString frame = QString("68 04000000 0000 00 00 20 %1 0000 16").arg(example.count);
        EXPECT_EQ(run({"decode", "--as", "frames", "--payload", "ints", frame}).errors,
                  QString("gqtool: BYTES: byte 10: the payload has 4 bytes, %1\n").arg(example.error));
    }
}
