// Datagrams that are truncated, duplicated, out of order, late or from others, and signals that interrupt a wait:
// checks the client's result, its next request, and that no descriptor is left open.

#include "support/descriptorsKept.h"
#include "support/frames.h"
#include "support/interrupted.h"
#include "support/openUdpClient.h"

#include <string>
#include <vector>

#include <sys/socket.h>

class UdpApiRequestFault : public DescriptorsKept {
protected:
    // The result of a request and the link state after it.
    std::string askOnce()
    {
        const int result = client.requestInt(0x30, 9);
        return std::to_string(result) + ": " + client.link();
    }

    LinkedUdpClient client;
};

static const std::string answered = "7: up, open";

TEST_F(UdpApiRequestFault, returnsZeroOnAReplyTruncatedAtAnyByteAndContinues)
{
    for (int size = 1; size < reply7.size(); ++size) {
        SCOPED_TRACE(size);
        client.give(reply7.left(size));
        EXPECT_EQ(askOnce(), "0: up, open");
        EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(size)));
        client.give(reply7); // the request drops the part
        EXPECT_EQ(askOnce(), answered);
    }
}

TEST_F(UdpApiRequestFault, closesOnAnEmptyDatagramAndRecoversByConnect)
{
    client.give({});
    EXPECT_EQ(askOnce(), "-1: down, closed");
    EXPECT_EQ(client.connect("127.0.0.1", client.peer.port()), 1);
    client.give(reply7);
    EXPECT_EQ(askOnce(), answered);
}

// Sequence numbers are not compared: after a duplicate, each request gets the reply to the previous one.
TEST_F(UdpApiRequestFault, lagsByOneReplyAfterADuplicate)
{
    client.give(reply7);
    client.give(reply7);
    EXPECT_EQ(client.requestInt(0x30, 1), 7);
    for (int request = 8; request < 12; ++request) {
        client.give("68 04000000 0000 00 00 30"_hex + QByteArray(1, char(request)) + "000000 0000 16"_hex);
        EXPECT_EQ(client.requestInt(0x30, request), request - 1);
    }
    EXPECT_EQ(client.link(), "up, open");
}

TEST_F(UdpApiRequestFault, takesTheDatagramsOfAListInOrderOfArrival)
{
    const QByteArray request = "68 00000000 0000 00 00 31 0000 16"_hex;
    const QByteArray first = "68 08000000 0000 00 00 31 01000000 01000000 0000 16"_hex;
    const QByteArray second = "68 08000000 0000 00 00 31 01000000 02000000 0000 16"_hex;

    std::vector<int> out;
    client.give(second);
    client.give(first);
    EXPECT_EQ(client.requestInts(request, 2, out), 1);
    EXPECT_EQ(out, (std::vector<int>{2, 1}));

    out.clear();
    client.give(first);
    client.give(first); // the duplicate completes the count
    EXPECT_EQ(client.requestInts(request, 2, out), 1);
    EXPECT_EQ(out, (std::vector<int>{1, 1}));

    out.clear();
    client.quickly();
    client.give(second); // the first one is lost
    EXPECT_EQ(client.requestInts(request, 2, out), 0);
    EXPECT_EQ(out, (std::vector<int>{2}));
    EXPECT_EQ(client.link(), "up, open");
    client.give(reply7);
    EXPECT_EQ(askOnce(), answered);
}

// A connected socket receives only what its peer sent.
TEST_F(UdpApiRequestFault, ignoresDatagramsFromOthers)
{
    DatagramPeer stranger;
    const QByteArray forged = "68 04000000 0000 00 00 30 63000000 0000 16"_hex; // 99
    stranger.give(client.localPort(), forged);
    client.give(reply7);
    stranger.give(client.localPort(), forged);
    EXPECT_EQ(askOnce(), answered);
    client.quickly();
    EXPECT_EQ(askOnce(), "0: up, open");
}

TEST_F(UdpApiRequestFault, isInterruptedByASignalWithTheLinkUp)
{
    for (const int flags : {0, SA_RESTART}) {
        EXPECT_EQ(interrupted([&] { return client.requestInt(0x30, 9); }, flags), -1);
        EXPECT_EQ(client.link(), "up, open");
        client.give(reply7);
        EXPECT_EQ(askOnce(), answered);
    }
}
