#include "listener.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

sockaddr_in addressOf(const QString& host, int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<unsigned short>(port));
    inet_aton(host.toLocal8Bit().constData(), &address.sin_addr);
    return address;
}

QString endpointText(const sockaddr_in& address)
{
    return QString("%1:%2").arg(inet_ntoa(address.sin_addr)).arg(ntohs(address.sin_port));
}

int openBound(int type, sockaddr_in& address)
{
    const int bound = socket(AF_INET, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (bound < 0)
        return -1;
    const int on = 1;
    if (type == SOCK_STREAM)
        setsockopt(bound, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    auto* where = reinterpret_cast<sockaddr*>(&address);
    socklen_t size = sizeof address;
    if (bind(bound, where, size) == 0 && getsockname(bound, where, &size) == 0)
        return bound;
    const int error = errno;
    close(bound);
    errno = error;
    return -1;
}

bool isSocketAt(const sockaddr_in& address, const sockaddr_in& bound)
{
    if (address.sin_port != bound.sin_port)
        return false;
    if (bound.sin_addr.s_addr != htonl(INADDR_ANY))
        return address.sin_addr.s_addr == bound.sin_addr.s_addr;
    sockaddr_in own = address; // of this machine if a socket can be bound to it
    own.sin_port = 0;
    const int trial = openBound(SOCK_DGRAM, own);
    if (trial >= 0)
        close(trial);
    return trial >= 0;
}

bool isOutOfResources(int error)
{
    return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM;
}
