#include "command.h"
#include "commandLine.h"
#include "encode/documentEncoder.h"
#include "encodingOption.h"
#include "errorList.h"
#include "gqtool/records/decoding.h"
#include "input.h"
#include "shared/console.h"
#include "shared/progress.h"
#include "shared/text.h"

#include <climits>

static const int bytesInALine = 32;

// Prints bytes as lines of hex text.
class HexPrinter {
public:
    ~HexPrinter()
    {
        if (!line.isEmpty())
            printLine(line.toHex());
    }

    void add(const QByteArray& bytes)
    {
        line += bytes;
        QByteArray text;
        int at = 0;
        for (; line.size() - at >= bytesInALine; at += bytesInALine)
            text += line.mid(at, bytesInALine).toHex() + '\n';
        line.remove(0, at);
        printBytes(text);
    }

private:
    QByteArray line; // incomplete
};

// Reads the document. Prints the errors; returns false if there are any.
static bool encode(FileSource& source, DocumentEncoder& encoder)
{
    Progress progress;
    source.beforeRead = [&](bool) { progress.show(progressText(source)); };
    const QString syntaxError = readDocument(source, encoder);
    if (!source.error().isEmpty()) {
        printError(source.error());
        return false;
    }
    if (syntaxError.isEmpty())
        encoder.end();
    else
        encoder.fail({syntaxError});
    for (const QString& line : encoder.errors())
        printError(Text::tr("%1: %2").arg(source.name(), line));
    if (encoder.otherErrors() > 0)
        printError(moreErrorsText(encoder.otherErrors()));
    return encoder.errors().isEmpty();
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Converts JSON to the bytes of a record, list, wave or frames, with the library's writers. The JSON has the\n"
    "shape that 'gqtool decode --json' prints: {\"as\": FORM, \"value\": ...}; \"behind\" holds bytes after the\n"
    "record. Of a wave, \"stored\" takes precedence over \"samples\"; of frames, \"offset\", \"form\", \"content\"\n"
    "and \"rest\" are ignored. Errors are listed with the path of the field; then nothing is printed and the exit\n"
    "code is 1.\n"
    "\n"
    "  gqtool decode --as intData --json 07000000 10270000 fa000000 01 02 | gqtool encode");

int runEncode(const QStringList& arguments)
{
    CommandLine line(Text::tr(description));
    const Option raw = line.flag("raw", Text::tr("print the bytes themselves, not hex text"));
    const Option maxErrors =
        line.integer("max-errors", Text::tr("list at most N errors"), "N", 1, INT_MAX, FaultList::usualLimit);
    const EncodingOption encoding(line);
    const Option file = line.optionalArgument("FILE", Text::tr("JSON file; - or no FILE means standard input"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    if (!encoding.apply())
        return exitUsage;
    FileSource source(file.isSet() ? file.text() : "-");
    DocumentEncoder encoder(maxErrors.number());
    if (!encode(source, encoder))
        return exitFailed;
    QString error;
    HexPrinter hex;
    const bool isPrinted = raw.isSet() ? encoder.printAll(printBytes, error)
                                       : encoder.printAll([&hex](const QByteArray& bytes) { hex.add(bytes); }, error);
    if (!isPrinted)
        printError(error);
    return isPrinted ? exitGood : exitFailed;
}
