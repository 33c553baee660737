#pragma once

#include "byteSource.h"

// The bytes of a source from the current position on, read as they are needed. It also keeps the bytes before the
// position while the input is small, or always if `isAllKept`.
class ByteWindow {
public:
    static constexpr int smallInput = 1 << 20; // bytes

    explicit ByteWindow(ByteSource& bytes, bool isAllKept = false);

    // Returns true if `count` bytes follow the position. Reads as far as that needs.
    bool holds(long long count) { return count <= end - next || fill(count); }

    const char* at() const { return next; }
    long long offset() const { return start + (next - data.constData()); }
    void skip(long long count) { next += count; }

    // Number of bytes from the position on that have been read.
    int left() const { return static_cast<int>(end - next); }

    // Number of bytes of the input that have been read.
    long long size() const { return start + data.size(); }

    bool isEnded() const { return hasEnded; } // no more bytes will be read: see error()
    bool isLarge() const { return size() > smallInput; }

    // All bytes up to here, if the input is small or all are kept.
    const QByteArray& all() const { return data; }
    bool areAllKept() const { return keepsAll || !isLarge(); }

    // Why the input ended early; empty if it did not.
    QString error() const;

private:
    bool fill(long long count);

    ByteSource& source;
    bool keepsAll;
    QByteArray data;
    long long start = 0; // offset of the first byte of `data`
    const char* next;
    const char* end;
    bool hasEnded = false;
    bool isTooLarge = false;
};
