// Texts of 2 GiB and more, whose size is a signed 32-bit number: if it becomes negative, no byte of the text is written
// and no space is reserved for it.

#include "byte2Rdb.h"

#include "support/allocationLimit.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <new>
#include <utility>

using gqdb::CByte2Rdb;
using gqdb::CByte2Val;
using gqdb::EventInfo;
using gqdb::OneSecQuery;
using gqdb::PointInfo;

TEST(WrappedText, isTruncatedToItsWrappedSize)
{
    const RepeatedMemory memory;
    PointInfo point;
    point.text1.resize(0x100000003, 'a'); // size wraps to 3
    QByteArray data;
    CByte2Rdb::pointInfo2Byte(point, data);
    EXPECT_EQ(hex(data), "00 00 00 00 03 00 61 61 61 00 00 00 00 00 00 00 00 00 00");
    data.clear();
    EXPECT_EQ(CByte2Val::str2Byte(point.text1, data), 5);
    EXPECT_EQ(hex(data), "03 00 61 61 61");
}

TEST(WrappedText, leavesItsLengthIfNoArrayHoldsIt)
{
    const RepeatedMemory memory;
    std::string text;
    text.resize(0x7FFFFFF1, 'a');
    QByteArray data = "ab";
    EXPECT_THROW(CByte2Val::str2Byte(text, data), std::bad_alloc);
    EXPECT_EQ(hex(data), "61 62 f1 ff");
}

TEST(WrappedText, ofRecordsThatNoArrayHoldsFailTheirAllocation)
{
    const RepeatedMemory memory;
    PointInfo point; // of 2^32 + 14 bytes
    point.text1.resize(0x7FFFFFFF, 'a');
    point.text2.resize(0x7FFFFFFF, 'a');
    QByteArray data = "ab";
    EXPECT_THROW(CByte2Rdb::pointInfo2Byte(point, data), std::bad_alloc);
    EXPECT_EQ(hex(data), "61 62");
}

TEST(WrappedText, isOmittedAfterItsLength)
{
    const RepeatedMemory memory;
    std::string text;
    text.resize(0x80000005, 'a'); // size becomes negative
    QByteArray data;
    EXPECT_EQ(CByte2Val::str2Byte(text, data), 2);
    EXPECT_EQ(hex(data), "05 00");

    std::vector<PointInfo> points(1);
    points[0].text1.swap(text);
    data.clear();
    CByte2Rdb::pointInfo2Byte(points[0], data);
    EXPECT_EQ(hex(data), "00 00 00 00 05 00 00 00 00 00 00 00 00 00 00 00");
    data.clear();
    CByte2Rdb::pointInfos2Byte(points, data);
    EXPECT_EQ(hex(data), "01 00 00 00 00 00 00 00 05 00 00 00 00 00 00 00 00 00 00 00");

    OneSecQuery query;
    query.text1.swap(points[0].text1);
    data.clear();
    CByte2Rdb::oneSecQuery2Byte(query, data);
    EXPECT_EQ(hex(data), hex(QByteArray(20, '\0') + "0500"_hex));

    EventInfo event;
    event.text1.swap(query.text1);
    data.clear();
    CByte2Rdb::eventInfo2Byte(event, data);
    EXPECT_EQ(hex(data), hex(QByteArray(55, '\0') + "0500 0000"_hex));
}
