#include "byteCursor.h"

#include <climits>

namespace gqdb {

int appendString(const char* buf, int len, std::string& out)
{
    if (!holdsString(buf, len))
        return 0;
    const size_t size = load16(buf);
    out.reserve(size); // the field's length alone, whatever `out` holds
    out.append(buf + 2, size);
    return static_cast<int>(size) + 2;
}

int takeString(const char* buf, int len, QString& out)
{
    if (!holdsString(buf, len))
        return 0;
    const int size = static_cast<int>(load16(buf));
    // Cut at the first zero byte, unlike the std::string form: the text ends there, the field does not.
    out = QString::fromUtf8(buf + 2, static_cast<int>(strnlen(buf + 2, static_cast<size_t>(size))));
    return size + 2;
}

void reserveMore(QByteArray& data, long long more)
{
    const long long largest = INT_MAX - static_cast<int>(sizeof(QArrayData)) - 1;
    // Room that is reserved already stays untouched: reserve() would set its mark again, and the next look at the
    // capacity would wait for that store.
    if (data.isDetached() && data.data_ptr()->capacityReserved && data.size() + more <= data.capacity())
        return;
    if (data.size() + more <= largest)
        data.reserve(static_cast<int>(data.size() + more));
}

// Out of line: g++ 12 takes the room behind an inlined QByteArray header for out of bounds.
char* grow(QByteArray& data, long long count)
{
    const int size = data.size();
    if (data.isDetached() && count < data.capacity() - size) { // as resize does it, without its detours
        QByteArray::DataPtr header = data.data_ptr();
        header->size = size + static_cast<int>(count);
        header->data()[header->size] = '\0';
        return header->data() + size;
    }
    data.resize(count <= INT_MAX - size ? size + static_cast<int>(count) : INT_MAX);
    return data.data() + size;
}

char* beginList(QByteArray& data, int itemSize, size_t count)
{
    const long long size = 4 + itemSize * static_cast<long long>(count);
    reserveMore(data, size);
    char* const at = grow(data, size);
    store32(static_cast<unsigned int>(count), at);
    return at + 4;
}

} // namespace gqdb
