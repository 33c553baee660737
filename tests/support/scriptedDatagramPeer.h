#pragma once

#include <QByteArray>

#include <initializer_list>
#include <thread>
#include <vector>

// The other side of a datagram endpoint under test, with plain system calls on the loopback address. If a system call
// fails unexpectedly, the running test fails. No wait lasts longer than five seconds.

// A socket on a free port of 127.0.0.1, controlled by the test.
class DatagramPeer {
public:
    DatagramPeer();
    ~DatagramPeer();
    DatagramPeer(const DatagramPeer&) = delete;
    DatagramPeer& operator=(const DatagramPeer&) = delete;

    int port() const { return ownPort; }

    // Sends a datagram to a port of 127.0.0.1, where it is queued until it is read.
    void give(int toPort, const QByteArray& bytes);

    // Waits for the next datagram.
    QByteArray take();
    int senderPort() const { return sender; } // of the datagram taken last

    bool holdsNone(); // returns true if none arrives within 20 ms

    // Closes the port: the system reports an error to whoever sends to it from now on.
    void goAway();

    // Opens the same port again.
    void comeBack();

private:
    int descriptor = -1;
    int ownPort = 0;
    int sender = 0;
};

// A server that answers each datagram from its own thread:
//
//     ScriptedDatagramPeer server{{reply},          // reply to the first datagram
//                                 {},               // no reply to the second
//                                 {first, second}}; // two datagrams in reply to the third
//
// The destructor ends the thread and fails the running test if fewer or more datagrams arrived.
class ScriptedDatagramPeer {
public:
    using Answers = std::vector<QByteArray>;

    ScriptedDatagramPeer(std::initializer_list<Answers> script);
    ~ScriptedDatagramPeer();
    ScriptedDatagramPeer(const ScriptedDatagramPeer&) = delete;
    ScriptedDatagramPeer& operator=(const ScriptedDatagramPeer&) = delete;

    int port() const { return peer.port(); }

    // Ends the script and returns the datagrams that arrived.
    std::vector<QByteArray> received();

private:
    void run();

    DatagramPeer peer;
    std::vector<Answers> script;
    std::vector<QByteArray> records;
    std::thread thread; // last member: uses all of the above
};
