#include "commandMap.h"

#include "gqtool/bytes/readAll.h"
#include "gqtool/closestName.h"
#include "gqtool/errorList.h"
#include "gqtool/integer.h"
#include "gqtool/records/recordFields.h"
#include "shared/text.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <climits>

static const int largestFile = 1 << 20;
static const int largestCommand = 0xfe; // 0xff marks error frames

QString commandText(unsigned char command)
{
    return QString("0x%1").arg(command, 2, 16, QChar('0'));
}

QStringList replyForms()
{
    return {"int", "ints", "bytes", "strings"};
}

// --- Words --------------------------------------------------------------------------------------------------------

// Each reads a word into `command` and returns an error, empty on success.

static QString readNumber(const QString& word, MappedCommand& command)
{
    static const QRegularExpression number("^(0[xX][0-9a-fA-F]+|[0-9]+)$");
    const bool isHex = word.startsWith("0x", Qt::CaseInsensitive);
    bool fits = false;
    const uint value = word.toUInt(&fits, isHex ? 16 : 10); // leading zeros do not mean octal
    if (!fits || value > largestCommand || !number.match(word).hasMatch())
        return Text::tr("COMMAND must be an integer from 0 to %1, got '%2'").arg(largestCommand).arg(word);
    command.number = static_cast<unsigned char>(value);
    return {};
}

static QString readName(const QString& word, MappedCommand& command)
{
    static const QRegularExpression name("^[A-Za-z][A-Za-z0-9_.-]*$");
    if (!name.match(word).hasMatch())
        return Text::tr("NAME must be a letter followed by letters, digits, '_', '.' or '-', got '%1'").arg(word);
    command.name = word;
    return {};
}

static QString readRequest(const QString& word, MappedCommand& command)
{
    const QStringList kinds = {"-", "int", "intPair", "ints", "hex"};
    if (!kinds.contains(word))
        return Text::tr("REQUEST must be -, int, intPair, ints or hex, got '%1'").arg(word) +
               didYouMean(closestName(word, kinds));
    command.request = word;
    return {};
}

static QString readReply(const QString& word, MappedCommand& command)
{
    const QString records = "bytes:";
    command.reply = word.startsWith(records) ? QString("bytes") : word;
    const QStringList kinds = replyForms();
    if (!kinds.contains(command.reply))
        return Text::tr("REPLY must be int, ints, bytes, strings or bytes:FORM, got '%1'").arg(word) +
               didYouMean(closestName(word, kinds));
    if (!word.startsWith(records))
        return {};
    const QString form = word.mid(records.size());
    command.records = findForm(form);
    if (command.records == nullptr)
        return Text::tr("REPLY has no form '%1'; gqtool decode --list prints the forms").arg(form) +
               didYouMean(closestName(form, formNames()));
    return {};
}

// --- Lines --------------------------------------------------------------------------------------------------------

static QString shortened(const QString& text)
{
    static const int shownText = 60;
    return text.size() > shownText ? text.left(shownText) + "..." : text;
}

QString CommandMap::addLine(const QString& line, int number)
{
    static const QRegularExpression blanks("[ \\t\\r\\v\\f]+");
    const QStringList words = line.section('#', 0, 0).split(blanks, Qt::SkipEmptyParts);
    if (words.isEmpty())
        return {};
    if (words.size() != 4)
        return Text::tr("a line must be 'COMMAND NAME REQUEST REPLY', got '%1'").arg(shortened(words.join(' ')));
    MappedCommand command;
    command.line = number;
    QString (*const readers[])(const QString&, MappedCommand&) = {readNumber, readName, readRequest, readReply};
    for (int i = 0; i < words.size(); ++i) {
        QString error = readers[i](words[i], command);
        if (!error.isEmpty())
            return error;
    }
    if (const MappedCommand* other = find(command.number))
        return Text::tr("COMMAND %1 is also in line %2").arg(commandText(command.number)).arg(other->line);
    if (const MappedCommand* other = find(command.name))
        return Text::tr("NAME %1 is also in line %2").arg(command.name).arg(other->line);
    commands.push_back(command);
    return {};
}

QStringList CommandMap::add(const QByteArray& text)
{
    QStringList errors;
    int number = 0;
    for (QByteArray line : text.split('\n')) {
        ++number;
        if (number == 1 && line.startsWith("\xef\xbb\xbf"))
            line.remove(0, 3); // byte order mark
        if (line.contains('\0')) {
            errors.append(zeroByteText(number));
            continue;
        }
        const QString error = addLine(QString::fromUtf8(line), number);
        if (!error.isEmpty())
            errors.append(Text::tr("line %1: %2").arg(number).arg(error));
    }
    return errors;
}

bool CommandMap::read(const QString& path)
{
    QByteArray text;
    QString unreadable;
    QStringList errors;
    if (!readAll(path, text, unreadable, largestFile))
        errors.append(Text::tr("cannot read %1: %2").arg(path, unreadable));
    else
        for (const QString& error : add(text))
            errors.append(Text::tr("%1: %2").arg(path, error));
    printErrors(errors);
    return errors.isEmpty();
}

const MappedCommand* CommandMap::find(const QString& name) const
{
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const MappedCommand& command) { return command.name == name; });
    return found == commands.end() ? nullptr : &*found;
}

const MappedCommand* CommandMap::find(unsigned char number) const
{
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [&](const MappedCommand& command) { return command.number == number; });
    return found == commands.end() ? nullptr : &*found;
}

const MappedCommand* CommandMap::findWord(const QString& nameOrNumber) const
{
    int number = 0;
    const MappedCommand* named = find(nameOrNumber);
    return named == nullptr && readInt(nameOrNumber, 0, UCHAR_MAX, number) ? find(static_cast<unsigned char>(number))
                                                                           : named;
}

QStringList CommandMap::names() const
{
    QStringList all;
    for (const MappedCommand& command : commands)
        all.append(command.name);
    return all;
}
