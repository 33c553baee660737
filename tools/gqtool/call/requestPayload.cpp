#include "requestPayload.h"

#include "gqtool/dump/hexReader.h"
#include "gqtool/integer.h"
#include "shared/text.h"

#include <climits>
#include <socketApi.h>

bool readInts(const QStringList& words, std::vector<int>& values, QString& error)
{
    for (const QString& word : words) {
        int value = 0;
        if (!readInt(word, INT_MIN, INT_MAX, value)) {
            error = Text::tr("INTEGER must be a 4-byte integer, got '%1'").arg(word);
            return false;
        }
        values.push_back(value);
    }
    return true;
}

QByteArray intsPayload(const std::vector<int>& values)
{
    QByteArray payload;
    for (const int value : values)
        gqdb::CByte2Val::int2Byte(value, payload);
    return payload;
}

static QString argumentsOf(const MappedCommand& command)
{
    if (command.request == "int")
        return "INTEGER";
    return command.request == "-" ? QString() : QString("INTEGER INTEGER");
}

static QString wrongCount(const MappedCommand& command, const QStringList& words)
{
    const QString arguments = argumentsOf(command);
    const Text wanted = arguments.isEmpty() ? Text::tr("%1 takes no arguments").arg(command.name)
                                            : Text::tr("%1 requires %2").arg(command.name, arguments);
    const Text given = words.isEmpty() ? Text::tr("got none") : Text::tr("got '%1'").arg(words.join(' '));
    return Text::tr("%1, %2; line %3 of the map has the request form %4")
        .arg(wanted, given)
        .arg(command.line)
        .arg(command.request);
}

ReplyForm replyFormOf(const QString& name)
{
    return static_cast<ReplyForm>(replyForms().indexOf(name));
}

bool readMapped(const MappedCommand& command, const QStringList& words, CallRequest& request, QString& error)
{
    request.command = command.number;
    request.form = replyFormOf(command.reply);
    if (command.request == "hex") {
        HexError wrong;
        if (readHex(words.join(' ').toUtf8(), request.payload, wrong))
            return true;
        error = Text::tr("%1: %2").arg(command.name, wrong.message());
        return false;
    }
    if (command.request != "ints" && words.size() != argumentsOf(command).split(' ', Qt::SkipEmptyParts).size()) {
        error = wrongCount(command, words);
        return false;
    }
    std::vector<int> values;
    if (!readInts(words, values, error))
        return false;
    if (command.request == "ints")
        values.insert(values.begin(), words.size());
    request.payload = intsPayload(values);
    return true;
}
