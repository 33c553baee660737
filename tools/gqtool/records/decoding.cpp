#include "decoding.h"

#include <algorithm>
#include <cstddef>

static const int startBytes = 9;

bool FaultList::insert(size_t index, long long offset, const Text& text)
{
    if (index < limit)
        all.insert(all.begin() + static_cast<std::ptrdiff_t>(index), {offset, text});
    if (index < limit && all.size() <= limit)
        return true;
    all.resize(std::min(all.size(), limit));
    ++more;
    return false;
}

void Decoding::stopAt(ByteWindow& bytes)
{
    bytes.holds(startBytes);
    restOffset = bytes.offset();
    restStart = QByteArray(bytes.at(), std::min(startBytes, bytes.left()));
}
