#include "byte2Val.h"
#include "support/floatImages.h"
#include "support/hex.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

using gqdb::CByte2Val;

static constexpr int intMin = std::numeric_limits<int>::min();
static constexpr int intMax = std::numeric_limits<int>::max();
static constexpr float infinity = std::numeric_limits<float>::infinity();
static const float notANumber = std::nanf("");

// --- Helpers --------------------------------------------------------------------

// What `write` stores in `room` bytes of 0xee, with two more bytes on either side.
static std::string stored(int room, const std::function<void(char*)>& write)
{
    QByteArray field(room + 4, char(0xee));
    write(field.data() + 2);
    return hex(field);
}

// --- Overloads ------------------------------------------------------------------

template <typename Element, typename Target>
using ListWriter = decltype(CByte2Val::list2Byte(std::declval<const std::vector<Element>&>(), std::declval<Target>()));

template <typename Element, typename Target, typename = void>
constexpr bool hasListWriter = false;
template <typename Element, typename Target>
constexpr bool hasListWriter<Element, Target, std::void_t<ListWriter<Element, Target>>> =
    std::is_void_v<ListWriter<Element, Target>>;

static_assert(hasListWriter<int, QByteArray&> && hasListWriter<int, char*>);
static_assert(hasListWriter<float, char*> && !hasListWriter<float, QByteArray&>);
static_assert(hasListWriter<double, char*> && !hasListWriter<double, QByteArray&>);
static_assert(hasListWriter<unsigned char, QByteArray&> && !hasListWriter<unsigned char, char*>);

// Each name has one overload, so none needs a cast.
using IntsWriter = void (*)(const std::vector<int>&, char*);
using IntsReader = int (*)(const char*, int, std::vector<int>&);
static_assert(std::is_same_v<decltype(&CByte2Val::ushorts2Buffer), IntsWriter>);
static_assert(std::is_same_v<decltype(&CByte2Val::ints2Buffer), IntsWriter>);
static_assert(std::is_same_v<decltype(&CByte2Val::floats2Buffer), void (*)(const std::vector<float>&, char*)>);
static_assert(std::is_same_v<decltype(&CByte2Val::doubles2Buffer), void (*)(const std::vector<double>&, char*)>);
static_assert(std::is_same_v<decltype(&CByte2Val::buffer2Ints), IntsReader>);
static_assert(std::is_same_v<decltype(&CByte2Val::buffer2UShorts), IntsReader>);
static_assert(std::is_same_v<decltype(&CByte2Val::buffer2Shorts), IntsReader>);
static_assert(std::is_same_v<decltype(&CByte2Val::buffer2Floats), int (*)(const char*, int, std::vector<float>&)>);
static_assert(std::is_same_v<decltype(&CByte2Val::buffer2Doubles), int (*)(const char*, int, std::vector<double>&)>);
static_assert(std::is_same_v<decltype(&CByte2Val::calcLimit), void (*)(const std::vector<float>&, double&, double&)>);
static_assert(std::is_same_v<decltype(&CByte2Val::float2Short),
                             void (*)(const std::vector<float>&, float, float, std::vector<int>&)>);
static_assert(std::is_same_v<decltype(&CByte2Val::short2float),
                             void (*)(const std::vector<int>&, float, float, std::vector<float>&)>);
static_assert(std::is_same_v<decltype(&CByte2Val::ad2float),
                             void (*)(const std::vector<int>&, double, double, std::vector<float>&)>);

// --- Writing lists --------------------------------------------------------------

TEST(List2Byte, appendsCountAndInts)
{
    QByteArray data = "aabb"_hex;
    CByte2Val::list2Byte(std::vector<int>{0x12345678, -2, intMin}, data);
    EXPECT_EQ(hex(data), "aa bb 03 00 00 00 78 56 34 12 fe ff ff ff 00 00 00 80");
}

TEST(List2Byte, appendsFourZeroBytesForAnEmptyListOfInts)
{
    QByteArray data = "aa"_hex;
    CByte2Val::list2Byte(std::vector<int>(), data);
    EXPECT_EQ(hex(data), "aa 00 00 00 00");
}

TEST(List2Byte, storesCountAndInts)
{
    EXPECT_EQ(stored(12,
                     [](char* buf) {
                         CByte2Val::list2Byte(std::vector<int>{0x12345678, -2}, buf);
                     }),
              "ee ee 02 00 00 00 78 56 34 12 fe ff ff ff ee ee");
    EXPECT_EQ(stored(4, [](char* buf) { CByte2Val::list2Byte(std::vector<int>(), buf); }), "ee ee 00 00 00 00 ee ee");
}

TEST(List2Byte, storesCountAndFloats)
{
    const std::vector<float> list = {1.0f, -2.5f, floatOf(0x7f812345)}; // the last a signalling NaN
    EXPECT_EQ(stored(16, [&](char* buf) { CByte2Val::list2Byte(list, buf); }),
              "ee ee 03 00 00 00 00 00 80 3f 00 00 20 c0 45 23 81 7f ee ee");
    EXPECT_EQ(stored(4, [](char* buf) { CByte2Val::list2Byte(std::vector<float>(), buf); }), "ee ee 00 00 00 00 ee ee");
}

TEST(List2Byte, appendsCountAndBytes)
{
    QByteArray data = "aabb"_hex;
    CByte2Val::list2Byte(std::vector<unsigned char>{0x00, 0x7f, 0xff}, data);
    EXPECT_EQ(hex(data), "aa bb 03 00 00 00 00 7f ff");
}

TEST(List2Byte, appendsFourZeroBytesForAnEmptyListOfBytes)
{
    QByteArray data = "aa"_hex;
    CByte2Val::list2Byte(std::vector<unsigned char>(), data);
    EXPECT_EQ(hex(data), "aa 00 00 00 00");
}

TEST(List2Byte, writesACountOfMoreThanOneByte)
{
    QByteArray data;
    CByte2Val::list2Byte(std::vector<unsigned char>(0x10203, 0xcc), data);
    EXPECT_EQ(hex(data.left(6)), "03 02 01 00 cc cc");
    EXPECT_EQ(data.size(), 4 + 0x10203);
}

TEST(List2Byte, leavesACopyOfTheArrayUnchanged)
{
    QByteArray data = "aa"_hex;
    const QByteArray copy = data;
    CByte2Val::list2Byte(std::vector<int>{1}, data);
    CByte2Val::list2Byte(std::vector<unsigned char>{2}, data);
    EXPECT_EQ(hex(data), "aa 01 00 00 00 01 00 00 00 01 00 00 00 02");
    EXPECT_EQ(hex(copy), "aa");
}

// Each element is stored in eight bytes but only four apart, so it overwrites the upper half of the previous one.

TEST(List2Byte, storesOnlyTheLowHalfOfAllDoublesButTheLast)
{
    const std::vector<double> list = {doubleOf(0x1817161514131211), doubleOf(0x2827262524232221),
                                      doubleOf(0x3837363534333231)};
    EXPECT_EQ(stored(20, [&](char* buf) { CByte2Val::list2Byte(list, buf); }),
              "ee ee 03 00 00 00 11 12 13 14 21 22 23 24 31 32 33 34 35 36 37 38 ee ee");
}

TEST(List2Byte, storesSixteenBytesForTwoDoubles)
{
    EXPECT_EQ(stored(16,
                     [](char* buf) {
                         CByte2Val::list2Byte(std::vector<double>{1.0, 2.0}, buf);
                     }),
              "ee ee 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00 40 ee ee");
}

TEST(List2Byte, storesAllBytesOfASingleDouble)
{
    EXPECT_EQ(stored(12, [](char* buf) { CByte2Val::list2Byte(std::vector<double>{-1.0}, buf); }),
              "ee ee 01 00 00 00 00 00 00 00 00 00 f0 bf ee ee");
}

TEST(List2Byte, storesOnlyTheCountOfAnEmptyListOfDoubles)
{
    EXPECT_EQ(stored(4, [](char* buf) { CByte2Val::list2Byte(std::vector<double>(), buf); }),
              "ee ee 00 00 00 00 ee ee");
}

// --- Reading lists --------------------------------------------------------------

// The four readers are tested with a list of two elements each, and with counts alone:
//
//   longestCount   the largest count whose size in bytes is a positive signed 32-bit number
//   nextCount      one more: the size wraps to the lowest number, and any length is enough
//   wrappedCount   the size wraps to at most the 4 bytes of the count

struct IntList {
    using Element = int;
    static constexpr const char* name = "ints";
    inline static const QByteArray bytes = "02000000"      // 0 count
                                           "78563412"      // 4 0x12345678
                                           "feffffff"_hex; // 8 -2
    static std::vector<int> elements() { return {0x12345678, -2}; }
    static constexpr const char* longestCount = "feffff1f"; // 4 + 4 * 0x1ffffffe = 0x7ffffffc
    static constexpr const char* nextCount = "ffffff1f";    // 4 + 4 * 0x1fffffff = 0x80000000
    static constexpr const char* wrappedCount = "00000040"; // 4 + 4 * 0x40000000 = 4
};

struct FloatList : IntList {
    using Element = float;
    static constexpr const char* name = "floats";
    inline static const QByteArray bytes = "02000000"      // 0 count
                                           "000020c0"      // 4 -2.5
                                           "9a99993d"_hex; // 8 0.075
    static std::vector<float> elements() { return {-2.5f, 0.075f}; }
};

// Four-byte integers, read as doubles.
struct DoubleList : IntList {
    using Element = double;
    static constexpr const char* name = "doubles";
    inline static const QByteArray bytes = "02000000"      // 0 count
                                           "feffffff"      // 4 -2
                                           "ffffff7f"_hex; // 8 2147483647
    static std::vector<double> elements() { return {-2.0, 2147483647.0}; }
};

struct ByteList {
    using Element = unsigned char;
    static constexpr const char* name = "bytes";
    inline static const QByteArray bytes = "02000000"  // 0 count
                                           "fe7f"_hex; // 4 the bytes
    static std::vector<unsigned char> elements() { return {0xfe, 0x7f}; }
    static constexpr const char* longestCount = "fbffff7f"; // 4 + 0x7ffffffb = 0x7fffffff
    static constexpr const char* nextCount = "fcffff7f";    // 4 + 0x7ffffffc = 0x80000000
    static constexpr const char* wrappedCount = "fcffffff"; // 4 + 0xfffffffc = 0
};

template <typename List>
class Byte2List : public testing::Test {
protected:
    using Elements = std::vector<typename List::Element>;

    // Reads from a heap block of exactly these bytes.
    static int read(const QByteArray& bytes, Elements& out) { return read(bytes, bytes.size(), out); }
    static int read(const QByteArray& bytes, int len, Elements& out)
    {
        return CByte2Val::byte2List(heapBytes(bytes).data(), len, out);
    }

    static inline const Elements old = {7, 8, 9};
};

class ListNames {
public:
    template <typename List>
    static std::string GetName(int)
    {
        return List::name;
    }
};

using Lists = testing::Types<IntList, FloatList, DoubleList, ByteList>;
TYPED_TEST_SUITE(Byte2List, Lists, ListNames);

TYPED_TEST(Byte2List, readsTheElements)
{
    typename TestFixture::Elements out;
    EXPECT_EQ(TestFixture::read(TypeParam::bytes, out), TypeParam::bytes.size());
    EXPECT_EQ(out, TypeParam::elements());
}

TYPED_TEST(Byte2List, appendsToAFilledVector)
{
    auto out = TestFixture::old;
    EXPECT_EQ(TestFixture::read(TypeParam::bytes, out), TypeParam::bytes.size());

    auto expected = TestFixture::old;
    for (auto element : TypeParam::elements())
        expected.push_back(element);
    EXPECT_EQ(out, expected);
}

TYPED_TEST(Byte2List, appendsASecondList)
{
    typename TestFixture::Elements out;
    TestFixture::read(TypeParam::bytes, out);
    TestFixture::read(TypeParam::bytes, out);
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0], out[2]);
    EXPECT_EQ(out[1], out[3]);
}

TYPED_TEST(Byte2List, ignoresBytesAfterTheList)
{
    typename TestFixture::Elements out;
    EXPECT_EQ(TestFixture::read(TypeParam::bytes + "ff"_hex, out), TypeParam::bytes.size());
    EXPECT_EQ(out, TypeParam::elements());
}

TYPED_TEST(Byte2List, refusesEveryShorterBufferAndLeavesTheVector)
{
    for (int size = 0; size < TypeParam::bytes.size(); ++size) {
        SCOPED_TRACE(size);
        auto out = TestFixture::old;
        EXPECT_EQ(TestFixture::read(TypeParam::bytes.left(size), out), 0);
        EXPECT_EQ(out, TestFixture::old);
    }
}

TYPED_TEST(Byte2List, usesOnlyTheGivenLength)
{
    auto out = TestFixture::old;
    for (int len : {3, 0, -1, intMin, int(TypeParam::bytes.size()) - 1}) {
        SCOPED_TRACE(len);
        EXPECT_EQ(TestFixture::read(TypeParam::bytes, len, out), 0);
        EXPECT_EQ(out, TestFixture::old);
    }
}

TYPED_TEST(Byte2List, acceptsTheCountAloneForAnEmptyList)
{
    auto out = TestFixture::old;
    EXPECT_EQ(TestFixture::read("00000000"_hex, out), 4);
    EXPECT_EQ(TestFixture::read("00000000 01"_hex, out), 4);
    EXPECT_EQ(out, TestFixture::old);
}

TYPED_TEST(Byte2List, refusesTheLargestCountThatDoesNotWrap)
{
    auto out = TestFixture::old;
    EXPECT_EQ(TestFixture::read(QByteArray::fromHex(TypeParam::longestCount), out), 0);
    EXPECT_EQ(out, TestFixture::old);
}

// The size is a signed 32-bit number. A count that wraps it passes the length check, and the vector cannot grow.
TYPED_TEST(Byte2List, propagatesTheAllocationFailureOfACountThatWraps)
{
    for (const char* count : {TypeParam::nextCount, TypeParam::wrappedCount, "00000080", "ffffffff"}) {
        SCOPED_TRACE(count);
        auto out = TestFixture::old;
        EXPECT_TRUE(failsToAllocate([&] { TestFixture::read(QByteArray::fromHex(count), out); }));
        EXPECT_EQ(out, TestFixture::old);
    }
}

TEST(Byte2List, needsTwelveBytesForTwoInts)
{
    const std::vector<char> bytes = heapBytes("02000000 01000000 02000000 03"_hex);
    for (const auto& [len, consumed] : {std::pair(11, 0), std::pair(12, 12), std::pair(13, 12)}) {
        SCOPED_TRACE(len);
        std::vector<int> out;
        EXPECT_EQ(CByte2Val::byte2List(bytes.data(), len, out), consumed);
        EXPECT_EQ(out, (consumed == 0 ? std::vector<int>() : std::vector<int>{1, 2}));
    }
}

TEST(Byte2List, keepsTheBitsOfFloats)
{
    std::vector<float> out;
    const std::vector<char> bytes = heapBytes("04000000 0000807f 4523817f 010000c0 00000080"_hex);
    EXPECT_EQ(CByte2Val::byte2List(bytes.data(), 20, out), 20);
    EXPECT_EQ(images(out), "7f800000 7f812345 c0000001 80000000");
}

TEST(Byte2List, readsSignedIntegersAsDoubles)
{
    std::vector<double> out;
    EXPECT_EQ(CByte2Val::byte2List(heapBytes("01000000 feffffff"_hex).data(), 8, out), 8);
    EXPECT_EQ(CByte2Val::byte2List(heapBytes("02000000 00000080 01000001"_hex).data(), 12, out), 12);
    EXPECT_EQ(out, (std::vector<double>{-2.0, -2147483648.0, 16777217.0}));
}

TEST(Byte2List, cannotReadADoubleListWrittenByList2Byte)
{
    std::vector<char> bytes(16);
    CByte2Val::list2Byte(std::vector<double>{1.0, 2.0}, bytes.data());
    std::vector<double> out;
    EXPECT_EQ(CByte2Val::byte2List(bytes.data(), int(bytes.size()), out), 12);
    EXPECT_EQ(out, (std::vector<double>{0.0, 0.0}));
}

TEST(Byte2List, readsTheOtherWrittenListsBack)
{
    const std::vector<int> ints = {0, -1, intMin, intMax};
    QByteArray data;
    CByte2Val::list2Byte(ints, data);
    std::vector<int> readInts;
    EXPECT_EQ(CByte2Val::byte2List(data.constData(), data.size(), readInts), 20);
    EXPECT_EQ(readInts, ints);

    const std::vector<unsigned char> bytes = {0, 1, 0x80, 0xff};
    data.clear();
    CByte2Val::list2Byte(bytes, data);
    std::vector<unsigned char> readBytes;
    EXPECT_EQ(CByte2Val::byte2List(data.constData(), data.size(), readBytes), 8);
    EXPECT_EQ(readBytes, bytes);

    const std::vector<float> floats = {0.1f, -infinity, 1e-45f};
    std::vector<char> buf(16);
    CByte2Val::list2Byte(floats, buf.data());
    std::vector<float> readFloats;
    EXPECT_EQ(CByte2Val::byte2List(buf.data(), 16, readFloats), 16);
    EXPECT_EQ(readFloats, floats);
}

// --- Writing buffers ------------------------------------------------------------

TEST(Ushorts2Buffer, storesTheLowSixteenBitsOfEach)
{
    const std::vector<int> values = {0x12345, 65535, 65536, -2, intMin, 40000};
    EXPECT_EQ(stored(12, [&](char* buf) { CByte2Val::ushorts2Buffer(values, buf); }),
              "ee ee 45 23 ff ff 00 00 fe ff 00 00 40 9c ee ee");
}

TEST(Ints2Buffer, storesFourBytesEach)
{
    const std::vector<int> values = {0x12345678, -2, intMin};
    EXPECT_EQ(stored(12, [&](char* buf) { CByte2Val::ints2Buffer(values, buf); }),
              "ee ee 78 56 34 12 fe ff ff ff 00 00 00 80 ee ee");
}

TEST(Floats2Buffer, storesTheImageOfEach)
{
    const std::vector<float> values = {1.0f, -0.0f, floatOf(0x7f812345)};
    EXPECT_EQ(stored(12, [&](char* buf) { CByte2Val::floats2Buffer(values, buf); }),
              "ee ee 00 00 80 3f 00 00 00 80 45 23 81 7f ee ee");
}

TEST(Doubles2Buffer, storesAllEightBytesOfEach)
{
    const std::vector<double> values = {doubleOf(0x1817161514131211), -1.0};
    EXPECT_EQ(stored(16, [&](char* buf) { CByte2Val::doubles2Buffer(values, buf); }),
              "ee ee 11 12 13 14 15 16 17 18 00 00 00 00 00 00 f0 bf ee ee");
}

TEST(Values2Buffer, storeNothingForAnEmptyVector)
{
    EXPECT_EQ(stored(2, [](char* buf) { CByte2Val::ushorts2Buffer({}, buf); }), "ee ee ee ee ee ee");
    EXPECT_EQ(stored(2, [](char* buf) { CByte2Val::ints2Buffer({}, buf); }), "ee ee ee ee ee ee");
    EXPECT_EQ(stored(2, [](char* buf) { CByte2Val::floats2Buffer({}, buf); }), "ee ee ee ee ee ee");
    EXPECT_EQ(stored(2, [](char* buf) { CByte2Val::doubles2Buffer({}, buf); }), "ee ee ee ee ee ee");
}

// --- Reading buffers ------------------------------------------------------------

TEST(Buffer2Ints, readsFourBytesEach)
{
    std::vector<int> out;
    EXPECT_EQ(CByte2Val::buffer2Ints(heapBytes("78563412 feffffff 00000080"_hex).data(), 3, out), 12);
    EXPECT_EQ(out, (std::vector<int>{0x12345678, -2, intMin}));
}

TEST(Buffer2UShorts, readsUnsignedTwoByteValues)
{
    std::vector<int> out;
    EXPECT_EQ(CByte2Val::buffer2UShorts(heapBytes("ffff"_hex).data(), 1, out), 2);
    EXPECT_EQ(out, std::vector<int>{65535});
    EXPECT_EQ(CByte2Val::buffer2UShorts(heapBytes("0000 3412 ff7f 0080"_hex).data(), 4, out), 8);
    EXPECT_EQ(out, (std::vector<int>{0, 0x1234, 32767, 32768}));
}

TEST(Buffer2Shorts, readsSignedTwoByteValues)
{
    std::vector<int> out;
    EXPECT_EQ(CByte2Val::buffer2Shorts(heapBytes("ffff"_hex).data(), 1, out), 2);
    EXPECT_EQ(out, std::vector<int>{-1});
    EXPECT_EQ(CByte2Val::buffer2Shorts(heapBytes("0000 3412 ff7f 0080"_hex).data(), 4, out), 8);
    EXPECT_EQ(out, (std::vector<int>{0, 0x1234, 32767, -32768}));
}

TEST(Buffer2Floats, copiesTheImageOfEach)
{
    std::vector<float> out;
    EXPECT_EQ(CByte2Val::buffer2Floats(heapBytes("0000803f 00000080 4523817f"_hex).data(), 3, out), 12);
    EXPECT_EQ(images(out), "3f800000 80000000 7f812345");
}

TEST(Buffer2Doubles, copiesTheImageOfEach)
{
    std::vector<double> out;
    const std::vector<char> bytes = heapBytes("1112131415161718 000000000000f0bf 4523010000 00f07f"_hex);
    EXPECT_EQ(CByte2Val::buffer2Doubles(bytes.data(), 3, out), 24);
    EXPECT_EQ(doubleImages(out), "1817161514131211 bff0000000000000 7ff0000000012345");
}

// Bytes for two elements of the widest reader.
static const QByteArray twoElements(16, char(1));

// Checks of one reader that hold for all five.
template <typename Element>
static void expectToReplace(int (*read)(const char*, int, std::vector<Element>&), int width)
{
    const std::vector<char> bytes = heapBytes(twoElements.left(2 * width));

    std::vector<Element> longer(5, Element(9));
    EXPECT_EQ(read(bytes.data(), 2, longer), 2 * width);
    EXPECT_EQ(longer.size(), 2u) << "shrinks";
    EXPECT_NE(longer.front(), Element(9));
    EXPECT_EQ(longer.front(), longer.back());

    std::vector<Element> shorter(1, Element(9));
    EXPECT_EQ(read(bytes.data(), 2, shorter), 2 * width);
    EXPECT_EQ(shorter, longer) << "grows";

    EXPECT_EQ(read(heapBytes("").data(), 0, shorter), 0);
    EXPECT_TRUE(shorter.empty()) << "a count of 0 clears";

    std::vector<Element> kept(3, Element(9));
    EXPECT_THROW(read(bytes.data(), -1, kept), std::length_error);
    EXPECT_THROW(read(bytes.data(), intMin, kept), std::length_error);
    EXPECT_EQ(kept, std::vector<Element>(3, Element(9))) << "a negative count fails";
}

TEST(Buffer2Ints, replacesTheVector)
{
    expectToReplace(CByte2Val::buffer2Ints, 4);
}
TEST(Buffer2UShorts, replacesTheVector)
{
    expectToReplace(CByte2Val::buffer2UShorts, 2);
}
TEST(Buffer2Shorts, replacesTheVector)
{
    expectToReplace(CByte2Val::buffer2Shorts, 2);
}
TEST(Buffer2Floats, replacesTheVector)
{
    expectToReplace(CByte2Val::buffer2Floats, 4);
}
TEST(Buffer2Doubles, replacesTheVector)
{
    expectToReplace(CByte2Val::buffer2Doubles, 8);
}

TEST(Buffer2Doubles, readsWhatDoubles2BufferWrote)
{
    const std::vector<double> values = {0.1, -1e308, 5e-324};
    std::vector<char> bytes(24);
    CByte2Val::doubles2Buffer(values, bytes.data());
    std::vector<double> out;
    EXPECT_EQ(CByte2Val::buffer2Doubles(bytes.data(), 3, out), 24);
    EXPECT_EQ(out, values);
}

// --- calcLimit ------------------------------------------------------------------

// The images of upper and lower limit of these values, which are 100 and -100 before.
static std::string limits(const std::vector<float>& values)
{
    double upper = 100;
    double lower = -100;
    CByte2Val::calcLimit(values, upper, lower);
    return doubleImages({upper, lower});
}

TEST(CalcLimit, findsTheLargestAndTheSmallest)
{
    const std::string threeAndOne = doubleImages({3.0, 1.0});
    EXPECT_EQ(limits({3, 1, 2}), threeAndOne);
    EXPECT_EQ(limits({1, 2, 3}), threeAndOne);
    EXPECT_EQ(limits({2, 3, 1}), threeAndOne);
    EXPECT_EQ(limits({-1, -3, -2}), doubleImages({-1.0, -3.0}));
}

TEST(CalcLimit, returnsASingleElementAsBothLimits)
{
    EXPECT_EQ(limits({-5}), doubleImages({-5.0, -5.0}));
}

TEST(CalcLimit, leavesTheLimitsForAnEmptyVector)
{
    EXPECT_EQ(limits({}), doubleImages({100.0, -100.0}));
}

TEST(CalcLimit, widensTheFloats)
{
    EXPECT_EQ(limits({0.1f}), "3fb99999a0000000 3fb99999a0000000"); // 0.1 as a double ends in ...9a
    EXPECT_EQ(limits({0, 0.1f, -0.1f}), "3fb99999a0000000 bfb99999a0000000");
}

TEST(CalcLimit, skipsANanAfterTheFirstElement)
{
    EXPECT_EQ(limits({2, notANumber, 3, notANumber, 1}), doubleImages({3.0, 1.0}));
}

TEST(CalcLimit, keepsANanInTheFirstElement)
{
    EXPECT_EQ(limits({notANumber, 3, 1}), "7ff8000000000000 7ff8000000000000");
    EXPECT_EQ(limits({notANumber}), "7ff8000000000000 7ff8000000000000");
}

TEST(CalcLimit, keepsTheFirstOfTwoZeros)
{
    EXPECT_EQ(limits({0.0f, -0.0f}), "0000000000000000 0000000000000000");
    EXPECT_EQ(limits({-0.0f, 0.0f}), "8000000000000000 8000000000000000");
}

TEST(CalcLimit, keepsTheFirstOfTwoZerosFarApart)
{
    std::vector<float> values(80, 1.0f);
    values[5] = -0.0f;
    values[32] = 0.0f;
    EXPECT_EQ(limits(values), "3ff0000000000000 8000000000000000"); // 1 and -0
    std::swap(values[5], values[32]);
    EXPECT_EQ(limits(values), "3ff0000000000000 0000000000000000");

    values.assign(80, -1.0f);
    values[5] = -0.0f;
    values[32] = 0.0f;
    EXPECT_EQ(limits(values), "8000000000000000 bff0000000000000"); // -0 and -1
    std::swap(values[5], values[32]);
    EXPECT_EQ(limits(values), "0000000000000000 bff0000000000000");
}

TEST(CalcLimit, treatsInfinitiesAsNumbers)
{
    EXPECT_EQ(limits({1, infinity, -infinity}), "7ff0000000000000 fff0000000000000");
    EXPECT_EQ(limits({infinity, 1}), doubleImages({infinity, 1}));
}

// --- float2Short ----------------------------------------------------------------

static std::vector<int> toShorts(const std::vector<float>& values, float upper, float lower)
{
    std::vector<int> out;
    CByte2Val::float2Short(values, upper, lower, out);
    return out;
}

TEST(Float2Short, mapsTheLimitsOnto65535And0)
{
    EXPECT_EQ(toShorts({10, -10}, 10, -10), (std::vector<int>{65535, 0}));
    EXPECT_EQ(toShorts({-10, 10}, -10, 10), (std::vector<int>{65535, 0})) << "upper limit below lower limit";
}

TEST(Float2Short, truncatesTowardsZero)
{
    EXPECT_EQ(toShorts({0.5f, -0.5f}, 1, 0), (std::vector<int>{32767, -32767})); // from 32767.5
    EXPECT_EQ(toShorts({0.99f, -0.99f}, 65535, 0), (std::vector<int>{0, 0}));
}

TEST(Float2Short, doesNotClamp)
{
    EXPECT_EQ(toShorts({1.5f, -1, 2}, 1, 0), (std::vector<int>{98302, -65535, 131070})); // from 98302.5
}

TEST(Float2Short, replacesTheVector)
{
    std::vector<int> out(5, 9);
    CByte2Val::float2Short({1, 0}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<int>{65535, 0})) << "shrinks";

    CByte2Val::float2Short({0, 1, 0.5f}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<int>{0, 65535, 32767})) << "grows";
}

TEST(Float2Short, leavesTheVectorIfTheInputIsEmpty)
{
    std::vector<int> out = {1, 2};
    CByte2Val::float2Short({}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<int>{1, 2}));
}

TEST(Float2Short, storesIntMinForEveryElementIfTheLimitsAreEqual)
{
    EXPECT_EQ(toShorts({5, 6, 4, notANumber, infinity}, 5, 5), std::vector<int>(5, intMin));
    EXPECT_EQ(toShorts({0, -0.0f}, 0, -0.0f), std::vector<int>(2, intMin));
}

TEST(Float2Short, storesIntMinForNan)
{
    EXPECT_EQ(toShorts({notANumber, infinity, -infinity, 1}, 1, 0), (std::vector<int>{intMin, intMin, intMin, 65535}));
    EXPECT_EQ(toShorts({0, 1}, notANumber, 0), std::vector<int>(2, intMin));
    EXPECT_EQ(toShorts({0, 1}, 1, notANumber), std::vector<int>(2, intMin));
    EXPECT_EQ(toShorts({0, infinity}, infinity, 0), (std::vector<int>{0, intMin}));
}

TEST(Float2Short, storesIntMinForValuesBeyondInt)
{
    EXPECT_EQ(toShorts({32768.49609375f, -32768.49609375f}, 1, 0), (std::vector<int>{2147483392, -2147483392}));
    EXPECT_EQ(toShorts({32768.5f}, 1, 0), std::vector<int>{intMin});         // 2147483648
    EXPECT_EQ(toShorts({-32768.5f}, 1, 0), std::vector<int>{intMin});        // -2147483648, which fits an int
    EXPECT_EQ(toShorts({-32768.50390625f}, 1, 0), std::vector<int>{intMin}); // -2147483904
    EXPECT_EQ(toShorts({65536 * 65536.0f, 3e38f, -3e38f}, 1, 0), std::vector<int>(3, intMin)); // not the low 32 bits
}

TEST(Float2Short, overflowsIfTheRangeExceedsFloat)
{
    EXPECT_EQ(toShorts({0, 3e38f}, 3e38f, -3e38f), (std::vector<int>{0, intMin})); // finite / inf, inf / inf
}

// The comments show the closest other way to compute each value and its different result.
TEST(Float2Short, roundsToSinglePrecisionAtEachStep)
{
    EXPECT_EQ(toShorts({0.42f}, 0.7f, 0.1f), std::vector<int>{34952});    // all in double: 34951
    EXPECT_EQ(toShorts({1.57f}, 10, -10), std::vector<int>{37911});       // difference in double: 37912
    EXPECT_EQ(toShorts({142.855f}, 220, -0.1f), std::vector<int>{42564}); // range in double: 42565
    EXPECT_EQ(toShorts({3.714f}, 7, 0), std::vector<int>{34770});         // quotient in double: 34771
    EXPECT_EQ(toShorts({2.157f}, 5, 1), std::vector<int>{18956});         // product in double: 18955
    EXPECT_EQ(toShorts({74.31f}, 100, 1), std::vector<int>{48528});       // times (65535 / range): 48529
    EXPECT_EQ(toShorts({2.6f}, 3, 0), std::vector<int>{56796});           // times 65535 first: 56797
    EXPECT_EQ(toShorts({2.557f}, 7, 0), std::vector<int>{23938});         // times (1 / range): 23939
}

// --- short2float ----------------------------------------------------------------

static std::vector<float> fromShorts(const std::vector<int>& raw, float upper, float lower)
{
    std::vector<float> out;
    CByte2Val::short2float(raw, upper, lower, out);
    return out;
}

TEST(Short2float, maps65535And0OntoTheLimits)
{
    EXPECT_EQ(fromShorts({65535, 0}, 10, -10), (std::vector<float>{10, -10}));
    EXPECT_EQ(fromShorts({65535, 0}, -10, 10), (std::vector<float>{-10, 10})) << "upper limit below lower limit";
    EXPECT_EQ(fromShorts({0, 1, 65535}, 5, 5), (std::vector<float>{5, 5, 5})) << "equal limits";
}

TEST(Short2float, doesNotClamp)
{
    EXPECT_EQ(fromShorts({131070, -65535}, 10, -10), (std::vector<float>{30, -30}));
    EXPECT_EQ(images(fromShorts({intMin, intMax}, 1, 0)), "c7000080 47000080"); // both 32768.5
}

TEST(Short2float, replacesTheVector)
{
    std::vector<float> out(5, 9);
    CByte2Val::short2float({0, 65535}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<float>{0, 1})) << "shrinks";

    CByte2Val::short2float({65535, 0, 65535}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<float>{1, 0, 1})) << "grows";
}

TEST(Short2float, leavesTheVectorIfTheInputIsEmpty)
{
    std::vector<float> out = {1, 2};
    CByte2Val::short2float({}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<float>{1, 2}));
}

TEST(Short2float, overflowsIfTheRangeExceedsFloat)
{
    EXPECT_EQ(images(fromShorts({1}, 3e38f, -3e38f)), "7f800000");
}

// The comments show the closest other way to compute each value and its different last digits.
TEST(Short2float, roundsAtEachStep)
{
    EXPECT_EQ(images(fromShorts({16777217}, 1, 0)), "43800081");   // raw converted to float before the division: ...80
    EXPECT_EQ(images(fromShorts({367}, 0.3f, 0.1f)), "3dcf1803");  // quotient kept in double: ...02
    EXPECT_EQ(images(fromShorts({1327}, 0.3f, 0.1f)), "3dd51809"); // range in double: ...08
    EXPECT_EQ(images(fromShorts({717}, 10, -10)), "c11c7fbc");     // product not rounded before the sum: ...bd
    EXPECT_EQ(images(fromShorts({307}, 10, -10)), "c11e803e");     // all in double: ...3f
    EXPECT_EQ(images(fromShorts({649}, 0.3f, 0.1f)), "3dd0db37");  // times range, then by 65535: ...38
    EXPECT_EQ(images(fromShorts({257}, 1, 0)), "3b808081");        // times (range / 65535): ...80
}

// --- ad2float -------------------------------------------------------------------

static std::vector<float> fromLine(const std::vector<int>& raw, double scale, double offset)
{
    std::vector<float> out;
    CByte2Val::ad2float(raw, scale, offset, out);
    return out;
}

TEST(Ad2float, multipliesByTheScaleAndAddsTheOffset)
{
    EXPECT_EQ(fromLine({100, 0, -100}, 0.5, 1.0), (std::vector<float>{51, 1, -49}));
    EXPECT_EQ(fromLine({intMin, intMax}, 1.0, 0.0), (std::vector<float>{-2147483648.0f, 2147483648.0f}));
}

TEST(Ad2float, replacesTheVector)
{
    std::vector<float> out(5, 9);
    CByte2Val::ad2float({1, 2}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<float>{1, 2})) << "shrinks";

    CByte2Val::ad2float({3, 4, 5}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<float>{3, 4, 5})) << "grows";
}

TEST(Ad2float, leavesTheVectorIfTheInputIsEmpty)
{
    std::vector<float> out = {1, 2};
    CByte2Val::ad2float({}, 1, 0, out);
    EXPECT_EQ(out, (std::vector<float>{1, 2}));
}

TEST(Ad2float, overflowsIfTheProductExceedsFloat)
{
    EXPECT_EQ(images(fromLine({10, -10}, 1e38, -1e39)),
              "7f800000 ff800000"); // in double precision the first would be 0
}

// The comments show the closest other way to compute each value and its different last digits.
TEST(Ad2float, roundsTheProductAndTheSum)
{
    EXPECT_EQ(images(fromLine({-157}, 0.1, 0.1)), "c1799999");   // product not rounded: ...9a
    EXPECT_EQ(images(fromLine({-18}, 0.1, 0.3)), "bfc00000");    // scale narrowed to float: ...01
    EXPECT_EQ(images(fromLine({-23}, 0.01, 0.7)), "3ef0a3d7");   // offset narrowed to float: ...d6
    EXPECT_EQ(images(fromLine({16777217}, 0.1, 0)), "49ccccce"); // raw narrowed to float: ...cd
    EXPECT_EQ(images(fromLine({33554435}, 0.1, 0)), "4a4cccce"); // all in single precision: ...cf
}
