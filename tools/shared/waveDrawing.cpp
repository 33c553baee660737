#include "waveDrawing.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>

static const int width = 1000;
static const int height = 300;
static const int margin = 5;

std::vector<WaveColumn> waveColumns(const std::vector<float>& samples, int count)
{
    std::vector<WaveColumn> columns;
    for (int i = 0; i < count; ++i) {
        const size_t first = samples.size() * static_cast<size_t>(i) / static_cast<size_t>(count);
        const size_t last = samples.size() * static_cast<size_t>(i + 1) / static_cast<size_t>(count);
        WaveColumn column = {std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest()};
        for (size_t pos = first; pos < std::max(last, first + 1); ++pos) {
            if (!std::isfinite(samples[pos]))
                continue;
            column.low = std::min(column.low, samples[pos]);
            column.high = std::max(column.high, samples[pos]);
        }
        columns.push_back(column);
    }
    return columns;
}

QByteArray waveSvg(const std::vector<float>& samples)
{
    const std::vector<WaveColumn> whole = waveColumns(samples, samples.empty() ? 0 : 1);
    const double low = whole.empty() ? 0 : static_cast<double>(whole[0].low);
    const double high = whole.empty() ? 0 : static_cast<double>(whole[0].high);
    const auto y = [&](double value) {
        const double part = high > low ? (high - value) / (high - low) : 0.5;
        return QString::number(margin + part * (height - 2 * margin), 'f', 1);
    };

    // A stroke through each column, from its low end to its high end, and on to the next column.
    const int count = static_cast<int>(std::min<size_t>(samples.size(), width));
    QString line;
    int index = 0;
    bool isGap = true;
    for (const WaveColumn& column : waveColumns(samples, count)) {
        const double x = static_cast<double>(width) * (index + 0.5) / count;
        ++index;
        if (column.low <= column.high)
            line += QString("%1%2 %3V%4").arg(isGap ? 'M' : 'L').arg(x, 0, 'f', 1).arg(y(column.low), y(column.high));
        isGap = column.low > column.high;
    }

    QString picture = QString("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\">\n"
                              "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n")
                          .arg(width)
                          .arg(height);
    if (low <= 0 && high >= 0)
        picture += QString("<path d=\"M0 %1H%2\" stroke=\"lightgray\"/>\n").arg(y(0)).arg(width);
    picture += QString("<path d=\"%1\" fill=\"none\" stroke=\"darkblue\" stroke-linecap=\"round\"/>\n").arg(line);
    if (low <= high)
        picture += QString("<g font-family=\"sans-serif\" font-size=\"11\" fill=\"gray\">"
                           "<text x=\"4\" y=\"14\">%1</text><text x=\"4\" y=\"%3\">%2</text></g>\n")
                       .arg(high)
                       .arg(low)
                       .arg(height - 6);
    return (picture + "</svg>\n").toUtf8();
}
