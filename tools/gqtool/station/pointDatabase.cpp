#include "pointDatabase.h"

#include "gqtool/records/recordFields.h"
#include "shared/recordConstants.h"
#include "shared/stationProtocol.h"

#include <QDateTime>

#include <byte2Rdb.h>
#include <cmath>

using gqdb::CByte2Rdb;

// --- Definitions --------------------------------------------------------------------------------------------------
// text1 is a point's name, text2 its description, text3 its unit; switch1 means that it is in service.

static std::vector<gqdb::FloatPoint> floatPoints()
{
    static const char* const points[][3] = {{"BOILER1.TEMP", "live steam temperature", "°C"},
                                            {"BOILER1.PRESS", "live steam pressure", "bar"},
                                            {"TURB1.SPEED", "turbine speed", "1/min"}};
    std::vector<gqdb::FloatPoint> list;
    for (const auto& texts : points) {
        gqdb::FloatPoint point;
        point.pointId = firstFloatPoint + static_cast<unsigned int>(list.size());
        point.text1 = texts[0];
        point.text2 = texts[1];
        point.code2 = 0; // the constructor leaves it unset
        point.text3 = texts[2];
        list.push_back(point);
    }
    return list;
}

static std::vector<gqdb::IntPoint> intPoints()
{
    gqdb::IntPoint point;
    point.pointId = firstIntPoint;
    point.text1 = "FEED.PUMPS";
    point.text2 = "feed pumps running";
    point.code2 = 0;
    return {point};
}

static std::vector<gqdb::BoolPoint> boolPoints()
{
    gqdb::BoolPoint point;
    point.pointId = firstBoolPoint;
    point.text1 = "GEN1.BREAKER";
    point.text2 = "generator breaker closed";
    point.code4 = 0;
    return {point};
}

static std::vector<gqdb::BlobPoint> blobPoints()
{
    gqdb::BlobPoint point;
    point.pointId = firstBlobPoint;
    point.text1 = "GEN1.TRANSIENT";
    point.text2 = "generator voltage, recorded";
    point.code4 = 0;
    return {point};
}

static void addInfo(PointKind kind, unsigned int pointId, const std::string& name, const std::string& description,
                    std::vector<gqdb::PointInfo>& list)
{
    gqdb::PointInfo info;
    info.pointId = pointId;
    info.text1 = name;
    info.text2 = description;
    info.code1 = static_cast<unsigned char>(kind); // pointKind is not transmitted
    list.push_back(info);
}

static std::vector<gqdb::PointInfo> pointInfos()
{
    std::vector<gqdb::PointInfo> list;
    for (const gqdb::FloatPoint& point : floatPoints())
        addInfo(kindFloatPoint, point.pointId, point.text1, point.text2, list);
    for (const gqdb::IntPoint& point : intPoints())
        addInfo(kindIntPoint, point.pointId, point.text1, point.text2, list);
    for (const gqdb::BoolPoint& point : boolPoints())
        addInfo(kindBoolPoint, point.pointId, point.text1, point.text2, list);
    for (const gqdb::BlobPoint& point : blobPoints())
        addInfo(kindBlobPoint, point.pointId, point.text1, point.text2, list);
    return list;
}

static QByteArray readableIntPoints()
{
    QByteArray data;
    writeReadable(intPoints(), data);
    return data;
}

// --- Values -------------------------------------------------------------------------------------------------------
// stamp1 is seconds since 1970, stamp2 milliseconds.

static gqdb::PointRealData valueOf(char kind, unsigned int pointId, double value)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    gqdb::PointRealData data;
    data.pointKind = kind;
    data.pointId = pointId;
    data.stamp1 = static_cast<unsigned int>(now / 1000);
    data.stamp2 = static_cast<unsigned int>(now % 1000);
    data.value = value;
    return data;
}

static std::vector<gqdb::PointRealData> values()
{
    const double phase = static_cast<double>(QDateTime::currentMSecsSinceEpoch() % 60000) / 60000 * 2 * M_PI;
    return {valueOf(kindFloatPoint, firstFloatPoint, 538 + 4 * std::sin(phase)),
            valueOf(kindFloatPoint, firstFloatPoint + 1, 166.5 + 1.5 * std::cos(phase)),
            valueOf(kindFloatPoint, firstFloatPoint + 2, 3000 + 2 * std::sin(3 * phase)),
            valueOf(kindIntPoint, firstIntPoint, phase < M_PI ? 2 : 3), valueOf(kindBoolPoint, firstBoolPoint, 1)};
}

// A voltage that drops in a short circuit and recovers, quantised and compressed.
static QByteArray wave()
{
    std::vector<float> samples;
    for (int i = 0; i < waveSamples; ++i) {
        const double time = i / 2000.0 - 0.2; // seconds from the fault
        const double envelope = time < 0 ? 1 : 1 - 0.8 * std::exp(-time / 0.15) * std::cos(12 * time);
        samples.push_back(static_cast<float>(326 * envelope * std::sin(2 * M_PI * 50 * time)));
    }
    gqdb::BlobWaveHead head;
    head.waveFlags = quantisedSamples | compressedSamples;
    std::vector<unsigned char> raw(2 * samples.size());
    std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
    std::vector<unsigned char> stored;
    CByte2Rdb::wave2Byte(head, samples, {}, raw.data(), packed.data(), stored);
    return QByteArray(reinterpret_cast<const char*>(stored.data()), static_cast<int>(stored.size()));
}

// --- Events and the object ----------------------------------------------------------------------------------------

// word1 is seconds since 1970, word2 milliseconds, word3 the point; text1 is the event, text2 its source.
static std::vector<gqdb::EventInfo> events()
{
    struct Happening {
        int secondsAgo;
        unsigned int pointId;
        double value;
        const char* text;
    };
    static const Happening happenings[] = {{95, firstFloatPoint, 541.9, "temperature above its first limit"},
                                           {61, firstBlobPoint, 0, "transient recorded"},
                                           {60, firstBoolPoint, 1, "breaker closed again"}};
    std::vector<gqdb::EventInfo> list;
    for (const Happening& happening : happenings) {
        gqdb::EventInfo event;
        event.word1 = static_cast<unsigned int>(QDateTime::currentSecsSinceEpoch() - happening.secondsAgo);
        event.word3 = happening.pointId;
        event.value = happening.value;
        event.text1 = happening.text;
        event.text2 = "station";
        list.push_back(event);
    }
    return list;
}

static void addProperty(const gqdb::Variant& value, const std::string& format, gqdb::ObjectData& object)
{
    gqdb::PropertyData property;
    property.word1 = static_cast<int>(object.properties.size());
    property.formatText = format;
    property.value = value;
    object.properties.push_back(property);
}

// text3 holds the names of the properties, separated by blanks.
static gqdb::ObjectData generator()
{
    gqdb::ObjectData object;
    object.text1 = "GEN1";
    object.text2 = "generator 1";
    object.text3 = "maker poles power revised cooling";

    gqdb::Variant value;
    value.kind = kindText;
    value.textValue = "works no. 4711";
    addProperty(value, "", object);
    value.kind = kindInt;
    value.intValue = 2;
    addProperty(value, "", object);
    value.kind = kindDouble;
    value.doubleValue = 350.5;
    addProperty(value, "", object);
    value.kind = kindTime;
    value.intValue = 1700000000;
    addProperty(value, "yyyy-MM-dd", object);
    value.kind = kindFloat;
    value.floatValue = 0.25f;
    addProperty(value, "", object);
    return object;
}

// --- Requests -----------------------------------------------------------------------------------------------------

QByteArray databaseReply(unsigned char command)
{
    QByteArray data;
    switch (command) {
    case commandPointInfos:
        CByte2Rdb::pointInfos2Byte(pointInfos(), data);
        break;
    case commandFloatPoints:
        CByte2Rdb::floatPoints2Byte(floatPoints(), data);
        break;
    case commandIntPoints:
        data = readableIntPoints();
        break;
    case commandBoolPoints:
        CByte2Rdb::boolPoints2Byte(boolPoints(), data);
        break;
    case commandBlobPoints:
        CByte2Rdb::blobPoints2Byte(blobPoints(), data);
        break;
    case commandValues:
        CByte2Rdb::pointRealDatas2Byte(values(), data);
        break;
    case commandWave:
        data = wave();
        break;
    case commandEvents:
        CByte2Rdb::eventInfos2Byte(events(), data);
        break;
    case commandObject:
        CByte2Rdb::object2Blob(generator(), data);
        break;
    default:
        break;
    }
    return data;
}
