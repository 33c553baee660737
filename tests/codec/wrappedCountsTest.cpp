// Counts whose size in bytes wraps in 32 bits and so passes the length check: the vector is resized to the count, and
// then no element is read. The buffers contain a count and little more and are on the heap, so that AddressSanitizer
// detects a read past the end.

#include "byte2Rdb.h"

#include "support/allocationLimit.h"
#include "support/hex.h"

#include <gtest/gtest.h>

using gqdb::BlobDataInfo;
using gqdb::BoolData;
using gqdb::BoolRealData;
using gqdb::CByte2Rdb;
using gqdb::CByte2Val;
using gqdb::FloatData;
using gqdb::FloatRealData;
using gqdb::IntData;
using gqdb::IntRealData;
using gqdb::PointRealData;

TEST(WrappedCount, growsAListOfIntsAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes = heapBytes("00000040 01020304"_hex); // 4 + 4 * 0x40000000 wraps to 4
    std::vector<int> out = {7};
    EXPECT_EQ(CByte2Val::byte2List(bytes.data(), 8, out), 0);
    ASSERT_EQ(out.size(), 0x40000001u);
    EXPECT_EQ(out[1], 0);
}

TEST(WrappedCount, growsAListOfFloatsAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes = heapBytes("00000040 01020304"_hex);
    std::vector<float> out;
    EXPECT_EQ(CByte2Val::byte2List(bytes.data(), 8, out), 0);
    ASSERT_EQ(out.size(), 0x40000000u);
    EXPECT_EQ(out[0], 0);
}

TEST(WrappedCount, growsAListOfDoublesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes = heapBytes("ffffff1f 01020304"_hex); // 4 + 4 * 0x1fffffff is negative
    std::vector<double> out;
    EXPECT_EQ(CByte2Val::byte2List(bytes.data(), 8, out), 0);
    ASSERT_EQ(out.size(), 0x1fffffffu);
    EXPECT_EQ(out[0], 0);
}

TEST(WrappedCount, growsAListOfBytesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes = heapBytes("fcffffff 01020304"_hex); // 4 + 0xfffffffc wraps to 0
    std::vector<unsigned char> out;
    EXPECT_EQ(CByte2Val::byte2List(bytes.data(), 8, out), 0);
    ASSERT_EQ(out.size(), 0xfffffffcu);
    EXPECT_EQ(out[0], 0);
}

TEST(WrappedCount, growsAListOfFloatValuesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes =
        heapBytes("8fe3380e"_hex + QByteArray(18, '\x55')); // 238609295 * 18 + 4 wraps to 18
    std::vector<FloatRealData> list;
    EXPECT_EQ(CByte2Rdb::byte2FloatRealDatas(bytes.data(), 22, list), -5);
    ASSERT_EQ(list.size(), 238609295u);
    EXPECT_EQ(list[0].pointId, 0u);
}

TEST(WrappedCount, growsAListOfBoolValuesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes =
        heapBytes("93244912"_hex + QByteArray(14, '\x55')); // 306783379 * 14 + 4 wraps to 14
    std::vector<BoolRealData> list;
    EXPECT_EQ(CByte2Rdb::byte2BoolRealDatas(bytes.data(), 18, list), -5);
    ASSERT_EQ(list.size(), 306783379u);
    EXPECT_EQ(list[0].pointId, 0u);
}

TEST(WrappedCount, growsAListOfBoolStatesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes = heapBytes("9a999919"_hex + QByteArray(14, '\x55')); // 429496730 * 10 + 4 wraps to 8
    std::vector<BoolData> list;
    EXPECT_EQ(CByte2Rdb::byte2BoolDatas(bytes.data(), 18, list), -5);
    ASSERT_EQ(list.size(), 429496730u);
    EXPECT_EQ(list[0].stamp1, 0u);
}

TEST(WrappedCount, growsAListOfFloatStatesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes =
        heapBytes("93244912"_hex + QByteArray(14, '\x55')); // 306783379 * 14 + 4 wraps to 14
    std::vector<FloatData> list;
    EXPECT_EQ(CByte2Rdb::byte2FloatDatas(bytes.data(), 18, list), -5);
    ASSERT_EQ(list.size(), 306783379u);
    EXPECT_EQ(list[0].stamp1, 0u);
}

TEST(WrappedCount, growsAListOfIntValuesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes =
        heapBytes("8fe3380e"_hex + QByteArray(18, '\x55')); // 238609295 * 18 + 4 wraps to 18
    std::vector<IntRealData> list;
    EXPECT_EQ(CByte2Rdb::byte2IntRealDatas(bytes.data(), 22, list), -5);
    ASSERT_EQ(list.size(), 238609295u);
    EXPECT_EQ(list[0].pointId, 0u);
}

TEST(WrappedCount, growsAListOfIntStatesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes =
        heapBytes("93244912"_hex + QByteArray(14, '\x55')); // 306783379 * 14 + 4 wraps to 14
    std::vector<IntData> list;
    EXPECT_EQ(CByte2Rdb::byte2IntDatas(bytes.data(), 18, list), -5);
    ASSERT_EQ(list.size(), 306783379u);
    EXPECT_EQ(list[0].stamp1, 0u);
}

TEST(WrappedCount, growsAListOfPointValuesAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes = heapBytes("5f427b09"_hex + QByteArray(27, '\x55')); // 159072863 * 27 + 4 wraps to 9
    std::vector<PointRealData> list;
    EXPECT_EQ(CByte2Rdb::byte2PointRealDatas(bytes.data(), 31, list), -5);
    ASSERT_EQ(list.size(), 159072863u);
    EXPECT_EQ(list[0].pointId, 0u);
}

TEST(WrappedCount, growsAListOfBlobHeadsAndReadsNone)
{
    const RepeatedMemory memory;
    const std::vector<char> bytes =
        heapBytes("8fe3380e"_hex + QByteArray(18, '\x55')); // 238609295 * 18 + 4 wraps to 18
    std::vector<BlobDataInfo> list;
    EXPECT_EQ(CByte2Rdb::byte2BlobDataInfos(bytes.data(), 22, list), -5);
    ASSERT_EQ(list.size(), 238609295u);
    EXPECT_EQ(list[0].pointId, 0u);
}
