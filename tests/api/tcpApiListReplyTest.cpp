#include "support/frames.h"
#include "support/openTcpClient.h"
#include "support/scriptedServer.h"

#include <climits>
#include <functional>

static const QByteArray emptyList = "68 04000000 0000 00 00 10 00000000 0000 16"_hex; // of any element

// --- recvBytes, recvInts and recvStrings ---

// Receives into a list that already has one element. `came` becomes the number of added elements.
struct ListForm {
    const char* name;
    std::function<int(OpenTcpClient&, int count, int& came)> receive;
};

static const ListForm listForms[] = {
    {"recvBytes",
     [](OpenTcpClient& client, int count, int& came) {
         std::vector<unsigned char> out = {0xee};
         const int result = client.recvBytes(count, out);
         came = int(out.size()) - 1;
         return result;
     }},
    {"recvInts",
     [](OpenTcpClient& client, int count, int& came) {
         std::vector<int> out = {0xee};
         const int result = client.recvInts(count, out);
         came = int(out.size()) - 1;
         return result;
     }},
    {"recvStrings",
     [](OpenTcpClient& client, int count, int& came) {
         QStringList out = {"ee"};
         const int result = client.recvStrings(count, out);
         came = out.size() - 1;
         return result;
     }},
};

// Each form requests 10 elements, reads `frame` and returns `result` with the link up.
static void expectRefused(const QByteArray& frame, int result)
{
    for (const ListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.give(frame);
        int came = -99;
        EXPECT_EQ(form.receive(client, 10, came), result);
        EXPECT_EQ(came, 0);
        EXPECT_EQ(client.link(), "up, open");
        EXPECT_TRUE(client.holdsNoFrame());
    }
}

TEST(TcpApiRecvLists, leaveTheLinkUpOnAnErrorFrame)
{
    expectRefused(errorMinus7, -7);
    expectRefused(error0, 0);
    expectRefused(error5, 5);
    expectRefused(errorOfTwoBytes, -2);
    expectRefused(errorOfNoBytes, -2);
}

TEST(TcpApiRecvLists, returnMinusFiveOnAnErrorFrameWithCodeOne)
{
    expectRefused(error1, -5);
}

TEST(TcpApiRecvLists, leaveTheLinkUpOnAWrongEndByte)
{
    expectRefused(wrongEnd, 0);
}

TEST(TcpApiRecvLists, leaveTheLinkUpOnAPayloadWithoutACompleteCount)
{
    expectRefused(threeBytesOfPayload, -5);
    expectRefused(noPayload, -5);
}

TEST(TcpApiRecvLists, leaveTheLinkUpOnACountBeyondThePayload)
{
    expectRefused("68 06000000 0000 00 00 10 05000000 0102 0000 16"_hex, -5);
}

TEST(TcpApiRecvLists, readTheNextReplyAfterARefusedOne)
{
    for (const ListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        for (const QByteArray& refused : {errorMinus7, wrongEnd, threeBytesOfPayload}) {
            LinkedTcpClient client;
            client.give(refused);
            client.give(emptyList);
            int came = -99;
            EXPECT_NE(form.receive(client, 0, came), 1);
            EXPECT_EQ(form.receive(client, 0, came), 1);
        }
    }
}

TEST(TcpApiRecvLists, closeTheSocketOnATimeOut)
{
    for (const ListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        int came = -99;
        EXPECT_EQ(form.receive(client, 0, came), 0);
        EXPECT_EQ(client.link(), "down, closed");
    }
}

TEST(TcpApiRecvLists, failWhenThePeerCloses)
{
    for (const ListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.give(reply7.left(12));
        client.hangUp();
        int came = -99;
        EXPECT_EQ(form.receive(client, 0, came), -1);
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(hex(client.recvFrame), hex(reply7.left(12)));
    }
}

TEST(TcpApiRecvLists, waitForMoreFramesAfterAnEmptyOne)
{
    for (const ListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.give(emptyList);
        int came = -99;
        EXPECT_EQ(form.receive(client, 0, came), 1);
        EXPECT_EQ(client.link(), "up, open");
        client.give(emptyList);
        EXPECT_EQ(form.receive(client, 2, came), 0); // the second frame is not sent
        EXPECT_EQ(client.link(), "down, closed");
        EXPECT_EQ(came, 0);
    }
}

TEST(TcpApiRecvLists, readOneFrameEvenIfTheListIsFullOnEntry)
{
    for (const ListForm& form : listForms) {
        SCOPED_TRACE(form.name);
        LinkedTcpClient client;
        client.give(emptyList);
        client.give(reply7);
        int came = -99;
        EXPECT_EQ(form.receive(client, 1, came), 1);
        EXPECT_EQ(client.recvInt(), 7); // the next frame is still there
    }
}

// --- recvBytes ---

// Four and six bytes.
static const QByteArray bytes0123 = "68 08000000 0000 00 00 10 04000000 00010203 0000 16"_hex;
static const QByteArray bytes456789 = "68 0a000000 0000 00 00 10 06000000 040506070809 0000 16"_hex;

TEST(TcpApiRecvBytes, appendsTheBytesOfOneFrame)
{
    LinkedTcpClient client;
    client.give(bytes456789);
    std::vector<unsigned char> out = {0xee};
    EXPECT_EQ(client.recvBytes(0, out), 1);
    EXPECT_EQ(out, (std::vector<unsigned char>{0xee, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvBytes, readsASingleFrameForACountOfZeroOrBelow)
{
    for (const int count : {0, -1, INT_MIN}) {
        SCOPED_TRACE(count);
        LinkedTcpClient client;
        client.give(bytes0123);
        client.give(bytes456789);
        std::vector<unsigned char> out;
        EXPECT_EQ(client.recvBytes(count, out), 1);
        EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3}));
        EXPECT_EQ(client.recvBytes(count, out), 1);
        EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    }
}

TEST(TcpApiRecvBytes, collectsFramesUpToTheCount)
{
    LinkedTcpClient client;
    client.give(bytes0123);
    client.give(bytes456789);
    client.give(bytes0123); // no longer needed
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(10, out), 1);
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(client.recvBytes(0, out), 1);
    EXPECT_EQ(out.size(), 14u);
}

TEST(TcpApiRecvBytes, readsAnotherFrameWhileOneElementIsMissing)
{
    LinkedTcpClient client;
    client.give(bytes0123);
    client.give(bytes456789);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(5, out), 1);
    EXPECT_EQ(out.size(), 10u); // all elements of a frame are taken
}

TEST(TcpApiRecvBytes, countsTheElementsPresentOnEntry)
{
    LinkedTcpClient client;
    client.give(bytes456789);
    std::vector<unsigned char> out = {0, 1, 2, 3};
    EXPECT_EQ(client.recvBytes(10, out), 1);
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(TcpApiRecvBytes, timesOutWaitingForTheSecondFrameOfARead)
{
    LinkedTcpClient client;
    client.give(bytes0123 + bytes456789);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(10, out), 0);
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3}));
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiRecvBytes, keepsTheFramesBeforeARefusedOne)
{
    LinkedTcpClient client;
    client.give(bytes0123);
    client.give(errorMinus7);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(10, out), -7);
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3}));
    EXPECT_EQ(client.link(), "up, open");
}

TEST(TcpApiRecvBytes, keepsTheFramesReceivedBeforeTheLinkFailed)
{
    LinkedTcpClient client;
    client.give(bytes0123);
    client.hangUp();
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(10, out), -1);
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 1, 2, 3}));
    EXPECT_EQ(client.link(), "down, closed");
}

TEST(TcpApiRecvBytes, ignoresBytesAfterTheList)
{
    LinkedTcpClient client;
    client.give("68 07000000 0000 00 00 10 02000000 0a0b0c 0000 16"_hex);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(0, out), 1);
    EXPECT_EQ(out, (std::vector<unsigned char>{10, 11}));
}

TEST(TcpApiRecvBytes, readsAFrameOfOneMebibyte)
{
    QByteArray list(1 << 20, '\0');
    for (int i = 0; i < list.size(); ++i)
        list[i] = char(i % 251);
    const QByteArray frame = "68 04001000 0000 00 00 10 00001000"_hex + list + "0000 16"_hex;
    ScriptedServer server{{sendsApart({greeting, frame})}};
    OpenTcpClient client;
    ASSERT_EQ(client.connect("127.0.0.1", server.port()), 1);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(0, out), 1);
    EXPECT_TRUE(QByteArray(reinterpret_cast<const char*>(out.data()), int(out.size())) == list);
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvBytes, assemblesAReplyLargerThanTheReadBuffer)
{
    std::vector<QByteArray> pieces = {greeting};
    QByteArray whole;
    for (char letter = 'a'; letter <= 'g'; ++letter) {
        const QByteArray list(100000, letter);
        whole += list;
        pieces.push_back("68 a4860100 0000 00 00 10 a0860100"_hex + list + "0000 16"_hex);
    }
    ScriptedServer server{{sendsApart(pieces)}};
    OpenTcpClient client;
    ASSERT_EQ(client.connect("127.0.0.1", server.port()), 1);
    std::vector<unsigned char> out;
    EXPECT_EQ(client.recvBytes(700000, out), 1);
    EXPECT_TRUE(QByteArray(reinterpret_cast<const char*>(out.data()), int(out.size())) == whole);
    EXPECT_EQ(client.link(), "up, open");
}

// --- recvInts ---

// 1 and -2; 3.
static const QByteArray intsOneMinusTwo = "68 0c000000 0000 00 00 10 02000000 01000000 feffffff 0000 16"_hex;
static const QByteArray intsThree = "68 08000000 0000 00 00 10 01000000 03000000 0000 16"_hex;

TEST(TcpApiRecvInts, appendsTheIntegersOfOneFrame)
{
    LinkedTcpClient client;
    client.give(intsOneMinusTwo);
    std::vector<int> out = {9};
    EXPECT_EQ(client.recvInts(0, out), 1);
    EXPECT_EQ(out, (std::vector<int>{9, 1, -2}));
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvInts, readsASingleFrameForACountOfZeroOrBelow)
{
    for (const int count : {0, -1}) {
        SCOPED_TRACE(count);
        LinkedTcpClient client;
        client.give(intsOneMinusTwo);
        client.give(intsThree);
        std::vector<int> out;
        EXPECT_EQ(client.recvInts(count, out), 1);
        EXPECT_EQ(out, (std::vector<int>{1, -2}));
    }
}

TEST(TcpApiRecvInts, collectsFramesUpToTheCount)
{
    LinkedTcpClient client;
    client.give(intsOneMinusTwo);
    client.give(intsThree);
    client.give(intsThree); // no longer needed
    std::vector<int> out;
    EXPECT_EQ(client.recvInts(3, out), 1);
    EXPECT_EQ(out, (std::vector<int>{1, -2, 3}));
    EXPECT_EQ(client.recvInts(4, out), 1);
    EXPECT_EQ(out, (std::vector<int>{1, -2, 3, 3}));
}

TEST(TcpApiRecvInts, countsTheElementsPresentOnEntry)
{
    LinkedTcpClient client;
    client.give(intsThree);
    std::vector<int> out = {1, 2};
    EXPECT_EQ(client.recvInts(3, out), 1);
    EXPECT_EQ(out, (std::vector<int>{1, 2, 3}));
}

TEST(TcpApiRecvInts, keepsTheFramesBeforeARefusedOne)
{
    LinkedTcpClient client;
    client.give(intsOneMinusTwo);
    client.give(threeBytesOfPayload);
    std::vector<int> out;
    EXPECT_EQ(client.recvInts(3, out), -5);
    EXPECT_EQ(out, (std::vector<int>{1, -2}));
    EXPECT_EQ(client.link(), "up, open");
}

// --- recvStrings ---

// "abc" and "\u00fc"; "x". Each text follows its outer and inner length.
static const QByteArray stringsAbcUe = "68 11000000 0000 00 00 10 02000000 0500 0300 616263 0400 0200 c3bc 0000 16"_hex;
static const QByteArray stringsX = "68 09000000 0000 00 00 10 01000000 0300 0100 78 0000 16"_hex;

static std::string joined(const QStringList& list)
{
    return list.join('|').toStdString();
}

TEST(TcpApiRecvStrings, appendsTheTextsOfOneFrame)
{
    LinkedTcpClient client;
    client.give(stringsAbcUe);
    QStringList out = {"first"};
    EXPECT_EQ(client.recvStrings(0, out), 1);
    EXPECT_EQ(joined(out), "first|abc|\xc3\xbc");
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvStrings, readsASingleFrameForACountOfZeroOrBelow)
{
    for (const int count : {0, -1}) {
        SCOPED_TRACE(count);
        LinkedTcpClient client;
        client.give(stringsX);
        client.give(stringsAbcUe);
        QStringList out;
        EXPECT_EQ(client.recvStrings(count, out), 1);
        EXPECT_EQ(joined(out), "x");
    }
}

TEST(TcpApiRecvStrings, collectsFramesUpToTheCount)
{
    LinkedTcpClient client;
    client.give(stringsAbcUe);
    client.give(stringsX);
    client.give(stringsX); // no longer needed
    QStringList out;
    EXPECT_EQ(client.recvStrings(3, out), 1);
    EXPECT_EQ(joined(out), "abc|\xc3\xbc|x");
    EXPECT_EQ(client.recvStrings(4, out), 1);
    EXPECT_EQ(joined(out), "abc|\xc3\xbc|x|x");
}

TEST(TcpApiRecvStrings, countsTheElementsPresentOnEntry)
{
    LinkedTcpClient client;
    client.give(stringsX);
    QStringList out = {"a", "b"};
    EXPECT_EQ(client.recvStrings(3, out), 1);
    EXPECT_EQ(joined(out), "a|b|x");
}

TEST(TcpApiRecvStrings, returnsZeroForAnItemBeyondThePayloadAndLeavesTheLinkUp)
{
    LinkedTcpClient client;
    client.give("68 0b000000 0000 00 00 10 02000000 0300 0100 78 0100 0000 16"_hex);
    QStringList out = {"first"};
    EXPECT_EQ(client.recvStrings(0, out), 0);
    EXPECT_EQ(joined(out), "first|x"); // only one byte remains for the second item
    EXPECT_EQ(client.link(), "up, open");
    EXPECT_TRUE(client.holdsNoFrame());
}

TEST(TcpApiRecvStrings, readsAnItemWithoutInnerLengthAsAnEmptyText)
{
    LinkedTcpClient client;
    client.give("68 09000000 0000 00 00 10 01000000 0300 616263 0000 16"_hex);
    QStringList out;
    EXPECT_EQ(client.recvStrings(1, out), 1);
    EXPECT_EQ(out.size(), 1);
    EXPECT_EQ(joined(out), "");
}
