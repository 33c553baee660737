#include "socketApi.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <type_traits>

using gqdb::CByte2Fep;
using gqdb::CByte2Rdb;
using gqdb::CByte2Val;
using gqdb::CSocketAPI;

// --- The class ------------------------------------------------------------------

static_assert(std::is_convertible_v<CSocketAPI*, CByte2Rdb*>, "a public base");
static_assert(std::is_convertible_v<CSocketAPI*, CByte2Fep*>, "a public base");
static_assert(std::is_base_of_v<CByte2Val, CSocketAPI> && !std::is_convertible_v<CSocketAPI*, CByte2Val*>,
              "must be a base twice");
static_assert(std::is_polymorphic_v<CSocketAPI>);
static_assert(!std::has_virtual_destructor_v<CSocketAPI>, "destroyed through its own type");

static_assert(CSocketAPI::frameStart == 0x68);
static_assert(CSocketAPI::frameEnd == 0x16);
static_assert(CSocketAPI::errorCommand == 0xff);
static_assert(CSocketAPI::systemStateCommand == 1);
static_assert(CSocketAPI::systemTimeCommand == 2);
static_assert(CSocketAPI::clearCommand == 3);
static_assert(CSocketAPI::setTimeCommand == 5);
static_assert(CSocketAPI::setStateCommand == 6);
static_assert(CSocketAPI::headerSize == 10);
static_assert(CSocketAPI::frameOverhead == 13);
static_assert(CSocketAPI::rawBufferSize == 655350);

// The base as a derived client uses it: the fields, and the codec operations by unqualified name.
class OwnClient : public CSocketAPI {
public:
    using CSocketAPI::connected;
    using CSocketAPI::recvBuffer;
    using CSocketAPI::recvFrame;
    using CSocketAPI::recvFrameSize;
    using CSocketAPI::recvOverTm;
    using CSocketAPI::reserved1;
    using CSocketAPI::reserved2;
    using CSocketAPI::reserved3;
    using CSocketAPI::sendOverTm;
    using CSocketAPI::sendSeq;
    using CSocketAPI::serverHost;
    using CSocketAPI::serverPort;

    QByteArray frameWithInt(unsigned char command, int value)
    {
        QByteArray frame;
        addHeader(command, 0, 0, frame);
        int2Byte(value, frame);
        addEnd(frame);
        return frame;
    }

    std::vector<const void*> fieldsInOrder() const
    {
        return {&serverHost, &serverPort, &connected,  &recvBuffer, &recvFrame, &recvFrameSize,
                &sendSeq,    &reserved1,  &recvOverTm, &sendOverTm, &reserved2, &reserved3};
    }
};

TEST(SocketApi, startsUnconnectedWithTimeOutsOfNineSeconds)
{
    const OwnClient client;
    EXPECT_EQ(client.serverHost, "");
    EXPECT_FALSE(client.connected);
    EXPECT_EQ(client.recvBuffer, nullptr);
    EXPECT_TRUE(client.recvFrame.isEmpty());
    EXPECT_EQ(client.recvFrameSize, 0);
    EXPECT_EQ(client.sendSeq, 0);
    EXPECT_EQ(client.reserved1, 0);
    EXPECT_EQ(client.recvOverTm, 9000);
    EXPECT_EQ(client.sendOverTm, 9000);
    EXPECT_EQ(client.reserved2, 0);
    EXPECT_EQ(client.reserved3, 0);
}

TEST(SocketApi, keepsTheOrderOfItsFields)
{
    const OwnClient client;
    const std::vector<const void*> fields = client.fieldsInOrder();
    EXPECT_TRUE(std::is_sorted(fields.begin(), fields.end(), std::less<>()));
}

TEST(SocketApi, keepsTheOrderOfItsBases)
{
    CSocketAPI api;
    const void* rdb = static_cast<CByte2Rdb*>(&api);
    const void* fep = static_cast<CByte2Fep*>(&api);
    EXPECT_TRUE(std::less<>()(rdb, fep));
}

TEST(SocketApi, freesItsReadBuffer)
{
    OwnClient client;
    client.recvBuffer = new char[CSocketAPI::rawBufferSize]; // AddressSanitizer reports a leak or a mismatched delete
}

TEST(SocketApi, returnsItsConnectedFlag)
{
    OwnClient client;
    EXPECT_FALSE(client.isConnected());
    client.connected = true;
    EXPECT_TRUE(client.isConnected());
    client.connected = false;
    EXPECT_FALSE(client.isConnected());
}

// --- Time-outs ------------------------------------------------------------------

TEST(SocketApiSetRecvOverTm, storesTheTimeAndNothingElse)
{
    OwnClient client;
    EXPECT_EQ(client.setRecvOverTm(250), 1);
    EXPECT_EQ(client.recvOverTm, 250);
    EXPECT_EQ(client.sendOverTm, 9000);
    EXPECT_EQ(client.setRecvOverTm(-1), 1);
    EXPECT_EQ(client.recvOverTm, -1);
}

TEST(SocketApiSetSendOverTm, storesTheTimeAndNothingElse)
{
    OwnClient client;
    EXPECT_EQ(client.setSendOverTm(250), 1);
    EXPECT_EQ(client.sendOverTm, 250);
    EXPECT_EQ(client.recvOverTm, 9000);
    EXPECT_EQ(client.setSendOverTm(0), 1);
    EXPECT_EQ(client.sendOverTm, 0);
}

TEST(SocketApi, callsTheTimeOutsOfADerivedClient)
{
    class Recorder : public CSocketAPI {
    public:
        int setRecvOverTm(int ms) override { return ms + 1; }
        int setSendOverTm(int ms) override { return ms + 2; }
    };
    Recorder recorder;
    CSocketAPI& api = recorder;
    EXPECT_EQ(api.setRecvOverTm(10), 11);
    EXPECT_EQ(api.setSendOverTm(10), 12);
}

// --- addHeader ------------------------------------------------------------------

TEST(SocketApiAddHeader, appendsTenBytesWithTheArgumentsInReverseOrder)
{
    CSocketAPI api;
    QByteArray data;
    api.addHeader(0x10, 0x0b, 0x0c, data);
    EXPECT_EQ(hex(data), "68 "          // 0 start
                         "00 00 00 00 " // 1 length, not set yet
                         "00 00 "       // 5 sequence
                         "0c "          // 7 arg2
                         "0b "          // 8 arg1
                         "10");         // 9 command
}

TEST(SocketApiAddHeader, keepsTheBytesOfTheArray)
{
    CSocketAPI api;
    QByteArray data = "aabb"_hex;
    api.addHeader(0xff, 0xfe, 0xfd, data);
    EXPECT_EQ(hex(data), "aa bb 68 00 00 00 00 00 00 fd fe ff");
}

TEST(SocketApiAddHeader, countsTheFramesOfEachObject)
{
    CSocketAPI api;
    CSocketAPI other;
    QByteArray data;
    api.addHeader(1, 0, 0, data);
    api.addHeader(1, 0, 0, data);
    other.addHeader(1, 0, 0, data);
    api.addHeader(1, 0, 0, data);
    EXPECT_EQ(hex(data), "68 00 00 00 00 00 00 00 00 01 "
                         "68 00 00 00 00 01 00 00 00 01 "
                         "68 00 00 00 00 00 00 00 00 01 " // the other's first
                         "68 00 00 00 00 02 00 00 00 01");
}

TEST(SocketApiAddHeader, restartsAt0After65536Frames)
{
    OwnClient client;
    for (int frame = 0; frame < 65536; ++frame) {
        ASSERT_EQ(client.sendSeq, frame);
        QByteArray data;
        client.addHeader(1, 0, 0, data);
        ASSERT_EQ(data.at(5), char(frame % 256)) << frame;
        ASSERT_EQ(data.at(6), char(frame / 256)) << frame;
    }
    EXPECT_EQ(client.sendSeq, 0);
    QByteArray data;
    client.addHeader(1, 0, 0, data);
    EXPECT_EQ(hex(data), "68 00 00 00 00 00 00 00 00 01");
    EXPECT_EQ(client.sendSeq, 1);
}

TEST(SocketApiAddHeader, writesTheCounterLowByteFirst)
{
    OwnClient client;
    client.sendSeq = 0x1234;
    QByteArray data;
    client.addHeader(1, 0, 0, data);
    EXPECT_EQ(hex(data), "68 00 00 00 00 34 12 00 00 01");
    EXPECT_EQ(client.sendSeq, 0x1235);
}

TEST(SocketApiAddHeader, usesTheCallersSequenceWithoutAnObject)
{
    QByteArray data = "aa"_hex;
    CSocketAPI::addHeader(0x10, 0x0b, 0x0c, 0x1234, 0, data);
    EXPECT_EQ(hex(data), "aa 68 00 00 00 00 34 12 0c 0b 10");
}

TEST(SocketApiAddHeader, truncatesTheSequenceTo16BitsAndIgnoresTheFifthArgument)
{
    QByteArray data;
    CSocketAPI::addHeader(1, 2, 3, 0x12345, 0x77777777, data);
    CSocketAPI::addHeader(1, 2, 3, -2, -1, data);
    EXPECT_EQ(hex(data), "68 00 00 00 00 45 23 03 02 01 "
                         "68 00 00 00 00 fe ff 03 02 01");
}

TEST(SocketApiAddHeader, leavesTheCounterIfTheCallerPassesASequence)
{
    OwnClient client;
    client.sendSeq = 5;
    QByteArray data;
    client.addHeader(1, 0, 0, 0x12345, 0, data);
    EXPECT_EQ(client.sendSeq, 5);
}

// --- addEnd ---------------------------------------------------------------------

TEST(SocketApiAddEnd, refusesArraysBelowFourBytes)
{
    for (int size = 0; size < 4; ++size) {
        SCOPED_TRACE(size);
        QByteArray data(size, char(0xaa));
        EXPECT_EQ(CSocketAPI::addEnd(data), 0);
        EXPECT_EQ(data, QByteArray(size, char(0xaa)));
    }
}

static std::string withEnd(int size)
{
    QByteArray data(size, char(0xaa));
    EXPECT_EQ(CSocketAPI::addEnd(data), 1);
    return hex(data);
}

TEST(SocketApiAddEnd, storesANegativeLengthIfTheHeaderIsIncomplete)
{
    EXPECT_EQ(withEnd(4), "aa fa ff ff ff 00 00 16"); // the length field extends the array by one byte
    EXPECT_EQ(withEnd(5), "aa fb ff ff ff 00 00 16");
    EXPECT_EQ(withEnd(6), "aa fc ff ff ff aa 00 00 16");
    EXPECT_EQ(withEnd(7), "aa fd ff ff ff aa aa 00 00 16");
    EXPECT_EQ(withEnd(8), "aa fe ff ff ff aa aa aa 00 00 16");
    EXPECT_EQ(withEnd(9), "aa ff ff ff ff aa aa aa aa 00 00 16");
}

TEST(SocketApiAddEnd, storesTheByteCountAfterTheHeaderAsLength)
{
    EXPECT_EQ(withEnd(10), "aa 00 00 00 00 aa aa aa aa aa 00 00 16");
    EXPECT_EQ(withEnd(11), "aa 01 00 00 00 aa aa aa aa aa aa 00 00 16");
    EXPECT_EQ(withEnd(12), "aa 02 00 00 00 aa aa aa aa aa aa aa 00 00 16");
    EXPECT_EQ(withEnd(13), "aa 03 00 00 00 aa aa aa aa aa aa aa aa 00 00 16");
    EXPECT_EQ(withEnd(14), "aa 04 00 00 00 aa aa aa aa aa aa aa aa aa 00 00 16");
}

TEST(SocketApiAddEnd, storesTheLengthLowByteFirst)
{
    QByteArray data(10 + 0x010203, '\0');
    EXPECT_EQ(CSocketAPI::addEnd(data), 1);
    ASSERT_EQ(data.size(), 13 + 0x010203);
    EXPECT_EQ(hex(data.left(6)), "00 03 02 01 00 00");
    EXPECT_EQ(hex(data.right(4)), "00 00 00 16");
}

TEST(SocketApiAddEnd, leavesACopyOfTheArrayUnchanged)
{
    QByteArray data(10, char(0xaa));
    const QByteArray copy = data;
    EXPECT_EQ(CSocketAPI::addEnd(data), 1);
    EXPECT_EQ(hex(copy), "aa aa aa aa aa aa aa aa aa aa");
}

// --- Whole frames ---------------------------------------------------------------

TEST(SocketApiFrame, containsOneInteger)
{
    OwnClient client;
    EXPECT_EQ(hex(client.frameWithInt(0x10, 1)), "68 "          //  0 start
                                                 "04 00 00 00 " //  1 length
                                                 "00 00 "       //  5 sequence
                                                 "00 "          //  7 arg2
                                                 "00 "          //  8 arg1
                                                 "10 "          //  9 command
                                                 "01 00 00 00 " // 10 payload
                                                 "00 00 "       // 14 checksum
                                                 "16");         // 16 end
}

TEST(SocketApiFrame, hasThirteenBytesWithoutPayload)
{
    CSocketAPI api;
    QByteArray frame;
    api.addHeader(3, 0, 0, frame);
    EXPECT_EQ(CSocketAPI::addEnd(frame), 1);
    EXPECT_EQ(hex(frame), "68 00 00 00 00 00 00 00 00 03 00 00 16");
}

TEST(SocketApiFrame, consumesASequenceNumberWithoutBeingSent)
{
    OwnClient client;
    client.frameWithInt(0x10, 1);
    EXPECT_EQ(hex(client.frameWithInt(0x10, 1)), "68 04 00 00 00 01 00 00 00 10 01 00 00 00 00 00 16");
}

// --- parseInt -------------------------------------------------------------------

TEST(SocketApiParseInt, readsTheFirstFourBytes)
{
    CSocketAPI api;
    int value = 0;
    EXPECT_EQ(api.parseInt(heapBytes("78563412"_hex).data(), 4, value), 1);
    EXPECT_EQ(value, 0x12345678);
    EXPECT_EQ(api.parseInt(heapBytes("feffffff"_hex).data(), 4, value), 1);
    EXPECT_EQ(value, -2);
}

TEST(SocketApiParseInt, ignoresFurtherBytes)
{
    CSocketAPI api;
    int value = 0;
    EXPECT_EQ(api.parseInt(heapBytes("07000000 09000000"_hex).data(), 8, value), 1);
    EXPECT_EQ(value, 7);
}

TEST(SocketApiParseInt, refusesEveryShorterPayloadAndLeavesTheValue)
{
    CSocketAPI api;
    for (int len = -1; len < 4; ++len) {
        SCOPED_TRACE(len);
        int value = 77;
        const std::vector<char> payload = heapBytes(QByteArray(std::max(len, 0), '\x01'));
        EXPECT_EQ(api.parseInt(payload.data(), len, value), -5);
        EXPECT_EQ(value, 77);
    }
}

// --- Lists ----------------------------------------------------------------------

// The list operations on a payload in a heap block of exactly its size.

static int parse(const QByteArray& payload, std::vector<int>& out)
{
    return CSocketAPI().parseInts(heapBytes(payload).data(), payload.size(), out);
}

static int parse(const QByteArray& payload, std::vector<unsigned char>& out)
{
    return CSocketAPI().parseBytes(heapBytes(payload).data(), payload.size(), out);
}

static int parse(const QByteArray& payload, QStringList& out)
{
    return CSocketAPI().parseStrings(heapBytes(payload).data(), payload.size(), out);
}

using Ints = std::vector<int>;
using Bytes = std::vector<unsigned char>;

TEST(SocketApiParseInts, appendsTheCountedIntegers)
{
    Ints out = {5};
    EXPECT_EQ(parse("02000000 01000000 feffffff"_hex, out), 1);
    EXPECT_EQ(out, (Ints{5, 1, -2}));
    EXPECT_EQ(parse("01000000 78563412"_hex, out), 1);
    EXPECT_EQ(out, (Ints{5, 1, -2, 0x12345678}));
}

TEST(SocketApiParseInts, ignoresFurtherBytes)
{
    Ints out;
    EXPECT_EQ(parse("01000000 01000000 02000000 03"_hex, out), 1);
    EXPECT_EQ(out, Ints{1});
}

TEST(SocketApiParseInts, acceptsAnEmptyList)
{
    Ints out = {5};
    EXPECT_EQ(parse("00000000"_hex, out), 1);
    EXPECT_EQ(parse("00000000 01000000"_hex, out), 1);
    EXPECT_EQ(out, Ints{5});
}

TEST(SocketApiParseInts, refusesEveryShorterPayloadAndLeavesTheList)
{
    const QByteArray payload = "02000000 01000000 02000000"_hex;
    Ints out = {5};
    for (int len = 0; len < payload.size(); ++len) {
        SCOPED_TRACE(len);
        EXPECT_EQ(parse(payload.left(len), out), -5);
    }
    EXPECT_EQ(CSocketAPI().parseInts(payload.constData(), -1, out), -5);
    EXPECT_EQ(out, Ints{5});
}

TEST(SocketApiParseInts, refusesCountsThatWrap)
{
    const QByteArray counts[] = {
        "00000040"_hex, // times 4, plus 4: 4
        "01000040"_hex, // 8
        "00000080"_hex, // 4
        "000000c0"_hex, // 4
        "010000c0"_hex, // 8
        "ffffff3f"_hex, // 0
        "ffffffff"_hex, // 0
        "feffffff"_hex, // -4
        "ffffff1f"_hex, // the lowest negative number
        "00000020"_hex, // that plus 4
        "ffffff7f"_hex, // 0
    };
    for (const QByteArray& count : counts) {
        SCOPED_TRACE(hex(count));
        Ints out = {5};
        EXPECT_EQ(parse(count, out), -5);
        EXPECT_EQ(parse(count + "01000000"_hex, out), -5);
        EXPECT_EQ(parse(count + QByteArray(64, '\x01'), out), -5);
        EXPECT_EQ(out, Ints{5});
    }
}

TEST(SocketApiParseInts, refusesHugeCountsThatDoNotWrap)
{
    Ints out;
    EXPECT_EQ(parse("feffff1f 01000000"_hex, out), -5); // the highest positive sum, 0x7ffffffc
    EXPECT_EQ(parse("02000040 01000000"_hex, out), -5); // wraps to 12, above the payload
    EXPECT_TRUE(out.empty());
}

TEST(SocketApiParseBytes, appendsTheCountedBytes)
{
    Bytes out = {5};
    EXPECT_EQ(parse("03000000 0180ff"_hex, out), 1);
    EXPECT_EQ(out, (Bytes{5, 0x01, 0x80, 0xff}));
    EXPECT_EQ(parse("01000000 00"_hex, out), 1);
    EXPECT_EQ(out, (Bytes{5, 0x01, 0x80, 0xff, 0x00}));
}

TEST(SocketApiParseBytes, ignoresFurtherBytes)
{
    Bytes out;
    EXPECT_EQ(parse("01000000 0102"_hex, out), 1);
    EXPECT_EQ(out, Bytes{1});
}

TEST(SocketApiParseBytes, acceptsAnEmptyList)
{
    Bytes out = {5};
    EXPECT_EQ(parse("00000000"_hex, out), 1);
    EXPECT_EQ(parse("00000000 01"_hex, out), 1);
    EXPECT_EQ(out, Bytes{5});
}

TEST(SocketApiParseBytes, refusesEveryShorterPayloadAndLeavesTheList)
{
    const QByteArray payload = "03000000 010203"_hex;
    Bytes out = {5};
    for (int len = 0; len < payload.size(); ++len) {
        SCOPED_TRACE(len);
        EXPECT_EQ(parse(payload.left(len), out), -5);
    }
    EXPECT_EQ(CSocketAPI().parseBytes(payload.constData(), -1, out), -5);
    EXPECT_EQ(out, Bytes{5});
}

TEST(SocketApiParseBytes, refusesCountsThatWrap)
{
    const QByteArray counts[] = {
        "fcffffff"_hex, // plus 4: 0
        "fdffffff"_hex, // 1
        "ffffffff"_hex, // 3
        "fcffff7f"_hex, // the lowest negative number
        "ffffff7f"_hex, // that plus 3
        "00000080"_hex, // that plus 4
        "fbffffff"_hex, // -1
    };
    for (const QByteArray& count : counts) {
        SCOPED_TRACE(hex(count));
        Bytes out = {5};
        EXPECT_EQ(parse(count, out), -5);
        EXPECT_EQ(parse(count + QByteArray(64, '\x01'), out), -5);
        EXPECT_EQ(out, Bytes{5});
    }
}

TEST(SocketApiParseBytes, refusesHugeCountsThatDoNotWrap)
{
    Bytes out;
    EXPECT_EQ(parse("fbffff7f 01"_hex, out), -5); // the highest positive sum
    EXPECT_TRUE(out.empty());
}

// --- parseStrings ---------------------------------------------------------------

TEST(SocketApiParseStrings, readsEachTextAfterItsTwoLengths)
{
    QStringList out;
    EXPECT_EQ(parse("01000000"         // 0 count
                    "0500"             // 4 outer length
                    "0300 616263"_hex, // 6 the text's own length, the text
                    out),
              1);
    EXPECT_EQ(out, QStringList{"abc"});
}

TEST(SocketApiParseStrings, appendsInOrder)
{
    QStringList out = {"x"};
    EXPECT_EQ(parse("02000000 0500 0300 616263 0400 0200 6465"_hex, out), 1);
    EXPECT_EQ(out, (QStringList{"x", "abc", "de"}));
    EXPECT_EQ(parse("01000000 0300 0100 66"_hex, out), 1);
    EXPECT_EQ(out, (QStringList{"x", "abc", "de", "f"}));
}

TEST(SocketApiParseStrings, ignoresFurtherBytes)
{
    QStringList out;
    EXPECT_EQ(parse("01000000 0300 0100 61 0300 0100 62"_hex, out), 1);
    EXPECT_EQ(out, QStringList{"a"});
}

TEST(SocketApiParseStrings, acceptsAnEmptyList)
{
    QStringList out = {"x"};
    EXPECT_EQ(parse("00000000"_hex, out), 1);
    EXPECT_EQ(parse("00000000 0300 0100 61"_hex, out), 1);
    EXPECT_EQ(out, QStringList{"x"});
}

TEST(SocketApiParseStrings, readsUtf8)
{
    QStringList out;
    EXPECT_EQ(parse("01000000 0800 0600 e4b8ad e69687"_hex, out), 1);
    EXPECT_EQ(out, QStringList{QString(QChar(0x4e2d)) + QChar(0x6587)});
}

TEST(SocketApiParseStrings, endsATextAtItsFirstZeroByte)
{
    QStringList out;
    EXPECT_EQ(parse("02000000 0500 0300 610062 0300 0100 63"_hex, out), 1);
    EXPECT_EQ(out, (QStringList{"a", "c"}));
}

TEST(SocketApiParseStrings, skipsTheRestOfALargerItem)
{
    QStringList out;
    EXPECT_EQ(parse("02000000 0600 0100 61 ffffff 0300 0100 62"_hex, out), 1);
    EXPECT_EQ(out, (QStringList{"a", "b"}));
}

TEST(SocketApiParseStrings, appendsAnEmptyTextForAnItemWithoutACompleteText)
{
    QStringList out;
    EXPECT_EQ(parse("06000000"
                    "0300 0100 61" // a preceding text, which must not appear again
                    "0000"         // no room for the text's length
                    "0100 01"      // half a length
                    "0200 0100"    // a length without text
                    "0400 0300 6162"
                    "0300 0100 62"_hex,
                    out),
              1);
    EXPECT_EQ(out, (QStringList{"a", "", "", "", "", "b"}));
}

TEST(SocketApiParseStrings, readsAnEmptyText)
{
    QStringList out;
    EXPECT_EQ(parse("01000000 0200 0000"_hex, out), 1);
    EXPECT_EQ(out, QStringList{""});
}

TEST(SocketApiParseStrings, appendsAnEmptyTextIfTheInnerLengthIsMissing)
{
    QStringList out;
    EXPECT_EQ(parse("01000000 0300 616263"_hex, out), 1); // 0x6261 is read as the text's length
    EXPECT_EQ(out, QStringList{""});
}

TEST(SocketApiParseStrings, readsTheOuterLengthAsUnsigned)
{
    const QByteArray payload = "01000000 ffff fdff"_hex + QByteArray(65533, 'a');
    QStringList out;
    EXPECT_EQ(parse(payload, out), 1);
    EXPECT_EQ(out, QStringList{QString(65533, 'a')});
    EXPECT_EQ(parse(payload.left(payload.size() - 1), out), 0);
    EXPECT_EQ(out.size(), 1);
}

TEST(SocketApiParseStrings, distinguishesAShortHeadFromATruncatedItem)
{
    const QByteArray payload = "02000000"            //  0 count
                               "0500 0300 616263"    //  4 first item
                               "0400 0200 6465"_hex; // 11 second item
    for (int len = 0; len <= payload.size(); ++len) {
        SCOPED_TRACE(len);
        QStringList out = {"x"};
        const int result = parse(payload.left(len), out);
        if (len < 8) { // less than the count and two outer lengths
            EXPECT_EQ(result, -5);
            EXPECT_EQ(out, QStringList{"x"});
        } else if (len < 13) { // less than the first item and the second's outer length
            EXPECT_EQ(result, 0);
            EXPECT_EQ(out, QStringList{"x"});
        } else if (len < 17) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(out, (QStringList{"x", "abc"}));
        } else {
            EXPECT_EQ(result, 1);
            EXPECT_EQ(out, (QStringList{"x", "abc", "de"}));
        }
    }
    QStringList out;
    EXPECT_EQ(CSocketAPI().parseStrings(payload.constData(), -1, out), -5);
    EXPECT_TRUE(out.isEmpty());
}

TEST(SocketApiParseStrings, refusesHugeCountsThatDoNotWrap)
{
    QStringList out;
    EXPECT_EQ(parse("fdffff3f 0200 0000"_hex, out), -5); // 4 and twice the count: the highest even sum
    EXPECT_EQ(parse("03000080 0000"_hex, out), -5);      // wraps to 10, above the payload
    EXPECT_TRUE(out.isEmpty());
}

TEST(SocketApiParseStrings, refusesACountThatWrapsAtTheFirstMissingItem)
{
    const QByteArray counts[] = {
        "00000080"_hex, // twice, plus 4: 4
        "ffffff7f"_hex, // 2
        "feffff7f"_hex, // 0
        "ffffffff"_hex, // 2
        "feffff3f"_hex, // the lowest negative number
        "00000040"_hex, // that plus 4
    };
    for (const QByteArray& count : counts) {
        SCOPED_TRACE(hex(count));
        QStringList out = {"x"};
        EXPECT_EQ(parse(count, out), -5);
        EXPECT_EQ(parse(count + "05"_hex, out), -5); // half an outer length
        EXPECT_EQ(out, QStringList{"x"});

        EXPECT_EQ(parse(count + "0500 0300 616263"_hex, out), -5);
        EXPECT_EQ(out, (QStringList{"x", "abc"}));
        EXPECT_EQ(parse(count + "0300 0100 61 0000 03"_hex, out), -5);
        EXPECT_EQ(out, (QStringList{"x", "abc", "a", ""}));
    }
}

TEST(SocketApiParseStrings, readsNoTextPastThePayloadIfTheCountWraps)
{
    // The sum does not include the outer lengths, so an item may exceed the payload by their size before it is refused.
    QStringList out;
    EXPECT_EQ(parse("00000080 0500 0300 61"_hex, out), -5);   // 9 bytes, the sum is 9, the text ends at 11
    EXPECT_EQ(parse("00000080 0500 0300 6162"_hex, out), -5); // 10 bytes
    EXPECT_EQ(parse("00000080 0200"_hex, out), -5);           // 6 bytes, the sum is 6, no length of the text
    EXPECT_EQ(parse("00000040 ffff fdff 6162"_hex, out), -5); // the sum is negative, so the check passes
    EXPECT_TRUE(out.isEmpty());
}

TEST(SocketApiParseStrings, checksTheTotalBeforeTheItemEvenIfTheCountWraps)
{
    QStringList out;
    EXPECT_EQ(parse("00000080 0500 0300"_hex, out), 0); // 8 bytes, the sum is 4 + 5
    EXPECT_EQ(parse("ffffff7f ffff 0000"_hex, out), 0); // 8 bytes, the sum is 2 + 65535
    EXPECT_TRUE(out.isEmpty());
    EXPECT_EQ(parse("00000080 0300 0100 61 0600 03"_hex, out), 0); // 12 bytes, the sum is 4 + 3 + 6
    EXPECT_EQ(out, QStringList{"a"});
}
