#include "support/hex.h"
#include "tcpApi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

// A client with public access to its reassembly. No test here needs its socket.
class FedClient : public gqdb::CTcpAPI {
public:
    using CTcpAPI::recvFrame;
    using CTcpAPI::recvFrameSize;

    // Passes all of `bytes`, in a heap block of their size, to one call. `pos` becomes the position after the last byte
    // that the call read.
    bool feed(const QByteArray& bytes, int& pos)
    {
        pos = 0;
        return recvData(heapBytes(bytes).data(), bytes.size(), pos);
    }

    bool feed(const QByteArray& bytes)
    {
        int pos;
        return feed(bytes, pos);
    }
};

// A payload of 2 bytes: the byte that starts a frame and the byte that ends one. The checksum bytes are ignored.
static const QByteArray goodFrame = "68"       //  0 start
                                    "02000000" //  1 length
                                    "3412"     //  5 sequence
                                    "0000"     //  7 arg2, arg1
                                    "10"       //  9 command
                                    "6816"     // 10 payload
                                    "abcd"     // 12 checksum
                                    "16"_hex;  // 14 end

static QByteArray frameWith(const QByteArray& lengthField, const QByteArray& body)
{
    return "68"_hex + lengthField + "0000 0000 10"_hex + body;
}

// --- Searching for the start byte -----------------------------------------------

TEST(TcpApiRecvData, skipsBytesBeforeAStartByte)
{
    FedClient client;
    int pos;
    EXPECT_FALSE(client.feed("00 11 16 67 69 e8"_hex, pos));
    EXPECT_EQ(pos, 6);
    EXPECT_TRUE(client.recvFrame.isEmpty());
}

TEST(TcpApiRecvData, startsAFrameAtTheStartByte)
{
    FedClient client;
    client.recvFrameSize = 77;
    int pos;
    EXPECT_FALSE(client.feed("00 11"_hex, pos));
    EXPECT_EQ(client.recvFrameSize, 77); // kept until a frame begins
    EXPECT_FALSE(client.feed("00 68"_hex, pos));
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(hex(client.recvFrame), "68");
    EXPECT_EQ(client.recvFrameSize, 0);
}

TEST(TcpApiRecvData, findsTheFrameAfterGarbage)
{
    FedClient client;
    int pos;
    EXPECT_TRUE(client.feed("00 11"_hex + goodFrame, pos));
    EXPECT_EQ(pos, 2 + 15);
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));
    EXPECT_EQ(client.recvFrameSize, 15);
}

// --- The header -----------------------------------------------------------------

TEST(TcpApiRecvData, computesTheSizeAtTheTenthByte)
{
    FedClient client;
    EXPECT_FALSE(client.feed(goodFrame.left(9)));
    EXPECT_EQ(client.recvFrameSize, 0);
    EXPECT_FALSE(client.feed(goodFrame.mid(9, 1)));
    EXPECT_EQ(client.recvFrameSize, 15);
    EXPECT_EQ(hex(client.recvFrame), "68 02 00 00 00 34 12 00 00 10");
}

TEST(TcpApiRecvData, takesShortPiecesWithoutTheByteAfterThem)
{
    for (const int size : {1, 2, 3}) {
        SCOPED_TRACE(size);
        FedClient client;
        client.feed(goodFrame.left(1));
        int pos = 0;
        EXPECT_FALSE(client.recvData(goodFrame.constData() + 1, size, pos));
        EXPECT_EQ(hex(client.recvFrame), hex(goodFrame.left(1 + size)));
        EXPECT_EQ(client.recvFrame.constData()[1 + size], '\0'); // ends the array
        EXPECT_FALSE(client.feed(goodFrame.mid(1 + size, size)));
    }
}

TEST(TcpApiRecvData, readsTheLengthLowByteFirst)
{
    FedClient client;
    EXPECT_FALSE(client.feed(frameWith("04030201"_hex, {})));
    EXPECT_EQ(client.recvFrameSize, 0x01020304 + 13);
}

TEST(TcpApiRecvData, acceptsAStartByteWithinTheHeader)
{
    FedClient client;
    EXPECT_FALSE(client.feed("68 68 00000000 68686868"_hex));
    EXPECT_EQ(hex(client.recvFrame), "68 68 00 00 00 00 68 68 68 68");
    EXPECT_EQ(client.recvFrameSize, 0x68 + 13);
}

TEST(TcpApiRecvData, keepsTakingBytesIfTheSizeWrapsToZeroOrBelow)
{
    struct {
        QByteArray lengthField;
        int frameSize;
    } const cases[] = {
        {"f3ffffff"_hex, 0},
        {"f2ffffff"_hex, -1},
        {"f3ffff7f"_hex, -2147483647 - 1},
        {"f4ffff7f"_hex, -2147483647},
        {"00000080"_hex, -2147483647 + 12},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(hex(c.lengthField));
        FedClient client;
        const QByteArray bytes = frameWith(c.lengthField, "000016"_hex + goodFrame);
        int pos;
        EXPECT_FALSE(client.feed(bytes, pos));
        EXPECT_EQ(pos, bytes.size());
        EXPECT_EQ(hex(client.recvFrame), hex(bytes));
        EXPECT_EQ(client.recvFrameSize, c.frameSize);

        EXPECT_FALSE(client.feed(goodFrame, pos));
        EXPECT_EQ(pos, goodFrame.size());
        EXPECT_EQ(hex(client.recvFrame), hex(bytes + goodFrame));
        EXPECT_EQ(client.recvFrameSize, c.frameSize);
    }
}

TEST(TcpApiRecvData, takesOneHeaderByteEvenIfTheHeaderIsComplete)
{
    FedClient client;
    client.recvFrame = goodFrame.left(10);
    client.recvFrameSize = 0;
    EXPECT_FALSE(client.feed("aa"_hex));
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame.left(10) + "aa"_hex));
    EXPECT_EQ(client.recvFrameSize, 15);
}

// Takes one byte for the header and one for the body, although the frame already has more than both need.
TEST(TcpApiRecvData, takesOneByteInEachStateOfAnOversizedFrame)
{
    FedClient client;
    client.recvFrame = goodFrame + goodFrame;
    client.recvFrameSize = -5;
    int pos;
    EXPECT_TRUE(client.feed("aabbcc"_hex, pos));
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame + goodFrame + "aabb"_hex));
    EXPECT_EQ(client.recvFrameSize, 15);
}

TEST(TcpApiRecvData, doesNotSearchForAStartByteInsideAFrame)
{
    FedClient client;
    client.recvFrame = "00"_hex;
    EXPECT_TRUE(client.feed("00000000 0000 0000 10 0000 16"_hex));
    EXPECT_EQ(hex(client.recvFrame), "00 00 00 00 00 00 00 00 00 10 00 00 16");
}

// --- The body -------------------------------------------------------------------

TEST(TcpApiRecvData, isCompleteWithTheLastByte)
{
    FedClient client;
    EXPECT_FALSE(client.feed(goodFrame.left(14)));
    EXPECT_TRUE(client.feed(goodFrame.mid(14)));
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));
}

TEST(TcpApiRecvData, acceptsAFrameWithoutPayload)
{
    FedClient client;
    EXPECT_TRUE(client.feed("68 00000000 0000 0000 ff 0000 16"_hex));
    EXPECT_EQ(client.recvFrameSize, 13);
    EXPECT_EQ(hex(client.recvFrame), "68 00 00 00 00 00 00 00 00 ff 00 00 16");
}

TEST(TcpApiRecvData, stopsAfterTheFrame)
{
    FedClient client;
    int pos;
    EXPECT_TRUE(client.feed(goodFrame + goodFrame, pos));
    EXPECT_EQ(pos, 15);
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));
}

TEST(TcpApiRecvData, startsAtTheCallersPosition)
{
    const std::vector<char> buf = heapBytes("00 68 11"_hex + goodFrame + goodFrame);
    FedClient client;
    int pos = 3; // after the false start byte
    EXPECT_TRUE(client.recvData(buf.data(), int(buf.size()), pos));
    EXPECT_EQ(pos, 18);
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));

    client.recvFrame.clear();
    client.recvFrameSize = 0;
    EXPECT_TRUE(client.recvData(buf.data(), int(buf.size()), pos));
    EXPECT_EQ(pos, 33);
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));
}

TEST(TcpApiRecvData, takesOneBodyByteEvenIfTheFrameIsComplete)
{
    FedClient client;
    client.recvFrame = goodFrame;
    client.recvFrameSize = 15;
    int pos;
    EXPECT_TRUE(client.feed("aabb"_hex, pos));
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(hex(client.recvFrame), hex(goodFrame + "aa"_hex));
    EXPECT_EQ(client.recvFrameSize, 15);
}

TEST(TcpApiRecvData, takesOneByteAfterTheHeaderIfTheSizeWrapsBelowIt)
{
    struct {
        QByteArray lengthField;
        int frameSize;
    } const cases[] = {
        {"f4ffffff"_hex, 1},  {"f5ffffff"_hex, 2},  {"fcffffff"_hex, 9},
        {"fdffffff"_hex, 10}, {"feffffff"_hex, 11}, // the first size that one byte completes regularly
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.frameSize);
        FedClient client;
        int pos;
        EXPECT_FALSE(client.feed(frameWith(c.lengthField, {})));
        EXPECT_EQ(client.recvFrameSize, c.frameSize);
        EXPECT_TRUE(client.feed("1616"_hex, pos));
        EXPECT_EQ(pos, 1);
        EXPECT_EQ(hex(client.recvFrame), hex(frameWith(c.lengthField, "16"_hex)));
        EXPECT_EQ(client.recvFrameSize, c.frameSize);

        client.recvFrame.clear();
        EXPECT_TRUE(client.feed(frameWith(c.lengthField, "1616"_hex), pos)); // the same in one call
        EXPECT_EQ(pos, 11);
    }
}

TEST(TcpApiRecvData, usesOnlyTheSizeOnceItIsKnown)
{
    FedClient client;
    client.recvFrame = "68"_hex;
    client.recvFrameSize = 3; // the header is not read
    int pos;
    EXPECT_TRUE(client.feed("aabbcc"_hex, pos));
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(hex(client.recvFrame), "68 aa bb");
    EXPECT_EQ(client.recvFrameSize, 3);
}

TEST(TcpApiRecvData, waitsForTheLargestSize)
{
    FedClient client;
    const QByteArray bytes = frameWith("f2ffff7f"_hex, QByteArray(1000, '\x16'));
    EXPECT_FALSE(client.feed(bytes));
    EXPECT_EQ(client.recvFrameSize, 2147483647);
    EXPECT_FALSE(client.feed(goodFrame));
    EXPECT_EQ(client.recvFrame.size(), bytes.size() + goodFrame.size());
}

// The length is read from the false start byte on, and the resulting frame does not end with an end byte.
TEST(TcpApiRecvData, readsAFrameFromAFalseStartByte)
{
    FedClient client;
    int pos;
    EXPECT_TRUE(client.feed("68 00000000"_hex + goodFrame, pos));
    EXPECT_EQ(pos, 13);
    EXPECT_EQ(hex(client.recvFrame), "68 00 00 00 00 68 02 00 00 00 34 12 00");
    int len;
    EXPECT_FALSE(client.isRecvOk(len));
}

// --- End of the input -----------------------------------------------------------

TEST(TcpApiRecvData, takesNothingFromAnEmptyInput)
{
    struct {
        QByteArray frame;
        int frameSize;
    } const states[] = {
        {{}, 0},                  // searching
        {"68"_hex, 0},            // header
        {goodFrame, 0},           // header, already complete
        {goodFrame.left(12), 15}, // body
        {goodFrame, 15},          // body, already complete
    };
    for (const auto& state : states) {
        SCOPED_TRACE(hex(state.frame));
        FedClient client;
        client.recvFrame = state.frame;
        client.recvFrameSize = state.frameSize;
        for (const int at : {0, 3, 5}) { // at the end of 0 or 3 bytes, and past the end of 3
            int pos = at;
            EXPECT_FALSE(client.recvData("\x68\x68\x68", std::min(at, 3), pos));
            EXPECT_EQ(pos, at);
            EXPECT_EQ(hex(client.recvFrame), hex(state.frame));
            EXPECT_EQ(client.recvFrameSize, state.frameSize);
        }
    }
}

TEST(TcpApiRecvData, assemblesTheSameFrameForAnySplitInTwo)
{
    const QByteArray stream = "0011"_hex + goodFrame;
    for (int split = 0; split <= stream.size(); ++split) {
        SCOPED_TRACE(split);
        FedClient client;
        EXPECT_EQ(client.feed(stream.left(split)), split == stream.size());
        EXPECT_EQ(hex(client.recvFrame), hex(goodFrame.left(std::max(split - 2, 0))));
        if (split < stream.size()) {
            EXPECT_TRUE(client.feed(stream.mid(split)));
        }
        EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));
        EXPECT_EQ(client.recvFrameSize, 15);
    }
}

TEST(TcpApiRecvData, assemblesTheSameFramesFromPiecesOfAnySize)
{
    const QByteArray stream = "0011"_hex + goodFrame + "1616"_hex + goodFrame + goodFrame;
    for (int pieceSize = 1; pieceSize <= stream.size(); ++pieceSize) {
        SCOPED_TRACE(pieceSize);
        FedClient client;
        int frames = 0;
        for (int at = 0; at < stream.size(); at += pieceSize) {
            const std::vector<char> piece = heapBytes(stream.mid(at, pieceSize));
            int pos = 0;
            while (client.recvData(piece.data(), int(piece.size()), pos)) {
                EXPECT_EQ(hex(client.recvFrame), hex(goodFrame));
                client.recvFrame.clear();
                client.recvFrameSize = 0;
                ++frames;
            }
            EXPECT_EQ(pos, int(piece.size()));
        }
        EXPECT_EQ(frames, 3);
        EXPECT_TRUE(client.recvFrame.isEmpty());
    }
}

TEST(TcpApiRecvData, reservesNoMoreThanOneReadForAHeader)
{
    struct {
        QByteArray lengthField;
        int capacity;
    } const cases[] = {
        {"e9ff0900"_hex, 655350}, // a frame of 655,350 bytes
        {"eaff0900"_hex, 655350}, // of one more
        {"00000040"_hex, 655350}, // of 1 GiB
        {"f2ffff7f"_hex, 655350}, // of 2,147,483,647 bytes
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(hex(c.lengthField));
        FedClient client;
        EXPECT_FALSE(client.feed(frameWith(c.lengthField, {})));
        EXPECT_EQ(client.recvFrame.capacity(), c.capacity);
    }
}

TEST(TcpApiRecvData, growsLikeAppendWhileTheHeaderIsIncomplete)
{
    const QByteArray header = goodFrame.left(4);
    FedClient client;
    QByteArray appended;
    for (const char byte : header) {
        EXPECT_FALSE(client.feed(QByteArray(1, byte)));
        appended.append(byte);
        EXPECT_EQ(client.recvFrame.capacity(), appended.capacity()) << appended.size() << " bytes";
    }
}

TEST(TcpApiRecvData, reservesAllOfASmallFrameAtItsHeader)
{
    FedClient client;
    EXPECT_FALSE(client.feed(frameWith("00100000"_hex, {})));
    EXPECT_EQ(client.recvFrame.capacity(), 4096 + 13);
}

TEST(TcpApiRecvData, growsToTheFrameSizeOnceHalfOfTheFrameHasArrived)
{
    FedClient client;
    EXPECT_FALSE(client.feed(frameWith("00001000"_hex, QByteArray(655300, '\0')))); // of 1 MiB + 13 bytes
    EXPECT_EQ(client.recvFrame.capacity(), 655350);
    EXPECT_FALSE(client.feed(QByteArray(41, '\0')));
    EXPECT_EQ(client.recvFrame.capacity(), (1 << 20) + 13);
}

TEST(TcpApiRecvData, growsToTwiceItsSizeAtMostBeforeHalfOfTheFrameHasArrived)
{
    FedClient client;
    EXPECT_FALSE(client.feed(frameWith("00001800"_hex, QByteArray(655300, '\0')))); // of 1.5 MiB + 13 bytes
    EXPECT_EQ(client.recvFrame.capacity(), 655350);
    EXPECT_FALSE(client.feed(QByteArray(41, '\0')));
    EXPECT_LE(client.recvFrame.capacity(), 2 * 655351);
}

TEST(TcpApiRecvData, assemblesAFrameLargerThanTheReadBuffer)
{
    const int length = 1024 * 1024; // 0x00100000
    QByteArray frame = frameWith("00001000"_hex, QByteArray(length, '\0') + "000016"_hex);
    for (int i = 0; i < length; ++i)
        frame[10 + i] = char(i * 31 >> 3);

    FedClient client;
    const int pieceSize = 64 * 1024;
    for (int at = 0; at < frame.size(); at += pieceSize) {
        const QByteArray piece = frame.mid(at, pieceSize);
        int pos;
        EXPECT_EQ(client.feed(piece, pos), at + pieceSize >= frame.size());
        EXPECT_EQ(pos, piece.size());
        EXPECT_EQ(client.recvFrameSize, length + 13);
    }
    EXPECT_TRUE(client.recvFrame == frame);
    int len = 0;
    EXPECT_TRUE(client.isRecvOk(len));
    EXPECT_EQ(len, length);
}

// --- Against a model ------------------------------------------------------------

// The reassembly, byte by byte: the state is the pair of fields, and each byte is processed separately.
struct ByteByByte {
    QByteArray frame;
    int frameSize = 0;

    bool recvData(const char* buf, int size, int& pos)
    {
        while (pos < size) {
            const char byte = buf[pos++];
            if (frame.isEmpty()) {
                hunt(byte);
                continue;
            }
            frame.append(byte);
            if (frameSize > 0) {
                if (frame.size() >= frameSize)
                    return true;
            } else if (frame.size() >= 10) {
                frameSize = sizeFromHeader();
            }
        }
        return false;
    }

private:
    void hunt(char byte)
    {
        if (byte != 0x68)
            return;
        frame.append(byte);
        frameSize = 0;
    }

    int sizeFromHeader() const
    {
        unsigned int length = 0;
        for (int offset = 4; offset >= 1; --offset)
            length = length * 256 + static_cast<unsigned char>(frame.at(offset));
        return int(length + 13);
    }
};

// Streams of garbage, good frames and odd length fields. The seed is fixed, so all runs use the same streams.
class RandomStreams {
public:
    unsigned int below(unsigned int limit) { return unsigned(engine()) % limit; }

    QByteArray bytes(unsigned int count)
    {
        QByteArray result;
        while (unsigned(result.size()) < count)
            result.append(below(6) == 0 ? char(0x68) : char(below(256)));
        return result;
    }

    QByteArray stream()
    {
        QByteArray result;
        for (unsigned int parts = 1 + below(6); parts > 0; --parts)
            result += part();
        return result;
    }

    // A size for a frame that already has `held` bytes.
    int frameSize(int held)
    {
        const int sizes[] = {0, -1, -2147483647 - 1, 1, 9, 10, 11, 13, held - 1, held, held + 1, held + 20, 2147483647};
        return sizes[below(std::size(sizes))];
    }

private:
    QByteArray part()
    {
        switch (below(4)) {
        case 0:
            return bytes(below(12));
        case 1:
            return frameWith(lengthField(), bytes(below(30)));
        default:
            const unsigned int length = below(40);
            return frameWith(QByteArray(1, char(length)) + "000000"_hex, bytes(length) + "000016"_hex);
        }
    }

    QByteArray lengthField()
    {
        const unsigned int fields[] = {0,          1,          0x80000000, 0x80000001, 0x7ffffff1, 0x7ffffff2,
                                       0x7ffffff3, 0x7ffffff4, 0xfffffff2, 0xfffffff3, 0xfffffff4, 0xfffffff5,
                                       0xfffffffb, 0xfffffffc, 0xfffffffd, 0xfffffffe, 0xffffffff, unsigned(engine())};
        const unsigned int value = fields[below(std::size(fields))];
        return QByteArray(1, char(value)) + char(value >> 8) + char(value >> 16) + char(value >> 24);
    }

    std::mt19937 engine{20180314};
};

// Passes `stream` to client and model in random pieces, and compares them after every call.
static void expectSameAsByteByByte(FedClient& client, const QByteArray& stream, RandomStreams& random)
{
    ByteByByte model{client.recvFrame, client.recvFrameSize};
    const bool clearsFrames = random.below(4) != 0; // else more bytes are passed after the end of the frame
    const unsigned int pieceLimit = 1 + random.below(random.below(2) == 0 ? 4 : 60);
    for (int at = 0; at < stream.size();) {
        const std::vector<char> piece = heapBytes(stream.mid(at, int(1 + random.below(pieceLimit))));
        SCOPED_TRACE("piece at " + std::to_string(at) + " of " + hex(stream));
        at += int(piece.size());
        int pos = 0;
        int modelPos = 0;
        bool whole = true;
        while (whole) {
            whole = client.recvData(piece.data(), int(piece.size()), pos);
            ASSERT_EQ(whole, model.recvData(piece.data(), int(piece.size()), modelPos));
            ASSERT_EQ(pos, modelPos);
            ASSERT_EQ(hex(client.recvFrame), hex(model.frame));
            ASSERT_EQ(client.recvFrameSize, model.frameSize);
            if (whole && clearsFrames) {
                client.recvFrame.clear();
                client.recvFrameSize = 0;
                model = {};
            }
        }
    }
}

TEST(TcpApiRecvData, matchesByteByByteReassemblyOnAnyStream)
{
    FedClient client;
    RandomStreams random;
    for (int round = 0; round < 1500 && !testing::Test::HasFailure(); ++round) {
        client.recvFrame.clear();
        client.recvFrameSize = 0;
        expectSameAsByteByByte(client, random.stream(), random);
    }
}

TEST(TcpApiRecvData, matchesByteByByteReassemblyFromAnyState)
{
    FedClient client;
    RandomStreams random;
    for (int round = 0; round < 1500 && !testing::Test::HasFailure(); ++round) {
        client.recvFrame = random.below(2) == 0 ? random.bytes(random.below(30)) : random.stream().left(30);
        client.recvFrameSize = random.frameSize(client.recvFrame.size());
        expectSameAsByteByByte(client, random.stream(), random);
    }
}

// --- The check of a frame -------------------------------------------------------

// Checks `frame` with an expected size of `frameSize`. `len` is 77 if the check did not set it.
static bool isOk(const QByteArray& frame, int frameSize, int& len)
{
    FedClient client;
    client.recvFrame = frame;
    client.recvFrameSize = frameSize;
    len = 77;
    const bool ok = client.isRecvOk(len);
    EXPECT_EQ(hex(client.recvFrame), hex(frame)); // the frame is not modified
    EXPECT_EQ(client.recvFrameSize, frameSize);
    return ok;
}

TEST(TcpApiIsRecvOk, storesThePayloadLength)
{
    int len;
    EXPECT_TRUE(isOk(goodFrame, 15, len));
    EXPECT_EQ(len, 2);
    EXPECT_TRUE(isOk("68 00000000 0000 0000 10 0000 16"_hex, 13, len));
    EXPECT_EQ(len, 0);
}

TEST(TcpApiIsRecvOk, acceptsAnyStartSequenceCommandAndChecksum)
{
    int len;
    EXPECT_TRUE(isOk("00 00000000 ffff eedd ff ffff 16"_hex, 13, len));
    EXPECT_EQ(len, 0);
}

TEST(TcpApiIsRecvOk, refusesLessThanAHeader)
{
    int len;
    for (int size = 0; size < 10; ++size) {
        SCOPED_TRACE(size);
        for (const int frameSize : {0, size, 11, 15}) {
            EXPECT_FALSE(isOk(QByteArray(size, '\x16'), frameSize, len));
            EXPECT_EQ(len, 77);
        }
    }
}

TEST(TcpApiIsRecvOk, refusesASizeBelowElevenWithoutReadingTheLength)
{
    const QByteArray frame = "68 ebffffff 16161616 16 16 16 16"_hex; // length -21: only the size is wrong
    int len;
    for (const int frameSize : {-2147483647 - 1, -1, 0, 1, 9, 10}) {
        SCOPED_TRACE(frameSize);
        EXPECT_FALSE(isOk(frame, frameSize, len));
        EXPECT_EQ(len, 77);
    }
    EXPECT_TRUE(isOk(frame, 11, len));
    EXPECT_EQ(len, -21);
}

TEST(TcpApiIsRecvOk, refusesASizeAboveTheFrameWithoutReadingTheLength)
{
    int len;
    EXPECT_FALSE(isOk(goodFrame, 16, len));
    EXPECT_EQ(len, 77);
    EXPECT_FALSE(isOk(goodFrame.left(14), 15, len));
    EXPECT_EQ(len, 77);
    EXPECT_FALSE(isOk(goodFrame, 2147483647, len));
    EXPECT_EQ(len, 77);
}

TEST(TcpApiIsRecvOk, storesALengthAboveTheSizeBeforeRefusingIt)
{
    int len;
    EXPECT_FALSE(isOk("68 01000000 0000 0000 10 0000 16"_hex, 13, len));
    EXPECT_EQ(len, 1);
    EXPECT_FALSE(isOk("68 f2ffff7f 0000 0000 10 0000 16"_hex, 13, len)); // the highest sum, 0x7fffffff
    EXPECT_EQ(len, 0x7ffffff2);
}

TEST(TcpApiIsRecvOk, acceptsALengthBelowTheSize)
{
    int len;
    EXPECT_TRUE(isOk("68 01000000 0000 0000 10 0000 0000 16"_hex, 15, len));
    EXPECT_EQ(len, 1);
    EXPECT_TRUE(isOk("68 feffffff 0000 0000 10 16"_hex, 11, len)); // length of a size that wraps to 11
    EXPECT_EQ(len, -2);
    EXPECT_TRUE(isOk("68 ffffffff 0000 0000 10 00 16"_hex, 12, len));
    EXPECT_EQ(len, -1);
}

TEST(TcpApiIsRecvOk, acceptsALengthWhoseSumWithThirteenWraps)
{
    int len;
    EXPECT_TRUE(isOk("68 f3ffff7f 0000 0000 10 0000 16"_hex, 13, len)); // the lowest negative sum
    EXPECT_EQ(len, 0x7ffffff3);
    EXPECT_TRUE(isOk("68 ffffff7f 0000 0000 10 0000 16"_hex, 13, len));
    EXPECT_EQ(len, 0x7fffffff);
    EXPECT_TRUE(isOk("68 00000080 0000 0000 10 0000 16"_hex, 13, len));
    EXPECT_EQ(len, -2147483647 - 1);
}

TEST(TcpApiIsRecvOk, storesTheLengthBeforeRefusingAWrongEndByte)
{
    int len;
    EXPECT_FALSE(isOk("68 00000000 0000 0000 10 1616 17"_hex, 13, len));
    EXPECT_EQ(len, 0);
    EXPECT_FALSE(isOk("68 00000000 0000 0000 10 1616 96"_hex, 13, len));
    EXPECT_EQ(len, 0);
}

TEST(TcpApiIsRecvOk, expectsTheEndByteWhereTheSizeEnds)
{
    int len;
    EXPECT_TRUE(isOk("68 00000000 0000 0000 10 0000 16 00"_hex, 13, len)); // a byte more than the frame
    EXPECT_EQ(len, 0);
    EXPECT_FALSE(isOk("68 00000000 0000 0000 10 0000 00 16"_hex, 13, len));
    EXPECT_EQ(len, 0);
    EXPECT_FALSE(isOk("68 00000000 0000 0000 10 0000 16 00"_hex, 14, len)); // not where the length ends
    EXPECT_EQ(len, 0);
}
