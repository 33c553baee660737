#include "byte2Rdb.h"

#include "byteRoom.h"
#include "listCount.h"
#include "rdbFields.h"

namespace gqdb {

// A list reader appends. It creates each element just before reading it, while its memory is in the cache. `flatten`
// inlines the readers of its texts, which doubles the speed of a list.

static const int shortDefinitionRoom = 1024; // reserved for each PointInfo of a list
static const int definitionRoom = 2048;      // and for each of the others

// --- PointInfo -------------------------------------------------------------------------------------------------------

static long long sizeOf(const PointInfo& point)
{
    CRecordSize size;
    walk(size, const_cast<PointInfo&>(point));
    return size.bytes();
}

void CByte2Rdb::pointInfo2Byte(const PointInfo& point, QByteArray& data)
{
    CRecordWriter out(grow(data, sizeOf(point)));
    walk(out, const_cast<PointInfo&>(point));
}

int CByte2Rdb::byte2PointInfo(const char* buf, int size, PointInfo& point)
{
    CRecordReader in(buf, size);
    return walk(in, point) ? in.used() : 0;
}

void CByte2Rdb::pointInfos2Byte(const std::vector<PointInfo>& list, QByteArray& data)
{
    reserveMore(data, shortDefinitionRoom * static_cast<long long>(list.size()));
    long long size = 0;
    for (const PointInfo& point : list)
        size += sizeOf(point);
    CRecordWriter out(growList(data, list.size(), size));
    for (const PointInfo& point : list)
        walk(out, const_cast<PointInfo&>(point));
}

[[gnu::flatten]] int CByte2Rdb::byte2PointInfos(const char* buf, int size, std::vector<PointInfo>& list)
{
    if (size < 4)
        return -2;
    const size_t wanted = appendedSize(list.size(), load32(buf));
    if (wanted < list.size()) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, list.size(), list.capacity()));
    CRecordReader in(buf + 4, size - 4);
    while (list.size() < wanted) {
        list.emplace_back();
        if (!walk(in, list.back())) {
            list.clear(); // with the elements that were there before
            return -3;
        }
    }
    return 1;
}

// --- FloatPoint ------------------------------------------------------------------------------------------------------

static long long sizeOf(const FloatPoint& point)
{
    CRecordSize size;
    walk(size, const_cast<FloatPoint&>(point));
    return size.bytes();
}

void CByte2Rdb::floatPoint2Byte(const FloatPoint& point, QByteArray& data)
{
    CRecordWriter out(grow(data, sizeOf(point)));
    walk(out, const_cast<FloatPoint&>(point));
}

int CByte2Rdb::byte2FloatPoint(const char* buf, int size, FloatPoint& point)
{
    CRecordReader in(buf, size);
    return walk(in, point) ? in.used() : 0;
}

void CByte2Rdb::floatPoints2Byte(const std::vector<FloatPoint>& list, QByteArray& data)
{
    reserveMore(data, definitionRoom * static_cast<long long>(list.size()));
    long long size = 0;
    for (const FloatPoint& point : list)
        size += sizeOf(point);
    CRecordWriter out(growList(data, list.size(), size));
    for (const FloatPoint& point : list)
        walk(out, const_cast<FloatPoint&>(point));
}

[[gnu::flatten]] int CByte2Rdb::byte2FloatPoints(const char* buf, int size, std::vector<FloatPoint>& list)
{
    if (size < 4)
        return -2;
    const size_t wanted = appendedSize(list.size(), load32(buf));
    if (wanted < list.size()) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, list.size(), list.capacity()));
    CRecordReader in(buf + 4, size - 4);
    while (list.size() < wanted) {
        list.emplace_back();
        if (!walk(in, list.back())) {
            list.clear(); // with the elements that were there before
            return -3;
        }
    }
    return 1;
}

// --- IntPoint --------------------------------------------------------------------------------------------------------

static long long sizeOf(const IntPoint& point)
{
    CRecordSize size;
    walk(size, const_cast<IntPoint&>(point));
    return size.bytes();
}

void CByte2Rdb::intPoint2Byte(const IntPoint& point, QByteArray& data)
{
    CRecordWriter out(grow(data, sizeOf(point)));
    walk(out, const_cast<IntPoint&>(point));
}

int CByte2Rdb::byte2IntPoint(const char* buf, int size, IntPoint& point)
{
    CRecordReader in(buf, size);
    return walk(in, point) ? in.used() : 0;
}

void CByte2Rdb::intPoints2Byte(const std::vector<IntPoint>& list, QByteArray& data)
{
    reserveMore(data, definitionRoom * static_cast<long long>(list.size()));
    long long size = 0;
    for (const IntPoint& point : list)
        size += sizeOf(point);
    CRecordWriter out(growList(data, list.size(), size));
    for (const IntPoint& point : list)
        walk(out, const_cast<IntPoint&>(point));
}

[[gnu::flatten]] int CByte2Rdb::byte2IntPoints(const char* buf, int size, std::vector<IntPoint>& list)
{
    if (size < 4)
        return -2;
    const size_t wanted = appendedSize(list.size(), load32(buf));
    if (wanted < list.size()) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, list.size(), list.capacity()));
    CRecordReader in(buf + 4, size - 4);
    while (list.size() < wanted) {
        list.emplace_back();
        if (!walk(in, list.back())) {
            list.clear(); // with the elements that were there before
            return -3;
        }
    }
    return 1;
}

// --- BoolPoint -------------------------------------------------------------------------------------------------------

static long long sizeOf(const BoolPoint& point)
{
    CRecordSize size;
    walk(size, const_cast<BoolPoint&>(point));
    return size.bytes();
}

void CByte2Rdb::boolPoint2Byte(const BoolPoint& point, QByteArray& data)
{
    CRecordWriter out(grow(data, sizeOf(point)));
    walk(out, const_cast<BoolPoint&>(point));
}

int CByte2Rdb::byte2BoolPoint(const char* buf, int size, BoolPoint& point)
{
    CRecordReader in(buf, size);
    return walk(in, point) ? in.used() : 0;
}

void CByte2Rdb::boolPoints2Byte(const std::vector<BoolPoint>& list, QByteArray& data)
{
    reserveMore(data, definitionRoom * static_cast<long long>(list.size()));
    long long size = 0;
    for (const BoolPoint& point : list)
        size += sizeOf(point);
    CRecordWriter out(growList(data, list.size(), size));
    for (const BoolPoint& point : list)
        walk(out, const_cast<BoolPoint&>(point));
}

[[gnu::flatten]] int CByte2Rdb::byte2BoolPoints(const char* buf, int size, std::vector<BoolPoint>& list)
{
    if (size < 4)
        return -2;
    const size_t wanted = appendedSize(list.size(), load32(buf));
    if (wanted < list.size()) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, list.size(), list.capacity()));
    CRecordReader in(buf + 4, size - 4);
    while (list.size() < wanted) {
        list.emplace_back();
        if (!walk(in, list.back())) {
            list.clear(); // with the elements that were there before
            return -3;
        }
    }
    return 1;
}

// --- BlobPoint -------------------------------------------------------------------------------------------------------

static long long sizeOf(const BlobPoint& point)
{
    CRecordSize size;
    walk(size, const_cast<BlobPoint&>(point));
    return size.bytes();
}

void CByte2Rdb::blobPoint2Byte(const BlobPoint& point, QByteArray& data)
{
    CRecordWriter out(grow(data, sizeOf(point)));
    walk(out, const_cast<BlobPoint&>(point));
}

int CByte2Rdb::byte2BlobPoint(const char* buf, int size, BlobPoint& point)
{
    CRecordReader in(buf, size);
    return walk(in, point) ? in.used() : 0;
}

void CByte2Rdb::blobPoints2Byte(const std::vector<BlobPoint>& list, QByteArray& data)
{
    reserveMore(data, definitionRoom * static_cast<long long>(list.size()));
    long long size = 0;
    for (const BlobPoint& point : list)
        size += sizeOf(point);
    CRecordWriter out(growList(data, list.size(), size));
    for (const BlobPoint& point : list)
        walk(out, const_cast<BlobPoint&>(point));
}

[[gnu::flatten]] int CByte2Rdb::byte2BlobPoints(const char* buf, int size, std::vector<BlobPoint>& list)
{
    if (size < 4)
        return -2;
    const size_t wanted = appendedSize(list.size(), load32(buf));
    if (wanted < list.size()) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(capacityFor(wanted, list.size(), list.capacity()));
    CRecordReader in(buf + 4, size - 4);
    while (list.size() < wanted) {
        list.emplace_back();
        if (!walk(in, list.back())) {
            list.clear(); // with the elements that were there before
            return -3;
        }
    }
    return 1;
}

} // namespace gqdb
