#include "gqSocketUnixShared.h"

#include <arpa/inet.h>

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

namespace endpoint {

timeval toTimeval(int ms)
{
    timeval time;
    time.tv_sec = ms / 1000;
    time.tv_usec = (ms % 1000) * 1000L; // negative as well for a negative time; the system then refuses it
    return time;
}

sockaddr_in toAddress(const std::string& address, int port)
{
    sockaddr_in end = {};
    end.sin_family = AF_INET;
    end.sin_port = htons(static_cast<uint16_t>(port));
    end.sin_addr.s_addr = inet_addr(address.c_str());
    return end;
}

void fromAddress(const sockaddr_in& end, std::string& address, int& port)
{
    char text[20] = "";
    inet_ntop(AF_INET, &end.sin_addr, text, sizeof text);
    address = text;
    port = ntohs(end.sin_port);
}

int setOption(int descriptor, int option, int value)
{
    return setsockopt(descriptor, SOL_SOCKET, option, &value, sizeof value);
}

// "127.0.0.1" means every interface, so that a server configured with the loopback address is reached from outside.
static sockaddr_in toBindAddress(const std::string& address, int port)
{
    if (address.empty() || address == "127.0.0.1")
        return toAddress("0.0.0.0", port);
    return toAddress(address, port);
}

int bindTo(int descriptor, const std::string& address, int port)
{
    const sockaddr_in end = toBindAddress(address, port);
    return ::bind(descriptor, reinterpret_cast<const sockaddr*>(&end), sizeof end);
}

int connectTo(int descriptor, const std::string& address, int port)
{
    const sockaddr_in peer = toAddress(address, port);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) >= 0)
        return 1;
    if (errno == EINPROGRESS)
        return 0;
    return errno == EISCONN ? 1 : -1;
}

int receive(int descriptor, char* buffer, int length)
{
    const ssize_t count = ::recv(descriptor, buffer, static_cast<size_t>(length), MSG_NOSIGNAL);
    if (count > 0)
        return static_cast<int>(count);
    if (count == 0)
        return -1; // the peer closed, or sent an empty datagram; 0 means "nothing yet"
    return errno == 0 || errno == EAGAIN ? 0 : -1;
}

int transmit(int descriptor, const char* buffer, int length)
{
    const ssize_t count = ::send(descriptor, buffer, static_cast<size_t>(length), MSG_NOSIGNAL);
    if (count >= 0)
        return static_cast<int>(count);
    return errno == 0 || errno == EAGAIN ? 0 : -1;
}

int waitWritable(int descriptor, int ms)
{
    CDescriptorSet write(descriptor);
    write.add(descriptor);
    CDescriptorSet exception = write;
    timeval time = toTimeval(ms);
    if (::select(descriptor + 1, nullptr, write.data(), exception.data(), &time) <= 0)
        return -1; // also a time-out, which is 0 in isReadable
    if (!write.contains(descriptor) || exception.contains(descriptor))
        return 0;

    int error = 0;
    socklen_t length = sizeof error;
    if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length) < 0)
        error = errno;
    if (error != 0)
        return -1;

    sockaddr_in peer = {};
    length = sizeof peer;
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0)
        return 0;
    return peer.sin_port == 0 ? 0 : 1;
}

int selectOne(int descriptor, int ms, int& readable, int& writable, int& exceptional)
{
    CDescriptorSet read(descriptor);
    read.add(descriptor);
    CDescriptorSet write = read;
    CDescriptorSet exception = read;
    timeval time = toTimeval(ms);
    const int count = ::select(descriptor + 1, read.data(), write.data(), exception.data(), &time);
    if (count < 0)
        return count;
    readable = read.contains(descriptor);
    writable = write.contains(descriptor);
    exceptional = exception.contains(descriptor);
    return count;
}

} // namespace endpoint

// --- CHeldDescriptor ----------------------------------------------------------------------------------------------

CHeldDescriptor::~CHeldDescriptor()
{
    if (descriptor >= 0)
        ::close(descriptor);
}

int CHeldDescriptor::release()
{
    return std::exchange(descriptor, -1);
}
