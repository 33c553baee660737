#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/call/callClient.h"
#include "gqtool/call/callRun.h"
#include "input.h"
#include "shared/console.h"
#include "shared/stationProtocol.h"

#include <QCommandLineParser>
#include <QDateTime>

#include <byte2Val.h>
#include <climits>

using gqdb::CByte2Val;

struct CallCommand {
    const char* name;
    const char* arguments; // their names, one word each; a list is asked for with the number of its elements
    const char* meaning;
    unsigned char command;
    ReplyForm form;
};

static const unsigned char setTimeCommand = 5;

static const CallCommand commands[] = {
    {"systemState", "", "the station's state", 1, replyInt},
    {"systemTime", "", "its clock, in seconds since 1970", 2, replyInt},
    {"clear", "", "resets it", 3, replyInt},
    {"setTime", "FIRST SECOND", "sets its clock to FIRST; SECOND is not used", setTimeCommand, replyInt},
    {"setState", "VALUE", "sets its state", 6, replyInt},
    {"ints", "COUNT", "integers, one a line", commandInts, replyInts},
    {"bytes", "COUNT", "bytes, in hexadecimal", commandBytes, replyBytes},
    {"strings", "COUNT", "texts, one a line", commandStrings, replyStrings},
    {"error", "CODE", "an error frame, to see one", commandError, replyInt},
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
            error = QString("'%1' is not an integer").arg(word);
            return false;
        }
        values.push_back(value);
    }
    return true;
}

// One of the commands above, and its integers. False with the reason in `error`, as below.
static bool readNamed(const QStringList& words, bool byUdp, CallRequest& request, QString& error)
{
    const CallCommand* command = words.isEmpty() ? nullptr : findCommand(words[0]);
    if (command == nullptr) {
        error =
            words.isEmpty() ? QString("call takes HOST:PORT and a command") : QString("no command '%1'").arg(words[0]);
        return false;
    }
    const QStringList names = QString(command->arguments).split(' ', Qt::SkipEmptyParts);
    if (words.size() - 1 != names.size()) {
        error = QString("call %1 %2").arg(command->name, command->arguments).trimmed();
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
        values.push_back(static_cast<int>(QDateTime::currentSecsSinceEpoch())); // the commands without integers tell it
    if (request.command == setTimeCommand && byUdp)
        values.insert(values.begin(), static_cast<int>(values.size())); // bare over TCP alone
    request.payload = payloadOf(values);
    return true;
}

// The options of a request of the user's own, and its integers.
class RawRequest {
public:
    explicit RawRequest(QCommandLineParser& parser) { parser.addOptions({command, arg1, arg2, hex, reply, count}); }

    bool isAsked(const QCommandLineParser& parser) const { return parser.isSet(command); }

    // The first option that is of no use without --command.
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
            error = "--count takes a number of elements";
            return false;
        }
        if (!readForm(parser.value(reply), request.form)) {
            error = "--reply takes int, ints, bytes or strings";
            return false;
        }
        if (parser.isSet(hex) && !words.isEmpty()) {
            error = "a payload is --hex or integers, not both";
            return false;
        }
        if (parser.isSet(hex))
            return parseHex(parser.value(hex).toUtf8(), request.payload, error);
        std::vector<int> values;
        if (!readInts(words, values, error))
            return false;
        request.payload = payloadOf(values);
        return true;
    }

private:
    static bool readByte(const QCommandLineParser& parser, const QCommandLineOption& option, unsigned char& byte,
                         QString& error)
    {
        int value = 0;
        if (!readInt(parser.value(option), 0, 255, value)) {
            error = QString("--%1 takes a number from 0 to 255").arg(option.names().constFirst());
            return false;
        }
        byte = static_cast<unsigned char>(value);
        return true;
    }

    const QCommandLineOption command{"command", "Make a request of your own, with this command number.", "NUMBER", "0"};
    const QCommandLineOption arg1{"arg1", "Its arg1 in the frame's header (0).", "NUMBER", "0"};
    const QCommandLineOption arg2{"arg2", "Its arg2 in the frame's header (0).", "NUMBER", "0"};
    const QCommandLineOption hex{"hex", "Its payload, as hex text, in place of integers.", "BYTES"};
    const QCommandLineOption reply{"reply", "Form of the reply, see above (int).", "FORM", "int"};
    const QCommandLineOption count{
        "count", "Elements that a list is to hold in the end; with 0 one frame is the whole reply (0).", "NUMBER", "0"};
};

int runCall(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Makes a request to a server and prints the reply.\n\nCommands:\n" + commandList() +
        "\nThe last four are the simulated station's own. A request of your own has a number in place of a name, and\n"
        "integers of four bytes each, or any bytes, as payload. Before a negative number, say --:\n"
        "  gqtool call 127.0.0.1:5000 setState -- -1\n"
        "  gqtool call 127.0.0.1:5000 --command 0x20 --reply ints 5\n"
        "  gqtool call 127.0.0.1:5000 --command 6 --hex 'ff ff ff ff'\n"
        "\nForms:\n" +
        formList() +
        "\n"
        "With --repeat it makes the request many times and prints how many failed, the requests per second, and the\n"
        "least, median and largest time of the good ones. It connects anew behind each failure; that is not timed.\n"
        "SIGINT and SIGTERM end it early, with what came of the requests so far.");
    const QCommandLineOption timeout("timeout", "Longest wait for each read and write (9000).", "MS", "9000");
    const QCommandLineOption udp("udp", "Ask by datagrams; the answer to one that is lost is a time-out.");
    const QCommandLineOption repeat("repeat", "Make the request that many times.", "TIMES");
    const QCommandLineOption interval("interval", "From the start of a request to the next (0: no pause).", "MS", "0");
    const QCommandLineOption json("json", "Print JSON, an object a line: each reply, with --repeat the sum too.");
    RawRequest raw(parser);
    parser.addOptions({timeout, udp, repeat, interval, json});
    parser.addPositionalArgument("HOST:PORT", "The server, as name or dotted IPv4 address and port.");
    parser.addPositionalArgument("COMMAND", "One of the commands above, unless --command stands for it.", "[COMMAND]");
    parser.addPositionalArgument("INTEGER", "Its integers.", "[INTEGER...]");
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;

    const QStringList words = parser.positionalArguments();
    if (words.isEmpty())
        return usageError("call takes HOST:PORT and a command");
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
            return usageError(QString("--%1 goes with --command").arg(raw.strayOption(parser)));
        if (!readNamed(words.mid(1), parser.isSet(udp), run.request, error))
            return usageError(error);
        run.name = words[1];
    }
    int timeoutMs = 0;
    if (!readInt(parser.value(timeout), 1, INT_MAX, timeoutMs))
        return usageError("--timeout takes milliseconds");
    if (!readInt(parser.value(interval), 0, INT_MAX, run.intervalMs))
        return usageError("--interval takes milliseconds");
    if (parser.isSet(interval) && !parser.isSet(repeat))
        return usageError("--interval goes with --repeat");
    if (parser.isSet(repeat) && !readInt(parser.value(repeat), 1, largestRun, run.times))
        return usageError(QString("--repeat takes a number from 1 to %1").arg(largestRun));
    run.printsJson = parser.isSet(json);

    const auto makeClient = parser.isSet(udp) ? makeUdpClient : makeTcpClient;
    QStringList addresses;
    if (!resolveHost(endpoint.host, timeoutMs, addresses, error))
        return failUnresolved(run, error);
    const std::unique_ptr<CallClient> client = makeClient(addresses[0].toStdString(), endpoint.port, timeoutMs);
    return parser.isSet(repeat) ? callRepeatedly(*client, run) : callOnce(*client, run);
}
