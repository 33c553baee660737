#include "baseMoment.h"

#include <QTimeZone>

#include <climits>

// Returns all ones for what 32 bits cannot hold.
static unsigned int in32Bits(qint64 seconds)
{
    return seconds < 0 || seconds > UINT_MAX ? UINT_MAX : static_cast<unsigned int>(seconds);
}

#if QT_VERSION_MAJOR == 5

QDateTime BaseMoment::local() const
{
    return QDateTime::fromSecsSinceEpoch(seconds);
}

// If a clock change skips midnight, this constructor finds the first moment of the day; the one from a date and 00:00
// does not.
QDateTime BaseMoment::firstMoment(const QDate& date) const
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    return QDateTime(date);
    QT_WARNING_POP
}

unsigned int BaseMoment::secondsOf(const QDateTime& moment) const
{
    return moment.isValid() ? in32Bits(moment.toSecsSinceEpoch()) : UINT_MAX;
}

unsigned int BaseMoment::clockTime(const QDate& date, int hours, int minutes, int secondsOfMinute) const
{
    return secondsOf(QDateTime(date, QTime(hours, minutes, secondsOfMinute)));
}

#else // Qt 6 has other rules, and others again from 6.7 on

static QDateTime utc(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc());
}

// Returns the offset from UTC at a moment in seconds since 1970.
static qint64 offsetAt(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds).offsetFromUtc();
}

// Returns the same day and time in 2037 for those after the last 31-bit second, and others unchanged.
static qint64 knownYear(qint64 seconds)
{
    return seconds > INT_MAX ? utc(seconds).addYears(2037 - utc(seconds).date().year()).toSecsSinceEpoch() : seconds;
}

static qint64 localSeconds(const QDateTime& moment)
{
    return moment.toSecsSinceEpoch() + moment.offsetFromUtc();
}

// What the clock changes near a local time make of it.
struct LocalTime {
    qint64 before; // offset from UTC before a change on the same day or the next; the same as `after` if there is none
    qint64 after;
    bool isBefore; // exists with that offset
    bool isAfter;
    qint64 standard; // offset of a time that the change skips

    explicit LocalTime(const QDateTime& moment)
    {
        static const int day = 86400;
        const qint64 seconds = knownYear(localSeconds(moment));
        before = offsetAt(seconds - day);
        after = offsetAt(seconds + day);
        isBefore = offsetAt(seconds - before) == before;
        isAfter = offsetAt(seconds - after) == after;
        standard = QDateTime::fromSecsSinceEpoch(seconds - day).isDaylightTime() ? after : before;
    }

    bool exists() const { return isBefore || isAfter; }

    qint64 offset(qint64 lastOffset) const
    {
        if (!exists())
            return standard;
        return isAfter && (!isBefore || lastOffset == after) ? after : before;
    }
};

QDateTime BaseMoment::local() const
{
    const qint64 offset = offsetAt(knownYear(seconds));
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone(static_cast<int>(offset)));
}

QDateTime BaseMoment::firstMoment(const QDate& date) const
{
    if (!date.isValid())
        return QDateTime(); // stays invalid in every step
    QDateTime moment(date, QTime(0, 0), QTimeZone(local().offsetFromUtc()));
    while (!LocalTime(moment).exists())
        moment = moment.addSecs(60);
    moment.setTimeZone(QTimeZone(static_cast<int>(LocalTime(moment).offset(moment.offsetFromUtc()))));
    return moment;
}

unsigned int BaseMoment::secondsOf(const QDateTime& moment) const
{
    if (!moment.isValid())
        return UINT_MAX;
    return in32Bits(localSeconds(moment) - LocalTime(moment).offset(moment.offsetFromUtc()));
}

unsigned int BaseMoment::clockTime(const QDate& date, int hours, int minutes, int secondsOfMinute) const
{
    const QDateTime moment(date, QTime(hours, minutes, secondsOfMinute), QTimeZone(local().offsetFromUtc()));
    return moment.isValid() && LocalTime(moment).exists() ? secondsOf(moment) : UINT_MAX;
}

#endif
