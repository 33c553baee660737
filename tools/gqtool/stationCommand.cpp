#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/station/station.h"
#include "shared/console.h"

#include <QCommandLineParser>

#include <cerrno>
#include <climits>
#include <cstring>

int runStation(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "A simulated station: a frame server that greets, answers the ready-made commands and serves lists.\n"
        "Its first line says where it listens, a line per connection and request follows. It runs until it is ended.\n"
        "\n"
        "Commands: 1 systemState (1 until setState), 2 systemTime (its clock), 3 clear (state and clock as at the\n"
        "start), 5 setTime (sets its clock to the first integer, seconds since 1970), 6 setState.\n"
        "\n"
        "Further commands, with numbers of its own and one integer as payload. How many: 0x20 up to 1000 integers,\n"
        "0x21 up to 100000 bytes, 0x22 up to 48 strings. Which code: 0x23 an error frame. A small point database, as\n"
        "byte lists that hold records: 0x30 all points in short form, 0x31 to 0x34 float, int, bool and blob points,\n"
        "0x35 current values, 0x36 a stored wave, 0x37 events, 0x38 an object. A front-end processor in the same way:\n"
        "0x40 node heads, 0x41 communication entries, 0x42 to 0x45 YcItem, YxItem, YdItem and YbItem.\n"
        "\n"
        "It answers -10 to an unknown command and -11 to a payload that it can't use.\n"
        "\n"
        "A script tells which greeting and which reply go wrong, a line each, with comments from # on:\n"
        "  greeting|reply NUMBER|every FAULT [VALUE]\n"
        "Greetings and replies are counted from 1 on, over all connections and datagrams. Lines add up; of those that\n"
        "set the same thing the last one holds. Options come ahead of the lines. The faults:\n" +
        StationScript::faultList() +
        "Over UDP there is no greeting, each piece is a datagram, and close-after cuts, with nothing to close.\n"
        "\n"
        "Each connection costs two descriptors, one of which stays open for good.");
    const QCommandLineOption address(
        "address", "Address to listen on (127.0.0.1, this machine alone); 0.0.0.0 means every interface.", "ADDRESS",
        "127.0.0.1");
    const QCommandLineOption port("port", "Port to listen on, chosen by the system if 0 (0).", "PORT", "0");
    const QCommandLineOption greeting("greeting", "Integer of the greeting (1).", "NUMBER", "1");
    const QCommandLineOption noGreeting("no-greeting", "Do not greet.");
    const QCommandLineOption late("late", "Answer that much later.", "MS", "0");
    const QCommandLineOption gap(
        "gap", "Time between the frames of one reply (100); clients lose frames that come together.", "MS", "100");
    const QCommandLineOption pieces("pieces", "Send replies in pieces of that size.", "BYTES", "0");
    const QCommandLineOption silent("silent", "Never answer.");
    const QCommandLineOption wrongEnd("wrong-end", "End replies with a wrong byte.");
    const QCommandLineOption closes("close", "Close the connection in place of a reply.");
    const QCommandLineOption udp("udp", "Answer datagrams too, on the same port; there is no greeting then.");
    const QCommandLineOption logFile("log", "Write the lines to a file too, with the time in front.", "FILE");
    const QCommandLineOption script("script", "Read from a file what goes wrong, see above.", "FILE");
    const QCommandLineOption json("json", "Say the lines as JSON, an object each; the log keeps its form.");
    const QCommandLineOption quiet("quiet", "Say the first line alone; the log keeps them all.");
    parser.addOptions({address, port, udp, greeting, noGreeting, late, gap, pieces, silent, wrongEnd, closes, script,
                       json, quiet, logFile});
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;
    if (!parser.positionalArguments().isEmpty())
        return usageError("station takes options only");

    if (!addressError(parser.value(address)).isEmpty())
        return usageError(addressError(parser.value(address)));
    StationOptions options;
    int portNumber = 0;
    if (!readInt(parser.value(port), 0, 65535, portNumber))
        return usageError("--port must be from 0 to 65535");
    if (!readInt(parser.value(greeting), INT_MIN, INT_MAX, options.greeting))
        return usageError("a greeting is an integer");
    if (!readInt(parser.value(gap), 0, INT_MAX, options.gapMs))
        return usageError("--gap takes milliseconds");
    options.saysJson = parser.isSet(json);
    options.isQuiet = parser.isSet(quiet);

    // The other options are lines of a script.
    QString error;
    if (!options.script.add("reply every late " + parser.value(late), error))
        return usageError("--late takes milliseconds");
    for (const char* answer : {"greeting", "reply"}) {
        if (!options.script.add(QString("%1 every pieces %2").arg(answer, parser.value(pieces)), error))
            return usageError("--pieces takes a number of bytes");
    }
    if (parser.isSet(noGreeting))
        options.script.add("greeting every silent", error);
    if (parser.isSet(silent))
        options.script.add("reply every silent", error);
    if (parser.isSet(wrongEnd))
        options.script.add("reply every wrong-end", error);
    if (parser.isSet(closes))
        options.script.add("reply every close-after 0", error);
    if (parser.isSet(script) && !options.script.read(parser.value(script), error)) {
        printError(error);
        return exitFailed;
    }

    // Neither is ever destroyed: their threads run until the process ends.
    static StationLog& log = *new StationLog;
    if (parser.isSet(logFile) && !log.open(parser.value(logFile))) {
        printError(QString("can't write to %1").arg(parser.value(logFile)));
        return exitFailed;
    }
    static Station& station = *new Station(options, log);
    if (!station.listen(parser.value(address), portNumber, parser.isSet(udp))) {
        printError(
            QString("can't listen on %1:%2: %3").arg(parser.value(address)).arg(portNumber).arg(strerror(errno)));
        return exitFailed;
    }
    station.serve();
    log.save();
    printError("can't accept any more connections");
    return exitFailed;
}
