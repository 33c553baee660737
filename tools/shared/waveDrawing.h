#pragma once

#include <QByteArray>

#include <vector>

// One column of a picture: the smallest and the largest of its samples, so that no spike is lost. What is not finite
// is left out; of nothing else `low` is above `high`.
struct WaveColumn {
    float low;
    float high;
};

std::vector<WaveColumn> waveColumns(const std::vector<float>& samples, int count);

// A picture of the samples, some ten thousand bytes however many they are, scaled to the smallest and the largest,
// which are written beside it. There is a gap where none is finite, and a line at 0 if it lies between.
QByteArray waveSvg(const std::vector<float>& samples);
