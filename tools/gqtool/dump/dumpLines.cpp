#include "dumpLines.h"
#include "shared/text.h"

#include <algorithm>

static const int fewestOffsetDigits = 4;
static const int mostOffsetDigits = 15; // a qint64 holds them
static const int octalDigits = 7;       // of the octal and decimal offsets of od
static const int shownText = 20;        // characters of a line in a message

static int blanksAt(const QByteArray& text, int pos)
{
    int end = pos;
    while (end < text.size() && isBlank(text[end]))
        ++end;
    return end - pos;
}

static int digitsAt(const QByteArray& text, int pos)
{
    int end = pos;
    while (end < text.size() && digitValue(text[end]) >= 0)
        ++end;
    return end - pos;
}

// --- Offsets ------------------------------------------------------------------------------------------------------

// Finds the offset at the start of a line. Returns false if there is none.
bool DumpLines::findOffset(const QByteArray& text, Offset& offset)
{
    int pos = blanksAt(text, 0);
    offset.hasPrefix = text.mid(pos, 2).toLower() == "0x";
    pos += offset.hasPrefix ? 2 : 0;
    const int count = digitsAt(text, pos);
    if (count < fewestOffsetDigits || count > mostOffsetDigits)
        return false;
    offset.digits = text.mid(pos, count);
    offset.value = offset.digits.toLongLong(nullptr, 16);
    pos += count;
    const char next = pos < text.size() ? text[pos] : '\0';
    const int blanks = blanksAt(text, pos);
    offset.mark = '\0';
    if (next == ':' || next == '|')
        offset.mark = next;
    else if (blanks > 1)
        offset.mark = ' ';
    else if (blanks == 0 && pos < text.size())
        return false;
    offset.end = pos + (next == ':' || next == '|' ? 1 + blanksAt(text, pos + 1) : blanks);
    return true;
}

// --- Recognition --------------------------------------------------------------------------------------------------

bool DumpLines::beginsPacketOfTcpdump(const QByteArray& line)
{
    Offset offset;
    return findOffset(line, offset) && offset.hasPrefix && offset.mark == ':' && offset.value == 0;
}

DumpLines::Verdict DumpLines::recognise(const QByteArray& first, const QByteArray* next)
{
    Offset offset;
    if (!findOffset(first, offset))
        return isNoDump;
    if (digitsAt(first, offset.end) == 0) { // od -c, or the field of a file with comments: 01000000  # count
        const bool isOfOdC = isOfOd(offset) && offset.digits.size() == octalDigits && offset.end < first.size();
        return isOfOdC ? isDump : isNoDump;
    }
    if (offset.mark == '|' || (offset.mark == ':' && offset.hasPrefix))
        return isDump;
    // Hex text can begin like any of these dumps. The text is a dump only if hex text is impossible or unlikely.
    if (offset.mark == ':') {
        const bool hasBlank = isBlank(first[offset.end - 1]);
        return hasBlank || (offset.value == 0 && first.indexOf(':', offset.end) < 0) ? isDump : isNoDump;
    }
    const bool isByte = digitsAt(first, offset.end) == 2;
    if (offset.mark == ' ')
        return offset.value == 0 || isByte ? isDump : isNoDump;
    if (offset.value != 0 || offset.hasPrefix)
        return isNoDump;
    if (offset.digits.size() % 2 != 0)
        return isDump; // od and hexdump print 7 digits; as hex text it would be an error
    if (next == nullptr)
        return needsNextLine;
    Row row;
    HexError error;
    Offset nextOffset;
    if (!readRow(first, offset, row, error))
        return isNoDump;
    if (next->trimmed() == "*" || isEndOfOd(*next, offset, row))
        return isDump;
    if (!findOffset(*next, nextOffset))
        return isNoDump;
    // od -A x prints words of 2 bytes in octal, 6 digits each
    const bool isOctal = row.word.size() == 6 && 3 * nextOffset.value == 2LL * row.bytes.size();
    return isOctal || nextOffset.value == row.bytes.size() ? isDump : isNoDump;
}

// Returns true if the line may come from od or hexdump, whose groups can be words, octal or characters.
bool DumpLines::isOfOd(const Offset& offset)
{
    const int digits = offset.digits.size();
    return offset.mark == '\0' || (offset.mark == ' ' && (digits == 6 || digits == octalDigits));
}

// Returns true if the line is the last one of a dump in words, whose offset may be less than the bytes of the words.
bool DumpLines::isEndOfOd(const QByteArray& text, const Offset& first, const Row& row)
{
    Offset offset;
    if (row.word.isEmpty() || !findOffset(text, offset) || offset.end < text.size())
        return false;
    const qint64 missing = row.bytes.size() - offset.value;
    return offset.digits.size() == first.digits.size() && missing > 0 && missing < row.word.size() / 2;
}

// --- Bytes --------------------------------------------------------------------------------------------------------

// The text column has a character per byte, perhaps between bars, and perhaps a blank in the middle. A longer one is
// no text column: bytes were written in an unknown way.
static bool isTextColumn(const QByteArray& text, int byteCount)
{
    QString column = QString::fromUtf8(text.constData(), text.size()).trimmed();
    if (column.startsWith('|') || column.startsWith('>'))
        column = column.mid(1);
    if (column.endsWith('|') || column.endsWith('<'))
        column.chop(1);
    return column.size() <= byteCount + 1;
}

// The error for a group of od or hexdump without the right options.
static QString wordText(const QString& group)
{
    return Text::tr("'%1' must be a byte of two hex digits; use od -A x -t x1, hexdump -C or xxd").arg(group);
}

bool DumpLines::readRow(const QByteArray& text, const Offset& offset, Row& row, HexError& error)
{
    const auto fail = [&error](int pos, const QString& found) {
        error = {0, pos + 1, found};
        return false;
    };
    int pos = offset.end;
    while (pos < text.size() && text[pos] != '|' && text[pos] != '>') {
        const int count = digitsAt(text, pos);
        const int end = pos + count;
        const char next = end < text.size() ? text[end] : ' ';
        const int blanks = blanksAt(text, end);
        const bool isSeparated = next == ':' || next == '-' || next == ',';
        if (count == 0 || !(isBlank(next) || isSeparated || next == '|'))
            return fail(end, isOfOd(offset) && row.bytes.isEmpty() ? wordText(text.mid(pos).split(' ')[0])
                                                                   : badDigit(text[end]));
        const QString group = QString::fromLatin1(text.mid(pos, std::min(count, shownText)));
        if (count % 2 != 0)
            return fail(pos, isOfOd(offset) ? wordText(group)
                                            : Text::tr("'%1' must have an even number of hex digits").arg(group));
        appendDigits(text.constData() + pos, count, row.bytes);
        row.order.addGroup(text.constData() + pos, count);
        if (count > 2 && row.word.isEmpty())
            row.word = group;
        pos = isSeparated ? end + 1 + blanksAt(text, end + 1) : end + blanks;
        // hexdump leaves two blanks after 8 bytes. Other gaps are before the text column. A tab is a gap.
        const bool isMiddle = blanks == 2 && row.bytes.size() == 8 && offset.mark == ' ' && digitsAt(text, pos) == 2;
        if (!isMiddle && (blanks > 1 || next == '\t'))
            break;
    }
    row.order.addText(text.mid(pos));
    if (isTextColumn(text.mid(pos), row.bytes.size()))
        return true;
    if (isOfOd(offset) && !row.word.isEmpty())
        return fail(offset.end, wordText(row.word));
    return fail(pos, Text::tr("the text column must have at most %1 characters, one per byte, got '%2'%3")
                         .arg(row.bytes.size())
                         .arg(QString::fromUtf8(text.mid(pos).trimmed().left(shownText)),
                              row.word.isEmpty() ? QString() : Text::tr("; use xxd without -e")));
}

// --- Lines --------------------------------------------------------------------------------------------------------

bool DumpLines::fail(const QString& text)
{
    firstError = {number, 0, text};
    return false;
}

bool DumpLines::read(const QByteArray& text, Line& line)
{
    ++number;
    const QByteArray content = text.trimmed();
    if (content.isEmpty() || content.startsWith('#')) {
        mayRestart = mayRestart || content.isEmpty();
        return true;
    }
    if (content == "*") {
        if (previous.isEmpty() || isRepeating)
            return fail(Text::tr("* must come after a line of bytes"));
        isRepeating = true;
        return true;
    }
    Offset offset;
    if (findOffset(text, offset) && (offset.hasPrefix || !isTcpdump))
        return readOffset(text, offset, line);
    // In a dump that does not begin with an offset, HexReader has found one of tcpdump.
    if ((isTcpdump || !hasBegun) && !content.startsWith("0x")) {
        mayRestart = isSummarised = true;
        return true;
    }
    return fail(Text::tr("a line of a dump must begin with an offset, got '%1'")
                    .arg(QString::fromUtf8(content.left(shownText))));
}

bool DumpLines::readOffset(const QByteArray& text, const Offset& offset, Line& line)
{
    isTcpdump = hasBegun ? isTcpdump : offset.hasPrefix && offset.mark == ':';
    hasBegun = true;
    if (!checkOffset(offset, line))
        return false;
    mayRestart = isSummarised = isRepeating = false;

    Row row;
    if (!readRow(text, offset, row, firstError)) {
        firstError.line = number;
        return false;
    }
    if (!checkWords(offset, row))
        return false;
    size = offset.value + row.bytes.size();
    previous = row.bytes.isEmpty() ? previous : row.bytes;
    line.bytes = row.bytes;
    return true;
}

// Checks that words have their bytes in the order in which they are read.
bool DumpLines::checkWords(const Offset& offset, const Row& row)
{
    if (isOfOd(offset) && !row.word.isEmpty())
        return fail(wordText(row.word));
    if (offset.mark != ':')
        return true;
    if (row.order.isBinary())
        return fail(Text::tr("'%1' is binary; use xxd without -b").arg(row.word));
    switch (row.order.found(row.bytes)) {
    case WordOrder::reversed:
        return fail(Text::tr("'%1' has its bytes in reverse order, as the text column shows; use xxd without -e")
                        .arg(row.word));
    case WordOrder::asWritten:
        isOrderKnown = true;
        break;
    case WordOrder::either:
        if (!unknownOrder.isSet())
            unknownOrder = {
                number, 0,
                Text::tr("'%1' may have its bytes in reverse order, as of xxd -e; use xxd -g 1").arg(row.word)};
        break;
    case WordOrder::noMatter:
        break;
    }
    return true;
}

// Checks that the offset is the number of bytes before it, or begins a packet, or ends what * repeats.
bool DumpLines::checkOffset(const Offset& offset, Line& line)
{
    if (offset.value == 0 && mayRestart && !isRepeating) {
        line.beginsPacket = true;
        line.isSummarised = isSummarised;
        size = 0;
        previous.clear();
        return true;
    }
    const qint64 expected = isSummarised ? 0 : size;
    const qint64 missing = offset.value - expected;
    if (isRepeating && offset.mark == '\0' && offset.digits.size() == octalDigits)
        return fail(Text::tr("offset %1 may be octal or decimal; use od -A x -t x1").arg(QString(offset.digits)));
    if (isRepeating && missing > 0 && missing % previous.size() == 0) {
        line.repeated = missing;
        line.pattern = previous;
        return true;
    }
    if (missing == 0 && !isRepeating)
        return true;
    const int digits = offset.digits.size();
    const QString found = QString::fromLatin1(offset.digits);
    const QString right = QString("%1").arg(expected, digits, 16, QChar('0'));
    if (isRepeating)
        return fail(Text::tr("offset after * must be %1 and a multiple of %2, got %3")
                        .arg(right)
                        .arg(bytesText(previous.size()))
                        .arg(found));
    QString hint;
    if (offset.digits.toLongLong(nullptr, 8) == expected || offset.digits.toLongLong(nullptr, 10) == expected)
        hint = Text::tr("; offsets must be hexadecimal, as of od -A x -t x1");
    else if (missing > 0)
        hint = missing == 1 ? Text::tr("; 1 byte is missing") : Text::tr("; %1 bytes are missing").arg(missing);
    return fail(Text::tr("offset must be %1, got %2%3").arg(right, found, hint));
}

bool DumpLines::end()
{
    if (isRepeating)
        return fail(Text::tr("* must be followed by an offset"));
    if (!isOrderKnown)
        firstError = unknownOrder;
    return !firstError.isSet();
}
