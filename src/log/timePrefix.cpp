#include "timePrefix.h"

#include <QDateTime>

#include <cstdio>
#include <ctime>

namespace gqdb {

static void putDigits(int number, char* at)
{
    at[0] = static_cast<char>('0' + number / 10);
    at[1] = static_cast<char>('0' + number % 10);
}

// Uses Qt for the first time of a batch, because Qt then checks whether the time zone has changed, and for leap seconds
// and times from the end of 2037 on, which Qt converts by its own rules. For all others Qt returns the time of
// localtime_r() too.
void TimePrefix::setClock(unsigned int seconds)
{
    static const unsigned int qtRules = 2145916799; // 2037-12-31 23:59:59 UTC
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm clock;
    if (isFirst || seconds >= qtRules || localtime_r(&time, &clock) == nullptr || clock.tm_sec > 59) {
        const QTime local = QDateTime::fromSecsSinceEpoch(seconds).time();
        clock.tm_hour = local.hour();
        clock.tm_min = local.minute();
        clock.tm_sec = local.second();
    }
    putDigits(clock.tm_hour, text + 1);
    putDigits(clock.tm_min, text + 4);
    putDigits(clock.tm_sec, text + 7);
    clockSeconds = seconds;
    isFirst = false;
}

void TimePrefix::append(unsigned int seconds, unsigned int milliseconds, QByteArray& line)
{
    if (isFirst || seconds != clockSeconds)
        setClock(seconds);
    int size = 15;
    if (milliseconds < 1000) {
        text[10] = static_cast<char>('0' + milliseconds / 100);
        putDigits(static_cast<int>(milliseconds % 100), text + 11);
        text[13] = '>';
        text[14] = ' ';
    } else {
        size = 10 + std::snprintf(text + 10, sizeof text - 10, "%03d> ", static_cast<int>(milliseconds));
    }
    line.append(text, size);
}

} // namespace gqdb
