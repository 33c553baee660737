#include "command.h"
#include "commandLine.h"
#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordDecoding.h"
#include "gqtool/records/recordJson.h"
#include "input.h"
#include "shared/console.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

static const int bytesInALine = 32;

// --- The document -------------------------------------------------------------------------------------------------

// {"as": FORM, "value": ...}, and what decode --json tells beside them.
static QStringList wrongMembers(const QJsonObject& document)
{
    const QStringList known = {"as",   "behind",  "direction", "faults", "fields",
                               "form", "library", "transport", "value"};
    QStringList errors;
    for (const QString& name : document.keys()) {
        if (!known.contains(name))
            errors.append(QString("%1 is not known; the members are %2").arg(name, known.join(", ")));
    }
    for (const char* name : {"as", "value"}) {
        if (!document.contains(QLatin1String(name)))
            errors.append(QString("%1 is missing").arg(name));
    }
    return errors;
}

static QStringList encodeFrames(const QJsonObject& document, QByteArray& bytes)
{
    const FrameSource source{document["transport"] == "udp", document["direction"] == "request",
                             document["form"].toString()};
    return encodeFrames(document["value"], source, bytes);
}

static QStringList encodeRecord(const Form& form, const QJsonObject& document, QByteArray& bytes)
{
    const std::unique_ptr<Content> content = form.make();
    QStringList errors = takeJson(document["value"], *content);
    if (!errors.isEmpty())
        return errors;
    if (!content->write(bytes))
        return {"the library's writer refuses this: the samples do not pack into 5000000 bytes"};

    const QJsonObject value = document["value"].toObject();
    if (value.contains("stored") && value.contains("samples")) {
        const QByteArray written = decode(form, bytes).value.toUtf8();
        const std::unique_ptr<Content> read = form.make();
        takeJson(QJsonDocument::fromJson(written).object(), *read);
        if (jsonOf(*read) != jsonOf(*content))
            errors.append("value.samples are not what value.stored is read as; they may be left out");
    }
    return errors;
}

static QStringList encode(const QJsonObject& document, QByteArray& bytes)
{
    QStringList errors = wrongMembers(document);
    if (!errors.isEmpty())
        return errors;
    const QString name = document["as"].toString();
    const Form* form = findForm(name);
    if (form == nullptr && name != "frames")
        return {QString("as is a form, not '%1'; gqtool decode --list shows them").arg(name)};
    errors = form == nullptr ? encodeFrames(document, bytes) : encodeRecord(*form, document, bytes);
    QByteArray behind;
    if (document.contains("behind") && !takeBytes(document["behind"], behind))
        errors.append("behind is a string of Unicode, or {\"hex\": DIGITS}");
    bytes += behind;
    return errors;
}

// ------------------------------------------------------------------------------------------------------------------

static bool parse(const QByteArray& text, QJsonObject& document, QString& error)
{
    error.clear();
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(text, &parseError);
    const QByteArray ahead = text.left(parseError.offset);
    if (parseError.error != QJsonParseError::NoError)
        error = QString("line %1, column %2: %3")
                    .arg(ahead.count('\n') + 1)
                    .arg(parseError.offset - ahead.lastIndexOf('\n'))
                    .arg(parseError.errorString());
    else if (!json.isObject())
        error = "is no JSON object";
    document = json.object();
    return error.isEmpty();
}

int runEncode(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Makes the bytes of a record, a list, a wave or frames from JSON, as gqtool decode --json prints it:\n"
        "{\"as\": FORM, \"value\": ...}, and \"behind\" for bytes behind it. The library's own writers make them.\n"
        "What is wrong is told with the path of its field; then there are no bytes, and the exit code is 1.\n"
        "\n"
        "  gqtool decode --as intData --json 07000000 10270000 fa000000 01 02 | gqtool encode");
    parser.addPositionalArgument("FILE", "The JSON; - is standard input, as is nothing.", "[FILE]");
    const QCommandLineOption raw("raw", "Print the bytes themselves, not hex text.");
    parser.addOption(raw);
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;
    const QStringList files = parser.positionalArguments();
    if (files.size() > 1)
        return usageError("encode takes one file");

    const QString path = files.isEmpty() ? "-" : files.constFirst();
    QByteArray text;
    QString error;
    if (!readAll(path, text, error)) {
        printError(QString("can't read %1: %2").arg(path, error));
        return exitFailed;
    }
    QJsonObject document;
    if (!parse(text, document, error)) {
        printError(QString("%1, %2").arg(path == "-" ? "standard input" : path, error));
        return exitFailed;
    }
    QByteArray bytes;
    const QStringList errors = encode(document, bytes);
    for (const QString& line : errors)
        printError(line);
    if (!errors.isEmpty())
        return exitFailed;
    if (parser.isSet(raw)) {
        printBytes(bytes);
        return exitGood;
    }
    for (int at = 0; at < bytes.size(); at += bytesInALine)
        printLine(bytes.mid(at, bytesInALine).toHex());
    return exitGood;
}
