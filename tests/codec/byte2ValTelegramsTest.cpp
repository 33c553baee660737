#include "byte2Val.h"
#include "support/chance.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <new>
#include <string>
#include <type_traits>

using gqdb::CByte2Val;

using byte = unsigned char;
static_assert(std::is_same_v<decltype(&CByte2Val::getCrc16), int (*)(const char*, int, byte&, byte&)>);
static_assert(std::is_same_v<decltype(&CByte2Val::getCs), byte (*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&CByte2Val::isGramEqual), bool (*)(const QByteArray&, const QByteArray&)>);
static_assert(std::is_same_v<decltype(CByte2Val::buf2str(nullptr, 0)), QString>);
static_assert(std::is_same_v<decltype(CByte2Val::buf2str(QByteArray())), QString>);

// --- Helpers --------------------------------------------------------------------

// 00 to ff.
static QByteArray everyByte()
{
    QByteArray bytes;
    for (int value = 0; value < 256; ++value)
        bytes += char(value);
    return bytes;
}

static QByteArray byChance(Chance& chance, int size)
{
    QByteArray bytes;
    for (const unsigned char value : chance.bytes(size))
        bytes += char(value);
    return bytes;
}

static std::string shown(int number)
{
    char digits[12];
    std::snprintf(digits, sizeof digits, "%04x", static_cast<unsigned int>(number));
    return digits;
}

// `first` and `second`, a5 5a before, as one number.
static std::string crcOf(const QByteArray& bytes)
{
    const std::vector<char> buffer = heapBytes(bytes);
    unsigned char first = 0xa5;
    unsigned char second = 0x5a;
    EXPECT_EQ(CByte2Val::getCrc16(buffer.data(), int(buffer.size()), first, second), 1);
    return shown(first << 8 | second);
}

// The lowest `count` bits in reverse order.
static int reflected(int bits, int count)
{
    int result = 0;
    for (int i = 0; i < count; ++i)
        result |= (bits >> i & 1) << (count - 1 - i);
    return result;
}

// The same checksum, computed bit by bit without a table: width 16, polynomial 8005, start ffff, input and output
// reflected.
static std::string crcBitByBit(const QByteArray& bytes)
{
    int crc = 0xffff;
    for (const char value : bytes) {
        const int input = reflected(static_cast<unsigned char>(value), 8);
        for (int bit = 7; bit >= 0; --bit) {
            const bool out = (crc >> 15 & 1) != (input >> bit & 1);
            crc = crc << 1 & 0xffff;
            if (out)
                crc ^= 0x8005;
        }
    }
    return shown(reflected(crc, 16));
}

// --- CRC ------------------------------------------------------------------------

TEST(GetCrc16, returnsThePublishedCheckValue)
{
    EXPECT_EQ(crcOf("31 32 33 34 35 36 37 38 39"_hex), "4b37");
    EXPECT_EQ(crcBitByBit("31 32 33 34 35 36 37 38 39"_hex), "4b37");
}

TEST(GetCrc16, storesTheHighByteInFirstAndTheLowByteInSecond)
{
    const std::vector<char> buffer = heapBytes("01 03 00 00 00 01"_hex);
    unsigned char first = 0;
    unsigned char second = 0;
    EXPECT_EQ(CByte2Val::getCrc16(buffer.data(), 6, first, second), 1);
    EXPECT_EQ(first, 0x0a);
    EXPECT_EQ(second, 0x84);
}

TEST(GetCrc16, computesTheChecksumsOfModbusTelegrams)
{
    // Sent low byte first: 41 12, 76 87, 84 0a.
    EXPECT_EQ(crcOf("02 07"_hex), "1241");
    EXPECT_EQ(crcOf("11 03 00 6b 00 03"_hex), "8776");
    EXPECT_EQ(crcOf("01 03 00 00 00 01"_hex), "0a84");
}

TEST(GetCrc16, computesKnownValuesOfSimpleInputs)
{
    EXPECT_EQ(crcOf("00"_hex), "40bf");
    EXPECT_EQ(crcOf("ff"_hex), "00ff");
    EXPECT_EQ(crcOf(QByteArray(8, '\0')), "0b40");
    EXPECT_EQ(crcOf(QByteArray(256, '\0')), "64bf");
    EXPECT_EQ(crcOf(QByteArray(256, char(0xff))), "30ff");
    EXPECT_EQ(crcOf(everyByte()), "de6c");
}

// A single byte b uses entry ff ^ b of both tables: `first` is the low table's entry, `second` is ff ^ the high table's
// entry.
TEST(GetCrc16, usesEachTableEntryAtItsIndex)
{
    const char* const firstEight[] = {"00ff", "c03e", "c17e", "01bf", "c3fe", "033f", "027f", "c2be"};
    for (int entry = 0; entry < 8; ++entry)
        EXPECT_EQ(crcOf(QByteArray(1, char(0xff ^ entry))), firstEight[entry]) << entry;

    for (int value = 0; value < 256; ++value) {
        const QByteArray bytes(1, char(value));
        EXPECT_EQ(crcOf(bytes), crcBitByBit(bytes)) << value;
    }
}

TEST(GetCrc16, agreesWithTheBitwiseFormAtEveryLength)
{
    Chance chance(16);
    for (int length = 1; length <= 300; ++length) {
        const QByteArray bytes = byChance(chance, length);
        EXPECT_EQ(crcOf(bytes), crcBitByBit(bytes)) << hex(bytes);
    }
}

TEST(GetCrc16, isZeroOverATelegramWithItsChecksum)
{
    EXPECT_EQ(crcOf("11 03 00 6b 00 03 7687"_hex), "0000");
    EXPECT_NE(crcOf("11 03 00 6b 00 03 8776"_hex), "0000");
}

TEST(GetCrc16, ignoresBytesAfterTheLength)
{
    const QByteArray bytes = "02 07 ff ff"_hex;
    unsigned char first = 0;
    unsigned char second = 0;
    EXPECT_EQ(CByte2Val::getCrc16(bytes.constData(), 2, first, second), 1);
    EXPECT_EQ(shown(first << 8 | second), "1241");
}

TEST(GetCrc16, leavesBothBytesIfTheInputIsEmpty)
{
    for (int length : {0, -1, INT_MIN}) {
        for (const char* buf : {"\x02\x07", static_cast<const char*>(nullptr)}) {
            unsigned char first = 0xa5;
            unsigned char second = 0x5a;
            EXPECT_EQ(CByte2Val::getCrc16(buf, length, first, second), 0);
            EXPECT_EQ(shown(first << 8 | second), "a55a");
        }
    }
}

// --- Sum ------------------------------------------------------------------------

static int csOf(const QByteArray& bytes)
{
    return CByte2Val::getCs(heapBytes(bytes).data(), bytes.size());
}

TEST(GetCs, addsTheBytesModulo256)
{
    EXPECT_EQ(csOf("ff ff 03"_hex), 0x01);
    EXPECT_EQ(csOf("80 80"_hex), 0x00);
    EXPECT_EQ(csOf("01 02 03"_hex), 0x06);
    EXPECT_EQ(csOf(everyByte()), 0x80); // 32640
    EXPECT_EQ(csOf(QByteArray(1000, char(0xff))), 0x18);
    for (int value = 0; value < 256; ++value)
        EXPECT_EQ(csOf(QByteArray(1, char(value))), value);
}

TEST(GetCs, ignoresBytesAfterTheLength)
{
    EXPECT_EQ(CByte2Val::getCs("\x01\x02\x04", 2), 0x03);
}

TEST(GetCs, isZeroForEmptyInput)
{
    for (int length : {0, -1, INT_MIN}) {
        EXPECT_EQ(CByte2Val::getCs("\x01\x02\x04", length), 0x00);
        EXPECT_EQ(CByte2Val::getCs(nullptr, length), 0x00);
    }
}

// --- Comparison -----------------------------------------------------------------

TEST(IsGramEqual, treatsANullArrayAsEmpty)
{
    const QByteArray null;
    const QByteArray empty("");
    ASSERT_TRUE(null.isNull() && !empty.isNull());
    EXPECT_TRUE(CByte2Val::isGramEqual(null, null));
    EXPECT_TRUE(CByte2Val::isGramEqual(empty, empty));
    EXPECT_TRUE(CByte2Val::isGramEqual(null, empty));
    EXPECT_TRUE(CByte2Val::isGramEqual(empty, null));
}

TEST(IsGramEqual, distinguishesAnEmptyArrayFromASingleByte)
{
    for (const QByteArray& one : {"00"_hex, "68"_hex}) {
        for (const QByteArray& none : {QByteArray(), QByteArray("")}) {
            EXPECT_FALSE(CByte2Val::isGramEqual(none, one));
            EXPECT_FALSE(CByte2Val::isGramEqual(one, none));
        }
    }
}

TEST(IsGramEqual, comparesTheBytesOfDistinctArrays)
{
    const QByteArray bytes = everyByte();
    const QByteArray same = everyByte();
    ASSERT_NE(bytes.constData(), same.constData());
    EXPECT_TRUE(CByte2Val::isGramEqual(bytes, same));
    EXPECT_TRUE(CByte2Val::isGramEqual(bytes, bytes));
}

TEST(IsGramEqual, distinguishesAnArrayFromItsPrefix)
{
    const QByteArray bytes = "68 00 01 02"_hex;
    for (int size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(CByte2Val::isGramEqual(bytes, bytes.left(size)));
        EXPECT_FALSE(CByte2Val::isGramEqual(bytes.left(size), bytes));
    }
    EXPECT_FALSE(CByte2Val::isGramEqual("68"_hex, "68 00"_hex));
}

TEST(IsGramEqual, comparesEveryPosition)
{
    // A frame: start, length, sequence, arg2, arg1, command, payload, checksum, end.
    const QByteArray frame = "68 04000000 0100 00 00 30 07000000 0000 16"_hex;
    for (int at = 0; at < frame.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            SCOPED_TRACE(testing::Message() << at << ", " << bit);
            QByteArray other = frame;
            other[at] = char(other[at] ^ 1 << bit);
            EXPECT_FALSE(CByte2Val::isGramEqual(frame, other));
            EXPECT_FALSE(CByte2Val::isGramEqual(other, frame));
        }
    }
}

TEST(IsGramEqual, comparesBytesAfterAZeroByte)
{
    EXPECT_TRUE(CByte2Val::isGramEqual("61 00 62"_hex, "61 00 62"_hex));
    EXPECT_FALSE(CByte2Val::isGramEqual("61 00 62"_hex, "61 00 63"_hex));
}

// --- Text -----------------------------------------------------------------------

// The text of both overloads, which must agree.
static QString textOf(const QByteArray& bytes)
{
    const QString text = CByte2Val::buf2str(heapBytes(bytes).data(), bytes.size());
    EXPECT_EQ(CByte2Val::buf2str(bytes), text);
    return text;
}

TEST(Buf2Str, writesTwoDigitsPerByteSeparatedByBlanks)
{
    EXPECT_EQ(textOf("68 00 ff"_hex), QString("68 00 ff"));
    EXPECT_EQ(textOf("0a"_hex), QString("0a"));
    EXPECT_EQ(textOf("00"_hex), QString("00"));
    EXPECT_EQ(textOf("10 01"_hex), QString("10 01"));
}

TEST(Buf2Str, writesEveryByteInLowerCase)
{
    EXPECT_EQ(textOf(everyByte()), QString("00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f "
                                           "10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f "
                                           "20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f "
                                           "30 31 32 33 34 35 36 37 38 39 3a 3b 3c 3d 3e 3f "
                                           "40 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f "
                                           "50 51 52 53 54 55 56 57 58 59 5a 5b 5c 5d 5e 5f "
                                           "60 61 62 63 64 65 66 67 68 69 6a 6b 6c 6d 6e 6f "
                                           "70 71 72 73 74 75 76 77 78 79 7a 7b 7c 7d 7e 7f "
                                           "80 81 82 83 84 85 86 87 88 89 8a 8b 8c 8d 8e 8f "
                                           "90 91 92 93 94 95 96 97 98 99 9a 9b 9c 9d 9e 9f "
                                           "a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af "
                                           "b0 b1 b2 b3 b4 b5 b6 b7 b8 b9 ba bb bc bd be bf "
                                           "c0 c1 c2 c3 c4 c5 c6 c7 c8 c9 ca cb cc cd ce cf "
                                           "d0 d1 d2 d3 d4 d5 d6 d7 d8 d9 da db dc dd de df "
                                           "e0 e1 e2 e3 e4 e5 e6 e7 e8 e9 ea eb ec ed ee ef "
                                           "f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa fb fc fd fe ff"));
}

TEST(Buf2Str, addsNoLineBreakAndNoTrailingBlank)
{
    const QString text = textOf(QByteArray(100000, '\n'));
    EXPECT_EQ(text.size(), 3 * 100000 - 1);
    EXPECT_TRUE(text == QString("0a ").repeated(100000).trimmed());
}

TEST(Buf2Str, ignoresBytesAfterTheLength)
{
    EXPECT_EQ(CByte2Val::buf2str("\x01\x02\x04", 2), QString("01 02"));
}

TEST(Buf2Str, failsWhereATextOf2To31CharactersWouldBeNeeded)
{
    EXPECT_THROW(CByte2Val::buf2str("", 715827883), std::bad_alloc); // before it reads; 3 * 715827883 - 1 == 1 << 31
}

TEST(Buf2Str, isEmptyForEmptyInput)
{
    for (int length : {0, -1, INT_MIN}) {
        EXPECT_TRUE(CByte2Val::buf2str("\x01\x02\x04", length).isEmpty());
        EXPECT_TRUE(CByte2Val::buf2str(nullptr, length).isEmpty());
    }
    EXPECT_TRUE(CByte2Val::buf2str(QByteArray()).isEmpty());
    EXPECT_TRUE(CByte2Val::buf2str(QByteArray("")).isEmpty());
}
