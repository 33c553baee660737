// Compares the codec with a second one that works byte by byte, on random samples and lists of plain values. Every
// random sequence starts from a fixed seed.

#include "byte2Val.h"
#include "support/chance.h"
#include "support/recordChecks.h"
#include "support/sampleModel.h"

#include <gtest/gtest.h>

#include <climits>

using namespace gqdb;

using Bytes = std::vector<unsigned char>;

// --- Samples --------------------------------------------------------------------

TEST(Float2Short, roundsEachStepToSinglePrecisionOnAnyFloats)
{
    Chance chance(5);
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        const std::vector<float> values = chance.anyFloats(1 + chance.below(70));
        const float upper = chance.anyFloat();
        const float lower = chance.once(10) ? upper : chance.anyFloat();
        std::vector<int> expected;
        for (const float value : values)
            expected.push_back(quantised(value, upper, lower));
        std::vector<int> raw(size_t(chance.below(20)), 7);
        CByte2Val::float2Short(values, upper, lower, raw);
        EXPECT_EQ(raw, expected) << shown(upper) << " " << shown(lower) << ": " << shown(values);
    }
}

TEST(Short2float, dividesInDoubleAndContinuesInSinglePrecision)
{
    Chance chance(6);
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        const float upper = chance.anyFloat();
        const float lower = chance.anyFloat();
        std::vector<int> raw;
        std::vector<float> expected;
        for (int i = chance.below(70); i >= 0; --i) {
            raw.push_back(chance.once(3) ? int(chance.word()) : chance.below(65536));
            expected.push_back(unquantised(raw.back(), upper, lower));
        }
        std::vector<float> values(size_t(chance.below(20)), 7);
        CByte2Val::short2float(raw, upper, lower, values);
        EXPECT_EQ(shown(values), shown(expected));
    }
}

TEST(Ad2float, roundsToFloatAfterProductAndSum)
{
    Chance chance(7);
    for (int round = 0; round < 3000 && !HasFailure(); ++round) {
        const double scale = chance.anyDouble();
        const double offset = chance.anyDouble();
        std::vector<int> raw;
        std::vector<float> expected;
        for (int i = chance.below(70); i >= 0; --i) {
            raw.push_back(chance.once(3) ? int(chance.word()) : chance.below(65536) - 32768);
            expected.push_back(onLine(raw.back(), scale, offset));
        }
        std::vector<float> values(size_t(chance.below(20)), 7);
        CByte2Val::ad2float(raw, scale, offset, values);
        EXPECT_EQ(shown(values), shown(expected));
    }
}

TEST(CalcLimit, comparesAnyFloatsAsDoubles)
{
    Chance chance(8);
    for (int round = 0; round < 5000 && !HasFailure(); ++round) {
        const std::vector<float> values = chance.anyFloats(chance.below(70));
        double upper = 4.5, lower = 5.5, highest = 4.5, lowest = 5.5;
        CByte2Val::calcLimit(values, upper, lower);
        findLimits(values, highest, lowest);
        EXPECT_EQ(std::memcmp(&upper, &highest, 8) == 0, true) << upper << " " << highest << ": " << shown(values);
        EXPECT_EQ(std::memcmp(&lower, &lowest, 8) == 0, true) << lower << " " << lowest << ": " << shown(values);
    }
}

TEST(CalcLimit, keepsTheFirstZeroAtAnyPosition)
{
    static const float choices[] = {0.0f, -0.0f, -1.0f, 1.0f};
    Chance chance(9);
    for (int round = 0; round < 5000 && !HasFailure(); ++round) {
        std::vector<float> values(static_cast<size_t>(1 + chance.below(70)));
        const int kinds = 2 + chance.below(3); // only zeros; zeros as the largest; as the smallest or the largest
        for (float& value : values)
            value = choices[chance.below(kinds)];
        double upper = 4.5, lower = 5.5, highest = 4.5, lowest = 5.5;
        CByte2Val::calcLimit(values, upper, lower);
        findLimits(values, highest, lowest);
        EXPECT_EQ(std::memcmp(&upper, &highest, 8) == 0, true) << upper << " " << highest << ": " << shown(values);
        EXPECT_EQ(std::memcmp(&lower, &lowest, 8) == 0, true) << lower << " " << lowest << ": " << shown(values);
    }
}

// --- Lists of plain values ------------------------------------------------------

static unsigned int wordAt(const Bytes& bytes, int pos)
{
    unsigned int word = 0;
    for (int i = 3; i >= 0; --i)
        word = word << 8 | bytes[static_cast<size_t>(pos + i)];
    return word;
}

template <typename Value, typename Element>
static void comparePlainLists(int (*reader)(const char*, int, std::vector<Value>&), unsigned int width, Element element)
{
    static const unsigned int oddCounts[] = {0x40000000, 0x3fffffff, 0x80000000, 0xffffffff, 0xfffffffc};
    Chance chance(10);
    for (int round = 0; round < 2000; ++round) {
        Bytes bytes = chance.bytes(chance.below(40));
        const unsigned int count =
            chance.once(4) ? oddCounts[chance.below(5)] : static_cast<unsigned int>(chance.below(12));
        for (size_t i = 0; i < 4 && i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(count >> 8 * i);
        const std::vector<Value> before(size_t(chance.below(3)), Value(1));

        const std::vector<char> block(bytes.begin(), bytes.end());
        std::vector<Value> seen = before;
        int result = INT_MIN; // kept if the allocation fails
        failsToAllocate([&] { result = reader(block.data(), int(block.size()), seen); });

        std::vector<Value> expected = before;
        int expectedResult = INT_MIN;
        failsToAllocate([&] {
            expectedResult = 0;
            const int need = int(4 + width * count);
            if (bytes.size() < 4 || int(bytes.size()) < need)
                return;
            expectedResult = INT_MIN;
            expected.insert(expected.end(), count, Value());
            expectedResult = 0;
            if (4 + 1ull * width * count > bytes.size())
                return;
            for (unsigned int i = 0; i < count; ++i)
                expected[before.size() + i] = element(bytes, int(4 + width * i));
            expectedResult = need;
        });
        ASSERT_EQ(result, expectedResult) << count << " in " << bytes.size();
        ASSERT_EQ(seen.size(), expected.size());
        ASSERT_EQ(seen.empty() || std::memcmp(seen.data(), expected.data(), seen.size() * sizeof(Value)) == 0, true);
    }
}

TEST(Byte2List, matchesTheModelOnRandomBytes)
{
    comparePlainLists<int>(CByte2Val::byte2List, 4,
                           [](const Bytes& bytes, int pos) { return int(wordAt(bytes, pos)); });
    comparePlainLists<float>(CByte2Val::byte2List, 4,
                             [](const Bytes& bytes, int pos) { return floatOf(wordAt(bytes, pos)); });
    comparePlainLists<double>(CByte2Val::byte2List, 4,
                              [](const Bytes& bytes, int pos) { return double(int(wordAt(bytes, pos))); });
    comparePlainLists<unsigned char>(CByte2Val::byte2List, 1,
                                     [](const Bytes& bytes, int pos) { return bytes[static_cast<size_t>(pos)]; });
}
