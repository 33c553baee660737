#include "toolsBench.h"

#include "comparison.h"
#include "gqTools.h"

#include <ctime>

static const int lastCode = 3600;
static const std::time_t baseTime = 1617178830; // 2021-03-31 10:20:30 in Berlin, three days after a clock change

// Returns true if a code needs the calendar: the local time of the base, and the moment of another local time. Other
// codes add to the base or have no moment.
static bool needsCalendar(int code)
{
    static const int ranges[][2] = {{1, 353},     {375, 500},   {502, 502},   {506, 1112},  {1121, 1132},
                                    {1141, 1164}, {1301, 1353}, {1401, 1451}, {1601, 1610}, {2001, 3441}};
    for (const auto& range : ranges) {
        if (code >= range[0] && code <= range[1])
            return true;
    }
    return false;
}

void compareTools()
{
    const auto library = [](benchmark::State& state) {
        setenv("TZ", "Europe/Berlin", 1);
        tzset();
        if (CGqTools::calcRelTime(155, int(baseTime)) != 1614898800) // 2021-03-05 00:00:00
            fail("calcRelTime: the moment differs");
        for (auto _ : state) {
            for (int code = 1; code <= lastCode; ++code)
                benchmark::DoNotOptimize(CGqTools::calcRelTime(code, int(baseTime)));
        }
    };
    const auto bare = [](benchmark::State& state) {
        setenv("TZ", "Europe/Berlin", 1);
        tzset();
        for (auto _ : state) {
            for (int code = 1; code <= lastCode; ++code) {
                if (!needsCalendar(code))
                    continue;
                std::tm local;
                localtime_r(&baseTime, &local);
                local.tm_hour = 0;
                local.tm_mday -= code % 31;
                benchmark::DoNotOptimize(std::mktime(&local));
            }
        }
    };
    compare("calcRelTime of 3,600 codes", library, {{"localtime+mktime", {{Clock::processor, 3}}, bare}});
}
