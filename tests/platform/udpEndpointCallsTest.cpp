#include "support/endpointCalls.h"
#include "support/hex.h"
#include "support/openEndpoints.h"

#include "gqSocketUnix.h"

#include <gtest/gtest.h>

#include <QString>
#include <QtGlobal>

#include <cerrno>
#include <string>
#include <type_traits>
#include <utility>

// --- The classes ---

static_assert(std::is_convertible_v<CUdpServer*, CAbstractSocket*>); // a public base
static_assert(std::is_convertible_v<CUdpClient*, CAbstractSocket*>);
static_assert(sizeof(CUdpClient) == sizeof(CAbstractSocket)); // no field added
static_assert(!std::has_virtual_destructor_v<CUdpServer>);
static_assert(!std::has_virtual_destructor_v<CUdpClient>);

using Text = const std::string&;

static_assert(std::is_same_v<decltype(&CUdpServer::openP2P), int (CUdpServer::*)(Text, int)>);
static_assert(std::is_same_v<decltype(&CUdpServer::openBroadcast), int (CUdpServer::*)(Text, int)>);
static_assert(std::is_same_v<decltype(&CUdpServer::openMulticast), int (CUdpServer::*)(Text, int, Text)>);
static_assert(std::is_same_v<decltype(&CUdpServer::bind), int (CUdpServer::*)(Text, int)>);
static_assert(std::is_same_v<decltype(&CUdpServer::sendto), int (CUdpServer::*)(const char*, int, Text, int)>);
static_assert(std::is_same_v<decltype(&CUdpServer::isWritable), int (CUdpServer::*)(int)>);
static_assert(std::is_same_v<decltype(&CUdpServer::select), int (CUdpServer::*)(int, int&, int&, int&)>);
static_assert(std::is_same_v<decltype(&CUdpServer::close), void (CUdpServer::*)()>);
[[maybe_unused]] static constexpr int (CUdpServer::*serverReads)(char*, int) = &CUdpServer::recvfrom;
[[maybe_unused]] static constexpr int (CUdpServer::*serverReadsFrom)(char*, int, std::string&,
                                                                     int&) = &CUdpServer::recvfrom;

static_assert(std::is_same_v<decltype(&CUdpClient::openP2P), int (CUdpClient::*)()>);
static_assert(std::is_same_v<decltype(&CUdpClient::openBroadcast), int (CUdpClient::*)()>);
static_assert(std::is_same_v<decltype(&CUdpClient::openMulticast), int (CUdpClient::*)(Text)>);
static_assert(std::is_same_v<decltype(&CUdpClient::bind), int (CUdpClient::*)(Text, int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::connect), int (CUdpClient::*)(Text, int, bool)>);
static_assert(std::is_same_v<decltype(&CUdpClient::sendto), int (CUdpClient::*)(const char*, int, Text, int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::recv), int (CUdpClient::*)(char*, int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::send), int (CUdpClient::*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::isWritable), int (CUdpClient::*)(int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::select), int (CUdpClient::*)(int, int&, int&, int&)>);
static_assert(std::is_same_v<decltype(&CUdpClient::close), void (CUdpClient::*)()>);
[[maybe_unused]] static constexpr int (CUdpClient::*clientReads)(char*, int) = &CUdpClient::recvfrom;
[[maybe_unused]] static constexpr int (CUdpClient::*clientReadsFrom)(char*, int, std::string&,
                                                                     int&) = &CUdpClient::recvfrom;

// A pointer to an inherited operation has the type of the base, even if named through the derived class.
static_assert(std::is_same_v<decltype(&CUdpServer::setRecvOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CUdpServer::setSendOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::setRecvOverTm), int (CAbstractSocket::*)(int)>);
static_assert(std::is_same_v<decltype(&CUdpClient::setSendOverTm), int (CAbstractSocket::*)(int)>);

// A server has no peer.
template <typename Endpoint, typename = void>
static constexpr bool connects = false;
template <typename Endpoint>
static constexpr bool connects<Endpoint, std::void_t<decltype(&Endpoint::connect)>> = true;
template <typename Endpoint, typename = void>
static constexpr bool sends = false;
template <typename Endpoint>
static constexpr bool sends<Endpoint, std::void_t<decltype(&Endpoint::send)>> = true;
template <typename Endpoint, typename = void>
static constexpr bool receives = false;
template <typename Endpoint>
static constexpr bool receives<Endpoint, std::void_t<decltype(&Endpoint::recv)>> = true;

static_assert(connects<CUdpClient> && !connects<CUdpServer>);
static_assert(sends<CUdpClient> && !sends<CUdpServer>);
static_assert(receives<CUdpClient> && !receives<CUdpServer>);

class OpenServer : public Open<CUdpServer> {
public:
    using CUdpServer::multicastGroup;
    using CUdpServer::multicastInterface;
    using CUdpServer::multicastJoined;
};

static_assert(std::is_same_v<decltype(OpenServer::multicastGroup), std::string>);
static_assert(std::is_same_v<decltype(OpenServer::multicastInterface), std::string>);
static_assert(std::is_same_v<decltype(OpenServer::multicastJoined), bool>);

TEST(UdpServerClass, addsItsFieldsInOrderAfterThoseOfTheBase)
{
    const OpenServer server;
    const auto offset = [&server](const void* field) {
        return static_cast<const char*>(field) - reinterpret_cast<const char*>(&server);
    };
    const bool isWide = sizeof(void*) == 8;
    EXPECT_EQ(offset(&server.multicastGroup), isWide ? 64 : 40);     // after the base
    EXPECT_EQ(offset(&server.multicastInterface), isWide ? 96 : 64); // after the 32 or 24 bytes of a std::string
    EXPECT_EQ(offset(&server.multicastJoined), isWide ? 128 : 88);
    EXPECT_EQ(sizeof(CUdpServer), isWide ? 136u : 92u);
}

// --- The endpoints under test ---

static const std::string makesDatagramSocket = "socket(AF_INET, SOCK_DGRAM, 0)\n";

static std::string reusing(int descriptor)
{
    return on(descriptor, "setsockopt(#, SOL_SOCKET, SO_REUSEADDR, [01 00 00 00], 4)\n");
}

static std::string bindingTo(int descriptor, const std::string& shown)
{
    return on(descriptor, "bind(#, {AF_INET, " + shown + "}, 16)\n");
}

static std::string closingDatagrams(int descriptor) // without shutdown(2)
{
    return on(descriptor, "close(#)\n");
}

// Both are closed and have no socket yet.
class UdpCalls : public EndpointCalls {
protected:
    OpenServer server;
    Open<CUdpClient> client;

    // Opens with descriptor 7 and discards the recorded calls.
    void openServer()
    {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openP2P("", 1502), 1);
        calls.take();
    }

    void openClient()
    {
        calls.answer("socket", 7);
        EXPECT_EQ(client.openP2P(), 1);
        calls.take();
    }

    void joinGroup(const std::string& interfaceAddress = "")
    {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, interfaceAddress), 1);
        calls.take();
    }

    // Runs a test of common behaviour on both, each open with descriptor 7.
    template <typename Test>
    void onBoth(Test test)
    {
        {
            SCOPED_TRACE("server");
            openServer();
            test(server);
        }
        {
            SCOPED_TRACE("client");
            openClient();
            test(client);
        }
    }
};

// A descriptor below 1 counts as none, although the system may return 0.
static const int failedSockets[] = {0, -1, -2};

// --- Construction ---

using UdpConstructCalls = UdpCalls;

TEST_F(UdpConstructCalls, createsNoSocket)
{
    EXPECT_EQ(*server.handle, 0);
    EXPECT_FALSE(server.opened);
    EXPECT_EQ(server.multicastGroup, "");
    EXPECT_EQ(server.multicastInterface, "");
    EXPECT_FALSE(server.multicastJoined);
    EXPECT_EQ(*client.handle, 0);
    EXPECT_FALSE(client.opened);

    for (CAbstractSocket* endpoint : {static_cast<CAbstractSocket*>(&server), static_cast<CAbstractSocket*>(&client)}) {
        EXPECT_FALSE(endpoint->isValid());
        EXPECT_EQ(endpoint->setRecvOverTm(9000), 0);
        EXPECT_EQ(endpoint->setSendOverTm(9000), 0);
        EXPECT_EQ(endpoint->setRecvBuf(10000), 0);
        EXPECT_EQ(endpoint->setSendBuf(10000), 0);
    }
    EXPECT_EQ(calls.take(), "");
}

// --- CUdpServer::openP2P ---

using UdpServerOpenP2PCalls = UdpCalls;

TEST_F(UdpServerOpenP2PCalls, bindsASocketThatReusesItsAddress)
{
    calls.answer("socket", 7);
    EXPECT_EQ(server.openP2P("127.0.0.2", 1502), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + bindingTo(7, "05 de, 7f 00 00 02"));
    EXPECT_EQ(*server.handle, 7);
    EXPECT_TRUE(server.opened);
    EXPECT_FALSE(server.multicastJoined);
    EXPECT_EQ(server.address, "");
    EXPECT_EQ(server.port, 0);
}

TEST_F(UdpServerOpenP2PCalls, passesTheAddressInNetworkOrder)
{
    for (const auto& [text, port, shown] : localAddresses) {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openP2P(text, port), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + bindingTo(7, shown));
    }
}

TEST_F(UdpServerOpenP2PCalls, acceptsDescriptorOne)
{
    calls.answer("socket", 1);
    EXPECT_EQ(server.openP2P("", 1502), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(1) + bindingTo(1, "05 de, 00 00 00 00"));
    EXPECT_TRUE(server.opened);
}

TEST_F(UdpServerOpenP2PCalls, returnsMinusOneWithoutASocketAndStoresTheValue)
{
    for (const int descriptor : failedSockets) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(server.openP2P("", 1502), -1);
        EXPECT_EQ(calls.take(), makesDatagramSocket);
        EXPECT_EQ(*server.handle, descriptor);
        EXPECT_FALSE(server.opened);
    }
}

TEST_F(UdpServerOpenP2PCalls, returnsMinusTwoAndClosesWhenTheOptionIsRefused)
{
    for (const int answer : {-1, 1}) { // any nonzero value
        calls.answer("socket", 7);
        calls.answer("setsockopt", answer);
        EXPECT_EQ(server.openP2P("", 1502), -2);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + closingDatagrams(7));
        EXPECT_EQ(*server.handle, 7); // the number of the closed socket
        EXPECT_TRUE(server.isValid());
        EXPECT_FALSE(server.opened);
    }
    server.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(UdpServerOpenP2PCalls, returnsZeroAndStaysOpenWhenItCannotBind)
{
    calls.answer("socket", 7);
    calls.refuse("bind", EADDRINUSE);
    EXPECT_EQ(server.openP2P("", 1502), 0);
    EXPECT_EQ(errno, EADDRINUSE);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + bindingTo(7, "05 de, 00 00 00 00"));
    EXPECT_EQ(*server.handle, 7);
    EXPECT_TRUE(server.opened);

    server.close();
    EXPECT_EQ(calls.take(), closingDatagrams(7));
}

TEST_F(UdpServerOpenP2PCalls, replacesAnOpenSocketWithoutClosingIt)
{
    openServer();
    calls.answer("socket", 8);
    EXPECT_EQ(server.openP2P("", 1502), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(8) + bindingTo(8, "05 de, 00 00 00 00"));
    EXPECT_EQ(*server.handle, 8);
    EXPECT_TRUE(server.opened);
}

TEST_F(UdpServerOpenP2PCalls, losesAnOpenSocketEvenWithoutANewOne)
{
    openServer();
    calls.refuse("socket", EMFILE);
    EXPECT_EQ(server.openP2P("", 1502), -1);
    EXPECT_EQ(calls.take(), makesDatagramSocket);
    EXPECT_EQ(*server.handle, -1);
    EXPECT_TRUE(server.opened); // only the descriptor changes
}

// --- CUdpServer::openBroadcast ---

// One byte: Linux refuses it.
static std::string asksForBroadcastInOneByte(int descriptor)
{
    return on(descriptor, "setsockopt(#, SOL_SOCKET, SO_BROADCAST, [01], 1)\n");
}

using UdpServerOpenBroadcastCalls = UdpCalls;

TEST_F(UdpServerOpenBroadcastCalls, bindsAfterSettingTwoOptions)
{
    for (const int answer : {0, 1}) { // any non-negative value
        calls.answer("socket", 7);
        calls.answer("setsockopt", 0);
        calls.answer("setsockopt", answer);
        EXPECT_EQ(server.openBroadcast("127.0.0.2", 1502), 1);
        EXPECT_EQ(calls.take(),
                  makesDatagramSocket + reusing(7) + asksForBroadcastInOneByte(7) + bindingTo(7, "05 de, 7f 00 00 02"));
        EXPECT_EQ(*server.handle, 7);
        EXPECT_TRUE(server.opened);
        EXPECT_FALSE(server.multicastJoined);
    }
}

TEST_F(UdpServerOpenBroadcastCalls, passesTheAddressInNetworkOrder)
{
    for (const auto& [text, port, shown] : localAddresses) {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openBroadcast(text, port), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + asksForBroadcastInOneByte(7) + bindingTo(7, shown));
    }
}

TEST_F(UdpServerOpenBroadcastCalls, acceptsDescriptorOne)
{
    calls.answer("socket", 1);
    EXPECT_EQ(server.openBroadcast("", 1502), 1);
    EXPECT_TRUE(server.opened);
}

TEST_F(UdpServerOpenBroadcastCalls, returnsMinusOneWithoutASocketAndStoresTheValue)
{
    for (const int descriptor : failedSockets) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(server.openBroadcast("", 1502), -1);
        EXPECT_EQ(calls.take(), makesDatagramSocket);
        EXPECT_EQ(*server.handle, descriptor);
        EXPECT_FALSE(server.opened);
    }
}

TEST_F(UdpServerOpenBroadcastCalls, returnsMinusTwoAndClosesWhenReuseIsRefused)
{
    for (const int answer : {-1, 1}) {
        calls.answer("socket", 7);
        calls.answer("setsockopt", answer);
        EXPECT_EQ(server.openBroadcast("", 1502), -2);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + closingDatagrams(7));
        EXPECT_EQ(*server.handle, 7);
        EXPECT_FALSE(server.opened);
    }
}

TEST_F(UdpServerOpenBroadcastCalls, returnsMinusThreeAndClosesWhenBroadcastIsRefused)
{
    calls.answer("socket", 7);
    calls.answer("setsockopt", 0);
    calls.refuse("setsockopt", EINVAL);
    EXPECT_EQ(server.openBroadcast("", 1502), -3);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + asksForBroadcastInOneByte(7) + closingDatagrams(7));
    EXPECT_EQ(*server.handle, 7);
    EXPECT_TRUE(server.isValid());
    EXPECT_FALSE(server.opened);

    server.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(UdpServerOpenBroadcastCalls, returnsZeroAndStaysOpenWhenItCannotBind)
{
    calls.answer("socket", 7);
    calls.refuse("bind", EADDRINUSE);
    EXPECT_EQ(server.openBroadcast("", 1502), 0);
    EXPECT_EQ(calls.take(),
              makesDatagramSocket + reusing(7) + asksForBroadcastInOneByte(7) + bindingTo(7, "05 de, 00 00 00 00"));
    EXPECT_TRUE(server.opened);

    server.close();
    EXPECT_EQ(calls.take(), closingDatagrams(7));
}

TEST_F(UdpServerOpenBroadcastCalls, replacesAnOpenSocketWithoutClosingIt)
{
    openServer();
    calls.answer("socket", 8);
    EXPECT_EQ(server.openBroadcast("", 1502), 1);
    EXPECT_EQ(calls.take(),
              makesDatagramSocket + reusing(8) + asksForBroadcastInOneByte(8) + bindingTo(8, "05 de, 00 00 00 00"));
    EXPECT_EQ(*server.handle, 8);
}

// --- CUdpServer::openMulticast ---

// The ip_mreq: group and interface, 4 bytes each in network order.
static std::string joining(int descriptor, const std::string& group, const std::string& interfaceAddress)
{
    return on(descriptor,
              "setsockopt(#, IPPROTO_IP, IP_ADD_MEMBERSHIP, [" + group + " " + interfaceAddress + "], 8)\n");
}

static std::string leaving(int descriptor, const std::string& group, const std::string& interfaceAddress)
{
    return on(descriptor,
              "setsockopt(#, IPPROTO_IP, IP_DROP_MEMBERSHIP, [" + group + " " + interfaceAddress + "], 8)\n");
}

using UdpServerOpenMulticastCalls = UdpCalls;

TEST_F(UdpServerOpenMulticastCalls, bindsToEveryInterfaceAndJoins)
{
    calls.answer("socket", 7);
    EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, "192.168.10.20"), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + bindingTo(7, "05 de, 00 00 00 00") +
                                joining(7, "ef 01 02 03", "c0 a8 0a 14"));
    EXPECT_EQ(*server.handle, 7);
    EXPECT_TRUE(server.opened);
    EXPECT_EQ(server.multicastGroup, "239.1.2.3");
    EXPECT_EQ(server.multicastInterface, "192.168.10.20");
    EXPECT_TRUE(server.multicastJoined);
    EXPECT_EQ(server.address, "");
    EXPECT_EQ(server.port, 0);
}

TEST_F(UdpServerOpenMulticastCalls, passesTheLowBitsOfThePortInNetworkOrder)
{
    const struct {
        int port;
        const char* shown;
    } ports[] = {{0, "00 00"}, {1, "00 01"}, {65535, "ff ff"}, {65536 + 1502, "05 de"}, {-1, "ff ff"}};
    for (const auto& [port, shown] : ports) {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openMulticast("239.1.2.3", port, ""), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + bindingTo(7, shown + std::string(", 00 00 00 00")) +
                                    joining(7, "ef 01 02 03", "00 00 00 00"));
    }
}

TEST_F(UdpServerOpenMulticastCalls, joinsTheGivenGroupAndBindsToAnyAddress)
{
    const struct {
        const char* group;
        const char* interfaceAddress;
        const char* shownGroup;
        const char* shownInterface;
    } memberships[] = {
        {"224.0.0.1", "", "e0 00 00 01", "00 00 00 00"},
        {"239.1.2.3", "127.0.0.1", "ef 01 02 03", "7f 00 00 01"}, // not a special address here
        {"127.0.0.1", "0.0.0.0", "7f 00 00 01", "00 00 00 00"},
        {"239.1.2.3", "eth0", "ef 01 02 03", "ff ff ff ff"}, // inet_addr() fails
        {" ", " ", "ff ff ff ff", "ff ff ff ff"},
    };
    for (const auto& [group, interfaceAddress, shownGroup, shownInterface] : memberships) {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openMulticast(group, 1502, interfaceAddress), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + bindingTo(7, "05 de, 00 00 00 00") +
                                    joining(7, shownGroup, shownInterface));
        EXPECT_EQ(server.multicastGroup, group);
        EXPECT_EQ(server.multicastInterface, interfaceAddress);
    }
}

TEST_F(UdpServerOpenMulticastCalls, returnsMinusOneWithoutAGroupAndCreatesNoSocket)
{
    EXPECT_EQ(server.openMulticast("", 1502, "192.168.10.20"), -1);
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*server.handle, 0);

    openServer();
    EXPECT_EQ(server.openMulticast("", 1502, ""), -1);
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*server.handle, 7); // the open socket is kept
    EXPECT_TRUE(server.opened);
}

TEST_F(UdpServerOpenMulticastCalls, acceptsDescriptorOne)
{
    calls.answer("socket", 1);
    EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, ""), 1);
    EXPECT_TRUE(server.opened);
}

TEST_F(UdpServerOpenMulticastCalls, returnsMinusTwoWithoutASocketAndStoresTheValue)
{
    for (const int descriptor : failedSockets) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, ""), -2);
        EXPECT_EQ(calls.take(), makesDatagramSocket);
        EXPECT_EQ(*server.handle, descriptor);
        EXPECT_FALSE(server.opened);
    }
}

// A server whose openMulticast() fails: nothing of the membership is stored.
class UdpServerOpenMulticastFailure : public UdpCalls {
protected:
    void expectFailure(int result, const std::string& lines)
    {
        calls.answer("socket", 7);
        EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, "192.168.10.20"), result);
        EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(7) + lines + closingDatagrams(7));
        EXPECT_EQ(*server.handle, 7);
        EXPECT_TRUE(server.isValid());
        EXPECT_FALSE(server.opened);
        EXPECT_EQ(server.multicastGroup, "");
        EXPECT_EQ(server.multicastInterface, "");
        EXPECT_FALSE(server.multicastJoined);

        server.close();
        EXPECT_EQ(calls.take(), "");
    }

    const std::string binds = bindingTo(7, "05 de, 00 00 00 00");
    const std::string joins = joining(7, "ef 01 02 03", "c0 a8 0a 14");
};

TEST_F(UdpServerOpenMulticastFailure, returnsMinusThreeAndClosesWhenReuseIsRefused)
{
    for (const int answer : {-1, 1}) {
        calls.answer("setsockopt", answer);
        expectFailure(-3, "");
    }
}

TEST_F(UdpServerOpenMulticastFailure, returnsMinusFourAndClosesWhenItCannotBind)
{
    calls.refuse("bind", EADDRINUSE);
    expectFailure(-4, binds);
}

TEST_F(UdpServerOpenMulticastFailure, returnsMinusFiveAndClosesWhenItCannotJoin)
{
    calls.answer("setsockopt", 0);
    calls.refuse("setsockopt", ENODEV);
    expectFailure(-5, binds + joins);
}

TEST_F(UdpServerOpenMulticastCalls, treatsPositiveResultsAsSuccessAfterTheFirstOption)
{
    calls.answer("socket", 7);
    calls.answer("setsockopt", 0);
    calls.answer("bind", 1);
    calls.answer("setsockopt", 1);
    EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, ""), 1);
}

TEST_F(UdpServerOpenMulticastCalls, keepsTheLastSuccessfulMembership)
{
    joinGroup("192.168.10.20");
    calls.answer("socket", 8);
    calls.refuse("bind", EADDRINUSE);
    EXPECT_EQ(server.openMulticast("239.9.9.9", 1502, ""), -4);
    EXPECT_EQ(server.multicastGroup, "239.1.2.3");
    EXPECT_EQ(server.multicastInterface, "192.168.10.20");
    EXPECT_TRUE(server.multicastJoined);
    calls.take();

    calls.answer("socket", 9);
    EXPECT_EQ(server.openMulticast("239.9.9.9", 1502, ""), 1);
    EXPECT_EQ(server.multicastGroup, "239.9.9.9");
    EXPECT_EQ(server.multicastInterface, "");
}

TEST_F(UdpServerOpenMulticastCalls, replacesAnOpenSocketWithoutClosingIt)
{
    joinGroup();
    calls.answer("socket", 8);
    EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, ""), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + reusing(8) + bindingTo(8, "05 de, 00 00 00 00") +
                                joining(8, "ef 01 02 03", "00 00 00 00"));
    EXPECT_EQ(*server.handle, 8);
}

// --- CUdpServer::close ---

using UdpServerCloseCalls = UdpCalls;

TEST_F(UdpServerCloseCalls, closesOnceWithoutAShutdown)
{
    openServer();
    server.close();
    EXPECT_EQ(calls.take(), closingDatagrams(7));
    EXPECT_EQ(*server.handle, -1);
    EXPECT_FALSE(server.opened);

    server.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(UdpServerCloseCalls, leavesTheGroupFirst)
{
    joinGroup("192.168.10.20");
    server.close();
    EXPECT_EQ(calls.take(), leaving(7, "ef 01 02 03", "c0 a8 0a 14") + closingDatagrams(7));
    EXPECT_EQ(*server.handle, -1);
    EXPECT_FALSE(server.opened);

    server.close();
    EXPECT_EQ(calls.take(), "");
}

// Joins on 0.0.0.0 but leaves on 255.255.255.255: the system finds no such membership, and closing the socket ends it.
TEST_F(UdpServerCloseCalls, passesAllOnesAsInterfaceForAnEmptyText)
{
    joinGroup("");
    server.close();
    EXPECT_EQ(calls.take(), leaving(7, "ef 01 02 03", "ff ff ff ff") + closingDatagrams(7));
}

TEST_F(UdpServerCloseCalls, ignoresTheResults)
{
    joinGroup();
    calls.refuse("setsockopt", EADDRNOTAVAIL);
    calls.refuse("close", EIO);
    server.close();
    EXPECT_EQ(calls.take(), leaving(7, "ef 01 02 03", "ff ff ff ff") + closingDatagrams(7));
    EXPECT_EQ(*server.handle, -1);
    EXPECT_FALSE(server.opened);
}

TEST_F(UdpServerCloseCalls, keepsTheMembershipAndLeavesItOnEachLaterSocket)
{
    joinGroup("192.168.10.20");
    server.close();
    EXPECT_TRUE(server.multicastJoined);
    EXPECT_EQ(server.multicastGroup, "239.1.2.3");
    EXPECT_EQ(server.multicastInterface, "192.168.10.20");
    calls.take();

    openServer();
    EXPECT_TRUE(server.multicastJoined);
    calls.refuse("setsockopt", EADDRNOTAVAIL);
    server.close();
    EXPECT_EQ(calls.take(), leaving(7, "ef 01 02 03", "c0 a8 0a 14") + closingDatagrams(7));
    EXPECT_TRUE(server.multicastJoined);
}

TEST_F(UdpServerCloseCalls, doesNothingIfNotOpened)
{
    server.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*server.handle, 0);

    *server.handle = 7;
    server.multicastJoined = true;
    server.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*server.handle, 7);
}

TEST_F(UdpServerCloseCalls, isVirtual)
{
    joinGroup();
    CAbstractSocket& base = server;
    base.close();
    EXPECT_EQ(calls.take(), leaving(7, "ef 01 02 03", "ff ff ff ff") + closingDatagrams(7));
}

using UdpServerDestroyCalls = EndpointCalls;

TEST_F(UdpServerDestroyCalls, leavesTheGroupAndClosesIfOpen)
{
    {
        calls.answer("socket", 7);
        CUdpServer server;
        EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, "127.0.0.1"), 1);
        calls.take();
    }
    EXPECT_EQ(calls.take(), leaving(7, "ef 01 02 03", "7f 00 00 01") + closingDatagrams(7));
    {
        calls.answer("socket", 7);
        CUdpServer server;
        EXPECT_EQ(server.openMulticast("239.1.2.3", 1502, "127.0.0.1"), 1);
        server.close();
        calls.take();
    }
    EXPECT_EQ(calls.take(), "");
    {
        const CUdpServer server;
    }
    EXPECT_EQ(calls.take(), "");
}

// --- CUdpClient: opening ---

using UdpClientOpenP2PCalls = UdpCalls;

TEST_F(UdpClientOpenP2PCalls, createsASocketWithoutOptions)
{
    for (const int descriptor : {7, 1}) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(client.openP2P(), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket);
        EXPECT_EQ(*client.handle, descriptor);
        EXPECT_TRUE(client.opened);
    }
}

TEST_F(UdpClientOpenP2PCalls, returnsMinusOneWithoutASocketAndStoresTheValue)
{
    for (const int descriptor : failedSockets) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(client.openP2P(), -1);
        EXPECT_EQ(calls.take(), makesDatagramSocket);
        EXPECT_EQ(*client.handle, descriptor);
        EXPECT_FALSE(client.opened);
    }
}

TEST_F(UdpClientOpenP2PCalls, losesAnOpenSocketWithoutClosingIt)
{
    openClient();
    calls.answer("socket", 8);
    EXPECT_EQ(client.openP2P(), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket);
    EXPECT_EQ(*client.handle, 8);

    calls.refuse("socket", EMFILE);
    EXPECT_EQ(client.openP2P(), -1);
    EXPECT_EQ(calls.take(), makesDatagramSocket);
    EXPECT_EQ(*client.handle, -1);
    EXPECT_TRUE(client.opened); // only the descriptor changes
}

static const std::string asksForBroadcast = "setsockopt(7, SOL_SOCKET, SO_BROADCAST, [01 00 00 00], 4)\n";

using UdpClientOpenBroadcastCalls = UdpCalls;

TEST_F(UdpClientOpenBroadcastCalls, setsTheOptionAndBindsNothing)
{
    for (const int answer : {0, 1}) { // any non-negative value
        calls.answer("socket", 7);
        calls.answer("setsockopt", answer);
        EXPECT_EQ(client.openBroadcast(), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket + asksForBroadcast);
        EXPECT_EQ(*client.handle, 7);
        EXPECT_TRUE(client.opened);
    }
}

TEST_F(UdpClientOpenBroadcastCalls, acceptsDescriptorOne)
{
    calls.answer("socket", 1);
    EXPECT_EQ(client.openBroadcast(), 1);
    EXPECT_TRUE(client.opened);
}

TEST_F(UdpClientOpenBroadcastCalls, returnsMinusOneWithoutASocketAndStoresTheValue)
{
    for (const int descriptor : failedSockets) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(client.openBroadcast(), -1);
        EXPECT_EQ(calls.take(), makesDatagramSocket);
        EXPECT_EQ(*client.handle, descriptor);
        EXPECT_FALSE(client.opened);
    }
}

TEST_F(UdpClientOpenBroadcastCalls, returnsMinusTwoAndClosesWhenTheOptionIsRefused)
{
    calls.answer("socket", 7);
    calls.refuse("setsockopt", EPERM);
    EXPECT_EQ(client.openBroadcast(), -2);
    EXPECT_EQ(calls.take(), makesDatagramSocket + asksForBroadcast + closingDatagrams(7));
    EXPECT_EQ(*client.handle, 7);
    EXPECT_TRUE(client.isValid());
    EXPECT_FALSE(client.opened);

    client.close();
    EXPECT_EQ(calls.take(), "");
}

// Records messages of qDebug() among the system calls.
class DebugMessages {
public:
    explicit DebugMessages(SystemCalls& systemCalls) : calls(systemCalls), replaced(qInstallMessageHandler(&take))
    {
        current = this;
    }

    ~DebugMessages()
    {
        qInstallMessageHandler(replaced);
        current = nullptr;
    }

    DebugMessages(const DebugMessages&) = delete;
    DebugMessages& operator=(const DebugMessages&) = delete;

    // Returns all lines since the last time.
    std::string lines() { return std::exchange(written, {}) + calls.take(); }

private:
    static void take(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        current->written +=
            current->calls.take() + (type == QtDebugMsg ? "qDebug: " : "another kind: ") + text.toStdString() + "\n";
        errno = EIO; // writing may set it
    }

    static DebugMessages* current;
    SystemCalls& calls;
    QtMessageHandler replaced;
    std::string written;
};

DebugMessages* DebugMessages::current = nullptr;

static std::string sendingOutOf(const std::string& interfaceAddress)
{
    return "setsockopt(7, IPPROTO_IP, IP_MULTICAST_IF, [" + interfaceAddress + "], 4)\n";
}

static const std::string endsLoop = "setsockopt(7, IPPROTO_IP, IP_MULTICAST_LOOP, [00], 1)\n";

class UdpClientOpenMulticastCalls : public UdpCalls {
protected:
    static void SetUpTestSuite()
    {
        const QtMessageHandler usual =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        qDebug("Qt makes locks for the first message of a program");
        qInstallMessageHandler(usual);
    }

    DebugMessages messages{calls};

    void expectFailed()
    {
        EXPECT_EQ(*client.handle, 7);
        EXPECT_TRUE(client.isValid());
        EXPECT_FALSE(client.opened);
        client.close();
        EXPECT_EQ(calls.take(), "");
    }
};

TEST_F(UdpClientOpenMulticastCalls, setsTheInterfaceAndDisablesTheLoop)
{
    const struct {
        const char* text;
        const char* shown;
    } interfaces[] = {
        {"192.168.10.20", "c0 a8 0a 14"},
        {"127.0.0.1", "7f 00 00 01"}, // not a special address here
        {"0.0.0.0", "00 00 00 00"},
        {"eth0", "ff ff ff ff"}, // inet_addr() fails
        {" ", "ff ff ff ff"},
    };
    for (const auto& [text, shown] : interfaces) {
        calls.answer("socket", 7);
        EXPECT_EQ(client.openMulticast(text), 1);
        EXPECT_EQ(calls.take(), makesDatagramSocket + sendingOutOf(shown) + endsLoop);
        EXPECT_EQ(*client.handle, 7);
        EXPECT_TRUE(client.opened);
    }
    EXPECT_EQ(messages.lines(), "");
}

TEST_F(UdpClientOpenMulticastCalls, leavesTheInterfaceToTheSystemForAnEmptyText)
{
    calls.answer("socket", 7);
    EXPECT_EQ(client.openMulticast(""), 1);
    EXPECT_EQ(messages.lines(), makesDatagramSocket + endsLoop);
    EXPECT_TRUE(client.opened);
}

TEST_F(UdpClientOpenMulticastCalls, acceptsDescriptorOne)
{
    calls.answer("socket", 1);
    EXPECT_EQ(client.openMulticast(""), 1);
    EXPECT_TRUE(client.opened);
}

TEST_F(UdpClientOpenMulticastCalls, returnsMinusOneWithoutASocketAndPrintsNothing)
{
    for (const int descriptor : failedSockets) {
        calls.answer("socket", descriptor);
        EXPECT_EQ(client.openMulticast("192.168.10.20"), -1);
        EXPECT_EQ(messages.lines(), makesDatagramSocket);
        EXPECT_EQ(*client.handle, descriptor);
        EXPECT_FALSE(client.opened);
    }
}

TEST_F(UdpClientOpenMulticastCalls, returnsMinusTwoAndReportsAndClosesWhenTheInterfaceIsRefused)
{
    calls.answer("socket", 7);
    calls.refuse("setsockopt", EINVAL);
    EXPECT_EQ(client.openMulticast("192.168.10.20"), -2);
    EXPECT_EQ(messages.lines(),
              makesDatagramSocket + sendingOutOf("c0 a8 0a 14") + "qDebug: 2, error: 22\n" + closingDatagrams(7));
    expectFailed();
}

TEST_F(UdpClientOpenMulticastCalls, keepsTheErrnoOfTheRefusalWhateverTheMessageDoes)
{
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { errno = ENOMEM; });
    calls.answer("socket", 7);
    calls.refuse("setsockopt", EINVAL);
    EXPECT_EQ(client.openMulticast("192.168.10.20"), -2);
    EXPECT_EQ(errno, EINVAL);

    calls.answer("socket", 7);
    calls.refuse("setsockopt", EADDRNOTAVAIL);
    EXPECT_EQ(client.openMulticast(""), -3);
    EXPECT_EQ(errno, EADDRNOTAVAIL);
    qInstallMessageHandler(before);
    calls.take();
}

TEST_F(UdpClientOpenMulticastCalls, treatsAPositiveInterfaceResultAsSuccess)
{
    calls.answer("socket", 7);
    calls.answer("setsockopt", 1);
    EXPECT_EQ(client.openMulticast("192.168.10.20"), 1);
    EXPECT_EQ(messages.lines(), makesDatagramSocket + sendingOutOf("c0 a8 0a 14") + endsLoop);
}

TEST_F(UdpClientOpenMulticastCalls, returnsMinusThreeAndReportsAndClosesWhenTheLoopIsRefused)
{
    calls.answer("socket", 7);
    calls.answer("setsockopt", 0);
    calls.refuse("setsockopt", EADDRNOTAVAIL);
    EXPECT_EQ(client.openMulticast("192.168.10.20"), -3);
    EXPECT_EQ(messages.lines(), makesDatagramSocket + sendingOutOf("c0 a8 0a 14") + endsLoop +
                                    "qDebug: 3, error: 99\n" + closingDatagrams(7));
    expectFailed();
}

TEST_F(UdpClientOpenMulticastCalls, treatsAPositiveLoopResultAsFailure)
{
    calls.answer("socket", 7);
    calls.answer("setsockopt", 1);
    errno = 0;
    EXPECT_EQ(client.openMulticast(""), -3);
    EXPECT_EQ(messages.lines(), makesDatagramSocket + endsLoop + "qDebug: 3, error: 0\n" + closingDatagrams(7));
    expectFailed();
}

TEST_F(UdpClientOpenMulticastCalls, replacesAnOpenSocketWithoutClosingIt)
{
    calls.answer("socket", 6);
    EXPECT_EQ(client.openP2P(), 1);
    calls.answer("socket", 7);
    EXPECT_EQ(client.openMulticast(""), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + makesDatagramSocket + endsLoop);
    EXPECT_EQ(*client.handle, 7);
}

// --- CUdpClient::connect ---

using UdpClientConnectCalls = UdpCalls;

TEST_F(UdpClientConnectCalls, passesTheAddressInNetworkOrder)
{
    openClient();
    const struct {
        const char* text;
        int port;
        const char* shown; // port and address, in memory order
    } targets[] = {
        {"127.0.0.1", 1502, "05 de, 7f 00 00 01"}, // not a special address here
        {"192.168.10.20", 80, "00 50, c0 a8 0a 14"},
        {"0.0.0.0", 1502, "05 de, 00 00 00 00"},
        {"127.1", 1502, "05 de, 7f 00 00 01"},
        {"255.255.255.255", 65535, "ff ff, ff ff ff ff"},
        {"", 1502, "05 de, ff ff ff ff"}, // inet_addr() fails
        {"localhost", 1502, "05 de, ff ff ff ff"},
        {"127.0.0.1", 0, "00 00, 7f 00 00 01"}, // only the low 16 bits of a port are used
        {"127.0.0.1", 65536 + 1502, "05 de, 7f 00 00 01"},
        {"127.0.0.1", -1, "ff ff, 7f 00 00 01"},
    };
    for (const auto& [text, port, shown] : targets) {
        EXPECT_EQ(client.connect(text, port, false), 1);
        EXPECT_EQ(calls.take(), std::string("connect(7, {AF_INET, ") + shown + "}, 16)\n");
    }
    EXPECT_EQ(client.address, "");
    EXPECT_EQ(client.port, 0);
}

TEST_F(UdpClientConnectCalls, returnsOneOnSuccess)
{
    openClient();
    for (const int answer : {0, 5}) {
        calls.answer("connect", answer);
        errno = EINPROGRESS; // from an earlier call
        EXPECT_EQ(client.connect("127.0.0.1", 1502, false), 1);
    }
}

TEST_F(UdpClientConnectCalls, mapsEachErrorNumberAndLeavesErrno)
{
    openClient();
    const struct {
        int error;
        int result;
    } outcomes[] = {
        {EINPROGRESS, 0}, {EISCONN, 1}, {0, -1},           {EAGAIN, -1},       {EALREADY, -1}, {EINTR, -1},
        {EACCES, -1},     {EBADF, -1},  {ENETUNREACH, -1}, {ECONNREFUSED, -1}, {EINVAL, -1},
    };
    for (const auto& [error, result] : outcomes) {
        calls.refuse("connect", error);
        EXPECT_EQ(client.connect("127.0.0.1", 1502, false), result) << error;
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n"); // nothing is closed
        EXPECT_TRUE(client.opened);
    }
}

TEST_F(UdpClientConnectCalls, opensBeforeConnectingIfNothingIsOpen)
{
    calls.answer("socket", 7);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    EXPECT_EQ(*client.handle, 7);
    EXPECT_TRUE(client.opened);

    client.close();
    calls.take();
    calls.answer("socket", 8);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + "connect(8, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    EXPECT_EQ(*client.handle, 8);
}

TEST_F(UdpClientConnectCalls, opensWithoutTheOptionsOfAnEarlierOpening)
{
    calls.answer("socket", 7);
    EXPECT_EQ(client.openBroadcast(), 1);
    client.close();
    calls.take();
    calls.answer("socket", 8);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + "connect(8, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(UdpClientConnectCalls, opensNonBlockingIfAsync)
{
    calls.answer("socket", 7);
    calls.answer("fcntl", 2);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, true), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + "fcntl(7, F_GETFL, 0)\n"
                                                  "fcntl(7, F_SETFL, 2050)\n" // 2 and O_NONBLOCK
                                                  "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(UdpClientConnectCalls, makesAnOpenSocketNonBlockingOnEachAsyncCall)
{
    openClient();
    for (int call = 0; call < 2; ++call) {
        calls.answer("fcntl", 2);
        EXPECT_EQ(client.connect("127.0.0.1", 1502, true), 1);
        EXPECT_EQ(calls.take(), "fcntl(7, F_GETFL, 0)\n"
                                "fcntl(7, F_SETFL, 2050)\n"
                                "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    }
    EXPECT_EQ(client.connect("127.0.0.1", 1502, false), 1); // stays non-blocking
    EXPECT_EQ(calls.take(), "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

TEST_F(UdpClientConnectCalls, connectsEvenIfItCannotBeMadeNonBlocking)
{
    openClient();
    calls.refuse("fcntl", EPERM);
    calls.refuse("fcntl", EPERM);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, true), 1);
}

TEST_F(UdpClientConnectCalls, connectsEvenIfNoSocketCanBeOpened)
{
    for (const bool async : {false, true}) {
        calls.refuse("socket", EMFILE);
        calls.refuse("connect", EBADF);
        EXPECT_EQ(client.connect("127.0.0.1", 1502, async), -1);
        EXPECT_EQ(calls.take(), makesDatagramSocket +
                                    (async ? "fcntl(-1, F_GETFL, 0)\n"
                                             "fcntl(-1, F_SETFL, 2048)\n"
                                           : "") +
                                    "connect(-1, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
        EXPECT_FALSE(client.opened);
    }
}

TEST_F(UdpClientConnectCalls, usesTheOpenedFlagAndNotTheDescriptor)
{
    *client.handle = 7;
    calls.answer("socket", 8);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, false), 1);
    EXPECT_EQ(calls.take(), makesDatagramSocket + "connect(8, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");

    *client.handle = -1;
    calls.refuse("connect", EBADF);
    EXPECT_EQ(client.connect("127.0.0.1", 1502, false), -1);
    EXPECT_EQ(calls.take(), "connect(-1, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
}

// --- CUdpClient: recv and send ---

static const struct {
    int error;
    int result;
} transferFailures[] = {
    {0, 0},         {EAGAIN, 0},        {EINTR, -1},   {EBADF, -1},    {ECONNREFUSED, -1}, {EPIPE, -1},
    {ENOTCONN, -1}, {EINPROGRESS, -1},  {EISCONN, -1}, {EMSGSIZE, -1}, {EDESTADDRREQ, -1}, {ENOBUFS, -1},
    {EPERM, -1},    {ECONNABORTED, -1},
};

using UdpClientRecvCalls = UdpCalls;

TEST_F(UdpClientRecvCalls, readsOnce)
{
    openClient();
    char buffer[8] = "-------";
    calls.answer("recv", 3, "68 0d 16"_hex);
    errno = EINTR; // from an earlier call
    EXPECT_EQ(client.recv(buffer, 7), 3);
    EXPECT_EQ(calls.take(), "recv(7, 7, MSG_NOSIGNAL)\n");
    EXPECT_STREQ(buffer, "\x68\x0d\x16----");
}

TEST_F(UdpClientRecvCalls, returnsMinusOneForAnEmptyDatagramWhateverErrno)
{
    openClient();
    char buffer[4] = {};
    for (const int error : {0, EAGAIN, EINTR}) {
        calls.answer("recv", 0);
        errno = error;
        EXPECT_EQ(client.recv(buffer, 4), -1);
    }
}

TEST_F(UdpClientRecvCalls, mapsEachErrorNumberAndLeavesErrno)
{
    openClient();
    char buffer[4] = {};
    for (const auto& [error, result] : transferFailures) {
        calls.refuse("recv", error);
        EXPECT_EQ(client.recv(buffer, 4), result) << error;
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "recv(7, 4, MSG_NOSIGNAL)\n");
    }
}

TEST_F(UdpClientRecvCalls, doesNotCheckTheDescriptor)
{
    char buffer[4] = {};
    calls.refuse("recv", ENOTSOCK);
    EXPECT_EQ(client.recv(buffer, 4), -1);
    EXPECT_EQ(calls.take(), "recv(0, 4, MSG_NOSIGNAL)\n"); // never opened
}

using UdpClientSendCalls = UdpCalls;

TEST_F(UdpClientSendCalls, writesOnceAndReturnsTheCount)
{
    openClient();
    for (const int count : {0, 1, 3}) {
        calls.answer("send", count);
        errno = EINTR; // from an earlier call
        EXPECT_EQ(client.send("\x68\x0d\x16", 3), count);
        EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n");
    }
}

TEST_F(UdpClientSendCalls, mapsEachErrorNumberAndLeavesErrno)
{
    openClient();
    for (const auto& [error, result] : transferFailures) {
        calls.refuse("send", error);
        EXPECT_EQ(client.send("\x68", 1), result) << error;
        EXPECT_EQ(errno, error);
        EXPECT_EQ(calls.take(), "send(7, [68], 1, MSG_NOSIGNAL)\n");
    }
}

TEST_F(UdpClientSendCalls, doesNotCheckTheDescriptor)
{
    calls.refuse("send", ENOTSOCK);
    EXPECT_EQ(client.send("\x68", 1), -1);
    EXPECT_EQ(calls.take(), "send(0, [68], 1, MSG_NOSIGNAL)\n"); // never opened
}

// --- CUdpClient::close ---

using UdpClientCloseCalls = UdpCalls;

TEST_F(UdpClientCloseCalls, closesOnceWithoutAShutdown)
{
    openClient();
    client.close();
    EXPECT_EQ(calls.take(), closingDatagrams(7));
    EXPECT_EQ(*client.handle, -1);
    EXPECT_FALSE(client.opened);

    client.close();
    EXPECT_EQ(calls.take(), "");
}

TEST_F(UdpClientCloseCalls, ignoresTheResult)
{
    openClient();
    calls.refuse("close", EIO);
    client.close();
    EXPECT_EQ(*client.handle, -1);
    EXPECT_FALSE(client.opened);
}

TEST_F(UdpClientCloseCalls, doesNothingIfNotOpened)
{
    client.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*client.handle, 0);

    *client.handle = 7;
    client.close();
    EXPECT_EQ(calls.take(), "");
    EXPECT_EQ(*client.handle, 7);
}

TEST_F(UdpClientCloseCalls, isVirtual)
{
    openClient();
    CAbstractSocket& base = client;
    base.close();
    EXPECT_EQ(calls.take(), closingDatagrams(7));
}

using UdpClientDestroyCalls = EndpointCalls;

TEST_F(UdpClientDestroyCalls, closesAnOpenSocketOnly)
{
    {
        calls.answer("socket", 7);
        CUdpClient client;
        client.openP2P();
        calls.take();
    }
    EXPECT_EQ(calls.take(), closingDatagrams(7));
    {
        calls.answer("socket", 7);
        CUdpClient client;
        client.openP2P();
        client.close();
        calls.take();
    }
    EXPECT_EQ(calls.take(), "");
    {
        const CUdpClient client;
    }
    EXPECT_EQ(calls.take(), "");
}

// --- Common operations ---

using UdpBindCalls = UdpCalls;

TEST_F(UdpBindCalls, passesTheAddressInNetworkOrder)
{
    onBoth([this](auto& endpoint) {
        for (const auto& [text, port, shown] : localAddresses) {
            EXPECT_EQ(endpoint.bind(text, port), 1);
            EXPECT_EQ(calls.take(), bindingTo(7, shown));
        }
    });
}

TEST_F(UdpBindCalls, comparesTheWholeAddressIncludingZeroBytes)
{
    onBoth([this](auto& endpoint) {
        EXPECT_EQ(endpoint.bind(std::string("127.0.0.1\0", 10), 1502), 1);
        EXPECT_EQ(calls.take(), bindingTo(7, "05 de, 7f 00 00 01"));
    });
}

TEST_F(UdpBindCalls, returnsOneForResultsFromZeroUp)
{
    onBoth([this](auto& endpoint) {
        calls.answer("bind", 5);
        EXPECT_EQ(endpoint.bind("", 1502), 1);
    });
}

TEST_F(UdpBindCalls, returnsZeroAndLeavesTheSocketWhenItFails)
{
    onBoth([this](auto& endpoint) {
        calls.refuse("bind", EADDRINUSE);
        EXPECT_EQ(endpoint.bind("", 1502), 0);
        EXPECT_EQ(errno, EADDRINUSE);
        EXPECT_EQ(calls.take(), bindingTo(7, "05 de, 00 00 00 00"));
        EXPECT_EQ(*endpoint.handle, 7);
        EXPECT_TRUE(endpoint.opened);
    });
}

TEST_F(UdpBindCalls, opensNoSocket)
{
    onBoth([this](auto& endpoint) {
        endpoint.close();
        calls.take();
        calls.refuse("bind", EBADF);
        EXPECT_EQ(endpoint.bind("", 1502), 0);
        EXPECT_EQ(calls.take(), bindingTo(-1, "05 de, 00 00 00 00"));
        EXPECT_FALSE(endpoint.opened);
    });
}

using UdpSendtoCalls = UdpCalls;

TEST_F(UdpSendtoCalls, sendsOnceToTheAddressInNetworkOrder)
{
    const struct {
        const char* text;
        int port;
        const char* shown;
    } targets[] = {
        {"127.0.0.1", 1502, "05 de, 7f 00 00 01"}, // not a special address here
        {"192.168.10.20", 65535, "ff ff, c0 a8 0a 14"},
        {"255.255.255.255", 80, "00 50, ff ff ff ff"},
        {"", 1502, "05 de, ff ff ff ff"}, // inet_addr() fails
        {"localhost", 1502, "05 de, ff ff ff ff"},
        {"127.0.0.1", 65536 + 1502, "05 de, 7f 00 00 01"}, // only the low 16 bits of a port are used
        {"127.0.0.1", -1, "ff ff, 7f 00 00 01"},
    };
    onBoth([&, this](auto& endpoint) {
        for (const auto& [text, port, shown] : targets) {
            calls.answer("sendto", 3);
            EXPECT_EQ(endpoint.sendto("\x68\x0d\x16", 3, text, port), 3);
            EXPECT_EQ(calls.take(), std::string("sendto(7, [68 0d 16], 3, 0, {AF_INET, ") + shown + "}, 16)\n");
        }
    });
}

TEST_F(UdpSendtoCalls, sendsAnEmptyDatagram)
{
    onBoth([this](auto& endpoint) {
        EXPECT_EQ(endpoint.sendto("\x68", 0, "127.0.0.1", 1502), 0);
        EXPECT_EQ(calls.take(), "sendto(7, [], 0, 0, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    });
}

TEST_F(UdpSendtoCalls, returnsTheResultOfTheSystem)
{
    onBoth([this](auto& endpoint) {
        for (const int result : {0, 1, 2, -5}) {
            calls.answer("sendto", result);
            EXPECT_EQ(endpoint.sendto("\x68\x0d", 2, "127.0.0.1", 1502), result);
        }
        for (const int error : {0, EAGAIN, EINTR, EACCES, EBADF}) { // -1 for each
            calls.refuse("sendto", error);
            EXPECT_EQ(endpoint.sendto("\x68\x0d", 2, "127.0.0.1", 1502), -1);
            EXPECT_EQ(errno, error);
        }
    });
}

TEST_F(UdpSendtoCalls, opensNoSocket)
{
    onBoth([this](auto& endpoint) {
        endpoint.close();
        calls.take();
        calls.refuse("sendto", EBADF);
        EXPECT_EQ(endpoint.sendto("\x68", 1, "127.0.0.1", 1502), -1);
        EXPECT_EQ(calls.take(), "sendto(-1, [68], 1, 0, {AF_INET, 05 de, 7f 00 00 01}, 16)\n");
    });
}

// Each test runs on both forms. The form with outputs stores them in `address` and `port`.
class UdpRecvfromCalls : public UdpCalls {
protected:
    char buffer[8] = {};
    std::string address;
    int port = 0;

    template <typename Endpoint>
    int recvfrom(Endpoint& endpoint, bool withSender, int length)
    {
        address = "before";
        port = 99;
        return withSender ? endpoint.recvfrom(buffer, length, address, port) : endpoint.recvfrom(buffer, length);
    }

    void expectSender(const std::string& wantedAddress, int wantedPort)
    {
        EXPECT_EQ(address, wantedAddress);
        EXPECT_EQ(port, wantedPort);
    }
};

static const std::string readsDatagram = "recvfrom(7, 4, 0, 16)\n"; // 4 bytes, no flags, 16 bytes for the sender

TEST_F(UdpRecvfromCalls, readsOnceAndReturnsTheCount)
{
    onBoth([this](auto& endpoint) {
        for (const bool withSender : {false, true}) {
            calls.answer("recvfrom", 3, "68 0d 16"_hex + peerBytes);
            errno = EINTR; // from an earlier call
            EXPECT_EQ(recvfrom(endpoint, withSender, 4), 3);
            EXPECT_EQ(calls.take(), readsDatagram);
            EXPECT_EQ(hex(QByteArray(buffer, 4)), "68 0d 16 00");
        }
    });
}

TEST_F(UdpRecvfromCalls, returnsTheSender)
{
    const struct {
        const char* bytes; // a sockaddr_in
        const char* text;
        int port;
    } senders[] = {
        {"0200 05de 7f000001 0000000000000000", "127.0.0.1", 1502},
        {"0200 ffff c0a80a14 0000000000000000", "192.168.10.20", 65535},
        {"0200 0001 ffffffff 0000000000000000", "255.255.255.255", 1},
        {"0200 8000 00000000 0000000000000000", "0.0.0.0", 32768},
    };
    onBoth([&, this](auto& endpoint) {
        for (const auto& [bytes, text, senderPort] : senders) {
            calls.answer("recvfrom", 1, "68"_hex + QByteArray::fromHex(bytes));
            EXPECT_EQ(recvfrom(endpoint, true, 4), 1);
            expectSender(text, senderPort);
        }
    });
}

TEST_F(UdpRecvfromCalls, returnsZeroAndTheSenderOfAnEmptyDatagram)
{
    onBoth([this](auto& endpoint) {
        for (const bool withSender : {false, true}) {
            calls.answer("recvfrom", 0, peerBytes);
            errno = EINTR; // from an earlier call
            EXPECT_EQ(recvfrom(endpoint, withSender, 4), 0);
        }
        expectSender("127.0.0.1", 1502);
    });
}

TEST_F(UdpRecvfromCalls, mapsEachErrorNumberAndLeavesTheOutputs)
{
    onBoth([this](auto& endpoint) {
        for (const bool withSender : {false, true}) {
            for (const auto& [error, result] : transferFailures) {
                calls.refuse("recvfrom", error);
                EXPECT_EQ(recvfrom(endpoint, withSender, 4), result) << error;
                EXPECT_EQ(errno, error);
                EXPECT_EQ(calls.take(), readsDatagram);
                expectSender("before", 99);
            }
        }
    });
}

TEST_F(UdpRecvfromCalls, opensNoSocket)
{
    onBoth([this](auto& endpoint) {
        endpoint.close();
        calls.take();
        for (const bool withSender : {false, true}) {
            calls.refuse("recvfrom", EBADF);
            EXPECT_EQ(recvfrom(endpoint, withSender, 4), -1);
            EXPECT_EQ(calls.take(), "recvfrom(-1, 4, 0, 16)\n");
        }
    });
}

using UdpIsWritableCalls = UdpCalls;

static const std::string waitsToWrite = "select(8, null, {7}, {7}, {0, 20000})\n";
static const std::string asksForTheError = "getsockopt(7, SOL_SOCKET, SO_ERROR, 4)\n";
static const std::string asksForThePeer = "getpeername(7, 16)\n";

TEST_F(UdpIsWritableCalls, queriesTheErrorAndThePeerOnceWritable)
{
    onBoth([this](auto& endpoint) {
        calls.answerSelect(1, {}, {7}, {});
        calls.answer("getsockopt", 0, "00000000"_hex);
        calls.answer("getpeername", 0, peerBytes);
        errno = ECONNREFUSED; // from an earlier call
        EXPECT_EQ(endpoint.isWritable(20), 1);
        EXPECT_EQ(calls.take(), waitsToWrite + asksForTheError + asksForThePeer);
    });
}

TEST_F(UdpIsWritableCalls, passesTheTimeToTheSystem)
{
    onBoth([this](auto& endpoint) {
        for (const auto& [ms, text] : selectTimes) {
            endpoint.isWritable(ms);
            EXPECT_EQ(calls.take(), std::string("select(8, null, {7}, {7}, ") + text + ")\n");
        }
    });
}

TEST_F(UdpIsWritableCalls, returnsMinusOneOnATimeOutOrWhenSelectFails)
{
    onBoth([this](auto& endpoint) {
        calls.answerSelect(0, {}, {7}, {});
        EXPECT_EQ(endpoint.isWritable(20), -1); // isReadable() returns 0
        calls.refuse("select", EINTR);
        EXPECT_EQ(endpoint.isWritable(20), -1);
        EXPECT_EQ(errno, EINTR);
        calls.answer("select", -5);
        EXPECT_EQ(endpoint.isWritable(20), -1);
        EXPECT_EQ(calls.take(), waitsToWrite + waitsToWrite + waitsToWrite);
    });
}

TEST_F(UdpIsWritableCalls, returnsZeroWhenNotWritableOrExceptional)
{
    const struct {
        SystemCalls::Descriptors writable;
        SystemCalls::Descriptors exceptional;
    } sets[] = {{{}, {7}}, {{7}, {7}}, {{}, {}}, {{6}, {}}};
    onBoth([&, this](auto& endpoint) {
        for (const auto& [writable, exceptional] : sets) {
            calls.answerSelect(1, {}, writable, exceptional);
            EXPECT_EQ(endpoint.isWritable(20), 0);
            EXPECT_EQ(calls.take(), waitsToWrite);
        }
    });
}

TEST_F(UdpIsWritableCalls, returnsMinusOneForAPendingError)
{
    onBoth([this](auto& endpoint) {
        calls.answerSelect(1, {}, {7}, {});
        calls.answer("getsockopt", 0, "6f000000"_hex); // 111 is ECONNREFUSED
        EXPECT_EQ(endpoint.isWritable(20), -1);
        EXPECT_EQ(calls.take(), waitsToWrite + asksForTheError);

        calls.answerSelect(1, {}, {7}, {});
        calls.refuse("getsockopt", ENOTSOCK); // counts as the error
        EXPECT_EQ(endpoint.isWritable(20), -1);
        EXPECT_EQ(calls.take(), waitsToWrite + asksForTheError);

        calls.answerSelect(1, {}, {7}, {});
        calls.refuse("getsockopt", 0);
        calls.answer("getpeername", 0, peerBytes);
        EXPECT_EQ(endpoint.isWritable(20), 1);
        EXPECT_EQ(calls.take(), waitsToWrite + asksForTheError + asksForThePeer);
    });
}

TEST_F(UdpIsWritableCalls, returnsZeroWithoutAPeer)
{
    onBoth([this](auto& endpoint) {
        calls.answerSelect(1, {}, {7}, {});
        calls.refuse("getpeername", ENOTCONN);
        EXPECT_EQ(endpoint.isWritable(20), 0);
        EXPECT_EQ(errno, ENOTCONN);

        calls.answerSelect(1, {}, {7}, {});
        calls.answer("getpeername", 0, "0200 0000 7f000001 0000000000000000"_hex); // port 0
        EXPECT_EQ(endpoint.isWritable(20), 0);
    });
}

TEST_F(UdpIsWritableCalls, watchesNothingAndReturnsMinusOneOnceClosed)
{
    onBoth([this](auto& endpoint) {
        endpoint.close();
        calls.take();
        EXPECT_EQ(endpoint.isWritable(1500), -1);
        EXPECT_EQ(calls.take(), "select(0, null, {}, {}, {1, 500000})\n");
    });
}

TEST_F(UdpIsWritableCalls, watchesDescriptorsBeyondAnFdSet)
{
    onBoth([this](auto& endpoint) {
        for (const int descriptor : edgeDescriptors) {
            *endpoint.handle = descriptor;
            calls.answerSelect(1, {}, {descriptor}, {});
            calls.answer("getpeername", 0, peerBytes);
            EXPECT_EQ(endpoint.isWritable(0), 1);
            EXPECT_EQ(calls.take(), on(descriptor, "select(+, null, {#}, {#}, {0, 0})\n"
                                                   "getsockopt(#, SOL_SOCKET, SO_ERROR, 4)\n"
                                                   "getpeername(#, 16)\n"));
        }
    });
}

class UdpSelectCalls : public UdpCalls {
protected:
    int readable = 0;
    int writable = 0;
    int exceptional = 0;

    template <typename Endpoint>
    int select(Endpoint& endpoint, int ms)
    {
        readable = 91;
        writable = 92;
        exceptional = 93;
        return endpoint.select(ms, readable, writable, exceptional);
    }

    void expect(int wantedReadable, int wantedWritable, int wantedExceptional) const
    {
        EXPECT_EQ(readable, wantedReadable);
        EXPECT_EQ(writable, wantedWritable);
        EXPECT_EQ(exceptional, wantedExceptional);
    }
};

TEST_F(UdpSelectCalls, watchesItsDescriptorInAllThreeSetsForTheTime)
{
    onBoth([this](auto& endpoint) {
        for (const auto& [ms, text] : selectTimes) {
            select(endpoint, ms);
            EXPECT_EQ(calls.take(), std::string("select(8, {7}, {7}, {7}, ") + text + ")\n");
        }
    });
}

TEST_F(UdpSelectCalls, returnsEachBitAndTheResultOfTheSystem)
{
    onBoth([this](auto& endpoint) {
        calls.answerSelect(1, {7}, {}, {});
        EXPECT_EQ(select(endpoint, 20), 1);
        expect(1, 0, 0);

        calls.answerSelect(1, {}, {7}, {});
        EXPECT_EQ(select(endpoint, 20), 1);
        expect(0, 1, 0);

        calls.answerSelect(1, {}, {}, {7});
        EXPECT_EQ(select(endpoint, 20), 1);
        expect(0, 0, 1);

        calls.answerSelect(5, {6}, {7}, {7}); // the count is not recomputed
        EXPECT_EQ(select(endpoint, 20), 5);
        expect(0, 1, 1);

        calls.answerSelect(0, {}, {}, {});
        EXPECT_EQ(select(endpoint, 20), 0);
        expect(0, 0, 0);
    });
}

TEST_F(UdpSelectCalls, returnsTheFailureAndLeavesTheOutputs)
{
    onBoth([this](auto& endpoint) {
        calls.refuse("select", EINTR);
        EXPECT_EQ(select(endpoint, 20), -1);
        EXPECT_EQ(errno, EINTR);
        calls.answer("select", -5);
        EXPECT_EQ(select(endpoint, 20), -5);
        expect(91, 92, 93);
    });
}

TEST_F(UdpSelectCalls, watchesNothingAndReturnsSetBitsOnceClosed)
{
    onBoth([this](auto& endpoint) {
        endpoint.close();
        calls.take();
        EXPECT_EQ(select(endpoint, 1500), 0);
        EXPECT_EQ(calls.take(), "select(0, {}, {}, {}, {1, 500000})\n");
        expect(1, 1, 1);
    });
}

TEST_F(UdpSelectCalls, watchesDescriptorsBeyondAnFdSet)
{
    onBoth([this](auto& endpoint) {
        for (const int descriptor : edgeDescriptors) {
            *endpoint.handle = descriptor;
            calls.answerSelect(2, {descriptor}, {}, {descriptor});
            EXPECT_EQ(select(endpoint, 0), 2);
            expect(1, 0, 1);
            EXPECT_EQ(calls.take(), on(descriptor, "select(+, {#}, {#}, {#}, {0, 0})\n"));
        }
    });
}
