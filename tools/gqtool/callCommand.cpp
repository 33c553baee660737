#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/call/callClient.h"
#include "gqtool/call/callRun.h"
#include "gqtool/dump/hexReader.h"
#include "shared/console.h"
#include "shared/stationProtocol.h"

#include <QCommandLineParser>
#include <QDateTime>

#include <climits>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

struct CallCommand {
    const char* name;
    const char* arguments; // names, one word each; of a list, the number of its elements
    const char* meaning;
    unsigned char command;
    ReplyForm form;
};

static const CallCommand commands[] = {
    {"systemState", "", "get the station's state", CSocketAPI::systemStateCommand, replyInt},
    {"systemTime", "", "get its clock, in seconds since 1970", CSocketAPI::systemTimeCommand, replyInt},
    {"clear", "", "reset it", CSocketAPI::clearCommand, replyInt},
    {"setTime", "FIRST SECOND", "set its clock to FIRST; SECOND is not used", CSocketAPI::setTimeCommand, replyInt},
    {"setState", "VALUE", "set its state", CSocketAPI::setStateCommand, replyInt},
    {"ints", "COUNT", "get integers, one per line", commandInts, replyInts},
    {"bytes", "COUNT", "get bytes, in hexadecimal", commandBytes, replyBytes},
    {"strings", "COUNT", "get texts, one per line", commandStrings, replyStrings},
    {"error", "CODE", "get an error frame", commandError, replyInt},
};

struct FormName {
    const char* name;
    const char* meaning;
    ReplyForm form;
};

static const FormName forms[] = {
    {"int", "an integer", replyInt},
    {"ints", "a list of integers", replyInts},
    {"bytes", "a list of bytes", replyBytes},
    {"strings", "a list of texts", replyStrings},
};

static QString formList()
{
    QString text;
    for (const FormName& form : forms)
        text += QString("  %1  %2\n").arg(form.name, -7).arg(form.meaning);
    return text;
}

static bool readForm(const QString& name, ReplyForm& form)
{
    for (const FormName& known : forms) {
        if (name == known.name) {
            form = known.form;
            return true;
        }
    }
    return false;
}

static QString commandList()
{
    QString text;
    for (const CallCommand& command : commands)
        text +=
            QString("  %1  %2\n").arg(QString("%1 %2").arg(command.name, command.arguments), -22).arg(command.meaning);
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

static QByteArray payloadOf(const std::vector<int>& values)
{
    QByteArray payload;
    for (const int value : values)
        CByte2Val::int2Byte(value, payload);
    return payload;
}

static bool readInts(const QStringList& words, std::vector<int>& values, QString& error)
{
    for (const QString& word : words) {
        int value = 0;
        if (!readInt(word, INT_MIN, INT_MAX, value)) {
            error = QString("INTEGER must be a 4-byte integer, got '%1'").arg(word);
            return false;
        }
        values.push_back(value);
    }
    return true;
}

// Reads one of the commands above and its integers. Returns false and the reason in `error`.
static bool readNamed(const QStringList& words, bool byUdp, CallRequest& request, QString& error)
{
    const CallCommand* command = words.isEmpty() ? nullptr : findCommand(words[0]);
    if (command == nullptr) {
        error = words.isEmpty() ? QString("COMMAND is required") : QString("unknown COMMAND '%1'").arg(words[0]);
        return false;
    }
    const QStringList names = QString(command->arguments).split(' ', Qt::SkipEmptyParts);
    if (words.size() - 1 != names.size()) {
        error = names.isEmpty() ? QString("%1 takes no arguments").arg(command->name)
                                : QString("%1 requires %2").arg(command->name, command->arguments);
        return false;
    }
    std::vector<int> values;
    if (!readInts(words.mid(1), values, error))
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
    request.payload = payloadOf(values);
    return true;
}

// The options of a request that --command defines, and its integers.
class RawRequest {
public:
    explicit RawRequest(QCommandLineParser& parser) { parser.addOptions({command, arg1, arg2, hex, reply, count}); }

    bool isAsked(const QCommandLineParser& parser) const { return parser.isSet(command); }

    // Returns the first option that requires --command.
    QString strayOption(const QCommandLineParser& parser) const
    {
        for (const QCommandLineOption& option : {arg1, arg2, hex, reply, count}) {
            if (parser.isSet(option))
                return option.names().constFirst();
        }
        return {};
    }

    bool read(const QCommandLineParser& parser, const QStringList& words, CallRequest& request, QString& error) const
    {
        if (!readByte(parser, command, request.command, error) || !readByte(parser, arg1, request.arg1, error) ||
            !readByte(parser, arg2, request.arg2, error))
            return false;
        if (!readInt(parser.value(count), 0, INT_MAX, request.count)) {
            error = QString("--count must be an integer from 0 to %1, got '%2'").arg(INT_MAX).arg(parser.value(count));
            return false;
        }
        if (!readForm(parser.value(reply), request.form)) {
            error = QString("--reply must be int, ints, bytes or strings, got '%1'").arg(parser.value(reply));
            return false;
        }
        if (parser.isSet(hex) && !words.isEmpty()) {
            error = "--hex and INTEGER exclude each other";
            return false;
        }
        if (parser.isSet(hex))
            return readPayload(parser.value(hex), request.payload, error);
        std::vector<int> values;
        if (!readInts(words, values, error))
            return false;
        request.payload = payloadOf(values);
        return true;
    }

private:
    static bool readPayload(const QString& text, QByteArray& bytes, QString& error)
    {
        const bool isGood = readHex(text.toUtf8(), bytes, error);
        error = "--hex: " + error;
        return isGood;
    }

    static bool readByte(const QCommandLineParser& parser, const QCommandLineOption& option, unsigned char& byte,
                         QString& error)
    {
        int value = 0;
        if (!readInt(parser.value(option), 0, 255, value)) {
            error = QString("--%1 must be an integer from 0 to 255, got '%2'")
                        .arg(option.names().constFirst(), parser.value(option));
            return false;
        }
        byte = static_cast<unsigned char>(value);
        return true;
    }

    const QCommandLineOption command{"command", "send command NUMBER instead of COMMAND", "NUMBER", "0"};
    const QCommandLineOption arg1{"arg1", "send NUMBER as arg1 of the header (default: 0)", "NUMBER", "0"};
    const QCommandLineOption arg2{"arg2", "send NUMBER as arg2 of the header (default: 0)", "NUMBER", "0"};
    const QCommandLineOption hex{"hex", "send BYTES, hex text or a dump, as payload instead of integers", "BYTES"};
    const QCommandLineOption reply{"reply", "expect a reply of FORM, see above (default: int)", "FORM", "int"};
    const QCommandLineOption count{
        "count", "expect a list of NUMBER elements; 0 takes one frame as the whole reply (default: 0)", "NUMBER", "0"};
};

static const char* const description =
    "Sends a request to a server and prints the reply.\n"
    "\n"
    "Commands:\n"
    "%1\n"
    "The last four are defined by the simulated station. --command sends any other command, with integers of\n"
    "4 bytes each or any bytes as payload. Put -- before a negative number:\n"
    "  gqtool call 127.0.0.1:5000 setState -- -1\n"
    "  gqtool call 127.0.0.1:5000 --command 0x20 --reply ints 5\n"
    "  gqtool call 127.0.0.1:5000 --command 6 --hex 'ff ff ff ff'\n"
    "\n"
    "Forms:\n"
    "%2\n"
    "--repeat sends the request many times and prints the number of failures, the requests per second, and the\n"
    "least, median and largest time of a successful request. After each failure it connects again; that is not\n"
    "timed. SIGINT and SIGTERM end it early; it then prints the results so far.";

int runCall(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString(description).arg(commandList(), formList()));
    const QCommandLineOption timeout("timeout", "wait up to MS for each read and write (default: 9000)", "MS", "9000");
    const QCommandLineOption udp("udp", "send a datagram; a lost one times out");
    const QCommandLineOption repeat("repeat", "send the request TIMES times", "TIMES");
    const QCommandLineOption interval("interval", "start a request every MS (default: 0, no pause)", "MS", "0");
    const QCommandLineOption json("json", "print each reply as a line of JSON; with --repeat, the totals too");
    RawRequest raw(parser);
    parser.addOptions({timeout, udp, repeat, interval, json});
    parser.addPositionalArgument("HOST:PORT", "The server: a name or a dotted IPv4 address, and a port.");
    parser.addPositionalArgument("COMMAND", "One of the commands above, unless --command is given.", "[COMMAND]");
    parser.addPositionalArgument("INTEGER", "Arguments of the command.", "[INTEGER...]");
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;

    const QStringList words = parser.positionalArguments();
    if (words.isEmpty())
        return usageError("HOST:PORT is required");
    Endpoint endpoint;
    QString error = readEndpoint(words[0], endpoint);
    if (!error.isEmpty())
        return usageError(error);
    CallRun run;
    if (raw.isAsked(parser)) {
        if (!raw.read(parser, words.mid(1), run.request, error))
            return usageError(error);
        run.name = QString("command 0x%1").arg(run.request.command, 2, 16, QChar('0'));
    } else {
        if (!raw.strayOption(parser).isEmpty())
            return usageError(QString("--%1 requires --command").arg(raw.strayOption(parser)));
        if (!readNamed(words.mid(1), parser.isSet(udp), run.request, error))
            return usageError(error);
        run.name = words[1];
    }
    int timeoutMs = 0;
    if (!readInt(parser.value(timeout), 1, INT_MAX, timeoutMs))
        return usageError(QString("--timeout must be at least 1 ms, got '%1'").arg(parser.value(timeout)));
    if (!readInt(parser.value(interval), 0, INT_MAX, run.intervalMs))
        return usageError(QString("--interval must be a number of milliseconds, got '%1'").arg(parser.value(interval)));
    if (parser.isSet(interval) && !parser.isSet(repeat))
        return usageError("--interval requires --repeat");
    if (parser.isSet(repeat) && !readInt(parser.value(repeat), 1, largestRun, run.times))
        return usageError(
            QString("--repeat must be an integer from 1 to %1, got '%2'").arg(largestRun).arg(parser.value(repeat)));
    run.printsJson = parser.isSet(json);

    const auto makeClient = parser.isSet(udp) ? makeUdpClient : makeTcpClient;
    QStringList addresses;
    if (!resolveHost(endpoint.host, timeoutMs, addresses, error))
        return failUnresolved(run, error);
    const std::unique_ptr<CallClient> client = makeClient(addresses[0].toStdString(), endpoint.port, timeoutMs);
    return parser.isSet(repeat) ? callRepeatedly(*client, run) : callOnce(*client, run);
}
