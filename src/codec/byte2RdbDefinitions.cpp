#include "byte2Rdb.h"

#include "byteCursor.h"
#include "listCount.h"

namespace gqdb {

// A list reader appends: the new size is old size plus count, cut to 32 bits. Where that falls below the old size there
// is no room for an item, and the list is too short. Each element is read while it is fresh
// in the cache, and all its texts without a call: hence `flatten`, which doubles the speed of a list.

// Reserves for the items of a list alone, a fixed room for each.
static void reserveItems(QByteArray& data, int itemRoom, size_t count)
{
    reserveMore(data, itemRoom * static_cast<long long>(count));
}

static const int shortDefinitionRoom = 1024; // of a PointInfo
static const int definitionRoom = 2048;

static long long byteSize(const PointInfo& point)
{
    return 12 + textSize(point.text1) + textSize(point.text2);
}

static inline void put(CByteWriter& out, const PointInfo& point)
{
    out.put32(point.pointId);
    out.putText(point.text1);
    out.put32(point.code1); // ahead of text2 on the wire
    out.putText(point.text2);
    out.put32(point.code2);
}

void CByte2Rdb::pointInfo2Byte(const PointInfo& point, QByteArray& data)
{
    CByteWriter out(data, byteSize(point));
    put(out, point);
}

int CByte2Rdb::byte2PointInfo(const char* buf, int size, PointInfo& point)
{
    if (size < 16)
        return 0;
    CByteReader in(buf, size);
    point.pointId = in.take32();
    if (!in.takeText(point.text1) || in.left() < 10)
        return 0;
    point.code1 = in.take32();
    if (!in.takeText(point.text2) || in.left() < 4)
        return 0;
    point.code2 = in.take32();
    return in.used();
}

void CByte2Rdb::pointInfos2Byte(const std::vector<PointInfo>& list, QByteArray& data)
{
    reserveItems(data, shortDefinitionRoom, list.size());
    long long size = 4;
    for (const PointInfo& point : list)
        size += byteSize(point);
    CByteWriter out(data, size);
    out.put32(static_cast<unsigned int>(list.size()));
    for (const PointInfo& point : list)
        put(out, point);
}

[[gnu::flatten]] int CByte2Rdb::byte2PointInfos(const char* buf, int size, std::vector<PointInfo>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    const size_t first = list.size();
    const size_t wanted = appendedSize(first, in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, first, list.capacity()));
    while (list.size() < wanted) {
        list.emplace_back();
        if (!in.skip(byte2PointInfo(in.here(), in.left(), list.back()))) {
            list.clear(); // with the elements that stood there before
            return -3;
        }
    }
    return 1;
}

static long long byteSize(const FloatPoint& point)
{
    return 74 + textSize(point.text1) + textSize(point.text2) + textSize(point.text3) + textSize(point.text4) +
           textSize(point.text5);
}

static inline void put(CByteWriter& out, const FloatPoint& point)
{
    out.put32(point.pointId);
    out.putText(point.text1);
    out.put32(point.code1);
    out.putText(point.text2);
    out.putText(point.text3);
    out.putText(point.text4);
    out.put32(point.code2);
    out.put32(point.code3);
    out.put32(point.code4);
    out.putText(point.text5);
    out.put8(point.switch1);
    out.putFloat(point.float1);
    out.put8(point.switch2);
    out.put32(point.code5);
    out.put32(point.code6);
    out.putFloat(point.float2);
    out.put32(point.code7);
    for (const float level : point.levels)
        out.putFloat(level);
}

void CByte2Rdb::floatPoint2Byte(const FloatPoint& point, QByteArray& data)
{
    CByteWriter out(data, byteSize(point));
    put(out, point);
}

int CByte2Rdb::byte2FloatPoint(const char* buf, int size, FloatPoint& point)
{
    if (size < 84)
        return 0;
    CByteReader in(buf, size);
    point.pointId = in.take32();
    if (!in.takeText(point.text1) || in.left() < 57)
        return 0;
    point.code1 = in.take32();
    if (!in.takeText(point.text2) || !in.takeText(point.text3) || !in.takeText(point.text4) || in.left() < 62)
        return 0;
    point.code2 = in.take32();
    point.code3 = in.take32();
    point.code4 = in.take32();
    if (!in.takeText(point.text5) || in.left() < 54)
        return 0;
    point.switch1 = in.take8();
    point.float1 = in.takeFloat();
    point.switch2 = in.take8();
    point.code5 = in.take32();
    point.code6 = in.take32();
    point.float2 = in.takeFloat();
    point.code7 = in.take32();
    for (float& level : point.levels)
        level = in.takeFloat();
    return in.used();
}

void CByte2Rdb::floatPoints2Byte(const std::vector<FloatPoint>& list, QByteArray& data)
{
    reserveItems(data, definitionRoom, list.size());
    long long size = 4;
    for (const FloatPoint& point : list)
        size += byteSize(point);
    CByteWriter out(data, size);
    out.put32(static_cast<unsigned int>(list.size()));
    for (const FloatPoint& point : list)
        put(out, point);
}

[[gnu::flatten]] int CByte2Rdb::byte2FloatPoints(const char* buf, int size, std::vector<FloatPoint>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    const size_t first = list.size();
    const size_t wanted = appendedSize(first, in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, first, list.capacity()));
    while (list.size() < wanted) {
        list.emplace_back();
        if (!in.skip(byte2FloatPoint(in.here(), in.left(), list.back()))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

static long long byteSize(const IntPoint& point)
{
    return 71 + textSize(point.text1) + textSize(point.text2) + textSize(point.text3) + textSize(point.text4) +
           textSize(point.text5);
}

static inline void put(CByteWriter& out, const IntPoint& point)
{
    out.put32(point.pointId);
    out.putText(point.text1);
    out.put32(point.code1);
    out.putText(point.text2);
    out.putText(point.text3);
    out.putText(point.text4);
    out.put32(point.code2);
    out.put32(point.code3);
    out.put8(point.switch0); // the reader has no such byte
    out.put32(point.code4);
    out.putText(point.text5);
    out.put8(point.switch1);
    out.put8(point.switch2);
    out.put32(point.code5);
    out.put32(point.code6);
    out.put32(point.code7);
    out.put32(point.code8);
    for (const int level : point.levels)
        out.putInt(level);
}

void CByte2Rdb::intPoint2Byte(const IntPoint& point, QByteArray& data)
{
    CByteWriter out(data, byteSize(point));
    put(out, point);
}

int CByte2Rdb::byte2IntPoint(const char* buf, int size, IntPoint& point)
{
    if (size < 81) // the writer's shortest record, one more than this form has
        return 0;
    CByteReader in(buf, size);
    point.pointId = in.take32();
    if (!in.takeText(point.text1) || in.left() < 57)
        return 0;
    point.code1 = in.take32();
    if (!in.takeText(point.text2) || !in.takeText(point.text3) || !in.takeText(point.text4) || in.left() < 50)
        return 0;
    point.code2 = in.take32();
    point.code3 = in.take32();
    point.code4 = in.take32(); // no switch0 ahead: peers whose records are read here leave that byte out
    if (!in.takeText(point.text5) || in.left() < 50)
        return 0;
    point.switch1 = in.take8();
    point.switch2 = in.take8();
    point.code5 = in.take32();
    point.code6 = in.take32();
    point.code7 = in.take32();
    point.code8 = in.take32();
    for (int& level : point.levels)
        level = in.takeInt();
    return in.used();
}

void CByte2Rdb::intPoints2Byte(const std::vector<IntPoint>& list, QByteArray& data)
{
    reserveItems(data, definitionRoom, list.size());
    long long size = 4;
    for (const IntPoint& point : list)
        size += byteSize(point);
    CByteWriter out(data, size);
    out.put32(static_cast<unsigned int>(list.size()));
    for (const IntPoint& point : list)
        put(out, point);
}

[[gnu::flatten]] int CByte2Rdb::byte2IntPoints(const char* buf, int size, std::vector<IntPoint>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    const size_t first = list.size();
    const size_t wanted = appendedSize(first, in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, first, list.capacity()));
    while (list.size() < wanted) {
        list.emplace_back();
        if (!in.skip(byte2IntPoint(in.here(), in.left(), list.back()))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

static long long byteSize(const BoolPoint& point)
{
    return 31 + textSize(point.text1) + textSize(point.text2) + textSize(point.text3) + textSize(point.text5);
}

static inline void put(CByteWriter& out, const BoolPoint& point)
{
    out.put32(point.pointId);
    out.putText(point.text1);
    out.put32(point.code1);
    out.putText(point.text2);
    out.putText(point.text3);
    out.put32(point.code2);
    out.put32(point.code3);
    out.put32(point.code4);
    out.putText(point.text5);
    out.put8(point.switch1);
    out.put8(point.switch2);
    out.put32(point.code5);
    out.put32(point.code6);
    out.put8(point.switch3);
}

void CByte2Rdb::boolPoint2Byte(const BoolPoint& point, QByteArray& data)
{
    CByteWriter out(data, byteSize(point));
    put(out, point);
}

int CByte2Rdb::byte2BoolPoint(const char* buf, int size, BoolPoint& point)
{
    if (size < 39)
        return 0;
    CByteReader in(buf, size);
    point.pointId = in.take32();
    if (!in.takeText(point.text1) || in.left() < 27)
        return 0;
    point.code1 = in.take32();
    if (!in.takeText(point.text2) || !in.takeText(point.text3) || in.left() < 24)
        return 0;
    point.code2 = in.take32();
    point.code3 = in.take32();
    point.code4 = in.take32();
    if (!in.takeText(point.text5) || in.left() < 11)
        return 0;
    point.switch1 = in.take8();
    point.switch2 = in.take8();
    point.code5 = in.take32();
    point.code6 = in.take32();
    point.switch3 = in.take8();
    return in.used();
}

void CByte2Rdb::boolPoints2Byte(const std::vector<BoolPoint>& list, QByteArray& data)
{
    reserveItems(data, definitionRoom, list.size());
    long long size = 4;
    for (const BoolPoint& point : list)
        size += byteSize(point);
    CByteWriter out(data, size);
    out.put32(static_cast<unsigned int>(list.size()));
    for (const BoolPoint& point : list)
        put(out, point);
}

[[gnu::flatten]] int CByte2Rdb::byte2BoolPoints(const char* buf, int size, std::vector<BoolPoint>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    const size_t first = list.size();
    const size_t wanted = appendedSize(first, in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, first, list.capacity()));
    while (list.size() < wanted) {
        list.emplace_back();
        if (!in.skip(byte2BoolPoint(in.here(), in.left(), list.back()))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

static long long byteSize(const BlobPoint& point)
{
    return 30 + textSize(point.text1) + textSize(point.text2) + textSize(point.text3) + textSize(point.text4) +
           textSize(point.text5);
}

static inline void put(CByteWriter& out, const BlobPoint& point)
{
    out.put32(point.pointId);
    out.putText(point.text1);
    out.put32(point.code1);
    out.putText(point.text2);
    out.putText(point.text3);
    out.putText(point.text4);
    out.put32(point.code2);
    out.put32(point.code3);
    out.put32(point.code4);
    out.putText(point.text5);
    out.put8(point.switch1);
    out.put8(point.switch2);
    out.put32(point.code5);
    out.put32(point.code6);
}

void CByte2Rdb::blobPoint2Byte(const BlobPoint& point, QByteArray& data)
{
    CByteWriter out(data, byteSize(point));
    put(out, point);
}

int CByte2Rdb::byte2BlobPoint(const char* buf, int size, BlobPoint& point)
{
    if (size < 40)
        return 0;
    CByteReader in(buf, size);
    point.pointId = in.take32();
    if (!in.takeText(point.text1) || in.left() < 27)
        return 0;
    point.code1 = in.take32();
    if (!in.takeText(point.text2) || !in.takeText(point.text3) || !in.takeText(point.text4) || in.left() < 24)
        return 0;
    point.code2 = in.take32();
    point.code3 = in.take32();
    point.code4 = in.take32();
    if (!in.takeText(point.text5) || in.left() < 10)
        return 0;
    point.switch1 = in.take8();
    point.switch2 = in.take8();
    point.code5 = in.take32();
    point.code6 = in.take32();
    return in.used();
}

void CByte2Rdb::blobPoints2Byte(const std::vector<BlobPoint>& list, QByteArray& data)
{
    reserveItems(data, definitionRoom, list.size());
    long long size = 4;
    for (const BlobPoint& point : list)
        size += byteSize(point);
    CByteWriter out(data, size);
    out.put32(static_cast<unsigned int>(list.size()));
    for (const BlobPoint& point : list)
        put(out, point);
}

[[gnu::flatten]] int CByte2Rdb::byte2BlobPoints(const char* buf, int size, std::vector<BlobPoint>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    const size_t first = list.size();
    const size_t wanted = appendedSize(first, in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, first, list.capacity()));
    while (list.size() < wanted) {
        list.emplace_back();
        if (!in.skip(byte2BlobPoint(in.here(), in.left(), list.back()))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

} // namespace gqdb
