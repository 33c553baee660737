#include "byte2Rdb.h"
#include "target.h"

#include <algorithm>

using namespace gqdb;
using Rdb = CByte2Rdb;

// --- Values -----------------------------------------------------------------------

static void checkRecord(const Layout& layout, const Reading& reading)
{
    const int used = recordSize(layout, reading.buf, reading.size);
    requireResult(reading, used > 0 ? used : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.written.count('\0') == reading.written.size(), "a failed reader must not touch the record");
}

// `least` of the layout is that of the list, not of a record.
static void checkList(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading), "a count that fits must not fail to allocate");
    const int used = reading.size < layout.least ? 0 : listSize({layout.fields}, reading.buf, reading.size);
    requireResult(reading, used > 0 ? 1 : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
    else
        require(reading.written == QByteArray(4, '\0'), "a failed reader must not touch the list");
}

// --- Blobs: a length of 2^31 and more fails to allocate ----------------------------

static bool isNegative(const char* length)
{
    return numberOf4(length) > 0x7fffffff;
}

static const Layout blobRealData = {{14, blobField}};

static void checkBlobRealData(const Layout& layout, const Reading& reading)
{
    const int used = recordSize(layout, reading.buf, reading.size);
    if (reading.size >= 18 && isNegative(reading.buf + 14))
        return requireResult(reading, tooMuch);
    requireResult(reading, used > 0 ? used : -5);
    if (used > 0)
        requireWrittenAgain(reading, used);
}

// Returns true if the first item that does not fit has a length of 2^31 or more, at offset `lengthAt` of the item.
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
    CByte2Val::int2Byte(static_cast<unsigned int>(list.size()), reading.written);
    for (const BlobData& item : list) {
        CByte2Val::int2Byte(item.stamp1, reading.written);
        CByte2Val::int2Byte(item.stamp2, reading.written);
        reading.written.append(item.flag1);
        reading.written.append(item.flag2);
        CByte2Val::list2Byte(item.bytes, reading.written);
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
    {"byte2FloatRealData", readRecord<Rdb::byte2FloatRealData, Rdb::floatRealData2Byte>, checkRecord, {{18}}},
    {"byte2FloatRealDatas", readList<Rdb::byte2FloatRealDatas, Rdb::floatRealDatas2Byte>, checkList, {{18}, 22}},
    {"byte2FloatData", readRecord<Rdb::byte2FloatData, Rdb::floatData2Byte>, checkRecord, {{14}}},
    {"byte2FloatDatas", readList<Rdb::byte2FloatDatas, Rdb::floatDatas2Byte>, checkList, {{14}, 18}},
    {"byte2BoolRealData", readRecord<Rdb::byte2BoolRealData, Rdb::boolRealData2Byte>, checkRecord, {{14}}},
    {"byte2BoolRealDatas", readList<Rdb::byte2BoolRealDatas, Rdb::boolRealDatas2Byte>, checkList, {{14}, 18}},
    {"byte2BoolData", readRecord<Rdb::byte2BoolData, Rdb::boolData2Byte>, checkRecord, {{10}}},
    {"byte2BoolDatas", readList<Rdb::byte2BoolDatas, Rdb::boolDatas2Byte>, checkList, {{10}, 18}},
    {"byte2IntRealData", readRecord<Rdb::byte2IntRealData, Rdb::intRealData2Byte>, checkRecord, {{18}}},
    {"byte2IntRealDatas", readList<Rdb::byte2IntRealDatas, Rdb::intRealDatas2Byte>, checkList, {{18}, 22}},
    {"byte2IntData", readRecord<Rdb::byte2IntData, Rdb::intData2Byte>, checkRecord, {{14}}},
    {"byte2IntDatas", readList<Rdb::byte2IntDatas, Rdb::intDatas2Byte>, checkList, {{14}, 18}},
    {"byte2PointRealData", readRecord<Rdb::byte2PointRealData, Rdb::pointRealData2Byte>, checkRecord, {{27}}},
    {"byte2PointRealDatas", readList<Rdb::byte2PointRealDatas, Rdb::pointRealDatas2Byte>, checkList, {{27}, 4}},
    {"byte2BlobDataInfo", readRecord<Rdb::byte2BlobDataInfo, Rdb::blobDataInfo2Byte>, checkRecord, {{18}}},
    {"byte2BlobDataInfos", readList<Rdb::byte2BlobDataInfos, Rdb::blobDataInfos2Byte>, checkList, {{18}, 4}},
    {"byte2BlobRealData", readRecord<Rdb::byte2BlobRealData, Rdb::blobRealData2Byte>, checkBlobRealData, blobRealData},
    {"byte2BlobRealDatas", readResizedList<Rdb::byte2BlobRealDatas, Rdb::blobRealDatas2Byte, blobRealData>,
     checkBlobRealDatas, blobRealData},
    {"blob2List", readBlobList, checkBlobList, blobData},
};
