#pragma once

#include "quickGrow.h"

#include <climits>
#include <cstddef>

// Room at the end of a byte array for what a writer adds. Internal.
namespace gqdb {

// Size of the largest array of Qt 5. It is the limit with Qt 6 too, since sizes in frames and records have 32 bits.
inline constexpr int largestArray = INT_MAX - static_cast<int>(sizeof(QArrayData)) - 1;

// Reserves `more` bytes after the current ones. Does nothing if an array cannot have so many: `more` is an estimate,
// and the bytes that follow may still fit.
void reserveMore(QByteArray& data, long long more);

// Grows by a list's count and writes it: the low 32 bits of `count`.
void putCount(size_t count, QByteArray& data);

// Grows by a list of `count` items, `size` bytes altogether, and writes the count. Returns the first byte of the items.
char* growList(QByteArray& data, size_t count, long long size);

// Reserves and grows by a list of `count` items of `itemSize` bytes, and writes the count. Returns the first byte of
// the items.
char* beginList(QByteArray& data, int itemSize, size_t count);

} // namespace gqdb
