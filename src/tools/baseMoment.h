#pragma once

#include <QDateTime>

// The base of relative times, and conversions of local times by the rules of Qt 5, with Qt 6 too. Internal.
//   - A local time that exists twice has the last used offset from UTC, at first that of the base.
//   - A local time that a clock change skips is invalid as a clock time. A day starts at its first moment. A time
//     reached by steps is taken as standard time: it moves forward by the missing time.
//   - Local times after 2037 have the offset of the same day and time in 2037.
class BaseMoment {
public:
    explicit BaseMoment(unsigned int moment) : seconds(moment) {}

    const unsigned int seconds; // since 1970

    // Converted only on demand, since not every family of codes needs it. With Qt 6 a QDateTime here has the last used
    // offset, and secondsOf finds its own.
    QDateTime local() const;
    QDate date() const { return local().date(); }
    QDateTime firstMoment(const QDate& date) const;

    // Return seconds since 1970: all ones if the local time is invalid or 32 bits cannot hold it.
    unsigned int startOf(const QDate& date) const { return secondsOf(firstMoment(date)); }
    unsigned int secondsOf(const QDateTime& moment) const;
    unsigned int clockTime(const QDate& date, int hours, int minutes, int seconds) const;
};
