#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/listener.h"
#include "gqtool/trace/traceOutput.h"
#include "gqtool/trace/traceRelay.h"
#include "shared/console.h"

#include <QCommandLineParser>

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

static const char* const description =
    "Relays between clients and a station and prints a line for each frame: time, number of the connection, -> for\n"
    "a frame from the client or <- for one from the station, and its contents. All bytes are passed on unchanged and\n"
    "immediately, even if they are not frames. SIGINT or SIGTERM ends it.\n"
    "\n"
    "  gqtool trace --listen 5001 127.0.0.1:5000\n"
    "\n"
    "Clients then connect to port 5001. --pcap writes a capture of all connections, as if the clients had talked to\n"
    "the station directly. Wireshark opens it, also while it is being written:\n"
    "\n"
    "  gqtool trace --listen 5001 --pcap FILE 127.0.0.1:5000\n"
    "  tshark -r FILE -d tcp.port==5000,gqframe";

int runTrace(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description);
    const QCommandLineOption listen("listen", "listen on PORT; 0 means a free port", "PORT");
    const QCommandLineOption address("address", "listen on ADDRESS (default: 127.0.0.1)", "ADDRESS", "127.0.0.1");
    const QCommandLineOption udp("udp", "relay datagrams instead of connections");
    const QCommandLineOption pcap("pcap", "also write all packets to FILE, for Wireshark", "FILE");
    const QCommandLineOption json("json",
                                  "print each line as a JSON object, with up to 65536 bytes of a payload in hex");
    const QCommandLineOption map("map", "show commands and payloads by the map of commands in FILE", "FILE");
    parser.addOptions({listen, address, udp, pcap, map, json});
    parser.addPositionalArgument("HOST:PORT", "The station: a name or a dotted IPv4 address, and a port.");
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;

    const QStringList words = parser.positionalArguments();
    if (words.size() != 1 || !parser.isSet(listen))
        return usageError("--listen PORT and one HOST:PORT are required");
    Endpoint endpoint;
    const QString endpointError = readEndpoint(words[0], endpoint);
    if (!endpointError.isEmpty())
        return usageError(endpointError);
    int localPort = 0;
    if (!readInt(parser.value(listen), 0, 65535, localPort))
        return usageError(QString("--listen must be an integer from 0 to 65535, got '%1'").arg(parser.value(listen)));
    if (!addressError(parser.value(address)).isEmpty())
        return usageError(addressError(parser.value(address)));

    const bool isUdp = parser.isSet(udp);
    QStringList stationAddresses;
    QString error;
    CommandMap commands;
    if (parser.isSet(map) && !commands.read(parser.value(map), error)) {
        printError(error);
        return exitFailed;
    }
    if (!resolveHost(endpoint.host, resolveMs, stationAddresses, error)) {
        printError(error);
        return exitFailed;
    }
    const sockaddr_in station = addressOf(stationAddresses[0], endpoint.port);
    sockaddr_in local = addressOf(parser.value(address), localPort);
    const int listener = openBound(isUdp ? SOCK_DGRAM : SOCK_STREAM, local);
    if (listener < 0 || (!isUdp && ::listen(listener, SOMAXCONN) != 0)) {
        printError(QString("cannot listen on %1: %2").arg(endpointText(local), strerror(errno)));
        return exitFailed;
    }
    CaptureFile capture;
    if (parser.isSet(pcap) && !capture.open(parser.value(pcap), error)) {
        printError(QString("cannot write to %1: %2").arg(parser.value(pcap), error));
        return exitFailed;
    }
    TraceOutput output(parser.isSet(json), isUdp, parser.isSet(map) ? &commands : nullptr);
    const int stopper = openStopper();
    output.listening(endpointText(local), endpointText(station));
    const auto relay = isUdp ? relayDatagrams : relayStreams;
    const bool isGood = relay(listener, station, stopper, output, capture);
    if (!isGood)
        printError(QString("cannot relay: %1").arg(strerror(errno)));
    if (isatty(STDERR_FILENO) != 0)
        printError(output.summary());
    return isGood && capture.isGood() ? exitGood : exitFailed;
}
