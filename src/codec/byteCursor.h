#pragma once

#include "byteOrder.h"
#include "byteRoom.h"
#include "byteText.h"

#include <QByteArray>

#include <cassert>
#include <cstring>
#include <string>

// Cursors over consecutive fields. Internal.
namespace gqdb {

// Reads fields one after the other. Only takeText and skip look at the end: the caller tests left() ahead of the rest.
class CByteReader {
public:
    CByteReader(const char* buf, int size) : first(buf), at(buf), end(buf + size) {}

    const char* here() const { return at; }
    int left() const { return static_cast<int>(end - at); }
    int used() const { return static_cast<int>(at - first); }

    char take8() { return *at++; }
    unsigned int take16() { return load16(advance(2)); }
    unsigned int take32() { return load32(advance(4)); }
    int takeInt() { return static_cast<int>(take32()); }
    float takeFloat() { return imageFloat(take32()); }
    double takeDouble() { return imageDouble(load64(advance(8))); }

    void takeBytes(void* bytes, size_t size)
    {
        if (size > 0)
            std::memcpy(bytes, at, size);
        at += size;
    }

    // False if the rest does not hold a whole string.
    bool takeText(std::string& text) { return skip(takeString(at, left(), text)); }
    bool takeText(QString& text) { return skip(takeString(at, left(), text)); }

    // Moves behind what another reader consumed; false if that was nothing.
    bool skip(int count)
    {
        if (count <= 0)
            return false;
        at += count;
        return true;
    }

private:
    const char* advance(int count)
    {
        at += count;
        return at - count;
    }

    const char* first;
    const char* at;
    const char* end;
};

// Grows an array once by a known size and fills that room field by field.
class CByteWriter {
public:
    CByteWriter(QByteArray& data, long long size) : at(grow(data, size)), end(at + size) {}
    // For the items of a list.
    CByteWriter(QByteArray& data, int itemSize, size_t count)
        : at(beginList(data, itemSize, count)), end(at + itemSize * static_cast<long long>(count))
    {
    }
    ~CByteWriter() { assert(at == end); }
    CByteWriter(const CByteWriter&) = delete;
    CByteWriter& operator=(const CByteWriter&) = delete;

    void put8(char value) { *at++ = value; }
    void put16(unsigned int value)
    {
        store16(value, at);
        at += 2;
    }
    void put32(unsigned int value)
    {
        store32(value, at);
        at += 4;
    }
    void putInt(int value) { put32(static_cast<unsigned int>(value)); }
    void putFloat(float value) { put32(floatImage(value)); }
    void putDouble(double value)
    {
        store64(doubleImage(value), at);
        at += 8;
    }

    // The length field keeps the low 16 bits of the size; the bytes follow whole.
    void putText(const std::string& text)
    {
        const size_t size = writtenBytes(text);
        put16(static_cast<unsigned int>(text.size()));
        copyText(text.data(), size, at);
        at += size;
    }
    void putBytes(const void* bytes, size_t size)
    {
        if (size > 0)
            std::memcpy(at, bytes, size);
        at += size;
    }

private:
    char* at;
    [[maybe_unused]] char* end;
};

} // namespace gqdb
