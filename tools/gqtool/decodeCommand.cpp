#include "command.h"
#include "commandLine.h"
#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordDecoding.h"
#include "input.h"
#include "shared/console.h"

#include <algorithm>

static const int shownBytes = 8;  // of a field, in the table
static const int shownText = 100; // characters of a value, in the table

// --- Text and JSON ------------------------------------------------------------------------------------------------

static const char* const framesContent = "frames of one direction, as a client or server receives them";

static QString formsText()
{
    QString text = "Forms:\n";
    for (const Form& form : recordForms())
        text += QString("  %1 %2\n").arg(form.name, -18).arg(form.content);
    return text + QString("  %1 %2").arg("frames", -18).arg(framesContent);
}

static void printFormsAsJson()
{
    for (const Form& form : recordForms())
        printJson({{"form", form.name}, {"content", form.content}});
    printJson({{"form", "frames"}, {"content", framesContent}});
}

static QString bytesText(const QByteArray& bytes)
{
    return QString(bytes.left(shownBytes).toHex(' ')) + (bytes.size() > shownBytes ? " ..." : "");
}

static QString valueText(const QString& value)
{
    return value.size() > shownText ? value.left(shownText) + "..." : value;
}

static QString offsetText(int offset)
{
    return offset < 0 ? QString() : QString::number(offset);
}

static void printTable(const Decoded& decoded)
{
    int width = 0;
    for (const DecodedField& field : decoded.fields)
        width = std::max(width, field.name.size());
    for (const DecodedField& field : decoded.fields)
        printLine(QString("%1  %2  %3  %4")
                      .arg(offsetText(field.offset), 6)
                      .arg(bytesText(field.bytes), -3 * shownBytes - 3)
                      .arg(field.name, -width)
                      .arg(valueText(field.value)));
    if (!decoded.rest.isEmpty())
        printLine(QString("%1  %2  %3, %4 bytes")
                      .arg(decoded.restOffset, 6)
                      .arg(bytesText(decoded.rest), -3 * shownBytes - 3)
                      .arg(decoded.faults.empty() ? "(rest)" : "(not read)")
                      .arg(decoded.rest.size()));
    printLine(decoded.readerCalled ? QString("library: %1, %2").arg(decoded.result).arg(decoded.meaning)
                                   : "library: " + decoded.meaning);
}

static void printJson(const QString& form, const FrameSource* source, const Decoded& decoded)
{
    JsonBuilder json;
    json.begin(nullptr, '{');
    json.add("as", jsonText(form));
    if (source != nullptr) {
        json.add("transport", jsonText(QString(source->isUdp ? "udp" : "tcp")));
        json.add("direction", jsonText(QString(source->isRequest ? "request" : "reply")));
        if (!source->form.isEmpty())
            json.add("form", jsonText(source->form));
    }
    json.add("value", decoded.value.isEmpty() ? QString("null") : decoded.value);
    if (!decoded.rest.isEmpty())
        json.add("behind", jsonText(decoded.rest));
    json.begin("fields", '[');
    for (const DecodedField& field : decoded.fields) {
        json.begin(nullptr, '{');
        json.add("offset", field.offset < 0 ? QString("null") : QString::number(field.offset));
        json.add("bytes", jsonText(QString(field.bytes.toHex())));
        json.add("name", jsonText(field.name));
        json.add("value", field.value.isEmpty() ? QString("null") : field.value);
        json.end('}');
    }
    json.end(']');
    json.begin("faults", '[');
    for (const Fault& fault : decoded.faults) {
        json.begin(nullptr, '{');
        json.add("offset", QString::number(fault.offset));
        json.add("fault", jsonText(fault.text));
        json.end('}');
    }
    json.end(']');
    json.begin("library", '{');
    json.add("result", decoded.readerCalled ? QString::number(decoded.result) : QString("null"));
    json.add("meaning", jsonText(decoded.meaning));
    json.end('}');
    json.end('}');
    printLine(json.text);
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description =
    "Prints the fields of a record, list, wave or frames, and the result of the library's own reader. Errors are\n"
    "listed with their byte offset, after the fields that could be read; the exit code is then 1.\n"
    "\n"
    "  gqtool decode --as boolData 01 10270000 fa000000 02\n"
    "  gqtool decode --as floatRealDatas --file values.hex --json\n"
    "  gqtool decode --as frames --payload ints 68 08000000 0700 00 00 20 01000000 64000000 0000 16\n"
    "\n"
    "%1";

int runDecode(const QStringList& arguments)
{
    CommandLine line(QString(description).arg(formsText()));
    const Option as = line.text("as", "decode the bytes as FORM, one of the forms above", "FORM");
    const Option json = line.flag("json", "print a JSON object, which gqtool encode accepts; with --list one per form");
    const Option list = line.flag("list", "print the forms and exit");
    const Option udp = line.flag("udp", "decode frames as datagrams, not as a TCP stream");
    const Option request = line.flag("request", "decode frames as requests of a client, not as replies");
    const Option payload =
        line.text("payload",
                  "decode payloads of other than the ready-made commands as KIND: int, ints, bytes or strings", "KIND");
    const Input input(line);
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;
    if (list.isSet()) {
        json.isSet() ? printFormsAsJson() : printLine(formsText());
        return exitGood;
    }
    if (!as.isSet())
        return usageError("--as FORM is required; --list prints the forms");
    const Form* form = findForm(as.text());
    const bool isFrames = as.text() == "frames";
    const FrameSource source{udp.isSet(), request.isSet(), payload.text()};
    const QStringList kinds = {"int", "ints", "bytes", "strings"};
    if (payload.isSet() && !kinds.contains(source.form))
        return usageError(QString("--payload must be one of %1, got '%2'").arg(kinds.join(", "), source.form));
    if (!isFrames && (source.isUdp || source.isRequest || payload.isSet()))
        return usageError("--udp, --request and --payload require --as frames");
    if (form == nullptr && !isFrames)
        return usageError(QString("--as must be a form of --list, got '%1'").arg(as.text()));
    QByteArray bytes;
    const HexReader::Content content = isFrames ? HexReader::payloads : HexReader::everyByte;
    if (!input.read(bytes, exitCode, content))
        return exitCode;

    const Decoded decoded = isFrames ? decodeFrames(bytes, source) : decode(*form, bytes);
    if (json.isSet())
        printJson(as.text(), isFrames ? &source : nullptr, decoded);
    else
        printTable(decoded);
    for (const Fault& fault : decoded.faults)
        printError(QString("byte %1: %2").arg(fault.offset).arg(fault.text));
    return decoded.faults.empty() ? exitGood : exitFailed;
}
