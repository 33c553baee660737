#include "codecBench.h"

#include "byte2Rdb.h"
#include "comparison.h"
#include "records.pb.h"

#include <QDataStream>

#include <algorithm>
#include <cmath>
#include <cstring>

#include <boost/crc.hpp>

using gqdb::CByte2Rdb;
using gqdb::CByte2Val;
using gqdb::FloatRealData;

static const char copyName[] = "memcpy";
static const char protobufName[] = "Protocol Buffers";
static const char streamName[] = "QDataStream";

// --- Records ------------------------------------------------------------------------------------------------------

using Records = std::vector<FloatRealData>;

// No field is 0, which Protocol Buffers would omit, and no flag needs more than one byte there.
static Records someRecords()
{
    Records records(10000);
    unsigned int i = 0;
    for (FloatRealData& record : records) {
        ++i;
        record.pointId = i;
        record.stamp1 = 1700000000 + i;
        record.stamp2 = i * 97;
        record.value = 0.25f * static_cast<float>(i);
        record.flag1 = static_cast<char>(1 + i % 100);
        record.flag2 = static_cast<char>(1 + i % 7);
    }
    return records;
}

static bool isSame(const Records& left, const Records& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const FloatRealData& a, const FloatRealData& b) {
                          return a.pointId == b.pointId && a.stamp1 == b.stamp1 && a.stamp2 == b.stamp2 &&
                                 a.value == b.value && a.flag1 == b.flag1 && a.flag2 == b.flag2;
                      });
}

// Makes QDataStream write the same bytes as the library: little-endian, floats in 4 bytes.
static void useLibraryForm(QDataStream& stream)
{
    stream.setByteOrder(QDataStream::LittleEndian);
    stream.setFloatingPointPrecision(QDataStream::SinglePrecision);
}

static void streamOut(const Records& records, QByteArray& data)
{
    QDataStream out(&data, QIODevice::WriteOnly);
    useLibraryForm(out);
    out << static_cast<quint32>(records.size());
    for (const FloatRealData& record : records)
        out << record.pointId << record.value << record.stamp1 << record.stamp2 << static_cast<qint8>(record.flag2)
            << static_cast<qint8>(record.flag1);
}

static void streamIn(const QByteArray& data, Records& records)
{
    QDataStream in(data);
    useLibraryForm(in);
    quint32 count = 0;
    in >> count;
    records.resize(count);
    for (FloatRealData& record : records) {
        qint8 flag1 = 0;
        qint8 flag2 = 0;
        in >> record.pointId >> record.value >> record.stamp1 >> record.stamp2 >> flag2 >> flag1;
        record.flag1 = static_cast<char>(flag1);
        record.flag2 = static_cast<char>(flag2);
    }
}

static peer::FloatRealDatas toMessage(const Records& records)
{
    peer::FloatRealDatas message;
    for (const FloatRealData& record : records) {
        peer::FloatRealData& item = *message.add_records();
        item.set_point_id(record.pointId);
        item.set_value(record.value);
        item.set_stamp1(record.stamp1);
        item.set_stamp2(record.stamp2);
        item.set_flag2(static_cast<unsigned char>(record.flag2));
        item.set_flag1(static_cast<unsigned char>(record.flag1));
    }
    return message;
}

static Records fromMessage(const peer::FloatRealDatas& message)
{
    Records records;
    for (const peer::FloatRealData& item : message.records()) {
        FloatRealData record;
        record.pointId = item.point_id();
        record.value = item.value();
        record.stamp1 = item.stamp1();
        record.stamp2 = item.stamp2();
        record.flag2 = static_cast<char>(item.flag2());
        record.flag1 = static_cast<char>(item.flag1());
        records.push_back(record);
    }
    return records;
}

// Returns the bytes that the library must write and read, made without it.
static QByteArray streamed(const Records& records)
{
    QByteArray data;
    streamOut(records, data);
    return data;
}

static void compareEncoding(const Records& records)
{
    const QByteArray bytes = streamed(records);
    const auto library = [=](benchmark::State& state) {
        QByteArray data;
        data.reserve(bytes.size()); // kept by resize(0)
        CByte2Rdb::floatRealDatas2Byte(records, data);
        if (data != bytes)
            fail("the library's bytes differ");
        for (auto _ : state) {
            data.resize(0);
            CByte2Rdb::floatRealDatas2Byte(records, data);
            benchmark::DoNotOptimize(data.constData());
            benchmark::ClobberMemory();
        }
    };
    const auto protobuf = [=](benchmark::State& state) {
        const peer::FloatRealDatas message = toMessage(records);
        const int size = static_cast<int>(message.ByteSizeLong());
        std::string room(size_t(size), '\0');
        peer::FloatRealDatas back;
        if (!message.SerializeToArray(room.data(), size) || !back.ParseFromArray(room.data(), size) ||
            !isSame(fromMessage(back), records))
            fail("the bytes of Protocol Buffers differ");
        for (auto _ : state) {
            if (!message.SerializeToArray(room.data(), size))
                fail("Protocol Buffers failed");
            benchmark::DoNotOptimize(room.data());
            benchmark::ClobberMemory();
        }
    };
    const auto stream = [=](benchmark::State& state) {
        QByteArray data;
        data.reserve(bytes.size()); // kept by the stream
        streamOut(records, data);
        if (data != bytes)
            fail("the stream's bytes differ");
        for (auto _ : state) {
            streamOut(records, data);
            benchmark::DoNotOptimize(data.constData());
            benchmark::ClobberMemory();
        }
    };
    compare("encode 10,000 FloatRealData", library,
            {{copyName, {{Clock::processor, 1.7}}, copySide(bytes)},
             {protobufName, {{Clock::processor, 1}}, protobuf},
             {streamName, {{Clock::processor, 1}}, stream}});
}

static void compareDecoding(const Records& records)
{
    const QByteArray bytes = streamed(records);
    const auto library = [=](benchmark::State& state) {
        Records list;
        if (CByte2Rdb::byte2FloatRealDatas(bytes.constData(), bytes.size(), list) != 1 || !isSame(list, records))
            fail("the library's records differ");
        for (auto _ : state) {
            list.clear();
            if (CByte2Rdb::byte2FloatRealDatas(bytes.constData(), bytes.size(), list) != 1)
                fail("the library failed");
            benchmark::DoNotOptimize(list.data());
            benchmark::ClobberMemory();
        }
    };
    const auto protobuf = [=](benchmark::State& state) {
        const std::string serialized = toMessage(records).SerializeAsString();
        const int size = static_cast<int>(serialized.size());
        peer::FloatRealDatas message; // keeps its items for the next parse
        if (!message.ParseFromArray(serialized.data(), size) || !isSame(fromMessage(message), records))
            fail("the records of Protocol Buffers differ");
        for (auto _ : state) {
            if (!message.ParseFromArray(serialized.data(), size))
                fail("Protocol Buffers failed");
            benchmark::DoNotOptimize(message);
            benchmark::ClobberMemory();
        }
    };
    const auto stream = [=](benchmark::State& state) {
        Records list;
        streamIn(bytes, list);
        if (!isSame(list, records))
            fail("the stream's records differ");
        for (auto _ : state) {
            list.clear();
            streamIn(bytes, list);
            benchmark::DoNotOptimize(list.data());
            benchmark::ClobberMemory();
        }
    };
    compare("decode 10,000 FloatRealData", library,
            {{copyName, {{Clock::processor, 1.6}}, copySide(bytes)},
             {protobufName, {{Clock::processor, 1}}, protobuf},
             {streamName, {{Clock::processor, 1}}, stream}});
}

// --- Samples ------------------------------------------------------------------------------------------------------

static const size_t sampleCount = 1000000;

// Returns 0 to 256, up and down in large steps.
static int someStep(size_t i)
{
    return static_cast<int>(i * 101 % 257);
}

static void compareFloat2Short()
{
    std::vector<float> samples(sampleCount);
    std::vector<int> expected(sampleCount);
    for (size_t i = 0; i < sampleCount; ++i) {
        samples[i] = static_cast<float>(someStep(i)) / 256; // multiplied by 65535, still exact in a float
        expected[i] = someStep(i) * 65535 / 256;
    }
    const auto library = [=](benchmark::State& state) {
        std::vector<int> raw;
        CByte2Val::float2Short(samples, 1, 0, raw);
        if (raw != expected)
            fail("float2Short: the raw samples differ");
        for (auto _ : state) {
            CByte2Val::float2Short(samples, 1, 0, raw);
            benchmark::DoNotOptimize(raw.data());
            benchmark::ClobberMemory();
        }
    };
    const QByteArray bytes(reinterpret_cast<const char*>(samples.data()), int(sizeof(float) * sampleCount));
    const auto fresh = [=](benchmark::State& state) {
        for (auto _ : state) {
            std::vector<int> raw;
            CByte2Val::float2Short(samples, 1, 0, raw);
            benchmark::DoNotOptimize(raw.data());
            benchmark::ClobberMemory();
        }
    };
    compare("float2Short of 1,000,000 samples", library, {{copyName, {{Clock::processor, 1.4}}, copySide(bytes)}});
    compare("float2Short, a new vector each", fresh, {{copyName, {{Clock::processor, 0}}, freshCopySide(samples)}});
}

static void compareShort2float()
{
    const float upper = 20;
    const float lower = -20;
    std::vector<int> raw(sampleCount);
    for (size_t i = 0; i < sampleCount; ++i)
        raw[i] = someStep(i) * 255;
    const auto library = [=](benchmark::State& state) {
        std::vector<float> samples;
        CByte2Val::short2float(raw, upper, lower, samples);
        if (samples.size() != raw.size())
            fail("short2float: the number of samples differs");
        for (size_t i = 0; i < sampleCount; ++i) {
            // A step is 40 / 65535, about 6e-4. Tests check the last bit.
            if (std::abs(samples[i] - (lower + raw[i] * (upper - lower) / 65535.0)) > 1e-5)
                fail("short2float: the samples differ");
        }
        for (auto _ : state) {
            CByte2Val::short2float(raw, upper, lower, samples);
            benchmark::DoNotOptimize(samples.data());
            benchmark::ClobberMemory();
        }
    };
    const QByteArray bytes(reinterpret_cast<const char*>(raw.data()), int(sizeof(int) * sampleCount));
    const auto fresh = [=](benchmark::State& state) {
        for (auto _ : state) {
            std::vector<float> samples;
            CByte2Val::short2float(raw, upper, lower, samples);
            benchmark::DoNotOptimize(samples.data());
            benchmark::ClobberMemory();
        }
    };
    compare("short2float of 1,000,000 samples", library, {{copyName, {{Clock::processor, 1.5}}, copySide(bytes)}});
    compare("short2float, a new vector each", fresh,
            {{copyName, {{Clock::processor, 0}}, freshCopySide(std::vector<float>(sampleCount))}});
}

static void compareCalcLimit()
{
    std::vector<float> samples(sampleCount);
    for (size_t i = 0; i < sampleCount; ++i)
        samples[i] = static_cast<float>(someStep(i));
    const auto library = [=](benchmark::State& state) {
        double upper = 0;
        double lower = 0;
        for (auto _ : state) {
            CByte2Val::calcLimit(samples, upper, lower);
            benchmark::DoNotOptimize(upper);
            benchmark::DoNotOptimize(lower);
        }
        if (upper != 256 || lower != 0)
            fail("calcLimit: the limits differ");
    };
    // Adds up all words, in lanes that the compiler vectorises.
    const auto reading = [=](benchmark::State& state) {
        static const size_t lanes = 32;
        std::vector<unsigned int> words(sampleCount);
        std::memcpy(words.data(), samples.data(), sizeof(float) * sampleCount);
        for (auto _ : state) {
            unsigned int sums[lanes] = {};
            for (size_t i = 0; i + lanes <= sampleCount; i += lanes) {
                for (size_t lane = 0; lane < lanes; ++lane)
                    sums[lane] += words[i + lane];
            }
            benchmark::DoNotOptimize(sums);
        }
    };
    compare("calcLimit of 1,000,000 samples", library, {{"reading them", {{Clock::processor, 1.2}}, reading}});
}

// --- Telegrams ----------------------------------------------------------------------------------------------------

// The same CRC, as a plain loop over two tables with one step per byte.
class BareCrc {
public:
    BareCrc()
    {
        for (unsigned int i = 0; i < 256; ++i) {
            unsigned int crc = i;
            for (int bit = 0; bit < 8; ++bit)
                crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
            lowBytes[i] = static_cast<unsigned char>(crc);
            highBytes[i] = static_cast<unsigned char>(crc >> 8);
        }
    }

    unsigned int of(const QByteArray& bytes) const
    {
        unsigned char high = 0xFF;
        unsigned char low = 0xFF;
        for (const char byte : bytes) {
            const auto i = static_cast<unsigned char>(low ^ byte);
            low = high ^ lowBytes[i];
            high = highBytes[i];
        }
        return low | unsigned(high) << 8;
    }

private:
    unsigned char lowBytes[256];
    unsigned char highBytes[256];
};

static unsigned int boostCrc(const QByteArray& bytes)
{
    boost::crc_optimal<16, 0x8005, 0xFFFF, 0, true, true> crc;
    crc.process_bytes(bytes.constData(), size_t(bytes.size()));
    return crc.checksum();
}

static void compareCrc(const std::string& job, int size)
{
    QByteArray telegram;
    for (int i = 0; i < size; ++i)
        telegram.append(static_cast<char>(i * 31 + i / 256));
    const auto library = [=](benchmark::State& state) {
        unsigned char first = 0;
        unsigned char second = 0;
        if (CByte2Val::getCrc16(telegram.constData(), size, first, second) != 1 ||
            (unsigned(first) << 8 | second) != boostCrc(telegram))
            fail(job + ": the library's CRC differs");
        for (auto _ : state) {
            CByte2Val::getCrc16(telegram.constData(), size, first, second);
            benchmark::DoNotOptimize(first);
            benchmark::DoNotOptimize(second);
        }
    };
    const auto bare = [=](benchmark::State& state) {
        static const BareCrc crc;
        if (crc.of(telegram) != boostCrc(telegram))
            fail(job + ": the bare CRC differs");
        for (auto _ : state) {
            unsigned int sum = crc.of(telegram);
            benchmark::DoNotOptimize(sum);
        }
    };
    const auto boost = [=](benchmark::State& state) {
        for (auto _ : state) {
            unsigned int sum = boostCrc(telegram);
            benchmark::DoNotOptimize(sum);
        }
    };
    compare(job, library,
            {{"two tables", {{Clock::processor, 1.2}}, bare}, {"Boost.CRC", {{Clock::processor, 0.71}}, boost}});
}

// ------------------------------------------------------------------------------------------------------------------

void compareCodec()
{
    const Records records = someRecords();
    compareEncoding(records);
    compareDecoding(records);
    compareFloat2Short();
    compareShort2float();
    compareCalcLimit();
    compareCrc("getCrc16 of 256 bytes", 256);
    compareCrc("getCrc16 of 64 KiB", 1 << 16);
}
