#pragma once

#include <QtEndian>

#include <cstring>

// Integers and floats as bytes, least significant byte first on every machine. Internal: the codecs call these inline
// functions instead of the exported operations of CByte2Val. Nothing is checked: the caller has made sure that the
// bytes are there.
namespace gqdb {

inline unsigned int load8(const char* buf)
{
    return static_cast<unsigned char>(*buf);
}

// Through Qt, because clang 14 does not vectorise loops that combine bytes by shifts: waves take 1.5 times as long to
// unpack.
inline unsigned int load16(const char* buf)
{
    return qFromLittleEndian<quint16>(buf);
}

inline unsigned int load32(const char* buf)
{
    return load16(buf) | load16(buf + 2) << 16;
}

inline unsigned long long load64(const char* buf)
{
    return load32(buf) | static_cast<unsigned long long>(load32(buf + 4)) << 32;
}

// Through Qt, because g++ 12 compiles written-out shifts to stores of single bytes.
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

// A float or double is stored as its IEEE 754 image, an integer of the same width.
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
