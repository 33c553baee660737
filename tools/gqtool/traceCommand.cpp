#include "command.h"
#include "commandLine.h"
#include "encodingOption.h"
#include "endpoint.h"
#include "gqtool/listener.h"
#include "gqtool/trace/traceOutput.h"
#include "gqtool/trace/traceRelay.h"
#include "shared/console.h"
#include "shared/text.h"

#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

static const int resolveMs = 9000;

// Returns a descriptor that becomes readable on SIGINT or SIGTERM.
static int openStopper()
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    return signalfd(-1, &ends, SFD_CLOEXEC);
}

// --- Options ------------------------------------------------------------------------------------------------------

struct TraceOptions {
    explicit TraceOptions(CommandLine& line);

    // Returns what is wrong with the options; empty if nothing is. Else fills `endpoint`, the station's.
    QString mistake(Endpoint& endpoint) const;

    Option listen;
    Option address;
    Option udp;
    Option pcap;
    Option record;
    Option maxPayload;
    Option map;
    EncodingOption encoding;
    Option json;
    Option server;
};

TraceOptions::TraceOptions(CommandLine& line)
    : listen(line.integer("listen", Text::tr("listen on PORT; 0 means a free port"), "PORT", 0, 65535)),
      address(line.text("address", Text::tr("listen on ADDRESS (default: 127.0.0.1)"), "ADDRESS", "127.0.0.1")),
      udp(line.flag("udp", Text::tr("relay datagrams instead of connections"))),
      pcap(line.text("pcap", Text::tr("also write all packets to FILE, for Wireshark"), "FILE")),
      record(line.text("record", Text::tr("also write the lines of --json to FILE, with up to 4 MiB of each payload"),
                       "FILE")),
      maxPayload(line.integer("max-payload",
                              Text::tr("with --record, write up to BYTES of each payload (default: 4194304)"), "BYTES",
                              1, FrameSource::mostPayload, FrameSource::usualPayload)),
      map(line.text("map", Text::tr("show commands and payloads by the map of commands in FILE"), "FILE")),
      encoding(line),
      json(line.flag("json", Text::tr("print each line as a JSON object, with up to 65536 bytes of a payload in hex"))),
      server(line.requiredArgument("HOST:PORT", Text::tr("the station: a name or a dotted IPv4 address, and a port")))
{
    maxPayload.needs(record);
    encoding.needs(map);
}

QString TraceOptions::mistake(Endpoint& endpoint) const
{
    if (!listen.isSet())
        return Text::tr("%1 is required").arg("--listen PORT");
    const QString endpointError = readEndpoint(server.text(), endpoint);
    return endpointError.isEmpty() ? addressError(address.text()) : endpointError;
}

// --- Files --------------------------------------------------------------------------------------------------------

// Opens the files of --pcap and --record. On failure, returns false and prints the error.
static bool openFiles(const TraceOptions& options, CaptureFile& capture, TraceOutput& output)
{
    QString error;
    const bool isCaptured = !options.pcap.isSet() || capture.open(options.pcap.text(), error);
    const bool isRecorded = !isCaptured || !options.record.isSet() ||
                            output.record(options.record.text(), options.maxPayload.number(), error);
    if (!isCaptured || !isRecorded)
        printError(Text::tr("cannot write to %1: %2").arg((isCaptured ? options.record : options.pcap).text(), error));
    return isCaptured && isRecorded;
}

// ------------------------------------------------------------------------------------------------------------------

static const char* const description = QT_TRANSLATE_NOOP(
    "Text",
    "Relays between clients and a station and prints a line for each frame: time, number of the connection, -> for\n"
    "a frame from the client or <- for one from the station, and its contents. All bytes are passed on unchanged and\n"
    "immediately, even if they are not frames. SIGINT or SIGTERM ends it.\n"
    "\n"
    "  gqtool trace --listen 5001 127.0.0.1:5000\n"
    "\n"
    "Clients then connect to port 5001. --pcap writes a capture of all connections, as if the clients had talked to\n"
    "the station directly. Wireshark can open it while it is being written:\n"
    "\n"
    "  gqtool trace --listen 5001 --pcap FILE 127.0.0.1:5000\n"
    "  tshark -r FILE -d tcp.port==5000,gqframe\n"
    "\n"
    "--record writes a file from which 'gqtool station --replay' answers as the station did.");

int runTrace(const QStringList& arguments)
{
    CommandLine line(Text::tr(description));
    const TraceOptions options(line);
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    Endpoint endpoint;
    const QString mistake = options.mistake(endpoint);
    if (!mistake.isEmpty())
        return usageError(mistake);
    if (!options.encoding.apply())
        return exitUsage;

    const bool isUdp = options.udp.isSet();
    CommandMap commands;
    if (options.map.isSet() && !commands.read(options.map.text()))
        return exitFailed;
    QStringList stationAddresses;
    Text unresolved;
    if (!resolveHost(endpoint.host, resolveMs, stationAddresses, unresolved)) {
        printError(unresolved);
        return exitFailed;
    }
    const sockaddr_in station = addressOf(stationAddresses[0], endpoint.port);
    sockaddr_in local = addressOf(options.address.text(), options.listen.number());
    const int listener = openBound(isUdp ? SOCK_DGRAM : SOCK_STREAM, local);
    if (listener < 0 || (!isUdp && ::listen(listener, SOMAXCONN) != 0)) {
        printError(Text::tr("cannot listen on %1: %2").arg(endpointText(local), errorText(errno)));
        return exitFailed;
    }
    if (isSocketAt(station, local)) {
        printError(Text::tr("%1 is the address of the trace itself").arg(endpointText(station)));
        return exitFailed;
    }
    CaptureFile capture;
    TraceOutput output(options.json.isSet(), isUdp, options.map.isSet() ? &commands : nullptr);
    if (!openFiles(options, capture, output))
        return exitFailed;
    const int stopper = openStopper();
    output.listening(endpointText(local), endpointText(station));
    const auto relay = isUdp ? relayDatagrams : relayStreams;
    const bool isGood = relay(listener, station, stopper, output, capture);
    if (!isGood)
        printError(Text::tr("cannot relay: %1").arg(errorText(errno)));
    EncodingOption::printHint();
    if (isatty(STDERR_FILENO) != 0)
        printError(output.summary());
    return isGood && capture.isGood() && output.isGood() ? exitGood : exitFailed;
}
