#include "command.h"
#include "commandLine.h"
#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordDecoding.h"
#include "gqtool/records/recordJson.h"
#include "input.h"
#include "shared/console.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

static const int bytesInALine = 32;

// --- The document -------------------------------------------------------------------------------------------------

// The document is {"as": FORM, "value": ...} and the other members that decode --json prints.
static QStringList memberErrors(const QJsonObject& document)
{
    const QStringList known = {"as",   "behind",  "direction", "faults", "fields",
                               "form", "library", "transport", "value"};
    QStringList errors;
    for (const QString& name : document.keys()) {
        if (!known.contains(name))
            errors.append(QString("%1 is unknown; the members are %2").arg(name, known.join(", ")));
    }
    for (const char* name : {"as", "value"}) {
        if (!document.contains(QLatin1String(name)))
            errors.append(QString("%1 is missing").arg(name));
    }
    return errors;
}

static QStringList encodeRecord(const Form& form, const QJsonObject& document, QByteArray& bytes)
{
    const std::unique_ptr<Content> content = form.make();
    QStringList errors = takeJson(document["value"], *content);
    if (!errors.isEmpty())
        return errors;
    if (!content->write(bytes))
        return {"value cannot be written: the samples do not pack into 5000000 bytes"};
    return {};
}

static QStringList encode(const QJsonObject& document, QByteArray& bytes)
{
    QStringList errors = memberErrors(document);
    if (!errors.isEmpty())
        return errors;
    const QString name = document["as"].toString();
    const Form* form = findForm(name);
    if (form == nullptr && name != "frames")
        return {"as must be a form of 'gqtool decode --list'" + gotText(document["as"])};
    errors = form == nullptr ? encodeFrames(document["value"], bytes) : encodeRecord(*form, document, bytes);
    QByteArray behind;
    if (document.contains("behind") && !takeBytes(document["behind"], behind))
        errors.append("behind must be a string of valid Unicode or {\"hex\": DIGITS}" + gotText(document["behind"]));
    bytes += behind;
    return errors;
}

// ------------------------------------------------------------------------------------------------------------------

static bool parse(const QByteArray& text, QJsonObject& document, QString& error)
{
    error.clear();
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(text, &parseError);
    const QByteArray before = text.left(parseError.offset);
    if (parseError.error != QJsonParseError::NoError)
        error = QString("line %1, column %2: %3")
                    .arg(before.count('\n') + 1)
                    .arg(parseError.offset - before.lastIndexOf('\n'))
                    .arg(parseError.errorString());
    else if (!json.isObject())
        error = "must be a JSON object";
    document = json.object();
    return error.isEmpty();
}

static const char* const description =
    "Converts JSON to the bytes of a record, list, wave or frames, with the library's writers. The JSON has the\n"
    "shape that 'gqtool decode --json' prints: {\"as\": FORM, \"value\": ...}; \"behind\" holds bytes after the\n"
    "record. Of a wave, \"stored\" takes precedence over \"samples\"; of frames, \"offset\", \"form\", \"content\"\n"
    "and \"rest\" are ignored. Errors are listed with the path of the field; then nothing is printed and the exit\n"
    "code is 1.\n"
    "\n"
    "  gqtool decode --as intData --json 07000000 10270000 fa000000 01 02 | gqtool encode";

int runEncode(const QStringList& arguments)
{
    CommandLine line(description);
    const Option raw = line.flag("raw", "print the bytes themselves, not hex text");
    const Option file = line.optionalArgument("FILE", "JSON file; - or no FILE means standard input");
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    const QString path = file.isSet() ? file.text() : "-";
    const QString source = path == "-" ? "standard input" : path;
    QByteArray text;
    QString error;
    if (!readAll(path, text, error)) {
        printError(QString("cannot read %1: %2").arg(source, error));
        return exitFailed;
    }
    QJsonObject document;
    if (!parse(text, document, error)) {
        printError(source + ": " + error);
        return exitFailed;
    }
    QByteArray bytes;
    const QStringList errors = encode(document, bytes);
    for (const QString& mistake : errors)
        printError(source + ": " + mistake);
    if (!errors.isEmpty())
        return exitFailed;
    if (raw.isSet()) {
        printBytes(bytes);
        return exitGood;
    }
    for (int at = 0; at < bytes.size(); at += bytesInALine)
        printLine(bytes.mid(at, bytesInALine).toHex());
    return exitGood;
}
