#include "bytes/outputFile.h"
#include "command.h"
#include "commandLine.h"
#include "gqtool/records/waveBlock.h"
#include "input.h"
#include "shared/console.h"
#include "shared/progress.h"
#include "shared/recordConstants.h"
#include "shared/text.h"
#include "shared/waveDrawing.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLocale>

#include <algorithm>
#include <array>
#include <byte2Rdb.h>
#include <charconv>
#include <climits>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using gqdb::BlobWaveHead;
using gqdb::CByte2Rdb;

// Larger waves are refused: with the bytes and the samples in memory they take four times as much.
static const int largestWave = 48 << 20; // bytes
static const int headSize = sizeof(BlobWaveHead);
static const int shownMarks = 16;

// --- The wave -----------------------------------------------------------------------------------------------------

struct Wave {
    long long size = 0;
    bool hasHead = false;
    BlobWaveHead head;
    Text refusal; // why the reader refuses it; empty if it accepts it
    std::vector<float> samples;
    std::vector<int> marks;
};

static bool isCompressed(const BlobWaveHead& head)
{
    return (head.waveFlags & compressedSamples) != 0;
}

static Text formText(const BlobWaveHead& head)
{
    if (head.waveFlags & rawSamples)
        return Text::tr("raw");
    return head.waveFlags & quantisedSamples ? Text::tr("quantised") : Text::tr("plain");
}

// Returns why the library's reader refuses a wave; docs/formats/wave.md lists the reasons.
static Text refusalOf(const QByteArray& bytes, const BlobWaveHead& head)
{
    if (bytes.size() < headSize)
        return Text::tr("the head needs %1 bytes, got %2").arg(headSize).arg(bytes.size());
    Text tooFew = markFault(head.markCount, bytes.size() - headSize);
    if (!tooFew.isEmpty())
        return tooFew;
    const int blockStart = headSize + 4 * static_cast<int>(head.markCount);
    const QByteArray block = QByteArray::fromRawData(bytes.constData() + blockStart, bytes.size() - blockStart);
    return Text::tr("the compressed block of %1 cannot be unpacked: %2")
        .arg(bytesText(block.size()))
        .arg(unpackBlock(block).fault);
}

static Wave readWave(QByteArray bytes)
{
    Wave wave;
    wave.size = bytes.size();
    wave.hasHead = bytes.size() >= headSize;
    const std::vector<unsigned char> stored(bytes.begin(), bytes.end());
    bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(stored.data()), static_cast<int>(stored.size()));
    std::vector<unsigned char> work(CByte2Rdb::waveBlockSize);
    if (CByte2Rdb::byte2Wave(stored, work.data(), wave.head, wave.samples, wave.marks) != 1)
        wave.refusal = refusalOf(bytes, wave.head);
    return wave;
}

// Statistics of the finite samples. Others are only counted.
struct Statistics {
    size_t finite = 0;
    size_t others = 0; // not a number, or infinite
    float minimum = 0;
    float maximum = 0;
    double mean = 0;
};

static Statistics statisticsOf(const std::vector<float>& samples)
{
    Statistics result;
    double sum = 0;
    for (const float sample : samples) {
        if (!std::isfinite(sample)) {
            ++result.others;
            continue;
        }
        result.minimum = result.finite == 0 ? sample : std::min(result.minimum, sample);
        result.maximum = result.finite == 0 ? sample : std::max(result.maximum, sample);
        sum += static_cast<double>(sample);
        ++result.finite;
    }
    if (result.finite > 0)
        result.mean = sum / static_cast<double>(result.finite);
    return result;
}

// --- Numbers ------------------------------------------------------------------------------------------------------

// Returns the shortest decimal that is read back as the same float, such as 0.1 instead of 0.10000000149011612.
static QByteArray floatText(float value)
{
    if (std::isnan(value))
        return "nan";
    std::array<char, 32> text;
    const std::to_chars_result end = std::to_chars(text.data(), text.data() + text.size(), value);
    return QByteArray(text.data(), static_cast<int>(end.ptr - text.data()));
}

static QString doubleText(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

static QString fillText(const unsigned char* bytes, int size)
{
    return QByteArray(reinterpret_cast<const char*>(bytes), size).toHex();
}

// --- Text and JSON ------------------------------------------------------------------------------------------------

static void printField(const QString& name, const QString& value)
{
    printLine(padded(name, 12) + ' ' + value);
}

static void printHead(const BlobWaveHead& head)
{
    const bool isRaw = (head.waveFlags & rawSamples) != 0;
    printField("headByte", QString("0x%1").arg(head.headByte, 2, 16, QChar('0')));
    printField("waveFlags", (isCompressed(head) ? Text::tr("0x%1: %2, compressed") : Text::tr("0x%1: %2"))
                                .arg(head.waveFlags, 2, 16, QChar('0'))
                                .arg(formText(head)));
    printField("headFill1", fillText(head.headFill1, sizeof head.headFill1));
    printField("limitHigh",
               isRaw ? Text::tr("%1, the scale").arg(doubleText(head.limitHigh)) : doubleText(head.limitHigh));
    printField("limitLow",
               isRaw ? Text::tr("%1, the offset").arg(doubleText(head.limitLow)) : doubleText(head.limitLow));
    printField("sampleCount", QString::number(head.sampleCount));
    printField("markCount", QString::number(head.markCount));
    printField("headFill2", fillText(head.headFill2, sizeof head.headFill2));
}

static void printText(const Wave& wave)
{
    printField(Text::tr("size"), bytesText(wave.size));
    if (wave.hasHead)
        printHead(wave.head);
    if (!wave.refusal.isEmpty())
        return;
    if (!wave.marks.empty()) {
        QStringList shown;
        for (size_t i = 0; i < std::min<size_t>(wave.marks.size(), shownMarks); ++i)
            shown.append(QString::number(wave.marks[i]));
        printField(Text::tr("marks"), shown.join(", ") + (wave.marks.size() > shownMarks ? ", ..." : ""));
    }
    const Statistics statistics = statisticsOf(wave.samples);
    const QString count = QString::number(wave.samples.size());
    const bool isCounted = wave.samples.size() == wave.head.sampleCount;
    printField(Text::tr("samples"),
               isCounted ? count : Text::tr("%1, but sampleCount is %2").arg(count).arg(wave.head.sampleCount));
    if (statistics.others > 0)
        printField(Text::tr("not finite"), Text::tr("%1, NaN or infinite; not included below").arg(statistics.others));
    if (statistics.finite == 0)
        return;
    printField(Text::tr("minimum"), floatText(statistics.minimum));
    printField(Text::tr("maximum"), floatText(statistics.maximum));
    printField(Text::tr("mean"), doubleText(statistics.mean));
}

// Returns a number that is printed with the fewest digits that identify the float.
static double jsonNumber(float value)
{
    return floatText(value).toDouble();
}

static void printJson(const Wave& wave)
{
    QJsonObject json{{"size", wave.size}};
    if (wave.hasHead) {
        const BlobWaveHead& head = wave.head;
        json["headByte"] = head.headByte;
        json["waveFlags"] = head.waveFlags;
        json["form"] = formText(head).english();
        json["compressed"] = isCompressed(head);
        json["headFill1"] = fillText(head.headFill1, sizeof head.headFill1);
        json["limitHigh"] = head.limitHigh; // null if not finite
        json["limitLow"] = head.limitLow;
        json["sampleCount"] = static_cast<qint64>(head.sampleCount);
        json["markCount"] = static_cast<qint64>(head.markCount);
        json["headFill2"] = fillText(head.headFill2, sizeof head.headFill2);
    }
    if (wave.refusal.isEmpty()) {
        QJsonArray marks;
        for (const int mark : wave.marks)
            marks.append(mark);
        const Statistics statistics = statisticsOf(wave.samples);
        json["marks"] = marks;
        json["samples"] = static_cast<qint64>(wave.samples.size());
        json["notFinite"] = static_cast<qint64>(statistics.others);
        if (statistics.finite > 0) {
            json["minimum"] = jsonNumber(statistics.minimum);
            json["maximum"] = jsonNumber(statistics.maximum);
            json["mean"] = statistics.mean;
        }
    } else {
        json["refused"] = wave.refusal.english();
    }
    printJson(json);
}

// --- Files --------------------------------------------------------------------------------------------------------

// `first` is the number of the first sample.
static bool writeTable(const QString& path, const std::vector<float>& samples, int first)
{
    OutputFile output(path);
    if (!output.open())
        return false;
    Progress progress;
    QByteArray lines = "sample,value\n";
    for (size_t i = 0; i < samples.size(); ++i) {
        lines += QByteArray::number(first + static_cast<qint64>(i)) + ',' + floatText(samples[i]) + '\n';
        if (lines.size() > 65536) {
            output.add(lines);
            lines.clear();
            progress.show(Text::tr("%1: %2 of %3 samples").arg(path).arg(i + 1).arg(samples.size()));
        }
    }
    if (!lines.isEmpty())
        output.add(lines);
    return output.end();
}

static bool writePicture(const QString& path, const std::vector<float>& samples, const WaveCaptions& captions)
{
    OutputFile output(path);
    if (!output.open())
        return false;
    output.add(waveSvg(samples, captions));
    return output.end();
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Prints the head and marks of a stored wave, and the number, minimum, maximum and mean of its samples. NaN and\n"
    "infinite samples are only counted. If the library's reader refuses the wave, the head and the reason are\n"
    "printed, and the exit code is 1.\n"
    "\n"
    "  gqtool wave --raw --file WAVE --svg wave.svg\n"
    "  gqtool wave --raw --file WAVE --svg part.svg --from 5000 --to 5999\n"
    "\n"
    "In the picture, dashed lines show those marks that are valid sample numbers.");

// The samples that --from and --to choose.
struct Part {
    int from;
    int to; // the last one; from - 1 in a wave without samples
};

// Chooses the part of a wave of `count` samples. Returns false and prints the error if the wave lacks a chosen sample.
static bool choosePart(const Option& from, const Option& to, size_t count, Part& part)
{
    const int last = static_cast<int>(count) - 1;
    part = {from.number(), to.isSet() ? to.number() : last};
    if (last < 0 && (from.isSet() || to.isSet())) {
        printError(Text::tr("--from and --to require samples, the wave has none"));
        return false;
    }
    const bool isFrom = part.from > last;
    if (last < 0 || (!isFrom && part.to <= last))
        return true;
    printError(Text::tr("--%1 must be at most %2, the last sample, got %3")
                   .arg(isFrom ? "from" : "to")
                   .arg(last)
                   .arg(isFrom ? part.from : part.to));
    return false;
}

int runWave(const QStringList& arguments)
{
    CommandLine line(Text::tr(description));
    const Input input(line);
    const Option csv = line.text(
        "csv",
        Text::tr("write the samples as a table to FILE, 'sample,value' in its first line; - means standard output"),
        "FILE");
    const Option svg =
        line.text("svg", Text::tr("draw the samples to FILE, with every spike; - means standard output"), "FILE");
    const Option from = line.integer(
        "from", Text::tr("write and draw the samples from NUMBER on (default: 0, the first)"), "NUMBER", 0, INT_MAX);
    const Option to = line.integer("to", Text::tr("write and draw the samples up to NUMBER (default: the last)"),
                                   "NUMBER", 0, INT_MAX);
    const Option json = line.flag("json", Text::tr("print a JSON object"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;
    const bool csvOutput = csv.text() == "-";
    const bool svgOutput = svg.text() == "-";
    if (csvOutput + svgOutput + json.isSet() > 1)
        return usageError(Text::tr("--json, --csv - and --svg - exclude each other: each prints to standard output"));
    if ((from.isSet() || to.isSet()) && !csv.isSet() && !svg.isSet())
        return usageError(Text::tr("--from and --to require --csv or --svg"));
    if (to.isSet() && from.number() > to.number())
        return usageError(Text::tr("--from must be at most --to, got %1 and %2").arg(from.number()).arg(to.number()));
    QByteArray bytes;
    if (!input.read(bytes, exitCode, largestWave))
        return exitCode;

    Wave wave = readWave(std::move(bytes));
    if (json.isSet())
        printJson(wave);
    else if (!csvOutput && !svgOutput)
        printText(wave);
    if (!wave.refusal.isEmpty()) {
        printError(Text::tr("%1: refused: %2").arg(input.source(), wave.refusal));
        return exitFailed;
    }
    Part part;
    if (!choosePart(from, to, wave.samples.size(), part))
        return exitFailed;
    std::vector<float>& samples = wave.samples;
    const size_t count = samples.size();
    samples.erase(samples.begin() + (part.to + 1), samples.end());
    samples.erase(samples.begin(), samples.begin() + part.from);
    const QString size = samples.size() == count
                             ? Text::tr("%1 samples").arg(count)
                             : Text::tr("samples %1 to %2 of %3").arg(part.from).arg(part.to).arg(count);
    const bool isWritten =
        (!csv.isSet() || writeTable(csv.text(), samples, part.from)) &&
        (!svg.isSet() ||
         writePicture(svg.text(), samples,
                      {Text::tr("%1: %2").arg(QFileInfo(input.source()).fileName(), size), part.from, wave.marks}));
    return isWritten ? exitGood : exitFailed;
}
