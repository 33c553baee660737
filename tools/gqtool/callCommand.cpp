#include "closestName.h"
#include "command.h"
#include "commandLine.h"
#include "encodingOption.h"
#include "endpoint.h"
#include "gqtool/call/callClient.h"
#include "gqtool/call/callRun.h"
#include "gqtool/call/requestPayload.h"
#include "gqtool/dump/hexReader.h"
#include "shared/console.h"
#include "shared/stationProtocol.h"
#include "shared/text.h"

#include <QDateTime>

#include <climits>
#include <socketApi.h>

using gqdb::CSocketAPI;

struct CallCommand {
    const char* name;
    const char* arguments; // names, one word each; of a list, the number of its elements
    const char* meaning;
    unsigned char command;
    ReplyForm form;
};

static const CallCommand commands[] = {
    {"systemState", "", QT_TRANSLATE_NOOP("Text", "get the station's state"), CSocketAPI::systemStateCommand, replyInt},
    {"systemTime", "", QT_TRANSLATE_NOOP("Text", "get its clock, in seconds since 1970"), CSocketAPI::systemTimeCommand,
     replyInt},
    {"clear", "", QT_TRANSLATE_NOOP("Text", "reset it"), CSocketAPI::clearCommand, replyInt},
    {"setTime", "FIRST SECOND", QT_TRANSLATE_NOOP("Text", "set its clock to FIRST; SECOND is not used"),
     CSocketAPI::setTimeCommand, replyInt},
    {"setState", "VALUE", QT_TRANSLATE_NOOP("Text", "set its state"), CSocketAPI::setStateCommand, replyInt},
    {"ints", "COUNT", QT_TRANSLATE_NOOP("Text", "get integers, one per line"), commandInts, replyInts},
    {"bytes", "COUNT", QT_TRANSLATE_NOOP("Text", "get bytes, in hexadecimal"), commandBytes, replyBytes},
    {"strings", "COUNT", QT_TRANSLATE_NOOP("Text", "get texts, one per line"), commandStrings, replyStrings},
    {"error", "CODE", QT_TRANSLATE_NOOP("Text", "get an error frame"), commandError, replyInt},
};

static QString formList()
{
    static const char* const meanings[] = {
        QT_TRANSLATE_NOOP("Text", "an integer"), QT_TRANSLATE_NOOP("Text", "a list of integers"),
        QT_TRANSLATE_NOOP("Text", "a list of bytes"), QT_TRANSLATE_NOOP("Text", "a list of texts")};
    QString text;
    const char* const* meaning = meanings;
    for (const QString& name : replyForms())
        text += QString("  %1  %2\n").arg(name, -7).arg(Text::tr(*meaning++));
    return text;
}

static QString commandList()
{
    QString text;
    for (const CallCommand& command : commands)
        text += QString("  %1  %2\n")
                    .arg(QString("%1 %2").arg(command.name, command.arguments), -22)
                    .arg(Text::tr(command.meaning));
    return text;
}

static const CallCommand* findCommand(const QString& name)
{
    for (const CallCommand& command : commands) {
        if (name == command.name)
            return &command;
    }
    return nullptr;
}

static QString unknownCommand(const QString& name, const CommandMap& map)
{
    QStringList names = map.names();
    for (const CallCommand& command : commands)
        names.append(command.name);
    return Text::tr("unknown COMMAND '%1'").arg(name) + didYouMean(closestName(name, names));
}

// Makes the request of one of the commands above; `words` are its integers. Returns false and the reason in `error`.
static bool readNamed(const CallCommand* command, const QStringList& words, bool byUdp, CallRequest& request,
                      QString& error)
{
    const QStringList names = QString(command->arguments).split(' ', Qt::SkipEmptyParts);
    if (words.size() != names.size()) {
        if (names.isEmpty())
            error = Text::tr("%1 takes no arguments").arg(command->name);
        else if (words.size() < names.size())
            error = Text::tr("%1 requires %2").arg(command->name, command->arguments);
        else
            error = Text::tr("%1 takes only %2, got '%3'").arg(command->name, command->arguments, words.join(' '));
        return false;
    }
    std::vector<int> values;
    if (!readInts(words, values, error))
        return false;
    request.command = command->command;
    request.form = command->form;
    if (request.form != replyInt)
        request.count = values[0];
    if (values.empty())
        values.push_back(
            static_cast<int>(QDateTime::currentSecsSinceEpoch())); // as the library does for commands without integers
    if (request.command == CSocketAPI::setTimeCommand && byUdp)
        values.insert(values.begin(), static_cast<int>(values.size())); // over TCP they have no count
    request.payload = intsPayload(values);
    return true;
}

// Reads a command of the map, which takes precedence, or one of the commands above. Returns false and the reason in
// `error`.
static bool readCommand(const QStringList& words, const CommandMap& map, bool byUdp, CallRun& run, QString& error)
{
    if (words.isEmpty()) {
        error = Text::tr("COMMAND is required");
        return false;
    }
    run.name = QString("'%1'").arg(words[0]);
    if (const MappedCommand* mapped = map.findWord(words[0])) {
        run.name = QString("'%1'").arg(mapped->name);
        run.records = mapped->records;
        return readMapped(*mapped, words.mid(1), run.request, error);
    }
    const CallCommand* command = findCommand(words[0]);
    if (command == nullptr) {
        error = unknownCommand(words[0], map);
        return false;
    }
    return readNamed(command, words.mid(1), byUdp, run.request, error);
}

// The options of a request that --command defines, and its integers.
class RawRequest {
public:
    explicit RawRequest(CommandLine& line)
        : command(line.integer("command", Text::tr("send command NUMBER instead of COMMAND"), "NUMBER", 0, 255)),
          arg1(line.integer("arg1", Text::tr("send NUMBER as arg1 of the header (default: 0)"), "NUMBER", 0, 255)),
          arg2(line.integer("arg2", Text::tr("send NUMBER as arg2 of the header (default: 0)"), "NUMBER", 0, 255)),
          hex(line.text("hex", Text::tr("send BYTES, hex text or a dump, as payload instead of integers"), "BYTES")),
          reply(line.text("reply", Text::tr("expect a reply of FORM, see above (default: int)"), "FORM", "int"))
    {
        for (const Option& option : {arg1, arg2, hex, reply})
            option.needs(command);
    }

    bool isAsked() const { return command.isSet(); }

    bool read(const QStringList& words, CallRequest& request, QString& error) const
    {
        request.command = static_cast<unsigned char>(command.number());
        request.arg1 = static_cast<unsigned char>(arg1.number());
        request.arg2 = static_cast<unsigned char>(arg2.number());
        if (!replyForms().contains(reply.text())) {
            error = Text::tr("--reply must be int, ints, bytes or strings, got '%1'").arg(reply.text()) +
                    didYouMean(closestName(reply.text(), replyForms()));
            return false;
        }
        request.form = replyFormOf(reply.text());
        if (hex.isSet() && !words.isEmpty()) {
            error = Text::tr("--hex and INTEGER exclude each other");
            return false;
        }
        if (hex.isSet())
            return readPayload(hex.text(), request.payload, error);
        std::vector<int> values;
        if (!readInts(words, values, error))
            return false;
        request.payload = intsPayload(values);
        return true;
    }

private:
    static bool readPayload(const QString& text, QByteArray& bytes, QString& error)
    {
        HexError wrong;
        if (readHex(text.toUtf8(), bytes, wrong))
            return true;
        error = Text::tr("%1: %2").arg("--hex", wrong.message());
        return false;
    }

    Option command;
    Option arg1;
    Option arg2;
    Option hex;
    Option reply;
};

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Sends a request to a server and prints the reply.\n"
    "\n"
    "Commands:\n"
    "%1\n"
    "The last four are defined by the simulated station. --command sends any other command, with integers of\n"
    "4 bytes each or any bytes as payload:\n"
    "  gqtool call 127.0.0.1:5000 setState -1\n"
    "  gqtool call 127.0.0.1:5000 --command 0x20 --reply ints 5\n"
    "  gqtool call 127.0.0.1:5000 --command 6 --hex 'ff ff ff ff'\n"
    "\n"
    "A map of commands is a text file with a line COMMAND NAME REQUEST REPLY for each command of a server, such as\n"
    "'0x35 currentValues int bytes:pointRealDatas'. REQUEST is -, int, intPair, ints or hex. REPLY is int, ints,\n"
    "bytes, strings, or bytes:FORM for bytes that are records; 'gqtool decode --list' prints the forms.\n"
    "  gqtool call --map plant.map 127.0.0.1:5000 currentValues 0\n"
    "\n"
    "Forms:\n"
    "%2\n"
    "--repeat sends the request many times and prints the number of failures, the requests per second, and the\n"
    "least, median and largest time of a successful request. After each failure it connects again; that is not\n"
    "timed. SIGINT and SIGTERM end it early; it then prints the results so far.");

int runCall(const QStringList& arguments)
{
    CommandLine line(Text::tr(description).arg(commandList(), formList()));
    const RawRequest raw(line);
    const Option count = line.integer(
        "count", Text::tr("expect a list of NUMBER elements; 0 takes one frame as the whole reply (default: 0)"),
        "NUMBER", 0, INT_MAX);
    const Option map = line.text("map", Text::tr("take COMMAND from the map of commands in FILE"), "FILE");
    EncodingOption encoding(line);
    encoding.needs(map);
    const Option timeout = line.integer("timeout", Text::tr("wait up to MS for each read and write (default: 9000)"),
                                        "MS", 1, INT_MAX, 9000);
    const Option udp = line.flag("udp", Text::tr("send a datagram; a lost one times out"));
    const Option repeat = line.integer("repeat", Text::tr("send the request TIMES times"), "TIMES", 1, largestRun, 1);
    const Option interval =
        line.integer("interval", Text::tr("start a request every MS (default: 0, no pause)"), "MS", 0, INT_MAX);
    interval.needs(repeat);
    const Option json =
        line.flag("json", Text::tr("print each reply as a line of JSON; with --repeat, the totals too"));
    const Option server =
        line.requiredArgument("HOST:PORT", Text::tr("the server: a name or a dotted IPv4 address, and a port"));
    const Option command = line.optionalArgument(
        "COMMAND", Text::tr("one of the commands above or of the map, unless --command is given"));
    const Option integers = line.argumentList("INTEGER", Text::tr("arguments of the command"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    Endpoint endpoint;
    QString error = readEndpoint(server.text(), endpoint);
    if (!error.isEmpty())
        return usageError(error);
    if (count.isSet() && !raw.isAsked() && !map.isSet())
        return usageError(Text::tr("--count requires --command or --map"));
    if (map.isSet() && raw.isAsked())
        return usageError(Text::tr("--map and --command exclude each other"));
    if (!encoding.apply())
        return exitUsage;
    CommandMap serverCommands;
    if (map.isSet() && !serverCommands.read(map.text()))
        return exitFailed;
    CallRun run;
    const QStringList words = command.texts() + integers.texts();
    if (raw.isAsked()) {
        if (!raw.read(words, run.request, error))
            return usageError(error);
        run.name = commandText(run.request.command);
    } else if (!readCommand(words, serverCommands, udp.isSet(), run, error)) {
        return usageError(error);
    }
    if (count.isSet())
        run.request.count = count.number();
    run.times = repeat.number();
    run.intervalMs = interval.number();
    run.printsJson = json.isSet();
    run.target = endpoint.text();
    run.isUdp = udp.isSet();

    const auto makeClient = udp.isSet() ? makeUdpClient : makeTcpClient;
    QStringList addresses;
    Text unresolved;
    if (!resolveHost(endpoint.host, timeout.number(), addresses, unresolved))
        return failUnresolved(run, unresolved);
    const std::unique_ptr<CallClient> client = makeClient(addresses[0].toStdString(), endpoint.port, timeout.number());
    exitCode = repeat.isSet() ? callRepeatedly(*client, run) : callOnce(*client, run);
    EncodingOption::printHint();
    return exitCode;
}
