#include "gqtool/map/commandMap.h"

#include "gqtool/records/recordFields.h"
#include "target.h"

#include <QByteArrayList>

#include <set>

// The reader of maps of commands.

static QByteArray lineOf(const MappedCommand& command)
{
    const QString reply = command.records == nullptr ? command.reply : QString("bytes:%1").arg(command.records->name);
    return QString("%1 %2 %3 %4\n").arg(command.number).arg(command.name, command.request, reply).toUtf8();
}

static int lineNumberIn(const QString& error)
{
    return error.section(':', 0, 0).section(' ', 1).toInt(); // "line 3: ..."
}

// --- Any text -----------------------------------------------------------------------------------------------------

static void readText(Reading& reading)
{
    const QByteArray text(reading.buf, reading.size);
    CommandMap map;
    const QStringList errors = map.add(text);
    for (const MappedCommand& command : map.all())
        reading.written += lineOf(command);

    CommandMap again;
    require(again.add(reading.written).isEmpty(), "what was read must be a map");
    require(again.all().size() == map.all().size(), "what was read must be as many commands again");
    for (const MappedCommand& command : map.all()) {
        require(map.find(command.number) == &command, "a command must be found by its number");
        require(map.find(command.name) == &command, "a command must be found by its name");
        require(again.find(command.number) != nullptr && lineOf(*again.find(command.number)) == lineOf(command),
                "what was read must be the same commands again");
    }
    if (errors.isEmpty())
        return;
    reading.result = lineNumberIn(errors[0]);
    require(reading.result >= 1 && reading.result <= text.count('\n') + 1, "the line of an error must exist");
    CommandMap before;
    const QByteArray linesBefore = text.split('\n').mid(0, reading.result - 1).join('\n');
    require(before.add(linesBefore).isEmpty() && before.all().size() <= map.all().size(),
            "the lines before the first error must be good");
}

// --- Good lines ---------------------------------------------------------------------------------------------------

// Each four bytes make a line. It is wrong only if its number is 255, or if an earlier good line has its number or
// name.
static void readLines(Reading& reading)
{
    const char* const requests[] = {"-", "int", "intPair", "ints", "hex"};
    QByteArray text;
    std::set<int> numbers;
    std::set<int> names;
    int wrongLine = 0;
    int goodLines = 0;
    for (int i = 0; i + 4 <= reading.size; i += 4) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(reading.buf + i);
        const auto& forms = recordForms();
        const size_t reply = bytes[3] % (forms.size() + 4);
        const char* const plain[] = {"int", "ints", "bytes", "strings"};
        text += (bytes[1] < 128 ? "0x" + QByteArray::number(bytes[0], 16) : QByteArray::number(bytes[0])) + '\t';
        text += 'n' + QByteArray::number(bytes[1]) + "  " + requests[bytes[2] % 5] + ' ';
        text += reply < 4 ? QByteArray(plain[reply]) : QByteArray("bytes:") + forms[reply - 4].name;
        text += bytes[2] < 128 ? " # comment\n" : "\r\n";
        const bool isGood = bytes[0] != 255 && numbers.count(bytes[0]) == 0 && names.count(bytes[1]) == 0;
        if (isGood) {
            numbers.insert(bytes[0]);
            names.insert(bytes[1]);
            ++goodLines;
        }
        if (!isGood && wrongLine == 0)
            wrongLine = i / 4 + 1;
    }
    CommandMap map;
    const QStringList errors = map.add(text);
    require((errors.isEmpty() ? 0 : lineNumberIn(errors[0])) == wrongLine, "the first wrong line must be reported");
    reading.result = static_cast<int>(map.all().size());
    require(reading.result == goodLines, "every good line must be read");
}

const std::vector<Target> commandMapTargets = {
    toolTarget("commandMapText", readText),
    toolTarget("commandMapLines", readLines),
};
