#include "byte2Rdb.h"
#include "target.h"

#include <algorithm>

using namespace gqdb;

// --- Values -----------------------------------------------------------------------

static void checkRecord(const Layout& layout, const Reading& reading)
{
    const int used = recordSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? used : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.left.count('\0') == reading.left.size(), "a failed reader must not touch the record");
}

// The least of a list is that of its layout here.
static void checkList(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading), "a count that fits must not fail to allocate");
    const int used = reading.size < layout.least ? 0 : listSize({layout.fields}, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.left == QByteArray(4, '\0'), "a failed reader must not touch the list");
}

static void readFloatRealData(Reading& reading)
{
    FloatRealData record;
    reading.result = CByte2Rdb::byte2FloatRealData(reading.buf, reading.size, record);
    CByte2Rdb::floatRealData2Byte(record, reading.left);
}

static void readFloatRealDatas(Reading& reading)
{
    std::vector<FloatRealData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2FloatRealDatas(reading.buf, reading.size, list);
    CByte2Rdb::floatRealDatas2Byte(list, reading.left);
}

static void readFloatData(Reading& reading)
{
    FloatData record;
    reading.result = CByte2Rdb::byte2FloatData(reading.buf, reading.size, record);
    CByte2Rdb::floatData2Byte(record, reading.left);
}

static void readFloatDatas(Reading& reading)
{
    std::vector<FloatData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2FloatDatas(reading.buf, reading.size, list);
    CByte2Rdb::floatDatas2Byte(list, reading.left);
}

static void readBoolRealData(Reading& reading)
{
    BoolRealData record;
    reading.result = CByte2Rdb::byte2BoolRealData(reading.buf, reading.size, record);
    CByte2Rdb::boolRealData2Byte(record, reading.left);
}

static void readBoolRealDatas(Reading& reading)
{
    std::vector<BoolRealData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2BoolRealDatas(reading.buf, reading.size, list);
    CByte2Rdb::boolRealDatas2Byte(list, reading.left);
}

static void readBoolData(Reading& reading)
{
    BoolData record;
    reading.result = CByte2Rdb::byte2BoolData(reading.buf, reading.size, record);
    CByte2Rdb::boolData2Byte(record, reading.left);
}

static void readBoolDatas(Reading& reading)
{
    std::vector<BoolData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2BoolDatas(reading.buf, reading.size, list);
    CByte2Rdb::boolDatas2Byte(list, reading.left);
}

static void readIntRealData(Reading& reading)
{
    IntRealData record;
    reading.result = CByte2Rdb::byte2IntRealData(reading.buf, reading.size, record);
    CByte2Rdb::intRealData2Byte(record, reading.left);
}

static void readIntRealDatas(Reading& reading)
{
    std::vector<IntRealData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2IntRealDatas(reading.buf, reading.size, list);
    CByte2Rdb::intRealDatas2Byte(list, reading.left);
}

static void readIntData(Reading& reading)
{
    IntData record;
    reading.result = CByte2Rdb::byte2IntData(reading.buf, reading.size, record);
    CByte2Rdb::intData2Byte(record, reading.left);
}

static void readIntDatas(Reading& reading)
{
    std::vector<IntData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2IntDatas(reading.buf, reading.size, list);
    CByte2Rdb::intDatas2Byte(list, reading.left);
}

static void readPointRealData(Reading& reading)
{
    PointRealData record;
    reading.result = CByte2Rdb::byte2PointRealData(reading.buf, reading.size, record);
    CByte2Rdb::pointRealData2Byte(record, reading.left);
}

static void readPointRealDatas(Reading& reading)
{
    std::vector<PointRealData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2PointRealDatas(reading.buf, reading.size, list);
    CByte2Rdb::pointRealDatas2Byte(list, reading.left);
}

static void readBlobDataInfo(Reading& reading)
{
    BlobDataInfo record;
    reading.result = CByte2Rdb::byte2BlobDataInfo(reading.buf, reading.size, record);
    CByte2Rdb::blobDataInfo2Byte(record, reading.left);
}

static void readBlobDataInfos(Reading& reading)
{
    std::vector<BlobDataInfo> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2BlobDataInfos(reading.buf, reading.size, list);
    CByte2Rdb::blobDataInfos2Byte(list, reading.left);
}

// --- Blobs: a length of 2^31 and more fails to allocate ----------------------------

static bool isNegative(const char* length)
{
    return numberOf4(length) > 0x7fffffff;
}

static const Layout blobRealData = {{14, blobField}};

static void readBlobRealData(Reading& reading)
{
    BlobRealData record;
    reading.result = CByte2Rdb::byte2BlobRealData(reading.buf, reading.size, record);
    CByte2Rdb::blobRealData2Byte(record, reading.left);
}

static void checkBlobRealData(const Layout& layout, const Reading& reading)
{
    const int used = recordSize(layout, reading.buf, reading.size);
    if (reading.size >= 18 && isNegative(reading.buf + 14))
        return requireResult(reading, tooMuch);
    requireResult(reading, used > 0 ? used : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
}

static void readBlobRealDatas(Reading& reading)
{
    std::vector<BlobRealData> list(elementsAhead(reading));
    reading.result = CByte2Rdb::byte2BlobRealDatas(reading.buf, reading.size, list);
    list.resize(std::min(list.size(), mostElements(blobRealData, reading)));
    CByte2Rdb::blobRealDatas2Byte(list, reading.left);
}

// Whether the first item that does not fit has a length of 2^31 and more; `lengthAt` is its place in the item.
static bool endsNegative(const Layout& layout, int lengthAt, const Reading& reading)
{
    int at = 4;
    for (unsigned int left = numberOf4(reading.buf); left > 0; --left) {
        const int used = recordSize(layout, reading.buf + at, reading.size - at);
        if (used == 0)
            return reading.size - at >= lengthAt + 4 && isNegative(reading.buf + at + lengthAt);
        at += used;
    }
    return false;
}

static void checkBlobRealDatas(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading) || endsNegative(layout, 14, reading),
                       "what fits must not fail to allocate");
    if (reading.size < 4 || reading.size < 4 + 18LL * numberOf4(reading.buf))
        return requireResult(reading, -5);
    const int used = listSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : -3);
    if (used > 0)
        requireWrittenAgain(reading, used);
}

static const Layout blobData = {{10, blobField}};

static void readBlobList(Reading& reading)
{
    std::vector<BlobData> list(3); // to be replaced
    reading.result = CByte2Rdb::blob2List(reading.buf, reading.size, list);
    if (reading.result < 0)
        return;
    CByte2Val::int2Byte(static_cast<unsigned int>(list.size()), reading.left);
    for (const BlobData& item : list) {
        CByte2Val::int2Byte(item.stamp1, reading.left);
        CByte2Val::int2Byte(item.stamp2, reading.left);
        reading.left.append(item.flag1);
        reading.left.append(item.flag2);
        CByte2Val::list2Byte(item.bytes, reading.left);
    }
}

static void checkBlobList(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading) || endsNegative(layout, 10, reading),
                       "what fits must not fail to allocate");
    const int used = reading.size < 18 ? 0 : listSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? used : -1);
    if (used > 0)
        requireWrittenAgain(reading, used);
}

const std::vector<Target> byte2RdbValueTargets = {
    {"byte2FloatRealData", readFloatRealData, checkRecord, {{18}}},
    {"byte2FloatRealDatas", readFloatRealDatas, checkList, {{18}, 22}},
    {"byte2FloatData", readFloatData, checkRecord, {{14}}},
    {"byte2FloatDatas", readFloatDatas, checkList, {{14}, 18}},
    {"byte2BoolRealData", readBoolRealData, checkRecord, {{14}}},
    {"byte2BoolRealDatas", readBoolRealDatas, checkList, {{14}, 18}},
    {"byte2BoolData", readBoolData, checkRecord, {{10}}},
    {"byte2BoolDatas", readBoolDatas, checkList, {{10}, 18}},
    {"byte2IntRealData", readIntRealData, checkRecord, {{18}}},
    {"byte2IntRealDatas", readIntRealDatas, checkList, {{18}, 22}},
    {"byte2IntData", readIntData, checkRecord, {{14}}},
    {"byte2IntDatas", readIntDatas, checkList, {{14}, 18}},
    {"byte2PointRealData", readPointRealData, checkRecord, {{27}}},
    {"byte2PointRealDatas", readPointRealDatas, checkList, {{27}, 4}},
    {"byte2BlobDataInfo", readBlobDataInfo, checkRecord, {{18}}},
    {"byte2BlobDataInfos", readBlobDataInfos, checkList, {{18}, 4}},
    {"byte2BlobRealData", readBlobRealData, checkBlobRealData, blobRealData},
    {"byte2BlobRealDatas", readBlobRealDatas, checkBlobRealDatas, blobRealData},
    {"blob2List", readBlobList, checkBlobList, blobData},
};
