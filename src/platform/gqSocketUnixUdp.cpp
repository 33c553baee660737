#include "gqSocketUnixShared.h"

#include <QDebug>

#include <arpa/inet.h>
#include <unistd.h>

#include <cerrno>

using namespace endpoint;

// --- Shared by the datagram endpoints -----------------------------------------------------------------------------
// If a later step of opening fails, the descriptor is closed, but *handle deliberately keeps its number.

static bool makeDatagramSocket(int& descriptor)
{
    descriptor = socket(AF_INET, SOCK_DGRAM, 0);
    return descriptor >= 1;
}

static int sendDatagram(int descriptor, const char* buffer, int length, const std::string& address, int port)
{
    const sockaddr_in peer = toAddress(address, port);
    const ssize_t count = ::sendto(descriptor, buffer, static_cast<size_t>(length), 0,
                                   reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
    return static_cast<int>(count);
}

// Stores the sender unless `address` is null or no datagram was received.
static int receiveDatagram(int descriptor, char* buffer, int length, std::string* address, int* port)
{
    sockaddr_in peer = {};
    socklen_t size = sizeof peer;
    const ssize_t count =
        ::recvfrom(descriptor, buffer, static_cast<size_t>(length), 0, reinterpret_cast<sockaddr*>(&peer), &size);
    if (count < 0)
        return errno == 0 || errno == EAGAIN ? 0 : -1;
    if (address != nullptr)
        fromAddress(peer, *address, *port);
    return static_cast<int>(count); // 0 for an empty datagram too, unlike recv
}

// --- CUdpServer ---------------------------------------------------------------------------------------------------

CUdpServer::CUdpServer() : multicastJoined(false) {}

CUdpServer::~CUdpServer()
{
    if (opened)
        CUdpServer::close();
}

int CUdpServer::openP2P(const std::string& localAddress, int localPort)
{
    if (!makeDatagramSocket(*handle))
        return -1;
    if (setOption(*handle, SO_REUSEADDR, 1) != 0) {
        ::close(*handle);
        return -2;
    }
    opened = true;
    return bind(localAddress, localPort);
}

int CUdpServer::openBroadcast(const std::string& localAddress, int localPort)
{
    if (!makeDatagramSocket(*handle))
        return -1;
    if (setOption(*handle, SO_REUSEADDR, 1) != 0) {
        ::close(*handle);
        return -2;
    }
    const char on = 1; // deliberately one byte: Linux expects an int and refuses it
    if (setsockopt(*handle, SOL_SOCKET, SO_BROADCAST, &on, sizeof on) < 0) {
        ::close(*handle);
        return -3;
    }
    opened = true;
    return bind(localAddress, localPort);
}

int CUdpServer::openMulticast(const std::string& group, int localPort, const std::string& interfaceAddress)
{
    if (group.empty())
        return -1;
    std::string joinedGroup = group; // copied while no socket can be left open
    std::string joinedInterface = interfaceAddress;
    if (!makeDatagramSocket(*handle))
        return -2;
    if (setOption(*handle, SO_REUSEADDR, 1) != 0) {
        ::close(*handle);
        return -3;
    }
    if (bindTo(*handle, "", localPort) < 0) {
        ::close(*handle);
        return -4;
    }
    ip_mreq membership;
    membership.imr_multiaddr.s_addr = inet_addr(group.c_str());
    membership.imr_interface.s_addr = interfaceAddress.empty() ? 0 : inet_addr(interfaceAddress.c_str());
    if (setsockopt(*handle, IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof membership) < 0) {
        ::close(*handle);
        return -5;
    }
    multicastGroup.swap(joinedGroup);
    multicastInterface.swap(joinedInterface);
    multicastJoined = true;
    opened = true;
    return 1;
}

int CUdpServer::bind(const std::string& localAddress, int localPort)
{
    return bindTo(*handle, localAddress, localPort) < 0 ? 0 : 1;
}

int CUdpServer::sendto(const char* buffer, int length, const std::string& peerAddress, int peerPort)
{
    return sendDatagram(*handle, buffer, length, peerAddress, peerPort);
}

int CUdpServer::recvfrom(char* buffer, int length)
{
    return receiveDatagram(*handle, buffer, length, nullptr, nullptr);
}

int CUdpServer::recvfrom(char* buffer, int length, std::string& peerAddress, int& peerPort)
{
    return receiveDatagram(*handle, buffer, length, &peerAddress, &peerPort);
}

int CUdpServer::isWritable(int ms)
{
    return waitWritable(*handle, ms);
}

int CUdpServer::select(int ms, int& readable, int& writable, int& exceptional)
{
    return selectOne(*handle, ms, readable, writable, exceptional);
}

void CUdpServer::close()
{
    if (!opened)
        return;
    if (multicastJoined) { // never cleared: each later close of this object drops the membership again, without effect
        ip_mreq membership;
        membership.imr_multiaddr.s_addr = inet_addr(multicastGroup.c_str());
        membership.imr_interface.s_addr = inet_addr(multicastInterface.c_str()); // also if it is empty
        setsockopt(*handle, IPPROTO_IP, IP_DROP_MEMBERSHIP, &membership, sizeof membership);
    }
    ::close(*handle);
    *handle = -1;
    opened = false;
}

// --- CUdpClient ---------------------------------------------------------------------------------------------------

CUdpClient::CUdpClient() = default;

CUdpClient::~CUdpClient()
{
    if (opened)
        CUdpClient::close();
}

int CUdpClient::openP2P()
{
    if (!makeDatagramSocket(*handle))
        return -1;
    opened = true;
    return 1;
}

int CUdpClient::openBroadcast()
{
    if (!makeDatagramSocket(*handle))
        return -1;
    if (setOption(*handle, SO_BROADCAST, 1) < 0) {
        ::close(*handle);
        return -2;
    }
    opened = true;
    return 1;
}

// Prints errno and leaves it as it was.
static void printAndClose(const char* text, int descriptor)
{
    const int error = errno;
    {
        const CHeldDescriptor closed(descriptor);
        qDebug() << text << error;
    }
    errno = error;
}

int CUdpClient::openMulticast(const std::string& interfaceAddress)
{
    if (!makeDatagramSocket(*handle))
        return -1;
    if (!interfaceAddress.empty()) {
        const in_addr_t interface = inet_addr(interfaceAddress.c_str());
        if (setsockopt(*handle, IPPROTO_IP, IP_MULTICAST_IF, &interface, sizeof interface) < 0) {
            printAndClose("2, error:", *handle);
            return -2;
        }
    }
    const char off = 0;
    if (setsockopt(*handle, IPPROTO_IP, IP_MULTICAST_LOOP, &off, sizeof off) != 0) {
        printAndClose("3, error:", *handle);
        return -3;
    }
    opened = true;
    return 1;
}

int CUdpClient::bind(const std::string& localAddress, int localPort)
{
    return bindTo(*handle, localAddress, localPort) < 0 ? 0 : 1;
}

int CUdpClient::connect(const std::string& peerAddress, int peerPort, bool async)
{
    if (!opened)
        openP2P();
    if (async)
        setAsyncMode(); // also on a socket that was open, unlike CTcpSocket::connect
    return connectTo(*handle, peerAddress, peerPort);
}

int CUdpClient::sendto(const char* buffer, int length, const std::string& peerAddress, int peerPort)
{
    return sendDatagram(*handle, buffer, length, peerAddress, peerPort);
}

int CUdpClient::recvfrom(char* buffer, int length)
{
    return receiveDatagram(*handle, buffer, length, nullptr, nullptr);
}

int CUdpClient::recvfrom(char* buffer, int length, std::string& peerAddress, int& peerPort)
{
    return receiveDatagram(*handle, buffer, length, &peerAddress, &peerPort);
}

int CUdpClient::recv(char* buffer, int length)
{
    return receive(*handle, buffer, length);
}

int CUdpClient::send(const char* buffer, int length)
{
    return transmit(*handle, buffer, length);
}

int CUdpClient::isWritable(int ms)
{
    return waitWritable(*handle, ms);
}

int CUdpClient::select(int ms, int& readable, int& writable, int& exceptional)
{
    return selectOne(*handle, ms, readable, writable, exceptional);
}

void CUdpClient::close()
{
    if (!opened)
        return;
    ::close(*handle);
    *handle = -1;
    opened = false;
}
