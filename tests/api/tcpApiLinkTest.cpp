#include "support/frames.h"
#include "support/openTcpClient.h"
#include "support/scriptedServer.h"

#include <climits>
#include <new>
#include <string>
#include <type_traits>

#include <dirent.h>

static const QByteArray request = "68 04000000 0000 00 00 30 09000000 0000 16"_hex; // requestInt(0x30, 9)

static const ScriptedServer::Script silent = {};

// The result of a call and the link state after it.
static std::string outcome(OpenTcpClient& client, int result)
{
    return std::to_string(result) + ": " + client.link();
}

// Outcomes of an attempt to connect.
static const std::string up = "1: up, open";
static const std::string refused = "0: down, closed"; // the greeting, not the connection, is refused

// Connects a new client to a server that plays `script`.
static std::string connectTo(const ScriptedServer::Script& script)
{
    ScriptedServer server{script};
    OpenTcpClient client;
    const int result = client.connect("127.0.0.1", server.port());
    return outcome(client, result);
}

static std::string greetWith(const QByteArray& frame)
{
    return connectTo({sends(frame)});
}

static int openDescriptors()
{
    int count = 0;
    DIR* folder = ::opendir("/proc/self/fd");
    while (::readdir(folder))
        ++count;
    ::closedir(folder);
    return count;
}

// --- Construction and destruction ---

static_assert(std::is_convertible<gqdb::CTcpAPI*, gqdb::CSocketAPI*>::value, "CSocketAPI is a public base");
static_assert(!std::has_virtual_destructor<gqdb::CTcpAPI>::value, "destroyed through its own type");

TEST(TcpApiConstructor, startsDisconnectedWithAnOpenSocket)
{
    OpenTcpClient client;
    ASSERT_NE(client.socket, nullptr);
    EXPECT_TRUE(client.isOpen());
    EXPECT_FALSE(client.isConnected());
    EXPECT_EQ(client.serverHost, "");
    EXPECT_EQ(client.serverPort, 0);
    EXPECT_EQ(client.recvBuffer, nullptr);
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(client.sendSeq, 0);
}

TEST(TcpApiConstructor, setsBothTimeOutsTo9000OnTheOpenSocket)
{
    OpenTcpClient client;
    EXPECT_EQ(client.recvOverTm, 9000);
    EXPECT_EQ(client.sendOverTm, 9000);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 9000);
    EXPECT_EQ(client.timeOut(SO_SNDTIMEO), 9000);
}

TEST(TcpApiDestructor, closesTheConnectionAndLeavesNoDescriptor)
{
    const int before = openDescriptors();
    {
        ScriptedServer server{{sends(greeting)}, {sends(greeting)}, {sends(greeting)}};
        OpenTcpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
        client.close();
        EXPECT_EQ(client.checkConnect(), 1);
        client.close();
        EXPECT_EQ(client.checkConnect(), 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpApiDestructor, leavesNoDescriptorIfNeverConnected)
{
    const int before = openDescriptors();
    {
        OpenTcpClient client;
    }
    EXPECT_EQ(openDescriptors(), before);
}

// --- Time-outs ---

TEST(TcpApiSetRecvOverTm, storesTheTimeAndSetsItOnTheSocket)
{
    OpenTcpClient client;
    EXPECT_EQ(client.setRecvOverTm(1500), 1);
    EXPECT_EQ(client.recvOverTm, 1500);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 1500);
    EXPECT_EQ(client.sendOverTm, 9000);
    EXPECT_EQ(client.timeOut(SO_SNDTIMEO), 9000);
}

TEST(TcpApiSetSendOverTm, storesTheTimeAndSetsItOnTheSocket)
{
    OpenTcpClient client;
    EXPECT_EQ(client.setSendOverTm(1500), 1);
    EXPECT_EQ(client.sendOverTm, 1500);
    EXPECT_EQ(client.timeOut(SO_SNDTIMEO), 1500);
    EXPECT_EQ(client.recvOverTm, 9000);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 9000);
}

TEST(TcpApiSetRecvOverTm, reachesTheSocketThroughTheBase)
{
    OpenTcpClient client;
    gqdb::CSocketAPI& base = client;
    EXPECT_EQ(base.setRecvOverTm(1500), 1);
    EXPECT_EQ(base.setSendOverTm(2500), 1);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 1500);
    EXPECT_EQ(client.timeOut(SO_SNDTIMEO), 2500);
}

TEST(TcpApiSetRecvOverTm, storesTheTimeEvenIfTheSocketIsClosed)
{
    OpenTcpClient client;
    client.close();
    EXPECT_EQ(client.setRecvOverTm(1500), 1);
    EXPECT_EQ(client.setSendOverTm(2500), 1);
    EXPECT_EQ(client.recvOverTm, 1500);
    EXPECT_EQ(client.sendOverTm, 2500);
}

// --- connect: greetings ---

TEST(TcpApiConnect, acceptsAGreetingAboveZero)
{
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 01000000 0000 16"_hex), up);
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 07000000 0000 16"_hex), up);
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 ffffff7f 0000 16"_hex), up);
}

TEST(TcpApiConnect, refusesAGreetingOfZeroOrBelow)
{
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 00000000 0000 16"_hex), refused);
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 ffffffff 0000 16"_hex), refused);
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 00000080 0000 16"_hex), refused);
}

TEST(TcpApiConnect, acceptsAnErrorFrameWithAPositiveCodeAsAGreeting)
{
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 ff 05000000 0000 16"_hex), up);
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 ff 02000000 0000 16"_hex), up);
}

TEST(TcpApiConnect, refusesAnErrorFrameWithACodeOfZeroOrBelow)
{
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 ff 00000000 0000 16"_hex), refused);
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 ff f9ffffff 0000 16"_hex), refused);
}

// Code 1 counts as success, but there is no payload.
TEST(TcpApiConnect, refusesAnErrorFrameWithCodeOne)
{
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 ff 01000000 0000 16"_hex), refused);
}

TEST(TcpApiConnect, refusesAnErrorFrameWithoutACompleteCode)
{
    EXPECT_EQ(greetWith("68 02000000 0000 00 00 ff 0500 0000 16"_hex), refused);
    EXPECT_EQ(greetWith("68 00000000 0000 00 00 ff 0000 16"_hex), refused);
}

TEST(TcpApiConnect, refusesAShortPayload)
{
    EXPECT_EQ(greetWith("68 03000000 0000 00 00 00 010000 0000 16"_hex), refused);
    EXPECT_EQ(greetWith("68 00000000 0000 00 00 00 0000 16"_hex), refused);
}

TEST(TcpApiConnect, refusesAWrongEndByte)
{
    EXPECT_EQ(greetWith("68 04000000 0000 00 00 00 01000000 0000 17"_hex), refused);
}

TEST(TcpApiConnect, ignoresSequenceArgumentsCommandChecksumAndExtraPayload)
{
    EXPECT_EQ(greetWith("68 06000000 ffff ee dd fe 01000000 0102 beef 16"_hex), up);
}

TEST(TcpApiConnect, skipsGarbageBeforeTheGreeting)
{
    EXPECT_EQ(greetWith("00 11 68 04000000 0000 00 00 00 01000000 0000 16"_hex), up);
}

TEST(TcpApiConnect, joinsAGreetingSplitAtAnyByte)
{
    for (int at = 1; at < greeting.size(); ++at) {
        SCOPED_TRACE(at);
        EXPECT_EQ(connectTo({sendsApart({greeting.left(at), greeting.mid(at)})}), up);
    }
}

TEST(TcpApiConnect, timesOutOnASilentServer)
{
    ScriptedServer server{silent};
    OpenTcpClient client;
    client.setRecvOverTm(100);
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), refused);
}

TEST(TcpApiConnect, refusesAServerThatClosesWithoutAGreeting)
{
    EXPECT_EQ(connectTo({closes()}), refused);
}

TEST(TcpApiConnect, refusesAServerThatClosesInTheMiddleOfItsGreeting)
{
    EXPECT_EQ(connectTo({sends(greeting.left(12)), closes()}), refused);
}

TEST(TcpApiConnect, refusesAServerThatResetsInTheMiddleOfItsGreeting)
{
    EXPECT_EQ(connectTo({sendsApart({greeting.left(5), greeting.mid(5, 5)}), resets()}), refused);
}

// --- connect: address, buffer, endpoint ---

TEST(TcpApiConnect, storesTheAddress)
{
    ScriptedServer server{{sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.serverHost, "127.0.0.1");
    EXPECT_EQ(client.serverPort, server.port());
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiConnect, storesTheAddressAndKeepsTheSocketIfRefused)
{
    ReservedPort port;
    OpenTcpClient client;
    EXPECT_EQ(outcome(client, client.connect("127.0.0.2", port.number())), "-1: down, open");
    EXPECT_EQ(client.serverHost, "127.0.0.2");
    EXPECT_EQ(client.serverPort, port.number());
}

TEST(TcpApiConnect, failsOnAnInvalidAddress)
{
    OpenTcpClient client;
    EXPECT_EQ(outcome(client, client.connect("", 1)), "-1: down, open");
}

TEST(TcpApiConnect, clearsAFlagThatWasSet)
{
    ReservedPort port;
    OpenTcpClient client;
    client.connected = true;
    EXPECT_EQ(client.connect("127.0.0.1", port.number()), -1);
    EXPECT_FALSE(client.isConnected());
}

TEST(TcpApiConnect, returnsZeroWhileTheConnectIsInProgress)
{
    ReservedPort port;
    OpenTcpClient client;
    client.socket->setAsyncMode(); // returns before the refusal arrives
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", port.number())), "0: down, open");
    EXPECT_EQ(client.serverPort, port.number());
}

TEST(TcpApiConnect, allocatesTheReadBufferOnce)
{
    EXPECT_EQ(gqdb::CSocketAPI::rawBufferSize, 655350);
    ReservedPort port;
    OpenTcpClient client;
    client.connect("127.0.0.1", port.number());
    char* const buffer = client.recvBuffer;
    EXPECT_NE(buffer, nullptr);
    client.connect("127.0.0.1", port.number());
    EXPECT_EQ(client.recvBuffer, buffer);
}

static bool memoryIsOut = false;

// Replaces the operator in the whole test program.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return memoryIsOut ? nullptr : ::operator new[](size);
}

TEST(TcpApiConnect, failsBeforeStoringTheAddressWithoutMemoryForTheReadBuffer)
{
    ReservedPort port;
    OpenTcpClient client;
    memoryIsOut = true;
    const int result = client.connect("127.0.0.1", port.number());
    memoryIsOut = false;
    EXPECT_EQ(outcome(client, result), "-1: down, open");
    EXPECT_EQ(client.serverHost, "");
}

TEST(TcpApiConnect, timesOutWaitingForASecondGreetingOnALiveLink)
{
    ScriptedServer server{{sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), up);
    char* const buffer = client.recvBuffer;
    client.setRecvOverTm(100);
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), refused);
    EXPECT_EQ(client.recvBuffer, buffer);
}

TEST(TcpApiConnect, storesAnotherAddressButLosesTheLiveLink)
{
    ScriptedServer server{{sends(greeting)}};
    ReservedPort other; // refuses connections
    OpenTcpClient client;
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), up);
    client.setRecvOverTm(100);
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", other.number())), refused);
    EXPECT_EQ(client.serverPort, other.number());
    EXPECT_EQ(outcome(client, client.checkConnect()), "-1: down, open");
}

TEST(TcpApiConnect, opensASocketWithoutTimeOutsAfterAClose)
{
    ScriptedServer server{{sends(greeting)}, {sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 9000); // unchanged, so still the first socket
    client.close();
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), up);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 0);
    EXPECT_EQ(client.timeOut(SO_SNDTIMEO), 0);
    EXPECT_EQ(client.recvOverTm, 9000);
    EXPECT_EQ(client.sendOverTm, 9000);
    client.setRecvOverTm(1500);
    client.setSendOverTm(2500);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 1500);
    EXPECT_EQ(client.timeOut(SO_SNDTIMEO), 2500);
}

// --- connectServer ---

// A client with a read buffer and a stored address, after a refused connect.
class TcpApiConnectServer : public testing::Test {
protected:
    void SetUp() override { EXPECT_EQ(client.connect("127.0.0.1", port.number()), -1); }

    ReservedPort port;
    OpenTcpClient client;
};

TEST_F(TcpApiConnectServer, neitherStoresTheAddressNorSetsTheFlag)
{
    ScriptedServer server{{sends(greeting)}};
    EXPECT_EQ(outcome(client, client.connectServer("127.0.0.1", server.port())), "1: down, open");
    EXPECT_EQ(client.serverPort, port.number());
}

TEST_F(TcpApiConnectServer, closesTheSocketAndReturnsZeroOnARefusedGreeting)
{
    ScriptedServer server{{sends(errorMinus7)}};
    client.connected = true;
    EXPECT_EQ(outcome(client, client.connectServer("127.0.0.1", server.port())), refused);
}

TEST_F(TcpApiConnectServer, returnsTheFailureOfTheEndpointAndChangesNothing)
{
    client.connected = true;
    EXPECT_EQ(outcome(client, client.connectServer("127.0.0.1", port.number())), "-1: up, open");
}

// --- checkConnect ---

TEST(TcpApiCheckConnect, returnsOneIfTheFlagIsSet)
{
    OpenTcpClient client; // without a server, without a read buffer
    client.connected = true;
    client.socket->close();
    EXPECT_EQ(outcome(client, client.checkConnect()), "1: up, closed");
}

TEST(TcpApiCheckConnect, reconnectsToTheStoredAddress)
{
    ScriptedServer server{{sends(greeting)}, {sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    client.close();
    EXPECT_EQ(outcome(client, client.checkConnect()), up);
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 0); // a new socket
}

TEST(TcpApiCheckConnect, makesASingleAttempt)
{
    ScriptedServer server{{sends(greeting)}, {sends(errorMinus7)}, {sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    client.close();
    EXPECT_EQ(outcome(client, client.checkConnect()), refused);
    EXPECT_EQ(outcome(client, client.checkConnect()), up);
}

TEST(TcpApiCheckConnect, returnsTheFailureOfTheEndpoint)
{
    ReservedPort port;
    OpenTcpClient client;
    client.connect("127.0.0.1", port.number());
    EXPECT_EQ(outcome(client, client.checkConnect()), "-1: down, open");
}

TEST(TcpApiCheckConnect, triesTheEmptyAddressBeforeAnyConnect)
{
    OpenTcpClient client;
    EXPECT_EQ(outcome(client, client.checkConnect()), "-1: down, open");
}

// The read fails because only connect() allocates the buffer.
TEST(TcpApiCheckConnect, allocatesNoReadBuffer)
{
    ScriptedServer server{{sends(greeting)}};
    OpenTcpClient client;
    client.serverHost = "127.0.0.1";
    client.serverPort = server.port();
    EXPECT_EQ(outcome(client, client.checkConnect()), refused);
    EXPECT_EQ(client.recvBuffer, nullptr);
}

// --- close ---

TEST(TcpApiClose, closesTheSocketAndClearsTheFlag)
{
    ScriptedServer server{{sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(outcome(client, client.close()), "1: down, closed");
    EXPECT_EQ(client.serverHost, "127.0.0.1");
    EXPECT_EQ(client.serverPort, server.port());
    EXPECT_NE(client.recvBuffer, nullptr);
}

TEST(TcpApiClose, canBeRepeated)
{
    OpenTcpClient client;
    EXPECT_EQ(outcome(client, client.close()), "1: down, closed");
    EXPECT_EQ(outcome(client, client.close()), "1: down, closed");
}

TEST(TcpApiClose, keepsAPartialFrame)
{
    OpenTcpClient client;
    client.recvFrame = greeting.left(12);
    client.recvFrameSize = 17;
    client.close();
    EXPECT_EQ(hex(client.recvFrame), hex(greeting.left(12)));
    EXPECT_EQ(client.recvFrameSize, 17);
}

TEST(TcpApiClose, needsNoSocket)
{
    OpenTcpClient client;
    client.loseSocket();
    client.connected = true;
    EXPECT_EQ(client.close(), 1);
    EXPECT_FALSE(client.isConnected());
}

// --- Reconnecting ---

TEST(TcpApiReconnect, takesOneMoreFailedRequestAfterAFailedReply)
{
    ScriptedServer server{{sends(greeting), receives(17), sends(errorMinus7)},
                          {sends(greeting), receives(17), sends(reply7), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "-7: down, open");
    client.setRecvOverTm(100);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), refused); // waits for a second greeting, which is not sent
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiReconnect, waitsUntilThePeerClosesIfThereIsNoTimeOut)
{
    ScriptedServer server{{sends(greeting)},
                          {sends(greeting), receives(17), sends(errorMinus7), closes()},
                          {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    client.close();
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "-7: down, open");
    EXPECT_EQ(client.timeOut(SO_RCVTIMEO), 0);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), refused);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiReconnect, isNotNeededAfterARefusedList)
{
    const QByteArray frame = "68 00000000 0000 00 00 31 0000 16"_hex;
    const QByteArray list = "68 06000000 0000 00 00 31 02000000 0102 0000 16"_hex;
    ScriptedServer server{{sends(greeting), receives(13), sends(errorMinus7), receives(13), sends(list)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    std::vector<unsigned char> out;
    EXPECT_EQ(outcome(client, client.requestBytes(frame, 0, out)), "-7: up, open");
    EXPECT_EQ(outcome(client, client.requestBytes(frame, 0, out)), up);
    EXPECT_EQ(out, (std::vector<unsigned char>{1, 2}));
}

TEST(TcpApiReconnect, happensOnTheRequestAfterATimeOut)
{
    ScriptedServer server{{sends(greeting), receives(17)}, {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    client.setRecvOverTm(100);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), refused);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiReconnect, findsAStationThatRestarted)
{
    ReservedPort port;
    OpenTcpClient client;
    {
        ScriptedServer station(port.number(), {{sends(greeting), receives(17), sends(reply7), resets()}});
        EXPECT_EQ(client.connect("127.0.0.1", port.number()), 1);
        EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
    }
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "-1: down, closed"); // detects the dead link
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "-1: down, open");   // nobody listens
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "-1: down, open");
    {
        ScriptedServer station(port.number(), {{sends(greeting), receives(17), sends(reply7)}});
        EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
    }
}

TEST(TcpApiReconnect, keepsCountingFrames)
{
    ScriptedServer server{{sends(greeting), receives(17), sends(reply7), closes()},
                          {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.requestInt(0x30, 9), 7);
    EXPECT_EQ(client.requestInt(0x30, 9), -1); // consumes number 1
    EXPECT_EQ(client.requestInt(0x30, 9), 7);
    EXPECT_EQ(hex(server.received(0)), hex(request));
    EXPECT_EQ(hex(server.received(1)), hex("68 04000000 0200 00 00 30 09000000 0000 16"_hex));
    EXPECT_EQ(client.sendSeq, 3);
}

TEST(TcpApiReconnect, keepsCountingFramesAfterConnect)
{
    ScriptedServer server{{sends(greeting)}, {sends(greeting)}};
    OpenTcpClient client;
    client.sendSeq = 5;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    client.close();
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.sendSeq, 5);
}

// --- A partial frame of a dead link, followed by the next greeting ---

// A connection that ends after the part `part` of a reply.
static ScriptedServer::Script breaksOffAfter(const QByteArray& part)
{
    return {sends(greeting), receives(17), sends(part), closes()};
}

TEST(TcpApiPartialFrame, growsByGreetingsThatDoNotCompleteIt)
{
    const QByteArray part = "68 64000000 0000 00 00 40 0102"_hex; // 12 bytes of 113
    ScriptedServer server{breaksOffAfter(part), {sends(greeting), closes()}, {sends(greeting), closes()}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "-1: down, closed");
    EXPECT_EQ(hex(client.recvFrame), hex(part));
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), refused);
    EXPECT_EQ(hex(client.recvFrame), hex(part + greeting));
    EXPECT_EQ(client.recvFrameSize, 113);
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), refused);
    EXPECT_EQ(hex(client.recvFrame), hex(part + greeting + greeting));
}

TEST(TcpApiPartialFrame, makesTheAttemptTimeOut)
{
    ScriptedServer server{{sends(greeting)}};
    OpenTcpClient client;
    client.recvFrame = "68 64000000 0000 00 00 40 0102"_hex;
    client.recvFrameSize = 113;
    client.setRecvOverTm(500); // long enough for the greeting
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", server.port())), refused);
    EXPECT_EQ(hex(client.recvFrame), hex("68 64000000 0000 00 00 40 0102"_hex + greeting));
}

TEST(TcpApiPartialFrame, failsTheAttemptIfTheGreetingCompletesItWithAWrongEnd)
{
    const QByteArray part =
        "68 0d000000 0000 00 00 40"_hex; // 10 bytes of 26, its end byte does not match the greeting's
    ScriptedServer server{breaksOffAfter(part), {sends(greeting)}, {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.requestInt(0x30, 9), -1);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), refused);
    EXPECT_EQ(hex(client.recvFrame), "");
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiPartialFrame, isAcceptedAsTheGreetingIfTheEndByteMatches)
{
    const QByteArray part = "68 0e000000 0000 00 00 40"_hex; // 10 bytes of 27, the integer becomes 0x0468
    ScriptedServer server{breaksOffAfter(part), {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.requestInt(0x30, 9), -1);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiPartialFrame, isParsedWithItsOwnPayloadIfTheEndByteMatches)
{
    const QByteArray part = "68 12000000 0000 00 00 40 ffffffff"_hex; // 14 bytes of 31, the integer is -1
    ScriptedServer server{breaksOffAfter(part), {sends(greeting)}, {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.requestInt(0x30, 9), -1);
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), refused);
    EXPECT_EQ(hex(client.recvFrame), "");
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiPartialFrame, isDroppedByASendBeforeTheNextAttempt)
{
    const QByteArray part = "68 64000000 0000 00 00 40 0102"_hex;
    ScriptedServer server{breaksOffAfter(part), {sends(greeting), receives(17), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.requestInt(0x30, 9), -1);
    EXPECT_EQ(client.setTime(1, 2), -1); // sends nothing, as the socket is closed
    EXPECT_EQ(outcome(client, client.requestInt(0x30, 9)), "7: up, open");
}

TEST(TcpApiPartialFrame, isJoinedWithTheGreetingOfAnotherServer)
{
    const QByteArray part = "68 12000000 0000 00 00 40 ffffffff"_hex;
    ScriptedServer first{breaksOffAfter(part)};
    ScriptedServer second{{sends(greeting)}, {sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", first.port()), 1);
    EXPECT_EQ(client.requestInt(0x30, 9), -1);
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", second.port())), refused);
    EXPECT_EQ(client.serverPort, second.port());
    EXPECT_EQ(outcome(client, client.connect("127.0.0.1", second.port())), up);
}
