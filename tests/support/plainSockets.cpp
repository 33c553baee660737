#include "support/plainSockets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iterator>
#include <utility>

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

// --- Descriptors ---

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    std::swap(number, other.number);
    return *this;
}

int Descriptor::release()
{
    return std::exchange(number, -1);
}

void Descriptor::close()
{
    if (number >= 0)
        ::close(release());
}

Replacement::Replacement(int place, int descriptor) : replaced(place), kept(::dup(place))
{
    ::dup2(descriptor, place);
}

Replacement::~Replacement()
{
    if (kept >= 0)
        ::dup2(kept, replaced);
    else
        ::close(replaced);
}

Pipe::Pipe()
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
}

bool isOpen(int descriptor)
{
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

bool isNonBlocking(int descriptor)
{
    return (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) != 0;
}

std::set<int> openDescriptors()
{
    std::set<int> descriptors;
    DIR* folder = ::opendir("/proc/self/fd");
    while (const dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.')
            descriptors.insert(std::atoi(entry->d_name));
    }
    descriptors.erase(::dirfd(folder));
    ::closedir(folder);
    return descriptors;
}

std::set<int> openedSince(const std::set<int>& earlier)
{
    const std::set<int> now = openDescriptors();
    std::set<int> added;
    std::set_difference(now.begin(), now.end(), earlier.begin(), earlier.end(), std::inserter(added, added.end()));
    return added;
}

// --- Options ---

static void readOption(int descriptor, int level, int name, void* value, socklen_t size)
{
    EXPECT_EQ(::getsockopt(descriptor, level, name, value, &size), 0);
}

int option(int descriptor, int level, int name)
{
    int value = -1;
    readOption(descriptor, level, name, &value, sizeof value);
    return value;
}

linger lingerOf(int descriptor)
{
    linger value = {-1, -1};
    readOption(descriptor, SOL_SOCKET, SO_LINGER, &value, sizeof value);
    return value;
}

int timeOutMs(int descriptor, int name)
{
    timeval value = {-1, 0};
    readOption(descriptor, SOL_SOCKET, name, &value, sizeof value);
    return int(value.tv_sec * 1000 + value.tv_usec / 1000);
}

static void limitWaits(int descriptor)
{
    const timeval limit = {limitMs / 1000, 0};
    ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// --- Signals ---

bool isIgnored(int signal)
{
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

// --- Waiting ---

bool becomes(int descriptor, short events, int ms)
{
    pollfd state = {descriptor, events, 0};
    return ::poll(&state, 1, ms) == 1 && (state.revents & events) != 0;
}

long msSince(Clock::time_point start)
{
    return long(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count());
}

// --- Connections ---

static sockaddr_in inetAddress(const char* text, int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::inet_addr(text);
    address.sin_port = htons(uint16_t(port));
    return address;
}

Descriptor plainSocket(int flags)
{
    return Descriptor(::socket(AF_INET, SOCK_STREAM | flags, 0));
}

int connectTo(int descriptor, const char* address, int port)
{
    const sockaddr_in target = inetAddress(address, port);
    return ::connect(descriptor, reinterpret_cast<const sockaddr*>(&target), sizeof target);
}

Descriptor connected(const char* address, int port)
{
    Descriptor client = plainSocket();
    limitWaits(client);
    if (connectTo(client, address, port) != 0)
        client.close();
    return client;
}

std::string received(int descriptor, size_t size)
{
    std::string bytes(size, '\0');
    const ssize_t count = ::recv(descriptor, bytes.data(), size, MSG_WAITALL);
    bytes.resize(count > 0 ? size_t(count) : 0);
    return bytes;
}

bool isAtEnd(int descriptor)
{
    char byte = 0;
    return ::recv(descriptor, &byte, 1, 0) == 0;
}

void reset(Descriptor& connection)
{
    const linger drop = {1, 0};
    ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &drop, sizeof drop);
    connection.close();
}

Listener::Listener() : descriptor(plainSocket())
{
    const int on = 1;
    ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = inetAddress("127.0.0.1", 0);
    EXPECT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    limitWaits(descriptor);
}

Listener::Listener(int backlog) : Listener()
{
    listen(backlog);
}

void Listener::listen(int backlog)
{
    EXPECT_EQ(::listen(descriptor, backlog), 0);
}

Descriptor Listener::accept()
{
    Descriptor connection(::accept(descriptor, nullptr, nullptr));
    EXPECT_GE(connection, 0);
    limitWaits(connection);
    return connection;
}

int Listener::port() const
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

CrowdedListener::CrowdedListener() : Listener(0)
{
    do {
        waiting.push_back(plainSocket(SOCK_NONBLOCK));
        connectTo(waiting.back(), "127.0.0.1", port());
    } while (waiting.size() < 8 && becomes(waiting.back(), POLLOUT, 50));
}
