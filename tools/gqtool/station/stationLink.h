#pragma once

#include "gqtool/frames/frameStream.h"
#include "stationAnswers.h"
#include "stationScript.h"

#include <QString>

#include <netinet/in.h>

#include <deque>
#include <memory>
#include <optional>

class Station;

// What a link sends: its greeting or the reply to a request.
struct LinkExchange {
    std::optional<StationRequest> request; // none for the greeting
    int number = 0;                        // of the reply
    SendFaults faults;
    bool isAnswered = false; // `pieces` has what is still to be sent
    std::deque<TimedFrame> pieces;
    int done = 0;        // bytes of the first piece that are sent
    int sent = 0;        // bytes of all
    long long bytes = 0; // of all pieces
    bool isLost = false;
};

// A connection to a station, or an address that has sent it datagrams. Requests are answered one after the other; a
// pause delays this link only.
class StationLink : public std::enable_shared_from_this<StationLink> {
public:
    // `socket` of a connection belongs to the link, that of datagrams to the station.
    StationLink(Station& station, int socket, bool isOfDatagrams, const sockaddr_in& peer);
    ~StationLink();
    StationLink(const StationLink&) = delete;
    StationLink& operator=(const StationLink&) = delete;

    // Greets a new connection and serves it from then on.
    void begin();

    // Takes a datagram's request.
    void take(const StationRequest& request);

    // Closes the link in place of everything that it has to send.
    void breakOff();

    const sockaddr_in address;

private:
    void proceed();
    void yield();
    void startNext();
    void start(StationRequest request);
    void receive();
    bool account(long long bytes);
    void answer();
    void sendPiece();
    void finish();
    void wait(int ms);
    void close();
    void report(const QString& outcome, const QString& words) const;

    Station& station;
    const int socket;
    const bool isOfDatagrams;
    const QString peer;
    bool isOpen = true;
    bool isWaiting = false; // for a time or the socket; proceed() is called then
    bool isOver = false;    // nothing more will be received
    FrameStream stream;
    std::deque<StationRequest> requests;
    long long exchangeBytes = 0; // of requests that are complete, and of the reply
    long long takenBytes = 0;    // from the station's budget
    bool isOverBudget = false;   // the budget was too small; reported once
    std::optional<LinkExchange> current;
};
