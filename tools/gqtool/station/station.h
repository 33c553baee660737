#pragma once

#include "stationLog.h"
#include "stationScript.h"

#include <QByteArrayList>
#include <QJsonObject>
#include <QString>

#include <atomic>
#include <functional>
#include <gqSocketUnix.h>

// How a station answers. The default is to behave.
struct StationOptions {
    int greeting = 1;      // the integer of the greeting; clients refuse one of 0 or below
    int gapMs = 100;       // between the frames of one reply: a client drops what a read brings behind the end of a
                           // frame, so that nothing but time makes each come in a read of its own
    StationScript script;  // what goes wrong
    bool saysJson = false; // on the console
    bool isQuiet = false;  // there, behind the line that says where it listens
};

// A simulated station: a frame server that greets each connection, answers the five ready-made commands and serves
// lists from a small data set (stationProtocol.h). One thread per connection, and one for all datagrams, which have no
// greeting.
class Station {
public:
    // Says a line per connection and request, on the console and in the log, which it does not own.
    Station(const StationOptions& options, StationLog& log);

    // Listens; port 0 lets the system choose. With datagrams: on the same port of UDP too. False with errno if that failed.
    bool listen(const QString& address, int port, bool withDatagrams);

    // Says where it listens, as HOST:PORT, and serves connections until accepting fails. False then.
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
    // Bytes sent; -1 when the client is gone.
    int send(QByteArrayList frames, const SendFaults& faults, const Transport& transport);
    void say(const QString& line, const QJsonObject& event);

    StationOptions options;
    StationLog& log;
    CTcpServer server;
    CUdpServer datagrams;
    std::atomic<int> greetings{0};
    std::atomic<int> replies{0};
    std::atomic<int> state{1};
    std::atomic<long long> clockOffset{0}; // seconds that setTime moved the station's clock
};
