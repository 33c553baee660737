#include "frameText.h"

#include "gqtool/records/recordTexts.h"
#include "shared/text.h"

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

// Returns the standard form that the payload fits; empty if it fits none.
static QString fittingForm(const Frame& frame)
{
    const QByteArray& payload = frame.payload;
    if (payload.size() < 4)
        return {};
    if (fits(frame, 4))
        return "int";
    if (frame.command == CSocketAPI::setTimeCommand && payload.size() == 8)
        return "intPair";
    const unsigned int count = CByte2Val::byte2UInt(payload.constData());
    // In a padded datagram one integer below 256 looks like one byte. Requests carry integers, so it is shown as one.
    if (fits(frame, 4LL + count) && (count > 1 || payload.size() == 5))
        return "bytes";
    if (fits(frame, 4 + 4LL * count))
        return "ints";
    const PayloadTexts list = readTexts(payload, count);
    return list.isWhole && list.isExact && fits(frame, list.used) ? "strings" : QString();
}

// The payload must have this form.
static Text formText(const QString& form, const QByteArray& payload)
{
    const unsigned int count = CByte2Val::byte2UInt(payload.constData());
    if (form == "int")
        return Text::untranslated(intsText(payload, 0, 1));
    if (form == "intPair")
        return Text::untranslated(intsText(payload, 0, 2));
    if (form == "bytes")
        return Text::tr("%1: %2").arg(bytesText(count), hexText(bytesOf(payload)));
    if (form == "ints")
        return (count == 1 ? Text::tr("%1 integer: %2") : Text::tr("%1 integers: %2"))
            .arg(count)
            .arg(intsText(payload, 4, count));
    QStringList shown;
    for (const QString& text : readTexts(payload, count).texts.mid(0, shownItems))
        shown.append(quoted(text));
    return (count == 1 ? Text::tr("%1 text: %2") : Text::tr("%1 texts: %2")).arg(count).arg(listText(shown, count));
}

static Text recordsText(const Form& form, const QByteArray& bytes)
{
    const RecordTexts records = recordTexts(form, bytes);
    const QStringList shown = records.texts.mid(0, shownItems);
    const bool isCut = records.texts.size() > shown.size();
    QString text = form.name;
    if (records.isList)
        text += QString(", %1: {%2}").arg(records.texts.size()).arg(shown.join("}, {"));
    else
        text += ": " + shown.join(", ");
    if (isCut)
        text += ", ...";
    const Text whole = Text::untranslated(text);
    return records.fault.isEmpty() ? whole : Text::tr("%1; %2").arg(whole, records.fault);
}

static Text payloadText(const Frame& frame, const FrameSource& source)
{
    const QByteArray& payload = frame.payload;
    const bool isWhole = static_cast<unsigned int>(payload.size()) == frame.length;
    Text hex = Text::untranslated(hexText(payload));
    if (!isWhole)
        return hex;
    const MappedCommand* mapped = source.mapped(frame.command);
    if (mapped == nullptr) {
        const QString form = fittingForm(frame);
        return form.isEmpty() ? hex : formText(form, payload);
    }
    const Payload read = payloadOf(frame.command, payload, source);
    if (read.form.isEmpty())
        return hex;
    if (read.form.contains(':'))
        return recordsText(*mapped->records, bytesOf(payload));
    return read.fault.isEmpty() ? formText(read.form, payload) : Text::tr("%1 (not %2)").arg(hex, read.form);
}

// --- Items of a stream ----------------------------------------------------------------------

Text commandLabel(unsigned char command, const FrameSource& source)
{
    const MappedCommand* mapped = source.mapped(command);
    const QString name = mapped == nullptr ? commandName(command) : mapped->name;
    return name.isEmpty() ? Text::tr("command %1").arg(commandText(command)) : Text::untranslated(name);
}

Text frameText(const Frame& frame, const FrameSource& source)
{
    const Text text = Text::tr("%1, sequence %2, %3")
                          .arg(commandLabel(frame.command, source))
                          .arg(frame.sequence)
                          .arg(bytesText(frame.length));
    if (frame.command == CSocketAPI::errorCommand && frame.payload.size() < 4)
        return Text::tr("%1: no code").arg(text);
    if (frame.command == CSocketAPI::errorCommand)
        return Text::tr("%1: code %2").arg(text, intsText(frame.payload, 0, 1));
    return frame.payload.isEmpty() ? text : Text::tr("%1: %2").arg(text, payloadText(frame, source));
}

Text swappedText(const StreamItem& item)
{
    return Text::tr("length in the wrong byte order, %1 instead of %2; a client would wait for the rest of it")
        .arg(item.content.length)
        .arg(item.swappedLength);
}

Text itemText(const StreamItem& item, const FrameSource& source)
{
    const Frame& frame = item.content;
    if (item.swappedLength >= 0)
        return swappedText(item);
    switch (item.kind) {
    case StreamItem::frame:
        return frameText(frame, source);
    case StreamItem::garbage:
        if (item.size == 0)
            return Text::tr("an empty datagram");
        return Text::tr("garbage, %1: %2").arg(bytesText(item.size), hexText(item.bytes));
    case StreamItem::wrongEnd:
        return Text::tr("wrong end 0x%1 instead of 0x16: %2")
            .arg(frame.end, 2, 16, QChar('0'))
            .arg(frameText(frame, source));
    case StreamItem::badLength:
        return Text::tr("bad length %1; a client would wait for the rest of it").arg(frame.length);
    case StreamItem::cut:
        return Text::tr("cut, %1 of %2 bytes: %3")
            .arg(item.size)
            .arg(static_cast<long long>(frame.length) + CSocketAPI::frameOverhead)
            .arg(frameText(frame, source));
    case StreamItem::cutHeader:
        return Text::tr("cut, %1 of the %2 bytes of a header: %3")
            .arg(item.size)
            .arg(CSocketAPI::headerSize)
            .arg(hexText(item.bytes));
    }
    return {};
}
