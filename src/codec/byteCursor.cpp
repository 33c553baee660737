#include "byteCursor.h"

#include <climits>

namespace gqdb {

void reserveMore(QByteArray& data, long long more)
{
    const long long largest = INT_MAX - static_cast<int>(sizeof(QArrayData)) - 1;
    if (data.size() + more <= largest)
        data.reserve(static_cast<int>(data.size() + more));
}

// Out of line: g++ 12 takes the room behind an inlined QByteArray header for out of bounds.
char* grow(QByteArray& data, long long count)
{
    const int size = data.size();
    data.resize(count <= INT_MAX - size ? size + static_cast<int>(count) : INT_MAX);
    return data.data() + size;
}

} // namespace gqdb
