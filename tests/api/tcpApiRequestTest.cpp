#include "support/frames.h"
#include "support/openTcpClient.h"
#include "support/scriptedServer.h"

#include <ctime>
#include <functional>

static const QByteArray greeting0 = "68 04000000 0000 00 00 00 00000000 0000 16"_hex;

// A complete request frame of a derived client.
static const QByteArray ownFrame = "68 02000000 3412 00 00 40 abcd 0000 16"_hex;

// --- Sending ---

TEST(TcpApiSendDatas, sendsTheFrameUnchangedInOneWrite)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendDatas(ownFrame), 1);
    EXPECT_EQ(hex(client.take()), hex(ownFrame));
    EXPECT_EQ(client.sendDatas("01 02 03"_hex), 1); // not a frame
    EXPECT_EQ(hex(client.take()), "01 02 03");
    EXPECT_EQ(client.sendSeq, 0);
}

TEST(TcpApiSendDatas, sendsACommandWithoutPayload)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendDatas(0x21), 1);
    EXPECT_EQ(hex(client.take()), hex("68"        //  0 start
                                      "00000000"  //  1 length
                                      "0000"      //  5 sequence
                                      "00"        //  7 arg2
                                      "00"        //  8 arg1
                                      "21"        //  9 command
                                      "0000"      // 10 checksum
                                      "16"_hex)); // 12 end
}

TEST(TcpApiSendInt, sendsOneInteger)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendInt(0xfe, -2), 1);
    EXPECT_EQ(hex(client.take()), hex("68"        //  0 start
                                      "04000000"  //  1 length
                                      "0000"      //  5 sequence
                                      "00"        //  7 arg2
                                      "00"        //  8 arg1
                                      "fe"        //  9 command
                                      "feffffff"  // 10 the integer
                                      "0000"      // 14 checksum
                                      "16"_hex)); // 16 end
}

TEST(TcpApiSendInts, sendsTheCountAndTheIntegers)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendInts(0x23, {1, -1, 0x01020304}), 1);
    EXPECT_EQ(hex(client.take()), hex("68"        //  0 start
                                      "10000000"  //  1 length
                                      "0000"      //  5 sequence
                                      "00"        //  7 arg2
                                      "00"        //  8 arg1
                                      "23"        //  9 command
                                      "03000000"  // 10 count
                                      "01000000"  // 14 first
                                      "ffffffff"  // 18 second
                                      "04030201"  // 22 third
                                      "0000"      // 26 checksum
                                      "16"_hex)); // 28 end
}

TEST(TcpApiSendInts, sendsAnEmptyListAsItsCount)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendInts(0x23, std::vector<int>()), 1);
    EXPECT_EQ(hex(client.take()), hex("68 04000000 0000 00 00 23 00000000 0000 16"_hex));
}

TEST(TcpApiSendDatas, countsTheFramesOfAllForms)
{
    LinkedTcpClient client;
    client.sendDatas(0x21);
    client.sendInt(0x22, 5);
    client.sendInts(0x23, {6});
    client.sendDatas(ownFrame); // contains its own number
    client.sendDatas(0x24);
    EXPECT_EQ(hex(client.take()), hex("68 00000000 0000 00 00 21 0000 16"_hex));
    EXPECT_EQ(hex(client.take()), hex("68 04000000 0100 00 00 22 05000000 0000 16"_hex));
    EXPECT_EQ(hex(client.take()), hex("68 08000000 0200 00 00 23 01000000 06000000 0000 16"_hex));
    EXPECT_EQ(hex(client.take()), hex(ownFrame));
    EXPECT_EQ(hex(client.take()), hex("68 00000000 0300 00 00 24 0000 16"_hex));
}

TEST(TcpApiSendDatas, restartsAtZeroAfterNumber65535)
{
    LinkedTcpClient client;
    client.sendSeq = 65535;
    client.sendDatas(0x21);
    client.sendDatas(0x21);
    EXPECT_EQ(hex(client.take()), hex("68 00000000 ffff 00 00 21 0000 16"_hex));
    EXPECT_EQ(hex(client.take()), hex("68 00000000 0000 00 00 21 0000 16"_hex));
}

TEST(TcpApiSendDatas, dropsThePartialFrameOfAnEarlierReply)
{
    LinkedTcpClient client;
    client.recvFrame = reply7.left(12);
    client.recvFrameSize = 17;
    EXPECT_EQ(client.sendDatas(ownFrame), 1);
    EXPECT_TRUE(client.holdsNoFrame());
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7);
}

TEST(TcpApiSendDatas, dropsThePartialFrameEvenIfItFails)
{
    LinkedTcpClient client;
    client.hangUp();
    client.recvFrame = reply7.left(12);
    client.recvFrameSize = 17;
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiSendDatas, sendsOnAnOpenSocketEvenIfTheFlagIsDown)
{
    LinkedTcpClient client;
    client.connected = false;
    EXPECT_EQ(client.sendDatas(ownFrame), 1);
    EXPECT_EQ(hex(client.take()), hex(ownFrame));
    EXPECT_EQ(client.link(), "down, open");
}

TEST(TcpApiSendDatas, closesWhenTheSendFails)
{
    LinkedTcpClient client;
    client.hangUp();
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiSendDatas, closesWhenTheSendTimesOut)
{
    LinkedTcpClient client;
    while (::send(client.descriptor(), "x", 1, MSG_DONTWAIT) == 1) {
    }
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiSendDatas, closesOnAnEmptyFrame)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.sendDatas(QByteArray()), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiSendDatas, treatsAPartialWriteAsSuccess)
{
    LinkedTcpClient client(SOCK_STREAM);
    const int room = 10000;
    ::setsockopt(client.descriptor(), SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    EXPECT_EQ(client.sendDatas(QByteArray(1 << 20, 'x')), 1);
    EXPECT_EQ(client.link(), "up, open");

    ::shutdown(client.descriptor(), SHUT_WR); // the peer reads what was sent, then the end
    int came = 0;
    for (int count = 1; count > 0; came += count)
        count = client.take().size();
    EXPECT_GT(came, 0);
    EXPECT_LT(came, 1 << 20);
}

TEST(TcpApiSendDatas, failsWithoutASocketAndLeavesTheFlag)
{
    OpenTcpClient client;
    client.loseSocket();
    client.connected = true;
    client.recvFrame = reply7.left(12);
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(hex(client.recvFrame), "");
}

TEST(TcpApiSendDatas, neverReconnectsInAnyForm)
{
    ScriptedServer server{{sends(greeting)}, {sends(greeting)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    client.close();
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_EQ(client.sendDatas(0x21), -1);
    EXPECT_EQ(client.sendInt(0x22, 5), -1);
    EXPECT_EQ(client.sendInts(0x23, {6}), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.sendSeq, 3);        // unsent frames consume numbers too
    EXPECT_EQ(client.checkConnect(), 1); // the server was available all the time
}

// --- Requests ---

struct RequestForm {
    const char* name;
    std::function<int(OpenTcpClient&)> call;
    QByteArray frame; // as the client's first frame
    QByteArray reply;
    int result;
};

static const RequestForm requestForms[] = {
    {"requestInt, complete frame", //
     [](OpenTcpClient& client) { return client.requestInt(ownFrame); }, ownFrame, reply7, 7},
    {"requestBytes",
     [](OpenTcpClient& client) {
         std::vector<unsigned char> out = {1};
         const int result = client.requestBytes(ownFrame, 0, out);
         EXPECT_EQ(out, result == 1 ? (std::vector<unsigned char>{1, 2, 3}) : (std::vector<unsigned char>{1}));
         return result;
     },
     ownFrame, "68 06000000 0000 00 00 40 02000000 0203 0000 16"_hex, 1},
    {"requestInts",
     [](OpenTcpClient& client) {
         std::vector<int> out = {1};
         const int result = client.requestInts(ownFrame, 0, out);
         EXPECT_EQ(out, result == 1 ? (std::vector<int>{1, 2, 3}) : (std::vector<int>{1}));
         return result;
     },
     ownFrame, "68 0c000000 0000 00 00 40 02000000 02000000 03000000 0000 16"_hex, 1},
    {"requestStrings",
     [](OpenTcpClient& client) {
         QStringList out = {"a"};
         const int result = client.requestStrings(ownFrame, 0, out);
         EXPECT_EQ(out, result == 1 ? QStringList({"a", "b"}) : QStringList({"a"}));
         return result;
     },
     ownFrame, "68 09000000 0000 00 00 40 01000000 0300 0100 62 0000 16"_hex, 1},
    {"requestInt, one integer", //
     [](OpenTcpClient& client) { return client.requestInt(0x35, 9); }, "68 04000000 0000 00 00 35 09000000 0000 16"_hex,
     reply7, 7},
    {"requestInt, integer list", //
     [](OpenTcpClient& client) {
         return client.requestInt(0x36, std::vector<int>{9, -1});
     },
     "68 0c000000 0000 00 00 36 02000000 09000000 ffffffff 0000 16"_hex, reply7, 7},
    {"setState", //
     [](OpenTcpClient& client) { return client.setState(9); }, "68 04000000 0000 00 00 06 09000000 0000 16"_hex, reply7,
     7},
};

TEST(TcpApiRequest, sendsItsFrameAndReadsTheReply)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.give(form.reply);
        EXPECT_EQ(form.call(client), form.result);
        EXPECT_EQ(hex(client.take()), hex(form.frame));
        EXPECT_EQ(hex(client.take()), "");
        EXPECT_EQ(client.link(), "up, open");
    }
}

TEST(TcpApiRequest, returnsTheCodeOfAnErrorFrame)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.give(errorMinus7);
        EXPECT_EQ(form.call(client), -7);
        EXPECT_TRUE(client.isOpen());
    }
}

TEST(TcpApiRequest, returnsZeroIfThePeerIsSilent)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        EXPECT_EQ(form.call(client), 0);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

TEST(TcpApiRequest, reconnectsALostLinkFirst)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        ScriptedServer server{{sends(greeting)}, {sends(greeting), receives(form.frame.size()), sends(form.reply)}};
        OpenTcpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
        client.close();
        EXPECT_EQ(form.call(client), form.result);
        EXPECT_EQ(hex(server.received(0)), hex(form.frame));
        EXPECT_EQ(client.link(), "up, open");
    }
}

TEST(TcpApiRequest, stopsAtARefusedConnection)
{
    ReservedPort port;
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", port.number()), -1);
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        EXPECT_EQ(form.call(client), -1);
        EXPECT_EQ(client.link(), "down, open"); // a send would have closed it
    }
    EXPECT_EQ(client.sendSeq, 0); // and no frame was built
}

TEST(TcpApiRequest, stopsAtARefusedGreeting)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        ScriptedServer server{{sends(greeting)}, {sends(greeting0)}};
        OpenTcpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
        client.close();
        EXPECT_EQ(form.call(client), 0);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(client.sendSeq, 0);
    }
}

TEST(TcpApiRequest, failsBeforeAnyConnect)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        OpenTcpClient client;
        EXPECT_EQ(form.call(client), -1);
        EXPECT_EQ(client.link(), "down, open");
    }
}

TEST(TcpApiRequest, stopsAtAFailedSend)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.hangUp();
        EXPECT_EQ(form.call(client), -1);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

// The send fails before it would clear the flag, and there is no socket to read from.
TEST(TcpApiRequest, clearsTheFlagWithoutASocketOnlyInTheFormWithOneInteger)
{
    for (const RequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        OpenTcpClient client;
        client.loseSocket();
        client.connected = true;
        EXPECT_EQ(form.call(client), -1);
        const bool oneInteger = &form == &requestForms[4] || &form == &requestForms[6];
        EXPECT_EQ(client.isConnected(), !oneInteger);
    }
}

TEST(TcpApiRequest, collectsAReplyInSeveralFrames)
{
    LinkedTcpClient client;
    std::vector<unsigned char> bytes = {1};
    client.give("68 06000000 0000 00 00 40 02000000 0203 0000 16"_hex);
    client.give("68 05000000 0000 00 00 40 01000000 04 0000 16"_hex);
    EXPECT_EQ(client.requestBytes(ownFrame, 4, bytes), 1);
    EXPECT_EQ(bytes, (std::vector<unsigned char>{1, 2, 3, 4}));

    std::vector<int> ints = {1};
    client.give("68 08000000 0000 00 00 40 01000000 02000000 0000 16"_hex);
    client.give("68 08000000 0000 00 00 40 01000000 03000000 0000 16"_hex);
    EXPECT_EQ(client.requestInts(ownFrame, 3, ints), 1);
    EXPECT_EQ(ints, (std::vector<int>{1, 2, 3}));

    QStringList texts = {"a"};
    client.give("68 09000000 0000 00 00 40 01000000 0300 0100 62 0000 16"_hex);
    client.give("68 09000000 0000 00 00 40 01000000 0300 0100 63 0000 16"_hex);
    EXPECT_EQ(client.requestStrings(ownFrame, 3, texts), 1);
    EXPECT_EQ(texts, QStringList({"a", "b", "c"}));
}

// Programs add requests in a derived class, which uses codec and frame operations by unqualified name.
TEST(TcpApiRequest, worksFromADerivedClient)
{
    struct PointClient : LinkedTcpClient {
        int levels(int pointId, std::vector<int>& out)
        {
            QByteArray frame;
            addHeader(0x50, 1, 2, frame);
            int2Byte(pointId, frame);
            short2Byte(8, frame);
            addEnd(frame);
            return requestInts(frame, 2, out);
        }
    } client;
    client.give("68 0c000000 0000 00 00 50 02000000 14000000 28000000 0000 16"_hex);
    std::vector<int> out;
    EXPECT_EQ(client.levels(1001, out), 1);
    EXPECT_EQ(out, (std::vector<int>{20, 40}));
    EXPECT_EQ(hex(client.take()), hex("68 06000000 0000 02 01 50 e9030000 0800 0000 16"_hex));
}

// --- Ready-made commands ---

struct TimedCommand {
    const char* name;
    int (gqdb::CTcpAPI::*call)();
    QByteArray head; // up to the time
};

static const TimedCommand timedCommands[] = {
    {"systemState", &gqdb::CTcpAPI::systemState, "68 04000000 0000 00 00 01"_hex},
    {"systemTime", &gqdb::CTcpAPI::systemTime, "68 04000000 0000 00 00 02"_hex},
    {"clear", &gqdb::CTcpAPI::clear, "68 04000000 0000 00 00 03"_hex},
};

TEST(TcpApiTimedCommands, sendTheCurrentTimeAndReturnTheReply)
{
    for (const TimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        LinkedTcpClient client;
        client.give(reply7);
        EXPECT_EQ((client.*command.call)(), 7);
        const QByteArray frame = client.take();
        ASSERT_EQ(frame.size(), 17);
        EXPECT_EQ(hex(frame.left(10)), hex(command.head));
        unsigned int seconds = 0;
        for (int offset = 13; offset >= 10; --offset)
            seconds = seconds << 8 | static_cast<unsigned char>(frame[offset]);
        EXPECT_NEAR(double(seconds), double(::time(nullptr)), 3);
        EXPECT_EQ(hex(frame.right(3)), "00 00 16");
    }
}

TEST(TcpApiTimedCommands, returnTheCodesOfARequest)
{
    for (const TimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        LinkedTcpClient client;
        client.give(errorMinus7);
        EXPECT_EQ((client.*command.call)(), -7);
        EXPECT_EQ(client.link(), "down, open");
    }
}

TEST(TcpApiTimedCommands, reconnectALostLinkFirst)
{
    for (const TimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        ScriptedServer server{{sends(greeting)}, {sends(greeting), receives(17), sends(reply7)}};
        OpenTcpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
        client.close();
        EXPECT_EQ((client.*command.call)(), 7);
    }
}

TEST(TcpApiTimedCommands, failBeforeAnyConnect)
{
    for (const TimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        OpenTcpClient client;
        EXPECT_EQ((client.*command.call)(), -1);
    }
}

TEST(TcpApiTimedCommands, clearTheFlagWithoutASocket)
{
    for (const TimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        OpenTcpClient client;
        client.loseSocket();
        client.connected = true;
        EXPECT_EQ((client.*command.call)(), -1);
        EXPECT_FALSE(client.isConnected());
    }
}

TEST(TcpApiSetTime, sendsTwoIntegersWithoutACountAndReturnsTheReply)
{
    LinkedTcpClient client;
    client.give(reply7);
    EXPECT_EQ(client.setTime(0x01020304, -2), 7);
    EXPECT_EQ(hex(client.take()), hex("68"        //  0 start
                                      "08000000"  //  1 length
                                      "0000"      //  5 sequence
                                      "00"        //  7 arg2
                                      "00"        //  8 arg1
                                      "05"        //  9 command
                                      "04030201"  // 10 first
                                      "feffffff"  // 14 second
                                      "0000"      // 18 checksum
                                      "16"_hex)); // 20 end
    EXPECT_EQ(client.link(), "up, open");
}

TEST(TcpApiSetTime, returnsTheCodeOfAnErrorFrame)
{
    LinkedTcpClient client;
    client.give(errorMinus7);
    EXPECT_EQ(client.setTime(1, 2), -7);
    EXPECT_EQ(client.link(), "down, open");
}

TEST(TcpApiSetTime, doesNotReconnect)
{
    ScriptedServer server{{sends(greeting), closes()},
                          {sends(greeting), receives(17), sends(reply7), receives(21), sends(reply7)}};
    OpenTcpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.recvInt(), -1); // the connection drops
    EXPECT_EQ(client.setTime(1, 2), -1);
    EXPECT_EQ(client.setTime(1, 2), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.setState(3), 7); // the next command reconnects
    EXPECT_EQ(client.setTime(1, 2), 7);
}

TEST(TcpApiSetTime, isSentOnAnOpenSocketEvenIfTheFlagIsDown)
{
    LinkedTcpClient client;
    client.connected = false;
    client.give(reply7);
    EXPECT_EQ(client.setTime(1, 2), 7);
    EXPECT_EQ(client.link(), "down, open");
}

TEST(TcpApiSetTime, readsNothingAfterAFailedSend)
{
    OpenTcpClient client;
    client.loseSocket();
    client.connected = true;
    EXPECT_EQ(client.setTime(1, 2), -1);
    EXPECT_TRUE(client.isConnected());
}

TEST(TcpApiSetTime, failsBeforeAnyConnect)
{
    OpenTcpClient client;
    EXPECT_EQ(client.setTime(1, 2), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiSetState, sendsItsValue)
{
    LinkedTcpClient client;
    client.give(reply7);
    EXPECT_EQ(client.setState(-3), 7);
    EXPECT_EQ(hex(client.take()), hex("68 04000000 0000 00 00 06 fdffffff 0000 16"_hex));
}
