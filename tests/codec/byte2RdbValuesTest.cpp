#include "byte2Rdb.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>

using gqdb::BlobData;
using gqdb::BlobDataInfo;
using gqdb::BlobRealData;
using gqdb::BoolData;
using gqdb::BoolRealData;
using gqdb::CByte2Rdb;
using gqdb::FloatData;
using gqdb::FloatRealData;
using gqdb::IntData;
using gqdb::IntRealData;
using gqdb::PointRealData;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(FloatRealData, pointId), offsetof(FloatRealData, stamp1),
                         offsetof(FloatRealData, stamp2), offsetof(FloatRealData, value),
                         offsetof(FloatRealData, flag1), offsetof(FloatRealData, flag2)}));
static_assert(allAre<unsigned int FloatRealData::*>(&FloatRealData::pointId, &FloatRealData::stamp1,
                                                    &FloatRealData::stamp2));
static_assert(allAre<float FloatRealData::*>(&FloatRealData::value));
static_assert(allAre<char FloatRealData::*>(&FloatRealData::flag1, &FloatRealData::flag2));

static_assert(ascending({offsetof(FloatData, stamp1), offsetof(FloatData, stamp2), offsetof(FloatData, value),
                         offsetof(FloatData, flag1), offsetof(FloatData, flag2)}));
static_assert(allAre<unsigned int FloatData::*>(&FloatData::stamp1, &FloatData::stamp2));
static_assert(allAre<float FloatData::*>(&FloatData::value));
static_assert(allAre<char FloatData::*>(&FloatData::flag1, &FloatData::flag2));

static_assert(ascending({offsetof(BoolRealData, pointId), offsetof(BoolRealData, stamp1),
                         offsetof(BoolRealData, stamp2), offsetof(BoolRealData, value),
                         offsetof(BoolRealData, flag1)}));
static_assert(allAre<unsigned int BoolRealData::*>(&BoolRealData::pointId, &BoolRealData::stamp1,
                                                   &BoolRealData::stamp2));
static_assert(allAre<char BoolRealData::*>(&BoolRealData::value, &BoolRealData::flag1));

static_assert(ascending({offsetof(BoolData, stamp1), offsetof(BoolData, stamp2), offsetof(BoolData, value),
                         offsetof(BoolData, flag1)}));
static_assert(allAre<unsigned int BoolData::*>(&BoolData::stamp1, &BoolData::stamp2));
static_assert(allAre<char BoolData::*>(&BoolData::value, &BoolData::flag1));

static_assert(ascending({offsetof(IntRealData, pointId), offsetof(IntRealData, stamp1), offsetof(IntRealData, stamp2),
                         offsetof(IntRealData, value), offsetof(IntRealData, flag1), offsetof(IntRealData, flag2)}));
static_assert(allAre<unsigned int IntRealData::*>(&IntRealData::pointId, &IntRealData::stamp1, &IntRealData::stamp2));
static_assert(allAre<int IntRealData::*>(&IntRealData::value));
static_assert(allAre<char IntRealData::*>(&IntRealData::flag1, &IntRealData::flag2));

static_assert(ascending({offsetof(IntData, stamp1), offsetof(IntData, stamp2), offsetof(IntData, value),
                         offsetof(IntData, flag1), offsetof(IntData, flag2)}));
static_assert(allAre<unsigned int IntData::*>(&IntData::stamp1, &IntData::stamp2));
static_assert(allAre<int IntData::*>(&IntData::value));
static_assert(allAre<char IntData::*>(&IntData::flag1, &IntData::flag2));

static_assert(ascending({offsetof(PointRealData, pointKind), offsetof(PointRealData, pointId),
                         offsetof(PointRealData, stamp1), offsetof(PointRealData, stamp2),
                         offsetof(PointRealData, value), offsetof(PointRealData, intValue),
                         offsetof(PointRealData, flag1), offsetof(PointRealData, flag2)}));
static_assert(allAre<unsigned int PointRealData::*>(&PointRealData::pointId, &PointRealData::stamp1,
                                                    &PointRealData::stamp2, &PointRealData::intValue));
static_assert(allAre<double PointRealData::*>(&PointRealData::value));
static_assert(allAre<char PointRealData::*>(&PointRealData::pointKind, &PointRealData::flag1, &PointRealData::flag2));

static_assert(ascending({offsetof(BlobRealData, pointId), offsetof(BlobRealData, stamp1),
                         offsetof(BlobRealData, stamp2), offsetof(BlobRealData, bytes), offsetof(BlobRealData, flag1),
                         offsetof(BlobRealData, flag2)}));
static_assert(allAre<unsigned int BlobRealData::*>(&BlobRealData::pointId, &BlobRealData::stamp1,
                                                   &BlobRealData::stamp2));
static_assert(allAre<std::vector<unsigned char> BlobRealData::*>(&BlobRealData::bytes));
static_assert(allAre<char BlobRealData::*>(&BlobRealData::flag1, &BlobRealData::flag2));

static_assert(ascending({offsetof(BlobDataInfo, pointId), offsetof(BlobDataInfo, stamp1),
                         offsetof(BlobDataInfo, stamp2), offsetof(BlobDataInfo, word4), offsetof(BlobDataInfo, flag1),
                         offsetof(BlobDataInfo, flag2)}));
static_assert(allAre<unsigned int BlobDataInfo::*>(&BlobDataInfo::pointId, &BlobDataInfo::stamp1, &BlobDataInfo::stamp2,
                                                   &BlobDataInfo::word4));
static_assert(allAre<char BlobDataInfo::*>(&BlobDataInfo::flag1, &BlobDataInfo::flag2));

static_assert(ascending({offsetof(BlobData, stamp1), offsetof(BlobData, stamp2), offsetof(BlobData, bytes),
                         offsetof(BlobData, flag1), offsetof(BlobData, flag2)}));
static_assert(allAre<unsigned int BlobData::*>(&BlobData::stamp1, &BlobData::stamp2));
static_assert(allAre<std::vector<unsigned char> BlobData::*>(&BlobData::bytes));
static_assert(allAre<char BlobData::*>(&BlobData::flag1, &BlobData::flag2));

namespace gqdb {

// FloatRealData and IntRealData.
template <typename NumberRealData>
static std::string show(const NumberRealData& record)
{
    return FieldText()
        .add("pointId", record.pointId)
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("value", record.value)
        .add("flag1", record.flag1)
        .add("flag2", record.flag2)
        .text();
}

static std::string show(const FloatData& record)
{
    return FieldText()
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("value", record.value)
        .add("flag1", record.flag1)
        .add("flag2", record.flag2)
        .text();
}

static std::string show(const BoolRealData& record)
{
    return FieldText()
        .add("pointId", record.pointId)
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("value", record.value)
        .add("flag1", record.flag1)
        .text();
}

static std::string show(const BoolData& record)
{
    return FieldText()
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("value", record.value)
        .add("flag1", record.flag1)
        .text();
}

static std::string show(const IntData& record)
{
    return FieldText()
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("value", record.value)
        .add("flag1", record.flag1)
        .add("flag2", record.flag2)
        .text();
}

static std::string show(const PointRealData& record)
{
    return FieldText()
        .add("pointKind", record.pointKind)
        .add("pointId", record.pointId)
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("value", record.value)
        .add("intValue", record.intValue)
        .add("flag1", record.flag1)
        .add("flag2", record.flag2)
        .text();
}

static std::string show(const BlobRealData& record)
{
    return FieldText()
        .add("pointId", record.pointId)
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("bytes", record.bytes)
        .add("flag1", record.flag1)
        .add("flag2", record.flag2)
        .text();
}

static std::string show(const BlobDataInfo& record)
{
    return FieldText()
        .add("pointId", record.pointId)
        .add("stamp1", record.stamp1)
        .add("stamp2", record.stamp2)
        .add("word4", record.word4)
        .add("flag1", record.flag1)
        .add("flag2", record.flag2)
        .text();
}

static std::string show(const BlobData& sample)
{
    return FieldText()
        .add("stamp1", sample.stamp1)
        .add("stamp2", sample.stamp2)
        .add("bytes", sample.bytes)
        .add("flag1", sample.flag1)
        .add("flag2", sample.flag2)
        .text();
}

} // namespace gqdb

// --- The records on the wire ----------------------------------------------------

namespace {

// Common part of the codecs below. Each one adds the operations of its record and
//
//   itemSize       bytes of a record; of a blob, those before its content
//   listMinimum    the list reader refuses any shorter buffer
//   signedCount    true if the list reader treats a count with its top bit set as negative
//   bytes, full()  a record with all fields set, on the wire and in memory
//   largestCount   the largest count for which count * itemSize + 4 is positive in 32 bits, and the next one
//   wrappedCount   a count for which count * itemSize + 4 wraps to less than 22
template <typename R>
struct ValueCodec {
    using Record = R;
    using Writer = void (*)(const R&, QByteArray&);
    using Reader = int (*)(const char*, int, R&);
    using ListWriter = void (*)(const std::vector<R>&, QByteArray&);
    using ListReader = int (*)(const char*, int, std::vector<R>&);
    static constexpr bool signedCount = false;
};

struct CountsOf10Bytes {
    static constexpr const char* largestCount = "cccccc0c"; // 214748364
    static constexpr const char* nextCount = "cdcccc0c";
    static constexpr const char* wrappedCount = "9a999919"; // 429496730: 4 + 4
};

struct CountsOf14Bytes {
    static constexpr const char* largestCount = "48922409"; // 153391688
    static constexpr const char* nextCount = "49922409";
    static constexpr const char* wrappedCount = "93244912"; // 306783379: 10 + 4
};

struct CountsOf18Bytes {
    static constexpr const char* largestCount = "c6711c07"; // 119304646
    static constexpr const char* nextCount = "c7711c07";
    static constexpr const char* wrappedCount = "8fe3380e"; // 238609295: 14 + 4
};

struct CountsOf27Bytes {
    static constexpr const char* largestCount = "2fa1bd04"; // 79536431
    static constexpr const char* nextCount = "30a1bd04";
    static constexpr const char* wrappedCount = "5f427b09"; // 159072863: 5 + 4
};

struct FloatRealDataCodec : ValueCodec<FloatRealData>, CountsOf18Bytes {
    static constexpr const char* name = "FloatRealData";
    static constexpr Writer writeOne = CByte2Rdb::floatRealData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2FloatRealData;
    static constexpr ListWriter writeList = CByte2Rdb::floatRealDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2FloatRealDatas;
    static constexpr int itemSize = 18;
    static constexpr int listMinimum = 22;

    inline static const QByteArray bytes = "01020384" //  0 pointId
                                           "111213c4" //  4 value
                                           "21222385" //  8 stamp1
                                           "31323386" // 12 stamp2
                                           "42"       // 16 flag2
                                           "d1"_hex;  // 17 flag1

    static FloatRealData full()
    {
        FloatRealData record;
        record.pointId = 0x84030201;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = floatOf(0xc4131211);
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }
};

struct FloatDataCodec : ValueCodec<FloatData>, CountsOf14Bytes {
    static constexpr const char* name = "FloatData";
    static constexpr Writer writeOne = CByte2Rdb::floatData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2FloatData;
    static constexpr ListWriter writeList = CByte2Rdb::floatDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2FloatDatas;
    static constexpr int itemSize = 14;
    static constexpr int listMinimum = 18;

    inline static const QByteArray bytes = "111213c4" //  0 value
                                           "21222385" //  4 stamp1
                                           "31323386" //  8 stamp2
                                           "42"       // 12 flag2
                                           "d1"_hex;  // 13 flag1

    static FloatData full()
    {
        FloatData record;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = floatOf(0xc4131211);
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }
};

struct BoolRealDataCodec : ValueCodec<BoolRealData>, CountsOf14Bytes {
    static constexpr const char* name = "BoolRealData";
    static constexpr Writer writeOne = CByte2Rdb::boolRealData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2BoolRealData;
    static constexpr ListWriter writeList = CByte2Rdb::boolRealDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2BoolRealDatas;
    static constexpr int itemSize = 14;
    static constexpr int listMinimum = 18;
    static constexpr bool signedCount = true;

    inline static const QByteArray bytes = "01020384" //  0 pointId
                                           "c2"       //  4 value
                                           "21222385" //  5 stamp1
                                           "31323386" //  9 stamp2
                                           "d1"_hex;  // 13 flag1

    static BoolRealData full()
    {
        BoolRealData record;
        record.pointId = 0x84030201;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = char(0xc2);
        record.flag1 = char(0xd1);
        return record;
    }
};

struct BoolDataCodec : ValueCodec<BoolData>, CountsOf10Bytes {
    static constexpr const char* name = "BoolData";
    static constexpr Writer writeOne = CByte2Rdb::boolData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2BoolData;
    static constexpr ListWriter writeList = CByte2Rdb::boolDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2BoolDatas;
    static constexpr int itemSize = 10;
    static constexpr int listMinimum = 18; // more than the count and one item
    static constexpr bool signedCount = true;

    inline static const QByteArray bytes = "c2"       // 0 value
                                           "21222385" // 1 stamp1
                                           "31323386" // 5 stamp2
                                           "d1"_hex;  // 9 flag1

    static BoolData full()
    {
        BoolData record;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = char(0xc2);
        record.flag1 = char(0xd1);
        return record;
    }
};

struct IntRealDataCodec : ValueCodec<IntRealData>, CountsOf18Bytes {
    static constexpr const char* name = "IntRealData";
    static constexpr Writer writeOne = CByte2Rdb::intRealData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2IntRealData;
    static constexpr ListWriter writeList = CByte2Rdb::intRealDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2IntRealDatas;
    static constexpr int itemSize = 18;
    static constexpr int listMinimum = 22;

    inline static const QByteArray bytes = "01020384" //  0 pointId
                                           "efeeedfc" //  4 value -0x03121111
                                           "21222385" //  8 stamp1
                                           "31323386" // 12 stamp2
                                           "d1"       // 16 flag1
                                           "42"_hex;  // 17 flag2

    static IntRealData full()
    {
        IntRealData record;
        record.pointId = 0x84030201;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = -0x03121111;
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }
};

struct IntDataCodec : ValueCodec<IntData>, CountsOf14Bytes {
    static constexpr const char* name = "IntData";
    static constexpr Writer writeOne = CByte2Rdb::intData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2IntData;
    static constexpr ListWriter writeList = CByte2Rdb::intDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2IntDatas;
    static constexpr int itemSize = 14;
    static constexpr int listMinimum = 18;

    inline static const QByteArray bytes = "efeeedfc" //  0 value -0x03121111
                                           "21222385" //  4 stamp1
                                           "31323386" //  8 stamp2
                                           "d1"       // 12 flag1
                                           "42"_hex;  // 13 flag2

    static IntData full()
    {
        IntData record;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = -0x03121111;
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }
};

struct PointRealDataCodec : ValueCodec<PointRealData>, CountsOf27Bytes {
    static constexpr const char* name = "PointRealData";
    static constexpr Writer writeOne = CByte2Rdb::pointRealData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2PointRealData;
    static constexpr ListWriter writeList = CByte2Rdb::pointRealDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2PointRealDatas;
    static constexpr int itemSize = 27;
    static constexpr int listMinimum = 4;

    inline static const QByteArray bytes = "e7"               //  0 pointKind
                                           "01020384"         //  1 pointId
                                           "11121314151617c8" //  5 value
                                           "51525389"         // 13 intValue
                                           "21222385"         // 17 stamp1
                                           "31323386"         // 21 stamp2
                                           "d1"               // 25 flag1
                                           "42"_hex;          // 26 flag2

    static PointRealData full()
    {
        PointRealData record;
        record.pointKind = char(0xe7);
        record.pointId = 0x84030201;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.value = doubleOf(0xc817161514131211);
        record.intValue = 0x89535251;
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }
};

struct BlobDataInfoCodec : ValueCodec<BlobDataInfo>, CountsOf18Bytes {
    static constexpr const char* name = "BlobDataInfo";
    static constexpr Writer writeOne = CByte2Rdb::blobDataInfo2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2BlobDataInfo;
    static constexpr ListWriter writeList = CByte2Rdb::blobDataInfos2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2BlobDataInfos;
    static constexpr int itemSize = 18;
    static constexpr int listMinimum = 4;

    inline static const QByteArray bytes = "01020384" //  0 pointId
                                           "21222385" //  4 stamp1
                                           "31323386" //  8 stamp2
                                           "51525387" // 12 word4
                                           "d1"       // 16 flag1
                                           "42"_hex;  // 17 flag2

    static BlobDataInfo full()
    {
        BlobDataInfo record;
        record.pointId = 0x84030201;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.word4 = 0x87535251;
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }
};

struct BlobRealDataCodec : ValueCodec<BlobRealData>, CountsOf18Bytes {
    static constexpr const char* name = "BlobRealData";
    static constexpr Writer writeOne = CByte2Rdb::blobRealData2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2BlobRealData;
    static constexpr ListWriter writeList = CByte2Rdb::blobRealDatas2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2BlobRealDatas;
    static constexpr int itemSize = 18;
    static constexpr int listMinimum = 4;

    inline static const QByteArray bytes = "01020384"        //  0 pointId
                                           "21222385"        //  4 stamp1
                                           "31323386"        //  8 stamp2
                                           "d1"              // 12 flag1
                                           "42"              // 13 flag2
                                           "05000000"        // 14 length 5
                                           "00ff6f8071"_hex; // 18 content

    // A record after its content did not fit.
    static BlobRealData withoutContent()
    {
        BlobRealData record;
        record.pointId = 0x84030201;
        record.stamp1 = 0x85232221;
        record.stamp2 = 0x86333231;
        record.flag1 = char(0xd1);
        record.flag2 = char(0x42);
        return record;
    }

    static BlobRealData full()
    {
        BlobRealData record = withoutContent();
        record.bytes = {0x00, 0xff, 0x6f, 0x80, 0x71};
        return record;
    }
};

using FixedCodecs = testing::Types<FloatRealDataCodec, FloatDataCodec, BoolRealDataCodec, BoolDataCodec,
                                   IntRealDataCodec, IntDataCodec, PointRealDataCodec, BlobDataInfoCodec>;
using ValueCodecs =
    testing::Types<FloatRealDataCodec, FloatDataCodec, BoolRealDataCodec, BoolDataCodec, IntRealDataCodec, IntDataCodec,
                   PointRealDataCodec, BlobDataInfoCodec, BlobRealDataCodec>;

struct CodecNames {
    template <typename Codec>
    static std::string GetName(int)
    {
        return Codec::name;
    }
};

} // namespace

// --- One record -----------------------------------------------------------------

template <typename Codec>
class ValueRecord : public testing::Test {
};
TYPED_TEST_SUITE(ValueRecord, ValueCodecs, CodecNames);

TYPED_TEST(ValueRecord, startsAtZero)
{
    using Record = typename TypeParam::Record;
    PatternedMemory<Record> memory;
    const Record* record = new (memory.room()) Record;
    QByteArray data;
    TypeParam::writeOne(memory.record(), data);
    EXPECT_EQ(hex(data), hex(QByteArray(TypeParam::itemSize, '\0')));
    EXPECT_EQ(show(memory.record()), show(Record()));
    record->~Record();
}

template <typename Codec>
class Value2Byte : public testing::Test {
};
TYPED_TEST_SUITE(Value2Byte, ValueCodecs, CodecNames);

TYPED_TEST(Value2Byte, appendsTheFields)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeOne(TypeParam::full(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + TypeParam::bytes));
}

template <typename Codec>
class Byte2Value : public testing::Test {
};
TYPED_TEST_SUITE(Byte2Value, ValueCodecs, CodecNames);

TYPED_TEST(Byte2Value, readsTheFields)
{
    typename TypeParam::Record record;
    EXPECT_EQ(TypeParam::readOne(heapBytes(TypeParam::bytes).data(), TypeParam::bytes.size(), record),
              TypeParam::bytes.size());
    EXPECT_EQ(show(record), show(TypeParam::full()));
}

TYPED_TEST(Byte2Value, ignoresBytesAfterTheRecord)
{
    const QByteArray bytes = TypeParam::bytes + "ffffffffff"_hex;
    typename TypeParam::Record record;
    EXPECT_EQ(TypeParam::readOne(heapBytes(bytes).data(), bytes.size(), record), TypeParam::bytes.size());
    EXPECT_EQ(show(record), show(TypeParam::full()));
}

TYPED_TEST(Byte2Value, replacesTheValuesOfAUsedRecord)
{
    const QByteArray zeros(TypeParam::itemSize, '\0');
    auto record = TypeParam::full();
    EXPECT_EQ(TypeParam::readOne(heapBytes(zeros).data(), zeros.size(), record), TypeParam::itemSize);
    EXPECT_EQ(show(record), show(typename TypeParam::Record()));
}

TYPED_TEST(Byte2Value, refusesABufferBelowTheFixedFieldsAndLeavesTheRecord)
{
    const QByteArray zeros(TypeParam::itemSize, '\0');
    for (int size = 0; size < TypeParam::itemSize; ++size) {
        SCOPED_TRACE(size);
        auto record = TypeParam::full();
        EXPECT_EQ(TypeParam::readOne(heapBytes(zeros.left(size)).data(), size, record), -5);
        EXPECT_EQ(show(record), show(TypeParam::full()));
    }
}

TYPED_TEST(Byte2Value, refusesANegativeSize)
{
    for (int size : {-1, -0x7fffffff - 1}) {
        typename TypeParam::Record record;
        EXPECT_EQ(TypeParam::readOne(TypeParam::bytes.constData(), size, record), -5);
        EXPECT_EQ(show(record), show(typename TypeParam::Record()));
    }
}

// Writes and reads a value whose bits a comparison does not show.
template <typename Record>
static void expectImage(Record record, const QByteArray& bytes, void (*write)(const Record&, QByteArray&),
                        int (*read)(const char*, int, Record&))
{
    QByteArray data;
    write(record, data);
    EXPECT_EQ(hex(data), hex(bytes));
    Record back;
    EXPECT_EQ(read(heapBytes(bytes).data(), bytes.size(), back), bytes.size());
    EXPECT_EQ(show(back), show(record));
}

TEST(FloatRealData2Byte, keepsTheSignOfZeroAndEveryNan)
{
    FloatRealData record;
    record.value = -0.0f;
    expectImage(record, "00000000 00000080 0000000000000000 0000"_hex, CByte2Rdb::floatRealData2Byte,
                CByte2Rdb::byte2FloatRealData);
    record.value = floatOf(0x7fc12345);
    expectImage(record, "00000000 4523c17f 0000000000000000 0000"_hex, CByte2Rdb::floatRealData2Byte,
                CByte2Rdb::byte2FloatRealData);
    record.value = floatOf(0xff812345); // a signalling NaN
    expectImage(record, "00000000 452381ff 0000000000000000 0000"_hex, CByte2Rdb::floatRealData2Byte,
                CByte2Rdb::byte2FloatRealData);
}

TEST(FloatData2Byte, keepsTheSignOfZeroAndEveryNan)
{
    FloatData record;
    record.value = -0.0f;
    expectImage(record, "00000080 0000000000000000 0000"_hex, CByte2Rdb::floatData2Byte, CByte2Rdb::byte2FloatData);
    record.value = floatOf(0x7fc12345);
    expectImage(record, "4523c17f 0000000000000000 0000"_hex, CByte2Rdb::floatData2Byte, CByte2Rdb::byte2FloatData);
    record.value = floatOf(0xff812345); // a signalling NaN
    expectImage(record, "452381ff 0000000000000000 0000"_hex, CByte2Rdb::floatData2Byte, CByte2Rdb::byte2FloatData);
}

TEST(PointRealData2Byte, keepsTheSignOfZeroAndEveryNan)
{
    PointRealData record;
    record.value = -0.0;
    expectImage(record, "00 00000000 0000000000000080 00000000 0000000000000000 0000"_hex,
                CByte2Rdb::pointRealData2Byte, CByte2Rdb::byte2PointRealData);
    record.value = doubleOf(0x7ff8123456789abc);
    expectImage(record, "00 00000000 bc9a78563412f87f 00000000 0000000000000000 0000"_hex,
                CByte2Rdb::pointRealData2Byte, CByte2Rdb::byte2PointRealData);
    record.value = doubleOf(0xfff0123456789abc); // a signalling NaN
    expectImage(record, "00 00000000 bc9a78563412f0ff 00000000 0000000000000000 0000"_hex,
                CByte2Rdb::pointRealData2Byte, CByte2Rdb::byte2PointRealData);
}

// --- Blobs ----------------------------------------------------------------------

static const QByteArray& blobBytes = BlobRealDataCodec::bytes;

// The bytes of the full blob with this length field.
static QByteArray blobWithLength(const char* length)
{
    return blobBytes.left(14) + QByteArray::fromHex(length) + blobBytes.mid(18);
}

// The full blob read over a record with this content: the content is unchanged.
static BlobRealData blobOver(const std::vector<unsigned char>& content)
{
    BlobRealData record = BlobRealDataCodec::withoutContent();
    record.bytes = content;
    return record;
}

TEST(BlobRealData2Byte, countsTheContentInFourBytes)
{
    BlobRealData record;
    record.bytes.assign(0x00012345, 0x61);
    QByteArray data = "aa"_hex;
    CByte2Rdb::blobRealData2Byte(record, data);
    EXPECT_TRUE(data == "aa 00000000 0000000000000000 0000 45230100"_hex + QByteArray(0x00012345, 'a'));
}

TEST(BlobRealData2Byte, allocatesSeldomWhileAnArrayGrowsByManyRecords)
{
    BlobRealData record;
    record.bytes.resize(50);
    QByteArray data;
    int allocations = 0;
    for (int i = 0; i < 1000; ++i) {
        const int before = data.capacity();
        CByte2Rdb::blobRealData2Byte(record, data);
        allocations += data.capacity() != before;
    }
    EXPECT_LT(allocations, 50);
}

TEST(BlobRealData2Byte, writesZeroForNoContent)
{
    QByteArray data;
    CByte2Rdb::blobRealData2Byte(BlobRealDataCodec::withoutContent(), data);
    EXPECT_EQ(hex(data), hex(blobWithLength("00000000").left(18)));
}

TEST(Byte2BlobRealData, refusesTruncatedContentAndKeepsThePrecedingFields)
{
    for (int size = 18; size < blobBytes.size(); ++size) {
        SCOPED_TRACE(size);
        BlobRealData record;
        record.bytes = {1, 2, 3};
        EXPECT_EQ(CByte2Rdb::byte2BlobRealData(heapBytes(blobBytes.left(size)).data(), size, record), -5);
        EXPECT_EQ(show(record), show(blobOver({1, 2, 3})));
    }
}

TEST(Byte2BlobRealData, replacesShorterAndLongerContent)
{
    for (size_t held : {1u, 5u, 100u}) {
        BlobRealData record;
        record.bytes.assign(held, 0x33);
        EXPECT_EQ(CByte2Rdb::byte2BlobRealData(heapBytes(blobBytes).data(), 23, record), 23);
        EXPECT_EQ(show(record), show(BlobRealDataCodec::full()));
    }
}

TEST(Byte2BlobRealData, readsAFourByteLength)
{
    const QByteArray bytes = blobWithLength("45230100").left(18) + QByteArray(0x00012345, 'a');
    BlobRealData record;
    EXPECT_EQ(CByte2Rdb::byte2BlobRealData(heapBytes(bytes).data(), bytes.size(), record), bytes.size());
    EXPECT_TRUE(record.bytes == std::vector<unsigned char>(0x00012345, 'a'));
    const QByteArray shorter = bytes.left(bytes.size() - 1);
    EXPECT_EQ(CByte2Rdb::byte2BlobRealData(heapBytes(shorter).data(), shorter.size(), record), -5);
}

TEST(Byte2BlobRealData, refusesALengthFarBeyondTheBuffer)
{
    // The last is the largest whose sum with the preceding 18 bytes is positive in 32 bits.
    for (const char* length : {"06000000", "00000001", "edffff7f"}) {
        SCOPED_TRACE(length);
        BlobRealData record;
        record.bytes = {1, 2, 3};
        EXPECT_EQ(CByte2Rdb::byte2BlobRealData(heapBytes(blobWithLength(length)).data(), 23, record), -5);
        EXPECT_EQ(show(record), show(blobOver({1, 2, 3})));
    }
}

TEST(Byte2BlobRealData, refusesALengthThatMakesTheSumNegative)
{
    for (const char* length : {"eeffff7f", "ffffff7f"}) {
        SCOPED_TRACE(length);
        BlobRealData record;
        record.bytes = {1, 2, 3};
        EXPECT_EQ(CByte2Rdb::byte2BlobRealData(heapBytes(blobWithLength(length)).data(), 23, record), -5);
        EXPECT_EQ(show(record), show(blobOver({1, 2, 3})));
    }
}

TEST(Byte2BlobRealData, throwsLengthErrorOnALengthWithItsTopBitSet)
{
    // Sums with the preceding 18 bytes: negative; 0; 2; 17.
    for (const char* length : {"00000080", "eeffffff", "f0ffffff", "ffffffff"}) {
        SCOPED_TRACE(length);
        BlobRealData record;
        EXPECT_THROW(CByte2Rdb::byte2BlobRealData(heapBytes(blobWithLength(length)).data(), 23, record),
                     std::length_error);
        EXPECT_EQ(show(record), show(BlobRealDataCodec::withoutContent()));
    }
}

// --- Lists of every record ------------------------------------------------------

template <typename Codec>
class Values2Byte : public testing::Test {
};
TYPED_TEST_SUITE(Values2Byte, ValueCodecs, CodecNames);

TYPED_TEST(Values2Byte, appendsCountAndItems)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({typename TypeParam::Record(), TypeParam::full()}, data);
    EXPECT_EQ(hex(data), hex("aa55 02000000"_hex + QByteArray(TypeParam::itemSize, '\0') + TypeParam::bytes));
}

TYPED_TEST(Values2Byte, writesOnlyTheCountOfAnEmptyList)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({}, data);
    EXPECT_EQ(hex(data), "aa 55 00 00 00 00");
}

TYPED_TEST(Values2Byte, countsInFourBytes)
{
    QByteArray data;
    TypeParam::writeList(std::vector<typename TypeParam::Record>(0x0203), data);
    EXPECT_TRUE(data == "03020000"_hex + QByteArray(0x0203 * TypeParam::itemSize, '\0'));
}

TYPED_TEST(Values2Byte, reservesMemoryForTheItems)
{
    QByteArray data(1000, 'a');
    TypeParam::writeList(std::vector<typename TypeParam::Record>(100), data);
    EXPECT_GE(data.capacity(), 1000 + 100 * TypeParam::itemSize + 4);
}

TEST(IntDatas2Byte, reservesJustTheList)
{
    QByteArray data(1000, 'a');
    CByte2Rdb::intDatas2Byte(std::vector<IntData>(100), data);
    QByteArray reserved(1000, 'a');
    reserved.reserve(1000 + 4 + 100 * 14);
    EXPECT_EQ(data.capacity(), reserved.capacity()); // growing later would have doubled it
}

template <typename Codec>
class Byte2Values : public testing::Test {
protected:
    using Record = typename Codec::Record;
    using List = std::vector<Record>;

    static QByteArray twoItems() { return "02000000"_hex + QByteArray(Codec::itemSize, '\0') + Codec::bytes; }
    static List twoRecords() { return {Record(), Codec::full()}; }
    static List threeRecords() { return List(3, Codec::full()); }

    // A count followed by 28 zero bytes: more than every minimum.
    static QByteArray countAlone(const char* count) { return QByteArray::fromHex(count) + QByteArray(28, '\0'); }

    static int read(const QByteArray& bytes, List& list)
    {
        return Codec::readList(heapBytes(bytes).data(), bytes.size(), list);
    }
};
TYPED_TEST_SUITE(Byte2Values, ValueCodecs, CodecNames);

TYPED_TEST(Byte2Values, fillsAnEmptyVector)
{
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::twoRecords()));
}

TYPED_TEST(Byte2Values, appendsToAFilledVector)
{
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()) + showAll(TestFixture::twoRecords()));
}

TYPED_TEST(Byte2Values, ignoresBytesAfterTheLastItem)
{
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems() + "ffffffffff"_hex, list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::twoRecords()));
}

TYPED_TEST(Byte2Values, readsAFourByteCount)
{
    const QByteArray bytes = "03020000"_hex + QByteArray(0x0202 * TypeParam::itemSize, '\0') + TypeParam::bytes;
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(bytes, list), 1);
    ASSERT_EQ(list.size(), 0x0203u);
    EXPECT_EQ(show(list[0x0202]), show(TypeParam::full()));
}

TYPED_TEST(Byte2Values, acceptsAnEmptyListFromTheMinimumOn)
{
    const QByteArray zeros(32, '\0');
    for (int size = 0; size < zeros.size(); ++size) {
        SCOPED_TRACE(size);
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read(zeros.left(size), list), size < TypeParam::listMinimum ? -5 : 1);
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
        list.clear();
        EXPECT_EQ(TestFixture::read(zeros.left(size), list), size < TypeParam::listMinimum ? -5 : 1);
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST(Byte2Values, refusesANegativeSize)
{
    for (int size : {-1, -0x7fffffff - 1}) {
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TypeParam::readList(TestFixture::twoItems().constData(), size, list), -5);
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
    }
}

TYPED_TEST(Byte2Values, refusesACountBeyondTheBufferAndLeavesTheVector)
{
    for (const char* count : {"03000000", "00010000", TypeParam::largestCount}) {
        SCOPED_TRACE(count);
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read(TestFixture::countAlone(count), list), -5);
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
    }
}

TYPED_TEST(Byte2Values, propagatesTheFailureOfACountAcceptedOnlyByWrapping)
{
    for (const char* count : {TypeParam::nextCount, TypeParam::wrappedCount, "00000080", "01000080", "fcffffff"}) {
        SCOPED_TRACE(count);
        auto list = TestFixture::threeRecords();
        EXPECT_TRUE(failsToAllocate([&] { TestFixture::read(TestFixture::countAlone(count), list); }));
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
    }
    typename TestFixture::List list;
    EXPECT_TRUE(failsToAllocate([&] { TestFixture::read(TestFixture::countAlone("ffffffff"), list); }));
    EXPECT_TRUE(list.empty());
}

TYPED_TEST(Byte2Values, shrinksTheVectorOnACountThatWrapsItsSize)
{
    const int result = TypeParam::signedCount ? 1 : -5; // no item is read either way
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TestFixture::read(TestFixture::countAlone("ffffffff"), list), result); // 3 - 1
    EXPECT_EQ(showAll(list), showAll(typename TestFixture::List(2, TypeParam::full())));

    EXPECT_EQ(TestFixture::read(TestFixture::countAlone("feffffff"), list), result); // 2 - 2
    EXPECT_TRUE(list.empty());
}

// --- Lists of the fixed records -------------------------------------------------

template <typename Codec>
class Byte2FixedValues : public Byte2Values<Codec> {
};
TYPED_TEST_SUITE(Byte2FixedValues, FixedCodecs, CodecNames);

TYPED_TEST(Byte2FixedValues, refusesEveryShorterBufferAndLeavesTheVector)
{
    const QByteArray bytes = TestFixture::twoItems();
    for (int size = 0; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read(bytes.left(size), list), -5);
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
    }
}

TYPED_TEST(Byte2FixedValues, acceptsOneItemFromTheMinimumOn)
{
    const QByteArray bytes = "01000000"_hex + TypeParam::bytes + QByteArray(8, '\xff');
    for (int size = 0; size <= bytes.size(); ++size) {
        SCOPED_TRACE(size);
        const bool taken = size >= TypeParam::listMinimum && size >= 4 + TypeParam::itemSize;
        typename TestFixture::List list;
        EXPECT_EQ(TestFixture::read(bytes.left(size), list), taken ? 1 : -5);
        EXPECT_EQ(showAll(list), taken ? show(TypeParam::full()) + "--\n" : "");
    }
}

TEST(Byte2BoolDatas, refusesASingleItemIn14Bytes)
{
    const QByteArray bytes = "01000000"_hex + BoolDataCodec::bytes;
    ASSERT_EQ(bytes.size(), 14);
    std::vector<BoolData> list;
    EXPECT_EQ(CByte2Rdb::byte2BoolDatas(heapBytes(bytes).data(), 14, list), -5);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(CByte2Rdb::byte2BoolDatas(heapBytes(bytes + "ffffffff"_hex).data(), 18, list), 1);
    EXPECT_EQ(showAll(list), showAll(std::vector{BoolDataCodec::full()}));
}

// The bool lists treat count and new size as signed.
using BoolCodecs = testing::Types<BoolRealDataCodec, BoolDataCodec>;

template <typename Codec>
class Byte2BoolValues : public Byte2Values<Codec> {
};
TYPED_TEST_SUITE(Byte2BoolValues, BoolCodecs, CodecNames);

TYPED_TEST(Byte2BoolValues, throwsLengthErrorOnANegativeSize)
{
    auto list = TestFixture::threeRecords();
    EXPECT_THROW(TestFixture::read(TestFixture::countAlone("fcffffff"), list), std::length_error); // 3 - 4
    EXPECT_EQ(list.size(), 3u);
    list.clear();
    EXPECT_THROW(TestFixture::read(TestFixture::countAlone("ffffffff"), list), std::length_error);
    EXPECT_TRUE(list.empty());
}

TYPED_TEST(Byte2BoolValues, refusesANegativeCountThatWrapsToMoreThanTheBuffer)
{
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TestFixture::read(TestFixture::countAlone("00000088"), list), -5); // 0x88000000
    EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
}

TYPED_TEST(Byte2BoolValues, readsNothingOnANegativeCount)
{
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TestFixture::read("ffffffff"_hex + QByteArray(28, '\x77'), list), 1);
    EXPECT_EQ(showAll(list), showAll(typename TestFixture::List(2, TypeParam::full())));
}

// --- Lists of blobs -------------------------------------------------------------

// Two blobs with content of 3 and of 5 bytes.
static const QByteArray twoBlobs = "02000000"                  //  0 count 2
                                   "61626384"                  //  4 pointId
                                   "71727385"                  //  8 stamp1
                                   "81828386"                  // 12 stamp2
                                   "b1"                        // 16 flag1
                                   "52"                        // 17 flag2
                                   "03000000"                  // 18 length 3
                                   "919293"_hex                // 22 content
                                   + BlobRealDataCodec::bytes; // 25 the full blob, 23 bytes

static BlobRealData firstBlob()
{
    BlobRealData record;
    record.pointId = 0x84636261;
    record.stamp1 = 0x85737271;
    record.stamp2 = 0x86838281;
    record.flag1 = char(0xb1);
    record.flag2 = char(0x52);
    record.bytes = {0x91, 0x92, 0x93};
    return record;
}

static int readBlobs(const QByteArray& bytes, std::vector<BlobRealData>& list)
{
    return CByte2Rdb::byte2BlobRealDatas(heapBytes(bytes).data(), bytes.size(), list);
}

TEST(BlobRealDatas2Byte, writesConsecutiveItems)
{
    QByteArray data;
    CByte2Rdb::blobRealDatas2Byte({firstBlob(), BlobRealDataCodec::full()}, data);
    EXPECT_EQ(hex(data), hex(twoBlobs));
}

TEST(Byte2BlobRealDatas, advancesByTheSizeOfEachItem)
{
    std::vector<BlobRealData> list;
    EXPECT_EQ(readBlobs(twoBlobs, list), 1);
    EXPECT_EQ(showAll(list), showAll(std::vector{firstBlob(), BlobRealDataCodec::full()}));
}

TEST(Byte2BlobRealDatas, refusesABufferBelowTheFixedFieldsOfAllItems)
{
    for (int size = 0; size < 4 + 2 * 18; ++size) {
        SCOPED_TRACE(size);
        std::vector<BlobRealData> list = {firstBlob()};
        EXPECT_EQ(readBlobs(twoBlobs.left(size), list), -5);
        EXPECT_EQ(showAll(list), showAll(std::vector{firstBlob()}));
    }
}

TEST(Byte2BlobRealDatas, keepsTheVectorOnATruncatedItem)
{
    for (int size = 4 + 2 * 18; size < twoBlobs.size(); ++size) {
        SCOPED_TRACE(size);
        std::vector<BlobRealData> list = {firstBlob()};
        EXPECT_EQ(readBlobs(twoBlobs.left(size), list), -3);
        const BlobRealData second = size < 25 + 18 ? BlobRealData() : BlobRealDataCodec::withoutContent();
        EXPECT_EQ(showAll(list), showAll(std::vector{firstBlob(), firstBlob(), second}));
    }
}

TEST(Byte2BlobRealDatas, leavesItemsAfterAFailedOneAtTheirDefaults)
{
    // The second of three items has a length beyond the end.
    const QByteArray bytes = "03000000"_hex + blobBytes + blobWithLength("ff000000") + blobBytes;
    std::vector<BlobRealData> list = {firstBlob()};
    EXPECT_EQ(readBlobs(bytes, list), -3);
    EXPECT_EQ(showAll(list), showAll(std::vector{firstBlob(), BlobRealDataCodec::full(),
                                                 BlobRealDataCodec::withoutContent(), BlobRealData()}));
}

TEST(Byte2BlobRealDatas, keepsAGoodItemBeforeALengthBeyondTheBuffer)
{
    const QByteArray bytes = "02000000"_hex + blobBytes + blobWithLength("01000000").left(18);
    std::vector<BlobRealData> list = {firstBlob()};
    EXPECT_EQ(readBlobs(bytes, list), -3);
    EXPECT_EQ(showAll(list),
              showAll(std::vector{firstBlob(), BlobRealDataCodec::full(), BlobRealDataCodec::withoutContent()}));
}

TEST(Byte2BlobRealDatas, failsOnAnItemLengthThatMakesTheSumNegative)
{
    std::vector<BlobRealData> list;
    EXPECT_EQ(readBlobs("01000000"_hex + blobWithLength("ffffff7f"), list), -3);
    EXPECT_EQ(showAll(list), showAll(std::vector{BlobRealDataCodec::withoutContent()}));
}

TEST(Byte2BlobRealDatas, propagatesTheFailureOfALengthWithItsTopBitSet)
{
    std::vector<BlobRealData> list;
    EXPECT_THROW(readBlobs("01000000"_hex + blobWithLength("f0ffffff"), list), std::length_error);
    EXPECT_EQ(showAll(list), showAll(std::vector{BlobRealDataCodec::withoutContent()}));
}

TEST(Byte2BlobRealDatas, readsNoItemWhenTheVectorShrinks)
{
    std::vector<BlobRealData> list(3, firstBlob());
    EXPECT_EQ(readBlobs("ffffffff"_hex + blobBytes + blobBytes, list), -5);
    EXPECT_EQ(showAll(list), showAll(std::vector{firstBlob(), firstBlob()}));
}

// --- Lists of blob samples ------------------------------------------------------

static const QByteArray blobListBytes = "03000000"  //  0 count
                                        "01020304"  //  4 stamp1
                                        "818283f4"  //  8 stamp2
                                        "f1"        // 12 flag1
                                        "12"        // 13 flag2
                                        "03000000"  // 14 L
                                        "a1a2a3"    // 18 bytes
                                        "21222324"  // 21 stamp1
                                        "31323334"  // 25 stamp2
                                        "21"        // 29 flag1
                                        "22"        // 30 flag2
                                        "00000000"  // 31 L
                                        "41424344"  // 35 stamp1
                                        "51525354"  // 39 stamp2
                                        "31"        // 43 flag1
                                        "32"        // 44 flag2
                                        "02000000"  // 45 L
                                        "b1b2"_hex; // 49 bytes, 51 in all

static std::vector<BlobData> blobSamples()
{
    std::vector<BlobData> list(3);
    list[0].stamp1 = 0x04030201;
    list[0].stamp2 = 0xf4838281;
    list[0].flag1 = char(0xf1);
    list[0].flag2 = 0x12;
    list[0].bytes = {0xa1, 0xa2, 0xa3};
    list[1].stamp1 = 0x24232221;
    list[1].stamp2 = 0x34333231;
    list[1].flag1 = 0x21;
    list[1].flag2 = 0x22;
    list[2].stamp1 = 0x44434241;
    list[2].stamp2 = 0x54535251;
    list[2].flag1 = 0x31;
    list[2].flag2 = 0x32;
    list[2].bytes = {0xb1, 0xb2};
    return list;
}

static BlobData usedSample()
{
    BlobData sample;
    sample.stamp1 = sample.stamp2 = 7;
    sample.flag1 = sample.flag2 = 7;
    sample.bytes = {7, 7, 7, 7, 7};
    return sample;
}

static BlobData withBytes(BlobData sample, const std::vector<unsigned char>& bytes)
{
    sample.bytes = bytes;
    return sample;
}

static int readSamples(const QByteArray& bytes, std::vector<BlobData>& list)
{
    return CByte2Rdb::blob2List(heapBytes(bytes).data(), bytes.size(), list);
}

TEST(BlobData, startsAtZeroAndEmpty)
{
    EXPECT_EQ(showBuilt<BlobData>(), "stamp1: 00 00 00 00\n"
                                     "stamp2: 00 00 00 00\n"
                                     "bytes: \n"
                                     "flag1: 00\n"
                                     "flag2: 00\n");
}

TEST(Blob2List, readsTheItemsAndReturnsTheBytesConsumed)
{
    std::vector<BlobData> list;
    EXPECT_EQ(readSamples(blobListBytes, list), 51);
    EXPECT_EQ(showAll(list), showAll(blobSamples()));
}

TEST(Blob2List, ignoresBytesAfterTheLastItem)
{
    std::vector<BlobData> list;
    EXPECT_EQ(readSamples(blobListBytes + "ffffff"_hex, list), 51);
    EXPECT_EQ(showAll(list), showAll(blobSamples()));

    EXPECT_EQ(readSamples("01"_hex + blobListBytes.mid(1), list), 21);
    EXPECT_EQ(showAll(list), showAll(std::vector<BlobData>{blobSamples()[0]}));
}

TEST(Blob2List, replacesReusedElementsAndDropsThoseBeyondTheCount)
{
    for (size_t used : {0u, 1u, 3u, 5u}) {
        SCOPED_TRACE(used);
        std::vector<BlobData> list(used, usedSample());
        EXPECT_EQ(readSamples(blobListBytes, list), 51);
        EXPECT_EQ(showAll(list), showAll(blobSamples()));
    }
}

TEST(Blob2List, refusesFewerThan18BytesAndLeavesTheList)
{
    for (const QByteArray& bytes : {blobListBytes, QByteArray(18, '\0'), QByteArray(18, char(0xff))}) {
        for (int size = 0; size < 18; ++size) {
            SCOPED_TRACE(size);
            std::vector<BlobData> list(2, usedSample());
            EXPECT_EQ(readSamples(bytes.left(size), list), -1);
            EXPECT_EQ(showAll(list), showAll(std::vector<BlobData>(2, usedSample())));
        }
    }
    std::vector<BlobData> list(2, usedSample());
    EXPECT_EQ(CByte2Rdb::blob2List(blobListBytes.constData(), -1, list), -1);
    EXPECT_EQ(showAll(list), showAll(std::vector<BlobData>(2, usedSample())));
}

TEST(Blob2List, emptiesTheListOnACountOfZero)
{
    for (int size : {18, 19, 100}) {
        std::vector<BlobData> list(2, usedSample());
        EXPECT_EQ(readSamples("00000000"_hex + QByteArray(size - 4, '\1'), list), 4);
        EXPECT_TRUE(list.empty());
    }
}

TEST(Blob2List, acceptsOneEmptyItemOf18Bytes)
{
    std::vector<BlobData> list(1, usedSample());
    EXPECT_EQ(readSamples("01000000"_hex + QByteArray(14, '\0'), list), 18);
    EXPECT_EQ(showAll(list), showAll(std::vector<BlobData>(1)));
}

TEST(Blob2List, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    const std::vector<BlobData> whole = blobSamples();
    for (const BlobData& before : {BlobData(), usedSample()}) {
        for (int size = 18; size < 51; ++size) {
            SCOPED_TRACE(size);
            std::vector<BlobData> expected(3, before);
            expected[0] = size < 21 ? withBytes(whole[0], before.bytes) : whole[0]; // the content does not fit
            if (size >= 35) // below that, the fixed fields do not fit
                expected[1] = whole[1];
            if (size >= 49)
                expected[2] = withBytes(whole[2], before.bytes);

            std::vector<BlobData> list(5, before);
            EXPECT_EQ(readSamples(blobListBytes.left(size), list), -1);
            EXPECT_EQ(showAll(list), showAll(expected));
        }
    }
}

TEST(Blob2List, refusesALengthAboveTheRemainingBytes)
{
    for (const char* length : {"03000000", "00000001", "ffffff7f"}) {
        SCOPED_TRACE(length);
        std::vector<BlobData> list;
        const QByteArray bytes = blobListBytes.left(14) + QByteArray::fromHex(length) + "a1a2"_hex;
        EXPECT_EQ(readSamples(bytes, list), -1);
        ASSERT_EQ(list.size(), 3u);
        EXPECT_EQ(show(list[0]), show(withBytes(blobSamples()[0], {})));
    }
}

TEST(Blob2List, propagatesTheFailureOfANegativeLength)
{
    for (const char* length : {"ffffffff", "00000080", "f2ffffff"}) {
        SCOPED_TRACE(length);
        std::vector<BlobData> list(1, usedSample());
        const QByteArray bytes = blobListBytes.left(14) + QByteArray::fromHex(length) + blobListBytes.mid(18);
        EXPECT_TRUE(failsToAllocate([&] { readSamples(bytes, list); }));
        const std::vector<BlobData> expected = {withBytes(blobSamples()[0], usedSample().bytes), BlobData(),
                                                BlobData()};
        EXPECT_EQ(showAll(list), showAll(expected));
    }
}

TEST(Blob2List, propagatesTheFailureOfANegativeOrHugeCount)
{
    for (const char* count : {"ffffffff", "00000080", "ffffff7f", "00000010"}) {
        SCOPED_TRACE(count);
        std::vector<BlobData> list(2, usedSample());
        const QByteArray bytes = QByteArray::fromHex(count) + blobListBytes.mid(4);
        EXPECT_TRUE(failsToAllocate([&] { readSamples(bytes, list); }));
        EXPECT_EQ(showAll(list), showAll(std::vector<BlobData>(2, usedSample())));
    }
}

TEST(Blob2List, resizesToTheCountEvenIfItemsAreMissing)
{
    std::vector<BlobData> list;
    EXPECT_EQ(readSamples("00000100"_hex + blobListBytes.mid(4), list), -1);
    ASSERT_EQ(list.size(), 65536u);
    EXPECT_EQ(show(list[2]), show(blobSamples()[2]));
    EXPECT_EQ(show(list[3]), show(BlobData()));
}
