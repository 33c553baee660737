// Stations that die, stop, trickle or flood, and signals that interrupt a wait: checks the client's result, its next
// request, and that no descriptor is left open.

#include "support/descriptorsKept.h"
#include "support/frames.h"
#include "support/interrupted.h"
#include "support/openTcpClient.h"
#include "support/scriptedServer.h"
#include "support/threads.h"

#include <algorithm>
#include <string>
#include <vector>

static const ScriptedServer::Script answersOnce = {sends(greeting), receives(17), sends(reply7)};

// The result of a call and the link state after it.
static std::string outcome(OpenTcpClient& client, int result)
{
    return std::to_string(result) + ": " + client.link();
}

static std::string askOnce(OpenTcpClient& client)
{
    return outcome(client, client.requestInt(0x30, 9));
}

static const std::string answered = "7: up, open";

// --- A station that dies at any byte and comes back ---

// How a connection ends.
struct Ending {
    const char* name;
    std::vector<ScriptedServer::Step> steps;
};

static const Ending endings[] = {
    {"close", {closes()}},
    {"reset", {awaitsTaken(), resets()}}, // waits until the client has read: a reset may overtake its connect
};

static ScriptedServer::Script followedBy(const ScriptedServer::Script& steps, const Ending& ending)
{
    ScriptedServer::Script script = steps;
    script.insert(script.end(), ending.steps.begin(), ending.steps.end());
    return script;
}

// The link broke after `part` of a greeting or of an integer reply. The station is down for one request and comes back,
// and its greeting continues where the part ended:
//   no bytes       nothing to continue
//   1 to 4 bytes   the length field combines both and announces far more than follows: the part grows
//   5 to 16 bytes  the length field is good, but the byte at the frame's end is not an end byte: the frame is dropped
static void reconnectAfter(const QByteArray& part, OpenTcpClient& client, int port)
{
    EXPECT_EQ(hex(client.recvFrame), hex(part));
    EXPECT_EQ(askOnce(client), "-1: down, open"); // nobody listens
    EXPECT_EQ(hex(client.recvFrame), hex(part));
    if (!part.isEmpty()) {
        ScriptedServer station(port, {{sends(greeting), closes()}});
        EXPECT_EQ(askOnce(client), "0: down, closed");
    }
    if (part.isEmpty() || part.size() > 4) {
        EXPECT_TRUE(client.holdsNoFrame());
    } else {
        EXPECT_EQ(hex(client.recvFrame), hex(part + greeting));
        EXPECT_EQ(client.sendDatas(0x30), -1); // sends nothing on the closed socket, but drops the part
    }
    ScriptedServer station(port, {answersOnce});
    EXPECT_EQ(askOnce(client), answered);
}

class TcpApiConnectFault : public DescriptorsKept {};

TEST_F(TcpApiConnectFault, failsOnAGreetingTruncatedAtAnyByteAndReconnects)
{
    for (const Ending& ending : endings) {
        for (int size = ending.steps.size() == 1 ? 0 : 1; size < greeting.size(); ++size) {
            SCOPED_TRACE(ending.name + (" after " + std::to_string(size)));
            const QByteArray part = greeting.left(size);
            const ReservedPort port;
            OpenTcpClient client;
            {
                ScriptedServer station(port.number(), {followedBy({sends(part)}, ending)});
                EXPECT_EQ(outcome(client, client.connect("127.0.0.1", port.number())), "0: down, closed");
            }
            reconnectAfter(part, client, port.number());
        }
    }
}

class TcpApiRequestFault : public DescriptorsKept {};

TEST_F(TcpApiRequestFault, failsOnAReplyTruncatedAtAnyByteAndReconnects)
{
    for (const Ending& ending : endings) {
        for (int size = 0; size < reply7.size(); ++size) {
            SCOPED_TRACE(ending.name + (" after " + std::to_string(size)));
            const QByteArray part = reply7.left(size);
            const ReservedPort port;
            OpenTcpClient client;
            {
                ScriptedServer station(port.number(),
                                       {followedBy({sends(greeting), receives(17), sends(part)}, ending)});
                EXPECT_EQ(client.connect("127.0.0.1", port.number()), 1);
                EXPECT_EQ(askOnce(client), "-1: down, closed");
            }
            reconnectAfter(part, client, port.number());
        }
    }
}

// The connection ends after a complete frame of two elements, at any byte of the second frame.
TEST_F(TcpApiRequestFault, keepsTheElementsBeforeAListIsTruncated)
{
    const QByteArray request = "68 00000000 0000 00 00 31 0000 16"_hex;
    const QByteArray frame = "68 0c000000 0000 00 00 31 02000000 0a000000 0b000000 0000 16"_hex;
    for (int size = 0; size < frame.size(); ++size) {
        SCOPED_TRACE(size);
        ScriptedServer station{{sends(greeting), receives(13), sendsApart({frame, frame.left(size)}), closes()},
                               answersOnce};
        OpenTcpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
        std::vector<int> out;
        EXPECT_EQ(outcome(client, client.requestInts(request, 4, out)), "-1: down, closed");
        EXPECT_EQ(out, (std::vector<int>{10, 11}));
        EXPECT_EQ(hex(client.recvFrame), hex(frame.left(size)));
        EXPECT_EQ(client.sendDatas(0x30), -1); // drops the part
        EXPECT_EQ(askOnce(client), answered);
    }
}

// The system sends a reset because the request was not read.
TEST_F(TcpApiRequestFault, failsIfTheStationClosesWithoutReadingTheRequest)
{
    ScriptedServer station{{sends(greeting), awaitsRequest(), closes()}, answersOnce};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    EXPECT_EQ(askOnce(client), "-1: down, closed");
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(askOnce(client), answered);
}

// --- A station that trickles ---

TEST_F(TcpApiRequestFault, acceptsBytesThatArriveOneByOneInTime)
{
    std::vector<QByteArray> letters[2];
    for (const char byte : greeting)
        letters[0].emplace_back(1, byte);
    for (const char byte : reply7)
        letters[1].emplace_back(1, byte);
    ScriptedServer station{{sendsApart(letters[0]), receives(17), sendsApart(letters[1])}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    EXPECT_EQ(askOnce(client), answered);
}

// Drops a partial reply and connects to a station that answers.
static void reconnect(LinkedTcpClient& client)
{
    ScriptedServer station{answersOnce};
    EXPECT_EQ(client.sendDatas(0x30), -1);
    client.serverHost = "127.0.0.1";
    client.serverPort = station.port();
    EXPECT_EQ(askOnce(client), answered);
}

// The next byte of a reply would arrive only after the time-out.
TEST_F(TcpApiRequestFault, timesOutIfAnyByteIsLate)
{
    for (int size = 0; size < reply7.size(); ++size) {
        SCOPED_TRACE(size);
        LinkedTcpClient client;
        if (size > 0)
            client.give(reply7.left(size));
        EXPECT_EQ(askOnce(client), "0: down, closed");
        EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(size)));
        reconnect(client);
    }
}

// --- A station that stops reading ---

// Sends a greeting, reads nothing, and resets once the test has incremented `seen`.
static ScriptedServer::Script readsNothingUntil(Counter& seen)
{
    return {sends(greeting), [&](ScriptedServer::Connection& connection) {
                seen.waitFor(1);
                return connection.reset();
            }};
}

static const QByteArray hugeRequest(16 << 20, 'x'); // more than the buffers of both ends hold

TEST_F(TcpApiRequestFault, timesOutIfTheStationReadsOnlyPartOfTheRequest)
{
    Counter seen;
    ScriptedServer station{readsNothingUntil(seen), answersOnce};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    client.setSendOverTm(20);
    client.setRecvOverTm(20);
    EXPECT_EQ(outcome(client, client.requestInt(hugeRequest)), "0: down, closed"); // the sent part counts as success
    seen.add();
    EXPECT_EQ(askOnce(client), answered);
}

TEST_F(TcpApiRequestFault, failsWithinTheSendTimeOutIfTheStationReadsNothing)
{
    Counter seen;
    ScriptedServer station{readsNothingUntil(seen), answersOnce};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    client.setSendOverTm(20);
    int parts = 0;
    while (parts < 100 && client.sendDatas(hugeRequest) == 1)
        ++parts;
    EXPECT_GE(parts, 1);
    EXPECT_LT(parts, 100);
    EXPECT_EQ(client.link(), "down, closed");
    seen.add();
    EXPECT_EQ(askOnce(client), answered);
}

// --- A station that floods ---

TEST_F(TcpApiRequestFault, skipsAFloodBeforeTheReply)
{
    const QByteArray zeros(4 << 20, '\0');
    ScriptedServer station{{sends(greeting + zeros), receives(17), sends(zeros + reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    EXPECT_EQ(askOnce(client), answered);
    EXPECT_TRUE(client.holdsNoFrame());
}

// Unsolicited replies: each request takes the next one, since sequence numbers are not compared.
TEST_F(TcpApiRequestFault, takesOneReplyFromAFlood)
{
    ScriptedServer station{{sends(greeting), receives(17), floods(reply7)}, answersOnce};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    for (int request = 0; request < 5; ++request)
        EXPECT_EQ(askOnce(client), answered);
    client.close(); // with much data unread
    EXPECT_EQ(askOnce(client), answered);
}

TEST_F(TcpApiRequestFault, takesAllElementsOfAListLongerThanRequested)
{
    QByteArray frame = "68 841a0600 0000 00 00 31 a0860100"_hex; // a payload of 400004 bytes, 100000 elements
    frame += QByteArray(400000, '\x01') + "0000 16"_hex;
    ScriptedServer station{{sends(greeting), receives(13), sends(frame), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
    std::vector<int> out;
    EXPECT_EQ(outcome(client, client.requestInts("68 00000000 0000 00 00 31 0000 16"_hex, 3, out)), "1: up, open");
    EXPECT_EQ(out, std::vector<int>(100000, 0x01010101));
    EXPECT_EQ(askOnce(client), answered);
}

// --- Signals ---

// Handlers with and without SA_RESTART interrupt the wait of a socket that has a time-out.
static const int handlerFlags[] = {0, SA_RESTART};

TEST_F(TcpApiConnectFault, isInterruptedByASignalBeforeTheGreeting)
{
    for (const int flags : handlerFlags) {
        ScriptedServer station{{}, answersOnce};
        OpenTcpClient client;
        client.serverHost = "127.0.0.1";
        client.serverPort = station.port();
        client.recvBuffer = new char[OpenTcpClient::rawBufferSize]; // freed by the base class
        EXPECT_EQ(client.socket->connect("127.0.0.1", station.port(), false), 1);
        EXPECT_EQ(interrupted([&] { return client.checkConnect(); }, flags), 0);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(askOnce(client), answered);
    }
}

TEST_F(TcpApiRequestFault, isInterruptedByASignalBeforeTheReply)
{
    for (const int flags : handlerFlags) {
        ScriptedServer station{{sends(greeting), receives(17)}, answersOnce};
        OpenTcpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", station.port()), 1);
        EXPECT_EQ(interrupted([&] { return client.requestInt(0x30, 9); }, flags), -1);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(askOnce(client), answered);
    }
}

TEST_F(TcpApiRequestFault, keepsAPartialReplyIfASignalInterrupts)
{
    LinkedTcpClient client;
    client.setRecvOverTm(5000);
    client.give(reply7.left(12));
    EXPECT_EQ(interrupted([&] { return client.recvInt(); }), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
    reconnect(client);
}

TEST_F(TcpApiRequestFault, isInterruptedByASignalWhileSendBlocks)
{
    LinkedTcpClient client(SOCK_STREAM);
    client.setSendOverTm(5000);
    while (::send(client.descriptor(), "x", 1, MSG_DONTWAIT) == 1) {
    }
    EXPECT_EQ(interrupted([&] { return client.requestInt(0x30, 9); }), -1);
    EXPECT_EQ(client.link(), "down, closed");
    reconnect(client);
}
