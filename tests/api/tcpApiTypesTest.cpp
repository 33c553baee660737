// What programs depend on at compile time and through the table of virtual operations: result types, member pointers,
// and the overload selected by calls with literals.

#include "support/frames.h"
#include "support/openTcpClient.h"

#include <QStringList>

#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

using gqdb::CSocketAPI;
using gqdb::CTcpAPI;

using Bytes = std::vector<unsigned char>;
using Ints = std::vector<int>;

// --- Declarations ---

static_assert(std::is_same_v<decltype(&CSocketAPI::setRecvOverTm), int (CSocketAPI::*)(int)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::setSendOverTm), int (CSocketAPI::*)(int)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::addEnd), int (*)(QByteArray&)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::parseInt), int (CSocketAPI::*)(const char*, int, int&)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::parseInts), int (CSocketAPI::*)(const char*, int, Ints&)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::parseBytes), int (CSocketAPI::*)(const char*, int, Bytes&)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::parseStrings), int (CSocketAPI::*)(const char*, int, QStringList&)>);
static_assert(std::is_same_v<decltype(&CSocketAPI::isConnected), bool (CSocketAPI::*)()>);
static constexpr void (CSocketAPI::*countingHeader)(unsigned char, unsigned char, unsigned char,
                                                    QByteArray&) = &CSocketAPI::addHeader;
static constexpr void (*plainHeader)(unsigned char, unsigned char, unsigned char, int, int,
                                     QByteArray&) = &CSocketAPI::addHeader;

static_assert(std::is_same_v<decltype(&CTcpAPI::setRecvOverTm), int (CTcpAPI::*)(int)>); // its own
static_assert(std::is_same_v<decltype(&CTcpAPI::setSendOverTm), int (CTcpAPI::*)(int)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::connect), int (CTcpAPI::*)(const std::string&, int)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::connectServer), int (CTcpAPI::*)(const std::string&, int)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::checkConnect), int (CTcpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CTcpAPI::close), int (CTcpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CTcpAPI::recvData), bool (CTcpAPI::*)(const char*, int, int&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::isRecvOk), bool (CTcpAPI::*)(int&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::recvDatas), int (CTcpAPI::*)(int&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::recvInt), int (CTcpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CTcpAPI::recvBytes), int (CTcpAPI::*)(int, Bytes&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::recvInts), int (CTcpAPI::*)(int, Ints&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::recvStrings), int (CTcpAPI::*)(int, QStringList&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::sendInt), int (CTcpAPI::*)(unsigned char, int)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::sendInts), int (CTcpAPI::*)(unsigned char, const Ints&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::requestBytes), int (CTcpAPI::*)(const QByteArray&, int, Bytes&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::requestInts), int (CTcpAPI::*)(const QByteArray&, int, Ints&)>);
static_assert(
    std::is_same_v<decltype(&CTcpAPI::requestStrings), int (CTcpAPI::*)(const QByteArray&, int, QStringList&)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::systemState), int (CTcpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CTcpAPI::systemTime), int (CTcpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CTcpAPI::clear), int (CTcpAPI::*)()>);
static_assert(std::is_same_v<decltype(&CTcpAPI::setTime), int (CTcpAPI::*)(int, int)>);
static_assert(std::is_same_v<decltype(&CTcpAPI::setState), int (CTcpAPI::*)(int)>);
static_assert(std::is_same_v<decltype(OpenTcpClient::socket), CTcpSocket*>);

static constexpr int (CTcpAPI::*sendFrame)(const QByteArray&) = &CTcpAPI::sendDatas;
static constexpr int (CTcpAPI::*sendCommand)(unsigned char) = &CTcpAPI::sendDatas;
static constexpr int (CTcpAPI::*requestFrame)(const QByteArray&) = &CTcpAPI::requestInt;
static constexpr int (CTcpAPI::*requestWithInt)(unsigned char, int) = &CTcpAPI::requestInt;
static constexpr int (CTcpAPI::*requestWithInts)(unsigned char, const Ints&) = &CTcpAPI::requestInt;

// --- Layout ---

TEST(TcpApiClass, storesItsSocketAfterTheFieldsOfTheBase)
{
    const OpenTcpClient client;
    struct Base : CSocketAPI {
        using CSocketAPI::reserved3;
    };
    const void* last = &(client.*static_cast<int CSocketAPI::*>(&Base::reserved3));
    EXPECT_TRUE(std::less<>()(last, &client.socket));
    EXPECT_EQ(reinterpret_cast<const char*>(&client.socket + 1),
              reinterpret_cast<const char*>(&client) + sizeof(CTcpAPI));
}

// --- Virtual operations ---

TEST(TcpApiClass, callsTheTimeOutsOfADerivedClient)
{
    class Recorder : public CTcpAPI {
    public:
        int setRecvOverTm(int ms) override { return ms + 1; }
        int setSendOverTm(int ms) override { return ms + 2; }
    };
    Recorder recorder;
    CTcpAPI& tcp = recorder;
    CSocketAPI& api = recorder;
    EXPECT_EQ(tcp.setRecvOverTm(10), 11);
    EXPECT_EQ(tcp.setSendOverTm(10), 12);
    EXPECT_EQ(api.setRecvOverTm(10), 11);
    EXPECT_EQ(api.setSendOverTm(10), 12);
}

// An endpoint of a program's own, instead of the client's.
class WatchedSocket : public CTcpSocket {
public:
    int setRecvOverTm(int ms) override
    {
        calls += "setRecvOverTm " + std::to_string(ms) + "\n";
        return CTcpSocket::setRecvOverTm(ms);
    }
    int setSendOverTm(int ms) override
    {
        calls += "setSendOverTm " + std::to_string(ms) + "\n";
        return CTcpSocket::setSendOverTm(ms);
    }
    void close() override
    {
        calls += "close\n";
        CTcpSocket::close();
    }

    std::string calls;
};

class WatchedClient : public LinkedTcpClient {
public:
    WatchedClient()
    {
        delete socket;
        socket = &watched;
        watched.close();
        hangUp();
        int ends[2] = {-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        watched.setSocket({ends[0]});
        peer = ends[1];
        watched.calls.clear();
    }

    ~WatchedClient() { socket = nullptr; }

    std::string calls() { return std::exchange(watched.calls, {}); }

private:
    WatchedSocket watched;
};

TEST(TcpApiClass, callsTheVirtualOperationsOfItsEndpoint)
{
    WatchedClient client;
    EXPECT_EQ(client.setRecvOverTm(20), 1);
    EXPECT_EQ(client.setSendOverTm(30), 1);
    EXPECT_EQ(client.calls(), "setRecvOverTm 20\nsetSendOverTm 30\n");
    EXPECT_EQ(client.recvInt(), 0); // a time-out
    EXPECT_EQ(client.calls(), "close\n");
    EXPECT_EQ(client.sendDatas(1), -1); // the socket is closed
    EXPECT_EQ(client.calls(), "close\n");
    EXPECT_EQ(client.close(), 1);
    EXPECT_EQ(client.calls(), "close\n");
}

// --- Overloads ---

TEST(TcpApiSendDatas, acceptsALiteralAsCommand)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendDatas(5), 1);
    EXPECT_EQ(hex(client.take()), "68 00 00 00 00 00 00 00 00 05 00 00 16");
    EXPECT_EQ(client.sendDatas(0), 1); // 0 is not a null pointer to a text
    EXPECT_EQ(hex(client.take()), "68 00 00 00 00 01 00 00 00 00 00 00 16");
    EXPECT_EQ(client.sendDatas('A'), 1);
    EXPECT_EQ(hex(client.take()), "68 00 00 00 00 02 00 00 00 41 00 00 16");
    EXPECT_EQ(client.sendDatas("AB"), 1);
    EXPECT_EQ(hex(client.take()), "41 42");
}

TEST(TcpApiRequestInt, acceptsLiteralsAsCommandAndInteger)
{
    LinkedTcpClient client;
    client.give(reply7);
    EXPECT_EQ(client.requestInt(1, 2), 7);
    EXPECT_EQ(hex(client.take()), "68 04 00 00 00 00 00 00 00 01 02 00 00 00 00 00 16");
    client.give(reply7);
    EXPECT_EQ(client.requestInt(0, 0), 7);
    EXPECT_EQ(hex(client.take()), "68 04 00 00 00 01 00 00 00 00 00 00 00 00 00 00 16");
    client.give(reply7);
    EXPECT_EQ(client.requestInt(1, {2, 3}), 7);
    EXPECT_EQ(hex(client.take()), "68 0c 00 00 00 02 00 00 00 01 02 00 00 00 02 00 00 00 03 00 00 00 00 00 16");
    client.give(reply7);
    EXPECT_EQ(client.requestInt("AB"), 7);
    EXPECT_EQ(hex(client.take()), "41 42");
}

TEST(TcpApiClass, canBeCalledThroughMemberPointers)
{
    LinkedTcpClient client;
    QByteArray frame;
    (client.*countingHeader)(1, 0, 0, frame);
    plainHeader(2, 0, 0, 3, 0, frame);
    EXPECT_EQ(hex(frame), "68 00 00 00 00 00 00 00 00 01 68 00 00 00 00 03 00 00 00 02");
    EXPECT_EQ((client.*sendFrame)("0a"_hex), 1);
    EXPECT_EQ(hex(client.take()), "0a");
    EXPECT_EQ((client.*sendCommand)(9), 1);
    EXPECT_EQ(hex(client.take()), "68 00 00 00 00 01 00 00 00 09 00 00 16");
    client.give(reply7);
    EXPECT_EQ((client.*requestFrame)("0b"_hex), 7);
    client.give(reply7);
    EXPECT_EQ((client.*requestWithInt)(1, 2), 7);
    client.give(reply7);
    EXPECT_EQ((client.*requestWithInts)(1, {2}), 7);
}
