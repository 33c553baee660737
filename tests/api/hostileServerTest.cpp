// What a hostile server can make a client do, in memory, time and descriptors, and which setting bounds it. The table in
// docs/guide/security.md has these figures.

#include "support/descriptorsKept.h"
#include "support/frames.h"
#include "support/openTcpClient.h"
#include "support/openUdpClient.h"
#include "support/scriptedServer.h"

#include "returningClient.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <new>
#include <string>
#include <vector>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>

static const int shortMs = 100;
static const QByteArray request = "68 00000000 0000 00 00 31 0000 16"_hex;
static const QByteArray hugeHeader = "68 f2ffff7f 0000 00 00 30"_hex; // the longest frame of all
static const int keptBytes = gqdb::CSocketAPI::rawBufferSize;         // 655,350

class HostileServer : public DescriptorsKept {};

// A client that has sent a request and is about to read the reply.
struct AskingClient : OpenTcpClient {
    explicit AskingClient(const ScriptedServer& server, int replyMs = limitMs)
    {
        EXPECT_EQ(connect("127.0.0.1", server.port()), 1);
        EXPECT_EQ(sendDatas(request), 1);
        setRecvOverTm(replyMs);
    }
};

// A server's connection that greets, takes a request and goes on with these steps.
static ScriptedServer::Script replies(const std::vector<ScriptedServer::Step>& steps)
{
    ScriptedServer::Script script = {sends(greeting), receives(13)};
    script.insert(script.end(), steps.begin(), steps.end());
    return script;
}

static ScriptedServer::Step waits(int ms)
{
    return [ms](ScriptedServer::Connection&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
        return true;
    };
}

// Steps that send one byte after each pause.
static std::vector<ScriptedServer::Step> drips(const QByteArray& bytes, int pauseMs)
{
    std::vector<ScriptedServer::Step> steps;
    for (const char byte : bytes) {
        steps.push_back(waits(pauseMs));
        steps.push_back(sendsIfOpen(QByteArray(1, byte)));
    }
    return steps;
}

// Bytes that the C library has given out.
static size_t allocated()
{
    const struct mallinfo2 state = ::mallinfo2();
    return state.uordblks + state.hblkhd;
}

// --- Time ---------------------------------------------------------------------------------------------------------

// A read ends after the receive time-out. The system may end it up to a tick (4 ms) early.
static void expectOneTimeOut(Clock::time_point start)
{
    EXPECT_GE(msSince(start), shortMs - 4);
    EXPECT_LT(msSince(start), limitMs);
}

TEST_F(HostileServer, holdsAClientByItsSilenceForOneTimeOut)
{
    ScriptedServer server{replies({})};
    AskingClient client(server, shortMs);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(client.recvInt(), 0);
    expectOneTimeOut(start);
    EXPECT_EQ(client.link(), "down, closed");
}

// Bytes come well within a time-out, on a busy machine too; all of them take longer.
static const int dripMs = 100;
static const int dripLimitMs = 1000;

TEST_F(HostileServer, holdsAClientByADrippedGreetingForOneTimeOutPerByte)
{
    ScriptedServer::Script script = drips(greeting, dripMs);
    ScriptedServer server{script};
    gqdb::CReturningTcpClient client("127.0.0.1", server.port(), dripLimitMs);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(client.ready(), 1);
    EXPECT_GE(msSince(start), 17 * dripMs);
}

TEST_F(HostileServer, holdsAClientByADrippedReplyForOneTimeOutPerByte)
{
    std::vector<ScriptedServer::Step> steps = drips(hugeHeader + "12345", dripMs);
    steps.push_back(closes());
    ScriptedServer server{replies(steps)};
    AskingClient client(server, dripLimitMs);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_GE(msSince(start), 15 * dripMs);
    EXPECT_EQ(client.link(), "down, closed");
}

// Bytes without a start byte, and frames without elements, hold a client for any time. Neither takes memory.
TEST_F(HostileServer, holdsAClientByAnEndlessStreamWithoutMemory)
{
    const QByteArray garbage(1 << 20, 'x');
    std::vector<ScriptedServer::Step> steps(32, sends(garbage));
    steps.push_back(closes());
    ScriptedServer server{replies(steps)};
    AskingClient client(server);
    const int before = client.recvFrame.capacity(); // from the greeting
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(client.recvFrame.capacity(), before);
}

TEST_F(HostileServer, holdsAListRequestByEmptyListsWithoutMemory)
{
    const QByteArray emptyList = "68 04000000 0000 00 00 31 00000000 0000 16"_hex;
    ScriptedServer server{replies({sendsApart(std::vector<QByteArray>(1000, emptyList)), closes()})};
    AskingClient client(server);
    std::vector<int> list;
    EXPECT_EQ(client.recvInts(1, list), -1); // only when the server closes
    EXPECT_EQ(list.capacity(), 0U);
}

// A limit for the whole reply: examples/boundedRequest.cpp has one for integers.
TEST_F(HostileServer, cannotHoldAClientThatLimitsTheWholeReply)
{
    const QByteArray garbage(1 << 20, 'x');
    ScriptedServer server{replies({floods(garbage)})};
    AskingClient client(server);
    const Clock::time_point start = Clock::now();
    int pos = 0;
    int count = 1;
    while (count > 0 && msSince(start) < 2 * shortMs && client.socket->isReadable(shortMs) == 1) {
        count = client.socket->recv(client.recvBuffer, keptBytes);
        pos = 0;
        EXPECT_FALSE(client.recvData(client.recvBuffer, count, pos));
    }
    client.close();
    EXPECT_GE(msSince(start), 2 * shortMs);
    EXPECT_LT(msSince(start), limitMs);
}

// --- Memory -------------------------------------------------------------------------------------------------------

TEST_F(HostileServer, makesAClientReserve655350BytesByAHeader)
{
    ScriptedServer server{replies({sends(hugeHeader)}), {sends(greeting)}};
    gqdb::CReturningTcpClient returning("127.0.0.1", server.port(), limitMs);
    AskingClient client(server, shortMs);
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(client.recvFrame.capacity(), keptBytes); // kept with the part of the frame ...
    EXPECT_EQ(client.sendDatas(request), -1);
    EXPECT_TRUE(client.holdsNoFrame()); // ... until the next request
    EXPECT_EQ(returning.ready(), 1);
}

TEST_F(HostileServer, makesAClientReserveTwiceWhatHasArrivedOfALongFrame)
{
    const int mebibytes = 64;
    std::vector<ScriptedServer::Step> steps = {sends(hugeHeader)};
    steps.insert(steps.end(), mebibytes, sends(QByteArray(1 << 20, 'x')));
    steps.push_back(closes());
    ScriptedServer server{replies(steps)};
    AskingClient client(server);
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(client.recvFrame.size(), mebibytes * (1 << 20) + 10);
    EXPECT_LE(client.recvFrame.capacity(), 2 * client.recvFrame.size());
    EXPECT_EQ(client.sendDatas(request), -1);
    EXPECT_LE(client.recvFrame.capacity(), keptBytes); // freed
}

// The count of a request limits neither the elements of a frame nor the memory for them.
TEST_F(HostileServer, makesAClientKeepAllElementsOfAFrame)
{
    const int elements = 1000000;
    QByteArray frame = "68 04093d00 0000 00 00 31 40420f00"_hex; // a payload of 4,000,004 bytes
    frame += QByteArray(4 * elements, '\0') + "0000 16"_hex;
    ScriptedServer server{replies({sends(frame)}), replies({sends(frame)})};
    {
        AskingClient client(server);
        std::vector<int> ints;
        EXPECT_EQ(client.recvInts(1, ints), 1);
        EXPECT_EQ(ints.size(), size_t(elements));
    }
    AskingClient client(server);
    QStringList texts;
    [[maybe_unused]] const size_t before = allocated();
    EXPECT_EQ(client.recvStrings(1, texts), 1);
    EXPECT_EQ(texts.size(), elements); // empty ones, of 4 bytes each
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LE(allocated() - before, size_t(40) * elements);
#endif
}

// With a limit of its address space, a process gets std::bad_alloc, and its client can go on.
TEST_F(HostileServer, isStoppedByALimitOfTheAddressSpace)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "The sanitizer needs its address space";
#endif
    ScriptedServer server{{sends(greeting), receives(17), sends(hugeHeader), floods(QByteArray(1 << 20, 'x'))},
                          {sends(greeting), receives(17), sends(reply7)}};
    const pid_t child = ::fork();
    if (child == 0) {
        const rlimit limit = {1 << 29, 1 << 29}; // 512 MiB
        ::setrlimit(RLIMIT_AS, &limit);
        gqdb::CReturningTcpClient client("127.0.0.1", server.port(), 5000);
        bool isStopped = client.ready() != 1;
        try {
            client.requestInt(0x30, 9);
        } catch (const std::bad_alloc&) {
            isStopped = true;
            client.close(); // at a moment when nothing is unread, ready() would keep the link
        }
        ::_exit(isStopped && client.ready() == 1 && client.requestInt(0x30, 9) == 7 ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

// --- Descriptors --------------------------------------------------------------------------------------------------

TEST_F(HostileServer, makesAClientUseOneDescriptorWhateverItDoes)
{
    const std::vector<std::vector<ScriptedServer::Step>> attacks = {
        {closes()},
        {sends(hugeHeader), closes()},
        {sends(wrongEnd), closes()},
        {sends(errorMinus7), closes()},
        {awaitsTaken(), resets()},
    };
    const ReservedPort port;
    gqdb::CReturningTcpClient client("127.0.0.1", port.number(), limitMs);
    const std::set<int> before = openDescriptors();
    for (const auto& attack : attacks) {
        ScriptedServer::Script script = {sends(greeting), receives(17)};
        script.insert(script.end(), attack.begin(), attack.end());
        ScriptedServer server(port.number(), {script, {closes()}, {sends(greeting)}});
        EXPECT_EQ(client.ready(), 1);
        client.requestInt(0x30, 9);
        EXPECT_EQ(client.ready(), 0); // no greeting
        EXPECT_EQ(client.ready(), 1);
        client.close();
    }
    EXPECT_TRUE(openedSince(before).empty());
}

// --- Datagrams ----------------------------------------------------------------------------------------------------

class HostileDatagrams : public DescriptorsKept {};

TEST_F(HostileDatagrams, endARequestByAnyBytes)
{
    LinkedUdpClient client;
    for (const QByteArray& bytes : {QByteArray(65507, 'x'), hugeHeader, QByteArray("x"), wrongEnd}) {
        EXPECT_EQ(client.sendDatas(request), 1);
        client.give(bytes);
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(client.recvInt(), 0);
        EXPECT_LT(msSince(start), limitMs);
        EXPECT_LE(client.recvFrame.capacity(), keptBytes);
    }
    EXPECT_EQ(client.sendDatas(request), 1);
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7);
}

// Each receive call without a request appends a datagram to the frame; each request drops it.
TEST_F(HostileDatagrams, growAFrameThatIsReceivedWithoutRequests)
{
    LinkedUdpClient client;
    client.give(hugeHeader);
    EXPECT_EQ(client.recvInt(), 0);
    for (int i = 0; i < 100; ++i) {
        client.give(QByteArray(65507, 'x'));
        EXPECT_EQ(client.recvInt(), 0);
    }
    EXPECT_EQ(client.recvFrame.size(), 10 + 100 * 65507);
    EXPECT_LE(client.recvFrame.capacity(), 2 * client.recvFrame.size());
    EXPECT_EQ(client.sendDatas(request), 1);
    EXPECT_LE(client.recvFrame.capacity(), keptBytes);
}

TEST_F(HostileDatagrams, holdAListRequestByEmptyListsUntilATimeOut)
{
    LinkedUdpClient client;
    const QByteArray emptyList = "68 04000000 0000 00 00 31 00000000 0000 16"_hex;
    for (int i = 0; i < 100; ++i)
        client.give(emptyList);
    client.quickly();
    std::vector<int> list;
    EXPECT_EQ(client.recvInts(1, list), 0);
    EXPECT_TRUE(list.empty());
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7); // all before it have been taken
}
