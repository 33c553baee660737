#pragma once

#include "byte2Fep.h"
#include "support/chance.h"
#include "support/recordChecks.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

// Tests that hold for all six records of the front-end processors. Each record has a codec with
//
//   name, writeOne, readOne, writeList, readList
//   unset              a default record, as returned by show()
//   occupied()         a record with every field set to a value that none of the images contains
//   setTexts()         sets all texts of a record to the same text
//   full               the image of a record with all fields set to different values
//   plain              the image of a default record
//   cut                the image of a record whose texts are the three bytes 61 00 62
//   written...         the bytes that the writer makes from the records of the three images
//   writerReserves     true if the writer reserves memory first
//
// A show() of the record must exist in namespace gqdb.

// A part of the record that the reader sets if the buffer has at least `from` bytes.
template <typename Record>
struct FepStep {
    int from;
    void (*take)(Record&);
};

// A record in the form that is read.
template <typename Record>
struct FepImage {
    QByteArray bytes;
    int result; // of the reader
    std::vector<FepStep<Record>> steps;

    // Returns how many bytes the reader needs. May be more than the record has.
    int need() const { return steps.back().from; }

    // Returns `record` after `size` bytes were read.
    Record takenInto(Record record, int size) const
    {
        for (const FepStep<Record>& step : steps) {
            if (step.from <= size)
                step.take(record);
        }
        return record;
    }
    Record record() const { return takenInto(Record(), need()); }
};

template <typename R>
struct FepCodec {
    using Record = R;
    static constexpr bool writerReserves = true;

    // Exactly these types: only the readers return a result.
    using Writer = void (*)(const R&, QByteArray&);
    using Reader = int (*)(const char*, int, R&);
    using ListWriter = void (*)(const std::vector<R>&, QByteArray&);
    using ListReader = int (*)(const char*, int, std::vector<R>&);
};

struct FepCodecNames {
    template <typename Codec>
    static std::string GetName(int)
    {
        return Codec::name;
    }
};

// Bytes after a record, which must not affect the result.
inline const QByteArray fepFiller(16, char(0xee));

// --- One record -----------------------------------------------------------------

template <typename Codec>
class FepRecord : public testing::Test {
};
TYPED_TEST_SUITE_P(FepRecord);

TYPED_TEST_P(FepRecord, startsWithItsDefaults)
{
    EXPECT_EQ(showBuilt<typename TypeParam::Record>(), TypeParam::unset);
}

TYPED_TEST_P(FepRecord, isCopiedWithAllItsFields)
{
    const auto record = TypeParam::occupied();
    const auto copy = record;
    EXPECT_EQ(show(copy), show(TypeParam::occupied()));
    typename TypeParam::Record assigned;
    assigned = record;
    EXPECT_EQ(show(assigned), show(TypeParam::occupied()));
}

REGISTER_TYPED_TEST_SUITE_P(FepRecord, startsWithItsDefaults, isCopiedWithAllItsFields);

template <typename Codec>
class Fep2Byte : public testing::Test {
};
TYPED_TEST_SUITE_P(Fep2Byte);

TYPED_TEST_P(Fep2Byte, appendsTheFields)
{
    const auto& image = TypeParam::full;
    QByteArray data = "aa55"_hex;
    TypeParam::writeOne(image.takenInto(TypeParam::occupied(), image.need()), data);
    EXPECT_EQ(hex(data), hex("aa55"_hex + TypeParam::writtenFull));
}

TYPED_TEST_P(Fep2Byte, writesTheDefaults)
{
    QByteArray data;
    TypeParam::writeOne(typename TypeParam::Record(), data);
    EXPECT_EQ(hex(data), hex(TypeParam::writtenPlain));
}

TYPED_TEST_P(Fep2Byte, keepsTheZeroBytesOfTexts)
{
    auto record = TypeParam::cut.record();
    TypeParam::setTexts(record, QString::fromLatin1("a\0b", 3));
    QByteArray data;
    TypeParam::writeOne(record, data);
    EXPECT_EQ(hex(data), hex(TypeParam::writtenCut));
}

TYPED_TEST_P(Fep2Byte, leavesACopyOfTheArrayUnchanged)
{
    QByteArray data = "aa55"_hex;
    const QByteArray copy = data;
    TypeParam::writeOne(typename TypeParam::Record(), data);
    EXPECT_EQ(hex(copy), "aa 55");
}

TYPED_TEST_P(Fep2Byte, reserves1024BytesBeforeARecord)
{
    QByteArray data;
    TypeParam::writeOne(typename TypeParam::Record(), data);
    EXPECT_EQ(data.capacity() >= 1024, TypeParam::writerReserves) << data.capacity();
    if (!TypeParam::writerReserves)
        return;

    for (int held : {1, 1000, 1024, 5000, 100000}) {
        SCOPED_TRACE(held);
        QByteArray filled(held, 'x');
        TypeParam::writeOne(typename TypeParam::Record(), filled);
        EXPECT_GE(filled.capacity(), held + 1024);
    }
}

TYPED_TEST_P(Fep2Byte, writesARecordThatIsLargerThanTheReservation)
{
    auto record = TypeParam::cut.record();
    TypeParam::setTexts(record, QString(3000, 'y'));
    const int texts = TypeParam::writtenCut.count("0300610062"_hex);
    QByteArray data;
    TypeParam::writeOne(record, data);
    EXPECT_EQ(data.size(), TypeParam::writtenCut.size() + texts * (3000 - 3));
    EXPECT_EQ(data.count('y'), texts * 3000);
}

REGISTER_TYPED_TEST_SUITE_P(Fep2Byte, appendsTheFields, writesTheDefaults, keepsTheZeroBytesOfTexts,
                            leavesACopyOfTheArrayUnchanged, reserves1024BytesBeforeARecord,
                            writesARecordThatIsLargerThanTheReservation);

template <typename Codec>
class Byte2Fep : public testing::Test {
};
TYPED_TEST_SUITE_P(Byte2Fep);

// Texts are replaced, also by empty ones. Fields that are not on the wire are unchanged.
TYPED_TEST_P(Byte2Fep, readsTheFieldsThatABufferOfAnySizeHolds)
{
    for (const auto& image : {TypeParam::full, TypeParam::plain, TypeParam::cut}) {
        SCOPED_TRACE(hex(image.bytes));
        const QByteArray bytes = image.bytes + fepFiller;
        ASSERT_LE(image.need(), bytes.size());
        for (int size = 0; size <= bytes.size(); ++size) {
            SCOPED_TRACE(size);
            const std::vector<char> buffer = heapBytes(bytes.left(size));
            for (const auto& before : {typename TypeParam::Record(), TypeParam::occupied()}) {
                auto record = before;
                EXPECT_EQ(TypeParam::readOne(buffer.data(), size, record), size < image.need() ? 0 : image.result);
                EXPECT_EQ(show(record), show(image.takenInto(before, size)));
            }
        }
    }
}

TYPED_TEST_P(Byte2Fep, refusesANegativeSize)
{
    for (int size : {-1, -1000, INT_MIN}) {
        auto record = TypeParam::occupied();
        EXPECT_EQ(TypeParam::readOne(TypeParam::full.bytes.constData(), size, record), 0);
        EXPECT_EQ(show(record), show(TypeParam::occupied()));
    }
}

// AddressSanitizer checks the end of each buffer. Most bytes are zeros, so that lengths fit.
TYPED_TEST_P(Byte2Fep, staysInsideABufferOfAnyContent)
{
    Chance chance(20);
    int read = 0;
    for (int round = 0; round < 5000; ++round) {
        std::vector<char> buffer(static_cast<size_t>(chance.below(160)));
        for (char& byte : buffer)
            byte = chance.once(5) ? char(chance.below(chance.once(20) ? 256 : 8)) : '\0';
        typename TypeParam::Record record;
        read += TypeParam::readOne(buffer.data(), int(buffer.size()), record) > 0;
        std::vector<typename TypeParam::Record> list;
        if (buffer.size() >= 4)
            buffer[1] = buffer[2] = buffer[3] = 0; // a count that fits in memory
        TypeParam::readList(buffer.data(), int(buffer.size()), list);
    }
    EXPECT_GT(read, 50);
}

REGISTER_TYPED_TEST_SUITE_P(Byte2Fep, readsTheFieldsThatABufferOfAnySizeHolds, refusesANegativeSize,
                            staysInsideABufferOfAnyContent);

// --- Lists ----------------------------------------------------------------------

template <typename Codec>
class FepList2Byte : public testing::Test {
};
TYPED_TEST_SUITE_P(FepList2Byte);

TYPED_TEST_P(FepList2Byte, appendsOnlyTheCountOfAnEmptyList)
{
    QByteArray data = "aa55"_hex;
    TypeParam::writeList({}, data);
    EXPECT_EQ(hex(data), "aa 55 00 00 00 00");
}

TYPED_TEST_P(FepList2Byte, appendsTheCountAndTheRecords)
{
    QByteArray data = "aa55"_hex;
    const auto full = TypeParam::full.takenInto(TypeParam::occupied(), TypeParam::full.need());
    TypeParam::writeList({full, typename TypeParam::Record(), full}, data);
    EXPECT_EQ(hex(data),
              hex("aa55 03000000"_hex + TypeParam::writtenFull + TypeParam::writtenPlain + TypeParam::writtenFull));
}

TYPED_TEST_P(FepList2Byte, countsInFourBytes)
{
    QByteArray data;
    TypeParam::writeList(std::vector<typename TypeParam::Record>(0x0102), data);
    EXPECT_EQ(hex(data.left(4)), "02 01 00 00");
    EXPECT_EQ(data.size(), 4 + 0x0102 * TypeParam::writtenPlain.size());
}

TYPED_TEST_P(FepList2Byte, reserves1024BytesBeforeEachRecord)
{
    QByteArray data;
    TypeParam::writeList(std::vector<typename TypeParam::Record>(3), data);
    if (TypeParam::writerReserves)
        EXPECT_GE(data.capacity(), data.size() - TypeParam::writtenPlain.size() + 1024);
    else
        EXPECT_LT(data.capacity(), 1024);
}

REGISTER_TYPED_TEST_SUITE_P(FepList2Byte, appendsOnlyTheCountOfAnEmptyList, appendsTheCountAndTheRecords,
                            countsInFourBytes, reserves1024BytesBeforeEachRecord);

template <typename Codec>
class Byte2FepList : public testing::Test {
protected:
    using Record = typename Codec::Record;
    using List = std::vector<Record>;

    static int read(const QByteArray& bytes, List& list)
    {
        return Codec::readList(heapBytes(bytes).data(), bytes.size(), list);
    }

    // Lists to read into.
    static std::vector<List> lists() { return {List(), List(2, Codec::occupied())}; }

    static List joined(List list, const List& items)
    {
        list.insert(list.end(), items.begin(), items.end());
        return list;
    }
};
TYPED_TEST_SUITE_P(Byte2FepList);

TYPED_TEST_P(Byte2FepList, refusesLessThanACountAndLeavesTheList)
{
    const std::vector<char> buffer = heapBytes("010000"_hex);
    for (const auto& before : this->lists()) {
        for (int size : {3, 2, 1, 0, -1, INT_MIN}) {
            SCOPED_TRACE(size);
            auto list = before;
            EXPECT_EQ(TypeParam::readList(buffer.data(), size, list), 0);
            EXPECT_EQ(showAll(list), showAll(before));
        }
    }
}

TYPED_TEST_P(Byte2FepList, acceptsAnEmptyListAndLeavesTheList)
{
    for (const auto& before : this->lists()) {
        for (const QByteArray& bytes : {"00000000"_hex, "00000000"_hex + TypeParam::full.bytes}) {
            auto list = before;
            EXPECT_EQ(this->read(bytes, list), 1);
            EXPECT_EQ(showAll(list), showAll(before));
        }
    }
}

TYPED_TEST_P(Byte2FepList, appendsRecordsAndKeepsExistingOnes)
{
    const auto& image = TypeParam::full;
    ASSERT_EQ(image.result, image.bytes.size());
    const QByteArray bytes = "03000000"_hex + image.bytes + image.bytes + image.bytes + fepFiller;
    for (const auto& before : this->lists()) {
        auto list = before;
        EXPECT_EQ(this->read(bytes, list), 1);
        EXPECT_EQ(showAll(list), showAll(this->joined(before, {image.record(), image.record(), image.record()})));
    }
}

// The second of three records is truncated after each of its bytes.
TYPED_TEST_P(Byte2FepList, stopsAtTheFirstFailedRecordAndKeepsTheList)
{
    const auto& image = TypeParam::full;
    const typename TypeParam::Record unset;
    for (int cut = 0; cut < image.need(); ++cut) {
        SCOPED_TRACE(cut);
        const QByteArray bytes = "03000000"_hex + image.bytes + (image.bytes + fepFiller).left(cut);
        const int seen = image.bytes.size() + cut; // available to the reader of the first one
        const auto first = image.takenInto(unset, seen);
        const auto second = seen < image.need() ? unset : image.takenInto(unset, cut);
        for (const auto& before : this->lists()) {
            auto list = before;
            EXPECT_EQ(this->read(bytes, list), 0);
            EXPECT_EQ(showAll(list), showAll(this->joined(before, {first, second, unset})));
        }
    }
}

TYPED_TEST_P(Byte2FepList, doesNotCompareTheCountWithTheBytes)
{
    for (const auto& before : this->lists()) {
        auto list = before;
        EXPECT_EQ(this->read("e8030000"_hex, list), 0); // 1000
        const std::vector<typename TypeParam::Record> items(1000);
        EXPECT_EQ(showAll(list), showAll(this->joined(before, items)));
    }
}

TYPED_TEST_P(Byte2FepList, propagatesTheAllocationFailureOfAHugeCount)
{
    // 10 000 000; with the top bit; the largest one.
    for (const char* count : {"80969800", "00000080", "ffffffff"}) {
        SCOPED_TRACE(count);
        const QByteArray bytes = QByteArray::fromHex(count) + TypeParam::full.bytes + fepFiller;
        std::vector<typename TypeParam::Record> list;
        EXPECT_TRUE(failsToAllocate([&] { this->read(bytes, list); }));
        EXPECT_TRUE(list.empty());
    }
}

TYPED_TEST_P(Byte2FepList, truncatesTheListWhenItsSizeWrapsAndReadsNothing)
{
    const std::vector<typename TypeParam::Record> before(3, TypeParam::occupied());
    const struct {
        const char* count;
        size_t left;
    } cases[] = {{"ffffffff", 2}, {"feffffff", 1}, {"fdffffff", 0}};
    for (const auto& wrapped : cases) {
        SCOPED_TRACE(wrapped.count);
        const QByteArray bytes = QByteArray::fromHex(wrapped.count) + TypeParam::full.bytes + TypeParam::full.bytes +
                                 TypeParam::full.bytes + fepFiller;
        auto list = before;
        EXPECT_EQ(this->read(bytes, list), 0);
        EXPECT_EQ(showAll(list), showAll(std::vector<typename TypeParam::Record>(wrapped.left, TypeParam::occupied())));
    }
}

REGISTER_TYPED_TEST_SUITE_P(Byte2FepList, refusesLessThanACountAndLeavesTheList, acceptsAnEmptyListAndLeavesTheList,
                            appendsRecordsAndKeepsExistingOnes, stopsAtTheFirstFailedRecordAndKeepsTheList,
                            doesNotCompareTheCountWithTheBytes, propagatesTheAllocationFailureOfAHugeCount,
                            truncatesTheListWhenItsSizeWrapsAndReadsNothing);
