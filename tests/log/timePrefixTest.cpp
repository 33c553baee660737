// The time in front of a line beside what QDateTime makes of it, in many zones and at their clock changes.

#include "support/chance.h"
#include "support/logFolder.h"
#include "support/timeZone.h"

#include <QDateTime>

#include <algorithm>
#include <ctime>
#include <random>
#include <string>
#include <vector>

using Seconds = std::vector<unsigned int>;

static long utcOffset(unsigned int seconds)
{
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm local;
    return localtime_r(&time, &local) == nullptr ? 0 : local.tm_gmtoff;
}

// The first second in which each new offset from UTC holds, of those that hold at a midnight.
static Seconds clockChanges()
{
    static const unsigned int day = 86400;
    Seconds changes;
    for (unsigned int before = 0; before < 0xFFFFFFFFu - day; before += day) {
        if (utcOffset(before) == utcOffset(before + day))
            continue;
        unsigned int low = before;
        unsigned int high = before + day;
        while (high - low > 1) {
            const unsigned int middle = low + (high - low) / 2;
            (utcOffset(middle) == utcOffset(low) ? low : high) = middle;
        }
        changes.push_back(high);
    }
    return changes;
}

static Seconds around(const Seconds& moments)
{
    Seconds all;
    for (const unsigned int moment : moments) {
        for (const int offset : {-3601, -3600, -61, -60, -31, -30, -2, -1, 0, 1, 2, 29, 30, 31, 59, 60, 3599, 3600})
            all.push_back(moment + static_cast<unsigned int>(offset));
    }
    return all;
}

static QByteArray plainPrefix(unsigned int seconds, unsigned int milliseconds)
{
    const QTime clock = QDateTime::fromSecsSinceEpoch(seconds).time();
    return QString::asprintf("<%02d:%02d:%02d.%03d> ", clock.hour(), clock.minute(), clock.second(),
                             static_cast<int>(milliseconds))
        .toUtf8();
}

class FileLogTimes : public LogFolder {
protected:
    void expectPlainPrefixes(const Seconds& times)
    {
        static const unsigned int oddMilliseconds[] = {0, 9, 10, 99, 100, 999, 1000, 12345, 2147483648u, 4294967295u};
        QList<CGqFileLog::LogData> batch;
        std::string expected;
        for (const unsigned int seconds : times) {
            const unsigned int milliseconds =
                chance.once(2) ? oddMilliseconds[chance.below(10)] : static_cast<unsigned int>(chance.below(1000));
            batch.append({std::to_string(seconds).c_str(), seconds, milliseconds});
            expected += plainPrefix(seconds, milliseconds).toStdString() + std::to_string(seconds) + "\n";
        }
        OpenFileLog log;
        log.init(path("log"));
        ASSERT_TRUE(log.saveDatas(batch));
        const char* name = batch.size() < 30000 ? "log" : "log.bak";
        const std::string seen = content(name);
        const auto difference = std::mismatch(seen.begin(), seen.end(), expected.begin(), expected.end());
        const auto at = static_cast<size_t>(std::max<long>(difference.first - seen.begin() - 20, 0));
        EXPECT_EQ(seen.substr(at, 60), expected.substr(at, 60));
        EXPECT_EQ(seen.size(), expected.size());
        ASSERT_TRUE(QFile::remove(path(name)));
    }

    Chance chance{21};
};

TEST_F(FileLogTimes, areThoseOfQDateTimeInEveryZone)
{
    const Seconds ends = {0,           1,           2145916798u, 2145916799u, 2145916800u, 2147483646u,
                          2147483647u, 2147483648u, 4102444799u, 4294967294u, 4294967295u};
    for (const char* name :
         {"UTC0", "Europe/Berlin", "Europe/Dublin", "America/New_York", "America/St_Johns", "America/Sao_Paulo",
          "Africa/Monrovia", // 44 minutes and 30 seconds west until 1972
          "Africa/Casablanca", "Asia/Kolkata", "Asia/Kathmandu", "Asia/Shanghai", "Asia/Tehran",
          "Australia/Lord_Howe", // half an hour of summer time
          "Pacific/Apia",        // a day left out
          "Pacific/Kiritimati", "CET-1CEST,M3.5.0,M10.5.0/3", "<+00>0:00:30", "no zone"}) {
        SCOPED_TRACE(name);
        const TimeZone zone(name);
        Seconds times = around(clockChanges());
        for (int i = 0; i < 1000; ++i)
            times.push_back(chance.word());
        times.insert(times.end(), ends.begin(), ends.end());
        expectPlainPrefixes(times);
        std::sort(times.begin(), times.end());
        expectPlainPrefixes(times);
        std::shuffle(times.begin(), times.end(), std::mt19937(22));
        expectPlainPrefixes(times);
    }
}

TEST_F(FileLogTimes, areThoseOfQDateTimeInASummerOfHalfAMinute)
{
    const TimeZone zone("WIN0SUM-1,J60/2,J60/3:00:30"); // from 02:00:00 to 02:00:30 of March 1st in winter time
    Seconds times;
    for (unsigned int seconds = 1677636000 - 90; seconds < 1677636000 + 90; ++seconds) // 2023-03-01 02:00:00 UTC
        times.push_back(seconds);
    expectPlainPrefixes(times);
    EXPECT_EQ(plainPrefix(1677636000 + 29, 0), "<03:00:29.000> ");
    EXPECT_EQ(plainPrefix(1677636000 + 30, 0), "<02:00:30.000> ");
}

TEST_F(FileLogTimes, areThoseOfQDateTimeAroundALeapSecond)
{
    const TimeZone zone("right/Europe/Berlin");
    Seconds times;
    for (unsigned int seconds = 1483228826 - 40; seconds < 1483228826 + 40; ++seconds) // 2016-12-31 23:59:60 UTC
        times.push_back(seconds);
    expectPlainPrefixes(times);
}

TEST_F(FileLogTimes, followAZoneThatChangesBetweenTwoBatches)
{
    const TimeZone zone("UTC0");
    OpenFileLog log;
    log.init(path("log"));
    ASSERT_TRUE(log.saveDatas({{"x", 0, 0}, {"x", 60, 0}}));
    setenv("TZ", "EST5", 1); // and no tzset()
    ASSERT_TRUE(log.saveDatas({{"x", 0, 0}, {"x", 60, 0}}));
    EXPECT_EQ(content("log"), "<00:00:00.000> x\n"
                              "<00:01:00.000> x\n"
                              "<19:00:00.000> x\n"
                              "<19:01:00.000> x\n");
}
