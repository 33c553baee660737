#include "scriptedServer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>

#include <arpa/inet.h>
#include <dirent.h>
#include <linux/sockios.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

static constexpr int timeLimitMs = 5000;

// --- Sockets ---

static std::string systemError()
{
    return std::strerror(errno);
}

static sockaddr_in loopback(int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(uint16_t(port));
    return address;
}

// A socket bound to the port, or to a free one if `port` is 0. Two of them may share a port while none listens.
static int boundSocket(int port)
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    EXPECT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0) << systemError();
    return descriptor;
}

static int localPort(int descriptor)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

// Finds the client's socket, which is in this process, by the address it is bound to. Returns -1 if it is closed.
static int descriptorBoundTo(const sockaddr_in& wanted)
{
    int found = -1;
    DIR* folder = ::opendir("/proc/self/fd");
    while (const dirent* entry = ::readdir(folder)) {
        const int descriptor = std::atoi(entry->d_name);
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
            address.sin_family == AF_INET && address.sin_port == wanted.sin_port &&
            address.sin_addr.s_addr == wanted.sin_addr.s_addr)
            found = descriptor;
    }
    ::closedir(folder);
    return found;
}

// --- Steps ---

ScriptedServer::Step sends(const QByteArray& bytes)
{
    return [bytes](ScriptedServer::Connection& connection) { return connection.send(bytes); };
}

ScriptedServer::Step sendsIfOpen(const QByteArray& bytes)
{
    return [bytes](ScriptedServer::Connection& connection) { return connection.sendIfOpen(bytes); };
}

ScriptedServer::Step sendsApart(const std::vector<QByteArray>& pieces)
{
    return [pieces](ScriptedServer::Connection& connection) { return connection.sendApart(pieces); };
}

ScriptedServer::Step receives(int size)
{
    return [size](ScriptedServer::Connection& connection) { return connection.receive(size); };
}

ScriptedServer::Step closes()
{
    return [](ScriptedServer::Connection& connection) { return connection.close(); };
}

ScriptedServer::Step resets()
{
    return [](ScriptedServer::Connection& connection) { return connection.reset(); };
}

ScriptedServer::Step awaitsTaken()
{
    return [](ScriptedServer::Connection& connection) { return connection.awaitTaken(); };
}

ScriptedServer::Step awaitsRequest()
{
    return [](ScriptedServer::Connection& connection) { return connection.awaitRequest(); };
}

ScriptedServer::Step floods(const QByteArray& bytes)
{
    return [bytes](ScriptedServer::Connection& connection) { return connection.flood(bytes); };
}

// --- Connection ---

ScriptedServer::Connection::Connection(ScriptedServer& owner, int accepted, const sockaddr_in& client)
    : server(owner), descriptor(accepted), clientAddress(client)
{
    const int on = 1; // each piece is sent immediately
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const timeval limit = {timeLimitMs / 1000, 0};
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

ScriptedServer::Connection::~Connection()
{
    close();
}

bool ScriptedServer::Connection::send(const QByteArray& bytes)
{
    for (int sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(descriptor, bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (count <= 0)
            return fail("cannot send: " + systemError());
        sent += int(count);
    }
    return true;
}

bool ScriptedServer::Connection::sendIfOpen(const QByteArray& bytes)
{
    const ssize_t count = ::send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
    return count == bytes.size() || errno == EPIPE || errno == ECONNRESET || fail("cannot send: " + systemError());
}

bool ScriptedServer::Connection::sendApart(const std::vector<QByteArray>& pieces)
{
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0 && !awaitTaken())
            return false;
        if (!send(pieces[i]))
            return false;
    }
    return true;
}

// Waits until the client has acknowledged and read everything.
bool ScriptedServer::Connection::awaitTaken()
{
    using Clock = std::chrono::steady_clock;
    const int client = descriptorBoundTo(clientAddress);
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeLimitMs);
    while (Clock::now() < end) {
        int onTheWay = 0, unread = 0;
        if (::ioctl(descriptor, SIOCOUTQ, &onTheWay) != 0 || ::ioctl(client, SIOCINQ, &unread) != 0)
            return fail("client closed the connection between two pieces");
        if (onTheWay == 0 && unread == 0)
            return true;
        pollfd stop = {server.stopper, POLLIN, 0};
        if (::poll(&stop, 1, 1) > 0)
            return fail("stopped between two pieces");
    }
    return fail("client did not read the piece");
}

bool ScriptedServer::Connection::receive(int size)
{
    QByteArray bytes(size, '\0');
    for (int got = 0; got < size;) {
        if (!server.waitUntilReadable(descriptor))
            return fail("nothing to receive after " + std::to_string(got) + " bytes");
        const ssize_t count = ::recv(descriptor, bytes.data() + got, size_t(size - got), 0);
        if (count <= 0)
            return fail("client closed the connection after " + std::to_string(got) + " bytes");
        got += int(count);
    }
    const std::lock_guard<std::mutex> lock(server.mutex);
    server.records.push_back(bytes);
    server.recorded.notify_all();
    return true;
}

bool ScriptedServer::Connection::close()
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
    return true;
}

bool ScriptedServer::Connection::reset()
{
    const linger atOnce = {1, 0};
    ::setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    return close();
}

bool ScriptedServer::Connection::awaitRequest()
{
    return server.waitUntilReadable(descriptor) || fail("no request arrived");
}

bool ScriptedServer::Connection::flood(const QByteArray& bytes)
{
    ssize_t count = 0;
    do {
        count = ::send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
    } while (count > 0);
    const bool hasEnded = errno == EPIPE || errno == ECONNRESET;
    return (hasEnded && close()) || fail("client accepted no more bytes: " + systemError());
}

// Sends nothing until the client closes the connection or the server stops.
void ScriptedServer::Connection::awaitEnd()
{
    char byte;
    if (descriptor >= 0 && server.waitUntilReadable(descriptor) && ::recv(descriptor, &byte, 1, 0) > 0)
        fail("client sent more than the steps received");
}

bool ScriptedServer::Connection::fail(const std::string& what)
{
    server.complain(what);
    return false;
}

// --- Server ---

ScriptedServer::ScriptedServer(std::initializer_list<Script> connections) : ScriptedServer(0, connections) {}

ScriptedServer::ScriptedServer(int port, std::initializer_list<Script> connections)
    : scripts(connections), listener(boundSocket(port)), listenerPort(localPort(listener)),
      stopper(::eventfd(0, EFD_CLOEXEC))
{
    EXPECT_EQ(::listen(listener, 16), 0) << systemError();
    thread = std::thread(&ScriptedServer::run, this);
}

ScriptedServer::~ScriptedServer()
{
    ::eventfd_write(stopper, 1);
    thread.join();
    ::close(stopper);
    ::close(listener);
    EXPECT_EQ(complaints, "");
}

int ScriptedServer::port() const
{
    return listenerPort;
}

QByteArray ScriptedServer::received(size_t index)
{
    std::unique_lock<std::mutex> lock(mutex);
    const auto present = [&] { return records.size() > index; };
    if (!recorded.wait_for(lock, std::chrono::milliseconds(timeLimitMs), present))
        return "nothing received";
    return records[index];
}

void ScriptedServer::run()
{
    for (size_t i = 0; i < scripts.size(); ++i) {
        const std::string name = "connection " + std::to_string(i);
        sockaddr_in client = {};
        socklen_t size = sizeof client;
        if (!waitUntilReadable(listener))
            return complain(name + " was not opened");
        const int accepted = ::accept4(listener, reinterpret_cast<sockaddr*>(&client), &size, SOCK_CLOEXEC);
        Connection connection(*this, accepted, client);
        bool going = true;
        for (size_t step = 0; going && step < scripts[i].size(); ++step) {
            going = scripts[i][step](connection);
            if (!going)
                complain(name + ", step " + std::to_string(step));
        }
        if (going)
            connection.awaitEnd();
    }
    ::shutdown(listener, SHUT_RD); // stops listening: further clients are refused instead of kept waiting
}

// Returns false if the server must stop or the time has passed.
bool ScriptedServer::waitUntilReadable(int descriptor)
{
    pollfd watched[] = {{descriptor, POLLIN, 0}, {stopper, POLLIN, 0}};
    return ::poll(watched, 2, timeLimitMs) > 0 && watched[0].revents != 0;
}

void ScriptedServer::complain(const std::string& what)
{
    const std::lock_guard<std::mutex> lock(mutex);
    complaints += what + "; ";
}

// --- ReservedPort ---

ReservedPort::ReservedPort() : holder(boundSocket(0)) {}

ReservedPort::~ReservedPort()
{
    ::close(holder);
}

int ReservedPort::number() const
{
    return localPort(holder);
}
