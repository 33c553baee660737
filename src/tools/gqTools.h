#pragma once

#include "gqLibExport.h"

#include <QString>

// Relative time codes. A code is an integer for a moment such as the start of today, the end of the 5th of this month,
// or three hours ago. Consecutive codes form families; docs/guide/relativeTime.md lists them all.
//
// Calendar fields are those of the local time zone of the process (environment variable TZ, see tzset(3)). Both
// operations are static and may be called from any thread while none changes TZ. They keep no state, but the C library
// does: for a clock time that occurs twice, local time conversions in other threads can make calcRelTime return the
// other of the two moments. A failed allocation is passed on to the caller.
class GQLIB_EXPORT CGqTools {
public:
    // Returns the moment of a code relative to a base moment. Both are seconds since 1970-01-01 00:00 UTC as 32
    // unsigned bits (until 2106), and the arithmetic wraps at 32 bits. The current time is not read.
    //   0           unknown code, a code of 0 or below, or a day that the month lacks; also the moment 0 itself
    //   0xFFFFFFFF  a moment before 1970 or after 2106; or, in the families that use the clock time (2, 232 to 353,
    //               1302), a clock time that a clock change skips
    //   0xFFFFFFFE  the end of a month that does not exist (1113 to 1120); or the end of a month (1002, 1121 to 1132,
    //               1153 to 1164) if the start of the following month is before 1970 or after 2106
    // Families that add to or subtract from an invalid moment return the sum: if the start of the hour is skipped, code
    // 300 returns 7199. The families that keep the time of day (82 to 131, most codes from 485 to 1100, 1601 to 1610)
    // move a skipped clock time forward instead.
    //
    // On a day with a clock change, families differ: some add 86399 seconds to the start of the day for its end, others
    // use the clock time 23:59:59, and hours or minutes of the day (375 to 484, 2001 to 3441) are added to its start.
    //
    // Pass a base after 2038 as static_cast<int> of the unsigned seconds.
    static unsigned int calcRelTime(int relTime, int baseTime);

    // Returns the text of a code in Chinese, or in the language of an installed QTranslator with the context QObject
    // (gqLib_en.qm comes with the library). A text consists of one to three pieces that are translated separately. From
    // 2001 on it is empty.
    //
    // The texts do not always describe the moment that calcRelTime returns: 0 and below read as the current time; 132
    // to 150 and 182 to 200 count days below 1, but mean the 1st; 375 to 434 name an hour one higher; 435 to 505 (hours
    // and minutes) and the days from 485 to 1100 read as months; 1304 to 1353, 1402 to 1451 and 1601 to 1610 read
    // "0点0分".
    static QString relTime2Str(int relTime);
};
