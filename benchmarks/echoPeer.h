#pragma once

#include <QByteArray>

#include <sys/types.h>

// The other end of a round trip, for one connection on the loopback address: it sends the greeting and from then on
// whatever it gets. Plain system calls, in a process of its own, so that its time is not the client's.
class EchoPeer {
public:
    // Listens once constructed. The process inherits what is open then: construct every peer ahead of the clients.
    explicit EchoPeer(const QByteArray& greeting);
    ~EchoPeer();
    EchoPeer(const EchoPeer&) = delete;
    EchoPeer& operator=(const EchoPeer&) = delete;

    int port() const { return number; }

private:
    int number;
    pid_t process;
};
