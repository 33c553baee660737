// gqtool decode and encode with long lists: they are read, decoded and printed in parts.

#include "gqtool/bytes/spool.h"
#include "support/gqtoolProgram.h"
#include "support/hex.h"
#include "support/inputFile.h"
#include "support/terminal.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

// --- Support ------------------------------------------------------------------------------------------------------

static const QByteArray boolData = QByteArray::fromHex("01"       // 0 value
                                                       "10270000" // 1 stamp1 10000
                                                       "fa000000" // 5 stamp2 250
                                                       "02");     // 9 flag1
static const QByteArray boolDataJson = R"({"value": 1, "stamp1": 10000, "stamp2": 250, "flag1": 2})";

static QByteArray countOf(int count)
{
    QByteArray bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<char>(count >> (8 * i));
    return bytes;
}

static QByteArray boolDatas(int count)
{
    return countOf(count) + boolData.repeated(count);
}

static const int manyItems = 110000; // 1.1 MB, more than 1 MiB

static Outcome decodeFile(const QByteArray& bytes, const QStringList& options)
{
    const InputFile file(bytes);
    return run(QStringList{"decode", "--raw", "--file", file.path} + options);
}

// --- Parts --------------------------------------------------------------------------------------------------------

class Conversation {
public:
    explicit Conversation(const QStringList& arguments)
    {
        process.start(GQTOOL, arguments);
        process.waitForStarted(waitMs);
    }
    ~Conversation()
    {
        process.closeWriteChannel();
        process.waitForFinished(waitMs);
    }

    void write(const QByteArray& bytes)
    {
        process.write(bytes);
        process.waitForBytesWritten(waitMs);
    }

    // Reads that much text, while standard input is still open.
    QByteArray read(int size)
    {
        QByteArray text;
        while (text.size() < size && (process.bytesAvailable() > 0 || process.waitForReadyRead(waitMs)))
            text += process.read(size - text.size());
        return text;
    }

private:
    QProcess process;
};

TEST(GqtoolStream, printsTheFirstLineWhenItArrives)
{
    Conversation text({"decode", "--as", "boolDatas", "--raw", "-"});
    text.write(countOf(3) + boolData);
    const QByteArray lines = "     0  03 00 00 00                  count       3\n"
                             "     4  01                           [0].value   1\n"
                             "     5  10 27 00 00                  [0].stamp1  10000\n"
                             "     9  fa 00 00 00                  [0].stamp2  250\n"
                             "    13  02                           [0].flag1   2\n";
    EXPECT_EQ(text.read(lines.size()).toStdString(), lines.toStdString());

    Conversation hex({"decode", "--as", "boolDatas", "-"});
    hex.write("03000000 # count\n" + boolData.toHex(' ') + "\n");
    EXPECT_EQ(hex.read(lines.size()).toStdString(), lines.toStdString());

    Conversation json({"decode", "--as", "boolDatas", "--raw", "--json", "-"});
    json.write(countOf(3) + boolData);
    const QByteArray object = R"({"as": "boolDatas", "value": [)" + boolDataJson;
    EXPECT_EQ(json.read(object.size()).toStdString(), object.toStdString());

    Conversation table({"decode", "--as", "boolDatas", "--raw", "--csv", "-", "-"});
    table.write(countOf(3) + boolData);
    const QByteArray rows = "value,stamp1,stamp2,flag1\n1,10000,250,2\n";
    EXPECT_EQ(table.read(rows.size()).toStdString(), rows.toStdString());

    Conversation frames({"decode", "--as", "frames", "--raw", "-"});
    frames.write(QByteArray::fromHex("68000000000700000020000016"));
    const QByteArray row = "     0  68                           [0].start";
    EXPECT_EQ(frames.read(row.size()).toStdString(), row.toStdString());
}

TEST(GqtoolStream, showsItsProgressOnATerminal)
{
    Terminal terminal;
    const InputFile bytes(boolDatas(1)); // 14 bytes
    QProcess process;
    process.setProcessEnvironment(englishEnvironment());
    process.setStandardErrorFile(terminal.name());
    process.start(GQTOOL, {"decode", "--as", "boolDatas", "--raw", "--file", bytes.path});
    ASSERT_TRUE(process.waitForFinished(waitMs));
    EXPECT_EQ(terminal.shown().substr(0, 4 + 19), clearLine + "0 bytes read, of 14");
}

TEST(GqtoolStream, decodesAndEncodesALongListInLittleMemory)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer needs more address space than any limit leaves";
#endif
    const QTemporaryDir folder;
    const int count = 200000;
    const InputFile bytes(boolDatas(count)); // 2 MB, and 12 MB of JSON
    const QString json = folder.filePath("json");
    for (const char* options : {"", "--csv -", "--json"}) {
        SCOPED_TRACE(options);
        const QString line = QString("decode --as boolDatas --raw %1 --file").arg(options);
        const Outcome outcome =
            runProgram("sh", {"-c", "ulimit -v 160000; \"$0\" " + line + " \"$1\" > \"$2\"", GQTOOL, bytes.path, json});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
    }
    const Outcome outcome = runProgram(
        "sh", {"-c", "ulimit -v 160000; \"$0\" encode --raw \"$1\" | cmp - \"$2\"", GQTOOL, json, bytes.path});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.output, "");
}

TEST(GqtoolStream, readsWhatFollowsARecordInLittleMemory)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer needs more address space than any limit leaves";
#endif
    const InputFile bytes(200000000); // a list of no items, and what follows it
    const Outcome outcome = runProgram(
        "sh", {"-c", "ulimit -v 160000; exec \"$0\" decode --as boolDatas --raw --file \"$1\"", GQTOOL, bytes.path});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(outcome.output.contains("(rest), 199999996 bytes\n")) << outcome.output.toStdString();
}

// The first byte looks like the start of a frame of 1 GiB.
TEST(GqtoolStream, findsAFrameAfterAFalseStartInLittleMemory)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "AddressSanitizer needs more address space than any limit leaves";
#endif
    const QByteArray frame = QByteArray::fromHex("68 04000000 0700 00 00 20 2a000000 0000 16");
    const InputFile bytes(QByteArray::fromHex("6800000040") + QByteArray(60000000, 'z') + frame);
    for (const char* options : {"", "--json"}) {
        SCOPED_TRACE(options);
        const QString line = QString("decode --as frames --payload int --raw %1 --file").arg(options);
        const Outcome outcome =
            runProgram("sh", {"-c", "ulimit -v 160000; \"$0\" " + line + " \"$1\" | tail -c 1000", GQTOOL, bytes.path});
        EXPECT_EQ(outcome.errors,
                  "gqtool: " + bytes.path +
                      ": byte 0: length must be at most 4194304, got 1073741824; a client would wait for "
                      "the rest\n");
        EXPECT_TRUE(outcome.output.contains(options[0] == '\0' ? "2a 00 00 00" : "\"form\": \"int\", \"content\": 42"))
            << outcome.output.toStdString();
        EXPECT_TRUE(options[0] != '\0' || outcome.output.endsWith("library: 0, [0] is longer than --max-payload\n"))
            << outcome.output.toStdString();
    }
}

TEST(GqtoolStream, decodesAPayloadOf4MiB)
{
    const QByteArray header = QByteArray::fromHex("6800004000 0100 00 00 20"); // 1 length 4194304
    const QByteArray payload = QByteArray::fromHex("fcff3f00") + QByteArray(4194300, 'z');
    const Outcome outcome =
        decodeFile(header + payload + QByteArray::fromHex("000016"), {"--as", "frames", "--payload", "bytes"});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(outcome.output.endsWith("library: 1, good\n")) << outcome.output.right(200).toStdString();
}

TEST(GqtoolStream, decodesLongerPayloadsOnDemand)
{
    const QByteArray header = QByteArray::fromHex("6801004000 0100 00 00 20"); // 1 length 4194305
    const QByteArray payload = QByteArray::fromHex("fdff3f00") + QByteArray(4194301, 'z');
    const QByteArray frame = header + payload + QByteArray::fromHex("000016");
    const QStringList options = {"--as", "frames", "--payload", "bytes"};
    EXPECT_EQ(decodeFile(frame, options).exitCode, 1);
    const Outcome outcome = decodeFile(frame, options + QStringList{"--max-payload", "4194305"});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_TRUE(outcome.output.endsWith("library: 1, good\n")) << outcome.output.right(200).toStdString();

    const QByteArray small = QByteArray::fromHex("68 04000000 0700 00 00 20 2a000000 0000 16");
    EXPECT_TRUE(decodeFile(small, {"--as", "frames", "--max-payload", "3"})
                    .errors.contains(": byte 0: length must be at most 3, got 4; a client would wait for the rest\n"));
    for (const char* limit : {"0", "134217729"})
        EXPECT_EQ(decodeFile(small, {"--as", "frames", "--max-payload", limit}).exitCode, 2);
    EXPECT_EQ(decodeFile(small, {"--as", "boolData", "--max-payload", "3"}).exitCode, 2);
}

// --- JSON of large input ------------------------------------------------------------------------------------------

TEST(GqtoolStream, leavesOutFieldsAndLibraryOfLargeInput)
{
    const QByteArray bytes = boolDatas(manyItems);
    const QString json = decodeFile(bytes, {"--as", "boolDatas", "--json"}).output;
    QByteArray expected = R"({"as": "boolDatas", "value": [)" + boolDataJson;
    expected += (", " + boolDataJson).repeated(manyItems - 1) + R"(], "faults": []})" + "\n";
    EXPECT_TRUE(json == expected) << json.left(200).toStdString() << json.right(200).toStdString();

    const QJsonObject all =
        QJsonDocument::fromJson(
            decodeFile(bytes, {"--as", "boolDatas", "--json", "--fields", "--library"}).output.toUtf8())
            .object();
    EXPECT_EQ(all["fields"].toArray().size(), 1 + 4 * manyItems);
    EXPECT_EQ(all["fields"].toArray().last().toObject()["name"], QString("[%1].flag1").arg(manyItems - 1));
    EXPECT_EQ(all["library"].toObject()["result"], 1);
}

TEST(GqtoolStream, saysThatTheLibraryWasNotCalledForLargeInput)
{
    const QByteArray bytes = boolDatas(manyItems);
    EXPECT_TRUE(decodeFile(bytes, {"--as", "boolDatas"})
                    .output.endsWith("library: not called: more than 1048576 bytes; --library calls it\n"));
    EXPECT_TRUE(decodeFile(bytes, {"--as", "boolDatas", "--library"}).output.endsWith("library: 1, good\n"));
}

// 1 MiB is still small: a count and 104857 items of 10 bytes are 1048574 bytes.
TEST(GqtoolStream, printsFieldsAndLibraryUpTo1MiB)
{
    const int items = 104857;
    const QString small = decodeFile(boolDatas(items) + "..", {"--as", "boolDatas", "--json"}).output;
    EXPECT_TRUE(small.contains(R"("behind": "..", "fields": [)"));
    EXPECT_TRUE(small.endsWith("\"faults\": [], \"library\": {\"result\": 1, \"meaning\": \"good\"}}\n"));
    const QString large = decodeFile(boolDatas(items) + "...", {"--as", "boolDatas", "--json"}).output;
    EXPECT_TRUE(large.endsWith("], \"behind\": \"...\", \"faults\": []}\n")) << large.right(100).toStdString();
}

TEST(GqtoolStream, printsManyBytesAfterTheListAsHex)
{
    const QByteArray rest = QByteArray(2000000, 'x');
    const QString json = decodeFile(boolDatas(1) + rest, {"--as", "boolDatas", "--json"}).output;
    EXPECT_TRUE(json.endsWith(R"(], "behind": {"hex": ")" + QString(rest.toHex()) + R"("}, "faults": []})" + "\n"));
    EXPECT_TRUE(decodeFile(boolDatas(1) + rest, {"--as", "boolDatas"})
                    .output.contains("\n    14  78 78 78 78 78 78 78 78 ...  (rest), 2000000 bytes\n"));
}

TEST(Spool, needsAFileFrom16MiBOn)
{
    const InputFile noFolder("");
    const QByteArray before = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(noFolder.path));
    Spool spool;
    QString error;
    int size = 0;
    const auto print = [&size](const QByteArray& piece) { size += piece.size(); };
    std::string bytes;
    bytes.resize(16777215);
    spool.add(bytes);
    EXPECT_TRUE(spool.printAll(print, error)) << error.toStdString();
    EXPECT_EQ(size, 16777215);
    spool.add("x");
    EXPECT_FALSE(spool.printAll(print, error));
    EXPECT_EQ(error.toStdString(), "cannot keep 16777216 bytes in a temporary file: Not a directory");
    if (before.isNull())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", before);
}

// --- Many errors --------------------------------------------------------------------------------------------------

// An object with `count` properties, whose format texts are longer than their slots.
static QByteArray faultyObject(int count)
{
    const QByteArray head = QByteArray(1 + 16 + 3 * 258, '\0') + countOf(count).left(2);
    const QByteArray property =
        QByteArray(8, '\0') + QByteArray::fromHex("0101") + QByteArray(256 + 258, '\0') + QByteArray(5, '\0');
    return head + property.repeated(count);
}

TEST(GqtoolStream, stopsAfter20Errors)
{
    const Outcome outcome = decodeFile(faultyObject(50), {"--as", "objectBlob"});
    const QStringList errors = outcome.errors.split('\n', Qt::SkipEmptyParts);
    EXPECT_EQ(outcome.exitCode, 1);
    ASSERT_EQ(errors.size(), 21);
    EXPECT_TRUE(errors[19].contains("properties[19].formatText has a length of 257")) << errors[19].toStdString();
    EXPECT_EQ(errors[20], "gqtool: 30 more errors; --max-errors N lists N");
    EXPECT_TRUE(outcome.output.contains("properties[20].word2"));
    EXPECT_FALSE(outcome.output.contains("properties[20].formatText"));
    // 793 bytes before the properties, 529 each, 8 before the format text
    EXPECT_TRUE(outcome.output.contains("\n 11381  01 01 00 00 00 00 00 00 ...  (not read), 15862 bytes\n"))
        << outcome.output.right(300).toStdString();
}

TEST(GqtoolStream, listsAsManyErrorsAsAskedFor)
{
    EXPECT_EQ(decodeFile(faultyObject(50), {"--as", "objectBlob", "--max-errors", "50"}).errors.count('\n'), 50);
    EXPECT_EQ(decodeFile(faultyObject(50), {"--as", "objectBlob", "--max-errors", "1"}).errors.count('\n'), 2);
    EXPECT_EQ(decodeFile(faultyObject(20), {"--as", "objectBlob"}).errors.count('\n'), 20);
    EXPECT_TRUE(decodeFile(faultyObject(21), {"--as", "objectBlob"})
                    .errors.endsWith("\ngqtool: 1 more error; --max-errors N lists N\n"));
    EXPECT_TRUE(decodeFile(faultyObject(22), {"--as", "objectBlob"})
                    .errors.endsWith("\ngqtool: 2 more errors; --max-errors N lists N\n"));
    EXPECT_EQ(run({"decode", "--as", "wave", "--max-errors", "0", "00"}).exitCode, 2);
}

TEST(GqtoolStream, countsTheOtherErrorsInJson)
{
    const QJsonObject json =
        QJsonDocument::fromJson(decodeFile(faultyObject(50), {"--as", "objectBlob", "--json"}).output.toUtf8())
            .object();
    EXPECT_EQ(json["faults"].toArray().size(), 20);
    EXPECT_EQ(json["moreFaults"], 30);
    EXPECT_FALSE(json.contains("behind"));
    EXPECT_EQ(json["value"].toObject()["properties"].toArray().size(), 21);
}

// The faults of a stream of frames: each of them is a start byte with an impossible length.
TEST(GqtoolStream, countsTheOtherErrorsOfFrames)
{
    const Outcome outcome = decodeFile(QByteArray::fromHex("68ffffffff").repeated(25), {"--as", "frames"});
    EXPECT_EQ(outcome.errors.count('\n'), 21);
    EXPECT_TRUE(outcome.errors.endsWith("gqtool: 5 more errors; --max-errors N lists N\n"));
}

// --- Tables -------------------------------------------------------------------------------------------------------

TEST(GqtoolCsv, quotesTexts)
{
    const Outcome outcome = run({"decode", "--as", "pointInfos", "--csv", "-",
                                 "03000000"
                                 "07000000 0400 70756d70 01000000 0000 02000000"        // pump
                                 "08000000 0300 612c62 01000000 0400 22710d0a 02000000" // a,b and "q, new line
                                 "09000000 0200 b9f8 01000000 0200 c2b0 02000000"});    // no UTF-8, and a degree
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "gqtool: some texts are not UTF-8; --encoding NAME, such as GBK, converts them\n");
    EXPECT_EQ(outcome.output.toStdString(), "pointId,text1,code1,text2,code2\n"
                                            "7,pump,1,,2\n"
                                            "8,\"a,b\",1,\"\"\"q\r\n\",2\n"
                                            "9,\"{\"\"hex\"\": \"\"b9f8\"\"}\",1,\u00b0,2\n");
}

TEST(GqtoolCsv, writesNumbersWithAllDigits)
{
    EXPECT_EQ(run({"decode", "--as", "floatDatas", "--csv", "-",
                   "03000000 cdcccc3d 01000000 ffffffff 0102 0000c07f 00000000 00000000 0000"
                   "000080ff 00000000 00000000 0000"})
                  .output.toStdString(),
              "value,stamp1,stamp2,flag2,flag1\n"
              "0.1,1,4294967295,1,2\n"
              "nan,0,0,0,0\n"
              "-inf,0,0,0,0\n");
}

TEST(GqtoolCsv, namesTheFieldsOfAnEmptyList)
{
    EXPECT_EQ(run({"decode", "--as", "eventStates", "--csv", "-", "00000000"}).output,
              "word1,switch1,word2,word3,word4\n");
}

TEST(GqtoolCsv, replacesTheFileOnlyIfTheListIsWhole)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("table.csv");
    Outcome outcome = run({"decode", "--as", "boolDatas", "--csv", path, boolDatas(2).toHex()});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    const QString table = "value,stamp1,stamp2,flag1\n1,10000,250,2\n1,10000,250,2\n";
    EXPECT_EQ(contentOf(path), table);

    outcome = run({"decode", "--as", "boolDatas", "--csv", path, boolDatas(4).chopped(1).toHex()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: " + path +
                                  " is not written\n"
                                  "gqtool: BYTES: byte 43: [3].flag1 needs 1 byte, but only 0 bytes remain\n");
    EXPECT_EQ(contentOf(path), table);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"table.csv"});
}

TEST(GqtoolCsv, printsWholeItemsAlone)
{
    const Outcome outcome = run({"decode", "--as", "boolDatas", "--csv", "-", boolDatas(2).chopped(1).toHex()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "value,stamp1,stamp2,flag1\n1,10000,250,2\n");
}

TEST(GqtoolCsv, mentionsBytesAfterTheList)
{
    const Outcome outcome = run({"decode", "--as", "boolDatas", "--csv", "-", boolDatas(2).toHex() + "0a0b"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "gqtool: BYTES: byte 24: the table leaves out 2 bytes after the list\n");
}

// A frame with a byte list as payload.
static QByteArray replyOf(const QByteArray& command, const QByteArray& records)
{
    const auto lengthOf = [](int size) { return QByteArray(1, char(size)) + QByteArray(3, '\0'); };
    return QByteArray::fromHex("68") + lengthOf(records.size() + 4) + QByteArray(4, '\0') +
           QByteArray::fromHex(command) + lengthOf(records.size()) + records + QByteArray::fromHex("000016");
}

TEST(GqtoolCsv, takesTheListsOfOneCommandFromFrames)
{
    const InputFile map("0x20 values - bytes:boolDatas\n0x21 one - bytes:boolData\n0x22 texts - strings\n");
    const QByteArray frames = replyOf("20", boolDatas(2)) + replyOf("21", QByteArray(10, '\0')) +
                              replyOf("ff", QByteArray(4, '\1')) + replyOf("20", boolDatas(2));
    const QStringList options = {"--as", "frames", "--map", map.path, "--csv", "-"};
    const QString item = "1,10000,250,2\n";
    for (const char* command : {"values", "0x20", "32"}) {
        const Outcome outcome = decodeFile(frames, options + QStringList{"--command", command});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.output, "value,stamp1,stamp2,flag1\n" + item.repeated(4));
    }
    const Outcome cut =
        decodeFile(frames + replyOf("20", boolDatas(2).chopped(1)), options + QStringList{"--command", "values"});
    EXPECT_EQ(cut.exitCode, 1);
    EXPECT_EQ(cut.output, "value,stamp1,stamp2,flag1\n" + item.repeated(5));

    const struct {
        QStringList options;
        const char* error;
    } wrong[] = {
        {options, "with --as frames, --csv requires --map FILE and --command COMMAND, and no --request"},
        {options + QStringList{"--command", "values", "--request"},
         "with --as frames, --csv requires --map FILE and --command COMMAND, and no --request"},
        {options + QStringList{"--command", "value"},
         "--command must be a name or number of the map, got 'value'; did you mean 'values'?"},
        {options + QStringList{"--command", "0x24"}, "--command must be a name or number of the map, got '0x24'"},
        {options + QStringList{"--command", "one"},
         "--csv requires a list of records, and the replies to one are none"},
        {options + QStringList{"--command", "texts"},
         "--csv requires a list of records, and the replies to texts are none"},
        {QStringList{"--as", "boolDatas", "--csv", "-", "--command", "values"}, "--command requires --as frames"},
    };
    for (const auto& each : wrong) {
        const Outcome outcome = decodeFile(frames, each.options);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.errors.section('\n', 0, 0), QString("gqtool: ") + each.error);
    }
}

TEST(GqtoolCsv, reportsWhatCannotBeWritten)
{
    const QString list = boolDatas(2).toHex();
    Outcome outcome = run({"decode", "--as", "boolDatas", "--csv", "/dev/full", list});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot write to /dev/full: No space left on device\n");
    outcome = run({"decode", "--as", "boolDatas", "--csv", "/nonexistent/table.csv", list});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: cannot write to /nonexistent/table.csv: "));
}

TEST(GqtoolCsv, isForLists)
{
    EXPECT_EQ(run({"decode", "--as", "boolData", "--csv", "-", "00"}).exitCode, 2);
    EXPECT_EQ(run({"decode", "--as", "frames", "--csv", "-", "00"}).exitCode, 2);
    EXPECT_EQ(run({"decode", "--as", "boolDatas", "--csv", "-", "--json", "00"}).exitCode, 2);
}

// --- Encoding -----------------------------------------------------------------------------------------------------

static Outcome encodeText(const QByteArray& json, const QStringList& options = {})
{
    const InputFile file(json);
    return run(QStringList{"encode", file.path} + options);
}

static const QByteArray twoItems = "[" + boolDataJson + ", " + boolDataJson + "]";
static const QByteArray twoItemsHex = boolDatas(2).toHex() + "\n";

TEST(GqtoolEncodeStream, acceptsAFormAfterItsValue)
{
    const Outcome outcome = encodeText("{\"value\": " + twoItems + ", \"as\": \"boolDatas\"}");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, twoItemsHex);
}

TEST(GqtoolEncodeStream, putsTheBytesAfterTheListLast)
{
    EXPECT_EQ(encodeText("{\"behind\": \"AB\", \"as\": \"boolDatas\", \"value\": " + twoItems + "}").output,
              boolDatas(2).toHex() + "4142\n");
}

TEST(GqtoolEncodeStream, doesNotBuildWhatItDoesNotUse)
{
    EXPECT_EQ(encodeText("{\"as\": \"boolDatas\", \"fields\": [[{\"a\": {}}], 1], \"library\": {}, \"value\": " +
                         twoItems + ", \"faults\": []}")
                  .output,
              twoItemsHex);
}

TEST(GqtoolEncodeStream, refusesAMemberThatOccursTwice)
{
    const Outcome outcome =
        encodeText("{\"as\": \"boolDatas\", \"value\": " + twoItems + ", \"value\": " + twoItems + "}");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_TRUE(outcome.errors.endsWith(": value occurs twice\n")) << outcome.errors.toStdString();
}

TEST(GqtoolEncodeStream, refusesDeepNesting)
{
    const QByteArray deep = QByteArray(1000000, '[');
    const Outcome outcome = encodeText("{\"as\": \"boolDatas\", \"value\": " + deep);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.endsWith(": value must have at most 1000 nested objects and arrays\n"));
}

TEST(GqtoolEncodeStream, listsTheFirstErrors)
{
    const QByteArray numbers = "[7" + QByteArray(", 7").repeated(29) + "]";
    Outcome outcome = encodeText("{\"as\": \"boolDatas\", \"value\": " + numbers + "}");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.count('\n'), 21);
    EXPECT_TRUE(outcome.errors.endsWith(": value[19] must be an object, got 7\n"
                                        "gqtool: 10 more errors; --max-errors N lists N\n"))
        << outcome.errors.toStdString();
    EXPECT_EQ(
        encodeText("{\"as\": \"boolDatas\", \"value\": " + numbers + "}", {"--max-errors", "2"}).errors.count('\n'), 3);
}

TEST(GqtoolEncodeStream, printsNothingOfAListThatEndsInAnError)
{
    const Outcome outcome = encodeText("{\"as\": \"boolDatas\", \"value\": [" + boolDataJson + ", {}]}");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
}
