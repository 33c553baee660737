#include "waveDrawing.h"

#include "text.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <limits>

// Places in the picture.
static const int width = 1100;
static const int height = 380;
static const int left = 85;
static const int right = 1085; // the plot has up to 1000 columns
static const int top = 40;
static const int bottom = 320;
static const int labelWidth = 40; // of a mark, at least

static const int valueSteps = 5;
static const int sampleSteps = 10;

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

// --- Axes ---------------------------------------------------------------------------------------------------------

// Returns the smallest 1, 2 or 5 times a power of ten that is not below `least`.
static double roundStep(double least)
{
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double factor : {1, 2, 5}) {
        if (factor * power >= least)
            return factor * power;
    }
    return 10 * power;
}

struct Scale {
    double low;
    double high;
    double step; // 0 if all values are equal

    QString y(double value) const
    {
        const double part = high > low ? (high - value) / (high - low) : 0.5;
        return QString::number(top + part * (bottom - top), 'f', 1);
    }
};

// Returns a scale between round numbers that includes `low` and `high`.
static Scale roundScale(double low, double high)
{
    if (low >= high)
        return {low, low, 0};
    const double step = roundStep((high - low) / valueSteps);
    return {std::floor(low / step) * step, std::ceil(high / step) * step, step};
}

static QString tick(const QString& label, const QString& y)
{
    return QString("<line x1=\"%1\" y1=\"%3\" x2=\"%2\" y2=\"%3\" stroke=\"%5\"/>"
                   "<text x=\"%4\" y=\"%3\" dy=\"4\" text-anchor=\"end\">%6</text>\n")
        .arg(left)
        .arg(right)
        .arg(y)
        .arg(left - 6)
        .arg(label == "0" ? "gray" : "lightgray", label);
}

static QString valueAxis(const Scale& scale)
{
    if (scale.step == 0)
        return tick(QString::number(scale.low, 'g', 7), scale.y(scale.low)); // as exact as a float
    QString axis;
    const long long last = std::llround(scale.high / scale.step);
    for (long long number = std::llround(scale.low / scale.step); number <= last; ++number) {
        const double value = static_cast<double>(number) * scale.step;
        axis += tick(QString::number(value, 'g', 10), scale.y(value)); // 10 digits hide that 3 * 0.1 is not 0.3
    }
    return axis;
}

// The samples that the picture shows, from left to right.
struct Span {
    long long first;
    long long count;

    bool contains(long long number) const { return number >= first && number < first + count; }
    double x(long long number) const
    {
        return left + (static_cast<double>(number - first) + 0.5) / static_cast<double>(count) * (right - left);
    }
};

static QString sampleAxis(const Span& span)
{
    const auto step = static_cast<long long>(roundStep(std::max(1.0, static_cast<double>(span.count) / sampleSteps)));
    QString axis;
    for (long long number = (span.first + step - 1) / step * step; span.contains(number); number += step)
        axis += QString("<line x1=\"%1\" y1=\"%2\" x2=\"%1\" y2=\"%3\" stroke=\"gray\"/>"
                        "<text x=\"%1\" y=\"%4\" text-anchor=\"middle\">%5</text>\n")
                    .arg(span.x(number), 0, 'f', 1)
                    .arg(bottom)
                    .arg(bottom + 5)
                    .arg(bottom + 19)
                    .arg(number);
    return axis + QString("<text x=\"%1\" y=\"%2\" text-anchor=\"middle\">%3</text>\n")
                      .arg((left + right) / 2)
                      .arg(bottom + 40)
                      .arg(Text::tr("sample"));
}

// --- Marks and samples --------------------------------------------------------------------------------------------

// A dashed line per mark; marks in the same place are one line. Labels that would overlap are left out.
static QString markLines(std::vector<int> marks, const Span& span)
{
    std::sort(marks.begin(), marks.end());
    QString lines;
    double lastLine = 0;
    double lastLabel = 0;
    for (const int mark : marks) {
        const double x = span.contains(mark) ? span.x(mark) : 0;
        if (x < lastLine + 1)
            continue;
        lastLine = x;
        lines +=
            QString("<line x1=\"%1\" y1=\"%2\" x2=\"%1\" y2=\"%3\" stroke=\"firebrick\" stroke-dasharray=\"4 3\"/>")
                .arg(x, 0, 'f', 1)
                .arg(top)
                .arg(bottom);
        const QString label = QString::number(mark);
        const double needed = std::max(labelWidth, 8 * static_cast<int>(label.size()));
        if (x >= lastLabel + needed) {
            lastLabel = x;
            lines += QString("<text x=\"%1\" y=\"%2\" text-anchor=\"middle\" fill=\"firebrick\">%3</text>")
                         .arg(x, 0, 'f', 1)
                         .arg(top - 4)
                         .arg(label);
        }
        lines += '\n';
    }
    return lines;
}

// A stroke through each column, from its low end to its high end, and on to the next column.
static QString samplePath(const std::vector<float>& samples, const Scale& scale)
{
    const int count = static_cast<int>(std::min<size_t>(samples.size(), right - left));
    QString path;
    int index = 0;
    bool isGap = true;
    for (const WaveColumn& column : waveColumns(samples, count)) {
        const double x = left + (right - left) * (index + 0.5) / count;
        ++index;
        if (column.low <= column.high)
            path += QString("%1%2 %3V%4")
                        .arg(isGap ? 'M' : 'L')
                        .arg(x, 0, 'f', 1)
                        .arg(scale.y(static_cast<double>(column.low)), scale.y(static_cast<double>(column.high)));
        isGap = column.low > column.high;
    }
    return QString("<path d=\"%1\" fill=\"none\" stroke=\"darkblue\" stroke-linecap=\"round\"/>\n").arg(path);
}

// Characters that XML excludes become question marks.
static QString xmlText(const QString& text)
{
    QString shown;
    for (const QChar character : text)
        shown += character.unicode() < ' ' || character.unicode() >= 0xfffe ? QChar('?') : character;
    return shown.toHtmlEscaped();
}

// ------------------------------------------------------------------------------------------------------------------

QByteArray waveSvg(const std::vector<float>& samples, const WaveCaptions& captions)
{
    const std::vector<WaveColumn> whole = waveColumns(samples, samples.empty() ? 0 : 1);
    const bool hasValues = !whole.empty() && whole[0].low <= whole[0].high;
    const Span span = {captions.first, static_cast<long long>(samples.size())};

    QString picture =
        QString("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%1\" height=\"%2\" viewBox=\"0 0 %1 %2\" "
                "font-family=\"sans-serif\" font-size=\"12\" fill=\"#333333\">\n")
            .arg(width)
            .arg(height);
    if (!captions.title.isEmpty())
        picture += QString("<title>%1</title>\n").arg(xmlText(captions.title));
    picture += "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    if (!captions.title.isEmpty())
        picture +=
            QString("<text x=\"%1\" y=\"18\" font-size=\"14\">%2</text>\n").arg(left).arg(xmlText(captions.title));
    const Scale scale =
        hasValues ? roundScale(static_cast<double>(whole[0].low), static_cast<double>(whole[0].high)) : Scale{0, 0, 0};
    if (hasValues)
        picture += valueAxis(scale);
    else
        picture += QString("<text x=\"%1\" y=\"%2\" text-anchor=\"middle\">%3</text>\n")
                       .arg((left + right) / 2)
                       .arg((top + bottom) / 2)
                       .arg(samples.empty() ? Text::tr("no samples") : Text::tr("no finite samples"));
    picture += QString("<rect x=\"%1\" y=\"%2\" width=\"%3\" height=\"%4\" fill=\"none\" stroke=\"gray\"/>\n")
                   .arg(left)
                   .arg(top)
                   .arg(right - left)
                   .arg(bottom - top);
    if (!samples.empty())
        picture += sampleAxis(span) + markLines(captions.marks, span) + samplePath(samples, scale);
    return (picture + "</svg>\n").toUtf8();
}
