#pragma once

#include "eventLoop.h"
#include "stationAnswers.h"
#include "stationLog.h"
#include "stationScript.h"

#include <QJsonObject>
#include <QString>

#include <netinet/in.h>

#include <map>
#include <memory>
#include <unordered_map>

class StationLink;

// Counts bytes that are kept for peers, up to a limit.
class ByteBudget {
public:
    explicit ByteBudget(long long mostBytes) : most(mostBytes) {}

    // Returns false, and takes none, if that would be too many.
    bool take(long long bytes)
    {
        const bool fits = taken + bytes <= most;
        taken += fits ? bytes : 0;
        return fits;
    }
    void giveBack(long long bytes) { taken -= bytes; }

private:
    const long long most;
    long long taken = 0;
};

// A simulated station: a frame server in one thread, which serves any number of connections and, if wanted, datagrams.
// Its answers, its faults and its log belong to the caller.
class Station {
public:
    struct Output {
        bool isJson = false;  // prints JSON objects
        bool isQuiet = false; // prints only the line with the address
    };

    Station(StationAnswers& answers, StationScript& script, StationLog& log, Output output);
    ~Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    // Binds its sockets; port 0 means a free one. `withDatagrams` also opens the UDP port of the same number. Returns
    // false on failure, with errno.
    bool bind(const QString& address, int port, bool withDatagrams);

    // Prints its address as HOST:PORT and serves clients. Returns only on failure, with errno. If descriptors run out,
    // it reports this and accepts further connections when some are free.
    void serve();

    // --- For its links ---

    EventLoop& loop() { return events; }
    StationAnswers& answers() { return ownAnswers; }
    StationScript& script() { return faults; }

    // Prints a line, and adds it to the log.
    void report(const QString& line, const QJsonObject& event);

    // Closes all links, refuses connections and drops datagrams for that time.
    void goDown(int ms);

    // The bytes of datagrams that wait until earlier ones are answered; further ones are lost.
    ByteBudget& datagramBudget() { return ownDatagramBudget; }

    // The bytes of requests and replies of connections.
    ByteBudget& exchangeBudget() { return ownExchangeBudget; }

    // Drops a link that is closed.
    void forget(StationLink& link);

private:
    void awaitConnection();
    void accept();
    void greet(int socket, const sockaddr_in& peer);
    void comeBack();
    void awaitDatagram();
    void takeDatagram();
    std::shared_ptr<StationLink> datagramLink(const sockaddr_in& peer);

    EventLoop events;
    StationAnswers& ownAnswers;
    StationScript& faults;
    StationLog& log;
    const Output output;
    sockaddr_in address = {};
    int listener = -1;
    int datagrams = -1;
    bool isDown = false;
    bool isPortTaken = false;    // by another program while the station was down; reported once
    bool lacksResources = false; // clients wait, for example for descriptors; reported once
    std::unordered_map<StationLink*, std::shared_ptr<StationLink>> links;
    std::map<std::pair<in_addr_t, in_port_t>, StationLink*> datagramLinks;
    ByteBudget ownDatagramBudget;
    ByteBudget ownExchangeBudget;
};
