#include "hexReader.h"
#include "shared/text.h"

#include <algorithm>
#include <utility>

static const int pieceSize = 1 << 16;             // of the bytes of a dump
static const int longestLine = 1 << 16;           // of a dump
static const int mostSummaryLines = 32;           // before the first packet of a dump
static const int mostUndecided = 4 * longestLine; // characters that are kept until the form is known

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
        if (!hasBegun)
            next = unread.startsWith("\xef\xbb\xbf") ? 3 : 0; // byte order mark of UTF-8
        hasBegun = true;
        skipComments();
        form = formOfUnread();
    }
    if (form == text && !firstError.isSet()) {
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

// Returns the unread line at `pos` and moves `pos` to the one after it. Returns false if the line is not complete. Of a
// line that is too long for a dump, complete or not, it returns longestLine + 1 characters.
bool HexReader::takeLine(int& pos, QByteArray& found) const
{
    int end = unread.indexOf('\n', pos);
    const int left = unread.size() - pos;
    if (end < 0 && left <= longestLine && (!isAtEnd || left == 0))
        return false;
    end = end < 0 ? unread.size() : end;
    found = unread.mid(pos, std::min(end - pos, longestLine + 1));
    pos = std::min(end + 1, static_cast<int>(unread.size()));
    return true;
}

// Returns true for a comment or an empty line. More blanks than a line may have are neither: anything can follow.
static bool isComment(const QByteArray& line)
{
    const QByteArray trimmed = line.trimmed();
    return trimmed.isEmpty() ? line.size() <= longestLine : trimmed.startsWith('#');
}

// As takeLine(), for a line that is neither empty nor a comment.
bool HexReader::takeContent(int& pos, QByteArray& found) const
{
    while (takeLine(pos, found)) {
        if (!isComment(found))
            return true;
    }
    return false;
}

// Skips empty lines and comments of any length. Both readers count them.
void HexReader::skipComments()
{
    QByteArray none;
    QByteArray found;
    for (int end = next; isInComment || (takeLine(end, found) && isComment(found)); end = next) {
        const int newLine = unread.indexOf('\n', next);
        end = newLine < 0 ? unread.size() : newLine + 1;
        hexText.feed(unread.constData() + next, end - next, none);
        next = end;
        isInComment = newLine < 0;
        if (isInComment)
            return;
        lines.read("", line);
    }
}

HexReader::Form HexReader::formOfUnread()
{
    const bool isFull = unread.size() - next > mostUndecided;
    const Form undecided = isAtEnd || isFull ? text : unknown;
    int pos = next;
    QByteArray first;
    QByteArray other;
    if (!takeContent(pos, first))
        return undecided;
    DumpLines::Verdict verdict = DumpLines::recognise(first);
    const bool isOpen = verdict == DumpLines::needsNextLine || first.trimmed().isEmpty();
    const bool isLong = first.size() > longestLine;
    if (isOpen && (isLong || !takeContent(pos, other))) {
        if (isLong || (isFull && !isAtEnd))
            firstError = {lines.lineNumber() + 1, 0,
                          Text::tr("a first line that may begin with an offset must have at most %1 characters")
                              .arg(longestLine)};
        return undecided;
    }
    if (isOpen)
        verdict = DumpLines::recognise(first, &other);
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
        if (!takeLine(next, found))
            return;
        if (found.size() > longestLine) {
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
