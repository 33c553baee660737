#include "gqSocketUnixShared.h"

#include <netinet/tcp.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

using namespace endpoint;

// --- CTcpSocket ---------------------------------------------------------------------------------------------------

// Passes one byte where Linux expects an int: EINVAL, and Nagle's algorithm stays on. The peers' timing relies on it.
static void askNoDelay(int descriptor)
{
    const char on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

static void dropUnsentOnClose(int descriptor)
{
    const linger drop = {1, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &drop, sizeof drop);
}

CTcpSocket::CTcpSocket()
{
    open();
}

CTcpSocket::~CTcpSocket()
{
    CTcpSocket::close();
}

int CTcpSocket::open()
{
    *handle = socket(AF_INET, SOCK_STREAM, 0);
    if (*handle < 1)
        return 0;
    askNoDelay(*handle);
    setOption(*handle, SO_REUSEADDR, 1);
    dropUnsentOnClose(*handle);
    setOption(*handle, SO_RCVBUF, 921600);
    setOption(*handle, SO_SNDBUF, 921600);
    signal(SIGPIPE, SIG_IGN);
    opened = true;
    return 1;
}

int CTcpSocket::connect(const std::string& peerAddress, int peerPort, bool async)
{
    if (!opened) {
        open();
        if (async)
            setAsyncMode();
    }
    return connectTo(*handle, peerAddress, peerPort);
}

void CTcpSocket::setSocket(SocketOwner owner)
{
    *handle = owner.descriptor; // the previous descriptor deliberately stays open
    opened = true;
    setOption(*handle, SO_REUSEADDR, 1);
    dropUnsentOnClose(*handle);
}

int CTcpSocket::bind(const std::string& localAddress, int localPort)
{
    return bindTo(*handle, localAddress, localPort) < 0 ? 0 : 1;
}

int CTcpSocket::isWritable(int ms)
{
    return waitWritable(*handle, ms);
}

int CTcpSocket::select(int ms, int& readable, int& writable, int& exceptional)
{
    return selectOne(*handle, ms, readable, writable, exceptional);
}

int CTcpSocket::recv(char* buffer, int length)
{
    return receive(*handle, buffer, length);
}

int CTcpSocket::send(const char* buffer, int length)
{
    return transmit(*handle, buffer, length);
}

static void shutAndClose(int* handle, bool& opened)
{
    if (opened && handle != nullptr) {
        shutdown(*handle, SHUT_RDWR);
        close(*handle);
        *handle = -1;
    }
    opened = false;
}

void CTcpSocket::close()
{
    shutAndClose(handle, opened);
}

// --- CTcpServer ---------------------------------------------------------------------------------------------------

CTcpServer::CTcpServer() = default;

CTcpServer::~CTcpServer()
{
    if (opened)
        CTcpServer::close();
}

int CTcpServer::open(const std::string& localAddress, int localPort, int backlog)
{
    *handle = socket(AF_INET, SOCK_STREAM, 0);
    if (*handle < 1)
        return 0;
    askNoDelay(*handle);
    setOption(*handle, SO_REUSEADDR, 1);
    signal(SIGPIPE, SIG_IGN);
    if (bindTo(*handle, localAddress, localPort) < 0 || listen(*handle, backlog) < 0)
        return 0; // the descriptor deliberately stays open, and close() does not close it
    opened = true;
    return 1;
}

CTcpSocket* CTcpServer::accept()
{
    sockaddr_in peer = {};
    socklen_t length = sizeof peer;
    const int descriptor = ::accept(*handle, reinterpret_cast<sockaddr*>(&peer), &length);
    if (descriptor < 0)
        return nullptr;
    CHeldDescriptor accepted(descriptor);
    CTcpSocket* connection = new CTcpSocket;
    // The socket that its constructor opened is deliberately not closed: each connection uses two descriptors.
    connection->setSocket({accepted.release()});
    return connection;
}

void CTcpServer::close()
{
    shutAndClose(handle, opened);
}

// --- CGqSocket ----------------------------------------------------------------------------------------------------

void CGqSocket::startup() {}

void CGqSocket::cleanup() {}

int CGqSocket::select(std::vector<TcpSocketStatus>& sockets, int ms)
{
    int highest = 0;
    for (const TcpSocketStatus& row : sockets)
        highest = std::max(highest, *row.socket->handle);
    CDescriptorSet read(highest);
    for (const TcpSocketStatus& row : sockets)
        read.add(*row.socket->handle);
    CDescriptorSet write = read;
    CDescriptorSet exception = read;
    timeval time = toTimeval(ms);
    const int count = ::select(highest + 1, read.data(), write.data(), exception.data(), &time);
    if (count < 0)
        return count;
    for (TcpSocketStatus& row : sockets) {
        const int descriptor = *row.socket->handle;
        row.readable = read.contains(descriptor);
        row.writable = write.contains(descriptor);
        row.exceptional = exception.contains(descriptor);
    }
    return count;
}
