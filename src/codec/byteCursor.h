#pragma once

// The one byte order on every wire: least significant byte first, whatever the machine.
// Internal: the exported scalar operations and the code behind them share these, so that no call crosses the export
// table. Nothing is checked; the caller has proved that the bytes are there.

#include <QByteArray>
#include <QString>
#include <QtEndian>

#include <cassert>
#include <cstring>
#include <new>
#include <string>

namespace gqdb {

inline unsigned int load8(const char* buf)
{
    return static_cast<unsigned char>(*buf);
}

inline unsigned int load16(const char* buf)
{
    return load8(buf) | load8(buf + 1) << 8;
}

inline unsigned int load32(const char* buf)
{
    return load16(buf) | load16(buf + 2) << 16;
}

inline unsigned long long load64(const char* buf)
{
    return load32(buf) | static_cast<unsigned long long>(load32(buf + 4)) << 32;
}

// Through Qt, as g++ 12 makes single bytes of stores that are written with shifts.
inline void store16(unsigned int value, char* buf)
{
    qToLittleEndian(static_cast<quint16>(value), buf);
}

inline void store32(unsigned int value, char* buf)
{
    qToLittleEndian(value, buf);
}

inline void store64(unsigned long long value, char* buf)
{
    qToLittleEndian(value, buf);
}

// The IEEE 754 image of a float or double travels as an integer of the same width.
inline unsigned int floatImage(float value)
{
    unsigned int image;
    std::memcpy(&image, &value, sizeof image);
    return image;
}

inline float imageFloat(unsigned int image)
{
    float value;
    std::memcpy(&value, &image, sizeof value);
    return value;
}

inline unsigned long long doubleImage(double value)
{
    unsigned long long image;
    std::memcpy(&image, &value, sizeof image);
    return image;
}

inline double imageDouble(unsigned long long image)
{
    double value;
    std::memcpy(&value, &image, sizeof value);
    return value;
}

// --- Cursors ------------------------------------------------------------------------------------------------------

// Whether `len` bytes hold a whole string of the byte form: 0 length L (2 bytes), 2 the L bytes.
inline bool holdsString(const char* buf, int len)
{
    return len >= 2 && len >= 2 + static_cast<int>(load16(buf));
}

// Copies a text. Most are short, and go without a call: in two pieces that overlap.
inline void copyText(const char* text, size_t size, char* to)
{
    if (size > 16) {
        std::memcpy(to, text, size);
    } else if (size >= 8) {
        unsigned long long first;
        unsigned long long last;
        std::memcpy(&first, text, 8);
        std::memcpy(&last, text + size - 8, 8);
        std::memcpy(to, &first, 8);
        std::memcpy(to + size - 8, &last, 8);
    } else if (size >= 4) {
        unsigned int first;
        unsigned int last;
        std::memcpy(&first, text, 4);
        std::memcpy(&last, text + size - 4, 4);
        std::memcpy(to, &first, 4);
        std::memcpy(to + size - 4, &last, 4);
    } else {
        for (size_t i = 0; i < size; ++i)
            to[i] = text[i];
    }
}

// The bytes of a text that are written: its size counts in 32 bits, signed, so that one of 2 GiB loses them all.
inline unsigned int writtenBytes(const std::string& text)
{
    const int size = static_cast<int>(text.size());
    return size > 0 ? static_cast<unsigned int>(size) : 0;
}

// Appends such a string to `out`. Bytes consumed; or 0 if it is not whole, with `out` untouched.
int appendString(const char* buf, int len, std::string& out);

// The same, quick where a short text meets a fresh string and has bytes behind it: the string is built of as many bytes
// as it holds without an allocation, a copy of fixed size, and cut. erase() cuts without a call, resize() does not.
inline int takeString(const char* buf, int len, std::string& out)
{
    const size_t room = std::string().capacity();
    if (len < 2 + static_cast<int>(room) || load16(buf) > room || !out.empty() || out.capacity() != room)
        return appendString(buf, len, out);
    const size_t size = load16(buf);
    out.~basic_string();
    new (&out) std::string(buf + 2, room);
    out.erase(size);
    return static_cast<int>(size) + 2;
}

// Puts the decoded UTF-8 of such a string into `out`, up to its first zero byte. Results as above.
int takeString(const char* buf, int len, QString& out);

// Reads fields one behind the other. Only takeText and skip look at the end: the caller tests left() ahead of the rest.
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

// Reserves room for `more` bytes behind those that stand in the array. Where so much does not fit an array at all, the
// reservation is left out: it is an estimate, and what is written may well fit.
void reserveMore(QByteArray& data, long long more);

// Grows `data` by `count` bytes at once and returns the first of them. More than an array holds fails in the array.
char* grow(QByteArray& data, long long count);

// The head of every list: the low 32 bits of its size.
inline void putCount(size_t count, QByteArray& data)
{
    store32(static_cast<unsigned int>(count), grow(data, 4));
}

// Reserves the bytes of a list, grows by them and writes the count. Returns the first byte of the items.
char* beginList(QByteArray& data, int itemSize, size_t count);

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
