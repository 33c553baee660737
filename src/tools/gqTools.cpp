#include "gqTools.h"

#include "baseMoment.h"

#include <QObject>

#include <climits>

// --- Evaluation ---------------------------------------------------------------------------------------------------

static const unsigned int minute = 60;
static const unsigned int hour = 3600;
static const unsigned int day = 86400;

// Returns `number` units, wrapped at 32 bits like all sums here.
static unsigned int times(int number, unsigned int unit)
{
    return static_cast<unsigned int>(number) * unit;
}

// --- Rules of days

static unsigned int dayStart(const BaseMoment& base, int daysBack)
{
    return base.startOf(base.date().addDays(-daysBack));
}

static unsigned int dayEnd(const BaseMoment& base, int daysBack)
{
    return dayStart(base, daysBack) + day - 1;
}

static unsigned int dayClockEnd(const BaseMoment& base, int)
{
    return base.clockTime(base.date(), 23, 59, 59);
}

static unsigned int sameTimeDaysBack(const BaseMoment& base, int daysBack)
{
    return base.secondsOf(base.local().addDays(-daysBack));
}

// Returns a day of the base month: the 1st for numbers below 1, null if the month lacks it.
static QDate dayOfMonth(const BaseMoment& base, int daysAfterFirst)
{
    const QDate today = base.date();
    const QDate first(today.year(), today.month(), 1);
    if (daysAfterFirst <= 0)
        return first;
    const QDate date = first.addDays(daysAfterFirst);
    return date.month() == first.month() ? date : QDate();
}

static unsigned int monthDayStart(const BaseMoment& base, int daysAfterFirst)
{
    const QDate date = dayOfMonth(base, daysAfterFirst);
    return date.isNull() ? 0 : base.startOf(date);
}

static unsigned int monthDayEnd(const BaseMoment& base, int daysAfterFirst)
{
    const QDate date = dayOfMonth(base, daysAfterFirst);
    return date.isNull() ? 0 : base.startOf(date) + day - 1;
}

// --- Rules of hours and minutes

static unsigned int hourStart(const BaseMoment& base, int hoursBack)
{
    const QDateTime local = base.local();
    return base.clockTime(local.date(), local.time().hour(), 0, 0) - times(hoursBack, hour);
}

static unsigned int hourEnd(const BaseMoment& base, int hoursBack)
{
    const QDateTime local = base.local();
    return base.clockTime(local.date(), local.time().hour(), 59, 59) - times(hoursBack, hour);
}

static unsigned int sameTimeHoursBack(const BaseMoment& base, int hoursBack)
{
    return base.seconds - times(hoursBack, hour);
}

static unsigned int sameTimeMinutesBack(const BaseMoment& base, int minutesBack)
{
    return base.seconds - times(minutesBack, minute);
}

static unsigned int hourOfDayStart(const BaseMoment& base, int hours)
{
    return dayStart(base, 0) + times(hours, hour) - (hours == 24 ? 1 : 0);
}

static unsigned int hourOfDayEnd(const BaseMoment& base, int hours)
{
    return dayStart(base, 0) + times(hours, hour) + (hours == 24 ? hour : hour - 1); // deliberately 01:00:00 for 24
}

// Returns `today`, or the same a day earlier if it is after the base.
static unsigned int latest(const BaseMoment& base, unsigned int today)
{
    return base.seconds < today ? today - day : today;
}

static unsigned int latestHourStart(const BaseMoment& base, int hours)
{
    return latest(base, dayStart(base, 0) + times(hours, hour)) - (hours == 24 ? 1 : 0);
}

static unsigned int latestHourEnd(const BaseMoment& base, int hours)
{
    return latest(base, dayStart(base, 0) + times(hours, hour) + hour - 1) + (hours == 24 ? 1 : 0); // 01:00:00 for 24
}

static unsigned int minuteOfDay(const BaseMoment& base, int minutes)
{
    return dayStart(base, 0) + times(minutes, minute) - (minutes == 1440 ? 1 : 0);
}

// --- Rules of months and years

static unsigned int monthStart(const BaseMoment& base, int)
{
    const QDate today = base.date();
    return base.startOf(QDate(today.year(), today.month(), 1));
}

static unsigned int monthEnd(const BaseMoment& base, int)
{
    const QDate today = base.date();
    return base.secondsOf(base.firstMoment(QDate(today.year(), today.month(), 1)).addMonths(1)) - 1;
}

static unsigned int yearsMonthStart(const BaseMoment& base, int month)
{
    return base.startOf(QDate(base.date().year(), month, 1));
}

static unsigned int yearsMonthEnd(const BaseMoment& base, int month) // invalid below 1: 0xFFFFFFFE
{
    return base.secondsOf(base.firstMoment(QDate(base.date().year(), month, 1)).addMonths(1)) - 1;
}

static unsigned int lastYearsMonthStart(const BaseMoment& base, int month)
{
    return base.startOf(QDate(base.date().year() - 1, month, 1));
}

static unsigned int lastYearsMonthEnd(const BaseMoment& base, int month)
{
    const int year = base.date().year();
    return base.startOf(month == 12 ? QDate(year, 1, 1) : QDate(year - 1, month + 1, 1)) - 1;
}

static unsigned int yearStart(const BaseMoment& base, int)
{
    return base.startOf(QDate(base.date().year(), 1, 1));
}

static unsigned int yearClockEnd(const BaseMoment& base, int)
{
    return base.clockTime(QDate(base.date().year(), 12, 31), 23, 59, 59);
}

static unsigned int yearStartBack(const BaseMoment& base, int yearsBack)
{
    return base.secondsOf(base.firstMoment(QDate(base.date().year(), 1, 1)).addYears(-yearsBack));
}

static unsigned int yearEndBack(const BaseMoment& base, int yearsBack)
{
    return base.secondsOf(base.firstMoment(QDate(base.date().year(), 12, 31)).addYears(-yearsBack)) + day - 1;
}

static unsigned int sameTimeYearsLater(const BaseMoment& base, int years)
{
    return base.secondsOf(base.local().addYears(years));
}

// --- The number line of moments

struct Family {
    int first;
    int last;
    int zero; // subtracted from the code to get the rule's number
    unsigned int (*rule)(const BaseMoment& base, int number);
};

// The first row that contains a code applies; a code in no row gives 0.
static const Family families[] = {
    {1, 1, 1, dayStart},
    {2, 2, 2, dayClockEnd},
    {3, 33, 2, dayStart},
    {34, 81, 50, dayEnd}, // codes below 50 mean later days, as in every family that counts back
    {82, 131, 100, sameTimeDaysBack},
    {132, 181, 151, monthDayStart}, // 151 is the 1st
    {182, 231, 201, monthDayEnd},
    {301, 301, 301, hourStart},
    {302, 302, 302, hourEnd},
    {232, 326, 302, hourStart},
    {327, 353, 329, hourEnd},
    {354, 374, 360, sameTimeHoursBack},
    {375, 405, 381, hourOfDayStart},
    {406, 434, 410, hourOfDayEnd},
    {435, 459, 435, latestHourStart},
    {460, 484, 460, latestHourEnd},
    {501, 501, 501 - 1, sameTimeMinutesBack},
    {503, 503, 503 - 5, sameTimeMinutesBack},
    {504, 504, 504 - 10, sameTimeMinutesBack},
    {505, 505, 505 - 30, sameTimeMinutesBack},
    {1001, 1001, 1001, monthStart},
    {1002, 1002, 1002, monthEnd},
    {485, 1100, 1050, sameTimeDaysBack}, // days, although most texts say months
    {1101, 1112, 1100, yearsMonthStart},
    {1113, 1132, 1120, yearsMonthEnd},
    {1141, 1152, 1140, lastYearsMonthStart},
    {1153, 1164, 1152, lastYearsMonthEnd},
    {1301, 1301, 1301, yearStart},
    {1302, 1302, 1302, yearClockEnd},
    {1303, 1353, 1302, yearStartBack},
    {1401, 1451, 1400, yearEndBack},
    {1601, 1610, 1600, sameTimeYearsLater},
    {2001, 3441, 2001, minuteOfDay},
};

unsigned int CGqTools::calcRelTime(int relTime, int baseTime)
{
    const BaseMoment base(static_cast<unsigned int>(baseTime));
    for (const Family& family : families) {
        if (relTime >= family.first && relTime <= family.last)
            return family.rule(base, relTime - family.zero);
    }
    return 0;
}

// --- Text ---------------------------------------------------------------------------------------------------------

static const int noNumber = INT_MIN; // as `zero` of a wording without a number

struct Wording {
    int first;
    int last;
    int zero;           // subtracted from the code to get the number between the pieces
    const char* before; // null if there is none
    const char* after;
};

// The first row that contains a code applies. QT_TRANSLATE_NOOP marks the pieces for lupdate. The rows are deliberately
// not the families above: where they differ, programs and people rely on both.
static const Wording wordings[] = {
    {INT_MIN, 0, noNumber, QT_TRANSLATE_NOOP("QObject", "当前时间"), nullptr},
    {1, 1, noNumber, QT_TRANSLATE_NOOP("QObject", "当日0点"), nullptr},
    {2, 2, noNumber, QT_TRANSLATE_NOOP("QObject", "当日终点"), nullptr},
    {3, 33, 2, nullptr, QT_TRANSLATE_NOOP("QObject", "天之前的0点")},
    {34, 81, 50, nullptr, QT_TRANSLATE_NOOP("QObject", "天之前终点")},
    {82, 131, 100, nullptr, QT_TRANSLATE_NOOP("QObject", "天之前")},
    {132, 181, 150, nullptr, QT_TRANSLATE_NOOP("QObject", "号")},
    {182, 231, 200, nullptr, QT_TRANSLATE_NOOP("QObject", "号终点")},
    {301, 301, noNumber, QT_TRANSLATE_NOOP("QObject", "当时零点"), nullptr},
    {302, 302, noNumber, QT_TRANSLATE_NOOP("QObject", "当时终点"), nullptr},
    {232, 326, 302, nullptr, QT_TRANSLATE_NOOP("QObject", "时0点")},
    {327, 353, 329, nullptr, QT_TRANSLATE_NOOP("QObject", "时终点")},
    {354, 374, 360, nullptr, QT_TRANSLATE_NOOP("QObject", "时之前")},
    // The next two rows deliberately name an hour one higher than calcRelTime uses.
    {375, 405, 380, nullptr, QT_TRANSLATE_NOOP("QObject", "点")},
    {406, 434, 409, nullptr, QT_TRANSLATE_NOOP("QObject", "点终点")},
    {1001, 1001, noNumber, QT_TRANSLATE_NOOP("QObject", "当月0点"), nullptr},
    {1002, 1002, noNumber, QT_TRANSLATE_NOOP("QObject", "当月终点"), nullptr},
    {1003, 1003, noNumber, QT_TRANSLATE_NOOP("QObject", "上月0点"), nullptr},
    {1021, 1021, noNumber, QT_TRANSLATE_NOOP("QObject", "上月终点"), nullptr},
    {435, 1015, 1003, QT_TRANSLATE_NOOP("QObject", "前"), QT_TRANSLATE_NOOP("QObject", "月零点")},
    {1016, 1033, 1021, QT_TRANSLATE_NOOP("QObject", "前"), QT_TRANSLATE_NOOP("QObject", "月终点")},
    {1041, 1041, noNumber, QT_TRANSLATE_NOOP("QObject", "月同期起点"), nullptr},
    {1042, 1042, noNumber, QT_TRANSLATE_NOOP("QObject", "月同期终点"), nullptr},
    {1034, 1062, 1050, nullptr, QT_TRANSLATE_NOOP("QObject", "月之前")},
    {1063, 1112, 1100, nullptr, QT_TRANSLATE_NOOP("QObject", "月0点")},
    {1113, 1132, 1120, nullptr, QT_TRANSLATE_NOOP("QObject", "月终点")},
    {1141, 1152, 1140, QT_TRANSLATE_NOOP("QObject", "去年"), QT_TRANSLATE_NOOP("QObject", "月0点")},
    {1153, 1164, 1152, QT_TRANSLATE_NOOP("QObject", "去年"), QT_TRANSLATE_NOOP("QObject", "月终点")},
    {1301, 1301, noNumber, QT_TRANSLATE_NOOP("QObject", "当年0点"), nullptr},
    {1302, 1302, noNumber, QT_TRANSLATE_NOOP("QObject", "当年终点"), nullptr},
    {1303, 1303, noNumber, QT_TRANSLATE_NOOP("QObject", "去年0点"), nullptr},
    {1401, 1401, noNumber, QT_TRANSLATE_NOOP("QObject", "去年终点"), nullptr},
    {1133, 2000, noNumber, QT_TRANSLATE_NOOP("QObject", "0点0分"), nullptr},
};

QString CGqTools::relTime2Str(int relTime)
{
    QString text;
    for (const Wording& wording : wordings) {
        if (relTime < wording.first || relTime > wording.last)
            continue;
        if (wording.before != nullptr)
            text += QObject::tr(wording.before);
        if (wording.zero != noNumber)
            text += QString::number(relTime - wording.zero, 10);
        if (wording.after != nullptr)
            text += QObject::tr(wording.after);
        break;
    }
    return text;
}
