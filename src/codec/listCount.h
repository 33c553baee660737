#pragma once

#include <algorithm>
#include <cstddef>

// What the count of a list means: for the bytes that follow it, and for the vector that it fills. Internal.
namespace gqdb {

// Number of bytes that the count and its items need, as the list readers promise to compute it: in 32 bits, and signed.
// The need of a large count wraps and can be less than the bytes available. The list is resized even then; holdsItems
// keeps the reader from items that are not there.
inline int wrappedNeed(unsigned int count, unsigned int itemSize)
{
    return static_cast<int>(4u + count * itemSize);
}

// Returns true if `size` bytes have room for the count and its items. Computed in 64 bits, so that nothing wraps.
inline bool holdsItems(int size, unsigned int count, unsigned int itemSize)
{
    return size >= 4 + static_cast<long long>(itemSize) * count;
}

// Size of a list of `size` elements after `count` more: the sum cut to 32 bits. If it is below `size`, the sum wrapped.
inline size_t appendedSize(size_t size, unsigned int count)
{
    return static_cast<unsigned int>(size + count);
}

// Capacity to reserve for a list that grows from `size` to `wanted` elements; 0 if `capacity` is enough. It follows the
// size, as that of a resized vector does, so that a list read in many parts moves seldom.
inline size_t capacityFor(size_t wanted, size_t size, size_t capacity)
{
    return wanted <= capacity ? 0 : std::max(wanted, 2 * size);
}

} // namespace gqdb
