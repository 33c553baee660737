// What gqtool decodes against the golden files and against the library's own readers and clients.

#include "support/decodeAgreement.h"
#include "support/chance.h"
#include "support/goldenRecords.h"
#include "support/hex.h"

#include <gtest/gtest.h>

// --- Records ------------------------------------------------------------------------------------------------------

static Decoded expectAgreement(const Form& form, const QByteArray& bytes)
{
    Agreement agreement;
    Decoded decoded = decodeAgreed(form, bytes, agreement);
    EXPECT_EQ(agreement.fault, "");
    return decoded;
}

static std::unique_ptr<Content> recordIn(const Decoded& decoded, const Form& form)
{
    Agreement agreement;
    std::unique_ptr<Content> content = recordIn(decoded, form, agreement);
    EXPECT_EQ(agreement.fault, "");
    return content;
}

static void decodesGolden(const GoldenRecord& golden)
{
    const Decoded decoded = expectAgreement(*golden.form, golden.bytes + golden.behind);
    EXPECT_TRUE(decoded.faults.empty());
    EXPECT_EQ(hex(decoded.rest), hex(golden.behind));
    EXPECT_EQ(decoded.value, jsonOf(*golden.content()));
    EXPECT_EQ(jsonOf(*recordIn(decoded, *golden.form)), jsonOf(*golden.content()));

    QByteArray fields;
    for (const DecodedField& field : decoded.fields) {
        if (field.offset >= 0) {
            EXPECT_EQ(field.offset, fields.size()) << field.name;
            fields += field.bytes;
        }
    }
    EXPECT_EQ(hex(fields), hex(golden.bytes));
}

TEST(DecodeAgreement, decodesTheGoldenFiles)
{
    forEachGoldenRecord("records", 90, decodesGolden);
    forEachGoldenRecord("waves", 10, decodesGolden);
}

// Long files are cut at some places only: most of their lengths end within a text.
static int step(int size)
{
    return size < 120 ? 1 : size / 40;
}

static void agreesOnEveryLength(const GoldenRecord& golden)
{
    const QByteArray whole = golden.bytes + golden.behind;
    const int size = golden.bytes.size();
    for (int length = 0; length < whole.size(); length += step(whole.size())) {
        SCOPED_TRACE(length);
        const Decoded decoded = expectAgreement(*golden.form, whole.left(length));
        const bool isCutWave = golden.form->name == std::string("wave") && length >= 96;
        EXPECT_TRUE(length >= size || isCutWave || !decoded.faults.empty());
        for (const Fault& fault : decoded.faults)
            EXPECT_LE(fault.offset, length);
    }
}

TEST(DecodeAgreement, holdsForFilesOfEveryLength)
{
    forEachGoldenRecord("records", 90, agreesOnEveryLength);
}

TEST(DecodeAgreement, holdsForWavesOfEveryLength)
{
    forEachGoldenRecord("waves", 10, agreesOnEveryLength);
}

// A calculation with two different NaNs may result in either.
TEST(DecodeAgreement, holdsForWavesWhoseLimitsAreNaN)
{
    const QByteArray limits = "0100000000 00f87f 0200000000 00f8ff"_hex;
    for (const char flags : {'\1', '\2'}) {
        const QByteArray head = QByteArray(1, '\0') + flags + QByteArray(30, '\0') + limits + QByteArray(48, '\0');
        for (int count = 1; count < 20; ++count) {
            const Decoded decoded = expectAgreement(*findForm("wave"), head + "0180"_hex.repeated(count));
            EXPECT_TRUE(decoded.faults.empty());
            EXPECT_EQ(QString::fromStdString(decoded.value).count("\"nan\""), 2 + count); // the limits, the samples
        }
    }
}

TEST(DecodeAgreement, holdsForFilesWithARandomByte)
{
    Chance chance(1);
    int faulty = 0;
    const auto agreesWithARandomByte = [&](const GoldenRecord& golden) {
        const QByteArray whole = golden.bytes + golden.behind;
        for (int round = 0; round < 8 && !whole.isEmpty(); ++round) {
            QByteArray changed = whole;
            changed[chance.below(std::min(static_cast<int>(whole.size()), 120))] = static_cast<char>(chance.word());
            SCOPED_TRACE(hex(changed));
            faulty += !expectAgreement(*golden.form, changed).faults.empty();
        }
    };
    forEachGoldenRecord("records", 90, agreesWithARandomByte);
    forEachGoldenRecord("waves", 10, agreesWithARandomByte);
    EXPECT_GT(faulty, 50);
}

TEST(DecodeAgreement, holdsForRandomBytes)
{
    Chance chance(2);
    for (const Form& form : recordForms()) {
        for (int round = 0; round < 20; ++round) {
            const std::vector<unsigned char> made = chance.bytes(chance.below(120));
            QByteArray bytes(reinterpret_cast<const char*>(made.data()), static_cast<int>(made.size()));
            for (int at = 1; at < std::min(4, static_cast<int>(bytes.size())); ++at)
                bytes[at] = 0; // counts that a list may have
            SCOPED_TRACE(std::string(form.name) + ": " + hex(bytes));
            expectAgreement(form, bytes);
        }
    }
}

// --- Frames -------------------------------------------------------------------------------------------------------

static Decoded expectAgreement(const QByteArray& stream, const FrameSource& source)
{
    Agreement agreement;
    Decoded decoded = decodeFramesAgreed(stream, source, agreement);
    EXPECT_EQ(agreement.fault, "");
    return decoded;
}

static void
forEachGoldenStream(const std::function<void(const QByteArray&, const FrameSource&, const QJsonArray&)>& test)
{
    const QStringList names = QDir(GQLIB_GOLDEN "/frames").entryList({"*.json"});
    EXPECT_GE(names.size(), 30);
    for (const QString& name : names) {
        const std::string path = "frames/" + name.chopped(5).toStdString();
        SCOPED_TRACE(path);
        const QJsonObject json = goldenJson(path + ".json");
        const FrameSource source{json["transport"] == "udp", json["direction"] == "request", json["form"].toString()};
        test(goldenFile(path + ".hex"), source, json["value"].toArray());
    }
}

TEST(DecodeAgreement, decodesTheGoldenFrames)
{
    forEachGoldenStream([](const QByteArray& bytes, const FrameSource& source, const QJsonArray& parts) {
        const Decoded decoded = expectAgreement(bytes, source);
        EXPECT_EQ(partsOf(decoded), parts) << decoded.value;
    });
}

// The library stops before a text that leaves no room for the lengths of later ones. gqtool shows what is there.
TEST(DecodeAgreement, showsTextsThatTheLibraryLeavesOut)
{
    const QByteArray threeTextsOfWhichOneIsThere =
        QByteArray::fromHex("68 0b000000 0100 0000 30  03000000 0500 0300 616263  0000 16");
    const Decoded decoded = expectAgreement(threeTextsOfWhichOneIsThere, {false, false, "strings"});
    EXPECT_EQ(partsOf(decoded)[0].toObject()["content"].toArray(), QJsonArray{"abc"}) << decoded.value;
    ASSERT_EQ(decoded.faults.size(), 1U);
    EXPECT_EQ(decoded.faults[0].text.toStdString(),
              "text 2 of 3 needs 2 bytes, but only 0 of the payload's 11 bytes remain");
}

TEST(DecodeAgreement, holdsForFramesOfEveryLength)
{
    forEachGoldenStream([](const QByteArray& bytes, const FrameSource& source, const QJsonArray&) {
        for (int length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(length);
            expectAgreement(bytes.left(length), source);
        }
    });
}

TEST(DecodeAgreement, holdsForFramesWithARandomByte)
{
    Chance chance(3);
    forEachGoldenStream([&](QByteArray bytes, const FrameSource& source, const QJsonArray&) {
        for (int round = 0; round < 20 && !bytes.isEmpty(); ++round) {
            bytes[chance.below(bytes.size())] = static_cast<char>(chance.word());
            SCOPED_TRACE(hex(bytes));
            expectAgreement(bytes, source);
        }
    });
}

// --- The way back -------------------------------------------------------------------------------------------------

static QByteArray encodedParts(const std::string& parts)
{
    Agreement agreement;
    const QByteArray encoded = encodedParts(parts, agreement);
    EXPECT_EQ(agreement.fault, "");
    return encoded;
}

TEST(EncodeAgreement, makesTheBytesOfTheGoldenFrames)
{
    forEachGoldenStream([](const QByteArray& bytes, const FrameSource&, const QJsonArray& parts) {
        EXPECT_EQ(hex(encodedParts(jsonText(parts))), hex(bytes));
    });
}

TEST(EncodeAgreement, decodesBackToTheSameFrames)
{
    Chance chance(4);
    forEachGoldenStream([&](QByteArray bytes, const FrameSource& source, const QJsonArray&) {
        for (int round = 0; round < 20 && !bytes.isEmpty(); ++round) {
            bytes[chance.below(bytes.size())] = static_cast<char>(chance.word());
            SCOPED_TRACE(hex(bytes));
            EXPECT_EQ(hex(encodedParts(decodeFramePieces(bytes, source, INT_MAX).value)), hex(bytes));
        }
    });
}

TEST(EncodeAgreement, decodesBackToTheSameRecords)
{
    const auto decodesBack = [](const GoldenRecord& golden) {
        QByteArray bytes;
        const std::unique_ptr<Content> content = golden.content();
        ASSERT_TRUE(content->write(bytes));
        const Decoded decoded = decodeBytes(*golden.form, bytes + golden.behind);
        EXPECT_TRUE(decoded.faults.empty());
        EXPECT_EQ(jsonOf(*recordIn(decoded, *golden.form)), jsonOf(*content));
    };
    forEachGoldenRecord("records", 90, decodesBack);
    forEachGoldenRecord("waves", 10, decodesBack);
}
