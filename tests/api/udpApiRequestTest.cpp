#include "support/frames.h"
#include "support/openUdpClient.h"

#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

using gqdb::CUdpAPI;

// A complete request frame of a derived client, shorter than the frames that the library builds.
static const QByteArray ownFrame = "68 02000000 3412 00 00 40 abcd 0000 16"_hex;

// The bytes before the tail, padded with zeros to 61 bytes, and the tail: a frame of 64 bytes.
static QByteArray padded(const QByteArray& bytes)
{
    return bytes + QByteArray(61 - bytes.size(), '\0') + "0000 16"_hex;
}

// --- addEnd ---

static std::string ended(QByteArray data, int result = 1)
{
    EXPECT_EQ(CUdpAPI::addEnd(data), result);
    return hex(data);
}

TEST(UdpApiAddEnd, padsABareHeader)
{
    EXPECT_EQ(ended("68 00000000 0000 00 00 10"_hex), hex("68"                                 //  0 start
                                                          "33000000"                           //  1 length 51
                                                          "0000"                               //  5 sequence
                                                          "00"                                 //  7 arg2
                                                          "00"                                 //  8 arg1
                                                          "10"                                 //  9 command
                                                          "0000000000000000000000000000000000" // 10 padding
                                                          "0000000000000000000000000000000000" // 27
                                                          "0000000000000000000000000000000000" // 44
                                                          "0000"                               // 61 checksum
                                                          "16"_hex));                          // 63 end
}

TEST(UdpApiAddEnd, padsUpTo60BytesTo61)
{
    const QByteArray header = "68 33000000 0000 00 00 10"_hex;
    for (int size = 10; size <= 60; ++size) {
        SCOPED_TRACE(size);
        const QByteArray payload(size - 10, 'x');
        EXPECT_EQ(ended("68 00000000 0000 00 00 10"_hex + payload),
                  hex(header + payload + QByteArray(61 - size, '\0') + "0000 16"_hex));
    }
}

TEST(UdpApiAddEnd, padsNothingFrom61BytesOn)
{
    EXPECT_EQ(ended("68 00000000 0000 00 00 10"_hex + QByteArray(51, 'x')),
              hex("68 33000000 0000 00 00 10"_hex + QByteArray(51, 'x') + "0000 16"_hex));
    EXPECT_EQ(ended("68 00000000 0000 00 00 10"_hex + QByteArray(52, 'x')),
              hex("68 34000000 0000 00 00 10"_hex + QByteArray(52, 'x') + "0000 16"_hex)); // 65 bytes
    EXPECT_EQ(ended("68 00000000 0000 00 00 10"_hex + QByteArray(0x10203, 'x')),
              hex("68 03020100 0000 00 00 10"_hex + QByteArray(0x10203, 'x') + "0000 16"_hex));
}

TEST(UdpApiAddEnd, needsNoCompleteHeader)
{
    EXPECT_EQ(ended("01020304"_hex), hex(padded("01 33000000"_hex)));
    EXPECT_EQ(ended("010203040506070809"_hex), hex(padded("01 33000000 06070809"_hex)));
}

TEST(UdpApiAddEnd, refusesLessThanFourBytes)
{
    EXPECT_EQ(ended(""_hex, 0), "");
    EXPECT_EQ(ended("01"_hex, 0), "01");
    EXPECT_EQ(ended("010203"_hex, 0), "01 02 03");
}

TEST(UdpApiAddEnd, leavesACopyOfTheArrayUnchanged)
{
    const QByteArray kept = "68 00000000 0000 00 00 10"_hex;
    QByteArray data = kept;
    EXPECT_EQ(CUdpAPI::addEnd(data), 1);
    EXPECT_EQ(hex(kept), "68 00 00 00 00 00 00 00 00 10");
}

TEST(UdpApiAddEnd, hidesTheBaseOperation)
{
    QByteArray plain = "68 00000000 0000 00 00 10"_hex;
    EXPECT_EQ(gqdb::CSocketAPI::addEnd(plain), 1);
    EXPECT_EQ(plain.size(), 13);

    struct DerivedClient : OpenUdpClient {
        QByteArray frame()
        {
            QByteArray data;
            addHeader(0x10, 0, 0, data);
            addEnd(data);
            return data;
        }
    } client;
    EXPECT_EQ(client.frame().size(), 64);
}

// --- Sending ---

TEST(UdpApiSendDatas, sendsTheFrameUnchangedInOneDatagram)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.sendDatas(ownFrame), 1);
    EXPECT_EQ(hex(client.take()), hex(ownFrame));   // not padded
    EXPECT_EQ(client.sendDatas("01 02 03"_hex), 1); // not a frame
    EXPECT_EQ(hex(client.take()), "01 02 03");
    EXPECT_EQ(client.sendSeq, 0);
}

TEST(UdpApiSendInt, sendsOneInteger)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.sendInt(6, 1), 1);
    EXPECT_EQ(hex(client.take()), hex("68"                             //  0 start
                                      "33000000"                       //  1 length 51
                                      "0000"                           //  5 sequence
                                      "00"                             //  7 arg2
                                      "00"                             //  8 arg1
                                      "06"                             //  9 command
                                      "01000000"                       // 10 the integer
                                      "000000000000000000000000000000" // 14 padding
                                      "00000000000000000000000000000000"
                                      "00000000000000000000000000000000"
                                      "0000"      // 61 checksum
                                      "16"_hex)); // 63 end

    EXPECT_EQ(client.sendInt(0xfe, -2), 1);
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0100 00 00 fe feffffff"_hex)));
}

TEST(UdpApiSendInts, sendsTheCountAndTheIntegers)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.sendInts(0x23, {1, -1, 0x01020304}), 1);
    EXPECT_EQ(hex(client.take()), hex(padded("68"               //  0 start
                                             "33000000"         //  1 length 51
                                             "0000"             //  5 sequence
                                             "00"               //  7 arg2
                                             "00"               //  8 arg1
                                             "23"               //  9 command
                                             "03000000"         // 10 count
                                             "01000000"         // 14 first
                                             "ffffffff"         // 18 second
                                             "04030201"_hex))); // 22 third
    EXPECT_EQ(client.sendInts(0x24, std::vector<int>()), 1);
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0100 00 00 24 00000000"_hex)));
}

TEST(UdpApiSendInts, sendsALongListWithoutPadding)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.sendInts(0x23, std::vector<int>(11, 7)), 1); // 58 bytes before the tail
    QByteArray eleven = "68 33000000 0000 00 00 23 0b000000"_hex;
    for (int i = 0; i < 11; ++i)
        eleven += "07000000"_hex;
    EXPECT_EQ(hex(client.take()), hex(padded(eleven)));

    EXPECT_EQ(client.sendInts(0x23, std::vector<int>(12, 7)), 1); // 62 bytes
    QByteArray twelve = "68 34000000 0100 00 00 23 0c000000"_hex;
    for (int i = 0; i < 12; ++i)
        twelve += "07000000"_hex;
    EXPECT_EQ(hex(client.take()), hex(twelve + "0000 16"_hex));
}

TEST(UdpApiSendDatas, countsTheFramesOfAllForms)
{
    LinkedUdpClient client;
    client.sendSeq = 65535;
    client.sendInt(0x22, 5);
    client.sendInts(0x23, {6});
    client.sendDatas(ownFrame); // contains its own number
    client.sendInt(0x24, 7);
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 ffff 00 00 22 05000000"_hex)));
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0000 00 00 23 01000000 06000000"_hex)));
    EXPECT_EQ(hex(client.take()), hex(ownFrame));
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0100 00 00 24 07000000"_hex)));
}

TEST(UdpApiSendDatas, dropsThePartialFrameOfAnEarlierReply)
{
    LinkedUdpClient client;
    client.give(reply7.left(12));
    EXPECT_EQ(client.recvInt(), 0);
    EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
    EXPECT_EQ(client.recvFrameSize, 17);
    EXPECT_EQ(client.sendDatas(ownFrame), 1);
    EXPECT_TRUE(client.holdsNoFrame());
    client.give(reply7);
    EXPECT_EQ(client.recvInt(), 7);
}

TEST(UdpApiSendDatas, leavesTheFlagDown)
{
    LinkedUdpClient client;
    client.connected = false;
    EXPECT_EQ(client.sendDatas(ownFrame), 1);
    EXPECT_EQ(client.link(), "down, open");
}

TEST(UdpApiSendDatas, closesWhenTheSendFails)
{
    LinkedUdpClient client;
    client.refuse();
    client.recvFrame = reply7.left(12);
    client.recvFrameSize = 17;
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_TRUE(client.holdsNoFrame()); // dropped nevertheless
}

TEST(UdpApiSendDatas, closesOnAFrameTooLongForADatagram)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.sendDatas(QByteArray(65507, 'x')), 1);
    EXPECT_EQ(client.take().size(), 65507);
    EXPECT_EQ(client.sendDatas(QByteArray(65508, 'x')), -1);
    EXPECT_EQ(client.link(), "down, closed");
}

// The empty datagram is sent, and send(2) returns 0 for it.
TEST(UdpApiSendDatas, closesOnAnEmptyFrame)
{
    LinkedUdpClient client;
    EXPECT_EQ(client.sendDatas(QByteArray()), -1);
    EXPECT_EQ(hex(client.take()), "");
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(UdpApiSendDatas, failsWithoutASocketObjectAndLeavesTheFlag)
{
    OpenUdpClient client;
    delete client.socket;
    client.socket = nullptr;
    client.connected = true;
    client.recvFrame = reply7.left(12);
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_TRUE(client.isConnected());
    EXPECT_TRUE(client.recvFrame.isEmpty());
}

TEST(UdpApiSendDatas, failsAfterCloseInAllForms)
{
    LinkedUdpClient client;
    client.close();
    EXPECT_EQ(client.sendDatas(ownFrame), -1);
    EXPECT_EQ(client.sendInt(0x22, 5), -1);
    EXPECT_EQ(client.sendInts(0x23, {6}), -1);
    EXPECT_EQ(client.link(), "down, closed");
    EXPECT_EQ(client.sendSeq, 2); // unsent frames consume numbers too
    EXPECT_TRUE(client.peer.holdsNone());
}

// --- Requests ---

struct UdpRequestForm {
    const char* name;
    std::function<int(OpenUdpClient&)> call;
    QByteArray frame; // as the client's first frame
    QByteArray reply;
    int result;
};

static const UdpRequestForm requestForms[] = {
    {"requestInt, complete frame", //
     [](OpenUdpClient& client) { return client.requestInt(ownFrame); }, ownFrame, reply7, 7},
    {"requestBytes",
     [](OpenUdpClient& client) {
         std::vector<unsigned char> out = {1};
         const int result = client.requestBytes(ownFrame, 0, out);
         EXPECT_EQ(out, result == 1 ? (std::vector<unsigned char>{1, 2, 3}) : (std::vector<unsigned char>{1}));
         return result;
     },
     ownFrame, "68 06000000 0000 00 00 40 02000000 0203 0000 16"_hex, 1},
    {"requestInts",
     [](OpenUdpClient& client) {
         std::vector<int> out = {1};
         const int result = client.requestInts(ownFrame, 0, out);
         EXPECT_EQ(out, result == 1 ? (std::vector<int>{1, 2, 3}) : (std::vector<int>{1}));
         return result;
     },
     ownFrame, "68 0c000000 0000 00 00 40 02000000 02000000 03000000 0000 16"_hex, 1},
    {"requestStrings",
     [](OpenUdpClient& client) {
         QStringList out = {"a"};
         const int result = client.requestStrings(ownFrame, 0, out);
         EXPECT_EQ(out, result == 1 ? QStringList({"a", "b"}) : QStringList({"a"}));
         return result;
     },
     ownFrame, "68 09000000 0000 00 00 40 01000000 0300 0100 62 0000 16"_hex, 1},
    {"requestInt, one integer", //
     [](OpenUdpClient& client) { return client.requestInt(0x35, 9); }, padded("68 33000000 0000 00 00 35 09000000"_hex),
     reply7, 7},
    {"requestInt, integer list", //
     [](OpenUdpClient& client) {
         return client.requestInt(0x36, std::vector<int>{9, -1});
     },
     padded("68 33000000 0000 00 00 36 02000000 09000000 ffffffff"_hex), reply7, 7},
    {"setState", //
     [](OpenUdpClient& client) { return client.setState(-3); }, padded("68 33000000 0000 00 00 06 fdffffff"_hex),
     reply7, 7},
    {"setTime", //
     [](OpenUdpClient& client) { return client.setTime(0x01020304, -2); },
     padded("68 33000000 0000 00 00 05 02000000 04030201 feffffff"_hex), reply7, 7},
};

TEST(UdpApiRequest, sendsItsFrameAndReadsTheReply)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        ScriptedDatagramPeer server{{form.reply}};
        BufferedUdpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
        EXPECT_EQ(form.call(client), form.result);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_TRUE(client.holdsNoFrame());
        EXPECT_EQ(hex(server.received()[0]), hex(form.frame));
    }
}

TEST(UdpApiRequest, sendsFirstWhateverTheFlag)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.connected = false;
        client.give(form.reply);
        EXPECT_EQ(form.call(client), form.result);
        EXPECT_EQ(hex(client.take()), hex(form.frame));
        EXPECT_EQ(client.link(), "down, open"); // a reply does not set it
    }
}

TEST(UdpApiRequest, returnsTheCodeOfAnErrorFrameWithTheLinkUp)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give(errorMinus7);
        EXPECT_EQ(form.call(client), -7);
        EXPECT_EQ(client.link(), "up, open");
    }
}

TEST(UdpApiRequest, returnsZeroIfTheServerIsSilentWithTheLinkUp)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.quickly();
        EXPECT_EQ(form.call(client), 0);
        EXPECT_EQ(client.link(), "up, open");
    }
}

// The reply to the first request is late and is taken as the reply to the second: sequence numbers are not compared.
TEST(UdpApiRequest, takesALateReplyForTheNextRequest)
{
    LinkedUdpClient client;
    client.quickly();
    EXPECT_EQ(client.requestInt(0x35, 9), 0);
    client.give(reply7);
    client.setRecvOverTm(5000);
    EXPECT_EQ(client.requestInt(0x36, 9), 7);
}

TEST(UdpApiRequest, failsAgainAfterAFailureWithoutReconnecting)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.close();
        for (int attempt = 0; attempt < 2; ++attempt) {
            EXPECT_EQ(form.call(client), -1);
            EXPECT_EQ(client.link(), "down, closed");
            EXPECT_EQ(client.descriptor(), -1);
        }
        EXPECT_TRUE(client.peer.holdsNone());
        EXPECT_EQ(client.connect("127.0.0.1", client.peer.port()), 1); // reopens the link
        client.give(form.reply);
        EXPECT_EQ(form.call(client), form.result);
    }
}

TEST(UdpApiRequest, stopsAtAFailedSend)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.give(form.reply);
        client.refuse();
        EXPECT_EQ(form.call(client), -1);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

TEST(UdpApiRequest, failsWithoutAServer)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        LinkedUdpClient client;
        client.peer.goAway();
        EXPECT_EQ(form.call(client), -1); // the request is sent and refused; the read of the reply fails
        EXPECT_EQ(client.link(), "down, closed");
    }
}

// There is no socket to read from.
TEST(UdpApiRequest, leavesTheFlagWithoutASocketObject)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        OpenUdpClient client;
        delete client.socket;
        client.socket = nullptr;
        client.connected = true;
        EXPECT_EQ(form.call(client), -1);
        EXPECT_TRUE(client.isConnected());
    }
}

TEST(UdpApiRequest, collectsAReplyInSeveralDatagrams)
{
    const std::vector<QByteArray> bytesReply = {"68 06000000 0000 00 00 40 02000000 0203 0000 16"_hex,
                                                "68 05000000 0000 00 00 40 01000000 04 0000 16"_hex};
    const std::vector<QByteArray> intsReply = {"68 08000000 0000 00 00 40 01000000 02000000 0000 16"_hex,
                                               "68 08000000 0000 00 00 40 01000000 03000000 0000 16"_hex};
    const std::vector<QByteArray> textsReply = {"68 09000000 0000 00 00 40 01000000 0300 0100 62 0000 16"_hex,
                                                "68 09000000 0000 00 00 40 01000000 0300 0100 63 0000 16"_hex};
    ScriptedDatagramPeer server{bytesReply, intsReply, textsReply};
    BufferedUdpClient client;
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);

    std::vector<unsigned char> bytes = {1};
    EXPECT_EQ(client.requestBytes(ownFrame, 4, bytes), 1);
    EXPECT_EQ(bytes, (std::vector<unsigned char>{1, 2, 3, 4}));

    std::vector<int> ints = {1};
    EXPECT_EQ(client.requestInts(ownFrame, 3, ints), 1);
    EXPECT_EQ(ints, (std::vector<int>{1, 2, 3}));

    QStringList texts = {"a"};
    EXPECT_EQ(client.requestStrings(ownFrame, 3, texts), 1);
    EXPECT_EQ(texts, QStringList({"a", "b", "c"}));
}

// Programs add requests in a derived class, which uses codec and frame operations by unqualified name.
TEST(UdpApiRequest, worksFromADerivedClient)
{
    struct PointClient : BufferedUdpClient {
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
    ScriptedDatagramPeer server{{"68 0c000000 0000 00 00 50 02000000 14000000 28000000 0000 16"_hex}};
    EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
    std::vector<int> out;
    EXPECT_EQ(client.levels(1001, out), 1);
    EXPECT_EQ(out, (std::vector<int>{20, 40}));
    EXPECT_EQ(hex(server.received()[0]), hex(padded("68 33000000 0000 02 01 50 e9030000 0800"_hex)));
}

// --- A plain client without a read buffer ---

TEST(UdpApiRequest, returnsMinusOneOnAPlainClientIfAReplyArrives)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        ScriptedDatagramPeer server{{form.reply}};
        OpenUdpClient client;
        EXPECT_EQ(client.connect("127.0.0.1", server.port()), 1);
        EXPECT_EQ(form.call(client), -1);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(client.recvBuffer, nullptr);
        EXPECT_EQ(hex(server.received()[0]), hex(form.frame)); // the request was sent
    }
}

TEST(UdpApiRequest, returnsZeroOnAPlainClientIfNoReplyArrives)
{
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        DatagramPeer peer;
        OpenUdpClient client;
        client.setRecvOverTm(20);
        EXPECT_EQ(client.connect("127.0.0.1", peer.port()), 1);
        EXPECT_EQ(form.call(client), 0);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_EQ(hex(peer.take()), hex(form.frame));
    }
}

// Before any connect the descriptor is 0, standard input, which cannot send a datagram.
TEST(UdpApiRequest, failsBeforeAnyConnect)
{
    const int kept = ::dup(STDIN_FILENO);
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    ::dup2(ends[0], STDIN_FILENO);
    for (const UdpRequestForm& form : requestForms) {
        SCOPED_TRACE(form.name);
        BufferedUdpClient client;
        EXPECT_EQ(form.call(client), -1);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(client.descriptor(), 0);
    }
    ::dup2(kept, STDIN_FILENO);
    for (const int descriptor : {kept, ends[0], ends[1]})
        ::close(descriptor);
}

// --- Ready-made commands ---

struct UdpTimedCommand {
    const char* name;
    int (CUdpAPI::*call)();
    QByteArray head; // up to the time
};

static const UdpTimedCommand timedCommands[] = {
    {"systemState", &CUdpAPI::systemState, "68 33000000 0000 00 00 01"_hex},
    {"systemTime", &CUdpAPI::systemTime, "68 33000000 0000 00 00 02"_hex},
    {"clear", &CUdpAPI::clear, "68 33000000 0000 00 00 03"_hex},
};

TEST(UdpApiTimedCommands, sendTheCurrentTimeAndReturnTheReply)
{
    for (const UdpTimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        LinkedUdpClient client;
        client.give(reply7);
        EXPECT_EQ((client.*command.call)(), 7);
        const QByteArray frame = client.take();
        ASSERT_EQ(frame.size(), 64);
        EXPECT_EQ(hex(frame.left(10)), hex(command.head));
        unsigned int seconds = 0;
        for (int offset = 13; offset >= 10; --offset)
            seconds = seconds << 8 | static_cast<unsigned char>(frame[offset]);
        EXPECT_NEAR(double(seconds), double(::time(nullptr)), 3);
        EXPECT_EQ(hex(frame.mid(14)), hex(QByteArray(47, '\0') + "0000 16"_hex));
    }
}

TEST(UdpApiTimedCommands, returnTheCodesOfARequest)
{
    for (const UdpTimedCommand& command : timedCommands) {
        SCOPED_TRACE(command.name);
        LinkedUdpClient client;
        client.give(errorMinus7);
        EXPECT_EQ((client.*command.call)(), -7);
        EXPECT_EQ(client.link(), "up, open");
        client.close();
        EXPECT_EQ((client.*command.call)(), -1);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

TEST(UdpApiSetTime, sendsAListOfTwoIntegers)
{
    LinkedUdpClient client;
    client.give(reply7);
    EXPECT_EQ(client.setTime(0x01020304, -2), 7);
    EXPECT_EQ(hex(client.take()), hex(padded("68"               //  0 start
                                             "33000000"         //  1 length 51
                                             "0000"             //  5 sequence
                                             "00"               //  7 arg2
                                             "00"               //  8 arg1
                                             "05"               //  9 command
                                             "02000000"         // 10 count, which the frame over TCP has not
                                             "04030201"         // 14 first
                                             "feffffff"_hex))); // 18 second
}

// --- Overloads ---

TEST(UdpApiRequestInt, acceptsLiteralsAsCommandAndInteger)
{
    LinkedUdpClient client;
    client.give(reply7);
    EXPECT_EQ(client.requestInt(1, 2), 7);
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0000 00 00 01 02000000"_hex)));
    client.give(reply7);
    EXPECT_EQ(client.requestInt(0, 0), 7);
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0100 00 00 00 00000000"_hex)));
    client.give(reply7);
    EXPECT_EQ(client.requestInt(1, {2, 3}), 7);
    EXPECT_EQ(hex(client.take()), hex(padded("68 33000000 0200 00 00 01 02000000 02000000 03000000"_hex)));
}
