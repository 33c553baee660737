#pragma once

#include "gqLibExport.h"

#include <QByteArray>
#include <QString>

#include <string>

namespace gqdb {

// Byte forms of single values and strings, the root of all codecs.
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
};

} // namespace gqdb
