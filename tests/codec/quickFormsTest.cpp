// Compares the quick forms with the plain forms.

#include "plainForms.h"

#include "byteRoom.h"
#include "floatRealItem.h"
#include "shortText.h"
#include "support/hex.h"

#include <gtest/gtest.h>

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
    const char* plainEnd = plainForms::grow(plain, count);
    EXPECT_EQ(quick.size(), plain.size());
    EXPECT_EQ(quick.capacity(), plain.capacity());
    EXPECT_EQ(quickEnd - quick.constData(), plainEnd - plain.constData());
    EXPECT_EQ(hex(quick.left(before.size())), hex(plain.left(before.size())));
    EXPECT_EQ(quick.constData()[quick.size()], '\0');
    EXPECT_EQ(quick.data_ptr()->capacityReserved, plain.data_ptr()->capacityReserved);
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
