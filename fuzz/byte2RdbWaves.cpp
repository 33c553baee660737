#include "byte2Rdb.h"
#include "target.h"

#include <zlib.h>

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

    reading.written = QByteArray(reinterpret_cast<const char*>(&head), headSize);
    for (const int mark : marks)
        CByte2Val::int2Byte(mark, reading.written);
    for (const float sample : samples)
        CByte2Val::float2Byte(sample, reading.written);
}

// Unpacks `samples` with zlib alone. Returns false if zlib refuses them.
static bool unpack(QByteArray& samples)
{
    static Bytef block[CByte2Rdb::waveBlockSize];
    uLongf size = sizeof block;
    if (uncompress(block, &size, reinterpret_cast<const Bytef*>(samples.constData()),
                   static_cast<uLong>(samples.size())) != Z_OK)
        return false;
    samples = QByteArray(reinterpret_cast<const char*>(block), static_cast<int>(size));
    return true;
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

    const int samplesAt = headSize + static_cast<int>(markBytes);
    QByteArray samples(reading.buf + samplesAt, reading.size - samplesAt);
    if (isCompressed && !unpack(samples))
        return requireResult(reading, 0);
    requireResult(reading, 1);
    require(reading.written.left(samplesAt) == QByteArray(reading.buf, samplesAt),
            "head and marks must be the same when written again");
    if (reading.buf[1] & 3) // 2 bytes each
        require(reading.written.size() == samplesAt + 4 * (samples.size() / 2),
                "the samples are not as many as their bytes");
    else
        require(reading.written.mid(samplesAt) == samples.left(samples.size() / 4 * 4),
                "the samples must be the same when written again");
}

const std::vector<Target> byte2RdbWaveTargets = {
    {"byte2Wave", readWave, checkWave, {}},
};
