#pragma once

#include "gqLibExport.h"

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

namespace gqdb {

// Byte forms of single values, strings and sequences of values, and the checksums of telegrams: the root of all codecs.
//
// Every multi-byte value is little-endian, least significant byte first; floats and doubles travel as their IEEE 754
// image (NaN and infinity pass unchanged). Nothing here is ever in network order.
//
//   writers  append to a QByteArray target and never clear it; store to a char* target from its first byte on with no
//            bound check and without advancing the pointer, so the caller provides the room
//   readers  take the first byte of the value and check nothing: the caller has proved that the bytes are there
//
// All operations are static and keep no state: any thread may call them, on distinct targets.
class GQLIB_EXPORT CByte2Val {
public:
    CByte2Val();
    ~CByte2Val();

    // 2 bytes. Bits above 15 are dropped without a word. int and unsigned int give the same bytes.
    static void short2Byte(int value, QByteArray& data);
    static void short2Byte(unsigned int value, QByteArray& data);
    static void short2Byte(int value, char* buf);
    static void short2Byte(unsigned int value, char* buf);

    // 4 bytes.
    static void int2Byte(int value, QByteArray& data);
    static void int2Byte(unsigned int value, QByteArray& data);
    static void int2Byte(int value, char* buf);
    static void int2Byte(unsigned int value, char* buf);

    // 8 bytes. Signed values go through here as their bit pattern.
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
    // A std::string travels byte for byte, a QString as UTF-8 (zero bytes included). Result: bytes written, L + 2.
    // The longest string that reads back has 65535 bytes. Nothing refuses a longer one: the length field keeps the
    // low 16 bits, all bytes follow, and a reader loses step. Check the size first where it may happen.
    static int str2Byte(const std::string& text, QByteArray& data);
    static int str2Byte(const std::string& text, char* buf);
    static int str2Byte(const QString& text, QByteArray& data);
    static int str2Byte(const QString& text, char* buf);

    // Reads a string from the `len` bytes at `buf`. Result: bytes consumed, L + 2; or 0 if they hold no whole string,
    // with `out` untouched.
    //   std::string  the bytes are appended to what `out` holds; clear it first to get the field alone
    //   QString      `out` is replaced by the decoded text, which ends at the first zero byte of the field (the
    //                result is L + 2 all the same); malformed UTF-8 gives replacement characters
    static int byte2Str(const char* buf, int len, std::string& out);
    static int byte2Str(const char* buf, int len, QString& out);

    // --- Lists: a count (4 bytes), then the elements ---

    // 4 bytes an element for int and float, 1 for unsigned char. The char* forms want 4 + 4 * size bytes of room.
    static void list2Byte(const std::vector<int>& list, QByteArray& data);
    static void list2Byte(const std::vector<int>& list, char* buf);
    static void list2Byte(const std::vector<float>& list, char* buf);
    static void list2Byte(const std::vector<unsigned char>& list, QByteArray& data);

    // Stores 8 bytes an element but moves on by 4, so that each overwrites the upper half of the one before: 4 * size +
    // 8 bytes for a list that is not empty. byte2List does not read it back; for doubles that have to survive there are
    // doubles2Buffer and buffer2Doubles.
    static void list2Byte(const std::vector<double>& list, char* buf);

    // Append to `out`. Bytes consumed; or 0 if `len` bytes do not hold count and elements, with `out` untouched (a
    // count that wraps 32 bits is found out only behind the resize, with `out` at its new size). The double form reads
    // 4-byte integers and converts each.
    static int byte2List(const char* buf, int len, std::vector<int>& out);
    static int byte2List(const char* buf, int len, std::vector<float>& out);
    static int byte2List(const char* buf, int len, std::vector<double>& out);
    static int byte2List(const char* buf, int len, std::vector<unsigned char>& out);

    // --- Buffers: the elements alone ---

    // 2 bytes an element (the low 16 bits), 4, 4 and 8.
    static void ushorts2Buffer(const std::vector<int>& values, char* buf);
    static void ints2Buffer(const std::vector<int>& values, char* buf);
    static void floats2Buffer(const std::vector<float>& values, char* buf);
    static void doubles2Buffer(const std::vector<double>& values, char* buf);

    // Replace `out` by `count` elements: 4 bytes each, 2 (0 to 65535), 2 (-32768 to 32767), 4 and 8. Bytes read. A
    // negative count raises the vector's length failure.
    static int buffer2Ints(const char* buf, int count, std::vector<int>& out);
    static int buffer2UShorts(const char* buf, int count, std::vector<int>& out);
    static int buffer2Shorts(const char* buf, int count, std::vector<int>& out);
    static int buffer2Floats(const char* buf, int count, std::vector<float>& out);
    static int buffer2Doubles(const char* buf, int count, std::vector<double>& out);

    // --- Samples. With nothing given, nothing changes ---

    // Largest and smallest element. A NaN counts only in the first place, and then stays in both.
    static void calcLimit(const std::vector<float>& values, double& upper, double& lower);

    // The three that follow replace `out`; of an empty input it stays as it is.

    // Maps `lower` to `upper` onto 0 to 65535, in single precision, truncated towards zero, not clamped. What no int
    // holds, a NaN among it, gives -2147483648: every element does if the limits are equal.
    static void float2Short(const std::vector<float>& values, float upper, float lower, std::vector<int>& out);

    // Maps 0 to 65535 onto `lower` to `upper`: the quotient by 65535 in double precision, the rest in single.
    static void short2float(const std::vector<int>& raw, float upper, float lower, std::vector<float>& out);

    // raw * scale + offset in double precision, rounded to float behind each of the two.
    static void ad2float(const std::vector<int>& raw, double scale, double offset, std::vector<float>& out);

    // --- Telegrams of field devices. The checksum bytes of the library's own frames stay zero ---

    // CRC-16/MODBUS of the catalogue of parametrised CRC algorithms: polynomial 0x8005 reflected, start 0xFFFF, no
    // final XOR; "123456789" gives 0x4B37. `first` gets the high byte (0x4B), `second` the low one (0x37): a Modbus RTU
    // telegram carries `second` ahead of `first`. They are two variables, outside of `buf`. 1; or 0 if `len` is
    // below 1, with both untouched.
    static int getCrc16(const char* buf, int len, unsigned char& first, unsigned char& second);

    // The sum of the bytes modulo 256; 0 if `len` is below 1.
    static unsigned char getCs(const char* buf, int len);

    // Whether both have the same bytes, sequence numbers and all. A null array is an empty one.
    static bool isGramEqual(const QByteArray& a, const QByteArray& b);

    // Two lower-case hexadecimal digits a byte, a blank between two bytes: "68 00 ff". Empty if `len` is below 1.
    static QString buf2str(const char* buf, int len);
    static QString buf2str(const QByteArray& data);
};

} // namespace gqdb
