#include "support/frames.h"
#include "support/openUdpClient.h"

#include "tcpApi.h"

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

using gqdb::CSocketAPI;
using gqdb::CUdpAPI;

static int openDescriptors()
{
    int count = 0;
    DIR* folder = ::opendir("/proc/self/fd");
    while (::readdir(folder))
        ++count;
    ::closedir(folder);
    return count;
}

// --- The class ---

using Bytes = std::vector<unsigned char>;
using Ints = std::vector<int>;

static_assert(std::is_convertible_v<CUdpAPI*, CSocketAPI*>); // a public base
static_assert(!std::has_virtual_destructor_v<CUdpAPI>);

static_assert(std::is_same_v<decltype(&CUdpAPI::setRecvOverTm), int (CSocketAPI::*)(int)>); // those of the base
static_assert(std::is_same_v<decltype(&CUdpAPI::setSendOverTm), int (CSocketAPI::*)(int)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::addEnd), int (*)(QByteArray&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::connect), int (CUdpAPI::*)(const std::string&, int)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::connectServer), int (CUdpAPI::*)(const std::string&, int)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::close), int (CUdpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CUdpAPI::recvData), bool (CUdpAPI::*)(const char*, int, int&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::isRecvOk), bool (CUdpAPI::*)(int&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::recvDatas), int (CUdpAPI::*)(int&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::recvInt), int (CUdpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CUdpAPI::recvBytes), int (CUdpAPI::*)(int, Bytes&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::recvInts), int (CUdpAPI::*)(int, Ints&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::recvStrings), int (CUdpAPI::*)(int, QStringList&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::sendDatas), int (CUdpAPI::*)(const QByteArray&)>); // the only form
static_assert(std::is_same_v<decltype(&CUdpAPI::sendInt), int (CUdpAPI::*)(unsigned char, int)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::sendInts), int (CUdpAPI::*)(unsigned char, const Ints&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::requestBytes), int (CUdpAPI::*)(const QByteArray&, int, Bytes&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::requestInts), int (CUdpAPI::*)(const QByteArray&, int, Ints&)>);
static_assert(
    std::is_same_v<decltype(&CUdpAPI::requestStrings), int (CUdpAPI::*)(const QByteArray&, int, QStringList&)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::systemState), int (CUdpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CUdpAPI::systemTime), int (CUdpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CUdpAPI::clear), int (CUdpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CUdpAPI::setTime), int (CUdpAPI::*)(int, int)>);
static_assert(std::is_same_v<decltype(&CUdpAPI::setState), int (CUdpAPI::*)(int)>);
static_assert(std::is_same_v<decltype(OpenUdpClient::socket), CUdpClient*>);

[[maybe_unused]] static constexpr int (CUdpAPI::*requestFrame)(const QByteArray&) = &CUdpAPI::requestInt;
[[maybe_unused]] static constexpr int (CUdpAPI::*requestWithInt)(unsigned char, int) = &CUdpAPI::requestInt;
[[maybe_unused]] static constexpr int (CUdpAPI::*requestWithInts)(unsigned char, const Ints&) = &CUdpAPI::requestInt;

// Over UDP there is nothing to check.
template <typename Client, typename = void>
static constexpr bool checksConnections = false;
template <typename Client>
static constexpr bool checksConnections<Client, std::void_t<decltype(&Client::checkConnect)>> = true;
static_assert(checksConnections<gqdb::CTcpAPI> && !checksConnections<CUdpAPI>);

TEST(UdpApiClass, storesItsSocketAfterTheFieldsOfTheBase)
{
    const OpenUdpClient client;
    struct Base : CSocketAPI {
        using CSocketAPI::reserved3;
    };
    const void* last = &(client.*static_cast<int CSocketAPI::*>(&Base::reserved3));
    EXPECT_TRUE(std::less<>()(last, &client.socket));
    EXPECT_EQ(reinterpret_cast<const char*>(&client.socket + 1),
              reinterpret_cast<const char*>(&client) + sizeof(CUdpAPI));
}

// --- Construction and destruction ---

TEST(UdpApiConstructor, startsDisconnectedWithoutSocketAndReadBuffer)
{
    const int before = openDescriptors();
    OpenUdpClient client;
    EXPECT_EQ(openDescriptors(), before);
    ASSERT_NE(client.socket, nullptr);
    EXPECT_EQ(client.descriptor(), 0); // never opened
    EXPECT_FALSE(client.isConnected());
    EXPECT_EQ(client.serverHost, "");
    EXPECT_EQ(client.recvBuffer, nullptr);
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(client.sendSeq, 0);
}

TEST(UdpApiConstructor, waitsThreeSecondsForADatagram)
{
    const OpenUdpClient client;
    EXPECT_EQ(client.recvOverTm, 3000);
    EXPECT_EQ(client.sendOverTm, 9000);
}

TEST(UdpApiDestructor, leavesNoDescriptor)
{
    const int before = openDescriptors();
    {
        const LinkedUdpClient client;
        EXPECT_GT(openDescriptors(), before);
    }
    {
        const OpenUdpClient neverConnected;
    }
    EXPECT_EQ(openDescriptors(), before);
}

// --- Time-outs ---

static int timeOutSeconds(int descriptor, int option)
{
    timeval time = {-1, 0};
    socklen_t size = sizeof time;
    EXPECT_EQ(::getsockopt(descriptor, SOL_SOCKET, option, &time, &size), 0);
    return int(time.tv_sec);
}

TEST(UdpApiSetRecvOverTm, storesTheTimeAndNothingElse)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.setRecvOverTm(2000), 1);
    EXPECT_EQ(client.setSendOverTm(4000), 1);
    EXPECT_EQ(client.recvOverTm, 2000);
    EXPECT_EQ(client.sendOverTm, 4000);
    EXPECT_EQ(timeOutSeconds(client.descriptor(), SO_RCVTIMEO), 0); // none on the socket
    EXPECT_EQ(timeOutSeconds(client.descriptor(), SO_SNDTIMEO), 0);

    client.close();
    EXPECT_EQ(client.setRecvOverTm(2500), 1);
    EXPECT_EQ(client.recvOverTm, 2500);
}

TEST(UdpApiSetRecvOverTm, appliesToTheNextWait)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.setRecvOverTm(0), 1); // a poll
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_EQ(client.setRecvOverTm(5000), 1);
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7);
}

// --- connect ---

TEST(UdpApiConnect, opensTheSocketAndSetsThePeer)
{
    DatagramPeer peer;
    OpenUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port()), 1);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(client.serverHost, "127.0.0.1");
    EXPECT_EQ(client.serverPort, peer.port());
    EXPECT_EQ(client.recvBuffer, nullptr); // none is allocated

    EXPECT_EQ(::fcntl(client.descriptor(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_TRUE(peer.holdsNone()); // nothing is sent
    EXPECT_EQ(client.sendDatas("0a"_hex), 1);
    EXPECT_EQ(hex(peer.take()), "0a");
    EXPECT_EQ(peer.senderPort(), client.localPort());
}

TEST(UdpApiConnect, returnsOneWithoutAServer)
{
    DatagramPeer peer;
    peer.goAway();
    OpenUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port()), 1);
    EXPECT_EQ(client.link(), "up, open");
}

TEST(UdpApiConnect, readsNoGreeting)
{
    LinkedUdpClient client;
    client.give(errorMinus7);
    EXPECT_EQ(client.connect("127.0.0.1", client.peer.port()), 1);
    EXPECT_EQ(client.recvInt(), -7); // still there
}

TEST(UdpApiConnect, changesThePeerOfTheOpenSocket)
{
    LinkedUdpClient client;
    const int descriptor = client.descriptor();
    DatagramPeer other;
    EXPECT_EQ(client.connect("127.0.0.1", other.port()), 1);
    EXPECT_EQ(client.descriptor(), descriptor);
    EXPECT_EQ(client.serverPort, other.port());
    EXPECT_EQ(client.sendDatas("0a"_hex), 1);
    EXPECT_EQ(hex(other.take()), "0a");
}

TEST(UdpApiConnect, storesTheAddressAndClearsTheFlagIfItFails)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.connect("no.such.host", 7), -1);
    EXPECT_EQ(client.link(), "down, open");
    EXPECT_EQ(client.serverHost, "no.such.host");
    EXPECT_EQ(client.serverPort, 7);
}

TEST(UdpApiConnect, keepsAPartialFrame)
{
    LinkedUdpClient client;
    client.recvFrame = reply7.left(12);
    client.recvFrameSize = 17;
    EXPECT_EQ(client.connect("127.0.0.1", client.peer.port()), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
    EXPECT_EQ(client.recvFrameSize, 17);
}

TEST(UdpApiConnect, reopensAfterAClose)
{
    LinkedUdpClient client;
    client.close();
    EXPECT_EQ(client.connect("127.0.0.1", client.peer.port()), 1);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_EQ(client.sendDatas("0a"_hex), 1);
    EXPECT_EQ(hex(client.take()), "0a");
}

TEST(UdpApiConnectServer, connectsAndStoresNeitherAddressNorFlag)
{
    DatagramPeer peer;
    OpenUdpClient client;
    EXPECT_EQ(client.connectServer("127.0.0.1", peer.port()), 1);
    EXPECT_EQ(client.link(), "down, open");
    EXPECT_EQ(client.serverHost, "");
    EXPECT_EQ(client.sendDatas("0a"_hex), 1);
    EXPECT_EQ(hex(peer.take()), "0a");

    EXPECT_EQ(client.connect("127.0.0.1", peer.port()), 1);
    EXPECT_EQ(client.connectServer("no.such.host", 7), -1);
    EXPECT_EQ(client.link(), "up, open"); // nothing is cleared
    EXPECT_EQ(client.serverHost, "127.0.0.1");
}

// --- close ---

TEST(UdpApiClose, closesTheSocketAndClearsTheFlag)
{
    LinkedUdpClient client;
    const int descriptor = client.descriptor();
    client.recvFrame = reply7.left(12);
    EXPECT_EQ(client.close(), 1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.descriptor(), -1);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
    EXPECT_EQ(client.serverHost, "127.0.0.1"); // both are kept
    EXPECT_EQ(client.serverPort, client.peer.port());
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));

    EXPECT_EQ(client.close(), 1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(UdpApiClose, clearsTheFlagOfAClientThatWasNeverOpened)
{
    OpenUdpClient client;
    client.connected = true;
    EXPECT_EQ(client.close(), 1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.descriptor(), 0);
}

// --- Through the tables of virtual operations ---

TEST(UdpApiClass, callsTheTimeOutsOfADerivedClient)
{
    class Recorder : public CUdpAPI {
    public:
        int setRecvOverTm(int ms) override { return ms + 1; }
        int setSendOverTm(int ms) override { return ms + 2; }
    };
    Recorder recorder;
    CSocketAPI& api = recorder;
    EXPECT_EQ(api.setRecvOverTm(10), 11);
    EXPECT_EQ(api.setSendOverTm(10), 12);
}

// An endpoint of a program's own, instead of the client's.
class WatchedUdpSocket : public CUdpClient {
public:
    void close() override
    {
        calls += "close\n";
        CUdpClient::close();
    }

    int setRecvOverTm(int) override
    {
        calls += "setRecvOverTm\n";
        return 1;
    }

    int setSendOverTm(int) override
    {
        calls += "setSendOverTm\n";
        return 1;
    }

    std::string calls;
};

class WatchedUdpClient : public BufferedUdpClient {
public:
    WatchedUdpClient()
    {
        delete socket;
        socket = &watched;
    }

    ~WatchedUdpClient() { socket = nullptr; }

    std::string calls() { return std::exchange(watched.calls, {}); }

private:
    WatchedUdpSocket watched;
};

TEST(UdpApiClass, callsOnlyTheCloseOfItsEndpoint)
{
    const DatagramPeer peer;
    WatchedUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port()), 1);
    client.setRecvOverTm(0);
    client.setSendOverTm(0);
    EXPECT_EQ(client.sendDatas("0a"_hex), 1);
    EXPECT_EQ(client.recvInt(), 0); // a time-out
    EXPECT_EQ(client.calls(), "");
    EXPECT_EQ(client.close(), 1);
    EXPECT_EQ(client.calls(), "close\n");
    EXPECT_EQ(client.sendDatas("0a"_hex), -1); // the socket is closed
    EXPECT_EQ(client.calls(), "close\n");
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(client.calls(), "close\n");
}
