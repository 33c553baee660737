#pragma once

#include "gqLibExport.h"

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

namespace gqdb {

// Conversion of single values, strings and sequences of values to and from bytes, and checksums of telegrams. The base
// of all codecs.
//
// Every value of several bytes is little-endian; floats and doubles are stored as their IEEE 754 image (NaN and
// infinity are unchanged).
//
//   writers  append to a QByteArray and never clear it; store to a char* from its first byte on, without a bound check
//            and without advancing the pointer: the caller provides the room
//   readers  take the first byte of the value and check nothing: the caller has made sure that the bytes are there
//
// A failed allocation is passed on to the caller. An array that was written to then keeps its previous bytes, possibly
// followed by bytes to discard; what was to be read into is unchanged.
//
// All operations are static and stateless: any thread may call them on distinct targets.
class GQLIB_EXPORT CByte2Val {
public:
    CByte2Val();
    ~CByte2Val();

    // 2 bytes. Bits above 15 are dropped silently. int and unsigned int give the same bytes.
    static void short2Byte(int value, QByteArray& data);
    static void short2Byte(unsigned int value, QByteArray& data);
    static void short2Byte(int value, char* buf);
    static void short2Byte(unsigned int value, char* buf);

    // 4 bytes.
    static void int2Byte(int value, QByteArray& data);
    static void int2Byte(unsigned int value, QByteArray& data);
    static void int2Byte(int value, char* buf);
    static void int2Byte(unsigned int value, char* buf);

    // 8 bytes. Pass a signed value as its bit pattern.
    static void long2Byte(unsigned long long value, QByteArray& data);

    // 4 bytes, the binary32 image.
    static void float2Byte(float value, QByteArray& data);
    static void float2Byte(float value, char* buf);

    // 8 bytes, the binary64 image.
    static void double2Byte(double value, QByteArray& data);
    static void double2Byte(double value, char* buf);

    // From 2 bytes: -32768 to 32767, and 0 to 65535.
    static int byte2Short(const char* buf);
    static int byte2UShort(const char* buf);

    // From 4 bytes.
    static int byte2Int(const char* buf);
    static unsigned int byte2UInt(const char* buf);
    static float byte2Float(const char* buf);

    // From 8 bytes.
    static long long byte2Long(const char* buf);
    static unsigned long long byte2ULong(const char* buf);
    static double byte2Double(const char* buf);
    static void byte2Double(const char* buf, double& value);

    // String: 0 length L in bytes (2 bytes, unsigned), 2 the L bytes. No terminator; an empty string is 00 00.
    // A std::string is written byte for byte, a QString as UTF-8 (zero bytes included). The longest string that reads
    // back has 65535 bytes. A longer one is not refused: the length keeps the low 16 bits, all bytes follow, and a
    // reader takes the rest for the next value. Check the size first if that can happen.
    // Returns the bytes written, L + 2.
    static int str2Byte(const std::string& text, QByteArray& data);
    static int str2Byte(const std::string& text, char* buf);
    static int str2Byte(const QString& text, QByteArray& data);
    static int str2Byte(const QString& text, char* buf);

    // Reads a string from the `len` bytes at `buf`. Returns the bytes consumed, L + 2; or 0 if the string is
    // incomplete, with `out` unchanged.
    //   std::string  the bytes are appended to `out`; clear it first to get the string alone
    //   QString      `out` is replaced by the decoded text, which ends at the first zero byte of the string (the
    //                result is L + 2 nevertheless); malformed UTF-8 gives replacement characters
    static int byte2Str(const char* buf, int len, std::string& out);
    static int byte2Str(const char* buf, int len, QString& out);

    // --- Lists: a count (4 bytes), then the elements ---

    // 4 bytes per element for int and float, 1 for unsigned char. The char* forms need room for 4 + 4 * size bytes.
    static void list2Byte(const std::vector<int>& list, QByteArray& data);
    static void list2Byte(const std::vector<int>& list, char* buf);
    static void list2Byte(const std::vector<float>& list, char* buf);
    static void list2Byte(const std::vector<unsigned char>& list, QByteArray& data);

    // Stores 8 bytes per element but advances by 4, so that each overwrites the upper half of the one before: a list
    // that is not empty takes 4 * size + 8 bytes. byte2List does not read it back; for doubles, use doubles2Buffer
    // and buffer2Doubles.
    static void list2Byte(const std::vector<double>& list, char* buf);

    // Append to `out`. The double form reads 4-byte integers and converts each. Return
    //   the bytes consumed
    //   0  count and elements need more than `len` bytes: `out` unchanged
    //   0  the need overflows 32 bits and so passes that test, but the elements do not fit: `out` at its new size,
    //      nothing read
    static int byte2List(const char* buf, int len, std::vector<int>& out);
    static int byte2List(const char* buf, int len, std::vector<float>& out);
    static int byte2List(const char* buf, int len, std::vector<double>& out);
    static int byte2List(const char* buf, int len, std::vector<unsigned char>& out);

    // --- Buffers: the elements alone ---

    // 2 bytes per element (the low 16 bits), 4, 4 and 8.
    static void ushorts2Buffer(const std::vector<int>& values, char* buf);
    static void ints2Buffer(const std::vector<int>& values, char* buf);
    static void floats2Buffer(const std::vector<float>& values, char* buf);
    static void doubles2Buffer(const std::vector<double>& values, char* buf);

    // Replace `out` by `count` elements: 4 bytes each, 2 (0 to 65535), 2 (-32768 to 32767), 4 and 8. Return the bytes
    // read. A negative count makes the vector raise std::length_error.
    static int buffer2Ints(const char* buf, int count, std::vector<int>& out);
    static int buffer2UShorts(const char* buf, int count, std::vector<int>& out);
    static int buffer2Shorts(const char* buf, int count, std::vector<int>& out);
    static int buffer2Floats(const char* buf, int count, std::vector<float>& out);
    static int buffer2Doubles(const char* buf, int count, std::vector<double>& out);

    // --- Samples. An empty input changes nothing ---

    // Stores the largest and the smallest element. A NaN is ignored, except as the first element: then both are NaN.
    static void calcLimit(const std::vector<float>& values, double& upper, double& lower);

    // The following three replace `out`.

    // Maps `lower` to 0 and `upper` to 65535, in single precision, truncated towards zero, not clamped. A result
    // outside the range of int, or NaN, becomes -2147483648; if the limits are equal, every element does.
    static void float2Short(const std::vector<float>& values, float upper, float lower, std::vector<int>& out);

    // Maps 0 to `lower` and 65535 to `upper`: divides by 65535 in double precision, the rest is in single.
    static void short2float(const std::vector<int>& raw, float upper, float lower, std::vector<float>& out);

    // raw * scale + offset in double precision, rounded to float after each of the two.
    static void ad2float(const std::vector<int>& raw, double scale, double offset, std::vector<float>& out);

    // --- Telegrams of field devices. The checksum bytes of the library's own frames stay zero ---

    // CRC-16/MODBUS in the catalogue of parametrised CRC algorithms: polynomial 0x8005 reflected, start 0xFFFF, no
    // final XOR; "123456789" gives 0x4B37. `first` becomes the high byte (0x4B), `second` the low one (0x37): a Modbus
    // RTU telegram ends in `second`, then `first`. Both must be variables outside of `buf`. Returns 1; or 0 if `len` is
    // below 1, with both unchanged.
    static int getCrc16(const char* buf, int len, unsigned char& first, unsigned char& second);

    // Returns the sum of the bytes modulo 256; 0 if `len` is below 1.
    static unsigned char getCs(const char* buf, int len);

    // Returns true if both have the same bytes, sequence numbers included. A null array is an empty one.
    static bool isGramEqual(const QByteArray& a, const QByteArray& b);

    // Returns two lower-case hexadecimal digits per byte, separated by blanks: "68 00 ff". Empty if `len` is below 1.
    static QString buf2str(const char* buf, int len);
    static QString buf2str(const QByteArray& data);
};

} // namespace gqdb
