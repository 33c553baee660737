#include "payloadForm.h"

#include "gqtool/records/jsonText.h"
#include "gqtool/records/recordTexts.h"
#include "shared/text.h"

#include <socketApi.h>
#include <utility>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static QString formOf(const MappedCommand& command, const FrameSource& source)
{
    if (!source.isRequest)
        return command.reply;
    return command.request == "-" || command.request == "hex" ? QString() : command.request;
}

static QString formOf(unsigned char command, const FrameSource& source)
{
    if (const MappedCommand* mapped = source.mapped(command))
        return formOf(*mapped, source);
    switch (command) {
    case CSocketAPI::setTimeCommand:
        if (source.isRequest)
            return source.isUdp ? "ints" : "intPair";
        return "int";
    case CSocketAPI::systemStateCommand:
    case CSocketAPI::systemTimeCommand:
    case CSocketAPI::clearCommand:
    case CSocketAPI::setStateCommand:
        return "int";
    case CSocketAPI::errorCommand:
        return source.isRequest ? source.form : QString("error");
    default:
        return source.form;
    }
}

QByteArray bytesOf(const QByteArray& payload)
{
    return payload.mid(4, static_cast<int>(CByte2Val::byte2UInt(payload.constData())));
}

const Form* recordsOf(unsigned char command, const FrameSource& source)
{
    const MappedCommand* mapped = source.isRequest ? nullptr : source.mapped(command);
    return mapped == nullptr ? nullptr : mapped->records;
}

std::vector<int> readIntegers(const char* first, unsigned int count)
{
    std::vector<int> values;
    CByte2Val::buffer2Ints(first, static_cast<int>(count), values);
    return values;
}

PayloadTexts readTexts(const QByteArray& payload, unsigned int count)
{
    PayloadTexts result;
    for (unsigned int i = 0; i < count; ++i) {
        const long long left = payload.size() - result.used;
        const char* item = payload.constData() + result.used;
        const int outer = left < 2 ? 0 : CByte2Val::byte2UShort(item);
        result.isWhole = left >= 2 + outer;
        if (!result.isWhole)
            break;
        const int inner = outer < 2 ? outer : CByte2Val::byte2UShort(item + 2);
        const QByteArray text = inner + 2 <= outer ? QByteArray(item + 4, inner) : QByteArray();
        result.isExact = result.isExact && inner + 2 == outer;
        result.texts.append(QString::fromUtf8(text.constData())); // up to a zero byte
        result.used += 2 + outer;
    }
    return result;
}

static void takeRecords(const Form& form, const QByteArray& bytes, Payload& payload)
{
    RecordTexts records = recordTexts(form, bytesOf(bytes), false);
    payload.form += QString(":") + form.name;
    payload.content = std::move(records.json);
    if (!records.fault.isEmpty())
        payload.fault = Text::tr("in the records, %1").arg(records.fault);
}

static void takeTexts(const QByteArray& bytes, unsigned int count, Payload& payload)
{
    const PayloadTexts list = readTexts(bytes, count);
    JsonBuilder json;
    json.begin(nullptr, '[');
    for (const QString& text : list.texts)
        json.add(nullptr, JsonText{jsonText(text)});
    json.end(']');
    payload.content = std::move(json.text);
    payload.used = list.used;
    if (list.isWhole)
        return;
    const int left = bytes.size() - static_cast<int>(list.used);
    payload.fault = Text::tr("text %1 of %2 needs %3 bytes, but only %4 of the payload's %5 bytes remain")
                        .arg(list.texts.size() + 1)
                        .arg(count)
                        .arg(left < 2 ? 2 : 2 + CByte2Val::byte2UShort(bytes.constData() + list.used))
                        .arg(left)
                        .arg(bytes.size());
}

static Text sizeFault(const QString& form, int size, int count, long long needed)
{
    const bool hasCount = size >= 4 && (form == "ints" || form == "bytes" || form == "strings");
    if (!hasCount)
        return Text::tr("the payload has %1, but its form (%2) needs %3").arg(bytesText(size)).arg(form).arg(needed);
    if (count < 0)
        return Text::tr("the payload has %1 bytes, and the count of its form (%2) is %3")
            .arg(size)
            .arg(form)
            .arg(count);
    return Text::tr("the payload has %1 bytes, but its form (%2) with a count of %3 needs %4")
        .arg(size)
        .arg(form)
        .arg(count)
        .arg(needed);
}

static Payload payloadOf(const QString& form, const QByteArray& bytes, const Form* records)
{
    Payload payload;
    payload.form = form;
    if (form.isEmpty())
        return payload;
    const char* first = bytes.constData();
    const unsigned int count = bytes.size() < 4 ? 0 : CByte2Val::byte2UInt(first);
    payload.used = form == "intPair" ? 8 : 4;
    if (form == "ints")
        payload.used += 4LL * count;
    else if (form == "bytes")
        payload.used += count;
    else if (form == "strings")
        payload.used += 2LL * count;
    if (bytes.size() < payload.used)
        payload.fault = sizeFault(form, bytes.size(), static_cast<int>(count), payload.used);
    else if (form == "strings")
        takeTexts(bytes, count, payload);
    else if (form == "ints")
        payload.content = jsonText(readIntegers(first + 4, count));
    else if (records != nullptr)
        takeRecords(*records, bytes, payload);
    else if (form == "bytes")
        payload.content = jsonText(QString(bytesOf(bytes).toHex()));
    else if (form == "intPair")
        payload.content = jsonText(readIntegers(first, 2));
    else
        payload.content = std::to_string(CByte2Val::byte2Int(first));
    return payload;
}

Payload payloadOf(unsigned char command, const QByteArray& bytes, const FrameSource& source)
{
    return payloadOf(formOf(command, source), bytes, recordsOf(command, source));
}

Text formFault(const QString& form, const QByteArray& bytes)
{
    return payloadOf(form, bytes, nullptr).fault;
}

int parserResult(const QString& form, const QByteArray& bytes)
{
    gqdb::CSocketAPI client;
    if (form == "ints") {
        std::vector<int> values;
        return client.parseInts(bytes.constData(), bytes.size(), values);
    }
    if (form.startsWith("bytes")) {
        std::vector<unsigned char> values;
        return client.parseBytes(bytes.constData(), bytes.size(), values);
    }
    if (form == "strings") {
        QStringList texts;
        return client.parseStrings(bytes.constData(), bytes.size(), texts);
    }
    if (form == "int" || form == "error") {
        int value = 0;
        return client.parseInt(bytes.constData(), bytes.size(), value);
    }
    return 1; // a pair of integers, for which the library has no parser
}
