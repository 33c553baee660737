#include "support/endpointCalls.h"
#include "support/frames.h"
#include "support/openUdpClient.h"

#include <cerrno>
#include <string>

// The system calls of each operation of a client.
class UdpApiCalls : public EndpointCalls {
protected:
    BufferedUdpClient client;

    // Connects with descriptor 7 and discards the recorded calls.
    void connect()
    {
        calls.answer("socket", 7);
        EXPECT_EQ(client.connect("127.0.0.1", 1502), 1);
        calls.take();
    }

    // The next wait ends immediately, with these bytes to read.
    void give(const QByteArray& bytes)
    {
        calls.answerSelect(1, {7}, {}, {});
        calls.answer("recv", bytes.size(), bytes);
    }
};

static const std::string waits = "select(8, {7}, null, null, {3, 0})\n"; // 3000 ms
static const std::string reads = "recv(7, 655350, MSG_NOSIGNAL)\n";
static const std::string closes = "close(7)\n";
static const std::string connects = "connect(7, {AF_INET, 05 de, 7f 00 00 01}, 16)\n";

// --- Link ---

using UdpApiConnectCalls = UdpApiCalls;

TEST_F(UdpApiConnectCalls, opensABlockingSocketWithoutOptions)
{
    EXPECT_EQ(calls.take(), ""); // by the constructor
    calls.answer("socket", 7);
    EXPECT_EQ(client.connect("127.0.0.1", 1502), 1);
    EXPECT_EQ(calls.take(), "socket(AF_INET, SOCK_DGRAM, 0)\n" + connects);
    EXPECT_EQ(client.link(), "up, open");

    EXPECT_EQ(client.connect("127.0.0.1", 1502), 1); // on the open socket
    EXPECT_EQ(calls.take(), connects);
}

TEST_F(UdpApiConnectCalls, returnsTheEndpointsResultAndSetsTheFlagOnlyForOne)
{
    connect();
    const struct {
        int error;
        int result;
        const char* link;
    } outcomes[] = {
        {EINPROGRESS, 0, "down, open"},
        {EISCONN, 1, "up, open"},
        {ENETUNREACH, -1, "down, open"},
    };
    for (const auto& [error, result, link] : outcomes) {
        client.connected = result != 1;
        calls.refuse("connect", error);
        EXPECT_EQ(client.connectServer("127.0.0.1", 1502), result);
        EXPECT_EQ(client.isConnected(), result != 1); // not changed

        calls.refuse("connect", error);
        EXPECT_EQ(client.connect("127.0.0.1", 1502), result);
        EXPECT_EQ(client.link(), link);
        EXPECT_EQ(calls.take(), connects + connects); // nothing is closed
    }
}

TEST_F(UdpApiConnectCalls, failsWithoutASocket)
{
    calls.refuse("socket", EMFILE);
    calls.refuse("connect", EBADF);
    EXPECT_EQ(client.connect("127.0.0.1", 1502), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.serverHost, "127.0.0.1");
    EXPECT_EQ(client.serverPort, 1502);
}

using UdpApiDestructorCalls = EndpointCalls;

TEST_F(UdpApiDestructorCalls, closesAnOpenSocketOnly)
{
    {
        OpenUdpClient client;
        calls.answer("socket", 7);
        EXPECT_EQ(client.connect("127.0.0.1", 1502), 1);
        calls.take();
    }
    EXPECT_EQ(calls.take(), closes);
    {
        const OpenUdpClient client;
    }
    EXPECT_EQ(calls.take(), "");
}

// --- Sending ---

using UdpApiSendDatasCalls = UdpApiCalls;

TEST_F(UdpApiSendDatasCalls, treatsAnyCountAboveZeroAsSuccess)
{
    connect();
    for (const int count : {3, 1}) {
        calls.answer("send", count);
        EXPECT_EQ(client.sendDatas("680d16"_hex), 1);
        EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n");
        EXPECT_EQ(client.link(), "up, open");
    }
}

TEST_F(UdpApiSendDatasCalls, closesIfTheBufferIsFullOrTheSendFails)
{
    for (const int error : {EAGAIN, ECONNREFUSED}) {
        connect();
        calls.refuse("send", error);
        EXPECT_EQ(client.sendDatas("680d16"_hex), -1);
        EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n" + closes);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

// --- Receiving ---

using UdpApiRecvDatasCalls = UdpApiCalls;

TEST_F(UdpApiRecvDatasCalls, waitsOnceAndReadsOnce)
{
    connect();
    give(reply7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(calls.take(), waits + reads);

    client.dropFrame();
    give(reply7.left(3)); // a partial frame does not cause another read
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_EQ(calls.take(), waits + reads);
}

TEST_F(UdpApiRecvDatasCalls, waitsForTheSetTime)
{
    connect();
    int len = 0;
    for (const auto& [ms, text] : selectTimes) {
        client.setRecvOverTm(ms);
        EXPECT_EQ(client.recvDatas(len), 0);
        EXPECT_EQ(calls.take(), std::string("select(8, {7}, null, null, ") + text + ")\n");
    }
}

TEST_F(UdpApiRecvDatasCalls, readsNothingUnlessTheWaitReturnsOne)
{
    connect();
    int len = -99;
    calls.answerSelect(0, {}, {}, {});
    EXPECT_EQ(client.recvDatas(len), 0);
    calls.answerSelect(1, {6}, {}, {});
    EXPECT_EQ(client.recvDatas(len), 0);
    calls.refuse("select", EINTR);
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_EQ(calls.take(), waits + waits + waits);
    EXPECT_EQ(len, -99);
    EXPECT_EQ(client.link(), "up, open");
}

TEST_F(UdpApiRecvDatasCalls, closesAndReturnsTheResultOfAReadWithoutData)
{
    const struct {
        int error;
        int result;
    } outcomes[] = {{EAGAIN, 0}, {0, 0}, {EFAULT, -1}, {ECONNREFUSED, -1}};
    for (const auto& [error, result] : outcomes) {
        connect();
        calls.answerSelect(1, {7}, {}, {});
        calls.refuse("recv", error);
        int len = -99;
        EXPECT_EQ(client.recvDatas(len), result);
        EXPECT_EQ(calls.take(), waits + reads + closes);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(len, -99);
    }
}

TEST_F(UdpApiRecvDatasCalls, callsRecvEvenWithoutAReadBuffer)
{
    delete[] client.recvBuffer;
    client.recvBuffer = nullptr;
    connect();
    calls.answerSelect(1, {7}, {}, {});
    calls.refuse("recv", EFAULT);
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(calls.take(), waits + reads + closes);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST_F(UdpApiRecvDatasCalls, waitsAgainForEachDatagramOfAList)
{
    connect();
    give("68 05000000 0000 00 00 10 01000000 01 0000 16"_hex);
    give("68 05000000 0000 00 00 10 01000000 02 0000 16"_hex);
    calls.answerSelect(0, {}, {}, {});
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(3, out), 0);
    EXPECT_EQ(calls.take(), waits + reads + waits + reads + waits);
    EXPECT_EQ(out, (std::vector<unsigned char>{1, 2}));
    EXPECT_EQ(client.link(), "up, open");
}

// --- Requests ---

using UdpApiRequestCalls = UdpApiCalls;

TEST_F(UdpApiRequestCalls, sendsWaitsAndReads)
{
    connect();
    client.connected = false; // is ignored
    calls.answer("send", 3);
    give(reply7);
    EXPECT_EQ(client.requestInt("680d16"_hex), 7);
    EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n" + waits + reads);
}

TEST_F(UdpApiRequestCalls, readsNothingAfterAFailedSend)
{
    connect();
    calls.refuse("send", ECONNREFUSED);
    EXPECT_EQ(client.requestInt("680d16"_hex), -1);
    EXPECT_EQ(calls.take(), "send(7, [68 0d 16], 3, MSG_NOSIGNAL)\n" + closes);

    calls.refuse("send", EBADF);
    EXPECT_EQ(client.requestInt("680d16"_hex), -1);
    EXPECT_EQ(calls.take(), "send(-1, [68 0d 16], 3, MSG_NOSIGNAL)\n"); // no connect
}
