#include "hexReader.h"
#include "shared/text.h"

#include <algorithm>
#include <utility>

static const int pieceSize = 1 << 16;             // of the bytes of a dump
static const int longestLine = 1 << 16;           // of a dump
static const int mostSummaryLines = 32;           // before the first packet of a dump
static const int mostUndecided = 4 * longestLine; // characters from the first line on that decide about the form
static const int fewestInLong = 64;               // characters of a long line that decide about it

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
    // Larger by half each time, so that the time does not depend on the pieces.
    const bool isMore = unread.size() >= examined + examined / 2;
    if (form == unknown && (isAtEnd || (isMore && (piece.contains('\n') || unread.size() > longestLine)))) {
        if (!hasBegun)
            next = unread.startsWith("\xef\xbb\xbf") ? 3 : 0; // byte order mark of UTF-8
        hasBegun = true;
        skipComments();
        form = formOfUnread();
        examined = unread.size() - next;
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

// Takes the line at `pos` of a text and moves `pos` to the one after it. Returns false if the line is not complete. Of
// a line that is too long for a dump, complete or not, it takes longestLine + 1 characters.
static bool takeLine(const QByteArray& text, bool isWhole, int& pos, QByteArray& found)
{
    int end = text.indexOf('\n', pos);
    const int left = text.size() - pos;
    if (end < 0 && left <= longestLine && (!isWhole || left == 0))
        return false;
    end = end < 0 ? text.size() : end;
    found = text.mid(pos, std::min(end - pos, longestLine + 1));
    pos = std::min(end + 1, static_cast<int>(text.size()));
    return true;
}

static bool isLong(const QByteArray& line)
{
    return line.size() > longestLine;
}

// Returns true for a comment or an empty line. More blanks than a line may have are neither: anything can follow.
static bool isComment(const QByteArray& line)
{
    const QByteArray trimmed = line.trimmed();
    return trimmed.isEmpty() ? !isLong(line) : trimmed.startsWith('#');
}

// As takeLine(), for a line that is neither empty nor a comment.
static bool takeContent(const QByteArray& text, bool isWhole, int& pos, QByteArray& found)
{
    while (takeLine(text, isWhole, pos, found)) {
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
    for (int end = next; isInComment || (takeLine(unread, isAtEnd, end, found) && isComment(found)); end = next) {
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

// Returns true if a long line has so many blanks that its bytes, or its whole offset, may come after them.
static bool isMostlyBlank(const QByteArray& line)
{
    return isLong(line) && std::count_if(line.begin(), line.end(), isBlank) > line.size() - fewestInLong;
}

// The result must not depend on how much of the text has arrived: what decides is always the same part of it.
HexReader::Form HexReader::formOfUnread()
{
    const QByteArray start = unread.mid(next, mostUndecided);
    const bool isWhole = isAtEnd && unread.size() - next == start.size();
    const bool isFull = start.size() == mostUndecided && !isWhole;
    const Form undecided = isWhole || isFull ? text : unknown;
    const auto refuse = [this](const Text& reason) {
        firstError = {lines.lineNumber() + 1, 0, reason};
        return unknown;
    };
    const Text tooLong =
        Text::tr("a first line that may begin with an offset must have at most %1 characters").arg(longestLine);
    int pos = 0;
    QByteArray first;
    QByteArray other;
    if (!takeContent(start, isWhole, pos, first))
        return undecided;
    DumpLines::Verdict verdict = DumpLines::recognise(first);
    if (isMostlyBlank(first) || (isLong(first) && verdict == DumpLines::needsNextLine))
        return refuse(tooLong);
    if (verdict == DumpLines::needsNextLine) {
        if (!takeContent(start, isWhole, pos, other))
            return isFull ? refuse(Text::tr("the first line may begin with an offset: the second must be complete "
                                            "within %1 characters")
                                       .arg(mostUndecided))
                          : undecided;
        if (isMostlyBlank(other))
            return refuse(tooLong);
        verdict = DumpLines::recognise(first, &other);
    }
    if (verdict == DumpLines::isDump)
        return dump;
    HexText trial;
    QByteArray bytes;
    if (trial.feed(first.constData(), first.size(), bytes) && !trial.isInDeclaration())
        return text;
    for (int i = 0; i < mostSummaryLines; ++i) {
        if (!takeContent(start, isWhole, pos, other))
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
        if (!takeLine(unread, isAtEnd, next, found))
            return;
        if (isLong(found)) {
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
    const qint64 times = std::min<qint64>(line.repeated / size, pieceSize / size);
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
