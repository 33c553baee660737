#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

// What the count of a list means: for the bytes that follow it, and for the vector that it fills. Internal.
namespace gqdb {

// Number of bytes that the count and its items need, as the list readers compare it: a signed 32-bit integer. The need
// of a large count wraps and can be less than the bytes available. The list is resized even then; holdsItems prevents
// the reader from reading items that are not there.
inline int wrappedNeed(unsigned int count, unsigned int itemSize)
{
    return static_cast<int>(4u + count * itemSize);
}

// Returns true if `size` bytes have room for the count and its items. Computed in 64 bits, so that nothing wraps.
inline bool holdsItems(int size, unsigned int count, unsigned int itemSize)
{
    return size >= 4 + static_cast<long long>(itemSize) * count;
}

// Size of a list of `size` elements after `count` more: the low 32 bits of the sum. If it is below `size`, the sum
// wrapped.
inline size_t appendedSize(size_t size, unsigned int count)
{
    return static_cast<unsigned int>(size + count);
}

// The same for a list whose size is not cut to 32 bits. Where size_t has no more, a larger sum becomes the largest size_t,
// at which the vector raises std::length_error.
inline size_t fullSize(size_t size, unsigned int count)
{
    return count <= SIZE_MAX - size ? size + count : SIZE_MAX;
}

// Capacity to reserve for a list that grows from `size` to `wanted` elements; 0 if `capacity` is enough. It is at
// least twice the size, as in a resized vector, so that a list that is read in many parts is rarely reallocated.
inline size_t capacityFor(size_t wanted, size_t size, size_t capacity)
{
    return wanted <= capacity ? 0 : std::max(wanted, 2 * size);
}

} // namespace gqdb
