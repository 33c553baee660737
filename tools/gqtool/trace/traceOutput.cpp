#include "traceOutput.h"

#include "gqtool/frames/frameMembers.h"
#include "gqtool/frames/frameText.h"
#include "gqtool/frames/replyMatch.h"
#include "shared/compactJson.h"
#include "shared/console.h"
#include "shared/text.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <chrono>

static const int shownBytes = 65536; // of each payload, on standard output
static const size_t mostLines = 64;  // of a piece, at once

TraceOutput::TraceOutput(bool json, bool datagrams, const CommandMap* map)
    : isJson(json), source{datagrams, false, {}, map}
{
}

bool TraceOutput::record(const QString& path, int mostBytes, QString& error)
{
    recordedBytes = mostBytes;
    recording.setFileName(path);
    const bool isOpen = recording.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
    error = libraryText(recording.errorString());
    return isOpen;
}

int TraceOutput::keptBytes() const
{
    return recording.isOpen() ? std::max(recordedBytes, shownBytes) : shownBytes;
}

void TraceOutput::writeRecord(const QJsonObject& json)
{
    const QByteArray line = compactJson(QJsonDocument(json)) + '\n';
    hasFailed = recording.write(line) != line.size();
    if (hasFailed)
        printError(Text::tr("cannot write to %1, the trace continues without it: %2")
                       .arg(recording.fileName(), libraryText(recording.errorString())));
}

static long long microsecondsNow()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

// 2026-11-21T15:33:54.123456Z
static QString isoTime(long long microseconds)
{
    return QDateTime::fromMSecsSinceEpoch(microseconds / 1000).toUTC().toString("yyyy-MM-ddThh:mm:ss.zzz") +
           QString("%1Z").arg(microseconds % 1000, 3, 10, QChar('0'));
}

QString sideText(Side side)
{
    return side == Side::client ? "client" : "station";
}

void TraceOutput::print(int connection, const QString& text, QJsonObject json)
{
    json["time"] = isoTime(now);
    if (connection > 0)
        json["connection"] = connection;
    if (recording.isOpen() && !hasFailed)
        writeRecord(json);
    if (isJson) {
        const QString payload = json.value("payload").toString();
        if (payload.size() > 2 * shownBytes)
            json["payload"] = payload.left(2 * shownBytes);
        printJson(json);
        return;
    }
    const QString time = QDateTime::fromMSecsSinceEpoch(now / 1000).toString("hh:mm:ss.zzz");
    printLine(connection > 0 ? QString("%1 %2 %3").arg(time).arg(connection).arg(text) : time + ' ' + text);
}

// Adds what is known from the map.
void TraceOutput::addContent(const Frame& frame, const MappedCommand& command, QJsonObject& json) const
{
    json["name"] = command.name;
    const Payload payload = payloadOf(frame.command, frame.payload, source);
    if (payload.form.isEmpty() || static_cast<unsigned int>(frame.payload.size()) != frame.length) // not kept whole
        return;
    json["form"] = payload.form;
    if (!payload.content.empty()) // may be a bare number or text
        json["content"] =
            QJsonDocument::fromJson('[' + QByteArray::fromStdString(payload.content) + ']').array().first();
    if (!payload.fault.isEmpty())
        json["fault"] = "form";
}

// Compares a reply with the latest request. Adds what differs to `json`, and returns the remark for the line.
QString TraceOutput::addMismatch(const Frame& reply, const TracedLink& link, QJsonObject& json) const
{
    if (!link.request) // a greeting
        return {};
    const bool isOther = reply.command != link.request->command && reply.command != gqdb::CSocketAPI::errorCommand;
    const bool isOutOfTurn = !isSequenceOfReply(reply, *link.request, link.lastSequence);
    if (isOther)
        json["requestCommand"] = link.request->command;
    if (isOutOfTurn)
        json["requestSequence"] = link.request->sequence;
    if (!isOther && !isOutOfTurn)
        return {};
    return Text::tr(" (does not match the request: %1, sequence %2)")
        .arg(commandLabel(link.request->command, source))
        .arg(link.request->sequence);
}

void TraceOutput::printItems(TracedLink& link, Side from, const std::vector<StreamItem>& items)
{
    source.isRequest = from == Side::client;
    for (const StreamItem& item : items) {
        QJsonObject json = jsonOf(item);
        const MappedCommand* mapped = item.kind == StreamItem::frame ? source.mapped(item.content.command) : nullptr;
        if (mapped != nullptr)
            addContent(item.content, *mapped, json);
        json["from"] = sideText(from);
        const bool isReply = item.kind == StreamItem::frame && from == Side::station;
        const QString remark = isReply ? addMismatch(item.content, link, json) : QString();
        print(link.number, (from == Side::client ? "-> " : "<- ") + itemText(item, source) + remark, json);
        if (item.kind != StreamItem::frame) {
            ++faults;
        } else if (isReply) {
            ++replies;
            link.lastSequence = item.content.sequence;
        } else {
            ++requests;
            link.request = item.content;
            link.request->payload.clear();
        }
    }
}

void TraceOutput::listening(const QString& endpoint, const QString& station)
{
    now = microsecondsNow();
    print(0, Text::tr("listening on %1 for %2").arg(endpoint, station),
          {{"event", "listening"}, {"address", endpoint}, {"station", station}});
}

void TraceOutput::connected(int connection, const QString& client)
{
    now = microsecondsNow();
    ++connections;
    print(connection, Text::tr("connected from %1").arg(client), {{"event", "connected"}, {"client", client}});
}

void TraceOutput::event(int connection, const QString& name, const Text& text, int error)
{
    now = microsecondsNow();
    QJsonObject json{{"event", name}};
    if (error != 0)
        json["reason"] = errorText(error).english();
    print(connection, error == 0 ? text : text.arg(errorText(error)), json);
}

void TraceOutput::piece(TracedLink& link, Side from, const QByteArray& bytes, FrameStream& stream)
{
    now = microsecondsNow();
    printItems(link, from, stream.feed(bytes, mostLines));
}

void TraceOutput::more(TracedLink& link, Side from, FrameStream& stream)
{
    now = microsecondsNow();
    printItems(link, from, stream.more(mostLines));
}

void TraceOutput::end(TracedLink& link, Side from, FrameStream& stream)
{
    now = microsecondsNow();
    printItems(link, from, stream.end());
}

void TraceOutput::datagram(TracedLink& link, Side from, const QByteArray& bytes)
{
    now = microsecondsNow();
    if (bytes.isEmpty()) {
        printItems(link, from, {StreamItem()}); // garbage of 0 bytes
        return;
    }
    FrameStream stream(keptBytes());
    printItems(link, from, stream.feed(bytes));
    printItems(link, from, stream.end());
}

QString TraceOutput::summary() const
{
    return Text::tr("connections: %1, frames to the station: %2, back: %3, faults: %4")
        .arg(connections)
        .arg(requests)
        .arg(replies)
        .arg(faults);
}
