#include "byte2Val.h"

#include "byteRoom.h"
#include "byteText.h"

namespace gqdb {

CByte2Val::CByte2Val() = default;

CByte2Val::~CByte2Val() = default;

// --- Scalars to bytes ---------------------------------------------------------------------------------------------

void CByte2Val::short2Byte(int value, QByteArray& data)
{
    store16(static_cast<unsigned int>(value), grow(data, 2));
}

void CByte2Val::short2Byte(unsigned int value, QByteArray& data)
{
    store16(value, grow(data, 2));
}

void CByte2Val::short2Byte(int value, char* buf)
{
    store16(static_cast<unsigned int>(value), buf);
}

void CByte2Val::short2Byte(unsigned int value, char* buf)
{
    store16(value, buf);
}

void CByte2Val::int2Byte(int value, QByteArray& data)
{
    store32(static_cast<unsigned int>(value), grow(data, 4));
}

void CByte2Val::int2Byte(unsigned int value, QByteArray& data)
{
    store32(value, grow(data, 4));
}

void CByte2Val::int2Byte(int value, char* buf)
{
    store32(static_cast<unsigned int>(value), buf);
}

void CByte2Val::int2Byte(unsigned int value, char* buf)
{
    store32(value, buf);
}

void CByte2Val::long2Byte(unsigned long long value, QByteArray& data)
{
    store64(value, grow(data, 8));
}

void CByte2Val::float2Byte(float value, QByteArray& data)
{
    store32(floatImage(value), grow(data, 4));
}

void CByte2Val::float2Byte(float value, char* buf)
{
    store32(floatImage(value), buf);
}

void CByte2Val::double2Byte(double value, QByteArray& data)
{
    store64(doubleImage(value), grow(data, 8));
}

void CByte2Val::double2Byte(double value, char* buf)
{
    store64(doubleImage(value), buf);
}

// --- Bytes to scalars ---------------------------------------------------------------------------------------------

int CByte2Val::byte2Short(const char* buf)
{
    return static_cast<short>(load16(buf));
}

int CByte2Val::byte2UShort(const char* buf)
{
    return static_cast<int>(load16(buf));
}

int CByte2Val::byte2Int(const char* buf)
{
    return static_cast<int>(load32(buf));
}

unsigned int CByte2Val::byte2UInt(const char* buf)
{
    return load32(buf);
}

float CByte2Val::byte2Float(const char* buf)
{
    return imageFloat(load32(buf));
}

long long CByte2Val::byte2Long(const char* buf)
{
    return static_cast<long long>(load64(buf));
}

unsigned long long CByte2Val::byte2ULong(const char* buf)
{
    return load64(buf);
}

double CByte2Val::byte2Double(const char* buf)
{
    return imageDouble(load64(buf));
}

void CByte2Val::byte2Double(const char* buf, double& value)
{
    value = imageDouble(load64(buf));
}

// --- Strings ------------------------------------------------------------------------------------------------------

// Returns the number of bytes written for a text of `size` bytes, wrapped at 32 bits like all results.
static int writtenSize(int size)
{
    return static_cast<int>(static_cast<unsigned int>(size) + 2u);
}

static int writeText(const char* text, int size, QByteArray& data)
{
    store16(static_cast<unsigned int>(size), grow(data, 2)); // the low 16 bits; a longer text is written whole
    if (size <= 0)                                           // empty, or 2 GiB and more, which is negative
        return 2;
    copyText(text, static_cast<size_t>(size), grow(data, size)); // if it fails, the length stays in `data`
    return writtenSize(size);
}

static int writeText(const char* text, int size, char* buf)
{
    CByte2Val::short2Byte(size, buf);
    if (size > 0)
        std::memcpy(buf + 2, text, static_cast<size_t>(size));
    return writtenSize(size);
}

int CByte2Val::str2Byte(const std::string& text, QByteArray& data)
{
    return writeText(text.data(), static_cast<int>(text.size()), data);
}

int CByte2Val::str2Byte(const std::string& text, char* buf)
{
    return writeText(text.data(), static_cast<int>(text.size()), buf);
}

int CByte2Val::str2Byte(const QString& text, QByteArray& data)
{
    const QByteArray utf8 = text.toUtf8();
    return writeText(utf8.constData(), utf8.size(), data);
}

int CByte2Val::str2Byte(const QString& text, char* buf)
{
    const QByteArray utf8 = text.toUtf8();
    return writeText(utf8.constData(), utf8.size(), buf);
}

int CByte2Val::byte2Str(const char* buf, int len, std::string& out)
{
    return takeString(buf, len, out);
}

int CByte2Val::byte2Str(const char* buf, int len, QString& out)
{
    return takeString(buf, len, out);
}

} // namespace gqdb
