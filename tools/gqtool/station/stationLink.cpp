#include "stationLink.h"

#include "gqtool/listener.h"
#include "shared/text.h"
#include "station.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

static const unsigned int largestRequest = 1 << 20; // payload bytes
static const int freeBytes = 4096;                  // of each connection, which the budget does not count
static const int pieceOverhead = 64;                // bytes of memory, at least
static const int mostInTurn = 16;                   // requests of one link, before other links have their turn
static const size_t mostWaiting = 1000;             // datagrams of one address; further ones are lost

StationLink::StationLink(Station& ownStation, int linkSocket, bool datagrams, const sockaddr_in& peerAddress)
    : address(peerAddress), station(ownStation), socket(linkSocket), isOfDatagrams(datagrams),
      peer(endpointText(peerAddress))
{
}

StationLink::~StationLink() = default;

void StationLink::begin()
{
    station.report(Text::tr("%1 connected").arg(peer), {{"event", "connected"}, {"peer", peer}});
    current.emplace();
    current->faults = station.script().nextGreeting();
    wait(current->faults.lateMs);
    if (!isWaiting)
        proceed();
}

void StationLink::take(const StationRequest& request)
{
    if (isWaiting) {
        if (requests.size() < mostWaiting && station.datagramBudget().take(request.size))
            requests.push_back(request);
        return;
    }
    start(request);
    if (!isWaiting)
        proceed();
}

void StationLink::breakOff()
{
    if (current && current->request)
        report("closed", Text::tr("closed"));
    else if (!isOfDatagrams)
        station.report(Text::tr("%1 closed").arg(peer),
                       {{"event", "closed"}, {"peer", peer}, {"sent", current ? current->sent : 0}});
    close();
}

// --- Steps --------------------------------------------------------------------------------------------------------

void StationLink::proceed()
{
    isWaiting = false;
    for (int finished = 0; isOpen && !isWaiting;) {
        if (!current)
            startNext();
        else if (!current->isAnswered)
            answer();
        else if (!current->pieces.empty())
            sendPiece();
        else {
            finish();
            if (++finished == mostInTurn && isOpen && !isWaiting)
                yield();
        }
    }
}

// Lets other links have their turn.
void StationLink::yield()
{
    isWaiting = true;
    station.loop().after(0, [self = shared_from_this()] { self->proceed(); });
}

void StationLink::wait(int ms)
{
    if (ms == 0)
        return;
    isWaiting = true;
    station.loop().after(ms, [self = shared_from_this()] { self->proceed(); });
}

void StationLink::close()
{
    isOpen = false;
    if (isOfDatagrams) {
        for (const StationRequest& request : requests)
            station.datagramBudget().giveBack(request.size);
        requests.clear();
    } else {
        station.exchangeBudget().giveBack(takenBytes);
        station.loop().forget(socket);
        ::close(socket);
    }
    station.forget(*this);
}

void StationLink::startNext()
{
    if (!requests.empty()) {
        StationRequest next = std::move(requests.front());
        requests.pop_front();
        if (isOfDatagrams)
            station.datagramBudget().giveBack(next.size);
        start(std::move(next));
    } else if (isOfDatagrams) {
        close();
    } else if (isOver) {
        station.report(Text::tr("%1 gone").arg(peer), {{"event", "gone"}, {"peer", peer}});
        close();
    } else {
        isWaiting = true;
        station.loop().whenReadable(socket, [self = shared_from_this()] {
            self->receive();
            self->proceed();
        });
    }
}

void StationLink::start(StationRequest request)
{
    current.emplace();
    current->request = std::move(request);
    current->faults = station.script().nextReply(current->request->frame.command, current->number);
    wait(current->faults.lateMs);
}

void StationLink::receive()
{
    char piece[4096];
    const ssize_t count = recv(socket, piece, sizeof piece, 0);
    if (count < 0 && errno == EAGAIN)
        return;
    isOver = count <= 0;
    for (StreamItem& item : stream.feed(QByteArray(piece, static_cast<int>(std::max<ssize_t>(count, 0))))) {
        isOver = isOver || item.kind != StreamItem::frame;
        if (!isOver) {
            exchangeBytes += item.size;
            requests.push_back({std::move(item.content), item.size, false});
        }
    }
    isOver = isOver || stream.announcedLength() > largestRequest || !account(0);
}

// Adds bytes to those that are kept for this connection. Returns false if all connections take too much memory. A few
// bytes are always allowed: peers that need many must not lock out others.
bool StationLink::account(long long bytes)
{
    if (isOfDatagrams)
        return true;
    exchangeBytes += bytes;
    const long long needed = std::max(0LL, exchangeBytes + stream.keptSize() - freeBytes);
    if (needed > takenBytes && !station.exchangeBudget().take(needed - takenBytes)) {
        if (!std::exchange(isOverBudget, true))
            station.report(Text::tr("%1: the requests and replies of all links exceed 256 MiB").arg(peer),
                           {{"event", "full"}, {"peer", peer}});
        return false;
    }
    if (needed < takenBytes)
        station.exchangeBudget().giveBack(takenBytes - needed);
    takenBytes = needed;
    return true;
}

// If nothing is to be sent, the request is not carried out.
void StationLink::answer()
{
    current->isAnswered = true;
    const SendFaults& faults = current->faults;
    if (faults.silent || faults.closeAfter == 0 || faults.downMs > 0)
        return;
    std::vector<TimedFrame> frames;
    if (!current->request)
        frames = faults.error ? std::vector<TimedFrame>{{errorFrame({}, *faults.error)}} : station.answers().greeting();
    else if (faults.error)
        frames = {{errorFrame(*current->request, *faults.error)}};
    else
        frames = station.answers().answer(*current->request);
    const std::vector<TimedFrame> pieces = piecesOf(std::move(frames), faults);
    current->pieces.assign(pieces.begin(), pieces.end());
    for (const TimedFrame& piece : pieces)
        current->bytes += piece.bytes.size() + pieceOverhead;
    if (!account(current->bytes))
        breakOff();
}

void StationLink::sendPiece()
{
    TimedFrame& piece = current->pieces.front();
    if (piece.pauseMs > 0) {
        wait(std::exchange(piece.pauseMs, 0));
        return;
    }
    const auto* where = isOfDatagrams ? reinterpret_cast<const sockaddr*>(&address) : nullptr;
    const ssize_t count =
        sendto(socket, piece.bytes.constData() + current->done, static_cast<size_t>(piece.bytes.size() - current->done),
               MSG_NOSIGNAL, where, isOfDatagrams ? sizeof address : 0);
    if (count < 0 && errno == EAGAIN && !isOfDatagrams) {
        isWaiting = true;
        station.loop().whenWritable(socket, [self = shared_from_this()] { self->proceed(); });
        return;
    }
    current->isLost = count < 0;
    current->sent += static_cast<int>(std::max<ssize_t>(count, 0));
    current->done += static_cast<int>(std::max<ssize_t>(count, 0));
    if (current->isLost)
        current->pieces.clear();
    else if (current->done == piece.bytes.size()) {
        current->pieces.pop_front();
        current->done = 0;
    }
}

void StationLink::finish()
{
    const LinkExchange& ended = *current;
    const bool closes = ended.faults.closeAfter >= 0 && !ended.faults.silent && !isOfDatagrams;
    const bool isEnd = (ended.isLost || closes) && !isOfDatagrams;
    const int downMs = ended.faults.downMs;
    if (!ended.request && closes && !ended.isLost)
        station.report(Text::tr("%1 closed after %2 of its greeting").arg(peer, bytesText(ended.sent)),
                       {{"event", "closed"}, {"peer", peer}, {"sent", ended.sent}});
    else if (ended.request && ended.isLost)
        report("gone before the answer", Text::tr("gone before the answer"));
    else if (ended.request && closes)
        report("closed", ended.sent > 0 ? Text::tr("closed after %1").arg(bytesText(ended.sent)) : Text::tr("closed"));
    else if (ended.request && downMs == 0)
        report(ended.sent > 0 ? "answered" : "not answered",
               ended.sent > 0 ? Text::tr("answered with %1").arg(bytesText(ended.sent)) : Text::tr("not answered"));
    if (downMs > 0) {
        station.goDown(downMs);
        return;
    }
    account(-ended.bytes - (ended.request ? ended.request->size : 0));
    current.reset();
    if (isEnd)
        close();
}

void StationLink::report(const QString& outcome, const QString& words) const
{
    const StationRequest& request = *current->request;
    const Text line = isOfDatagrams ? Text::tr("%1 by UDP command 0x%2, %3: %4") : Text::tr("%1 command 0x%2, %3: %4");
    station.report(line.arg(peer).arg(request.frame.command, 2, 16, QChar('0')).arg(bytesText(request.size)).arg(words),
                   {{"event", "request"},
                    {"peer", peer},
                    {"transport", isOfDatagrams ? "UDP" : "TCP"},
                    {"command", request.frame.command},
                    {"bytes", request.size},
                    {"reply", current->number},
                    {"outcome", outcome},
                    {"sent", current->isLost ? 0 : current->sent}});
}
