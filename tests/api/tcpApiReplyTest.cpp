#include "support/frames.h"
#include "support/openTcpClient.h"
#include "support/scriptedServer.h"

#include <climits>

#include <malloc.h>

// How a derived client handles a frame that recvDatas() kept.
static void dropFrame(OpenTcpClient& client)
{
    client.recvFrame.clear();
    client.recvFrameSize = 0;
}

// --- One frame ---

TEST(TcpApiRecvDatas, keepsTheWholeFrameAndReturnsItsPayloadLength)
{
    const QByteArray frame = "68"       //  0 start
                             "03000000" //  1 length
                             "3412"     //  5 sequence
                             "00"       //  7 arg2
                             "00"       //  8 arg1
                             "10"       //  9 command
                             "aabbcc"   // 10 payload
                             "0000"     // 13 checksum
                             "16"_hex;  // 15 end
    LinkedTcpClient client;
    client.give(frame);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(len, 3);
    EXPECT_EQ(hex(client.recvFrame), hex(frame));
    EXPECT_EQ(client.recvFrameSize, 16);
    EXPECT_EQ(client.link(), "up, open");
}

TEST(TcpApiRecvDatas, acceptsAFrameWithoutPayload)
{
    LinkedTcpClient client;
    client.give(noPayload);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(len, 0);
    EXPECT_EQ(hex(client.recvFrame), hex(noPayload));
}

TEST(TcpApiRecvDatas, skipsGarbageBeforeTheStartByte)
{
    LinkedTcpClient client;
    client.give("00 11"_hex + reply7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
}

TEST(TcpApiRecvDatas, readsAgainAfterReadingOnlyGarbage)
{
    LinkedTcpClient client;
    client.give("00 11 16"_hex);
    client.give(reply7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
}

TEST(TcpApiRecvDatas, joinsAFrameSplitAtAnyByte)
{
    LinkedTcpClient client;
    for (int at = 1; at < reply7.size(); ++at) {
        SCOPED_TRACE(at);
        client.give(reply7.left(at));
        client.give(reply7.mid(at));
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 1);
        EXPECT_EQ(len, 4);
        EXPECT_EQ(hex(client.recvFrame), hex(reply7));
        dropFrame(client);
    }
}

TEST(TcpApiRecvDatas, joinsAFrameThatArrivesByteByByte)
{
    LinkedTcpClient client;
    for (const char byte : reply7)
        client.give(QByteArray(1, byte));
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
}

TEST(TcpApiRecvDatas, losesTheSecondFrameOfARead)
{
    LinkedTcpClient client;
    client.give(reply7 + errorMinus7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
    dropFrame(client);
    EXPECT_EQ(client.recvDatas(len), 0); // a time-out
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiRecvDatas, losesTheBeginningOfTheNextFrameWithTheRestOfARead)
{
    LinkedTcpClient client;
    client.give(reply7 + noPayload.left(5));
    client.give(noPayload.mid(5)); // no start byte in it
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    dropFrame(client);
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvDatas, acceptsAnyChecksum)
{
    const QByteArray frame = "68 04000000 0000 00 00 10 07000000 beef 16"_hex;
    LinkedTcpClient client;
    client.give(frame);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(frame));
}

TEST(TcpApiRecvDatas, acceptsAnySequenceAndArguments)
{
    const QByteArray frame = "68 04000000 ffff ee dd 30 07000000 0000 16"_hex;
    LinkedTcpClient client;
    client.give(frame);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(frame));
}

TEST(TcpApiRecvDatas, acceptsEveryCommandExceptThatOfAnErrorFrame)
{
    LinkedTcpClient client;
    QByteArray frame = reply7;
    for (int command = 0; command < 0xff; ++command) {
        SCOPED_TRACE(command);
        frame[9] = char(command);
        client.give(frame);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 1);
        EXPECT_EQ(hex(client.recvFrame), hex(frame));
        dropFrame(client);
    }
}

TEST(TcpApiRecvDatas, dropsAFrameWithAWrongEndByteAndKeepsTheLink)
{
    LinkedTcpClient client;
    client.give(wrongEnd);
    client.give(reply7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
}

TEST(TcpApiRecvDatas, dropsTheWholeFrameThatAFalseStartByteBegan)
{
    // The stray 68 starts a frame of 104 + 13 bytes, 68 68000000 ..., which includes the good one.
    LinkedTcpClient client;
    client.give("68"_hex + "68 00000000 0000 00 00 10 0000 16"_hex + QByteArray(103, '\0'));
    client.give(reply7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
}

TEST(TcpApiRecvDatas, acceptsALengthDownToMinusTwo)
{
    for (const int length : {-1, -2}) { // frames of 12 and 11 bytes
        SCOPED_TRACE(length);
        LinkedTcpClient client;
        const QByteArray frame = length == -1 ? "68 ffffffff 0000 00 00 10 00 16"_hex //
                                              : "68 feffffff 0000 00 00 10 16"_hex;
        client.give(frame);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 1);
        EXPECT_EQ(len, length);
        EXPECT_EQ(hex(client.recvFrame), hex(frame));
    }
}

TEST(TcpApiRecvDatas, dropsALengthBelowMinusTwo)
{
    LinkedTcpClient client;
    client.give("68 fdffffff 0000 00 00 10 16"_hex); // announces 10 bytes
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvDatas, returnsTheCodeOfAnErrorFrame)
{
    LinkedTcpClient client;
    int len = 0;
    client.give(errorMinus7);
    EXPECT_EQ(client.recvDatas(len), -7);
    EXPECT_TRUE(client.holdsNoFrame());
    client.give(error0);
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_TRUE(client.holdsNoFrame());
    client.give(error5);
    EXPECT_EQ(client.recvDatas(len), 5);
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(client.link(), "up, open");
}

TEST(TcpApiRecvDatas, readsTheFirstFourBytesOfALongErrorFrame)
{
    LinkedTcpClient client;
    client.give("68 08000000 0000 00 00 ff f9ffffff 01020304 0000 16"_hex);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), -7);
    EXPECT_EQ(len, 8);
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvDatas, returnsMinusTwoOnAnErrorFrameWithoutACompleteCode)
{
    const QByteArray frames[] = {
        "68 03000000 0000 00 00 ff f9ffff 0000 16"_hex,
        errorOfTwoBytes,
        "68 01000000 0000 00 00 ff f9 0000 16"_hex,
        errorOfNoBytes,
        "68 feffffff 0000 00 00 ff 16"_hex, // length -2
    };
    for (const QByteArray& frame : frames) {
        SCOPED_TRACE(hex(frame));
        LinkedTcpClient client;
        client.give(frame);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), -2);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(TcpApiRecvDatas, returnsSuccessWithoutAFrameOnAnErrorFrameWithCodeOne)
{
    LinkedTcpClient client;
    client.give(error1);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(client.link(), "up, open");
}

TEST(TcpApiRecvDatas, closesTheSocketOnATimeOutAndKeepsAPartialFrame)
{
    for (int size = 0; size < reply7.size(); ++size) {
        SCOPED_TRACE(size);
        LinkedTcpClient client;
        if (size > 0)
            client.give(reply7.left(size));
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 0);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(size)));
        EXPECT_EQ(client.recvFrameSize, size < 10 ? 0 : 17);
    }
}

TEST(TcpApiRecvDatas, failsWhenThePeerClosesAndKeepsAPartialFrame)
{
    for (int size = 0; size < reply7.size(); ++size) {
        SCOPED_TRACE(size);
        LinkedTcpClient client;
        if (size > 0)
            client.give(reply7.left(size));
        client.hangUp();
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), -1);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(size)));
    }
}

TEST(TcpApiRecvDatas, failsOnAClosedSocket)
{
    LinkedTcpClient client;
    client.socket->close();
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

// A packet longer than the read is truncated, which shows how much the client requested.
TEST(TcpApiRecvDatas, requestsAsManyBytesAsTheReadBufferHolds)
{
    LinkedTcpClient client;
    const int room = 2000000;
    ::setsockopt(client.peer, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    const QByteArray frame = "68 eaff0900 0000 00 00 10"_hex + // 655338 bytes of payload, 655351 in all
                             QByteArray(655338, 'x') + "0000 00"_hex;
    if (::send(client.peer, frame.constData(), size_t(frame.size()), MSG_DONTWAIT) != 655351)
        GTEST_SKIP() << "this system has no socket buffer for a packet of 655351 bytes";
    client.give("16"_hex); // instead of the last byte
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(len, 655338);
}

// --- recvInt ---

// The memory of such a frame is freed with it.
TEST(TcpApiRecvInt, readsTheIntegerOfALargeFrame)
{
    mallopt(M_PERTURB, 0x55); // freed memory changes
    const QByteArray frame = "68 00001000 0000 00 00 10 07000000"_hex + QByteArray((1 << 20) - 4, '\0') + "0000 16"_hex;
    ScriptedServer server{{sendsApart({greeting, frame})}};
    OpenTcpClient client;
    ASSERT_EQ(client.connect("127.0.0.1", server.port()), 1);
    EXPECT_EQ(client.recvInt(), 7);
    EXPECT_TRUE(client.holdsNoFrame());
    mallopt(M_PERTURB, 0);
}

TEST(TcpApiRecvInt, returnsTheIntegerOfTheReplyWithTheLinkUp)
{
    LinkedTcpClient client;
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7);
    client.give("68 04000000 0000 00 00 10 00000000 0000 16"_hex);
    EXPECT_EQ(client.recvInt(), 0);
    client.give("68 04000000 0000 00 00 10 ffffffff 0000 16"_hex);
    EXPECT_EQ(client.recvInt(), -1);
    client.give("68 04000000 0000 00 00 10 00000080 0000 16"_hex);
    EXPECT_EQ(client.recvInt(), INT_MIN);
    client.give("68 04000000 0000 00 00 10 ffffff7f 0000 16"_hex);
    EXPECT_EQ(client.recvInt(), INT_MAX);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvInt, doesNotSetTheFlag)
{
    LinkedTcpClient client;
    client.connected = false;
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7);
    EXPECT_EQ(client.link(), "down, open");
}

TEST(TcpApiRecvInt, ignoresBytesAfterTheInteger)
{
    LinkedTcpClient client;
    client.give("68 08000000 0000 00 00 10 07000000 01020304 0000 16"_hex);
    EXPECT_EQ(client.recvInt(), 7);
    EXPECT_EQ(client.link(), "up, open");
}

TEST(TcpApiRecvInt, marksTheLinkDownOnAShortPayload)
{
    const QByteArray frames[] = {
        threeBytesOfPayload,
        "68 02000000 0000 00 00 10 0700 0000 16"_hex,
        "68 01000000 0000 00 00 10 07 0000 16"_hex,
        noPayload,
        "68 feffffff 0000 00 00 10 16"_hex, // length -2
    };
    for (const QByteArray& frame : frames) {
        SCOPED_TRACE(hex(frame));
        LinkedTcpClient client;
        client.give(frame);
        EXPECT_EQ(client.recvInt(), -5);
        EXPECT_EQ(client.link(), "down, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(TcpApiRecvInt, marksTheLinkDownOnAnErrorFrame)
{
    const struct {
        QByteArray frame;
        int result;
    } cases[] = {{errorMinus7, -7}, {error0, 0}, {error5, 5}, {errorOfTwoBytes, -2}, {errorOfNoBytes, -2}};
    for (const auto& expected : cases) {
        SCOPED_TRACE(hex(expected.frame));
        LinkedTcpClient client;
        client.give(expected.frame);
        EXPECT_EQ(client.recvInt(), expected.result);
        EXPECT_EQ(client.link(), "down, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(TcpApiRecvInt, returnsMinusFiveOnAnErrorFrameWithCodeOne)
{
    LinkedTcpClient client;
    client.give(error1);
    EXPECT_EQ(client.recvInt(), -5);
    EXPECT_EQ(client.link(), "down, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvInt, marksTheLinkDownOnAWrongEndByte)
{
    LinkedTcpClient client;
    client.give(wrongEnd);
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(client.link(), "down, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvInt, closesTheSocketOnATimeOut)
{
    LinkedTcpClient client;
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiRecvInt, failsWhenThePeerCloses)
{
    LinkedTcpClient client;
    client.hangUp();
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiRecvInt, failsWhenThePeerClosesInTheMiddleOfAFrame)
{
    LinkedTcpClient client;
    client.give(reply7.left(12));
    client.hangUp();
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
}

TEST(TcpApiRecvInt, distinguishesAReplyOfZeroFromATimeOutOnlyByTheLink)
{
    LinkedTcpClient client;
    client.give("68 04000000 0000 00 00 10 00000000 0000 16"_hex);
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_FALSE(client.isConnected());
}

TEST(TcpApiRecvInt, completesAFrameThatAnEarlierReadStarted)
{
    LinkedTcpClient client;
    client.recvFrame = reply7.left(3);
    client.give(reply7.mid(3));
    EXPECT_EQ(client.recvInt(), 7);
}
