#pragma once

#include "support/slowness.h"

#include <chrono>
#include <set>
#include <string>
#include <vector>

#include <sys/socket.h>

// The other side of an endpoint under test, with plain system calls on the loopback address, and queries about the
// test's own process. If a system call fails unexpectedly, the running test fails.

static const int limitMs = 5000 * slowness(); // of waits, which normally end much earlier

// --- Descriptors ---

// A descriptor, closed with the object; -1 means none.
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

// Replaces a descriptor, such as standard input, for the lifetime of the object.
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

// Number of open descriptors of this process.
std::set<int> openDescriptors();
std::set<int> openedSince(const std::set<int>& earlier);

// --- Options ---

int option(int descriptor, int level, int name);
linger lingerOf(int descriptor);
int timeOutMs(int descriptor, int name); // SO_RCVTIMEO or SO_SNDTIMEO

// --- Signals ---

bool isIgnored(int signal); // by this process

// --- Waiting ---

// Returns true if one of these poll(2) events occurs within the time.
bool becomes(int descriptor, short events, int ms = limitMs);

using Clock = std::chrono::steady_clock;
long msSince(Clock::time_point start);

// --- Connections ---

Descriptor plainSocket(int flags = 0); // a TCP socket; SOCK_NONBLOCK
int connectTo(int descriptor, const char* address, int port);

// A connection to a listener, or no descriptor if it was refused.
Descriptor connected(const char* address, int port);

// Receives until there are `size` bytes, the stream ends or the limit has passed.
std::string received(int descriptor, size_t size);

// Waits for the end of the stream. No byte may come before it.
bool isAtEnd(int descriptor);

// Closes with a reset.
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

// A connect to it stays in progress, because its backlog is full.
class CrowdedListener : public Listener {
public:
    CrowdedListener();

private:
    std::vector<Descriptor> waiting;
};
