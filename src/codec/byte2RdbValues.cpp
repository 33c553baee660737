#include "byte2Rdb.h"

#include "byteCursor.h"
#include "floatRealItem.h"
#include "listCount.h"

namespace gqdb {

// A list is tested once for its whole size and then read at a fixed stride.

// `inline` pays: the fields then go straight into the array, in the list writers too.
static inline void put(CByteWriter& out, const FloatRealData& record)
{
    out.put32(record.pointId);
    out.putFloat(record.value);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag2); // ahead of flag1 in the float records
    out.put8(record.flag1);
}

static inline void take(CByteReader& in, FloatRealData& record)
{
    record.pointId = in.take32();
    record.value = in.takeFloat();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag2 = in.take8();
    record.flag1 = in.take8();
}

void CByte2Rdb::floatRealData2Byte(const FloatRealData& record, QByteArray& data)
{
    CByteWriter out(data, 18);
    put(out, record);
}

int CByte2Rdb::byte2FloatRealData(const char* buf, int size, FloatRealData& record)
{
    if (size < 18)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 18;
}

void CByte2Rdb::floatRealDatas2Byte(const std::vector<FloatRealData>& list, QByteArray& data)
{
    CByteWriter out(data, 18, list.size());
    for (const FloatRealData& record : list) {
        const FloatRealItem item(record);
        out.putBytes(item.bytes, sizeof item.bytes);
    }
}

int CByte2Rdb::byte2FloatRealDatas(const char* buf, int size, std::vector<FloatRealData>& list)
{
    if (size < 22 || size < wrappedNeed(load32(buf), 18)) // an empty list of 4 bytes is refused
        return -5;
    const unsigned int count = load32(buf);
    const size_t wanted = appendedSize(list.size(), count);
    if (wanted < list.size() || !holdsItems(size, count, 18)) {
        list.resize(wanted);
        return -5;
    }
    const auto* items = reinterpret_cast<const FloatRealItem*>(buf + 4);
    list.insert(list.end(), items, items + count); // constructs the elements from the bytes, without defaults first
    return 1;
}

static inline void put(CByteWriter& out, const FloatData& record)
{
    out.putFloat(record.value);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag2); // ahead of flag1 in the float records
    out.put8(record.flag1);
}

static inline void take(CByteReader& in, FloatData& record)
{
    record.value = in.takeFloat();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag2 = in.take8();
    record.flag1 = in.take8();
}

void CByte2Rdb::floatData2Byte(const FloatData& record, QByteArray& data)
{
    CByteWriter out(data, 14);
    put(out, record);
}

int CByte2Rdb::byte2FloatData(const char* buf, int size, FloatData& record)
{
    if (size < 14)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 14;
}

void CByte2Rdb::floatDatas2Byte(const std::vector<FloatData>& list, QByteArray& data)
{
    CByteWriter out(data, 14, list.size());
    for (const FloatData& record : list)
        put(out, record);
}

int CByte2Rdb::byte2FloatDatas(const char* buf, int size, std::vector<FloatData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 14))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 14))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

static inline void put(CByteWriter& out, const BoolRealData& record)
{
    out.put32(record.pointId);
    out.put8(record.value);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag1);
}

static inline void take(CByteReader& in, BoolRealData& record)
{
    record.pointId = in.take32();
    record.value = in.take8();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag1 = in.take8();
}

void CByte2Rdb::boolRealData2Byte(const BoolRealData& record, QByteArray& data)
{
    CByteWriter out(data, 14);
    put(out, record);
}

int CByte2Rdb::byte2BoolRealData(const char* buf, int size, BoolRealData& record)
{
    if (size < 14)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 14;
}

void CByte2Rdb::boolRealDatas2Byte(const std::vector<BoolRealData>& list, QByteArray& data)
{
    CByteWriter out(data, 14, list.size());
    for (const BoolRealData& record : list)
        put(out, record);
}

int CByte2Rdb::byte2BoolRealDatas(const char* buf, int size, std::vector<BoolRealData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 14))
        return -5;
    CByteReader in(buf, size);
    const int count = in.takeInt(); // signed in the bool lists, as is the new size: a negative one shrinks the list
    const size_t first = list.size();
    list.resize(static_cast<size_t>(static_cast<int>(first + static_cast<size_t>(count))));
    if (count <= 0)
        return 1;
    if (!holdsItems(size, static_cast<unsigned int>(count), 14))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

static inline void put(CByteWriter& out, const BoolData& record)
{
    out.put8(record.value);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag1);
}

static inline void take(CByteReader& in, BoolData& record)
{
    record.value = in.take8();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag1 = in.take8();
}

void CByte2Rdb::boolData2Byte(const BoolData& record, QByteArray& data)
{
    CByteWriter out(data, 10);
    put(out, record);
}

int CByte2Rdb::byte2BoolData(const char* buf, int size, BoolData& record)
{
    if (size < 10)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 10;
}

void CByte2Rdb::boolDatas2Byte(const std::vector<BoolData>& list, QByteArray& data)
{
    CByteWriter out(data, 10, list.size());
    for (const BoolData& record : list)
        put(out, record);
}

int CByte2Rdb::byte2BoolDatas(const char* buf, int size, std::vector<BoolData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 10)) // so that one item in its 14 bytes is refused
        return -5;
    CByteReader in(buf, size);
    const int count = in.takeInt(); // signed in the bool lists, as is the new size: a negative one shrinks the list
    const size_t first = list.size();
    list.resize(static_cast<size_t>(static_cast<int>(first + static_cast<size_t>(count))));
    if (count <= 0)
        return 1;
    if (!holdsItems(size, static_cast<unsigned int>(count), 10))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

static inline void put(CByteWriter& out, const IntRealData& record)
{
    out.put32(record.pointId);
    out.putInt(record.value);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag1);
    out.put8(record.flag2);
}

static inline void take(CByteReader& in, IntRealData& record)
{
    record.pointId = in.take32();
    record.value = in.takeInt();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag1 = in.take8();
    record.flag2 = in.take8();
}

void CByte2Rdb::intRealData2Byte(const IntRealData& record, QByteArray& data)
{
    CByteWriter out(data, 18);
    put(out, record);
}

int CByte2Rdb::byte2IntRealData(const char* buf, int size, IntRealData& record)
{
    if (size < 18)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 18;
}

void CByte2Rdb::intRealDatas2Byte(const std::vector<IntRealData>& list, QByteArray& data)
{
    CByteWriter out(data, 18, list.size());
    for (const IntRealData& record : list)
        put(out, record);
}

int CByte2Rdb::byte2IntRealDatas(const char* buf, int size, std::vector<IntRealData>& list)
{
    if (size < 22 || size < wrappedNeed(load32(buf), 18))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 18))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

static inline void put(CByteWriter& out, const IntData& record)
{
    out.putInt(record.value);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag1);
    out.put8(record.flag2);
}

static inline void take(CByteReader& in, IntData& record)
{
    record.value = in.takeInt();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag1 = in.take8();
    record.flag2 = in.take8();
}

void CByte2Rdb::intData2Byte(const IntData& record, QByteArray& data)
{
    CByteWriter out(data, 14);
    put(out, record);
}

int CByte2Rdb::byte2IntData(const char* buf, int size, IntData& record)
{
    if (size < 14)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 14;
}

void CByte2Rdb::intDatas2Byte(const std::vector<IntData>& list, QByteArray& data)
{
    CByteWriter out(data, 14, list.size());
    for (const IntData& record : list)
        put(out, record);
}

int CByte2Rdb::byte2IntDatas(const char* buf, int size, std::vector<IntData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 14))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 14))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

static inline void put(CByteWriter& out, const PointRealData& record)
{
    out.put8(record.pointKind);
    out.put32(record.pointId);
    out.putDouble(record.value);
    out.put32(record.intValue);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put8(record.flag1);
    out.put8(record.flag2);
}

static inline void take(CByteReader& in, PointRealData& record)
{
    record.pointKind = in.take8();
    record.pointId = in.take32();
    record.value = in.takeDouble();
    record.intValue = in.take32();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag1 = in.take8();
    record.flag2 = in.take8();
}

void CByte2Rdb::pointRealData2Byte(const PointRealData& record, QByteArray& data)
{
    CByteWriter out(data, 27);
    put(out, record);
}

int CByte2Rdb::byte2PointRealData(const char* buf, int size, PointRealData& record)
{
    if (size < 27)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 27;
}

void CByte2Rdb::pointRealDatas2Byte(const std::vector<PointRealData>& list, QByteArray& data)
{
    CByteWriter out(data, 27, list.size());
    for (const PointRealData& record : list)
        put(out, record);
}

int CByte2Rdb::byte2PointRealDatas(const char* buf, int size, std::vector<PointRealData>& list)
{
    if (size < 4 || size < wrappedNeed(load32(buf), 27))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 27))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

static inline void put(CByteWriter& out, const BlobDataInfo& record)
{
    out.put32(record.pointId);
    out.put32(record.stamp1);
    out.put32(record.stamp2);
    out.put32(record.word4);
    out.put8(record.flag1);
    out.put8(record.flag2);
}

static inline void take(CByteReader& in, BlobDataInfo& record)
{
    record.pointId = in.take32();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.word4 = in.take32();
    record.flag1 = in.take8();
    record.flag2 = in.take8();
}

void CByte2Rdb::blobDataInfo2Byte(const BlobDataInfo& record, QByteArray& data)
{
    CByteWriter out(data, 18);
    put(out, record);
}

int CByte2Rdb::byte2BlobDataInfo(const char* buf, int size, BlobDataInfo& record)
{
    if (size < 18)
        return -5;
    CByteReader in(buf, size);
    take(in, record);
    return 18;
}

void CByte2Rdb::blobDataInfos2Byte(const std::vector<BlobDataInfo>& list, QByteArray& data)
{
    CByteWriter out(data, 18, list.size());
    for (const BlobDataInfo& record : list)
        put(out, record);
}

int CByte2Rdb::byte2BlobDataInfos(const char* buf, int size, std::vector<BlobDataInfo>& list)
{
    if (size < 4 || size < wrappedNeed(load32(buf), 18))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 18))
        return -5;
    for (size_t i = first; i < list.size(); ++i)
        take(in, list[i]);
    return 1;
}

void CByte2Rdb::blobRealData2Byte(const BlobRealData& record, QByteArray& data)
{
    {
        CByteWriter out(data, 18);
        out.put32(record.pointId);
        out.put32(record.stamp1);
        out.put32(record.stamp2);
        out.put8(record.flag1);
        out.put8(record.flag2);
        out.put32(static_cast<unsigned int>(record.bytes.size()));
    }
    const long long length = static_cast<long long>(record.bytes.size());
    reserveMore(data, length);
    CByteWriter out(data, length);
    out.putBytes(record.bytes.data(), record.bytes.size());
}

int CByte2Rdb::byte2BlobRealData(const char* buf, int size, BlobRealData& record)
{
    if (size < 18)
        return -5;
    CByteReader in(buf, size);
    record.pointId = in.take32();
    record.stamp1 = in.take32();
    record.stamp2 = in.take32();
    record.flag1 = in.take8();
    record.flag2 = in.take8();
    const int length = in.takeInt();
    if (length > size - 18)
        return -5;
    record.bytes.resize(static_cast<size_t>(length)); // a negative length passes the test and fails in the vector
    in.takeBytes(record.bytes.data(), record.bytes.size());
    return in.used();
}

void CByte2Rdb::blobRealDatas2Byte(const std::vector<BlobRealData>& list, QByteArray& data)
{
    putCount(list.size(), data);
    for (const BlobRealData& record : list)
        blobRealData2Byte(record, data);
}

int CByte2Rdb::byte2BlobRealDatas(const char* buf, int size, std::vector<BlobRealData>& list)
{
    if (size < 4 || size < wrappedNeed(load32(buf), 18))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first)
        return -5;
    for (size_t i = first; i < list.size(); ++i) {
        if (!in.skip(byte2BlobRealData(in.here(), in.left(), list[i])))
            return -3; // the list stays as it is, unlike the definitions'
    }
    return 1;
}

int CByte2Rdb::blob2List(const char* buf, int size, std::vector<BlobData>& list)
{
    if (size < 18)
        return -1;
    CByteReader in(buf, size);
    const int count = in.takeInt();
    list.resize(static_cast<size_t>(count)); // a negative count fails here
    for (BlobData& item : list) {
        if (in.left() < 14)
            return -1;
        item.stamp1 = in.take32();
        item.stamp2 = in.take32();
        item.flag1 = in.take8();
        item.flag2 = in.take8();
        const int length = in.takeInt();
        if (length > in.left())
            return -1;
        item.bytes.resize(static_cast<size_t>(length)); // as does a negative length
        in.takeBytes(item.bytes.data(), item.bytes.size());
    }
    return in.used();
}

} // namespace gqdb
