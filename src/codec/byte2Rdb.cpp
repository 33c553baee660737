#include "byte2Rdb.h"

#include "byteCursor.h"
#include "samples.h"

#include <QDateTime>

#include <algorithm>
#include <cstddef>
#include <iterator>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <zlib.h>

namespace gqdb {

CByte2Rdb::CByte2Rdb() = default;

CByte2Rdb::~CByte2Rdb() = default;

// --- Shared by the families ---------------------------------------------------------------------------------------

// Reserves for the items of a list alone: room told ahead, whatever the items need.
static void reserveItems(QByteArray& data, int itemRoom, size_t count)
{
    reserveMore(data, itemRoom * static_cast<long long>(count));
}

static long long textSize(const std::string& text)
{
    return 2 + static_cast<long long>(writtenBytes(text));
}

// Whether the count in front of `buf` and items of a fixed size fit into `size` bytes. The need wraps in 32 bits and is
// compared as signed, so that a large count can pass. The list is resized for it all the same; itemsInside then keeps
// the reader off the items.
static bool holdsItems(const char* buf, int size, unsigned int itemSize)
{
    return size >= static_cast<int>(load32(buf) * itemSize + 4u);
}

// Whether they fit indeed, in 64 bits.
static bool itemsInside(int size, unsigned int itemSize, unsigned int count)
{
    return size >= 4 + static_cast<long long>(itemSize) * count;
}

// What to reserve for a list that is to have so many elements, so that one which grows by many replies moves seldom.
static size_t roomFor(size_t wanted, size_t capacity)
{
    return wanted <= capacity ? 0 : std::max(wanted, 2 * capacity);
}

// --- Point definitions --------------------------------------------------------------------------------------------
// A list reader appends: the new size is old size plus count, cut to 32 bits. Where that falls below the old size there
// is no room for an item, and the list is too short. Each element is read while it is fresh
// in the cache, and all its texts without a call: hence `flatten`, which doubles the speed of a list.

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
    const size_t wanted = static_cast<unsigned int>(first + in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(roomFor(wanted, list.capacity()));
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
    const size_t wanted = static_cast<unsigned int>(first + in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(roomFor(wanted, list.capacity()));
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
    const size_t wanted = static_cast<unsigned int>(first + in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(roomFor(wanted, list.capacity()));
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
    const size_t wanted = static_cast<unsigned int>(first + in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(roomFor(wanted, list.capacity()));
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
    const size_t wanted = static_cast<unsigned int>(first + in.take32());
    if (wanted < first) {
        list.resize(wanted);
        return -2;
    }
    list.reserve(roomFor(wanted, list.capacity()));
    while (list.size() < wanted) {
        list.emplace_back();
        if (!in.skip(byte2BlobPoint(in.here(), in.left(), list.back()))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

// --- Values -------------------------------------------------------------------------------------------------------
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

// The list that programs move most has a quick form. The four words travel as pointId, value, stamp1, stamp2, and stand
// in the record as pointId, stamp1, stamp2, value: a shuffle of 16 bytes, which every x86-64 has, moves them at once.
static inline void putQuickly(CByteWriter& out, const FloatRealData& record)
{
#ifdef __SSE2__
    static_assert(offsetof(FloatRealData, stamp1) == 4 && offsetof(FloatRealData, value) == 12);
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&record));
    const __m128i wire = _mm_shuffle_epi32(words, _MM_SHUFFLE(2, 1, 3, 0));
    out.putBytes(&wire, sizeof wire);
    out.put8(record.flag2);
    out.put8(record.flag1);
#else
    put(out, record);
#endif
}

// A record that is made of its bytes where it is wanted.
struct FloatRealItem {
    const char* bytes;

    operator FloatRealData() const
    {
        FloatRealData record;
#ifdef __SSE2__
        const __m128i wire = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&record), _mm_shuffle_epi32(wire, _MM_SHUFFLE(1, 3, 2, 0)));
        record.flag2 = bytes[16];
        record.flag1 = bytes[17];
#else
        CByteReader in(bytes, 18);
        take(in, record);
#endif
        return record;
    }
};

// Goes through the items of a list, so that a vector builds its new elements straight from the bytes, and does not fill
// them with defaults first.
class FloatRealItems {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = FloatRealItem;
    using difference_type = std::ptrdiff_t;
    using pointer = const FloatRealItem*;
    using reference = FloatRealItem;

    FloatRealItems(const char* firstItem, size_t itemIndex) : first(firstItem), index(itemIndex) {}
    FloatRealItem operator*() const { return {first + 18 * index}; }
    FloatRealItems& operator++()
    {
        ++index;
        return *this;
    }
    bool operator==(const FloatRealItems& other) const { return index == other.index; }
    bool operator!=(const FloatRealItems& other) const { return index != other.index; }

private:
    const char* first;
    size_t index;
};

void CByte2Rdb::floatRealDatas2Byte(const std::vector<FloatRealData>& list, QByteArray& data)
{
    CByteWriter out(data, 18, list.size());
    for (const FloatRealData& record : list)
        putQuickly(out, record);
}

int CByte2Rdb::byte2FloatRealDatas(const char* buf, int size, std::vector<FloatRealData>& list)
{
    if (size < 22 || !holdsItems(buf, size, 18)) // an empty list of 4 bytes is refused
        return -5;
    const unsigned int count = load32(buf);
    const size_t wanted = static_cast<unsigned int>(list.size() + count); // cut to 32 bits
    if (wanted < list.size() || !itemsInside(size, 18, count)) {
        list.resize(wanted);
        return -5;
    }
    list.insert(list.end(), FloatRealItems(buf + 4, 0), FloatRealItems(buf + 4, count));
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
    if (size < 18 || !holdsItems(buf, size, 14))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(static_cast<unsigned int>(first + count));
    if (list.size() < first || !itemsInside(size, 14, count))
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
    if (size < 18 || !holdsItems(buf, size, 14))
        return -5;
    CByteReader in(buf, size);
    const int count = in.takeInt(); // signed in the bool lists, as is the new size: a negative one shrinks the list
    const size_t first = list.size();
    list.resize(static_cast<size_t>(static_cast<int>(first + static_cast<size_t>(count))));
    if (count <= 0)
        return 1;
    if (!itemsInside(size, 14, static_cast<unsigned int>(count)))
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
    if (size < 18 || !holdsItems(buf, size, 10)) // so that one item in its 14 bytes is refused
        return -5;
    CByteReader in(buf, size);
    const int count = in.takeInt(); // signed in the bool lists, as is the new size: a negative one shrinks the list
    const size_t first = list.size();
    list.resize(static_cast<size_t>(static_cast<int>(first + static_cast<size_t>(count))));
    if (count <= 0)
        return 1;
    if (!itemsInside(size, 10, static_cast<unsigned int>(count)))
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
    if (size < 22 || !holdsItems(buf, size, 18))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(static_cast<unsigned int>(first + count));
    if (list.size() < first || !itemsInside(size, 18, count))
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
    if (size < 18 || !holdsItems(buf, size, 14))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(static_cast<unsigned int>(first + count));
    if (list.size() < first || !itemsInside(size, 14, count))
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
    if (size < 4 || !holdsItems(buf, size, 27))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(static_cast<unsigned int>(first + count));
    if (list.size() < first || !itemsInside(size, 27, count))
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
    if (size < 4 || !holdsItems(buf, size, 18))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(static_cast<unsigned int>(first + count));
    if (list.size() < first || !itemsInside(size, 18, count))
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
    if (size < 4 || !holdsItems(buf, size, 18))
        return -5;
    CByteReader in(buf, size);
    const unsigned int count = in.take32();
    const size_t first = list.size();
    list.resize(static_cast<unsigned int>(first + count));
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

// --- Queries ------------------------------------------------------------------------------------------------------

void CByte2Rdb::hisQuery2Byte(const HisQuery&, QByteArray&) {} // deliberately nothing; callers rely on it

int CByte2Rdb::byte2HisQuery(const char* buf, int size, HisQuery& query)
{
    if (size < 28)
        return -2;
    CByteReader in(buf, size);
    query.pointId = in.take32();
    query.word1 = in.take32();
    query.word2 = in.take32();
    query.word3 = in.take32();
    query.word4 = in.take32();
    query.word5 = in.take32();
    query.word6 = in.take32();
    return 1; // not the size, unlike its siblings
}

void CByte2Rdb::oneSecQuery2Byte(const OneSecQuery& query, QByteArray& data)
{
    CByteWriter out(data, 20 + textSize(query.text1));
    out.put32(query.pointId);
    out.put32(query.word1);
    out.put32(query.word2);
    out.put32(query.word3);
    out.put32(query.word4);
    out.putText(query.text1);
}

int CByte2Rdb::byte2OneSecQuery(const char* buf, int size, OneSecQuery& query)
{
    if (size < 22)
        return -2;
    query.pointId = load32(buf);
    query.word1 = load32(buf + 4);
    query.word2 = load32(buf + 8);
    query.word3 = load32(buf + 12);
    query.word4 = load32(buf + 16);
    // One byte less than there is: a buffer that ends exactly with the record is refused.
    const int used = takeString(buf + 20, size - 21, query.text1);
    return used == 0 ? 0 : 20 + used;
}

// --- Events -------------------------------------------------------------------------------------------------------
// A list reader replaces: elements that stood there are reused as they are.

static const int eventInfoRoom = 1024;

void CByte2Rdb::eventInfo2Byte(const EventInfo& event, QByteArray& data)
{
    CByteWriter out(data, 55 + textSize(event.text1) + textSize(event.text2));
    out.put32(event.word1);
    out.put32(event.word2);
    out.put32(event.word3);
    out.put32(event.word4);
    out.put8(event.switch1);
    out.put8(event.switch2);
    out.put32(event.word5);
    out.putDouble(event.value);
    out.put32(event.word6);
    out.put32(event.word7);
    out.put32(event.word8);
    out.put32(event.word9);
    out.put32(event.word10);
    out.put8(event.switch3);
    out.put32(event.word13);
    out.putText(event.text1);
    out.putText(event.text2);
}

int CByte2Rdb::byte2EventInfo(const char* buf, int size, EventInfo& event)
{
    if (size < 59)
        return 0;
    CByteReader in(buf, size);
    event.word1 = in.take32();
    event.word2 = in.take32();
    event.word3 = in.take32();
    event.word4 = in.take32();
    event.switch1 = in.take8();
    event.switch2 = in.take8();
    event.word5 = in.take32();
    event.value = in.takeDouble();
    event.word6 = in.take32();
    event.word7 = in.take32();
    event.word8 = in.take32();
    event.word9 = in.take32();
    event.word10 = in.take32();
    event.switch3 = in.take8();
    event.word13 = in.take32();
    if (!in.takeText(event.text1) || !in.takeText(event.text2))
        return 0;
    return in.used();
}

void CByte2Rdb::eventInfos2Byte(const std::vector<EventInfo>& list, QByteArray& data)
{
    reserveMore(data, 4 + eventInfoRoom * static_cast<long long>(list.size()));
    putCount(list.size(), data);
    for (const EventInfo& event : list)
        eventInfo2Byte(event, data);
}

int CByte2Rdb::byte2EventInfos(const char* buf, int size, std::vector<EventInfo>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    list.resize(in.take32());
    for (EventInfo& event : list) {
        if (!in.skip(byte2EventInfo(in.here(), in.left(), event))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

static inline void put(CByteWriter& out, const EventState& event)
{
    out.put32(event.word1);
    out.put8(event.switch1);
    out.put32(event.word2);
    out.put32(event.word3);
    out.put32(event.word4);
}

void CByte2Rdb::eventState2Byte(const EventState& event, QByteArray& data)
{
    CByteWriter out(data, 17);
    put(out, event);
}

int CByte2Rdb::byte2EventState(const char* buf, int size, EventState& event)
{
    if (size < 17)
        return 0;
    CByteReader in(buf, size);
    event.word1 = in.take32();
    event.switch1 = in.take8();
    event.word2 = in.take32();
    event.word3 = in.take32();
    event.word4 = in.take32();
    return in.used();
}

void CByte2Rdb::eventStates2Byte(const std::vector<EventState>& list, QByteArray& data)
{
    CByteWriter out(data, 17, list.size());
    for (const EventState& event : list)
        put(out, event);
}

int CByte2Rdb::byte2EventStates(const char* buf, int size, std::vector<EventState>& list)
{
    if (size < 4)
        return -2;
    CByteReader in(buf, size);
    list.resize(in.take32());
    for (EventState& event : list) {
        if (!in.skip(byte2EventState(in.here(), in.left(), event))) {
            list.clear();
            return -3;
        }
    }
    return 1;
}

// --- Variants, properties, objects --------------------------------------------------------------------------------

enum VariantKind : unsigned char {
    kindInt = 0,
    kindFloat = 5,
    kindDouble = 6,
    kindText = 10,
    kindTime = 11,
    kindZero = 101,
};

static const int slotSize = 258; // of a string in the blob form

// Deliberately hands the string reader a text in place of the length ahead of it, so that it takes the text's first two
// bytes for a length. Ordinary text is too short for that and is left out.
static void takeMisplacedText(const char* text, int size, std::string& out)
{
    takeString(text, size, out);
}

// Reads a slot that begins at `buf`. A text that overruns the slot is a fault.
static bool takeSlot(const char* buf, int size, std::string& out)
{
    const int used = takeString(buf, size, out);
    return used >= 1 && used <= slotSize;
}

// The value of every kind but text, for both forms.
static void putNumber(const Variant& value, QByteArray& data)
{
    switch (value.kind) {
    case kindInt:
    case kindTime:
        CByte2Val::int2Byte(value.intValue, data);
        break;
    case kindFloat:
        CByte2Val::float2Byte(value.floatValue, data);
        break;
    case kindDouble:
        CByte2Val::double2Byte(value.doubleValue, data);
        break;
    default:
        break;
    }
}

// Reads the value behind the kind at `buf[0]`; nothing for text and unknown kinds. Bytes consumed with the kind, or -1.
static int takeNumber(const char* buf, int size, Variant& value)
{
    switch (value.kind) {
    case kindInt:
    case kindTime:
        if (size < 5)
            return -1;
        value.intValue = static_cast<int>(load32(buf + 1));
        return 5;
    case kindFloat:
        if (size < 5)
            return -1;
        value.floatValue = imageFloat(load32(buf + 1));
        return 5;
    case kindDouble:
        if (size < 9)
            return -1;
        value.doubleValue = imageDouble(load64(buf + 1));
        return 9;
    default:
        return 1;
    }
}

void CByte2Rdb::variant2Byte(const Variant& value, QByteArray& data)
{
    data.append(static_cast<char>(value.kind));
    if (value.kind == kindText)
        str2Byte(value.textValue, data);
    else
        putNumber(value, data);
}

int CByte2Rdb::byte2Variant(const char* buf, int size, Variant& value)
{
    if (size < 1)
        return -2;
    value.kind = static_cast<unsigned char>(buf[0]);
    if (value.kind != kindText)
        return takeNumber(buf, size, value);
    if (size < 3)
        return -1;
    const int length = static_cast<int>(load16(buf + 1));
    if (size < length + 3)
        return -1;
    takeMisplacedText(buf + 3, length, value.textValue);
    return length + 3;
}

void CByte2Rdb::variant2Blob(const Variant& value, QByteArray& data)
{
    data.append(static_cast<char>(value.kind));
    if (value.kind == kindText)
        str2Blob(value.textValue, data);
    else
        putNumber(value, data);
}

int CByte2Rdb::blob2Variant(const char* buf, int size, Variant& value)
{
    if (size < 1)
        return -2;
    value.kind = static_cast<unsigned char>(buf[0]);
    if (value.kind != kindText)
        return takeNumber(buf, size, value);
    if (size < 1 + slotSize || !takeSlot(buf + 1, size - 1, value.textValue))
        return -1;
    return 1 + slotSize;
}

void CByte2Rdb::property2Byte(const PropertyData& property, QByteArray& data)
{
    int2Byte(property.word1, data);
    int2Byte(property.word2, data);
    str2Byte(property.formatText, data);
    str2Byte(property.valueText, data);
    variant2Byte(property.value, data);
}

int CByte2Rdb::byte2Property(const char* buf, int size, PropertyData& property)
{
    if (size < 13)
        return -2;
    property.word1 = static_cast<int>(load32(buf));
    property.word2 = static_cast<int>(load32(buf + 4));

    const int length1 = static_cast<int>(load16(buf + 8));
    if (size < length1 + 13)
        return -3;
    takeMisplacedText(buf + 10, length1, property.formatText);

    const int length2 = static_cast<int>(load16(buf + 10 + length1));
    if (size < length1 + length2 + 13)
        return -3;
    takeMisplacedText(buf + 12 + length1, length2, property.valueText);

    const int pos = 12 + length1 + length2;
    const int used = byte2Variant(buf + pos, size - pos, property.value);
    return used < 1 ? -4 : pos + used;
}

void CByte2Rdb::property2Blob(const PropertyData& property, QByteArray& data)
{
    int2Byte(property.word1, data);
    int2Byte(property.word2, data);
    str2Blob(property.formatText, data);
    str2Blob(property.valueText, data);
    variant2Blob(property.value, data);
}

int CByte2Rdb::blob2Property(const char* buf, int size, PropertyData& property)
{
    if (size < 525)
        return -2;
    property.word1 = static_cast<int>(load32(buf));
    property.word2 = static_cast<int>(load32(buf + 4));
    if (!takeSlot(buf + 8, size - 8, property.formatText) || !takeSlot(buf + 266, size - 266, property.valueText))
        return -3;
    const int used = blob2Variant(buf + 524, size - 524, property.value);
    return used < 1 ? -4 : 524 + used;
}

static void putObjectWords(const ObjectData& object, QByteArray& data)
{
    CByteWriter out(data, 17);
    out.put8(0); // a place that readers skip
    out.putInt(object.word1);
    out.putInt(object.word2);
    out.putInt(object.word3);
    out.putInt(object.word4);
}

static void takeObjectWords(const char* buf, ObjectData& object)
{
    object.word1 = static_cast<int>(load32(buf + 1));
    object.word2 = static_cast<int>(load32(buf + 5));
    object.word3 = static_cast<int>(load32(buf + 9));
    object.word4 = static_cast<int>(load32(buf + 13));
}

void CByte2Rdb::object2Byte(const ObjectData& object, QByteArray& data)
{
    putObjectWords(object, data);
    str2Byte(object.text1, data);
    str2Byte(object.text2, data);
    str2Byte(object.text3, data);
    short2Byte(static_cast<unsigned int>(object.properties.size()), data);
    for (const PropertyData& property : object.properties)
        property2Byte(property, data);
}

int CByte2Rdb::byte2Object(const char* buf, int size, ObjectData& object)
{
    if (size < 25)
        return -2;
    takeObjectWords(buf, object);

    int pos = 17;
    int texts = 0; // bytes of the texts so far, without their lengths
    for (std::string* text : {&object.text1, &object.text2, &object.text3}) {
        const int length = static_cast<int>(load16(buf + pos));
        texts += length;
        if (size < texts + 25)
            return -3;
        takeMisplacedText(buf + pos + 2, length, *text);
        pos += 2 + length;
    }

    const unsigned int count = load16(buf + pos);
    pos += 2;
    for (unsigned int i = 0; i < count; ++i) {
        PropertyData property;
        const int used = byte2Property(buf + pos, size - pos, property);
        if (used < 1)
            return -4;
        object.properties.push_back(property);
        pos += used;
    }
    return pos;
}

void CByte2Rdb::object2Blob(const ObjectData& object, QByteArray& data)
{
    putObjectWords(object, data);
    str2Blob(object.text1, data);
    str2Blob(object.text2, data);
    str2Blob(object.text3, data);
    short2Byte(static_cast<unsigned int>(object.properties.size()), data);
    for (const PropertyData& property : object.properties)
        property2Blob(property, data);
}

// The value of a property as it is shown.
static std::string valueText(const PropertyData& property)
{
    const Variant& value = property.value;
    switch (value.kind) {
    case kindTime: {
        const QDateTime time = QDateTime::fromSecsSinceEpoch(static_cast<unsigned int>(value.intValue));
        // A format that begins with a zero byte is not empty: it asks for no text at all.
        const char* format = property.formatText.empty() ? "yyyy-MM-dd hh:mm:ss" : property.formatText.c_str();
        return time.toString(QString::fromUtf8(format)).toStdString();
    }
    case kindDouble:
        return std::to_string(value.doubleValue);
    case kindFloat:
        return std::to_string(value.floatValue);
    case kindInt:
    case kindZero: // no value travels with this kind: 0
        return std::to_string(value.intValue);
    case kindText:
        return value.textValue;
    default:
        return std::string();
    }
}

int CByte2Rdb::blob2Object(const char* buf, int size, ObjectData& object)
{
    if (size < 793)
        return -2;
    takeObjectWords(buf, object);
    if (!takeSlot(buf + 17, size - 17, object.text1) || !takeSlot(buf + 275, size - 275, object.text2) ||
        !takeSlot(buf + 533, size - 533, object.text3))
        return -2;

    const unsigned int count = load16(buf + 791);
    int pos = 793;
    for (unsigned int i = 0; i < count; ++i) {
        PropertyData property;
        const int used = blob2Property(buf + pos, size - pos, property);
        if (used < 1)
            return -4;
        property.valueText = valueText(property);
        object.properties.push_back(property);
        pos += used;
    }
    return pos - 2; // the count's two bytes are deliberately left out: callers add them
}

void CByte2Rdb::str2Blob(const std::string& text, QByteArray& data)
{
    const int used = str2Byte(text, data);
    if (used < slotSize)
        data.append(slotSize - used, 0);
}

// --- Waves --------------------------------------------------------------------------------------------------------

static const unsigned char rawSamples = 1;       // bits of waveFlags
static const unsigned char quantisedSamples = 2; // rawSamples goes first on reading
static const unsigned char compressedSamples = 4;

static const unsigned int waveHeadSize = sizeof(BlobWaveHead);
static_assert(sizeof(BlobWaveHead) == 96, "a wave's head is stored as it lies in memory");

// The second half of packing: `rawBuffer` holds the samples.
static int storeWave(BlobWaveHead& head, const std::vector<int>& marks, const unsigned char* rawBuffer, size_t length,
                     bool compressed, unsigned char* packedBuffer, std::vector<unsigned char>& stored)
{
    const unsigned char* block = rawBuffer;
    if (compressed) {
        uLongf packed = CByte2Rdb::waveBlockSize;
        if (compress(packedBuffer, &packed, rawBuffer, length) != Z_OK)
            return -1;
        block = packedBuffer;
        length = packed;
    }
    head.markCount = static_cast<unsigned int>(marks.size());
    stored.resize(waveHeadSize + 4 * marks.size() + length);
    unsigned char* at = stored.data();
    std::memcpy(at, &head, waveHeadSize);
    at += waveHeadSize;
    for (const int mark : marks) {
        store32(static_cast<unsigned int>(mark), reinterpret_cast<char*>(at));
        at += 4;
    }
    if (length > 0)
        std::memcpy(at, block, length);
    return 1;
}

// Samples become steps of 16 bits and back in blocks that stay in the cache.
static const size_t blockSamples = 4096;

static void packQuantised(const std::vector<float>& samples, const BlobWaveHead& head, char* raw)
{
    int steps[blockSamples];
    for (size_t first = 0; first < samples.size(); first += blockSamples) {
        const size_t count = std::min(blockSamples, samples.size() - first);
        quantise(samples.data() + first, count, static_cast<float>(head.limitHigh), static_cast<float>(head.limitLow),
                 steps);
        for (size_t i = 0; i < count; ++i)
            store16(static_cast<unsigned int>(steps[i]), raw + 2 * (first + i));
    }
}

static void unpackQuantised(const char* raw, size_t sampleCount, const BlobWaveHead& head, std::vector<float>& samples)
{
    if (sampleCount == 0)
        return;
    samples.resize(sampleCount);
    int steps[blockSamples];
    for (size_t first = 0; first < sampleCount; first += blockSamples) {
        const size_t count = std::min(blockSamples, sampleCount - first);
        for (size_t i = 0; i < count; ++i)
            steps[i] = static_cast<int>(load16(raw + 2 * (first + i)));
        unquantise(steps, count, static_cast<float>(head.limitHigh), static_cast<float>(head.limitLow),
                   samples.data() + first);
    }
}

int CByte2Rdb::wave2Byte(BlobWaveHead& head, const std::vector<float>& samples, const std::vector<int>& marks,
                         unsigned char* rawBuffer, unsigned char* packedBuffer, std::vector<unsigned char>& stored)
{
    char* raw = reinterpret_cast<char*>(rawBuffer);
    size_t length = 4 * samples.size();
    head.sampleCount = static_cast<unsigned int>(samples.size());
    calcLimit(samples, head.limitHigh, head.limitLow);
    if (head.waveFlags & quantisedSamples) {
        packQuantised(samples, head, raw);
        length = 2 * samples.size();
    } else {
        floats2Buffer(samples, raw);
    }
    return storeWave(head, marks, rawBuffer, length, head.waveFlags & compressedSamples, packedBuffer, stored);
}

int CByte2Rdb::wave2Byte(BlobWaveHead& head, const std::vector<int>& samples, const std::vector<int>& marks,
                         unsigned char* rawBuffer, unsigned char* packedBuffer, std::vector<unsigned char>& stored)
{
    head.waveFlags |= rawSamples;
    head.sampleCount = static_cast<unsigned int>(samples.size());
    ushorts2Buffer(samples, reinterpret_cast<char*>(rawBuffer));
    return storeWave(head, marks, rawBuffer, 2 * samples.size(), head.waveFlags & compressedSamples, packedBuffer,
                     stored);
}

int CByte2Rdb::byte2Wave(const std::vector<unsigned char>& stored, unsigned char* workBuffer, BlobWaveHead& head,
                         std::vector<float>& samples, std::vector<int>& marks)
{
    if (stored.size() < waveHeadSize)
        return 0;
    std::memcpy(&head, stored.data(), waveHeadSize);
    const char* payload = reinterpret_cast<const char*>(stored.data()) + waveHeadSize;
    int length = static_cast<int>(stored.size() - waveHeadSize);

    if (head.markCount != 0) {
        // The head's size counts once more: with marks, fewer than 96 bytes of samples are deliberately refused.
        if (length < static_cast<int>(head.markCount * 4 + waveHeadSize))
            return 0;
        if (head.markCount > static_cast<unsigned int>(length) / 4)
            return 0; // only behind a wrapped sum
        marks.resize(head.markCount);
        for (int& mark : marks) {
            mark = static_cast<int>(load32(payload));
            payload += 4;
        }
        length -= static_cast<int>(4 * head.markCount);
    }
    if (head.waveFlags & compressedSamples) {
        uLongf unpacked = waveBlockSize;
        if (uncompress(workBuffer, &unpacked, reinterpret_cast<const Bytef*>(payload), static_cast<uLong>(length)) !=
            Z_OK)
            return 0;
        payload = reinterpret_cast<const char*>(workBuffer);
        length = static_cast<int>(unpacked);
    }
    if (head.waveFlags & rawSamples) {
        std::vector<int> values;
        buffer2Shorts(payload, length / 2, values);
        ad2float(values, head.limitHigh, head.limitLow, samples);
    } else if (head.waveFlags & quantisedSamples) {
        unpackQuantised(payload, static_cast<size_t>(length / 2), head, samples);
    } else {
        buffer2Floats(payload, length / 4, samples);
    }
    return 1;
}

} // namespace gqdb
