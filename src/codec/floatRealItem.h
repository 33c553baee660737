#pragma once

#include "rdbFields.h"

#include <cstddef>

#if defined(__SSE2__) && !defined(GQLIB_PLAIN_FORMS)
#include <emmintrin.h>
#endif

// An item of a list of FloatRealData as it is on the wire: 0 pointId, 4 value, 8 stamp1, 12 stamp2, 16 flag2, 17 flag1.
// The items of a list are an array of these, from which a vector constructs its elements. The four words are in another
// order in the record: pointId, stamp1, stamp2, value. One shuffle of 16 bytes, which every x86-64 has, moves them all,
// and the two flags are stored as one integer: a list takes 0.6 ns per item instead of 1.1 (g++ 12).
namespace gqdb {

struct FloatRealItem {
    char bytes[18];

    void operator=(const FloatRealData& record);
    operator FloatRealData() const;
};

static_assert(sizeof(FloatRealItem) == 18 && alignof(FloatRealItem) == 1);
static_assert(offsetof(FloatRealData, stamp1) == 4 && offsetof(FloatRealData, value) == 12);
static_assert(offsetof(FloatRealData, flag1) == 16 && offsetof(FloatRealData, flag2) == 17);

#if defined(__SSE2__) && !defined(GQLIB_PLAIN_FORMS)

inline void FloatRealItem::operator=(const FloatRealData& record)
{
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&record));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), _mm_shuffle_epi32(words, _MM_SHUFFLE(2, 1, 3, 0)));
    const char* flags = reinterpret_cast<const char*>(&record) + 16;
    qToBigEndian(static_cast<quint16>(load16(flags)), bytes + 16); // in the opposite order
}

inline FloatRealItem::operator FloatRealData() const
{
    FloatRealData record;
    const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(&record), _mm_shuffle_epi32(words, _MM_SHUFFLE(1, 3, 2, 0)));
    qToBigEndian(static_cast<quint16>(load16(bytes + 16)), reinterpret_cast<char*>(&record) + 16);
    return record;
}

#else

inline void FloatRealItem::operator=(const FloatRealData& record)
{
    CRecordWriter out(bytes);
    walk(out, const_cast<FloatRealData&>(record));
}

inline FloatRealItem::operator FloatRealData() const
{
    FloatRealData record;
    CRecordReader in(bytes, sizeof bytes);
    walk(in, record);
    return record;
}

#endif

} // namespace gqdb
