#include "byte2Rdb.h"
#include "support/hex.h"
#include "support/recordChecks.h"
#include "support/reservation.h"

#include <gtest/gtest.h>

#include <cstddef>

using gqdb::BlobPoint;
using gqdb::BoolPoint;
using gqdb::CByte2Rdb;
using gqdb::FloatPoint;
using gqdb::IntPoint;
using gqdb::PointInfo;

// --- Declared fields ------------------------------------------------------------

static_assert(ascending({offsetof(PointInfo, pointKind), offsetof(PointInfo, pointId), offsetof(PointInfo, text1),
                         offsetof(PointInfo, text2), offsetof(PointInfo, code1), offsetof(PointInfo, code2)}));
static_assert(allAre<char PointInfo::*>(&PointInfo::pointKind));
static_assert(allAre<unsigned int PointInfo::*>(&PointInfo::pointId, &PointInfo::code1, &PointInfo::code2));
static_assert(allAre<std::string PointInfo::*>(&PointInfo::text1, &PointInfo::text2));

static_assert(ascending({offsetof(FloatPoint, pointId), offsetof(FloatPoint, text1), offsetof(FloatPoint, code1),
                         offsetof(FloatPoint, text2), offsetof(FloatPoint, text3), offsetof(FloatPoint, text4),
                         offsetof(FloatPoint, code2), offsetof(FloatPoint, code3), offsetof(FloatPoint, code4),
                         offsetof(FloatPoint, text5), offsetof(FloatPoint, switch1), offsetof(FloatPoint, float1),
                         offsetof(FloatPoint, switch2), offsetof(FloatPoint, code5), offsetof(FloatPoint, code6),
                         offsetof(FloatPoint, float2), offsetof(FloatPoint, code7), offsetof(FloatPoint, levels)}));
static_assert(allAre<unsigned int FloatPoint::*>(&FloatPoint::pointId, &FloatPoint::code1, &FloatPoint::code2,
                                                 &FloatPoint::code3, &FloatPoint::code4, &FloatPoint::code5,
                                                 &FloatPoint::code6, &FloatPoint::code7));
static_assert(allAre<std::string FloatPoint::*>(&FloatPoint::text1, &FloatPoint::text2, &FloatPoint::text3,
                                                &FloatPoint::text4, &FloatPoint::text5));
static_assert(allAre<char FloatPoint::*>(&FloatPoint::switch1, &FloatPoint::switch2));
static_assert(allAre<float FloatPoint::*>(&FloatPoint::float1, &FloatPoint::float2));
static_assert(std::is_same_v<decltype(FloatPoint::levels), float[8]>);

static_assert(ascending({offsetof(IntPoint, pointId), offsetof(IntPoint, text1), offsetof(IntPoint, code1),
                         offsetof(IntPoint, text2), offsetof(IntPoint, text3), offsetof(IntPoint, text4),
                         offsetof(IntPoint, code2), offsetof(IntPoint, code3), offsetof(IntPoint, switch0),
                         offsetof(IntPoint, code4), offsetof(IntPoint, text5), offsetof(IntPoint, switch1),
                         offsetof(IntPoint, switch2), offsetof(IntPoint, code5), offsetof(IntPoint, code6),
                         offsetof(IntPoint, code7), offsetof(IntPoint, code8), offsetof(IntPoint, levels)}));
static_assert(allAre<unsigned int IntPoint::*>(&IntPoint::pointId, &IntPoint::code1, &IntPoint::code2, &IntPoint::code3,
                                               &IntPoint::code4, &IntPoint::code5, &IntPoint::code6, &IntPoint::code7,
                                               &IntPoint::code8));
static_assert(allAre<std::string IntPoint::*>(&IntPoint::text1, &IntPoint::text2, &IntPoint::text3, &IntPoint::text4,
                                              &IntPoint::text5));
static_assert(allAre<char IntPoint::*>(&IntPoint::switch0, &IntPoint::switch1, &IntPoint::switch2));
static_assert(std::is_same_v<decltype(IntPoint::levels), int[8]>);

static_assert(ascending({offsetof(BoolPoint, pointId), offsetof(BoolPoint, text1), offsetof(BoolPoint, code1),
                         offsetof(BoolPoint, text2), offsetof(BoolPoint, text3), offsetof(BoolPoint, code2),
                         offsetof(BoolPoint, code3), offsetof(BoolPoint, code4), offsetof(BoolPoint, text5),
                         offsetof(BoolPoint, switch1), offsetof(BoolPoint, switch2), offsetof(BoolPoint, code5),
                         offsetof(BoolPoint, code6), offsetof(BoolPoint, switch3)}));
static_assert(allAre<unsigned int BoolPoint::*>(&BoolPoint::pointId, &BoolPoint::code1, &BoolPoint::code2,
                                                &BoolPoint::code3, &BoolPoint::code4, &BoolPoint::code5,
                                                &BoolPoint::code6));
static_assert(allAre<std::string BoolPoint::*>(&BoolPoint::text1, &BoolPoint::text2, &BoolPoint::text3,
                                               &BoolPoint::text5));
static_assert(allAre<char BoolPoint::*>(&BoolPoint::switch1, &BoolPoint::switch2, &BoolPoint::switch3));

static_assert(ascending({offsetof(BlobPoint, pointId), offsetof(BlobPoint, text1), offsetof(BlobPoint, code1),
                         offsetof(BlobPoint, text2), offsetof(BlobPoint, text3), offsetof(BlobPoint, text4),
                         offsetof(BlobPoint, code2), offsetof(BlobPoint, code3), offsetof(BlobPoint, code4),
                         offsetof(BlobPoint, text5), offsetof(BlobPoint, switch1), offsetof(BlobPoint, switch2),
                         offsetof(BlobPoint, code5), offsetof(BlobPoint, code6)}));
static_assert(allAre<unsigned int BlobPoint::*>(&BlobPoint::pointId, &BlobPoint::code1, &BlobPoint::code2,
                                                &BlobPoint::code3, &BlobPoint::code4, &BlobPoint::code5,
                                                &BlobPoint::code6));
static_assert(allAre<std::string BlobPoint::*>(&BlobPoint::text1, &BlobPoint::text2, &BlobPoint::text3,
                                               &BlobPoint::text4, &BlobPoint::text5));
static_assert(allAre<char BlobPoint::*>(&BlobPoint::switch1, &BlobPoint::switch2));

namespace gqdb {

static std::string show(const PointInfo& point)
{
    return FieldText()
        .add("pointKind", point.pointKind)
        .add("pointId", point.pointId)
        .add("text1", point.text1)
        .add("text2", point.text2)
        .add("code1", point.code1)
        .add("code2", point.code2)
        .text();
}

static std::string show(const FloatPoint& point)
{
    return FieldText()
        .add("pointId", point.pointId)
        .add("text1", point.text1)
        .add("code1", point.code1)
        .add("text2", point.text2)
        .add("text3", point.text3)
        .add("text4", point.text4)
        .add("code2", point.code2)
        .add("code3", point.code3)
        .add("code4", point.code4)
        .add("text5", point.text5)
        .add("switch1", point.switch1)
        .add("float1", point.float1)
        .add("switch2", point.switch2)
        .add("code5", point.code5)
        .add("code6", point.code6)
        .add("float2", point.float2)
        .add("code7", point.code7)
        .add("levels", point.levels)
        .text();
}

static std::string show(const IntPoint& point)
{
    return FieldText()
        .add("pointId", point.pointId)
        .add("text1", point.text1)
        .add("code1", point.code1)
        .add("text2", point.text2)
        .add("text3", point.text3)
        .add("text4", point.text4)
        .add("code2", point.code2)
        .add("code3", point.code3)
        .add("switch0", point.switch0)
        .add("code4", point.code4)
        .add("text5", point.text5)
        .add("switch1", point.switch1)
        .add("switch2", point.switch2)
        .add("code5", point.code5)
        .add("code6", point.code6)
        .add("code7", point.code7)
        .add("code8", point.code8)
        .add("levels", point.levels)
        .text();
}

static std::string show(const BoolPoint& point)
{
    return FieldText()
        .add("pointId", point.pointId)
        .add("text1", point.text1)
        .add("code1", point.code1)
        .add("text2", point.text2)
        .add("text3", point.text3)
        .add("code2", point.code2)
        .add("code3", point.code3)
        .add("code4", point.code4)
        .add("text5", point.text5)
        .add("switch1", point.switch1)
        .add("switch2", point.switch2)
        .add("code5", point.code5)
        .add("code6", point.code6)
        .add("switch3", point.switch3)
        .text();
}

static std::string show(const BlobPoint& point)
{
    return FieldText()
        .add("pointId", point.pointId)
        .add("text1", point.text1)
        .add("code1", point.code1)
        .add("text2", point.text2)
        .add("text3", point.text3)
        .add("text4", point.text4)
        .add("code2", point.code2)
        .add("code3", point.code3)
        .add("code4", point.code4)
        .add("text5", point.text5)
        .add("switch1", point.switch1)
        .add("switch2", point.switch2)
        .add("code5", point.code5)
        .add("code6", point.code6)
        .text();
}

} // namespace gqdb

// --- Defaults -------------------------------------------------------------------

// Checks a declared record and the value that a vector creates new elements from.
template <typename Record>
static void expectBuilt(const std::string& fields)
{
    EXPECT_EQ(showBuilt<Record>(), fields);
    EXPECT_EQ(showBuilt<Record>([](void* room) { return new (room) Record(); }), fields);
}

TEST(PointInfo, startsAtZeroAndEmpty)
{
    expectBuilt<PointInfo>("pointKind: 00\n"
                           "pointId: 00 00 00 00\n"
                           "text1: \n"
                           "text2: \n"
                           "code1: 00 00 00 00\n"
                           "code2: 00 00 00 00\n");
}

TEST(FloatPoint, setsSwitch1AndFloat1AndLeavesCode2Uninitialised)
{
    expectBuilt<FloatPoint>("pointId: 00 00 00 00\n"
                            "text1: \n"
                            "code1: 00 00 00 00\n"
                            "text2: \n"
                            "text3: \n"
                            "text4: \n"
                            "code2: ee ee ee ee\n"
                            "code3: 00 00 00 00\n"
                            "code4: 00 00 00 00\n"
                            "text5: \n"
                            "switch1: 01\n"
                            "float1: cd cc 4c 3d\n" // 0.05
                            "switch2: 00\n"
                            "code5: 00 00 00 00\n"
                            "code6: 00 00 00 00\n"
                            "float2: 00 00 00 00\n"
                            "code7: 00 00 00 00\n"
                            "levels: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                            "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n");
}

TEST(IntPoint, setsSwitch1AndLeavesCode2Uninitialised)
{
    expectBuilt<IntPoint>("pointId: 00 00 00 00\n"
                          "text1: \n"
                          "code1: 00 00 00 00\n"
                          "text2: \n"
                          "text3: \n"
                          "text4: \n"
                          "code2: ee ee ee ee\n"
                          "code3: 00 00 00 00\n"
                          "switch0: 00\n"
                          "code4: 00 00 00 00\n"
                          "text5: \n"
                          "switch1: 01\n"
                          "switch2: 00\n"
                          "code5: 00 00 00 00\n"
                          "code6: 00 00 00 00\n"
                          "code7: 00 00 00 00\n"
                          "code8: 00 00 00 00\n"
                          "levels: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                          "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n");
}

TEST(BoolPoint, setsSwitch1AndLeavesCode4Uninitialised)
{
    expectBuilt<BoolPoint>("pointId: 00 00 00 00\n"
                           "text1: \n"
                           "code1: 00 00 00 00\n"
                           "text2: \n"
                           "text3: \n"
                           "code2: 00 00 00 00\n"
                           "code3: 00 00 00 00\n"
                           "code4: ee ee ee ee\n"
                           "text5: \n"
                           "switch1: 01\n"
                           "switch2: 00\n"
                           "code5: 00 00 00 00\n"
                           "code6: 00 00 00 00\n"
                           "switch3: 00\n");
}

TEST(BlobPoint, setsSwitch1AndLeavesCode4Uninitialised)
{
    expectBuilt<BlobPoint>("pointId: 00 00 00 00\n"
                           "text1: \n"
                           "code1: 00 00 00 00\n"
                           "text2: \n"
                           "text3: \n"
                           "text4: \n"
                           "code2: 00 00 00 00\n"
                           "code3: 00 00 00 00\n"
                           "code4: ee ee ee ee\n"
                           "text5: \n"
                           "switch1: 01\n"
                           "switch2: 00\n"
                           "code5: 00 00 00 00\n"
                           "code6: 00 00 00 00\n");
}

// --- The records on the wire ----------------------------------------------------

// Long enough that each of a reader's minimum sizes is reached at a different buffer size.
static const char fortyBytes[] = "text1 has forty bytes, each in its place";
static_assert(sizeof fortyBytes == 40 + 1);

static const std::string bytesWithZero("fi\0\xffve\n", 7);

// Value of a field that a constructor leaves uninitialised.
static const unsigned int unsetField = 0x14131211;

namespace {

// From `size` bytes up to the next stop, a reader fills the fields before byte `end`.
struct Stop {
    int size;
    int end;
};

// A string field of the full record and the offset of its length.
template <typename Record>
struct TextField {
    int at;
    std::string Record::*text;
};

// Common part of the codecs below. Each one adds the operations of its record and
//
//   written, read            bytes of the full record: as written, and in the form that is read
//   shortWritten, shortRead  bytes of the default record with `unsetField` in the uninitialised field
//   writable()               the full record, including fields that are not on the wire
//   readUpTo(end)            the record after the fields before byte `end` of `read` were filled
//   stops, texts             where the reader stops in `read`; the strings in `read`
template <typename R>
struct DefinitionCodec {
    using Record = R;
    using Writer = void (*)(const R&, QByteArray&);
    using Reader = int (*)(const char*, int, R&);
    using ListWriter = void (*)(const std::vector<R>&, QByteArray&);
    using ListReader = int (*)(const char*, int, std::vector<R>&);
};

struct PointInfoCodec : DefinitionCodec<PointInfo> {
    static constexpr const char* name = "PointInfo";
    static constexpr Writer writeOne = CByte2Rdb::pointInfo2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2PointInfo;
    static constexpr ListWriter writeList = CByte2Rdb::pointInfos2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2PointInfos;
    static constexpr int bytesPerItem = 1024;

    inline static const QByteArray written = "01020384"      //  0 pointId
                                             "2800"_hex      //  4 text1
                                             + fortyBytes +  //
                                             "11121385"      // 46 code1
                                             "0400 74776f21" // 50 text2 "two!"
                                             "21222386"_hex; // 56 code2
    inline static const QByteArray read = written;

    inline static const QByteArray shortWritten = "00000000"      //  0 pointId
                                                  "0000"          //  4 text1
                                                  "00000000"      //  6 code1
                                                  "0000"          // 10 text2
                                                  "00000000"_hex; // 12 code2
    inline static const QByteArray shortRead = shortWritten;

    static PointInfo shortest() { return {}; }

    static PointInfo readUpTo(int end)
    {
        PointInfo point;
        if (end > 0)
            point.pointId = 0x84030201;
        if (end > 4)
            point.text1 = fortyBytes;
        if (end > 46)
            point.code1 = 0x85131211;
        if (end > 50)
            point.text2 = "two!";
        if (end > 56)
            point.code2 = 0x86232221;
        return point;
    }

    static PointInfo writable()
    {
        PointInfo point = readUpTo(60);
        point.pointKind = 0x77;
        return point;
    }

    inline static const std::vector<Stop> stops = {
        {0, 0},   // the whole record
        {16, 4},  // text1
        {46, 46}, // 10 bytes after text1
        {56, 56}, // 4 bytes after text2
    };

    inline static const std::vector<TextField<PointInfo>> texts = {{4, &PointInfo::text1}, {50, &PointInfo::text2}};
};

struct FloatPointCodec : DefinitionCodec<FloatPoint> {
    static constexpr const char* name = "FloatPoint";
    static constexpr Writer writeOne = CByte2Rdb::floatPoint2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2FloatPoint;
    static constexpr ListWriter writeList = CByte2Rdb::floatPoints2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2FloatPoints;
    static constexpr int bytesPerItem = 2048;

    inline static const QByteArray written = "01020384"               //   0 pointId
                                             "2800"_hex               //   4 text1
                                             + fortyBytes +           //
                                             "11121385"               //  46 code1
                                             "0400 74776f21"          //  50 text2 "two!"
                                             "0500 7468697264"        //  56 text3 "third"
                                             "0600 666f75727468"      //  63 text4 "fourth"
                                             "21222386"               //  71 code2
                                             "31323387"               //  75 code3
                                             "41424388"               //  79 code4
                                             "0700 666900ff76650a"    //  83 text5
                                             "51"                     //  92 switch1
                                             "616263c4"               //  93 float1
                                             "d2"                     //  97 switch2
                                             "71727389"               //  98 code5
                                             "8182838a"               // 102 code6
                                             "919293c5"               // 106 float2
                                             "a1a2a38b"               // 110 code7
                                             "0000003f 000080bf"      // 114 levels 0.5, -1,
                                             "00000080 0000807f"      //     -0, infinity,
                                             "4523c17f 452381ff"      //     a quiet and a signalling NaN,
                                             "01000000 ffff7f7f"_hex; //     the smallest and the largest number
    inline static const QByteArray read = written;

    inline static const QByteArray shortWritten = "00000000"                          //  0 pointId
                                                  "0000"                              //  4 text1
                                                  "00000000"                          //  6 code1
                                                  "0000 0000 0000"                    // 10 text2, text3, text4
                                                  "11121314"                          // 16 code2
                                                  "00000000 00000000"                 // 20 code3, code4
                                                  "0000"                              // 28 text5
                                                  "01"                                // 30 switch1
                                                  "cdcc4c3d"                          // 31 float1 0.05
                                                  "00"                                // 35 switch2
                                                  "00000000 00000000"                 // 36 code5, code6
                                                  "00000000"                          // 44 float2
                                                  "00000000"                          // 48 code7
                                                  "0000000000000000 0000000000000000" // 52 levels
                                                  "0000000000000000 0000000000000000"_hex;
    inline static const QByteArray shortRead = shortWritten;

    static FloatPoint shortest()
    {
        FloatPoint point;
        point.code2 = unsetField;
        return point;
    }

    static FloatPoint readUpTo(int end)
    {
        FloatPoint point = shortest();
        if (end > 0)
            point.pointId = 0x84030201;
        if (end > 4)
            point.text1 = fortyBytes;
        if (end > 46)
            point.code1 = 0x85131211;
        if (end > 50)
            point.text2 = "two!";
        if (end > 56)
            point.text3 = "third";
        if (end > 63)
            point.text4 = "fourth";
        if (end > 71) {
            point.code2 = 0x86232221;
            point.code3 = 0x87333231;
            point.code4 = 0x88434241;
        }
        if (end > 83)
            point.text5 = bytesWithZero;
        if (end > 92) {
            point.switch1 = char(0x51);
            point.float1 = floatOf(0xc4636261);
            point.switch2 = char(0xd2);
            point.code5 = 0x89737271;
            point.code6 = 0x8a838281;
            point.float2 = floatOf(0xc5939291);
            point.code7 = 0x8ba3a2a1;
            point.levels[0] = 0.5f;
            point.levels[1] = -1;
            point.levels[2] = -0.0f;
            point.levels[3] = floatOf(0x7f800000);
            point.levels[4] = floatOf(0x7fc12345);
            point.levels[5] = floatOf(0xff812345);
            point.levels[6] = floatOf(0x00000001);
            point.levels[7] = floatOf(0x7f7fffff);
        }
        return point;
    }

    static FloatPoint writable() { return readUpTo(146); }

    inline static const std::vector<Stop> stops = {
        {0, 0},    // the whole record
        {84, 46},  // 57 bytes after text1
        {103, 71}, // 62 bytes after text4
        {133, 92}, // 54 bytes after text5
    };

    inline static const std::vector<TextField<FloatPoint>> texts = {{4, &FloatPoint::text1},
                                                                    {50, &FloatPoint::text2},
                                                                    {56, &FloatPoint::text3},
                                                                    {63, &FloatPoint::text4},
                                                                    {83, &FloatPoint::text5}};
};

// Reader and writer do not match: only the writer has switch0.
struct IntPointCodec : DefinitionCodec<IntPoint> {
    static constexpr const char* name = "IntPoint";
    static constexpr Writer writeOne = CByte2Rdb::intPoint2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2IntPoint;
    static constexpr ListWriter writeList = CByte2Rdb::intPoints2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2IntPoints;
    static constexpr int bytesPerItem = 2048;

    inline static const QByteArray written = "01020384"               //   0 pointId
                                             "2800"_hex               //   4 text1
                                             + fortyBytes +           //
                                             "11121385"               //  46 code1
                                             "0400 74776f21"          //  50 text2 "two!"
                                             "0500 7468697264"        //  56 text3 "third"
                                             "0600 666f75727468"      //  63 text4 "fourth"
                                             "21222386"               //  71 code2
                                             "31323387"               //  75 code3
                                             "d1"                     //  79 switch0
                                             "41424388"               //  80 code4
                                             "0700 666900ff76650a"    //  84 text5
                                             "52"                     //  93 switch1
                                             "d3"                     //  94 switch2
                                             "61626389"               //  95 code5
                                             "7172738a"               //  99 code6
                                             "8182838b"               // 103 code7
                                             "9192938c"               // 107 code8
                                             "01000000 ffffffff"      // 111 levels 1, -1,
                                             "ffffff7f 00000080"      //     the largest and the smallest number,
                                             "a1a2a324 b1b2b3a4"      //     0x24a3a2a1, -0x5b4c4d4f,
                                             "c1c2c334 d1d2d3b4"_hex; //     0x34c3c2c1, -0x4b2c2d2f
    inline static const QByteArray read = "01020384"                  //   0 pointId
                                          "2800"_hex                  //   4 text1
                                          + fortyBytes +              //
                                          "11121385"                  //  46 code1
                                          "0400 74776f21"             //  50 text2 "two!"
                                          "0500 7468697264"           //  56 text3 "third"
                                          "0600 666f75727468"         //  63 text4 "fourth"
                                          "21222386"                  //  71 code2
                                          "31323387"                  //  75 code3
                                          "41424388"                  //  79 code4
                                          "0700 666900ff76650a"       //  83 text5
                                          "52"                        //  92 switch1
                                          "d3"                        //  93 switch2
                                          "61626389"                  //  94 code5
                                          "7172738a"                  //  98 code6
                                          "8182838b"                  // 102 code7
                                          "9192938c"                  // 106 code8
                                          "01000000 ffffffff"         // 110 levels
                                          "ffffff7f 00000080"         //
                                          "a1a2a324 b1b2b3a4"         //
                                          "c1c2c334 d1d2d3b4"_hex;    //

    inline static const QByteArray shortWritten = "00000000"                            //  0 pointId
                                                  "0000"                                //  4 text1
                                                  "00000000"                            //  6 code1
                                                  "0000 0000 0000"                      // 10 text2, text3, text4
                                                  "11121314"                            // 16 code2
                                                  "00000000"                            // 20 code3
                                                  "00"                                  // 24 switch0
                                                  "00000000"                            // 25 code4
                                                  "0000"                                // 29 text5
                                                  "01 00"                               // 31 switch1, switch2
                                                  "00000000 00000000 00000000 00000000" // 33 code5 to code8
                                                  "0000000000000000 0000000000000000"   // 49 levels
                                                  "0000000000000000 0000000000000000"_hex;
    inline static const QByteArray shortRead = "00000000"                            //  0 pointId
                                               "0000"                                //  4 text1
                                               "00000000"                            //  6 code1
                                               "0000 0000 0000"                      // 10 text2, text3, text4
                                               "11121314"                            // 16 code2
                                               "00000000"                            // 20 code3
                                               "00000000"                            // 24 code4
                                               "0000"                                // 28 text5
                                               "01 00"                               // 30 switch1, switch2
                                               "00000000 00000000 00000000 00000000" // 32 code5 to code8
                                               "0000000000000000 0000000000000000"   // 48 levels
                                               "0000000000000000 0000000000000000"_hex;

    static IntPoint shortest()
    {
        IntPoint point;
        point.code2 = unsetField;
        return point;
    }

    static IntPoint readUpTo(int end)
    {
        IntPoint point = shortest();
        if (end > 0)
            point.pointId = 0x84030201;
        if (end > 4)
            point.text1 = fortyBytes;
        if (end > 46)
            point.code1 = 0x85131211;
        if (end > 50)
            point.text2 = "two!";
        if (end > 56)
            point.text3 = "third";
        if (end > 63)
            point.text4 = "fourth";
        if (end > 71) {
            point.code2 = 0x86232221;
            point.code3 = 0x87333231;
            point.code4 = 0x88434241;
        }
        if (end > 83)
            point.text5 = bytesWithZero;
        if (end > 92) {
            point.switch1 = char(0x52);
            point.switch2 = char(0xd3);
            point.code5 = 0x89636261;
            point.code6 = 0x8a737271;
            point.code7 = 0x8b838281;
            point.code8 = 0x8c939291;
            point.levels[0] = 1;
            point.levels[1] = -1;
            point.levels[2] = 0x7fffffff;
            point.levels[3] = -0x7fffffff - 1;
            point.levels[4] = 0x24a3a2a1;
            point.levels[5] = -0x5b4c4d4f;
            point.levels[6] = 0x34c3c2c1;
            point.levels[7] = -0x4b2c2d2f;
        }
        return point;
    }

    static IntPoint writable()
    {
        IntPoint point = readUpTo(142);
        point.switch0 = char(0xd1);
        return point;
    }

    inline static const std::vector<Stop> stops = {
        {0, 0},    // the whole record, as long as the writer's
        {81, 46},  // 57 bytes after text1
        {103, 71}, // 50 bytes after text4
        {121, 92}, // 50 bytes after text5
    };

    inline static const std::vector<TextField<IntPoint>> texts = {{4, &IntPoint::text1},
                                                                  {50, &IntPoint::text2},
                                                                  {56, &IntPoint::text3},
                                                                  {63, &IntPoint::text4},
                                                                  {83, &IntPoint::text5}};
};

struct BoolPointCodec : DefinitionCodec<BoolPoint> {
    static constexpr const char* name = "BoolPoint";
    static constexpr Writer writeOne = CByte2Rdb::boolPoint2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2BoolPoint;
    static constexpr ListWriter writeList = CByte2Rdb::boolPoints2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2BoolPoints;
    static constexpr int bytesPerItem = 2048;

    inline static const QByteArray written = "01020384"            //  0 pointId
                                             "2800"_hex            //  4 text1
                                             + fortyBytes +        //
                                             "11121385"            // 46 code1
                                             "0400 74776f21"       // 50 text2 "two!"
                                             "0500 7468697264"     // 56 text3 "third"
                                             "21222386"            // 63 code2
                                             "31323387"            // 67 code3
                                             "41424388"            // 71 code4
                                             "0700 666900ff76650a" // 75 text5
                                             "51"                  // 84 switch1
                                             "d2"                  // 85 switch2
                                             "61626389"            // 86 code5
                                             "7172738a"            // 90 code6
                                             "d3"_hex;             // 94 switch3
    inline static const QByteArray read = written;

    inline static const QByteArray shortWritten = "00000000"          //  0 pointId
                                                  "0000"              //  4 text1
                                                  "00000000"          //  6 code1
                                                  "0000 0000"         // 10 text2, text3
                                                  "00000000 00000000" // 14 code2, code3
                                                  "11121314"          // 22 code4
                                                  "0000"              // 26 text5
                                                  "01 00"             // 28 switch1, switch2
                                                  "00000000 00000000" // 30 code5, code6
                                                  "00"_hex;           // 38 switch3
    inline static const QByteArray shortRead = shortWritten;

    static BoolPoint shortest()
    {
        BoolPoint point;
        point.code4 = unsetField;
        return point;
    }

    static BoolPoint readUpTo(int end)
    {
        BoolPoint point = shortest();
        if (end > 0)
            point.pointId = 0x84030201;
        if (end > 4)
            point.text1 = fortyBytes;
        if (end > 46)
            point.code1 = 0x85131211;
        if (end > 50)
            point.text2 = "two!";
        if (end > 56)
            point.text3 = "third";
        if (end > 63) {
            point.code2 = 0x86232221;
            point.code3 = 0x87333231;
            point.code4 = 0x88434241;
        }
        if (end > 75)
            point.text5 = bytesWithZero;
        if (end > 84) {
            point.switch1 = char(0x51);
            point.switch2 = char(0xd2);
            point.code5 = 0x89636261;
            point.code6 = 0x8a737271;
            point.switch3 = char(0xd3);
        }
        return point;
    }

    static BoolPoint writable() { return readUpTo(95); }

    inline static const std::vector<Stop> stops = {
        {0, 0},   // the whole record
        {39, 4},  // text1
        {46, 46}, // 27 bytes after text1
        {73, 63}, // 24 bytes after text3
        {87, 84}, // 11 bytes after text5
    };

    inline static const std::vector<TextField<BoolPoint>> texts = {
        {4, &BoolPoint::text1}, {50, &BoolPoint::text2}, {56, &BoolPoint::text3}, {75, &BoolPoint::text5}};
};

struct BlobPointCodec : DefinitionCodec<BlobPoint> {
    static constexpr const char* name = "BlobPoint";
    static constexpr Writer writeOne = CByte2Rdb::blobPoint2Byte;
    static constexpr Reader readOne = CByte2Rdb::byte2BlobPoint;
    static constexpr ListWriter writeList = CByte2Rdb::blobPoints2Byte;
    static constexpr ListReader readList = CByte2Rdb::byte2BlobPoints;
    static constexpr int bytesPerItem = 2048;

    inline static const QByteArray written = "01020384"            //  0 pointId
                                             "2800"_hex            //  4 text1
                                             + fortyBytes +        //
                                             "11121385"            // 46 code1
                                             "0400 74776f21"       // 50 text2 "two!"
                                             "0500 7468697264"     // 56 text3 "third"
                                             "0600 666f75727468"   // 63 text4 "fourth"
                                             "21222386"            // 71 code2
                                             "31323387"            // 75 code3
                                             "41424388"            // 79 code4
                                             "0700 666900ff76650a" // 83 text5
                                             "51"                  // 92 switch1
                                             "d2"                  // 93 switch2
                                             "61626389"            // 94 code5
                                             "7172738a"_hex;       // 98 code6
    inline static const QByteArray read = written;

    inline static const QByteArray shortWritten = "00000000"               //  0 pointId
                                                  "0000"                   //  4 text1
                                                  "00000000"               //  6 code1
                                                  "0000 0000 0000"         // 10 text2, text3, text4
                                                  "00000000 00000000"      // 16 code2, code3
                                                  "11121314"               // 24 code4
                                                  "0000"                   // 28 text5
                                                  "01 00"                  // 30 switch1, switch2
                                                  "00000000 00000000"_hex; // 32 code5, code6
    inline static const QByteArray shortRead = shortWritten;

    static BlobPoint shortest()
    {
        BlobPoint point;
        point.code4 = unsetField;
        return point;
    }

    static BlobPoint readUpTo(int end)
    {
        BlobPoint point = shortest();
        if (end > 0)
            point.pointId = 0x84030201;
        if (end > 4)
            point.text1 = fortyBytes;
        if (end > 46)
            point.code1 = 0x85131211;
        if (end > 50)
            point.text2 = "two!";
        if (end > 56)
            point.text3 = "third";
        if (end > 63)
            point.text4 = "fourth";
        if (end > 71) {
            point.code2 = 0x86232221;
            point.code3 = 0x87333231;
            point.code4 = 0x88434241;
        }
        if (end > 83)
            point.text5 = bytesWithZero;
        if (end > 92) {
            point.switch1 = char(0x51);
            point.switch2 = char(0xd2);
            point.code5 = 0x89636261;
            point.code6 = 0x8a737271;
        }
        return point;
    }

    static BlobPoint writable() { return readUpTo(102); }

    inline static const std::vector<Stop> stops = {
        {0, 0},   // the whole record
        {40, 4},  // text1
        {46, 46}, // 27 bytes after text1
        {73, 71}, // 24 bytes after text4
        {95, 92}, // 10 bytes after text5
    };

    inline static const std::vector<TextField<BlobPoint>> texts = {{4, &BlobPoint::text1},
                                                                   {50, &BlobPoint::text2},
                                                                   {56, &BlobPoint::text3},
                                                                   {63, &BlobPoint::text4},
                                                                   {83, &BlobPoint::text5}};
};

using DefinitionCodecs = testing::Types<PointInfoCodec, FloatPointCodec, IntPointCodec, BoolPointCodec, BlobPointCodec>;

struct CodecNames {
    template <typename Codec>
    static std::string GetName(int)
    {
        return Codec::name;
    }
};

} // namespace

// Bytes of a string field: its length and `size` times "a".
static QByteArray longText(int size)
{
    QByteArray field;
    field += char(size);
    field += char(size >> 8);
    return field + QByteArray(size, 'a');
}

// --- Writing one record ---------------------------------------------------------

template <typename Codec>
class Definition2Byte : public testing::Test {
};
TYPED_TEST_SUITE(Definition2Byte, DefinitionCodecs, CodecNames);

TYPED_TEST(Definition2Byte, appendsTheFields)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeOne(TypeParam::writable(), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + TypeParam::written));
}

TYPED_TEST(Definition2Byte, writesTheDefaults)
{
    QByteArray data;
    TypeParam::writeOne(TypeParam::shortest(), data);
    EXPECT_EQ(hex(data), hex(TypeParam::shortWritten));
}

TYPED_TEST(Definition2Byte, writesEachLongStringWhole)
{
    for (const auto& field : TypeParam::texts) {
        SCOPED_TRACE(field.at);
        auto point = TypeParam::shortest();
        point.*field.text = std::string(65535, 'a');
        QByteArray data;
        TypeParam::writeOne(point, data);
        EXPECT_EQ(data.size(), TypeParam::shortWritten.size() + 65535);
        EXPECT_EQ(data.indexOf(longText(65535)), data.indexOf('a') - 2);
        EXPECT_EQ(data.count('a'), 65535);
    }
}

TYPED_TEST(Definition2Byte, writesATruncatedLengthButTheWholeOverlongString)
{
    auto point = TypeParam::shortest();
    point.text1 = std::string(65536 + 3, 'a');
    QByteArray data;
    TypeParam::writeOne(point, data);
    const QByteArray expected =
        TypeParam::shortWritten.left(4) + "0300"_hex + QByteArray(65536 + 3, 'a') + TypeParam::shortWritten.mid(6);
    EXPECT_TRUE(data == expected);
}

// --- Reading one record ---------------------------------------------------------

template <typename Codec>
class Byte2Definition : public testing::Test {
};
TYPED_TEST_SUITE(Byte2Definition, DefinitionCodecs, CodecNames);

TYPED_TEST(Byte2Definition, readsTheFields)
{
    auto point = TypeParam::shortest();
    EXPECT_EQ(TypeParam::readOne(heapBytes(TypeParam::read).data(), TypeParam::read.size(), point),
              TypeParam::read.size());
    EXPECT_EQ(show(point), show(TypeParam::readUpTo(TypeParam::read.size())));
}

TYPED_TEST(Byte2Definition, ignoresBytesAfterTheRecord)
{
    const QByteArray bytes = TypeParam::read + "ffffffffff"_hex;
    auto point = TypeParam::shortest();
    EXPECT_EQ(TypeParam::readOne(heapBytes(bytes).data(), bytes.size(), point), TypeParam::read.size());
    EXPECT_EQ(show(point), show(TypeParam::readUpTo(TypeParam::read.size())));
}

TYPED_TEST(Byte2Definition, refusesEveryShorterBufferAndKeepsWhatItRead)
{
    for (int size = 0; size < TypeParam::read.size(); ++size) {
        SCOPED_TRACE(size);
        int end = 0;
        for (const Stop& stop : TypeParam::stops)
            end = size >= stop.size ? stop.end : end;

        auto point = TypeParam::shortest();
        EXPECT_EQ(TypeParam::readOne(heapBytes(TypeParam::read.left(size)).data(), size, point), 0);
        EXPECT_EQ(show(point), show(TypeParam::readUpTo(end)));
    }
}

TYPED_TEST(Byte2Definition, refusesANegativeSize)
{
    auto point = TypeParam::shortest();
    EXPECT_EQ(TypeParam::readOne(TypeParam::read.constData(), -1, point), 0);
    EXPECT_EQ(TypeParam::readOne(TypeParam::read.constData(), -0x7fffffff - 1, point), 0);
    EXPECT_EQ(show(point), show(TypeParam::shortest()));
}

TYPED_TEST(Byte2Definition, refusesAStringThatRunsPastTheBuffer)
{
    for (const auto& field : TypeParam::texts) {
        const int rest = TypeParam::read.size() - field.at - 2;
        for (int length : {rest + 1, 0x7fff, 0x8000, 0xffff}) {
            SCOPED_TRACE(testing::Message() << "field at " << field.at << ", length " << length);
            const QByteArray bytes = withLength(TypeParam::read, field.at, length);
            auto point = TypeParam::shortest();
            EXPECT_EQ(TypeParam::readOne(heapBytes(bytes).data(), bytes.size(), point), 0);
            EXPECT_EQ(show(point), show(TypeParam::readUpTo(field.at)));
        }
    }
}

TYPED_TEST(Byte2Definition, refusesARecordThatEndsWithOneOfItsStrings)
{
    for (const auto& field : TypeParam::texts) {
        SCOPED_TRACE(field.at);
        const int rest = TypeParam::read.size() - field.at - 2;
        const QByteArray bytes = withLength(TypeParam::read, field.at, rest);
        auto point = TypeParam::shortest();
        EXPECT_EQ(TypeParam::readOne(heapBytes(bytes).data(), bytes.size(), point), 0);

        auto expected = TypeParam::readUpTo(field.at);
        expected.*field.text = TypeParam::read.right(rest).toStdString();
        EXPECT_EQ(show(point), show(expected));
    }
}

TYPED_TEST(Byte2Definition, appendsToTheStringsOfAUsedRecord)
{
    auto point = TypeParam::readUpTo(TypeParam::read.size());
    EXPECT_EQ(TypeParam::readOne(heapBytes(TypeParam::read).data(), TypeParam::read.size(), point),
              TypeParam::read.size());

    auto expected = TypeParam::readUpTo(TypeParam::read.size());
    for (const auto& field : TypeParam::texts)
        expected.*field.text += expected.*field.text;
    EXPECT_EQ(show(point), show(expected));
}

TYPED_TEST(Byte2Definition, readsAStringOf65535Bytes)
{
    const QByteArray bytes = TypeParam::shortRead.left(4) + longText(65535) + TypeParam::shortRead.mid(6);
    typename TypeParam::Record point;
    EXPECT_EQ(TypeParam::readOne(heapBytes(bytes).data(), bytes.size(), point), bytes.size());
    auto expected = TypeParam::shortest();
    expected.text1 = std::string(65535, 'a');
    EXPECT_TRUE(show(point) == show(expected));
}

TYPED_TEST(Byte2Definition, cannotReadALongerStringBack)
{
    auto point = TypeParam::shortest();
    point.text1 = std::string(65536, 'a');
    QByteArray data;
    TypeParam::writeOne(point, data);

    auto back = TypeParam::shortest();
    EXPECT_LT(TypeParam::readOne(heapBytes(data).data(), data.size(), back), data.size());
    EXPECT_EQ(back.text1, ""); // its length field is 0
    EXPECT_EQ(back.code1, 0x61616161u);
}

TEST(Byte2PointInfo, acceptsARecordOf16Bytes)
{
    const QByteArray& bytes = PointInfoCodec::shortRead;
    ASSERT_EQ(bytes.size(), 16);
    PointInfo point;
    EXPECT_EQ(CByte2Rdb::byte2PointInfo(heapBytes(bytes).data(), 16, point), 16);
    EXPECT_EQ(show(point), show(PointInfo()));
    EXPECT_EQ(CByte2Rdb::byte2PointInfo(heapBytes(bytes.left(15)).data(), 15, point), 0);
}

TEST(Byte2PointInfo, leavesPointKindUnchanged)
{
    PointInfo point;
    point.pointKind = 0x77;
    EXPECT_EQ(CByte2Rdb::byte2PointInfo(heapBytes(PointInfoCodec::read).data(), 60, point), 60);
    PointInfo expected = PointInfoCodec::readUpTo(60);
    expected.pointKind = 0x77;
    EXPECT_EQ(show(point), show(expected));
}

TEST(Byte2FloatPoint, acceptsADefaultRecordOf84Bytes)
{
    QByteArray data;
    CByte2Rdb::floatPoint2Byte(FloatPointCodec::shortest(), data);
    ASSERT_EQ(data.size(), 84);
    FloatPoint point;
    point.switch1 = 0;
    point.float1 = 0;
    EXPECT_EQ(CByte2Rdb::byte2FloatPoint(heapBytes(data).data(), 84, point), 84);
    EXPECT_EQ(show(point), show(FloatPointCodec::shortest()));
    EXPECT_EQ(point.switch1, 1);
    EXPECT_EQ(point.float1, 0.05f);
}

TEST(Byte2BoolPoint, acceptsARecordOf39Bytes)
{
    const QByteArray& bytes = BoolPointCodec::shortRead;
    ASSERT_EQ(bytes.size(), 39);
    BoolPoint point;
    EXPECT_EQ(CByte2Rdb::byte2BoolPoint(heapBytes(bytes).data(), 39, point), 39);
    EXPECT_EQ(show(point), show(BoolPointCodec::shortest()));
}

TEST(Byte2BlobPoint, acceptsARecordOf40Bytes)
{
    const QByteArray& bytes = BlobPointCodec::shortRead;
    ASSERT_EQ(bytes.size(), 40);
    BlobPoint point;
    EXPECT_EQ(CByte2Rdb::byte2BlobPoint(heapBytes(bytes).data(), 40, point), 40);
    EXPECT_EQ(show(point), show(BlobPointCodec::shortest()));
}

TEST(Byte2IntPoint, needsOneByteMoreThanItsShortestRecord)
{
    const QByteArray& bytes = IntPointCodec::shortRead;
    ASSERT_EQ(bytes.size(), 80);
    IntPoint point = IntPointCodec::shortest();
    point.switch1 = 0x33;
    EXPECT_EQ(CByte2Rdb::byte2IntPoint(heapBytes(bytes).data(), 80, point), 0);
    EXPECT_EQ(point.switch1, 0x33);
    EXPECT_EQ(CByte2Rdb::byte2IntPoint(heapBytes(bytes + "ff"_hex).data(), 81, point), 80);
    EXPECT_EQ(show(point), show(IntPointCodec::shortest()));
}

TEST(Byte2IntPoint, leavesSwitch0Unchanged)
{
    IntPoint point;
    point.switch0 = 0x33;
    EXPECT_EQ(CByte2Rdb::byte2IntPoint(heapBytes(IntPointCodec::read).data(), 142, point), 142);
    IntPoint expected = IntPointCodec::readUpTo(142);
    expected.switch0 = 0x33;
    EXPECT_EQ(show(point), show(expected));
}

TEST(Byte2IntPoint, misreadsAWrittenDefaultByOneByte)
{
    QByteArray data;
    CByte2Rdb::intPoint2Byte(IntPointCodec::shortest(), data);
    ASSERT_EQ(data.size(), 81);
    IntPoint point;
    EXPECT_EQ(CByte2Rdb::byte2IntPoint(heapBytes(data).data(), 81, point), 80);
    IntPoint expected = IntPointCodec::shortest();
    expected.switch1 = 0; // the upper byte of the length of text5
    expected.switch2 = 1; // switch1
    EXPECT_EQ(show(point), show(expected));
}

TEST(Byte2IntPoint, misreadsAWrittenRecordByOneByteFromCode4On)
{
    IntPoint written = IntPointCodec::shortest();
    written.switch0 = 0x21;
    written.code4 = 0x00434241; // its upper byte becomes the lower one of the length of text5
    written.switch1 = 0x22;
    written.switch2 = 0x23;
    written.code5 = 0x84333231;
    written.levels[0] = 0x54535251;
    QByteArray data;
    CByte2Rdb::intPoint2Byte(written, data);

    IntPoint point;
    EXPECT_EQ(CByte2Rdb::byte2IntPoint(heapBytes(data).data(), data.size(), point), 80);
    IntPoint expected = IntPointCodec::shortest();
    expected.code4 = 0x43424121;
    expected.switch1 = 0;
    expected.switch2 = 0x22;
    expected.code5 = 0x33323123;
    expected.code6 = 0x00000084;
    expected.levels[0] = 0x53525100;
    expected.levels[1] = 0x00000054;
    EXPECT_EQ(show(point), show(expected));
}

TEST(Byte2IntPoint, failsOnAWrittenRecordWithAText5)
{
    IntPoint point = IntPointCodec::shortest();
    EXPECT_EQ(CByte2Rdb::byte2IntPoint(heapBytes(IntPointCodec::written).data(), 143, point), 0);
    IntPoint expected = IntPointCodec::readUpTo(83);
    expected.code4 = 0x434241d1;
    EXPECT_EQ(show(point), show(expected));
}

// --- Lists ----------------------------------------------------------------------

template <typename Codec>
class Definitions2Byte : public testing::Test {
};
TYPED_TEST_SUITE(Definitions2Byte, DefinitionCodecs, CodecNames);

TYPED_TEST(Definitions2Byte, appendsCountAndItems)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({TypeParam::shortest(), TypeParam::writable()}, data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + "02000000"_hex + TypeParam::shortWritten + TypeParam::written));
}

TYPED_TEST(Definitions2Byte, writesOnlyTheCountOfAnEmptyList)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({}, data);
    EXPECT_EQ(hex(data), "aa 55 00 00 00 00");
}

TYPED_TEST(Definitions2Byte, countsInFourBytes)
{
    QByteArray data;
    TypeParam::writeList(std::vector<typename TypeParam::Record>(0x0203, TypeParam::shortest()), data);
    EXPECT_EQ(hex(data.left(4)), "03 02 00 00");
    EXPECT_EQ(data.size(), 4 + 0x0203 * TypeParam::shortWritten.size());
}

TYPED_TEST(Definitions2Byte, reservesMemoryForTheItems)
{
    QByteArray data(1000, 'a');
    TypeParam::writeList({TypeParam::shortest(), TypeParam::shortest()}, data);
    EXPECT_GE(data.capacity(), 1000 + 2 * TypeParam::bytesPerItem);
    EXPECT_EQ(data.size(), 1000 + 4 + 2 * TypeParam::shortWritten.size());
}

TYPED_TEST(Definitions2Byte, reservesMemoryInACopyOfAReservedArray)
{
    QByteArray roomy = "aa55"_hex;
    roomy.reserve(10000);
    QByteArray data = roomy;
    TypeParam::writeList({TypeParam::shortest(), TypeParam::shortest()}, data);
    EXPECT_GE(data.capacity(), 2 + 2 * TypeParam::bytesPerItem);
    EXPECT_EQ(hex(data), hex("aa55 02000000"_hex + TypeParam::shortWritten + TypeParam::shortWritten));
    EXPECT_EQ(hex(roomy), "aa 55");
}

// Existing capacity is marked as reserved too, as QByteArray::reserve() does.
TYPED_TEST(Definitions2Byte, marksExistingCapacityAsReserved)
{
    QByteArray data(3 * TypeParam::bytesPerItem, 'a');
    data.resize(100);
    EXPECT_FALSE(isReserved(data));
    TypeParam::writeList({TypeParam::shortest(), TypeParam::shortest()}, data);
    EXPECT_TRUE(isReserved(data));
}

TYPED_TEST(Definitions2Byte, writesItemsLargerThanTheReservation)
{
    auto point = TypeParam::shortest();
    point.text1 = std::string(5000, 'a');
    QByteArray data;
    TypeParam::writeList({point, TypeParam::shortest()}, data);
    const QByteArray expected = "02000000"_hex + TypeParam::shortWritten.left(4) + longText(5000) +
                                TypeParam::shortWritten.mid(6) + TypeParam::shortWritten;
    EXPECT_TRUE(data == expected);
}

template <typename Codec>
class Byte2Definitions : public testing::Test {
protected:
    using Record = typename Codec::Record;
    using List = std::vector<Record>;

    // The short record comes first because the int reader needs a byte after it.
    static QByteArray twoItems() { return "02000000"_hex + Codec::shortRead + Codec::read; }
    static List twoRecords() { return {Codec::shortest(), fullRecord()}; }

    static Record fullRecord() { return Codec::readUpTo(Codec::read.size()); }

    // Three elements that equal neither a list item nor a new element.
    static List threeRecords() { return List(3, Codec::readUpTo(60)); }

    static int read(const QByteArray& bytes, List& list)
    {
        return Codec::readList(heapBytes(bytes).data(), bytes.size(), list);
    }
};
TYPED_TEST_SUITE(Byte2Definitions, DefinitionCodecs, CodecNames);

TYPED_TEST(Byte2Definitions, fillsAnEmptyVector)
{
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::twoRecords()));
}

TYPED_TEST(Byte2Definitions, appendsToAFilledVector)
{
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()) + showAll(TestFixture::twoRecords()));
}

TYPED_TEST(Byte2Definitions, acceptsAnEmptyList)
{
    for (const QByteArray& bytes : {"00000000"_hex, "00000000 ffffffff"_hex}) {
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read(bytes, list), 1);
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
        list.clear();
        EXPECT_EQ(TestFixture::read(bytes, list), 1);
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST(Byte2Definitions, ignoresBytesAfterTheLastItem)
{
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems() + "ffffffffff"_hex, list), 1);
    EXPECT_EQ(showAll(list), showAll(TestFixture::twoRecords()));
}

TYPED_TEST(Byte2Definitions, refusesABufferBelowTheCountAndLeavesTheVector)
{
    for (int size = 0; size < 4; ++size) {
        SCOPED_TRACE(size);
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read(TestFixture::twoItems().left(size), list), -2);
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
    }
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TypeParam::readList(TestFixture::twoItems().constData(), -1, list), -2);
    EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
}

TYPED_TEST(Byte2Definitions, clearsTheVectorOnATruncatedItem)
{
    const QByteArray bytes = TestFixture::twoItems();
    for (int size = 4; size < bytes.size(); ++size) {
        SCOPED_TRACE(size);
        typename TestFixture::List list;
        EXPECT_EQ(TestFixture::read(bytes.left(size), list), -3);
        EXPECT_TRUE(list.empty());
        list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read(bytes.left(size), list), -3);
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST(Byte2Definitions, clearsTheVectorIfItemsAreMissing)
{
    QByteArray bytes = TestFixture::twoItems();
    bytes[0] = 3;
    auto list = TestFixture::threeRecords();
    EXPECT_EQ(TestFixture::read(bytes, list), -3);
    EXPECT_TRUE(list.empty());
}

TYPED_TEST(Byte2Definitions, readsAFourByteCount)
{
    QByteArray bytes = "03020000"_hex; // 0x0203
    for (int i = 0; i < 0x0203; ++i)
        bytes += TypeParam::shortRead;
    bytes += "ff"_hex; // the int reader needs a byte after the last item
    typename TestFixture::List list;
    EXPECT_EQ(TestFixture::read(bytes, list), 1);
    ASSERT_EQ(list.size(), 0x0203u);
    EXPECT_EQ(show(list.back()), show(TypeParam::shortest()));
}

TYPED_TEST(Byte2Definitions, growsAReservedVectorOnlyToTheItems)
{
    const QByteArray items = TypeParam::shortRead + TypeParam::read;
    typename TestFixture::List list;
    list.reserve(3);
    EXPECT_EQ(TestFixture::read("04000000"_hex + items + items, list), 1);
    EXPECT_EQ(list.capacity(), 4u);
}

TYPED_TEST(Byte2Definitions, keepsAVectorWithJustEnoughRoom)
{
    auto list = TestFixture::threeRecords();
    list.reserve(5);
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    EXPECT_EQ(list.capacity(), 5u);
}

TYPED_TEST(Byte2Definitions, doublesTheVectorThatItAppendsTo)
{
    auto list = TestFixture::threeRecords();
    list.shrink_to_fit();
    EXPECT_EQ(TestFixture::read(TestFixture::twoItems(), list), 1);
    EXPECT_EQ(list.capacity(), 6u);
}

TYPED_TEST(Byte2Definitions, shrinksTheVectorOnACountThatWrapsItsSize)
{
    const QByteArray items = TypeParam::shortRead + TypeParam::read;
    for (const QByteArray& following : {QByteArray(), items}) {
        auto list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read("ffffffff"_hex + following, list), -2); // 3 + 0xffffffff wraps to 2
        EXPECT_EQ(showAll(list), showAll(typename TestFixture::List(2, TestFixture::threeRecords()[0])));

        list = TestFixture::threeRecords();
        EXPECT_EQ(TestFixture::read("fdffffff"_hex + following, list), -2); // wraps to 0
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST(Byte2Definitions, propagatesTheAllocationFailureOfAHugeCount)
{
    for (const char* count : {"00000040", "ffffff7f", "00000080", "fcffffff"}) {
        SCOPED_TRACE(count);
        auto list = TestFixture::threeRecords();
        EXPECT_TRUE(failsToAllocate([&] { TestFixture::read(QByteArray::fromHex(count), list); }));
        EXPECT_EQ(showAll(list), showAll(TestFixture::threeRecords()));
    }
    typename TestFixture::List list;
    EXPECT_TRUE(failsToAllocate([&] { TestFixture::read("ffffffff"_hex, list); }));
    EXPECT_TRUE(list.empty());
}

TEST(Byte2PointInfos, setsPointKindOfNewElementsToZero)
{
    QByteArray data;
    CByte2Rdb::pointInfos2Byte({PointInfoCodec::writable()}, data);
    std::vector<PointInfo> list;
    EXPECT_EQ(CByte2Rdb::byte2PointInfos(heapBytes(data).data(), data.size(), list), 1);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(show(list[0]), show(PointInfoCodec::readUpTo(60)));
    EXPECT_EQ(list[0].pointKind, 0);
}

TEST(Byte2IntPoints, needsAByteAfterAShortLastItem)
{
    const QByteArray bytes = "01000000"_hex + IntPointCodec::shortRead;
    std::vector<IntPoint> list;
    EXPECT_EQ(CByte2Rdb::byte2IntPoints(heapBytes(bytes).data(), 84, list), -3);
    EXPECT_EQ(CByte2Rdb::byte2IntPoints(heapBytes(bytes + "ff"_hex).data(), 85, list), 1);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(show(list[0]), show(IntPointCodec::shortest()));
}

TEST(Byte2IntPoints, misreadsAWrittenDefaultByOneByte)
{
    QByteArray data;
    CByte2Rdb::intPoints2Byte({IntPointCodec::shortest()}, data);
    std::vector<IntPoint> list;
    EXPECT_EQ(CByte2Rdb::byte2IntPoints(heapBytes(data).data(), data.size(), list), 1);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].switch1, 0);
    EXPECT_EQ(list[0].switch2, 1);
}
