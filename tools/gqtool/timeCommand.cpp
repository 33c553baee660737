#include "closestName.h"
#include "command.h"
#include "commandLine.h"
#include "integer.h"
#include "shared/console.h"
#include "shared/text.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTimeZone>
#include <QTranslator>

#include <climits>
#include <ctime>
#include <gqTools.h>

// --- The number line ----------------------------------------------------------------------------------------------

struct Family {
    int first;
    int last;
    const char* meaning; // N is the number in the brackets
};

static const Family families[] = {
    {1, 1, QT_TRANSLATE_NOOP("Text", "start of the day")},
    {2, 2, QT_TRANSLATE_NOOP("Text", "end of the day, 23:59:59")},
    {3, 33, QT_TRANSLATE_NOOP("Text", "start of the day N days before (code - 2)")},
    {34, 81, QT_TRANSLATE_NOOP("Text", "end of the day N days before (code - 50)")},
    {82, 131, QT_TRANSLATE_NOOP("Text", "same time N days before (code - 100)")},
    {132, 150, QT_TRANSLATE_NOOP("Text", "start of the 1st of the month")},
    {151, 181, QT_TRANSLATE_NOOP("Text", "start of day N of the month (code - 150)")},
    {182, 200, QT_TRANSLATE_NOOP("Text", "end of the 1st of the month")},
    {201, 231, QT_TRANSLATE_NOOP("Text", "end of day N of the month (code - 200)")},
    {232, 300, QT_TRANSLATE_NOOP("Text", "start of the hour N hours ahead (302 - code)")},
    {301, 301, QT_TRANSLATE_NOOP("Text", "start of the hour")},
    {302, 302, QT_TRANSLATE_NOOP("Text", "end of the hour")},
    {303, 326, QT_TRANSLATE_NOOP("Text", "start of the hour N hours before (code - 302)")},
    {327, 353, QT_TRANSLATE_NOOP("Text", "end of the hour N hours before (code - 329)")},
    {354, 374, QT_TRANSLATE_NOOP("Text", "N hours before (code - 360)")},
    {375, 405, QT_TRANSLATE_NOOP("Text", "start of hour N of the day (code - 381)")},
    {406, 434, QT_TRANSLATE_NOOP("Text", "end of hour N of the day (code - 410)")},
    {435, 459, QT_TRANSLATE_NOOP("Text", "latest start of hour N up to the base (code - 435)")},
    {460, 484, QT_TRANSLATE_NOOP("Text", "latest end of hour N up to the base (code - 460)")},
    {485, 500, QT_TRANSLATE_NOOP("Text", "same time N days ahead (1050 - code)")},
    {501, 501, QT_TRANSLATE_NOOP("Text", "1 minute before")},
    {502, 502, QT_TRANSLATE_NOOP("Text", "same time N days ahead (1050 - code)")},
    {503, 503, QT_TRANSLATE_NOOP("Text", "5 minutes before")},
    {504, 504, QT_TRANSLATE_NOOP("Text", "10 minutes before")},
    {505, 505, QT_TRANSLATE_NOOP("Text", "30 minutes before")},
    {506, 1000, QT_TRANSLATE_NOOP("Text", "same time N days ahead (1050 - code)")},
    {1001, 1001, QT_TRANSLATE_NOOP("Text", "start of the month")},
    {1002, 1002, QT_TRANSLATE_NOOP("Text", "end of the month")},
    {1003, 1049, QT_TRANSLATE_NOOP("Text", "same time N days ahead (1050 - code)")},
    {1050, 1100, QT_TRANSLATE_NOOP("Text", "same time N days before (code - 1050)")},
    {1101, 1112, QT_TRANSLATE_NOOP("Text", "start of month N of the year (code - 1100)")},
    {1113, 1120, QT_TRANSLATE_NOOP("Text", "none: the end of a month before January")},
    {1121, 1132, QT_TRANSLATE_NOOP("Text", "end of month N of the year (code - 1120)")},
    {1141, 1152, QT_TRANSLATE_NOOP("Text", "start of month N of the year before (code - 1140)")},
    {1153, 1164, QT_TRANSLATE_NOOP("Text", "end of month N of the year before (code - 1152)")},
    {1301, 1301, QT_TRANSLATE_NOOP("Text", "start of the year")},
    {1302, 1302, QT_TRANSLATE_NOOP("Text", "end of the year, 23:59:59")},
    {1303, 1353, QT_TRANSLATE_NOOP("Text", "start of the year N years before (code - 1302)")},
    {1401, 1451, QT_TRANSLATE_NOOP("Text", "end of the year N years before (code - 1400)")},
    {1601, 1610, QT_TRANSLATE_NOOP("Text", "same time N years ahead (code - 1600)")},
    {2001, 3441, QT_TRANSLATE_NOOP("Text", "minute N of the day (code - 2001)")},
};

// --- Texts --------------------------------------------------------------------------------------------------------

static QString localText(unsigned int seconds)
{
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(seconds);
    const QString zone = moment.toOffsetFromUtc(moment.offsetFromUtc()).toString("t"); // "UTC", or "UTC+08:00"
    const QString offset = zone == "UTC" ? QString("+00:00") : zone.mid(3);
    return moment.toString("yyyy-MM-dd hh:mm:ss") + offset;
}

static QString momentText(unsigned int seconds)
{
    return QString("%1 (%2)").arg(localText(seconds)).arg(seconds);
}

// 0 could also be 1970-01-01 00:00:00.
static bool isNone(unsigned int moment)
{
    return moment == 0 || moment >= 0xFFFFFFFE;
}

static QString codeText(int code, unsigned int base)
{
    const unsigned int moment = CGqTools::calcRelTime(code, static_cast<int>(base));
    return isNone(moment) ? Text::tr("none (%1)").arg(moment) : momentText(moment);
}

static Text englishText(int code)
{
    QTranslator english;
    if (!english.load("gqLib_en", QCoreApplication::applicationDirPath() + "/" GQTOOL_TRANSLATIONS))
        return Text::tr("(gqLib_en.qm not found)");
    QCoreApplication::installTranslator(&english);
    return Text::untranslated(CGqTools::relTime2Str(code));
}

static void printField(const QString& name, const QString& value)
{
    printLine(padded(name, 9) + value);
}

static void printCode(int code, unsigned int base)
{
    printField(Text::tr("code"), QString::number(code));
    printField(Text::tr("base"), momentText(base));
    printField(Text::tr("moment"), codeText(code, base));
    printField(Text::tr("text"), CGqTools::relTime2Str(code));
    printField(Text::tr("english"), englishText(code));
}

static void printEnd(int code, unsigned int base)
{
    printLine(QString("  %1  %2  %3").arg(code, 4).arg(padded(codeText(code, base), 38), CGqTools::relTime2Str(code)));
}

static void printNumberLine(unsigned int base)
{
    printLine(Text::tr("base") + QString("  ") + momentText(base));
    for (const Family& family : families) {
        const bool isOneCode = family.first == family.last;
        const Text meaning = Text::tr(family.meaning);
        printLine(isOneCode ? Text::tr("%1: %2").arg(family.first).arg(meaning)
                            : Text::tr("%1 to %2: %3").arg(family.first).arg(family.last).arg(meaning));
        printEnd(family.first, base);
        if (!isOneCode)
            printEnd(family.last, base);
    }
    printLine(Text::tr("All other codes have no moment (0)."));
}

// --- JSON ---------------------------------------------------------------------------------------------------------

static QJsonObject jsonOf(int code, unsigned int base)
{
    const unsigned int moment = CGqTools::calcRelTime(code, static_cast<int>(base));
    return {{"code", code},
            {"base", static_cast<qint64>(base)},
            {"moment", isNone(moment) ? QJsonValue() : QJsonValue(static_cast<qint64>(moment))},
            {"local", isNone(moment) ? QJsonValue() : QJsonValue(localText(moment))},
            {"text", CGqTools::relTime2Str(code)}};
}

static void printCodeAsJson(int code, unsigned int base)
{
    QJsonObject object = jsonOf(code, base);
    object["english"] = englishText(code).english();
    printJson(object);
}

static void printNumberLineAsJson(unsigned int base)
{
    for (const Family& family : families)
        printJson(
            {{"meaning", family.meaning}, {"first", jsonOf(family.first, base)}, {"last", jsonOf(family.last, base)}});
}

// --- The command --------------------------------------------------------------------------------------------------

// Qt 6.7 and later move a local time that a change of clocks skips, earlier versions refuse it.
static bool hasLocalTime(const QDateTime& moment, const QString& text)
{
    if (!moment.isValid() || moment.timeSpec() != Qt::LocalTime)
        return moment.isValid();
    const QDateTime clock = QDateTime::fromString(text + (text.contains('T') ? "Z" : "T00:00Z"), Qt::ISODate);
    return moment.date() == clock.date() && moment.time() == clock.time();
}

// Seconds since 1970, or a local date and time.
static bool readMoment(const QString& text, unsigned int& seconds)
{
    bool isNumber = false;
    seconds = text.toUInt(&isNumber);
    if (isNumber)
        return true;
    const QString isoText = QString(text).replace(' ', 'T');
    const QDateTime moment = QDateTime::fromString(isoText, Qt::ISODate);
    const qint64 since1970 = hasLocalTime(moment, isoText) ? moment.toSecsSinceEpoch() : -1;
    seconds = static_cast<unsigned int>(since1970);
    return since1970 >= 0 && since1970 <= UINT_MAX;
}

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Prints the moment and the text of a relative time code.\n"
    "\n"
    "A moment is printed as local time and, in brackets, as seconds since 1970; \"none\" means that the code has no\n"
    "moment. The ranges of codes for the texts differ in some places from those for the moments.");

int runTime(const QStringList& arguments)
{
    CommandLine line(Text::tr(description));
    const Option code = line.optionalArgument("CODE", Text::tr("the code"));
    const Option list =
        line.flag("list", Text::tr("print all families of codes with their first and last moment and text"));
    const Option base = line.text(
        "base",
        Text::tr("count from TIME, in seconds since 1970 or as \"2021-03-31 10:20:30\" in local time (default: now)"),
        "TIME");
    const Option zone =
        line.text("zone", Text::tr("use time zone ZONE, for example Europe/Berlin (default: the system's)"), "ZONE");
    const Option json = line.flag("json", Text::tr("print JSON: one object for the code, or one per family of codes"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    if (code.isSet() == list.isSet())
        return usageError(Text::tr("one CODE or --list is required"));
    int number = 0;
    if (code.isSet() && !readInt(code.text(), INT_MIN, INT_MAX, number))
        return usageError(Text::tr("CODE must be a 4-byte integer, got '%1'").arg(code.text()));
    if (zone.isSet()) {
        const QByteArray name = zone.text().toLocal8Bit();
        if (!QTimeZone::isTimeZoneIdAvailable(name)) {
            QStringList names;
            for (const QByteArray& known : QTimeZone::availableTimeZoneIds())
                names.append(known);
            return usageError(Text::tr("--zone must be a known time zone, got '%1'").arg(zone.text()) +
                              didYouMean(closestName(zone.text(), names)));
        }
        qputenv("TZ", name);
        tzset();
    }
    auto moment = static_cast<unsigned int>(QDateTime::currentSecsSinceEpoch());
    if (base.isSet() && !readMoment(base.text(), moment))
        return usageError(Text::tr("--base must be a moment from 1970 to 2106, got '%1'").arg(base.text()));

    if (list.isSet())
        json.isSet() ? printNumberLineAsJson(moment) : printNumberLine(moment);
    else
        json.isSet() ? printCodeAsJson(number, moment) : printCode(number, moment);
    return exitGood;
}
