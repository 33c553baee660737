#include "gqTools.h"

#include <QCoreApplication>
#include <QFile>
#include <QTranslator>
#include <QXmlStreamReader>

#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

static_assert(std::is_same_v<decltype(&CGqTools::relTime2Str), QString (*)(int)>);

// --- Helpers --------------------------------------------------------------------

static std::string text(int code)
{
    return CGqTools::relTime2Str(code).toStdString();
}

struct CodeAndText {
    int code;
    const char* text;
};

static void expectTexts(const std::vector<CodeAndText>& rows)
{
    for (const CodeAndText& row : rows)
        EXPECT_EQ(text(row.code), row.text) << row.code;
}

// --- Every code -----------------------------------------------------------------

static const int noNumber = INT_MIN;

struct Range {
    int first;
    int last;
    const char* before;
    int zero; // the code with the number 0
    const char* after;
};

static const Range ranges[] = {
    {-10, 0, "当前时间", noNumber, ""},
    {1, 1, "当日0点", noNumber, ""},
    {2, 2, "当日终点", noNumber, ""},
    {3, 33, "", 2, "天之前的0点"},
    {34, 81, "", 50, "天之前终点"},
    {82, 131, "", 100, "天之前"},
    {132, 181, "", 150, "号"},
    {182, 231, "", 200, "号终点"},
    {232, 300, "", 302, "时0点"},
    {301, 301, "当时零点", noNumber, ""},
    {302, 302, "当时终点", noNumber, ""},
    {303, 326, "", 302, "时0点"},
    {327, 353, "", 329, "时终点"},
    {354, 374, "", 360, "时之前"},
    {375, 405, "", 380, "点"},
    {406, 434, "", 409, "点终点"},
    {435, 1000, "前", 1003, "月零点"},
    {1001, 1001, "当月0点", noNumber, ""},
    {1002, 1002, "当月终点", noNumber, ""},
    {1003, 1003, "上月0点", noNumber, ""},
    {1004, 1015, "前", 1003, "月零点"},
    {1016, 1020, "前", 1021, "月终点"},
    {1021, 1021, "上月终点", noNumber, ""},
    {1022, 1033, "前", 1021, "月终点"},
    {1034, 1040, "", 1050, "月之前"},
    {1041, 1041, "月同期起点", noNumber, ""},
    {1042, 1042, "月同期终点", noNumber, ""},
    {1043, 1062, "", 1050, "月之前"},
    {1063, 1112, "", 1100, "月0点"},
    {1113, 1132, "", 1120, "月终点"},
    {1133, 1140, "0点0分", noNumber, ""},
    {1141, 1152, "去年", 1140, "月0点"},
    {1153, 1164, "去年", 1152, "月终点"},
    {1165, 1300, "0点0分", noNumber, ""},
    {1301, 1301, "当年0点", noNumber, ""},
    {1302, 1302, "当年终点", noNumber, ""},
    {1303, 1303, "去年0点", noNumber, ""},
    {1304, 1400, "0点0分", noNumber, ""},
    {1401, 1401, "去年终点", noNumber, ""},
    {1402, 2000, "0点0分", noNumber, ""},
    {2001, 2100, "", noNumber, ""},
};

TEST(RelTime2Str, hasATextForEachCode)
{
    int next = -10;
    for (const Range& range : ranges) {
        ASSERT_EQ(range.first, next) << "the table must not omit a code";
        next = range.last + 1;
        for (int code = range.first; code <= range.last; ++code) {
            const std::string number = range.zero == noNumber ? "" : std::to_string(code - range.zero);
            EXPECT_EQ(text(code), range.before + number + range.after) << code;
        }
    }
}

TEST(RelTime2Str, returnsThePresentForAllCodesUpTo0)
{
    expectTexts({{0, "当前时间"}, {-1, "当前时间"}, {INT_MIN + 1, "当前时间"}, {INT_MIN, "当前时间"}});
}

TEST(RelTime2Str, isEmptyAbove2000)
{
    expectTexts({{2000, "0点0分"}, {2001, ""}, {2601, ""}, {3441, ""}, {65536 + 1, ""}, {INT_MAX, ""}});
}

// --- The families, character by character ---------------------------------------

TEST(RelTime2Str, countsDaysBefore)
{
    expectTexts({{1, "当日0点"},
                 {2, "当日终点"},
                 {3, "1天之前的0点"},
                 {33, "31天之前的0点"},
                 {34, "-16天之前终点"},
                 {50, "0天之前终点"},
                 {51, "1天之前终点"},
                 {100, "0天之前"},
                 {131, "31天之前"}});
}

TEST(RelTime2Str, countsDaysOfAnyMonth)
{
    expectTexts({{132, "-18号"},
                 {150, "0号"},
                 {151, "1号"},
                 {181, "31号"},
                 {182, "-18号终点"},
                 {200, "0号终点"},
                 {201, "1号终点"},
                 {231, "31号终点"}});
}

TEST(RelTime2Str, countsHoursBefore)
{
    expectTexts({{232, "-70时0点"},
                 {300, "-2时0点"},
                 {301, "当时零点"}, // no number for this hour
                 {302, "当时终点"},
                 {303, "1时0点"},
                 {326, "24时0点"},
                 {327, "-2时终点"},
                 {329, "0时终点"},
                 {330, "1时终点"},
                 {354, "-6时之前"},
                 {360, "0时之前"},
                 {374, "14时之前"}});
}

TEST(RelTime2Str, countsHoursOfTheDayOneTooHigh)
{
    expectTexts({{375, "-5点"},
                 {380, "0点"},
                 {381, "1点"}, // 00:00:00
                 {405, "25点"},
                 {406, "-3点终点"},
                 {410, "1点终点"}, // 00:59:59
                 {434, "25点终点"}});
}

TEST(RelTime2Str, saysMonthsForHoursMinutesAndDays)
{
    expectTexts({{435, "前-568月零点"}, {484, "前-519月零点"}, {485, "前-518月零点"}, {501, "前-502月零点"},
                 {1000, "前-3月零点"},  {1003, "上月0点"},     {1004, "前1月零点"},   {1015, "前12月零点"},
                 {1016, "前-5月终点"},  {1020, "前-1月终点"},  {1021, "上月终点"},    {1022, "前1月终点"},
                 {1033, "前12月终点"},  {1034, "-16月之前"},   {1040, "-10月之前"},   {1041, "月同期起点"},
                 {1042, "月同期终点"},  {1043, "-7月之前"},    {1050, "0月之前"},     {1051, "1月之前"},
                 {1062, "12月之前"},    {1063, "-37月0点"},    {1100, "0月0点"}});
}

TEST(RelTime2Str, countsMonthsOfTheYearAndOfTheYearBefore)
{
    expectTexts({{1001, "当月0点"},
                 {1002, "当月终点"},
                 {1101, "1月0点"},
                 {1112, "12月0点"},
                 {1113, "-7月终点"},
                 {1120, "0月终点"},
                 {1121, "1月终点"},
                 {1132, "12月终点"},
                 {1140, "0点0分"},
                 {1141, "去年1月0点"},
                 {1152, "去年12月0点"},
                 {1153, "去年1月终点"},
                 {1164, "去年12月终点"},
                 {1165, "0点0分"}});
}

TEST(RelTime2Str, namesOnlyThePreviousYear)
{
    expectTexts({{1301, "当年0点"},
                 {1302, "当年终点"},
                 {1303, "去年0点"},
                 {1304, "0点0分"},
                 {1401, "去年终点"},
                 {1402, "0点0分"},
                 {1601, "0点0分"}});
}

// --- Translation ----------------------------------------------------------------

// An application object, which Qt needs for translators.
class RelTime2StrTranslated : public testing::Test {
    int argumentCount = 1;
    char name[6] = "tests";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
};

// Translates one piece and records all requests.
class OnePieceTranslator : public QTranslator {
public:
    OnePieceTranslator(const char* source, const char* translation) : known(source), words(translation) {}

    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* source, const char* disambiguation, int n) const override
    {
        EXPECT_STREQ(context, "QObject");
        EXPECT_EQ(disambiguation, nullptr);
        EXPECT_EQ(n, -1);
        asked.append(source);
        return known == source ? QString(words) : QString();
    }

    mutable QStringList asked;

private:
    QString known;
    const char* words;
};

TEST_F(RelTime2StrTranslated, translatesEachPieceSeparately)
{
    OnePieceTranslator translator("月0点", " (month)");
    QCoreApplication::installTranslator(&translator);
    expectTexts({{1141, "去年1 (month)"}, {1101, "1 (month)"}, {1153, "去年1月终点"}, {1001, "当月0点"}});
    translator.asked.sort(); // pieces of one text may be requested in any order
    EXPECT_EQ(translator.asked.join(' ').toStdString(), "去年 去年 当月0点 月0点 月0点 月终点");
}

TEST_F(RelTime2StrTranslated, translatesTheSame32PiecesForAllCodes)
{
    OnePieceTranslator translator("", "");
    QCoreApplication::installTranslator(&translator);
    for (int code = -10; code <= 2000; ++code)
        text(code); // the translator checks the requests
    translator.asked.removeDuplicates();
    EXPECT_EQ(translator.asked.size(), 32);
}

TEST_F(RelTime2StrTranslated, insertsNoNumberIntoATranslation)
{
    OnePieceTranslator translator("天之前", " %n %1 days");
    QCoreApplication::installTranslator(&translator);
    expectTexts({{101, "1 %n %1 days"}});
}

TEST_F(RelTime2StrTranslated, isEnglishWithTheLibrarysTranslation)
{
    QTranslator english;
    ASSERT_TRUE(english.load("gqLib_en", GQLIB_TRANSLATIONS));
    QCoreApplication::installTranslator(&english);
    expectTexts({{0, "now"},
                 {1, "start of the day"},
                 {3, "1 day(s) before, at 00:00"},
                 {34, "-16 day(s) before, at its end"},
                 {101, "1 day(s) before"},
                 {155, "5 (day of the month)"},
                 {205, "5 (day of the month), at its end"},
                 {303, "1 hour(s) before, at its start"},
                 {381, "1 o'clock"},
                 {410, "1 o'clock, end of the hour"},
                 {435, "back -568 (month), at its start"},
                 {1022, "back 1 (month), at its end"},
                 {1051, "1 month(s) before"},
                 {1141, "last year, 1 (month), at its start"},
                 {1302, "end of the year"},
                 {2000, "00:00"},
                 {2001, ""}});

    QCoreApplication::removeTranslator(&english);
    expectTexts({{155, "5号"}, {1141, "去年1月0点"}});
}

TEST_F(RelTime2StrTranslated, isEnglishForAllCodes)
{
    QTranslator english;
    ASSERT_TRUE(english.load("gqLib_en", GQLIB_TRANSLATIONS));
    QCoreApplication::installTranslator(&english);
    for (int code = -10; code <= 2100; ++code) {
        for (const QChar letter : CGqTools::relTime2Str(code))
            ASSERT_LT(letter.unicode(), 0x80) << text(code);
        EXPECT_EQ(text(code).empty(), code > 2000) << code;
    }
}

// Checks the translation source for faults that lrelease accepts silently.
TEST(RelTimeTranslation, isComplete)
{
    QFile file(GQLIB_TRANSLATION_SOURCES "/gqLib_en.ts");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&file);
    QStringList contexts;
    QStringList sources;
    int translations = 0;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("name"))
            contexts.append(xml.readElementText());
        else if (xml.name() == QLatin1String("source"))
            sources.append(xml.readElementText());
        else if (xml.name() == QLatin1String("translation")) {
            ++translations;
            EXPECT_TRUE(xml.attributes().isEmpty()) << "unfinished: " << sources.last().toStdString();
            EXPECT_FALSE(xml.readElementText().trimmed().isEmpty()) << sources.last().toStdString();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    EXPECT_EQ(contexts, QStringList{"QObject"});
    EXPECT_EQ(sources.size(), 32);
    EXPECT_EQ(sources.removeDuplicates(), 0);
    EXPECT_EQ(translations, 32);
}
