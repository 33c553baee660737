#include "byte2Rdb.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>

using gqdb::CByte2Rdb;
using gqdb::ObjectData;
using gqdb::PropertyData;
using gqdb::Variant;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(Variant, kind), offsetof(Variant, intValue), offsetof(Variant, floatValue),
                         offsetof(Variant, doubleValue), offsetof(Variant, textValue)}));
static_assert(allAre<unsigned char Variant::*>(&Variant::kind));
static_assert(allAre<int Variant::*>(&Variant::intValue));
static_assert(allAre<float Variant::*>(&Variant::floatValue));
static_assert(allAre<double Variant::*>(&Variant::doubleValue));
static_assert(allAre<std::string Variant::*>(&Variant::textValue));

static_assert(ascending({offsetof(PropertyData, word1), offsetof(PropertyData, word2),
                         offsetof(PropertyData, formatText), offsetof(PropertyData, valueText),
                         offsetof(PropertyData, value)}));
static_assert(allAre<int PropertyData::*>(&PropertyData::word1, &PropertyData::word2));
static_assert(allAre<std::string PropertyData::*>(&PropertyData::formatText, &PropertyData::valueText));
static_assert(allAre<Variant PropertyData::*>(&PropertyData::value));

static_assert(ascending({offsetof(ObjectData, word1), offsetof(ObjectData, word2), offsetof(ObjectData, word3),
                         offsetof(ObjectData, word4), offsetof(ObjectData, text1), offsetof(ObjectData, text2),
                         offsetof(ObjectData, text3), offsetof(ObjectData, properties)}));
static_assert(allAre<int ObjectData::*>(&ObjectData::word1, &ObjectData::word2, &ObjectData::word3,
                                        &ObjectData::word4));
static_assert(allAre<std::string ObjectData::*>(&ObjectData::text1, &ObjectData::text2, &ObjectData::text3));
static_assert(allAre<std::vector<PropertyData> ObjectData::*>(&ObjectData::properties));

namespace gqdb {

static std::string show(const Variant& value)
{
    return FieldText()
        .add("kind", value.kind)
        .add("intValue", value.intValue)
        .add("floatValue", value.floatValue)
        .add("doubleValue", value.doubleValue)
        .add("textValue", value.textValue)
        .text();
}

static std::string show(const PropertyData& property)
{
    return FieldText()
               .add("word1", property.word1)
               .add("word2", property.word2)
               .add("formatText", property.formatText)
               .add("valueText", property.valueText)
               .text() +
           show(property.value);
}

static std::string show(const ObjectData& object)
{
    std::string text = FieldText()
                           .add("word1", object.word1)
                           .add("word2", object.word2)
                           .add("word3", object.word3)
                           .add("word4", object.word4)
                           .add("text1", object.text1)
                           .add("text2", object.text2)
                           .add("text3", object.text3)
                           .text();
    for (const PropertyData& property : object.properties)
        text += "--\n" + show(property);
    return text;
}

} // namespace gqdb

// --- Helpers --------------------------------------------------------------------

// The result of `reader` on exactly these bytes.
template <typename Record>
static int read(int (*reader)(const char*, int, Record&), const QByteArray& bytes, Record& record)
{
    return reader(heapBytes(bytes).data(), bytes.size(), record);
}

template <typename Record>
static QByteArray written(void (*writer)(const Record&, QByteArray&), const Record& record)
{
    QByteArray data;
    writer(record, data);
    return data;
}

// An encoded string, padded with zero bytes to the 258 of a slot. A longer one is not padded.
static QByteArray slot(const QByteArray& string)
{
    return string.leftJustified(258, '\0');
}

static QByteArray stringOf(const QByteArray& text)
{
    return QByteArray().append(char(text.size())).append(char(text.size() >> 8)) + text;
}

static QByteArray longString(int length)
{
    return stringOf(QByteArray(length, 'a'));
}

// --- Defaults -------------------------------------------------------------------

TEST(Variant, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<Variant>(), "kind: 00\n"
                                    "intValue: 00 00 00 00\n"
                                    "floatValue: 00 00 00 00\n"
                                    "doubleValue: 00 00 00 00 00 00 00 00\n"
                                    "textValue: \n");
}

TEST(PropertyData, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<PropertyData>(), "word1: 00 00 00 00\n"
                                         "word2: 00 00 00 00\n"
                                         "formatText: \n"
                                         "valueText: \n" +
                                             show(Variant()));
}

TEST(ObjectData, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<ObjectData>(), "word1: 00 00 00 00\n"
                                       "word2: 00 00 00 00\n"
                                       "word3: 00 00 00 00\n"
                                       "word4: 00 00 00 00\n"
                                       "text1: \n"
                                       "text2: \n"
                                       "text3: \n");
}

// --- Slots ----------------------------------------------------------------------

TEST(Str2Blob, padsTheSlotWithZeroBytes)
{
    QByteArray data = "aa55"_hex;
    CByte2Rdb::str2Blob("abc", data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + "0300616263"_hex + QByteArray(253, '\0')));
}

TEST(Str2Blob, writes258BytesForTextsUpTo256)
{
    for (int length = 0; length <= 256; ++length) {
        SCOPED_TRACE(length);
        QByteArray data(7, char(0xee));
        CByte2Rdb::str2Blob(std::string(size_t(length), 'a'), data);
        EXPECT_EQ(hex(data), hex(QByteArray(7, char(0xee)) + longString(length) + QByteArray(256 - length, '\0')));
    }
}

TEST(Str2Blob, writesALongerTextWholeWithoutPadding)
{
    for (int length : {257, 258, 1000, 65535}) {
        SCOPED_TRACE(length);
        QByteArray data = "aa55"_hex;
        CByte2Rdb::str2Blob(std::string(size_t(length), 'a'), data);
        EXPECT_TRUE(data == "aa55"_hex + longString(length));
    }
}

TEST(Str2Blob, truncatesTheLengthTo16Bits)
{
    QByteArray data;
    CByte2Rdb::str2Blob(std::string(65537, 'a'), data);
    EXPECT_TRUE(data == "0100"_hex + QByteArray(65537, 'a'));
}

TEST(Str2Blob, keepsZeroBytesOfTheText)
{
    QByteArray data;
    CByte2Rdb::str2Blob(std::string("\0a\0", 3), data);
    EXPECT_EQ(hex(data), hex(slot("0300 006100"_hex)));
}

// --- Writing variants -----------------------------------------------------------

static bool hasValue(int kind)
{
    return kind == 0 || kind == 5 || kind == 6 || kind == 10 || kind == 11;
}

// All four values set.
static Variant fullVariant(int kind)
{
    Variant value;
    value.kind = (unsigned char)kind;
    value.intValue = int(0xf4838281);
    value.floatValue = 1.5f;
    value.doubleValue = -2.25;
    value.textValue = "abc";
    return value;
}

// What `writer` appends to an array that already contains two bytes.
static std::string appended(void (*writer)(const Variant&, QByteArray&), int kind)
{
    QByteArray data = "aa55"_hex;
    writer(fullVariant(kind), data);
    return hex(data);
}

TEST(Variant2Byte, appendsTheKindAndItsValue)
{
    EXPECT_EQ(appended(CByte2Rdb::variant2Byte, 0), "aa 55 00 81 82 83 f4");
    EXPECT_EQ(appended(CByte2Rdb::variant2Byte, 5), "aa 55 05 00 00 c0 3f");
    EXPECT_EQ(appended(CByte2Rdb::variant2Byte, 6), "aa 55 06 00 00 00 00 00 00 02 c0");
    EXPECT_EQ(appended(CByte2Rdb::variant2Byte, 10), "aa 55 0a 03 00 61 62 63");
    EXPECT_EQ(appended(CByte2Rdb::variant2Byte, 11), "aa 55 0b 81 82 83 f4");
}

TEST(Variant2Blob, appendsTheKindAndItsValue)
{
    EXPECT_EQ(appended(CByte2Rdb::variant2Blob, 0), "aa 55 00 81 82 83 f4");
    EXPECT_EQ(appended(CByte2Rdb::variant2Blob, 5), "aa 55 05 00 00 c0 3f");
    EXPECT_EQ(appended(CByte2Rdb::variant2Blob, 6), "aa 55 06 00 00 00 00 00 00 02 c0");
    EXPECT_EQ(appended(CByte2Rdb::variant2Blob, 10), hex("aa55 0a"_hex + slot("0300616263"_hex)));
    EXPECT_EQ(appended(CByte2Rdb::variant2Blob, 11), "aa 55 0b 81 82 83 f4");
}

TEST(Variant2Byte, appendsOnlyTheKindForAllOtherKinds)
{
    for (int kind = 0; kind < 256; ++kind) {
        if (!hasValue(kind)) {
            EXPECT_EQ(appended(CByte2Rdb::variant2Byte, kind), hex("aa55"_hex + QByteArray(1, char(kind))));
        }
    }
}

TEST(Variant2Blob, appendsOnlyTheKindForAllOtherKinds)
{
    for (int kind = 0; kind < 256; ++kind) {
        if (!hasValue(kind)) {
            EXPECT_EQ(appended(CByte2Rdb::variant2Blob, kind), hex("aa55"_hex + QByteArray(1, char(kind))));
        }
    }
}

static Variant textVariant(size_t length)
{
    Variant value;
    value.kind = 10;
    value.textValue = std::string(length, 'a');
    return value;
}

TEST(Variant2Byte, writesOnlyTheLengthOfAnEmptyText)
{
    EXPECT_EQ(hex(written(CByte2Rdb::variant2Byte, textVariant(0))), "0a 00 00");
}

TEST(Variant2Blob, writesAWholeSlotForAnEmptyText)
{
    EXPECT_EQ(hex(written(CByte2Rdb::variant2Blob, textVariant(0))), hex("0a"_hex + QByteArray(258, '\0')));
}

TEST(Variant2Byte, truncatesTheLengthTo16Bits)
{
    EXPECT_TRUE(written(CByte2Rdb::variant2Byte, textVariant(65537)) == "0a 0100"_hex + QByteArray(65537, 'a'));
}

TEST(Variant2Blob, overrunsTheSlotFrom257BytesOn)
{
    EXPECT_EQ(hex(written(CByte2Rdb::variant2Blob, textVariant(256))), hex("0a"_hex + longString(256)));
    EXPECT_EQ(hex(written(CByte2Rdb::variant2Blob, textVariant(257))), hex("0a"_hex + longString(257)));
}

// --- Reading variants -----------------------------------------------------------

using VariantReader = int (*)(const char*, int, Variant&);

// Numbers have the same bytes in both forms.
static void expectNumbersRead(VariantReader reader)
{
    Variant expected;
    Variant value;
    EXPECT_EQ(read(reader, "00 818283f4"_hex, value), 5);
    expected.kind = 0;
    expected.intValue = -192707967; // 0xf4838281
    EXPECT_EQ(show(value), show(expected));

    value = expected = Variant();
    EXPECT_EQ(read(reader, "05 0000c03f"_hex, value), 5);
    expected.kind = 5;
    expected.floatValue = 1.5f;
    EXPECT_EQ(show(value), show(expected));

    value = expected = Variant();
    EXPECT_EQ(read(reader, "06 00000000000002c0"_hex, value), 9);
    expected.kind = 6;
    expected.doubleValue = -2.25;
    EXPECT_EQ(show(value), show(expected));

    value = expected = Variant();
    EXPECT_EQ(read(reader, "0b 818283f4"_hex, value), 5);
    expected.kind = 11;
    expected.intValue = -192707967; // the bits of 4102259329 seconds
    EXPECT_EQ(show(value), show(expected));
}

TEST(Byte2Variant, readsTheNumbers)
{
    expectNumbersRead(CByte2Rdb::byte2Variant);
}

TEST(Blob2Variant, readsTheNumbers)
{
    expectNumbersRead(CByte2Rdb::blob2Variant);
}

static void expectFloatsReadBitForBit(VariantReader reader)
{
    Variant value;
    EXPECT_EQ(read(reader, "05 0100c07f"_hex, value), 5);
    EXPECT_EQ(std::memcmp(&value.floatValue, "\x01\x00\xc0\x7f", 4), 0); // a NaN
    EXPECT_EQ(read(reader, "06 010000000000f87f"_hex, value), 9);
    EXPECT_EQ(std::memcmp(&value.doubleValue, "\x01\x00\x00\x00\x00\x00\xf8\x7f", 8), 0);
}

TEST(Byte2Variant, readsFloatsBitForBit)
{
    expectFloatsReadBitForBit(CByte2Rdb::byte2Variant);
}

TEST(Blob2Variant, readsFloatsBitForBit)
{
    expectFloatsReadBitForBit(CByte2Rdb::blob2Variant);
}

// The other fields of a used record are unchanged.
static void expectOneValueReplaced(VariantReader reader)
{
    Variant value = fullVariant(200);
    EXPECT_EQ(read(reader, "00 01020304"_hex, value), 5);
    Variant expected = fullVariant(0);
    expected.intValue = 0x04030201;
    EXPECT_EQ(show(value), show(expected));

    value = fullVariant(200);
    EXPECT_EQ(read(reader, "05 00002041"_hex, value), 5);
    expected = fullVariant(5);
    expected.floatValue = 10;
    EXPECT_EQ(show(value), show(expected));

    value = fullVariant(200);
    EXPECT_EQ(read(reader, "06 0000000000002440"_hex, value), 9);
    expected = fullVariant(6);
    expected.doubleValue = 10;
    EXPECT_EQ(show(value), show(expected));

    value = fullVariant(200);
    EXPECT_EQ(read(reader, "0b 01020304"_hex, value), 5);
    expected = fullVariant(11);
    expected.intValue = 0x04030201;
    EXPECT_EQ(show(value), show(expected));
}

TEST(Byte2Variant, setsOnlyTheValueOfItsKind)
{
    expectOneValueReplaced(CByte2Rdb::byte2Variant);
}

TEST(Blob2Variant, setsOnlyTheValueOfItsKind)
{
    expectOneValueReplaced(CByte2Rdb::blob2Variant);
}

// Reads a kind alone, and with bytes after it.
static void expectOtherKindsToTakeOneByte(VariantReader reader)
{
    for (int kind = 0; kind < 256; ++kind) {
        if (hasValue(kind))
            continue;
        SCOPED_TRACE(kind);
        for (int size : {1, 2, 300}) {
            Variant value = fullVariant(0);
            EXPECT_EQ(read(reader, QByteArray(1, char(kind)) + QByteArray(size - 1, '\1'), value), 1);
            EXPECT_EQ(show(value), show(fullVariant(kind)));
        }
    }
}

TEST(Byte2Variant, readsAllOtherKindsAsOneByte)
{
    expectOtherKindsToTakeOneByte(CByte2Rdb::byte2Variant);
}

TEST(Blob2Variant, readsAllOtherKindsAsOneByte)
{
    expectOtherKindsToTakeOneByte(CByte2Rdb::blob2Variant);
}

// Expects -2 and no change without any byte, and -1 with only the kind stored below the size of `whole`.
static void expectEveryShorterBufferRefused(VariantReader reader, const QByteArray& whole)
{
    SCOPED_TRACE(int(whole[0]));
    Variant value = fullVariant(200);
    EXPECT_EQ(reader(whole.constData(), 0, value), -2);
    EXPECT_EQ(reader(whole.constData(), -1, value), -2);
    EXPECT_EQ(show(value), show(fullVariant(200)));

    for (int size = 1; size < whole.size(); ++size) {
        SCOPED_TRACE(size);
        value = fullVariant(200);
        EXPECT_EQ(read(reader, whole.left(size), value), -1);
        EXPECT_EQ(show(value), show(fullVariant(whole[0])));
    }

    value = fullVariant(200);
    EXPECT_EQ(read(reader, whole, value), whole.size());
    EXPECT_EQ(read(reader, whole + "ffffffffff"_hex, value), whole.size());
}

TEST(Byte2Variant, refusesEveryShorterBufferAfterStoringTheKind)
{
    for (const QByteArray& whole :
         {"00 01020304"_hex, "05 0000c03f"_hex, "06 00000000000002c0"_hex, "0b 01020304"_hex, "0a 0000"_hex,
          "0a 0300616263"_hex, "0a 0500 0300616263"_hex, "0a"_hex + longString(600)})
        expectEveryShorterBufferRefused(CByte2Rdb::byte2Variant, whole);
}

TEST(Blob2Variant, refusesEveryShorterBufferAfterStoringTheKind)
{
    for (const QByteArray& whole : {"00 01020304"_hex, "05 0000c03f"_hex, "06 00000000000002c0"_hex, "0b 01020304"_hex,
                                    "0a"_hex + slot("0000"_hex), "0a"_hex + slot("0300616263"_hex)})
        expectEveryShorterBufferRefused(CByte2Rdb::blob2Variant, whole);
}

TEST(Byte2Variant, refusesATextThatRunsPastTheBuffer)
{
    for (const char* length : {"0400", "0080", "ffff"}) {
        SCOPED_TRACE(length);
        Variant value;
        EXPECT_EQ(read(CByte2Rdb::byte2Variant, "0a"_hex + QByteArray::fromHex(length) + "010061"_hex, value), -1);
        EXPECT_EQ(value.kind, 10);
        EXPECT_EQ(value.textValue, "");
    }
}

// Texts as the byte form reads them: it takes the first two bytes of a text as a length.
struct MisplacedText {
    QByteArray wire;
    std::string text;
};

static const std::vector<MisplacedText> misplacedTexts = {
    {""_hex, ""},
    {"61"_hex, ""},
    {"616263"_hex, ""},                                         // ordinary text: length 0x6261 does not fit
    {"00"_hex, ""},                                             // half a length
    {"0000"_hex, ""},                                           // a length of 0
    {"0000616263"_hex, ""},                                     // the same with bytes left
    {"0300616263"_hex, "abc"},                                  // a length that fits exactly
    {"0400616263"_hex, ""},                                     // one more than fits
    {"02006162636465"_hex, "ab"},                               // one that leaves bytes
    {"0300610062"_hex, std::string("a\0b", 3)},                 // zero bytes are kept
    {"0001"_hex + QByteArray(256, 'a'), std::string(256, 'a')}, // both bytes are used
    {"0101"_hex + QByteArray(256, 'a'), ""},
    {"00ff"_hex + QByteArray(32, 'a'), ""}, // unsigned
};

TEST(Byte2Variant, takesTheFirstTwoBytesOfATextAsItsLength)
{
    for (const MisplacedText& row : misplacedTexts) {
        SCOPED_TRACE(hex(row.wire));
        // With and without bytes after the text, which never become part of it.
        for (const QByteArray& following : {""_hex, "7a7a7a7a7a7a"_hex}) {
            Variant value;
            value.textValue = "old";
            EXPECT_EQ(read(CByte2Rdb::byte2Variant, "0a"_hex + stringOf(row.wire) + following, value),
                      3 + row.wire.size());
            EXPECT_EQ(value.kind, 10);
            EXPECT_EQ(value.textValue, "old" + row.text);
        }
    }
}

TEST(Byte2Variant, acceptsAnInnerLengthUpToTheTextSizeLessTwo)
{
    Variant value;
    EXPECT_EQ(read(CByte2Rdb::byte2Variant, "0a ffff fdff"_hex + QByteArray(65533, 'a'), value), 65538);
    EXPECT_TRUE(value.textValue == std::string(65533, 'a'));

    value = Variant();
    EXPECT_EQ(read(CByte2Rdb::byte2Variant, "0a ffff feff"_hex + QByteArray(65533, 'a'), value), 65538);
    EXPECT_EQ(value.textValue, "");
}

TEST(Blob2Variant, readsTheTextFromItsSlot)
{
    Variant value;
    EXPECT_EQ(read(CByte2Rdb::blob2Variant, "0a"_hex + slot("0500 6162006364"_hex), value), 259);
    Variant expected;
    expected.kind = 10;
    expected.textValue = std::string("ab\0cd", 5);
    EXPECT_EQ(show(value), show(expected));
}

TEST(Blob2Variant, appendsToAUsedText)
{
    Variant value = fullVariant(200);
    EXPECT_EQ(read(CByte2Rdb::blob2Variant, "0a"_hex + slot("0200 6465"_hex), value), 259);
    Variant expected = fullVariant(10);
    expected.textValue = "abcde";
    EXPECT_EQ(show(value), show(expected));
}

TEST(Blob2Variant, ignoresThePaddingOfTheSlot)
{
    Variant value;
    EXPECT_EQ(read(CByte2Rdb::blob2Variant, "0a 0200 6162"_hex + QByteArray(254, char(0xff)), value), 259);
    EXPECT_EQ(value.textValue, "ab");
}

TEST(Blob2Variant, acceptsTextsOf256BytesButNoLonger)
{
    for (int length = 0; length <= 256; ++length) {
        SCOPED_TRACE(length);
        Variant value;
        EXPECT_EQ(read(CByte2Rdb::blob2Variant, "0a"_hex + slot(longString(length)), value), 259);
        EXPECT_EQ(value.textValue, std::string(size_t(length), 'a'));
    }
}

TEST(Blob2Variant, refusesALongerTextAfterReadingIt)
{
    for (int length : {257, 258, 600, 65535}) {
        SCOPED_TRACE(length);
        const QByteArray whole = "0a"_hex + longString(length);
        Variant value;
        EXPECT_EQ(read(CByte2Rdb::blob2Variant, whole, value), -1);
        EXPECT_TRUE(value.textValue == std::string(size_t(length), 'a'));

        value = Variant();
        EXPECT_EQ(read(CByte2Rdb::blob2Variant, whole.left(whole.size() - 1), value), -1);
        EXPECT_EQ(value.kind, 10);
        EXPECT_EQ(value.textValue, "");
    }
}

// --- Properties and objects by hand ---------------------------------------------

static PropertyData firstProperty()
{
    PropertyData property;
    property.word1 = 0x34333231;
    property.word2 = int(0xf4a3a2a1);
    property.formatText = "fmt";
    property.valueText = "value";
    property.value.kind = 6;
    property.value.doubleValue = -2.25;
    return property;
}

static PropertyData secondProperty()
{
    PropertyData property;
    property.word1 = 0x44434241;
    property.word2 = int(0xf4b3b2b1);
    property.formatText = "";
    property.valueText = "x";
    property.value.kind = 10;
    property.value.textValue = "abc";
    return property;
}

static ObjectData objectWithoutProperties()
{
    ObjectData object;
    object.word1 = 0x04030201;
    object.word2 = 0x14131211;
    object.word3 = 0x24232221;
    object.word4 = int(0xf4838281);
    object.text1 = "one";
    object.text2 = "two!";
    object.text3 = "three";
    return object;
}

static ObjectData fullObject()
{
    ObjectData object = objectWithoutProperties();
    object.properties = {firstProperty(), secondProperty()};
    return object;
}

static const QByteArray firstPropertyBytes = "31323334"                //  0 word1
                                             "a1a2a3f4"                //  4 word2
                                             "0300666d74"              //  8 formatText "fmt"
                                             "050076616c7565"          // 13 valueText "value"
                                             "0600000000000002c0"_hex; // 20 value: kind 6, -2.25; 29 bytes in all

static const QByteArray secondPropertyBytes = "41424344"          //  0 word1
                                              "b1b2b3f4"          //  4 word2
                                              "0000"              //  8 formatText
                                              "010078"            // 10 valueText "x"
                                              "0a0300616263"_hex; // 13 value: kind 10, "abc"; 19 bytes in all

static const QByteArray objectHeadBytes = "00"                  //  0 always zero
                                          "01020304"            //  1 word1
                                          "11121314"            //  5 word2
                                          "21222324"            //  9 word3
                                          "818283f4"            // 13 word4
                                          "03006f6e65"          // 17 text1 "one"
                                          "040074776f21"        // 22 text2 "two!"
                                          "05007468726565"_hex; // 28 text3 "three"; 35 number of properties

static const QByteArray objectBytes = objectHeadBytes + "0200"_hex // 35 number of properties
                                      + firstPropertyBytes         // 37
                                      + secondPropertyBytes;       // 66; 85 bytes in all

// Texts that the byte form can read contain a string with its own length.
static const QByteArray firstReadableBytes = "31323334"                //  0 word1
                                             "a1a2a3f4"                //  4 word2
                                             "0500 0300666d74"         //  8 formatText, read as "fmt"
                                             "0700 050076616c7565"     // 15 valueText, read as "value"
                                             "0600000000000002c0"_hex; // 24 value: kind 6, -2.25; 33 bytes in all

static const QByteArray secondReadableBytes = "41424344"                //  0 word1
                                              "b1b2b3f4"                //  4 word2
                                              "0000"                    //  8 formatText
                                              "0300 010078"             // 10 valueText, read as "x"
                                              "0a 0500 0300616263"_hex; // 15 value: kind 10, "abc"; 23 bytes in all

static const QByteArray readableHeadBytes = "ff"                       //  0 ignored
                                            "01020304"                 //  1 word1
                                            "11121314"                 //  5 word2
                                            "21222324"                 //  9 word3
                                            "818283f4"                 // 13 word4
                                            "0500 03006f6e65"          // 17 text1, read as "one"
                                            "0600 040074776f21"        // 24 text2, read as "two!"
                                            "0700 05007468726565"_hex; // 32 text3, read as "three"

static const QByteArray readableObjectBytes = readableHeadBytes + "0200"_hex // 41 number of properties
                                              + firstReadableBytes           // 43
                                              + secondReadableBytes;         // 76; 99 bytes in all

static const QByteArray firstPropertyBlob = "31323334"_hex               //   0 word1
                                            + "a1a2a3f4"_hex             //   4 word2
                                            + slot("0300666d74"_hex)     //   8 formatText "fmt"
                                            + slot("050076616c7565"_hex) // 266 valueText "value"
                                            + "0600000000000002c0"_hex;  // 524 value: kind 6, -2.25; 533 bytes in all

static const QByteArray secondPropertyBlob = "41424344"_hex            //   0 word1
                                             + "b1b2b3f4"_hex          //   4 word2
                                             + slot("0000"_hex)        //   8 formatText
                                             + slot("010078"_hex)      // 266 valueText "x"
                                             + "0a"_hex                // 524 value: kind 10
                                             + slot("0300616263"_hex); // 525 "abc"; 783 bytes in all

static const QByteArray objectHeadBlob = "00"_hex                      //   0 always zero
                                         + "01020304"_hex              //   1 word1
                                         + "11121314"_hex              //   5 word2
                                         + "21222324"_hex              //   9 word3
                                         + "818283f4"_hex              //  13 word4
                                         + slot("03006f6e65"_hex)      //  17 text1 "one"
                                         + slot("040074776f21"_hex)    // 275 text2 "two!"
                                         + slot("05007468726565"_hex); // 533 text3 "three"; 791 number of properties

static const QByteArray objectBlob = objectHeadBlob + "0200"_hex // 791 number of properties
                                     + firstPropertyBlob         // 793
                                     + secondPropertyBlob;       // 1326; 2109 bytes in all

static PropertyData withoutTexts(PropertyData property)
{
    property.formatText.clear();
    property.valueText.clear();
    property.value.textValue.clear();
    return property;
}

// --- Writing properties and objects ---------------------------------------------

TEST(Property2Byte, appendsTheFields)
{
    QByteArray data = "aa55"_hex;
    CByte2Rdb::property2Byte(firstProperty(), data);
    CByte2Rdb::property2Byte(secondProperty(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + firstPropertyBytes + secondPropertyBytes));
}

TEST(Property2Blob, appendsTheFieldsWithTextsInSlots)
{
    QByteArray data = "aa55"_hex;
    CByte2Rdb::property2Blob(firstProperty(), data);
    CByte2Rdb::property2Blob(secondProperty(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + firstPropertyBlob + secondPropertyBlob));
}

TEST(Property2Blob, shiftsTheFieldsAfterATextAbove256Bytes)
{
    PropertyData property = firstProperty();
    property.formatText = std::string(257, 'a');
    EXPECT_EQ(hex(written(CByte2Rdb::property2Blob, property)),
              hex(firstPropertyBlob.left(8) + longString(257) + firstPropertyBlob.mid(266)));

    property = firstProperty();
    property.formatText = std::string(256, 'a');
    property.valueText = std::string(300, 'a');
    EXPECT_EQ(hex(written(CByte2Rdb::property2Blob, property)),
              hex(firstPropertyBlob.left(8) + longString(256) + longString(300) + firstPropertyBlob.mid(524)));
}

TEST(Object2Byte, appendsTheFields)
{
    QByteArray data = "aa55"_hex;
    CByte2Rdb::object2Byte(fullObject(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + objectBytes));
}

TEST(Object2Blob, appendsTheFieldsWithTextsInSlots)
{
    QByteArray data = "aa55"_hex;
    CByte2Rdb::object2Blob(fullObject(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + objectBlob));
}

TEST(Object2Byte, writes25ZeroBytesForADefaultRecord)
{
    EXPECT_EQ(hex(written(CByte2Rdb::object2Byte, ObjectData())), hex(QByteArray(25, '\0')));
}

TEST(Object2Blob, writes793ZeroBytesForADefaultRecord)
{
    EXPECT_EQ(hex(written(CByte2Rdb::object2Blob, ObjectData())), hex(QByteArray(793, '\0')));
}

TEST(Object2Blob, shiftsTheFieldsAfterATextAbove256Bytes)
{
    ObjectData object = fullObject();
    object.text1 = std::string(257, 'a');
    EXPECT_EQ(hex(written(CByte2Rdb::object2Blob, object)),
              hex(objectBlob.left(17) + longString(257) + objectBlob.mid(275)));

    object = fullObject();
    object.text2 = std::string(300, 'a');
    object.text3 = std::string(256, 'a');
    EXPECT_EQ(hex(written(CByte2Rdb::object2Blob, object)),
              hex(objectBlob.left(275) + longString(300) + longString(256) + objectBlob.mid(791)));
}

static ObjectData objectOf(size_t count)
{
    PropertyData property;
    property.value.kind = 1;
    ObjectData object;
    object.properties.assign(count, property);
    return object;
}

TEST(Object2Byte, countsPropertiesInTwoBytes)
{
    const QByteArray property = QByteArray(12, '\0') + "01"_hex;
    EXPECT_TRUE(written(CByte2Rdb::object2Byte, objectOf(0x0203)) ==
                QByteArray(23, '\0') + "0302"_hex + property.repeated(0x0203));
}

TEST(Object2Byte, truncatesTheCountTo16BitsAndWritesAllProperties)
{
    const QByteArray property = QByteArray(12, '\0') + "01"_hex;
    EXPECT_TRUE(written(CByte2Rdb::object2Byte, objectOf(65535)) ==
                QByteArray(23, '\0') + "ffff"_hex + property.repeated(65535));
    EXPECT_TRUE(written(CByte2Rdb::object2Byte, objectOf(65536)) ==
                QByteArray(23, '\0') + "0000"_hex + property.repeated(65536));
    EXPECT_TRUE(written(CByte2Rdb::object2Byte, objectOf(65537)) ==
                QByteArray(23, '\0') + "0100"_hex + property.repeated(65537));
}

TEST(Object2Blob, truncatesTheCountTo16BitsAndWritesAllProperties)
{
    const QByteArray data = written(CByte2Rdb::object2Blob, objectOf(65537));
    ASSERT_EQ(data.size(), 793 + 65537 * 525); // 34 MB: only both ends are compared
    EXPECT_EQ(hex(data.left(793)), hex(QByteArray(791, '\0') + "0100"_hex));
    EXPECT_EQ(hex(data.mid(793, 525)), hex(QByteArray(524, '\0') + "01"_hex));
    EXPECT_EQ(hex(data.right(525)), hex(QByteArray(524, '\0') + "01"_hex));
}

// --- Reading properties ---------------------------------------------------------

TEST(Byte2Property, readsTheFields)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::byte2Property, firstReadableBytes, property), 33);
    EXPECT_EQ(show(property), show(firstProperty()));
    property = PropertyData();
    EXPECT_EQ(read(CByte2Rdb::byte2Property, secondReadableBytes, property), 23);
    EXPECT_EQ(show(property), show(secondProperty()));
}

TEST(Blob2Property, readsTheFields)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::blob2Property, firstPropertyBlob, property), 533);
    EXPECT_EQ(show(property), show(firstProperty())); // with the stored valueText
    property = PropertyData();
    EXPECT_EQ(read(CByte2Rdb::blob2Property, secondPropertyBlob, property), 783);
    EXPECT_EQ(show(property), show(secondProperty()));
}

TEST(Byte2Property, cannotReadOrdinaryTextBack)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::byte2Property, firstPropertyBytes, property), 29);
    EXPECT_EQ(show(property), show(withoutTexts(firstProperty())));
    property = PropertyData();
    EXPECT_EQ(read(CByte2Rdb::byte2Property, secondPropertyBytes, property), 19);
    EXPECT_EQ(show(property), show(withoutTexts(secondProperty())));
}

TEST(Byte2Property, takesTheFirstTwoBytesOfATextAsItsLength)
{
    for (const MisplacedText& row : misplacedTexts) {
        SCOPED_TRACE(hex(row.wire));
        PropertyData property;
        property.formatText = "old";
        EXPECT_EQ(read(CByte2Rdb::byte2Property, QByteArray(8, '\0') + stringOf(row.wire) + "0000 01"_hex, property),
                  13 + row.wire.size());
        EXPECT_EQ(property.formatText, "old" + row.text);
        EXPECT_EQ(property.valueText, "");
        EXPECT_EQ(property.value.kind, 1);

        property = PropertyData();
        property.valueText = "old";
        EXPECT_EQ(read(CByte2Rdb::byte2Property, QByteArray(10, '\0') + stringOf(row.wire) + "01"_hex, property),
                  13 + row.wire.size());
        EXPECT_EQ(property.formatText, "");
        EXPECT_EQ(property.valueText, "old" + row.text);
        EXPECT_EQ(property.value.kind, 1);
    }
}

TEST(Byte2Property, acceptsARecordOf13Bytes)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::byte2Property, QByteArray(12, '\0') + "01"_hex, property), 13);
    EXPECT_EQ(property.value.kind, 1);
}

TEST(Blob2Property, acceptsARecordOf525Bytes)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::blob2Property, QByteArray(524, '\0') + "01"_hex, property), 525);
    EXPECT_EQ(property.value.kind, 1);
}

TEST(Byte2Property, ignoresBytesAfterTheRecord)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::byte2Property, firstReadableBytes + "ffffff"_hex, property), 33);
    EXPECT_EQ(show(property), show(firstProperty()));
}

TEST(Blob2Property, ignoresBytesAfterTheRecord)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::blob2Property, firstPropertyBlob + "ffffff"_hex, property), 533);
    EXPECT_EQ(show(property), show(firstProperty()));
}

// Texts are appended to the existing ones, numbers are replaced.
static PropertyData readTwice(PropertyData property)
{
    property.formatText += property.formatText;
    property.valueText += property.valueText;
    property.value.textValue += property.value.textValue;
    return property;
}

TEST(Byte2Property, appendsToTheTextsOfAUsedRecord)
{
    for (const PropertyData& used : {firstProperty(), secondProperty()}) {
        PropertyData property = used;
        property.word1 = property.word2 = 7;
        const QByteArray& bytes = used.value.kind == 6 ? firstReadableBytes : secondReadableBytes;
        EXPECT_EQ(read(CByte2Rdb::byte2Property, bytes, property), bytes.size());
        EXPECT_EQ(show(property), show(readTwice(used)));
    }
}

TEST(Blob2Property, appendsToTheTextsOfAUsedRecord)
{
    for (const PropertyData& used : {firstProperty(), secondProperty()}) {
        PropertyData property = used;
        property.word1 = property.word2 = 7;
        const QByteArray& blob = used.value.kind == 6 ? firstPropertyBlob : secondPropertyBlob;
        EXPECT_EQ(read(CByte2Rdb::blob2Property, blob, property), blob.size());
        EXPECT_EQ(show(property), show(readTwice(used)));
    }
}

TEST(Byte2Property, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    for (int size = 0; size < 33; ++size) {
        SCOPED_TRACE(size);
        PropertyData expected;
        int result = -2;
        if (size >= 13) {
            result = -3; // formatText does not fit
            expected.word1 = 0x34333231;
            expected.word2 = int(0xf4a3a2a1);
        }
        if (size >= 18)
            expected.formatText = "fmt"; // valueText does not fit
        if (size >= 25) {
            result = -4; // the double does not fit
            expected.valueText = "value";
            expected.value.kind = 6;
        }
        PropertyData property;
        EXPECT_EQ(read(CByte2Rdb::byte2Property, firstReadableBytes.left(size), property), result);
        EXPECT_EQ(show(property), show(expected));
    }
    PropertyData property;
    EXPECT_EQ(CByte2Rdb::byte2Property(firstReadableBytes.constData(), -1, property), -2);
    EXPECT_EQ(show(property), show(PropertyData()));
}

// A property truncated anywhere in its value.
static void expectEveryShorterBlobRefused(const QByteArray& blob, PropertyData expected)
{
    for (int size = 0; size < blob.size(); ++size) {
        SCOPED_TRACE(size);
        expected.value = Variant();
        expected.value.kind = (unsigned char)blob[524];
        PropertyData property;
        EXPECT_EQ(read(CByte2Rdb::blob2Property, blob.left(size), property), size < 525 ? -2 : -4);
        EXPECT_EQ(show(property), show(size < 525 ? PropertyData() : expected));
    }
    PropertyData property;
    EXPECT_EQ(CByte2Rdb::blob2Property(blob.constData(), -1, property), -2);
    EXPECT_EQ(show(property), show(PropertyData()));
}

TEST(Blob2Property, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    expectEveryShorterBlobRefused(firstPropertyBlob, firstProperty());
    expectEveryShorterBlobRefused(secondPropertyBlob, secondProperty());
}

TEST(Byte2Property, refusesATextThatRunsPastTheBuffer)
{
    for (int length : {21, 0x8000, 0xffff}) { // 33 bytes have room for a formatText of 20
        SCOPED_TRACE(length);
        PropertyData property;
        EXPECT_EQ(read(CByte2Rdb::byte2Property, withLength(firstReadableBytes, 8, length), property), -3);
        PropertyData expected;
        expected.word1 = 0x34333231;
        expected.word2 = int(0xf4a3a2a1);
        EXPECT_EQ(show(property), show(expected));
    }
    for (int length : {16, 0x8000, 0xffff}) { // and, after one of 5, for a valueText of 15
        SCOPED_TRACE(length);
        PropertyData property;
        EXPECT_EQ(read(CByte2Rdb::byte2Property, withLength(firstReadableBytes, 15, length), property), -3);
        PropertyData expected;
        expected.word1 = 0x34333231;
        expected.word2 = int(0xf4a3a2a1);
        expected.formatText = "fmt";
        EXPECT_EQ(show(property), show(expected));
    }
}

TEST(Byte2Property, acceptsAValueTextThatEndsBeforeTheKind)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::byte2Property, withLength(firstReadableBytes, 15, 15).left(32) + "01"_hex, property), 33);
    EXPECT_EQ(property.valueText, "value");
    EXPECT_EQ(property.value.kind, 1);
}

TEST(Blob2Property, acceptsTextsOf256Bytes)
{
    for (int length : {0, 1, 255, 256}) {
        SCOPED_TRACE(length);
        PropertyData property;
        QByteArray blob = withLength(firstPropertyBlob, 8, length);
        EXPECT_EQ(read(CByte2Rdb::blob2Property, blob, property), 533);
        PropertyData expected = firstProperty();
        expected.formatText = blob.mid(10, length).toStdString();
        EXPECT_EQ(show(property), show(expected));

        property = PropertyData();
        blob = withLength(firstPropertyBlob, 266, length);
        EXPECT_EQ(read(CByte2Rdb::blob2Property, blob, property), 533);
        expected = firstProperty();
        expected.valueText = blob.mid(268, length).toStdString();
        EXPECT_EQ(show(property), show(expected));
    }
}

TEST(Blob2Property, refusesALongerFormatText)
{
    PropertyData expected;
    expected.word1 = 0x34333231;
    expected.word2 = int(0xf4a3a2a1);
    for (int length : {257, 258, 522, 523, 524, 0x8000, 0xffff}) { // up to 523 bytes are available and read
        SCOPED_TRACE(length);
        const QByteArray blob = withLength(firstPropertyBlob, 8, length);
        PropertyData property;
        EXPECT_EQ(read(CByte2Rdb::blob2Property, blob, property), -3);
        expected.formatText = length <= 523 ? blob.mid(10, length).toStdString() : "";
        EXPECT_EQ(show(property), show(expected));
    }
}

TEST(Blob2Property, refusesALongerValueText)
{
    PropertyData expected = firstProperty();
    expected.value = Variant();
    for (int length : {257, 264, 265, 266, 0x8000, 0xffff}) { // up to 265 bytes are available and read
        SCOPED_TRACE(length);
        const QByteArray blob = withLength(firstPropertyBlob, 266, length);
        PropertyData property;
        EXPECT_EQ(read(CByte2Rdb::blob2Property, blob, property), -3);
        expected.valueText = length <= 265 ? blob.mid(268, length).toStdString() : "";
        EXPECT_EQ(show(property), show(expected));
    }
}

TEST(Blob2Property, refusesAValueWithALongerText)
{
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::blob2Property, secondPropertyBlob.left(525) + longString(257), property), -4);
    PropertyData expected = secondProperty();
    expected.value.textValue = std::string(257, 'a');
    EXPECT_EQ(show(property), show(expected));
}

TEST(Blob2Property, refusesAWrittenTextThatOverranItsSlot)
{
    PropertyData overrun = firstProperty();
    overrun.formatText = std::string(257, 'a');
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::blob2Property, written(CByte2Rdb::property2Blob, overrun), property), -3);
    EXPECT_EQ(property.formatText, overrun.formatText);
}

// --- Reading objects ------------------------------------------------------------

// As blob2Object() returns it: every valueText is made from its value.
static ObjectData renderedObject()
{
    ObjectData object = fullObject();
    object.properties[0].valueText = "-2.250000";
    object.properties[1].valueText = "abc";
    return object;
}

TEST(Byte2Object, readsTheFieldsAndReturnsTheBytesConsumed)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, readableObjectBytes, object), 99);
    EXPECT_EQ(show(object), show(fullObject()));
}

TEST(Blob2Object, readsTheFieldsAndReturnsTwoLessThanTheBytesConsumed)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::blob2Object, objectBlob, object), 2107);
    EXPECT_EQ(show(object), show(renderedObject()));
}

TEST(Byte2Object, cannotReadOrdinaryTextBack)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, objectBytes, object), 85);
    ObjectData expected = fullObject();
    expected.text1 = expected.text2 = expected.text3 = "";
    expected.properties = {withoutTexts(firstProperty()), withoutTexts(secondProperty())};
    EXPECT_EQ(show(object), show(expected));
}

TEST(Byte2Object, takesTheFirstTwoBytesOfATextAsItsLength)
{
    std::string ObjectData::*const texts[] = {&ObjectData::text1, &ObjectData::text2, &ObjectData::text3};
    for (int i = 0; i < 3; ++i) {
        for (const MisplacedText& row : misplacedTexts) {
            SCOPED_TRACE(testing::Message() << "text" << i + 1 << ": " << hex(row.wire));
            const QByteArray bytes = QByteArray(17 + 2 * i, '\0') + stringOf(row.wire) + QByteArray(6 - 2 * i, '\0');
            ObjectData object;
            object.*texts[i] = "old";
            EXPECT_EQ(read(CByte2Rdb::byte2Object, bytes, object), 25 + row.wire.size());
            ObjectData expected;
            expected.*texts[i] = "old" + row.text;
            EXPECT_EQ(show(object), show(expected));
        }
    }
}

TEST(Byte2Object, returnsThePositionAfterACountOfZero)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, QByteArray(25, '\0'), object), 25);
    EXPECT_EQ(show(object), show(ObjectData()));

    EXPECT_EQ(read(CByte2Rdb::byte2Object, readableHeadBytes + "0000"_hex, object), 43);
    EXPECT_EQ(show(object), show(objectWithoutProperties()));
}

TEST(Blob2Object, returnsThePositionOfACountOfZero)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::blob2Object, QByteArray(793, '\0'), object), 791);
    EXPECT_EQ(show(object), show(ObjectData()));

    EXPECT_EQ(read(CByte2Rdb::blob2Object, objectHeadBlob + "0000"_hex, object), 791);
    EXPECT_EQ(show(object), show(objectWithoutProperties()));
}

TEST(Byte2Object, ignoresBytesAfterTheRecord)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, readableObjectBytes + "ffffff"_hex, object), 99);
    EXPECT_EQ(show(object), show(fullObject()));
}

TEST(Blob2Object, ignoresTheFirstByteAndBytesAfterTheRecord)
{
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::blob2Object, "ff"_hex + objectBlob.mid(1) + "ffffff"_hex, object), 2107);
    EXPECT_EQ(show(object), show(renderedObject()));
}

// Reads into the same record a second time.
static ObjectData readTwice(ObjectData object)
{
    object.text1 += object.text1;
    object.text2 += object.text2;
    object.text3 += object.text3;
    object.properties.push_back(object.properties[0]);
    object.properties.push_back(object.properties[1]);
    return object;
}

TEST(Byte2Object, appendsTextsAndPropertiesToAUsedRecord)
{
    ObjectData object = fullObject();
    object.word1 = object.word2 = object.word3 = object.word4 = 7;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, readableObjectBytes, object), 99);
    EXPECT_EQ(show(object), show(readTwice(fullObject())));
}

TEST(Blob2Object, appendsTextsAndPropertiesToAUsedRecord)
{
    ObjectData object = renderedObject();
    object.word1 = object.word2 = object.word3 = object.word4 = 7;
    EXPECT_EQ(read(CByte2Rdb::blob2Object, objectBlob, object), 2107);
    EXPECT_EQ(show(object), show(readTwice(renderedObject())));
}

TEST(Byte2Object, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    for (int size = 0; size < 99; ++size) {
        SCOPED_TRACE(size);
        ObjectData expected;
        int result = -2;
        if (size >= 25) {
            result = -3; // text1 does not fit
            expected.word1 = 0x04030201;
            expected.word2 = 0x14131211;
            expected.word3 = 0x24232221;
            expected.word4 = int(0xf4838281);
        }
        if (size >= 30)
            expected.text1 = "one"; // text2 does not fit
        if (size >= 36)
            expected.text2 = "two!"; // text3 does not fit
        if (size >= 43) {
            result = -4; // the first property does not fit
            expected.text3 = "three";
        }
        if (size >= 76)
            expected.properties = {firstProperty()};
        ObjectData object;
        EXPECT_EQ(read(CByte2Rdb::byte2Object, readableObjectBytes.left(size), object), result);
        EXPECT_EQ(show(object), show(expected));
    }
    ObjectData object;
    EXPECT_EQ(CByte2Rdb::byte2Object(readableObjectBytes.constData(), -1, object), -2);
    EXPECT_EQ(show(object), show(ObjectData()));
}

TEST(Blob2Object, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    for (int size = 0; size < 2109; ++size) {
        SCOPED_TRACE(size);
        ObjectData expected;
        if (size >= 793)
            expected = objectWithoutProperties();
        if (size >= 1326)
            expected.properties = {renderedObject().properties[0]};
        ObjectData object;
        EXPECT_EQ(read(CByte2Rdb::blob2Object, objectBlob.left(size), object), size < 793 ? -2 : -4);
        EXPECT_EQ(show(object), show(expected));
    }
    ObjectData object;
    EXPECT_EQ(CByte2Rdb::blob2Object(objectBlob.constData(), -1, object), -2);
    EXPECT_EQ(show(object), show(ObjectData()));
}

TEST(Byte2Object, refusesATextThatRunsPastTheBuffer)
{
    ObjectData expected = objectWithoutProperties();
    expected.text1 = expected.text2 = expected.text3 = "";
    ObjectData object;
    // 99 bytes have room for a text1 of 74; after one of 5, for a text2 of 69; after one of 6, for a text3 of 63.
    for (int length : {75, 0x8000, 0xffff}) {
        EXPECT_EQ(read(CByte2Rdb::byte2Object, withLength(readableObjectBytes, 17, length), object), -3);
        EXPECT_EQ(show(object), show(expected));
    }
    expected.text1 = "one";
    for (int length : {70, 0x8000, 0xffff}) {
        object = ObjectData();
        EXPECT_EQ(read(CByte2Rdb::byte2Object, withLength(readableObjectBytes, 24, length), object), -3);
        EXPECT_EQ(show(object), show(expected));
    }
    expected.text2 = "two!";
    for (int length : {64, 0x8000, 0xffff}) {
        object = ObjectData();
        EXPECT_EQ(read(CByte2Rdb::byte2Object, withLength(readableObjectBytes, 32, length), object), -3);
        EXPECT_EQ(show(object), show(expected));
    }
}

TEST(Byte2Object, acceptsATextThatEndsBeforeTheCount)
{
    ObjectData object;
    const QByteArray bytes = withLength(readableObjectBytes, 32, 63).left(97) + "0000"_hex;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, bytes, object), 99);
    EXPECT_EQ(show(object), show(objectWithoutProperties()));
}

TEST(Blob2Object, acceptsTextsOf256BytesAndRefusesLongerOnes)
{
    struct Slot {
        int at;
        std::string ObjectData::*text;
    };
    const Slot places[] = {{17, &ObjectData::text1}, {275, &ObjectData::text2}, {533, &ObjectData::text3}};
    const QByteArray whole = objectHeadBlob + "0000"_hex;

    ObjectData readSoFar = objectWithoutProperties();
    readSoFar.text1 = readSoFar.text2 = readSoFar.text3 = "";
    for (const Slot& slot : places) {
        for (int length : {0, 1, 255, 256}) {
            SCOPED_TRACE(testing::Message() << "slot at " << slot.at << ", length " << length);
            const QByteArray blob = withLength(whole, slot.at, length);
            ObjectData object;
            EXPECT_EQ(read(CByte2Rdb::blob2Object, blob, object), 791);
            ObjectData expected = objectWithoutProperties();
            expected.*slot.text = blob.mid(slot.at + 2, length).toStdString();
            EXPECT_EQ(show(object), show(expected));
        }

        const int rest = whole.size() - slot.at - 2; // the available bytes are appended before the refusal
        for (int length : {257, rest, rest + 1, 0x8000, 0xffff}) {
            SCOPED_TRACE(testing::Message() << "slot at " << slot.at << ", length " << length);
            const QByteArray blob = withLength(whole, slot.at, length);
            ObjectData object;
            EXPECT_EQ(read(CByte2Rdb::blob2Object, blob, object), -2);
            ObjectData expected = readSoFar;
            expected.*slot.text = length <= rest ? blob.mid(slot.at + 2, length).toStdString() : "";
            EXPECT_EQ(show(object), show(expected));
        }
        readSoFar.*slot.text = objectWithoutProperties().*slot.text;
    }
}

TEST(Blob2Object, refusesWrittenTextsThatOverranTheirSlots)
{
    ObjectData overrun = fullObject();
    overrun.text2 = std::string(257, 'a');
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::blob2Object, written(CByte2Rdb::object2Blob, overrun), object), -2);

    overrun = fullObject();
    overrun.properties[1].valueText = std::string(257, 'a');
    object = ObjectData();
    EXPECT_EQ(read(CByte2Rdb::blob2Object, written(CByte2Rdb::object2Blob, overrun), object), -4);
    ObjectData expected = renderedObject();
    expected.properties.pop_back();
    EXPECT_EQ(show(object), show(expected));
}

TEST(Byte2Object, keepsThePropertiesBeforeAFailedOne)
{
    const QByteArray cases[] = {
        "000000000000"_hex,                       // fewer than 13 bytes
        QByteArray(8, '\0') + "0200 0000 00"_hex, // formatText does not fit
        QByteArray(12, '\0') + "05"_hex,          // the float does not fit
    };
    for (const QByteArray& failed : cases) {
        SCOPED_TRACE(hex(failed));
        ObjectData object;
        EXPECT_EQ(read(CByte2Rdb::byte2Object,
                       readableHeadBytes + "0300"_hex + firstReadableBytes + secondReadableBytes + failed, object),
                  -4);
        EXPECT_EQ(show(object), show(fullObject()));
    }
}

TEST(Blob2Object, keepsThePropertiesBeforeAFailedOne)
{
    const QByteArray cases[] = {
        QByteArray(524, '\0'),                                           // fewer than 525 bytes
        QByteArray(8, '\0') + longString(257) + QByteArray(260, '\0'),   // formatText is too long
        QByteArray(266, '\0') + longString(257) + QByteArray(260, '\0'), // valueText is too long
        QByteArray(524, '\0') + "05"_hex,                                // the float does not fit
        QByteArray(524, '\0') + "0a"_hex + longString(257),              // textValue is too long
    };
    for (const QByteArray& failed : cases) {
        ObjectData object;
        EXPECT_EQ(read(CByte2Rdb::blob2Object,
                       objectHeadBlob + "0300"_hex + firstPropertyBlob + secondPropertyBlob + failed, object),
                  -4);
        EXPECT_EQ(show(object), show(renderedObject()));
    }
}

TEST(Byte2Object, readsAnUnsignedPropertyCount)
{
    const QByteArray property = QByteArray(12, '\0') + "01"_hex;
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, QByteArray(23, '\0') + "ffff"_hex + property.repeated(65535), object),
              25 + 65535 * 13);
    EXPECT_EQ(object.properties.size(), 65535u);

    object = ObjectData();
    EXPECT_EQ(read(CByte2Rdb::byte2Object, QByteArray(23, '\0') + "0080"_hex + property, object), -4);
    EXPECT_EQ(object.properties.size(), 1u);
}

TEST(Blob2Object, readsAnUnsignedPropertyCount)
{
    for (const char* count : {"0080", "ffff"}) {
        ObjectData object;
        EXPECT_EQ(read(CByte2Rdb::blob2Object,
                       objectHeadBlob + QByteArray::fromHex(count) + firstPropertyBlob + secondPropertyBlob, object),
                  -4);
        EXPECT_EQ(show(object), show(renderedObject()));
    }
}

TEST(Byte2Object, readsAsManyPropertiesAsTheTruncatedCount)
{
    const QByteArray data = written(CByte2Rdb::object2Byte, objectOf(65537));
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, data, object), 25 + 13);
    EXPECT_EQ(show(object), show(objectOf(1)));
}

TEST(Byte2Object, startsEachPropertyFromADefault)
{
    const QByteArray properties = firstReadableBytes + firstReadableBytes + QByteArray(12, '\0') + "65"_hex; // kind 101
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, readableHeadBytes + "0300"_hex + properties, object), 43 + 33 + 33 + 13);
    ASSERT_EQ(object.properties.size(), 3u);
    EXPECT_EQ(show(object.properties[1]), show(firstProperty()));
    PropertyData expected;
    expected.value.kind = 101;
    EXPECT_EQ(show(object.properties[2]), show(expected));
}

TEST(Blob2Object, startsEachPropertyFromADefault)
{
    const QByteArray number = QByteArray(524, '\0') + "00 07000000"_hex;
    const QByteArray bare = QByteArray(524, '\0') + "65"_hex; // kind 101 shows the intValue, which was not read
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::blob2Object,
                   objectHeadBlob + "0400"_hex + firstPropertyBlob + firstPropertyBlob + number + bare, object),
              791 + 533 + 533 + 529 + 525);
    ASSERT_EQ(object.properties.size(), 4u);
    EXPECT_EQ(show(object.properties[1]), show(renderedObject().properties[0]));
    EXPECT_EQ(object.properties[2].valueText, "7");
    EXPECT_EQ(object.properties[3].valueText, "0");
}

TEST(Byte2Object, leavesValueTextsAsRead)
{
    const QByteArray property = QByteArray(10, '\0') + "0300 010078"_hex + "00 07000000"_hex;
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, QByteArray(23, '\0') + "0100"_hex + property, object), 45);
    ASSERT_EQ(object.properties.size(), 1u);
    EXPECT_EQ(object.properties[0].valueText, "x");
}

// --- Values as text -------------------------------------------------------------

// The property, read from an object in blob form, with this value and a stored valueText.
static PropertyData propertyOf(const QByteArray& value, const QByteArray& format = "0000"_hex)
{
    const QByteArray stored = slot("0600 73746f726564"_hex);
    const QByteArray blob = QByteArray(791, '\0') + "0100"_hex + QByteArray(8, '\0') + slot(format) + stored + value;
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::blob2Object, blob, object), 791 + 524 + value.size());
    return object.properties.empty() ? PropertyData() : object.properties[0];
}

static std::string rendered(const QByteArray& value)
{
    return propertyOf(value).valueText;
}

TEST(Blob2Object, showsIntegersWithTheirSign)
{
    EXPECT_EQ(rendered("00 00000000"_hex), "0");
    EXPECT_EQ(rendered("00 d2040000"_hex), "1234");
    EXPECT_EQ(rendered("00 feffffff"_hex), "-2");
    EXPECT_EQ(rendered("00 ffffff7f"_hex), "2147483647");
    EXPECT_EQ(rendered("00 00000080"_hex), "-2147483648");
}

TEST(Blob2Object, showsFloatsWithSixDecimals)
{
    EXPECT_EQ(rendered("05 0000c03f"_hex), "1.500000");
    EXPECT_EQ(rendered("05 000020c0"_hex), "-2.500000");
    EXPECT_EQ(rendered("05 cdcccc3d"_hex), "0.100000");
    EXPECT_EQ(rendered("05 95bfd633"_hex), "0.000000"); // 1e-7
    EXPECT_EQ(rendered("05 f9021550"_hex), "10000000000.000000");
    EXPECT_EQ(rendered("05 ffff7f7f"_hex), "340282346638528859811704183484516925440.000000");
    EXPECT_EQ(rendered("05 0000807f"_hex), "inf");
    EXPECT_EQ(rendered("05 000080ff"_hex), "-inf");
    EXPECT_EQ(rendered("05 0000c07f"_hex), "nan");
    EXPECT_EQ(rendered("05 00000080"_hex), "-0.000000");
}

TEST(Blob2Object, showsDoublesWithSixDecimals)
{
    EXPECT_EQ(rendered("06 000000000000f83f"_hex), "1.500000");
    EXPECT_EQ(rendered("06 759318e487d632c1"_hex), "-1234567.891000");
    EXPECT_EQ(rendered("06 48afbc9af2d79a3e"_hex), "0.000000"); // 4e-7
    EXPECT_EQ(rendered("06 92d54d06cff08044"_hex), "10000000000000000000000.000000");
    EXPECT_EQ(rendered("06 000000000000f0ff"_hex), "-inf");
    EXPECT_EQ(rendered("06 ffffffffffffef7f"_hex).size(), 309u + 7); // all digits of the largest double
}

TEST(Blob2Object, showsTextsAsTheyAre)
{
    EXPECT_EQ(rendered("0a"_hex + slot("0300616263"_hex)), "abc");
    EXPECT_EQ(rendered("0a"_hex + slot("0000"_hex)), "");
    EXPECT_EQ(rendered("0a"_hex + slot("0400 006100ff"_hex)), std::string("\0a\0\xff", 4));
    EXPECT_EQ(rendered("0a"_hex + longString(256)), std::string(256, 'a'));
}

TEST(Blob2Object, shows0ForKind101)
{
    EXPECT_EQ(rendered("65"_hex), "0");
}

TEST(Blob2Object, showsNothingForTheKindsWithoutValue)
{
    for (int kind = 0; kind < 256; ++kind) {
        if (!hasValue(kind) && kind != 101) {
            EXPECT_EQ(rendered(QByteArray(1, char(kind))), "") << kind;
        }
    }
}

TEST(Blob2Object, keepsTheFormatAndUsesItForTimesOnly)
{
    const QByteArray format = "0400 79797979"_hex; // yyyy
    EXPECT_EQ(propertyOf("00 07000000"_hex, format).valueText, "7");
    EXPECT_EQ(propertyOf("06 000000000000f83f"_hex, format).valueText, "1.500000");
    EXPECT_EQ(propertyOf("0a"_hex + slot("0300616263"_hex), format).valueText, "abc");
    EXPECT_EQ(propertyOf("65"_hex, format).valueText, "0");
    EXPECT_EQ(propertyOf("01"_hex, format).valueText, "");
    EXPECT_EQ(propertyOf("0b 00f15365"_hex, format).formatText, "yyyy");
}

// Sets the time zone of this process for its lifetime. POSIX names need no zone files; a positive offset is west.
class TimeZone {
public:
    explicit TimeZone(const char* name)
    {
        const char* old = std::getenv("TZ");
        wasSet = old != nullptr;
        if (wasSet)
            oldName = old;
        setenv("TZ", name, 1);
        tzset();
    }
    ~TimeZone()
    {
        if (wasSet)
            setenv("TZ", oldName.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    bool wasSet;
    std::string oldName;
};

TEST(Blob2Object, showsTimesInTheLocalZone)
{
    const QByteArray value = "0b 00f15365"_hex; // 1700000000, 2023-11-14 22:13:20 UTC
    {
        const TimeZone east8("CST-8");
        EXPECT_EQ(rendered(value), "2023-11-15 06:13:20");
        EXPECT_EQ(rendered("0b 00000000"_hex), "1970-01-01 08:00:00");
    }
    {
        const TimeZone east5("<+0530>-5:30");
        EXPECT_EQ(rendered(value), "2023-11-15 03:43:20");
    }
    {
        const TimeZone west5("EST5");
        EXPECT_EQ(rendered(value), "2023-11-14 17:13:20");
        EXPECT_EQ(rendered("0b 00000000"_hex), "1969-12-31 19:00:00");
    }
}

TEST(Blob2Object, readsSecondsAsUnsigned)
{
    const TimeZone east8("CST-8");
    EXPECT_EQ(rendered("0b ffffff7f"_hex), "2038-01-19 11:14:07");
    EXPECT_EQ(rendered("0b 00000080"_hex), "2038-01-19 11:14:08");
    EXPECT_EQ(rendered("0b ffffffff"_hex), "2106-02-07 14:28:15");
}

TEST(Blob2Object, showsTimesInTheFormatOfTheProperty)
{
    const TimeZone east8("CST-8");
    const QByteArray value = "0b 00f15365"_hex;                                               // 2023-11-15 06:13:20
    EXPECT_EQ(propertyOf(value, "0800 68683a6d6d3a7373"_hex).valueText, "06:13:20");          // hh:mm:ss
    EXPECT_EQ(propertyOf(value, "0a00 642f4d2f797920682e6d"_hex).valueText, "15/11/23 6.13"); // d/M/yy h.m
    EXPECT_EQ(propertyOf(value, "0300 2d2d2d"_hex).valueText, "---");
}

TEST(Blob2Object, readsTheFormatAsUtf8)
{
    const TimeZone east8("CST-8");
    const QByteArray format = "0f00 79797979 e5b9b4 4d4d e69c88 6464 2e"_hex; // yyyy, year sign, MM, month sign, dd.
    EXPECT_EQ(propertyOf("0b 00f15365"_hex, format).valueText, "2023\xe5\xb9\xb4"
                                                               "11\xe6\x9c\x88"
                                                               "15.");
    EXPECT_EQ(propertyOf("0b 00f15365"_hex, "0300 ff6464"_hex).valueText, "\xef\xbf\xbd"
                                                                          "15"); // a replacement character
}

TEST(Blob2Object, truncatesTheFormatAtItsFirstZeroByte)
{
    const TimeZone east8("CST-8");
    const PropertyData property = propertyOf("0b 00f15365"_hex, "0700 79797979 00 4d4d"_hex);
    EXPECT_EQ(property.valueText, "2023");
    EXPECT_EQ(property.formatText, std::string("yyyy\0MM", 7));
}

TEST(Blob2Object, treatsASingleZeroByteAsAnEmptyFormat)
{
    EXPECT_EQ(propertyOf("0b 00f15365"_hex, "0100 00"_hex).valueText, "");
    EXPECT_EQ(propertyOf("0b 00f15365"_hex, "0500 0079797979"_hex).valueText, "");
}

// --- Both forms compared --------------------------------------------------------

TEST(ByteAndBlobForm, differInTheirWrittenSizes)
{
    EXPECT_EQ(written(CByte2Rdb::object2Byte, fullObject()).size(), 85);
    EXPECT_EQ(written(CByte2Rdb::object2Blob, fullObject()).size(), 2109);
}

TEST(ByteAndBlobForm, differInWhetherAWrittenTextReadsBack)
{
    const Variant value = textVariant(256);
    Variant back;
    EXPECT_EQ(read(CByte2Rdb::byte2Variant, written(CByte2Rdb::variant2Byte, value), back), 259);
    EXPECT_EQ(back.textValue, "");
    EXPECT_EQ(read(CByte2Rdb::blob2Variant, written(CByte2Rdb::variant2Blob, value), back), 259);
    EXPECT_EQ(back.textValue, value.textValue);
}

TEST(ByteAndBlobForm, differInTheirSmallestRecords)
{
    PropertyData property;
    const QByteArray zeros(793, '\0');
    EXPECT_EQ(read(CByte2Rdb::byte2Property, zeros.left(12), property), -2);
    EXPECT_EQ(read(CByte2Rdb::byte2Property, zeros.left(13), property), -4); // kind 0 without its number
    EXPECT_EQ(read(CByte2Rdb::blob2Property, zeros.left(524), property), -2);
    EXPECT_EQ(read(CByte2Rdb::blob2Property, zeros.left(525), property), -4);

    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, zeros.left(24), object), -2);
    EXPECT_EQ(read(CByte2Rdb::byte2Object, zeros.left(25), object), 25);
    EXPECT_EQ(read(CByte2Rdb::blob2Object, zeros.left(792), object), -2);
    EXPECT_EQ(read(CByte2Rdb::blob2Object, zeros.left(793), object), 791);
}

TEST(ByteAndBlobForm, differInTheirResultOnATextLongerThanTheBuffer)
{
    const QByteArray zeros(793, '\0');
    Variant value;
    EXPECT_EQ(read(CByte2Rdb::byte2Variant, "0a ffff"_hex + zeros, value), -1);
    EXPECT_EQ(read(CByte2Rdb::blob2Variant, "0a ffff"_hex + zeros, value), -1);
    PropertyData property;
    EXPECT_EQ(read(CByte2Rdb::byte2Property, withLength(zeros, 8, 0xffff), property), -3);
    EXPECT_EQ(read(CByte2Rdb::blob2Property, withLength(zeros, 8, 0xffff), property), -3);
    ObjectData object;
    EXPECT_EQ(read(CByte2Rdb::byte2Object, withLength(zeros, 17, 0xffff), object), -3);
    EXPECT_EQ(read(CByte2Rdb::blob2Object, withLength(zeros, 17, 0xffff), object), -2);
}

TEST(ByteAndBlobForm, differInTheTextsOfAnObjectReadBack)
{
    ObjectData object;
    const QByteArray bytes = written(CByte2Rdb::object2Byte, fullObject());
    EXPECT_EQ(read(CByte2Rdb::byte2Object, bytes, object), bytes.size());
    ASSERT_EQ(object.properties.size(), 2u);
    EXPECT_EQ(object.text1, "");
    EXPECT_EQ(object.properties[0].valueText, "");
    EXPECT_EQ(object.properties[0].value.doubleValue, -2.25);

    object = ObjectData();
    const QByteArray blob = written(CByte2Rdb::object2Blob, fullObject());
    EXPECT_EQ(read(CByte2Rdb::blob2Object, blob, object), blob.size() - 2);
    ASSERT_EQ(object.properties.size(), 2u);
    EXPECT_EQ(object.text1, "one");
    EXPECT_EQ(object.properties[0].valueText, "-2.250000");
    EXPECT_EQ(object.properties[0].value.doubleValue, -2.25);
}
