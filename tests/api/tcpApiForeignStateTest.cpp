// A derived client may write the protected fields. Whatever their values, nothing past the frame is read and no
// arithmetic overflows.

#include "support/frames.h"
#include "support/openTcpClient.h"

#include <QStringList>

#include <climits>
#include <vector>

// A frame in a heap block of exactly its size, so that AddressSanitizer detects a read past its end.
static QByteArray tight(const QByteArray& bytes)
{
    QByteArray block = bytes;
    block.squeeze();
    return block;
}

// The body takes at least one byte, which reaches the size set in the client. The length in the frame is so large that
// its sum with header and tail wraps below that size.
static void endAFrameWithAWrappingLength(LinkedTcpClient& client, const char* frame)
{
    client.recvFrame = tight(QByteArray::fromHex(frame));
    client.recvFrameSize = 11;
    client.give("00"_hex);
}

TEST(TcpApiRecvDatas, readsNoCodePastAnErrorFrameWhoseLengthWraps)
{
    LinkedTcpClient client;
    endAFrameWithAWrappingLength(client, "68 f8ffff7f 0000 00 00 ff 16"); // 0 start, 1 length 2^31 - 8, 9 command, 10
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), -2); // too short for a code
}

TEST(TcpApiRecvInt, readsNothingPastAFrameWhoseLengthWraps)
{
    LinkedTcpClient client;
    endAFrameWithAWrappingLength(client, "68 f8ffff7f 0000 00 00 30 16");
    EXPECT_EQ(client.recvInt(), -5);
}

// 10 the end byte, also the low byte of a count of 22
static const char countOf22[] = "68 f8ffff7f 0000 00 00 30 16000000";

TEST(TcpApiRecvBytes, readsNothingPastAFrameWhoseLengthWraps)
{
    LinkedTcpClient client;
    endAFrameWithAWrappingLength(client, countOf22);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(0, out), -5);
    EXPECT_TRUE(out.empty());
}

TEST(TcpApiRecvInts, readsNothingPastAFrameWhoseLengthWraps)
{
    LinkedTcpClient client;
    endAFrameWithAWrappingLength(client, countOf22);
    std::vector<int> out;
    EXPECT_EQ(client.recvInts(0, out), -5);
    EXPECT_TRUE(out.empty());
}

TEST(TcpApiRecvStrings, readsNothingPastAFrameWhoseLengthWraps)
{
    LinkedTcpClient client;
    endAFrameWithAWrappingLength(client, countOf22);
    QStringList out;
    EXPECT_EQ(client.recvStrings(0, out), -5);
    EXPECT_TRUE(out.isEmpty());
}

TEST(SocketApiAddHeader, wrapsTheCounterFromAnyValue)
{
    OpenTcpClient client;
    QByteArray frame;
    client.sendSeq = INT_MAX;
    client.addHeader(1, 0, 0, frame);
    EXPECT_EQ(hex(frame), "68 00 00 00 00 ff ff 00 00 01");
    EXPECT_EQ(client.sendSeq, 0);
    client.sendSeq = -1;
    client.addHeader(1, 0, 0, frame);
    EXPECT_EQ(client.sendSeq, 0);
}

TEST(TcpApiRecvFrame, leavesACopyUnchanged)
{
    LinkedTcpClient client;
    int len = 0;
    client.give(reply7);
    EXPECT_EQ(client.recvDatas(len), 1);
    const QByteArray copy = client.recvFrame;
    EXPECT_EQ(client.sendDatas(1), 1);
    EXPECT_TRUE(client.holdsNoFrame());
    client.give(greeting);
    EXPECT_EQ(client.recvInt(), 1);
    EXPECT_EQ(hex(copy), hex(reply7));
}

TEST(TcpApiRecvFrame, neverModifiesBorrowedBytes)
{
    char bytes[] = {0x68, 4, 0, 0, 0, 0, 0, 0, 0, 0x30, 7};
    const QByteArray before(bytes, sizeof bytes);
    LinkedTcpClient client;
    client.recvFrame = QByteArray::fromRawData(bytes, sizeof bytes);
    EXPECT_EQ(client.sendDatas(1), 1); // drops it
    EXPECT_TRUE(client.holdsNoFrame());
    client.give(greeting);
    EXPECT_EQ(client.recvInt(), 1);
    client.recvFrame = QByteArray::fromRawData(bytes, sizeof bytes);
    client.recvFrameSize = 17;
    client.give("0000000000 16"_hex); // its continuation
    EXPECT_EQ(client.recvInt(), 7);
    EXPECT_EQ(hex(QByteArray(bytes, sizeof bytes)), hex(before));
}

TEST(TcpApiConnect, acceptsItsOwnStoredAddress)
{
    OpenTcpClient client;
    client.serverHost = "127.0.0.1";
    client.serverPort = 1;
    EXPECT_EQ(client.connect(client.serverHost, client.serverPort), -1);
    EXPECT_EQ(client.serverHost, "127.0.0.1");
    EXPECT_EQ(client.serverPort, 1);
}
