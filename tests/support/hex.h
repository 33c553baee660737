#pragma once

#include <QByteArray>

#include <string>
#include <vector>

// Bytes from hex digits: "68 04000000"_hex. Spaces are skipped.
inline QByteArray operator""_hex(const char* digits, size_t count)
{
    return QByteArray::fromHex(QByteArray(digits, int(count)));
}

// Bytes as hex with spaces, so that a failed comparison shows the byte.
inline std::string hex(const QByteArray& bytes)
{
    return bytes.toHex(' ').toStdString();
}

// The bytes in a heap block of exactly their size, so that AddressSanitizer detects a read past the end.
inline std::vector<char> heapBytes(const QByteArray& bytes)
{
    return {bytes.begin(), bytes.end()};
}
