#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "errorList.h"
#include "gqtool/station/commandAnswers.h"
#include "gqtool/station/recordedAnswers.h"
#include "gqtool/station/simulatedAnswers.h"
#include "gqtool/station/station.h"
#include "shared/console.h"
#include "shared/text.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <memory>
#include <utility>

// The options that spoil every greeting or reply. Each has the name of its fault.
class FaultOptions {
public:
    explicit FaultOptions(CommandLine& line)
        : noGreeting(line.flag("no-greeting", Text::tr("do not greet"))),
          late(line.text("late", Text::tr("delay each reply by MS (default: 0)"), "MS", "0")),
          pieces(line.text("pieces", Text::tr("send replies in pieces of BYTES"), "BYTES", "0")),
          silent(line.flag("silent", Text::tr("never reply"))),
          wrongEnd(line.flag("wrong-end", Text::tr("end replies with a wrong byte"))),
          closes(line.flag("close", Text::tr("close the connection instead of replying")))
    {
    }

    // Adds the faults as lines of a script. Returns false with the reason in `error`.
    bool addTo(StationScript& script, QString& error) const
    {
        QStringList lines = {"reply every late " + late.text(), "greeting every pieces " + pieces.text(),
                             "reply every pieces " + pieces.text()};
        if (noGreeting.isSet())
            lines.append("greeting every silent");
        if (silent.isSet())
            lines.append("reply every silent");
        if (wrongEnd.isSet())
            lines.append("reply every wrong-end");
        if (closes.isSet())
            lines.append("reply every close-after 0");
        for (const QString& line : lines) {
            if (!script.add(line, error)) {
                error = "--" + error; // it begins with the name of the fault
                return false;
            }
        }
        return true;
    }

private:
    Option noGreeting;
    Option late;
    Option pieces;
    Option silent;
    Option wrongEnd;
    Option closes;
};

struct StationOptions {
    explicit StationOptions(CommandLine& line);

    Option address;
    Option port;
    Option udp;
    Option greeting;
    Option gap;
    FaultOptions everyFault;
    Option commands;
    Option replay;
    Option asTimed;
    Option script;
    Option seed;
    Option json;
    Option quiet;
    Option logFile;
};

StationOptions::StationOptions(CommandLine& line)
    : address(line.text("address", Text::tr("listen on ADDRESS; 0.0.0.0 means all interfaces (default: 127.0.0.1)"),
                        "ADDRESS", "127.0.0.1")),
      port(line.integer("port", Text::tr("listen on PORT (default: 0, a free port)"), "PORT", 0, 65535)),
      udp(line.flag("udp", Text::tr("also answer datagrams on the same port, without a greeting"))),
      greeting(line.integer("greeting", Text::tr("greet with NUMBER (default: 1)"), "NUMBER", INT_MIN, INT_MAX, 1)),
      gap(line.integer(
          "gap",
          Text::tr("wait MS between the frames of a reply, as clients lose frames that arrive together (default: 100)"),
          "MS", 0, INT_MAX, 100)),
      everyFault(line),
      commands(line.text("commands", Text::tr("answer as FILE says, see above; SIGHUP reads it again"), "FILE")),
      replay(line.text("replay", Text::tr("answer as the server did in FILE, which 'trace --record' wrote"), "FILE")),
      asTimed(line.flag("as-timed", Text::tr("replay with the recorded delays"))),
      script(line.text("script", Text::tr("read faults from FILE, see above"), "FILE")),
      seed(line.integer("seed", Text::tr("select faults by chance; the same NUMBER selects the same (default: 1)"),
                        "NUMBER", 0, INT_MAX, 1)),
      json(line.flag("json", Text::tr("print each line as a JSON object; the log stays text"))),
      quiet(line.flag("quiet", Text::tr("print only the first line; the log still gets all of them"))),
      logFile(line.text("log", Text::tr("also write the lines, with their time, to FILE"), "FILE"))
{
    replay.excludes(commands);
    replay.excludes(greeting); // the greeting is the recorded one
    asTimed.needs(replay);
}

// --- Files --------------------------------------------------------------------------------------------------------

static bool readScript(StationScript& script, const QString& path)
{
    QStringList errors;
    const bool isGood = script.read(path, errors);
    printErrors(errors);
    return isGood;
}

static bool readCommands(CommandAnswers& commands)
{
    QStringList messages;
    const bool isGood = commands.read(messages);
    printErrors(messages);
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
            station.report(
                (isRead ? Text::tr("commands read: %1") : Text::tr("commands kept: %1")).arg(commands.count()),
                {{"event", isRead ? "commandsRead" : "commandsKept"},
                 {"commands", static_cast<qint64>(commands.count())}});
        }
        awaitHangup(hangups, station, commands);
    });
}

// --- Answers ------------------------------------------------------------------------------------------------------

// The answers of --replay, or those of the simulated station. Returns null and prints the error if the recording is
// wrong.
static std::unique_ptr<StationAnswers> makeAnswers(const StationOptions& options)
{
    if (!options.replay.isSet())
        return std::make_unique<SimulatedAnswers>(options.greeting.number(), options.gap.number());
    auto recorded = std::make_unique<RecordedAnswers>(options.asTimed.isSet(), options.gap.number());
    QString error;
    if (recorded->read(options.replay.text(), error))
        return recorded;
    printError(error);
    return nullptr;
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
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
    "--commands FILE replaces all commands by those of a JSON file, except 1, 2, 3, 5 and 6 if it has none of them:\n"
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
    "--replay FILE gives each request the reply that a recorded server sent to the same command and payload, in the\n"
    "recorded order; the last one is repeated. The payload of commands 1 to 3, the client's clock, is ignored.\n"
    "Greetings are the recorded ones. A request that was not recorded is answered with error -10.\n"
    "\n"
    "A script defines which greetings and replies go wrong. It has one fault per line, and comments from #:\n"
    "  greeting|reply|command COMMAND SELECTOR FAULT [VALUE]\n"
    "Greetings, replies, and the replies to each command are numbered from 1, over all connections and datagrams.\n"
    "SELECTOR is a number, a range such as 3-7, every, every/10 (the 10th, 20th ...) or a chance such as 2%, which\n"
    "--seed repeats. Faults add up; if several lines set the same fault, the last one counts. Options apply before\n"
    "the script. The faults:\n"
    "%1"
    "Over UDP there is no greeting, each piece is a datagram, and close-after only cuts the reply.\n");

int runStation(const QStringList& arguments)
{
    CommandLine line(Text::tr(description).arg(StationScript::faultList()));
    const StationOptions options(line);
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    const QString address = options.address.text();
    if (!addressError(address).isEmpty())
        return usageError(addressError(address));

    StationScript faults(static_cast<unsigned int>(options.seed.number()));
    QString error;
    if (!options.everyFault.addTo(faults, error))
        return usageError(error);
    if (options.script.isSet() && !readScript(faults, options.script.text()))
        return exitFailed;

    const int hangups = options.commands.isSet() ? openHangups() : -1;
    // Never destroyed: its thread runs until the process ends.
    static StationLog& log = *new StationLog;
    if (options.logFile.isSet() && !log.open(options.logFile.text(), error)) {
        printError(Text::tr("cannot write to %1: %2").arg(options.logFile.text(), error));
        return exitFailed;
    }
    std::unique_ptr<StationAnswers> answers;
    CommandAnswers* commandFile = nullptr;
    if (options.commands.isSet()) {
        commandFile = new CommandAnswers(options.commands.text(), options.greeting.number(), options.gap.number());
        answers.reset(commandFile);
    } else {
        answers = makeAnswers(options);
    }
    if (answers == nullptr || (commandFile != nullptr && !readCommands(*commandFile)))
        return exitFailed;
    Station station(*answers, faults, log, {options.json.isSet(), options.quiet.isSet()});
    const int port = options.port.number();
    if (!station.bind(address, port, options.udp.isSet())) {
        printError(Text::tr("cannot listen on %1:%2: %3").arg(address).arg(port).arg(errorText(errno)));
        return exitFailed;
    }
    if (commandFile != nullptr)
        awaitHangup(hangups, station, *commandFile);
    station.serve();
    printError(Text::tr("cannot wait for clients: %1").arg(errorText(errno)));
    return exitFailed;
}
