#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/station/commandAnswers.h"
#include "gqtool/station/simulatedAnswers.h"
#include "gqtool/station/station.h"
#include "shared/console.h"

#include <QCommandLineParser>

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <memory>

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

// --- The file of commands -----------------------------------------------------------------------------------------

static bool readCommands(CommandAnswers& commands)
{
    QStringList errors;
    const bool isGood = commands.read(errors);
    for (const QString& error : errors)
        printError(error);
    return isGood;
}

// Returns a descriptor that becomes readable on SIGHUP. Must be called before other threads are started, since it
// blocks the signal in them.
static int openHangups()
{
    sigset_t hangup;
    sigemptyset(&hangup);
    sigaddset(&hangup, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &hangup, nullptr);
    return signalfd(-1, &hangup, SFD_NONBLOCK | SFD_CLOEXEC);
}

static void awaitHangup(int hangups, Station& station, CommandAnswers& commands)
{
    station.loop().whenReadable(hangups, [hangups, &station, &commands] {
        signalfd_siginfo signal;
        if (read(hangups, &signal, sizeof signal) == sizeof signal) {
            const bool isRead = readCommands(commands);
            station.report(QString(isRead ? "read %1 commands" : "kept %1 commands").arg(commands.count()),
                           {{"event", isRead ? "commandsRead" : "commandsKept"},
                            {"commands", static_cast<qint64>(commands.count())}});
        }
        awaitHangup(hangups, station, commands);
    });
}

// ------------------------------------------------------------------------------------------------------------------

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
    "--commands FILE replaces all commands except 1, 2, 3, 5 and 6 by those of a JSON file:\n"
    "  {\"commands\": [{\"command\": \"0x35\", \"reply\": {\"as\": \"pointRealDatas\", \"value\": [...]}},\n"
    "                {\"command\": 64, \"payload\": \"07000000\", \"reply\": {\"int\": 42}},\n"
    "                {\"command\": 80, \"error\": -7}]}\n"
    "The first entry whose command and payload fit the request answers it; without \"payload\" any fits. A reply is\n"
    "\"echo\", one of these forms, or an array of them, a frame each:\n"
    "  \"as\" and \"value\"  a record or list as for 'gqtool encode', sent as a byte list\n"
    "  \"int\", \"ints\", \"strings\", \"bytes\" (hex digits)\n"
    "  \"payload\" (hex digits), \"file\" (its name)  the bytes of a payload as they are\n"
    "SIGHUP reads the file again. If it has errors, they are printed, and the commands stay as they were.\n"
    "\n"
    "A script defines which greetings and replies go wrong. It has one fault per line, and comments from #:\n"
    "  greeting|reply|command COMMAND SELECTOR FAULT [VALUE]\n"
    "Greetings, replies, and the replies to each command are numbered from 1, over all connections and datagrams.\n"
    "SELECTOR is a number, a range such as 3-7, every, every/10 (the 10th, 20th ...) or a chance such as 2%, which\n"
    "--seed repeats. Faults add up; if several lines set the same fault, the last one counts. Options apply before\n"
    "the script. The faults:\n"
    "%1"
    "Over UDP there is no greeting, each piece is a datagram, and close-after only cuts the reply.\n";

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
    const QCommandLineOption commands("commands", "answer as FILE says, see above; SIGHUP reads it again", "FILE");
    const QCommandLineOption script("script", "read faults from FILE, see above", "FILE");
    const QCommandLineOption seed("seed", "choose faults by chance from NUMBER (default: 1)", "NUMBER", "1");
    const QCommandLineOption json("json", "print each line as a JSON object; the log stays text");
    const QCommandLineOption quiet("quiet", "print only the first line; the log still gets all of them");
    parser.addOptions({address, port, udp, greeting, noGreeting, late, gap, pieces, silent, wrongEnd, closes, commands,
                       script, seed, json, quiet, logFile});
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;
    if (!parser.positionalArguments().isEmpty())
        return usageError("station takes options only, got '" + parser.positionalArguments().constFirst() + "'");

    if (!addressError(parser.value(address)).isEmpty())
        return usageError(addressError(parser.value(address)));
    int portNumber = 0;
    int greetingNumber = 0;
    int gapMs = 0;
    int seedNumber = 0;
    if (!readInt(parser.value(port), 0, 65535, portNumber))
        return usageError(QString("--port must be an integer from 0 to 65535, got '%1'").arg(parser.value(port)));
    if (!readInt(parser.value(greeting), INT_MIN, INT_MAX, greetingNumber))
        return usageError(QString("--greeting must be a 4-byte integer, got '%1'").arg(parser.value(greeting)));
    if (!readInt(parser.value(gap), 0, INT_MAX, gapMs))
        return usageError(QString("--gap must be a number of milliseconds, got '%1'").arg(parser.value(gap)));
    if (!readInt(parser.value(seed), 0, INT_MAX, seedNumber))
        return usageError(QString("--seed must be an integer from 0 to 2147483647, got '%1'").arg(parser.value(seed)));

    StationScript faults(static_cast<unsigned int>(seedNumber));
    QString error;
    if (!addFaults(parser, faults, error))
        return usageError(error);
    if (parser.isSet(script) && !faults.read(parser.value(script), error)) {
        printError(error);
        return exitFailed;
    }

    const int hangups = parser.isSet(commands) ? openHangups() : -1;
    // Never destroyed: its thread runs until the process ends.
    static StationLog& log = *new StationLog;
    if (parser.isSet(logFile) && !log.open(parser.value(logFile), error)) {
        printError(QString("cannot write to %1: %2").arg(parser.value(logFile), error));
        return exitFailed;
    }
    std::unique_ptr<StationAnswers> answers;
    CommandAnswers* commandFile = nullptr;
    if (parser.isSet(commands)) {
        commandFile = new CommandAnswers(parser.value(commands), greetingNumber, gapMs);
        answers.reset(commandFile);
        if (!readCommands(*commandFile))
            return exitFailed;
    } else {
        answers = std::make_unique<SimulatedAnswers>(greetingNumber, gapMs);
    }
    Station station(*answers, faults, log, {parser.isSet(json), parser.isSet(quiet)});
    if (!station.bind(parser.value(address), portNumber, parser.isSet(udp))) {
        printError(
            QString("cannot listen on %1:%2: %3").arg(parser.value(address)).arg(portNumber).arg(strerror(errno)));
        return exitFailed;
    }
    if (commandFile != nullptr)
        awaitHangup(hangups, station, *commandFile);
    station.serve();
    printError(QString("cannot wait for clients: %1").arg(strerror(errno)));
    return exitFailed;
}
