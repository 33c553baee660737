#include "byte2Val.h"

#include "byteOrder.h"
#include "byteRoom.h"
#include "listCount.h"
#include "samples.h"

namespace gqdb {

// --- Lists --------------------------------------------------------------------------------------------------------

void CByte2Val::list2Byte(const std::vector<int>& list, QByteArray& data)
{
    ints2Buffer(list, beginList(data, 4, list.size()));
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
    char* const at = growList(data, list.size(), static_cast<long long>(list.size()));
    if (!list.empty())
        std::memcpy(at, list.data(), list.size());
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<int>& out)
{
    if (len < 4 || len < wrappedNeed(load32(buf), 4))
        return 0;
    const size_t first = out.size();
    out.resize(fullSize(first, load32(buf)));
    if (!holdsItems(len, load32(buf), 4))
        return 0;
    const char* at = buf + 4;
    for (size_t i = first; i < out.size(); ++i, at += 4)
        out[i] = static_cast<int>(load32(at));
    return wrappedNeed(load32(buf), 4);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<float>& out)
{
    if (len < 4 || len < wrappedNeed(load32(buf), 4))
        return 0;
    const size_t first = out.size();
    out.resize(fullSize(first, load32(buf)));
    if (!holdsItems(len, load32(buf), 4))
        return 0;
    const char* at = buf + 4;
    for (size_t i = first; i < out.size(); ++i, at += 4)
        out[i] = imageFloat(load32(at));
    return wrappedNeed(load32(buf), 4);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<double>& out)
{
    if (len < 4 || len < wrappedNeed(load32(buf), 4))
        return 0;
    const size_t first = out.size();
    out.resize(fullSize(first, load32(buf)));
    if (!holdsItems(len, load32(buf), 4))
        return 0;
    const char* at = buf + 4;
    for (size_t i = first; i < out.size(); ++i, at += 4)
        out[i] = static_cast<int>(load32(at)); // an integer, deliberately not what list2Byte wrote
    return wrappedNeed(load32(buf), 4);
}

int CByte2Val::byte2List(const char* buf, int len, std::vector<unsigned char>& out)
{
    if (len < 4 || len < wrappedNeed(load32(buf), 1))
        return 0;
    const size_t first = out.size();
    const size_t count = load32(buf);
    out.resize(fullSize(first, load32(buf)));
    if (!holdsItems(len, load32(buf), 1))
        return 0;
    if (count > 0)
        std::memcpy(out.data() + first, buf + 4, count);
    return wrappedNeed(load32(buf), 1);
}

// --- Buffers ------------------------------------------------------------------------------------------------------

// Returns the number of bytes of `count` elements, wrapped at 32 bits like all results.
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
    scaleRaw(raw.data(), raw.size(), scale, offset, out.data());
}

} // namespace gqdb
