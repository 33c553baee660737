#include "gqTools.h"
#include "target.h"

#include <cstdlib>
#include <ctime>

// --- Relative time codes: 4 bytes of code, 4 bytes of base -------------------------

// One zone for all runs, with clock changes.
static bool setZone()
{
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    return true;
}

struct Codes {
    int first;
    int last;
};

static bool isAmong(const std::vector<Codes>& families, int code)
{
    for (const Codes& family : families) {
        if (code >= family.first && code <= family.last)
            return true;
    }
    return false;
}

static void readMoment(Reading& reading)
{
    static const bool isZoneSet = setZone();
    static_cast<void>(isZoneSet);
    if (reading.size < 8)
        return;
    const int code = static_cast<int>(numberOf4(reading.buf));
    const unsigned int base = numberOf4(reading.buf + 4);
    const unsigned int moment = CGqTools::calcRelTime(code, static_cast<int>(base));
    reading.result = static_cast<int>(moment);

    static const std::vector<Codes> known = {{1, 1132},    {1141, 1164}, {1301, 1353},
                                             {1401, 1451}, {1601, 1610}, {2001, 3441}};
    if (!isAmong(known, code))
        require(moment == 0, "a code without a family must have no moment");
    if (isAmong({{354, 374}}, code))
        require(moment == base - 3600u * static_cast<unsigned int>(code - 360),
                "a code from 354 to 374 must be (code - 360) hours before the base");
    if (isAmong({{1113, 1120}}, code))
        require(moment == 0xFFFFFFFE, "a month that does not exist must have no end");

    const bool isOrdinary = base >= 1640995200 && base < 3976214400; // 2022 to 2095: no code leaves the range of times
    if (isOrdinary && isAmong({{1, 1}, {3, 33}, {1001, 1001}, {1301, 1301}, {1303, 1353}}, code))
        require(moment <= base, "a start in the past must not be after the base");
    if (isOrdinary && isAmong({{2, 2}, {1002, 1002}, {1302, 1302}}, code))
        require(moment >= base, "the end of the base's day, month or year must not be before the base");
}

static void readWords(Reading& reading)
{
    if (reading.size < 4)
        return;
    const int code = static_cast<int>(numberOf4(reading.buf));
    const QString words = CGqTools::relTime2Str(code);
    require(words.isEmpty() == (code > 2000), "codes up to 2000 must have words, others none");
    if (code <= 0)
        require(words == CGqTools::relTime2Str(0), "a code below 0 must have the words of 0");
    reading.written = words.toUtf8();
}

static void checkNothing(const Layout&, const Reading&) {} // checked while reading

const std::vector<Target> gqToolsTargets = {
    {"calcRelTime", readMoment, checkNothing, {}},
    {"relTime2Str", readWords, checkNothing, {}},
};
