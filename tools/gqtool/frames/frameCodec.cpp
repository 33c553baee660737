#include "frameCodec.h"

#include "frameMembers.h"
#include "frameText.h"
#include "gqtool/records/recordDecoding.h"
#include "shared/text.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <nlohmann/json.hpp>
#include <optional>
#include <socketApi.h>
#include <utility>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int largestGarbage = 1 << 20; // bytes of an item

// --- Decoding -----------------------------------------------------------------------------------------------------

// Passes on the rows of records, as parts of the payload at `start` of the input.
class RecordRows : public DecodeListener {
public:
    RecordRows(long long payloadStart, std::string payloadPath, DecodeListener& receiver)
        : start(payloadStart), path(std::move(payloadPath)), listener(receiver)
    {
    }

    void row(const DecodedRow& row) override
    {
        std::string whole = path;
        if (!row.path.empty() && row.path[0] != '[')
            whole += '.';
        whole += row.path;
        const long long offset = row.offset < 0 ? row.offset : start + row.offset;
        listener.row({offset, row.bytes, whole, row.name, row.value});
    }
    void begin(const char*, char) override {}
    void end(char) override {}
    void member(const char*, const FieldValue&) override {}

private:
    const long long start;
    const std::string path;
    DecodeListener& listener;
};

class FrameDecoder {
public:
    FrameDecoder(ByteWindow& bytes, const FrameSource& streamSource, DecodeListener& receiver, Decoding& decoding)
        : input(bytes), source(streamSource), listener(receiver), result(decoding)
    {
    }

    void decode();

private:
    void take(const std::vector<StreamItem>& items);
    void endGarbage();
    void decodeItem(const StreamItem& item);
    void decodePayload(const StreamItem& item, const Payload& payload);
    void decodeRecords(const Form& records, const QByteArray& payload);
    void addFault(const StreamItem& item);

    void addRow(const char* name, const QByteArray& bytes, const FieldValue& value)
    {
        if (!isHidden())
            listener.row({pos, {bytes.constData(), static_cast<size_t>(bytes.size())}, path, name, value});
        pos += bytes.size();
    }
    void addMember(const char* name, const FieldValue& value)
    {
        if (!isHidden())
            listener.member(name, value);
    }
    // Everything is hidden after too many faults, and everything except records if only those are wanted.
    bool isHidden() const { return isCounting || source.table != nullptr; }
    void fault(long long offset, const Text& text) { isCounting = !result.faults.add(offset, text) || isCounting; }
    void reject(int code, const Text& reason) // by the library; the first reason counts
    {
        if (result.result == 1) {
            result.result = code;
            result.meaning = reason.arg(index);
        }
    }

    ByteWindow& input;
    const FrameSource& source;
    DecodeListener& listener;
    Decoding& result;
    std::optional<StreamItem> falseStart; // with a bad length, until the bytes after it are known
    StreamItem garbage;                   // that may continue
    bool hasFrames = false;               // or parts of them
    bool isCounting = false;              // faults alone, after too many of them
    long long index = 0;                  // of the item
    std::string path;                     // of the item
    long long pos = 0;
};

void FrameDecoder::decodePayload(const StreamItem& item, const Payload& payload)
{
    if (payload.form.isEmpty())
        return;
    addMember("form", payload.form.toStdString());
    if (!payload.content.empty())
        addMember("content", JsonText{payload.content});
    const QByteArray& bytes = item.content.payload;
    if (!payload.fault.isEmpty()) {
        addMember("fault", "form");
        fault(item.offset + CSocketAPI::headerSize, payload.fault);
    } else if (payload.used < bytes.size()) {
        addMember("rest", bytes.size() - payload.used);
    }
    const int answer = parserResult(payload.form, bytes);
    if (answer == 0)
        reject(answer, Text::tr("a text of [%1] runs past the end of its payload"));
    else if (answer != 1)
        reject(answer, Text::tr("the payload of [%1] is shorter than its form"));
}

// Adds a row for each field of the records, or a list of them to a table. Their faults are those of the payload.
void FrameDecoder::decodeRecords(const Form& records, const QByteArray& payload)
{
    const QByteArray bytes = bytesOf(payload);
    MemorySource memory(bytes);
    ByteWindow window(memory);
    if (source.table != nullptr) {
        ::decode(records, window, listener, FaultList::usualLimit);
        return;
    }
    RecordRows rows(pos - payload.size() + 4, path + ".payload", listener);
    ::decode(records, window, rows, FaultList::usualLimit);
}

void FrameDecoder::addFault(const StreamItem& item)
{
    const long long start = item.offset;
    const long long end = start + item.size;
    const Frame& frame = item.content;
    if (item.swappedLength >= 0) {
        fault(start, swappedText(item));
        reject(0, Text::tr("a client does not accept [%1]"));
        return;
    }
    switch (item.kind) {
    case StreamItem::cut:
        fault(end, Text::tr("the frame at byte %1 needs %2 bytes, got %3")
                       .arg(start)
                       .arg(static_cast<long long>(frame.length) + CSocketAPI::frameOverhead)
                       .arg(item.size));
        break;
    case StreamItem::cutHeader:
        fault(end, Text::tr("a header needs %1 bytes, got %2").arg(CSocketAPI::headerSize).arg(item.size));
        break;
    case StreamItem::badLength:
        fault(start,
              Text::tr("length must be at most %1, got %2; a client would wait for the rest")
                  .arg(frame.length > FrameStream::clientLimit ? FrameStream::clientLimit
                                                               : static_cast<unsigned int>(source.largestPayload))
                  .arg(frame.length));
        break;
    case StreamItem::wrongEnd:
        fault(end - 1, Text::tr("the last byte of a frame must be 16, got %1; a client drops this frame")
                           .arg(frame.end, 2, 16, QChar('0')));
        break;
    case StreamItem::frame:
    case StreamItem::garbage:
        return;
    }
    if (item.kind != StreamItem::badLength)
        reject(0, Text::tr("a client does not accept [%1]"));
    else if (frame.length <= FrameStream::clientLimit)
        reject(0, Text::tr("[%1] is longer than --max-payload"));
}

void FrameDecoder::decodeItem(const StreamItem& item)
{
    pos = item.offset;
    path = '[' + std::to_string(index) + ']';
    const bool isShown = !isHidden();
    if (isShown)
        listener.begin(nullptr, '{');
    if (item.kind != StreamItem::garbage && item.kind != StreamItem::cutHeader)
        addRow("start", QByteArray(1, CSocketAPI::frameStart), JsonText());
    for (const FrameMember& member : membersOf(item)) {
        const auto* text = std::get_if<std::string>(&member.value);
        const FieldValue value =
            text == nullptr ? FieldValue(std::get<long long>(member.value)) : std::string_view(*text);
        addMember(member.name, value);
        const bool isCommand = member.name == std::string_view("command");
        if (const MappedCommand* mapped = isCommand ? source.mapped(item.content.command) : nullptr)
            addMember("name", mapped->name.toStdString());
        if (item.kind == StreamItem::frame && member.name == std::string_view("payload")) {
            const Payload payload = payloadOf(item.content.command, member.bytes, source);
            addRow(member.name, member.bytes, payload.content.empty() ? value : JsonText{payload.content});
            const bool isWanted = source.table == nullptr || source.table == source.mapped(item.content.command);
            if (payload.form.contains(':') && isWanted && !isCounting)
                decodeRecords(*recordsOf(item.content.command, source), member.bytes);
            decodePayload(item, payload);
        } else if (!member.bytes.isNull()) {
            addRow(member.name, member.bytes, value);
        }
    }
    addFault(item);
    if (isShown)
        listener.end('}');
    ++index;
}

// Garbage is joined again that ends with a piece of the input.
void FrameDecoder::take(const std::vector<StreamItem>& items)
{
    for (const StreamItem& item : items) {
        if (item.kind != StreamItem::garbage) {
            endGarbage();
            hasFrames = true;
            if (item.kind == StreamItem::badLength)
                falseStart = item;
            else
                decodeItem(item);
            continue;
        }
        for (int at = 0; at < item.bytes.size();) {
            if (garbage.size == 0)
                garbage.offset = item.offset + at;
            garbage.bytes += item.bytes.mid(at, largestGarbage - garbage.bytes.size());
            at += garbage.bytes.size() - static_cast<int>(garbage.size);
            garbage.size = garbage.bytes.size();
            if (garbage.size == largestGarbage)
                endGarbage();
        }
    }
}

void FrameDecoder::endGarbage()
{
    if (falseStart) {
        falseStart->swappedLength =
            fittingSwappedLength(falseStart->content.length, garbage.bytes.mid(CSocketAPI::headerSize - 1));
        decodeItem(*std::exchange(falseStart, std::nullopt));
    }
    if (garbage.size > 0)
        decodeItem(std::exchange(garbage, StreamItem()));
}

void FrameDecoder::decode()
{
    result.readerCalled = true;
    result.result = 1;
    result.meaning = Text::tr("good");
    if (source.table == nullptr)
        listener.begin(nullptr, '[');
    FrameStream stream(INT_MAX, static_cast<unsigned int>(source.largestPayload));
    while (input.holds(1)) {
        const QByteArray piece(input.at(), input.left());
        input.skip(piece.size());
        take(stream.feed(piece));
    }
    take(stream.end());
    endGarbage();
    if (source.table == nullptr)
        listener.end(']');
    if (!hasFrames) {
        const Text missing = Text::tr("no frame found");
        fault(0, missing);
        result.result = 0;
        result.meaning = missing;
    }
    result.stopAt(input);
}

Decoding decodeFrames(ByteWindow& bytes, const FrameSource& source, DecodeListener& listener, size_t mostFaults)
{
    Decoding decoding(mostFaults);
    FrameDecoder(bytes, source, listener, decoding).decode();
    return decoding;
}

// --- Encoding -----------------------------------------------------------------------------------------------------

static const QStringList partMembers = {"offset", "garbage", "header", "length",  "sequence", "arg2",
                                        "arg1",   "command", "name",   "payload", "form",     "content",
                                        "rest",   "check",   "end",    "fault"};

class FrameEncoder {
public:
    FrameEncoder(const Json& partObject, const QString& partPath, QByteArray& encoded)
        : part(partObject), path(partPath), bytes(encoded)
    {
    }

    void encode()
    {
        for (const auto& [name, value] : part.items()) {
            if (!partMembers.contains(QString::fromStdString(name)))
                fail(name.c_str(), Text::tr("is unknown; the members are %1").arg(listText(partMembers)));
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
        const auto value = part.find(name);
        const double number = value != part.end() && value->is_number() ? value->get<double>() : -1;
        const bool isInside = number >= 0 && number <= most && number == std::floor(number);
        if (value == part.end())
            fail(name, Text::tr("is missing"));
        else if (!isInside)
            fail(name, Text::tr("must be an integer from 0 to %1").arg(most) + gotText(*value));
        return isInside ? static_cast<int>(number) : -1;
    }

    QByteArray takeHex(const char* name, int size = -1) // of so many bytes; -1: any number
    {
        const auto value = part.find(name);
        QByteArray taken;
        if (value == part.end())
            fail(name, Text::tr("is missing"));
        else if (!::takeHex(*value, taken))
            fail(name, Text::tr("must be a string of hex digits, two per byte") + gotText(*value));
        else if (size >= 0 && taken.size() != size)
            fail(name, Text::tr("must have %1, got %2").arg(bytesText(size)).arg(taken.size()));
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
        const bool isCut = part.value("fault", Json()) == "cut";
        if (part.contains("length")) {
            const int length = takeInteger("length", INT_MAX - CSocketAPI::frameOverhead);
            const int size = payloadEnd - CSocketAPI::headerSize;
            if (length >= 0 && (length < size || (length > size && !isCut)))
                fail("length", Text::tr("must be the size of the payload, %1, got %2").arg(size).arg(length));
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

    const Json& part;
    const QString& path;
    QByteArray& bytes;
};

QStringList encodeFrame(const Json& part, const QString& path, QByteArray& bytes)
{
    if (!part.is_object())
        return {QString("%1 %2").arg(path, Text::tr("must be an object")) + gotText(part)};
    FrameEncoder encoder(part, path, bytes);
    encoder.encode();
    return encoder.errors;
}
