#pragma once

#include <QByteArray>

#include <sched.h>
#include <sys/types.h>

// Keeps the calling thread on the first core that it may use, for its lifetime. Peers stay there for good: a round trip
// within one core and one between two differ tenfold, and which of them it is must not be chance.
class OneCore {
public:
    OneCore();
    ~OneCore();
    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;

private:
    cpu_set_t before;
};

// The other end of a round trip, for one connection on the loopback address: it sends the greeting and from then on
// whatever it gets. Plain system calls, in a process of its own, so that its time is not the client's.
class EchoPeer {
public:
    // Listens once constructed. The process inherits open descriptors: construct every peer before the clients.
    explicit EchoPeer(const QByteArray& greeting);
    ~EchoPeer();
    EchoPeer(const EchoPeer&) = delete;
    EchoPeer& operator=(const EchoPeer&) = delete;

    int port() const { return number; }

private:
    int number;
    pid_t process;
};
