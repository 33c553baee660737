#include "capturedPackets.h"
#include "gqtool/listener.h"
#include "shared/console.h"
#include "shared/progress.h"
#include "shared/text.h"
#include "traceRelay.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <list>
#include <vector>

// At this number, or without a free descriptor, a new client replaces the one that has been silent longest.
static const size_t mostClients = 256;

// A client that has sent a datagram.
struct DatagramClient {
    TracedLink link;
    sockaddr_in address;
    int station; // a socket whose peer is the station
};

class DatagramRelay {
public:
    DatagramRelay(int relayListener, const sockaddr_in& stationAddress, TraceOutput& traceOutput,
                  CaptureFile& captureFile)
        : listener(relayListener), station(stationAddress), output(traceOutput), capture(captureFile)
    {
    }
    ~DatagramRelay()
    {
        while (!clients.empty())
            forget();
    }
    DatagramRelay(const DatagramRelay&) = delete;
    DatagramRelay& operator=(const DatagramRelay&) = delete;

    std::vector<pollfd> entries(int stopper) const;
    void takeFromClients();
    void takeFromStation(int socket);

private:
    DatagramClient* clientAt(const sockaddr_in& address);
    void forget();
    void lose(const DatagramClient& client, int size, int error);

    const int listener;
    const sockaddr_in station;
    TraceOutput& output;
    CaptureFile& capture;
    std::list<DatagramClient> clients; // the most recently heard first
    int known = 0;
    QByteArray datagram;
};

std::vector<pollfd> DatagramRelay::entries(int stopper) const
{
    std::vector<pollfd> entries = {{stopper, POLLIN, 0}, {listener, POLLIN, 0}};
    for (const DatagramClient& client : clients)
        entries.push_back({client.station, POLLIN, 0});
    return entries;
}

void DatagramRelay::forget()
{
    close(clients.back().station);
    clients.pop_back();
}

static bool isSame(const sockaddr_in& one, const sockaddr_in& other)
{
    return one.sin_addr.s_addr == other.sin_addr.s_addr && one.sin_port == other.sin_port;
}

// Returns the client at `address`, a new one if necessary; null if its socket cannot be made.
DatagramClient* DatagramRelay::clientAt(const sockaddr_in& address)
{
    const auto found = std::find_if(clients.begin(), clients.end(),
                                    [&](const DatagramClient& client) { return isSame(client.address, address); });
    if (found != clients.end()) {
        clients.splice(clients.begin(), clients, found);
        return &clients.front();
    }
    if (clients.size() == mostClients)
        forget();
    int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (socket < 0 && isOutOfResources(errno) && !clients.empty()) {
        forget();
        socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    }
    if (socket < 0 || connect(socket, reinterpret_cast<const sockaddr*>(&station), sizeof station) != 0) {
        printError(Text::tr("datagram from %1 lost: %2").arg(endpointText(address), errorText(errno)));
        close(socket);
        return nullptr;
    }
    clients.push_front({{++known}, address, socket});
    output.connected(known, endpointText(address));
    return &clients.front();
}

// Returns true for the errors that a message of the station or of a firewall can cause, for a datagram sent before.
static bool isIcmpError(int error)
{
    return error == ECONNREFUSED || error == EHOSTUNREACH || error == ENETUNREACH;
}

void DatagramRelay::lose(const DatagramClient& client, int size, int error)
{
    output.event(client.link.number, "lost", Text::tr("datagram of %1 lost: %2").arg(bytesText(size)), error);
}

void DatagramRelay::takeFromClients()
{
    sockaddr_in address = {};
    socklen_t addressSize = sizeof address;
    datagram.resize(65536);
    const ssize_t count = recvfrom(listener, datagram.data(), static_cast<size_t>(datagram.size()), 0,
                                   reinterpret_cast<sockaddr*>(&address), &addressSize);
    if (count < 0)
        return;
    datagram.truncate(static_cast<int>(count));
    DatagramClient* client = clientAt(address);
    if (client == nullptr)
        return;
    ssize_t sent = send(client->station, datagram.constData(), static_cast<size_t>(count), 0);
    if (sent < 0 && isIcmpError(errno)) // caused by an earlier one; this one was not sent
        sent = send(client->station, datagram.constData(), static_cast<size_t>(count), 0);
    const int error = errno;
    captureDatagram(capture, client->address, station, datagram);
    output.datagram(client->link, Side::client, datagram);
    if (sent < 0)
        lose(*client, datagram.size(), error);
}

void DatagramRelay::takeFromStation(int socket)
{
    const auto client =
        std::find_if(clients.begin(), clients.end(), [&](const DatagramClient& one) { return one.station == socket; });
    if (client == clients.end())
        return;
    datagram.resize(65536);
    const ssize_t count = recv(socket, datagram.data(), static_cast<size_t>(datagram.size()), 0);
    if (count < 0) {
        const int failure = errno;
        if (isIcmpError(failure))
            output.event(client->link.number, "stationUnreachable", Text::tr("the station is unreachable: %1"),
                         failure);
        return;
    }
    datagram.truncate(static_cast<int>(count));
    const ssize_t sent = sendto(listener, datagram.constData(), static_cast<size_t>(count), 0,
                                reinterpret_cast<const sockaddr*>(&client->address), sizeof client->address);
    const int error = errno;
    captureDatagram(capture, station, client->address, datagram);
    output.datagram(client->link, Side::station, datagram);
    if (sent < 0)
        lose(*client, datagram.size(), error);
}

bool relayDatagrams(int listener, const sockaddr_in& station, int stopper, TraceOutput& output, CaptureFile& capture)
{
    DatagramRelay relay(listener, station, output, capture);
    Progress progress;
    for (;;) {
        std::vector<pollfd> entries = relay.entries(stopper);
        progress.show(output.summary());
        if (poll(entries.data(), entries.size(), -1) < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (entries[0].revents != 0)
            return true;
        for (size_t i = 2; i < entries.size(); ++i) {
            if (entries[i].revents != 0)
                relay.takeFromStation(entries[i].fd);
        }
        if (entries[1].revents != 0)
            relay.takeFromClients();
    }
}
