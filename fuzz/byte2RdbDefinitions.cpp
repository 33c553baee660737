#include "byte2Rdb.h"
#include "target.h"

using namespace gqdb;
using Rdb = CByte2Rdb;

// --- Point definitions, and events, whose results are the same ---------------------

static void checkRecord(const Layout& layout, const Reading& reading)
{
    requireResult(reading, recordSize(layout, reading.buf, reading.size));
    if (reading.result > 0)
        requireWrittenAgain(reading, reading.result);
}

static void checkList(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading), "a count that fits must not fail to allocate");
    if (reading.size < 4)
        return requireResult(reading, -2);
    const int used = listSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : -3);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.written == QByteArray(4, '\0'), "a failed list must be empty");
}

static const Layout pointInfo = {{4, textField, 4, textField, 4}};

static const Layout floatPoint = {{4, textField, 4, textField, textField, textField, 12, textField, 54}};

static void readFloatPoint(Reading& reading)
{
    FloatPoint point;
    point.code2 = 0; // unset by the constructor
    reading.result = CByte2Rdb::byte2FloatPoint(reading.buf, reading.size, point);
    CByte2Rdb::floatPoint2Byte(point, reading.written);
}

static const Layout intPoint = {{4, textField, 4, textField, textField, textField, 12, textField, 50}, 81};

// Writes the form that is read, which lacks switch0.
static void appendReadable(const IntPoint& point, QByteArray& data)
{
    QByteArray record;
    CByte2Rdb::intPoint2Byte(point, record);
    const size_t texts = point.text1.size() + point.text2.size() + point.text3.size() + point.text4.size();
    record.remove(24 + static_cast<int>(texts), 1);
    data.append(record);
}

static void readIntPoint(Reading& reading)
{
    IntPoint point;
    point.code2 = 0; // unset by the constructor
    reading.result = CByte2Rdb::byte2IntPoint(reading.buf, reading.size, point);
    appendReadable(point, reading.written);
}

static void readIntPoints(Reading& reading)
{
    std::vector<IntPoint> list(setElementsBefore(reading));
    reading.result = CByte2Rdb::byte2IntPoints(reading.buf, reading.size, list);
    CByte2Val::int2Byte(static_cast<unsigned int>(list.size()), reading.written);
    for (const IntPoint& point : list)
        appendReadable(point, reading.written);
}

static const Layout boolPoint = {{4, textField, 4, textField, textField, 12, textField, 11}};

static void readBoolPoint(Reading& reading)
{
    BoolPoint point;
    point.code4 = 0; // unset by the constructor
    reading.result = CByte2Rdb::byte2BoolPoint(reading.buf, reading.size, point);
    CByte2Rdb::boolPoint2Byte(point, reading.written);
}

static const Layout blobPoint = {{4, textField, 4, textField, textField, textField, 12, textField, 10}};

static void readBlobPoint(Reading& reading)
{
    BlobPoint point;
    point.code4 = 0; // unset by the constructor
    reading.result = CByte2Rdb::byte2BlobPoint(reading.buf, reading.size, point);
    CByte2Rdb::blobPoint2Byte(point, reading.written);
}

static const Layout eventInfo = {{55, textField, textField}};

static void readEventInfos(Reading& reading)
{
    std::vector<EventInfo> list; // none to be reused: texts would be appended to
    reading.result = CByte2Rdb::byte2EventInfos(reading.buf, reading.size, list);
    CByte2Rdb::eventInfos2Byte(list, reading.written);
}

static const Layout eventState = {{17}};

static void readEventStates(Reading& reading)
{
    std::vector<EventState> list(3); // to be replaced
    reading.result = CByte2Rdb::byte2EventStates(reading.buf, reading.size, list);
    CByte2Rdb::eventStates2Byte(list, reading.written);
}

const std::vector<Target> byte2RdbDefinitionTargets = {
    {"byte2PointInfo", readRecord<Rdb::byte2PointInfo, Rdb::pointInfo2Byte>, checkRecord, pointInfo},
    {"byte2PointInfos", readList<Rdb::byte2PointInfos, Rdb::pointInfos2Byte>, checkList, pointInfo},
    {"byte2FloatPoint", readFloatPoint, checkRecord, floatPoint},
    {"byte2FloatPoints", readList<Rdb::byte2FloatPoints, Rdb::floatPoints2Byte>, checkList, floatPoint},
    {"byte2IntPoint", readIntPoint, checkRecord, intPoint},
    {"byte2IntPoints", readIntPoints, checkList, intPoint},
    {"byte2BoolPoint", readBoolPoint, checkRecord, boolPoint},
    {"byte2BoolPoints", readList<Rdb::byte2BoolPoints, Rdb::boolPoints2Byte>, checkList, boolPoint},
    {"byte2BlobPoint", readBlobPoint, checkRecord, blobPoint},
    {"byte2BlobPoints", readList<Rdb::byte2BlobPoints, Rdb::blobPoints2Byte>, checkList, blobPoint},
    {"byte2EventInfo", readRecord<Rdb::byte2EventInfo, Rdb::eventInfo2Byte>, checkRecord, eventInfo},
    {"byte2EventInfos", readEventInfos, checkList, eventInfo},
    {"byte2EventState", readRecord<Rdb::byte2EventState, Rdb::eventState2Byte>, checkRecord, eventState},
    {"byte2EventStates", readEventStates, checkList, eventState},
};
