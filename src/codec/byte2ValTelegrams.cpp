#include "byte2Val.h"

#include "byteOrder.h"

#include <algorithm>
#include <climits>

namespace gqdb {

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

// Named after the byte of the CRC that each entry is combined with: the table called high holds the low bytes.
static constexpr CrcTable CrcHighTable = crcTable(0);
static constexpr CrcTable CrcLowTable = crcTable(8);

int CByte2Val::getCrc16(const char* buf, int len, unsigned char& first, unsigned char& second)
{
    if (len < 1)
        return 0;
    // Local variables take half the time of the output references. Each byte is mixed in one step early, so that only
    // one XOR lies between two table accesses.
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
    const long long size = 3LL * len - 1;
    if (size > INT_MAX)
        qBadAlloc(); // with Qt 6 too, whose texts can be longer
    text.resize(static_cast<int>(size));
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
    return buf2str(data.constData(), static_cast<int>(data.size()));
}

} // namespace gqdb
