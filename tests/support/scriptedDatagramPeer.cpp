#include "support/scriptedDatagramPeer.h"

#include <gtest/gtest.h>

#include <cstdint>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

static constexpr int timeLimitMs = 5000;

static sockaddr_in loopback(int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(uint16_t(port));
    return address;
}

// --- DatagramPeer ---

DatagramPeer::DatagramPeer()
{
    comeBack();
}

DatagramPeer::~DatagramPeer()
{
    goAway();
}

// Binds a free port the first time.
void DatagramPeer::comeBack()
{
    descriptor = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(ownPort);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size), 0);
    ownPort = ntohs(address.sin_port);
}

void DatagramPeer::give(int toPort, const QByteArray& bytes)
{
    const sockaddr_in address = loopback(toPort);
    EXPECT_EQ(::sendto(descriptor, bytes.constData(), size_t(bytes.size()), 0,
                       reinterpret_cast<const sockaddr*>(&address), sizeof address),
              bytes.size());
}

QByteArray DatagramPeer::take()
{
    pollfd state = {descriptor, POLLIN, 0};
    if (::poll(&state, 1, timeLimitMs) != 1) {
        ADD_FAILURE() << "no datagram arrived";
        return {};
    }
    QByteArray bytes(65536, '\0');
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    const ssize_t count = ::recvfrom(descriptor, bytes.data(), size_t(bytes.size()), MSG_DONTWAIT,
                                     reinterpret_cast<sockaddr*>(&address), &size);
    EXPECT_GE(count, 0);
    sender = ntohs(address.sin_port);
    return bytes.left(int(count));
}

bool DatagramPeer::holdsNone()
{
    pollfd state = {descriptor, POLLIN, 0};
    return ::poll(&state, 1, 20) == 0;
}

void DatagramPeer::goAway()
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

// --- ScriptedDatagramPeer ---

ScriptedDatagramPeer::ScriptedDatagramPeer(std::initializer_list<Answers> answers) : script(answers)
{
    thread = std::thread(&ScriptedDatagramPeer::run, this);
}

ScriptedDatagramPeer::~ScriptedDatagramPeer()
{
    if (thread.joinable())
        thread.join();
    EXPECT_TRUE(peer.holdsNone()) << "received more datagrams than the script answers";
}

std::vector<QByteArray> ScriptedDatagramPeer::received()
{
    thread.join();
    return records;
}

void ScriptedDatagramPeer::run()
{
    for (const Answers& answers : script) {
        records.push_back(peer.take());
        for (const QByteArray& answer : answers)
            peer.give(peer.senderPort(), answer);
    }
}
