#include "frameText.h"

#include <QStringList>

#include <algorithm>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int shownBytes = 16;
static const int shownItems = 8;
static const int shownText = 40; // characters of each text

// --- Commands -----------------------------------------------------------------------------------------------------

// Of the commands that the library sends by itself, and of an error frame; empty for others.
static QString commandName(unsigned char command)
{
    switch (command) {
    case 1:
        return "systemState";
    case 2:
        return "systemTime";
    case 3:
        return "clear";
    case 5:
        return "setTime";
    case 6:
        return "setState";
    case CSocketAPI::errorCommand:
        return "error";
    default:
        return QString();
    }
}

// --- Payloads -----------------------------------------------------------------------------------------------------

static QString hexText(const QByteArray& bytes)
{
    return CByte2Val::buf2str(bytes.left(shownBytes)) + (bytes.size() > shownBytes ? " ..." : "");
}

// Whether a form of `size` bytes is all that the payload holds, but for the zeros that datagrams are padded with.
static bool fits(const Frame& frame, long long size)
{
    const int leastDatagram = 64 - CSocketAPI::frameOverhead;
    if (size == frame.payload.size())
        return true;
    return frame.payload.size() == leastDatagram && size < leastDatagram &&
           frame.payload.mid(static_cast<int>(size)).count('\0') == leastDatagram - size;
}

static QString countText(unsigned int count, const char* noun)
{
    return QString("%1 %2%3: ").arg(count).arg(noun, count == 1 ? "" : "s");
}

static QString listText(const QStringList& shown, unsigned int count)
{
    return shown.join(", ") + (count > static_cast<unsigned int>(shown.size()) ? ", ..." : "");
}

static QString intsText(const QByteArray& payload, int first, unsigned int count)
{
    QStringList shown;
    const auto wanted = static_cast<int>(std::min<unsigned int>(count, shownItems));
    for (int pos = first; shown.size() < wanted; pos += 4)
        shown.append(QString::number(CByte2Val::byte2Int(payload.constData() + pos)));
    return listText(shown, count);
}

// In quotes, with what would not be seen, or would move a terminal's cursor, as \uXXXX.
static QString quoted(const QString& text)
{
    QString result = "\"";
    for (const QChar character : text.left(shownText)) {
        if (character.isPrint() && character != '"' && character != '\\')
            result += character;
        else
            result += QString("\\u%1").arg(character.unicode(), 4, 16, QChar('0'));
    }
    return result + (text.size() > shownText ? "...\"" : "\"");
}

// The texts of a string list, if the payload is one.
static bool takeTexts(const Frame& frame, unsigned int count, QStringList& texts)
{
    const QByteArray& payload = frame.payload;
    long long pos = 4;
    for (unsigned int i = 0; i < count; ++i) {
        if (pos + 4 > payload.size())
            return false;
        const char* item = payload.constData() + pos;
        const int outer = CByte2Val::byte2UShort(item);
        if (CByte2Val::byte2UShort(item + 2) + 2 != outer || pos + 2 + outer > payload.size())
            return false;
        QString text;
        CByte2Val::byte2Str(item + 2, outer, text);
        texts.append(text);
        pos += 2 + outer;
    }
    return fits(frame, pos);
}

static QString payloadText(const Frame& frame)
{
    const QByteArray& payload = frame.payload;
    const bool isWhole = static_cast<unsigned int>(payload.size()) == frame.length;
    if (!isWhole || payload.size() < 4)
        return hexText(payload);
    if (fits(frame, 4))
        return intsText(payload, 0, 1);
    if (frame.command == 5 && payload.size() == 8)
        return intsText(payload, 0, 2);

    const unsigned int count = CByte2Val::byte2UInt(payload.constData());
    // In a padded datagram one integer below 256 and one byte look alike: integers are what requests carry.
    if (fits(frame, 4LL + count) && (count > 1 || payload.size() == 5))
        return countText(count, "byte") + hexText(payload.mid(4, static_cast<int>(count)));
    if (fits(frame, 4 + 4LL * count))
        return countText(count, "integer") + intsText(payload, 4, count);
    QStringList texts;
    if (takeTexts(frame, count, texts)) {
        QStringList shown;
        for (const QString& text : texts.mid(0, shownItems))
            shown.append(quoted(text));
        return countText(count, "text") + listText(shown, count);
    }
    return hexText(payload);
}

// --- Frames and what else stands in a stream ----------------------------------------------------------------------

QString frameText(const Frame& frame)
{
    const QString name = commandName(frame.command);
    const QString text = QString("%1, sequence %2, %3 %4")
                             .arg(name.isEmpty() ? QString("command 0x%1").arg(frame.command, 2, 16, QChar('0')) : name)
                             .arg(frame.sequence)
                             .arg(frame.length)
                             .arg(frame.length == 1 ? "byte" : "bytes");
    if (frame.command == CSocketAPI::errorCommand)
        return text + (frame.payload.size() < 4 ? QString(": no code") : ": code " + intsText(frame.payload, 0, 1));
    return frame.payload.isEmpty() ? text : text + ": " + payloadText(frame);
}

QString itemText(const StreamItem& item)
{
    const Frame& frame = item.content;
    switch (item.kind) {
    case StreamItem::frame:
        return frameText(frame);
    case StreamItem::garbage:
        return QString("garbage, %1 %2: %3").arg(item.size).arg(item.size == 1 ? "byte" : "bytes", hexText(item.bytes));
    case StreamItem::wrongEnd:
        return QString("wrong end 0x%1 in place of 0x16: %2").arg(frame.end, 2, 16, QChar('0')).arg(frameText(frame));
    case StreamItem::badLength:
        return QString("bad length %1; a client would wait for the rest of it").arg(frame.length);
    case StreamItem::cut:
        return QString("cut, %1 of %2 bytes: %3")
            .arg(item.size)
            .arg(static_cast<long long>(frame.length) + CSocketAPI::frameOverhead)
            .arg(frameText(frame));
    case StreamItem::cutHeader:
        return QString("cut, %1 of the %2 bytes of a header: %3")
            .arg(item.size)
            .arg(CSocketAPI::headerSize)
            .arg(hexText(item.bytes));
    }
    return QString();
}

QJsonObject itemJson(const StreamItem& item)
{
    QJsonObject json{{"offset", item.offset}};
    if (item.kind == StreamItem::garbage) {
        json["garbage"] = QString(item.bytes.toHex());
        return json;
    }
    if (item.kind == StreamItem::cutHeader) {
        json["header"] = QString(item.bytes.toHex());
        json["fault"] = "cut";
        return json;
    }
    const Frame& frame = item.content;
    json["length"] = static_cast<qint64>(frame.length);
    if (item.kind == StreamItem::badLength) {
        json["fault"] = "length";
        return json;
    }
    json["sequence"] = frame.sequence;
    json["arg2"] = frame.arg2;
    json["arg1"] = frame.arg1;
    json["command"] = frame.command;
    json["payload"] = QString(frame.payload.toHex());
    if (!frame.check.isEmpty())
        json["check"] = QString(frame.check.toHex());
    if (item.kind == StreamItem::cut) {
        json["fault"] = "cut";
        return json;
    }
    json["end"] = QString("%1").arg(frame.end, 2, 16, QChar('0'));
    if (item.kind == StreamItem::wrongEnd)
        json["fault"] = "end";
    return json;
}
