#include "closestName.h"
#include "command.h"
#include "commandLine.h"
#include "decode/decodeCsv.h"
#include "decode/decodeJson.h"
#include "decode/decodeTable.h"
#include "encodingOption.h"
#include "errorList.h"
#include "gqtool/frames/frameCodec.h"
#include "gqtool/records/recordDecoding.h"
#include "input.h"
#include "shared/console.h"
#include "shared/progress.h"
#include "shared/text.h"

#include <algorithm>
#include <climits>

// --- Forms --------------------------------------------------------------------------------------------------------

static const char* const framesContent =
    QT_TRANSLATE_NOOP("Text", "frames of one direction, as a client or server receives them");

static QString formsText()
{
    QString text = Text::tr("Forms:") + '\n';
    for (const Form& form : recordForms())
        text += QString("  %1 %2\n").arg(form.name, -18).arg(Text::tr(form.content));
    return text + QString("  %1 %2").arg("frames", -18).arg(Text::tr(framesContent));
}

static void printFormsAsJson()
{
    for (const Form& form : recordForms())
        printJson({{"form", form.name}, {"content", form.content}});
    printJson({{"form", "frames"}, {"content", framesContent}});
}

// --- Decoding -----------------------------------------------------------------------------------------------------

static const long long largestRest =
    1 << 30; // bytes after a record; without this limit an endless source would be read indefinitely
static const int largestPiece = 1 << 16; // of them

struct DecodeRun {
    const Form* form; // null for frames
    FrameSource source;
    size_t mostFaults;
    QString inputName;
};

static void printFaults(const QString& inputName, const FaultList& faults)
{
    for (const Fault& fault : faults.listed())
        printError(Text::tr("%1: byte %2: %3").arg(inputName).arg(fault.offset).arg(fault.text));
    if (faults.others() > 0)
        printError(moreErrorsText(faults.others()));
}

static int decode(const DecodeRun& run, ByteSource& source, ByteWindow& bytes, DecodeOutput& output)
{
    Progress progress;
    source.beforeRead = [&](bool isReady) {
        if (!isReady)
            output.flush();
        progress.show(progressText(source));
    };
    Decoding decoding = run.form == nullptr ? decodeFrames(bytes, run.source, output, run.mostFaults)
                                            : decode(*run.form, bytes, output, run.mostFaults);
    const long long restStart = bytes.offset();
    while (bytes.holds(1) && bytes.offset() - restStart <= largestRest) {
        const int size = std::min(bytes.left(), largestPiece);
        if (decoding.faults.others() == 0)
            output.rest(QByteArray(bytes.at(), size));
        bytes.skip(size);
    }
    const QString error = bytes.isEnded() ? bytes.error()
                                          : Text::tr("%1: byte %2: more than %3 bytes after the record")
                                                .arg(run.inputName)
                                                .arg(restStart)
                                                .arg(largestRest);
    if (!error.isEmpty()) {
        printError(error);
        return exitFailed;
    }
    if (run.form != nullptr)
        callReader(*run.form, bytes, decoding);
    const bool isPrinted = output.finish(decoding);
    if (bytes.size() == 0)
        printError(Text::tr("%1: the input is empty").arg(run.inputName));
    else
        printFaults(run.inputName, decoding.faults);
    if (!source.hint().isEmpty())
        printError(source.hint());
    EncodingOption::printHint();
    return isPrinted && decoding.faults.listed().empty() ? exitGood : exitFailed;
}

// --- Options ------------------------------------------------------------------------------------------------------

struct DecodeOptions {
    explicit DecodeOptions(CommandLine& line);

    bool isFrames() const { return as.text() == "frames"; }

    // Returns what is wrong with the options, of which `form` is that of --as or null; empty if nothing is.
    QString mistake(const Form* form) const;

    Option as;
    Option json;
    Option list;
    Option udp;
    Option request;
    Option payload;
    Option map;
    Option csv;
    Option fields;
    Option library;
    Option maxErrors;
    Option command;
    Option maxPayload;
    EncodingOption encoding;
    Input input;
};

DecodeOptions::DecodeOptions(CommandLine& line)
    : as(line.text("as", Text::tr("decode the bytes as FORM, one of the forms above"), "FORM")),
      json(line.flag("json", Text::tr("print a JSON object, which gqtool encode accepts; with --list one per form"))),
      list(line.flag("list", Text::tr("print the forms and exit"))),
      udp(line.flag("udp", Text::tr("decode frames as datagrams, not as a TCP stream"))),
      request(line.flag("request", Text::tr("decode frames as requests of a client, not as replies"))),
      payload(line.text(
          "payload",
          Text::tr("decode payloads of other than the ready-made commands as KIND: int, ints, bytes or strings"),
          "KIND")),
      map(line.text("map", Text::tr("show commands and payloads of frames by the map of commands in FILE"), "FILE")),
      csv(line.text(
          "csv",
          Text::tr("write a list as a table to FILE, field names in its first line; - means standard output; of "
                   "frames, the lists in the replies to --command"),
          "FILE")),
      fields(line.flag("fields", Text::tr("with --json, print the fields even if the input exceeds 1 MiB"))),
      library(
          line.flag("library",
                    Text::tr("call the library's reader even if the input exceeds 1 MiB; takes memory for all of it"))),
      maxErrors(line.integer("max-errors", Text::tr("list at most N errors, and leave out what follows them"), "N", 1,
                             INT_MAX, FaultList::usualLimit)),
      command(line.text(
          "command",
          Text::tr("with --csv and frames, write the records of replies to COMMAND, a name or number of the map"),
          "COMMAND")),
      maxPayload(line.integer(
          "max-payload", Text::tr("decode frames with payloads of up to BYTES (default: 4194304), which takes memory"),
          "BYTES", 1, FrameSource::mostPayload, FrameSource::usualPayload)),
      encoding(line), input(line)
{
    csv.excludes(json);
    command.needs(csv);
}

QString DecodeOptions::mistake(const Form* form) const
{
    if (!as.isSet())
        return Text::tr("--as FORM is required; --list prints the forms");
    if (payload.isSet() && !replyForms().contains(payload.text()))
        return Text::tr("--payload must be one of %1, got '%2'").arg(listText(replyForms()), payload.text()) +
               didYouMean(closestName(payload.text(), replyForms()));
    if (!isFrames() && (udp.isSet() || request.isSet() || payload.isSet() || map.isSet() || maxPayload.isSet()))
        return Text::tr("--udp, --request, --payload, --map and --max-payload require --as frames");
    if (form == nullptr && !isFrames())
        return Text::tr("--as must be a form of --list, got '%1'").arg(as.text()) +
               didYouMean(closestName(as.text(), formNames() + QStringList{"frames"}));
    if (isFrames() && csv.isSet() && (!map.isSet() || !command.isSet() || request.isSet()))
        return Text::tr("with --as frames, --csv requires --map FILE and --command COMMAND, and no --request");
    if (!isFrames() && command.isSet())
        return Text::tr("--command requires --as frames");
    if (form != nullptr && csv.isSet() && !isList(*form))
        return Text::tr("--csv requires a list, and --as %1 is none").arg(as.text());
    return {};
}

// Finds the command of the map whose replies --csv writes. Returns null and prints the error if there is none.
static const MappedCommand* findTable(const CommandMap& commands, const QString& word)
{
    const MappedCommand* found = commands.findWord(word);
    if (found == nullptr)
        usageError(Text::tr("--command must be a name or number of the map, got '%1'").arg(word) +
                   didYouMean(closestName(word, commands.names())));
    else if (found->records == nullptr || !isList(*found->records))
        usageError(Text::tr("--csv requires a list of records, and the replies to %1 are none").arg(found->name));
    else
        return found;
    return nullptr;
}

static std::unique_ptr<DecodeOutput> makeOutput(const DecodeOptions& options, const Form* form,
                                                const FrameSource& source, const ByteWindow& bytes, OutputFile& csvFile)
{
    if (options.csv.isSet())
        return std::make_unique<DecodeCsv>(form == nullptr ? *source.table->records : *form, bytes,
                                           options.input.source(), csvFile);
    if (options.json.isSet())
        return std::make_unique<DecodeJson>(options.as.text(), form == nullptr ? &source : nullptr, bytes,
                                            DecodeJson::Members{options.fields.isSet(), options.library.isSet()});
    return std::make_unique<DecodeTable>(bytes);
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Prints the fields of a record, list, wave or frames, and the result of the library's own reader. Errors are\n"
    "listed with their byte offset, after the fields that could be read; the exit code is then 1. Lists and frames\n"
    "are printed while their bytes arrive, so they can be of any length.\n"
    "\n"
    "  gqtool decode --as boolData 01 10270000 fa000000 02\n"
    "  gqtool decode --as floatRealDatas --file values.hex --json\n"
    "  gqtool decode --as floatRealDatas --raw --file values.bin --csv values.csv\n"
    "  gqtool decode --as frames --payload ints 68 08000000 0700 00 00 20 01000000 64000000 0000 16\n"
    "\n"
    "%1");

int runDecode(const QStringList& arguments)
{
    CommandLine line(Text::tr(description).arg(formsText()));
    const DecodeOptions options(line);
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;
    if (options.list.isSet()) {
        options.json.isSet() ? printFormsAsJson() : printLine(formsText());
        return exitGood;
    }
    const Form* form = findForm(options.as.text());
    const QString mistake = options.mistake(form);
    if (!mistake.isEmpty())
        return usageError(mistake);
    if (!options.encoding.apply())
        return exitUsage;
    CommandMap commands;
    FrameSource source{options.udp.isSet(), options.request.isSet(), options.payload.text(),
                       options.map.isSet() ? &commands : nullptr, options.maxPayload.number()};
    if (options.map.isSet() && !commands.read(options.map.text()))
        return exitFailed;
    if (options.command.isSet()) {
        source.table = findTable(commands, options.command.text());
        if (source.table == nullptr)
            return exitUsage;
    }
    const std::unique_ptr<ByteSource> opened =
        options.input.open(options.isFrames() ? HexReader::payloads : HexReader::everyByte);
    if (opened == nullptr)
        return exitUsage;

    ByteWindow bytes(*opened, options.library.isSet());
    OutputFile csvFile(options.csv.text());
    if (options.csv.isSet() && !csvFile.open())
        return exitFailed;
    const std::unique_ptr<DecodeOutput> output = makeOutput(options, form, source, bytes, csvFile);
    return decode({form, source, static_cast<size_t>(options.maxErrors.number()), options.input.source()}, *opened,
                  bytes, *output);
}
