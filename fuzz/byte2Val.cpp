#include "byte2Val.h"
#include "target.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace gqdb;

// Readers that check nothing have one target per family, which aborts on an error and returns 0.
static void checkNothing(const Layout&, const Reading& reading)
{
    requireResult(reading, 0);
}

// --- Single values -----------------------------------------------------------------

static void readScalars(Reading& reading)
{
    const char* at = reading.buf;
    if (reading.size < 8)
        return;
    char written[8 + 8 + 4 + 4 + 2 + 2];
    QByteArray words;
    CByte2Val::long2Byte(static_cast<unsigned long long>(CByte2Val::byte2Long(at)), words);
    CByte2Val::long2Byte(CByte2Val::byte2ULong(at), words);
    double value;
    CByte2Val::byte2Double(at, value);
    CByte2Val::double2Byte(value, written);
    CByte2Val::double2Byte(CByte2Val::byte2Double(at), written + 8);
    require(words == QByteArray(at, 8) + QByteArray(at, 8), "a long must be the same when written again");
    require(std::memcmp(written, at, 8) == 0 && std::memcmp(written + 8, at, 8) == 0,
            "a double must be the same when written again");

    CByte2Val::float2Byte(CByte2Val::byte2Float(at), written);
    CByte2Val::int2Byte(CByte2Val::byte2Int(at), written + 4);
    CByte2Val::int2Byte(CByte2Val::byte2UInt(at), written + 8);
    CByte2Val::short2Byte(CByte2Val::byte2Short(at), written + 12);
    CByte2Val::short2Byte(CByte2Val::byte2UShort(at), written + 14);
    require(std::memcmp(written, at, 4) == 0, "a float must be the same when written again");
    require(std::memcmp(written + 4, at, 4) == 0 && std::memcmp(written + 8, at, 4) == 0,
            "an int must be the same when written again");
    require(std::memcmp(written + 12, at, 2) == 0 && std::memcmp(written + 14, at, 2) == 0,
            "a short must be the same when written again");
    require(CByte2Val::byte2UShort(at) == static_cast<int>(numberOf2(at)),
            "an unsigned short must be that of the bytes");
    require(CByte2Val::byte2UInt(at) == numberOf4(at), "an unsigned int must be that of the bytes");
}

// --- Strings ----------------------------------------------------------------------

static void checkString(const Layout& layout, const Reading& reading)
{
    requireResult(reading, recordSize(layout, reading.buf, reading.size));
    if (reading.result > 0)
        requireWrittenAgain(reading, reading.result);
    else
        require(reading.written == QByteArray(2, '\0'), "a failed reader must not touch the text");
}

static void readString(Reading& reading)
{
    std::string out;
    reading.result = CByte2Val::byte2Str(reading.buf, reading.size, out);
    CByte2Val::str2Byte(out, reading.written);
}

static void readQString(Reading& reading)
{
    QString out = "before";
    reading.result = CByte2Val::byte2Str(reading.buf, reading.size, out);
    reading.written = out.toUtf8();
}

static void checkQString(const Layout& layout, const Reading& reading)
{
    requireResult(reading, recordSize(layout, reading.buf, reading.size));
    if (reading.result == 0)
        return require(reading.written == "before", "a failed reader must not touch the text");
    const QByteArray field(reading.buf + 2, reading.result - 2);
    require(reading.written == QString::fromUtf8(field.constData()).toUtf8(), "the text must be that of the field");
}

// --- Lists ------------------------------------------------------------------------

static void checkList(const Layout& layout, const Reading& reading)
{
    if (reading.result == tooMuch)
        return require(countsTooMuch(layout, reading), "a count that fits must not fail to allocate");
    requireResult(reading, listSize(layout, reading.buf, reading.size));
    if (reading.result > 0)
        requireWrittenAgain(reading, reading.result);
    else
        require(reading.written == QByteArray(4, '\0'), "a failed reader must not touch the list");
}

static void readInts(Reading& reading)
{
    std::vector<int> list(setElementsBefore(reading));
    reading.result = CByte2Val::byte2List(reading.buf, reading.size, list);
    CByte2Val::list2Byte(list, reading.written);
}

static void readFloats(Reading& reading)
{
    std::vector<float> list(setElementsBefore(reading));
    reading.result = CByte2Val::byte2List(reading.buf, reading.size, list);
    reading.written.resize(4 + 4 * static_cast<int>(list.size()));
    CByte2Val::list2Byte(list, reading.written.data());
}

static void readDoubles(Reading& reading)
{
    std::vector<double> list(setElementsBefore(reading));
    reading.result = CByte2Val::byte2List(reading.buf, reading.size, list);
    const std::vector<int> integers(list.begin(), list.end()); // which the list is read from
    CByte2Val::list2Byte(integers, reading.written);
}

static void readBytes(Reading& reading)
{
    std::vector<unsigned char> list(setElementsBefore(reading));
    reading.result = CByte2Val::byte2List(reading.buf, reading.size, list);
    CByte2Val::list2Byte(list, reading.written);
}

// --- Buffers ----------------------------------------------------------------------

static void requireBuffer(int result, size_t count, int width, const QByteArray& written, const Reading& reading)
{
    const int used = reading.size / width * width;
    require(result == used && count == static_cast<size_t>(used / width), "a buffer must be read whole");
    require(std::memcmp(written.constData(), reading.buf, static_cast<size_t>(used)) == 0,
            "a buffer must be the same when written again");
}

static void readBuffers(Reading& reading)
{
    QByteArray written(reading.size, '\0');
    std::vector<int> ints;
    int result = CByte2Val::buffer2Ints(reading.buf, reading.size / 4, ints);
    CByte2Val::ints2Buffer(ints, written.data());
    requireBuffer(result, ints.size(), 4, written, reading);
    result = CByte2Val::buffer2UShorts(reading.buf, reading.size / 2, ints);
    CByte2Val::ushorts2Buffer(ints, written.data());
    requireBuffer(result, ints.size(), 2, written, reading);
    result = CByte2Val::buffer2Shorts(reading.buf, reading.size / 2, ints);
    CByte2Val::ushorts2Buffer(ints, written.data());
    requireBuffer(result, ints.size(), 2, written, reading);
    std::vector<float> floats;
    result = CByte2Val::buffer2Floats(reading.buf, reading.size / 4, floats);
    CByte2Val::floats2Buffer(floats, written.data());
    requireBuffer(result, floats.size(), 4, written, reading);
    std::vector<double> doubles;
    result = CByte2Val::buffer2Doubles(reading.buf, reading.size / 8, doubles);
    CByte2Val::doubles2Buffer(doubles, written.data());
    requireBuffer(result, doubles.size(), 8, written, reading);
}

// --- Samples: the bytes are floats -------------------------------------------------

static void readSamples(Reading& reading)
{
    std::vector<float> values;
    CByte2Val::buffer2Floats(reading.buf, reading.size / 4, values);
    if (values.empty())
        return;
    double upper = 0;
    double lower = 0;
    CByte2Val::calcLimit(values, upper, lower);
    if (std::isnan(values[0]))
        require(std::isnan(upper) && std::isnan(lower), "a NaN in the first place must be the limit");
    else
        require(
            std::none_of(values.begin(), values.end(), [=](float value) { return value > upper || value < lower; }) &&
                std::count(values.begin(), values.end(), static_cast<float>(upper)) > 0 &&
                std::count(values.begin(), values.end(), static_cast<float>(lower)) > 0,
            "the limits must be those of the samples");

    std::vector<int> raw;
    CByte2Val::float2Short(values, static_cast<float>(upper), static_cast<float>(lower), raw);
    require(raw.size() == values.size(), "all samples must be quantised");
    const float range = static_cast<float>(upper) - static_cast<float>(lower);
    for (size_t i = 0; i < raw.size() && std::isfinite(range) && range > 0; ++i)
        require(std::isnan(values[i]) ? raw[i] == -2147483647 - 1 : raw[i] >= 0 && raw[i] <= 65535,
                "a sample between the limits must become a step from 0 to 65535");

    std::vector<float> back;
    CByte2Val::short2float(raw, static_cast<float>(upper), static_cast<float>(lower), back);
    require(back.size() == raw.size(), "all steps must become samples");
    CByte2Val::ad2float(raw, upper, lower, back);
    require(back.size() == raw.size(), "all raw values must become samples");
    for (const float value : back)
        CByte2Val::float2Byte(value, reading.written);
}

// --- Telegrams --------------------------------------------------------------------

static unsigned int crcByBits(const char* buf, int size)
{
    unsigned int crc = 0xFFFF;
    for (int i = 0; i < size; ++i) {
        crc ^= static_cast<unsigned char>(buf[i]);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    }
    return crc;
}

static void readTelegrams(Reading& reading)
{
    unsigned char high = 0xFF;
    unsigned char low = 0xFF;
    const int result = CByte2Val::getCrc16(reading.buf, reading.size, high, low);
    require(result == (reading.size > 0 ? 1 : 0), "getCrc16 must return 1, or 0 without bytes");
    require(high * 256u + low == crcByBits(reading.buf, reading.size), "the CRC must be that of the bytes");
    unsigned int sum = 0;
    for (int i = 0; i < reading.size; ++i)
        sum += static_cast<unsigned char>(reading.buf[i]);
    require(CByte2Val::getCs(reading.buf, reading.size) == sum % 256, "the sum must be that of the bytes");

    const QByteArray telegram(reading.buf, reading.size);
    const QByteArray digits = telegram.toHex(' ');
    require(CByte2Val::buf2str(reading.buf, reading.size) == digits && CByte2Val::buf2str(telegram) == digits,
            "the text must have the digits of the bytes");
    require(CByte2Val::isGramEqual(telegram, QByteArray(reading.buf, reading.size)),
            "a telegram must be equal to itself");
    require(!CByte2Val::isGramEqual(telegram, telegram + '\0'), "a telegram must not be equal to a longer one");
}

const std::vector<Target> byte2ValTargets = {
    {"byte2Scalars", readScalars, checkNothing, {}},
    {"byte2Str", readString, checkString, {{textField}}},
    {"byte2StrOfQt", readQString, checkQString, {{textField}}},
    {"byte2ListOfInts", readInts, checkList, {{4}}},
    {"byte2ListOfFloats", readFloats, checkList, {{4}}},
    {"byte2ListOfDoubles", readDoubles, checkList, {{4}}},
    {"byte2ListOfBytes", readBytes, checkList, {{1}}},
    {"buffers", readBuffers, checkNothing, {}},
    {"samples", readSamples, checkNothing, {}},
    {"telegrams", readTelegrams, checkNothing, {}},
};
