#include "gqtool/bytes/byteSource.h"
#include "gqtool/bytes/byteWindow.h"
#include "support/gqtoolProgram.h"
#include "support/inputFile.h"

#include <gtest/gtest.h>

// The ways to give bytes to `sum`, `decode` and `wave`.

static Outcome runWithInput(const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.start(GQTOOL, arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(waitMs);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

static const QString nineDigits = "31 32 33 34 35 36 37 38 39";
static const QString nineDigitsSums = "9 bytes: 31 32 33 34 35 36 37 38 39\n"
                                      "CRC-16, low byte first   37 4b\n"
                                      "CRC-16, high byte first  4b 37\n"
                                      "byte sum                 dd\n";

TEST(GqtoolInput, acceptsHexTextInEveryUsualForm)
{
    for (const char* const text :
         {"313233343536373839", "31:32:33:34:35:36:37:38:39", "0x31 0x32 0x333435 0X36 37 38 39",
          "# digits\n31323334 # four\n\t35 3637\r\n38#\n39", "  31 32 33 34 35 36 37 38 39:  "}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(run({"sum", text}).output, nineDigitsSums);
    }
    EXPECT_EQ(run({"sum", "aB", "Cd"}).output.left(14), "2 bytes: ab cd");
}

TEST(GqtoolInput, readsFilesAndStandardInput)
{
    const InputFile text("31323334 # four\n3536373839\n");
    EXPECT_EQ(run({"sum", "--file", text.path}).output, nineDigitsSums);
    const InputFile raw("123456789");
    EXPECT_EQ(run({"sum", "--raw", "--file", raw.path}).output, nineDigitsSums);

    EXPECT_EQ(runWithInput({"sum", "-"}, nineDigits.toLatin1()).output, nineDigitsSums);
    EXPECT_EQ(runWithInput({"sum", "--raw", "-"}, "123456789").output, nineDigitsSums);
    EXPECT_EQ(runWithInput({"sum", "--raw", "--file", "-"}, "123456789").output, nineDigitsSums);
}

TEST(GqtoolInput, readsFilesOf2GiBAndMore)
{
    const InputFile file(3000000000);
    FileSource source(file.path);
    EXPECT_EQ(source.total(), 3000000000);
    QByteArray bytes;
    EXPECT_TRUE(source.read(bytes));
    EXPECT_EQ(bytes, QByteArray(65536, '\0'));
}

// Its first piece has as many bytes as chosen, every later one has 1. Their values are undefined.
class LargeSource : public ByteSource {
public:
    explicit LargeSource(int firstPiece) : pieceSize(firstPiece) {}

    bool read(QByteArray& bytes) override
    {
        const int size = bytes.size() + pieceSize;
        bytes.reserve(size);
        bytes.resize(size); // does not write to the memory
        pieceSize = 1;
        return true;
    }

private:
    int pieceSize;
};

TEST(GqtoolInput, keepsARecordOfUpTo1GiB)
{
    {
        LargeSource bytes(1 << 29);
        ByteWindow window(bytes);
        EXPECT_TRUE(window.holds((1 << 29) + 1));
        EXPECT_EQ(window.error(), "");
    }
    LargeSource bytes(1 << 30);
    ByteWindow window(bytes);
    EXPECT_TRUE(window.holds(1 << 30));
    EXPECT_FALSE(window.holds((1 << 30) + 1));
    EXPECT_EQ(window.error().toStdString(), "a field or wave has more than 1073741824 bytes");
}

TEST(GqtoolInput, readsAGoldenFile)
{
    EXPECT_TRUE(run({"sum", "--file", GQLIB_GOLDEN "/waves/quantised.hex"}).output.contains(" bytes: "));
}

static const QString firstDigitsAsDump = "00000000: 3132 3334 3536 3738  12345678\n00000008: 39  9\n";

TEST(GqtoolInput, acceptsDumps)
{
    EXPECT_EQ(runWithInput({"sum", "-"}, firstDigitsAsDump.toLatin1()).output, nineDigitsSums);
    EXPECT_EQ(run({"sum", firstDigitsAsDump}).output, nineDigitsSums);
    const InputFile file("unsigned char digits[] = { 0x31, 0x32 };\nunsigned int digits_len = 2;\n");
    EXPECT_TRUE(run({"wave", "--file", file.path}).output.startsWith("size         2 bytes\n"));
    EXPECT_EQ(run({"sum", "0000", "68"}).output.left(17), "3 bytes: 00 00 68");
}

TEST(GqtoolInput, reportsTheLineOfAGap)
{
    const InputFile file("00000000: 3132\n00000003: 34\n");
    const Outcome outcome = run({"decode", "--as", "frames", "--file", file.path});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.toStdString(), "gqtool: " + file.path.toStdString() +
                                                ": line 2: offset must be 00000002, got 00000003; 1 byte is missing\n");
}

TEST(GqtoolInput, skipsTheHeadersOfPacketsForFrames)
{
    const QString path = GQLIB_GOLDEN "/dumps/stationTcpdump.txt";
    const Outcome outcome = run({"decode", "--as", "frames", "--file", path});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.count("].start"), 3); // greeting, request, reply
    EXPECT_FALSE(outcome.output.contains("garbage")) << outcome.output.toStdString();
    EXPECT_EQ(run({"sum", "--file", path}).output.left(20).toStdString(), "599 bytes: 45 00 00 ");
}

TEST(GqtoolInput, reportsWhereADigitIsInvalid)
{
    Outcome outcome = run({"sum", "01 2g"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "gqtool: BYTES: line 1, column 5: 'g' is not a hex digit\n");

    EXPECT_EQ(runWithInput({"sum", "-"}, "01 # gg\n02 0x3\n").errors,
              "gqtool: standard input: line 2, column 4: '0x3' must have an even number of hex digits\n");
    EXPECT_EQ(run({"sum", "01 2 3"}).errors,
              "gqtool: BYTES: line 1, column 4: '2' must have an even number of hex digits\n");
    EXPECT_EQ(run({"sum", "01 0x"}).errors, "gqtool: BYTES: line 1, column 4: '0x' must have hex digits\n");
    EXPECT_EQ(run({"sum", "010x02"}).errors, "gqtool: BYTES: line 1, column 4: 'x' is not a hex digit\n");
}

TEST(GqtoolInput, suggestsRawForRawBytes)
{
    EXPECT_EQ(runWithInput({"sum", "-"}, QByteArray("\x68\x00", 2)).errors,
              "gqtool: standard input: line 1, column 1: 'h' is not a hex digit; use --raw for raw bytes\n");
    EXPECT_EQ(runWithInput({"sum", "-"}, "\nhello").errors,
              "gqtool: standard input: line 2, column 1: 'h' is not a hex digit; use --raw for raw bytes\n");
    EXPECT_EQ(runWithInput({"sum", "-"}, QByteArray("12\x00", 3)).errors,
              "gqtool: standard input: line 1, column 3: byte 0x00 is not a hex digit; use --raw for raw bytes\n");
    EXPECT_EQ(runWithInput({"sum", "-"}, "12\n3g\n").errors, // a typing error
              "gqtool: standard input: line 2, column 2: 'g' is not a hex digit\n");
    EXPECT_EQ(run({"sum", "hello"}).errors, "gqtool: BYTES: line 1, column 1: 'h' is not a hex digit\n");
    EXPECT_EQ(runWithInput({"sum", "-"}, QByteArray("\x00\xff", 2)).errors,
              "gqtool: standard input: line 1, column 1: byte 0x00 is not a hex digit; use --raw for raw "
              "bytes\n");
}

TEST(GqtoolInput, namesCaptureFilesAndTheWayToReadThem)
{
    const struct {
        const char* magic;
        const char* format;
    } captures[] = {
        {"d4c3b2a1", "pcap"}, {"a1b2c3d4", "pcap"}, {"4d3cb2a1", "pcap"}, {"a1b23c4d", "pcap"}, {"0a0d0d0a", "pcapng"}};
    for (const auto& capture : captures) {
        SCOPED_TRACE(capture.magic);
        const QByteArray content = QByteArray::fromHex(capture.magic) + QByteArray(24, '\0');
        const InputFile file(content);
        const QString advice = "gqtool: %1 is a %2 capture; convert it with 'tshark -r %3 -x -o "
                               "tcp.desegment_tcp_streams:FALSE'\n";
        const QString ofFile = advice.arg(file.path, capture.format, file.path);
        for (const QStringList& command :
             {QStringList{"decode", "--as", "frames"}, QStringList{"sum"}, QStringList{"wave"}}) {
            const Outcome outcome = run(command + QStringList{"--file", file.path});
            EXPECT_EQ(outcome.exitCode, 1);
            EXPECT_EQ(outcome.errors, ofFile);
            EXPECT_TRUE(run(command + QStringList{"--raw", "--file", file.path}).errors.contains(ofFile));
        }
        EXPECT_EQ(runWithInput({"sum", "-"}, content).errors, advice.arg("standard input", capture.format, "FILE"));
    }
}

// Some shells write UTF-16 to a file.
TEST(GqtoolInput, namesTextInUtf16)
{
    for (const char* text : {"fffe36003800", "feff00360038"}) { // "68" in both byte orders
        const InputFile file(QByteArray::fromHex(text));
        const Outcome outcome = run({"sum", "--file", file.path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.errors, "gqtool: " + file.path + ": UTF-16 text; save it as UTF-8 or ASCII\n");
    }
}

TEST(GqtoolInput, mentionsADumpThatIsReadAsRawBytes)
{
    const InputFile dump("00000000: 6804 0000  h...\n00000004: 16  .\n");
    const QString hint = "gqtool: " + dump.path + " looks like hex text or a hex dump, which is read without --raw\n";
    EXPECT_TRUE(run({"decode", "--as", "frames", "--raw", "--file", dump.path}).errors.endsWith(hint));
    const Outcome sum = run({"sum", "--raw", "--file", dump.path});
    EXPECT_EQ(sum.exitCode, 0); // the sum of the text may be wanted
    EXPECT_EQ(sum.errors, hint);
    const InputFile tilde("00000000: 7e  ~\n");
    EXPECT_TRUE(run({"sum", "--raw", "--file", tilde.path}).errors.endsWith("which is read without --raw\n"));
    for (const char* binary : {"3132 # \x7f", "3132 # \x01"}) {
        const InputFile raw(binary);
        EXPECT_EQ(run({"sum", "--raw", "--file", raw.path}).errors, "");
    }
    const InputFile raw(QByteArray("\x31\x32\x00\x33", 4));
    EXPECT_EQ(run({"sum", "--raw", "--file", raw.path}).errors, "");
}

// Each dump that the messages advise must be read.
TEST(GqtoolInput, readsEveryDumpThatItAdvises)
{
    for (const char* program : {"od -A x -t x1", "hexdump -C", "xxd", "xxd -g 1"}) {
        SCOPED_TRACE(program);
        const QString pipe = QString("printf 123456789 | %1 | \"$0\" sum -").arg(program);
        const Outcome outcome = runProgram(
            "sh",
            {"-c", "command -v " + QString(program).section(' ', 0, 0) + " >/dev/null || exit 9; " + pipe, GQTOOL});
        if (outcome.exitCode != 9) { // it is installed
            EXPECT_EQ(outcome.output, nineDigitsSums);
        }
    }
}

TEST(GqtoolInput, reportsThatItIsEmpty)
{
    for (const char* text : {"", "# no bytes\n"}) {
        const InputFile empty(text);
        for (const QStringList& command :
             {QStringList{"sum"}, QStringList{"sum", "--check", "crc"}, QStringList{"decode", "--as", "frames"},
              QStringList{"decode", "--as", "pointRealDatas"}, QStringList{"decode", "--as", "boolData"}}) {
            SCOPED_TRACE(command.join(' ').toStdString());
            const Outcome outcome = run(command + QStringList{"--file", empty.path});
            EXPECT_EQ(outcome.exitCode, 1);
            EXPECT_EQ(outcome.errors, "gqtool: " + empty.path + ": the input is empty\n");
            EXPECT_FALSE(outcome.output.contains("good")) << outcome.output.toStdString();
        }
    }
    EXPECT_FALSE(run({"decode", "--as", "boolDatas", "00000000"}).errors.contains("empty")); // a list of 0 items
}

TEST(GqtoolInput, reportsWhichFileCannotBeRead)
{
    const QTemporaryDir folder;
    const QString missing = folder.filePath("missing");
    Outcome outcome = run({"sum", "--file", missing});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "gqtool: cannot read " + missing + ": No such file or directory\n");
    outcome = run({"sum", "--file", folder.path()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.startsWith("gqtool: cannot read ")) << outcome.errors.toStdString();
}

TEST(GqtoolInput, requiresOneSource)
{
    EXPECT_EQ(run({"sum"}).exitCode, 2);
    EXPECT_EQ(run({"sum", "--file", "a", "00"}).exitCode, 2);
    EXPECT_EQ(run({"sum", "--file", "a", "-"}).exitCode, 2);
    EXPECT_EQ(run({"sum", "--raw", "00"}).exitCode, 2);
}
