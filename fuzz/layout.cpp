#include "layout.h"

#include <algorithm>

unsigned int numberOf2(const char* buf)
{
    return static_cast<unsigned char>(buf[0]) + 256u * static_cast<unsigned char>(buf[1]);
}

unsigned int numberOf4(const char* buf)
{
    return numberOf2(buf) + 65536u * numberOf2(buf + 2);
}

static int lengthSize(int field)
{
    return field == textField ? 2 : 4;
}

// Returns the size of the field at `buf`, or more than `size` if the field does not fit.
static long long fieldSize(int field, const char* buf, int size)
{
    if (field >= 0)
        return field;
    if (size < lengthSize(field))
        return lengthSize(field);
    return lengthSize(field) + static_cast<long long>(field == textField ? numberOf2(buf) : numberOf4(buf));
}

int recordSize(const Layout& layout, const char* buf, int size)
{
    if (size < layout.least)
        return 0;
    int used = 0;
    for (const int field : layout.fields) {
        const long long more = fieldSize(field, buf + used, size - used);
        if (more > size - used)
            return 0;
        used += static_cast<int>(more);
    }
    return used;
}

int listSize(const Layout& layout, const char* buf, int size)
{
    if (size < 4)
        return 0;
    int used = 4;
    for (unsigned int left = numberOf4(buf); left > 0; --left) {
        const int more = recordSize(layout, buf + used, size - used);
        if (more == 0)
            return 0;
        used += more;
    }
    return used;
}

bool hasPlainTexts(const Layout& layout, const char* buf)
{
    for (const int field : layout.fields) {
        const int size = static_cast<int>(fieldSize(field, buf, 65537));
        if (field == textField &&
            !std::all_of(buf + 2, buf + size, [](char letter) { return static_cast<signed char>(letter) > 0; }))
            return false;
        buf += size;
    }
    return true;
}

bool hasPlainTextsInList(const Layout& layout, const char* buf, int size)
{
    int used = 4;
    for (unsigned int left = numberOf4(buf); left > 0; --left) {
        if (!hasPlainTexts(layout, buf + used))
            return false;
        used += recordSize(layout, buf + used, size - used);
    }
    return true;
}

int shortestSize(const Layout& layout)
{
    int size = 0;
    for (const int field : layout.fields)
        size += field >= 0 ? field : lengthSize(field);
    return size;
}
