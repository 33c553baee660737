// Compares the codec with a second one that works byte by byte, on random records, lists, objects and waves. Bytes are
// truncated and flipped at random, targets are never fresh, and result, target and allocation failures must agree.
// Every random sequence starts from a fixed seed.

#include "byte2Rdb.h"
#include "support/chance.h"
#include "support/hex.h"
#include "support/recordChecks.h"
#include "support/sampleModel.h"

#include <QDateTime>

#include <gtest/gtest.h>

#include <cstdio>
#include <zlib.h>

using namespace gqdb;

using Bytes = std::vector<unsigned char>;
using uint32 = unsigned int;

// --- The wire, byte by byte -----------------------------------------------------

class ModelWriter {
public:
    void whole(int) {}
    void need(int) {}
    template <typename Field>
    void off(Field&)
    {
    }
    void writtenOnly(char& value) { byte(value); }
    void byte(char value) { bytes.push_back(static_cast<unsigned char>(value)); }
    template <typename Field>
    void word(Field& value)
    {
        static_assert(sizeof value == 4);
        unsigned int image;
        std::memcpy(&image, &value, 4);
        for (int bit = 0; bit < 32; bit += 8)
            bytes.push_back(static_cast<unsigned char>(image >> bit));
    }
    void number(double& value)
    {
        unsigned long long image;
        std::memcpy(&image, &value, 8);
        for (int bit = 0; bit < 64; bit += 8)
            bytes.push_back(static_cast<unsigned char>(image >> bit));
    }
    void text(std::string& value)
    {
        bytes.push_back(static_cast<unsigned char>(value.size()));
        bytes.push_back(static_cast<unsigned char>(value.size() >> 8));
        for (const char letter : value)
            byte(letter);
    }
    void blob(std::vector<unsigned char>& value)
    {
        uint32 size = uint32(value.size());
        word(size);
        for (const unsigned char each : value)
            bytes.push_back(each);
    }

    Bytes bytes;
};

// The form that is read, if it differs.
class ReadableWriter : public ModelWriter {
public:
    void writtenOnly(char&) {}
};

class ModelReader {
public:
    ModelReader(const Bytes& bytes, int from) : all(bytes), pos(from), first(from) {}

    int left() const { return int(all.size()) - pos; }
    int used() const { return pos - first; }
    bool failed() const { return over; }

    void whole(int size) { need(size); }
    void need(int size) { over = over || left() < size; }
    template <typename Field>
    void off(Field&)
    {
    }
    void writtenOnly(char&) {}
    unsigned char byte()
    {
        if (left() < 1) {
            ADD_FAILURE() << "the model reads past the buffer";
            over = true;
            return 0;
        }
        return all[static_cast<size_t>(pos++)];
    }
    void byte(char& value)
    {
        if (!over)
            value = static_cast<char>(byte());
    }
    uint32 word()
    {
        uint32 value = 0;
        for (int bit = 0; bit < 32; bit += 8)
            value |= uint32(byte()) << bit;
        return value;
    }
    template <typename Field>
    void word(Field& value)
    {
        if (over)
            return;
        const uint32 image = word();
        std::memcpy(&value, &image, 4);
    }
    void number(double& value)
    {
        if (over)
            return;
        unsigned long long image = word();
        image |= static_cast<unsigned long long>(word()) << 32;
        std::memcpy(&value, &image, 8);
    }
    void text(std::string& value)
    {
        if (over)
            return;
        need(2);
        if (over)
            return;
        int size = byte();
        size += 256 * byte();
        need(size);
        for (int i = 0; i < size && !over; ++i)
            value += static_cast<char>(byte());
    }
    void blob(std::vector<unsigned char>& value)
    {
        if (over)
            return;
        const int size = int(word());
        need(size);
        if (over)
            return;
        value.resize(static_cast<size_t>(size));
        for (unsigned char& each : value)
            each = byte();
    }

private:
    const Bytes& all;
    int pos;
    int first;
    bool over = false;
};

class Filler {
public:
    explicit Filler(Chance& source) : chance(source) {}
    void whole(int) {}
    void need(int) {}
    void off(char& field) { byte(field); }
    void off(uint32& field) { word(field); }
    void off(std::string& field) { text(field); }
    void writtenOnly(char& value) { byte(value); }
    void byte(char& value) { value = static_cast<char>(chance.word()); }
    template <typename Field>
    void word(Field& value)
    {
        const uint32 image = chance.word();
        std::memcpy(&value, &image, 4);
    }
    void number(double& value)
    {
        const unsigned long long image = (static_cast<unsigned long long>(chance.word()) << 32) | chance.word();
        std::memcpy(&value, &image, 8);
    }
    void text(std::string& value) { value = chance.text(chance.once(20) ? 600 : chance.once(3) ? 60 : 6); }
    void blob(std::vector<unsigned char>& value) { value = chance.bytes(chance.below(9)); }

private:
    Chance& chance;
};

// All fields of a record, as bytes.
class Snapshot : public ModelWriter {
public:
    void off(char& field) { byte(field); }
    void off(uint32& field) { word(field); }
    void off(std::string& field) { text(field); }
};

// --- The records ----------------------------------------------------------------

template <typename Wire>
static void walk(Wire& wire, PointInfo& point)
{
    wire.off(point.pointKind);
    wire.whole(16);
    wire.word(point.pointId);
    wire.text(point.text1);
    wire.need(10);
    wire.word(point.code1);
    wire.text(point.text2);
    wire.need(4);
    wire.word(point.code2);
}

template <typename Wire>
static void walk(Wire& wire, FloatPoint& point)
{
    wire.whole(84);
    wire.word(point.pointId);
    wire.text(point.text1);
    wire.need(57);
    wire.word(point.code1);
    wire.text(point.text2);
    wire.text(point.text3);
    wire.text(point.text4);
    wire.need(62);
    wire.word(point.code2);
    wire.word(point.code3);
    wire.word(point.code4);
    wire.text(point.text5);
    wire.need(54);
    wire.byte(point.switch1);
    wire.word(point.float1);
    wire.byte(point.switch2);
    wire.word(point.code5);
    wire.word(point.code6);
    wire.word(point.float2);
    wire.word(point.code7);
    for (int i = 0; i < 8; ++i)
        wire.word(point.levels[i]);
}

template <typename Wire>
static void walk(Wire& wire, IntPoint& point)
{
    wire.whole(81);
    wire.word(point.pointId);
    wire.text(point.text1);
    wire.need(57);
    wire.word(point.code1);
    wire.text(point.text2);
    wire.text(point.text3);
    wire.text(point.text4);
    wire.need(50);
    wire.word(point.code2);
    wire.word(point.code3);
    wire.writtenOnly(point.switch0);
    wire.word(point.code4);
    wire.text(point.text5);
    wire.need(50);
    wire.byte(point.switch1);
    wire.byte(point.switch2);
    wire.word(point.code5);
    wire.word(point.code6);
    wire.word(point.code7);
    wire.word(point.code8);
    for (int i = 0; i < 8; ++i)
        wire.word(point.levels[i]);
}

template <typename Wire>
static void walk(Wire& wire, BoolPoint& point)
{
    wire.whole(39);
    wire.word(point.pointId);
    wire.text(point.text1);
    wire.need(27);
    wire.word(point.code1);
    wire.text(point.text2);
    wire.text(point.text3);
    wire.need(24);
    wire.word(point.code2);
    wire.word(point.code3);
    wire.word(point.code4);
    wire.text(point.text5);
    wire.need(11);
    wire.byte(point.switch1);
    wire.byte(point.switch2);
    wire.word(point.code5);
    wire.word(point.code6);
    wire.byte(point.switch3);
}

template <typename Wire>
static void walk(Wire& wire, BlobPoint& point)
{
    wire.whole(40);
    wire.word(point.pointId);
    wire.text(point.text1);
    wire.need(27);
    wire.word(point.code1);
    wire.text(point.text2);
    wire.text(point.text3);
    wire.text(point.text4);
    wire.need(24);
    wire.word(point.code2);
    wire.word(point.code3);
    wire.word(point.code4);
    wire.text(point.text5);
    wire.need(10);
    wire.byte(point.switch1);
    wire.byte(point.switch2);
    wire.word(point.code5);
    wire.word(point.code6);
}

template <typename Wire>
static void walk(Wire& wire, FloatRealData& record)
{
    wire.whole(18);
    wire.word(record.pointId);
    wire.word(record.value);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag2);
    wire.byte(record.flag1);
}

template <typename Wire>
static void walk(Wire& wire, FloatData& record)
{
    wire.whole(14);
    wire.word(record.value);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag2);
    wire.byte(record.flag1);
}

template <typename Wire>
static void walk(Wire& wire, BoolRealData& record)
{
    wire.whole(14);
    wire.word(record.pointId);
    wire.byte(record.value);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag1);
}

template <typename Wire>
static void walk(Wire& wire, BoolData& record)
{
    wire.whole(10);
    wire.byte(record.value);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag1);
}

template <typename Wire>
static void walk(Wire& wire, IntRealData& record)
{
    wire.whole(18);
    wire.word(record.pointId);
    wire.word(record.value);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag1);
    wire.byte(record.flag2);
}

template <typename Wire>
static void walk(Wire& wire, IntData& record)
{
    wire.whole(14);
    wire.word(record.value);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag1);
    wire.byte(record.flag2);
}

template <typename Wire>
static void walk(Wire& wire, PointRealData& record)
{
    wire.whole(27);
    wire.byte(record.pointKind);
    wire.word(record.pointId);
    wire.number(record.value);
    wire.word(record.intValue);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag1);
    wire.byte(record.flag2);
}

template <typename Wire>
static void walk(Wire& wire, BlobDataInfo& record)
{
    wire.whole(18);
    wire.word(record.pointId);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.word(record.word4);
    wire.byte(record.flag1);
    wire.byte(record.flag2);
}

template <typename Wire>
static void walk(Wire& wire, BlobRealData& record)
{
    wire.whole(18);
    wire.word(record.pointId);
    wire.word(record.stamp1);
    wire.word(record.stamp2);
    wire.byte(record.flag1);
    wire.byte(record.flag2);
    wire.blob(record.bytes);
}

template <typename Wire>
static void walk(Wire& wire, EventInfo& event)
{
    wire.off(event.word11);
    wire.off(event.word12);
    wire.whole(59);
    wire.word(event.word1);
    wire.word(event.word2);
    wire.word(event.word3);
    wire.word(event.word4);
    wire.byte(event.switch1);
    wire.byte(event.switch2);
    wire.word(event.word5);
    wire.number(event.value);
    wire.word(event.word6);
    wire.word(event.word7);
    wire.word(event.word8);
    wire.word(event.word9);
    wire.word(event.word10);
    wire.byte(event.switch3);
    wire.word(event.word13);
    wire.text(event.text1);
    wire.text(event.text2);
}

template <typename Wire>
static void walk(Wire& wire, HisQuery& query)
{
    wire.off(query.text1);
    wire.whole(28);
    wire.word(query.pointId);
    wire.word(query.word1);
    wire.word(query.word2);
    wire.word(query.word3);
    wire.word(query.word4);
    wire.word(query.word5);
    wire.word(query.word6);
}

template <typename Wire>
static void walk(Wire& wire, OneSecQuery& query)
{
    wire.whole(22);
    wire.word(query.pointId);
    wire.word(query.word1);
    wire.word(query.word2);
    wire.word(query.word3);
    wire.word(query.word4);
    wire.text(query.text1);
}

template <typename Wire>
static void walk(Wire& wire, EventState& event)
{
    wire.whole(17);
    wire.word(event.word1);
    wire.byte(event.switch1);
    wire.word(event.word2);
    wire.word(event.word3);
    wire.word(event.word4);
}

template <typename Wire>
static void walk(Wire& wire, BlobData& item)
{
    wire.word(item.stamp1);
    wire.word(item.stamp2);
    wire.byte(item.flag1);
    wire.byte(item.flag2);
    wire.blob(item.bytes);
}

template <typename Wire>
static void walk(Wire& wire, Variant& value)
{
    wire.off(value.textValue);
    wire.word(value.intValue);
    wire.word(value.floatValue);
    wire.number(value.doubleValue);
}

// --- Comparison -----------------------------------------------------------------

static std::string spaced(const Bytes& bytes)
{
    return hex(QByteArray(reinterpret_cast<const char*>(bytes.data()), int(bytes.size())));
}

template <typename Record>
static std::string state(Record record)
{
    Snapshot snapshot;
    walk(snapshot, record);
    return spaced(snapshot.bytes) + "\n";
}

static std::string state(const Variant& value)
{
    Variant copy = value;
    Snapshot snapshot;
    walk(snapshot, copy);
    return "kind " + std::to_string(value.kind) + ": " + spaced(snapshot.bytes) + "\n";
}

static std::string state(const PropertyData& property)
{
    return std::to_string(property.word1) + " " + std::to_string(property.word2) + " " +
           hex(QByteArray::fromStdString(property.formatText)) + " / " +
           hex(QByteArray::fromStdString(property.valueText)) + " / " + state(property.value);
}

static std::string state(const ObjectData& object)
{
    std::string all = std::to_string(object.word1) + " " + std::to_string(object.word2) + " " +
                      std::to_string(object.word3) + " " + std::to_string(object.word4);
    for (const std::string& text : {object.text1, object.text2, object.text3})
        all += " / " + hex(QByteArray::fromStdString(text));
    for (const PropertyData& property : object.properties)
        all += "\n  " + state(property);
    return all;
}

template <typename Record>
static std::string state(const std::vector<Record>& list)
{
    std::string all = std::to_string(list.size()) + "\n";
    // A list that was only resized is long; comparing its beginning is enough.
    for (size_t i = 0; i < list.size() && i < 40; ++i)
        all += state(list[i]);
    return all;
}

template <typename Target>
struct Outcome {
    std::string result;
    Target target;
};

// Runs a reader on a copy of `target`. An allocation failure has a result value of its own.
template <typename Target, typename Reader>
static Outcome<Target> outcome(const Target& target, Reader reader)
{
    Outcome<Target> seen{"allocation failure", target};
    failsToAllocate([&] { seen.result = std::to_string(reader(seen.target)); });
    return seen;
}

// Runs both readers on these bytes, in a heap block of exactly their size.
template <typename Target, typename Reader, typename Model>
static void expectSameReading(const Bytes& bytes, const Target& target, Reader reader, Model model)
{
    SCOPED_TRACE(spaced(bytes));
    const std::vector<char> block(bytes.begin(), bytes.end());
    const auto seen = outcome(target, [&](Target& out) { return reader(block.data(), int(block.size()), out); });
    const auto expected = outcome(target, [&](Target& out) { return model(bytes, out); });
    EXPECT_EQ(seen.result, expected.result);
    EXPECT_EQ(state(seen.target), state(expected.target));
}

template <typename Writer>
static void expectSameWriting(Chance& chance, const Bytes& expected, Writer writer)
{
    Bytes all = chance.bytes(chance.below(4));
    QByteArray data(reinterpret_cast<const char*>(all.data()), int(all.size()));
    writer(data);
    all.insert(all.end(), expected.begin(), expected.end());
    EXPECT_EQ(hex(data), spaced(all));
}

template <typename Record>
static Record randomRecord(Chance& chance)
{
    Record record;
    Filler filler(chance);
    walk(filler, record);
    return record;
}

template <typename Record>
static std::vector<Record> randomList(Chance& chance, int longest)
{
    std::vector<Record> list;
    for (int i = chance.below(longest + 1); i > 0; --i)
        list.push_back(randomRecord<Record>(chance));
    return list;
}

// Leaves the bytes as they are, or truncates, extends or flips some of them from `from` on.
static Bytes spoiled(Chance& chance, Bytes bytes, size_t from)
{
    if (chance.once(2))
        bytes.resize(static_cast<size_t>(chance.below(int(bytes.size()) + 1)));
    else if (chance.once(2))
        bytes.resize(bytes.size() + static_cast<size_t>(chance.below(5)), 0xee);
    if (chance.once(2) && bytes.size() > from) {
        for (int i = 0; i < 3; ++i)
            bytes[from + static_cast<size_t>(chance.below(int(bytes.size() - from)))] =
                static_cast<unsigned char>(chance.once(2) ? chance.below(8) : chance.below(256));
    }
    return bytes;
}

// The same bytes truncated to each length, so that each size check sees one byte too few and exactly enough.
template <typename Target, typename Reader, typename Model>
static void expectSameReadingOfEveryCut(const Bytes& bytes, const Target& target, Reader reader, Model model)
{
    for (size_t size = 0; size <= bytes.size() && !testing::Test::HasFailure(); ++size)
        expectSameReading(Bytes(bytes.begin(), bytes.begin() + int(size)), target, reader, model);
}

// --- Single records and their lists ---------------------------------------------

template <typename Record>
static int readOne(const Bytes& bytes, Record& record, int tooShort)
{
    ModelReader in(bytes, 0);
    walk(in, record);
    return in.failed() ? tooShort : in.used();
}

template <typename Record, typename Writer, typename Reader>
static void compareRecords(Writer writer, Reader reader, int tooShort)
{
    Chance chance(1);
    for (int round = 0; round < 600 && !testing::Test::HasFailure(); ++round) {
        Record record = randomRecord<Record>(chance);
        ModelWriter written;
        walk(written, record);
        expectSameWriting(chance, written.bytes, [&](QByteArray& data) { writer(record, data); });

        ReadableWriter readable;
        walk(readable, record);
        const auto model = [&](const Bytes& in, Record& out) { return readOne(in, out, tooShort); };
        const Record target = randomRecord<Record>(chance);
        expectSameReading(spoiled(chance, round % 2 ? readable.bytes : written.bytes, 0), target, reader, model);
        if (round % 50 == 0)
            expectSameReadingOfEveryCut(readable.bytes, target, reader, model);
    }
}

// How a family of lists is read.
struct ListRules {
    int shortList; // result below `least` bytes
    int least;
    uint32 itemSize;     // checked before the items; 0: not checked
    bool stride;         // items of a fixed size, which cannot fail
    bool append;         // else the list is resized to the count
    bool signedCount;    // count and new size are signed
    bool clearOnFailure; // else the list keeps size and items
};

template <typename Record>
static int readList(const Bytes& bytes, std::vector<Record>& list, const ListRules& rules)
{
    const int size = int(bytes.size());
    if (size < rules.least)
        return rules.shortList;
    ModelReader in(bytes, 0);
    const uint32 count = in.word();
    if (rules.itemSize > 0 && size < int(count * rules.itemSize + 4))
        return rules.shortList;
    const size_t first = rules.append ? list.size() : 0;
    const uint32 sum = uint32(first) + count;
    if (rules.signedCount)
        list.resize(static_cast<size_t>(static_cast<long long>(int(sum))));
    else
        list.resize(sum);
    if (count == 0 || (rules.signedCount && int(count) < 0))
        return 1;
    if (sum < first)
        return rules.shortList;
    if (rules.stride && static_cast<unsigned long long>(count) * rules.itemSize + 4 > bytes.size())
        return rules.shortList;
    for (size_t i = first; i < list.size(); ++i) {
        ModelReader item(bytes, in.used());
        walk(item, list[i]);
        if (item.failed()) {
            if (rules.clearOnFailure)
                list.clear();
            return -3;
        }
        for (int used = item.used(); used > 0; --used)
            in.byte();
    }
    return 1;
}

template <typename Record, typename Writer, typename Reader>
static void compareLists(Writer writer, Reader reader, const ListRules& rules)
{
    static const uint32 oddCounts[] = {0,          1,          2,          0x7fffffff, 0x80000000, 0x80000001,
                                       0xffffffff, 0xfffffffe, 0xfffffffd, 0x0e38e38f, 0x12492493, 0x097b425f,
                                       0x1999999a, 0x40000000, 0x10000000, 5000};
    Chance chance(2);
    for (int round = 0; round < 600 && !testing::Test::HasFailure(); ++round) {
        std::vector<Record> list = randomList<Record>(chance, 4);
        ModelWriter written;
        ReadableWriter readable;
        uint32 count = uint32(list.size());
        written.word(count);
        readable.word(count);
        for (Record& record : list) {
            walk(written, record);
            walk(readable, record);
        }
        expectSameWriting(chance, written.bytes, [&](QByteArray& data) { writer(list, data); });

        Bytes bytes = spoiled(chance, round % 2 ? readable.bytes : written.bytes, 4);
        if (bytes.size() >= 4 && chance.once(3)) {
            const uint32 odd = oddCounts[chance.below(16)];
            for (int i = 0; i < 4; ++i)
                bytes[static_cast<size_t>(i)] = static_cast<unsigned char>(odd >> 8 * i);
        }
        expectSameReading(bytes, randomList<Record>(chance, 3), reader,
                          [&](const Bytes& in, std::vector<Record>& out) { return readList(in, out, rules); });
    }
}

static const ListRules definitions{-2, 4, 0, false, true, false, true};
static const ListRules events{-2, 4, 0, false, false, false, true};
static const ListRules blobs{-5, 4, 18, false, true, false, false};

static ListRules values(int least, uint32 itemSize, bool signedCount = false)
{
    return {-5, least, itemSize, true, true, signedCount, false};
}

TEST(RdbDefinitions, matchTheModelOnRandomRecordsAndBytes)
{
    compareRecords<PointInfo>(CByte2Rdb::pointInfo2Byte, CByte2Rdb::byte2PointInfo, 0);
    compareRecords<FloatPoint>(CByte2Rdb::floatPoint2Byte, CByte2Rdb::byte2FloatPoint, 0);
    compareRecords<IntPoint>(CByte2Rdb::intPoint2Byte, CByte2Rdb::byte2IntPoint, 0);
    compareRecords<BoolPoint>(CByte2Rdb::boolPoint2Byte, CByte2Rdb::byte2BoolPoint, 0);
    compareRecords<BlobPoint>(CByte2Rdb::blobPoint2Byte, CByte2Rdb::byte2BlobPoint, 0);
}

TEST(RdbDefinitionLists, matchTheModelOnRandomListsAndBytes)
{
    compareLists<PointInfo>(CByte2Rdb::pointInfos2Byte, CByte2Rdb::byte2PointInfos, definitions);
    compareLists<FloatPoint>(CByte2Rdb::floatPoints2Byte, CByte2Rdb::byte2FloatPoints, definitions);
    compareLists<IntPoint>(CByte2Rdb::intPoints2Byte, CByte2Rdb::byte2IntPoints, definitions);
    compareLists<BoolPoint>(CByte2Rdb::boolPoints2Byte, CByte2Rdb::byte2BoolPoints, definitions);
    compareLists<BlobPoint>(CByte2Rdb::blobPoints2Byte, CByte2Rdb::byte2BlobPoints, definitions);
}

TEST(RdbValues, matchTheModelOnRandomRecordsAndBytes)
{
    compareRecords<FloatRealData>(CByte2Rdb::floatRealData2Byte, CByte2Rdb::byte2FloatRealData, -5);
    compareRecords<FloatData>(CByte2Rdb::floatData2Byte, CByte2Rdb::byte2FloatData, -5);
    compareRecords<BoolRealData>(CByte2Rdb::boolRealData2Byte, CByte2Rdb::byte2BoolRealData, -5);
    compareRecords<BoolData>(CByte2Rdb::boolData2Byte, CByte2Rdb::byte2BoolData, -5);
    compareRecords<IntRealData>(CByte2Rdb::intRealData2Byte, CByte2Rdb::byte2IntRealData, -5);
    compareRecords<IntData>(CByte2Rdb::intData2Byte, CByte2Rdb::byte2IntData, -5);
    compareRecords<PointRealData>(CByte2Rdb::pointRealData2Byte, CByte2Rdb::byte2PointRealData, -5);
    compareRecords<BlobDataInfo>(CByte2Rdb::blobDataInfo2Byte, CByte2Rdb::byte2BlobDataInfo, -5);
    compareRecords<BlobRealData>(CByte2Rdb::blobRealData2Byte, CByte2Rdb::byte2BlobRealData, -5);
}

TEST(RdbValueLists, matchTheModelOnRandomListsAndBytes)
{
    compareLists<FloatRealData>(CByte2Rdb::floatRealDatas2Byte, CByte2Rdb::byte2FloatRealDatas, values(22, 18));
    compareLists<FloatData>(CByte2Rdb::floatDatas2Byte, CByte2Rdb::byte2FloatDatas, values(18, 14));
    compareLists<BoolRealData>(CByte2Rdb::boolRealDatas2Byte, CByte2Rdb::byte2BoolRealDatas, values(18, 14, true));
    compareLists<BoolData>(CByte2Rdb::boolDatas2Byte, CByte2Rdb::byte2BoolDatas, values(18, 10, true));
    compareLists<IntRealData>(CByte2Rdb::intRealDatas2Byte, CByte2Rdb::byte2IntRealDatas, values(22, 18));
    compareLists<IntData>(CByte2Rdb::intDatas2Byte, CByte2Rdb::byte2IntDatas, values(18, 14));
    compareLists<PointRealData>(CByte2Rdb::pointRealDatas2Byte, CByte2Rdb::byte2PointRealDatas, values(4, 27));
    compareLists<BlobDataInfo>(CByte2Rdb::blobDataInfos2Byte, CByte2Rdb::byte2BlobDataInfos, values(4, 18));
    compareLists<BlobRealData>(CByte2Rdb::blobRealDatas2Byte, CByte2Rdb::byte2BlobRealDatas, blobs);
}

TEST(RdbQueries, matchTheModelOnRandomRecordsAndBytes)
{
    Chance chance(11);
    for (int round = 0; round < 600 && !HasFailure(); ++round) {
        HisQuery his = randomRecord<HisQuery>(chance);
        expectSameWriting(chance, {}, [&](QByteArray& data) { CByte2Rdb::hisQuery2Byte(his, data); });
        ModelWriter hisBytes;
        walk(hisBytes, his);
        expectSameReading(spoiled(chance, hisBytes.bytes, 0), randomRecord<HisQuery>(chance), CByte2Rdb::byte2HisQuery,
                          [](const Bytes& in, HisQuery& out) { return readOne(in, out, -2) < 0 ? -2 : 1; });

        OneSecQuery query = randomRecord<OneSecQuery>(chance);
        ModelWriter queryBytes;
        walk(queryBytes, query);
        expectSameWriting(chance, queryBytes.bytes,
                          [&](QByteArray& data) { CByte2Rdb::oneSecQuery2Byte(query, data); });
        expectSameReading(spoiled(chance, queryBytes.bytes, 0), randomRecord<OneSecQuery>(chance),
                          CByte2Rdb::byte2OneSecQuery, [](const Bytes& in, OneSecQuery& out) {
                              if (in.size() < 22)
                                  return -2;
                              // The last byte is never read, so 22 bytes contain no text, not even an empty one.
                              Bytes reach(in.begin(), in.end() - 1);
                              ModelReader reader(reach, 0);
                              for (uint32* word : {&out.pointId, &out.word1, &out.word2, &out.word3, &out.word4})
                                  reader.word(*word);
                              reader.text(out.text1);
                              return reader.failed() ? 0 : reader.used();
                          });
    }
}

TEST(RdbEvents, matchTheModelOnRandomRecordsAndBytes)
{
    compareRecords<EventInfo>(CByte2Rdb::eventInfo2Byte, CByte2Rdb::byte2EventInfo, 0);
    compareRecords<EventState>(CByte2Rdb::eventState2Byte, CByte2Rdb::byte2EventState, 0);
}

TEST(RdbEventLists, matchTheModelOnRandomListsAndBytes)
{
    compareLists<EventInfo>(CByte2Rdb::eventInfos2Byte, CByte2Rdb::byte2EventInfos, events);
    compareLists<EventState>(CByte2Rdb::eventStates2Byte, CByte2Rdb::byte2EventStates, events);
}

// --- Variants, properties, objects ----------------------------------------------

// One codec for both forms.
class ObjectModel {
public:
    explicit ObjectModel(bool blobForm) : blob(blobForm) {}

    void write(ModelWriter& out, std::string& text) const
    {
        const size_t first = out.bytes.size();
        out.text(text);
        while (blob && out.bytes.size() < first + 258)
            out.byte(0);
    }
    void write(ModelWriter& out, Variant& value) const
    {
        out.byte(char(value.kind));
        if (value.kind == 0 || value.kind == 11)
            out.word(value.intValue);
        if (value.kind == 5)
            out.word(value.floatValue);
        if (value.kind == 6)
            out.number(value.doubleValue);
        if (value.kind == 10)
            write(out, value.textValue);
    }
    void write(ModelWriter& out, PropertyData& property) const
    {
        out.word(property.word1);
        out.word(property.word2);
        write(out, property.formatText);
        write(out, property.valueText);
        write(out, property.value);
    }
    void write(ModelWriter& out, ObjectData& object) const
    {
        out.byte(0);
        out.word(object.word1);
        out.word(object.word2);
        out.word(object.word3);
        out.word(object.word4);
        write(out, object.text1);
        write(out, object.text2);
        write(out, object.text3);
        out.byte(char(object.properties.size()));
        out.byte(char(object.properties.size() >> 8));
        for (PropertyData& property : object.properties)
            write(out, property);
    }

    int read(const Bytes& in, Variant& value) const
    {
        const int size = int(in.size());
        if (size < 1)
            return -2;
        value.kind = in[0];
        switch (value.kind) {
        case 0:
        case 11:
            return size < 5 ? -1 : (ModelReader(in, 1).word(value.intValue), 5);
        case 5:
            return size < 5 ? -1 : (ModelReader(in, 1).word(value.floatValue), 5);
        case 6:
            return size < 9 ? -1 : (ModelReader(in, 1).number(value.doubleValue), 9);
        case 10:
            break;
        default:
            return 1;
        }
        if (blob)
            return size >= 259 && slot(in, 1, value.textValue) ? 259 : -1;
        if (size < 3)
            return -1;
        const int length = short16(in, 1);
        if (size < length + 3)
            return -1;
        misplaced(in, 3, length, value.textValue);
        return length + 3;
    }
    int read(const Bytes& in, PropertyData& property) const
    {
        const int size = int(in.size());
        if (size < (blob ? 525 : 13))
            return -2;
        ModelReader(in, 0).word(property.word1);
        ModelReader(in, 4).word(property.word2);
        int pos = 524;
        if (blob) {
            if (!slot(in, 8, property.formatText) || !slot(in, 266, property.valueText))
                return -3;
        } else {
            const int length1 = short16(in, 8);
            if (size < length1 + 13)
                return -3;
            misplaced(in, 10, length1, property.formatText);
            const int length2 = short16(in, 10 + length1);
            if (size < length1 + length2 + 13)
                return -3;
            misplaced(in, 12 + length1, length2, property.valueText);
            pos = 12 + length1 + length2;
        }
        const int used = read(rest(in, pos), property.value);
        return used < 1 ? -4 : pos + used;
    }
    int read(const Bytes& in, ObjectData& object) const
    {
        const int size = int(in.size());
        if (size < (blob ? 793 : 25))
            return -2;
        ModelReader(in, 1).word(object.word1);
        ModelReader(in, 5).word(object.word2);
        ModelReader(in, 9).word(object.word3);
        ModelReader(in, 13).word(object.word4);
        int pos = 791;
        if (blob) {
            if (!slot(in, 17, object.text1) || !slot(in, 275, object.text2) || !slot(in, 533, object.text3))
                return -2;
        } else {
            const int length1 = short16(in, 17);
            if (size < length1 + 25)
                return -3;
            misplaced(in, 19, length1, object.text1);
            const int length2 = short16(in, 19 + length1);
            if (size < length1 + length2 + 25)
                return -3;
            misplaced(in, 21 + length1, length2, object.text2);
            const int length3 = short16(in, 21 + length1 + length2);
            if (size < length1 + length2 + length3 + 25)
                return -3;
            misplaced(in, 23 + length1 + length2, length3, object.text3);
            pos = 23 + length1 + length2 + length3;
        }
        const int count = short16(in, pos);
        int result = blob ? 791 : pos + 2;
        pos += 2;
        for (int i = 0; i < count; ++i) {
            PropertyData property;
            const int used = read(rest(in, pos), property);
            if (used < 1)
                return -4;
            if (blob)
                property.valueText = shown(property);
            object.properties.push_back(property);
            result += used;
            pos += used;
        }
        return result;
    }

private:
    static Bytes rest(const Bytes& in, int pos) { return Bytes(in.begin() + pos, in.end()); }
    static int short16(const Bytes& in, int pos)
    {
        ModelReader reader(in, pos);
        const int low = reader.byte();
        return low + 256 * reader.byte();
    }
    static bool slot(const Bytes& in, int pos, std::string& text)
    {
        ModelReader reader(in, pos);
        reader.text(text);
        return !reader.failed() && reader.used() <= 258;
    }
    static void misplaced(const Bytes& in, int pos, int length, std::string& text)
    {
        const Bytes field(in.begin() + pos, in.begin() + pos + length);
        ModelReader(field, 0).text(text);
    }
    static std::string shown(const PropertyData& property)
    {
        char text[400];
        switch (property.value.kind) {
        case 0:
            std::snprintf(text, sizeof text, "%d", property.value.intValue);
            return text;
        case 5:
            std::snprintf(text, sizeof text, "%f", double(property.value.floatValue));
            return text;
        case 6:
            std::snprintf(text, sizeof text, "%f", property.value.doubleValue);
            return text;
        case 10:
            return property.value.textValue;
        case 11: {
            const QString format =
                property.formatText.empty() ? "yyyy-MM-dd HH:mm:ss" : QString::fromUtf8(property.formatText.c_str());
            return QDateTime::fromSecsSinceEpoch(uint32(property.value.intValue)).toString(format).toStdString();
        }
        case 101:
            return "0";
        default:
            return "";
        }
    }

    bool blob;
};

static std::string randomText(Chance& chance)
{
    if (chance.once(3)) // a length and that many letters, or one less
        return std::string(1, char(chance.below(4))) + std::string(1, '\0') + chance.text(4);
    if (chance.once(8))
        return std::string(size_t(254 + chance.below(5)), 'x');
    return chance.text(5);
}

static void fill(Chance& chance, Variant& value)
{
    static const int kinds[] = {0, 5, 6, 10, 11, 101};
    Filler filler(chance);
    walk(filler, value);
    value.textValue = randomText(chance);
    value.kind = static_cast<unsigned char>(chance.once(4) ? chance.below(256) : kinds[chance.below(6)]);
}

static void fill(Chance& chance, PropertyData& property)
{
    static const char* const formats[] = {"", "hh:mm", "yy d.M", "dddd", "\xc3\xa9ss"};
    Filler filler(chance);
    filler.word(property.word1);
    filler.word(property.word2);
    property.formatText = chance.once(2) ? std::string(formats[chance.below(5)]) : randomText(chance);
    property.valueText = randomText(chance);
    fill(chance, property.value);
}

static void fill(Chance& chance, ObjectData& object)
{
    Filler filler(chance);
    for (int* word : {&object.word1, &object.word2, &object.word3, &object.word4})
        filler.word(*word);
    for (std::string* text : {&object.text1, &object.text2, &object.text3})
        *text = randomText(chance);
    object.properties.resize(size_t(chance.below(4)));
    for (PropertyData& property : object.properties)
        fill(chance, property);
}

template <typename Record, typename Writer, typename Reader>
static void compareForm(bool blobForm, Writer writer, Reader reader)
{
    const ObjectModel model(blobForm);
    Chance chance(3);
    for (int round = 0; round < 600 && !testing::Test::HasFailure(); ++round) {
        Record record;
        fill(chance, record);
        ModelWriter written;
        model.write(written, record);
        expectSameWriting(chance, written.bytes, [&](QByteArray& data) { writer(record, data); });
        Record target;
        fill(chance, target);
        const auto reading = [&](const Bytes& in, Record& out) { return model.read(in, out); };
        const Bytes bytes = round % 2 ? written.bytes : spoiled(chance, written.bytes, 0);
        expectSameReading(bytes, target, reader, reading);
        if (round % (blobForm ? 200 : 10) == 0)
            expectSameReadingOfEveryCut(written.bytes, target, reader, reading);
    }
}

TEST(RdbObjects, matchTheModelInTheByteForm)
{
    compareForm<Variant>(false, CByte2Rdb::variant2Byte, CByte2Rdb::byte2Variant);
    compareForm<PropertyData>(false, CByte2Rdb::property2Byte, CByte2Rdb::byte2Property);
    compareForm<ObjectData>(false, CByte2Rdb::object2Byte, CByte2Rdb::byte2Object);
}

TEST(RdbObjects, matchTheModelInTheBlobForm)
{
    compareForm<Variant>(true, CByte2Rdb::variant2Blob, CByte2Rdb::blob2Variant);
    compareForm<PropertyData>(true, CByte2Rdb::property2Blob, CByte2Rdb::blob2Property);
    compareForm<ObjectData>(true, CByte2Rdb::object2Blob, CByte2Rdb::blob2Object);
}

static int readBlobList(const Bytes& bytes, std::vector<BlobData>& list)
{
    if (bytes.size() < 18)
        return -1;
    ModelReader in(bytes, 0);
    const int count = int(in.word());
    list.resize(static_cast<size_t>(static_cast<long long>(count)));
    if (count < 1)
        return 4;
    for (size_t i = 0; i < list.size(); ++i) {
        walk(in, list[i]);
        if (in.failed() || (i + 1 < list.size() && in.left() < 14))
            return -1;
    }
    return in.used();
}

TEST(Blob2List, matchesTheModelOnRandomBytes)
{
    Chance chance(4);
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        std::vector<BlobData> list = randomList<BlobData>(chance, 4);
        ModelWriter written;
        uint32 count = uint32(list.size()) + (chance.once(5) ? chance.word() % 2 : 0);
        if (chance.once(20))
            count = 0u - uint32(chance.below(2));
        written.word(count);
        for (BlobData& item : list)
            walk(written, item);
        expectSameReading(spoiled(chance, written.bytes, 4), randomList<BlobData>(chance, 3), CByte2Rdb::blob2List,
                          readBlobList);
    }
}

// --- Waves ----------------------------------------------------------------------

// Largest block passed to zlib, and largest result accepted.
static const uLongf blockLimit = 5000000;

static void put(Bytes& out, uint32 value, int width)
{
    for (int i = 0; i < width; ++i)
        out.push_back(static_cast<unsigned char>(value >> 8 * i));
}

static Bytes headImage(const BlobWaveHead& head)
{
    Bytes image(96);
    std::memcpy(image.data(), &head, 96);
    return image;
}

static Bytes storedWave(BlobWaveHead& head, Bytes block, const std::vector<int>& marks)
{
    if (head.waveFlags & 4) {
        uLongf size = compressBound(block.size());
        Bytes packed(size);
        EXPECT_EQ(compress(packed.data(), &size, block.data(), block.size()), Z_OK);
        packed.resize(size);
        block = packed;
    }
    head.markCount = uint32(marks.size());
    Bytes stored = headImage(head);
    for (const int mark : marks)
        put(stored, uint32(mark), 4);
    stored.insert(stored.end(), block.begin(), block.end());
    return stored;
}

static Bytes modelWave(BlobWaveHead& head, const std::vector<float>& samples, const std::vector<int>& marks)
{
    head.sampleCount = uint32(samples.size());
    findLimits(samples, head.limitHigh, head.limitLow);
    Bytes block;
    for (const float sample : samples) {
        uint32 image;
        std::memcpy(&image, &sample, 4);
        if (head.waveFlags & 2)
            put(block, uint32(quantised(sample, float(head.limitHigh), float(head.limitLow))), 2);
        else
            put(block, image, 4);
    }
    return storedWave(head, block, marks);
}

static Bytes modelWave(BlobWaveHead& head, const std::vector<int>& samples, const std::vector<int>& marks)
{
    head.waveFlags |= 1;
    head.sampleCount = uint32(samples.size());
    Bytes block;
    for (const int sample : samples)
        put(block, uint32(sample), 2);
    return storedWave(head, block, marks);
}

struct Wave {
    BlobWaveHead head;
    std::vector<float> samples;
    std::vector<int> marks;
};

static std::string state(const Wave& wave)
{
    std::string all = spaced(headImage(wave.head)) + "\n" + shown(wave.samples) + "\n";
    for (const int mark : wave.marks)
        all += std::to_string(mark) + " ";
    return all;
}

static int readWave(const Bytes& stored, Wave& wave)
{
    if (stored.size() < 96)
        return 0;
    std::memcpy(&wave.head, stored.data(), 96);
    Bytes payload(stored.begin() + 96, stored.end());
    const uint32 markCount = wave.head.markCount;
    if (markCount != 0) {
        if (int(payload.size()) < int(markCount * 4 + 96))
            return 0;
        if (4ull * markCount > payload.size())
            return 0;
        wave.marks.clear();
        ModelReader in(payload, 0);
        for (uint32 i = 0; i < markCount; ++i)
            wave.marks.push_back(int(in.word()));
        payload.erase(payload.begin(), payload.begin() + in.used());
    }
    if (wave.head.waveFlags & 4) {
        uLongf size = blockLimit;
        Bytes unpacked(size);
        if (uncompress(unpacked.data(), &size, payload.data(), payload.size()) != Z_OK)
            return 0;
        unpacked.resize(size);
        payload = unpacked;
    }
    const bool raw = wave.head.waveFlags & 1;
    const bool steps = !raw && (wave.head.waveFlags & 2);
    std::vector<float> samples;
    ModelReader in(payload, 0);
    while (in.left() >= (raw || steps ? 2 : 4)) {
        if (raw || steps) {
            int value = in.byte();
            value += 256 * in.byte();
            if (raw)
                samples.push_back(
                    onLine(value < 32768 ? value : value - 65536, wave.head.limitHigh, wave.head.limitLow));
            else
                samples.push_back(unquantised(value, float(wave.head.limitHigh), float(wave.head.limitLow)));
        } else {
            samples.push_back(floatOf(in.word()));
        }
    }
    if (!samples.empty() || !(raw || steps))
        wave.samples = samples;
    return 1;
}

static BlobWaveHead anyHead(Chance& chance)
{
    BlobWaveHead head;
    const Bytes image = chance.bytes(96);
    std::memcpy(&head, image.data(), 96);
    head.waveFlags = static_cast<unsigned char>(chance.once(4) ? chance.below(256) : chance.below(8));
    head.limitHigh = chance.anyDouble();
    head.limitLow = chance.anyDouble();
    return head;
}

TEST(RdbWaves, matchTheModelOnRandomWavesAndBytes)
{
    Chance chance(9);
    Bytes packedBuffer(blockLimit);
    Bytes workBuffer(blockLimit);
    for (int round = 0; round < 250 && !HasFailure(); ++round) {
        const BlobWaveHead head = anyHead(chance);
        std::vector<int> marks;
        for (int i = chance.once(2) ? chance.below(4) : 0; i > 0; --i)
            marks.push_back(int(chance.word()));
        const int count = chance.once(3) ? chance.below(4) : chance.below(120);
        const bool floats = chance.once(2);
        std::vector<float> floatSamples = chance.anyFloats(floats ? count : 0);
        std::vector<int> intSamples;
        for (int i = 0; i < count; ++i)
            intSamples.push_back(int(chance.word()));

        BlobWaveHead seenHead = head, modelHead = head;
        Bytes rawBuffer(size_t(4 * count + 1));
        Bytes seen(size_t(chance.below(300)), 0xee);
        Bytes expected;
        if (floats) {
            expected = modelWave(modelHead, floatSamples, marks);
            EXPECT_EQ(CByte2Rdb::wave2Byte(seenHead, floatSamples, marks, rawBuffer.data(), packedBuffer.data(), seen),
                      1);
        } else {
            expected = modelWave(modelHead, intSamples, marks);
            EXPECT_EQ(CByte2Rdb::wave2Byte(seenHead, intSamples, marks, rawBuffer.data(), packedBuffer.data(), seen),
                      1);
        }
        EXPECT_EQ(spaced(headImage(seenHead)), spaced(headImage(modelHead)));
        EXPECT_EQ(spaced(seen), spaced(expected));

        // The flags, the low bytes of the mark count and the bytes after the head may be wrong.
        Bytes bytes = chance.once(3) ? expected : spoiled(chance, expected, 96);
        if (bytes.size() >= 96 && chance.once(4))
            bytes[1] = static_cast<unsigned char>(bytes[1] ^ chance.below(4));
        if (bytes.size() >= 96 && chance.once(6)) {
            const uint32 odd[] = {0x40000000, 0x40000001, 0x80000000, 0xffffffff, 0x3fffffe8, 0x20000000};
            const uint32 markCount = odd[chance.below(6)];
            for (int i = 0; i < 4; ++i)
                bytes[size_t(52 + i)] = static_cast<unsigned char>(markCount >> 8 * i);
        }
        const Wave target{anyHead(chance), chance.anyFloats(3), {1, 2, 3}};
        const auto reader = [&](const char*, int, Wave& wave) {
            return CByte2Rdb::byte2Wave(bytes, workBuffer.data(), wave.head, wave.samples, wave.marks);
        };
        expectSameReading(bytes, target, reader, readWave);
    }
}
