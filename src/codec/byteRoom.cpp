#include "byteRoom.h"

#include "byteOrder.h"

namespace gqdb {

char* growByResize(QByteArray& data, long long count)
{
    const int size = static_cast<int>(data.size());
    if (count > largestArray - size)
        qBadAlloc();
    data.resize(size + static_cast<int>(count));
    return data.data() + size;
}

void reserveMore(QByteArray& data, long long more)
{
#if QT_VERSION_MAJOR == 5
    // If the room is already reserved, do not call reserve(): it would store the flag capacityReserved again, and the
    // next read of the capacity would wait for that store.
    if (data.isDetached() && data.data_ptr()->capacityReserved && data.size() + more <= data.capacity())
        return;
#endif
    if (data.size() + more <= largestArray)
        data.reserve(static_cast<int>(data.size() + more));
}

void putCount(size_t count, QByteArray& data)
{
    store32(static_cast<unsigned int>(count), grow(data, 4));
}

char* growList(QByteArray& data, size_t count, long long size)
{
    char* const at = grow(data, 4 + size);
    store32(static_cast<unsigned int>(count), at);
    return at + 4;
}

char* beginList(QByteArray& data, int itemSize, size_t count)
{
    const long long size = itemSize * static_cast<long long>(count);
    reserveMore(data, 4 + size);
    return growList(data, count, size);
}

} // namespace gqdb
