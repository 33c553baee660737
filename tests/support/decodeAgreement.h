#pragma once

#include "gqtool/frames/frameCodec.h"
#include "gqtool/frames/frameStream.h"
#include "gqtool/records/recordJson.h"
#include "support/decodedBytes.h"
#include "support/recordJsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <tcpApi.h>

// Compares what gqtool decodes with the library's own readers and clients, for tests and fuzz targets.

// The first disagreement.
class Agreement {
public:
    void require(bool isMet, const std::string& what)
    {
        if (!isMet && fault.empty())
            fault = what;
    }

    std::string fault; // empty if there is none
};

// --- Records ------------------------------------------------------------------------------------------------------

// Returns the result that the library's reader must have if there is no fault: the number of bytes used. For objectBlob
// it is 2 less; for commItem, the size of text4 minus 4 is added.
inline long long expectedResult(const Form& form, const Decoded& decoded)
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

// Returns true if the list reader continues at a wrong byte: it may then return anything.
inline bool continuesAtWrongByte(const Decoded& decoded)
{
    return std::any_of(decoded.faults.begin(), decoded.faults.end(), [](const Fault& fault) {
        return fault.text.english().contains("list reader continues at byte");
    });
}

inline bool isNotUtf8(const QString& error)
{
    return error.endsWith("must be UTF-8: the library writes this text as UTF-8");
}

// The record that the decoded JSON describes. A text that is not UTF-8 can be decoded, but not encoded.
inline std::unique_ptr<Content> recordIn(const Decoded& decoded, const Form& form, Agreement& agreement)
{
    std::unique_ptr<Content> content = form.make();
    for (const QString& error : takeJson(Json::parse(decoded.value), *content))
        agreement.require(isNotUtf8(error), "encoding again: " + error.toStdString());
    return content;
}

// The pieces in which bytes arrive do not matter.
inline void requireSame(const Decoded& pieces, const Decoded& whole, Agreement& agreement)
{
    agreement.require(pieces.fields == whole.fields, "in pieces, the fields differ");
    agreement.require(pieces.value == whole.value, "in pieces, the value is " + pieces.value);
    agreement.require(pieces.rest == whole.rest && pieces.restOffset == whole.restOffset,
                      "in pieces, the rest differs");
    agreement.require(pieces.result == whole.result && pieces.meaning == whole.meaning,
                      "in pieces, the result is " + std::to_string(pieces.result));
    const auto isSame = [](const Fault& one, const Fault& other) {
        return one.offset == other.offset && one.text == other.text;
    };
    agreement.require(
        std::equal(pieces.faults.begin(), pieces.faults.end(), whole.faults.begin(), whole.faults.end(), isSame),
        "in pieces, the faults differ");
}

// Bytes of the input must not control the terminal that shows the JSON.
inline void requireNoControl(const Decoded& decoded, Agreement& agreement)
{
    const QString json = QString::fromStdString(decoded.value);
    const bool isVisible = std::none_of(json.begin(), json.end(), [](QChar character) {
        return character.category() == QChar::Other_Control && character != '\n';
    });
    agreement.require(isVisible, "the JSON has control characters: " + decoded.value);
}

// The reader accepts exactly the bytes without faults, and reads the same values.
inline Decoded decodeAgreed(const Form& form, const QByteArray& bytes, Agreement& agreement, int pieceSize = 1)
{
    Decoded decoded = decodeBytes(form, bytes);
    requireSame(decodePieces(form, bytes, pieceSize), decoded, agreement);
    requireNoControl(decoded, agreement);
    if (!decoded.readerCalled)
        return decoded;
    const std::unique_ptr<Content> read = form.make();
    agreement.require(read->read(bytes) == decoded.result, "the reader's result differs");
    if (decoded.faults.empty()) {
        agreement.require(decoded.result == expectedResult(form, decoded),
                          "the reader's result is " + std::to_string(decoded.result) + ", must be " +
                              std::to_string(expectedResult(form, decoded)));
        const std::string own = comparableJsonOf(*recordIn(decoded, form, agreement));
        const std::string library = comparableJsonOf(*read);
        agreement.require(own == library, "decoded " + own + ", the library reads " + library);
    } else if (!continuesAtWrongByte(decoded)) {
        agreement.require(decoded.result <= 0,
                          "the reader accepts the bytes despite: " + decoded.faults[0].text.toStdString());
    }
    return decoded;
}

// --- Frames -------------------------------------------------------------------------------------------------------

inline QJsonArray partsOf(const Decoded& decoded)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(decoded.value)).array();
}

// A client finds the same ends of frames and accepts the same frames.
inline void requireFrame(const StreamItem& item, const QByteArray& stream, Agreement& agreement)
{
    gqdb::CTcpAPI client;
    int read = 0;
    int length = 0;
    const bool isWhole = item.kind == StreamItem::frame || item.kind == StreamItem::wrongEnd;
    const bool isReceived = client.recvData(stream.constData() + item.offset, static_cast<int>(item.size), read);
    agreement.require(isReceived == isWhole && read == item.size, "a client finds another end of the frame");
    if (isWhole)
        agreement.require(client.isRecvOk(length) == (item.kind == StreamItem::frame), "a client differs on the frame");
}

// Returns what the library's parser reads from a payload; `isGood` becomes true if the parser accepts it.
inline QJsonValue parsed(const QString& form, const QByteArray& bytes, bool& isGood)
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

// Returns true if `whole` begins with `start`. From a cut list the library may read fewer texts than gqtool, because it
// also needs room for the lengths of all later texts.
inline bool startsWith(const QJsonArray& whole, const QJsonArray& start)
{
    int same = 0;
    while (same < start.size() && same < whole.size() && whole[same] == start[same])
        ++same;
    return same == start.size();
}

inline void requirePayload(const QJsonObject& part, const QByteArray& payload, Agreement& agreement)
{
    const QString form = part["form"].toString();
    if (form.isEmpty() || form == "intPair" || form.contains(':'))
        return; // a pair of integers is read by servers, not by the library; records have readers of their own
    bool isGood = false;
    const QJsonValue content = parsed(form, payload, isGood);
    agreement.require(isGood == (part["fault"] != "form"), "the library's parser differs on the payload");
    if (part.contains("content"))
        agreement.require(isGood ? part["content"] == content
                                 : startsWith(part["content"].toArray(), content.toArray()),
                          "the library's parser finds another content");
}

inline Decoded decodeFramesAgreed(const QByteArray& stream, const FrameSource& source, Agreement& agreement,
                                  int pieceSize = 1)
{
    Decoded decoded = decodeFramePieces(stream, source, INT_MAX);
    requireSame(decodeFramePieces(stream, source, pieceSize), decoded, agreement);
    requireNoControl(decoded, agreement);
    const QJsonArray parts = partsOf(decoded);
    FrameStream frames(INT_MAX, FrameSource::usualPayload);
    std::vector<StreamItem> items = frames.feed(stream);
    for (const StreamItem& item : frames.end())
        items.push_back(item);
    agreement.require(parts.size() == static_cast<int>(items.size()), "the number of parts differs");
    for (size_t i = 0; i < items.size(); ++i) {
        if (items[i].kind != StreamItem::garbage && items[i].kind != StreamItem::badLength)
            requireFrame(items[i], stream, agreement);
        requirePayload(parts[static_cast<int>(i)].toObject(), items[i].content.payload, agreement);
    }
    return decoded;
}

inline QByteArray encodedParts(const std::string& parts, Agreement& agreement)
{
    QByteArray encoded;
    for (const Json& part : Json::parse(parts)) {
        const QStringList errors = encodeFrame(part, "part", encoded);
        agreement.require(errors.isEmpty(), errors.join('\n').toStdString());
    }
    return encoded;
}
