#pragma once

#include "byteOrder.h"
#include "shortText.h"

#include <QByteArray>
#include <QString>

#include <string>

// The byte form of a string: 0 length L (2 bytes), 2 the L bytes. Internal.
namespace gqdb {

// Number of bytes of a text that are written. Its size is a signed 32-bit integer: of a text of 2 GiB or more it is
// negative, and no byte is written.
inline unsigned int writtenBytes(const std::string& text)
{
    const int size = static_cast<int>(text.size());
    return size > 0 ? static_cast<unsigned int>(size) : 0;
}

// Number of bytes of the whole form.
inline long long textSize(const std::string& text)
{
    return 2 + static_cast<long long>(writtenBytes(text));
}

// The same for a text that is written as UTF-8, which is stored in `utf8`.
long long textSize(const QString& text, QByteArray& utf8);

// Writes the form of a text in UTF-8. Returns the position after it.
char* putText(const QByteArray& utf8, char* to);

// Read a string from `len` bytes. Return the bytes consumed, L + 2; or 0 if it is incomplete, with `out` unchanged.
//   appendString  appends to `out`
//   takeString    does the same, faster for a short text that is read into an empty string; the form for a QString
//                 replaces `out` by the decoded UTF-8 up to its first zero byte
int appendString(const char* buf, int len, std::string& out);
int takeString(const char* buf, int len, QString& out);

inline int takeString(const char* buf, int len, std::string& out)
{
    if (len > 2 && takeShortText(buf + 2, load16(buf), static_cast<size_t>(len - 2), out))
        return static_cast<int>(load16(buf)) + 2;
    return appendString(buf, len, out);
}

} // namespace gqdb
