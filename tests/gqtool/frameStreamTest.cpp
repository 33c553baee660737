#include "gqtool/frames/frameStream.h"

#include "support/hex.h"

#include <gtest/gtest.h>

#include <algorithm>

// Two whole frames, with bytes around them.
static const QByteArray noise = "00 16 ff"_hex;
static const QByteArray intFrame = "68"       //  0 start
                                   "04000000" //  1 length 4
                                   "0700"     //  5 sequence 7
                                   "02"       //  7 arg2
                                   "01"       //  8 arg1
                                   "06"       //  9 command 6
                                   "03000000" // 10 value 3
                                   "3412"     // 14 checksum
                                   "16"_hex;  // 16 end
static const QByteArray emptyFrame = "68 00000000 ffff 00 00 ff 0000 16"_hex;

// The items of a stream that comes in pieces of some size, its end among them.
static std::vector<StreamItem> itemsOf(const QByteArray& stream, int pieceSize, FrameStream frames = FrameStream())
{
    std::vector<StreamItem> items;
    for (int pos = 0; pos < stream.size(); pos += pieceSize) {
        for (const StreamItem& item : frames.feed(stream.mid(pos, pieceSize)))
            items.push_back(item);
    }
    for (const StreamItem& item : frames.end())
        items.push_back(item);
    return items;
}

static std::vector<StreamItem> itemsOf(const QByteArray& stream)
{
    return itemsOf(stream, stream.size());
}

TEST(FrameStream, returnsTheFieldsOfAFrame)
{
    const std::vector<StreamItem> items = itemsOf(intFrame);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].kind, StreamItem::frame);
    EXPECT_EQ(items[0].offset, 0);
    EXPECT_EQ(items[0].size, 17);
    const Frame& frame = items[0].content;
    EXPECT_EQ(frame.length, 4u);
    EXPECT_EQ(frame.sequence, 7);
    EXPECT_EQ(frame.arg2, 2);
    EXPECT_EQ(frame.arg1, 1);
    EXPECT_EQ(frame.command, 6);
    EXPECT_EQ(hex(frame.payload), "03 00 00 00");
    EXPECT_EQ(hex(frame.check), "34 12");
    EXPECT_EQ(frame.end, 0x16);
}

TEST(FrameStream, continuesAfterAFrameInTheSamePiece)
{
    const std::vector<StreamItem> items = itemsOf(noise + intFrame + emptyFrame + noise + intFrame);
    ASSERT_EQ(items.size(), 5u);
    EXPECT_EQ(items[0].kind, StreamItem::garbage);
    EXPECT_EQ(hex(items[0].bytes), "00 16 ff");
    EXPECT_EQ(items[1].kind, StreamItem::frame);
    EXPECT_EQ(items[1].offset, 3);
    EXPECT_EQ(items[2].kind, StreamItem::frame);
    EXPECT_EQ(items[2].offset, 20);
    EXPECT_EQ(items[2].size, 13);
    EXPECT_EQ(items[2].content.sequence, 65535);
    EXPECT_EQ(items[3].kind, StreamItem::garbage);
    EXPECT_EQ(items[4].offset, 36);
}

TEST(FrameStream, findsTheSameFramesInPiecesOfAnySize)
{
    const QByteArray stream = noise + intFrame + emptyFrame + "68 ffffffff"_hex + intFrame;
    for (int pieceSize = 1; pieceSize <= stream.size(); ++pieceSize) {
        SCOPED_TRACE(pieceSize);
        std::vector<long long> frameOffsets;
        long long covered = 0;
        for (const StreamItem& item : itemsOf(stream, pieceSize)) {
            EXPECT_EQ(item.offset, covered);
            covered += item.size;
            if (item.kind == StreamItem::frame)
                frameOffsets.push_back(item.offset);
        }
        EXPECT_EQ(frameOffsets, (std::vector<long long>{3, 20, 38}));
        EXPECT_EQ(covered, stream.size());
    }
}

TEST(FrameStream, ignoresStartAndEndBytesWithinAPayload)
{
    const QByteArray frame = "68 04000000 0000 00 00 20 68161668 0000 16"_hex;
    const std::vector<StreamItem> items = itemsOf(frame + frame);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].kind, StreamItem::frame);
    EXPECT_EQ(items[1].kind, StreamItem::frame);
}

TEST(FrameStream, dropsAWholeFrameWithAWrongEnd)
{
    QByteArray wrong = intFrame;
    wrong[16] = 0x17;
    const std::vector<StreamItem> items = itemsOf(wrong + intFrame);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].kind, StreamItem::wrongEnd);
    EXPECT_EQ(items[0].size, 17);
    EXPECT_EQ(items[0].content.end, 0x17);
    EXPECT_EQ(items[1].kind, StreamItem::frame);
}

TEST(FrameStream, findsAFrameAfterABadLength)
{
    const std::vector<StreamItem> items = itemsOf("68 fbffffff"_hex + intFrame);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].kind, StreamItem::badLength);
    EXPECT_EQ(items[0].size, 1);
    EXPECT_EQ(items[0].content.length, 4294967291u); // or -5
    EXPECT_EQ(hex(items[1].bytes), "fb ff ff ff");
    EXPECT_EQ(items[2].kind, StreamItem::frame);
}

TEST(FrameStream, allowsLengthsWhoseFrameFitsBelow2GiB)
{
    const auto kindOf = [](const QByteArray& header) { return itemsOf(header)[0].kind; };
    EXPECT_EQ(kindOf("68 f2ffff7f 0000 00 00 20"_hex), StreamItem::cut);       // 0x7ffffff2 + 13 is the largest int
    EXPECT_EQ(kindOf("68 f3ffff7f 0000 00 00 20"_hex), StreamItem::badLength); // one more
    EXPECT_EQ(kindOf("68 ffffffff 0000 00 00 20"_hex), StreamItem::badLength); // -1
}

TEST(FrameStream, continuesAfterAStartByteWhoseLengthExceedsTheLimit)
{
    const FrameStream limited(INT_MAX, 4);
    const std::vector<StreamItem> items = itemsOf("68 05000000"_hex + intFrame, INT_MAX, limited);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].kind, StreamItem::badLength);
    EXPECT_EQ(items[0].content.length, 5u);
    EXPECT_EQ(hex(items[1].bytes), "05 00 00 00");
    EXPECT_EQ(items[2].kind, StreamItem::frame);
    EXPECT_EQ(items[2].content.length, 4u);
}

TEST(FrameStream, reportsAFrameThatTheStreamCutsOff)
{
    for (int size = 1; size < intFrame.size(); ++size) {
        SCOPED_TRACE(size);
        const std::vector<StreamItem> items = itemsOf(emptyFrame + intFrame.left(size), 4);
        ASSERT_EQ(items.size(), 2u);
        EXPECT_EQ(items[1].kind, size < 10 ? StreamItem::cutHeader : StreamItem::cut);
        EXPECT_EQ(items[1].offset, 13);
        EXPECT_EQ(items[1].size, size);
        if (size < 10) {
            EXPECT_EQ(hex(items[1].bytes), hex(intFrame.left(size)));
        } else {
            EXPECT_EQ(items[1].content.length, 4u);
            EXPECT_EQ(hex(items[1].content.payload), hex(intFrame.mid(10, std::min(size - 10, 4))));
            EXPECT_EQ(hex(items[1].content.check), hex(intFrame.mid(14, std::max(size - 14, 0))));
        }
    }
}

TEST(FrameStream, beginsANewStreamAfterTheEndOfOne)
{
    FrameStream frames;
    frames.feed(intFrame.left(12));
    EXPECT_EQ(frames.end().size(), 1u);
    EXPECT_TRUE(frames.end().empty());
    const std::vector<StreamItem> items = frames.feed(intFrame);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].kind, StreamItem::frame);
    EXPECT_EQ(items[0].offset, 0);
}

TEST(FrameStream, keepsAtMostTheGivenBytesOfAPayload)
{
    for (const int pieceSize : {1, 3, 1000}) {
        SCOPED_TRACE(pieceSize);
        const std::vector<StreamItem> items = itemsOf(intFrame + emptyFrame, pieceSize, FrameStream(2));
        ASSERT_EQ(items.size(), 2u);
        EXPECT_EQ(items[0].kind, StreamItem::frame);
        EXPECT_EQ(items[0].size, 17);
        EXPECT_EQ(items[0].content.length, 4u);
        EXPECT_EQ(hex(items[0].content.payload), "03 00");
        EXPECT_EQ(items[1].kind, StreamItem::frame);
    }
}

// --- The length in the wrong byte order ---------------------------------------------------------------------------

static const QByteArray bigEndianFrame = "68"       //  0 start
                                         "00000004" //  1 length 4, big-endian
                                         "0007"     //  5 sequence
                                         "00"       //  7 arg2
                                         "00"       //  8 arg1
                                         "01"       //  9 command 1
                                         "00000003" // 10 value
                                         "0000"     // 14 checksum
                                         "16"_hex;  // 16 end

TEST(FrameStream, recognisesALengthInTheWrongByteOrder)
{
    for (int pieceSize = 1; pieceSize <= bigEndianFrame.size(); ++pieceSize) {
        const std::vector<StreamItem> items = itemsOf(bigEndianFrame, pieceSize);
        ASSERT_EQ(items.size(), 1u);
        EXPECT_EQ(items[0].kind, StreamItem::cut);
        EXPECT_EQ(items[0].content.length, 67108864u);
        EXPECT_EQ(items[0].swappedLength, 4);
    }
    EXPECT_EQ(itemsOf(bigEndianFrame + bigEndianFrame)[0].swappedLength, 4);
}

TEST(FrameStream, recognisesALengthInTheWrongByteOrderThatNoFrameHas)
{
    const QByteArray frame = "68 00000080 0000 00 00 01"_hex + QByteArray(128, '\0') + "0000 16"_hex; // 0x80000000
    for (const QByteArray& stream : {frame, frame + frame, noise + frame + intFrame}) {
        const std::vector<StreamItem> items = itemsOf(stream);
        const StreamItem& item = items[items[0].kind == StreamItem::badLength ? 0 : 1];
        EXPECT_EQ(item.kind, StreamItem::badLength);
        EXPECT_EQ(item.swappedLength, 128);
    }
}

TEST(FrameStream, assumesNoOtherByteOrderIfThatDoesNotFitEither)
{
    QByteArray otherEnd = bigEndianFrame;
    otherEnd[16] = '\x17';
    for (const QByteArray& stream : {bigEndianFrame.left(16), bigEndianFrame + "00"_hex, otherEnd, intFrame.left(16),
                                     "68 00000400"_hex + bigEndianFrame.mid(5)})
        EXPECT_EQ(itemsOf(stream)[0].swappedLength, -1) << hex(stream);
    EXPECT_EQ(itemsOf(intFrame)[0].swappedLength, -1);
    EXPECT_EQ(itemsOf("68 ffffffff"_hex)[0].swappedLength, -1);
    // Only the first 3 bytes of the payload are kept.
    EXPECT_EQ(itemsOf(bigEndianFrame, 17, FrameStream(3))[0].swappedLength, -1);
}

// The garbage after a bad length belongs to it, whatever the number of items.
TEST(FrameStream, returnsTheItemsOfAPieceInParts)
{
    const QByteArray swapped = "68 000000f0 0000 00 00 06"_hex + QByteArray(240, 'x') + "0000 16"_hex;
    const QByteArray stream = noise + swapped + intFrame + emptyFrame + "68 68 68 ff ff ff ff"_hex + intFrame;
    const std::vector<StreamItem> whole = FrameStream().feed(stream);
    ASSERT_EQ(whole[1].swappedLength, 240);
    for (size_t most = 1; most <= whole.size(); ++most) {
        FrameStream frames;
        std::vector<StreamItem> items = frames.feed(stream, most);
        while (frames.hasMore()) {
            const std::vector<StreamItem> more = frames.more(most);
            EXPECT_LE(more.size(), most + 1);
            items.insert(items.end(), more.begin(), more.end());
        }
        ASSERT_EQ(items.size(), whole.size()) << most;
        for (size_t i = 0; i < items.size(); ++i) {
            EXPECT_EQ(items[i].kind, whole[i].kind) << most << ' ' << i;
            EXPECT_EQ(items[i].offset, whole[i].offset) << most << ' ' << i;
            EXPECT_EQ(items[i].size, whole[i].size) << most << ' ' << i;
            EXPECT_EQ(items[i].swappedLength, whole[i].swappedLength) << most << ' ' << i;
        }
    }
}

TEST(FrameStream, returnsFewItemsOfAPieceThatHasMany)
{
    FrameStream frames;
    EXPECT_EQ(frames.feed(emptyFrame.repeated(1000), 64).size(), 64u);
    EXPECT_TRUE(frames.hasMore());
    EXPECT_EQ(frames.more(900).size(), 900u);
    EXPECT_EQ(frames.more(900).size(), 36u);
    EXPECT_FALSE(frames.hasMore());
}
