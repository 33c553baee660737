#include "byte2Val.h"

#include "byteCursor.h"
#include "samples.h"

#include <algorithm>
#include <climits>

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

// The size of a text as the length field and the results count it: 32 bits, signed.
static int writtenSize(int size)
{
    return static_cast<int>(static_cast<unsigned int>(size) + 2u);
}

static int writeText(const char* text, int size, QByteArray& data)
{
    CByte2Val::short2Byte(size, data); // keeps the low 16 bits; a longer text is written whole all the same
    if (size <= 0)                     // empty, or of 2 GiB and more, which counts as negative
        return 2;
    std::memcpy(grow(data, size), text, static_cast<size_t>(size));
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

// --- Lists --------------------------------------------------------------------------------------------------------

void CByte2Val::list2Byte(const std::vector<int>& list, QByteArray& data)
{
    const long long size = 4 + 4 * static_cast<long long>(list.size());
    reserveMore(data, size);
    CByteWriter out(data, size);
    out.put32(static_cast<unsigned int>(list.size()));
    for (const int value : list)
        out.putInt(value);
}

void CByte2Val::list2Byte(const std::vector<int>& list, char* buf)
{
    store32(static_cast<unsigned int>(list.size()), buf);
    ints2Buffer(list, buf + 4);
}

void CByte2Val::list2Byte(const std::vector<float>& list, char* buf)
{
    store32(static_cast<unsigned int>(list.size()), buf);
    floats2Buffer(list, buf + 4);
}

void CByte2Val::list2Byte(const std::vector<double>& list, char* buf)
{
    store32(static_cast<unsigned int>(list.size()), buf);
    for (const double value : list) {
        buf += 4; // not 8: each element deliberately overwrites half of the one before
        store64(doubleImage(value), buf);
    }
}

void CByte2Val::list2Byte(const std::vector<unsigned char>& list, QByteArray& data)
{
    CByteWriter out(data, 4 + static_cast<long long>(list.size()));
    out.put32(static_cast<unsigned int>(list.size()));
    out.putBytes(list.data(), list.size());
}

// Bytes that a list needs by its count. Wraps in 32 bits and is compared as signed, so that a large count can pass.
// `out` is resized for it all the same; holdsList then keeps the reader off the elements.
static int listNeed(const char* buf, unsigned int width)
{
    return static_cast<int>(4 + width * load32(buf));
}

// Whether the elements that a list counts lie inside its bytes indeed, in 64 bits.
static bool holdsList(const char* buf, int len, unsigned int width)
{
    return len >= 4 + static_cast<long long>(width) * load32(buf);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<int>& out)
{
    if (len < 4 || len < listNeed(buf, 4))
        return 0;
    const size_t first = out.size();
    out.resize(first + load32(buf));
    if (!holdsList(buf, len, 4))
        return 0;
    const char* at = buf + 4;
    for (size_t i = first; i < out.size(); ++i, at += 4)
        out[i] = static_cast<int>(load32(at));
    return listNeed(buf, 4);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<float>& out)
{
    if (len < 4 || len < listNeed(buf, 4))
        return 0;
    const size_t first = out.size();
    out.resize(first + load32(buf));
    if (!holdsList(buf, len, 4))
        return 0;
    const char* at = buf + 4;
    for (size_t i = first; i < out.size(); ++i, at += 4)
        out[i] = imageFloat(load32(at));
    return listNeed(buf, 4);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<double>& out)
{
    if (len < 4 || len < listNeed(buf, 4))
        return 0;
    const size_t first = out.size();
    out.resize(first + load32(buf));
    if (!holdsList(buf, len, 4))
        return 0;
    const char* at = buf + 4;
    for (size_t i = first; i < out.size(); ++i, at += 4)
        out[i] = static_cast<int>(load32(at)); // an integer, deliberately not what list2Byte wrote
    return listNeed(buf, 4);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<unsigned char>& out)
{
    if (len < 4 || len < listNeed(buf, 1))
        return 0;
    const size_t first = out.size();
    const size_t count = load32(buf);
    out.resize(first + count);
    if (!holdsList(buf, len, 1))
        return 0;
    if (count > 0)
        std::memcpy(out.data() + first, buf + 4, count);
    return listNeed(buf, 1);
}

// --- Buffers ------------------------------------------------------------------------------------------------------

// Bytes of so many elements, as the results count them.
static int bufferSize(int count, unsigned int width)
{
    return static_cast<int>(static_cast<unsigned int>(count) * width);
}

void CByte2Val::ushorts2Buffer(const std::vector<int>& values, char* buf)
{
    for (const int value : values) {
        store16(static_cast<unsigned int>(value), buf);
        buf += 2;
    }
}

void CByte2Val::ints2Buffer(const std::vector<int>& values, char* buf)
{
    for (const int value : values) {
        store32(static_cast<unsigned int>(value), buf);
        buf += 4;
    }
}

void CByte2Val::floats2Buffer(const std::vector<float>& values, char* buf)
{
    for (const float value : values) {
        store32(floatImage(value), buf);
        buf += 4;
    }
}

void CByte2Val::doubles2Buffer(const std::vector<double>& values, char* buf)
{
    for (const double value : values) {
        store64(doubleImage(value), buf);
        buf += 8;
    }
}

int CByte2Val::buffer2Ints(const char* buf, int count, std::vector<int>& out)
{
    out.resize(static_cast<size_t>(count));
    for (int& value : out) {
        value = static_cast<int>(load32(buf));
        buf += 4;
    }
    return bufferSize(count, 4);
}

int CByte2Val::buffer2UShorts(const char* buf, int count, std::vector<int>& out)
{
    out.resize(static_cast<size_t>(count));
    for (int& value : out) {
        value = static_cast<int>(load16(buf));
        buf += 2;
    }
    return bufferSize(count, 2);
}

int CByte2Val::buffer2Shorts(const char* buf, int count, std::vector<int>& out)
{
    out.resize(static_cast<size_t>(count));
    for (int& value : out) {
        value = static_cast<short>(load16(buf));
        buf += 2;
    }
    return bufferSize(count, 2);
}

int CByte2Val::buffer2Floats(const char* buf, int count, std::vector<float>& out)
{
    out.resize(static_cast<size_t>(count));
    for (float& value : out) {
        value = imageFloat(load32(buf));
        buf += 4;
    }
    return bufferSize(count, 4);
}

int CByte2Val::buffer2Doubles(const char* buf, int count, std::vector<double>& out)
{
    out.resize(static_cast<size_t>(count));
    for (double& value : out) {
        value = imageDouble(load64(buf));
        buf += 8;
    }
    return bufferSize(count, 8);
}

// --- Samples ------------------------------------------------------------------------------------------------------

void CByte2Val::calcLimit(const std::vector<float>& values, double& upper, double& lower)
{
    if (values.empty())
        return;
    float highest;
    float lowest;
    limitsOf(values.data(), values.size(), highest, lowest);
    upper = highest;
    lower = lowest;
}

void CByte2Val::float2Short(const std::vector<float>& values, float upper, float lower, std::vector<int>& out)
{
    if (values.empty())
        return;
    out.resize(values.size());
    quantise(values.data(), values.size(), upper, lower, out.data());
}

void CByte2Val::short2float(const std::vector<int>& raw, float upper, float lower, std::vector<float>& out)
{
    if (raw.empty())
        return;
    out.resize(raw.size());
    unquantise(raw.data(), raw.size(), upper, lower, out.data());
}

void CByte2Val::ad2float(const std::vector<int>& raw, double scale, double offset, std::vector<float>& out)
{
    if (raw.empty())
        return;
    out.resize(raw.size());
    for (size_t i = 0; i < raw.size(); ++i) {
        const float scaled = static_cast<float>(raw[i] * scale); // rounded here too: it decides the last bit
        out[i] = static_cast<float>(scaled + offset);
    }
}

// --- Telegrams ----------------------------------------------------------------------------------------------------

// The reflected CRC-16 of one byte, polynomial 0xA001: the low byte and, for shift 8, the high one.
struct CrcTable {
    unsigned char bytes[256];
};

static constexpr CrcTable crcTable(int shift)
{
    CrcTable table = {};
    for (unsigned int i = 0; i < 256; ++i) {
        unsigned int crc = i;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
        table.bytes[i] = static_cast<unsigned char>(crc >> shift);
    }
    return table;
}

// Named after what they go into, as is usual: the table called high holds the low bytes.
static constexpr CrcTable CrcHighTable = crcTable(0);
static constexpr CrcTable CrcLowTable = crcTable(8);

int CByte2Val::getCrc16(const char* buf, int len, unsigned char& first, unsigned char& second)
{
    if (len < 1)
        return 0;
    // In locals: through the references each byte would take twice the time. Each byte is mixed in one step ahead of
    // its turn, so that from one look into the tables to the next there is a single XOR.
    const auto byteAt = [buf, len](long long pos) { return pos < len ? load8(buf + pos) : 0; };
    unsigned int i = 0xFF ^ byteAt(0);
    unsigned int ahead = 0xFF ^ byteAt(1);
    for (long long pos = 2; pos <= len; ++pos) {
        const unsigned int high = CrcLowTable.bytes[i];
        i = ahead ^ CrcHighTable.bytes[i];
        ahead = high ^ byteAt(pos);
    }
    first = CrcLowTable.bytes[i];
    second = static_cast<unsigned char>(ahead ^ CrcHighTable.bytes[i]);
    return 1;
}

unsigned char CByte2Val::getCs(const char* buf, int len)
{
    unsigned int sum = 0;
    for (int i = 0; i < len; ++i)
        sum += load8(buf + i);
    return static_cast<unsigned char>(sum);
}

bool CByte2Val::isGramEqual(const QByteArray& a, const QByteArray& b)
{
    return a == b; // Qt counts a null array as an empty one
}

QString CByte2Val::buf2str(const char* buf, int len)
{
    QString text;
    if (len < 1)
        return text;
    text.resize(static_cast<int>(std::min(3LL * len - 1, static_cast<long long>(INT_MAX)))); // too long fails there
    QChar* at = text.data();
    for (int i = 0; i < len; ++i) {
        if (i > 0)
            *at++ = QLatin1Char(' ');
        *at++ = QLatin1Char("0123456789abcdef"[load8(buf + i) >> 4]);
        *at++ = QLatin1Char("0123456789abcdef"[load8(buf + i) & 15]);
    }
    return text;
}

QString CByte2Val::buf2str(const QByteArray& data)
{
    return buf2str(data.constData(), data.size());
}

} // namespace gqdb
