#!/usr/bin/env python3
"""Writes relTimes.txt, the moments of all relative time codes for some bases and zones: python3 makeRelTimes.py

An independent evaluation of the codes with Python's calendar and time zones. Local time is converted as in Qt 5.15:

- A local time that exists twice uses the last used offset; here that of the base.
- A local time that does not exist, where summer time begins: a date with a clock time is invalid; a day starts at its
  first moment; the same clock time on another day or in another year moves forward by the missing time.
- Local times after 2037 use the offset of the same day and clock time in 2037.
"""

import calendar
from datetime import date, datetime, time, timedelta, timezone
from pathlib import Path
from zoneinfo import ZoneInfo

INVALID = 0xFFFFFFFF
EPOCH = datetime(1970, 1, 1)
LAST_32_BIT_SECOND = 2**31 - 1
FIRST_CODE, LAST_CODE = -10, 3600


def seconds_since_1970(naive):
    return (naive - EPOCH) // timedelta(seconds=1)


def unsigned(seconds):
    return seconds % 2**32


def in_2037(naive):
    """Returns the same day and clock time in 2037; 29 February becomes the 28th."""
    return naive.replace(year=2037, day=28 if (naive.month, naive.day) == (2, 29) else naive.day)


class Zone:
    def __init__(self, name):
        self.zone = ZoneInfo(name)

    def local(self, seconds):
        """Returns the local date and time of a moment, and its offset from UTC in seconds."""
        utc = EPOCH + timedelta(seconds=seconds)
        known = utc if seconds <= LAST_32_BIT_SECOND else in_2037(utc)
        offset = known.replace(tzinfo=timezone.utc).astimezone(self.zone).utcoffset()
        return utc + offset, offset // timedelta(seconds=1)

    def offsets(self, naive):
        """Returns the offsets before and after a nearby clock change; normally both are the same."""
        known = naive if seconds_since_1970(naive) <= LAST_32_BIT_SECOND else in_2037(naive)
        both = [known.replace(tzinfo=self.zone, fold=fold).utcoffset() for fold in (0, 1)]
        return [offset // timedelta(seconds=1) for offset in both]

    def exists(self, naive):
        before, after = self.offsets(naive)
        return before >= after

    def moved(self, naive, last_offset):
        """Returns the moment of a clock time that was reached by steps."""
        before, after = self.offsets(naive)
        offset = after if before > after and last_offset == after else before
        return seconds_since_1970(naive) - offset


def to_time_t(moment):
    """Returns INVALID for moments before the epoch or beyond 32 bits."""
    return moment if moment is not None and 0 <= moment <= INVALID else INVALID


class Base:
    """A base moment and the moments around it from which the codes are computed."""

    def __init__(self, zone, seconds):
        self.zone = zone
        self.seconds = seconds
        self.local, self.offset = zone.local(seconds)
        self.date = self.local.date()
        self.year = self.local.year
        self.day_start = self.start(self.date)
        self.hour_start = self.at(self.date, time(self.local.hour, 0, 0))
        self.hour_end = self.at(self.date, time(self.local.hour, 59, 59))
        self.month_first = self.date.replace(day=1)

    def first_clock_time(self, day):
        clock = datetime.combine(day, time())
        while not self.zone.exists(clock):
            clock += timedelta(minutes=1)
        return clock

    def start(self, day):
        return to_time_t(self.zone.moved(self.first_clock_time(day), self.offset))

    def at(self, day, clock):
        naive = datetime.combine(day, clock)
        return to_time_t(self.zone.moved(naive, self.offset)) if self.zone.exists(naive) else INVALID

    def days_before(self, n):
        return to_time_t(self.zone.moved(self.local - timedelta(days=n), self.offset))

    def years_later(self, naive, n):
        last_day = calendar.monthrange(naive.year + n, naive.month)[1]
        stepped = naive.replace(year=naive.year + n, day=min(naive.day, last_day))
        return to_time_t(self.zone.moved(stepped, self.offset))

    def month_day(self, day):
        """Returns the start of a day of the month. Days below 1 mean the 1st; None if the month lacks the day."""
        wanted = self.month_first + timedelta(days=max(day, 1) - 1)
        return self.start(wanted) if wanted.month == self.month_first.month else None

    def month_end(self, month):
        """Returns the end of a month of the base year. It is later if the month's first midnight is missing."""
        if month < 1:
            return INVALID - 1
        first = self.first_clock_time(date(self.year, month, 1))
        following = first.replace(year=self.year + month // 12, month=month % 12 + 1)
        return to_time_t(self.zone.moved(following, self.offset)) - 1

    def month_end_last_year(self, month):
        return self.start(date(self.year - 1 + month // 12, month % 12 + 1, 1)) - 1

    def latest(self, moment):
        return moment - 86400 if self.seconds < unsigned(moment) else moment


def day_month_or_none(start, addend):
    return 0 if start is None else start + addend


# First and last code, and the moment for a code. The first matching row is used.
def rows(base):
    january = datetime(base.year, 1, 1)
    december = datetime(base.year, 12, 31)
    return [
        (FIRST_CODE, 0, lambda c: 0),
        (1, 1, lambda c: base.day_start),
        (2, 2, lambda c: base.at(base.date, time(23, 59, 59))),
        (3, 33, lambda c: base.start(base.date - timedelta(days=c - 2))),
        (34, 81, lambda c: base.start(base.date - timedelta(days=c - 50)) + 86399),
        (82, 131, lambda c: base.days_before(c - 100)),
        (132, 181, lambda c: day_month_or_none(base.month_day(c - 150), 0)),
        (182, 231, lambda c: day_month_or_none(base.month_day(c - 200), 86399)),
        (301, 301, lambda c: base.hour_start),
        (302, 302, lambda c: base.hour_end),
        (232, 326, lambda c: base.hour_start - (c - 302) * 3600),
        (327, 353, lambda c: base.hour_end - (c - 329) * 3600),
        (354, 374, lambda c: base.seconds - (c - 360) * 3600),
        (375, 405, lambda c: base.day_start + (c - 381) * 3600 - (c == 405)),
        (406, 434, lambda c: base.day_start + (c - 410) * 3600 + (3600 if c == 434 else 3599)),
        (435, 459, lambda c: base.latest(base.day_start + (c - 435) * 3600) - (c == 459)),
        (460, 484, lambda c: base.latest(base.day_start + (c - 460) * 3600 + 3599) + (c == 484)),
        (501, 501, lambda c: base.seconds - 60),
        (503, 503, lambda c: base.seconds - 300),
        (504, 504, lambda c: base.seconds - 600),
        (505, 505, lambda c: base.seconds - 1800),
        (1001, 1001, lambda c: base.start(base.month_first)),
        (1002, 1002, lambda c: base.month_end(base.date.month)),
        (485, 1100, lambda c: base.days_before(c - 1050)),
        (1101, 1112, lambda c: base.start(date(base.year, c - 1100, 1))),
        (1113, 1132, lambda c: base.month_end(c - 1120)),
        (1141, 1152, lambda c: base.start(date(base.year - 1, c - 1140, 1))),
        (1153, 1164, lambda c: base.month_end_last_year(c - 1152)),
        (1301, 1301, lambda c: base.start(date(base.year, 1, 1))),
        (1302, 1302, lambda c: base.at(date(base.year, 12, 31), time(23, 59, 59))),
        (1303, 1353, lambda c: base.years_later(january, 1302 - c)),
        (1401, 1451, lambda c: base.years_later(december, 1400 - c) + 86399),
        (1601, 1610, lambda c: base.years_later(base.local, c - 1600)),
        (2001, 3441, lambda c: base.day_start + (c - 2001) * 60 - (c == 3441)),
        (FIRST_CODE, LAST_CODE, lambda c: 0),
    ]


def moments(base):
    table = rows(base)
    for code in range(FIRST_CODE, LAST_CODE + 1):
        moment = next(row[2] for row in table if row[0] <= code <= row[1])
        yield code, unsigned(moment(code))


def runs(base):
    """Yields runs of codes with equidistant moments: first, last, moment of the first, step."""
    run = None
    for code, moment in moments(base):
        if run and run[0] == run[1]:
            run[3] = moment - run[2]
        if run and moment == run[2] + (code - run[0]) * run[3]:
            run[1] = code
            continue
        if run:
            yield run
        run = [code, code, moment, 0]
    yield run


# Local times of the bases. A time that exists twice is used with both offsets.
EVERYWHERE = [
    "2021-03-31 10:20:30",  # an ordinary day, the last of a month
    "2021-06-10 23:30:00",  # in the last hour of a day
    "2020-02-29 09:59:59",  # a leap day
    "2023-02-28 09:00:00",  # a February of 28 days
    "2021-12-31 23:59:59",  # the last and the first second of a year
    "2022-01-01 00:00:00",
    "1985-07-15 12:00:00",  # years before it reach before 1970
    "1970-03-01 08:00:00",  # days before it reach before 1970
    "2038-01-19 23:00:00",  # above 31 bits
    "2040-02-29 09:08:07",
]
IN_ZONES = {
    "UTC": [],
    "Asia/Shanghai": ["1986-05-04 12:00:00", "1991-09-15 12:00:00"],
    "Europe/Berlin": [
        "2021-03-28 01:30:00",  # clocks go from 02:00 to 03:00
        "2021-03-28 03:00:00",
        "2021-03-29 02:30:00",
        "2021-10-31 01:15:00",  # clocks go from 03:00 to 02:00
        "2021-10-31 02:30:00",
        "2021-10-31 18:00:00",
    ],
    "America/New_York": [
        "2021-03-13 02:30:00",  # clocks go from 02:00 to 03:00 the day after
        "2021-03-14 01:59:59",
        "2021-03-14 12:00:00",
        "2021-11-07 00:30:00",  # clocks go from 02:00 to 01:00
        "2021-11-07 01:30:00",
        "2021-11-07 23:00:00",
    ],
    "Asia/Beirut": [
        "1988-06-15 12:00:00",  # the first of the month has no midnight
        "2021-03-28 10:20:30",  # neither has this day
    ],
}
FIRST_AND_LAST = [0, INVALID]

HEAD = """\
# The moments of the relative time codes -10 to 3600, written by makeRelTimes.py.
#
# "zone" starts a time zone, "base" a base moment in it. Each line below describes consecutive codes:
# first code, last code, moment of the first, and step from each moment to the next. Text after a # is a comment.
"""


def base_moments(zone, texts):
    for text in texts:
        naive = datetime.fromisoformat(text)
        for offset in dict.fromkeys(zone.offsets(naive)):
            yield seconds_since_1970(naive) - offset
    yield from FIRST_AND_LAST


with open(Path(__file__).parent / "relTimes.txt", "w") as file:
    file.write(HEAD)
    for name, texts in IN_ZONES.items():
        zone = Zone(name)
        file.write(f"\nzone {name}\n")
        for seconds in base_moments(zone, texts + EVERYWHERE):
            base = Base(zone, seconds)
            file.write(f"base {seconds} # {base.local}\n")
            for run in runs(base):
                file.write("{} {} {} {}\n".format(*run))
