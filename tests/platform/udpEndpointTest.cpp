#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/scriptedDatagramPeer.h"
#include "support/twoHosts.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

static int localPort(CAbstractSocket& endpoint)
{
    std::string address;
    int port = -1;
    EXPECT_EQ(endpoint.getSockName(address, port), 1);
    return port;
}

static std::string localAddress(CAbstractSocket& endpoint)
{
    std::string address;
    int port = -1;
    EXPECT_EQ(endpoint.getSockName(address, port), 1);
    return address;
}

// The next datagram, or "none" if none arrives in time.
template <typename Endpoint>
static std::string nextFrom(Endpoint& endpoint, int ms = limitMs)
{
    char buffer[100];
    if (endpoint.isReadable(ms) != 1)
        return "none";
    const int count = endpoint.recvfrom(buffer, sizeof buffer);
    EXPECT_GE(count, 0);
    return std::string(buffer, size_t(std::max(count, 0)));
}

static constexpr int noneMs = 50; // time to check that nothing arrives

// --- CUdpServer: unicast ---

TEST(UdpServerOpenP2P, exchangesDatagramsWithAnySender)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openP2P("127.1", 0), 1);
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_TYPE), SOCK_DGRAM);
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_BROADCAST), 0);
    EXPECT_FALSE(isNonBlocking(*server.handle));

    DatagramPeer first;
    DatagramPeer second;
    for (DatagramPeer* peer : {&first, &second}) {
        peer->give(localPort(server), "request");
        char buffer[20] = {};
        std::string address;
        int port = 0;
        ASSERT_EQ(server.isReadable(limitMs), 1);
        EXPECT_EQ(server.recvfrom(buffer, sizeof buffer, address, port), 7);
        EXPECT_STREQ(buffer, "request");
        EXPECT_EQ(address, "127.0.0.1");
        EXPECT_EQ(port, peer->port());

        EXPECT_EQ(server.sendto("reply", 5, address, port), 5);
        EXPECT_EQ(peer->take(), "reply");
        EXPECT_EQ(peer->senderPort(), localPort(server));
    }
}

TEST(UdpServerOpenP2P, treatsTheLoopbackAddressAsEveryInterface)
{
    const struct {
        const char* given;
        const char* bound;
    } addresses[] = {
        {"", "0.0.0.0"},        {"127.0.0.1", "0.0.0.0"},   {"0.0.0.0", "0.0.0.0"},
        {"127.1", "127.0.0.1"}, {"127.0.0.2", "127.0.0.2"},
    };
    for (const auto& [given, bound] : addresses) {
        CUdpServer server;
        EXPECT_EQ(server.openP2P(given, 0), 1) << given;
        EXPECT_EQ(localAddress(server), bound);
        EXPECT_GT(localPort(server), 0);
    }
}

TEST(UdpServerOpenP2P, sharesItsPortWithOthersThatReuseAddresses)
{
    CUdpServer first;
    CUdpServer second;
    ASSERT_EQ(first.openP2P("", 0), 1);
    EXPECT_EQ(second.openP2P("", localPort(first)), 1);
}

TEST(UdpServerOpenP2P, staysOpenWhenItCannotBind)
{
    const DatagramPeer peer; // does not share its port
    int descriptor = -1;
    {
        Open<CUdpServer> server;
        EXPECT_EQ(server.openP2P("", peer.port()), 0);
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_TRUE(server.opened);
        descriptor = *server.handle;
        EXPECT_TRUE(isOpen(descriptor));
        EXPECT_EQ(server.bind("", 0), 1); // another port works
    }
    EXPECT_FALSE(isOpen(descriptor));
}

TEST(UdpServerOpenP2P, leavesTheReplacedSocketOpen)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    const Descriptor first(*server.handle);
    ASSERT_EQ(server.openP2P("", 0), 1);
    EXPECT_NE(*server.handle, first);
    EXPECT_TRUE(isOpen(first));
}

// --- CUdpServer: broadcast ---

TEST(UdpServerOpenBroadcast, isRefusedByLinuxAndLeavesNoSocket)
{
    const auto before = openDescriptors();
    Open<CUdpServer> server;
    EXPECT_EQ(server.openBroadcast("", 0), -3);
    EXPECT_EQ(openedSince(before).size(), 0u);
    EXPECT_FALSE(server.opened);
    EXPECT_TRUE(server.isValid()); // the number of the closed socket
    EXPECT_FALSE(isOpen(*server.handle));
}

TEST(UdpServerOpenP2P, receivesBroadcasts)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    CUdpClient client;
    ASSERT_EQ(client.openBroadcast(), 1);
    EXPECT_EQ(client.sendto("all", 3, "127.255.255.255", localPort(server)), 3);
    EXPECT_EQ(nextFrom(server), "all");
}

TEST(UdpClientOpenBroadcast, setsOnlyItsOption)
{
    Open<CUdpClient> client;
    ASSERT_EQ(client.openBroadcast(), 1);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_BROADCAST), 1);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_REUSEADDR), 0);
    EXPECT_EQ(localPort(client), 0); // not bound
}

TEST(UdpSendto, cannotBroadcastFromAUnicastSocket)
{
    CUdpClient client;
    CUdpServer server;
    ASSERT_EQ(client.openP2P(), 1);
    ASSERT_EQ(server.openP2P("", 0), 1);
    EXPECT_EQ(client.sendto("x", 1, "127.255.255.255", localPort(server)), -1);
    EXPECT_EQ(errno, EACCES);
    EXPECT_EQ(server.sendto("x", 1, "127.255.255.255", localPort(server)), -1);
    EXPECT_EQ(errno, EACCES);
}

// --- CUdpServer: groups ---

// A group for this process only, as tests may run in parallel.
static std::string ownGroup()
{
    return "239.77." + std::to_string(::getpid() / 256 % 256) + "." + std::to_string(::getpid() % 256);
}

// Returns true if a socket of this host has joined the group.
static bool isJoined()
{
    char wanted[9] = {}; // in the kernel's format
    std::snprintf(wanted, sizeof wanted, "%08X", ::inet_addr(ownGroup().c_str()));
    std::ifstream table("/proc/thread-self/net/igmp");
    std::string word;
    while (table >> word) {
        if (word == wanted)
            return true;
    }
    return false;
}

TEST(UdpServerOpenMulticast, receivesDatagramsOfTheGroup)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openMulticast(ownGroup(), 0, "127.0.0.1"), 1);
    EXPECT_EQ(localAddress(server), "0.0.0.0");
    EXPECT_EQ(option(*server.handle, SOL_SOCKET, SO_REUSEADDR), 1);
    EXPECT_TRUE(isJoined());

    CUdpClient client;
    ASSERT_EQ(client.openMulticast("127.0.0.1"), 1);
    EXPECT_EQ(client.sendto("group", 5, ownGroup(), localPort(server)), 5);
    EXPECT_EQ(nextFrom(server), "group");

    DatagramPeer peer; // other datagrams to the port are received too
    peer.give(localPort(server), "alone");
    EXPECT_EQ(nextFrom(server), "alone");
}

TEST(UdpServerOpenMulticast, createsNoSocketWithoutAGroup)
{
    const auto before = openDescriptors();
    CUdpServer server;
    EXPECT_EQ(server.openMulticast("", 0, "127.0.0.1"), -1);
    EXPECT_EQ(openedSince(before).size(), 0u);
    EXPECT_FALSE(server.isValid());
}

TEST(UdpServerOpenMulticast, leavesNoSocketWhenItCannotJoin)
{
    const auto before = openDescriptors();
    for (const char* group : {"127.0.0.1", "10.1.2.3", "all", "240.0.0.1"}) { // not groups
        Open<CUdpServer> server;
        EXPECT_EQ(server.openMulticast(group, 0, "127.0.0.1"), -5) << group;
        EXPECT_FALSE(server.opened);
        EXPECT_TRUE(server.isValid());
        EXPECT_EQ(openedSince(before).size(), 0u);
    }
    CUdpServer server;
    EXPECT_EQ(server.openMulticast(ownGroup(), 0, "203.0.113.1"), -5); // not an address of this host
    EXPECT_EQ(openedSince(before).size(), 0u);
}

TEST(UdpServerOpenMulticast, leavesNoSocketWhenItCannotBind)
{
    const DatagramPeer peer;
    const auto before = openDescriptors();
    CUdpServer server;
    EXPECT_EQ(server.openMulticast(ownGroup(), peer.port(), "127.0.0.1"), -4);
    EXPECT_EQ(openedSince(before).size(), 0u);
}

TEST(UdpServerClose, leavesTheGroupOfANamedInterface)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openMulticast(ownGroup(), 0, "127.0.0.1"), 1);
    const Descriptor same(::dup(*server.handle)); // keeps the socket itself open
    server.close();
    EXPECT_FALSE(isJoined());
}

TEST(UdpServerClose, endsTheMembershipWithTheSocket)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openMulticast(ownGroup(), 0, "127.0.0.1"), 1);
    EXPECT_TRUE(isJoined());
    server.close();
    EXPECT_FALSE(isJoined());
    EXPECT_FALSE(server.isValid());
}

TEST(UdpServerClose, canBeRepeated)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    const int descriptor = *server.handle;
    server.close();
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(server.isValid());
    const Descriptor other(::fcntl(STDERR_FILENO, F_DUPFD, descriptor)); // reuses its number
    ASSERT_EQ(other, descriptor);
    server.close();
    EXPECT_TRUE(isOpen(other));
}

TEST(UdpServerClose, worksAfterAnEarlierMembership)
{
    Open<CUdpServer> server;
    ASSERT_EQ(server.openMulticast(ownGroup(), 0, "127.0.0.1"), 1);
    server.close();
    ASSERT_EQ(server.openP2P("", 0), 1);
    const int descriptor = *server.handle;
    server.close();
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(server.isValid());
}

TEST(UdpServerDestroy, closesTheSocket)
{
    const auto before = openDescriptors();
    {
        CUdpServer server;
        ASSERT_EQ(server.openMulticast(ownGroup(), 0, "127.0.0.1"), 1);
    }
    EXPECT_EQ(openedSince(before).size(), 0u);
    EXPECT_FALSE(isJoined());
}

// --- CUdpClient: opening ---

TEST(UdpClientOpenP2P, createsASocketWithDefaultOptions)
{
    const Descriptor plain(::socket(AF_INET, SOCK_DGRAM, 0));
    Open<CUdpClient> client;
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_TYPE), SOCK_DGRAM);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_DOMAIN), AF_INET);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_REUSEADDR), 0);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_BROADCAST), 0);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_RCVBUF), option(plain, SOL_SOCKET, SO_RCVBUF));
    EXPECT_EQ(option(*client.handle, IPPROTO_IP, IP_MULTICAST_LOOP), 1);
    EXPECT_FALSE(isNonBlocking(*client.handle));
}

static in_addr multicastInterface(int descriptor)
{
    in_addr address = {};
    socklen_t size = sizeof address;
    EXPECT_EQ(::getsockopt(descriptor, IPPROTO_IP, IP_MULTICAST_IF, &address, &size), 0);
    return address;
}

TEST(UdpClientOpenMulticast, sendsOnTheInterfaceWithoutCopyAndWithTheDefaultHopLimit)
{
    Open<CUdpClient> client;
    ASSERT_EQ(client.openMulticast("127.0.0.1"), 1);
    EXPECT_EQ(multicastInterface(*client.handle).s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(option(*client.handle, IPPROTO_IP, IP_MULTICAST_LOOP), 0);
    EXPECT_EQ(option(*client.handle, IPPROTO_IP, IP_MULTICAST_TTL), 1);

    ASSERT_EQ(client.openMulticast(""), 1);
    EXPECT_EQ(multicastInterface(*client.handle).s_addr, htonl(INADDR_ANY));
    EXPECT_EQ(option(*client.handle, IPPROTO_IP, IP_MULTICAST_LOOP), 0);
}

static std::string debugMessages;

TEST(UdpClientOpenMulticast, reportsWhyAnInterfaceIsRefusedAndLeavesNoSocket)
{
    const auto before = openDescriptors();
    Open<CUdpClient> client;
    debugMessages.clear();
    const QtMessageHandler usual = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { debugMessages += text.toStdString() + "\n"; });
    EXPECT_EQ(client.openMulticast("203.0.113.1"), -2); // not an address of this host
    qInstallMessageHandler(usual);
    EXPECT_EQ(debugMessages, "2, error: 99\n"); // EADDRNOTAVAIL
    EXPECT_EQ(openedSince(before).size(), 0u);
    EXPECT_FALSE(client.opened);
    EXPECT_TRUE(client.isValid());
}

// --- CUdpClient: connecting ---

TEST(UdpClientConnect, setsThePeer)
{
    DatagramPeer peer;
    CUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_EQ(client.send("request", 7), 7);
    EXPECT_EQ(peer.take(), "request");

    DatagramPeer stranger;
    stranger.give(localPort(client), "stray");
    peer.give(localPort(client), "reply");
    char buffer[20] = {};
    ASSERT_EQ(client.isReadable(limitMs), 1);
    EXPECT_EQ(client.recv(buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "reply");
}

TEST(UdpClientConnect, changesThePeerOfTheSameSocket)
{
    DatagramPeer first;
    DatagramPeer second;
    Open<CUdpClient> client;
    EXPECT_EQ(client.connect("127.0.0.1", first.port(), false), 1);
    const int descriptor = *client.handle;
    EXPECT_EQ(client.connect("127.0.0.1", second.port(), false), 1);
    EXPECT_EQ(*client.handle, descriptor);
    EXPECT_EQ(client.send("x", 1), 1);
    EXPECT_EQ(second.take(), "x");
    EXPECT_TRUE(first.holdsNone());
}

TEST(UdpClientConnect, returnsOneWithoutAPeerListening)
{
    DatagramPeer peer;
    peer.goAway();
    CUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), true), 1);
}

TEST(UdpClientConnect, resolvesNoNamesAndLeavesTheSocketOpen)
{
    const DatagramPeer peer;
    Open<CUdpClient> client;
    for (const char* address : {"", "localhost", "no.such.host.invalid"}) {
        EXPECT_EQ(client.connect(address, peer.port(), false), -1) << address;
        EXPECT_EQ(errno, EACCES); // 255.255.255.255 needs a broadcast socket
        EXPECT_TRUE(client.opened);
        EXPECT_TRUE(client.isValid());
    }
}

TEST(UdpClientConnect, makesAnOpenSocketNonBlockingIfAsync)
{
    const DatagramPeer peer;
    Open<CUdpClient> client;
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_FALSE(isNonBlocking(*client.handle));
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), true), 1);
    EXPECT_TRUE(isNonBlocking(*client.handle));
    char byte = 'x';
    EXPECT_EQ(client.recv(&byte, 1), 0); // no data
    EXPECT_EQ(byte, 'x');
}

TEST(UdpClientConnect, reopensWithoutTheOptionsOfTheLastOpening)
{
    const DatagramPeer peer;
    Open<CUdpClient> client;
    ASSERT_EQ(client.openBroadcast(), 1);
    client.close();
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_EQ(option(*client.handle, SOL_SOCKET, SO_BROADCAST), 0);

    ASSERT_EQ(client.openMulticast("127.0.0.1"), 1);
    client.close();
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_EQ(option(*client.handle, IPPROTO_IP, IP_MULTICAST_LOOP), 1);
    EXPECT_EQ(multicastInterface(*client.handle).s_addr, htonl(INADDR_ANY));
}

// --- Reading and writing ---

TEST(UdpRecvfrom, truncatesADatagramThatIsTooLong)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    DatagramPeer peer;
    peer.give(localPort(server), "abcdef");
    peer.give(localPort(server), "next");
    char buffer[5] = {};
    ASSERT_EQ(server.isReadable(limitMs), 1);
    EXPECT_EQ(server.recvfrom(buffer, 4), 4);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(nextFrom(server), "next"); // the rest is lost
}

// The two ways of reading return different results.
TEST(UdpRecvfrom, returnsZeroForAnEmptyDatagramWhereRecvReturnsMinusOne)
{
    DatagramPeer peer;
    CUdpClient client;
    ASSERT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    char byte = 'x';
    std::string address = "before";
    int port = 99;

    peer.give(localPort(client), "");
    ASSERT_EQ(client.isReadable(limitMs), 1);
    EXPECT_EQ(client.recvfrom(&byte, 1, address, port), 0);
    EXPECT_EQ(address, "127.0.0.1");
    EXPECT_EQ(port, peer.port());

    peer.give(localPort(client), "");
    ASSERT_EQ(client.isReadable(limitMs), 1);
    EXPECT_EQ(client.recv(&byte, 1), -1);
    EXPECT_EQ(byte, 'x');
}

TEST(UdpRecvfrom, returnsZeroAndLeavesTheOutputsOnATimeOut)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    server.setRecvOverTm(30);
    const auto start = Clock::now();
    char byte = 'x';
    std::string address = "before";
    int port = 99;
    EXPECT_EQ(server.recvfrom(&byte, 1, address, port), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_GE(msSince(start), 25); // the system rounds to ticks
    EXPECT_EQ(server.recvfrom(&byte, 1), 0);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(address, "before");
    EXPECT_EQ(port, 99);
}

TEST(UdpRecvfrom, returnsMinusOneOnAClosedSocket)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    server.close();
    char byte = 0;
    EXPECT_EQ(server.recvfrom(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(server.sendto("x", 1, "127.0.0.1", 1), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(UdpSendto, returnsMinusOneForADatagramThatIsTooLong)
{
    DatagramPeer peer;
    CUdpClient client;
    ASSERT_EQ(client.openP2P(), 1);
    const std::string longest(65507, 'x'); // 65535 minus the headers of IPv4 and UDP
    EXPECT_EQ(client.sendto(longest.data(), 65507, "127.0.0.1", peer.port()), 65507);
    EXPECT_EQ(peer.take().size(), 65507);
    EXPECT_EQ(client.sendto((longest + "x").data(), 65508, "127.0.0.1", peer.port()), -1);
    EXPECT_EQ(errno, EMSGSIZE);
}

TEST(UdpSendto, sendsAnEmptyDatagram)
{
    DatagramPeer peer;
    CUdpClient client;
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.sendto("", 0, "127.0.0.1", peer.port()), 0);
    EXPECT_EQ(peer.take(), "");
    EXPECT_EQ(peer.senderPort(), localPort(client));
}

TEST(UdpClientSend, returnsMinusOneAfterThePeersPortRefused)
{
    DatagramPeer peer;
    Open<CUdpClient> client;
    ASSERT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    peer.goAway();
    EXPECT_EQ(client.send("x", 1), 1);
    ASSERT_TRUE(becomes(*client.handle, POLLERR));
    EXPECT_EQ(client.send("x", 1), -1);
    EXPECT_EQ(errno, ECONNREFUSED);

    EXPECT_EQ(client.send("x", 1), 1); // the error is reported once
    ASSERT_EQ(client.isReadable(limitMs), 1);
    char byte = 0;
    EXPECT_EQ(client.recv(&byte, 1), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
}

TEST(UdpClientSend, returnsMinusOneWithoutAPeerOrASocket)
{
    CUdpClient client;
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.send("x", 1), -1);
    EXPECT_EQ(errno, EDESTADDRREQ);
    client.close();
    EXPECT_EQ(client.send("x", 1), -1);
    EXPECT_EQ(errno, EBADF);
    char byte = 0;
    EXPECT_EQ(client.recv(&byte, 1), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(UdpClientRecv, returnsZeroOnATimeOut)
{
    const DatagramPeer peer;
    CUdpClient client;
    EXPECT_EQ(client.setRecvOverTm(30), 0); // the option needs a socket
    ASSERT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_EQ(client.setRecvOverTm(30), 1);
    const auto start = Clock::now();
    char byte = 0;
    EXPECT_EQ(client.recv(&byte, 1), 0);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_GE(msSince(start), 25); // the system rounds to ticks
}

// --- Binding ---

TEST(UdpBind, treatsTheLoopbackAddressAsEveryInterface)
{
    for (const char* address : {"127.0.0.1", ""}) {
        CUdpClient client;
        ASSERT_EQ(client.openP2P(), 1);
        EXPECT_EQ(client.bind(address, 0), 1);
        EXPECT_EQ(localAddress(client), "0.0.0.0");
        EXPECT_GT(localPort(client), 0);
    }
    CUdpClient client;
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.bind("127.0.0.2", 0), 1);
    EXPECT_EQ(localAddress(client), "127.0.0.2");
}

TEST(UdpBind, returnsZeroOnAPortInUseOrWithoutASocket)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    CUdpClient client; // does not reuse addresses
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.bind("", localPort(server)), 0);
    EXPECT_EQ(errno, EADDRINUSE);
    client.close();
    EXPECT_EQ(client.bind("", 0), 0);
    EXPECT_EQ(errno, EBADF);
    server.close();
    EXPECT_EQ(server.bind("", 0), 0);
    EXPECT_EQ(errno, EBADF);
}

// --- isWritable and select ---

TEST(UdpIsWritable, neverReturnsOneForAServer)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("", 0), 1);
    EXPECT_EQ(server.isWritable(limitMs), 0);
    EXPECT_EQ(errno, ENOTCONN);
    EXPECT_EQ(server.isWritable(-1), -1);
    EXPECT_EQ(errno, EINVAL);
    server.close();
    EXPECT_EQ(server.isWritable(0), -1);
}

TEST(UdpIsWritable, returnsOneOnlyForAConnectedClient)
{
    const DatagramPeer peer;
    CUdpClient client;
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.isWritable(limitMs), 0);
    EXPECT_EQ(client.connect("", peer.port(), false), -1);
    EXPECT_EQ(client.isWritable(limitMs), 0);
    EXPECT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    EXPECT_EQ(client.isWritable(limitMs), 1);
    EXPECT_EQ(client.isWritable(-1), -1);
    client.close();
    EXPECT_EQ(client.isWritable(0), -1);
}

TEST(UdpIsWritable, returnsMinusOneAfterThePeersPortRefused)
{
    DatagramPeer peer;
    Open<CUdpClient> client;
    ASSERT_EQ(client.connect("127.0.0.1", peer.port(), false), 1);
    peer.goAway();
    EXPECT_EQ(client.send("x", 1), 1);
    ASSERT_TRUE(becomes(*client.handle, POLLERR));
    EXPECT_EQ(client.isWritable(0), -1);
    EXPECT_EQ(client.isWritable(0), 1); // the query has cleared the error
}

TEST(UdpSelect, reportsRoomToWriteAndADatagramToRead)
{
    CUdpServer server;
    CUdpClient client;
    ASSERT_EQ(server.openP2P("", 0), 1);
    ASSERT_EQ(client.openP2P(), 1);
    ASSERT_EQ(client.bind("", 0), 1);
    const auto check = [](auto& endpoint) {
        int readable = 91;
        int writable = 92;
        int exceptional = 93;
        EXPECT_EQ(endpoint.select(-1, readable, writable, exceptional), -1);
        EXPECT_EQ(readable + writable + exceptional, 91 + 92 + 93);

        EXPECT_EQ(endpoint.select(limitMs, readable, writable, exceptional), 1);
        EXPECT_EQ(readable, 0);
        EXPECT_EQ(writable, 1);
        EXPECT_EQ(exceptional, 0);

        DatagramPeer peer;
        peer.give(localPort(endpoint), "x");
        ASSERT_EQ(endpoint.isReadable(limitMs), 1);
        EXPECT_EQ(endpoint.select(0, readable, writable, exceptional), 2);
        EXPECT_EQ(readable, 1);
        EXPECT_EQ(writable, 1);
        EXPECT_EQ(exceptional, 0);
    };
    check(server);
    check(client);
}

// --- CUdpClient: closing ---

TEST(UdpClientClose, canBeRepeated)
{
    Open<CUdpClient> client;
    ASSERT_EQ(client.openP2P(), 1);
    const int descriptor = *client.handle;
    client.close();
    EXPECT_FALSE(isOpen(descriptor));
    EXPECT_FALSE(client.isValid());
    const Descriptor other(::fcntl(STDERR_FILENO, F_DUPFD, descriptor)); // reuses its number
    ASSERT_EQ(other, descriptor);
    client.close();
    EXPECT_TRUE(isOpen(other));
}

TEST(UdpClientDestroy, closesTheSocket)
{
    const auto before = openDescriptors();
    {
        CUdpClient client;
        ASSERT_EQ(client.openP2P(), 1);
    }
    EXPECT_EQ(openedSince(before).size(), 0u);
}

// --- Between hosts ---

class UdpBetweenHosts : public testing::Test {
protected:
    void SetUp() override
    {
        if (!hosts.exist())
            GTEST_SKIP() << "cannot create network namespaces, or the program `ip` is missing";
    }

    TwoHosts hosts;
};

TEST_F(UdpBetweenHosts, aServerAnswersAClient)
{
    hosts.enterFar();
    CUdpServer server;
    ASSERT_EQ(server.openP2P("127.0.0.1", 0), 1); // means every interface

    hosts.enterNear();
    CUdpClient client;
    ASSERT_EQ(client.connect("10.1.0.2", localPort(server), false), 1);
    EXPECT_EQ(client.send("request", 7), 7);

    char buffer[20] = {};
    std::string address;
    int port = 0;
    ASSERT_EQ(server.isReadable(limitMs), 1);
    EXPECT_EQ(server.recvfrom(buffer, sizeof buffer, address, port), 7);
    EXPECT_EQ(address, "10.1.0.1");
    EXPECT_EQ(port, localPort(client));
    EXPECT_EQ(server.sendto("reply", 5, address, port), 5);
    ASSERT_EQ(client.isReadable(limitMs), 1);
    EXPECT_EQ(client.recv(buffer, sizeof buffer), 5);
}

TEST_F(UdpBetweenHosts, aBroadcastReachesServersOnBoth)
{
    hosts.enterFar();
    CUdpServer farServer;
    ASSERT_EQ(farServer.openP2P("", 0), 1);
    const int port = localPort(farServer);
    hosts.enterNear();
    CUdpServer nearServer;
    ASSERT_EQ(nearServer.openP2P("", port), 1);

    CUdpClient client;
    ASSERT_EQ(client.openBroadcast(), 1);
    for (const char* everybody : {"10.1.0.255", "255.255.255.255"}) {
        EXPECT_EQ(client.sendto("all", 3, everybody, port), 3);
        EXPECT_EQ(nextFrom(farServer), "all");
        EXPECT_EQ(nextFrom(nearServer), "all");
    }
    ASSERT_EQ(client.openP2P(), 1);
    EXPECT_EQ(client.sendto("all", 3, "10.1.0.255", port), -1);
    EXPECT_EQ(errno, EACCES);
}

TEST_F(UdpBetweenHosts, aGroupIsReachedOnlyOnTheOtherHost)
{
    for (const bool named : {true, false}) { // or the system chooses the interface
        SCOPED_TRACE(named);
        hosts.enterFar();
        CUdpServer member;
        ASSERT_EQ(member.openMulticast("239.1.2.3", 0, named ? "10.1.0.2" : ""), 1);
        CUdpServer other; // another group on the same port
        ASSERT_EQ(other.openMulticast("239.1.2.4", localPort(member), ""), 1);
        int all = 0; // otherwise a socket receives all groups joined by any socket of its host
        ::setsockopt(descriptorOf(other), IPPROTO_IP, IP_MULTICAST_ALL, &all, sizeof all);

        hosts.enterNear();
        CUdpServer ownMember;
        ASSERT_EQ(ownMember.openMulticast("239.1.2.3", localPort(member), named ? "10.1.0.1" : ""), 1);

        CUdpClient client;
        ASSERT_EQ(client.openMulticast(named ? "10.1.0.1" : ""), 1);
        EXPECT_EQ(client.sendto("group", 5, "239.1.2.3", localPort(member)), 5);
        EXPECT_EQ(nextFrom(member), "group");
        EXPECT_EQ(nextFrom(ownMember, noneMs), "none"); // no copy is received
        EXPECT_EQ(nextFrom(other, noneMs), "none");

        hosts.enterFar();
        CUdpClient farClient; // the local member receives from others
        ASSERT_EQ(farClient.openMulticast(named ? "10.1.0.2" : ""), 1);
        EXPECT_EQ(farClient.sendto("back", 4, "239.1.2.3", localPort(member)), 4);
        EXPECT_EQ(nextFrom(ownMember), "back");
    }
}

TEST_F(UdpBetweenHosts, aClosedServerLeavesItsGroupIfItNamedTheInterface)
{
    hosts.enterFar();
    for (const bool named : {true, false}) {
        SCOPED_TRACE(named);
        Open<CUdpServer> server;
        ASSERT_EQ(server.openMulticast(ownGroup(), 0, named ? "10.1.0.2" : ""), 1);
        EXPECT_TRUE(isJoined());
        Descriptor same(::dup(*server.handle)); // keeps the socket itself open
        server.close();
        EXPECT_EQ(isJoined(), !named);
        same.close();
        EXPECT_FALSE(isJoined());
    }
}
