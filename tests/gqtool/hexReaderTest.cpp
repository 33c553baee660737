// The forms of hex text and hex dumps. The dumps of tests/golden/dumps are those of the real tools.

#include "support/hex.h"
#include "support/hexReading.h"
#include "support/inputFile.h"

#include <QDir>

#include <gtest/gtest.h>

// --- Reading ------------------------------------------------------------------------------------------------------

static std::string errorText(const HexReading& reading)
{
    return reading.error.isSet() ? reading.error.message().toStdString() : "";
}

// The pieces of the text make no difference.
static HexReading read(const QByteArray& text, HexReader::Content content = HexReader::everyByte)
{
    HexReading reading = readInPieces(text, text.size() + 1, content);
    for (const int pieceSize : {1, 7}) {
        const HexReading other = readInPieces(text, pieceSize, content);
        EXPECT_EQ(errorText(other), errorText(reading)) << pieceSize;
        if (!reading.error.isSet()) {
            EXPECT_EQ(hex(other.bytes), hex(reading.bytes)) << pieceSize;
        }
    }
    return reading;
}

static std::string bytesOf(const QByteArray& text, HexReader::Content content = HexReader::everyByte)
{
    const HexReading reading = read(text, content);
    EXPECT_EQ(errorText(reading), "") << text.toStdString();
    return hex(reading.bytes);
}

static std::string errorOf(const QByteArray& text, HexReader::Content content = HexReader::everyByte)
{
    return errorText(read(text, content));
}

static QByteArray fileContent(const QString& name)
{
    return contentOf(GQLIB_GOLDEN "/dumps/" + name);
}

// --- Files of the real tools --------------------------------------------------------------------------------------

TEST(HexReader, readsTheDumpsOfTheRealTools)
{
    int count = 0;
    for (const QString& name : QDir(GQLIB_GOLDEN "/dumps").entryList({"*.txt"})) {
        SCOPED_TRACE(name.toStdString());
        const bool isCapture = name.startsWith("station") || name.startsWith("datagrams");
        const QString expected = !isCapture                   ? "bytes.bin"
                                 : name.startsWith("station") ? "station.bin"
                                                              : "datagrams.bin";
        EXPECT_EQ(bytesOf(fileContent(name), isCapture ? HexReader::payloads : HexReader::everyByte),
                  hex(fileContent(expected)));
        ++count;
    }
    EXPECT_EQ(count, 25);
}

TEST(HexReader, keepsTheHeadersOfPacketsUnlessPayloadsAreWanted)
{
    EXPECT_EQ(bytesOf(fileContent("datagramsTcpdump.txt")).substr(0, 11), "45 00 00 5c");
    EXPECT_EQ(bytesOf(fileContent("bytes.bin").toHex(), HexReader::payloads), hex(fileContent("bytes.bin")));
}

// --- Hex text -----------------------------------------------------------------------------------------------------

TEST(HexText, acceptsGroupsWithSeparators)
{
    for (const char* text : {"68040aFF", "68:04:0a:FF", "68-04-0a-FF", "68,04,0a,FF", "68, 04, 0a, FF\n",
                             "0x68 0x040a 0XFF", "  68 04\t0a\r\nFF  \r\n", "# 11\n68 04 # 22\n0a//33\nFF /* 44\n55 */",
                             "\"68040aFF\"", "{68, 04, 0a, FF}", "'68' '04' '0a' 'FF'",
                             "\xef\xbb\xbf"
                             "68040aFF",
                             "68 04 \\\n0a FF"})
        EXPECT_EQ(bytesOf(text), "68 04 0a ff") << text;
    EXPECT_EQ(bytesOf(""), "");
    EXPECT_EQ(bytesOf("# nothing\n\n"), "");
}

TEST(HexText, refusesASecondByteOrderMark)
{
    const QByteArray mark = "\xef\xbb\xbf";
    EXPECT_EQ(errorOf(mark + mark + "\n\n68 04\n"), "line 1, column 1: byte 0xef is not a hex digit");
}

TEST(HexText, acceptsGroupsOfAnyLength)
{
    const QByteArray digits = QByteArray("0123456789abcdef").repeated(8192);
    EXPECT_EQ(readInPieces(digits, 1000, HexReader::everyByte).bytes, QByteArray::fromHex(digits));
    EXPECT_EQ(errorOf(digits + '0'), "line 1, column 1: '0123456789abcdef0123' must have an even number of hex digits");
    EXPECT_EQ(errorOf(digits + 'g'), "line 1, column 131073: 'g' is not a hex digit");
}

TEST(HexText, acceptsEscapes)
{
    EXPECT_EQ(bytesOf(R"(\x68\x04\x0A)"), "68 04 0a");
    EXPECT_EQ(bytesOf(R"("\x68\x04" "\x0a")"), "68 04 0a");
    EXPECT_EQ(bytesOf(R"('\x68', '\x04')"), "68 04");
    EXPECT_EQ(bytesOf(R"(b'\x68\x04')"), "68 04");
    EXPECT_EQ(bytesOf("\"\\x68\" \\\n\"\\x04\" \\\r\n"), "68 04");
}

// What is not an escape is a byte of such a text, in C and in Python; it must not be read as a hex digit.
TEST(HexText, refusesOtherCharactersInEscapedText)
{
    EXPECT_EQ(errorOf(R"(b'\x68\x04ab')"), "line 1, column 7: '\\x04ab' must have 2 hex digits");
    EXPECT_EQ(errorOf(R"("\x68 \x04")"), "line 1, column 6: ' ' is not a hex digit");
    EXPECT_EQ(errorOf(R"("\x68\n")"), "line 1, column 6: '\\' is not a hex digit");
    EXPECT_EQ(errorOf(R"("\x68h")"), "line 1, column 6: 'h' is not a hex digit");
    EXPECT_EQ(errorOf(R"("\x68#")"), "line 1, column 6: '#' is not a hex digit");
    EXPECT_EQ(errorOf(R"(\x68 04)"), "line 1, column 6: '04' must begin with \\x, as the bytes before it");
    EXPECT_EQ(errorOf(R"(68 \x04)"), "line 1, column 4: '\\x04' must not begin with \\x, as the bytes before it");
    EXPECT_EQ(errorOf(R"(\x6)"), "line 1, column 1: '\\x6' must have 2 hex digits");
}

TEST(HexText, skipsTheDeclarationOfAnArray)
{
    EXPECT_EQ(bytesOf("unsigned char face[] = {\n 0x68, 0x4, 0xA\n};\nunsigned int face_len = 3;\n"), "68 04 0a");
    EXPECT_EQ(bytesOf("const uint8_t feed[2] =\r\n{ 0x68, 0x04 };"), "68 04");
    EXPECT_EQ(bytesOf("std::array<std::uint8_t, 2> cafe{0x68, 0x04};"), "68 04");
    EXPECT_EQ(bytesOf("static const char a[] = \"\\x68\"\n  \"\\x04\";\nstatic const char b[] = \"\\x16\";"),
              "68 04 16");
    EXPECT_EQ(bytesOf("{ 0x68, 0x4 }"), "68 04");
}

TEST(HexText, refusesWhatIsNoArrayOfBytes)
{
    EXPECT_EQ(errorOf("int a[] = { 104, 4 };"), "line 1, column 13: '104' must begin with 0x in an array");
    EXPECT_EQ(errorOf("short a[] = { 0x0468 };"), "line 1, column 15: '0x0468' must have 1 or 2 hex digits");
    EXPECT_EQ(errorOf("char a[] = {\n 0x68, 0x04\n"), "line 1: { must be closed by }");
    EXPECT_EQ(errorOf("0x68 }"), "line 1, column 6: } closes nothing");
    EXPECT_EQ(errorOf("\n\"68"), "line 2: \" must be closed");
    EXPECT_EQ(errorOf("68 /* 04"), "line 1: /* must be closed by */");
    EXPECT_EQ(errorOf("unsigned char a[] = {\n0x68, 0x04\n};\nunsigned int a_len = 3;"),
              "line 4: the array has 2 bytes, but its size is 3");
    EXPECT_EQ(errorOf("hello"), "line 1, column 1: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("char *hello;"), "line 1, column 2: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("68 04 char a[] = { 0x16 };"), "line 1, column 8: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("68/04"), "line 1, column 3: '/' is not a hex digit");
    EXPECT_EQ(errorOf("68 /"), "line 1, column 4: '/' is not a hex digit");
    EXPECT_EQ(errorOf("char a[] = 5, 6;"), "line 1, column 2: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("char a[2]"), "line 1, column 2: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("char a[] ="), "line 1, column 2: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("unsigned int a_len = 2"), "line 1, column 1: 'u' is not a hex digit");
}

// --- Recognition --------------------------------------------------------------------------------------------------

TEST(HexReader, recognisesADumpByItsFirstOffset)
{
    for (const char* text :
         {"0000  68 04", "0000: 68 04", "0000: 6804", "0000| 68 04", "0000|68 04|h.|", "0x0000: 6804", "00000000  6804",
          "0000   68 04   h.", "  00000000  68 04", "0000:68 04", "0000000 68 04"})
        EXPECT_EQ(bytesOf(text), "68 04") << text;
}

TEST(HexReader, recognisesADumpByTheOffsetOfItsSecondLine)
{
    EXPECT_EQ(bytesOf("0000 68 04\n0002 0a"), "68 04 0a");
    EXPECT_EQ(bytesOf("000000 68 04\n\n000002\n"), "68 04");
    EXPECT_EQ(bytesOf("000000 68\n*\n000003 16\n000004\n"), "68 68 68 16");
}

TEST(HexReader, recognisesADumpAfterComments)
{
    EXPECT_EQ(bytesOf("# a pump\n\n0000  68 04"), "68 04");
    EXPECT_EQ(bytesOf("0000 68 04\n# its end\n0002 0a"), "68 04 0a");
}

TEST(HexReader, takesEverythingElseAsHexText)
{
    EXPECT_EQ(bytesOf("0000 68 04"), "00 00 68 04");
    EXPECT_EQ(bytesOf("0000 68 04\n"), "00 00 68 04");
    EXPECT_EQ(bytesOf("0000 68 04\n0003 0a"), "00 00 68 04 00 03 0a");
    EXPECT_EQ(bytesOf("000000 68 04\n16"), "00 00 00 68 04 16");
    EXPECT_EQ(errorOf("000000 68 0g\n000002 0a"), "line 1, column 12: 'g' is not a hex digit");
    EXPECT_EQ(errorOf("0000g 68 04"), "line 1, column 5: 'g' is not a hex digit");
    EXPECT_EQ(errorOf(QByteArray("hello\n").repeated(40)), "line 1, column 1: 'h' is not a hex digit");
    EXPECT_EQ(errorOf("000 68"), "line 1, column 1: '000' must have an even number of hex digits");
}

TEST(HexReader, keepsHexTextWithGroupsThatLookLikeOffsets)
{
    EXPECT_EQ(bytesOf("00000000     #  0 count 0\n01000000  # 4 pointId"), "00 00 00 00 01 00 00 00");
    EXPECT_EQ(bytesOf("07000000  10270000  01 02"), "07 00 00 00 10 27 00 00 01 02");
    EXPECT_EQ(bytesOf("3132:3334:35"), "31 32 33 34 35");
    EXPECT_EQ(bytesOf("0000:3334:35"), "00 00 33 34 35");
    EXPECT_EQ(bytesOf("0000\t68 04"), "00 00 68 04");
    EXPECT_EQ(bytesOf("00000000"), "00 00 00 00");
    EXPECT_EQ(bytesOf("0000:\n68"), "00 00 68");
}

// --- Text columns -------------------------------------------------------------------------------------------------

TEST(HexReader, neverReadsATextColumn)
{
    EXPECT_EQ(bytesOf("00000000: 3638 3034  6804\n00000004: 6162       ab"), "36 38 30 34 61 62");
    EXPECT_EQ(bytesOf("00000000  61 62 20 63 64 20 65 66                           |ab cd ef|\n00000008"),
              "61 62 20 63 64 20 65 66");
    EXPECT_EQ(bytesOf("0000   61 62 20 63   ab c"), "61 62 20 63");
    EXPECT_EQ(bytesOf("\t0x0000:  6162 2063                                ab.c"), "61 62 20 63");
    EXPECT_EQ(bytesOf("000000 7c 3e 61 >|>a<\n000003 61  >a<\n000004"), "7c 3e 61 61");
    EXPECT_EQ(bytesOf("00000000: 2020 2020     \n00000004: 20"), "20 20 20 20 20");
}

TEST(HexReader, readsTheGapInTheMiddleOfALine)
{
    EXPECT_EQ(bytesOf("00000000  00 01 02 03 04 05 06 07  08 09 |..........|"), "00 01 02 03 04 05 06 07 08 09");
    EXPECT_EQ(bytesOf("00000000: 0001 0203 0405 0607  68 04 0f"), "00 01 02 03 04 05 06 07"); // xxd -c 8 has no gap
}

// Bytes in a form that no tool prints must not be lost as text.
TEST(HexReader, refusesATextColumnWithTooManyCharacters)
{
    EXPECT_EQ(errorOf(QByteArray("0000  68 69  hi\0 04 05 06", 24)).substr(0, 47),
              "line 1, column 14: the text column must have at");
    EXPECT_EQ(errorOf("0000  00 01 02 03  04 05 06 07"),
              "line 1, column 20: the text column must have at most 4 characters, one per byte, got '04 05 06 07'");
}

// --- Errors of dumps ----------------------------------------------------------------------------------------------

TEST(HexReader, refusesGapsAndContradictions)
{
    EXPECT_EQ(errorOf("0000  68 04\n0003  16"), "line 2: offset must be 0002, got 0003; 1 byte is missing");
    EXPECT_EQ(errorOf("00000000: 6804\n\n00000020: 16"),
              "line 3: offset must be 00000002, got 00000020; 30 bytes are missing");
    EXPECT_EQ(errorOf("0000  68 04\n0001  16"), "line 2: offset must be 0002, got 0001");
    EXPECT_EQ(errorOf("0000  68 04\n0000  68 04"), "line 2: offset must be 0002, got 0000");
    EXPECT_EQ(errorOf("00000010: 6804"), "line 1: offset must be 00000000, got 00000010; 16 bytes are missing");
    EXPECT_EQ(errorOf("0010  16"), "line 1: offset must be 0000, got 0010; 16 bytes are missing");
    EXPECT_EQ(errorOf("00000000  68 04  |h.|\n00000003"),
              "line 2: offset must be 00000002, got 00000003; 1 byte is missing");
    EXPECT_EQ(errorOf("0000  68 04\n68 04"), "line 2: a line of a dump must begin with an offset, got '68 04'");
    EXPECT_EQ(errorOf("0000  68 0\n"), "line 1, column 10: '0' must have an even number of hex digits");
    EXPECT_EQ(errorOf("0000  68 0g\n"), "line 1, column 11: 'g' is not a hex digit");
}

TEST(HexReader, explainsOffsetsInOctalOrDecimal)
{
    EXPECT_EQ(errorOf("0000000 00 01 02 03 04 05 06 07\n0000010\n"),
              "line 2: offset must be 0000008, got 0000010; offsets must be hexadecimal, as of od -A x -t x1");
    EXPECT_EQ(errorOf("0000000 00 01 02 03 04 05 06 07 08 09\n0000010\n"),
              "line 2: offset must be 000000a, got 0000010; offsets must be hexadecimal, as of od -A x -t x1");
    EXPECT_EQ(errorOf("0000000 00 01\n*\n0000400\n"),
              "line 3: offset 0000400 may be octal or decimal; use od -A x -t x1");
}

TEST(HexReader, refusesWordsOfUnknownOrder)
{
    EXPECT_EQ(errorOf("0000000 0468 0000\n0000004\n"),
              "line 1: '0468' must be a byte of two hex digits; use od -A x -t x1, hexdump -C or xxd");
}

// od pads the last word: "od -A x -t x2" of 7 bytes.
TEST(HexReader, refusesWordsThatArePadded)
{
    const std::string rule = "' must be a byte of two hex digits; use od -A x -t x1, hexdump -C or xxd";
    EXPECT_EQ(errorOf("000000 0468 0000 0700 0000\n000007\n"), "line 1: '0468" + rule);
    EXPECT_EQ(errorOf("000000 00000468\n000002\n"), "line 1: '00000468" + rule);
    EXPECT_EQ(bytesOf("000000 0468 0000 0700 0000\n000006\n"), "00 00 00 04 68 00 00 07 00 00 00 00 00 06");
    EXPECT_EQ(bytesOf("0000 0468\n000001\n"), "00 00 04 68 00 00 01");
}

// "hexdump -x" and "od -A x -t u2" of 2 bytes.
TEST(HexReader, refusesWordsAfterTheOffsetsOfOd)
{
    const std::string rule = "' must be a byte of two hex digits; use od -A x -t x1, hexdump -C or xxd";
    EXPECT_EQ(errorOf("0000000    0468           \n0000002\n"), "line 1: '0468" + rule);
    EXPECT_EQ(errorOf("000000  1128\n000002\n"), "line 1: '1128" + rule);
    EXPECT_EQ(bytesOf("000000  68 04"), "68 04");
}

// The first two lines of od, od -A x, hexdump, od -c, hexdump -b, hexdump -d and hexdump -x for "abcdefghijklmnopqr".
TEST(HexReader, advisesAnotherDumpInPlaceOfWordsCharactersAndOtherBases)
{
    const struct {
        const char* dump;
        const char* place;
    } dumps[] = {
        {"0000000 061141 062143 063145 064147 065151 066153 067155 070157\n0000020 071161\n0000022\n", "1: '061141"},
        {"000000 061141 062143 063145 064147 065151 066153 067155 070157\n000010 071161\n000012\n", "1: '061141"},
        {"0000000 6261 6463 6665 6867 6a69 6c6b 6e6d 706f\n0000010 7271\n0000012\n", "1: '6261"},
        {"0000000   a   b   c   d\n0000004\n", "1, column 11: 'a"},
        {"0000000   z   b   c   d\n0000004\n", "1, column 11: 'z"},
        {"0000000 141 142 143 144\n0000004\n", "1, column 9: '141"},
        {"0000000   25185   25699\n0000004\n", "1, column 11: '25185"},
        {"0000000    6261    6463\n0000004\n", "1, column 12: '6261"},
    };
    for (const auto& each : dumps) {
        SCOPED_TRACE(each.dump);
        EXPECT_EQ(errorOf(each.dump), std::string("line ") + each.place +
                                          "' must be a byte of two hex digits; use od -A x -t x1, hexdump -C or xxd");
    }
}

TEST(HexReader, refusesWordsWithTheLastByteFirst)
{
    EXPECT_EQ(errorOf("00000000: 00000468 00000700 002a2000 00000000  h........ *.....\n"),
              "line 1: '00000468' has its bytes in reverse order, as the text column shows; use xxd without -e");
    EXPECT_EQ(errorOf("00000000: 01010101  ....\n00000004: 0001     0468   ..h.\n"),
              "line 2, column 20: the text column must have at most 2 characters, one per byte, got '0468   ..h.'; use "
              "xxd without -e");
    EXPECT_EQ(errorOf("00000000:   000468                             h..\n"),
              "line 1: '000468' has its bytes in reverse order, as the text column shows; use xxd without -e");
    EXPECT_EQ(errorOf("00000000: 0468 0000  h...\n"),
              "line 1: '0468' has its bytes in reverse order, as the text column shows; use xxd without -e");
    EXPECT_EQ(bytesOf("00000000: 68040000 20616220  h... ab \n00000008: 00010203  ....\n"),
              "68 04 00 00 20 61 62 20 00 01 02 03");
}

// Nothing in the text column shows the order, so that large words may be of xxd -g 4 or of xxd -e.
TEST(HexReader, refusesLargeWordsThatMayHaveTheLastByteFirst)
{
    EXPECT_EQ(errorOf("00000000: 01010101  ....\n00000004: 00000007 00000001  ........\n"),
              "line 2: '00000007' may have its bytes in reverse order, as of xxd -e; use xxd -g 1");
    EXPECT_EQ(bytesOf("00000000: 01010101 00000000  ........\n"), "01 01 01 01 00 00 00 00");
    EXPECT_EQ(bytesOf("00000000: 0007 0001  ....\n"), "00 07 00 01");
    EXPECT_EQ(bytesOf("00000000: 00000007\n"), "00 00 00 07");
}

TEST(HexReader, refusesBinaryDigits)
{
    EXPECT_EQ(errorOf("00000000: 01101000 00000100                                      h.\n"),
              "line 1: '01101000' is binary; use xxd without -b");
    EXPECT_EQ(errorOf("00000000: 00000001                                               .\n"),
              "line 1: '00000001' is binary; use xxd without -b");
    EXPECT_EQ(bytesOf("00000000: 01101000 00000101  ........\n00000008: 68040000  h..."),
              "01 10 10 00 00 00 01 01 68 04 00 00");
}

TEST(HexReader, repeatsTheLineBeforeAStar)
{
    EXPECT_EQ(bytesOf("00000000  68 04  |h.|\n*\n00000006  16  |.|\n00000007"), "68 04 68 04 68 04 16");
    EXPECT_EQ(errorOf("0000  68 04\n*\n0005  16"),
              "line 3: offset after * must be 0002 and a multiple of 2 bytes, got 0005");
    EXPECT_EQ(errorOf("0000  68 04\n*\n0002  16"),
              "line 3: offset after * must be 0002 and a multiple of 2 bytes, got 0002");
    EXPECT_EQ(errorOf("0000  68 04\n*\n"), "line 2: * must be followed by an offset");
    EXPECT_EQ(errorOf("0000  68 04\n*\n*\n0006"), "line 3: * must come after a line of bytes");
}

// The bytes of a line with * come in pieces, however many they are.
TEST(HexReader, repeatsInBoundedPieces)
{
    QByteArray left = "00000000  68 04\n*\n1000000000\n";
    HexReader reader([&left] { return std::exchange(left, QByteArray()); });
    for (int i = 0; i < 100; ++i) {
        const QByteArray piece = reader.read();
        ASSERT_GT(piece.size(), 0);
        ASSERT_LE(piece.size(), 1 << 17);
    }
}

TEST(HexReader, refusesALineOfADumpThatIsTooLong)
{
    EXPECT_EQ(readInPieces("0000: 68\n0001: " + QByteArray(100000, ' '), 4096, HexReader::everyByte)
                  .error.message()
                  .toStdString(),
              "line 2: a line of a dump must have at most 65536 characters");
}

static const int pieceSizes[] = {1, 100, 4096, 1 << 16, INT_MAX};

// How the text arrives makes no difference, and the digits of an offset never become bytes.
TEST(HexReader, refusesADumpWhoseFirstLineIsTooLong)
{
    const QByteArray bytes = QByteArray("68 ").repeated(22000) + '\n'; // 66000 characters
    for (const QByteArray& text : {"00000000: " + bytes, "0000  " + bytes + bytes, "# a note\n\n0000: " + bytes}) {
        for (const int size : pieceSizes) {
            const HexReading reading = readInPieces(text, size, HexReader::everyByte);
            EXPECT_EQ(reading.bytes.size(), 0);
            EXPECT_EQ(errorText(reading), (text[0] == '#' ? "line 3: " : "line 1: ") +
                                              std::string("a line of a dump must have at most 65536 characters"));
        }
    }
}

TEST(HexReader, acceptsALineOfADumpThatIsAsLongAsAllowed)
{
    const QByteArray longest = "0001: 04" + QByteArray(65528, ' ');
    for (const int size : {8, 9 + 65536, INT_MAX}) { // the second ends before the end of the line
        EXPECT_EQ(hex(readInPieces("0000: 68\n" + longest + "\n0002: 16", size, HexReader::everyByte).bytes),
                  "68 04 16");
        EXPECT_EQ(errorText(readInPieces("0000: 68\n" + longest + " \n0002: 16", size, HexReader::everyByte)),
                  "line 2: a line of a dump must have at most 65536 characters");
    }
}

// As hex text, the first line would begin with the bytes of the offset.
TEST(HexReader, refusesALongFirstLineThatMayBeginWithAnOffset)
{
    const QByteArray bytes = QByteArray("68 ").repeated(22000) + '\n';
    const QByteArray blanks(70000, ' ');
    for (const QByteArray& text :
         {"000000 " + bytes + "0055f0 " + bytes, // od -A x -t x1 -w22000
          blanks, blanks + "0000: 68\n", QByteArray(65531, ' ') + "000000: 68 04\n", "00000000" + blanks + "68\n",
          QByteArray(62, '6') + ',' + blanks, "0000:" + blanks + "68\n", "0x0000:" + blanks + "68\n",
          "0000 68 04\n" + blanks + "\n0002 16\n", "0000 68 04\n" + QByteArray(65534, ' ') + "0002 16\n"}) {
        SCOPED_TRACE(text.left(20).toStdString());
        for (const int size : pieceSizes)
            EXPECT_EQ(errorText(readInPieces("# a note\n" + text, size, HexReader::everyByte)),
                      "line 2: a first line that may begin with an offset must have at most 65536 characters");
    }
}

TEST(HexReader, decidesByTheFirst262144Characters)
{
    const QByteArray note = "# 34567\n"; // 8 characters
    const QByteArray summary = QByteArray(29999, '.') + '\n';
    for (const int size : pieceSizes) {
        SCOPED_TRACE(size);
        const auto read = [size](const QByteArray& text) { return readInPieces(text, size, HexReader::everyByte); };
        EXPECT_EQ(hex(read("0000 68 04\n" + note.repeated(32764) + "0002 16\n").bytes), "68 04 16"); // 262131 + 8
        EXPECT_EQ(
            errorText(read("0000 68 04\n" + note.repeated(32766) + "0002 16\n")),
            "line 1: the first line may begin with an offset: the second must be complete within 262144 characters");
        EXPECT_EQ(hex(read(summary.repeated(8) + "\t0x0000:  6804\n").bytes), "68 04");
        EXPECT_EQ(errorText(read(summary.repeated(9) + "\t0x0000:  6804\n")),
                  "line 1, column 1: '.' is not a hex digit");
    }
}

TEST(HexReader, readsALongFirstLineOfHexText)
{
    for (const int size : pieceSizes) {
        const HexReading reading = readInPieces(QByteArray("6804 ").repeated(20000), size, HexReader::everyByte);
        EXPECT_EQ(errorText(reading), "");
        EXPECT_EQ(reading.bytes.size(), 40000);
        const HexReading blank = readInPieces(QByteArray(64, '6') + QByteArray(70000, ' '), size, HexReader::everyByte);
        EXPECT_EQ(errorText(blank), "");
        EXPECT_EQ(blank.bytes.size(), 32);
    }
}

TEST(HexReader, skipsCommentsOfAnyLengthBeforeADump)
{
    const QByteArray many = QByteArray("# a note\n").repeated(20000);
    const QByteArray longest = '#' + QByteArray(200000, 'a') + "\r\n";
    for (const QByteArray& comments : {many, longest, "\xef\xbb\xbf" + longest + '\n' + many}) {
        for (const int size : pieceSizes) {
            const HexReading dump = readInPieces(comments + "0000 68 04\n0002 16", size, HexReader::everyByte);
            EXPECT_EQ(errorText(dump), "");
            EXPECT_EQ(hex(dump.bytes), "68 04 16");
            const HexReading text = readInPieces(comments + "6804 16", size, HexReader::everyByte);
            EXPECT_EQ(errorText(text), "");
            EXPECT_EQ(hex(text.bytes), "68 04 16");
        }
    }
    EXPECT_EQ(errorText(readInPieces(many + "0000: 68\n0002: 04", 4096, HexReader::everyByte)).substr(0, 12),
              "line 20002: ");
    EXPECT_EQ(errorText(readInPieces(many + "68 0g", 4096, HexReader::everyByte)).substr(0, 12), "line 20001, ");
}

// --- Packets ------------------------------------------------------------------------------------------------------

// IPv4 and UDP headers, from port 5000 to port 40000.
static const char* const udpPacket = "\t0x0000:  4500 001f 0000 0000 4011 0000 7f00 0001\n"
                                     "\t0x0010:  7f00 0001 1388 9c40 000b 0000 6804 16\n";

TEST(HexReader, takesEachPacketFromOffsetZero)
{
    const QByteArray packet = udpPacket;
    const int lineSize = packet.indexOf('\n') + 1;
    EXPECT_EQ(bytesOf("12:00 IP a > b\n" + packet + "12:01 IP b > a\n" + packet, HexReader::payloads),
              "68 04 16 68 04 16");
    EXPECT_EQ(bytesOf(packet + "\n" + packet, HexReader::payloads), "68 04 16 68 04 16");
    EXPECT_EQ(errorOf(packet + packet), "line 3: offset must be 001f, got 0000");
    EXPECT_EQ(errorOf("12:00 IP a\n" + packet.left(lineSize) + "12:01 IP b\n" + packet.mid(lineSize)),
              "line 4: offset must be 0000, got 0010; 16 bytes are missing");
}

// tcpdump -# numbers the packets.
TEST(HexReader, takesASummaryWithANumberForNoOffset)
{
    const QByteArray packet = udpPacket;
    EXPECT_EQ(bytesOf("  999  12:00 IP a > b\n" + packet + " 1000  12:01 IP b > a\n" + packet, HexReader::payloads),
              "68 04 16 68 04 16");
}

static QByteArray dumpOf(const QByteArray& bytes)
{
    QByteArray text;
    for (int pos = 0; pos < bytes.size(); pos += 16)
        text += QByteArray::number(pos, 16).rightJustified(4, '0') + "  " + bytes.mid(pos, 16).toHex(' ') + '\n';
    return text;
}

// IPv4 and UDP headers, and the bytes 68 04 16.
static const QByteArray bytesOfUdp = "4500 001f 0000 0000 4011 0000 7f000001 7f000001 1388 9c40 000b 0000 680416"_hex;

TEST(HexReader, skipsTheHeaderOfEachLinkType)
{
    for (const char* header : {
             "",
             "010203040506 010203040506 0800",                 // Ethernet
             "010203040506 010203040506 8100 0005 0800",       // with a VLAN
             "0000 0001 0006 0102030405060000 0800",           // Linux cooked capture
             "0800 0000 00000002 0001 00 06 0102030405060000", // Linux cooked capture, version 2
             "02000000",                                       // loopback
         })
        EXPECT_EQ(bytesOf(dumpOf(QByteArray::fromHex(header) + bytesOfUdp), HexReader::payloads), "68 04 16") << header;
}

TEST(HexReader, skipsTheOptionsOfIp)
{
    const QByteArray options = QByteArray(40, '\1');
    const QByteArray packet = "4f00 0047"_hex + bytesOfUdp.mid(4, 16) + options + bytesOfUdp.mid(20);
    EXPECT_EQ(bytesOf(dumpOf(packet), HexReader::payloads), "68 04 16");
}

TEST(HexReader, skipsThePaddingOfEthernet)
{
    const QByteArray text = "0000  01 02 03 04 05 06 01 02 03 04 05 06 08 00 45 00\n"
                            "0010  00 1e 00 00 00 00 40 11 00 00 0a 00 00 01 0a 00\n"
                            "0020  00 02 13 88 9c 40 00 0a 00 00 68 16 00 00 00 00\n"
                            "0030  00 00 00 00 00 00 00 00 00 00 00 00\n";
    EXPECT_EQ(bytesOf(text, HexReader::payloads), "68 16");
}

TEST(HexReader, ignoresOtherPacketsOfACapture)
{
    const QByteArray arp = "12:00:00 ARP, Request who-has 10.0.0.1 tell 10.0.0.2, length 28\n"
                           "\t0x0000:  0001 0800 0604 0001 0242 0a00 0002 0a00\n"
                           "\t0x0010:  0002 0000 0000 0000 0a00 0001\n";
    EXPECT_EQ(bytesOf(arp + "12:00:01 IP a\n" + udpPacket, HexReader::payloads), "68 04 16");
    EXPECT_EQ(bytesOf("12:00:01 IP a\n" + QByteArray(udpPacket) + arp, HexReader::payloads), "68 04 16");
}

TEST(HexReader, refusesPacketsThatAreNotWhole)
{
    const QByteArray packet = QByteArray("12:00:00 IP a > b\n") + udpPacket;
    EXPECT_EQ(errorOf(QByteArray(packet).replace("001f", "0020"), HexReader::payloads),
              "line 2: a packet needs 32 bytes, got 31; capture with tcpdump -s 0");
    EXPECT_EQ(errorOf(QByteArray(packet).replace("0000 0000 4011", "0000 2000 4011"), HexReader::payloads),
              "line 2: a packet is a fragment; gqtool does not reassemble it");
    EXPECT_EQ(errorOf(QByteArray(packet).replace("4011", "4006"), HexReader::payloads),
              "line 2: the TCP header of a packet is malformed");
}

// A dump of other bytes is read as it arrives.
TEST(HexReader, doesNotWaitForTheEndOfWhatIsNoPacket)
{
    QByteArray text;
    for (int offset = 0; offset < 96; offset += 16)
        text += QByteArray::number(offset, 16).rightJustified(4, '0') + ": " + QByteArray(32, '0') + "\n";
    int pieces = 0;
    HexReader reader([&] { return ++pieces == 1 ? text : QByteArray(); }, HexReader::payloads);
    EXPECT_EQ(reader.read().size(), 96);
    EXPECT_EQ(pieces, 1);
}

TEST(HexReader, keepsTheBytesOfADumpWithoutPackets)
{
    EXPECT_EQ(bytesOf("0000  68 04 00 16", HexReader::payloads), "68 04 00 16");
    EXPECT_EQ(bytesOf("0000  45 00 00 1f 16", HexReader::payloads), "45 00 00 1f 16");
    const QByteArray shortHeader = "44"_hex + bytesOfUdp.mid(1); // of 16 bytes; IPv4 has at least 20
    EXPECT_EQ(bytesOf(dumpOf(shortHeader), HexReader::payloads), hex(shortHeader));
}
