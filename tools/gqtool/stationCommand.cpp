#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/station/station.h"
#include "shared/console.h"

#include <QCommandLineParser>

#include <cerrno>
#include <climits>
#include <cstring>

// Adds the faults of the options, as lines of a script. Returns false with the reason in `error`.
static bool addFaults(const QCommandLineParser& parser, StationScript& script, QString& error)
{
    const QString pieces = parser.value("pieces");
    QStringList lines = {"reply every late " + parser.value("late"), "greeting every pieces " + pieces,
                         "reply every pieces " + pieces};
    if (parser.isSet("no-greeting"))
        lines.append("greeting every silent");
    if (parser.isSet("silent"))
        lines.append("reply every silent");
    if (parser.isSet("wrong-end"))
        lines.append("reply every wrong-end");
    if (parser.isSet("close"))
        lines.append("reply every close-after 0");
    for (const QString& line : lines) {
        if (!script.add(line, error)) {
            error = "--" + error; // each option has the name of its fault
            return false;
        }
    }
    return true;
}

// Serves clients until accepting fails. Returns an exit code.
static int serve(const StationOptions& options, StationLog& log, const QString& address, int port, bool withDatagrams)
{
    static Station& station = *new Station(options, log); // never destroyed: its threads run until the process ends
    if (!station.listen(address, port, withDatagrams)) {
        printError(QString("cannot listen on %1:%2: %3").arg(address).arg(port).arg(strerror(errno)));
        return exitFailed;
    }
    station.serve();
    const QString reason = strerror(errno);
    log.save();
    printError("cannot accept more connections: " + reason);
    return exitFailed;
}

static const char* const description =
    "Runs a simulated station: a frame server that greets clients, answers the ready-made commands and serves\n"
    "lists. It prints a line with its address, then a line per connection and request, until it is stopped.\n"
    "\n"
    "Commands: 1 systemState (1 until setState), 2 systemTime (its clock), 3 clear (resets state and clock),\n"
    "5 setTime (sets its clock to the first integer, in seconds since 1970), 6 setState.\n"
    "\n"
    "Commands defined by the station, each with one integer as payload. 0x20 to 0x22 take a count: up to 1000\n"
    "integers, 100000 bytes or 48 strings. 0x23 takes a code and answers with an error frame. 0x30 to 0x38 serve a\n"
    "small point database, as byte lists that hold records: 0x30 all points in short form, 0x31 to 0x34 float, int,\n"
    "bool and blob points, 0x35 current values, 0x36 a stored wave, 0x37 events, 0x38 an object. 0x40 to 0x45 serve\n"
    "a front-end processor in the same way: 0x40 node heads, 0x41 communication entries, 0x42 YcItem, 0x43 YxItem,\n"
    "0x44 YdItem and 0x45 YbItem.\n"
    "\n"
    "An unknown command is answered with error -10, an invalid payload with error -11.\n"
    "\n"
    "A script defines which greetings and replies go wrong. It has one fault per line, and comments from #:\n"
    "  greeting|reply NUMBER|every FAULT [VALUE]\n"
    "Greetings and replies are numbered from 1, over all connections and datagrams. Faults add up; if several lines\n"
    "set the same fault, the last one counts. Options apply before the script. The faults:\n"
    "%1Over UDP there is no greeting, each piece is a datagram, and close-after only cuts the reply.\n"
    "\n"
    "Each connection uses two descriptors, one of which stays open until the station ends.";

int runStation(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QString(description).arg(StationScript::faultList()));
    const QCommandLineOption address("address", "listen on ADDRESS; 0.0.0.0 means all interfaces (default: 127.0.0.1)",
                                     "ADDRESS", "127.0.0.1");
    const QCommandLineOption port("port", "listen on PORT (default: 0, a free port)", "PORT", "0");
    const QCommandLineOption greeting("greeting", "greet with NUMBER (default: 1)", "NUMBER", "1");
    const QCommandLineOption noGreeting("no-greeting", "do not greet");
    const QCommandLineOption late("late", "delay each reply by MS (default: 0)", "MS", "0");
    const QCommandLineOption gap(
        "gap", "wait MS between the frames of a reply, as clients lose frames that arrive together (default: 100)",
        "MS", "100");
    const QCommandLineOption pieces("pieces", "send replies in pieces of BYTES", "BYTES", "0");
    const QCommandLineOption silent("silent", "never reply");
    const QCommandLineOption wrongEnd("wrong-end", "end replies with a wrong byte");
    const QCommandLineOption closes("close", "close the connection instead of replying");
    const QCommandLineOption udp("udp", "also answer datagrams on the same port, without a greeting");
    const QCommandLineOption logFile("log", "also write the lines, with their time, to FILE", "FILE");
    const QCommandLineOption script("script", "read faults from FILE, see above", "FILE");
    const QCommandLineOption json("json", "print each line as a JSON object; the log stays text");
    const QCommandLineOption quiet("quiet", "print only the first line; the log still gets all of them");
    parser.addOptions({address, port, udp, greeting, noGreeting, late, gap, pieces, silent, wrongEnd, closes, script,
                       json, quiet, logFile});
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;
    if (!parser.positionalArguments().isEmpty())
        return usageError("station takes options only, got '" + parser.positionalArguments().constFirst() + "'");

    if (!addressError(parser.value(address)).isEmpty())
        return usageError(addressError(parser.value(address)));
    StationOptions options;
    int portNumber = 0;
    if (!readInt(parser.value(port), 0, 65535, portNumber))
        return usageError(QString("--port must be an integer from 0 to 65535, got '%1'").arg(parser.value(port)));
    if (!readInt(parser.value(greeting), INT_MIN, INT_MAX, options.greeting))
        return usageError(QString("--greeting must be a 4-byte integer, got '%1'").arg(parser.value(greeting)));
    if (!readInt(parser.value(gap), 0, INT_MAX, options.gapMs))
        return usageError(QString("--gap must be a number of milliseconds, got '%1'").arg(parser.value(gap)));
    options.printsJson = parser.isSet(json);
    options.isQuiet = parser.isSet(quiet);

    QString error;
    if (!addFaults(parser, options.script, error))
        return usageError(error);
    if (parser.isSet(script) && !options.script.read(parser.value(script), error)) {
        printError(error);
        return exitFailed;
    }

    // Never destroyed: its threads run until the process ends.
    static StationLog& log = *new StationLog;
    if (parser.isSet(logFile) && !log.open(parser.value(logFile), error)) {
        printError(QString("cannot write to %1: %2").arg(parser.value(logFile), error));
        return exitFailed;
    }
    return serve(options, log, parser.value(address), portNumber, parser.isSet(udp));
}
