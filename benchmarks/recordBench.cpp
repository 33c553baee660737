#include "recordBench.h"

#include "byte2Rdb.h"
#include "comparison.h"

#include <algorithm>

#include <flatbuffers/flatbuffers.h>

using gqdb::CByte2Rdb;
using gqdb::CByte2Val;
using gqdb::FloatRealData;

// --- Single values ------------------------------------------------------------------------------------------------

static const int valueCount = 1000;

// Writes a thousand values of `width` bytes to an array that has room for them. `write` writes the value for a number.
template <typename Write>
static Side valuesSide(int width, const QByteArray& expected, Write write)
{
    return [=](benchmark::State& state) {
        QByteArray data;
        data.reserve(width * valueCount);
        for (auto _ : state) {
            data.resize(0);
            for (int i = 0; i < valueCount; ++i)
                write(i, data);
            benchmark::ClobberMemory();
        }
        if (data.size() != width * valueCount || data.mid(width * 300, width) != expected)
            fail("the bytes of a value differ");
    };
}

static void compareScalars()
{
    const QByteArray int300("\x2c\x01\0\0", 4);
    compare("1,000 int2Byte to an array",
            valuesSide(4, int300, [](int i, QByteArray& data) { CByte2Val::int2Byte(i, data); }),
            {{"QByteArray append", {{Clock::processor, 0.6}}, valuesSide(4, int300, [](int i, QByteArray& data) {
                  data.append(reinterpret_cast<const char*>(&i), sizeof i);
              })}});

    const QByteArray float300("\0\0\x96\x43", 4);
    compare(
        "1,000 float2Byte to an array",
        valuesSide(4, float300, [](int i, QByteArray& data) { CByte2Val::float2Byte(static_cast<float>(i), data); }),
        {{"QByteArray append", {{Clock::processor, 0.6}}, valuesSide(4, float300, [](int i, QByteArray& data) {
              const float value = static_cast<float>(i);
              data.append(reinterpret_cast<const char*>(&value), sizeof value);
          })}});

    const QByteArray double300("\0\0\0\0\0\xc0\x72\x40", 8);
    compare("1,000 double2Byte to an array",
            valuesSide(8, double300, [](int i, QByteArray& data) { CByte2Val::double2Byte(i, data); }),
            {{"QByteArray append", {{Clock::processor, 0.6}}, valuesSide(8, double300, [](int i, QByteArray& data) {
                  const double value = i;
                  data.append(reinterpret_cast<const char*>(&value), sizeof value);
              })}});
}

static void compareTexts(int length, double aim)
{
    const std::string text(static_cast<size_t>(length), 'x');
    const QByteArray bytes = QByteArray(1, static_cast<char>(length)) + '\0' + text.c_str();
    const int width = 2 + length;
    compare("1,000 str2Byte of " + std::to_string(length) + " bytes",
            valuesSide(width, bytes, [text](int, QByteArray& data) { CByte2Val::str2Byte(text, data); }),
            {{"two appends", {{Clock::processor, aim}}, valuesSide(width, bytes, [text](int, QByteArray& data) {
                  const unsigned short size = static_cast<unsigned short>(text.size());
                  data.append(reinterpret_cast<const char*>(&size), sizeof size);
                  data.append(text.data(), size);
              })}});
}

// --- Lists of every size ------------------------------------------------------------------------------------------

static std::vector<FloatRealData> someValues(int count)
{
    std::vector<FloatRealData> list(static_cast<size_t>(count));
    for (size_t i = 0; i < list.size(); ++i) {
        list[i].pointId = static_cast<unsigned int>(i);
        list[i].value = static_cast<float>(i) / 4;
    }
    return list;
}

// A job of `lists` lists, or a fraction of a list: one of several jobs in a batch.
static Side encodeSide(int count, int batch, int lists = 1)
{
    return [=](benchmark::State& state) {
        const std::vector<FloatRealData> list = someValues(count);
        const int size = 4 + 18 * count;
        QByteArray data;
        data.reserve(std::max(size, 200000));
        while (state.KeepRunningBatch(batch)) {
            for (int i = 0; i < lists; ++i) {
                if (data.capacity() - data.size() < size) // small lists follow each other, as in a frame
                    data.resize(0);
                CByte2Rdb::floatRealDatas2Byte(list, data);
                benchmark::ClobberMemory();
            }
        }
    };
}

static Side decodeSide(int count, int batch, int lists = 1)
{
    return [=](benchmark::State& state) {
        QByteArray data;
        CByte2Rdb::floatRealDatas2Byte(someValues(count), data);
        std::vector<FloatRealData> list;
        while (state.KeepRunningBatch(batch)) {
            for (int i = 0; i < lists; ++i) {
                list.clear();
                if (CByte2Rdb::byte2FloatRealDatas(data.constData(), data.size(), list) != 1)
                    fail("the library failed");
                benchmark::ClobberMemory();
            }
        }
    };
}

// Encodes into a new array and decodes into a new vector each time. Other side: a copy of the bytes into a new array.
static void compareFresh()
{
    const std::vector<FloatRealData> list = someValues(10000);
    QByteArray bytes;
    CByte2Rdb::floatRealDatas2Byte(list, bytes);
    const auto encode = [=](benchmark::State& state) {
        for (auto _ : state) {
            QByteArray data;
            CByte2Rdb::floatRealDatas2Byte(list, data);
            benchmark::DoNotOptimize(data.constData());
            benchmark::ClobberMemory();
        }
    };
    const auto decode = [=](benchmark::State& state) {
        for (auto _ : state) {
            std::vector<FloatRealData> back;
            if (CByte2Rdb::byte2FloatRealDatas(bytes.constData(), bytes.size(), back) != 1)
                fail("the library failed");
            benchmark::DoNotOptimize(back.data());
            benchmark::ClobberMemory();
        }
    };
    const auto copy = [=](benchmark::State& state) {
        for (auto _ : state) {
            const QByteArray data(bytes.constData(), bytes.size());
            benchmark::DoNotOptimize(data.constData());
            benchmark::ClobberMemory();
        }
    };
    compare("encode 10,000 to a new array", encode, {{"copy to a new one", {{Clock::processor, 0}}, copy}});
    compare("decode 10,000 to a new vector", decode, {{"copy to a new array", {{Clock::processor, 0}}, copy}});
}

// Compares each size with the cost of as many records in lists of 10,000. Lists of 100,000 and more exceed the caches.
static void compareSizes()
{
    for (const int count : {10, 100, 1000, 100000, 1000000}) {
        const std::string records = std::to_string(count) + " FloatRealData";
        const double aim = count < 10000 ? 2 : 0;
        const int batch = std::max(10000 / count, 1);
        const int lists = std::max(count / 10000, 1);
        compare("encode " + records, encodeSide(count, 1),
                {{"share of 10,000", {{Clock::processor, aim}}, encodeSide(10000, batch, lists)}});
        compare("decode " + records, decodeSide(count, 1),
                {{"share of 10,000", {{Clock::processor, aim}}, decodeSide(10000, batch, lists)}});
    }
}

// --- FlatBuffers structs ------------------------------------------------------------------------------------------

FLATBUFFERS_MANUALLY_ALIGNED_STRUCT(4) FlatRecord
{
    unsigned int pointId;
    unsigned int stamp1;
    unsigned int stamp2;
    float value;
    char flag1;
    char flag2;
    char padding[2];
};
FLATBUFFERS_STRUCT_END(FlatRecord, 20);

static void compareFlatBuffers()
{
    static const int count = 10000;
    const std::vector<FloatRealData> list = someValues(count);
    // Field by field: building a struct and copying it takes nine times as long (g++ 12).
    const auto fill = [](FlatRecord& flat, const FloatRealData& record) {
        flat.pointId = record.pointId;
        flat.stamp1 = record.stamp1;
        flat.stamp2 = record.stamp2;
        flat.value = record.value;
        flat.flag1 = record.flag1;
        flat.flag2 = record.flag2;
    };
    const auto pack = [=](benchmark::State& state) {
        flatbuffers::FlatBufferBuilder builder(1 << 19);
        for (auto _ : state) {
            builder.Clear();
            FlatRecord* room = nullptr;
            builder.CreateUninitializedVectorOfStructs<FlatRecord>(list.size(), &room);
            for (const FloatRealData& record : list)
                fill(*room++, record);
            benchmark::ClobberMemory();
        }
    };
    const auto unpack = [=](benchmark::State& state) {
        flatbuffers::FlatBufferBuilder builder(1 << 19);
        FlatRecord* room = nullptr;
        const auto offset = builder.CreateUninitializedVectorOfStructs<FlatRecord>(list.size(), &room);
        for (const FloatRealData& record : list)
            fill(*room++, record);
        builder.Finish(offset);
        std::vector<FloatRealData> back;
        for (auto _ : state) {
            const auto* vector =
                flatbuffers::GetRoot<flatbuffers::Vector<const FlatRecord*>>(builder.GetBufferPointer());
            back.resize(0);
            back.resize(vector->size());
            for (flatbuffers::uoffset_t i = 0; i < vector->size(); ++i) {
                const FlatRecord* record = vector->Get(i);
                back[i].pointId = record->pointId;
                back[i].stamp1 = record->stamp1;
                back[i].stamp2 = record->stamp2;
                back[i].value = record->value;
                back[i].flag1 = record->flag1;
                back[i].flag2 = record->flag2;
            }
            benchmark::ClobberMemory();
        }
        if (back.size() != list.size() || back[4321].value != list[4321].value)
            fail("the records of FlatBuffers differ");
    };
    compare("encode 10,000 in a list", encodeSide(count, 1), {{"FlatBuffers", {{Clock::processor, 0.67}}, pack}});
    compare("decode 10,000 in a list", decodeSide(count, 1), {{"FlatBuffers", {{Clock::processor, 1}}, unpack}});
}

// ------------------------------------------------------------------------------------------------------------------

void compareRecords()
{
    compareScalars();
    compareTexts(14, 0.5);
    compareTexts(200, 0);
    compareSizes();
    compareFresh();
    compareFlatBuffers();
}
