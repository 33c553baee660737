#include "closestName.h"
#include "command.h"
#include "commandLine.h"
#include "input.h"
#include "shared/console.h"
#include "shared/text.h"

#include <byte2Val.h>

using gqdb::CByte2Val;

static const int shownBytes = 4096;

// --- The sums -----------------------------------------------------------------------------------------------------

struct Sums {
    unsigned char crcHigh = 0;
    unsigned char crcLow = 0;
    unsigned char byteSum = 0;
};

static Sums sumsOf(const QByteArray& bytes)
{
    Sums sums;
    CByte2Val::getCrc16(bytes.constData(), bytes.size(), sums.crcHigh, sums.crcLow);
    sums.byteSum = CByte2Val::getCs(bytes.constData(), bytes.size());
    return sums;
}

static QByteArray byteOf(unsigned char value)
{
    return QByteArray(1, static_cast<char>(value));
}

// A sum in the form that telegrams end in.
struct Tail {
    const char* name; // for --check
    const char* meaning;
    QByteArray (*bytes)(const Sums& sums);
};

static const Tail tails[] = {
    {"crc", QT_TRANSLATE_NOOP("Text", "CRC-16, low byte first"),
     [](const Sums& sums) -> QByteArray { return byteOf(sums.crcLow) + byteOf(sums.crcHigh); }},
    {"crc-high-first", QT_TRANSLATE_NOOP("Text", "CRC-16, high byte first"),
     [](const Sums& sums) -> QByteArray { return byteOf(sums.crcHigh) + byteOf(sums.crcLow); }},
    {"sum", QT_TRANSLATE_NOOP("Text", "byte sum"), [](const Sums& sums) { return byteOf(sums.byteSum); }},
};

// --- Output -------------------------------------------------------------------------------------------------------

static void printSums(const QByteArray& bytes, bool asJson)
{
    const Sums sums = sumsOf(bytes);
    if (!asJson) {
        const QString shown = CByte2Val::buf2str(bytes.left(shownBytes)) + (bytes.size() > shownBytes ? " ..." : "");
        printLine(Text::tr("%1: %2").arg(bytesText(bytes.size()), shown));
        for (const Tail& tail : tails)
            printLine(padded(Text::tr(tail.meaning), 24) + ' ' + CByte2Val::buf2str(tail.bytes(sums)));
        return;
    }
    QJsonObject json{{"size", bytes.size()}, {"crc16", sums.crcHigh * 256 + sums.crcLow}, {"byteSum", sums.byteSum}};
    json["crcLowFirst"] = CByte2Val::buf2str(tails[0].bytes(sums));
    json["crcHighFirst"] = CByte2Val::buf2str(tails[1].bytes(sums));
    if (bytes.size() <= shownBytes)
        json["hex"] = CByte2Val::buf2str(bytes);
    printJson(json);
}

// Checks that the bytes end in the sum of the preceding ones.
static int check(const QByteArray& bytes, const Tail& tail, bool asJson)
{
    const int size = tail.bytes(Sums()).size();
    if (bytes.size() <= size) {
        printError(
            Text::tr("--check %1 needs at least %2 bytes, got %3").arg(tail.name).arg(size + 1).arg(bytes.size()));
        return exitFailed;
    }
    const QString found = CByte2Val::buf2str(bytes.right(size));
    const QString right = CByte2Val::buf2str(tail.bytes(sumsOf(bytes.chopped(size))));
    if (asJson)
        printJson({{"check", tail.name}, {"right", found == right}, {"found", found}, {"expected", right}});
    else
        printLine(
            found == right
                ? Text::tr("%1: right, %2").arg(found, Text::tr(tail.meaning))
                : Text::tr("%1: wrong, %2 of the preceding bytes is %3").arg(found, Text::tr(tail.meaning), right));
    return found == right ? exitGood : exitFailed;
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Prints the checksums that telegrams use: CRC-16 (polynomial 0x8005 reflected, initial value 0xffff, as in\n"
    "Modbus) in both byte orders, and the sum of the bytes modulo 256; and up to 4096 of the bytes as hex text.\n"
    "\n"
    "  gqtool sum 01 03 00 00 00 0a\n"
    "  gqtool sum --check crc 01 03 00 00 00 0a c5 cd");

int runSum(const QStringList& arguments)
{
    CommandLine line(Text::tr(description));
    const Input input(line);
    const Option checked = line.text("check",
                                     Text::tr("check that the bytes end in SUM: crc (low byte first, as in Modbus "
                                              "RTU), crc-high-first or sum (one byte); if "
                                              "not, the exit code is 1"),
                                     "SUM");
    const Option json = line.flag("json", Text::tr("print a JSON object"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    const Tail* wanted = nullptr;
    for (const Tail& tail : tails) {
        if (checked.text() == tail.name)
            wanted = &tail;
    }
    if (checked.isSet() && wanted == nullptr)
        return usageError(Text::tr("--check must be crc, crc-high-first or sum, got '%1'").arg(checked.text()) +
                          didYouMean(closestName(checked.text(), {"crc", "crc-high-first", "sum"})));
    QByteArray bytes;
    if (!input.read(bytes, exitCode))
        return exitCode;
    if (bytes.isEmpty()) {
        printError(Text::tr("%1: the input is empty").arg(input.source()));
        return exitFailed;
    }
    if (wanted != nullptr)
        return check(bytes, *wanted, json.isSet());
    printSums(bytes, json.isSet());
    return exitGood;
}
