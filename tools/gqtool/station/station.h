#pragma once

#include "gqtool/frames/frameStream.h"
#include "stationLog.h"
#include "stationScript.h"

#include <QByteArrayList>
#include <QJsonObject>
#include <QString>

#include <atomic>
#include <functional>
#include <gqSocketUnix.h>

// How a station answers. By default it makes no faults.
struct StationOptions {
    int greeting = 1;     // the integer of the greeting; clients refuse 0 and below
    int gapMs = 100;      // between the frames of a reply: a client drops what a read returns after the end of a frame,
                          // so each frame must arrive in a read of its own
    StationScript script; // its faults
    bool printsJson = false; // instead of text
    bool isQuiet = false;    // prints only the line with its address
};

// A simulated station: a frame server that greets each connection, answers the five ready-made commands and serves
// lists and records (stationProtocol.h). It has a thread per connection and one for all datagrams, which are not
// greeted.
class Station {
public:
    // Prints a line per connection and request, and adds it to the log, which it does not own.
    Station(const StationOptions& options, StationLog& log);

    // Listens; port 0 means a free one. `withDatagrams` also opens the UDP port of the same number. Returns false on
    // failure, with errno.
    bool listen(const QString& address, int port, bool withDatagrams);

    // Prints its address as HOST:PORT and serves connections until accepting fails; errno is the reason.
    void serve();

private:
    // How a request arrived and its reply is sent.
    struct Transport {
        bool isDatagram;
        std::function<bool(const QByteArray& bytes)> send;
    };

    void serveConnection(CTcpSocket& connection, const QString& peer);
    void serveDatagrams();
    bool serveRequest(const StreamItem& item, const QString& peer, const Transport& transport); // false: close
    QByteArrayList answer(const Frame& request, bool isDatagram);                               // without tails
    // Returns the number of bytes sent, or -1 if the client is gone.
    int send(QByteArrayList frames, const SendFaults& faults, const Transport& transport);
    void report(const QString& line, const QJsonObject& event);

    StationOptions options;
    StationLog& log;
    CTcpServer server;
    CUdpServer datagrams;
    std::atomic<int> greetings{0};
    std::atomic<int> replies{0};
    std::atomic<int> state{1};
    std::atomic<long long> clockOffset{0}; // seconds by which setTime moved the station's clock
};
