#include "command.h"
#include "commandLine.h"
#include "encodingOption.h"
#include "endpoint.h"
#include "gqtool/listener.h"
#include "gqtool/records/textEncoding.h"
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
    return signalfd(-1, &ends, SFD_NONBLOCK | SFD_CLOEXEC);
}

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
    const Option listen = line.integer("listen", Text::tr("listen on PORT; 0 means a free port"), "PORT", 0, 65535);
    const Option address =
        line.text("address", Text::tr("listen on ADDRESS (default: 127.0.0.1)"), "ADDRESS", "127.0.0.1");
    const Option udp = line.flag("udp", Text::tr("relay datagrams instead of connections"));
    const Option pcap = line.text("pcap", Text::tr("also write all packets to FILE, for Wireshark"), "FILE");
    const Option record = line.text(
        "record", Text::tr("also write the lines of --json to FILE, with up to 4 MiB of each payload"), "FILE");
    const Option maxPayload =
        line.integer("max-payload", Text::tr("with --record, write up to BYTES of each payload (default: 4194304)"),
                     "BYTES", 1, FrameSource::mostPayload, FrameSource::usualPayload);
    maxPayload.needs(record);
    const Option map = line.text("map", Text::tr("show commands and payloads by the map of commands in FILE"), "FILE");
    EncodingOption encoding(line);
    encoding.needs(map);
    const Option json =
        line.flag("json", Text::tr("print each line as a JSON object, with up to 65536 bytes of a payload in hex"));
    const Option server =
        line.requiredArgument("HOST:PORT", Text::tr("the station: a name or a dotted IPv4 address, and a port"));
    int exitCode = exitGood;
    if (!line.parse(arguments, exitCode))
        return exitCode;

    if (!listen.isSet())
        return usageError(Text::tr("%1 is required").arg("--listen PORT"));
    Endpoint endpoint;
    const QString endpointError = readEndpoint(server.text(), endpoint);
    if (!endpointError.isEmpty())
        return usageError(endpointError);
    if (!addressError(address.text()).isEmpty())
        return usageError(addressError(address.text()));
    if (!encoding.apply())
        return exitUsage;

    const bool isUdp = udp.isSet();
    QStringList stationAddresses;
    QString error;
    CommandMap commands;
    if (map.isSet() && !commands.read(map.text()))
        return exitFailed;
    Text unresolved;
    if (!resolveHost(endpoint.host, resolveMs, stationAddresses, unresolved)) {
        printError(unresolved);
        return exitFailed;
    }
    const sockaddr_in station = addressOf(stationAddresses[0], endpoint.port);
    sockaddr_in local = addressOf(address.text(), listen.number());
    const int listener = openBound(isUdp ? SOCK_DGRAM : SOCK_STREAM, local);
    if (listener < 0 || (!isUdp && ::listen(listener, SOMAXCONN) != 0)) {
        printError(Text::tr("cannot listen on %1: %2").arg(endpointText(local), errorText(errno)));
        return exitFailed;
    }
    CaptureFile capture;
    if (pcap.isSet() && !capture.open(pcap.text(), error)) {
        printError(Text::tr("cannot write to %1: %2").arg(pcap.text(), error));
        return exitFailed;
    }
    TraceOutput output(json.isSet(), isUdp, map.isSet() ? &commands : nullptr);
    if (record.isSet() && !output.record(record.text(), maxPayload.number(), error)) {
        printError(Text::tr("cannot write to %1: %2").arg(record.text(), error));
        return exitFailed;
    }
    const int stopper = openStopper();
    output.listening(endpointText(local), endpointText(station));
    const auto relay = isUdp ? relayDatagrams : relayStreams;
    const bool isGood = relay(listener, station, stopper, output, capture);
    if (!isGood)
        printError(Text::tr("cannot relay: %1").arg(errorText(errno)));
    if (!encodingHint().isEmpty())
        printError(encodingHint());
    if (isatty(STDERR_FILENO) != 0)
        printError(output.summary());
    return isGood && capture.isGood() && output.isGood() ? exitGood : exitFailed;
}
