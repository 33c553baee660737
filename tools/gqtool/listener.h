#pragma once

#include <QString>

#include <netinet/in.h>

// Non-blocking IPv4 sockets for servers.

// Returns the address of a dotted host and a port, which must be valid.
sockaddr_in addressOf(const QString& host, int port);

// "127.0.0.1:5000"
QString endpointText(const sockaddr_in& address);

// Returns a socket of `type` (SOCK_STREAM or SOCK_DGRAM) that is bound to `address`, or -1 with errno. Port 0 in
// `address` is replaced by the one that the system chose. A stream socket does not listen yet.
int openBound(int type, sockaddr_in& address);

// Returns true if `address` is that of a socket bound to `bound`, which may be bound to all addresses of this machine.
bool isSocketAt(const sockaddr_in& address, const sockaddr_in& bound);

// Returns true if accept(2) failed for lack of descriptors or memory, which may be available later.
bool isOutOfResources(int error);
