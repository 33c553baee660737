#include "databaseScenes.h"

#include "demo.h"
#include "shared/console.h"
#include "shared/recordConstants.h"
#include "shared/stationProtocol.h"
#include "shared/waveDrawing.h"

#include <QDateTime>
#include <QFile>

#include <algorithm>
#include <map>

using namespace gqdb;

static QString timeText(unsigned int seconds, unsigned int milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(seconds * 1000LL + milliseconds).toString("hh:mm:ss.zzz");
}

static QString text(const std::string& bytes)
{
    return QString::fromStdString(bytes);
}

// --- Points -------------------------------------------------------------------------------------------------------

static void showDefinitions(CTcpAPI& client, std::map<unsigned int, QString>& units)
{
    QByteArray bytes;

    std::vector<FloatPoint> floats;
    int result = fetch(client, commandFloatPoints, bytes);
    bool right =
        result == 1 && CByte2Rdb::byte2FloatPoints(bytes.constData(), bytes.size(), floats) == 1 && floats.size() == 3;
    show("float points (0x31)", result, right, "three definitions");
    for (const FloatPoint& point : floats)
        units[point.pointId] = text(point.text3);

    std::vector<IntPoint> ints;
    result = fetch(client, commandIntPoints, bytes);
    right = result == 1 && CByte2Rdb::byte2IntPoints(bytes.constData(), bytes.size(), ints) == 1 && ints.size() == 1 &&
            ints[0].text1 == "FEED.PUMPS" && ints[0].switch1 == 1;
    show("int points (0x32)", result, right, "one definition");

    std::vector<BoolPoint> bools;
    result = fetch(client, commandBoolPoints, bytes);
    right = result == 1 && CByte2Rdb::byte2BoolPoints(bytes.constData(), bytes.size(), bools) == 1 && bools.size() == 1;
    show("bool points (0x33)", result, right, "one definition");

    std::vector<BlobPoint> blobs;
    result = fetch(client, commandBlobPoints, bytes);
    right = result == 1 && CByte2Rdb::byte2BlobPoints(bytes.constData(), bytes.size(), blobs) == 1 && blobs.size() == 1;
    show("blob points (0x34)", result, right, "one definition");
}

static void showValues(CTcpAPI& client, const std::map<unsigned int, QString>& units)
{
    QByteArray bytes;
    std::vector<PointInfo> points;
    int result = fetch(client, commandPointInfos, bytes);
    bool right =
        result == 1 && CByte2Rdb::byte2PointInfos(bytes.constData(), bytes.size(), points) == 1 && points.size() == 6;
    show("all points (0x30)", result, right, "six in short form");

    std::vector<PointRealData> values;
    result = fetch(client, commandValues, bytes);
    right = result == 1 && CByte2Rdb::byte2PointRealDatas(bytes.constData(), bytes.size(), values) == 1 &&
            values.size() == 5;
    show("current values (0x35)", result, right, "five numeric points");

    printLine(QString());
    printLine("    point  name             value            time          description");
    for (const PointInfo& point : points) {
        QString value = "-";
        QString time = "-";
        for (const PointRealData& current : values) {
            if (current.pointId != point.pointId)
                continue;
            const bool isFloat = current.pointKind == kindFloatPoint;
            value = QString::number(current.value, 'f', isFloat ? 2 : 0);
            const auto unit = units.find(point.pointId);
            if (unit != units.end())
                value += ' ' + unit->second;
            time = timeText(current.stamp1, current.stamp2);
        }
        printLine(QString("    %1   %2 %3 %4  %5")
                      .arg(point.pointId)
                      .arg(text(point.text1), -16)
                      .arg(value, -16)
                      .arg(time, -12)
                      .arg(text(point.text2)));
    }
    printLine(QString());
}

// --- The wave -----------------------------------------------------------------------------------------------------

// The range of each column, as a line of block characters.
static QString blockLine(const std::vector<float>& samples, int width, double range)
{
    static const QString blocks = QString::fromUtf8("▁▂▃▄▅▆▇█");
    QString line;
    for (const WaveColumn& column : waveColumns(samples, width)) {
        const int step = static_cast<int>((column.high - column.low) / range * blocks.size());
        line += blocks[std::min(std::max(step, 0), static_cast<int>(blocks.size()) - 1)];
    }
    return line;
}

static bool writeSvg(const QString& path, const std::vector<float>& samples)
{
    QFile file(path);
    const QByteArray picture = waveSvg(samples);
    return file.open(QIODevice::WriteOnly) && file.write(picture) == picture.size();
}

static void showWave(CTcpAPI& client, const QString& svgPath)
{
    QByteArray bytes;
    const int result = fetch(client, commandWave, bytes);

    const std::vector<unsigned char> stored(bytes.begin(), bytes.end());
    BlobWaveHead head;
    std::vector<unsigned char> work(CByte2Rdb::waveBlockSize);
    std::vector<float> samples;
    std::vector<int> marks;
    const bool unpacked = result == 1 && CByte2Rdb::byte2Wave(stored, work.data(), head, samples, marks) == 1;
    const bool right =
        unpacked && samples.size() == waveSamples && head.waveFlags == (quantisedSamples | compressedSamples);
    show("wave (0x36)", result, right,
         QString("%1 samples in %2 bytes, quantised and compressed").arg(samples.size()).arg(stored.size()));
    if (!right)
        return;
    printLine(QString());
    printLine(QString("    %1").arg(blockLine(samples, 72, head.limitHigh - head.limitLow)));
    printLine(QString("    %1 to %2 V; %3")
                  .arg(head.limitLow, 0, 'f', 0)
                  .arg(head.limitHigh, 0, 'f', 0)
                  .arg(writeSvg(svgPath, samples) ? "drawn in " + svgPath : "could not be written to " + svgPath));
    printLine(QString());
}

// --- Events and the object ----------------------------------------------------------------------------------------

static void showEvents(CTcpAPI& client)
{
    QByteArray bytes;
    std::vector<EventInfo> events;
    const int result = fetch(client, commandEvents, bytes);
    const bool right =
        result == 1 && CByte2Rdb::byte2EventInfos(bytes.constData(), bytes.size(), events) == 1 && events.size() == 3;
    show("events (0x37)", result, right, "three");
    printLine(QString());
    for (const EventInfo& event : events)
        printLine(QString("    %1  point %2  %3")
                      .arg(timeText(event.word1, event.word2))
                      .arg(event.word3)
                      .arg(text(event.text1)));
    printLine(QString());
}

static void showObject(CTcpAPI& client)
{
    QByteArray bytes;
    ObjectData object;
    const int result = fetch(client, commandObject, bytes);
    // blob2Object returns two less than the bytes consumed.
    const bool right = result == 1 &&
                       CByte2Rdb::blob2Object(bytes.constData(), bytes.size(), object) == bytes.size() - 2 &&
                       object.properties.size() == 5 && object.properties[2].valueText == "350.500000";
    show("object (0x38)", result, right, text(object.text2) + ", five properties");
    printLine(QString());
    const QStringList names = text(object.text3).split(' ');
    for (int i = 0; i < names.size() && right; ++i)
        printLine(
            QString("    %1 %2").arg(names[i], -8).arg(text(object.properties[static_cast<size_t>(i)].valueText)));
}

void showDatabase(CTcpAPI& client, const QString& svgPath)
{
    printHeading("The point database: definitions of four kinds and their short form, current values");
    std::map<unsigned int, QString> units;
    showDefinitions(client, units);
    showValues(client, units);
    showWave(client, svgPath);
    showEvents(client);
    showObject(client);
}
