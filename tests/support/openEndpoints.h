#pragma once

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

// An endpoint with public access to its state.
template <typename Endpoint>
class Open : public Endpoint {
public:
    using Endpoint::address;
    using Endpoint::handle;
    using Endpoint::opened;
    using Endpoint::port;
};

// The descriptor of an endpoint that the library made.
inline int descriptorOf(const CAbstractSocket& endpoint)
{
    struct Cell : CAbstractSocket {
        static int* CAbstractSocket::*place() { return &Cell::handle; }
    };
    return *(endpoint.*Cell::place());
}

// Gives the socket the lowest free descriptor from `least` on.
inline void moveTo(CTcpSocket& socket, int least)
{
    const int former = descriptorOf(socket);
    const int moved = ::fcntl(former, F_DUPFD, least);
    ASSERT_GE(moved, least);
    socket.setSocket({moved});
    ::close(former);
}
