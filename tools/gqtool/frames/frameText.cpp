#include "frameText.h"

#include "payloadForm.h"

#include <QStringList>

#include <algorithm>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

static const int shownBytes = 16;
static const int shownItems = 8;
static const int shownText = 40; // characters of each text

// --- Commands -----------------------------------------------------------------------------------------------------

// Names the ready-made commands and error frames; empty for others.
static QString commandName(unsigned char command)
{
    switch (command) {
    case CSocketAPI::systemStateCommand:
        return "systemState";
    case CSocketAPI::systemTimeCommand:
        return "systemTime";
    case CSocketAPI::clearCommand:
        return "clear";
    case CSocketAPI::setTimeCommand:
        return "setTime";
    case CSocketAPI::setStateCommand:
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

// Returns true if a form of `size` bytes fills the payload, except for the zeros that pad datagrams.
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
    for (const int value : readIntegers(payload.constData() + first, std::min<unsigned int>(count, shownItems)))
        shown.append(QString::number(value));
    return listText(shown, count);
}

// Returns the text in quotes, with \uXXXX for invisible characters and those that move a terminal's cursor.
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

static QString payloadText(const Frame& frame)
{
    const QByteArray& payload = frame.payload;
    const bool isWhole = static_cast<unsigned int>(payload.size()) == frame.length;
    if (!isWhole || payload.size() < 4)
        return hexText(payload);
    if (fits(frame, 4))
        return intsText(payload, 0, 1);
    if (frame.command == CSocketAPI::setTimeCommand && payload.size() == 8)
        return intsText(payload, 0, 2);

    const unsigned int count = CByte2Val::byte2UInt(payload.constData());
    // In a padded datagram one integer below 256 looks like one byte. Requests carry integers, so it is shown as one.
    if (fits(frame, 4LL + count) && (count > 1 || payload.size() == 5))
        return countText(count, "byte") + hexText(payload.mid(4, static_cast<int>(count)));
    if (fits(frame, 4 + 4LL * count))
        return countText(count, "integer") + intsText(payload, 4, count);
    const PayloadTexts list = readTexts(payload, count);
    if (list.isWhole && list.isExact && fits(frame, list.used)) {
        QStringList shown;
        for (const QString& text : list.texts.mid(0, shownItems))
            shown.append(quoted(text));
        return countText(count, "text") + listText(shown, count);
    }
    return hexText(payload);
}

// --- Items of a stream ----------------------------------------------------------------------

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
        return QString("wrong end 0x%1 instead of 0x16: %2").arg(frame.end, 2, 16, QChar('0')).arg(frameText(frame));
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
