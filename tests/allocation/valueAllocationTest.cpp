// Each allocation of the operations on single values, texts, lists, buffers and samples fails. Unless a test says
// otherwise, a vector or a text that the operation was to fill keeps its content.

#include "byte2Rdb.h"
#include "support/failingAllocations.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using gqdb::CByte2Rdb;
using gqdb::CByte2Val;

using Ints = std::vector<int>;
using Floats = std::vector<float>;
using Doubles = std::vector<double>;
using Bytes = std::vector<unsigned char>;

static const std::string longText(300, 'x'); // longer than a std::string holds without an allocation

// --- Writers ------------------------------------------------------------------------------------------------------

// Lets a writer append to nothing, to a few bytes and to a shared array. What the array held stays, and so does what
// shares its bytes.
static void failsInWriter(const std::function<void(QByteArray&)>& write)
{
    QByteArray written;
    write(written);
    for (const QByteArray& before : {QByteArray(), QByteArray("before")}) {
        failEachAllocation([&] {
            QByteArray data(before.constData(), before.size());
            const bool done = attempt([&] { write(data); });
            EXPECT_TRUE(done ? data == before + written : data.startsWith(before));
            data.truncate(before.size());
            write(data); // the next call
            EXPECT_EQ(hex(data), hex(before + written));
        });
        failEachAllocation([&] {
            const QByteArray original(before.constData(), before.size());
            QByteArray data = original;
            attempt([&] { write(data); });
            EXPECT_TRUE(data.startsWith(before));
            EXPECT_EQ(original, before);
        });
    }
}

TEST(WriterAllocation, leavesTheBytesThatTheArrayHad)
{
    failsInWriter([](QByteArray& data) { CByte2Val::short2Byte(1, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::short2Byte(1U, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::int2Byte(1, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::int2Byte(1U, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::long2Byte(1, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::float2Byte(1, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::double2Byte(1, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::list2Byte(Ints(300, 7), data); });
    failsInWriter([](QByteArray& data) { CByte2Val::list2Byte(Bytes(300, 7), data); });
    failsInWriter([](QByteArray& data) { CByte2Val::str2Byte(longText, data); });
    failsInWriter([](QByteArray& data) { CByte2Val::str2Byte(QString(300, QChar(0x6c34)), data); });
    failsInWriter([](QByteArray& data) { CByte2Rdb::str2Blob(longText, data); });
}

TEST(WriterAllocation, leavesTheBufferOfATextAsItWas)
{
    const QString text(300, QChar(0x6c34));
    failEachAllocation([&] {
        char buffer[1000] = {1, 2, 3};
        int size = 0;
        const bool done = attempt([&] { size = CByte2Val::str2Byte(text, buffer); });
        EXPECT_EQ(size, done ? 902 : 0);
        EXPECT_EQ(buffer[0], done ? char(900 & 255) : 1);
    });
}

TEST(WriterAllocation, isNotNeededForBuffers)
{
    const Ints ints(300, 7);
    const Floats floats(300, 7);
    const Doubles doubles(300, 7);
    failEachAllocation([&] {
        char buffer[5000];
        EXPECT_TRUE(attempt([&] {
            CByte2Val::short2Byte(1, buffer);
            CByte2Val::int2Byte(1, buffer);
            CByte2Val::float2Byte(1, buffer);
            CByte2Val::str2Byte(longText, buffer);
            CByte2Val::list2Byte(ints, buffer);
            CByte2Val::list2Byte(floats, buffer);
            CByte2Val::list2Byte(doubles, buffer);
            CByte2Val::ushorts2Buffer(ints, buffer);
            CByte2Val::ints2Buffer(ints, buffer);
            CByte2Val::floats2Buffer(floats, buffer);
            CByte2Val::doubles2Buffer(doubles, buffer);
        }));
        EXPECT_EQ(failedAllocations(), 0);
    });
}

// --- Readers ------------------------------------------------------------------------------------------------------

// Fills an empty vector or text, and one with content. `read` returns the result.
template <typename Target>
static void failsInReader(const Target& content, const std::function<int(Target&)>& read)
{
    for (const Target& before : {Target(), content}) {
        Target expected = before;
        const int result = read(expected);
        EXPECT_GT(result, 0);
        failEachAllocation([&] {
            Target target = before;
            int got = 0;
            const bool done = attempt([&] { got = read(target); });
            EXPECT_EQ(target, done ? expected : before);
            EXPECT_EQ(got, done ? result : 0);
            target = before;
            EXPECT_EQ(read(target), result); // the next call
            EXPECT_EQ(target, expected);
        });
    }
}

static QByteArray imageOf(const Ints& list)
{
    QByteArray data;
    CByte2Val::list2Byte(list, data);
    return data;
}

TEST(ReaderAllocation, leavesTheTextAsItWas)
{
    QByteArray bytes;
    CByte2Val::str2Byte(longText, bytes);
    failsInReader<std::string>(
        "before", [&](std::string& text) { return CByte2Val::byte2Str(bytes.constData(), bytes.size(), text); });
    failsInReader<QString>("before",
                           [&](QString& text) { return CByte2Val::byte2Str(bytes.constData(), bytes.size(), text); });
}

TEST(ReaderAllocation, leavesTheListAsItWas)
{
    const QByteArray bytes = imageOf(Ints(300, 7));
    failsInReader<Ints>({1, 2},
                        [&](Ints& list) { return CByte2Val::byte2List(bytes.constData(), bytes.size(), list); });
    failsInReader<Floats>({1, 2},
                          [&](Floats& list) { return CByte2Val::byte2List(bytes.constData(), bytes.size(), list); });
    failsInReader<Doubles>({1, 2},
                           [&](Doubles& list) { return CByte2Val::byte2List(bytes.constData(), bytes.size(), list); });
    failsInReader<Bytes>({1, 2},
                         [&](Bytes& list) { return CByte2Val::byte2List(bytes.constData(), bytes.size(), list); });
}

TEST(ReaderAllocation, leavesTheVectorThatABufferFillsAsItWas)
{
    const QByteArray bytes(2400, 7);
    failsInReader<Ints>({1, 2}, [&](Ints& out) { return CByte2Val::buffer2Ints(bytes.constData(), 300, out); });
    failsInReader<Ints>({1, 2}, [&](Ints& out) { return CByte2Val::buffer2UShorts(bytes.constData(), 300, out); });
    failsInReader<Ints>({1, 2}, [&](Ints& out) { return CByte2Val::buffer2Shorts(bytes.constData(), 300, out); });
    failsInReader<Floats>({1, 2}, [&](Floats& out) { return CByte2Val::buffer2Floats(bytes.constData(), 300, out); });
    failsInReader<Doubles>({1, 2},
                           [&](Doubles& out) { return CByte2Val::buffer2Doubles(bytes.constData(), 300, out); });
}

// --- Samples and telegrams ----------------------------------------------------------------------------------------

TEST(SampleAllocation, leavesTheResultAsItWas)
{
    const Floats values(300, 7);
    const Ints raw(300, 7);
    failsInReader<Ints>({1, 2}, [&](Ints& out) { return CByte2Val::float2Short(values, 8, 6, out), 1; });
    failsInReader<Floats>({1, 2}, [&](Floats& out) { return CByte2Val::short2float(raw, 8, 6, out), 1; });
    failsInReader<Floats>({1, 2}, [&](Floats& out) { return CByte2Val::ad2float(raw, 2, 1, out), 1; });
}

TEST(SampleAllocation, isNotNeededForLimitsAndChecksums)
{
    const Floats values(300, 7);
    const QByteArray bytes("telegram");
    failEachAllocation([&] {
        EXPECT_TRUE(attempt([&] {
            double upper = 0;
            double lower = 0;
            unsigned char first = 0;
            unsigned char second = 0;
            CByte2Val::calcLimit(values, upper, lower);
            CByte2Val::getCrc16(bytes.constData(), bytes.size(), first, second);
            CByte2Val::getCs(bytes.constData(), bytes.size());
            CByte2Val::isGramEqual(bytes, bytes);
        }));
        EXPECT_EQ(failedAllocations(), 0);
    });
}

TEST(TelegramAllocation, leavesNoText)
{
    const QByteArray bytes(300, 'x');
    failEachAllocation([&] {
        QString text;
        const bool done = attempt([&] { text = CByte2Val::buf2str(bytes); });
        EXPECT_EQ(text.size(), done ? 899 : 0);
    });
}
