// What gqtool decodes against the golden files and against the library's own readers and clients.

#include "gqtool/frames/frameStream.h"
#include "support/chance.h"
#include "support/decodedBytes.h"
#include "support/goldenRecords.h"
#include "support/hex.h"

#include <QJsonDocument>

#include <gtest/gtest.h>
#include <tcpApi.h>

// --- Records ------------------------------------------------------------------------------------------------------

// What the library's reader must return if there is no fault.
static long long expectedResult(const Form& form, const Decoded& decoded)
{
    if (form.onSuccess != returnsBytes)
        return 1;
    if (form.name == std::string("objectBlob"))
        return decoded.restOffset - 2;
    long long text4Bytes = 4;
    if (form.name == std::string("commItem")) {
        for (const DecodedField& field : decoded.fields)
            text4Bytes = field.name == "text4" ? field.bytes.size() : text4Bytes;
    }
    return decoded.restOffset + text4Bytes - 4;
}

static bool losesStep(const Decoded& decoded)
{
    return std::any_of(decoded.faults.begin(), decoded.faults.end(), [](const Fault& fault) {
        return fault.text.english().contains("list reader continues at byte");
    });
}

// The record that the decoded JSON describes. A text that is not UTF-8 can be decoded, but not encoded.
static std::unique_ptr<Content> recordIn(const Decoded& decoded, const Form& form)
{
    std::unique_ptr<Content> content = form.make();
    for (const QString& error : takeJson(Json::parse(decoded.value), *content))
        EXPECT_TRUE(error.endsWith("must be UTF-8: the library writes this text as UTF-8")) << error.toStdString();
    return content;
}

// The pieces in which bytes arrive do not matter.
static void expectSame(const Decoded& pieces, const Decoded& whole)
{
    EXPECT_TRUE(pieces.fields == whole.fields);
    EXPECT_EQ(pieces.value, whole.value);
    EXPECT_EQ(pieces.rest, whole.rest);
    EXPECT_EQ(pieces.restOffset, whole.restOffset);
    EXPECT_EQ(pieces.result, whole.result);
    EXPECT_EQ(pieces.meaning, whole.meaning);
    ASSERT_EQ(pieces.faults.size(), whole.faults.size());
    for (size_t i = 0; i < whole.faults.size(); ++i) {
        EXPECT_EQ(pieces.faults[i].offset, whole.faults[i].offset);
        EXPECT_EQ(pieces.faults[i].text, whole.faults[i].text);
    }
}

// The reader accepts exactly the bytes without faults, and reads the same values.
static Decoded expectAgreement(const Form& form, const QByteArray& bytes)
{
    Decoded decoded = decodeBytes(form, bytes);
    expectSame(decodePieces(form, bytes, 1), decoded);
    if (!decoded.readerCalled)
        return decoded;
    const std::unique_ptr<Content> read = form.make();
    EXPECT_EQ(read->read(bytes), decoded.result);
    if (decoded.faults.empty()) {
        EXPECT_EQ(decoded.result, expectedResult(form, decoded));
        EXPECT_EQ(comparableJsonOf(*read), comparableJsonOf(*recordIn(decoded, form)));
    } else if (!losesStep(decoded)) {
        EXPECT_LE(decoded.result, 0) << decoded.faults[0].text.toStdString();
    }
    return decoded;
}

static void decodesGolden(const GoldenRecord& golden)
{
    const Decoded decoded = expectAgreement(*golden.form, golden.bytes + golden.behind);
    EXPECT_TRUE(decoded.faults.empty());
    EXPECT_EQ(hex(decoded.rest), hex(golden.behind));
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

static QJsonArray partsOf(const Decoded& decoded)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(decoded.value)).array();
}

// A client finds the same ends of frames and accepts the same frames.
static void expectFrame(const StreamItem& item, const QByteArray& stream)
{
    gqdb::CTcpAPI client;
    int read = 0;
    int length = 0;
    const bool isWhole = item.kind == StreamItem::frame || item.kind == StreamItem::wrongEnd;
    EXPECT_EQ(client.recvData(stream.constData() + item.offset, static_cast<int>(item.size), read), isWhole);
    EXPECT_EQ(read, item.size);
    if (isWhole) {
        EXPECT_EQ(client.isRecvOk(length), item.kind == StreamItem::frame);
    }
}

// What the library's parser finds in a payload, and whether it accepts it.
static QJsonValue parsed(const QString& form, const QByteArray& bytes, bool& isGood)
{
    gqdb::CSocketAPI client;
    if (form == "ints") {
        std::vector<int> values;
        isGood = client.parseInts(bytes.constData(), bytes.size(), values) == 1;
        QJsonArray array;
        for (const int value : values)
            array.append(value);
        return array;
    }
    if (form == "bytes") {
        std::vector<unsigned char> values;
        isGood = client.parseBytes(bytes.constData(), bytes.size(), values) == 1;
        return QString(
            QByteArray(reinterpret_cast<const char*>(values.data()), static_cast<int>(values.size())).toHex());
    }
    if (form == "strings") {
        QStringList texts;
        isGood = client.parseStrings(bytes.constData(), bytes.size(), texts) == 1;
        return QJsonArray::fromStringList(texts);
    }
    int value = 0;
    isGood = client.parseInt(bytes.constData(), bytes.size(), value) == 1;
    return value;
}

static void expectPayload(const QJsonObject& part, const QByteArray& payload)
{
    const QString form = part["form"].toString();
    if (form.isEmpty() || form == "intPair")
        return; // a pair of integers is read by servers, not by the library
    bool isGood = false;
    const QJsonValue content = parsed(form, payload, isGood);
    EXPECT_EQ(isGood, part["fault"] != "form");
    if (part.contains("content")) {
        EXPECT_EQ(part["content"], content);
    }
}

static Decoded expectAgreement(const QByteArray& stream, const FrameSource& source)
{
    Decoded decoded = decodeFramePieces(stream, source, INT_MAX);
    expectSame(decodeFramePieces(stream, source, 1), decoded);
    const QJsonArray parts = partsOf(decoded);
    FrameStream frames(INT_MAX, FrameSource::usualPayload);
    std::vector<StreamItem> items = frames.feed(stream);
    for (const StreamItem& item : frames.end())
        items.push_back(item);
    EXPECT_EQ(parts.size(), static_cast<int>(items.size()));
    for (size_t i = 0; i < items.size(); ++i) {
        SCOPED_TRACE(i);
        if (items[i].kind != StreamItem::garbage && items[i].kind != StreamItem::badLength)
            expectFrame(items[i], stream);
        expectPayload(parts[static_cast<int>(i)].toObject(), items[i].content.payload);
    }
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
    QByteArray encoded;
    for (const Json& part : Json::parse(parts))
        EXPECT_EQ(encodeFrame(part, "part", encoded).join('\n').toStdString(), "");
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
