// Each allocation of the relative time codes fails.

#include "gqTools.h"
#include "support/failingAllocations.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

static const int baseTime = 1617186030;

// The first and the last code of each family.
static std::vector<int> codes()
{
    std::ifstream file(GQLIB_GOLDEN "/relTimes.txt");
    std::string line;
    while (std::getline(file, line) && line.rfind("base", 0) != 0) {
    }
    std::vector<int> result;
    int first = 0;
    int last = 0;
    while (std::getline(file, line) && std::sscanf(line.c_str(), "%d %d", &first, &last) == 2)
        result.insert(result.end(), {first, last});
    EXPECT_GT(result.size(), 50U);
    return result;
}

TEST(RelativeTimeAllocation, givesTheMomentOrNone)
{
    for (const int code : codes()) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, code);
        const unsigned int moment = CGqTools::calcRelTime(code, baseTime);
        failEachAllocation([&] {
            unsigned int result = 0;
            const bool done = attempt([&] { result = CGqTools::calcRelTime(code, baseTime); });
            EXPECT_EQ(result, done ? moment : 0);
            EXPECT_EQ(CGqTools::calcRelTime(code, baseTime), moment); // the next call
        });
    }
}

TEST(RelativeTimeAllocation, givesTheTextOrNone)
{
    for (const int code : codes()) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, code);
        const QString text = CGqTools::relTime2Str(code);
        failEachAllocation([&] {
            QString result;
            const bool done = attempt([&] { result = CGqTools::relTime2Str(code); });
            EXPECT_EQ(result, done ? text : QString());
        });
    }
}
