#include "byte2Fep.h"
#include "support/fepRecordChecks.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cstddef>

using gqdb::CByte2Fep;
using gqdb::YbItem;
using gqdb::YcItem;
using gqdb::YdItem;
using gqdb::YxItem;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(YcItem, flag1),  offsetof(YcItem, itemId), offsetof(YcItem, text1),
                         offsetof(YcItem, text2),  offsetof(YcItem, text3),  offsetof(YcItem, text4),
                         offsetof(YcItem, flag2),  offsetof(YcItem, word1),  offsetof(YcItem, word2),
                         offsetof(YcItem, flag3),  offsetof(YcItem, coef1),  offsetof(YcItem, coef2),
                         offsetof(YcItem, coef3),  offsetof(YcItem, coef4),  offsetof(YcItem, word3),
                         offsetof(YcItem, flag4),  offsetof(YcItem, flag5),  offsetof(YcItem, text5),
                         offsetof(YcItem, state1), offsetof(YcItem, state2), offsetof(YcItem, state3)}));
static_assert(allAre<int YcItem::*>(&YcItem::itemId, &YcItem::word1, &YcItem::word2, &YcItem::word3));
static_assert(allAre<unsigned int YcItem::*>(&YcItem::state2, &YcItem::state3));
static_assert(allAre<float YcItem::*>(&YcItem::coef1, &YcItem::coef2, &YcItem::coef3, &YcItem::coef4, &YcItem::state1));
static_assert(allAre<char YcItem::*>(&YcItem::flag1, &YcItem::flag2, &YcItem::flag3, &YcItem::flag4, &YcItem::flag5));
static_assert(allAre<QString YcItem::*>(&YcItem::text1, &YcItem::text2, &YcItem::text3, &YcItem::text4,
                                        &YcItem::text5));

static_assert(ascending({offsetof(YxItem, itemId), offsetof(YxItem, text1), offsetof(YxItem, text2),
                         offsetof(YxItem, text3), offsetof(YxItem, flag1), offsetof(YxItem, word1),
                         offsetof(YxItem, word2), offsetof(YxItem, flag2), offsetof(YxItem, word3),
                         offsetof(YxItem, flag3), offsetof(YxItem, flag4), offsetof(YxItem, flag5),
                         offsetof(YxItem, flag6), offsetof(YxItem, text4), offsetof(YxItem, state1),
                         offsetof(YxItem, state2), offsetof(YxItem, state3)}));
static_assert(allAre<int YxItem::*>(&YxItem::itemId, &YxItem::word1, &YxItem::word2, &YxItem::word3));
static_assert(allAre<unsigned int YxItem::*>(&YxItem::state2, &YxItem::state3));
static_assert(allAre<char YxItem::*>(&YxItem::flag1, &YxItem::flag2, &YxItem::flag3, &YxItem::flag4, &YxItem::flag5,
                                     &YxItem::flag6, &YxItem::state1));
static_assert(allAre<QString YxItem::*>(&YxItem::text1, &YxItem::text2, &YxItem::text3, &YxItem::text4));

static_assert(
    ascending({offsetof(YdItem, flag1), offsetof(YdItem, itemId), offsetof(YdItem, text1),  offsetof(YdItem, text2),
               offsetof(YdItem, text3), offsetof(YdItem, text4),  offsetof(YdItem, flag2),  offsetof(YdItem, flag3),
               offsetof(YdItem, word1), offsetof(YdItem, word2),  offsetof(YdItem, flag4),  offsetof(YdItem, flag5),
               offsetof(YdItem, flag6), offsetof(YdItem, flag7),  offsetof(YdItem, float1), offsetof(YdItem, float2),
               offsetof(YdItem, word3), offsetof(YdItem, float3), offsetof(YdItem, float4), offsetof(YdItem, word4),
               offsetof(YdItem, word5), offsetof(YdItem, text5)}));
static_assert(allAre<int YdItem::*>(&YdItem::itemId, &YdItem::word1, &YdItem::word2, &YdItem::word3, &YdItem::word4,
                                    &YdItem::word5));
static_assert(allAre<float YdItem::*>(&YdItem::float1, &YdItem::float2, &YdItem::float3, &YdItem::float4));
static_assert(allAre<char YdItem::*>(&YdItem::flag1, &YdItem::flag2, &YdItem::flag3, &YdItem::flag4, &YdItem::flag5,
                                     &YdItem::flag6, &YdItem::flag7));
static_assert(allAre<QString YdItem::*>(&YdItem::text1, &YdItem::text2, &YdItem::text3, &YdItem::text4,
                                        &YdItem::text5));

static_assert(ascending({offsetof(YbItem, itemId), offsetof(YbItem, text1), offsetof(YbItem, text2),
                         offsetof(YbItem, text3), offsetof(YbItem, flag1), offsetof(YbItem, word1),
                         offsetof(YbItem, word2), offsetof(YbItem, flag2), offsetof(YbItem, text4),
                         offsetof(YbItem, state1), offsetof(YbItem, state2), offsetof(YbItem, state3)}));
static_assert(allAre<int YbItem::*>(&YbItem::itemId, &YbItem::word1, &YbItem::word2));
static_assert(allAre<unsigned int YbItem::*>(&YbItem::state1, &YbItem::state2, &YbItem::state3));
static_assert(allAre<char YbItem::*>(&YbItem::flag1, &YbItem::flag2));
static_assert(allAre<QString YbItem::*>(&YbItem::text1, &YbItem::text2, &YbItem::text3, &YbItem::text4));

namespace gqdb {

static std::string show(const YcItem& item)
{
    return FieldText()
        .add("flag1", item.flag1)
        .add("itemId", item.itemId)
        .add("text1", item.text1.toStdString())
        .add("text2", item.text2.toStdString())
        .add("text3", item.text3.toStdString())
        .add("text4", item.text4.toStdString())
        .add("flag2", item.flag2)
        .add("word1", item.word1)
        .add("word2", item.word2)
        .add("flag3", item.flag3)
        .add("coef1", item.coef1)
        .add("coef2", item.coef2)
        .add("coef3", item.coef3)
        .add("coef4", item.coef4)
        .add("word3", item.word3)
        .add("flag4", item.flag4)
        .add("flag5", item.flag5)
        .add("text5", item.text5.toStdString())
        .add("state1", item.state1)
        .add("state2", item.state2)
        .add("state3", item.state3)
        .text();
}

static std::string show(const YxItem& item)
{
    return FieldText()
        .add("itemId", item.itemId)
        .add("text1", item.text1.toStdString())
        .add("text2", item.text2.toStdString())
        .add("text3", item.text3.toStdString())
        .add("flag1", item.flag1)
        .add("word1", item.word1)
        .add("word2", item.word2)
        .add("flag2", item.flag2)
        .add("word3", item.word3)
        .add("flag3", item.flag3)
        .add("flag4", item.flag4)
        .add("flag5", item.flag5)
        .add("flag6", item.flag6)
        .add("text4", item.text4.toStdString())
        .add("state1", item.state1)
        .add("state2", item.state2)
        .add("state3", item.state3)
        .text();
}

static std::string show(const YdItem& item)
{
    return FieldText()
        .add("flag1", item.flag1)
        .add("itemId", item.itemId)
        .add("text1", item.text1.toStdString())
        .add("text2", item.text2.toStdString())
        .add("text3", item.text3.toStdString())
        .add("text4", item.text4.toStdString())
        .add("flag2", item.flag2)
        .add("flag3", item.flag3)
        .add("word1", item.word1)
        .add("word2", item.word2)
        .add("flag4", item.flag4)
        .add("flag5", item.flag5)
        .add("flag6", item.flag6)
        .add("flag7", item.flag7)
        .add("float1", item.float1)
        .add("float2", item.float2)
        .add("word3", item.word3)
        .add("float3", item.float3)
        .add("float4", item.float4)
        .add("word4", item.word4)
        .add("word5", item.word5)
        .add("text5", item.text5.toStdString())
        .text();
}

static std::string show(const YbItem& item)
{
    return FieldText()
        .add("itemId", item.itemId)
        .add("text1", item.text1.toStdString())
        .add("text2", item.text2.toStdString())
        .add("text3", item.text3.toStdString())
        .add("flag1", item.flag1)
        .add("word1", item.word1)
        .add("word2", item.word2)
        .add("flag2", item.flag2)
        .add("text4", item.text4.toStdString())
        .add("state1", item.state1)
        .add("state2", item.state2)
        .add("state3", item.state3)
        .text();
}

} // namespace gqdb

// --- The records on the wire ----------------------------------------------------

namespace {

struct YcItemCodec : FepCodec<YcItem> {
    static constexpr const char* name = "YcItem";
    static constexpr Writer writeOne = CByte2Fep::ycItem2Byte;
    static constexpr Reader readOne = CByte2Fep::byte2YcItem;
    static constexpr ListWriter writeList = CByte2Fep::ycItems2Byte;
    static constexpr ListReader readList = CByte2Fep::byte2YcItems;

    static constexpr const char* unset = "flag1: 00\n"
                                         "itemId: 00 00 00 00\n"
                                         "text1: \n"
                                         "text2: \n"
                                         "text3: \n"
                                         "text4: \n"
                                         "flag2: 00\n"
                                         "word1: 00 00 00 00\n"
                                         "word2: ff ff ff ff\n" // -1
                                         "flag3: 00\n"
                                         "coef1: 00 00 80 3f\n" // 1.0
                                         "coef2: 00 00 00 00\n"
                                         "coef3: 00 00 00 00\n"
                                         "coef4: 00 00 00 00\n"
                                         "word3: 00 00 00 00\n"
                                         "flag4: 00\n"
                                         "flag5: 00\n"
                                         "text5: \n"
                                         "state1: 00 00 00 00\n"
                                         "state2: 00 00 00 00\n"
                                         "state3: 00 00 00 00\n";

    static void setTexts(YcItem& item, const QString& text)
    {
        item.text1 = item.text2 = item.text3 = item.text4 = item.text5 = text;
    }

    static YcItem occupied()
    {
        YcItem item;
        setTexts(item, "old");
        item.flag1 = 91;
        item.itemId = 901;
        item.flag2 = 92;
        item.word1 = 902;
        item.word2 = 903;
        item.flag3 = 93;
        item.coef1 = 904;
        item.coef2 = 905;
        item.coef3 = 906;
        item.coef4 = 907;
        item.word3 = 908;
        item.flag4 = 94;
        item.flag5 = 95;
        item.state1 = 909;
        item.state2 = 910;
        item.state3 = 911;
        return item;
    }

    inline static const FepImage<YcItem> full = {
        "d1"                                                          //  0 flag1
        "01020384"                                                    //  1 itemId
        "1b00 e4b880e58fb7e6af8de7babfe7babfe794b5e58e8be981a5e6b58b" //  5 text1
        "0200 6232"                                                   // 34 text2
        "0100 63"                                                     // 38 text3
        "0400 64343434"                                               // 41 text4
        "e2"                                                          // 47 flag2
        "11121385"                                                    // 48 word1
        "21222386"                                                    // 52 word2
        "f3"                                                          // 56 flag3
        "313233c1"                                                    // 57 coef1
        "41424342"                                                    // 61 coef2
        "515253c3"                                                    // 65 coef3
        "61626344"                                                    // 69 coef4
        "71727387"                                                    // 73 word3
        "84"                                                          // 77 flag4
        "95"                                                          // 78 flag5
        "0400 e6b58b35"_hex,                                          // 79 text5
        85,
        {
            {31, // more than the 5 bytes of the two fields
             [](YcItem& item) {
                 item.flag1 = char(0xd1);
                 item.itemId = int(0x84030201);
             }},
            {34, [](YcItem& item) { item.text1 = "一号母线线电压遥测"; }},
            {38, [](YcItem& item) { item.text2 = "b2"; }},
            {41, [](YcItem& item) { item.text3 = "c"; }},
            {47, [](YcItem& item) { item.text4 = "d444"; }},
            {79,
             [](YcItem& item) {
                 item.flag2 = char(0xe2);
                 item.word1 = int(0x85131211);
                 item.word2 = int(0x86232221);
                 item.flag3 = char(0xf3);
                 item.coef1 = floatOf(0xc1333231);
                 item.coef2 = floatOf(0x42434241);
                 item.coef3 = floatOf(0xc3535251);
                 item.coef4 = floatOf(0x44636261);
                 item.word3 = int(0x87737271);
                 item.flag4 = char(0x84);
                 item.flag5 = char(0x95);
             }},
            {85, [](YcItem& item) { item.text5 = "测5"; }},
        }};

    inline static const FepImage<YcItem> plain = {"00"                         //  0 flag1
                                                  "00000000"                   //  1 itemId
                                                  "0000 0000 0000 0000"        //  5 text1 to text4
                                                  "00"                         // 13 flag2
                                                  "00000000"                   // 14 word1
                                                  "ffffffff"                   // 18 word2
                                                  "00"                         // 22 flag3
                                                  "0000803f"                   // 23 coef1
                                                  "00000000 00000000 00000000" // 27 coef2, coef3, coef4
                                                  "00000000"                   // 39 word3
                                                  "00 00"                      // 43 flag4, flag5
                                                  "0000"_hex,                  // 45 text5
                                                  47,
                                                  {
                                                      {31,
                                                       [](YcItem& item) {
                                                           item.flag1 = 0;
                                                           item.itemId = 0;
                                                           item.text1 = item.text2 = item.text3 = item.text4 = "";
                                                       }},
                                                      {45,
                                                       [](YcItem& item) {
                                                           item.flag2 = item.flag3 = item.flag4 = item.flag5 = 0;
                                                           item.word1 = item.word3 = 0;
                                                           item.word2 = -1;
                                                           item.coef1 = 1;
                                                           item.coef2 = item.coef3 = item.coef4 = 0;
                                                       }},
                                                      {47, [](YcItem& item) { item.text5 = ""; }},
                                                  }};

    inline static const FepImage<YcItem> cut = {"80"               //  0 flag1
                                                "ffffffff"         //  1 itemId
                                                "0300 610062"      //  5 text1
                                                "0300 610062"      // 10 text2
                                                "0300 610062"      // 15 text3
                                                "0300 610062"      // 20 text4
                                                "7f"               // 25 flag2
                                                "ffffff7f"         // 26 word1
                                                "00000080"         // 30 word2
                                                "ff"               // 34 flag3
                                                "00000080"         // 35 coef1 -0.0
                                                "0100c07f"         // 39 coef2, a NaN
                                                "000080ff"         // 43 coef3, negative infinity
                                                "01000000"         // 47 coef4, the smallest number
                                                "feffffff"         // 51 word3
                                                "01 02"            // 55 flag4, flag5
                                                "0300 610062"_hex, // 57 text5
                                                62,
                                                {
                                                    {31,
                                                     [](YcItem& item) {
                                                         item.flag1 = -128;
                                                         item.itemId = -1;
                                                         item.text1 = item.text2 = item.text3 = item.text4 = "a";
                                                     }},
                                                    {57,
                                                     [](YcItem& item) {
                                                         item.flag2 = 127;
                                                         item.word1 = 2147483647;
                                                         item.word2 = -2147483647 - 1;
                                                         item.flag3 = -1;
                                                         item.coef1 = -0.0f;
                                                         item.coef2 = floatOf(0x7fc00001);
                                                         item.coef3 = floatOf(0xff800000);
                                                         item.coef4 = floatOf(0x00000001);
                                                         item.word3 = -2;
                                                         item.flag4 = 1;
                                                         item.flag5 = 2;
                                                     }},
                                                    {62, [](YcItem& item) { item.text5 = "a"; }},
                                                }};

    inline static const QByteArray writtenFull = full.bytes;
    inline static const QByteArray writtenPlain = plain.bytes;
    inline static const QByteArray writtenCut = cut.bytes;
};

struct YxItemCodec : FepCodec<YxItem> {
    static constexpr const char* name = "YxItem";
    static constexpr Writer writeOne = CByte2Fep::yxItem2Byte;
    static constexpr Reader readOne = CByte2Fep::byte2YxItem;
    static constexpr ListWriter writeList = CByte2Fep::yxItems2Byte;
    static constexpr ListReader readList = CByte2Fep::byte2YxItems;

    static constexpr const char* unset = "itemId: 00 00 00 00\n"
                                         "text1: \n"
                                         "text2: \n"
                                         "text3: \n"
                                         "flag1: 00\n"
                                         "word1: 00 00 00 00\n"
                                         "word2: ff ff ff ff\n" // -1
                                         "flag2: 00\n"
                                         "word3: 00 00 00 00\n"
                                         "flag3: 00\n"
                                         "flag4: 00\n"
                                         "flag5: 00\n"
                                         "flag6: 00\n"
                                         "text4: \n"
                                         "state1: 00\n"
                                         "state2: 00 00 00 00\n"
                                         "state3: 00 00 00 00\n";

    static void setTexts(YxItem& item, const QString& text)
    {
        item.text1 = item.text2 = item.text3 = item.text4 = text;
    }

    static YxItem occupied()
    {
        YxItem item;
        setTexts(item, "old");
        item.itemId = 901;
        item.flag1 = 91;
        item.word1 = 902;
        item.word2 = 903;
        item.flag2 = 92;
        item.word3 = 904;
        item.flag3 = 93;
        item.flag4 = 94;
        item.flag5 = 95;
        item.flag6 = 96;
        item.state1 = 97;
        item.state2 = 905;
        item.state3 = 906;
        return item;
    }

    inline static const FepImage<YxItem> full = {
        "01020384"                                        //  0 itemId
        "1500 e4ba8ce58fb7e696ade8b7afe599a8e4bd8de7bdae" //  4 text1
        "0200 6232"                                       // 27 text2
        "0100 63"                                         // 31 text3
        "d1"                                              // 34 flag1
        "11121385"                                        // 35 word1
        "21222386"                                        // 39 word2
        "e2"                                              // 43 flag2
        "31323387"                                        // 44 word3
        "f3"                                              // 48 flag3
        "84"                                              // 49 flag4
        "95"                                              // 50 flag5
        "a6"                                              // 51 flag6
        "0400 64e6b58b"_hex,                              // 52 text4
        58,
        {
            {24, [](YxItem& item) { item.itemId = int(0x84030201); }}, // 4 bytes are not enough
            {27, [](YxItem& item) { item.text1 = "二号断路器位置"; }},
            {31, [](YxItem& item) { item.text2 = "b2"; }},
            {34, [](YxItem& item) { item.text3 = "c"; }},
            {52,
             [](YxItem& item) {
                 item.flag1 = char(0xd1);
                 item.word1 = int(0x85131211);
                 item.word2 = int(0x86232221);
                 item.flag2 = char(0xe2);
                 item.word3 = int(0x87333231);
                 item.flag3 = char(0xf3);
                 item.flag4 = char(0x84);
                 item.flag5 = char(0x95);
                 item.flag6 = char(0xa6);
             }},
            {58, [](YxItem& item) { item.text4 = "d测"; }},
        }};

    inline static const FepImage<YxItem> plain = {"00000000"       //  0 itemId
                                                  "0000 0000 0000" //  4 text1, text2, text3
                                                  "00"             // 10 flag1
                                                  "00000000"       // 11 word1
                                                  "ffffffff"       // 15 word2
                                                  "00"             // 19 flag2
                                                  "00000000"       // 20 word3
                                                  "00 00 00 00"    // 24 flag3 to flag6
                                                  "0000"_hex,      // 28 text4
                                                  30,
                                                  {
                                                      {24,
                                                       [](YxItem& item) {
                                                           item.itemId = 0;
                                                           item.text1 = item.text2 = item.text3 = "";
                                                       }},
                                                      {28,
                                                       [](YxItem& item) {
                                                           item.flag1 = item.flag2 = item.flag3 = item.flag4 =
                                                               item.flag5 = item.flag6 = 0;
                                                           item.word1 = item.word3 = 0;
                                                           item.word2 = -1;
                                                       }},
                                                      {30, [](YxItem& item) { item.text4 = ""; }},
                                                  }};

    inline static const FepImage<YxItem> cut = {"ffffffff"         //  0 itemId
                                                "0300 610062"      //  4 text1
                                                "0300 610062"      //  9 text2
                                                "0300 610062"      // 14 text3
                                                "80"               // 19 flag1
                                                "ffffff7f"         // 20 word1
                                                "00000080"         // 24 word2
                                                "7f"               // 28 flag2
                                                "feffffff"         // 29 word3
                                                "ff 01 02 03"      // 33 flag3 to flag6
                                                "0300 610062"_hex, // 37 text4
                                                42,
                                                {
                                                    {24,
                                                     [](YxItem& item) {
                                                         item.itemId = -1;
                                                         item.text1 = item.text2 = item.text3 = "a";
                                                     }},
                                                    {37,
                                                     [](YxItem& item) {
                                                         item.flag1 = -128;
                                                         item.word1 = 2147483647;
                                                         item.word2 = -2147483647 - 1;
                                                         item.flag2 = 127;
                                                         item.word3 = -2;
                                                         item.flag3 = -1;
                                                         item.flag4 = 1;
                                                         item.flag5 = 2;
                                                         item.flag6 = 3;
                                                     }},
                                                    {42, [](YxItem& item) { item.text4 = "a"; }},
                                                }};

    inline static const QByteArray writtenFull = full.bytes;
    inline static const QByteArray writtenPlain = plain.bytes;
    inline static const QByteArray writtenCut = cut.bytes;
};

struct YdItemCodec : FepCodec<YdItem> {
    static constexpr const char* name = "YdItem";
    static constexpr Writer writeOne = CByte2Fep::ydItem2Byte;
    static constexpr Reader readOne = CByte2Fep::byte2YdItem;
    static constexpr ListWriter writeList = CByte2Fep::ydItems2Byte;
    static constexpr ListReader readList = CByte2Fep::byte2YdItems;

    static constexpr const char* unset = "flag1: 00\n"
                                         "itemId: 00 00 00 00\n"
                                         "text1: \n"
                                         "text2: \n"
                                         "text3: \n"
                                         "text4: \n"
                                         "flag2: 00\n"
                                         "flag3: 00\n"
                                         "word1: 00 00 00 00\n"
                                         "word2: 00 00 00 00\n"
                                         "flag4: 00\n"
                                         "flag5: 00\n"
                                         "flag6: 00\n"
                                         "flag7: 00\n"
                                         "float1: 00 00 00 00\n"
                                         "float2: 00 00 00 00\n"
                                         "word3: 00 00 00 00\n"
                                         "float3: 00 00 00 00\n"
                                         "float4: 00 00 00 00\n"
                                         "word4: 00 00 00 00\n"
                                         "word5: 00 00 00 00\n"
                                         "text5: \n";

    static void setTexts(YdItem& item, const QString& text)
    {
        item.text1 = item.text2 = item.text3 = item.text4 = item.text5 = text;
    }

    static YdItem occupied()
    {
        YdItem item;
        setTexts(item, "old");
        item.flag1 = 91;
        item.itemId = 901;
        item.flag2 = 92;
        item.flag3 = 93;
        item.word1 = 902;
        item.word2 = 903;
        item.flag4 = 94;
        item.flag5 = 95;
        item.flag6 = 96;
        item.flag7 = 97;
        item.float1 = 904;
        item.float2 = 905;
        item.word3 = 906;
        item.float3 = 907;
        item.float4 = 908;
        item.word4 = 909;
        item.word5 = 910;
        return item;
    }

    inline static const FepImage<YdItem> full = {
        "d1"                                                    //   0 flag1
        "01020384"                                              //   1 itemId
        "2a00 e4b889e58fb7e58f98e58e8be599a8e9ab98e58e8be4bea7" //   5 text1
        "e69c89e58a9fe58a9fe78e87e5ae9ae580bc"                  //
        "0200 6232"                                             //  49 text2
        "0100 63"                                               //  53 text3
        "0400 64343434"                                         //  56 text4
        "e2"                                                    //  62 flag2
        "f3"                                                    //  63 flag3
        "11121385"                                              //  64 word1
        "21222386"                                              //  68 word2
        "84"                                                    //  72 flag4
        "95"                                                    //  73 flag5
        "a6"                                                    //  74 flag6
        "b7"                                                    //  75 flag7
        "313233c1"                                              //  76 float1
        "41424342"                                              //  80 float2
        "51525387"                                              //  84 word3
        "616263c3"                                              //  88 float3
        "71727344"                                              //  92 float4
        "81828388"                                              //  96 word4
        "91929389"                                              // 100 word5
        "0400 65e6b58b"_hex,                                    // 104 text5
        110,
        {
            {48, // more than the 5 bytes of the two fields
             [](YdItem& item) {
                 item.flag1 = char(0xd1);
                 item.itemId = int(0x84030201);
             }},
            {49, [](YdItem& item) { item.text1 = "三号变压器高压侧有功功率定值"; }},
            {53, [](YdItem& item) { item.text2 = "b2"; }},
            {56, [](YdItem& item) { item.text3 = "c"; }},
            {62, [](YdItem& item) { item.text4 = "d444"; }},
            {104,
             [](YdItem& item) {
                 item.flag2 = char(0xe2);
                 item.flag3 = char(0xf3);
                 item.word1 = int(0x85131211);
                 item.word2 = int(0x86232221);
                 item.flag4 = char(0x84);
                 item.flag5 = char(0x95);
                 item.flag6 = char(0xa6);
                 item.flag7 = char(0xb7);
                 item.float1 = floatOf(0xc1333231);
                 item.float2 = floatOf(0x42434241);
                 item.word3 = int(0x87535251);
                 item.float3 = floatOf(0xc3636261);
                 item.float4 = floatOf(0x44737271);
                 item.word4 = int(0x88838281);
                 item.word5 = int(0x89939291);
             }},
            {110, [](YdItem& item) { item.text5 = "e测"; }},
        }};

    inline static const FepImage<YdItem> plain = {"00"                  //  0 flag1
                                                  "00000000"            //  1 itemId
                                                  "0000 0000 0000 0000" //  5 text1 to text4
                                                  "00 00"               // 13 flag2, flag3
                                                  "00000000 00000000"   // 15 word1, word2
                                                  "00 00 00 00"         // 23 flag4 to flag7
                                                  "00000000 00000000"   // 27 float1, float2
                                                  "00000000"            // 35 word3
                                                  "00000000 00000000"   // 39 float3, float4
                                                  "00000000 00000000"   // 47 word4, word5
                                                  "0000"_hex,           // 55 text5
                                                  57,
                                                  {
                                                      {48,
                                                       [](YdItem& item) {
                                                           item.flag1 = 0;
                                                           item.itemId = 0;
                                                           item.text1 = item.text2 = item.text3 = item.text4 = "";
                                                       }},
                                                      {55,
                                                       [](YdItem& item) {
                                                           item.flag2 = item.flag3 = item.flag4 = item.flag5 =
                                                               item.flag6 = item.flag7 = 0;
                                                           item.word1 = item.word2 = item.word3 = item.word4 =
                                                               item.word5 = 0;
                                                           item.float1 = item.float2 = item.float3 = item.float4 = 0;
                                                       }},
                                                      {57, [](YdItem& item) { item.text5 = ""; }},
                                                  }};

    inline static const FepImage<YdItem> cut = {"80"               //  0 flag1
                                                "ffffffff"         //  1 itemId
                                                "0300 610062"      //  5 text1
                                                "0300 610062"      // 10 text2
                                                "0300 610062"      // 15 text3
                                                "0300 610062"      // 20 text4
                                                "7f ff"            // 25 flag2, flag3
                                                "ffffff7f"         // 27 word1
                                                "00000080"         // 31 word2
                                                "01 02 03 04"      // 35 flag4 to flag7
                                                "00000080"         // 39 float1 -0.0
                                                "0100c07f"         // 43 float2, a NaN
                                                "feffffff"         // 47 word3
                                                "000080ff"         // 51 float3, negative infinity
                                                "01000000"         // 55 float4, the smallest number
                                                "fdffffff"         // 59 word4
                                                "000000ff"         // 63 word5
                                                "0300 610062"_hex, // 67 text5
                                                72,
                                                {
                                                    {48,
                                                     [](YdItem& item) {
                                                         item.flag1 = -128;
                                                         item.itemId = -1;
                                                         item.text1 = item.text2 = item.text3 = item.text4 = "a";
                                                     }},
                                                    {67,
                                                     [](YdItem& item) {
                                                         item.flag2 = 127;
                                                         item.flag3 = -1;
                                                         item.word1 = 2147483647;
                                                         item.word2 = -2147483647 - 1;
                                                         item.flag4 = 1;
                                                         item.flag5 = 2;
                                                         item.flag6 = 3;
                                                         item.flag7 = 4;
                                                         item.float1 = -0.0f;
                                                         item.float2 = floatOf(0x7fc00001);
                                                         item.word3 = -2;
                                                         item.float3 = floatOf(0xff800000);
                                                         item.float4 = floatOf(0x00000001);
                                                         item.word4 = -3;
                                                         item.word5 = -16777216;
                                                     }},
                                                    {72, [](YdItem& item) { item.text5 = "a"; }},
                                                }};

    inline static const QByteArray writtenFull = full.bytes;
    inline static const QByteArray writtenPlain = plain.bytes;
    inline static const QByteArray writtenCut = cut.bytes;
};

// The images are the reader's form, which has no flag1.
struct YbItemCodec : FepCodec<YbItem> {
    static constexpr const char* name = "YbItem";
    static constexpr Writer writeOne = CByte2Fep::ybItem2Byte;
    static constexpr Reader readOne = CByte2Fep::byte2YbItem;
    static constexpr ListWriter writeList = CByte2Fep::ybItems2Byte;
    static constexpr ListReader readList = CByte2Fep::byte2YbItems;
    static constexpr bool writerReserves = false;

    static constexpr const char* unset = "itemId: 00 00 00 00\n"
                                         "text1: \n"
                                         "text2: \n"
                                         "text3: \n"
                                         "flag1: 00\n"
                                         "word1: 00 00 00 00\n"
                                         "word2: 00 00 00 00\n"
                                         "flag2: 00\n"
                                         "text4: \n"
                                         "state1: 00 00 00 00\n"
                                         "state2: 00 00 00 00\n"
                                         "state3: 00 00 00 00\n";

    static void setTexts(YbItem& item, const QString& text)
    {
        item.text1 = item.text2 = item.text3 = item.text4 = text;
    }

    static YbItem occupied()
    {
        YbItem item;
        setTexts(item, "old");
        item.itemId = 901;
        item.flag1 = 91;
        item.word1 = 902;
        item.word2 = 903;
        item.flag2 = 92;
        item.state1 = 904;
        item.state2 = 905;
        item.state3 = 906;
        return item;
    }

    inline static const FepImage<YbItem> full = {
        "01020384"                                        //  0 itemId
        "1500 e59b9be58fb7e8aea1e695b0e599a8e8afbbe695b0" //  4 text1
        "0200 6232"                                       // 27 text2
        "0100 63"                                         // 31 text3
        "11121385"                                        // 34 word1
        "21222386"                                        // 38 word2
        "e2"                                              // 42 flag2
        "0400 64e6b58b"_hex,                              // 43 text4
        49,
        {
            {21, [](YbItem& item) { item.itemId = int(0x84030201); }}, // 4 bytes are not enough
            {27, [](YbItem& item) { item.text1 = "四号计数器读数"; }},
            {31, [](YbItem& item) { item.text2 = "b2"; }},
            {34, [](YbItem& item) { item.text3 = "c"; }},
            {45, // 11 bytes for 9
             [](YbItem& item) {
                 item.word1 = int(0x85131211);
                 item.word2 = int(0x86232221);
                 item.flag2 = char(0xe2);
             }},
            {49, [](YbItem& item) { item.text4 = "d测"; }},
        }};

    inline static const FepImage<YbItem> plain = {"00000000"          //  0 itemId
                                                  "0000 0000 0000"    //  4 text1, text2, text3
                                                  "00000000 00000000" // 10 word1, word2
                                                  "00"                // 18 flag2
                                                  "0000"_hex,         // 19 text4
                                                  21,
                                                  {
                                                      {21,
                                                       [](YbItem& item) {
                                                           setTexts(item, "");
                                                           item.itemId = item.word1 = item.word2 = 0;
                                                           item.flag2 = 0;
                                                       }},
                                                  }};

    inline static const FepImage<YbItem> cut = {"ffffffff"         //  0 itemId
                                                "0300 610062"      //  4 text1
                                                "0300 610062"      //  9 text2
                                                "0300 610062"      // 14 text3
                                                "ffffff7f"         // 19 word1
                                                "00000080"         // 23 word2
                                                "80"               // 27 flag2
                                                "0300 610062"_hex, // 28 text4
                                                33,
                                                {
                                                    {21,
                                                     [](YbItem& item) {
                                                         item.itemId = -1;
                                                         item.text1 = item.text2 = item.text3 = "a";
                                                     }},
                                                    {30,
                                                     [](YbItem& item) {
                                                         item.word1 = 2147483647;
                                                         item.word2 = -2147483647 - 1;
                                                         item.flag2 = -128;
                                                     }},
                                                    {33, [](YbItem& item) { item.text4 = "a"; }},
                                                }};

    inline static const QByteArray writtenFull = "01020384"                                        //  0 itemId
                                                 "1500 e59b9be58fb7e8aea1e695b0e599a8e8afbbe695b0" //  4 text1
                                                 "0200 6232"                                       // 27 text2
                                                 "0100 63"                                         // 31 text3
                                                 "5b"                                              // 34 flag1 91
                                                 "11121385"                                        // 35 word1
                                                 "21222386"                                        // 39 word2
                                                 "e2"                                              // 43 flag2
                                                 "0400 64e6b58b"_hex;                              // 44 text4

    inline static const QByteArray writtenPlain = "00000000"          //  0 itemId
                                                  "0000 0000 0000"    //  4 text1, text2, text3
                                                  "00"                // 10 flag1
                                                  "00000000 00000000" // 11 word1, word2
                                                  "00"                // 19 flag2
                                                  "0000"_hex;         // 20 text4

    inline static const QByteArray writtenCut = "ffffffff"         //  0 itemId
                                                "0300 610062"      //  4 text1
                                                "0300 610062"      //  9 text2
                                                "0300 610062"      // 14 text3
                                                "00"               // 19 flag1
                                                "ffffff7f"         // 20 word1
                                                "00000080"         // 24 word2
                                                "80"               // 28 flag2
                                                "0300 610062"_hex; // 29 text4
};

using Items = testing::Types<YcItemCodec, YxItemCodec, YdItemCodec, YbItemCodec>;

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Items, FepRecord, Items, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Items, Fep2Byte, Items, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Items, Byte2Fep, Items, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Items, FepList2Byte, Items, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Items, Byte2FepList, Items, FepCodecNames);

// --- Round trips ----------------------------------------------------------------

TEST(YcItem2Byte, roundTrips)
{
    YcItem item = YcItemCodec::occupied();
    item.text1 = "电压";
    QByteArray data;
    CByte2Fep::ycItem2Byte(item, data);
    YcItem back;
    back.state1 = item.state1; // not on the wire
    back.state2 = item.state2;
    back.state3 = item.state3;
    EXPECT_EQ(CByte2Fep::byte2YcItem(heapBytes(data).data(), data.size(), back), data.size());
    EXPECT_EQ(show(back), show(item));
}

TEST(YxItem2Byte, roundTrips)
{
    YxItem item = YxItemCodec::occupied();
    item.text1 = "断路器";
    QByteArray data;
    CByte2Fep::yxItem2Byte(item, data);
    YxItem back;
    back.state1 = item.state1; // not on the wire
    back.state2 = item.state2;
    back.state3 = item.state3;
    EXPECT_EQ(CByte2Fep::byte2YxItem(heapBytes(data).data(), data.size(), back), data.size());
    EXPECT_EQ(show(back), show(item));
}

TEST(YdItem2Byte, roundTrips)
{
    YdItem item = YdItemCodec::occupied();
    item.text1 = "定值";
    QByteArray data;
    CByte2Fep::ydItem2Byte(item, data);
    YdItem back;
    EXPECT_EQ(CByte2Fep::byte2YdItem(heapBytes(data).data(), data.size(), back), data.size());
    EXPECT_EQ(show(back), show(item));
}

// --- YbItem: the writer puts flag1, the reader's form lacks it ------------------

// Writes `item`, which takes `size` bytes, and reads them into `back` with flag1 set to 0x33.
static int readWritten(const YbItem& item, int size, YbItem& back)
{
    QByteArray data;
    CByte2Fep::ybItem2Byte(item, data);
    EXPECT_EQ(data.size(), size);
    back.flag1 = 0x33;
    return CByte2Fep::byte2YbItem(heapBytes(data).data(), data.size(), back);
}

// A default record with this flag1.
static YbItem ybWithFlag1(char flag1)
{
    YbItem item;
    item.flag1 = flag1;
    return item;
}

TEST(Byte2YbItem, returns1LessThanTheWrittenSizeOfADefaultRecord)
{
    YbItem back = YbItemCodec::occupied();
    back.state1 = back.state2 = back.state3 = 0;
    EXPECT_EQ(readWritten(YbItem(), 22, back), 21);
    EXPECT_EQ(show(back), show(ybWithFlag1(0x33)));
}

TEST(Byte2YbItem, readsTheFieldsAfterText3OneByteEarly)
{
    YbItem item;
    item.flag1 = 0x7f;
    item.word1 = 0x01020304;
    YbItem back;
    EXPECT_EQ(readWritten(item, 22, back), 21);
    YbItem expected = ybWithFlag1(0x33);
    expected.word1 = 0x0203047f;
    expected.word2 = 0x00000001;
    EXPECT_EQ(show(back), show(expected));

    item = YbItem();
    item.itemId = 77;
    item.text1 = "a";
    item.text2 = "bb";
    item.text3 = "ccc";
    item.flag1 = char(0xf1);
    item.word1 = 0x14131211;
    item.word2 = 0x24232221;
    item.flag2 = 1;        // becomes the low byte of the length
    item.text4 = "\x7f d"; // length 3 becomes the high byte: 0x0301
    back = YbItem();
    EXPECT_EQ(readWritten(item, 31, back), 0);
    expected = ybWithFlag1(0x33);
    expected.itemId = 77;
    expected.text1 = "a";
    expected.text2 = "bb";
    expected.text3 = "ccc";
    expected.word1 = 0x131211f1;
    expected.word2 = 0x23222114;
    expected.flag2 = 0x24;
    EXPECT_EQ(show(back), show(expected));
}

TEST(Byte2YbItem, readsTheLengthOfText4FromFlag2AndTheLowLengthByte)
{
    YbItem item;
    item.flag2 = 5; // read as length 5, with 1 byte left
    YbItem back = YbItemCodec::occupied();
    EXPECT_EQ(readWritten(item, 22, back), 0);
    YbItem expected = YbItemCodec::occupied();
    expected.itemId = expected.word1 = expected.word2 = 0;
    expected.text1 = expected.text2 = expected.text3 = "";
    expected.flag1 = 0x33;
    expected.flag2 = 0;
    EXPECT_EQ(show(back), show(expected));

    item.flag2 = 0;
    item.text4 = "ddd"; // read as length 0x0300
    back = YbItemCodec::occupied();
    EXPECT_EQ(readWritten(item, 25, back), 0);
    EXPECT_EQ(show(back), show(expected));

    item.flag2 = 2;
    item.text4 = QString(256, 'd'); // length bytes 00 01, of which the reader takes the 00
    back = YbItem();
    EXPECT_EQ(readWritten(item, 278, back), 23);
    EXPECT_EQ(back.text4, QString("\x01") + "d");
}

TEST(Byte2YbItem, readsARecordWithoutFlag1Completely)
{
    const QByteArray bytes = "04000000"       //  0 itemId
                             "0100 61"        //  4 text1
                             "0100 62"        //  7 text2
                             "0100 63"        // 10 text3
                             "04030201"       // 13 word1
                             "08070605"       // 17 word2
                             "09"             // 21 flag2
                             "0200 6464"_hex; // 22 text4
    YbItem item = ybWithFlag1(0x33);
    EXPECT_EQ(CByte2Fep::byte2YbItem(heapBytes(bytes).data(), bytes.size(), item), 26);
    YbItem expected = ybWithFlag1(0x33);
    expected.itemId = 4;
    expected.text1 = "a";
    expected.text2 = "b";
    expected.text3 = "c";
    expected.word1 = 0x01020304;
    expected.word2 = 0x05060708;
    expected.flag2 = 9;
    expected.text4 = "dd";
    EXPECT_EQ(show(item), show(expected));
}

// --- Lists of YbItem ------------------------------------------------------------

static int readYbs(const QByteArray& bytes, std::vector<YbItem>& list)
{
    return CByte2Fep::byte2YbItems(heapBytes(bytes).data(), bytes.size(), list);
}

TEST(Byte2YbItems, losesOneByteWithEachWrittenRecord)
{
    // The second is read from the high byte of the first one's last length, the third 2 bytes early.
    const QByteArray bytes = "03000000"
                             "01000000 0000 0000 0000 00 00000000 00000000 00 0000"
                             "02010000 0000 0000 0000 00 00000000 00000000 00 0000"
                             "03010000 0000 0000 0000 00 00000000 00000000 00 0000"_hex;
    std::vector<YbItem> list;
    EXPECT_EQ(readYbs(bytes, list), 1);
    YbItem first;
    first.itemId = 0x01;
    YbItem second;
    second.itemId = 0x0102 << 8;
    YbItem third;
    third.itemId = 0x0103 << 16;
    EXPECT_EQ(showAll(list), showAll(std::vector<YbItem>{first, second, third}));
}

TEST(Byte2YbItems, failsWhenAMisreadLengthExceedsTheBuffer)
{
    // The top byte of the second itemId is read as the low byte of a length.
    const QByteArray bytes = "02000000"
                             "01000000 0000 0000 0000 00 00000000 00000000 00 0000"
                             "02010040 0000 0000 0000 00 00000000 00000000 00 0000"_hex;
    std::vector<YbItem> list;
    EXPECT_EQ(readYbs(bytes, list), 0);
    YbItem first;
    first.itemId = 0x01;
    YbItem second;
    second.itemId = 0x0102 << 8;
    EXPECT_EQ(showAll(list), showAll(std::vector<YbItem>{first, second}));
}

TEST(Byte2YbItems, readsAListOfRecordsWithoutFlag1)
{
    const QByteArray bytes = "02000000"
                             "01000000 0000 0000 0000 11000000 12000000 13 0000"
                             "02000000 0000 0000 0000 21000000 22000000 23 0100 64"_hex;
    std::vector<YbItem> list;
    EXPECT_EQ(readYbs(bytes, list), 1);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].word1, 0x11);
    EXPECT_EQ(list[1].itemId, 2);
    EXPECT_EQ(list[1].word1, 0x21);
    EXPECT_EQ(list[1].word2, 0x22);
    EXPECT_EQ(list[1].flag2, 0x23);
    EXPECT_EQ(list[1].text4, QString("d"));
}
