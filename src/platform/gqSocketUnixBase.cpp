#include "gqSocketUnixShared.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <iostream>

using namespace endpoint;

CAbstractSocket::CAbstractSocket() : handle(new int(0)), opened(false), port(0) {}

CAbstractSocket::~CAbstractSocket()
{
    delete handle;
    handle = nullptr;
}

int CAbstractSocket::setRecvOverTm(int ms)
{
    if (*handle < 1)
        return 0;
    const timeval time = toTimeval(ms);
    const int result = setsockopt(*handle, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    const int error = errno;
    char line[48]; // on the stack, as a constructor that calls this could not free its socket
    const int size = std::snprintf(line, sizeof line, "setRecvOverTm:%d, %d\n", result, ms);
    std::cout.write(line, size).flush(); // ignores its flags
    errno = error;
    return 1;
}

int CAbstractSocket::setSendOverTm(int ms)
{
    if (*handle < 1)
        return 0;
    const timeval time = toTimeval(ms);
    setsockopt(*handle, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time); // prints nothing, unlike setRecvOverTm
    return 1;
}

bool CAbstractSocket::isValid()
{
    return handle != nullptr && *handle >= 1;
}

int CAbstractSocket::setAsyncMode()
{
    const int flags = fcntl(*handle, F_GETFL, 0) | O_NONBLOCK;
    return fcntl(*handle, F_SETFL, flags) >= 0 ? 1 : 0;
}

int CAbstractSocket::setRecvBuf(int size)
{
    if (*handle < 1)
        return 0;
    setOption(*handle, SO_RCVBUF, size);
    return 1;
}

int CAbstractSocket::setSendBuf(int size)
{
    if (*handle < 1)
        return 0;
    setOption(*handle, SO_SNDBUF, size);
    return 1;
}

static int endOf(int (*query)(int, sockaddr*, socklen_t*), int descriptor, std::string& address, int& port)
{
    sockaddr_in end = {};
    socklen_t length = sizeof end;
    if (query(descriptor, reinterpret_cast<sockaddr*>(&end), &length) != 0)
        return 0;
    fromAddress(end, address, port);
    return 1;
}

int CAbstractSocket::getPeerName(std::string& peerAddress, int& peerPort)
{
    return endOf(::getpeername, *handle, peerAddress, peerPort);
}

int CAbstractSocket::getSockName(std::string& localAddress, int& localPort)
{
    return endOf(::getsockname, *handle, localAddress, localPort);
}

int CAbstractSocket::isReadable(int ms)
{
    const int descriptor = *handle;
    CDescriptorSet set(descriptor);
    set.add(descriptor);
    timeval time = toTimeval(ms);
    if (::select(descriptor + 1, set.data(), nullptr, nullptr, &time) < 0)
        return -1;
    return set.contains(descriptor);
}
