#pragma once

#include <chrono>
#include <set>
#include <string>
#include <vector>

#include <sys/socket.h>

// The other side of an endpoint under test, on plain system calls and the loopback address, and what a test wants to
// know of its own process. What is expected of a call in here fails the running test.

static constexpr int limitMs = 5000; // of waits that end far earlier if all is well

// --- Descriptors ---

// A descriptor that is closed with its owner; -1 is none.
class Descriptor {
public:
    explicit Descriptor(int held = -1) : number(held) {}
    Descriptor(Descriptor&& other) noexcept : number(other.release()) {}
    ~Descriptor() { close(); }

    Descriptor& operator=(Descriptor&& other) noexcept;

    operator int() const { return number; }
    int release();
    void close();

private:
    int number;
};

// Puts a descriptor in the place of another, such as standard input, until its own end.
class Replacement {
public:
    Replacement(int place, int descriptor);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

private:
    int replaced;
    Descriptor kept;
};

struct Pipe {
    Pipe();

    Descriptor readEnd;
    Descriptor writeEnd;
};

bool isOpen(int descriptor);
bool isNonBlocking(int descriptor);

// Those of this process.
std::set<int> openDescriptors();
std::set<int> openedSince(const std::set<int>& earlier);

// --- Options ---

int option(int descriptor, int level, int name);
linger lingerOf(int descriptor);
int timeOutMs(int descriptor, int name); // SO_RCVTIMEO or SO_SNDTIMEO

// --- Signals ---

bool isIgnored(int signal); // by this process

// --- Waiting ---

// Whether one of these poll(2) events comes within the time.
bool becomes(int descriptor, short events, int ms = limitMs);

using Clock = std::chrono::steady_clock;
long msSince(Clock::time_point start);

// --- Connections ---

Descriptor plainSocket(int flags = 0); // a TCP socket; SOCK_NONBLOCK
int connectTo(int descriptor, const char* address, int port);

// A connection to a listener, or no descriptor if it was refused.
Descriptor connected(const char* address, int port);

// What arrives until there are `size` bytes, the stream ends or the limit has passed.
std::string received(int descriptor, size_t size);

// Waits for the end of the stream, which is to come ahead of any byte.
bool isAtEnd(int descriptor);

// Closes as a dying host does.
void reset(Descriptor& connection);

// A free port of 127.0.0.1. It refuses connections before listen(); meanwhile another socket that sets SO_REUSEADDR may
// listen there.
class Listener {
public:
    Listener();
    explicit Listener(int backlog);

    void listen(int backlog);
    Descriptor accept();
    int port() const;

private:
    Descriptor descriptor;
};

// A connect to it stays in progress, for others wait ahead and there is room for no more.
class CrowdedListener : public Listener {
public:
    CrowdedListener();

private:
    std::vector<Descriptor> waiting;
};
