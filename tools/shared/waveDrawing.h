#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

// A column of a picture: the smallest and the largest of its samples, so that no spike is lost. Samples that are not
// finite are ignored; if there are no others, `low` is above `high`.
struct WaveColumn {
    float low;
    float high;
};

std::vector<WaveColumn> waveColumns(const std::vector<float>& samples, int count);

// What the picture of a wave shows besides its samples.
struct WaveCaptions {
    QString title;
    long long first = 0;    // number of the first sample
    std::vector<int> marks; // numbers of samples; others are not drawn
};

// A picture, as SVG, of any number of samples in some ten thousand bytes. The axes have round numbers; the value
// axis includes the smallest and the largest sample. If all samples are equal, it has one label. Columns without a
// finite sample are gaps.
QByteArray waveSvg(const std::vector<float>& samples, const WaveCaptions& captions = {});
