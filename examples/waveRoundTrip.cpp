// Packs a wave into the bytes of a stored wave and unpacks it.

#include <gqLib/byte2Rdb.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using gqdb::CByte2Rdb;

int main()
{
    std::vector<float> samples(2000);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(std::sin(static_cast<double>(i) / 100));
    const std::vector<int> marks = {157, 471}; // meaning defined by the program: here the first maximum and minimum

    //! [wave]
    gqdb::BlobWaveHead head;
    head.waveFlags = 2 | 4; // quantised to 16 bits and compressed
    std::vector<unsigned char> raw(4 * samples.size());
    std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
    std::vector<unsigned char> stored;
    if (CByte2Rdb::wave2Byte(head, samples, marks, raw.data(), packed.data(), stored) != 1)
        return 1;

    std::vector<unsigned char> work(CByte2Rdb::waveBlockSize);
    gqdb::BlobWaveHead headRead;
    std::vector<float> samplesRead;
    std::vector<int> marksRead;
    if (CByte2Rdb::byte2Wave(stored, work.data(), headRead, samplesRead, marksRead) != 1)
        return 1;
    //! [wave]

    float worst = 0;
    for (size_t i = 0; i < samplesRead.size(); ++i)
        worst = std::max(worst, std::fabs(samplesRead[i] - samples[i]));
    std::printf("%zu samples in %zu bytes of %zu\n", samples.size(), stored.size(), sizeof head + 4 * samples.size());
    std::printf("%zu samples and %zu marks read\n", samplesRead.size(), marksRead.size());
    std::printf("from %.3f to %.3f, each within %s\n", headRead.limitLow, headRead.limitHigh,
                worst <= 2.0f / 65535 * 1.01f ? "a step" : "more than a step");
    return 0;
}
