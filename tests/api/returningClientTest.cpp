// Clients that recover from every failure of their link: after each fault the next request gets its own reply. Every
// request carries a number that its reply must return.

#include "support/descriptorsKept.h"
#include "support/frames.h"
#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/scriptedDatagramPeer.h"
#include "support/scriptedServer.h"

#include "returningClient.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using gqdb::CReturningTcpClient;
using gqdb::CReturningUdpClient;

// For replies that arrive. Tests that wait for a time-out set a shorter one for that wait alone.
static constexpr int enoughMs = 5000;
static constexpr int shortMs = 30;

static constexpr unsigned char command = 0x30;

// A reply with an integer from 0 to 127.
static QByteArray replyOf(int number)
{
    QByteArray frame = "68 04000000 0000 00 00 30 00000000 0000 16"_hex;
    frame[10] = static_cast<char>(number);
    return frame;
}

static QByteArray listOf(int number)
{
    QByteArray frame = "68 08000000 0000 00 00 30 01000000 00000000 0000 16"_hex;
    frame[14] = static_cast<char>(number);
    return frame;
}

static std::vector<QByteArray> bytesOf(const QByteArray& frame)
{
    std::vector<QByteArray> letters;
    for (const char byte : frame)
        letters.emplace_back(1, byte);
    return letters;
}

// Joins lists of steps.
static ScriptedServer::Script operator+(ScriptedServer::Script script, const ScriptedServer::Script& more)
{
    script.insert(script.end(), more.begin(), more.end());
    return script;
}

// --- TCP ----------------------------------------------------------------------------------------------------------

class TcpClient : public CReturningTcpClient {
public:
    explicit TcpClient(int port, int timeoutMs = enoughMs, const std::string& host = "127.0.0.1")
        : CReturningTcpClient(host, port, timeoutMs)
    {
    }

    int receiveMs() { return timeOutMs(descriptorOf(*socket), SO_RCVTIMEO); }
    int sendMs() { return timeOutMs(descriptorOf(*socket), SO_SNDTIMEO); }
    int descriptor() { return descriptorOf(*socket); }

    int readyWithin(int ms)
    {
        setRecvOverTm(ms);
        const int result = ready();
        setRecvOverTm(enoughMs);
        return result;
    }

    int requestWithin(int ms, int number)
    {
        setRecvOverTm(ms);
        const int result = requestInt(command, number);
        setRecvOverTm(enoughMs);
        return result;
    }

    // Waits until there is something unread: bytes, or the server's close.
    void awaitUnread() { EXPECT_TRUE(becomes(descriptor(), POLLIN)); }

    // Fails the test unless request `number` gets its own reply.
    void gets(int number)
    {
        EXPECT_EQ(ready(), 1) << "request " << number;
        EXPECT_EQ(requestInt(command, number), number);
        EXPECT_TRUE(isConnected());
    }
};

// Waits for request `number`, without a reply.
static ScriptedServer::Step takes()
{
    return receives(17);
}

static ScriptedServer::Script answers(int number)
{
    return {takes(), sends(replyOf(number))};
}

static ScriptedServer::Script greets()
{
    return {sends(greeting)};
}

class ReturningTcpClient : public DescriptorsKept {};

TEST_F(ReturningTcpClient, staysConnectedWhileNothingFails)
{
    ScriptedServer server{greets() + answers(1) + answers(2) + answers(3)};
    TcpClient client(server.port());
    EXPECT_FALSE(client.isConnected());
    client.gets(1);
    const int descriptor = client.descriptor();
    client.gets(2);
    EXPECT_EQ(client.ready(), 1); // without a request
    client.gets(3);
    EXPECT_EQ(client.descriptor(), descriptor);
    EXPECT_EQ(hex(server.received(1)), "68 04 00 00 00 01 00 00 00 30 02 00 00 00 00 00 16");
}

TEST_F(ReturningTcpClient, setsBothTimeOutsOnEverySocket)
{
    ScriptedServer server{greets(), greets(), greets()};
    TcpClient client(server.port(), 1200);
    EXPECT_EQ(client.ready(), 1);
    EXPECT_EQ(client.receiveMs(), 1200);
    EXPECT_EQ(client.sendMs(), 1200);
    client.close();
    EXPECT_EQ(client.ready(), 1);
    EXPECT_EQ(client.receiveMs(), 1200);
    EXPECT_EQ(client.sendMs(), 1200);
    client.setRecvOverTm(2400);
    client.setSendOverTm(3600);
    client.close();
    EXPECT_EQ(client.ready(), 1);
    EXPECT_EQ(client.receiveMs(), 2400);
    EXPECT_EQ(client.sendMs(), 3600);
}

TEST_F(ReturningTcpClient, limitsConnecting)
{
    const CrowdedListener server;
    TcpClient client(server.port());
    client.setSendOverTm(shortMs);
    EXPECT_EQ(client.ready(), 0);
    EXPECT_EQ(client.ready(), 0);
}

TEST_F(ReturningTcpClient, returnsMinusOneForAHostName)
{
    TcpClient client(80, enoughMs, "localhost");
    EXPECT_EQ(client.ready(), -1);
    EXPECT_EQ(client.ready(), -1);
}

TEST_F(ReturningTcpClient, connectsOnceADescriptorIsFree)
{
    const ReservedPort port;
    TcpClient client(port.number());
    // UndefinedBehaviorSanitizer needs descriptors the first time that it checks the type of an object.
    EXPECT_EQ(client.ready(), -1);
    client.close();
    rlimit kept = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &kept), 0);
    const rlimit none = {0, kept.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const int result = client.ready();
    const int error = errno;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &kept), 0);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(error, EMFILE);
    ScriptedServer server(port.number(), {greets() + answers(1)});
    client.gets(1);
}

TEST_F(ReturningTcpClient, connectsOnceTheServerHasStarted)
{
    const ReservedPort port;
    TcpClient client(port.number());
    EXPECT_EQ(client.ready(), -1);
    EXPECT_EQ(client.ready(), -1);
    EXPECT_FALSE(client.isConnected());
    ScriptedServer server(port.number(), {greets() + answers(1)});
    client.gets(1);
}

TEST_F(ReturningTcpClient, reconnectsBeforeTheRequestIfTheServerWasRestarted)
{
    const ReservedPort port;
    TcpClient client(port.number());
    {
        ScriptedServer server(port.number(), {greets() + answers(1)});
        client.gets(1);
    }
    EXPECT_EQ(client.ready(), -1);
    ScriptedServer server(port.number(), {greets() + answers(2)});
    client.gets(2);
}

// --- Greetings ---

// A connection whose greeting fails, and how long the client waits for it.
struct GreetingFault {
    const char* name;
    ScriptedServer::Script steps;
    int waitMs = enoughMs;
};

static std::vector<GreetingFault> greetingFaults()
{
    std::vector<GreetingFault> faults = {
        {"silent or late", {}, shortMs},
        {"closed", {closes()}},
        {"refused with 0", {sends("68 04000000 0000 00 00 00 00000000 0000 16"_hex)}},
        {"error frame", {sends(errorMinus7)}},
        {"error frame with 1", {sends(error1)}},
        {"wrong end", {sends(wrongEnd)}},
        {"short payload", {sends(threeBytesOfPayload)}},
        {"no frame", {sends("HTTP/1.1 400 Bad Request\r\n\r\n"), closes()}},
    };
    for (int size = 1; size < greeting.size(); ++size) {
        faults.push_back({"cut, then silent", {sendsIfOpen(greeting.left(size))}, shortMs});
        faults.push_back({"cut, then closed", {sends(greeting.left(size)), closes()}});
    }
    return faults;
}

TEST_F(ReturningTcpClient, connectsAfterAnyFailedGreeting)
{
    for (const GreetingFault& fault : greetingFaults()) {
        SCOPED_TRACE(fault.name);
        ScriptedServer server{fault.steps, greets() + answers(1) + answers(2)};
        TcpClient client(server.port());
        EXPECT_EQ(client.readyWithin(fault.waitMs), 0);
        EXPECT_FALSE(client.isConnected());
        client.gets(1);
        client.gets(2);
    }
}

TEST_F(ReturningTcpClient, limitsTheGreetingOfAReconnect)
{
    ScriptedServer server{greets() + answers(1), {}, greets() + answers(2)};
    TcpClient client(server.port());
    client.gets(1);
    client.close();
    EXPECT_EQ(client.readyWithin(shortMs), 0);
    client.gets(2);
}

TEST_F(ReturningTcpClient, acceptsAGreetingInPieces)
{
    ScriptedServer server{ScriptedServer::Script{sendsApart(bytesOf(greeting))} + answers(1)};
    TcpClient client(server.port());
    client.gets(1);
}

// --- Replies ---

// What a server does in place of a reply, after it has received the request, and the result of that request.
struct ReplyFault {
    const char* name;
    ScriptedServer::Script steps;
    int result;
    int waitMs = enoughMs;
};

static std::vector<ReplyFault> replyFaults()
{
    std::vector<ReplyFault> faults = {
        {"silent or late", {}, 0, shortMs},
        {"closed", {closes()}, -1},
        {"reset", {resets()}, -1},
        {"error frame", {sends(errorMinus7)}, -7},
        {"error frame with 0", {sends(error0)}, 0},
        {"error frame with 1", {sends(error1)}, -5},
        {"error frame with 5", {sends(error5)}, 5},
        {"error frame without a code", {sends(errorOfNoBytes)}, -2},
        {"wrong end", {sends(wrongEnd)}, 0},
        {"short payload", {sends(threeBytesOfPayload)}, -5},
        {"no payload", {sends(noPayload)}, -5},
        {"error frame, then closed", {sends(errorMinus7), closes()}, -7},
    };
    for (int size = 1; size < reply7.size(); ++size) {
        const QByteArray part = reply7.left(size);
        faults.push_back({"cut, then silent", {sendsIfOpen(part)}, 0, shortMs});
        faults.push_back({"cut, then closed", {sends(part), closes()}, -1});
        faults.push_back({"cut, then reset", {sendsApart({part, ""}), resets()}, -1});
    }
    return faults;
}

// One client meets all faults, so that no fault leaves anything that changes a later reply.
TEST_F(ReturningTcpClient, getsTheRightReplyAfterAnyFailedOne)
{
    const ReservedPort port;
    TcpClient client(port.number());
    int number = 0;
    for (const ReplyFault& fault : replyFaults()) {
        SCOPED_TRACE(fault.name);
        const int first = number = (number + 4) % 100 + 10;
        ScriptedServer server(port.number(), {greets() + answers(first) + ScriptedServer::Script{takes()} + fault.steps,
                                              greets() + answers(first + 2) + answers(first + 3)});
        client.gets(first);
        EXPECT_EQ(client.ready(), 1);
        EXPECT_EQ(client.requestWithin(fault.waitMs, first + 1), fault.result);
        EXPECT_FALSE(client.isConnected());
        client.gets(first + 2);
        client.gets(first + 3);
    }
}

TEST_F(ReturningTcpClient, acceptsAReplySplitAtAnyByte)
{
    for (int size = 1; size < reply7.size(); ++size) {
        SCOPED_TRACE(size);
        const QByteArray reply = replyOf(2);
        ScriptedServer server{greets() + answers(1) +
                              ScriptedServer::Script{takes(), sendsApart({reply.left(size), reply.mid(size)})} +
                              answers(3)};
        TcpClient client(server.port());
        client.gets(1);
        client.gets(2);
        client.gets(3);
    }
}

TEST_F(ReturningTcpClient, reconnectsBeforeTheRequestIfTheServerHasClosedAfterAReply)
{
    for (const ScriptedServer::Step& ending : {closes(), resets()}) {
        ScriptedServer server{greets() + answers(1) + ScriptedServer::Script{awaitsTaken(), ending},
                              greets() + answers(2)};
        TcpClient client(server.port());
        client.gets(1);
        client.awaitUnread();
        client.gets(2);
    }
}

TEST_F(ReturningTcpClient, reconnectsBeforeTheRequestIfBytesFollowAReply)
{
    for (const QByteArray& more : {replyOf(1), replyOf(1).left(5), QByteArray("x"), errorMinus7}) {
        ScriptedServer server{greets() + ScriptedServer::Script{takes(), sendsApart({replyOf(1), more})},
                              greets() + answers(2)};
        TcpClient client(server.port());
        client.gets(1);
        client.awaitUnread();
        client.gets(2);
    }
}

// A refused list leaves a CTcpAPI connected, although further frames of the list may follow.
TEST_F(ReturningTcpClient, getsTheRightReplyAfterARefusedList)
{
    const QByteArray request = "68 00000000 0000 00 00 30 0000 16"_hex;
    std::vector<int> ints;
    std::vector<unsigned char> bytes;
    QStringList texts;
    int len = 0;
    const std::function<int(TcpClient&)> requests[] = {
        [&](TcpClient& client) { return client.requestInts(request, 2, ints); },
        [&](TcpClient& client) { return client.requestBytes(request, 2, bytes); },
        [&](TcpClient& client) { return client.requestStrings(request, 2, texts); },
        [&](TcpClient& client) { return client.sendDatas(request) == 1 ? client.recvInts(2, ints) : 99; },
        [&](TcpClient& client) { return client.sendDatas(request) == 1 ? client.recvBytes(2, bytes) : 99; },
        [&](TcpClient& client) { return client.sendDatas(request) == 1 ? client.recvStrings(2, texts) : 99; },
        [&](TcpClient& client) { return client.sendDatas(request) == 1 ? client.recvDatas(len) : 99; },
    };
    for (const auto& requestList : requests) {
        ScriptedServer server{greets() + ScriptedServer::Script{receives(13), sends(errorMinus7)},
                              greets() + answers(9)};
        TcpClient client(server.port());
        EXPECT_EQ(client.ready(), 1);
        EXPECT_EQ(requestList(client), -7);
        EXPECT_FALSE(client.isConnected());
        client.gets(9);
    }
}

TEST_F(ReturningTcpClient, staysConnectedAfterLists)
{
    ScriptedServer server{greets() + ScriptedServer::Script{receives(13), sends(listOf(1))} +
                          ScriptedServer::Script{receives(13), sends(listOf(2))} + answers(3)};
    const QByteArray request = "68 00000000 0000 00 00 30 0000 16"_hex;
    TcpClient client(server.port());
    std::vector<int> list;
    EXPECT_EQ(client.ready(), 1);
    EXPECT_EQ(client.requestInts(request, 1, list), 1);
    EXPECT_EQ(client.ready(), 1);
    EXPECT_EQ(client.sendDatas(request), 1);
    EXPECT_EQ(client.recvInts(2, list), 1);
    EXPECT_EQ(list, (std::vector<int>{1, 2}));
    client.gets(3);
}

// --- UDP ----------------------------------------------------------------------------------------------------------

class UdpClient : public CReturningUdpClient {
public:
    explicit UdpClient(int port, int timeoutMs = enoughMs) : CReturningUdpClient("127.0.0.1", port, timeoutMs) {}

    int localPort()
    {
        std::string address;
        int port = 0;
        EXPECT_EQ(socket->getSockName(address, port), 1);
        return port;
    }

    // Receives the integer of a reply. With a time-out of 0 it takes only what has arrived.
    int receiveWithin(int ms)
    {
        setRecvOverTm(ms);
        const int result = recvInt();
        setRecvOverTm(enoughMs);
        return result;
    }
};

// A client and a server that the test plays.
struct UdpLink {
    DatagramPeer server;
    UdpClient client{server.port()};

    // Sends request `number` and takes it at the server.
    void asks(int number)
    {
        EXPECT_EQ(client.ready(), 1);
        EXPECT_EQ(client.sendInt(command, number), 1);
        EXPECT_EQ(server.take()[10], static_cast<char>(number));
    }

    void answers(const QByteArray& bytes) { server.give(server.senderPort(), bytes); }

    // Fails the test unless request `number` gets its own reply.
    void gets(int number)
    {
        asks(number);
        answers(replyOf(number));
        EXPECT_EQ(client.receiveWithin(enoughMs), number);
    }
};

class ReturningUdpClient : public DescriptorsKept {};

TEST_F(ReturningUdpClient, getsAReplyForEachRequest)
{
    UdpLink link;
    EXPECT_FALSE(link.client.isConnected());
    for (int number = 1; number < 100; ++number)
        link.gets(number);
    EXPECT_TRUE(link.client.isConnected());
}

TEST_F(ReturningUdpClient, returnsMinusOneForAHostName)
{
    CReturningUdpClient client("localhost", 80, enoughMs);
    EXPECT_EQ(client.ready(), -1);
    EXPECT_EQ(client.ready(), -1);
}

TEST_F(ReturningUdpClient, waitsNoLongerThanItsTimeOut)
{
    const DatagramPeer server;
    UdpClient client(server.port(), shortMs);
    EXPECT_EQ(client.ready(), 1);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(client.requestInt(command, 1), 0);
    EXPECT_GE(msSince(start), shortMs - 1);
    EXPECT_LT(msSince(start), 3000); // the base class's time
}

// Over all clients, since they share a server.
TEST_F(ReturningUdpClient, usesNoLocalPortOfTheLast4096Requests)
{
    const DatagramPeer server;
    UdpClient clients[] = {UdpClient(server.port()), UdpClient(server.port())};
    std::set<int> ports;
    for (int i = 0; i < 4096; ++i) {
        ASSERT_EQ(clients[i % 2].ready(), 1);
        ports.insert(clients[i % 2].localPort());
    }
    EXPECT_EQ(ports.size(), 4096u);
}

TEST_F(ReturningUdpClient, ignoresALateReply)
{
    UdpLink link;
    link.asks(1);
    const int port = link.server.senderPort();
    EXPECT_EQ(link.client.receiveWithin(0), 0);
    link.server.give(port, replyOf(1)); // before the next request
    link.gets(2);
    link.asks(3);
    link.server.give(port, replyOf(1)); // during it
    EXPECT_EQ(link.client.receiveWithin(0), 0);
    link.answers(replyOf(3));
    EXPECT_EQ(link.client.receiveWithin(enoughMs), 3);
}

TEST_F(ReturningUdpClient, ignoresADoubledReply)
{
    UdpLink link;
    link.asks(1);
    const int port = link.server.senderPort();
    link.answers(replyOf(1));
    link.answers(replyOf(1));
    EXPECT_EQ(link.client.receiveWithin(enoughMs), 1);
    EXPECT_EQ(link.client.ready(), 1);
    link.server.give(port, replyOf(1)); // after ready(), before the request
    EXPECT_EQ(link.client.sendInt(command, 2), 1);
    link.server.take();
    link.server.give(port, replyOf(1)); // after the request
    link.answers(replyOf(2));
    EXPECT_EQ(link.client.receiveWithin(enoughMs), 2);
    link.gets(3);
}

TEST_F(ReturningUdpClient, getsTheRightReplyAfterAnyFailedOne)
{
    UdpLink link;
    std::vector<QByteArray> replies = {errorMinus7, error0,    error1, error5, errorOfTwoBytes,    errorOfNoBytes,
                                       wrongEnd,    noPayload, "",     "x",    threeBytesOfPayload};
    for (int size = 1; size < reply7.size(); ++size)
        replies.push_back(reply7.left(size));
    int number = 0;
    for (const QByteArray& reply : replies) {
        SCOPED_TRACE(hex(reply));
        number = number % 100 + 3;
        link.asks(number);
        link.answers(reply);
        EXPECT_NE(link.client.receiveWithin(enoughMs), number);
        link.answers(reply7.mid(reply.size())); // the rest arrives late
        link.gets(number + 1);
        link.gets(number + 2);
    }
}

TEST_F(ReturningUdpClient, getsTheRightReplyAfterALostRequest)
{
    UdpLink link;
    link.gets(1);
    link.asks(2);
    EXPECT_EQ(link.client.receiveWithin(shortMs), 0);
    link.gets(3);
}

TEST_F(ReturningUdpClient, getsTheRightReplyOnceTheServerIsBack)
{
    UdpLink link;
    link.gets(1);
    link.server.goAway();
    EXPECT_EQ(link.client.ready(), 1);
    EXPECT_EQ(link.client.requestInt(command, 2), -1); // the port is closed
    EXPECT_FALSE(link.client.isConnected());
    link.server.comeBack();
    link.gets(3);
}

// Random faults of many replies; late and doubled ones arrive at random moments of later requests.
TEST_F(ReturningUdpClient, isNeverOffByARequestUnderRandomFaults)
{
    struct Stray {
        int port;
        QByteArray reply;
    };
    std::mt19937 random(20260801);
    UdpLink link;
    std::vector<Stray> strays;
    const auto deliverSome = [&] {
        while (!strays.empty() && random() % 2 == 0) {
            std::swap(strays[random() % strays.size()], strays.back());
            link.server.give(strays.back().port, strays.back().reply);
            strays.pop_back();
        }
    };
    int answered = 0;
    for (int i = 0; i < 3000; ++i) {
        const int number = 10 + i % 100;
        link.asks(number);
        const Stray reply = {link.server.senderPort(), replyOf(number)};
        deliverSome();
        const unsigned int fault = random() % 4;
        if (fault == 0) { // late
            strays.push_back(reply);
            EXPECT_EQ(link.client.receiveWithin(0), 0);
        } else if (fault == 1) { // refused, then late
            link.answers(errorMinus7);
            strays.push_back(reply);
            EXPECT_EQ(link.client.receiveWithin(enoughMs), -7);
        } else {
            if (fault == 2) // doubled
                strays.push_back(reply);
            link.answers(reply.reply);
            ASSERT_EQ(link.client.receiveWithin(enoughMs), number);
            ++answered;
        }
        deliverSome();
    }
    EXPECT_GT(answered, 1000);
}
