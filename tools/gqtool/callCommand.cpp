#include "callClient.h"
#include "command.h"
#include "console.h"
#include "results.h"
#include "stationProtocol.h"

#include <QCommandLineParser>
#include <QDateTime>

#include <climits>

// A command of `call`: makes the request, prints the reply. Result: 1, or the code of the failure.
struct CallCommand {
    const char* name;
    const char* arguments; // their names, one word each
    const char* meaning;
    int (*run)(CallClient& client, const std::vector<int>& arguments);
};

static int callInt(CallClient& client, unsigned char command, int argument)
{
    int value = 0;
    const int result = client.requestInt(command, argument, value);
    if (result == 1)
        printLine(QString::number(value));
    return result;
}

static int callWithTime(CallClient& client, unsigned char command)
{
    return callInt(client, command, static_cast<int>(QDateTime::currentSecsSinceEpoch()));
}

static int callSetTime(CallClient& client, const std::vector<int>& arguments)
{
    int value = 0;
    const int result = client.setTime(arguments[0], arguments[1], value);
    if (result == 1)
        printLine(QString::number(value));
    return result;
}

static int callInts(CallClient& client, const std::vector<int>& arguments)
{
    std::vector<int> values;
    const int result = client.requestInts(commandInts, arguments[0], arguments[0], values);
    for (const int value : values)
        printLine(QString::number(value));
    return result;
}

static int callBytes(CallClient& client, const std::vector<int>& arguments)
{
    std::vector<unsigned char> bytes;
    const int result = client.requestBytes(commandBytes, arguments[0], arguments[0], bytes);
    const QByteArray data(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
    for (int first = 0; first < data.size(); first += 16)
        printLine(data.mid(first, 16).toHex(' '));
    return result;
}

static int callStrings(CallClient& client, const std::vector<int>& arguments)
{
    QStringList texts;
    const int result = client.requestStrings(commandStrings, arguments[0], arguments[0], texts);
    for (const QString& text : texts)
        printLine(text);
    return result;
}

static const CallCommand commands[] = {
    {"systemState", "", "the station's state",
     [](CallClient& client, const std::vector<int>&) { return callWithTime(client, 1); }},
    {"systemTime", "", "its clock, in seconds since 1970",
     [](CallClient& client, const std::vector<int>&) { return callWithTime(client, 2); }},
    {"clear", "", "resets it", [](CallClient& client, const std::vector<int>&) { return callWithTime(client, 3); }},
    {"setTime", "FIRST SECOND", "sets its clock to FIRST; SECOND is not used", callSetTime},
    {"setState", "VALUE", "sets its state",
     [](CallClient& client, const std::vector<int>& arguments) { return callInt(client, 6, arguments[0]); }},
    {"ints", "COUNT", "integers, one a line", callInts},
    {"bytes", "COUNT", "bytes, in hexadecimal", callBytes},
    {"strings", "COUNT", "texts, one a line", callStrings},
    {"error", "CODE", "an error frame, to see one",
     [](CallClient& client, const std::vector<int>& arguments) { return callInt(client, commandError, arguments[0]); }},
};

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

int runCall(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Makes one request to a server and prints the reply.\n\nCommands:\n" + commandList() +
        "\nThe last four are the simulated station's own. Before a negative number, say --:\n"
        "  gqtool call 127.0.0.1:5000 setState -- -1");
    const QCommandLineOption timeout("timeout", "Longest wait for each read and write (9000).", "MS", "9000");
    const QCommandLineOption udp("udp", "Ask by datagrams; the answer to one that is lost is a time-out.");
    parser.addOptions({timeout, udp});
    parser.addPositionalArgument("HOST:PORT", "The server, as dotted IPv4 address and port.");
    parser.addPositionalArgument("COMMAND", "One of the commands above, and its integers.", "COMMAND [INTEGER...]");
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;

    const QStringList words = parser.positionalArguments();
    if (words.size() < 2)
        return usageError("call takes HOST:PORT and a command");
    const int colon = words[0].lastIndexOf(':');
    int port = 0;
    if (!isAddress(words[0].left(colon)) || !readInt(words[0].mid(colon + 1), 1, 65535, port))
        return usageError(QString("'%1' is not HOST:PORT").arg(words[0]));
    const CallCommand* command = findCommand(words[1]);
    if (command == nullptr)
        return usageError(QString("no command '%1'").arg(words[1]));
    const QStringList names = QString(command->arguments).split(' ', Qt::SkipEmptyParts);
    if (words.size() - 2 != names.size())
        return usageError(QString("call %1 %2").arg(command->name, command->arguments).trimmed());
    std::vector<int> values;
    for (const QString& word : words.mid(2)) {
        int value = 0;
        if (!readInt(word, INT_MIN, INT_MAX, value))
            return usageError(QString("'%1' is not an integer").arg(word));
        values.push_back(value);
    }
    int timeoutMs = 0;
    if (!readInt(parser.value(timeout), 1, INT_MAX, timeoutMs))
        return usageError("--timeout takes milliseconds");

    const std::unique_ptr<CallClient> client = parser.isSet(udp) ? makeUdpClient(timeoutMs) : makeTcpClient(timeoutMs);
    int result = client->connect(words[0].left(colon).toStdString(), port);
    if (result == 1)
        result = command->run(*client, values);
    if (result == 1)
        return exitGood;
    printError(QString("%1 failed with %2: %3").arg(command->name).arg(result).arg(resultText(result)));
    return exitFailed;
}
