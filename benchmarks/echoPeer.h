#pragma once

#include <QByteArray>

#include <sched.h>
#include <sys/types.h>

// Keeps the calling thread on the first core that it may use, during the object's lifetime. Peers always run on that
// core: round trips within one core and between two differ tenfold, so the scheduler must not choose.
class OneCore {
public:
    OneCore();
    ~OneCore();
    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;

private:
    cpu_set_t before;
};

// The other end of a round trip, for one connection on the loopback address. It sends the greeting, then echoes all it
// receives. It uses only system calls and runs in a separate process, so that its time does not count as the client's.
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
