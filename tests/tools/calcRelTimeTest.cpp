#include "gqTools.h"
#include "support/timeZone.h"

#include <climits>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

static_assert(std::is_same_v<decltype(&CGqTools::calcRelTime), unsigned int (*)(int, int)>);

// --- Helpers --------------------------------------------------------------------

static const unsigned int invalid = 0xFFFFFFFF;

static unsigned int moment(int code, unsigned int base)
{
    return CGqTools::calcRelTime(code, static_cast<int>(base));
}

// Seconds since 1970 of a local time such as "2021-03-31 10:20:30", which must exist once.
static unsigned int at(const std::string& local)
{
    std::tm fields = {};
    std::istringstream(local) >> std::get_time(&fields, "%Y-%m-%d %H:%M:%S");
    fields.tm_isdst = -1;
    return static_cast<unsigned int>(std::mktime(&fields));
}

static std::string localText(unsigned int seconds)
{
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::ostringstream text;
    text << std::put_time(std::localtime(&time), "%Y-%m-%d %H:%M:%S");
    return text.str();
}

struct CodeAndTime {
    int code;
    const char* local;
};

static void expectTimes(const char* base, const std::vector<CodeAndTime>& rows)
{
    for (const CodeAndTime& row : rows)
        EXPECT_EQ(localText(moment(row.code, at(base))), row.local) << "code " << row.code;
}

// The calendar is the same everywhere: zones west and east of UTC, with and without clock changes, and one whose
// hours do not start with those of UTC.
static void expectTimesInAllZones(const char* base, const std::vector<CodeAndTime>& rows)
{
    for (const char* name : {"UTC", "Asia/Shanghai", "Europe/Berlin", "America/New_York", "Asia/Kathmandu"}) {
        SCOPED_TRACE(name);
        const TimeZone zone(name);
        expectTimes(base, rows);
    }
}

// --- A table for every code -----------------------------------------------------

// Checks all codes and bases of one zone in relTimes.txt, which documents its format.
static void expectTabledMoments(const std::string& zoneName)
{
    std::ifstream file(GQLIB_GOLDEN "/relTimes.txt");
    const TimeZone zone(zoneName.c_str());
    bool isInZone = false;
    unsigned int base = 0;
    int codes = 0;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string first;
        words >> first;
        if (first == "zone")
            isInZone = line == "zone " + zoneName;
        if (first == "base")
            words >> base;
        if (first.empty() || first == "zone" || first == "base" || !isInZone)
            continue;

        int last;
        long long value;
        long long step;
        words >> last >> value >> step;
        ASSERT_TRUE(words) << line;
        for (int code = std::stoi(first); code <= last; ++code, value += step, ++codes)
            EXPECT_EQ(moment(code, base), value) << "code " << code << ", base " << base << ", " << localText(base);
    }
    EXPECT_GE(codes, 10 * 3611) << "ten bases with all codes from -10 to 3600 expected";
}

TEST(CalcRelTime, returnsTheTabledMomentsInUtc)
{
    expectTabledMoments("UTC");
}

TEST(CalcRelTime, returnsTheTabledMomentsInShanghai)
{
    expectTabledMoments("Asia/Shanghai");
}

TEST(CalcRelTime, returnsTheTabledMomentsInBerlin)
{
    expectTabledMoments("Europe/Berlin");
}

TEST(CalcRelTime, returnsTheTabledMomentsInNewYork)
{
    expectTabledMoments("America/New_York");
}

TEST(CalcRelTime, returnsTheTabledMomentsInBeirut)
{
    expectTabledMoments("Asia/Beirut");
}

// --- Family by family: first and last codes, and neighbours ---------------------

static const char ordinaryBase[] = "2021-03-31 10:20:30"; // a Wednesday and the last day of a month

TEST(CalcRelTime, findsStartAndEndOfTheDay)
{
    expectTimesInAllZones(ordinaryBase, {{1, "2021-03-31 00:00:00"}, {2, "2021-03-31 23:59:59"}});
}

TEST(CalcRelTime, findsTheStartOfAnEarlierDay)
{
    expectTimesInAllZones(ordinaryBase,
                          {{3, "2021-03-30 00:00:00"}, {4, "2021-03-29 00:00:00"}, {33, "2021-02-28 00:00:00"}});
}

TEST(CalcRelTime, findsTheEndOfAnEarlierOrLaterDay)
{
    expectTimesInAllZones(ordinaryBase, {{34, "2021-04-16 23:59:59"},
                                         {49, "2021-04-01 23:59:59"},
                                         {50, "2021-03-31 23:59:59"},
                                         {51, "2021-03-30 23:59:59"},
                                         {81, "2021-02-28 23:59:59"}});
}

TEST(CalcRelTime, findsTheSameTimeOfAnEarlierOrLaterDay)
{
    expectTimesInAllZones(ordinaryBase, {{82, "2021-04-18 10:20:30"},
                                         {99, "2021-04-01 10:20:30"},
                                         {100, "2021-03-31 10:20:30"},
                                         {101, "2021-03-30 10:20:30"},
                                         {131, "2021-02-28 10:20:30"}});
}

TEST(CalcRelTime, findsTheStartOfADayOfTheMonth)
{
    expectTimesInAllZones(ordinaryBase, {{151, "2021-03-01 00:00:00"},
                                         {152, "2021-03-02 00:00:00"},
                                         {155, "2021-03-05 00:00:00"},
                                         {180, "2021-03-30 00:00:00"},
                                         {181, "2021-03-31 00:00:00"}});
}

TEST(CalcRelTime, findsTheEndOfADayOfTheMonth)
{
    expectTimesInAllZones(ordinaryBase, {{201, "2021-03-01 23:59:59"},
                                         {202, "2021-03-02 23:59:59"},
                                         {205, "2021-03-05 23:59:59"},
                                         {230, "2021-03-30 23:59:59"},
                                         {231, "2021-03-31 23:59:59"}});
}

TEST(CalcRelTime, usesTheFirstForDaysOfTheMonthBelowOne)
{
    const TimeZone zone("Asia/Shanghai");
    const unsigned int base = at(ordinaryBase);
    for (int code = 132; code <= 150; ++code)
        EXPECT_EQ(moment(code, base), at("2021-03-01 00:00:00")) << code;
    for (int code = 182; code <= 200; ++code)
        EXPECT_EQ(moment(code, base), at("2021-03-01 23:59:59")) << code;
}

TEST(CalcRelTime, returnsZeroForADayThatTheMonthLacks)
{
    const TimeZone zone("Europe/Berlin");
    expectTimes("2021-04-15 12:00:00", {{180, "2021-04-30 00:00:00"}, {230, "2021-04-30 23:59:59"}});
    expectTimes("2021-02-15 12:00:00", {{178, "2021-02-28 00:00:00"}, {228, "2021-02-28 23:59:59"}});
    expectTimes("2020-02-15 12:00:00", {{179, "2020-02-29 00:00:00"}, {229, "2020-02-29 23:59:59"}});
    for (int code : {181, 231})
        EXPECT_EQ(moment(code, at("2021-04-15 12:00:00")), 0u) << code;
    for (int code : {179, 180, 181, 229, 230, 231})
        EXPECT_EQ(moment(code, at("2021-02-15 12:00:00")), 0u) << code;
    for (int code : {180, 181, 230, 231})
        EXPECT_EQ(moment(code, at("2020-02-15 12:00:00")), 0u) << code;
}

TEST(CalcRelTime, findsStartAndEndOfTheHour)
{
    expectTimesInAllZones(ordinaryBase, {{301, "2021-03-31 10:00:00"}, {302, "2021-03-31 10:59:59"}});
}

TEST(CalcRelTime, findsTheStartOfAnEarlierOrLaterHour)
{
    expectTimesInAllZones(ordinaryBase, {{232, "2021-04-03 08:00:00"},
                                         {299, "2021-03-31 13:00:00"},
                                         {300, "2021-03-31 12:00:00"},
                                         {303, "2021-03-31 09:00:00"},
                                         {326, "2021-03-30 10:00:00"}});
}

TEST(CalcRelTime, findsTheEndOfAnEarlierOrLaterHour)
{
    expectTimesInAllZones(ordinaryBase, {{327, "2021-03-31 12:59:59"},
                                         {328, "2021-03-31 11:59:59"},
                                         {329, "2021-03-31 10:59:59"},
                                         {330, "2021-03-31 09:59:59"},
                                         {353, "2021-03-30 10:59:59"}});
}

TEST(CalcRelTime, stepsHoursFromTheBase)
{
    expectTimesInAllZones(ordinaryBase, {{354, "2021-03-31 16:20:30"},
                                         {359, "2021-03-31 11:20:30"},
                                         {360, "2021-03-31 10:20:30"},
                                         {361, "2021-03-31 09:20:30"},
                                         {374, "2021-03-30 20:20:30"}});
}

TEST(CalcRelTime, findsTheStartOfAnHourOfTheDay)
{
    expectTimesInAllZones(ordinaryBase, {{375, "2021-03-30 18:00:00"},
                                         {380, "2021-03-30 23:00:00"},
                                         {381, "2021-03-31 00:00:00"},
                                         {391, "2021-03-31 10:00:00"},
                                         {404, "2021-03-31 23:00:00"},
                                         {405, "2021-03-31 23:59:59"}}); // hour 24 ends a second earlier
}

TEST(CalcRelTime, findsTheEndOfAnHourOfTheDay)
{
    expectTimesInAllZones(ordinaryBase, {{406, "2021-03-30 20:59:59"},
                                         {407, "2021-03-30 21:59:59"},
                                         {408, "2021-03-30 22:59:59"},
                                         {409, "2021-03-30 23:59:59"},
                                         {410, "2021-03-31 00:59:59"},
                                         {433, "2021-03-31 23:59:59"},
                                         {434, "2021-04-01 01:00:00"}}); // hour 24 ends a second later
}

TEST(CalcRelTime, findsTheLatestStartOfAnHourOfTheDay)
{
    expectTimesInAllZones(ordinaryBase, {{435, "2021-03-31 00:00:00"},
                                         {444, "2021-03-31 09:00:00"},
                                         {445, "2021-03-31 10:00:00"},
                                         {446, "2021-03-30 11:00:00"},
                                         {458, "2021-03-30 23:00:00"},
                                         {459, "2021-03-30 23:59:59"}}); // hour 24, a second earlier
    expectTimesInAllZones("2021-03-31 09:00:00", {{444, "2021-03-31 09:00:00"}});
    expectTimesInAllZones("2021-03-31 08:59:59", {{444, "2021-03-30 09:00:00"}});
    expectTimesInAllZones("2021-03-31 00:00:00",
                          {{435, "2021-03-31 00:00:00"}, {436, "2021-03-30 01:00:00"}, {459, "2021-03-30 23:59:59"}});
    expectTimesInAllZones("2021-03-31 23:59:59", {{458, "2021-03-31 23:00:00"}, {459, "2021-03-30 23:59:59"}});
}

TEST(CalcRelTime, findsTheLatestEndOfAnHourOfTheDay)
{
    expectTimesInAllZones(ordinaryBase, {{460, "2021-03-31 00:59:59"},
                                         {469, "2021-03-31 09:59:59"},
                                         {470, "2021-03-30 10:59:59"},
                                         {483, "2021-03-30 23:59:59"},
                                         {484, "2021-03-31 01:00:00"}}); // hour 24, a second later
    expectTimesInAllZones("2021-03-31 09:59:59", {{469, "2021-03-31 09:59:59"}});
    expectTimesInAllZones("2021-03-31 09:59:58", {{469, "2021-03-30 09:59:59"}});
    expectTimesInAllZones("2021-03-31 00:00:00", {{460, "2021-03-30 00:59:59"}, {484, "2021-03-31 01:00:00"}});
    expectTimesInAllZones("2021-03-31 23:59:59", {{483, "2021-03-31 23:59:59"}, {484, "2021-03-31 01:00:00"}});
}

TEST(CalcRelTime, stepsMinutesFromTheBaseWithFourCodes)
{
    expectTimesInAllZones(ordinaryBase, {{501, "2021-03-31 10:19:30"},
                                         {503, "2021-03-31 10:15:30"},
                                         {504, "2021-03-31 10:10:30"},
                                         {505, "2021-03-31 09:50:30"}});
}

TEST(CalcRelTime, addsDaysBetweenTheHourAndMonthFamilies)
{
    expectTimesInAllZones(ordinaryBase, {{485, "2022-10-17 10:20:30"},    // 565 days
                                         {500, "2022-10-02 10:20:30"},    // 550
                                         {502, "2022-09-30 10:20:30"},    // 548, among the minutes
                                         {506, "2022-09-26 10:20:30"},    // 544
                                         {1000, "2021-05-20 10:20:30"}}); //  50
}

TEST(CalcRelTime, findsStartAndEndOfTheMonth)
{
    expectTimesInAllZones(ordinaryBase, {{1001, "2021-03-01 00:00:00"}, {1002, "2021-03-31 23:59:59"}});
    expectTimesInAllZones("2020-02-29 23:59:59", {{1001, "2020-02-01 00:00:00"}, {1002, "2020-02-29 23:59:59"}});
    expectTimesInAllZones("2021-12-01 00:00:00", {{1001, "2021-12-01 00:00:00"}, {1002, "2021-12-31 23:59:59"}});
}

TEST(CalcRelTime, stepsDaysWhereTheTextsSayMonths)
{
    expectTimesInAllZones(ordinaryBase, {{1003, "2021-05-17 10:20:30"},
                                         {1021, "2021-04-29 10:20:30"},
                                         {1041, "2021-04-09 10:20:30"},
                                         {1042, "2021-04-08 10:20:30"},
                                         {1049, "2021-04-01 10:20:30"},
                                         {1050, "2021-03-31 10:20:30"},
                                         {1051, "2021-03-30 10:20:30"},
                                         {1100, "2021-02-09 10:20:30"}});
}

TEST(CalcRelTime, findsStartAndEndOfAMonthOfTheYear)
{
    expectTimesInAllZones(ordinaryBase, {{1101, "2021-01-01 00:00:00"},
                                         {1102, "2021-02-01 00:00:00"},
                                         {1103, "2021-03-01 00:00:00"},
                                         {1112, "2021-12-01 00:00:00"},
                                         {1121, "2021-01-31 23:59:59"},
                                         {1122, "2021-02-28 23:59:59"},
                                         {1124, "2021-04-30 23:59:59"},
                                         {1132, "2021-12-31 23:59:59"}});
    expectTimesInAllZones("2020-06-01 00:00:00", {{1122, "2020-02-29 23:59:59"}});
}

TEST(CalcRelTime, returnsAnInvalidEndForMonthsBeforeJanuary)
{
    for (const char* name : {"UTC", "Europe/Berlin", "America/New_York"}) {
        const TimeZone zone(name);
        for (int code = 1113; code <= 1120; ++code)
            EXPECT_EQ(moment(code, at(ordinaryBase)), 0xFFFFFFFEu) << code << " in " << name;
    }
}

TEST(CalcRelTime, findsStartAndEndOfAMonthOfLastYear)
{
    expectTimesInAllZones(ordinaryBase, {{1141, "2020-01-01 00:00:00"},
                                         {1142, "2020-02-01 00:00:00"},
                                         {1152, "2020-12-01 00:00:00"},
                                         {1153, "2020-01-31 23:59:59"},
                                         {1154, "2020-02-29 23:59:59"},
                                         {1163, "2020-11-30 23:59:59"},
                                         {1164, "2020-12-31 23:59:59"}});
    expectTimesInAllZones("2020-02-29 00:00:00", {{1154, "2019-02-28 23:59:59"}});
}

TEST(CalcRelTime, findsStartAndEndOfTheYearAndOfEarlierYears)
{
    expectTimesInAllZones("2022-07-31 10:20:30", {{1301, "2022-01-01 00:00:00"},
                                                  {1302, "2022-12-31 23:59:59"},
                                                  {1303, "2021-01-01 00:00:00"},
                                                  {1304, "2020-01-01 00:00:00"},
                                                  {1353, "1971-01-01 00:00:00"},
                                                  {1401, "2021-12-31 23:59:59"},
                                                  {1402, "2020-12-31 23:59:59"},
                                                  {1451, "1971-12-31 23:59:59"}});
}

TEST(CalcRelTime, addsYears)
{
    expectTimesInAllZones(ordinaryBase, {{1601, "2022-03-31 10:20:30"}, {1610, "2031-03-31 10:20:30"}});
    expectTimesInAllZones("2020-02-29 10:20:30", {{1601, "2021-02-28 10:20:30"},
                                                  {1602, "2022-02-28 10:20:30"},
                                                  {1604, "2024-02-29 10:20:30"},
                                                  {1608, "2028-02-29 10:20:30"}});
}

TEST(CalcRelTime, findsAMinuteOfTheDay)
{
    expectTimesInAllZones(ordinaryBase, {{2001, "2021-03-31 00:00:00"},
                                         {2002, "2021-03-31 00:01:00"},
                                         {2601, "2021-03-31 10:00:00"},
                                         {3440, "2021-03-31 23:59:00"},
                                         {3441, "2021-03-31 23:59:59"}}); // the end, not the next day
}

TEST(CalcRelTime, returnsTheBaseForThreeCodes)
{
    const TimeZone zone("Europe/Berlin");
    for (int code : {100, 360, 1050}) {
        for (unsigned int base : {1617178830u,  // 2021-03-31 10:20:30
                                  1635640200u,  // 2021-10-31 02:30:00 in summer time
                                  1635643800u}) // the same clock time an hour later
            EXPECT_EQ(moment(code, base), base) << code;
    }
}

// --- Codes without a moment -----------------------------------------------------

TEST(CalcRelTime, returnsZeroForCodesUpTo0)
{
    for (int code : {0, -1, -5, -2001, INT_MIN})
        EXPECT_EQ(moment(code, 1617186030), 0u) << code;
}

TEST(CalcRelTime, returnsZeroInTheGaps)
{
    const TimeZone zone("UTC");
    const unsigned int base = at("2022-07-31 10:20:30");
    struct Gap {
        int first;
        int last;
    };
    for (const Gap& gap : {Gap{1133, 1140}, Gap{1165, 1300}, Gap{1354, 1400}, Gap{1452, 1600}, Gap{1611, 2000}}) {
        EXPECT_NE(moment(gap.first - 1, base), 0u) << gap.first - 1;
        EXPECT_NE(moment(gap.last + 1, base), 0u) << gap.last + 1;
        for (int code = gap.first; code <= gap.last; ++code)
            EXPECT_EQ(moment(code, base), 0u) << code;
    }
}

TEST(CalcRelTime, returnsZeroBeyondTheMinutes)
{
    for (int code : {3442, 3443, 5000, 65536 + 1, 0x10000 + 2001, INT_MAX - 1, INT_MAX})
        EXPECT_EQ(moment(code, 1617186030), 0u) << code;
}

// --- Limits of time -------------------------------------------------------------

TEST(CalcRelTime, canReturnTheEpochItself)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(moment(1, 43200), 0u);
    EXPECT_EQ(moment(151, 43200), 0u);
    EXPECT_EQ(moment(201, 43200), 86399u) << "a start of 0 is not a missing day";
    EXPECT_EQ(moment(360, 0), 0u);
    EXPECT_EQ(moment(1317, at("1985-07-15 12:00:00")), 0u) << "the start of 1970";
}

TEST(CalcRelTime, isInvalidBeforeTheEpoch)
{
    const TimeZone zone("UTC");
    const unsigned int base = at("1985-07-15 12:00:00");
    for (int code = 1318; code <= 1353; ++code)
        EXPECT_EQ(moment(code, base), invalid) << code;
    EXPECT_EQ(moment(3, 43200), invalid);
    EXPECT_EQ(moment(101, 43200), invalid);
    EXPECT_EQ(moment(1141, 43200), invalid);
}

TEST(CalcRelTime, endsTheYear1969BeforeAStartOf1970ThatIsValidOnlyInUtc)
{
    {
        const TimeZone zone("UTC");
        EXPECT_EQ(moment(1164, 43200), 0xFFFFFFFFu) << "0 minus 1";
    }
    const TimeZone zone("Europe/Berlin");
    EXPECT_EQ(moment(1164, 43200), 0xFFFFFFFEu) << "the invalid start of 1970 minus 1";
}

TEST(CalcRelTime, addsToTheInvalidMomentLikeToAnyOther)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(moment(1415, at("1985-07-15 12:00:00")), at("1970-12-31 23:59:59"));
    EXPECT_EQ(moment(1416, at("1985-07-15 12:00:00")), 86398u) << "all ones plus 86399";
    EXPECT_EQ(moment(1451, at("1985-07-15 12:00:00")), 86398u);
    EXPECT_EQ(moment(51, 43200), 86398u);
    EXPECT_EQ(moment(1153, 43200), 0xFFFFFFFEu) << "the invalid start of February 1969 minus 1";
}

TEST(CalcRelTime, appliesTheZoneToTheEpoch)
{
    const unsigned int base = 490276800; // 1985-07-15 12:00 UTC
    {
        const TimeZone zone("America/New_York");
        EXPECT_EQ(moment(1317, base), 18000u); // 1970-01-01 00:00, five hours after the epoch
        EXPECT_EQ(moment(1416, base), 86398u);
    }
    const TimeZone zone("Asia/Shanghai");
    EXPECT_EQ(moment(1317, base), invalid); // eight hours before the epoch
}

TEST(CalcRelTime, wrapsIn32Bits)
{
    const TimeZone zone("UTC");
    EXPECT_EQ(moment(501, 0), 0xFFFFFFC4u);       // -60
    EXPECT_EQ(moment(505, 1799), 0xFFFFFFFFu);    // -1
    EXPECT_EQ(moment(374, 0), 0xFFFF3B20u);       // -50400
    EXPECT_EQ(moment(354, 0xFFFFFFFF), 21599u);   // six hours before the last second
    EXPECT_EQ(moment(375, 43200), 0xFFFFABA0u);   // -21600
    EXPECT_EQ(moment(434, 0xFFFFFFFF), 66704u);   // 2106-02-08 01:00:00, beyond the last second
    EXPECT_EQ(moment(3441, 0xFFFFFFFF), 63103u);  // 2106-02-07 23:59:59
    EXPECT_EQ(moment(82, 0xFFFFFFFF), invalid);   // calendar days do not wrap
    EXPECT_EQ(moment(1601, 0xFFFFFFFF), invalid); // nor do years
}

TEST(CalcRelTime, comparesWithTheBaseAsUnsigned)
{
    const TimeZone zone("UTC");
    const unsigned int aboveInt = 0x80000000;                  // 2038-01-19 03:14:08
    EXPECT_EQ(moment(435, aboveInt), aboveInt - 11648);        // 00:00:00 of that day
    EXPECT_EQ(moment(438, aboveInt), aboveInt - 848);          // 03:00:00
    EXPECT_EQ(moment(439, aboveInt), aboveInt + 2752 - 86400); // 04:00:00 of the day before
    EXPECT_EQ(moment(439, aboveInt - 1), aboveInt + 2752 - 86400);
    EXPECT_EQ(moment(462, aboveInt), aboveInt - 849); // 02:59:59
    EXPECT_EQ(moment(463, aboveInt - 1), aboveInt + 2751 - 86400);
    EXPECT_EQ(moment(459, 0xFFFFFFFF), 63103u) << "24:00:00 wraps to a moment before the base";
}

TEST(CalcRelTime, comparesAnInvalidStartOfADay)
{
    const TimeZone zone("America/New_York"); // base 0 is 1969-12-31 19:00:00
    EXPECT_EQ(moment(1, 0), invalid);
    EXPECT_EQ(moment(435, 0), 0xFFFEAE7Fu); // all ones minus a day
    EXPECT_EQ(moment(436, 0), 0xFFFEBC8Fu); // 3599 minus a day
    EXPECT_EQ(moment(436, 3599), 3599u);    // not after the base
    EXPECT_EQ(moment(460, 3598), 3598u);    // all ones plus 3599
    EXPECT_EQ(moment(460, 3597), 3598u - 86400u);
    EXPECT_EQ(moment(2002, 0), 59u);    // all ones plus a minute
    EXPECT_EQ(moment(151, 0), invalid); // the 1st of December 1969
    EXPECT_EQ(moment(1112, 0), invalid);
    EXPECT_EQ(moment(1601, 0), 31536000u); // 1970-12-31 19:00:00
    EXPECT_EQ(moment(1302, 0), 17999u);    // 1969-12-31 23:59:59, after the epoch in UTC
    EXPECT_EQ(moment(1132, 0), 17999u);
}

// --- Days with a clock change ---------------------------------------------------

TEST(CalcRelTime, endsADayOf23HoursInTwoWays)
{
    const TimeZone zone("Europe/Berlin");
    expectTimes("2021-03-28 12:34:56", {{1, "2021-03-28 00:00:00"},
                                        {2, "2021-03-28 23:59:59"},  // by clock time
                                        {50, "2021-03-29 00:59:59"}, // the start plus 86399 seconds
                                        {228, "2021-03-29 00:59:59"},
                                        {301, "2021-03-28 12:00:00"}, // by clock time
                                        {326, "2021-03-27 11:00:00"}, // 24 hours before
                                        {391, "2021-03-28 11:00:00"}, // hour 10
                                        {405, "2021-03-29 00:59:59"}, // hour 24
                                        {420, "2021-03-28 11:59:59"},
                                        {445, "2021-03-28 11:00:00"},
                                        {2601, "2021-03-28 11:00:00"}, // minute 600
                                        {3441, "2021-03-29 00:59:59"}});
    expectTimes("2021-03-29 12:34:56", {{3, "2021-03-28 00:00:00"}, {101, "2021-03-28 12:34:56"}});
}

TEST(CalcRelTime, endsADayOf25HoursInTwoWays)
{
    const TimeZone zone("Europe/Berlin");
    expectTimes("2021-10-31 12:34:56", {{1, "2021-10-31 00:00:00"},
                                        {2, "2021-10-31 23:59:59"},
                                        {50, "2021-10-31 22:59:59"},
                                        {231, "2021-10-31 22:59:59"},
                                        {405, "2021-10-31 22:59:59"},
                                        {420, "2021-10-31 09:59:59"},
                                        {2601, "2021-10-31 09:00:00"},
                                        {1002, "2021-10-31 23:59:59"},
                                        {1130, "2021-10-31 23:59:59"}});
}

TEST(CalcRelTime, movesANonexistentClockTimeForward)
{
    const TimeZone zone("Europe/Berlin");
    expectTimes("2021-03-27 02:30:00", {{99, "2021-03-28 03:30:00"}, {1049, "2021-03-28 03:30:00"}});
    expectTimes("2021-03-29 02:30:00", {{101, "2021-03-28 03:30:00"}, {1051, "2021-03-28 03:30:00"}});
    expectTimes("2020-03-28 02:30:00", {{1601, "2021-03-28 03:30:00"}});
}

TEST(CalcRelTime, usesTheBasesOffsetForAClockTimeThatExistsTwice)
{
    const TimeZone zone("Europe/Berlin");
    const unsigned int inSummerTime = 1635640200; // 2021-10-31 02:30:00
    const unsigned int inWinterTime = 1635643800; // the same clock time an hour later
    EXPECT_EQ(moment(99, inSummerTime - 86400), inSummerTime);
    EXPECT_EQ(moment(101, inWinterTime + 86400), inWinterTime);
    EXPECT_EQ(moment(301, inSummerTime), inSummerTime - 1800);
    EXPECT_EQ(moment(301, inWinterTime), inWinterTime - 1800);
    EXPECT_EQ(moment(302, inSummerTime), inSummerTime + 1799);
    EXPECT_EQ(moment(302, inWinterTime), inWinterTime + 1799);
}

TEST(CalcRelTime, usesTheBasesOffsetForAMidnightThatExistsTwice)
{
    const TimeZone zone("America/Havana"); // clocks went from 01:00:00 to 00:00:00 on 2021-11-07
    const unsigned int firstMidnight = 1636257600;
    EXPECT_EQ(moment(1, firstMidnight + 1800), firstMidnight);
    EXPECT_EQ(moment(1, firstMidnight + 3600), firstMidnight + 3600);
    EXPECT_EQ(moment(3, firstMidnight + 2 * 86400), firstMidnight + 3600);
    EXPECT_EQ(moment(49, firstMidnight - 86400), firstMidnight + 86399);
}

TEST(CalcRelTime, endsAMonthBeforeTheFirstOfTwoMidnightsAndStartsTheNextAtTheSecond)
{
    const TimeZone zone("America/Havana"); // clocks went from 01:00:00 to 00:00:00 on 2020-11-01
    const unsigned int base = at("2020-11-15 12:00:00");
    const unsigned int firstMidnight = 1604203200;
    EXPECT_EQ(moment(1130, base), firstMidnight - 1); // the start of October, in summer time, plus a month
    EXPECT_EQ(moment(1111, base), firstMidnight + 3600);
}

TEST(CalcRelTime, startsADayWithoutMidnightAtItsFirstMoment)
{
    struct Day {
        const char* zone;
        const char* date;
        const char* dayBefore;
        const char* nextDay;
    };
    for (const Day& day : {Day{"America/Sao_Paulo", "2018-11-04", "2018-11-03", "2018-11-05"},
                           Day{"Africa/Cairo", "2014-05-16", "2014-05-15", "2014-05-17"},
                           Day{"Asia/Beirut", "2021-03-28", "2021-03-27", "2021-03-29"}}) {
        SCOPED_TRACE(day.zone);
        const TimeZone zone(day.zone);
        const std::string noon = std::string(day.date) + " 12:00:00";
        const std::string firstMoment = std::string(day.date) + " 01:00:00";
        const std::string lastMoment = std::string(day.date) + " 23:59:59";
        const std::string secondsLater = std::string(day.nextDay) + " 00:59:59";
        expectTimes(noon.c_str(), {{1, firstMoment.c_str()},
                                   {2, lastMoment.c_str()},
                                   {50, secondsLater.c_str()},
                                   {381, firstMoment.c_str()}, // hour 0
                                   {405, secondsLater.c_str()},
                                   {2001, firstMoment.c_str()}});

        const std::string nextNoon = std::string(day.nextDay) + " 12:00:00";
        expectTimes(nextNoon.c_str(), {{3, firstMoment.c_str()}, {51, secondsLater.c_str()}});

        const std::string nightBefore = std::string(day.dayBefore) + " 00:30:00";
        const std::string moved = std::string(day.date) + " 01:30:00";
        expectTimes(nightBefore.c_str(), {{99, moved.c_str()}, {1049, moved.c_str()}});
    }
}

TEST(CalcRelTime, endsAMonthLaterIfItsFirstMidnightIsMissing)
{
    const TimeZone zone("Asia/Beirut"); // the 1st of June 1988 began at 01:00:00
    expectTimes("1988-06-15 12:00:00", {{1001, "1988-06-01 01:00:00"},
                                        {1002, "1988-07-01 00:59:59"}, // that plus a month
                                        {1106, "1988-06-01 01:00:00"},
                                        {1125, "1988-05-31 23:59:59"},
                                        {1126, "1988-07-01 00:59:59"}});
    expectTimes("1989-06-15 12:00:00", {{1146, "1988-06-01 01:00:00"},
                                        {1157, "1988-05-31 23:59:59"},
                                        {1158, "1988-06-30 23:59:59"}}); // the start of July minus a second
}

TEST(CalcRelTime, stepsYearsFromALateStartOfTheYear)
{
    const TimeZone zone("America/Lima"); // 1994 began at 01:00:00
    expectTimes("1994-06-15 12:00:00", {{1301, "1994-01-01 01:00:00"},
                                        {1303, "1993-01-01 01:00:00"},
                                        {1304, "1992-01-01 01:00:00"},
                                        {1101, "1994-01-01 01:00:00"},
                                        {1141, "1993-01-01 00:00:00"},
                                        {1164, "1993-12-31 23:59:59"}});
    expectTimes("1995-06-15 12:00:00", {{1303, "1994-01-01 01:00:00"}, {1304, "1993-01-01 00:00:00"}});
}

TEST(CalcRelTime, isInvalidForTheEndOfAYearWithoutItsLastDay)
{
    const TimeZone zone("Pacific/Kiritimati"); // skipped 1994-12-31
    EXPECT_EQ(moment(1302, at("1994-06-15 12:00:00")), invalid);
}

TEST(CalcRelTime, endsAYearWithAClockChangeInTwoWays)
{
    const TimeZone zone("Asia/Dhaka");               // 2009-12-31 had the hour from 23:00:00 twice
    const unsigned int firstLastSecond = 1262278799; // 23:59:59 at UTC+7
    EXPECT_EQ(moment(1302, at("2009-02-01 12:00:00")), firstLastSecond + 3600); // with the base's offset, UTC+6
    EXPECT_EQ(moment(1302, at("2009-12-31 12:00:00")), firstLastSecond);
    EXPECT_EQ(moment(1401, at("2010-02-01 12:00:00")), firstLastSecond); // 86399 seconds after the day's start
    EXPECT_EQ(moment(1132, at("2009-02-01 12:00:00")), firstLastSecond + 3600);
    EXPECT_EQ(moment(1164, at("2010-02-01 12:00:00")), firstLastSecond + 3600);
}

TEST(CalcRelTime, isInvalidForAnHourWithoutAStart)
{
    const TimeZone zone("Australia/Lord_Howe"); // clocks went from 02:00:00 to 02:30:00
    const unsigned int base = at("2021-10-03 02:45:00");
    EXPECT_EQ(moment(301, base), invalid);
    EXPECT_EQ(moment(303, base), invalid - 3600);
    EXPECT_EQ(moment(300, base), 7199u); // the invalid moment plus two hours
    EXPECT_EQ(localText(moment(302, base)), "2021-10-03 02:59:59");
    EXPECT_EQ(localText(moment(330, base)), "2021-10-03 01:29:59");
}

// Ireland's standard time is that of summer.
TEST(CalcRelTime, takesASkippedTimeReachedByDaysAsStandardTime)
{
    const TimeZone zone("Europe/Dublin"); // clocks went from 01:00:00 to 02:00:00 on 2024-03-31
    EXPECT_EQ(localText(moment(89, at("2024-03-20 01:30:00"))), "2024-03-31 00:30:00");
}

TEST(CalcRelTime, usesTheClockChangesOf2037Later)
{
    const TimeZone zone("Europe/Berlin"); // 2037-03-29; would be 2040-03-25
    const unsigned int noon = 2216458800; // 2040-03-27 11:00:00 UTC
    EXPECT_EQ(moment(100, noon), noon);
    EXPECT_EQ(moment(1, noon), noon - 12 * 3600);
    EXPECT_EQ(moment(82, noon), noon + (18 * 24 - 1) * 3600);
}
