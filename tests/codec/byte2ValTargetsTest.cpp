// Arrays that a program may pass to the writers: shared with a copy, on borrowed memory, with reserved capacity.

#include "byte2Val.h"
#include "socketApi.h"
#include "support/hex.h"

#include <gtest/gtest.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

// Calls every operation that appends once.
static void appendAll(QByteArray& data)
{
    CByte2Val::short2Byte(0x0201, data);
    CByte2Val::short2Byte(0x0403u, data);
    CByte2Val::int2Byte(0x08070605, data);
    CByte2Val::int2Byte(0x0c0b0a09u, data);
    CByte2Val::long2Byte(0x14131211100f0e0dULL, data);
    CByte2Val::float2Byte(1.0f, data);
    CByte2Val::double2Byte(1.0, data);
    CByte2Val::str2Byte(std::string("a"), data);
    CByte2Val::str2Byte(QString("b"), data);
    CSocketAPI::addHeader(1, 0, 0, 0, 0, data);
}

static const char* const allAppended = "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 "
                                       "00 00 80 3f 00 00 00 00 00 00 f0 3f 01 00 61 01 00 62 "
                                       "68 00 00 00 00 00 00 00 00 01";

TEST(Writers, leaveACopyOfTheArrayUnchanged)
{
    QByteArray data = "aabb"_hex;
    const QByteArray copy = data;
    appendAll(data);
    EXPECT_EQ(hex(copy), "aa bb");
    EXPECT_EQ(hex(data), std::string("aa bb ") + allAppended);
}

TEST(Writers, doNotModifyBorrowedBytes)
{
    char bytes[] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66};
    QByteArray data = QByteArray::fromRawData(bytes, 2);
    appendAll(data);
    EXPECT_EQ(hex(data), std::string("11 22 ") + allAppended);
    QByteArray frame = QByteArray::fromRawData(bytes, 5);
    EXPECT_EQ(CSocketAPI::addEnd(frame), 1);
    EXPECT_EQ(hex(frame), "11 fb ff ff ff 00 00 16");
    EXPECT_EQ(hex(QByteArray(bytes, sizeof bytes)), "11 22 33 44 55 66");
}

TEST(Writers, stayWithinTheReservedCapacity)
{
    QByteArray data;
    data.reserve(100);
    const char* first = data.constData();
    appendAll(data);
    EXPECT_EQ(CSocketAPI::addEnd(data), 1);
    EXPECT_EQ(data.constData(), first);
    EXPECT_GE(data.capacity(), 100);
}

TEST(Writers, terminateTheArrayWithAZeroByte)
{
    QByteArray data(20, 'x');
    data.reserve(100);
    data.resize(10); // the bytes after it are x
    CByte2Val::int2Byte(-1, data);
    ASSERT_EQ(data.size(), 14);
    EXPECT_EQ(data.constData()[14], '\0');
}

TEST(Byte2Str, reservesTheLengthOfTheField)
{
    QByteArray field(2 + 1000, 'x');
    field[0] = char(0xe8); // 1000
    field[1] = 3;
    std::string text;
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), field.size(), text), 1002);
    EXPECT_GE(text.capacity(), 1000u);

    std::string longer = "ab";
    std::string expected = longer;
    expected.reserve(1000); // not 1002
    expected.append(1000, 'x');
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), field.size(), longer), 1002);
    EXPECT_EQ(longer.capacity(), expected.capacity());

    std::string roomy = "ab";
    roomy.reserve(5000);
    const char* first = roomy.data();
    EXPECT_EQ(CByte2Val::byte2Str(field.constData(), field.size(), roomy), 1002);
    EXPECT_EQ(roomy.data(), first); // capacity is kept
    EXPECT_EQ(roomy.size(), 1002u);

    roomy.clear();
    const QByteArray shortField = "0300616263"_hex + QByteArray(30, 'x');
    EXPECT_EQ(CByte2Val::byte2Str(shortField.constData(), shortField.size(), roomy), 5);
    EXPECT_EQ(roomy.data(), first);
    EXPECT_EQ(roomy, "abc");
}

TEST(Byte2Str, setsAnEmptyTextThatIsNotNull)
{
    QString text;
    EXPECT_EQ(CByte2Val::byte2Str("\0\0", 2, text), 2);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_FALSE(text.isNull());
    QString cut;
    EXPECT_EQ(CByte2Val::byte2Str("\2\0\0a", 4, cut), 4);
    EXPECT_TRUE(cut.isEmpty());
    EXPECT_FALSE(cut.isNull());
}
