#include "peerBytes.h"

#include "gqtool/frames/frameStream.h"
#include "gqtool/frames/frameText.h"
#include "shared/text.h"

#include <algorithm>
#include <socketApi.h>

using gqdb::CByte2Val;
using gqdb::CSocketAPI;

// --- Foreign servers ----------------------------------------------------------------------------------------------

static bool isTlsRecord(const QByteArray& bytes)
{
    return bytes.size() >= 3 && bytes[0] >= 0x14 && bytes[0] <= 0x18 && bytes[1] == 3 && uchar(bytes[2]) <= 4;
}

// A server that takes the frame for an HTTP/0.9 request sends the page without a status line.
static bool isHttp(const QByteArray& bytes)
{
    const QByteArray start = bytes.left(14).toLower();
    return bytes.startsWith("HTTP/") || start.startsWith("<html") || start.startsWith("<!doctype html");
}

// Returns the protocol that the first bytes identify, or an empty text.
static QString knownProtocol(const QByteArray& bytes)
{
    if (bytes.startsWith("SSH-"))
        return "ssh";
    if (isHttp(bytes))
        return "http";
    return isTlsRecord(bytes) ? "tls" : "";
}

static bool isText(const QByteArray& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) {
        return (byte >= ' ' && byte <= '~') || byte == '\r' || byte == '\n' || byte == '\t';
    });
}

QString visibleText(const QByteArray& bytes)
{
    QString text = "\"";
    for (const char byte : bytes.left(shownPeerBytes)) {
        if (byte == '\r')
            text += "\\r";
        else if (byte == '\n')
            text += "\\n";
        else if (byte == '\t')
            text += "\\t";
        else
            text += byte >= ' ' && byte <= '~' ? QLatin1Char(byte) : QLatin1Char('.');
    }
    return text + (bytes.size() > shownPeerBytes ? "\"..." : "\"");
}

// --- Frames -------------------------------------------------------------------------------------------------------

// Returns true if bytes without a complete frame are probably part of one. The start byte alone proves nothing: it is
// the letter h.
static bool isPartOfFrame(const QByteArray& bytes, const std::vector<StreamItem>& items)
{
    const unsigned int likelyLength = 0xFFFF; // four letters read as a length are far above it
    for (const StreamItem& item : items) {
        if (item.kind == StreamItem::cut && item.content.length <= likelyLength)
            return true;
    }
    if (bytes[0] == CSocketAPI::frameStart)
        return bytes.size() == 1 || !isText(bytes);
    // A frame in which only the start byte is damaged.
    return bytes.size() >= CSocketAPI::frameOverhead && bytes.back() == CSocketAPI::frameEnd &&
           CByte2Val::byte2UInt(bytes.constData() + 1) ==
               static_cast<unsigned int>(bytes.size() - CSocketAPI::frameOverhead);
}

static ByteVerdict judgeFrame(const Frame& frame, AwaitedBytes awaited)
{
    ByteVerdict verdict;
    verdict.isFinal = true;
    verdict.frame = frame;
    verdict.detail = frameText(frame);
    const bool hasInteger = frame.payload.size() >= 4;
    if (hasInteger)
        verdict.value = CByte2Val::byte2Int(frame.payload.constData());
    if (frame.command == CSocketAPI::errorCommand) {
        verdict.cause = LinkCause::errorFrame;
        verdict.detail = Text::tr("an error frame with code %1").arg(verdict.value);
        if (!hasInteger) {
            verdict.value = -2; // as the clients report it
            verdict.detail = Text::tr("an error frame without a code");
        }
    } else if (!hasInteger) {
        verdict.cause = LinkCause::badFrame;
        verdict.detail =
            Text::tr("a frame with a payload of %1, at least 4 are needed").arg(bytesText(frame.payload.size()));
    } else if (awaited == AwaitedBytes::greeting) {
        verdict.cause = verdict.value > 0 ? LinkCause::healthy : LinkCause::notGreeted;
        verdict.detail = Text::tr("a greeting of %1").arg(verdict.value);
    } else {
        verdict.detail = Text::untranslated(QString::number(verdict.value));
    }
    return verdict;
}

static ByteVerdict verdictOf(LinkCause cause, bool isFinal, const Text& detail)
{
    ByteVerdict verdict;
    verdict.cause = cause;
    verdict.isFinal = isFinal;
    verdict.detail = detail;
    return verdict;
}

static ByteVerdict foreignVerdict(const QString& protocol, bool isFinal, const QByteArray& bytes)
{
    ByteVerdict verdict = verdictOf(LinkCause::foreign, isFinal, Text::tr("no frame, but %1").arg(visibleText(bytes)));
    verdict.protocol = protocol;
    return verdict;
}

// Describes the first header with an impossible length, whose payload a client waits for. Without one, describes the
// last item.
static Text incompleteText(const std::vector<StreamItem>& items)
{
    for (const StreamItem& item : items) {
        if (item.swappedLength >= 0)
            return Text::tr("no complete frame: %1").arg(swappedText(item));
        if (item.kind == StreamItem::badLength)
            return Text::tr("no frame: its header has a length of %1, and a client takes at most %2")
                .arg(item.content.length)
                .arg(FrameStream::clientLimit);
    }
    return Text::tr("no complete frame: %1").arg(itemText(items.back()));
}

ByteVerdict judgeBytes(const QByteArray& bytes, AwaitedBytes awaited)
{
    if (bytes.isEmpty())
        return verdictOf(awaited == AwaitedBytes::greeting ? LinkCause::silent : LinkCause::noReply, false, {});
    const bool mayBeForeign = awaited != AwaitedBytes::reply;
    const QString protocol = knownProtocol(bytes);
    if (mayBeForeign && !protocol.isEmpty())
        return foreignVerdict(protocol, true, bytes);

    FrameStream stream;
    std::vector<StreamItem> items = stream.feed(bytes);
    for (const StreamItem& item : items) {
        if (item.kind == StreamItem::frame) {
            ByteVerdict verdict = judgeFrame(item.content, awaited);
            for (const StreamItem* next = &item + 1; next <= &items.back() && !verdict.next; ++next) {
                if (next->kind == StreamItem::frame)
                    verdict.next = next->content;
            }
            if (item.offset > 0)
                verdict.detail = Text::tr("%1, after %2 without a frame").arg(verdict.detail, bytesText(item.offset));
            return verdict;
        }
        if (item.kind == StreamItem::wrongEnd)
            return verdictOf(LinkCause::badFrame, true, itemText(item));
        if (item.kind == StreamItem::badLength)
            break; // a client waits for the rest of this frame, whatever follows
    }
    for (const StreamItem& item : stream.end())
        items.push_back(item);
    if (mayBeForeign && bytes.contains("\nSSH-")) // lines of text may precede the version
        return foreignVerdict("ssh", false, bytes);
    if (mayBeForeign && !isPartOfFrame(bytes, items))
        return foreignVerdict("unknown", false, bytes);
    return verdictOf(LinkCause::badFrame, false, incompleteText(items));
}
