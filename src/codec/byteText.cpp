#include "byteText.h"

namespace gqdb {

long long textSize(const QString& text, QByteArray& utf8)
{
    utf8 = text.toUtf8();
    return 2 + static_cast<long long>(utf8.size());
}

char* putText(const QByteArray& utf8, char* to)
{
    const auto size = static_cast<size_t>(utf8.size());
    store16(static_cast<unsigned int>(size), to);
    std::memcpy(to + 2, utf8.constData(), size);
    return to + 2 + size;
}

static bool holdsString(const char* buf, int len)
{
    return len >= 2 && len >= 2 + static_cast<int>(load16(buf));
}

int appendString(const char* buf, int len, std::string& out)
{
    if (!holdsString(buf, len))
        return 0;
    const size_t size = load16(buf);
    out.reserve(size); // deliberately without the size of `out`
    out.append(buf + 2, size);
    return static_cast<int>(size) + 2;
}

int takeString(const char* buf, int len, QString& out)
{
    if (!holdsString(buf, len))
        return 0;
    const int size = static_cast<int>(load16(buf));
    // The text ends at the first zero byte, unlike a std::string; all bytes of the field are consumed.
    out = QString::fromUtf8(buf + 2, static_cast<int>(strnlen(buf + 2, static_cast<size_t>(size))));
    return size + 2;
}

} // namespace gqdb
