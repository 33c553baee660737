#pragma once

#include <QByteArray>

#include <vector>

// A column of a picture: the smallest and the largest of its samples, so that no spike is lost. Samples that are not
// finite are ignored; if there are no others, `low` is above `high`.
struct WaveColumn {
    float low;
    float high;
};

std::vector<WaveColumn> waveColumns(const std::vector<float>& samples, int count);

// A picture of any number of samples in some ten thousand bytes. It is scaled to the smallest and the largest sample and
// labelled with them. Columns without a finite sample are gaps. A line marks 0 if it is in range.
QByteArray waveSvg(const std::vector<float>& samples);
