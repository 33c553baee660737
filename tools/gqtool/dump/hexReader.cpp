#include "hexReader.h"
#include "shared/text.h"

#include <algorithm>
#include <utility>

static const int pieceSize = 1 << 16;   // of the bytes of a dump
static const int longestLine = 1 << 16; // of a dump
static const int mostSummaryLines = 32; // before the first packet of a dump

HexReader::HexReader(Source source, Content wanted) : nextPiece(std::move(source)), content(wanted) {}

QByteArray HexReader::read()
{
    QByteArray bytes;
    while (bytes.isEmpty() && !hasEnded && !firstError.isSet()) {
        if (form == dump)
            readLines(bytes);
        if (bytes.isEmpty() && !firstError.isSet())
            isAtEnd ? end(bytes) : readPiece(bytes);
    }
    return bytes;
}

void HexReader::readPiece(QByteArray& bytes)
{
    unread.remove(0, next);
    next = 0;
    const QByteArray piece = nextPiece();
    isAtEnd = piece.isEmpty();
    unread += piece;
    if (form == unknown && (isAtEnd || piece.contains('\n') || unread.size() > longestLine)) {
        next = unread.startsWith("\xef\xbb\xbf") ? 3 : 0; // byte order mark of UTF-8
        form = formOfUnread();
        next = form == unknown ? 0 : next; // the mark stays unread, so that a second one is not taken for it
    }
    if (form == text) {
        hexText.feed(unread.constData() + next, unread.size() - next, bytes);
        next = unread.size();
        firstError = hexText.error();
    }
}

void HexReader::end(QByteArray& bytes)
{
    hasEnded = true;
    if (form == text) {
        hexText.end(bytes);
        firstError = hexText.error();
    } else {
        lines.end();
        firstError = lines.error();
        endPacket(bytes);
    }
}

// --- Recognition --------------------------------------------------------------------------------------------------

// Returns the unread line at `pos` and moves `pos` to the one after it. Returns false if the line is not complete.
bool HexReader::takeLine(int& pos, QByteArray& found) const
{
    int end = unread.indexOf('\n', pos);
    if (end < 0 && (!isAtEnd || pos == unread.size()))
        return false;
    end = end < 0 ? unread.size() : end;
    found = unread.mid(pos, end - pos);
    pos = std::min(end + 1, static_cast<int>(unread.size()));
    return true;
}

// The same for a line that is neither empty nor a comment.
bool HexReader::takeContent(int& pos, QByteArray& found) const
{
    while (takeLine(pos, found)) {
        const QByteArray trimmed = found.trimmed();
        if (!trimmed.isEmpty() && !trimmed.startsWith('#'))
            return true;
    }
    return false;
}

HexReader::Form HexReader::formOfUnread() const
{
    const Form undecided = isAtEnd || unread.size() > longestLine ? text : unknown;
    int pos = next;
    QByteArray first;
    QByteArray other;
    if (!takeContent(pos, first))
        return undecided;
    DumpLines::Verdict verdict = DumpLines::recognise(first);
    if (verdict == DumpLines::needsNextLine) {
        if (!takeContent(pos, other))
            return undecided;
        verdict = DumpLines::recognise(first, &other);
    }
    if (verdict == DumpLines::isDump)
        return dump;
    HexText trial;
    QByteArray bytes;
    if (trial.feed(first.constData(), first.size(), bytes) && !trial.isInDeclaration())
        return text;
    for (int i = 0; i < mostSummaryLines; ++i) {
        if (!takeContent(pos, other))
            return undecided;
        if (DumpLines::beginsPacketOfTcpdump(other))
            return dump;
    }
    return text;
}

// --- Dumps --------------------------------------------------------------------------------------------------------

// Reads complete lines until the bytes suffice for a piece.
void HexReader::readLines(QByteArray& bytes)
{
    while (bytes.size() < pieceSize && !firstError.isSet()) {
        if (line.repeated > 0) {
            repeatLine(bytes);
            continue;
        }
        QByteArray found;
        if (!takeLine(next, found)) {
            if (unread.size() - next > longestLine)
                firstError = {lines.lineNumber() + 1, 0,
                              Text::tr("a line of a dump must have at most %1 characters").arg(longestLine)};
            return;
        }
        line = DumpLines::Line();
        if (!lines.read(found, line)) {
            firstError = lines.error();
            return;
        }
        if (line.beginsPacket) {
            endPacket(bytes);
            packets.begin(line.isSummarised);
            packetLine = lines.lineNumber();
        }
        if (line.repeated == 0)
            add(line.bytes, bytes);
    }
}

void HexReader::repeatLine(QByteArray& bytes)
{
    const int size = line.pattern.size();
    const qint64 times = std::min<qint64>(line.repeated / size, std::max(pieceSize / size, 1));
    add(line.pattern.repeated(static_cast<int>(times)), bytes);
    line.repeated -= times * size;
    if (line.repeated == 0)
        add(line.bytes, bytes);
}

void HexReader::add(const QByteArray& part, QByteArray& bytes)
{
    if (content == everyByte)
        bytes += part;
    else if (!packets.add(part, bytes))
        firstError = {packetLine, 0, packets.error()};
}

void HexReader::endPacket(QByteArray& bytes)
{
    if (!firstError.isSet() && !packets.end(bytes))
        firstError = {packetLine, 0, packets.error()};
}

// ------------------------------------------------------------------------------------------------------------------

bool readHex(const QByteArray& text, QByteArray& bytes, HexError& error)
{
    QByteArray left = text;
    HexReader reader([&left] { return std::exchange(left, QByteArray()); });
    bytes.clear();
    for (QByteArray piece = reader.read(); !piece.isEmpty(); piece = reader.read())
        bytes += piece;
    error = reader.error();
    return !error.isSet();
}
