#pragma once

#include "gqLibExport.h"

#include <QString>

// Relative time codes. A code names a moment by one integer: the start of today, the end of the 5th of this month,
// three hours ago. The number line is cut into families of consecutive codes, each with a number of its own, that is
// the code less the family's zero; docs/guide/relativeTime.md shows it whole.
//
// Calendar fields are those of the process's local time zone (the environment variable TZ, see tzset(3)). Both
// operations are static and keep no state: any thread may call them, as long as none changes TZ meanwhile.
class GQLIB_EXPORT CGqTools {
public:
    // The moment that a code means for a base moment; both are seconds since 1970-01-01 00:00 UTC in 32 bits, unsigned
    // (to 2106), and the arithmetic wraps there. The clock is never read.
    //   0           no such code, a code of 0 or below, or a day that the month lacks; can't be told from 1970 itself
    //   0xFFFFFFFF  a moment before 1970 or after 2106, or a clock time that a clock change skips
    //   0xFFFFFFFE  the end of a month that does not exist (1113 to 1120), or whose following month starts before
    //               1970 or after 2106
    // Families that add to such a value hide it.
    //
    // On a day with a clock change, families differ: some end a day by adding 86399 seconds to its start, others by the
    // clock time 23:59:59, and those of an hour or a minute of the day (375 to 484, from 2001 on) add to its start.
    //
    // A base from 2038 on is passed as static_cast<int> of the unsigned seconds.
    static unsigned int calcRelTime(int relTime, int baseTime);

    // The words for a code, in Chinese; another language through a QTranslator with the context QObject (gqLib_en.qm
    // comes with the library). A text is put together of one to three pieces, each translated by itself. Empty from
    // 2001 on.
    //
    // The words follow a number line of their own, which differs from calcRelTime's in places: 0 and below read as now
    // but have no moment; 375 to 434 count the hours of the day one higher; 435 to 505, hours and minutes, and the days
    // from 485 to 1100 read as months; 1304 to 1353, 1402 to 1451 and 1601 to 1610 all read "0点0分".
    static QString relTime2Str(int relTime);
};
