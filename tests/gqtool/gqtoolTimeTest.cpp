// gqtool time: what it prints for a code, its options, its list of all families.

#include "support/gqtoolProgram.h"
#include "support/timeZone.h"

#include <QRegularExpression>

#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

static Outcome timeInBerlin(const QStringList& words)
{
    return run(QStringList{"time", "--zone", "Europe/Berlin", "--base", "2021-03-31 10:20:30"} + words);
}

// What follows a word at the start of a line.
static std::string field(const Outcome& outcome, const QString& word)
{
    for (const QString& line : outcome.output.split('\n')) {
        if (line.startsWith(word + ' '))
            return line.mid(word.size()).trimmed().toStdString();
    }
    return "no line " + word.toStdString() + ": " + outcome.errors.toStdString();
}

// --- One code ---------------------------------------------------------------------------------------------------

TEST(GqtoolTime, printsMomentAndTextsOfACode)
{
    const Outcome outcome = timeInBerlin({"155"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.toStdString(), "code     155\n"
                                            "base     2021-03-31 10:20:30+02:00 (1617178830)\n"
                                            "moment   2021-03-05 00:00:00+01:00 (1614898800)\n"
                                            "text     5号\n"
                                            "english  5 (day of the month)\n");
}

TEST(GqtoolTime, acceptsOptionsAfterTheCode)
{
    const Outcome outcome = run({"time", "1", "--base", "1617178830", "--zone", "UTC"});
    EXPECT_EQ(field(outcome, "moment"), "2021-03-31 00:00:00+00:00 (1617148800)");
}

TEST(GqtoolTime, acceptsANegativeCode)
{
    const Outcome outcome = timeInBerlin({"-5"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(field(outcome, "code"), "-5");
    EXPECT_EQ(field(outcome, "moment"), "none (0)");
    EXPECT_EQ(field(outcome, "text"), "当前时间");
    EXPECT_EQ(timeInBerlin({"--", "-5"}).output, outcome.output);
}

TEST(GqtoolTime, acceptsCodesOfAllIntegers)
{
    EXPECT_EQ(field(timeInBerlin({"--", "-2147483648"}), "text"), "当前时间");
    EXPECT_EQ(field(timeInBerlin({"2147483647"}), "moment"), "none (0)");
    EXPECT_EQ(field(timeInBerlin({"0x9b"}), "code"), "155");
}

TEST(GqtoolTime, printsNoneIfACodeHasNoMoment)
{
    EXPECT_EQ(field(timeInBerlin({"1133"}), "moment"), "none (0)");
    EXPECT_EQ(field(timeInBerlin({"1113"}), "moment"), "none (4294967294)");
    EXPECT_EQ(field(timeInBerlin({"--base", "0", "3"}), "moment"), "none (4294967295)");
}

TEST(GqtoolTime, printsAnEmptyTextIfThereIsNone)
{
    EXPECT_EQ(field(timeInBerlin({"2001"}), "text"), "");
    EXPECT_EQ(field(timeInBerlin({"2001"}), "english"), "");
}

// --- Bases and zones --------------------------------------------------------------------------------------------

TEST(GqtoolTime, acceptsTheBaseAsSecondsOrAsText)
{
    for (const char* base : {"1617178830", "2021-03-31 10:20:30", "2021-03-31T10:20:30", "2021-03-31 08:20:30Z"}) {
        const Outcome outcome = run({"time", "360", "--zone", "Europe/Berlin", "--base", base});
        EXPECT_EQ(field(outcome, "base"), "2021-03-31 10:20:30+02:00 (1617178830)") << base;
        EXPECT_EQ(field(outcome, "moment"), "2021-03-31 10:20:30+02:00 (1617178830)") << base;
    }
}

TEST(GqtoolTime, acceptsBasesAbove31Bits)
{
    const Outcome outcome = run({"time", "1", "--zone", "UTC", "--base", "2147483648"});
    EXPECT_EQ(field(outcome, "base"), "2038-01-19 03:14:08+00:00 (2147483648)");
    EXPECT_EQ(field(outcome, "moment"), "2038-01-19 00:00:00+00:00 (2147472000)");
    EXPECT_EQ(field(run({"time", "1", "--zone", "UTC", "--base", "4294967295"}), "moment"),
              "2106-02-07 00:00:00+00:00 (4294944000)");
}

TEST(GqtoolTime, isBasedOnThePresentByDefault)
{
    const long long before = std::time(nullptr);
    const Outcome outcome = run({"time", "360", "--zone", "UTC"});
    const std::string moment = field(outcome, "moment"); // which ends with the seconds in brackets
    const long long seconds = std::atoll(moment.c_str() + moment.find('(') + 1);
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, std::time(nullptr));
}

TEST(GqtoolTime, readsTheBaseInTheZone)
{
    struct Zone {
        const char* name;
        const char* base;
    };
    for (const Zone& zone : {Zone{"UTC", "2021-03-31 10:20:30+00:00 (1617186030)"},
                             Zone{"Asia/Shanghai", "2021-03-31 10:20:30+08:00 (1617157230)"},
                             Zone{"America/New_York", "2021-03-31 10:20:30-04:00 (1617200430)"},
                             Zone{"Asia/Kathmandu", "2021-03-31 10:20:30+05:45 (1617165330)"}}) {
        const Outcome outcome = run({"time", "1", "--base", "2021-03-31 10:20:30", "--zone", zone.name});
        EXPECT_EQ(field(outcome, "base"), zone.base);
        EXPECT_EQ(field(outcome, "moment").substr(0, 19), "2021-03-31 00:00:00") << zone.name;
    }
}

TEST(GqtoolTime, isInTheSystemsZoneByDefault)
{
    const TimeZone zone("Asia/Kathmandu"); // which the program inherits
    EXPECT_EQ(field(run({"time", "1", "--base", "1617165330"}), "base"), "2021-03-31 10:20:30+05:45 (1617165330)");
}

// --- The list ---------------------------------------------------------------------------------------------------

TEST(GqtoolTime, listsFamiliesWithFirstAndLastMoment)
{
    const Outcome outcome = timeInBerlin({"--list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(field(outcome, "base"), "2021-03-31 10:20:30+02:00 (1617178830)");
    EXPECT_TRUE(outcome.output.contains("\n301: start of the hour\n"
                                        "   301  2021-03-31 10:00:00+02:00 (1617177600)  当时零点\n"));
    EXPECT_TRUE(outcome.output.contains("\n151 to 181: start of day N of the month (code - 150)\n"
                                        "   151  2021-03-01 00:00:00+01:00 (1614553200)  1号\n"
                                        "   181  2021-03-31 00:00:00+02:00 (1617141600)  31号\n"))
        << outcome.output.toStdString();
    EXPECT_TRUE(outcome.output.endsWith("\nAll other codes have no moment (0).\n"));
}

// The codes that no family of the list holds, as ranges.
static QStringList codesLeftOut(const QString& list)
{
    static const QRegularExpression head("^(\\d+)(?: to (\\d+))?: ", QRegularExpression::MultilineOption);
    QStringList gaps;
    int next = 1;
    for (auto matches = head.globalMatch(list); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        const int first = match.captured(1).toInt();
        if (first != next)
            gaps.append(QString("%1 to %2").arg(next).arg(first - 1));
        next = (match.captured(2).isEmpty() ? first : match.captured(2).toInt()) + 1;
    }
    return gaps << QString("%1 and above").arg(next);
}

TEST(GqtoolTime, listsAllCodesThatHaveAMoment)
{
    EXPECT_EQ(codesLeftOut(timeInBerlin({"--list"}).output).join(", ").toStdString(),
              "1133 to 1140, 1165 to 1300, 1354 to 1400, 1452 to 1600, 1611 to 2000, 3442 and above");
}

// --- Wrong usage ------------------------------------------------------------------------------------------------

TEST(GqtoolTime, exitsWith2OnWrongUsage)
{
    struct Usage {
        QStringList words;
        const char* message;
    };
    for (const Usage& usage :
         {Usage{{}, "one CODE or --list is required"}, Usage{{"1", "2"}, "unexpected argument '2'"},
          Usage{{"1", "--list"}, "one CODE or --list is required"},
          Usage{{"x"}, "CODE must be a 4-byte integer, got 'x'"},
          Usage{{"1.5"}, "CODE must be a 4-byte integer, got '1.5'"},
          Usage{{"2147483648"}, "CODE must be a 4-byte integer, got '2147483648'"},
          Usage{{"1", "--zone", "Mars"}, "--zone must be a known time zone, got 'Mars'"},
          Usage{{"1", "--zone="}, "--zone must be a known time zone, got ''"},
          Usage{{"1", "--zone", ""}, "--zone must be a known time zone, got ''"},
          Usage{{"1", "--base", "yesterday"}, "--base must be a moment from 1970 to 2106, got 'yesterday'"},
          Usage{{"1", "--base", "-1"}, "--base must be a moment from 1970 to 2106, got '-1'"},
          Usage{{"1", "--base", "4294967296"}, "--base must be a moment from 1970 to 2106, got '4294967296'"},
          Usage{{"1", "--base", "1969-12-31 23:59:59Z"},
                "--base must be a moment from 1970 to 2106, got '1969-12-31 23:59:59Z'"},
          Usage{{"1", "--base", "2106-02-07 06:28:16Z"},
                "--base must be a moment from 1970 to 2106, got '2106-02-07 06:28:16Z'"},
          Usage{{"1", "--base"}, "--base requires TIME"}, Usage{{"1", "--nonsense"}, "unknown option '--nonsense'"}}) {
        SCOPED_TRACE(usage.words.join(' ').toStdString());
        const Outcome outcome = run(QStringList{"time"} + usage.words);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors.toStdString(),
                  std::string("gqtool: ") + usage.message + "\ngqtool: see 'gqtool time --help'\n");
    }
}

TEST(GqtoolTime, refusesALocalTimeThatTheZoneLacks)
{
    const Outcome outcome = run({"time", "1", "--zone", "Europe/Berlin", "--base", "2021-03-28 02:30:00"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.output, "");
}

TEST(GqtoolTime, readsTheDaysOnWhichClocksChange)
{
    struct Moment {
        const char* text;
        const char* secondsSince1970; // as `date -d` prints them
    };
    for (const Moment& moment :
         {Moment{"2021-03-28", "(1616886000)"}, Moment{"2021-03-28 03:00", "(1616893200)"},
          Moment{"2021-03-28 24:00:00", "(1616968800)"}, Moment{"2021-03-28 02:30:00Z", "(1616898600)"}}) {
        SCOPED_TRACE(moment.text);
        const Outcome outcome = run({"time", "1", "--zone", "Europe/Berlin", "--base", moment.text});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_TRUE(outcome.output.contains(moment.secondsSince1970)) << outcome.output.toStdString();
    }
}
