#pragma once

// Loads and stores of the one byte order on every wire: least significant byte first, whatever the machine.
// Internal: the exported scalar operations and the code behind them share these, so that no call crosses the export
// table. Nothing is checked; the caller has proved that the bytes are there.

#include <cstring>

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

inline void store16(unsigned int value, char* buf)
{
    buf[0] = static_cast<char>(value);
    buf[1] = static_cast<char>(value >> 8);
}

inline void store32(unsigned int value, char* buf)
{
    store16(value, buf);
    store16(value >> 16, buf + 2);
}

inline void store64(unsigned long long value, char* buf)
{
    store32(static_cast<unsigned int>(value), buf);
    store32(static_cast<unsigned int>(value >> 32), buf + 4);
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

} // namespace gqdb
