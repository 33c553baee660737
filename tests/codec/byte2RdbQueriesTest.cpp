#include "byte2Rdb.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cstddef>

using gqdb::CByte2Rdb;
using gqdb::HisQuery;
using gqdb::OneSecQuery;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(HisQuery, pointId), offsetof(HisQuery, text1), offsetof(HisQuery, word1),
                         offsetof(HisQuery, word2), offsetof(HisQuery, word3), offsetof(HisQuery, word4),
                         offsetof(HisQuery, word5), offsetof(HisQuery, word6)}));
static_assert(allAre<unsigned int HisQuery::*>(&HisQuery::pointId, &HisQuery::word1, &HisQuery::word2, &HisQuery::word3,
                                               &HisQuery::word4, &HisQuery::word5, &HisQuery::word6));
static_assert(allAre<std::string HisQuery::*>(&HisQuery::text1));

static_assert(ascending({offsetof(OneSecQuery, pointId), offsetof(OneSecQuery, text1), offsetof(OneSecQuery, word1),
                         offsetof(OneSecQuery, word2), offsetof(OneSecQuery, word3), offsetof(OneSecQuery, word4)}));
static_assert(allAre<unsigned int OneSecQuery::*>(&OneSecQuery::pointId, &OneSecQuery::word1, &OneSecQuery::word2,
                                                  &OneSecQuery::word3, &OneSecQuery::word4));
static_assert(allAre<std::string OneSecQuery::*>(&OneSecQuery::text1));

namespace gqdb {

static std::string show(const HisQuery& query)
{
    return FieldText()
        .add("pointId", query.pointId)
        .add("text1", query.text1)
        .add("word1", query.word1)
        .add("word2", query.word2)
        .add("word3", query.word3)
        .add("word4", query.word4)
        .add("word5", query.word5)
        .add("word6", query.word6)
        .text();
}

static std::string show(const OneSecQuery& query)
{
    return FieldText()
        .add("pointId", query.pointId)
        .add("text1", query.text1)
        .add("word1", query.word1)
        .add("word2", query.word2)
        .add("word3", query.word3)
        .add("word4", query.word4)
        .text();
}

} // namespace gqdb

// --- Defaults -------------------------------------------------------------------

TEST(HisQuery, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<HisQuery>(), "pointId: 00 00 00 00\n"
                                     "text1: \n"
                                     "word1: 00 00 00 00\n"
                                     "word2: 00 00 00 00\n"
                                     "word3: 00 00 00 00\n"
                                     "word4: 00 00 00 00\n"
                                     "word5: 00 00 00 00\n"
                                     "word6: 00 00 00 00\n");
}

TEST(OneSecQuery, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<OneSecQuery>(), "pointId: 00 00 00 00\n"
                                        "text1: \n"
                                        "word1: 00 00 00 00\n"
                                        "word2: 00 00 00 00\n"
                                        "word3: 00 00 00 00\n"
                                        "word4: 00 00 00 00\n");
}

// --- History queries ------------------------------------------------------------

static const QByteArray hisQueryBytes = "01020304"      //  0 pointId
                                        "11121314"      //  4 word1
                                        "21222324"      //  8 word2
                                        "31323334"      // 12 word3
                                        "41424344"      // 16 word4
                                        "51525354"      // 20 word5
                                        "818283f4"_hex; // 24 word6

static HisQuery fullHisQuery()
{
    HisQuery query;
    query.pointId = 0x04030201;
    query.word1 = 0x14131211;
    query.word2 = 0x24232221;
    query.word3 = 0x34333231;
    query.word4 = 0x44434241;
    query.word5 = 0x54535251;
    query.word6 = 0xf4838281;
    return query;
}

TEST(HisQuery2Byte, writesNothing)
{
    HisQuery query = fullHisQuery();
    query.text1 = "abc";
    QByteArray data = "aa55"_hex;
    CByte2Rdb::hisQuery2Byte(query, data);
    EXPECT_EQ(hex(data), "aa 55");
    CByte2Rdb::hisQuery2Byte(HisQuery(), data);
    EXPECT_EQ(hex(data), "aa 55");

    QByteArray empty;
    CByte2Rdb::hisQuery2Byte(query, empty);
    EXPECT_EQ(hex(empty), "");
}

TEST(Byte2HisQuery, readsTheFieldsAndReturns1)
{
    HisQuery query;
    EXPECT_EQ(CByte2Rdb::byte2HisQuery(heapBytes(hisQueryBytes).data(), 28, query), 1);
    EXPECT_EQ(show(query), show(fullHisQuery()));
}

TEST(Byte2HisQuery, ignoresBytesAfterTheRecord)
{
    const QByteArray bytes = hisQueryBytes + "ffffff"_hex;
    HisQuery query;
    EXPECT_EQ(CByte2Rdb::byte2HisQuery(heapBytes(bytes).data(), bytes.size(), query), 1);
    EXPECT_EQ(show(query), show(fullHisQuery()));
}

TEST(Byte2HisQuery, leavesTheTextUnchanged)
{
    HisQuery query;
    query.text1 = "abc";
    EXPECT_EQ(CByte2Rdb::byte2HisQuery(heapBytes(hisQueryBytes).data(), 28, query), 1);
    EXPECT_EQ(query.text1, "abc");
}

TEST(Byte2HisQuery, refusesEveryShorterBufferAndLeavesTheRecord)
{
    for (int size = 0; size < 28; ++size) {
        SCOPED_TRACE(size);
        HisQuery query;
        EXPECT_EQ(CByte2Rdb::byte2HisQuery(heapBytes(hisQueryBytes.left(size)).data(), size, query), -2);
        EXPECT_EQ(show(query), show(HisQuery()));
    }
    HisQuery query;
    EXPECT_EQ(CByte2Rdb::byte2HisQuery(hisQueryBytes.constData(), -1, query), -2);
    EXPECT_EQ(show(query), show(HisQuery()));
}

// --- One-second queries ---------------------------------------------------------

static const QByteArray oneSecQueryBytes = "01020304"            //  0 pointId
                                           "11121314"            //  4 word1
                                           "21222324"            //  8 word2
                                           "31323334"            // 12 word3
                                           "818283f4"            // 16 word4
                                           "05006162006364"_hex; // 20 text1 "ab\0cd", 27 bytes in all

static OneSecQuery numbersOfOneSecQuery()
{
    OneSecQuery query;
    query.pointId = 0x04030201;
    query.word1 = 0x14131211;
    query.word2 = 0x24232221;
    query.word3 = 0x34333231;
    query.word4 = 0xf4838281;
    return query;
}

static OneSecQuery fullOneSecQuery()
{
    OneSecQuery query = numbersOfOneSecQuery();
    query.text1 = std::string("ab\0cd", 5);
    return query;
}

TEST(OneSecQuery2Byte, appendsTheFieldsWithTheTextLast)
{
    QByteArray data = "aa55"_hex;
    CByte2Rdb::oneSecQuery2Byte(fullOneSecQuery(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + oneSecQueryBytes));
}

TEST(OneSecQuery2Byte, writes22BytesWithoutText)
{
    QByteArray data;
    CByte2Rdb::oneSecQuery2Byte(OneSecQuery(), data);
    EXPECT_EQ(hex(data), hex(QByteArray(22, '\0')));
}

TEST(OneSecQuery2Byte, truncatesTheLengthTo16BitsAndWritesTheWholeText)
{
    OneSecQuery query;
    query.text1 = std::string(65537, 'a');
    QByteArray data;
    CByte2Rdb::oneSecQuery2Byte(query, data);
    EXPECT_TRUE(data == QByteArray(20, '\0') + "0100"_hex + QByteArray(65537, 'a'));
}

TEST(Byte2OneSecQuery, readsTheFieldsIfAByteFollows)
{
    const QByteArray bytes = oneSecQueryBytes + "ff"_hex;
    OneSecQuery query;
    EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(bytes).data(), 28, query), 27);
    EXPECT_EQ(show(query), show(fullOneSecQuery()));
}

TEST(Byte2OneSecQuery, ignoresBytesAfterTheRecord)
{
    const QByteArray bytes = oneSecQueryBytes + "ffffff"_hex;
    OneSecQuery query;
    EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(bytes).data(), 30, query), 27);
    EXPECT_EQ(show(query), show(fullOneSecQuery()));
}

TEST(Byte2OneSecQuery, refusesFewerThan22BytesAndLeavesTheRecord)
{
    for (int size = 0; size < 22; ++size) {
        SCOPED_TRACE(size);
        OneSecQuery query;
        EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(oneSecQueryBytes.left(size)).data(), size, query), -2);
        EXPECT_EQ(show(query), show(OneSecQuery()));
    }
    OneSecQuery query;
    EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(oneSecQueryBytes.constData(), -1, query), -2);
    EXPECT_EQ(show(query), show(OneSecQuery()));
}

TEST(Byte2OneSecQuery, refusesEveryBufferThatEndsWithTheRecordOrEarlier)
{
    for (int size = 22; size <= 27; ++size) {
        SCOPED_TRACE(size);
        OneSecQuery query;
        EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(oneSecQueryBytes.left(size)).data(), size, query), 0);
        EXPECT_EQ(show(query), show(numbersOfOneSecQuery()));
    }
}

TEST(Byte2OneSecQuery, refusesAWrittenRecordWithoutAByteAfterIt)
{
    QByteArray data;
    CByte2Rdb::oneSecQuery2Byte(OneSecQuery(), data);
    OneSecQuery query;
    EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(data).data(), 22, query), 0);
    EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(data + "00"_hex).data(), 23, query), 22);
    EXPECT_EQ(show(query), show(OneSecQuery()));
}

TEST(Byte2OneSecQuery, appendsToTheTextOfAUsedRecord)
{
    OneSecQuery query;
    query.text1 = "xy";
    EXPECT_EQ(CByte2Rdb::byte2OneSecQuery(heapBytes(oneSecQueryBytes + "ff"_hex).data(), 28, query), 27);
    EXPECT_EQ(query.text1, std::string("xyab\0cd", 7));
}
