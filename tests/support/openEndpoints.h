#pragma once

#include "gqSocketUnix.h"

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
