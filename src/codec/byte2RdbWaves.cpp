#include "byte2Rdb.h"

#include "byteOrder.h"
#include "samples.h"

#include <zlib.h>

namespace gqdb {

static const unsigned char rawSamples = 1;       // bits of waveFlags
static const unsigned char quantisedSamples = 2; // the reader tests rawSamples first
static const unsigned char compressedSamples = 4;

static const unsigned int waveHeadSize = sizeof(BlobWaveHead);
static_assert(sizeof(BlobWaveHead) == 96, "a wave's head is stored as it is in memory");

// Compresses the `length` bytes of samples in `rawBuffer` if wanted, and stores head, marks and samples.
static int storeWave(BlobWaveHead& head, const std::vector<int>& marks, const unsigned char* rawBuffer, size_t length,
                     bool compressed, unsigned char* packedBuffer, std::vector<unsigned char>& stored)
{
    const unsigned char* block = rawBuffer;
    if (compressed) {
        uLongf packed = CByte2Rdb::waveBlockSize;
        if (compress(packedBuffer, &packed, rawBuffer, length) != Z_OK)
            return -1;
        block = packedBuffer;
        length = packed;
    }
    head.markCount = static_cast<unsigned int>(marks.size());
    stored.resize(waveHeadSize + 4 * marks.size() + length);
    unsigned char* at = stored.data();
    std::memcpy(at, &head, waveHeadSize);
    at += waveHeadSize;
    for (const int mark : marks) {
        store32(static_cast<unsigned int>(mark), reinterpret_cast<char*>(at));
        at += 4;
    }
    if (length > 0)
        std::memcpy(at, block, length);
    return 1;
}

int CByte2Rdb::wave2Byte(BlobWaveHead& head, const std::vector<float>& samples, const std::vector<int>& marks,
                         unsigned char* rawBuffer, unsigned char* packedBuffer, std::vector<unsigned char>& stored)
{
    char* raw = reinterpret_cast<char*>(rawBuffer);
    size_t length = 4 * samples.size();
    head.sampleCount = static_cast<unsigned int>(samples.size());
    if (head.waveFlags & quantisedSamples) {
        calcLimit(samples, head.limitHigh, head.limitLow);
        quantiseToBytes(samples.data(), samples.size(), static_cast<float>(head.limitHigh),
                        static_cast<float>(head.limitLow), raw);
        length = 2 * samples.size();
    } else if (!samples.empty()) {
        float highest;
        float lowest;
        storeWithLimits(samples.data(), samples.size(), raw, highest, lowest);
        head.limitHigh = highest;
        head.limitLow = lowest;
    }
    return storeWave(head, marks, rawBuffer, length, head.waveFlags & compressedSamples, packedBuffer, stored);
}

int CByte2Rdb::wave2Byte(BlobWaveHead& head, const std::vector<int>& samples, const std::vector<int>& marks,
                         unsigned char* rawBuffer, unsigned char* packedBuffer, std::vector<unsigned char>& stored)
{
    head.waveFlags |= rawSamples;
    head.sampleCount = static_cast<unsigned int>(samples.size());
    ushorts2Buffer(samples, reinterpret_cast<char*>(rawBuffer));
    return storeWave(head, marks, rawBuffer, 2 * samples.size(), head.waveFlags & compressedSamples, packedBuffer,
                     stored);
}

int CByte2Rdb::byte2Wave(const std::vector<unsigned char>& stored, unsigned char* workBuffer, BlobWaveHead& head,
                         std::vector<float>& samples, std::vector<int>& marks)
{
    if (stored.size() < waveHeadSize)
        return 0;
    std::memcpy(&head, stored.data(), waveHeadSize);
    const char* payload = reinterpret_cast<const char*>(stored.data()) + waveHeadSize;
    int length = static_cast<int>(stored.size() - waveHeadSize);

    if (head.markCount != 0) {
        // The size of the head is deliberately added again: with marks, fewer than 96 bytes of samples are refused.
        if (length < static_cast<int>(head.markCount * 4 + waveHeadSize))
            return 0;
        if (head.markCount > static_cast<unsigned int>(length) / 4)
            return 0; // only if the sum above wrapped
        marks.resize(head.markCount);
        for (int& mark : marks) {
            mark = static_cast<int>(load32(payload));
            payload += 4;
        }
        length -= static_cast<int>(4 * head.markCount);
    }
    if (head.waveFlags & compressedSamples) {
        uLongf unpacked = waveBlockSize;
        if (uncompress(workBuffer, &unpacked, reinterpret_cast<const Bytef*>(payload), static_cast<uLong>(length)) !=
            Z_OK)
            return 0;
        payload = reinterpret_cast<const char*>(workBuffer);
        length = static_cast<int>(unpacked);
    }
    if ((head.waveFlags & (rawSamples | quantisedSamples)) == 0) {
        buffer2Floats(payload, length / 4, samples);
        return 1;
    }
    const size_t count = static_cast<size_t>(length / 2);
    if (count == 0)
        return 1; // `samples` is unchanged
    samples.resize(count);
    if (head.waveFlags & rawSamples)
        scaleBytes(payload, count, head.limitHigh, head.limitLow, samples.data());
    else
        unquantiseBytes(payload, count, static_cast<float>(head.limitHigh), static_cast<float>(head.limitLow),
                        samples.data());
    return 1;
}

} // namespace gqdb
