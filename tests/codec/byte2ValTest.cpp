#include "byte2Val.h"
#include "byte2Fep.h"
#include "byte2Rdb.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <type_traits>

using gqdb::CByte2Fep;
using gqdb::CByte2Rdb;
using gqdb::CByte2Val;

// --- The classes ----------------------------------------------------------------

static_assert(std::is_empty_v<CByte2Val> && !std::is_polymorphic_v<CByte2Val>);
static_assert(std::is_empty_v<CByte2Rdb> && !std::is_polymorphic_v<CByte2Rdb>);
static_assert(std::is_empty_v<CByte2Fep> && !std::is_polymorphic_v<CByte2Fep>);
static_assert(std::is_convertible_v<CByte2Rdb*, CByte2Val*>, "a public base");
static_assert(std::is_convertible_v<CByte2Fep*, CByte2Val*>, "a public base");

// Compiles without a cast only if there is a single overload.
static_assert(std::is_same_v<decltype(&CByte2Val::long2Byte), void (*)(unsigned long long, QByteArray&)>);

static_assert(std::is_same_v<decltype(CByte2Val::byte2Short(nullptr)), int>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2UShort(nullptr)), int>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2Int(nullptr)), int>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2UInt(nullptr)), unsigned int>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2Long(nullptr)), long long>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2ULong(nullptr)), unsigned long long>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2Float(nullptr)), float>);
static_assert(std::is_same_v<decltype(CByte2Val::byte2Double(nullptr)), double>);

TEST(ByteCodecs, canBeConstructed)
{
    const CByte2Val val;
    const CByte2Rdb rdb;
    const CByte2Fep fep;
    (void)val;
    (void)rdb;
    (void)fep;
}

// --- Helpers --------------------------------------------------------------------

// 16 bytes of 0xee after `write` has stored from the third one on.
static std::string stored(const std::function<void(char*)>& write)
{
    QByteArray field(16, char(0xee));
    write(field.data() + 2);
    return hex(field);
}

static float floatOf(unsigned int image)
{
    float value;
    static_assert(sizeof value == sizeof image);
    std::memcpy(&value, &image, sizeof value);
    return value;
}

static unsigned int imageOf(float value)
{
    unsigned int image;
    std::memcpy(&image, &value, sizeof image);
    return image;
}

static double doubleOf(unsigned long long image)
{
    double value;
    static_assert(sizeof value == sizeof image);
    std::memcpy(&value, &image, sizeof value);
    return value;
}

static unsigned long long imageOf(double value)
{
    unsigned long long image;
    std::memcpy(&image, &value, sizeof image);
    return image;
}

// --- Two bytes ------------------------------------------------------------------

TEST(Short2Byte, appendsTheLowByteFirst)
{
    QByteArray data = "aa"_hex;
    CByte2Val::short2Byte(0x1234, data);
    CByte2Val::short2Byte(0x5678u, data);
    EXPECT_EQ(hex(data), "aa 34 12 78 56");
}

TEST(Short2Byte, storesExactlyTwoBytes)
{
    EXPECT_EQ(stored([](char* buf) { CByte2Val::short2Byte(0x1234, buf); }),
              "ee ee 34 12 ee ee ee ee ee ee ee ee ee ee ee ee");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::short2Byte(0x5678u, buf); }),
              "ee ee 78 56 ee ee ee ee ee ee ee ee ee ee ee ee");
}

TEST(Short2Byte, dropsTheBitsAbove15)
{
    QByteArray data;
    CByte2Val::short2Byte(0x12345, data);
    CByte2Val::short2Byte(0xfffe6789u, data);
    CByte2Val::short2Byte(std::numeric_limits<int>::min(), data);
    EXPECT_EQ(hex(data), "45 23 89 67 00 00");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::short2Byte(0x12345, buf); }),
              "ee ee 45 23 ee ee ee ee ee ee ee ee ee ee ee ee");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::short2Byte(0xfffe6789u, buf); }),
              "ee ee 89 67 ee ee ee ee ee ee ee ee ee ee ee ee");
}

TEST(Short2Byte, writesNegativeNumbersInTwosComplement)
{
    QByteArray data;
    CByte2Val::short2Byte(-2, data);
    CByte2Val::short2Byte(-32768, data);
    CByte2Val::short2Byte(-32769, data); // one below the range: wraps
    EXPECT_EQ(hex(data), "fe ff 00 80 ff 7f");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::short2Byte(-2, buf); }),
              "ee ee fe ff ee ee ee ee ee ee ee ee ee ee ee ee");
}

TEST(Short2Byte, writesSignedAndUnsignedAlike)
{
    QByteArray data;
    CByte2Val::short2Byte(-2, data);
    CByte2Val::short2Byte(0xfffffffeu, data);
    EXPECT_EQ(hex(data), "fe ff fe ff");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::short2Byte(0xfffffffeu, buf); }),
              "ee ee fe ff ee ee ee ee ee ee ee ee ee ee ee ee");
}

TEST(Byte2Short, readsTheLowByteFirst)
{
    EXPECT_EQ(CByte2Val::byte2Short(heapBytes("3412"_hex).data()), 0x1234);
    EXPECT_EQ(CByte2Val::byte2Short(heapBytes("ff00"_hex).data()), 255);
    EXPECT_EQ(CByte2Val::byte2Short(heapBytes("ff7f"_hex).data()), 32767);
}

TEST(Byte2Short, signExtendsBit15)
{
    EXPECT_EQ(CByte2Val::byte2Short(heapBytes("0080"_hex).data()), -32768);
    EXPECT_EQ(CByte2Val::byte2Short(heapBytes("feff"_hex).data()), -2);
    EXPECT_EQ(CByte2Val::byte2Short(heapBytes("80ff"_hex).data()), -128);
}

TEST(Byte2UShort, readsBothBytesAsUnsigned)
{
    EXPECT_EQ(CByte2Val::byte2UShort(heapBytes("3412"_hex).data()), 0x1234);
    EXPECT_EQ(CByte2Val::byte2UShort(heapBytes("ff00"_hex).data()), 255);
    EXPECT_EQ(CByte2Val::byte2UShort(heapBytes("0080"_hex).data()), 32768);
    EXPECT_EQ(CByte2Val::byte2UShort(heapBytes("feff"_hex).data()), 65534);
    EXPECT_EQ(CByte2Val::byte2UShort(heapBytes("ffff"_hex).data()), 65535);
}

// --- Four bytes -----------------------------------------------------------------

TEST(Int2Byte, appendsTheLowByteFirst)
{
    QByteArray data;
    CByte2Val::int2Byte(0x12345678, data);
    EXPECT_EQ(hex(data), "78 56 34 12");
    CByte2Val::int2Byte(0x9abcdef0u, data);
    EXPECT_EQ(hex(data), "78 56 34 12 f0 de bc 9a");
}

TEST(Int2Byte, storesExactlyFourBytes)
{
    EXPECT_EQ(stored([](char* buf) { CByte2Val::int2Byte(0x12345678, buf); }),
              "ee ee 78 56 34 12 ee ee ee ee ee ee ee ee ee ee");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::int2Byte(0x9abcdef0u, buf); }),
              "ee ee f0 de bc 9a ee ee ee ee ee ee ee ee ee ee");
}

TEST(Int2Byte, writesSignedAndUnsignedAlike)
{
    QByteArray data;
    CByte2Val::int2Byte(-2, data);
    CByte2Val::int2Byte(0xfffffffeu, data);
    CByte2Val::int2Byte(std::numeric_limits<int>::min(), data);
    CByte2Val::int2Byte(0x80000000u, data);
    EXPECT_EQ(hex(data), "fe ff ff ff fe ff ff ff 00 00 00 80 00 00 00 80");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::int2Byte(-2, buf); }),
              "ee ee fe ff ff ff ee ee ee ee ee ee ee ee ee ee");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::int2Byte(0xfffffffeu, buf); }),
              "ee ee fe ff ff ff ee ee ee ee ee ee ee ee ee ee");
}

TEST(Byte2Int, readsTheLowByteFirst)
{
    EXPECT_EQ(CByte2Val::byte2Int(heapBytes("78563412"_hex).data()), 0x12345678);
    EXPECT_EQ(CByte2Val::byte2Int(heapBytes("80818203"_hex).data()), 0x03828180); // no byte is sign-extended
}

TEST(Byte2Int, readsNegativeNumbers)
{
    EXPECT_EQ(CByte2Val::byte2Int(heapBytes("ffffffff"_hex).data()), -1);
    EXPECT_EQ(CByte2Val::byte2Int(heapBytes("00000080"_hex).data()), std::numeric_limits<int>::min());
}

TEST(Byte2UInt, readsTheSameBitsAsUnsigned)
{
    EXPECT_EQ(CByte2Val::byte2UInt(heapBytes("78563412"_hex).data()), 0x12345678u);
    EXPECT_EQ(CByte2Val::byte2UInt(heapBytes("80818283"_hex).data()), 0x83828180u);
    EXPECT_EQ(CByte2Val::byte2UInt(heapBytes("ffffffff"_hex).data()), 4294967295u);
}

// --- Eight bytes ----------------------------------------------------------------

TEST(Long2Byte, appendsTheLowByteFirst)
{
    QByteArray data = "aa"_hex;
    CByte2Val::long2Byte(0x0123456789abcdefull, data);
    EXPECT_EQ(hex(data), "aa ef cd ab 89 67 45 23 01");
    CByte2Val::long2Byte(1, data);
    EXPECT_EQ(hex(data), "aa ef cd ab 89 67 45 23 01 01 00 00 00 00 00 00 00");
}

TEST(Long2Byte, writesSignedValuesAsTheirBitPattern)
{
    QByteArray data;
    const long long value = -2;
    CByte2Val::long2Byte(static_cast<unsigned long long>(value), data);
    EXPECT_EQ(hex(data), "fe ff ff ff ff ff ff ff");
}

TEST(Byte2Long, readsTheLowByteFirst)
{
    EXPECT_EQ(CByte2Val::byte2Long(heapBytes("efcdab8967452301"_hex).data()), 0x0123456789abcdefll);
    EXPECT_EQ(CByte2Val::byte2Long(heapBytes("8081828384858607"_hex).data()), 0x0786858483828180ll);
}

TEST(Byte2Long, readsNegativeNumbers)
{
    EXPECT_EQ(CByte2Val::byte2Long(heapBytes("feffffffffffffff"_hex).data()), -2);
    EXPECT_EQ(CByte2Val::byte2Long(heapBytes("0000000000000080"_hex).data()), std::numeric_limits<long long>::min());
}

TEST(Byte2ULong, readsTheSameBitsAsUnsigned)
{
    EXPECT_EQ(CByte2Val::byte2ULong(heapBytes("efcdab8967452381"_hex).data()), 0x8123456789abcdefull);
    EXPECT_EQ(CByte2Val::byte2ULong(heapBytes("feffffffffffffff"_hex).data()), 0xfffffffffffffffeull);
}

// --- Floating point -------------------------------------------------------------

TEST(Float2Byte, appendsTheImageLowByteFirst)
{
    QByteArray data;
    CByte2Val::float2Byte(1.0f, data);
    EXPECT_EQ(hex(data), "00 00 80 3f");
    CByte2Val::float2Byte(-1.5f, data);
    CByte2Val::float2Byte(0.05f, data);
    EXPECT_EQ(hex(data), "00 00 80 3f 00 00 c0 bf cd cc 4c 3d");
}

TEST(Float2Byte, storesExactlyFourBytes)
{
    EXPECT_EQ(stored([](char* buf) { CByte2Val::float2Byte(0.05f, buf); }),
              "ee ee cd cc 4c 3d ee ee ee ee ee ee ee ee ee ee");
}

TEST(Float2Byte, keepsZeroSignInfinityAndNan)
{
    QByteArray data;
    CByte2Val::float2Byte(-0.0f, data);
    CByte2Val::float2Byte(std::numeric_limits<float>::infinity(), data);
    CByte2Val::float2Byte(-std::numeric_limits<float>::infinity(), data);
    CByte2Val::float2Byte(floatOf(0x7fc12345), data); // a quiet NaN with a payload
    CByte2Val::float2Byte(floatOf(0xff812345), data); // a signalling NaN
    EXPECT_EQ(hex(data), "00 00 00 80 00 00 80 7f 00 00 80 ff 45 23 c1 7f 45 23 81 ff");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::float2Byte(floatOf(0xff812345), buf); }),
              "ee ee 45 23 81 ff ee ee ee ee ee ee ee ee ee ee");
}

TEST(Byte2Float, readsTheImage)
{
    EXPECT_EQ(CByte2Val::byte2Float(heapBytes("0000803f"_hex).data()), 1.0f);
    EXPECT_EQ(CByte2Val::byte2Float(heapBytes("0000c0bf"_hex).data()), -1.5f);
    EXPECT_EQ(CByte2Val::byte2Float(heapBytes("cdcc4c3d"_hex).data()), 0.05f);
}

TEST(Byte2Float, keepsZeroSignInfinityAndNan)
{
    EXPECT_EQ(imageOf(CByte2Val::byte2Float(heapBytes("00000080"_hex).data())), 0x80000000u);
    EXPECT_EQ(imageOf(CByte2Val::byte2Float(heapBytes("0000807f"_hex).data())), 0x7f800000u);
    EXPECT_EQ(imageOf(CByte2Val::byte2Float(heapBytes("000080ff"_hex).data())), 0xff800000u);
    EXPECT_EQ(imageOf(CByte2Val::byte2Float(heapBytes("4523c17f"_hex).data())), 0x7fc12345u);
    EXPECT_EQ(imageOf(CByte2Val::byte2Float(heapBytes("452381ff"_hex).data())), 0xff812345u);
}

TEST(Double2Byte, appendsTheImageLowByteFirst)
{
    QByteArray data;
    CByte2Val::double2Byte(1.0, data);
    EXPECT_EQ(hex(data), "00 00 00 00 00 00 f0 3f");
    CByte2Val::double2Byte(-0.1, data);
    EXPECT_EQ(hex(data), "00 00 00 00 00 00 f0 3f 9a 99 99 99 99 99 b9 bf");
}

TEST(Double2Byte, storesExactlyEightBytes)
{
    EXPECT_EQ(stored([](char* buf) { CByte2Val::double2Byte(-0.1, buf); }),
              "ee ee 9a 99 99 99 99 99 b9 bf ee ee ee ee ee ee");
}

TEST(Double2Byte, keepsZeroSignInfinityAndNan)
{
    QByteArray data;
    CByte2Val::double2Byte(-0.0, data);
    CByte2Val::double2Byte(std::numeric_limits<double>::infinity(), data);
    CByte2Val::double2Byte(-std::numeric_limits<double>::infinity(), data);
    CByte2Val::double2Byte(doubleOf(0x7ff8123456789abc), data); // a quiet NaN with a payload
    CByte2Val::double2Byte(doubleOf(0xfff0123456789abc), data); // a signalling NaN
    EXPECT_EQ(hex(data), "00 00 00 00 00 00 00 80 00 00 00 00 00 00 f0 7f 00 00 00 00 00 00 f0 ff "
                         "bc 9a 78 56 34 12 f8 7f bc 9a 78 56 34 12 f0 ff");
    EXPECT_EQ(stored([](char* buf) { CByte2Val::double2Byte(doubleOf(0xfff0123456789abc), buf); }),
              "ee ee bc 9a 78 56 34 12 f0 ff ee ee ee ee ee ee");
}

// Both overloads of the reader must agree.
static void expectDouble(const QByteArray& bytes, unsigned long long image)
{
    SCOPED_TRACE(hex(bytes));
    const std::vector<char> buf = heapBytes(bytes);
    EXPECT_EQ(imageOf(CByte2Val::byte2Double(buf.data())), image);
    double value = 77;
    CByte2Val::byte2Double(buf.data(), value);
    EXPECT_EQ(imageOf(value), image);
}

TEST(Byte2Double, readsTheImage)
{
    EXPECT_EQ(CByte2Val::byte2Double(heapBytes("000000000000f03f"_hex).data()), 1.0);
    double value = 0;
    CByte2Val::byte2Double(heapBytes("9a9999999999b9bf"_hex).data(), value);
    EXPECT_EQ(value, -0.1);
    expectDouble("efcdab8967452301"_hex, 0x0123456789abcdef);
}

TEST(Byte2Double, keepsZeroSignInfinityAndNan)
{
    expectDouble("0000000000000080"_hex, 0x8000000000000000);
    expectDouble("000000000000f07f"_hex, 0x7ff0000000000000);
    expectDouble("000000000000f0ff"_hex, 0xfff0000000000000);
    expectDouble("bc9a78563412f87f"_hex, 0x7ff8123456789abc);
    expectDouble("bc9a78563412f0ff"_hex, 0xfff0123456789abc);
}

// --- Strings, writing -----------------------------------------------------------

// Four characters: ASCII, two Chinese ones of 3 bytes each, one beyond the basic plane of 4 bytes.
static const QString mixedText = QString::fromUtf8("a\xe4\xb8\xad\xe6\x96\x87\xf0\x9f\x98\x80");
static const char mixedBytes[] = "0b 00 61 e4 b8 ad e6 96 87 f0 9f 98 80";

TEST(Str2Byte, appendsLengthAndBytesOfAStdString)
{
    QByteArray data = "aa"_hex;
    EXPECT_EQ(CByte2Val::str2Byte(std::string("abc"), data), 5);
    EXPECT_EQ(hex(data), "aa 03 00 61 62 63");
}

TEST(Str2Byte, storesLengthAndBytesOfAStdString)
{
    EXPECT_EQ(stored([](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(std::string("abc"), buf), 5); }),
              "ee ee 03 00 61 62 63 ee ee ee ee ee ee ee ee ee"); // and no terminator
}

TEST(Str2Byte, storesATextOfOneByte)
{
    EXPECT_EQ(stored([](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(std::string("a"), buf), 3); }),
              "ee ee 01 00 61 ee ee ee ee ee ee ee ee ee ee ee");
    EXPECT_EQ(stored([](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(QString("a"), buf), 3); }),
              "ee ee 01 00 61 ee ee ee ee ee ee ee ee ee ee ee");
}

TEST(Str2Byte, copiesAStdStringByteForByte)
{
    const std::string bytes("\x00\xff\xe4\x00", 4); // zero bytes, not valid UTF-8
    QByteArray data;
    EXPECT_EQ(CByte2Val::str2Byte(bytes, data), 6);
    EXPECT_EQ(hex(data), "04 00 00 ff e4 00");
    EXPECT_EQ(stored([&](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(bytes, buf), 6); }),
              "ee ee 04 00 00 ff e4 00 ee ee ee ee ee ee ee ee");
}

TEST(Str2Byte, appendsAQStringAsUtf8AndCountsBytes)
{
    QByteArray data = "aa"_hex;
    EXPECT_EQ(CByte2Val::str2Byte(mixedText, data), 13);
    EXPECT_EQ(hex(data), std::string("aa ") + mixedBytes);
}

TEST(Str2Byte, storesAQStringAsUtf8AndCountsBytes)
{
    EXPECT_EQ(stored([](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(mixedText, buf), 13); }),
              std::string("ee ee ") + mixedBytes + " ee");
}

TEST(Str2Byte, writesTwoChineseCharactersAsSixBytes)
{
    QByteArray data;
    EXPECT_EQ(CByte2Val::str2Byte(QString(QChar(0x4e2d)) + QChar(0x6587), data), 8);
    EXPECT_EQ(hex(data), "06 00 e4 b8 ad e6 96 87");
}

TEST(Str2Byte, keepsTheZeroCharactersOfAQString)
{
    const QString text = QString::fromLatin1("a\0b\0", 4);
    QByteArray data;
    EXPECT_EQ(CByte2Val::str2Byte(text, data), 6);
    EXPECT_EQ(hex(data), "04 00 61 00 62 00");
    EXPECT_EQ(stored([&](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(text, buf), 6); }),
              "ee ee 04 00 61 00 62 00 ee ee ee ee ee ee ee ee");
}

TEST(Str2Byte, writesTwoZeroBytesForAnEmptyString)
{
    QByteArray data = "aa"_hex;
    EXPECT_EQ(CByte2Val::str2Byte(std::string(), data), 2);
    EXPECT_EQ(CByte2Val::str2Byte(QString(), data), 2);
    EXPECT_EQ(CByte2Val::str2Byte(QString(""), data), 2);
    EXPECT_EQ(hex(data), "aa 00 00 00 00 00 00");

    const std::string justTwoBytes = "ee ee 00 00 ee ee ee ee ee ee ee ee ee ee ee ee";
    EXPECT_EQ(stored([](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(std::string(), buf), 2); }), justTwoBytes);
    EXPECT_EQ(stored([](char* buf) { EXPECT_EQ(CByte2Val::str2Byte(QString(), buf), 2); }), justTwoBytes);
}

// All four writers must write a text of `size` times "a" as the length field, then every byte, and nothing else.
static void expectLongText(int size, const QByteArray& lengthField)
{
    SCOPED_TRACE(size);
    const std::string text(size_t(size), 'a');
    const QByteArray expected = lengthField + QByteArray(size, 'a');

    QByteArray appended;
    EXPECT_EQ(CByte2Val::str2Byte(text, appended), size + 2);
    EXPECT_TRUE(appended == expected);

    appended.clear();
    EXPECT_EQ(CByte2Val::str2Byte(QString::fromStdString(text), appended), size + 2);
    EXPECT_TRUE(appended == expected);

    std::vector<char> room(size_t(size) + 3, '\xee');
    EXPECT_EQ(CByte2Val::str2Byte(text, room.data()), size + 2);
    EXPECT_TRUE(room == heapBytes(expected + '\xee'));

    room.assign(room.size(), '\xee');
    EXPECT_EQ(CByte2Val::str2Byte(QString::fromStdString(text), room.data()), size + 2);
    EXPECT_TRUE(room == heapBytes(expected + '\xee'));
}

TEST(Str2Byte, countsInTwoBytesUpTo65535)
{
    expectLongText(127, "7f00"_hex);
    expectLongText(128, "8000"_hex);
    expectLongText(255, "ff00"_hex);
    expectLongText(256, "0001"_hex);
    expectLongText(32767, "ff7f"_hex);
    expectLongText(32768, "0080"_hex);
    expectLongText(65535, "ffff"_hex);
}

TEST(Str2Byte, writesATruncatedLengthButAllBytesOfALongerString)
{
    expectLongText(65536, "0000"_hex);
    expectLongText(70000, "7011"_hex); // 70000 - 65536 = 0x1170
}

TEST(Str2Byte, countsTheUtf8BytesOfALongQString)
{
    QByteArray data;
    EXPECT_EQ(CByte2Val::str2Byte(QString(21845, QChar(0x4e2d)), data), 65537);
    ASSERT_EQ(data.size(), 65537);
    EXPECT_EQ(hex(data.left(8)), "ff ff e4 b8 ad e4 b8 ad");

    data.clear();
    EXPECT_EQ(CByte2Val::str2Byte(QString(21846, QChar(0x4e2d)), data), 65540);
    ASSERT_EQ(data.size(), 65540);
    EXPECT_EQ(hex(data.left(8)), "02 00 e4 b8 ad e4 b8 ad");
}

// --- Strings, reading -----------------------------------------------------------

static int readText(const QByteArray& bytes, std::string& out)
{
    return CByte2Val::byte2Str(heapBytes(bytes).data(), bytes.size(), out);
}

static int readText(const QByteArray& bytes, QString& out)
{
    return CByte2Val::byte2Str(heapBytes(bytes).data(), bytes.size(), out);
}

TEST(Byte2Str, readsAStdString)
{
    std::string out;
    EXPECT_EQ(readText("0300 616263"_hex, out), 5);
    EXPECT_EQ(out, "abc");
}

TEST(Byte2Str, readsAQString)
{
    QString out;
    EXPECT_EQ(readText("0b00 61 e4b8ad e69687 f09f9880"_hex, out), 13);
    EXPECT_EQ(out, mixedText);
}

TEST(Byte2Str, appendsToAStdString)
{
    std::string out = "xy";
    EXPECT_EQ(readText("0100 7a"_hex, out), 3);
    EXPECT_EQ(out, "xyz");
}

TEST(Byte2Str, replacesAQString)
{
    QString out = "xy";
    EXPECT_EQ(readText("0100 7a"_hex, out), 3);
    EXPECT_EQ(out, QString("z"));
}

TEST(Byte2Str, leavesAStdStringOnAnEmptyField)
{
    std::string out = "xy";
    EXPECT_EQ(readText("0000"_hex, out), 2);
    EXPECT_EQ(out, "xy");
}

TEST(Byte2Str, emptiesAQStringOnAnEmptyField)
{
    QString out = "xy";
    EXPECT_EQ(readText("0000"_hex, out), 2);
    EXPECT_EQ(out, QString());
}

TEST(Byte2Str, ignoresBytesAfterTheField)
{
    std::string bytes;
    EXPECT_EQ(readText("0200 6162 63"_hex, bytes), 4);
    EXPECT_EQ(bytes, "ab");
    QString text;
    EXPECT_EQ(readText("0200 6162 63"_hex, text), 4);
    EXPECT_EQ(text, QString("ab"));
}

TEST(Byte2Str, refusesEveryShorterBufferAndLeavesTheTarget)
{
    const QByteArray field = "0500 6162636465"_hex;
    for (int len = 0; len < field.size(); ++len) {
        SCOPED_TRACE(len);
        std::string bytes = "xy";
        EXPECT_EQ(readText(field.left(len), bytes), 0);
        EXPECT_EQ(bytes, "xy");
        QString text = "xy";
        EXPECT_EQ(readText(field.left(len), text), 0);
        EXPECT_EQ(text, QString("xy"));
    }
}

TEST(Byte2Str, usesOnlyTheGivenLength)
{
    const QByteArray field = "0300 616263 64"_hex;
    std::string bytes;
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), -1, bytes), 0);
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), 4, bytes), 0);
    EXPECT_EQ(bytes, "");
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), 5, bytes), 5);
    EXPECT_EQ(bytes, "abc");
    QString text = "xy";
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), -1, text), 0);
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), 4, text), 0);
    EXPECT_EQ(text, QString("xy"));
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), 5, text), 5);
    EXPECT_EQ(text, QString("abc"));
}

TEST(Byte2Str, keepsTheZeroBytesInAStdString)
{
    std::string out;
    EXPECT_EQ(readText("0300 610062"_hex, out), 5);
    EXPECT_EQ(out, std::string("a\0b", 3));
}

TEST(Byte2Str, endsAQStringAtTheFirstZeroByte)
{
    QString out = "xy";
    EXPECT_EQ(readText("0300 610062"_hex, out), 5);
    EXPECT_EQ(out, QString("a"));
    EXPECT_EQ(readText("0300 006162"_hex, out), 5);
    EXPECT_EQ(out, QString());
}

TEST(Byte2Str, readsAnyBytesIntoAStdString)
{
    std::string out;
    EXPECT_EQ(readText("0400 ff80e4fe"_hex, out), 6);
    EXPECT_EQ(out, "\xff\x80\xe4\xfe");
}

TEST(Byte2Str, replacesMalformedUtf8InAQString)
{
    QString out;
    EXPECT_EQ(readText("0300 61ff62"_hex, out), 5);
    EXPECT_EQ(out, QString("a") + QChar(QChar::ReplacementCharacter) + "b");
    EXPECT_EQ(readText("0300 61e4b8"_hex, out), 5); // the last character is truncated
    EXPECT_TRUE(out.startsWith('a'));
    EXPECT_TRUE(out.endsWith(QChar(QChar::ReplacementCharacter)));
}

TEST(Byte2Str, readsTheLengthAsUnsigned)
{
    const QByteArray longest = "ffff"_hex + QByteArray(65535, 'a');
    std::string bytes;
    EXPECT_EQ(readText(longest, bytes), 65537);
    EXPECT_TRUE(bytes == std::string(65535, 'a'));
    QString text;
    EXPECT_EQ(readText(longest, text), 65537);
    EXPECT_TRUE(text == QString(65535, 'a'));

    EXPECT_EQ(readText(longest.left(65536), bytes), 0);
    EXPECT_EQ(bytes.size(), 65535u);
    EXPECT_EQ(readText(longest.left(65536), text), 0);
    EXPECT_EQ(text.size(), 65535);
}

TEST(Byte2Str, cannotReadAStringOf65536BytesBack)
{
    QByteArray data;
    CByte2Val::str2Byte(std::string(65536, 'a'), data);
    std::string out;
    EXPECT_EQ(readText(data, out), 2);
    EXPECT_EQ(out, "");
}

TEST(Byte2Str, readsBackWhatWasWritten)
{
    QByteArray data;
    const std::string bytes("a\0\xff", 3);
    const int textAt = CByte2Val::str2Byte(bytes, data);
    CByte2Val::str2Byte(mixedText, data);

    std::string bytesBack;
    EXPECT_EQ(CByte2Val::byte2Str(data.constData(), data.size(), bytesBack), textAt);
    EXPECT_EQ(bytesBack, bytes);
    QString textBack;
    EXPECT_EQ(CByte2Val::byte2Str(data.constData() + textAt, data.size() - textAt, textBack), data.size() - textAt);
    EXPECT_EQ(textBack, mixedText);
}
