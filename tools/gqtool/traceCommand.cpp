#include "command.h"
#include "commandLine.h"
#include "endpoint.h"
#include "gqtool/trace/traceOutput.h"
#include "gqtool/trace/traceRelay.h"
#include "shared/console.h"

#include <QCommandLineParser>

#include <arpa/inet.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

static const int resolveMs = 9000;

static sockaddr_in addressOf(const QString& host, int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(port));
    inet_aton(host.toLocal8Bit().constData(), &address.sin_addr);
    return address;
}

// A socket that listens there, or -1; `address` gets the port that the system has chosen for 0.
static int openListener(bool isUdp, sockaddr_in& address)
{
    const int type = isUdp ? SOCK_DGRAM : SOCK_STREAM;
    const int listener = socket(AF_INET, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int on = 1;
    if (!isUdp)
        setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    auto* where = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    if (bind(listener, where, size) != 0 || (!isUdp && listen(listener, 128) != 0) ||
        getsockname(listener, where, &size) != 0)
        return -1;
    return listener;
}

// A descriptor that becomes readable when the program is told to end.
static int openStopper()
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    return signalfd(-1, &ends, SFD_NONBLOCK | SFD_CLOEXEC);
}

int runTrace(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Stands between clients and a station, and prints a line for each frame that passes: time, number of the\n"
        "connection, -> for what the client sends or <- for what the station sends, and what is in it. All bytes pass\n"
        "unchanged and at once, also those that are no frames. It ends on SIGINT or SIGTERM.\n\n"
        "  gqtool trace --listen 5001 127.0.0.1:5000\n\n"
        "and let the clients call port 5001. A file of --write becomes a capture file, one for each connection, by\n"
        "text2pcap (4.0 or later, from Debian's wireshark-common): for connection 1 of a client at port 40000\n\n"
        "  text2pcap -r '^1 (?<dir>[IO]) (?<time>\\S+) (?<data>[0-9a-f]+)$' -t ISO -T 40000,5000 FILE 1.pcapng\n\n"
        "with -u in place of -T for datagrams. The directions I and O are as seen from the station. FILE has a\n"
        "# line with this command for each of its connections.");
    const QCommandLineOption listen("listen", "Port to listen on, chosen by the system if 0.", "PORT");
    const QCommandLineOption address("address", "Local address to listen on (127.0.0.1).", "ADDRESS", "127.0.0.1");
    const QCommandLineOption udp("udp", "Pass datagrams on, not connections.");
    const QCommandLineOption write("write", "Write all that passes to a file for text2pcap.", "FILE");
    const QCommandLineOption json("json",
                                  "Print one JSON object a line; payloads in hex, the first 65536 bytes of each.");
    parser.addOptions({listen, address, udp, write, json});
    parser.addPositionalArgument("HOST:PORT", "The station, as name or dotted IPv4 address and port.");
    int exitCode = exitGood;
    if (!parseArguments(parser, arguments, exitCode))
        return exitCode;

    const QStringList words = parser.positionalArguments();
    if (words.size() != 1 || !parser.isSet(listen))
        return usageError("trace takes --listen PORT and HOST:PORT");
    Endpoint endpoint;
    const QString endpointError = readEndpoint(words[0], endpoint);
    if (!endpointError.isEmpty())
        return usageError(endpointError);
    int localPort = 0;
    if (!readInt(parser.value(listen), 0, 65535, localPort))
        return usageError("--listen must be a port from 0 to 65535");
    if (!addressError(parser.value(address)).isEmpty())
        return usageError(addressError(parser.value(address)));

    const bool isUdp = parser.isSet(udp);
    QStringList stationAddresses;
    QString error;
    if (!resolveHost(endpoint.host, resolveMs, stationAddresses, error)) {
        printError(error);
        return exitFailed;
    }
    const sockaddr_in station = addressOf(stationAddresses[0], endpoint.port);
    sockaddr_in local = addressOf(parser.value(address), localPort);
    const int listener = openListener(isUdp, local);
    if (listener < 0) {
        printError(QString("can't listen on %1: %2").arg(endpointText(local), strerror(errno)));
        return exitFailed;
    }
    TraceOutput output(parser.isSet(json));
    if (parser.isSet(write) && !output.open(parser.value(write), isUdp)) {
        printError(QString("can't write to %1: %2").arg(parser.value(write), strerror(errno)));
        return exitFailed;
    }
    const int stopper = openStopper();
    output.listening(endpointText(local), endpointText(station));
    const auto relay = isUdp ? relayDatagrams : relayStreams;
    const bool isGood = relay(listener, station, stopper, output);
    if (!isGood)
        printError(QString("the relay has failed: %1").arg(strerror(errno)));
    if (isatty(STDERR_FILENO) != 0)
        printError(output.summary());
    return isGood && output.isGood() ? exitGood : exitFailed;
}
