#include "support/frames.h"
#include "support/openUdpClient.h"

#include "tcpApi.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <functional>
#include <random>
#include <string>
#include <vector>

// --- One datagram ---

TEST(UdpApiRecvDatas, keepsTheWholeFrameAndReturnsItsPayloadLength)
{
    const QByteArray frame = "68"       //  0 start
                             "03000000" //  1 length
                             "3412"     //  5 sequence
                             "00"       //  7 arg2
                             "00"       //  8 arg1
                             "10"       //  9 command
                             "aabbcc"   // 10 payload
                             "beef"     // 13 checksum, any
                             "16"_hex;  // 15 end
    LinkedUdpClient client;
    client.give(frame);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(len, 3);
    EXPECT_EQ(hex(client.recvFrame), hex(frame));
    EXPECT_EQ(client.recvFrameSize, 16);
    EXPECT_EQ(client.link(), "up, open");
}

TEST(UdpApiRecvDatas, acceptsAFrameWithoutPayload)
{
    LinkedUdpClient client;
    client.give(noPayload);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(len, 0);
    EXPECT_EQ(hex(client.recvFrame), hex(noPayload));
}

TEST(UdpApiRecvDatas, acceptsTheLongestDatagram)
{
    const QByteArray frame = "68 d6ff0000 0000 00 00 10"_hex + QByteArray(65494, 'x') + "0000 16"_hex; // 65507 bytes
    LinkedUdpClient client;
    client.give(frame);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(len, 65494);
    EXPECT_TRUE(client.recvFrame == frame);
}

TEST(UdpApiRecvDatas, acceptsEveryCommandExceptThatOfAnErrorFrame)
{
    LinkedUdpClient client;
    QByteArray frame = reply7;
    for (int command = 0; command < 0xff; ++command) {
        SCOPED_TRACE(command);
        frame[9] = char(command);
        client.give(frame);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 1);
        EXPECT_EQ(hex(client.recvFrame), hex(frame));
        client.dropFrame();
    }
}

TEST(UdpApiRecvDatas, skipsGarbageBeforeTheStartByte)
{
    LinkedUdpClient client;
    client.give("00 11"_hex + reply7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
}

TEST(UdpApiRecvDatas, returnsZeroOnADatagramOfGarbage)
{
    LinkedUdpClient client;
    client.give("00 11 16"_hex);
    client.give(reply7);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_TRUE(client.holdsNoFrame());
    EXPECT_EQ(len, -99);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_EQ(client.recvDatas(len), 1); // the next datagram needed another call
}

TEST(UdpApiRecvDatas, losesTheSecondFrameOfADatagram)
{
    LinkedUdpClient client;
    client.give(reply7 + errorMinus7);
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 1);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7));
    client.dropFrame();
    client.quickly();
    EXPECT_EQ(client.recvDatas(len), 0); // a time-out
    EXPECT_EQ(client.link(), "up, open");
}

// --- Partial frames ---

TEST(UdpApiRecvDatas, returnsZeroOnAPartialFrameAndCompletesItWithTheNextDatagram)
{
    for (int at = 1; at < reply7.size(); ++at) {
        SCOPED_TRACE(at);
        LinkedUdpClient client;
        client.give(reply7.left(at));
        client.give(reply7.mid(at));
        int len = -99;
        EXPECT_EQ(client.recvDatas(len), 0);
        EXPECT_EQ(len, -99);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(at)));
        EXPECT_EQ(client.recvFrameSize, at < 10 ? 0 : 17);
        EXPECT_EQ(client.recvDatas(len), 1);
        EXPECT_EQ(len, 4);
        EXPECT_EQ(hex(client.recvFrame), hex(reply7));
    }
}

TEST(UdpApiRecvDatas, keepsAPartialFrameAcrossATimeOut)
{
    LinkedUdpClient client;
    client.give(reply7.left(12));
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), 0);
    client.setRecvOverTm(20);
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
    client.give(reply7.mid(12));
    client.setRecvOverTm(5000);
    EXPECT_EQ(client.recvDatas(len), 1);
}

// --- Waiting ---

TEST(UdpApiRecvDatas, returnsZeroOnATimeOutAndLeavesTheLink)
{
    LinkedUdpClient client;
    client.setRecvOverTm(50);
    const auto start = std::chrono::steady_clock::now();
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
    EXPECT_EQ(len, -99);
    EXPECT_EQ(client.link(), "up, open");

    client.connected = false;
    EXPECT_EQ(client.recvDatas(len), 0);
    EXPECT_EQ(client.link(), "down, open");
}

TEST(UdpApiRecvDatas, returnsMinusOneOnAFailedWaitAndLeavesTheLink)
{
    LinkedUdpClient client;
    client.give(reply7);
    client.recvFrame = reply7.left(3);
    client.setRecvOverTm(-1); // no time to wait
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_EQ(len, -99);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(3)));
}

// --- Failed reads ---

TEST(UdpApiRecvDatas, closesOnAnEmptyDatagram)
{
    LinkedUdpClient client;
    client.give("");
    client.recvFrame = reply7.left(3);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(len, -99);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(3))); // kept
}

TEST(UdpApiRecvDatas, closesAfterThePeersPortRefused)
{
    LinkedUdpClient client;
    client.refuse();
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(UdpApiRecvDatas, closesOnADatagramWithoutAReadBuffer)
{
    DatagramPeer peer;
    OpenUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", peer.port()), 1);
    peer.give(client.localPort(), reply7);
    int len = -99;
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.recvBuffer, nullptr);
    EXPECT_EQ(len, -99);
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(UdpApiRecvDatas, failsOnAClosedSocketAfterTheWait)
{
    LinkedUdpClient client;
    client.close();
    client.connected = true;
    client.setRecvOverTm(30);
    const auto start = std::chrono::steady_clock::now();
    int len = 0;
    EXPECT_EQ(client.recvDatas(len), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
    EXPECT_EQ(client.link(), "down, closed");
}

// --- Refused frames ---

TEST(UdpApiRecvDatas, dropsAFrameThatFailsItsCheck)
{
    const QByteArray frames[] = {
        wrongEnd,
        "68 fdffffff 0000 00 00 10 16"_hex,   // length -3: size 10
        "68 f4ffffff 0000 00 00 10 0000"_hex, // length -12: size 1
    };
    for (const QByteArray& frame : frames) {
        SCOPED_TRACE(hex(frame));
        LinkedUdpClient client;
        client.give(frame);
        client.give(reply7);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 0);
        EXPECT_TRUE(client.holdsNoFrame());
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_EQ(client.recvDatas(len), 1);
    }
}

TEST(UdpApiRecvDatas, returnsTheCodeOfAnErrorFrameWithTheLinkUp)
{
    const struct {
        QByteArray frame;
        int result;
    } cases[] = {
        {errorMinus7, -7},
        {error0, 0},
        {error5, 5},
        {error1, 1},                                                     // success, with no frame
        {"68 08000000 0000 00 00 ff f9ffffff 01020304 0000 16"_hex, -7}, // the first four bytes
        {"68 03000000 0000 00 00 ff f9ffff 0000 16"_hex, -2},
        {errorOfTwoBytes, -2},
        {errorOfNoBytes, -2},
        {"68 feffffff 0000 00 00 ff 16"_hex, -2}, // length -2
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(hex(expected.frame));
        LinkedUdpClient client;
        client.give(expected.frame);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), expected.result);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(UdpApiRecvDatas, acceptsALengthDownToMinusTwo)
{
    for (const QByteArray& frame : {"68 ffffffff 0000 00 00 10 00 16"_hex, "68 feffffff 0000 00 00 10 16"_hex}) {
        SCOPED_TRACE(hex(frame));
        LinkedUdpClient client;
        client.give(frame);
        int len = 0;
        EXPECT_EQ(client.recvDatas(len), 1);
        EXPECT_EQ(len, frame.size() - 13);
        EXPECT_EQ(hex(client.recvFrame), hex(frame));
    }
}

// --- recvInt ---

TEST(UdpApiRecvInt, returnsTheIntegerOfTheReply)
{
    LinkedUdpClient client;
    const struct {
        QByteArray frame;
        int result;
    } cases[] = {
        {reply7, 7},
        {"68 04000000 0000 00 00 10 00000000 0000 16"_hex, 0},
        {"68 04000000 0000 00 00 10 ffffffff 0000 16"_hex, -1},
        {"68 04000000 0000 00 00 10 00000080 0000 16"_hex, INT_MIN},
        {"68 08000000 0000 00 00 10 07000000 01020304 0000 16"_hex, 7}, // bytes after it are ignored
        {"68 33000000 0000 00 00 10 09000000"_hex + QByteArray(47, '\0') + "0000 16"_hex, 9},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(hex(expected.frame));
        client.give(expected.frame);
        EXPECT_EQ(client.recvInt(), expected.result);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(UdpApiRecvInt, leavesTheFlagWhateverArrives)
{
    const struct {
        QByteArray frame;
        int result;
    } cases[] = {
        {reply7, 7},           {errorMinus7, -7},
        {error0, 0},           {error5, 5},
        {error1, -5}, // no payload is left
        {errorOfTwoBytes, -2}, {errorOfNoBytes, -2},
        {wrongEnd, 0},         {threeBytesOfPayload, -5},
        {noPayload, -5},       {"68 feffffff 0000 00 00 10 16"_hex, -5}, // length -2
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(hex(expected.frame));
        for (const bool flag : {true, false}) {
            LinkedUdpClient client;
            client.connected = flag;
            client.give(expected.frame);
            EXPECT_EQ(client.recvInt(), expected.result);
            EXPECT_EQ(client.link(), flag ? "up, open" : "down, open");
            EXPECT_TRUE(client.holdsNoFrame());
        }
    }
}

TEST(UdpApiRecvInt, returnsZeroOnATimeOutWithTheLinkUp)
{
    LinkedUdpClient client;
    client.quickly();
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(client.link(), "up, open");
}

TEST(UdpApiRecvInt, keepsAPartialFrameForTheNextDatagram)
{
    LinkedUdpClient client;
    client.give(reply7.left(12));
    client.give(reply7.mid(12));
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
    EXPECT_EQ(client.recvInt(), 7);
}

TEST(UdpApiRecvInt, closesOnAnEmptyDatagram)
{
    LinkedUdpClient client;
    client.give("");
    EXPECT_EQ(client.recvInt(), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

// --- recvBytes, recvInts and recvStrings ---

// Frames of one and two elements, received into a list that already has one element. `came` is the number of added
// elements.
struct UdpListForm {
    const char* name;
    QByteArray one;
    QByteArray two;
    std::function<int(OpenUdpClient&, int count, int& came)> receive;
};

static const UdpListForm listForms[] = {
    {"recvBytes", "68 05000000 0000 00 00 10 01000000 01 0000 16"_hex,
     "68 06000000 0000 00 00 10 02000000 0203 0000 16"_hex,
     [](OpenUdpClient& client, int count, int& came) {
         std::vector<unsigned char> out = {0xee};
         const int result = client.recvBytes(count, out);
         came = int(out.size()) - 1;
         return result;
     }},
    {"recvInts", "68 08000000 0000 00 00 10 01000000 01000000 0000 16"_hex,
     "68 0c000000 0000 00 00 10 02000000 02000000 03000000 0000 16"_hex,
     [](OpenUdpClient& client, int count, int& came) {
         std::vector<int> out = {0xee};
         const int result = client.recvInts(count, out);
         came = int(out.size()) - 1;
         return result;
     }},
    {"recvStrings", "68 09000000 0000 00 00 10 01000000 0300 0100 61 0000 16"_hex,
     "68 0e000000 0000 00 00 10 02000000 0300 0100 62 0300 0100 63 0000 16"_hex,
     [](OpenUdpClient& client, int count, int& came) {
         QStringList out = {"ee"};
         const int result = client.recvStrings(count, out);
         came = out.size() - 1;
         return result;
     }},
};

static const QByteArray emptyList = "68 04000000 0000 00 00 10 00000000 0000 16"_hex; // of any element

TEST(UdpApiRecvLists, readASingleDatagramForACountOfZeroOrBelow)
{
    for (const UdpListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        for (const int count : {0, -1, INT_MIN}) {
            LinkedUdpClient client;
            client.give(form.one);
            client.give(form.two);
            int came = -99;
            EXPECT_EQ(form.receive(client, count, came), 1);
            EXPECT_EQ(came, 1);
            EXPECT_TRUE(client.holdsNoFrame());
            EXPECT_EQ(form.receive(client, count, came), 1);
            EXPECT_EQ(came, 2);
        }
    }
}

TEST(UdpApiRecvLists, collectDatagramsUpToTheCountIncludingExistingElements)
{
    const struct {
        int count;
        int came;
    } cases[] = {{1, 1}, {2, 1}, {3, 3}, {4, 3}, {5, 4}};
    for (const UdpListForm& form : listForms) {
        for (const auto& expected : cases) {
            SCOPED_TRACE(std::string(form.name) + " of " + std::to_string(expected.count));
            LinkedUdpClient client;
            client.give(form.one);
            client.give(form.two);
            client.give(form.one);
            client.give(reply7);
            int came = -99;
            EXPECT_EQ(form.receive(client, expected.count, came), 1);
            EXPECT_EQ(came, expected.came);
            EXPECT_EQ(client.link(), "up, open");
        }
    }
}

TEST(UdpApiRecvLists, continueAfterAnEmptyList)
{
    for (const UdpListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give(emptyList);
        client.give(form.one);
        int came = -99;
        EXPECT_EQ(form.receive(client, 2, came), 1);
        EXPECT_EQ(came, 1);
    }
}

TEST(UdpApiRecvLists, keepTheCollectedElementsOnATimeOut)
{
    for (const UdpListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give(form.one);
        ASSERT_EQ(client.socket->isReadable(5000), 1);
        client.quickly();
        int came = -99;
        EXPECT_EQ(form.receive(client, 10, came), 0);
        EXPECT_EQ(came, 1);
        EXPECT_EQ(client.link(), "up, open");
    }
}

TEST(UdpApiRecvLists, keepTheElementsBeforeARefusedFrame)
{
    const struct {
        QByteArray frame;
        int result;
    } cases[] = {
        {errorMinus7, -7},         {error0, 0},   {error5, 5},
        {errorOfTwoBytes, -2},     {wrongEnd, 0}, {reply7.left(12), 0},
        {threeBytesOfPayload, -5}, {error1, -5}, // no payload is left
    };
    for (const UdpListForm& form : listForms) {
        for (const auto& expected : cases) {
            SCOPED_TRACE(form.name + hex(expected.frame));
            LinkedUdpClient client;
            client.give(form.one);
            client.give(expected.frame);
            int came = -99;
            EXPECT_EQ(form.receive(client, 10, came), expected.result);
            EXPECT_EQ(came, 1);
            EXPECT_EQ(client.link(), "up, open");
        }
    }
}

TEST(UdpApiRecvLists, refuseACountBeyondThePayload)
{
    for (const UdpListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give("68 06000000 0000 00 00 10 05000000 0102 0000 16"_hex);
        int came = -99;
        EXPECT_EQ(form.receive(client, 0, came), -5);
        EXPECT_EQ(came, 0);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(UdpApiRecvLists, closeTheSocketWhenAReadFails)
{
    for (const UdpListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give(form.one);
        client.give("");
        int came = -99;
        EXPECT_EQ(form.receive(client, 10, came), -1);
        EXPECT_EQ(came, 1);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

TEST(UdpApiRecvLists, timeOutWaitingForTheSecondFrameOfADatagram)
{
    for (const UdpListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give(form.one + form.two);
        ASSERT_EQ(client.socket->isReadable(5000), 1);
        client.quickly();
        int came = -99;
        EXPECT_EQ(form.receive(client, 4, came), 0);
        EXPECT_EQ(came, 1);
    }
}

// --- The elements ---

TEST(UdpApiRecvBytes, appendsTheBytes)
{
    LinkedUdpClient client;
    client.give("68 07000000 0000 00 00 10 02000000 0aff0c 0000 16"_hex); // one more than counted
    std::vector<unsigned char> out = {1};
    EXPECT_EQ(client.recvBytes(0, out), 1);
    EXPECT_EQ(out, (std::vector<unsigned char>{1, 10, 255}));
}

TEST(UdpApiRecvInts, appendsTheIntegers)
{
    LinkedUdpClient client;
    client.give("68 0c000000 0000 00 00 10 02000000 01000000 feffffff 0000 16"_hex);
    std::vector<int> out = {9};
    EXPECT_EQ(client.recvInts(0, out), 1);
    EXPECT_EQ(out, (std::vector<int>{9, 1, -2}));
}

TEST(UdpApiRecvStrings, appendsTheTexts)
{
    LinkedUdpClient client;
    client.give("68 11000000 0000 00 00 10 02000000 0500 0300 616263 0400 0200 c3bc 0000 16"_hex);
    QStringList out = {"first"};
    EXPECT_EQ(client.recvStrings(0, out), 1);
    EXPECT_EQ(out.join('|').toStdString(), "first|abc|\xc3\xbc");
}

TEST(UdpApiRecvStrings, returnsZeroForAnItemBeyondThePayload)
{
    LinkedUdpClient client;
    client.give("68 0b000000 0000 00 00 10 02000000 0300 0100 78 0100 0000 16"_hex);
    QStringList out = {"first"};
    EXPECT_EQ(client.recvStrings(0, out), 0);
    EXPECT_EQ(out.join('|').toStdString(), "first|x"); // only one byte remains for the second item
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

// --- Reassembly and check ---

TEST(UdpApiRecvData, assemblesTheSameFramesFromPiecesOfAnySize)
{
    const QByteArray frame = "68 02000000 3412 00 00 10 6816 abcd 16"_hex;
    const QByteArray stream = "0011"_hex + frame + "1616"_hex + frame + frame;
    for (int pieceSize = 1; pieceSize <= stream.size(); ++pieceSize) {
        SCOPED_TRACE(pieceSize);
        OpenUdpClient client;
        int frames = 0;
        for (int at = 0; at < stream.size(); at += pieceSize) {
            const std::vector<char> piece = heapBytes(stream.mid(at, pieceSize));
            int pos = 0;
            while (client.recvData(piece.data(), int(piece.size()), pos)) {
                EXPECT_EQ(hex(client.recvFrame), hex(frame));
                int len = -99;
                EXPECT_TRUE(client.isRecvOk(len));
                EXPECT_EQ(len, 2);
                client.dropFrame();
                ++frames;
            }
            EXPECT_EQ(pos, int(piece.size()));
        }
        EXPECT_EQ(frames, 3);
    }
}

class OpenTcpReassembly : public gqdb::CTcpAPI {
public:
    using CTcpAPI::recvFrame;
    using CTcpAPI::recvFrameSize;
};

// Both clients split the same streams in the same way, from any state of the two fields.
TEST(UdpApiRecvData, matchesTheTcpClient)
{
    static const unsigned char likely[] = {0x68, 0x68, 0x00, 0x00, 0x00, 0x00, 0x01, 0x05,
                                           0x16, 0xff, 0xff, 0xff, 0xf3, 0xfe, 0x7f, 0x80};
    static const int sizes[] = {0, 0, 0, -1, INT_MIN, 1, 10, 11, 13, 20, INT_MAX};
    std::mt19937 random{20180314}; // fixed, so that all runs use the same streams
    const auto below = [&random](size_t limit) { return size_t(random()) % limit; };
    const auto bytes = [&](size_t count) {
        QByteArray result;
        for (; count > 0; --count)
            result.append(char(likely[below(std::size(likely))]));
        return result;
    };

    OpenUdpClient client;
    OpenTcpReassembly model;
    for (int round = 0; round < 5000 && !testing::Test::HasFailure(); ++round) {
        client.recvFrame = model.recvFrame = bytes(below(2) * below(25));
        client.recvFrameSize = model.recvFrameSize = sizes[below(std::size(sizes))];
        const QByteArray stream = bytes(1 + below(40));
        SCOPED_TRACE(hex(model.recvFrame) + " " + std::to_string(model.recvFrameSize) + ", " + hex(stream));
        const std::vector<char> buf = heapBytes(stream);
        int pos = 0;
        int modelPos = 0;
        EXPECT_EQ(client.recvData(buf.data(), stream.size(), pos), model.recvData(buf.data(), stream.size(), modelPos));
        EXPECT_EQ(pos, modelPos);
        EXPECT_EQ(hex(client.recvFrame), hex(model.recvFrame));
        EXPECT_EQ(client.recvFrameSize, model.recvFrameSize);
        int len = -99;
        int modelLen = -99;
        EXPECT_EQ(client.isRecvOk(len), model.isRecvOk(modelLen));
        EXPECT_EQ(len, modelLen);
    }
}

// Few random frames are valid. These are, except for one fault each.
TEST(UdpApiIsRecvOk, matchesTheTcpClient)
{
    OpenUdpClient client;
    OpenTcpReassembly model;
    for (int held = 0; held <= 20; ++held) {
        for (int length = -5; length <= 8; ++length) {
            for (const int frameSize : {0, 10, 11, 12, 13, 14, held - 1, held, held + 1}) {
                SCOPED_TRACE(std::to_string(held) + ", " + std::to_string(length) + ", " + std::to_string(frameSize));
                QByteArray frame(held, '\x16');
                for (int offset = 1; offset <= 4 && offset < held; ++offset)
                    frame[offset] = char(unsigned(length) >> 8 * (offset - 1));
                client.recvFrame = model.recvFrame = frame;
                client.recvFrameSize = model.recvFrameSize = frameSize;
                int len = -99;
                int modelLen = -99;
                EXPECT_EQ(client.isRecvOk(len), model.isRecvOk(modelLen));
                EXPECT_EQ(len, modelLen);
            }
        }
    }
}
