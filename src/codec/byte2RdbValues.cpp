#include "byte2Rdb.h"

#include "byteRoom.h"
#include "floatRealItem.h"
#include "listCount.h"
#include "rdbFields.h"

namespace gqdb {

// The size of a list is tested once: in 32 bits, as documented, and then in 64. Items are read only if both tests pass.
// The loops use a pointer to the items: the compiler must assume that storing a byte can change the vector itself, so
// that a loop over the vector would load its size and its pointer again for each item.

// --- FloatRealData ---------------------------------------------------------------------------------------------------

void CByte2Rdb::floatRealData2Byte(const FloatRealData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 18));
    walk(out, const_cast<FloatRealData&>(record));
}

int CByte2Rdb::byte2FloatRealData(const char* buf, int size, FloatRealData& record)
{
    if (size < 18)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 18;
}

void CByte2Rdb::floatRealDatas2Byte(const std::vector<FloatRealData>& list, QByteArray& data)
{
    auto* item = reinterpret_cast<FloatRealItem*>(beginList(data, 18, list.size()));
    for (const FloatRealData& record : list)
        *item++ = record;
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

// --- FloatData -------------------------------------------------------------------------------------------------------

void CByte2Rdb::floatData2Byte(const FloatData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 14));
    walk(out, const_cast<FloatData&>(record));
}

int CByte2Rdb::byte2FloatData(const char* buf, int size, FloatData& record)
{
    if (size < 14)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 14;
}

void CByte2Rdb::floatDatas2Byte(const std::vector<FloatData>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 14, list.size()));
    for (const FloatData& record : list)
        walk(out, const_cast<FloatData&>(record));
}

int CByte2Rdb::byte2FloatDatas(const char* buf, int size, std::vector<FloatData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 14))
        return -5;
    const unsigned int count = load32(buf);
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 14))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    FloatData* const items = list.data() + first;
    for (unsigned int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- BoolRealData ----------------------------------------------------------------------------------------------------

void CByte2Rdb::boolRealData2Byte(const BoolRealData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 14));
    walk(out, const_cast<BoolRealData&>(record));
}

int CByte2Rdb::byte2BoolRealData(const char* buf, int size, BoolRealData& record)
{
    if (size < 14)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 14;
}

void CByte2Rdb::boolRealDatas2Byte(const std::vector<BoolRealData>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 14, list.size()));
    for (const BoolRealData& record : list)
        walk(out, const_cast<BoolRealData&>(record));
}

int CByte2Rdb::byte2BoolRealDatas(const char* buf, int size, std::vector<BoolRealData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 14))
        return -5;
    const int count = static_cast<int>(load32(buf)); // signed in the bool lists, as is the new size: a list can shrink
    const size_t first = list.size();
    list.resize(static_cast<size_t>(static_cast<int>(first + static_cast<size_t>(count))));
    if (count <= 0)
        return 1;
    if (!holdsItems(size, static_cast<unsigned int>(count), 14))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    BoolRealData* const items = list.data() + first;
    for (int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- BoolData --------------------------------------------------------------------------------------------------------

void CByte2Rdb::boolData2Byte(const BoolData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 10));
    walk(out, const_cast<BoolData&>(record));
}

int CByte2Rdb::byte2BoolData(const char* buf, int size, BoolData& record)
{
    if (size < 10)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 10;
}

void CByte2Rdb::boolDatas2Byte(const std::vector<BoolData>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 10, list.size()));
    for (const BoolData& record : list)
        walk(out, const_cast<BoolData&>(record));
}

int CByte2Rdb::byte2BoolDatas(const char* buf, int size, std::vector<BoolData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 10)) // one item in its 14 bytes is refused too
        return -5;
    const int count = static_cast<int>(load32(buf)); // signed in the bool lists, as is the new size: a list can shrink
    const size_t first = list.size();
    list.resize(static_cast<size_t>(static_cast<int>(first + static_cast<size_t>(count))));
    if (count <= 0)
        return 1;
    if (!holdsItems(size, static_cast<unsigned int>(count), 10))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    BoolData* const items = list.data() + first;
    for (int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- IntRealData -----------------------------------------------------------------------------------------------------

void CByte2Rdb::intRealData2Byte(const IntRealData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 18));
    walk(out, const_cast<IntRealData&>(record));
}

int CByte2Rdb::byte2IntRealData(const char* buf, int size, IntRealData& record)
{
    if (size < 18)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 18;
}

void CByte2Rdb::intRealDatas2Byte(const std::vector<IntRealData>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 18, list.size()));
    for (const IntRealData& record : list)
        walk(out, const_cast<IntRealData&>(record));
}

int CByte2Rdb::byte2IntRealDatas(const char* buf, int size, std::vector<IntRealData>& list)
{
    if (size < 22 || size < wrappedNeed(load32(buf), 18))
        return -5;
    const unsigned int count = load32(buf);
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 18))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    IntRealData* const items = list.data() + first;
    for (unsigned int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- IntData ---------------------------------------------------------------------------------------------------------

void CByte2Rdb::intData2Byte(const IntData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 14));
    walk(out, const_cast<IntData&>(record));
}

int CByte2Rdb::byte2IntData(const char* buf, int size, IntData& record)
{
    if (size < 14)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 14;
}

void CByte2Rdb::intDatas2Byte(const std::vector<IntData>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 14, list.size()));
    for (const IntData& record : list)
        walk(out, const_cast<IntData&>(record));
}

int CByte2Rdb::byte2IntDatas(const char* buf, int size, std::vector<IntData>& list)
{
    if (size < 18 || size < wrappedNeed(load32(buf), 14))
        return -5;
    const unsigned int count = load32(buf);
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 14))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    IntData* const items = list.data() + first;
    for (unsigned int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- PointRealData ---------------------------------------------------------------------------------------------------

void CByte2Rdb::pointRealData2Byte(const PointRealData& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 27));
    walk(out, const_cast<PointRealData&>(record));
}

int CByte2Rdb::byte2PointRealData(const char* buf, int size, PointRealData& record)
{
    if (size < 27)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 27;
}

void CByte2Rdb::pointRealDatas2Byte(const std::vector<PointRealData>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 27, list.size()));
    for (const PointRealData& record : list)
        walk(out, const_cast<PointRealData&>(record));
}

int CByte2Rdb::byte2PointRealDatas(const char* buf, int size, std::vector<PointRealData>& list)
{
    if (size < 4 || size < wrappedNeed(load32(buf), 27))
        return -5;
    const unsigned int count = load32(buf);
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 27))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    PointRealData* const items = list.data() + first;
    for (unsigned int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- BlobDataInfo ----------------------------------------------------------------------------------------------------

void CByte2Rdb::blobDataInfo2Byte(const BlobDataInfo& record, QByteArray& data)
{
    CRecordWriter out(grow(data, 18));
    walk(out, const_cast<BlobDataInfo&>(record));
}

int CByte2Rdb::byte2BlobDataInfo(const char* buf, int size, BlobDataInfo& record)
{
    if (size < 18)
        return -5;
    CRecordReader in(buf, size);
    walk(in, record);
    return 18;
}

void CByte2Rdb::blobDataInfos2Byte(const std::vector<BlobDataInfo>& list, QByteArray& data)
{
    CRecordWriter out(beginList(data, 18, list.size()));
    for (const BlobDataInfo& record : list)
        walk(out, const_cast<BlobDataInfo&>(record));
}

int CByte2Rdb::byte2BlobDataInfos(const char* buf, int size, std::vector<BlobDataInfo>& list)
{
    if (size < 4 || size < wrappedNeed(load32(buf), 18))
        return -5;
    const unsigned int count = load32(buf);
    const size_t first = list.size();
    list.resize(appendedSize(first, count));
    if (list.size() < first || !holdsItems(size, count, 18))
        return -5;
    CRecordReader in(buf + 4, size - 4);
    BlobDataInfo* const items = list.data() + first;
    for (unsigned int i = 0; i < count; ++i)
        walk(in, items[i]);
    return 1;
}

// --- BlobRealData ----------------------------------------------------------------------------------------------------

void CByte2Rdb::blobRealData2Byte(const BlobRealData& record, QByteArray& data)
{
    const int fixedSize = 18;
    const auto length = static_cast<long long>(record.bytes.size());
    const int first = data.size();
    grow(data, fixedSize); // doubles the memory, unlike the reservation: otherwise each item of a list would move it
    reserveMore(data, length);
    grow(data, length);
    CRecordWriter out(data.data() + first);
    walk(out, const_cast<BlobRealData&>(record));
}

int CByte2Rdb::byte2BlobRealData(const char* buf, int size, BlobRealData& record)
{
    CRecordReader in(buf, size);
    return walk(in, record) ? in.used() : -5;
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
    const size_t first = list.size();
    list.resize(appendedSize(first, load32(buf)));
    if (list.size() < first)
        return -5;
    CRecordReader in(buf + 4, size - 4);
    for (size_t i = first; i < list.size(); ++i) {
        if (!walk(in, list[i]))
            return -3; // deliberately without clearing the list, unlike the readers of definitions
    }
    return 1;
}

// --- BlobData --------------------------------------------------------------------------------------------------------

int CByte2Rdb::blob2List(const char* buf, int size, std::vector<BlobData>& list)
{
    if (size < 18)
        return -1;
    list.resize(static_cast<size_t>(static_cast<int>(load32(buf)))); // a negative count fails here
    CRecordReader in(buf + 4, size - 4);
    for (BlobData& item : list) {
        if (!walk(in, item))
            return -1;
    }
    return 4 + in.used();
}

} // namespace gqdb
