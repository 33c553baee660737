#include "capturedPackets.h"
#include "gqtool/listener.h"
#include "shared/console.h"
#include "shared/progress.h"
#include "shared/text.h"
#include "traceRelay.h"

#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

static const int largestRead = CapturedConnection::largestPiece;
static const int largestWaiting = 1 << 18; // bytes that one side has sent and the other has not yet accepted
static const int mostAccepted = 64;        // clients one after the other, before the others have their turn again
static const int retryMs = 100;            // until the next attempt to accept a client without free descriptors

// One direction of a connection.
struct Flow {
    Side from;
    int source;
    int sink;
    QByteArray waiting = {};
    bool hasEnded = false; // the source has ended its stream
    bool isPassed = false; // the end was passed on to the sink
    FrameStream frames = FrameStream();
};

class RelayedConnection {
public:
    // Takes ownership of the sockets and starts to connect to the station.
    RelayedConnection(int connectionNumber, int clientSocket, int stationSocket, const sockaddr_in& stationAddress,
                      TraceOutput& traceOutput, const CapturedConnection& capturedConnection);
    ~RelayedConnection();
    RelayedConnection(const RelayedConnection&) = delete;
    RelayedConnection& operator=(const RelayedConnection&) = delete;

    // What poll(2) should wait for, and the handling of its results.
    pollfd pollEntry(Side side) const;
    void serve(short clientEvents, short stationEvents);

    bool hasUnprinted() const { return flows[0].frames.hasMore() || flows[1].frames.hasMore(); }
    bool isOver() const { return (hasFailed || (flows[0].isPassed && flows[1].isPassed)) && !hasUnprinted(); }

private:
    void finishConnect();
    void read(Flow& flow);
    void passOn(Flow& flow);
    void fail(Side side, int error);
    void reportFailure();

    TracedLink link;
    const int client;
    const int station;
    TraceOutput& output;
    CapturedConnection captured;
    std::array<Flow, 2> flows;
    bool isConnecting = true; // to the station
    bool hasFailed = false;
    Side failedSide = Side::station;
    int failure = 0;
};

RelayedConnection::RelayedConnection(int connectionNumber, int clientSocket, int stationSocket,
                                     const sockaddr_in& stationAddress, TraceOutput& traceOutput,
                                     const CapturedConnection& capturedConnection)
    : link{connectionNumber}, client(clientSocket), station(stationSocket), output(traceOutput),
      captured(capturedConnection), flows{{{Side::client, client, station}, {Side::station, station, client}}}
{
    captured.begun();
    for (Flow& flow : flows)
        flow.frames = FrameStream(output.keptBytes());
    const int on = 1;
    for (const int end : {client, station})
        setsockopt(end, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (::connect(station, reinterpret_cast<const sockaddr*>(&stationAddress), sizeof stationAddress) != 0 &&
        errno != EINPROGRESS)
        fail(Side::station, errno);
}

// Prints what is left, incomplete frames and the failure.
RelayedConnection::~RelayedConnection()
{
    for (Flow& flow : flows) {
        while (flow.frames.hasMore())
            output.more(link, flow.from, flow.frames);
        if (!flow.hasEnded)
            output.end(link, flow.from, flow.frames);
    }
    if (hasFailed)
        reportFailure();
    close(client);
    close(station);
}

pollfd RelayedConnection::pollEntry(Side side) const
{
    const int socket = side == Side::client ? client : station;
    pollfd entry = {socket, 0, 0}; // poll reports errors even without events
    if (isConnecting) {
        entry.events = socket == station ? POLLOUT : 0;
        return entry;
    }
    bool isDone = true;
    for (const Flow& flow : flows) {
        if (flow.source == socket && !flow.hasEnded && !flow.frames.hasMore() && flow.waiting.size() < largestWaiting)
            entry.events |= POLLIN;
        if (flow.sink == socket && !flow.waiting.isEmpty())
            entry.events |= POLLOUT;
        isDone = isDone && (flow.source == socket ? flow.hasEnded : flow.isPassed);
    }
    if (isDone)
        entry.fd = -1; // otherwise poll would report POLLHUP again and again
    return entry;
}

void RelayedConnection::serve(short clientEvents, short stationEvents)
{
    for (Flow& flow : flows)
        output.more(link, flow.from, flow.frames);
    if (hasFailed) // at once, for example without a route
        return;
    if (isConnecting) {
        if (stationEvents != 0)
            finishConnect();
        else if (clientEvents != 0)
            fail(Side::client, ECONNRESET);
        return;
    }
    for (Flow& flow : flows) {
        const int events = flow.source == client ? clientEvents : stationEvents;
        if (!hasFailed && !flow.hasEnded && !flow.frames.hasMore() && (events & (POLLIN | POLLERR | POLLHUP)) != 0)
            read(flow);
        else if (!hasFailed && flow.hasEnded && (events & POLLERR) != 0)
            fail(flow.from, ECONNRESET);
        if (!hasFailed)
            passOn(flow);
    }
}

void RelayedConnection::finishConnect()
{
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(station, SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) {
        fail(Side::station, error);
        return;
    }
    isConnecting = false;
    captured.accepted();
}

void RelayedConnection::read(Flow& flow)
{
    static char buffer[largestRead];
    const ssize_t count = recv(flow.source, buffer, sizeof buffer, 0);
    if (count < 0) {
        if (errno != EAGAIN && errno != EINTR)
            fail(flow.from, errno);
        return;
    }
    const QByteArray bytes(buffer, static_cast<int>(count));
    flow.waiting += bytes;
    flow.hasEnded = count == 0;
    passOn(flow);
    if (count > 0) {
        captured.piece(flow.from, bytes);
        output.piece(link, flow.from, bytes, flow.frames);
    } else {
        captured.ended(flow.from);
        output.end(link, flow.from, flow.frames);
        output.event(link.number, sideText(flow.from) + "Ended",
                     flow.from == Side::client ? Text::tr("the client ended its stream")
                                               : Text::tr("the station ended its stream"));
    }
}

// Sends as much as the sink accepts now.
void RelayedConnection::passOn(Flow& flow)
{
    if (!flow.waiting.isEmpty()) {
        const ssize_t count =
            send(flow.sink, flow.waiting.constData(), static_cast<size_t>(flow.waiting.size()), MSG_NOSIGNAL);
        if (count > 0)
            flow.waiting.remove(0, static_cast<int>(count));
        else if (errno != EAGAIN && errno != EINTR)
            fail(flow.from == Side::client ? Side::station : Side::client, errno);
    }
    if (flow.waiting.isEmpty() && flow.hasEnded && !flow.isPassed && !hasFailed) {
        shutdown(flow.sink, SHUT_WR);
        flow.isPassed = true;
    }
}

// One side has broken the connection: the destructor will reset the connection to the other side.
void RelayedConnection::fail(Side side, int error)
{
    hasFailed = true;
    failedSide = side;
    failure = error;
    const linger abort = {1, 0};
    setsockopt(side == Side::client ? station : client, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
}

void RelayedConnection::reportFailure()
{
    const bool isUnreachable = isConnecting && failedSide == Side::station;
    if (!isUnreachable)
        captured.broken(failedSide);
    else if (failure == ECONNREFUSED || failure == ECONNRESET)
        captured.refused();
    const bool isClient = failedSide == Side::client;
    // A client of the library closes with a reset. Where its bytes were still unread, sending fails with EPIPE.
    const bool isClosed = isClient && (failure == ECONNRESET || failure == EPIPE);
    const Text text = isUnreachable ? Text::tr("the station is unreachable: %1")
                      : isClosed    ? Text::tr("the client closed the connection (reset)")
                      : isClient    ? Text::tr("the client broke the connection: %1")
                                    : Text::tr("the station broke the connection: %1");
    output.event(link.number, sideText(failedSide) + (isUnreachable ? "Unreachable" : "Reset"), text,
                 isClosed ? 0 : failure);
}

// --- The relay ----------------------------------------------------------------------------------------------------

class StreamRelay {
public:
    StreamRelay(int relayListener, const sockaddr_in& stationAddress, TraceOutput& traceOutput,
                CaptureFile& captureFile)
        : listener(relayListener), station(stationAddress), output(traceOutput), capture(captureFile)
    {
    }

    std::vector<pollfd> entries(int stopper) const;
    int msToWait() const;
    bool isWaitingForDescriptors() const { return lacksResources; }
    void serve(const std::vector<pollfd>& entries);
    void acceptClients();

private:
    bool acceptOne();

    const int listener;
    const sockaddr_in station;
    TraceOutput& output;
    CaptureFile& capture;
    std::vector<std::unique_ptr<RelayedConnection>> connections;
    int accepted = 0;
    bool lacksResources = false; // clients wait, for example for descriptors; reported once
};

// Returns how long poll(2) may wait for events.
int StreamRelay::msToWait() const
{
    const bool hasUnprinted = std::any_of(connections.begin(), connections.end(),
                                          [](const auto& connection) { return connection->hasUnprinted(); });
    return hasUnprinted ? 0 : lacksResources ? retryMs : -1;
}

std::vector<pollfd> StreamRelay::entries(int stopper) const
{
    std::vector<pollfd> entries = {{stopper, POLLIN, 0}, {lacksResources ? -1 : listener, POLLIN, 0}};
    for (const auto& connection : connections) {
        entries.push_back(connection->pollEntry(Side::client));
        entries.push_back(connection->pollEntry(Side::station));
    }
    return entries;
}

void StreamRelay::serve(const std::vector<pollfd>& entries)
{
    for (size_t i = 0; i < connections.size(); ++i)
        connections[i]->serve(entries[2 * i + 2].revents, entries[2 * i + 3].revents);
    connections.erase(std::remove_if(connections.begin(), connections.end(),
                                     [](const auto& connection) { return connection->isOver(); }),
                      connections.end());
}

void StreamRelay::acceptClients()
{
    for (int count = 0; count < mostAccepted && acceptOne(); ++count) {
    }
}

// Accepts a client only with a socket for the station: without one, its connection would be lost. Returns false if
// there is none to accept now.
bool StreamRelay::acceptOne()
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    const int toStation = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int client =
        toStation < 0 ? -1
                      : accept4(listener, reinterpret_cast<sockaddr*>(&address), &size, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (client < 0) {
        const int error = errno;
        if (toStation >= 0)
            close(toStation);
        const bool didLack = std::exchange(lacksResources, isOutOfResources(error));
        if (lacksResources && !didLack)
            printError(Text::tr("cannot accept another client now: %1").arg(errorText(error)));
        return false;
    }
    ++accepted;
    output.connected(accepted, endpointText(address));
    connections.push_back(std::make_unique<RelayedConnection>(accepted, client, toStation, station, output,
                                                              CapturedConnection(capture, accepted, address, station)));
    return true;
}

bool relayStreams(int listener, const sockaddr_in& station, int stopper, TraceOutput& output, CaptureFile& capture)
{
    StreamRelay relay(listener, station, output, capture);
    Progress progress;
    for (;;) {
        std::vector<pollfd> entries = relay.entries(stopper);
        progress.show(output.summary());
        const int count = poll(entries.data(), entries.size(), relay.msToWait());
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (entries[0].revents != 0)
            return true;
        relay.serve(entries);
        if (entries[1].revents != 0 || relay.isWaitingForDescriptors())
            relay.acceptClients();
    }
}
