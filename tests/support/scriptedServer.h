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

// A TCP server on the loopback address that plays one script per connection, first script for the first connection, on
// a thread of its own and with plain system calls:
//
//     ScriptedServer server{{sends(greeting), receives(17), sends(reply)}, // first connection
//                           {sends(greeting), closes()}};                  // second one
//
// It listens once constructed; connections behind the last script are refused. Behind its last step a connection stays
// silent until the client ends it. No wait lasts longer than five seconds. The destructor ends the thread and fails the
// running test if a script was not played to its end or if the client sent what no step received.
class ScriptedServer {
public:
    class Connection;
    using Step = std::function<bool(Connection&)>; // false ends the script, the reason is told already
    using Script = std::vector<Step>;

    ScriptedServer(std::initializer_list<Script> scripts);
    // On a port that somebody holds by a ReservedPort.
    ScriptedServer(int port, std::initializer_list<Script> scripts);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    int port() const;

    // What the step `receives` number `index` took, counted over all connections from 0; waits for it.
    QByteArray received(size_t index);

private:
    void run();
    bool waitUntilReadable(int descriptor);
    void complain(const std::string& what);

    std::vector<Script> scripts;
    int listener;
    int listenerPort;
    int stopper; // an eventfd, readable once the server is to end

    std::mutex mutex;
    std::condition_variable recorded;
    std::vector<QByteArray> records;
    std::string complaints;

    std::thread thread; // last: runs on all of the above
};

// The steps of a script.
ScriptedServer::Step sends(const QByteArray& bytes);
// Each piece goes out when the client has read all of the one ahead of it, so that every piece is a read of its own.
ScriptedServer::Step sendsApart(const std::vector<QByteArray>& pieces);
ScriptedServer::Step receives(int size); // exactly so many bytes
ScriptedServer::Step closes();           // in good order, the client reads an end of the stream
ScriptedServer::Step resets();           // as a dying host does
ScriptedServer::Step awaitsTaken();      // until the client has read all that was sent
ScriptedServer::Step awaitsRequest();    // until something comes, and leaves it unread: a close behind it resets
ScriptedServer::Step floods(const QByteArray& bytes); // again and again until the client ends; reads nothing

// One end of a connection, for the steps.
class ScriptedServer::Connection {
public:
    Connection(ScriptedServer& owner, int accepted, const sockaddr_in& client);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool send(const QByteArray& bytes);
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
    int descriptor; // -1 once closed
    sockaddr_in clientAddress;
};

// A port of the loopback address that refuses connections: bound, but nobody listens. It stays reserved for a
// ScriptedServer to come up on and go away from.
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
