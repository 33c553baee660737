#include "frameCodec.h"

#include "frameMembers.h"
#include "gqtool/records/jsonText.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <climits>
#include <cmath>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

// --- Decoding -----------------------------------------------------------------------------------------------------

class FrameDecoder {
public:
    FrameDecoder(const QByteArray& stream, const FrameSource& streamSource, Decoded& decoded)
        : data(stream), source(streamSource), result(decoded)
    {
    }

    void decode();

private:
    void addRow(const char* name, int size, const QString& value)
    {
        result.fields.push_back({pos, data.mid(pos, size), QString("[%1].%2").arg(index).arg(name), value});
        pos += size;
    }
    void reject(int code, const QString& reason) // by the library; the first reason counts
    {
        if (result.result == 1) {
            result.result = code;
            result.meaning = reason.arg(index);
        }
    }

    void decodeItem(const StreamItem& item);
    void decodePayload(const StreamItem& item);
    void addFault(const StreamItem& item);

    const QByteArray& data;
    const FrameSource& source;
    Decoded& result;
    JsonBuilder json;
    int index = 0; // of the item
    int pos = 0;
};

void FrameDecoder::decodePayload(const StreamItem& item)
{
    const QByteArray& bytes = item.content.payload;
    const Payload payload = payloadOf(item.content.command, bytes, source);
    if (payload.form.isEmpty())
        return;
    json.add("form", jsonText(payload.form));
    if (!payload.content.isEmpty()) {
        json.add("content", payload.content);
        result.fields.back().value = payload.content;
    }
    if (!payload.fault.isEmpty()) {
        result.faults.push_back({static_cast<int>(item.offset) + CSocketAPI::headerSize, payload.fault});
        json.add("fault", "\"form\"");
    } else if (payload.used < bytes.size()) {
        json.add("rest", QString::number(bytes.size() - payload.used));
    }
    const int answer = parserResult(payload.form, bytes);
    if (answer == 0)
        reject(answer, "a text of [%1] runs past the end of its payload");
    else if (answer != 1)
        reject(answer, "the payload of [%1] is shorter than its form");
}

void FrameDecoder::addFault(const StreamItem& item)
{
    const auto start = static_cast<int>(item.offset);
    const auto end = static_cast<int>(item.offset + item.size);
    const Frame& frame = item.content;
    switch (item.kind) {
    case StreamItem::cut:
        result.faults.push_back({end, QString("the frame at byte %1 needs %2 bytes, got %3")
                                          .arg(start)
                                          .arg(static_cast<long long>(frame.length) + CSocketAPI::frameOverhead)
                                          .arg(item.size)});
        break;
    case StreamItem::cutHeader:
        result.faults.push_back(
            {end, QString("a header needs %1 bytes, got %2").arg(CSocketAPI::headerSize).arg(item.size)});
        break;
    case StreamItem::badLength:
        result.faults.push_back({start, QString("length must be at most %1, got %2; a client would wait for the rest")
                                            .arg(INT_MAX - CSocketAPI::frameOverhead)
                                            .arg(frame.length)});
        break;
    case StreamItem::wrongEnd:
        result.faults.push_back(
            {end - 1, QString("the last byte of a frame must be 16, got %1; a client drops this frame")
                          .arg(frame.end, 2, 16, QChar('0'))});
        break;
    case StreamItem::frame:
    case StreamItem::garbage:
        return;
    }
    if (item.kind != StreamItem::badLength)
        reject(0, "a client does not accept [%1]");
}

void FrameDecoder::decodeItem(const StreamItem& item)
{
    pos = static_cast<int>(item.offset);
    json.begin(nullptr, '{');
    if (item.kind != StreamItem::garbage && item.kind != StreamItem::cutHeader)
        addRow("start", 1, QString());
    for (const FrameMember& member : membersOf(item)) {
        const QString value = jsonText(member.value);
        json.add(member.name, value);
        if (member.size >= 0)
            addRow(member.name, member.size, value);
        if (item.kind == StreamItem::frame && member.name == QLatin1String("payload"))
            decodePayload(item);
    }
    addFault(item);
    json.end('}');
}

void FrameDecoder::decode()
{
    FrameStream stream;
    std::vector<StreamItem> items = stream.feed(data);
    for (const StreamItem& item : stream.end())
        items.push_back(item);
    result.readerCalled = true;
    result.result = 1;
    result.meaning = "good";
    json.begin(nullptr, '[');
    for (const StreamItem& item : items) {
        decodeItem(item);
        ++index;
    }
    json.end(']');
    result.value = json.text;
    const bool hasFrames = std::any_of(items.begin(), items.end(),
                                       [](const StreamItem& item) { return item.kind != StreamItem::garbage; });
    if (!hasFrames)
        result.faults.push_back({0, "no frame found"});
}

Decoded decodeFrames(const QByteArray& bytes, const FrameSource& source)
{
    Decoded decoded;
    FrameDecoder(bytes, source, decoded).decode();
    return decoded;
}

// --- Encoding -----------------------------------------------------------------------------------------------------

static const QStringList partMembers = {"offset",  "garbage", "header",  "length",  "sequence",
                                        "arg2",    "arg1",    "command", "payload", "form",
                                        "content", "rest",    "check",   "end",     "fault"};

class FrameEncoder {
public:
    explicit FrameEncoder(QByteArray& encoded) : bytes(encoded) {}

    void encode(const QJsonObject& partObject, const QString& partPath)
    {
        part = partObject;
        path = partPath;
        for (const QString& name : part.keys()) {
            if (!partMembers.contains(name))
                errors.append(QString("%1.%2 is unknown; the members are %3").arg(path, name, partMembers.join(", ")));
        }
        if (part.contains("garbage"))
            bytes += takeHex("garbage");
        else if (part.contains("header"))
            bytes += takeHex("header");
        else if (part.contains("length") && !part.contains("command"))
            bytes += CSocketAPI::frameStart; // a start byte that begins no frame
        else
            encodeFrame();
    }

    QStringList errors;

private:
    void fail(const char* name, const QString& text) { errors.append(QString("%1.%2 %3").arg(path, name, text)); }

    // Returns -1 on an error.
    int takeInteger(const char* name, int most)
    {
        const QJsonValue value = part.value(QLatin1String(name));
        const double number = value.toDouble(-1);
        const bool isInside = number >= 0 && number <= most && number == std::floor(number);
        if (value.isUndefined())
            fail(name, "is missing");
        else if (!isInside)
            fail(name, QString("must be an integer from 0 to %1").arg(most) + gotText(value));
        return isInside ? static_cast<int>(number) : -1;
    }

    QByteArray takeHex(const char* name, int size = -1) // of so many bytes; -1: any number
    {
        const QJsonValue value = part.value(QLatin1String(name));
        const QByteArray digits = value.toString().toLatin1();
        QByteArray taken = QByteArray::fromHex(digits);
        if (value.isUndefined())
            fail(name, "is missing");
        else if (!value.isString() || taken.toHex() != digits.toLower())
            fail(name, "must be a string of hex digits, two per byte" + gotText(value));
        else if (size >= 0 && taken.size() != size)
            fail(name,
                 QString("must have %1 %2, got %3").arg(size).arg(size == 1 ? "byte" : "bytes").arg(taken.size()));
        return taken;
    }

    void encodeFrame()
    {
        QByteArray frame;
        const int command = takeInteger("command", UCHAR_MAX);
        CSocketAPI::addHeader(
            static_cast<unsigned char>(command), static_cast<unsigned char>(takeInteger("arg1", UCHAR_MAX)),
            static_cast<unsigned char>(takeInteger("arg2", UCHAR_MAX)), takeInteger("sequence", USHRT_MAX), 0, frame);
        frame += takeHex("payload");
        const int payloadEnd = frame.size();
        CSocketAPI::addEnd(frame);
        const bool isCut = part.value("fault") == "cut";
        if (part.contains("length")) {
            const int length = takeInteger("length", INT_MAX - CSocketAPI::frameOverhead);
            const int size = payloadEnd - CSocketAPI::headerSize;
            if (length >= 0 && (length < size || (length > size && !isCut)))
                fail("length", QString("must be the size of the payload, %1, got %2").arg(size).arg(length));
            CByte2Val::int2Byte(length, frame.data() + 1);
        }
        if (part.contains("end"))
            frame.replace(payloadEnd + 2, 1, takeHex("end", 1));
        else if (isCut)
            frame.truncate(payloadEnd + 2);
        if (part.contains("check"))
            frame.replace(payloadEnd, 2, isCut ? takeHex("check") : takeHex("check", 2));
        else if (isCut)
            frame.truncate(payloadEnd);
        bytes += frame;
    }

    QByteArray& bytes;
    QJsonObject part;
    QString path;
};

QStringList encodeFrames(const QJsonValue& parts, QByteArray& bytes)
{
    if (!parts.isArray())
        return {"value must be an array"};
    const QJsonArray array = parts.toArray();
    FrameEncoder encoder(bytes);
    for (int i = 0; i < array.size(); ++i) {
        const QString path = QString("value[%1]").arg(i);
        if (array[i].isObject())
            encoder.encode(array[i].toObject(), path);
        else
            encoder.errors.append(path + " must be an object");
    }
    return encoder.errors;
}
