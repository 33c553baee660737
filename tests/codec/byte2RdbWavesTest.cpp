#include "byte2Rdb.h"
#include "support/floatImages.h"
#include "support/goldenFile.h"
#include "support/hex.h"
#include "support/recordChecks.h"
#include "support/sampleModel.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>

using gqdb::BlobWaveHead;
using gqdb::CByte2Rdb;

using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;
using Ints = std::vector<int>;

// --- The head -------------------------------------------------------------------

static_assert(sizeof(BlobWaveHead) == 96 && std::is_trivially_copyable_v<BlobWaveHead>);
static_assert(offsetof(BlobWaveHead, headByte) == 0 && offsetof(BlobWaveHead, waveFlags) == 1);
static_assert(offsetof(BlobWaveHead, headFill1) == 2 && offsetof(BlobWaveHead, limitHigh) == 32);
static_assert(offsetof(BlobWaveHead, limitLow) == 40 && offsetof(BlobWaveHead, sampleCount) == 48);
static_assert(offsetof(BlobWaveHead, markCount) == 52 && offsetof(BlobWaveHead, headFill2) == 56);
static_assert(allAre<unsigned char BlobWaveHead::*>(&BlobWaveHead::headByte, &BlobWaveHead::waveFlags));
static_assert(std::is_same_v<decltype(BlobWaveHead::headFill1), unsigned char[30]>);
static_assert(std::is_same_v<decltype(BlobWaveHead::headFill2), unsigned char[40]>);
static_assert(allAre<double BlobWaveHead::*>(&BlobWaveHead::limitHigh, &BlobWaveHead::limitLow));
static_assert(allAre<unsigned int BlobWaveHead::*>(&BlobWaveHead::sampleCount, &BlobWaveHead::markCount));

static_assert(std::is_same_v<decltype(&CByte2Rdb::byte2Wave),
                             int (*)(const Bytes&, unsigned char*, BlobWaveHead&, Floats&, Ints&)>);

// Bits of waveFlags.
static constexpr int rawBit = 1;
static constexpr int quantisedBit = 2;
static constexpr int compressedBit = 4;

// The target size passed to zlib, and so the space that it may use.
static constexpr int blockSize = 5000000;

// --- Helpers --------------------------------------------------------------------

static QByteArray bytesOf(const BlobWaveHead& head)
{
    QByteArray bytes(sizeof head, 0);
    std::memcpy(bytes.data(), &head, sizeof head);
    return bytes;
}

static QByteArray bytesOf(const Bytes& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), int(bytes.size())};
}

static Bytes vectorOf(const QByteArray& bytes)
{
    return {bytes.begin(), bytes.end()};
}

static BlobWaveHead headOf(const QByteArray& bytes)
{
    BlobWaveHead head;
    std::memcpy(&head, bytes.constData(), sizeof head);
    return head;
}

static BlobWaveHead headWith(int flags)
{
    BlobWaveHead head;
    head.waveFlags = static_cast<unsigned char>(flags);
    return head;
}

// 96 distinct bytes: a0 to ff.
static QByteArray distinctBytes()
{
    QByteArray bytes;
    for (int byte = 0xa0; byte <= 0xff; ++byte)
        bytes += char(byte);
    return bytes;
}

// A block compressed by zlib at its default level.
static QByteArray compressed(const QByteArray& block)
{
    QByteArray stream(int(compressBound(uLong(block.size()))), 0);
    uLongf size = uLongf(stream.size());
    const auto* source = reinterpret_cast<const Bytef*>(block.constData());
    EXPECT_EQ(compress(reinterpret_cast<Bytef*>(stream.data()), &size, source, uLong(block.size())), Z_OK);
    return stream.left(int(size));
}

static QByteArray uncompressed(const QByteArray& stream)
{
    QByteArray block(100000, 0);
    uLongf size = uLongf(block.size());
    const auto* source = reinterpret_cast<const Bytef*>(stream.constData());
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(block.data()), &size, source, uLong(stream.size())), Z_OK);
    return block.left(int(size));
}

// zlib's work buffer, or null if the flags do not ask for compression.
static unsigned char* zlibBuffer(int flags)
{
    static Bytes buffer(blockSize);
    return (flags & compressedBit) != 0 ? buffer.data() : nullptr;
}

// The samples as a stored wave. wave2Byte() must succeed, with a raw buffer of exactly the size it needs.
template <typename Sample>
static QByteArray pack(BlobWaveHead& head, const std::vector<Sample>& samples, const Ints& marks = {})
{
    const bool sixteenBits = std::is_same_v<Sample, int> || (head.waveFlags & quantisedBit) != 0;
    Bytes raw(samples.size() * (sixteenBits ? 2 : 4));
    Bytes stored;
    EXPECT_EQ(CByte2Rdb::wave2Byte(head, samples, marks, raw.data(), zlibBuffer(head.waveFlags), stored), 1);
    return bytesOf(stored);
}

// The sample block of a wave without marks.
template <typename Sample>
static QByteArray blockOf(int flags, const std::vector<Sample>& samples)
{
    BlobWaveHead head = headWith(flags);
    return pack(head, samples).mid(96);
}

// The result of byte2Wave() on a stored wave, with targets that are not empty before.
struct Unpacked {
    explicit Unpacked(const QByteArray& bytes)
    {
        const int flags = bytes.size() > 1 ? bytes[1] : 0;
        result = CByte2Rdb::byte2Wave(vectorOf(bytes), zlibBuffer(flags), head, samples, marks);
    }

    static inline const Floats oldSamples = {77};
    static inline const Ints oldMarks = {88, 99};

    int result;
    BlobWaveHead head;
    Floats samples = oldSamples;
    Ints marks = oldMarks;
};

// A stored wave from its parts, with no marks and the number of samples not set.
static QByteArray wave(BlobWaveHead head, const QByteArray& block)
{
    return bytesOf(head) + block;
}

static QByteArray wave(int flags, const QByteArray& block)
{
    return wave(headWith(flags), block);
}

// --- The waves of tests/golden --------------------------------------------------

static const Ints goldenMarks = {1, -2, 0x12345678};

static Floats goldenFloats()
{
    Floats samples;
    for (int i = 0; i < 40; ++i)
        samples.push_back(float(i * 37 % 101) * 0.125f - 6);
    return samples;
}

static Ints goldenShorts()
{
    Ints samples;
    for (int i = 0; i < 64; ++i)
        samples.push_back(i * 7919 % 65536 - 32768);
    return samples;
}

// The raw values after scale and offset: halves and integers, so nothing is rounded.
static Floats goldenShortsAsFloats()
{
    Floats samples;
    for (int raw : goldenShorts())
        samples.push_back(float(raw) * 0.5f + 1);
    return samples;
}

static std::string goldenQuantisedImages()
{
    Floats samples;
    const QJsonValue wave = goldenJson("waves/quantised.json")["value"];
    for (const QJsonValue& sample : wave["samples"].toArray())
        samples.push_back(static_cast<float>(sample.toDouble()));
    return images(samples);
}

// The head they share, except for flags, limits and number of samples.
static BlobWaveHead goldenHead(int flags)
{
    BlobWaveHead head = headWith(flags);
    head.headByte = 0x5a;
    for (int i = 0; i < 30; ++i)
        head.headFill1[i] = static_cast<unsigned char>(0xa0 + i);
    for (int i = 0; i < 40; ++i)
        head.headFill2[i] = static_cast<unsigned char>(0xc0 + i);
    return head;
}

static QByteArray withFlags(QByteArray stored, int flags)
{
    stored[1] = char(flags);
    return stored;
}

// --- Packing floats -------------------------------------------------------------

TEST(Wave2ByteOfFloats, storesHeadMarksAndSamples)
{
    BlobWaveHead head = goldenHead(0);
    EXPECT_EQ(hex(pack(head, goldenFloats(), goldenMarks)), hex(goldenFile("waves/floats.hex")));
}

TEST(Wave2ByteOfFloats, needs136BytesForTenSamples)
{
    BlobWaveHead head;
    const QByteArray stored = pack(head, Floats{1, 2, 3, 4, 5, 6, 7, 8, 9, -0.5f});
    EXPECT_EQ(stored.size(), 136);
    EXPECT_EQ(hex(stored.right(8)), "00 00 10 41 00 00 00 bf");
}

TEST(Wave2ByteOfFloats, setsLimitsAndCounts)
{
    BlobWaveHead head;
    head.sampleCount = 999;
    head.markCount = 999;
    head.limitHigh = 100;
    head.limitLow = -100;
    const QByteArray stored = pack(head, Floats{0.5f, 2, 0.1f}, {7, 8});
    EXPECT_EQ(hex(stored.mid(32, 24)), "00 00 00 00 00 00 00 40 " // 32 limitHigh 2
                                       "00 00 00 a0 99 99 b9 3f " // 40 limitLow 0.1, of a float
                                       "03 00 00 00 "             // 48 sampleCount
                                       "02 00 00 00");            // 52 markCount
    EXPECT_EQ(hex(bytesOf(head)), hex(stored.left(96))) << "the caller's head";
}

TEST(Wave2ByteOfFloats, findsTheLimitsInAnyPartOfALongWave)
{
    const size_t count = 10000;
    for (size_t place : {size_t(0), size_t(4095), size_t(4096), size_t(9999)}) {
        for (const float value : {2.0f, -2.0f}) {
            Floats samples(count, 1.0f);
            samples[place] = value;
            BlobWaveHead head;
            const QByteArray stored = pack(head, samples);
            EXPECT_EQ(head.limitHigh, value > 0 ? 2 : 1) << place;
            EXPECT_EQ(head.limitLow, value > 0 ? 1 : -2) << place;
            EXPECT_EQ(hex(stored.mid(96 + 4 * int(place), 4)), value > 0 ? "00 00 00 40" : "00 00 00 c0") << place;
        }
    }
}

TEST(Wave2ByteOfFloats, keepsTheFirstZeroOfALongWaveAsALimit)
{
    for (const auto& places : {std::pair<size_t, size_t>(5000, 9000), std::pair<size_t, size_t>(9000, 5000)}) {
        Floats samples(10000, -1.0f);
        samples[places.first] = 0.0f;
        samples[places.second] = -0.0f;
        BlobWaveHead head;
        pack(head, samples);
        EXPECT_EQ(std::signbit(head.limitHigh), places.second < places.first);
        EXPECT_EQ(head.limitHigh, 0);
        EXPECT_EQ(head.limitLow, -1);
    }
}

TEST(Wave2ByteOfFloats, ignoresANanInAnyPartOfALongWaveExceptTheFirstSample)
{
    Floats samples(10000, 1.0f);
    samples[4096] = std::numeric_limits<float>::quiet_NaN();
    BlobWaveHead head;
    pack(head, samples);
    EXPECT_EQ(head.limitHigh, 1);
    EXPECT_EQ(head.limitLow, 1);

    std::swap(samples[0], samples[4096]);
    pack(head, samples);
    EXPECT_TRUE(std::isnan(head.limitHigh));
    EXPECT_TRUE(std::isnan(head.limitLow));
}

TEST(Wave2ByteOfFloats, copiesEveryOtherByteOfTheHead)
{
    BlobWaveHead head = headOf(distinctBytes()); // flags a1
    QByteArray expected = distinctBytes();
    expected.replace(32, 24, "000000000000f0bf 00000000000000c0 02000000 00000000"_hex); // limits -1 and -2, counts
    EXPECT_EQ(hex(pack(head, Floats{-1, -2})), hex(expected + "000080bf 000000c0"_hex));
    EXPECT_EQ(hex(bytesOf(head)), hex(expected)) << "the caller's head";
}

TEST(Wave2ByteOfFloats, storesOnlyTheHeadOfAnEmptyWaveAndLeavesItsLimits)
{
    BlobWaveHead head = headOf(distinctBytes());
    QByteArray expected = distinctBytes();
    expected.replace(48, 8, QByteArray(8, 0)); // both counts
    EXPECT_EQ(hex(pack(head, Floats())), hex(expected));
    EXPECT_EQ(hex(bytesOf(head)), hex(expected)) << "the caller's head";
}

// Bit 0 is ignored here: only bit 1 selects the form. No bit is changed.
TEST(Wave2ByteOfFloats, selectsTheFormByBits1And2)
{
    const Floats samples = {0, 0.25f, 0.5f, 1};
    const QByteArray floats = "00000000 0000803e 0000003f 0000803f"_hex;
    const QByteArray quantised = "0000 ff3f ff7f ffff"_hex; // 0, 16383.75, 32767.5, 65535
    for (int flags : {0, 1, 2, 3, 4, 5, 6, 7, 0xf8, 0xf9, 0xfa, 0xff}) {
        SCOPED_TRACE(flags);
        const QByteArray block = (flags & quantisedBit) != 0 ? quantised : floats;
        BlobWaveHead head = headWith(flags);
        const QByteArray stored = pack(head, samples);
        EXPECT_EQ(hex(stored.mid(96)), hex((flags & compressedBit) != 0 ? compressed(block) : block));
        EXPECT_EQ(int(head.waveFlags), flags);
        EXPECT_EQ(stored[1], char(flags));
    }
}

TEST(Wave2ByteOfFloats, quantisesInSinglePrecision)
{
    EXPECT_EQ(hex(blockOf(quantisedBit, Floats{0.7f, 0.1f, 0.42f})), "ff ff 00 00 88 88"); // in double: 87 88
}

TEST(Wave2ByteOfFloats, quantisesAConstantWaveToZeros)
{
    EXPECT_EQ(hex(blockOf(quantisedBit, Floats{2.5f, 2.5f, 2.5f})), "00 00 00 00 00 00"); // 80000000, cut to 16 bits
}

TEST(Wave2ByteOfFloats, quantisesANanToZero)
{
    EXPECT_EQ(hex(blockOf(quantisedBit, Floats{1, std::nanf(""), 3, 2})), "00 00 00 00 ff ff ff 7f");
    EXPECT_EQ(hex(blockOf(quantisedBit, Floats{std::nanf(""), 1, 3})), "00 00 00 00 00 00"); // NaN in both limits
}

TEST(Wave2ByteOfFloats, compressesOnlyTheSamples)
{
    BlobWaveHead head = headWith(compressedBit);
    const QByteArray stored = pack(head, goldenFloats(), goldenMarks);
    EXPECT_EQ(hex(stored.mid(96, 12)), "01 00 00 00 fe ff ff ff 78 56 34 12");
    EXPECT_EQ(hex(uncompressed(stored.mid(108))), hex(goldenFile("waves/floats.hex").mid(108)));
}

TEST(Wave2ByteOfFloats, compressesAnEmptyBlock)
{
    for (int flags : {4, 5, 6, 7}) {
        SCOPED_TRACE(flags);
        EXPECT_EQ(hex(blockOf(flags, Floats())), "78 9c 03 00 00 00 00 01"); // zlib's empty stream, default level
    }
}

// --- Packing raw values ---------------------------------------------------------

TEST(Wave2ByteOfInts, storesHeadMarksAndSamples)
{
    for (int flags : {0, rawBit}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = goldenHead(flags);
        head.limitHigh = 0.5;
        head.limitLow = 1;
        EXPECT_EQ(hex(pack(head, goldenShorts(), goldenMarks)), hex(goldenFile("waves/raw.hex")));
    }
}

TEST(Wave2ByteOfInts, copiesTheHeadExceptTheCounts)
{
    BlobWaveHead head = headOf(distinctBytes()); // flags a1, bit 0 among them
    QByteArray expected = distinctBytes();
    expected.replace(48, 8, "03000000 02000000"_hex);
    const QByteArray stored = pack(head, Ints{1, 2, 3}, {-1, 0x12345678});
    EXPECT_EQ(hex(stored), hex(expected + "ffffffff 78563412 0100 0200 0300"_hex));
    EXPECT_EQ(hex(bytesOf(head)), hex(expected)) << "the caller's head";
}

TEST(Wave2ByteOfInts, storesOnlyTheHeadOfAnEmptyWave)
{
    BlobWaveHead head = headOf(distinctBytes());
    QByteArray expected = distinctBytes();
    expected.replace(48, 8, QByteArray(8, 0));
    EXPECT_EQ(hex(pack(head, Ints())), hex(expected));
}

// Always raw values, regardless of bit 1.
TEST(Wave2ByteOfInts, setsBit0AndCompressesByBit2)
{
    const QByteArray block = "0000 ffff 0180"_hex;
    for (int flags : {0, 1, 2, 3, 4, 5, 6, 7, 0xf8, 0xfa, 0xfe}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = headWith(flags);
        const QByteArray stored = pack(head, Ints{0, -1, -32767});
        EXPECT_EQ(hex(stored.mid(96)), hex((flags & compressedBit) != 0 ? compressed(block) : block));
        EXPECT_EQ(int(head.waveFlags), flags | rawBit) << "the caller's head";
        EXPECT_EQ(stored[1], char(flags | rawBit));
    }
}

TEST(Wave2ByteOfInts, keepsTheLowSixteenBits)
{
    EXPECT_EQ(hex(blockOf(0, Ints{70000, 40000, -2, 65536, 0x7fff8001})), "70 11 40 9c fe ff 00 00 01 80");
}

TEST(Wave2ByteOfInts, compressesAnEmptyBlock)
{
    EXPECT_EQ(hex(blockOf(compressedBit, Ints())), "78 9c 03 00 00 00 00 01");
}

// --- Packing both ---------------------------------------------------------------

TEST(Wave2Byte, replacesTheStoredVector)
{
    for (size_t size : {size_t(0), size_t(103), size_t(200)}) {
        SCOPED_TRACE(size);
        BlobWaveHead head;
        Bytes raw(8);
        Bytes stored(size, 0xee);
        EXPECT_EQ(CByte2Rdb::wave2Byte(head, Floats{1, 2}, {5}, raw.data(), nullptr, stored), 1);
        EXPECT_EQ(hex(bytesOf(stored).mid(96)), "05 00 00 00 00 00 80 3f 00 00 00 40");

        Bytes other(size, 0xee);
        EXPECT_EQ(CByte2Rdb::wave2Byte(head, Ints{1, 2}, {5}, raw.data(), nullptr, other), 1);
        EXPECT_EQ(hex(bytesOf(other).mid(96)), "05 00 00 00 01 00 02 00");
    }
}

TEST(Wave2Byte, storesOnlyTheBlockInTheRawBuffer)
{
    for (int flags : {0, compressedBit}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = headWith(flags);
        Bytes stored;
        Bytes raw(10, 0xee);
        CByte2Rdb::wave2Byte(head, Floats{1, 2}, {}, raw.data(), zlibBuffer(flags), stored);
        EXPECT_EQ(hex(bytesOf(raw)), "00 00 80 3f 00 00 00 40 ee ee");

        raw.assign(10, 0xee);
        head = headWith(flags | quantisedBit);
        CByte2Rdb::wave2Byte(head, Floats{1, 2}, {}, raw.data(), zlibBuffer(flags), stored);
        EXPECT_EQ(hex(bytesOf(raw)), "00 00 ff ff ee ee ee ee ee ee");

        raw.assign(10, 0xee);
        CByte2Rdb::wave2Byte(head, Ints{1, 2}, {}, raw.data(), zlibBuffer(flags), stored);
        EXPECT_EQ(hex(bytesOf(raw)), "01 00 02 00 ee ee ee ee ee ee");
    }
}

TEST(Wave2Byte, leavesThePackedBufferUnchangedWithoutBit2)
{
    for (int flags : {0, 1, 2, 3, 0xfb}) {
        SCOPED_TRACE(flags);
        Bytes raw(4);
        Bytes packed(100, 0xee);
        Bytes stored;
        BlobWaveHead head = headWith(flags);
        CByte2Rdb::wave2Byte(head, Floats{1}, {1}, raw.data(), packed.data(), stored);
        CByte2Rdb::wave2Byte(head, Ints{1}, {1}, raw.data(), packed.data(), stored);
        EXPECT_EQ(packed, Bytes(100, 0xee));
    }
}

// --- Packing more than zlib's buffer holds --------------------------------------

// Raw values that do not compress.
static Ints noise(int count)
{
    std::mt19937 numbers(1);
    Ints samples;
    samples.reserve(size_t(count));
    while (int(samples.size()) < count)
        samples.push_back(int(numbers() & 0xffff));
    return samples;
}

TEST(Wave2ByteOfFloats, failsAboveFiveMillionPackedBytes)
{
    std::mt19937 numbers(1);
    Floats samples = {floatOf(0x3fffffff), floatOf(0xbfffffff)}; // larger and smaller than all that follow
    while (samples.size() < 1400000)
        samples.push_back(floatOf(unsigned(numbers()) & 0xbfffffff)); // below 2 in magnitude

    QByteArray expected = distinctBytes();
    expected[1] = compressedBit;
    BlobWaveHead head = headOf(expected);
    Bytes raw(4 * samples.size());
    Bytes stored = {1, 2, 3};
    EXPECT_EQ(CByte2Rdb::wave2Byte(head, samples, {1, 2}, raw.data(), zlibBuffer(compressedBit), stored), -1);

    EXPECT_EQ(stored, (Bytes{1, 2, 3}));
    expected.replace(32, 20,
                     "000000e0ffffff3f" // 32 limitHigh
                     "000000e0ffffffbf" // 40 limitLow
                     "c05c1500"_hex);   // 48 sampleCount 1400000
    EXPECT_EQ(hex(bytesOf(head)), hex(expected)) << "markCount must not be set yet";
}

TEST(Wave2ByteOfInts, failsAboveFiveMillionPackedBytes)
{
    const Ints samples = noise(2600000);
    QByteArray expected = distinctBytes();
    expected[1] = compressedBit;
    BlobWaveHead head = headOf(expected);
    Bytes raw(2 * samples.size());
    Bytes stored = {1, 2, 3};
    EXPECT_EQ(CByte2Rdb::wave2Byte(head, samples, {1, 2}, raw.data(), zlibBuffer(compressedBit), stored), -1);

    EXPECT_EQ(stored, (Bytes{1, 2, 3}));
    expected[1] = rawBit | compressedBit;
    expected.replace(48, 4, "40ac2700"_hex); // 48 sampleCount 2600000
    EXPECT_EQ(hex(bytesOf(head)), hex(expected)) << "limits and markCount must not be set";
}

// zlib adds a few bytes per block to noise: the longest wave that still fits is found in one or two steps.
TEST(Wave2ByteOfInts, packsUpToFiveMillionBytes)
{
    const Ints samples = noise(2500000);
    QByteArray block(2 * int(samples.size()), 0);
    CByte2Rdb::ushorts2Buffer(samples, block.data());

    int count = int(samples.size());
    int packedSize = compressed(block).size();
    ASSERT_GT(packedSize, blockSize);
    while (packedSize > blockSize) {
        count -= (packedSize - blockSize + 1) / 2;
        packedSize = compressed(block.left(2 * count)).size();
    }
    ASSERT_GT(packedSize, blockSize - 8);

    Bytes raw(size_t(block.size()));
    Bytes stored;
    BlobWaveHead head = headWith(compressedBit);
    const Ints fitting(samples.begin(), samples.begin() + count);
    EXPECT_EQ(CByte2Rdb::wave2Byte(head, fitting, {}, raw.data(), zlibBuffer(compressedBit), stored), 1);
    EXPECT_EQ(int(stored.size()), 96 + packedSize);

    const Ints longer(samples.begin(), samples.begin() + count + 4);
    EXPECT_EQ(CByte2Rdb::wave2Byte(head, longer, {}, raw.data(), zlibBuffer(compressedBit), stored), -1);
}

// --- Unpacking ------------------------------------------------------------------

TEST(Byte2Wave, readsFloats)
{
    const QByteArray stored = goldenFile("waves/floats.hex");
    const Unpacked unpacked(stored);
    EXPECT_EQ(unpacked.result, 1);
    EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored.left(96)));
    EXPECT_EQ(unpacked.marks, goldenMarks);
    EXPECT_EQ(images(unpacked.samples), images(goldenFloats()));
}

TEST(Byte2Wave, readsCompressedFloats)
{
    const QByteArray stored = goldenFile("waves/floatsPacked.hex");
    const Unpacked unpacked(stored);
    EXPECT_EQ(unpacked.result, 1);
    EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored.left(96)));
    EXPECT_EQ(unpacked.marks, goldenMarks);
    EXPECT_EQ(images(unpacked.samples), images(goldenFloats()));
}

// Bit 0 takes precedence over bit 1; bits above 2 are ignored.

TEST(Byte2Wave, readsRawValues)
{
    for (int flags : {1, 3, 0xf9, 0xfb}) {
        SCOPED_TRACE(flags);
        const QByteArray stored = withFlags(goldenFile("waves/raw.hex"), flags);
        const Unpacked unpacked(stored);
        EXPECT_EQ(unpacked.result, 1);
        EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored.left(96)));
        EXPECT_EQ(unpacked.marks, goldenMarks);
        EXPECT_EQ(images(unpacked.samples), images(goldenShortsAsFloats()));
    }
}

TEST(Byte2Wave, readsCompressedRawValues)
{
    for (int flags : {5, 7, 0xfd, 0xff}) {
        SCOPED_TRACE(flags);
        const Unpacked unpacked(withFlags(goldenFile("waves/rawPacked.hex"), flags));
        EXPECT_EQ(unpacked.result, 1);
        EXPECT_EQ(unpacked.marks, goldenMarks);
        EXPECT_EQ(images(unpacked.samples), images(goldenShortsAsFloats()));
    }
}

TEST(Byte2Wave, readsQuantisedSamples)
{
    for (int flags : {2, 0xfa}) {
        SCOPED_TRACE(flags);
        const QByteArray stored = withFlags(goldenFile("waves/quantised.hex"), flags);
        const Unpacked unpacked(stored);
        EXPECT_EQ(unpacked.result, 1);
        EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored.left(96)));
        EXPECT_EQ(unpacked.marks, goldenMarks);
        EXPECT_EQ(images(unpacked.samples), goldenQuantisedImages());
    }
}

TEST(Byte2Wave, readsCompressedQuantisedSamples)
{
    for (int flags : {6, 0xfe}) {
        SCOPED_TRACE(flags);
        const Unpacked unpacked(withFlags(goldenFile("waves/quantisedPacked.hex"), flags));
        EXPECT_EQ(unpacked.result, 1);
        EXPECT_EQ(unpacked.marks, goldenMarks);
        EXPECT_EQ(images(unpacked.samples), goldenQuantisedImages());
    }
}

TEST(Byte2Wave, ignoresTheBitsAbove2OfAFloatWave)
{
    EXPECT_EQ(Unpacked(wave(0xf8, "0000803f 000000c0"_hex)).samples, (Floats{1, -2}));
    EXPECT_EQ(Unpacked(wave(0xfc, compressed("0000803f 000000c0"_hex))).samples, (Floats{1, -2}));
}

TEST(Byte2Wave, copiesEveryByteOfTheHead)
{
    QByteArray stored = distinctBytes();
    stored.replace(52, 4, QByteArray(4, 0)); // markCount; flags a1 and the huge sampleCount are kept
    const Unpacked unpacked(stored);
    EXPECT_EQ(unpacked.result, 1);
    EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored));
}

TEST(Byte2Wave, replacesSamplesAndMarks)
{
    for (size_t size : {size_t(0), size_t(2), size_t(200)}) {
        SCOPED_TRACE(size);
        BlobWaveHead head;
        Floats samples(size, 77);
        Ints marks(size, 88);
        EXPECT_EQ(CByte2Rdb::byte2Wave(vectorOf(goldenFile("waves/floats.hex")), nullptr, head, samples, marks), 1);
        EXPECT_EQ(samples, goldenFloats());
        EXPECT_EQ(marks, goldenMarks);

        EXPECT_EQ(CByte2Rdb::byte2Wave(vectorOf(goldenFile("waves/raw.hex")), nullptr, head, samples, marks), 1);
        EXPECT_EQ(samples, goldenShortsAsFloats());
    }
}

TEST(Byte2Wave, leavesTheWorkBufferUnchangedWithoutBit2)
{
    for (int flags : {0, 1, 2, 3, 0xfb}) {
        SCOPED_TRACE(flags);
        Bytes workBuffer(100, 0xee);
        BlobWaveHead head;
        Floats samples;
        Ints marks;
        const Bytes stored = vectorOf(wave(flags, "0000803f"_hex));
        EXPECT_EQ(CByte2Rdb::byte2Wave(stored, workBuffer.data(), head, samples, marks), 1);
        EXPECT_EQ(workBuffer, Bytes(100, 0xee));
    }
}

// The head contains the limits as doubles. Scale and offset are used as doubles, limits of a range as floats.

TEST(Byte2Wave, usesScaleAndOffsetInDoublePrecision)
{
    BlobWaveHead head = headWith(rawBit);
    head.limitHigh = 0.1;
    head.limitLow = 0.3;
    // ...9a if either were a float, or if the product were not rounded.
    EXPECT_EQ(images(Unpacked(wave(head, "0900"_hex)).samples), "3f999999");
}

TEST(Byte2Wave, narrowsTheLimitsOfQuantisedSamplesToFloats)
{
    BlobWaveHead head = headWith(quantisedBit);
    head.limitHigh = 0.7;
    head.limitLow = 0.1;
    EXPECT_EQ(images(Unpacked(wave(head, "db04"_hex)).samples), "3de41b4a"); // 1243; with doubles: ...4b
}

// --- Unpacking: how many samples ------------------------------------------------

TEST(Byte2Wave, computesTheNumberOfSamplesFromTheByteCount)
{
    for (unsigned int sampleCount : {0u, 1u, 3u, 0xffffffffu}) {
        SCOPED_TRACE(sampleCount);
        BlobWaveHead head;
        head.sampleCount = sampleCount;
        const Unpacked unpacked(wave(head, "0000803f 000000c0"_hex));
        EXPECT_EQ(unpacked.result, 1);
        EXPECT_EQ(unpacked.samples, (Floats{1, -2}));
        EXPECT_EQ(unpacked.head.sampleCount, sampleCount);
    }
}

TEST(Byte2Wave, dropsTheBytesOfAnIncompleteSample)
{
    BlobWaveHead head;
    head.limitHigh = 1;
    for (const char* tail : {"00", "0000", "000000"}) {
        SCOPED_TRACE(tail);
        const QByteArray block = "0000803f 000000c0"_hex + QByteArray::fromHex(tail);
        EXPECT_EQ(Unpacked(wave(0, block)).samples, (Floats{1, -2}));
        EXPECT_EQ(Unpacked(wave(compressedBit, compressed(block))).samples, (Floats{1, -2}));
    }
    for (int flags : {1, 2, 3}) {
        SCOPED_TRACE(flags);
        head.waveFlags = static_cast<unsigned char>(flags);
        EXPECT_EQ(Unpacked(wave(head, "0000 0000 01"_hex)).samples, (Floats{0, 0}));
        head.waveFlags |= compressedBit;
        EXPECT_EQ(Unpacked(wave(head, compressed("0000 0000 01"_hex))).samples, (Floats{0, 0}));
    }
}

TEST(Byte2Wave, clearsTheSamplesIfAFloatWaveIsEmpty)
{
    for (const QByteArray& stored : {wave(0, ""), wave(0, "000000"_hex), wave(compressedBit, compressed(""))}) {
        const Unpacked unpacked(stored);
        EXPECT_EQ(unpacked.result, 1);
        EXPECT_TRUE(unpacked.samples.empty());
    }
}

TEST(Byte2Wave, leavesTheSamplesIfA16BitWaveIsEmpty)
{
    for (int flags : {1, 2, 3}) {
        SCOPED_TRACE(flags);
        for (const QByteArray& stored :
             {wave(flags, ""), wave(flags, "00"_hex), wave(flags | compressedBit, compressed(""))}) {
            const Unpacked unpacked(stored);
            EXPECT_EQ(unpacked.result, 1);
            EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
        }
    }
}

// --- Unpacking: what is too short -----------------------------------------------

TEST(Byte2Wave, refusesEveryShorterHeadAndChangesNothing)
{
    for (int size = 0; size < 96; ++size) {
        SCOPED_TRACE(size);
        const Unpacked unpacked(goldenFile("waves/floats.hex").left(size));
        EXPECT_EQ(unpacked.result, 0);
        EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(bytesOf(BlobWaveHead())));
        EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
        EXPECT_EQ(unpacked.marks, Unpacked::oldMarks);
    }
}

// Expects everything except the head to be unchanged.
static void expectMarksRefused(const QByteArray& stored)
{
    const Unpacked unpacked(stored);
    EXPECT_EQ(unpacked.result, 0);
    EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored.left(96)));
    EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
    EXPECT_EQ(unpacked.marks, Unpacked::oldMarks);
}

// The size of the head is counted twice: marks must be followed by 96 bytes of samples.

TEST(Byte2Wave, refusesMarksWithLessThan96BytesOfSamples)
{
    BlobWaveHead head;
    head.markCount = 1;
    for (int size = 0; size < 100; ++size) {
        SCOPED_TRACE(size);
        expectMarksRefused(wave(head, QByteArray(size, 0)));
    }

    const Unpacked unpacked(wave(head, "05000000"_hex + QByteArray(96, 0)));
    EXPECT_EQ(unpacked.result, 1);
    EXPECT_EQ(unpacked.marks, Ints{5});
    EXPECT_EQ(unpacked.samples, Floats(24, 0));
}

TEST(Byte2Wave, comparesMarksWithTheCompressedSize)
{
    const QByteArray zeros = compressed(QByteArray(4000, 0)); // about 20 bytes
    BlobWaveHead head = headWith(compressedBit);
    EXPECT_EQ(Unpacked(wave(head, zeros)).samples, Floats(1000, 0));
    head.markCount = 1;
    expectMarksRefused(wave(head, "05000000"_hex + zeros));
}

TEST(Byte2Wave, refusesTenSamplesAndOneMarkAlthoughWave2ByteWritesThem)
{
    BlobWaveHead head;
    const QByteArray stored = pack(head, Floats(10, 1.5f), {7});
    EXPECT_EQ(stored.size(), 140);
    expectMarksRefused(stored);

    EXPECT_EQ(Unpacked(pack(head, Floats(23, 1.5f), {7})).result, 0);
    EXPECT_EQ(Unpacked(pack(head, Floats(24, 1.5f), {7})).result, 1);
    EXPECT_EQ(Unpacked(pack(head, Ints(47, 1), {7})).result, 0);
    EXPECT_EQ(Unpacked(pack(head, Ints(48, 1), {7})).result, 1);
}

TEST(Byte2Wave, refusesEveryShorterWaveWithMarks)
{
    const QByteArray whole = goldenFile("waves/raw.hex"); // 3 marks and 128 bytes of samples, of which 96 are required
    for (int size = 96; size < 96 + 12 + 96; ++size) {
        SCOPED_TRACE(size);
        expectMarksRefused(whole.left(size));
    }
    EXPECT_EQ(Unpacked(whole.left(96 + 12 + 96)).result, 1);
}

TEST(Byte2Wave, leavesTheMarksIfTheWaveHasNone)
{
    const Unpacked unpacked(wave(0, "0000803f"_hex));
    EXPECT_EQ(unpacked.result, 1);
    EXPECT_EQ(unpacked.samples, Floats{1});
    EXPECT_EQ(unpacked.marks, Unpacked::oldMarks);
}

// The size that marks need is a signed 32-bit number. A count that wraps it passes the length check, but no mark is
// read past the buffer.
TEST(Byte2Wave, refusesEveryMarkCountThatWraps)
{
    for (unsigned int markCount : {0x1fffffe7u,    // 4 * markCount + 96 is 7ffffffc, the last positive number
                                   0x1fffffe8u,    // 80000000
                                   0x20000000u,    // 80000060
                                   0x3fffffe8u,    // 0
                                   0x40000000u,    // 96
                                   0x40000001u,    // 100, exactly the available bytes
                                   0x80000000u,    // 96
                                   0xc0000001u,    // 100
                                   0xffffffe8u,    // 0
                                   0xffffffffu}) { // 92
        SCOPED_TRACE(markCount);
        BlobWaveHead head;
        head.markCount = markCount;
        expectMarksRefused(wave(head, QByteArray(100, 0)));
        head.waveFlags = compressedBit;
        expectMarksRefused(wave(head, QByteArray(100, 0)));
    }
}

TEST(Byte2Wave, overwritesTheHeadEvenIfItRefusesTheWave)
{
    expectMarksRefused(distinctBytes()); // markCount d7d6d5d4
}

// --- Unpacking: what zlib refuses -----------------------------------------------

TEST(Byte2Wave, refusesACorruptStream)
{
    QByteArray stored = goldenFile("waves/floatsPacked.hex");
    stored[stored.size() - 1] = char(stored[stored.size() - 1] ^ 1); // its checksum
    const Unpacked unpacked(stored);
    EXPECT_EQ(unpacked.result, 0);
    EXPECT_EQ(hex(bytesOf(unpacked.head)), hex(stored.left(96)));
    EXPECT_EQ(unpacked.marks, goldenMarks);
    EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
}

TEST(Byte2Wave, refusesEveryShorterStream)
{
    const QByteArray stream = compressed("0000803f 000000c0 00000000 0000803f"_hex);
    for (int flags : {4, 5, 6, 7}) {
        for (int size = 0; size < stream.size(); ++size) {
            SCOPED_TRACE(size);
            const Unpacked unpacked(wave(flags, stream.left(size)));
            EXPECT_EQ(unpacked.result, 0);
            EXPECT_EQ(int(unpacked.head.waveFlags), flags);
            EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
            EXPECT_EQ(unpacked.marks, Unpacked::oldMarks);
        }
    }
}

TEST(Byte2Wave, refusesUncompressedSamplesIfBit2IsSet)
{
    const Unpacked unpacked(withFlags(goldenFile("waves/floats.hex"), compressedBit));
    EXPECT_EQ(unpacked.result, 0);
    EXPECT_EQ(unpacked.marks, goldenMarks);
    EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
}

TEST(Byte2Wave, ignoresBytesAfterTheStream)
{
    const Unpacked unpacked(wave(compressedBit, compressed("0000803f"_hex) + "aabb"_hex));
    EXPECT_EQ(unpacked.result, 1);
    EXPECT_EQ(unpacked.samples, Floats{1});
}

TEST(Byte2Wave, unpacksUpToFiveMillionBytes)
{
    const Unpacked whole(wave(compressedBit, compressed(QByteArray(blockSize, 0))));
    EXPECT_EQ(whole.result, 1);
    EXPECT_EQ(whole.samples.size(), size_t(blockSize / 4));

    const Unpacked longer(wave(compressedBit, compressed(QByteArray(blockSize + 1, 0))));
    EXPECT_EQ(longer.result, 0);
    EXPECT_EQ(longer.samples, Unpacked::oldSamples);
}

// Zeros compress to almost nothing, so any number of them fits.
TEST(Byte2Wave, refusesMoreThanFiveMillionBytesAlthoughWave2ByteWritesThem)
{
    BlobWaveHead head = headWith(compressedBit);
    const Unpacked unpacked(pack(head, Floats(blockSize / 4 + 1, 0)));
    EXPECT_EQ(unpacked.result, 0);
    EXPECT_EQ(unpacked.head.sampleCount, 1250001u);
    EXPECT_EQ(unpacked.samples, Unpacked::oldSamples);
}

// --- Round trips ----------------------------------------------------------------

TEST(Waves, roundTripExactlyAsFloats)
{
    const Floats samples = {0.1f, -0.0f, 1e-45f, -3e38f, 4, 5, 6, 7, 8, 9};
    for (int flags : {0, compressedBit}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = headWith(flags);
        EXPECT_EQ(images(Unpacked(pack(head, samples)).samples), images(samples));
    }
}

TEST(Waves, roundTripWithinOneStepIfQuantised)
{
    Floats samples;
    for (int i = 0; i <= 1000; ++i)
        samples.push_back(-3 + float(i) * 0.007f);
    for (int flags : {quantisedBit, quantisedBit | compressedBit}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = headWith(flags);
        const Unpacked unpacked(pack(head, samples, {1, 2, 3}));
        ASSERT_EQ(unpacked.result, 1);
        EXPECT_EQ(unpacked.marks, (Ints{1, 2, 3}));
        ASSERT_EQ(unpacked.samples.size(), samples.size());
        for (size_t i = 0; i < samples.size(); ++i)
            EXPECT_NEAR(unpacked.samples[i], samples[i], 1.01 * 7 / 65535) << i;
        EXPECT_EQ(unpacked.samples.front(), samples.front());
        EXPECT_EQ(unpacked.samples.back(), samples.back());
    }
}

TEST(Waves, roundTripEverySampleOfALongQuantisedWave)
{
    std::mt19937 engine(11);
    for (const size_t count : {1u, 4095u, 4096u, 4097u, 10000u}) {
        SCOPED_TRACE(count);
        Floats samples(count);
        for (float& sample : samples)
            sample = float(int(engine())) / 65536.0f;
        double upper = 0;
        double lower = 0;
        findLimits(samples, upper, lower);

        BlobWaveHead head = headWith(quantisedBit);
        Bytes raw(2 * count);
        Bytes stored;
        ASSERT_EQ(CByte2Rdb::wave2Byte(head, samples, {}, raw.data(), nullptr, stored), 1);
        ASSERT_EQ(stored.size(), 96 + 2 * count);
        Floats expected(count);
        for (size_t i = 0; i < count; ++i) {
            const int step = quantised(samples[i], float(upper), float(lower)) & 0xffff;
            ASSERT_EQ(stored[96 + 2 * i] | stored[97 + 2 * i] << 8, step) << i;
            expected[i] = unquantised(step, float(upper), float(lower));
        }

        Floats back;
        Ints marks;
        ASSERT_EQ(CByte2Rdb::byte2Wave(stored, nullptr, head, back, marks), 1);
        EXPECT_EQ(shown(back), shown(expected));
    }
}

TEST(Waves, roundTripAConstantIfQuantised)
{
    for (int flags : {quantisedBit, quantisedBit | compressedBit}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = headWith(flags);
        const Unpacked unpacked(pack(head, Floats(50, 0.1f)));
        EXPECT_EQ(unpacked.head.limitHigh, unpacked.head.limitLow);
        EXPECT_EQ(unpacked.samples, Floats(50, 0.1f));
    }
}

TEST(Waves, roundTripThroughScaleAndOffsetIfRaw)
{
    for (int flags : {0, 1, 2, 3, 4, 5, 6, 7}) {
        SCOPED_TRACE(flags);
        BlobWaveHead head = headWith(flags);
        head.limitHigh = 0.5;
        head.limitLow = 1;
        EXPECT_EQ(Unpacked(pack(head, Ints{100, -100, 0})).samples, (Floats{51, -49, 1}));
    }
}

TEST(Waves, comeBackAsSigned16BitValuesIfRaw)
{
    BlobWaveHead head;
    head.limitHigh = 1;
    EXPECT_EQ(Unpacked(pack(head, Ints{70000, 40000, -32768, 32767})).samples, (Floats{4464, -25536, -32768, 32767}));
}

TEST(Waves, ofFloatsAreReadAsRawValuesIfBit0IsSet)
{
    BlobWaveHead head = headWith(rawBit);
    EXPECT_EQ(Unpacked(pack(head, Floats{1})).samples, (Floats{1, 16257})); // 0 and 3f80, with scale and offset 1
}

static Floats quantisedAndBack(const Floats& samples)
{
    BlobWaveHead head = headWith(quantisedBit);
    return Unpacked(pack(head, samples)).samples;
}

TEST(Waves, readInfiniteSamplesAndTooLargeARangeBackAsNan)
{
    const float infinity = std::numeric_limits<float>::infinity();
    for (const Floats& samples : {Floats{infinity, infinity}, Floats{1, infinity, 2}, Floats{-3e38F, 0, 3e38F}}) {
        for (const float sample : quantisedAndBack(samples))
            EXPECT_TRUE(std::isnan(sample));
    }
}

TEST(Waves, readANanBackAsTheSmallestSampleUnlessItIsTheFirst)
{
    EXPECT_EQ(quantisedAndBack(Floats{1, std::nanf(""), 2}), (Floats{1, 1, 2}));
    for (const float sample : quantisedAndBack(Floats{std::nanf(""), 1, 2}))
        EXPECT_TRUE(std::isnan(sample));
}

TEST(Waves, readNegativeZeroBackAsZero)
{
    for (const float sample : quantisedAndBack(Floats{-0.0F, -0.0F}))
        EXPECT_FALSE(std::signbit(sample));
}
