#include "byte2Fep.h"
#include "support/fepRecordChecks.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cstddef>

using gqdb::CByte2Fep;
using gqdb::CommItem;
using gqdb::NodeHead;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(NodeHead, nodeId), offsetof(NodeHead, text1), offsetof(NodeHead, text2),
                         offsetof(NodeHead, text3), offsetof(NodeHead, text4), offsetof(NodeHead, flag1),
                         offsetof(NodeHead, word1), offsetof(NodeHead, flag2), offsetof(NodeHead, flag3),
                         offsetof(NodeHead, flag4), offsetof(NodeHead, word2), offsetof(NodeHead, word3),
                         offsetof(NodeHead, word4), offsetof(NodeHead, word5), offsetof(NodeHead, text5),
                         offsetof(NodeHead, text6)}));
static_assert(allAre<int NodeHead::*>(&NodeHead::nodeId, &NodeHead::word1, &NodeHead::word2, &NodeHead::word3,
                                      &NodeHead::word4, &NodeHead::word5));
static_assert(allAre<char NodeHead::*>(&NodeHead::flag1, &NodeHead::flag2, &NodeHead::flag3, &NodeHead::flag4));
static_assert(allAre<QString NodeHead::*>(&NodeHead::text1, &NodeHead::text2, &NodeHead::text3, &NodeHead::text4,
                                          &NodeHead::text5, &NodeHead::text6));

static_assert(ascending({offsetof(CommItem, commId), offsetof(CommItem, text1), offsetof(CommItem, text2),
                         offsetof(CommItem, flag1), offsetof(CommItem, text3), offsetof(CommItem, flag2),
                         offsetof(CommItem, text4), offsetof(CommItem, word1), offsetof(CommItem, flag3),
                         offsetof(CommItem, state1), offsetof(CommItem, state2), offsetof(CommItem, state3),
                         offsetof(CommItem, state4), offsetof(CommItem, text5)}));
static_assert(allAre<int CommItem::*>(&CommItem::commId, &CommItem::word1));
static_assert(allAre<unsigned int CommItem::*>(&CommItem::state1, &CommItem::state2, &CommItem::state3,
                                               &CommItem::state4));
static_assert(allAre<char CommItem::*>(&CommItem::flag1, &CommItem::flag2, &CommItem::flag3));
static_assert(allAre<QString CommItem::*>(&CommItem::text1, &CommItem::text2, &CommItem::text3, &CommItem::text4,
                                          &CommItem::text5));

namespace gqdb {

static std::string show(const NodeHead& head)
{
    return FieldText()
        .add("nodeId", head.nodeId)
        .add("text1", head.text1.toStdString())
        .add("text2", head.text2.toStdString())
        .add("text3", head.text3.toStdString())
        .add("text4", head.text4.toStdString())
        .add("flag1", head.flag1)
        .add("word1", head.word1)
        .add("flag2", head.flag2)
        .add("flag3", head.flag3)
        .add("flag4", head.flag4)
        .add("word2", head.word2)
        .add("word3", head.word3)
        .add("word4", head.word4)
        .add("word5", head.word5)
        .add("text5", head.text5.toStdString())
        .add("text6", head.text6.toStdString())
        .text();
}

static std::string show(const CommItem& item)
{
    return FieldText()
        .add("commId", item.commId)
        .add("text1", item.text1.toStdString())
        .add("text2", item.text2.toStdString())
        .add("flag1", item.flag1)
        .add("text3", item.text3.toStdString())
        .add("flag2", item.flag2)
        .add("text4", item.text4.toStdString())
        .add("word1", item.word1)
        .add("flag3", item.flag3)
        .add("state1", item.state1)
        .add("state2", item.state2)
        .add("state3", item.state3)
        .add("state4", item.state4)
        .add("text5", item.text5.toStdString())
        .text();
}

} // namespace gqdb

// --- The records on the wire ----------------------------------------------------

namespace {

struct NodeHeadCodec : FepCodec<NodeHead> {
    static constexpr const char* name = "NodeHead";
    static constexpr Writer writeOne = CByte2Fep::nodeHead2Byte;
    static constexpr Reader readOne = CByte2Fep::byte2NodeHead;
    static constexpr ListWriter writeList = CByte2Fep::nodeHeads2Byte;
    static constexpr ListReader readList = CByte2Fep::byte2NodeHeads;

    static constexpr const char* unset = "nodeId: 00 00 00 00\n"
                                         "text1: \n"
                                         "text2: \n"
                                         "text3: \n"
                                         "text4: \n"
                                         "flag1: 00\n"
                                         "word1: 00 00 00 00\n"
                                         "flag2: 00\n"
                                         "flag3: 00\n"
                                         "flag4: 00\n"
                                         "word2: 00 00 00 00\n"
                                         "word3: 03 00 00 00\n"
                                         "word4: 0a 00 00 00\n"
                                         "word5: 58 02 00 00\n" // 600
                                         "text5: \n"
                                         "text6: \n";

    static void setTexts(NodeHead& head, const QString& text)
    {
        head.text1 = head.text2 = head.text3 = head.text4 = head.text5 = head.text6 = text;
    }

    static NodeHead occupied()
    {
        NodeHead head;
        setTexts(head, "old");
        head.nodeId = 901;
        head.flag1 = 91;
        head.word1 = 902;
        head.flag2 = 92;
        head.flag3 = 93;
        head.flag4 = 94;
        head.word2 = 903;
        head.word3 = 904;
        head.word4 = 905;
        head.word5 = 906;
        return head;
    }

    inline static const FepImage<NodeHead> full = {
        "01020384"                                        //  0 nodeId
        "1500 e4b880e58fb7e5898de7bdaee69cbae88a82e782b9" //  4 text1
        "0200 6232"                                       // 27 text2
        "0100 63"                                         // 31 text3
        "0400 64343434"                                   // 34 text4
        "11121385"                                        // 40 word1
        "d1"                                              // 44 flag1
        "e2"                                              // 45 flag2
        "f3"                                              // 46 flag3
        "84"                                              // 47 flag4
        "21222386"                                        // 48 word2
        "31323387"                                        // 52 word3
        "41424388"                                        // 56 word4
        "51525389"                                        // 60 word5
        "0200 6535"                                       // 64 text5
        "0400 e6b58b36"_hex,                              // 68 text6
        74,
        {
            {25, [](NodeHead& head) { head.nodeId = int(0x84030201); }}, // 4 bytes are not enough
            {27, [](NodeHead& head) { head.text1 = "一号前置机节点"; }},
            {31, [](NodeHead& head) { head.text2 = "b2"; }},
            {34, [](NodeHead& head) { head.text3 = "c"; }},
            {40, [](NodeHead& head) { head.text4 = "d444"; }},
            {64,
             [](NodeHead& head) {
                 head.word1 = int(0x85131211);
                 head.flag1 = char(0xd1);
                 head.flag2 = char(0xe2);
                 head.flag3 = char(0xf3);
                 head.flag4 = char(0x84);
                 head.word2 = int(0x86232221);
                 head.word3 = int(0x87333231);
                 head.word4 = int(0x88434241);
                 head.word5 = int(0x89535251);
             }},
            {68, [](NodeHead& head) { head.text5 = "e5"; }},
            {74, [](NodeHead& head) { head.text6 = "测6"; }},
        }};

    inline static const FepImage<NodeHead> plain = {"00000000"            //  0 nodeId
                                                    "0000 0000 0000 0000" //  4 text1 to text4
                                                    "00000000"            // 12 word1
                                                    "00 00 00 00"         // 16 flag1 to flag4
                                                    "00000000"            // 20 word2
                                                    "03000000"            // 24 word3
                                                    "0a000000"            // 28 word4
                                                    "58020000"            // 32 word5
                                                    "0000 0000"_hex,      // 36 text5, text6
                                                    40,
                                                    {
                                                        {25,
                                                         [](NodeHead& head) {
                                                             head.nodeId = 0;
                                                             head.text1 = head.text2 = head.text3 = head.text4 = "";
                                                         }},
                                                        {36,
                                                         [](NodeHead& head) {
                                                             head.word1 = 0;
                                                             head.flag1 = head.flag2 = head.flag3 = head.flag4 = 0;
                                                             head.word2 = 0;
                                                             head.word3 = 3;
                                                             head.word4 = 10;
                                                             head.word5 = 600;
                                                         }},
                                                        {38, [](NodeHead& head) { head.text5 = ""; }},
                                                        {40, [](NodeHead& head) { head.text6 = ""; }},
                                                    }};

    inline static const FepImage<NodeHead> cut = {"ffffffff"         //  0 nodeId
                                                  "0300 610062"      //  4 text1
                                                  "0300 610062"      //  9 text2
                                                  "0300 610062"      // 14 text3
                                                  "0300 610062"      // 19 text4
                                                  "ffffff7f"         // 24 word1
                                                  "ff 80 7f 01"      // 28 flag1 to flag4
                                                  "00000080"         // 32 word2
                                                  "00ff0000"         // 36 word3
                                                  "000000ff"         // 40 word4
                                                  "feffffff"         // 44 word5
                                                  "0300 610062"      // 48 text5
                                                  "0300 610062"_hex, // 53 text6
                                                  58,
                                                  {
                                                      {25,
                                                       [](NodeHead& head) {
                                                           head.nodeId = -1;
                                                           head.text1 = head.text2 = head.text3 = head.text4 = "a";
                                                       }},
                                                      {48,
                                                       [](NodeHead& head) {
                                                           head.word1 = 2147483647;
                                                           head.flag1 = -1;
                                                           head.flag2 = -128;
                                                           head.flag3 = 127;
                                                           head.flag4 = 1;
                                                           head.word2 = -2147483647 - 1;
                                                           head.word3 = 65280;
                                                           head.word4 = -16777216;
                                                           head.word5 = -2;
                                                       }},
                                                      {53, [](NodeHead& head) { head.text5 = "a"; }},
                                                      {58, [](NodeHead& head) { head.text6 = "a"; }},
                                                  }};

    inline static const QByteArray writtenFull = full.bytes;
    inline static const QByteArray writtenPlain = plain.bytes;
    inline static const QByteArray writtenCut = cut.bytes;
};

// The bytes that the reader needs and its result are the size of the record only if text4 has 2 bytes and text3 is
// empty.
struct CommItemCodec : FepCodec<CommItem> {
    static constexpr const char* name = "CommItem";
    static constexpr Writer writeOne = CByte2Fep::commItem2Byte;
    static constexpr Reader readOne = CByte2Fep::byte2CommItem;
    static constexpr ListWriter writeList = CByte2Fep::commItems2Byte;
    static constexpr ListReader readList = CByte2Fep::byte2CommItems;

    static constexpr const char* unset = "commId: 00 00 00 00\n"
                                         "text1: \n"
                                         "text2: \n"
                                         "flag1: 00\n"
                                         "text3: \n"
                                         "flag2: 00\n"
                                         "text4: \n"
                                         "word1: 00 00 00 00\n"
                                         "flag3: 00\n"
                                         "state1: 00 00 00 00\n"
                                         "state2: 00 00 00 00\n"
                                         "state3: 00 00 00 00\n"
                                         "state4: 00 00 00 00\n"
                                         "text5: \n";

    static void setTexts(CommItem& item, const QString& text)
    {
        item.text1 = item.text2 = item.text3 = item.text4 = item.text5 = text;
    }

    static CommItem occupied()
    {
        CommItem item;
        setTexts(item, "old");
        item.commId = 901;
        item.flag1 = 91;
        item.flag2 = 92;
        item.word1 = 902;
        item.flag3 = 93;
        item.state1 = 903;
        item.state2 = 904;
        item.state3 = 905;
        item.state4 = 906;
        return item;
    }

    inline static const FepImage<CommItem> full = {
        "01020384"                                        //  0 commId
        "1500 e4b880e58fb7e5898de7bdaee69cbae9809ae98193" //  4 text1
        "0300 623232"                                     // 27 text2
        "0500 6333633363"                                 // 32 text3
        "d1"                                              // 39 flag1
        "e2"                                              // 40 flag2
        "0200 6434"                                       // 41 text4
        "11121385"                                        // 45 word1
        "0400 65353535"_hex,                              // 49 text5
        55,                                               // the size: text4 has 2 bytes
        {
            {25, [](CommItem& item) { item.commId = int(0x84030201); }},
            {27, [](CommItem& item) { item.text1 = "一号前置机通道"; }},
            {32, [](CommItem& item) { item.text2 = "b22"; }},
            {39, [](CommItem& item) { item.text3 = "c3c3c"; }},
            {43, // 4 bytes for the two flags
             [](CommItem& item) {
                 item.flag1 = char(0xd1);
                 item.flag2 = char(0xe2);
             }},
            {50, [](CommItem& item) { item.text4 = "d4"; }},            // from here on 5 bytes more than the record has
            {56, [](CommItem& item) { item.word1 = int(0x85131211); }}, // 49, 2 for a text that may be empty, and 5
            {60, [](CommItem& item) { item.text5 = "e555"; }},
        }};

    inline static const FepImage<CommItem> plain = {"00000000"       //  0 commId
                                                    "0000 0000 0000" //  4 text1, text2, text3
                                                    "00 00"          // 10 flag1, flag2
                                                    "0000"           // 12 text4
                                                    "00000000"       // 14 word1
                                                    "0000"_hex,      // 18 text5
                                                    18,              // 2 less than the size
                                                    {
                                                        {25,
                                                         [](CommItem& item) {
                                                             setTexts(item, "");
                                                             item.commId = 0;
                                                             item.flag1 = item.flag2 = 0;
                                                             item.word1 = 0;
                                                         }},
                                                    }};

    inline static const FepImage<CommItem> cut = {
        "ffffffff"         //  0 commId
        "0300 610062"      //  4 text1
        "0300 610062"      //  9 text2
        "0300 610062"      // 14 text3
        "80 7f"            // 19 flag1, flag2
        "0300 610062"      // 21 text4
        "feffff7f"         // 26 word1
        "0300 610062"_hex, // 30 text5
        36,                // 1 more than the size
        {
            {25,
             [](CommItem& item) {
                 item.commId = -1;
                 item.text1 = item.text2 = item.text3 = "a";
                 item.flag1 = -128;
                 item.flag2 = 127;
             }},
            {29, [](CommItem& item) { item.text4 = "a"; }}, // from here on 3 bytes more than the record has
            {35, [](CommItem& item) { item.word1 = 2147483646; }},
            {38, [](CommItem& item) { item.text5 = "a"; }},
        }};

    inline static const QByteArray writtenFull = full.bytes;
    inline static const QByteArray writtenPlain = plain.bytes;
    inline static const QByteArray writtenCut = cut.bytes;
};

using Nodes = testing::Types<NodeHeadCodec, CommItemCodec>;

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Nodes, FepRecord, Nodes, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Nodes, Fep2Byte, Nodes, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Nodes, Byte2Fep, Nodes, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Nodes, FepList2Byte, Nodes, FepCodecNames);
INSTANTIATE_TYPED_TEST_SUITE_P(Nodes, Byte2FepList, Nodes, FepCodecNames);

// --- Heads of nodes -------------------------------------------------------------

TEST(NodeHead2Byte, roundTrips)
{
    NodeHead head = NodeHeadCodec::occupied();
    head.text3 = "前置机\n\"3\"";
    QByteArray data;
    CByte2Fep::nodeHead2Byte(head, data);
    NodeHead back;
    EXPECT_EQ(CByte2Fep::byte2NodeHead(heapBytes(data).data(), data.size(), back), data.size());
    EXPECT_EQ(show(back), show(head));
}

TEST(NodeHead2Byte, writesTwoChineseCharactersAsSixBytes)
{
    NodeHead head;
    head.text2 = "节点";
    QByteArray data;
    CByte2Fep::nodeHead2Byte(head, data);
    EXPECT_EQ(hex(data.left(16)), "00 00 00 00 00 00 06 00 e8 8a 82 e7 82 b9 00 00");
    EXPECT_EQ(data.size(), 46);
}

TEST(NodeHead2Byte, writesTheLow16BitsOfTheLengthAndTheWholeText)
{
    NodeHead head;
    head.text1 = QString(65535, 'x');
    QByteArray data;
    CByte2Fep::nodeHead2Byte(head, data);
    EXPECT_EQ(hex(data.left(7)), "00 00 00 00 ff ff 78");
    EXPECT_EQ(data.size(), 40 + 65535);
    NodeHead back;
    EXPECT_EQ(CByte2Fep::byte2NodeHead(heapBytes(data).data(), data.size(), back), 40 + 65535);
    EXPECT_TRUE(back.text1 == head.text1);

    head.text1 = QString(65536, 'x');
    data.clear();
    CByte2Fep::nodeHead2Byte(head, data);
    EXPECT_EQ(hex(data.left(7)), "00 00 00 00 00 00 78");
    EXPECT_EQ(data.size(), 40 + 65536);
}

// The bytes of a default record with another text1.
static QByteArray nodeWithText1(const QByteArray& field)
{
    const QByteArray& plain = NodeHeadCodec::plain.bytes;
    return plain.left(4) + field + plain.mid(6);
}

TEST(Byte2NodeHead, readsATextThatBeginsWithAZeroByteAsEmpty)
{
    const QByteArray bytes = nodeWithText1("0400 00616263"_hex);
    NodeHead head = NodeHeadCodec::occupied();
    EXPECT_EQ(CByte2Fep::byte2NodeHead(heapBytes(bytes).data(), bytes.size(), head), 44);
    EXPECT_EQ(show(head), NodeHeadCodec::unset);
}

TEST(Byte2NodeHead, replacesMalformedUtf8)
{
    const QByteArray bytes = nodeWithText1("0300 61ff62"_hex);
    NodeHead head;
    EXPECT_EQ(CByte2Fep::byte2NodeHead(heapBytes(bytes).data(), bytes.size(), head), 43);
    EXPECT_EQ(head.text1, QString("a") + QChar(0xfffd) + "b");
}

TEST(Byte2NodeHead, refusesALengthBeyondTheBuffer)
{
    for (const char* length : {"2300", "0080", "ffff"}) { // 36 bytes follow the length
        SCOPED_TRACE(length);
        const QByteArray bytes = nodeWithText1(QByteArray::fromHex(length));
        NodeHead head = NodeHeadCodec::occupied();
        EXPECT_EQ(CByte2Fep::byte2NodeHead(heapBytes(bytes).data(), bytes.size(), head), 0);
        NodeHead expected = NodeHeadCodec::occupied();
        expected.nodeId = 0;
        EXPECT_EQ(show(head), show(expected));
    }
}

// --- Communication entries ------------------------------------------------------

// An entry with only these texts, followed by `extra` bytes of ff.
static QByteArray commBytes(const QByteArray& text3, const QByteArray& text4, int extra)
{
    return "07000000 0000 0000"_hex                           // commId, text1, text2
           + QByteArray(1, char(text3.size())) + '\0' + text3 //
           + "d1e2"_hex                                       // flag1, flag2
           + QByteArray(1, char(text4.size())) + '\0' + text4 //
           + "11121385 0000"_hex                              // word1, text5
           + QByteArray(extra, char(0xff));
}

TEST(Byte2CommItem, needs25BytesForThe20OfARecordWithEmptyTexts)
{
    const QByteArray bytes = commBytes("", "", 5);
    for (int size : {20, 24}) {
        CommItem item = CommItemCodec::occupied();
        EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(bytes.left(size)).data(), size, item), 0);
        EXPECT_EQ(show(item), show(CommItemCodec::occupied()));
    }
    CommItem item;
    EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(bytes).data(), 25, item), 18);
    CommItem expected;
    expected.commId = 7;
    expected.flag1 = char(0xd1);
    expected.flag2 = char(0xe2);
    expected.word1 = int(0x85131211);
    EXPECT_EQ(show(item), show(expected));
}

TEST(Byte2CommItem, returnsTheRecordSizeIfText4Has2Bytes)
{
    const QByteArray bytes = commBytes("", "d4", 3);
    CommItem item;
    EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(bytes).data(), 25, item), 22);
}

TEST(Byte2CommItem, needsAsManyBytesAfterTheRecordAsText3Has)
{
    CommItem item;
    EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(commBytes("c3c3c", "d4", 0)).data(), 27, item), 0);
    EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(commBytes("c3c3c", "d4", 4)).data(), 31, item), 0);
    EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(commBytes("c3c3c", "d4", 5)).data(), 32, item), 27);
}

TEST(Byte2CommItem, returns8MoreThanTheSizeIfText4Has10Bytes)
{
    const QByteArray bytes = commBytes("", "0123456789", 0);
    CommItem item;
    EXPECT_EQ(CByte2Fep::byte2CommItem(heapBytes(bytes).data(), 30, item), 38);
    EXPECT_EQ(item.text4, QString("0123456789"));
}

TEST(Byte2CommItem, miscountsText3AndText4OfAnyLength)
{
    // By the lengths of text3 (down) and text4 (across): the bytes that the reader needs, and its result.
    static const int needs[7][7] = {
        {25, 25, 25, 25, 25, 25, 26}, //
        {25, 25, 25, 25, 26, 27, 28}, //
        {25, 25, 26, 27, 28, 29, 30}, //
        {26, 27, 28, 29, 30, 31, 32}, //
        {28, 29, 30, 31, 32, 33, 34}, //
        {30, 31, 32, 33, 34, 35, 36}, //
        {32, 33, 34, 35, 36, 37, 38},
    };
    static const int results[7][7] = {
        {18, 20, 22, 24, 26, 28, 30}, //
        {19, 21, 23, 25, 27, 29, 31}, //
        {20, 22, 24, 26, 28, 30, 32}, //
        {21, 23, 25, 27, 29, 31, 33}, //
        {22, 24, 26, 28, 30, 32, 34}, //
        {23, 25, 27, 29, 31, 33, 35}, //
        {24, 26, 28, 30, 32, 34, 36},
    };
    // text4 is read from 6 bytes less on, as word1 and text5 are not needed yet; the fields before it are always read.
    for (int length3 = 0; length3 < 7; ++length3) {
        for (int length4 = 0; length4 < 7; ++length4) {
            for (int extra = 0; extra <= 10; ++extra) {
                SCOPED_TRACE(testing::Message() << length3 << ", " << length4 << ", " << extra);
                const QByteArray text3(length3, 'c');
                const QByteArray text4(length4, 'd');
                const QByteArray bytes = commBytes(text3, text4, extra);
                ASSERT_EQ(bytes.size(), 20 + length3 + length4 + extra);

                CommItem item;
                const int result = CByte2Fep::byte2CommItem(heapBytes(bytes).data(), bytes.size(), item);
                const int need = needs[length3][length4];
                CommItem expected;
                if (bytes.size() >= 25) {
                    expected.commId = 7;
                    expected.text3 = text3;
                    expected.flag1 = char(0xd1);
                    expected.flag2 = char(0xe2);
                }
                if (bytes.size() >= 25 && bytes.size() >= need - 6)
                    expected.text4 = text4;
                if (bytes.size() >= need)
                    expected.word1 = int(0x85131211);
                EXPECT_EQ(result, bytes.size() >= need ? results[length3][length4] : 0);
                EXPECT_EQ(show(item), show(expected));
            }
        }
    }
}

// --- Lists of communication entries ---------------------------------------------

static const QByteArray commRegular = "07000000"     //  0 commId
                                      "0100 61"      //  4 text1
                                      "0100 62"      //  7 text2
                                      "0000"         // 10 text3
                                      "d1 e2"        // 12 flag1, flag2
                                      "0200 6434"    // 14 text4
                                      "11121385"     // 18 word1
                                      "0100 65"_hex; // 22 text5

static CommItem regularCommItem()
{
    CommItem item;
    item.commId = 7;
    item.text1 = "a";
    item.text2 = "b";
    item.flag1 = char(0xd1);
    item.flag2 = char(0xe2);
    item.text4 = "d4";
    item.word1 = int(0x85131211);
    item.text5 = "e";
    return item;
}

static int readComms(const QByteArray& bytes, std::vector<CommItem>& list)
{
    return CByte2Fep::byte2CommItems(heapBytes(bytes).data(), bytes.size(), list);
}

TEST(Byte2CommItems, readsAListIfEachText4Has2Bytes)
{
    std::vector<CommItem> list;
    EXPECT_EQ(readComms("03000000"_hex + commRegular + commRegular + commRegular, list), 1);
    const CommItem item = regularCommItem();
    EXPECT_EQ(showAll(list), showAll(std::vector<CommItem>{item, item, item}));
}

TEST(Byte2CommItems, readsTheNextRecord8BytesLateAfterAText4Of10Bytes)
{
    const QByteArray first = commBytes("", "0123456789", 0);
    CommItem item;
    item.commId = 7;
    item.flag1 = char(0xd1);
    item.flag2 = char(0xe2);
    item.text4 = "0123456789";
    item.word1 = int(0x85131211);

    std::vector<CommItem> list;
    EXPECT_EQ(readComms("02000000"_hex + first + QByteArray(8, '\0') + commRegular, list), 1);
    EXPECT_EQ(showAll(list), showAll(std::vector<CommItem>{item, regularCommItem()}));

    list.clear(); // the second is read from its text2 on and is too short
    EXPECT_EQ(readComms("02000000"_hex + first + commRegular, list), 0);
    EXPECT_EQ(showAll(list), showAll(std::vector<CommItem>{item, CommItem()}));
}

TEST(Byte2CommItems, readsTheNextRecord2BytesEarlyAfterAnEmptyText4)
{
    const QByteArray first = commBytes("", "", 0); // ends with the length of text5, 00 00
    std::vector<CommItem> list;
    EXPECT_EQ(readComms("02000000"_hex + first + "1234"_hex + commRegular.mid(4), list), 1);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].text5, QString());
    CommItem second = regularCommItem();
    second.commId = 0x34120000;
    EXPECT_EQ(show(list[1]), show(second));
}

TEST(Byte2CommItems, stopsWhenAResultPointsPastTheBuffer)
{
    const QByteArray bytes = commBytes("", "0123456789", 0); // 30 bytes, the result is 38
    std::vector<CommItem> list;
    EXPECT_EQ(readComms("01000000"_hex + bytes, list), 1);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].text4, QString("0123456789"));

    EXPECT_EQ(readComms("02000000"_hex + bytes, list), 0);
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[1].text4, QString("0123456789"));
    EXPECT_EQ(show(list[2]), CommItemCodec::unset);
}

TEST(Byte2CommItems, stopsWhenTheLongestText4PointsFarPastTheBuffer)
{
    QByteArray bytes = "02000000 07000000 0000 0000 0000 d1e2 ffff"_hex + QByteArray(65535, 'd') + "111213850000"_hex;
    std::vector<CommItem> list;
    EXPECT_EQ(readComms(bytes, list), 0);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].text4.size(), 65535);
    EXPECT_EQ(list[0].word1, int(0x85131211));
    EXPECT_EQ(show(list[1]), CommItemCodec::unset);
}
