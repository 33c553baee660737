// Compares the quick forms with the plain forms.

#include "plainForms.h"

#include "byteRoom.h"
#include "floatRealItem.h"
#include "samples.h"
#include "shortText.h"
#include "support/hex.h"
#include "support/reservation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

using gqdb::FloatRealData;
using gqdb::FloatRealItem;

// --- Growth -------------------------------------------------------------------------------------------------------

static void growsAsThePlainFormDoes(const QByteArray& before, int room, long long count)
{
    QByteArray quick(before.constData(), before.size());
    QByteArray plain(before.constData(), before.size());
    quick.reserve(room);
    plain.reserve(room);
    const char* quickEnd = gqdb::grow(quick, count);
    const char* plainEnd = plainForms::growByResize(plain, count);
    EXPECT_EQ(quick.size(), plain.size());
    EXPECT_EQ(quick.capacity(), plain.capacity());
    EXPECT_EQ(quickEnd - quick.constData(), plainEnd - plain.constData());
    EXPECT_EQ(hex(quick.left(before.size())), hex(plain.left(before.size())));
    EXPECT_EQ(quick.constData()[quick.size()], '\0');
    EXPECT_EQ(isReserved(quick), isReserved(plain));
}

TEST(Grow, matchesThePlainForm)
{
    for (int size = 0; size < 40; ++size) {
        for (int room : {0, size, size + 1, size + 7, size + 8, size + 9, 200}) {
            for (int count : {0, 1, 7, 8, 9, 100}) {
                SCOPED_TRACE(testing::Message() << size << " bytes, room " << room << ", " << count << " more");
                growsAsThePlainFormDoes(QByteArray(size, 'a'), room, count);
            }
        }
    }
}

TEST(Grow, detachesAnArrayWithRoomFromItsCopy)
{
    QByteArray data = "aabb"_hex;
    data.reserve(100);
    const QByteArray copy = data;
    *gqdb::grow(data, 1) = '\xcc';
    EXPECT_EQ(hex(data), "aa bb cc");
    EXPECT_EQ(hex(copy), "aa bb");
}

// --- Short texts --------------------------------------------------------------------------------------------------

static std::string letters(size_t size)
{
    std::string text;
    for (size_t i = 0; i < size; ++i)
        text += static_cast<char>('a' + i % 26);
    return text;
}

TEST(CopyText, matchesThePlainForm)
{
    for (size_t size = 0; size < 40; ++size) {
        const std::string text = letters(size);
        std::string quick(42, '.');
        std::string plain(42, '.');
        gqdb::copyText(text.data(), text.size(), &quick[1]);
        plainForms::copyText(text, &plain[1]);
        EXPECT_EQ(quick, plain);
    }
}

TEST(TakeShortText, readsATextThatFitsAnEmptyStringWithoutAllocation)
{
    const std::string bytes = letters(40);
    for (size_t size = 0; size <= std::string().capacity(); ++size) {
        std::string text;
        EXPECT_TRUE(gqdb::takeShortText(bytes.data(), size, 15, text));
        EXPECT_EQ(text, bytes.substr(0, size));
        EXPECT_EQ(text.c_str()[size], '\0');
        EXPECT_EQ(text.capacity(), std::string().capacity());
    }
}

TEST(TakeShortText, leavesAllOthersToThePlainForm)
{
    const std::string bytes = letters(40);
    std::string text;
    EXPECT_FALSE(gqdb::takeShortText(bytes.data(), 16, 40, text));
    EXPECT_FALSE(gqdb::takeShortText(bytes.data(), 3, 14, text));
    EXPECT_EQ(text, "");

    std::string filled = "x";
    EXPECT_FALSE(gqdb::takeShortText(bytes.data(), 3, 40, filled));
    EXPECT_EQ(filled, "x");

    std::string roomy;
    roomy.reserve(100);
    EXPECT_FALSE(gqdb::takeShortText(bytes.data(), 3, 40, roomy));
    EXPECT_GE(roomy.capacity(), 100u);
}

// --- Items of a list of FloatRealData -----------------------------------------------------------------------------

static FloatRealData someRecord()
{
    FloatRealData record;
    record.pointId = 0x04030201;
    record.value = -1.5f;
    record.stamp1 = 0x14131211;
    record.stamp2 = 0x24232221;
    record.flag1 = 0x31;
    record.flag2 = 0x32;
    return record;
}

TEST(FloatRealItem, writesLikeThePlainForm)
{
    FloatRealItem item;
    item = someRecord();
    EXPECT_EQ(hex(QByteArray(item.bytes, 18)), "01 02 03 04 00 00 c0 bf 11 12 13 14 21 22 23 24 32 31");
    EXPECT_EQ(hex(QByteArray(item.bytes, 18)), hex(plainForms::bytesOf(someRecord())));
}

TEST(FloatRealItem, readsLikeThePlainForm)
{
    const QByteArray bytes = "01020304 0000c0bf 11121314 21222324 3231"_hex;
    const FloatRealData quick = *reinterpret_cast<const FloatRealItem*>(bytes.constData());
    const FloatRealData plain = plainForms::recordOf(bytes);
    for (const FloatRealData& record : {quick, plain}) {
        EXPECT_EQ(record.pointId, 0x04030201u);
        EXPECT_EQ(record.value, -1.5f);
        EXPECT_EQ(record.stamp1, 0x14131211u);
        EXPECT_EQ(record.stamp2, 0x24232221u);
        EXPECT_EQ(record.flag1, 0x31);
        EXPECT_EQ(record.flag2, 0x32);
    }
}

// --- Loops for the widest vectors ---------------------------------------------------------------------------------

static const int oddCount = 1003; // not a multiple of any vector's length

static std::vector<float> someFloats()
{
    std::vector<float> values(oddCount);
    for (int i = 0; i < oddCount; ++i)
        values[static_cast<size_t>(i)] = std::sin(static_cast<float>(i)) * 1000.0f;
    values[17] = std::numeric_limits<float>::quiet_NaN();
    values[18] = std::numeric_limits<float>::infinity();
    values[19] = -std::numeric_limits<float>::infinity();
    values[20] = -0.0f;
    values[21] = 3e38f;
    values[22] = 1e-42f;
    return values;
}

static std::vector<int> someInts()
{
    std::vector<int> values(oddCount);
    for (int i = 0; i < oddCount; ++i)
        values[static_cast<size_t>(i)] = i * 65 + i * i * 2000;
    values[17] = std::numeric_limits<int>::max();
    values[18] = std::numeric_limits<int>::min();
    return values;
}

static std::vector<char> someShorts()
{
    std::vector<char> bytes(2 * oddCount);
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 37 + i / 256);
    return bytes;
}

// Compares images, because a NaN equals nothing.
static void expectSameImages(const std::vector<float>& quick, const std::vector<float>& plain)
{
    for (size_t i = 0; i < quick.size(); ++i)
        EXPECT_EQ(std::memcmp(&quick[i], &plain[i], sizeof(float)), 0) << i << ": " << quick[i] << ", " << plain[i];
}

struct Range {
    float upper;
    float lower;
};

static const Range ranges[] = {{1000, -1000}, {0.1f, -0.3f}, {5, 5}, {3e38f, -3e38f}, {-2, 7}};

TEST(Quantise, matchesThePlainForm)
{
    const std::vector<float> values = someFloats();
    for (const Range& range : ranges) {
        std::vector<int> quick(oddCount);
        std::vector<int> plain(oddCount);
        gqdb::quantise(values.data(), oddCount, range.upper, range.lower, quick.data());
        plainForms::quantise(values.data(), oddCount, range.upper, range.lower, plain.data());
        EXPECT_EQ(quick, plain);

        std::vector<char> quickBytes(2 * oddCount);
        std::vector<char> plainBytes(2 * oddCount);
        gqdb::quantiseToBytes(values.data(), oddCount, range.upper, range.lower, quickBytes.data());
        plainForms::quantiseToBytes(values.data(), oddCount, range.upper, range.lower, plainBytes.data());
        EXPECT_EQ(quickBytes, plainBytes);
    }
}

TEST(Unquantise, matchesThePlainForm)
{
    const std::vector<int> raw = someInts();
    const std::vector<char> bytes = someShorts();
    for (const Range& range : ranges) {
        std::vector<float> quick(oddCount);
        std::vector<float> plain(oddCount);
        gqdb::unquantise(raw.data(), oddCount, range.upper, range.lower, quick.data());
        plainForms::unquantise(raw.data(), oddCount, range.upper, range.lower, plain.data());
        expectSameImages(quick, plain);
        gqdb::unquantiseBytes(bytes.data(), oddCount, range.upper, range.lower, quick.data());
        plainForms::unquantiseBytes(bytes.data(), oddCount, range.upper, range.lower, plain.data());
        expectSameImages(quick, plain);
    }
}

TEST(Scale, matchesThePlainForm)
{
    const std::vector<int> raw = someInts();
    const std::vector<char> bytes = someShorts();
    for (const double scale : {0.1, 1.0 / 3, -1e30, 0.0}) {
        for (const double offset : {0.0, 0.7, -1e9}) {
            std::vector<float> quick(oddCount);
            std::vector<float> plain(oddCount);
            gqdb::scaleRaw(raw.data(), oddCount, scale, offset, quick.data());
            plainForms::scaleRaw(raw.data(), oddCount, scale, offset, plain.data());
            expectSameImages(quick, plain);
            gqdb::scaleBytes(bytes.data(), oddCount, scale, offset, quick.data());
            plainForms::scaleBytes(bytes.data(), oddCount, scale, offset, plain.data());
            expectSameImages(quick, plain);
        }
    }
}
