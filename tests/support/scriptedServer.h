#pragma once

#include <QByteArray>

#include <condition_variable>
#include <functional>
#include <initializer_list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <netinet/in.h>

// A TCP server on the loopback address that plays one script per connection, the first script for the first connection,
// in its own thread and with plain system calls:
//
//     ScriptedServer server{{sends(greeting), receives(17), sends(reply)}, // first connection
//                           {sends(greeting), closes()}};                  // second one
//
// It listens once constructed. After the last script, further connections are refused. After its last step, a
// connection sends nothing until the client closes it. No wait lasts longer than five seconds. The destructor ends the
// thread and fails the running test if a script was not played to its end or if the client sent bytes that no step
// received.
class ScriptedServer {
public:
    class Connection;
    using Step = std::function<bool(Connection&)>; // false ends the script; the reason has been recorded
    using Script = std::vector<Step>;

    ScriptedServer(std::initializer_list<Script> scripts);
    // Listens on the port of a ReservedPort.
    ScriptedServer(int port, std::initializer_list<Script> scripts);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    int port() const;

    // Waits for the bytes of `receives` step number `index`, counted from 0 over all connections.
    QByteArray received(size_t index);

private:
    void run();
    bool waitUntilReadable(int descriptor);
    void complain(const std::string& what);

    std::vector<Script> scripts;
    int listener;
    int listenerPort;
    int stopper; // an eventfd, readable when the server must stop

    std::mutex mutex;
    std::condition_variable recorded;
    std::vector<QByteArray> records;
    std::string complaints;

    std::thread thread; // last member: uses all of the above
};

// The steps of a script.
ScriptedServer::Step sends(const QByteArray& bytes);
ScriptedServer::Step sendsIfOpen(const QByteArray& bytes); // or not, if the client has closed the connection
// Sends each piece after the client has read the previous one, so that each is a separate read.
ScriptedServer::Step sendsApart(const std::vector<QByteArray>& pieces);
ScriptedServer::Step receives(int size);              // exactly this many bytes
ScriptedServer::Step closes();                        // regular close: the client reads the end of the stream
ScriptedServer::Step resets();                        // resets the connection
ScriptedServer::Step awaitsTaken();                   // waits until the client has read all that was sent
ScriptedServer::Step awaitsRequest();                 // waits for data and leaves it unread, so that closing resets
ScriptedServer::Step floods(const QByteArray& bytes); // repeatedly until the client closes; reads nothing

// One end of a connection, for the steps.
class ScriptedServer::Connection {
public:
    Connection(ScriptedServer& owner, int accepted, const sockaddr_in& client);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool send(const QByteArray& bytes);
    bool sendIfOpen(const QByteArray& bytes);
    bool sendApart(const std::vector<QByteArray>& pieces);
    bool receive(int size);
    bool close();
    bool reset();
    bool awaitTaken();
    bool awaitRequest();
    bool flood(const QByteArray& bytes);
    void awaitEnd();

private:
    bool fail(const std::string& what);

    ScriptedServer& server;
    int descriptor; // -1 after closing
    sockaddr_in clientAddress;
};

// A port of the loopback address that refuses connections: bound, but not listening. It stays reserved while
// ScriptedServers start and stop on it.
class ReservedPort {
public:
    ReservedPort();
    ~ReservedPort();
    ReservedPort(const ReservedPort&) = delete;
    ReservedPort& operator=(const ReservedPort&) = delete;

    int number() const;

private:
    int holder;
};
