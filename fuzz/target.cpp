#include "target.h"

#include "support/allocationLimit.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

static const char* runningTarget = "";

std::vector<Target> allTargets()
{
    std::vector<Target> all;
    for (const std::vector<Target>& family :
         {byte2ValTargets, byte2RdbDefinitionTargets, byte2RdbValueTargets, byte2RdbQueryTargets, byte2RdbObjectTargets,
          byte2RdbWaveTargets, byte2FepTargets, frameTargets, gqToolsTargets, hexReaderTargets, commandMapTargets,
          decodeTargets, documentEncoderTargets, packetPayloadTargets, peerTargets, stationFileTargets})
        all.insert(all.end(), family.begin(), family.end());
    return all;
}

// --- Requirements ----------------------------------------------------------------------

void fail(const std::string& message)
{
    std::fprintf(stderr, "%s: %s\n", runningTarget, message.c_str());
    std::abort();
}

void require(bool isMet, const char* requirement)
{
    if (!isMet)
        fail(requirement);
}

void requireResult(const Reading& reading, int expected)
{
    if (reading.result != expected)
        fail("the result is " + std::to_string(reading.result) + ", must be " + std::to_string(expected));
}

void requireWrittenAgain(const Reading& reading, long long count)
{
    if (reading.written != QByteArray::fromRawData(reading.buf, static_cast<int>(count)))
        fail("written again it is " + reading.written.toHex(' ').toStdString());
}

bool countsTooMuch(const Layout& layout, const Reading& reading)
{
    return reading.size >= 4 &&
           reading.size < 4 + static_cast<long long>(shortestSize(layout)) * numberOf4(reading.buf);
}

size_t mostElements(const Layout& layout, const Reading& reading)
{
    return reading.elementsBefore + static_cast<size_t>(reading.size / shortestSize(layout)) + 1;
}

// --- One input --------------------------------------------------------------------

// Returns the most that a reader may allocate at once. A record takes at most 12 times its bytes in memory, and a
// vector may reserve twice what it holds.
static size_t memoryFor(const Reading& reading)
{
    return 4096 + 24 * static_cast<size_t>(reading.size);
}

size_t setElementsBefore(Reading& reading)
{
    reading.elementsBefore = reading.hasNeighbours ? 3 : 0;
    return reading.elementsBefore;
}

static void read(const Target& target, Reading& reading)
{
    const size_t usual = allocationLimit;
    allocationLimit = memoryFor(reading);
    try {
        target.read(reading);
    } catch (const std::bad_alloc&) {
        reading.result = tooMuch;
    } catch (const std::length_error&) {
        reading.result = tooMuch;
    }
    allocationLimit = usual;
}

// What follows the elements that the list had before.
static QByteArray withoutElementsBefore(const Target& target, const Reading& reading)
{
    return reading.elementsBefore == 0
               ? reading.written
               : reading.written.mid(4 + static_cast<int>(reading.elementsBefore) * shortestSize(target.layout));
}

Target toolTarget(const char* name, void (*read)(Reading& reading))
{
    return {name, read, nullptr, {}, true};
}

void runTarget(const Target& target, const char* data, int size)
{
    runningTarget = target.name;
    Reading alone = {data, size, false};
    if (target.isOfTool)
        return target.read(alone);
    read(target, alone);
    target.check(target.layout, alone);

    static std::vector<char> place; // keeps its memory
    const size_t noise = 64;
    place.resize(std::max(place.size(), static_cast<size_t>(size) + noise));
    std::memcpy(place.data(), data, static_cast<size_t>(size));
    std::memset(place.data() + size, 0x2a, noise);
    Reading amid = {place.data(), size, true};
    read(target, amid);
    if (alone.result == tooMuch && amid.result != tooMuch) { // the sum of the elements before and the count has wrapped
        const unsigned int sum = static_cast<unsigned int>(amid.elementsBefore) + numberOf4(data);
        require(amid.written.size() == 4 + static_cast<int>(sum) * shortestSize(target.layout),
                "a count that wraps must leave the wrapped number of elements");
        return;
    }
    if (amid.result == tooMuch)
        return require(alone.result == tooMuch || countsTooMuch(target.layout, amid),
                       "what fits in an empty list must fit after other elements");
    require(amid.result == alone.result, "the result must not depend on bytes after the input or elements before");
    if (amid.elementsBefore > 0)
        alone.written.remove(0, 4);
    require(withoutElementsBefore(target, amid) == alone.written,
            "what was read must not depend on bytes after the input or elements before");
}
