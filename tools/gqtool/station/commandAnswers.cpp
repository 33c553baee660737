#include "commandAnswers.h"

#include "gqtool/bytes/readAll.h"
#include "gqtool/closestName.h"
#include "gqtool/dump/hexReader.h"
#include "gqtool/frames/frameText.h"
#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordJson.h"
#include "shared/stationProtocol.h"
#include "shared/text.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <climits>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int largestFile = 16 << 20; // bytes of JSON, whose values take many times as many in memory

// --- The file -----------------------------------------------------------------------------------------------------

class CommandFileReader {
public:
    CommandFileReader(const QString& file, const LocatedJson& located) : path(file), json(located) {}

    std::vector<CommandAnswers::Entry> read();

    QStringList errors;
    QStringList warnings;

private:
    void warnOfReplacement(int command, const QString& place);
    void fail(const QString& place, const QString& message);
    void failIn(const QString& place, const QString& reason);
    void checkMembers(const QJsonObject& object, const QString& place, const QStringList& known);
    CommandAnswers::Entry readEntry(const QJsonObject& object, const QString& place);
    int readCommand(const QJsonValue& value, const QString& place);
    int readInteger(const QJsonValue& value, const QString& place);
    QByteArray readHex(const QJsonValue& value, const QString& place);
    std::vector<CommandAnswers::Part> readReply(const QJsonValue& value, const QString& place);
    CommandAnswers::Part readPart(const QJsonValue& value, const QString& place);
    QByteArray readRecord(const QJsonObject& object, const QString& place);
    QByteArray readInts(const QJsonValue& value, const QString& place);
    QByteArray readStrings(const QJsonValue& value, const QString& place);
    QByteArray readFile(const QJsonValue& value, const QString& place);

    const QString path;
    const LocatedJson& json;
    std::set<int> replaced; // ready-made commands
};

void CommandFileReader::fail(const QString& place, const QString& message)
{
    errors.append(Text::tr("%1: line %2: %3 %4").arg(path, QString::number(json.lineOf(place)), place, message));
}

// Adds a warning if this is the file's first entry for a ready-made command.
void CommandFileReader::warnOfReplacement(int command, const QString& place)
{
    const bool isReadyMade = command == CSocketAPI::systemStateCommand || command == CSocketAPI::systemTimeCommand ||
                             command == CSocketAPI::clearCommand || command == CSocketAPI::setTimeCommand ||
                             command == CSocketAPI::setStateCommand;
    if (isReadyMade && replaced.insert(command).second)
        warnings.append(Text::tr("%1: line %2: %3 replaces the ready-made command %4")
                            .arg(path, QString::number(json.lineOf(place)), place,
                                 commandLabel(static_cast<unsigned char>(command), FrameSource())));
}

void CommandFileReader::failIn(const QString& place, const QString& reason)
{
    errors.append(Text::tr("%1: line %2: %3: %4").arg(path, QString::number(json.lineOf(place)), place, reason));
}

void CommandFileReader::checkMembers(const QJsonObject& object, const QString& place, const QStringList& known)
{
    for (const QString& name : object.keys()) {
        if (!known.contains(name))
            fail(place.isEmpty() ? name : place + '.' + name,
                 Text::tr("is unknown; the members are %1").arg(listText(known)));
    }
}

std::vector<CommandAnswers::Entry> CommandFileReader::read()
{
    const QJsonObject document = json.value().toObject();
    const QJsonValue commands = document["commands"];
    checkMembers(document, "", {"commands"});
    if (!commands.isArray())
        fail("commands", commands.isUndefined() ? QString(Text::tr("is missing"))
                                                : Text::tr("must be an array") + gotText(commands));
    std::vector<CommandAnswers::Entry> entries;
    const QJsonArray array = commands.toArray();
    for (int i = 0; i < array.size(); ++i) {
        const QString place = QString("commands[%1]").arg(i);
        if (array[i].isObject())
            entries.push_back(readEntry(array[i].toObject(), place));
        else
            fail(place, Text::tr("must be an object") + gotText(array[i]));
    }
    return entries;
}

CommandAnswers::Entry CommandFileReader::readEntry(const QJsonObject& object, const QString& place)
{
    checkMembers(object, place, {"command", "payload", "reply", "error"});
    CommandAnswers::Entry entry;
    entry.command = readCommand(object["command"], place + ".command");
    warnOfReplacement(entry.command, place + ".command");
    if (object.contains("payload"))
        entry.payload = readHex(object["payload"], place + ".payload");
    if (object.contains("reply") == object.contains("error"))
        fail(place, Text::tr("must have either reply or error"));
    else if (object.contains("error"))
        entry.error = readInteger(object["error"], place + ".error");
    else
        entry.frames = readReply(object["reply"], place + ".reply");
    return entry;
}

// --- Values -------------------------------------------------------------------------------------------------------

// A number, or a text such as "0x35".
int CommandFileReader::readCommand(const QJsonValue& value, const QString& place)
{
    bool isNumber = value.isDouble();
    const double number = isNumber ? value.toDouble() : value.toString().toInt(&isNumber, 0);
    if (isNumber && number >= 0 && number < CSocketAPI::errorCommand && std::floor(number) == number)
        return static_cast<int>(number);
    if (value.isUndefined())
        fail(place, Text::tr("is missing"));
    else
        fail(place, Text::tr("must be an integer from 0 to 254 or a text such as \"0x35\"") + gotText(value));
    return 0;
}

int CommandFileReader::readInteger(const QJsonValue& value, const QString& place)
{
    const double number = value.toDouble();
    if (value.isDouble() && number >= INT_MIN && number <= INT_MAX && std::floor(number) == number)
        return static_cast<int>(number);
    fail(place, Text::tr("must be an integer from %1 to %2").arg(INT_MIN).arg(INT_MAX) + gotText(value));
    return 0;
}

QByteArray CommandFileReader::readHex(const QJsonValue& value, const QString& place)
{
    QByteArray bytes;
    HexError error; // its line is not that of the file
    if (!value.isString())
        fail(place, Text::tr("must be a text of hex digits, two per byte") + gotText(value));
    else if (!::readHex(value.toString().toUtf8(), bytes, error))
        failIn(place, error.text);
    return bytes;
}

QByteArray CommandFileReader::readInts(const QJsonValue& value, const QString& place)
{
    if (!value.isArray())
        fail(place, Text::tr("must be an array of integers") + gotText(value));
    const QJsonArray array = value.toArray();
    QByteArray payload = intPayload(array.size());
    for (int i = 0; i < array.size(); ++i)
        CByte2Val::int2Byte(readInteger(array[i], QString("%1[%2]").arg(place).arg(i)), payload);
    return payload;
}

QByteArray CommandFileReader::readStrings(const QJsonValue& value, const QString& place)
{
    if (!value.isArray())
        fail(place, Text::tr("must be an array of texts") + gotText(value));
    const QJsonArray array = value.toArray();
    QByteArray payload = intPayload(array.size());
    for (int i = 0; i < array.size(); ++i) {
        const QString itemPlace = QString("%1[%2]").arg(place).arg(i);
        QByteArray text = array[i].toString().toUtf8();
        if (!array[i].isString())
            fail(itemPlace, Text::tr("must be a text") + gotText(array[i]));
        else if (text.size() > USHRT_MAX - 2)
            fail(itemPlace, Text::tr("must have at most %1 bytes, got %2").arg(USHRT_MAX - 2).arg(text.size()));
        const int size = static_cast<int>(text.size());
        CByte2Val::short2Byte(size + 2, payload); // each text has two length fields
        CByte2Val::short2Byte(size, payload);
        payload += text;
    }
    return payload;
}

QByteArray CommandFileReader::readRecord(const QJsonObject& object, const QString& place)
{
    const Form* form = findForm(object["as"].toString());
    if (form == nullptr) {
        fail(place + ".as", Text::tr("must be a form of 'gqtool decode --list'") + gotText(object["as"]) +
                                didYouMean(closestName(object["as"].toString(), formNames())));
        return {};
    }
    const QString valuePlace = place + ".value";
    if (!object.contains("value")) {
        fail(valuePlace, Text::tr("is missing"));
        return {};
    }
    const std::unique_ptr<Content> content = form->make();
    const QStringList faults = takeJson(Json::parse(jsonText(object["value"])), *content);
    for (const QString& fault : faults) { // each begins with the path from value on
        const QString member = fault.section(' ', 0, 0);
        fail(QString("%1.%2").arg(place, member), fault.mid(member.size() + 1));
    }
    QByteArray bytes;
    if (faults.isEmpty() && !content->write(bytes))
        fail(valuePlace, Text::tr("cannot be written: the samples do not pack into 5000000 bytes"));
    return intPayload(bytes.size()) + bytes;
}

QByteArray CommandFileReader::readFile(const QJsonValue& value, const QString& place)
{
    if (!value.isString() || value.toString().contains(QChar(0))) {
        fail(place, Text::tr("must be the name of a file") + gotText(value));
        return {};
    }
    const QString file = QFileInfo(path).dir().filePath(value.toString());
    QByteArray bytes;
    QString error;
    const QFileInfo found(file);
    if (found.exists() && !found.isFile() && !found.isDir()) // reading a pipe or device might never end
        failIn(place, Text::tr("cannot read %1: %2").arg(file, Text::tr("not a regular file")));
    else if (!readAll(file, bytes, error))
        failIn(place, Text::tr("cannot read %1: %2").arg(file, error));
    return bytes;
}

// --- Replies ------------------------------------------------------------------------------------------------------

std::vector<CommandAnswers::Part> CommandFileReader::readReply(const QJsonValue& value, const QString& place)
{
    if (!value.isArray())
        return {readPart(value, place)};
    std::vector<CommandAnswers::Part> parts;
    const QJsonArray array = value.toArray();
    if (array.isEmpty())
        fail(place, Text::tr("must have at least one frame"));
    parts.reserve(static_cast<size_t>(array.size()));
    for (int i = 0; i < array.size(); ++i)
        parts.push_back(readPart(array[i], QString("%1[%2]").arg(place).arg(i)));
    return parts;
}

CommandAnswers::Part CommandFileReader::readPart(const QJsonValue& value, const QString& place)
{
    if (value == QJsonValue("echo"))
        return {true, {}};
    const QStringList forms = {"as", "int", "ints", "bytes", "strings", "payload", "file"};
    const QJsonObject object = value.toObject();
    checkMembers(object, place, forms + QStringList{"value"});
    QStringList found;
    for (const QString& form : forms) {
        if (object.contains(form))
            found.append(form);
    }
    if (found.size() != 1 || (object.contains("value") && found[0] != "as")) {
        fail(
            place,
            Text::tr("must be \"echo\" or an object with as and value, or with one of %1").arg(listText(forms.mid(1))) +
                gotText(value));
        return {};
    }
    const QString member = place + '.' + found[0];
    const QJsonValue content = object[found[0]];
    if (found[0] == "as")
        return {false, readRecord(object, place)};
    if (found[0] == "int")
        return {false, intPayload(readInteger(content, member))};
    if (found[0] == "ints")
        return {false, readInts(content, member)};
    if (found[0] == "strings")
        return {false, readStrings(content, member)};
    if (found[0] == "file")
        return {false, readFile(content, member)};
    const QByteArray bytes = readHex(content, member);
    return {false, found[0] == "bytes" ? intPayload(bytes.size()) + bytes : bytes};
}

// --- Answers ------------------------------------------------------------------------------------------------------

CommandAnswers::CommandAnswers(const QString& file, int greetingValue, int gapMs)
    : path(file), greetingNumber(greetingValue), gap(gapMs)
{
}

bool CommandAnswers::read(QStringList& messages)
{
    QByteArray text;
    QString error;
    if (!readAll(path, text, error, largestFile)) {
        messages = QStringList{Text::tr("cannot read %1: %2").arg(path, error)};
        return false;
    }
    LocatedJson json;
    if (!json.parse(text, error)) {
        messages = QStringList{Text::tr("%1: %2").arg(path, error)};
        return false;
    }
    if (!json.value().isObject()) {
        messages = QStringList{Text::tr("%1: %2").arg(path, Text::tr("must be a JSON object") + gotText(json.value()))};
        return false;
    }
    CommandFileReader reader(path, json);
    std::vector<Entry> read = reader.read();
    const bool isGood = reader.errors.isEmpty();
    messages = isGood ? reader.warnings : reader.errors;
    if (isGood)
        entries = std::move(read);
    return isGood;
}

std::vector<TimedFrame> CommandAnswers::answer(const StationRequest& request)
{
    const auto entry = std::find_if(entries.begin(), entries.end(), [&](const Entry& one) {
        return one.command == request.frame.command && (!one.payload || hasPayload(request, *one.payload));
    });
    if (entry == entries.end())
        return {{readyMade.answer(request).value_or(errorFrame(request, errorUnknownCommand))}};
    if (entry->error)
        return {{errorFrame(request, *entry->error)}};
    QByteArrayList frames;
    for (const Part& part : entry->frames)
        frames.append(replyFrame(request, part.isEcho ? request.frame.payload : part.payload));
    return spaced(frames, gap);
}
