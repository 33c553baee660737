#include "station.h"

#include "gqtool/listener.h"
#include "shared/console.h"
#include "shared/text.h"
#include "stationLink.h"

#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

static const int retryMs = 100;           // until the next attempt to accept without a free descriptor, or to listen
static const int mostFreePorts = 100;     // of TCP that are tried until one is free for UDP too
static const int mostAccepted = 64;       // connections one after the other, before other links have their turn again
static const size_t mostAddresses = 1000; // whose datagrams are being answered; those of others are lost
static const long long mostWaitingBytes = 16 << 20;   // of datagrams, until earlier ones are answered
static const long long mostExchangeBytes = 256 << 20; // of requests and replies of connections

Station::Station(StationAnswers& stationAnswers, StationScript& script, StationLog& stationLog, Output stationOutput)
    : ownAnswers(stationAnswers), faults(script), log(stationLog), output(stationOutput),
      ownDatagramBudget(mostWaitingBytes), ownExchangeBudget(mostExchangeBytes)
{
}

Station::~Station()
{
    close(listener);
    close(datagrams);
}

bool Station::bind(const QString& host, int port, bool withDatagrams)
{
    for (int attempt = 0; attempt < mostFreePorts; ++attempt) {
        address = addressOf(host, port);
        listener = openBound(SOCK_STREAM, address);
        if (listener < 0)
            return false;
        if (withDatagrams)
            datagrams = openBound(SOCK_DGRAM, address);
        if (!withDatagrams || datagrams >= 0)
            return listen(listener, SOMAXCONN) == 0;
        if (port != 0 || errno != EADDRINUSE)
            return false;
        close(listener);
    }
    listener = -1;
    return false;
}

void Station::serve()
{
    const QString endpoint = endpointText(address);
    report(Text::tr("listening on %1").arg(endpoint), {{"event", "listening"}, {"endpoint", endpoint}});
    awaitConnection();
    if (datagrams >= 0)
        awaitDatagram();
    events.run();
}

void Station::report(const QString& line, const QJsonObject& event)
{
    log.add(line);
    if (output.isQuiet && event["event"] != "listening")
        return;
    output.isJson ? printJson(event) : printLine(line);
}

// --- Connections --------------------------------------------------------------------------------------------------

void Station::awaitConnection()
{
    events.whenReadable(listener, [this] { accept(); });
}

void Station::accept()
{
    for (int count = 0; !isDown; ++count) {
        if (count == mostAccepted) {
            awaitConnection();
            return;
        }
        sockaddr_in peer = {};
        socklen_t size = sizeof peer;
        const int socket = accept4(listener, reinterpret_cast<sockaddr*>(&peer), &size, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (socket >= 0) {
            greet(socket, peer);
            continue;
        }
        const bool didLack = std::exchange(lacksResources, isOutOfResources(errno));
        if (!lacksResources) {
            awaitConnection();
            return;
        }
        if (!didLack) {
            const QString line = Text::tr("cannot accept another client now: %1").arg(errorText(errno));
            printError(line);
            log.add(line);
        }
        events.after(retryMs, [this] { accept(); });
        return;
    }
}

void Station::greet(int socket, const sockaddr_in& peer)
{
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on); // so that pieces arrive separately
    const auto link = std::make_shared<StationLink>(*this, socket, false, peer);
    links[link.get()] = link;
    link->begin();
}

void Station::forget(StationLink& link)
{
    const auto found = datagramLinks.find({link.address.sin_addr.s_addr, link.address.sin_port});
    if (found != datagramLinks.end() && found->second == &link)
        datagramLinks.erase(found);
    links.erase(&link);
}

// --- Datagrams ----------------------------------------------------------------------------------------------------

void Station::awaitDatagram()
{
    events.whenReadable(datagrams, [this] { takeDatagram(); });
}

void Station::takeDatagram()
{
    awaitDatagram();
    sockaddr_in peer = {};
    socklen_t size = sizeof peer;
    static char datagram[65536];
    const ssize_t count = recvfrom(datagrams, datagram, sizeof datagram, 0, reinterpret_cast<sockaddr*>(&peer), &size);
    if (count < 0 || isDown)
        return;
    std::vector<StreamItem> items = FrameStream().feed(QByteArray(datagram, static_cast<int>(count)));
    if (items.empty() || items[0].kind != StreamItem::frame)
        return;
    // The sender can be forged. The answers to an error or to its own datagram would go back and forth without end.
    if (items[0].content.command == gqdb::CSocketAPI::errorCommand || isSocketAt(peer, address))
        return;
    const std::shared_ptr<StationLink> link = datagramLink(peer);
    if (link != nullptr)
        link->take({std::move(items[0].content), items[0].size, true});
}

// Returns the link of that address, a new one if necessary; null if there are too many.
std::shared_ptr<StationLink> Station::datagramLink(const sockaddr_in& peer)
{
    const auto found = datagramLinks.find({peer.sin_addr.s_addr, peer.sin_port});
    if (found != datagramLinks.end())
        return links[found->second];
    if (datagramLinks.size() == mostAddresses)
        return nullptr;
    auto link = std::make_shared<StationLink>(*this, datagrams, true, peer);
    datagramLinks[{peer.sin_addr.s_addr, peer.sin_port}] = link.get();
    links[link.get()] = link;
    return link;
}

// --- Being down ---------------------------------------------------------------------------------------------------

// A bound socket that does not listen keeps the port and refuses connections.
void Station::goDown(int ms)
{
    isDown = true;
    events.forget(listener);
    close(listener);
    listener = openBound(SOCK_STREAM, address);
    const auto closing = links; // links remove themselves
    for (const auto& [key, link] : closing)
        link->breakOff();
    report(Text::tr("down for %1 ms").arg(ms), {{"event", "down"}, {"ms", ms}});
    events.after(ms, [this] { comeBack(); });
}

// Another program may have taken the port; then the station stays down until the port is free.
void Station::comeBack()
{
    if (listener < 0)
        listener = openBound(SOCK_STREAM, address);
    if (listener < 0 || listen(listener, SOMAXCONN) != 0) {
        const QString line = Text::tr("cannot listen on %1 again: %2").arg(endpointText(address), errorText(errno));
        if (!std::exchange(isPortTaken, true)) {
            printError(line);
            log.add(line);
        }
        events.after(retryMs, [this] { comeBack(); });
        return;
    }
    isDown = isPortTaken = false;
    awaitConnection();
    report(Text::tr("up again"), {{"event", "up"}});
}
