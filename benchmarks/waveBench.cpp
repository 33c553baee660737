#include "waveBench.h"

#include "byte2Rdb.h"
#include "comparison.h"

#include <cmath>

#include <zlib.h>

using gqdb::BlobWaveHead;
using gqdb::CByte2Rdb;

static const size_t sampleCount = 1000000;
static const unsigned char quantised = 2; // bits of waveFlags
static const unsigned char compressed = 4;

// A voltage with harmonics, in steps of 1/16 V, as from a converter.
static std::vector<float> someSamples()
{
    std::vector<float> samples(sampleCount);
    for (size_t i = 0; i < sampleCount; ++i) {
        const double time = static_cast<double>(i) / 20000;
        const double volts = 326 * std::sin(314.16 * time) + 20 * std::sin(1570.8 * time);
        samples[i] = static_cast<float>(std::round(volts * 16) / 16);
    }
    return samples;
}

static std::vector<unsigned char> storedWave(const std::vector<float>& samples, unsigned char flags)
{
    BlobWaveHead head;
    head.waveFlags = static_cast<char>(flags);
    std::vector<unsigned char> raw(4 * samples.size());
    std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
    std::vector<unsigned char> stored;
    if (CByte2Rdb::wave2Byte(head, samples, {}, raw.data(), packed.data(), stored) != 1)
        fail("the wave cannot be packed");
    return stored;
}

static Side packSide(const std::vector<float>& samples, unsigned char flags)
{
    return [=](benchmark::State& state) {
        std::vector<unsigned char> raw(4 * samples.size());
        std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
        std::vector<unsigned char> stored;
        for (auto _ : state) {
            BlobWaveHead head;
            head.waveFlags = static_cast<char>(flags);
            if (CByte2Rdb::wave2Byte(head, samples, {}, raw.data(), packed.data(), stored) != 1)
                fail("the wave cannot be packed");
            benchmark::ClobberMemory();
        }
    };
}

// The same into memory that each run allocates, as in a program that packs one wave now and then.
static Side packFreshSide(const std::vector<float>& samples, unsigned char flags)
{
    return [=](benchmark::State& state) {
        for (auto _ : state) {
            BlobWaveHead head;
            head.waveFlags = static_cast<char>(flags);
            std::vector<unsigned char> raw(4 * samples.size());
            std::vector<unsigned char> stored;
            if (CByte2Rdb::wave2Byte(head, samples, {}, raw.data(), nullptr, stored) != 1)
                fail("the wave cannot be packed");
            benchmark::DoNotOptimize(stored.data());
            benchmark::ClobberMemory();
        }
    };
}

static Side unpackFreshSide(const std::vector<float>& samples, unsigned char flags)
{
    return [=](benchmark::State& state) {
        const std::vector<unsigned char> stored = storedWave(samples, flags);
        for (auto _ : state) {
            BlobWaveHead head;
            std::vector<float> back;
            std::vector<int> marks;
            if (CByte2Rdb::byte2Wave(stored, nullptr, head, back, marks) != 1)
                fail("the wave cannot be unpacked");
            benchmark::DoNotOptimize(back.data());
            benchmark::ClobberMemory();
        }
    };
}

// Checks that the samples are read back: exactly, or within half a step if quantised.
static Side unpackSide(const std::vector<float>& samples, unsigned char flags)
{
    return [=](benchmark::State& state) {
        const std::vector<unsigned char> stored = storedWave(samples, flags);
        std::vector<unsigned char> work(CByte2Rdb::waveBlockSize);
        BlobWaveHead head;
        std::vector<float> back;
        std::vector<int> marks;
        for (auto _ : state) {
            if (CByte2Rdb::byte2Wave(stored, work.data(), head, back, marks) != 1)
                fail("the wave cannot be unpacked");
            benchmark::ClobberMemory();
        }
        for (size_t i = 0; i < sampleCount; ++i) {
            if (std::abs(back[i] - samples[i]) > ((flags & quantised) != 0 ? 0.011f : 0))
                fail("the wave's samples differ");
        }
    };
}

// Signed samples as from a converter, with scale and offset in the head.
static Side unpackSixteenBitsSide()
{
    return [](benchmark::State& state) {
        std::vector<int> raw(sampleCount);
        for (size_t i = 0; i < sampleCount; ++i)
            raw[i] = static_cast<int>(i * 101 % 65536) - 32768;
        BlobWaveHead head;
        head.limitHigh = 0.0625;
        head.limitLow = 1;
        std::vector<unsigned char> rawBytes(2 * sampleCount);
        std::vector<unsigned char> work(CByte2Rdb::waveBlockSize);
        std::vector<unsigned char> stored;
        if (CByte2Rdb::wave2Byte(head, raw, {}, rawBytes.data(), work.data(), stored) != 1)
            fail("the wave cannot be packed");
        std::vector<float> back;
        std::vector<int> marks;
        for (auto _ : state) {
            if (CByte2Rdb::byte2Wave(stored, work.data(), head, back, marks) != 1)
                fail("the wave cannot be unpacked");
            benchmark::ClobberMemory();
        }
        for (size_t i = 0; i < sampleCount; ++i) {
            if (back[i] != static_cast<float>(raw[i]) / 16 + 1)
                fail("the wave's samples differ");
        }
    };
}

// Returns the stored samples without the head, the input of zlib.
static std::vector<unsigned char> sampleBlock(const std::vector<float>& samples, unsigned char flags)
{
    const std::vector<unsigned char> stored = storedWave(samples, flags & quantised);
    return {stored.begin() + sizeof(BlobWaveHead), stored.end()};
}

static Side zlibPackSide(const std::vector<unsigned char>& block)
{
    return [=](benchmark::State& state) {
        std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
        for (auto _ : state) {
            uLongf size = packed.size();
            if (compress(packed.data(), &size, block.data(), block.size()) != Z_OK)
                fail("zlib cannot pack");
            benchmark::ClobberMemory();
        }
    };
}

static Side zlibUnpackSide(const std::vector<unsigned char>& block)
{
    return [=](benchmark::State& state) {
        std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
        uLongf packedSize = packed.size();
        if (compress(packed.data(), &packedSize, block.data(), block.size()) != Z_OK)
            fail("zlib cannot pack");
        std::vector<unsigned char> back(CByte2Rdb::waveBlockSize);
        for (auto _ : state) {
            uLongf size = back.size();
            if (uncompress(back.data(), &size, packed.data(), packedSize) != Z_OK || size != block.size())
                fail("zlib cannot unpack");
            benchmark::ClobberMemory();
        }
    };
}

void compareWaves()
{
    const std::vector<float> samples = someSamples();
    const QByteArray bytes(reinterpret_cast<const char*>(samples.data()), int(sizeof(float) * sampleCount));
    compare("pack 1,000,000 floats", packSide(samples, 0), {{"memcpy", {{Clock::processor, 2.3}}, copySide(bytes)}});
    compare("unpack 1,000,000 floats", unpackSide(samples, 0), {{"memcpy", {{Clock::processor, 2}}, copySide(bytes)}});
    compare("pack 1,000,000 quantised", packSide(samples, quantised),
            {{"memcpy", {{Clock::processor, 2.3}}, copySide(bytes)}});
    compare("unpack 1,000,000 quantised", unpackSide(samples, quantised),
            {{"memcpy", {{Clock::processor, 1.5}}, copySide(bytes)}});
    compare("unpack 1,000,000 of 16 bits", unpackSixteenBitsSide(),
            {{"memcpy", {{Clock::processor, 2.4}}, copySide(bytes)}});
    const Peer freshCopy = {"copy of a vector", {{Clock::processor, 0}}, freshCopySide(samples)};
    compare("pack floats, new vectors each", packFreshSide(samples, 0), {freshCopy});
    compare("pack quantised, new vectors each", packFreshSide(samples, quantised), {freshCopy});
    compare("unpack quantised, a new vector each", unpackFreshSide(samples, quantised), {freshCopy});
    const std::vector<unsigned char> block = sampleBlock(samples, quantised);
    compare("pack quantised, compressed", packSide(samples, quantised | compressed),
            {{"zlib alone", {{Clock::processor, 1.1}}, zlibPackSide(block)}});
    compare("unpack quantised, compressed", unpackSide(samples, quantised | compressed),
            {{"zlib alone", {{Clock::processor, 1.25}}, zlibUnpackSide(block)}});
}
