#pragma once

#include <QByteArray>

#include <initializer_list>
#include <thread>
#include <vector>

// The other side of a datagram endpoint under test, on plain system calls and the loopback address. What is expected of
// a call in here fails the running test; no wait lasts longer than five seconds.

// A socket on a free port of 127.0.0.1, in the hands of the test.
class DatagramPeer {
public:
    DatagramPeer();
    ~DatagramPeer();
    DatagramPeer(const DatagramPeer&) = delete;
    DatagramPeer& operator=(const DatagramPeer&) = delete;

    int port() const { return ownPort; }

    // Sends a datagram to a port of 127.0.0.1. It waits there until it is read.
    void give(int toPort, const QByteArray& bytes);

    // Waits for the next datagram.
    QByteArray take();
    int senderPort() const { return sender; } // of the one taken last

    bool holdsNone(); // and none comes within 20 ms

    // The port refuses what comes from now on: the system tells the sender so.
    void goAway();

private:
    int descriptor;
    int ownPort;
    int sender = 0;
};

// Answers each datagram from a thread of its own, as a server does:
//
//     ScriptedDatagramPeer server{{reply},          // what goes back for the first datagram
//                                 {},               // silent on the second
//                                 {first, second}}; // two datagrams for the third
//
// The destructor ends the thread and fails the running test if not all of them came, or more.
class ScriptedDatagramPeer {
public:
    using Answers = std::vector<QByteArray>;

    ScriptedDatagramPeer(std::initializer_list<Answers> script);
    ~ScriptedDatagramPeer();
    ScriptedDatagramPeer(const ScriptedDatagramPeer&) = delete;
    ScriptedDatagramPeer& operator=(const ScriptedDatagramPeer&) = delete;

    int port() const { return peer.port(); }

    // The datagrams that came; ends the script.
    std::vector<QByteArray> received();

private:
    void run();

    DatagramPeer peer;
    std::vector<Answers> script;
    std::vector<QByteArray> records;
    std::thread thread; // last: runs on all of the above
};
