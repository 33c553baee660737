#include "frameCodec.h"

#include "frameStream.h"
#include "gqtool/records/jsonText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <tcpApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

// --- Payloads -----------------------------------------------------------------------------------------------------

// What a payload holds by its form.
struct Payload {
    QString form;    // empty if it is not known
    QString content; // as JSON; empty if there is none
    long long used = 0;
    QString wrong;
};

static QString formOf(unsigned char command, const FrameSource& source)
{
    if (command == CSocketAPI::errorCommand && !source.isRequest)
        return "error";
    if (command == 5 && source.isRequest)
        return source.isUdp ? "ints" : "intPair";
    const bool isOwn = command == 1 || command == 2 || command == 3 || command == 5 || command == 6;
    return isOwn ? QString("int") : source.form;
}

static std::vector<int> integers(const char* first, unsigned int count)
{
    std::vector<int> values;
    CByte2Val::buffer2Ints(first, static_cast<int>(count), values);
    return values;
}

static void readStrings(const QByteArray& bytes, unsigned int count, Payload& payload)
{
    QStringList texts;
    payload.used = 4;
    for (unsigned int i = 0; i < count; ++i) {
        const long long left = bytes.size() - payload.used;
        const char* item = bytes.constData() + payload.used;
        const int outer = left < 2 ? 0 : CByte2Val::byte2UShort(item);
        if (left < 2 + outer) {
            payload.wrong = QString("item %1 of %2 texts overruns the payload").arg(i).arg(count);
            break;
        }
        const int inner = outer < 2 ? outer : CByte2Val::byte2UShort(item + 2);
        const QByteArray text = inner + 2 <= outer ? QByteArray(item + 4, inner) : QByteArray();
        texts.append(jsonText(QString::fromUtf8(text.constData()))); // up to a zero byte
        payload.used += 2 + outer;
    }
    payload.content = '[' + texts.join(", ") + ']';
}

static void readPayload(const QByteArray& bytes, Payload& payload)
{
    const char* first = bytes.constData();
    const QString& form = payload.form;
    payload.used = form == "intPair" ? 8 : 4;
    const unsigned int count = bytes.size() < 4 ? 0 : CByte2Val::byte2UInt(first);
    if (form == "ints")
        payload.used += 4LL * count;
    else if (form == "bytes")
        payload.used += count;
    else if (form == "strings")
        payload.used += 2LL * count;
    if (bytes.size() < payload.used)
        payload.wrong =
            QString("the payload has %1 bytes, its form (%2) wants %3").arg(bytes.size()).arg(form).arg(payload.used);
    else if (form == "strings")
        readStrings(bytes, count, payload);
    else if (form == "ints")
        payload.content = jsonText(integers(first + 4, count));
    else if (form == "bytes")
        payload.content = jsonText(QString(bytes.mid(4, static_cast<int>(count)).toHex()));
    else if (form == "intPair")
        payload.content = jsonText(integers(first, 2));
    else
        payload.content = QString::number(CByte2Val::byte2Int(first));
}

// The library's own reading: its result, and the content as above.
static int askForPayload(const QByteArray& bytes, const QString& form, QString& content)
{
    gqdb::CTcpAPI client;
    int result = 1;
    if (form == "ints") {
        std::vector<int> values;
        result = client.parseInts(bytes.constData(), bytes.size(), values);
        content = jsonText(values);
    } else if (form == "bytes") {
        std::vector<unsigned char> values;
        result = client.parseBytes(bytes.constData(), bytes.size(), values);
        const QByteArray read(reinterpret_cast<const char*>(values.data()), static_cast<int>(values.size()));
        content = jsonText(QString(read.toHex()));
    } else if (form == "strings") {
        QStringList texts;
        result = client.parseStrings(bytes.constData(), bytes.size(), texts);
        for (QString& text : texts)
            text = jsonText(text);
        content = '[' + texts.join(", ") + ']';
    } else if (form == "int" || form == "error") {
        int value = 0;
        result = client.parseInt(bytes.constData(), bytes.size(), value);
        content = QString::number(value);
    }
    return result;
}

// --- Frames -------------------------------------------------------------------------------------------------------

class FrameWalk {
public:
    FrameWalk(const QByteArray& walked, const FrameSource& told, Decoded& decoded)
        : data(walked), source(told), result(decoded)
    {
    }

    void walk();

private:
    // A field, as long as there are bytes of it.
    void add(const QString& name, int size, const QString& value)
    {
        const QByteArray bytes = data.mid(pos, std::min(size, end - pos));
        if (bytes.isEmpty() && size > 0)
            return;
        result.fields.push_back({pos, bytes, QString("[%1].%2").arg(index).arg(name), value});
        pos += bytes.size();
    }
    void addMember(const char* name, int size, const QString& value)
    {
        add(name, size, value);
        json.add(name, value);
    }
    static QString hexOf(const QByteArray& bytes) { return jsonText(QString(bytes.toHex())); }

    void fault(long long offset, const QString& text, const char* kind)
    {
        result.faults.push_back({static_cast<int>(offset), text});
        json.add("fault", jsonText(QString(kind)));
    }
    void disagree(const QString& text)
    {
        if (result.disagreement.isEmpty())
            result.disagreement = QString("[%1]: %2").arg(index).arg(text);
    }

    void walkItem(const StreamItem& item);
    void walkFrame(const StreamItem& item);
    void walkPayload(const StreamItem& item);
    void askClient(const StreamItem& item);

    const QByteArray& data;
    const FrameSource& source;
    Decoded& result;
    JsonBuilder json;
    int index = 0;
    int pos = 0;
    int end = 0; // of the item
};

// Whether a client takes these bytes for one whole frame, and for a good one.
void FrameWalk::askClient(const StreamItem& item)
{
    gqdb::CTcpAPI client;
    int read = 0;
    int length = 0;
    const bool isWhole = client.recvData(data.constData() + item.offset, static_cast<int>(item.size), read);
    const bool isWholeHere = item.kind == StreamItem::frame || item.kind == StreamItem::wrongEnd;
    if (isWhole != isWholeHere || read != item.size)
        disagree("a client does not find the end of the frame here");
    else if (isWhole && client.isRecvOk(length) != (item.kind == StreamItem::frame))
        disagree("a client judges the frame otherwise");
    if (item.kind != StreamItem::frame && result.result == 1) {
        result.result = 0;
        result.meaning = QString("[%1] is no good frame to a client").arg(index);
    }
}

void FrameWalk::walkPayload(const StreamItem& item)
{
    const QByteArray& bytes = item.content.payload;
    Payload payload;
    payload.form = formOf(item.content.command, source);
    if (payload.form.isEmpty())
        return;
    readPayload(bytes, payload);
    json.add("form", jsonText(payload.form));
    if (!payload.content.isEmpty()) {
        json.add("content", payload.content);
        result.fields.back().value = payload.content;
    }
    if (!payload.wrong.isEmpty())
        fault(item.offset + CSocketAPI::headerSize, payload.wrong, "form");
    else if (payload.used < bytes.size())
        json.add("rest", QString::number(bytes.size() - payload.used));

    if (payload.form == "intPair")
        return; // which a server reads, and the library never
    QString content;
    const int answer = askForPayload(bytes, payload.form, content);
    if ((answer == 1) != payload.wrong.isEmpty() || (!payload.content.isEmpty() && content != payload.content))
        disagree(QString("the library answers %1, and finds %2").arg(answer).arg(content));
    if (answer != 1 && result.result == 1) {
        result.result = answer;
        result.meaning = QString("[%1] has a payload that %2")
                             .arg(index)
                             .arg(answer == 0 ? "a text overruns" : "is shorter than its form");
    }
}

void FrameWalk::walkFrame(const StreamItem& item)
{
    const Frame& frame = item.content;
    add("start", 1, QString());
    addMember("length", 4, QString::number(frame.length));
    addMember("sequence", 2, QString::number(frame.sequence));
    addMember("arg2", 1, QString::number(frame.arg2));
    addMember("arg1", 1, QString::number(frame.arg1));
    addMember("command", 1, QString::number(frame.command));
    addMember("payload", frame.payload.size(), hexOf(frame.payload));
    if (item.kind == StreamItem::frame)
        walkPayload(item);
    if (!frame.check.isEmpty())
        addMember("check", frame.check.size(), hexOf(frame.check));
    if (item.kind == StreamItem::cut) {
        fault(end,
              QString("the frame from byte %1 on wants %2 bytes, and there are %3")
                  .arg(item.offset)
                  .arg(frame.length + 13LL)
                  .arg(item.size),
              "cut");
        return;
    }
    addMember("end", 1, hexOf(QByteArray(1, static_cast<char>(frame.end))));
    if (item.kind == StreamItem::wrongEnd)
        fault(end - 1, "the last byte of a frame is 16; a client drops this one", "end");
}

void FrameWalk::walkItem(const StreamItem& item)
{
    pos = static_cast<int>(item.offset);
    end = static_cast<int>(item.offset + item.size);
    json.begin(nullptr, '{');
    json.add("offset", QString::number(pos));
    switch (item.kind) {
    case StreamItem::garbage:
        addMember("garbage", item.bytes.size(), hexOf(item.bytes));
        break;
    case StreamItem::cutHeader:
        addMember("header", item.bytes.size(), hexOf(item.bytes));
        fault(end, QString("a header wants 10 bytes, and there are %1").arg(item.size), "cut");
        break;
    case StreamItem::badLength:
        add("start", 1, QString());
        json.add("length", QString::number(item.content.length));
        fault(item.offset,
              QString("no frame has a length of %1; a client would wait for the rest").arg(item.content.length),
              "length");
        break;
    default:
        walkFrame(item);
        break;
    }
    if (item.kind != StreamItem::garbage && item.kind != StreamItem::badLength)
        askClient(item);
    json.end('}');
}

void FrameWalk::walk()
{
    FrameStream stream;
    std::vector<StreamItem> items = stream.feed(data);
    for (const StreamItem& item : stream.end())
        items.push_back(item);
    result.isAsked = true;
    result.result = 1;
    result.meaning = "good";
    json.begin(nullptr, '[');
    for (const StreamItem& item : items) {
        walkItem(item);
        ++index;
    }
    json.end(']');
    result.value = json.text;
    const bool hasFrames = std::any_of(items.begin(), items.end(),
                                       [](const StreamItem& item) { return item.kind != StreamItem::garbage; });
    if (!hasFrames)
        result.faults.push_back({0, "there is no frame"});
}

Decoded decodeFrames(const QByteArray& bytes, const FrameSource& source)
{
    Decoded decoded;
    FrameWalk(bytes, source, decoded).walk();
    return decoded;
}

// --- The way back -------------------------------------------------------------------------------------------------

class FrameWriter {
public:
    explicit FrameWriter(QByteArray& written) : bytes(written) {}

    void write(const QJsonObject& told, const QString& place)
    {
        part = told;
        path = place;
        if (part.contains("garbage"))
            bytes += takeHex("garbage");
        else if (part.contains("header"))
            bytes += takeHex("header");
        else if (part.contains("length") && !part.contains("command"))
            bytes += CSocketAPI::frameStart; // a false one
        else
            writeFrame();
    }

    QStringList errors;

private:
    int takeInteger(const char* name, int most)
    {
        const QJsonValue value = part.value(QLatin1String(name));
        const double number = value.toDouble(-1);
        const auto integer = static_cast<int>(number);
        if (value.isUndefined())
            errors.append(QString("%1.%2 is missing").arg(path, name));
        else if (number < 0 || number > most || integer != number)
            errors.append(QString("%1.%2 is an integer from 0 to %3").arg(path, name).arg(most));
        return integer;
    }

    QByteArray takeHex(const char* name)
    {
        const QJsonValue value = part.value(QLatin1String(name));
        const QByteArray digits = value.toString().toLatin1();
        QByteArray taken = QByteArray::fromHex(digits);
        if (value.isUndefined())
            errors.append(QString("%1.%2 is missing").arg(path, name));
        else if (!value.isString() || taken.toHex() != digits.toLower())
            errors.append(QString("%1.%2 is a string of hex digits, two a byte").arg(path, name));
        return taken;
    }

    void writeFrame()
    {
        QByteArray frame;
        const int command = takeInteger("command", UCHAR_MAX);
        CSocketAPI::addHeader(
            static_cast<unsigned char>(command), static_cast<unsigned char>(takeInteger("arg1", UCHAR_MAX)),
            static_cast<unsigned char>(takeInteger("arg2", UCHAR_MAX)), takeInteger("sequence", USHRT_MAX), 0, frame);
        frame += takeHex("payload");
        const int payloadEnd = frame.size();
        CSocketAPI::addEnd(frame);
        if (part.contains("length"))
            CByte2Val::int2Byte(takeInteger("length", INT_MAX - CSocketAPI::frameOverhead), frame.data() + 1);
        const bool isCut = part.value("fault") == "cut";
        if (part.contains("end"))
            frame.replace(payloadEnd + 2, 1, takeHex("end"));
        else if (isCut)
            frame.truncate(payloadEnd + 2);
        if (part.contains("check"))
            frame.replace(payloadEnd, 2, takeHex("check"));
        else if (isCut)
            frame.truncate(payloadEnd);
        bytes += frame;
    }

    QByteArray& bytes;
    QJsonObject part;
    QString path;
};

QStringList encodeFrames(const QJsonValue& parts, const FrameSource& source, QByteArray& bytes)
{
    if (!parts.isArray())
        return {"value is an array"};
    const QJsonArray told = parts.toArray();
    FrameWriter writer(bytes);
    for (int i = 0; i < told.size(); ++i) {
        const QString path = QString("value[%1]").arg(i);
        if (told[i].isObject())
            writer.write(told[i].toObject(), path);
        else
            writer.errors.append(path + " is an object");
    }
    if (!writer.errors.isEmpty())
        return writer.errors;

    // What follows from the bytes may be left out, but not be told otherwise.
    const QJsonArray found = QJsonDocument::fromJson(decodeFrames(bytes, source).value.toUtf8()).array();
    for (int i = 0; i < told.size(); ++i) {
        const QJsonObject part = told[i].toObject();
        for (auto member = part.begin(); member != part.end(); ++member) {
            const QJsonValue value = found[i].toObject()[member.key()];
            if (member.value() == value)
                continue;
            const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
            writer.errors.append(QString("value[%1].%2 is not what these bytes hold: ").arg(i).arg(member.key()) +
                                 (value.isUndefined() ? "nothing" : QString::fromUtf8(text.mid(1, text.size() - 2))));
        }
    }
    return writer.errors;
}
