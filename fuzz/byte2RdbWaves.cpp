#include "byte2Rdb.h"
#include "target.h"

#include <cstring>

using namespace gqdb;

// --- Waves ------------------------------------------------------------------------

const int headSize = sizeof(BlobWaveHead);

static void readWave(Reading& reading)
{
    static unsigned char workBuffer[CByte2Rdb::waveBlockSize];
    const std::vector<unsigned char> stored(reading.buf, reading.buf + reading.size);
    BlobWaveHead head;
    std::vector<float> samples;
    std::vector<int> marks;
    reading.result = CByte2Rdb::byte2Wave(stored, workBuffer, head, samples, marks);

    reading.left = QByteArray(reinterpret_cast<const char*>(&head), headSize);
    for (const int mark : marks)
        CByte2Val::int2Byte(mark, reading.left);
    for (const float sample : samples)
        CByte2Val::float2Byte(sample, reading.left);
}

static void checkWave(const Layout&, const Reading& reading)
{
    if (reading.size < headSize)
        return requireResult(reading, 0);
    const bool isCompressed = reading.buf[1] & 4;
    if (reading.result == tooMuch)
        return require(isCompressed, "samples that fit fail to allocate"); // some streams unpack to thousands of times
    const long long markBytes = 4LL * numberOf4(reading.buf + 52);
    if (markBytes > 0 && reading.size < headSize + markBytes + 96) // with marks, 96 bytes of samples
        return requireResult(reading, 0);
    if (isCompressed)
        return require(reading.result == 0 || reading.result == 1, "the result is neither 0 nor 1");
    requireResult(reading, 1);

    const int samplesAt = headSize + static_cast<int>(markBytes);
    if (reading.buf[1] & 3) { // 2 bytes each
        const int samples = (reading.size - samplesAt) / 2;
        require(reading.left.size() == samplesAt + 4 * samples, "the samples are not as many as their bytes");
        require(reading.left.left(samplesAt) == QByteArray(reading.buf, samplesAt), "head or marks are not the same");
    } else {
        requireWrittenAgain(reading, samplesAt + (reading.size - samplesAt) / 4 * 4);
    }
}

const std::vector<Target> byte2RdbWaveTargets = {
    {"byte2Wave", readWave, checkWave, {}},
};
