#pragma once

#include "stationLog.h"

#include <QByteArrayList>
#include <QString>

#include <atomic>
#include <functional>
#include <gqSocketUnix.h>

// How a station sends, and misbehaves. The default is to behave.
struct StationFaults {
    bool greets = true;
    int greeting = 1;      // the integer of the greeting; clients refuse one of 0 or below
    int lateMs = 0;        // waits that long ahead of each reply
    int gapMs = 100;       // between the frames of one reply: a client drops what a read brings behind the end of a
                           // frame, so that nothing but time makes each come in a read of its own
    int pieceSize = 0;     // sends replies in pieces of that many bytes, a moment apart; 0 sends them whole
    bool silent = false;   // reads requests and never answers
    bool wrongEnd = false; // ends its replies with a wrong byte
    bool closes = false;   // closes the connection in place of a reply
};

// A simulated station: a frame server that greets each connection, answers the five ready-made commands and serves
// lists from a small data set (stationProtocol.h). One thread per connection, and one for all datagrams, which have no
// greeting.
class Station {
public:
    // Says a line per connection and request, on the console and in the log, which it does not own.
    Station(const StationFaults& faults, StationLog& log);

    // Listens; port 0 lets the system choose. With datagrams: on the same port of UDP too. False when that failed.
    bool listen(const QString& address, int port, bool withDatagrams);

    // Where it listens, as HOST:PORT.
    QString endpoint();

    // Serves connections until accepting fails. False then.
    bool serve();

private:
    // How a request came and its reply goes.
    struct Transport {
        bool isDatagram;
        std::function<bool(const QByteArray& bytes)> send;
    };

    void serveConnection(CTcpSocket& connection, const QString& peer);
    void serveDatagrams();
    bool serveRequest(const QByteArray& request, const QString& peer, const Transport& transport); // false: hang up
    QByteArrayList answer(const QByteArray& request, bool isDatagram);                             // without tails
    int sendReply(QByteArrayList frames, const Transport& transport);                              // bytes sent, or -1
    bool send(const QByteArray& bytes, const Transport& transport);
    void say(const QString& line);

    StationFaults faults;
    StationLog& log;
    CTcpServer server;
    CUdpServer datagrams;
    std::atomic<int> state{1};
    std::atomic<long long> clockOffset{0}; // seconds that setTime moved the station's clock
};
