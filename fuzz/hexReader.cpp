#include "support/hexReading.h"
#include "toolInput.h"

#include <QList>

#include <algorithm>
#include <cstring>

// The readers of gqtool's hex text and dumps.

static const int mostBytes = 1 << 17; // read from one text: a line * can stand for any number

static HexReading readText(const QByteArray& text, int pieceSize, HexReader::Content content)
{
    return readInPieces(text, pieceSize, content, mostBytes);
}

// --- Dumps of bytes, as the tools print them ----------------------------------------------------------------------

static QByteArray padded(qint64 offset, int count)
{
    return QByteArray::number(offset, 16).rightJustified(count, '0');
}

static QByteArray textColumn(QByteArray bytes)
{
    for (char& character : bytes)
        character = character >= ' ' && character < 0x7f ? character : '.';
    return bytes;
}

static QByteArray groups(const QByteArray& bytes, int size)
{
    QByteArray text;
    for (int i = 0; i < bytes.size(); i += size)
        text += (i == 0 ? "" : " ") + bytes.mid(i, size).toHex();
    return text;
}

// Calls `write` for each row of `width` bytes. Of equal rows, `skipped` replaces all but the first, as a tool does.
static QByteArray rows(const QByteArray& bytes, int width, const char* skipped,
                       const std::function<QByteArray(int offset, const QByteArray& row)>& write)
{
    QByteArray text;
    QByteArray last;
    bool isSkipping = false;
    for (int i = 0; i < bytes.size(); i += width) {
        const QByteArray row = bytes.mid(i, width);
        const bool isSame = *skipped != '\0' && row == last;
        if (!isSame)
            text += write(i, row) + '\n';
        else if (!isSkipping)
            text += skipped;
        isSkipping = isSame;
        last = row;
    }
    return text;
}

struct DumpForm {
    QByteArray (*write)(const QByteArray& bytes, int width); // width: 1 to 64
    HexReader::Content content;
    bool hasOffsets; // from 0 on
};

static QByteArray hexText(const QByteArray& bytes, int width)
{
    const char separators[] = {' ', '\t', '\n', ':', '-', ','};
    return width > 6 ? bytes.toHex() : bytes.toHex(separators[width - 1]);
}

static QByteArray escapes(const QByteArray& bytes, int width)
{
    QByteArray text;
    for (int i = 0; i < bytes.size(); i += width)
        text += "\"\\x" + bytes.mid(i, width).toHex('.').replace(".", "\\x") + "\"\n";
    return text;
}

static QByteArray array(const QByteArray& bytes, int width)
{
    const auto row = [](int, const QByteArray& part) { return "0x" + part.toHex('.').replace(".", ", 0x") + ','; };
    return "unsigned char face[] = {\n" + rows(bytes, width, "", row) +
           "};\nunsigned int face_len = " + QByteArray::number(bytes.size()) + ";\n";
}

static QByteArray xxd(const QByteArray& bytes, int width)
{
    return rows(bytes, width, "", [width](int offset, const QByteArray& row) {
        return padded(offset, 8) + ": " + groups(row, 2).leftJustified(width / 2 * 5 + width % 2 * 3 - 1, ' ') + "  " +
               textColumn(row);
    });
}

static QByteArray hexdump(const QByteArray& bytes, int)
{
    const QByteArray lines = rows(bytes, 16, "*\n", [](int offset, const QByteArray& row) {
        const QByteArray right = row.size() > 8 ? "  " + groups(row.mid(8), 1) : QByteArray();
        return padded(offset, 8) + "  " + (groups(row.left(8), 1) + right).leftJustified(50, ' ') + '|' +
               textColumn(row) + '|';
    });
    return bytes.isEmpty() ? lines : lines + padded(bytes.size(), 8) + '\n';
}

static QByteArray od(const QByteArray& bytes, int width)
{
    const auto row = [width](int offset, const QByteArray& part) {
        const QByteArray column = width % 2 == 0 ? "  >" + textColumn(part) + '<' : QByteArray();
        return padded(offset, 6) + ' ' + groups(part, 1).leftJustified(column.isEmpty() ? 0 : 3 * width - 1, ' ') +
               column;
    };
    const QByteArray lines = rows(bytes, width, "*\n", row);
    return bytes.isEmpty() ? lines : lines + padded(bytes.size(), 6) + '\n';
}

static QByteArray wireshark(const QByteArray& bytes, int width)
{
    return rows(bytes, 16, "", [width](int offset, const QByteArray& row) {
        const QByteArray column = "   " + textColumn(row);
        return padded(offset, 4) + "  " + groups(row, 1).leftJustified(47, ' ') + (width % 2 == 0 ? column : "");
    });
}

// The bytes as payloads of datagrams.
static QByteArray tcpdump(const QByteArray& bytes, int width)
{
    QByteArray text;
    const int most = 16 * width; // bytes of a payload
    for (int i = 0; i < bytes.size(); i += most) {
        const QByteArray payload = bytes.mid(i, most);
        const QByteArray size = padded(payload.size() + 28, 4);
        const QByteArray datagramSize = padded(payload.size() + 8, 4);
        const QByteArray packet = QByteArray::fromHex("4500" + size + "0000000040110000" + "7f0000017f000001" +
                                                      "13889c40" + datagramSize + "0000") +
                                  payload;
        text += "12:00:00.000000 IP 127.0.0.1.5000 > 127.0.0.1.40000: UDP, length\n";
        text += rows(packet, 16, "", [width](int offset, const QByteArray& row) {
            const QByteArray column = "  " + textColumn(row);
            return "\t0x" + padded(offset, 4) + ":  " + groups(row, 2).leftJustified(39, ' ') +
                   (width % 2 == 0 ? column : "");
        });
    }
    return text;
}

static const DumpForm forms[] = {
    {hexText, HexReader::everyByte, false},  {escapes, HexReader::everyByte, false},
    {array, HexReader::everyByte, false},    {xxd, HexReader::everyByte, true},
    {hexdump, HexReader::everyByte, true},   {od, HexReader::everyByte, true},
    {wireshark, HexReader::everyByte, true}, {tcpdump, HexReader::payloads, false},
};

// The first two bytes select the form and its width, the others are dumped.
static void readDump(Reading& reading)
{
    InputBytes input(reading);
    const DumpForm& form = forms[input.number(std::size(forms))];
    const int width = input.number(64) + 1;
    const QByteArray bytes = input.rest();
    const QByteArray text = form.write(bytes, width);
    const HexReading outcome = readText(text, 4096, form.content);
    if (outcome.error.isSet())
        fail(outcome.error.message().toStdString() + "\n" + text.toStdString());
    if (outcome.bytes != bytes)
        fail("the dump has other bytes: " + outcome.bytes.toHex().toStdString() + "\n" + text.toStdString());
    reading.written = outcome.bytes;
}

// --- Any text -----------------------------------------------------------------------------------------------------

static bool isOneOf(const char* characters, char character)
{
    return character != '\0' && std::strchr(characters, character) != nullptr;
}

static bool consistsOf(const QByteArray& text, const char* characters)
{
    return std::all_of(text.begin(), text.end(), [=](char character) { return isOneOf(characters, character); });
}

// Reads the plainest hex text: words of up to two letters and digits, white space, colons, comments. `isGood` becomes
// false if a word is not a byte. Returns false if the text is something else, or if a line may begin with an offset.
static bool readPlainText(const QByteArray& text, QByteArray& bytes, bool& isGood)
{
    const char* const letters = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    isGood = true;
    for (QByteArray line : text.split('\n')) {
        line.truncate(line.contains('#') ? line.indexOf('#') : line.size());
        line.replace(':', ' ');
        for (const QByteArray& word : line.simplified().split(' ')) {
            if (word.size() > 2 || !consistsOf(word, letters))
                return false;
            isGood = isGood && word.size() % 2 == 0 && consistsOf(word, "0123456789abcdefABCDEF");
            bytes += QByteArray::fromHex(word);
        }
    }
    return true;
}

// Reads a text whole and in pieces. Both must have the same outcome, which is returned.
static HexReading readAgreed(const QByteArray& text)
{
    const int size = std::max<int>(text.size(), 1);
    HexReading whole = readText(text, size, HexReader::everyByte);
    for (const int pieceSize : {1, 5}) {
        const HexReading inPieces = readText(text, pieceSize, HexReader::everyByte);
        const int common = std::min(inPieces.bytes.size(), whole.bytes.size());
        require(inPieces.bytes.left(common) == whole.bytes.left(common), "the pieces must not change the bytes");
        if (std::max(inPieces.bytes.size(), whole.bytes.size()) >= mostBytes)
            continue; // reading ended somewhere in the text
        require(inPieces.error.message() == whole.error.message(), "the pieces of the text must not change the error");
        if (!whole.error.isSet())
            require(inPieces.bytes == whole.bytes, "the pieces must not change the number of bytes");
    }
    require(whole.error.line <= text.count('\n') + 1, "the line of an error must exist");
    readText(text, size, HexReader::payloads); // must return
    return whole;
}

static void readAnyText(Reading& reading)
{
    const QByteArray text(reading.buf, reading.size);
    const HexReading whole = readAgreed(text);
    QByteArray plain;
    bool isGood = false;
    if (readPlainText(text, plain, isGood)) {
        require(whole.error.isSet() != isGood, "a text must be refused if and only if a word is no byte");
        require(!isGood || whole.bytes == plain, "plain hex text must have the bytes of its digits");
    }
    reading.result = static_cast<int>(whole.error.line);
    reading.written = whole.bytes;
}

// --- Damaged dumps ------------------------------------------------------------------------------------------------

static const int mostDamaged = 300; // bytes of a dump; more rows would only take time
static const char* const offsetDigits = "0123456789abcdef";

// Returns true if the character is a digit of an offset that must be right: not in the first two lines, by which the
// form is recognised, and not after *, which can mean any number of equal rows.
static bool isDigitOfOffset(const QByteArray& text, int pos)
{
    const int start = static_cast<int>(text.lastIndexOf('\n', pos)) + 1;
    const QByteArray before = text.left(start);
    return isOneOf(offsetDigits, text[pos]) && before.count('\n') >= 2 && !before.endsWith("*\n") &&
           consistsOf(text.mid(start, pos - start), offsetDigits);
}

// The first five bytes are form, width, position (2 bytes) and the new character there. The others are dumped.
static void readDamagedDump(Reading& reading)
{
    InputBytes input(reading);
    const DumpForm& form = forms[input.number(std::size(forms))];
    const int width = input.number(64) + 1;
    const int high = input.number();
    const int low = input.number();
    const auto character = static_cast<char>(input.number());
    QByteArray text = form.write(input.take(mostDamaged), width);
    if (text.isEmpty())
        return;
    const int pos = (256 * high + low) % static_cast<int>(text.size());
    const bool isWrong =
        form.hasOffsets && isDigitOfOffset(text, pos) && isOneOf(offsetDigits, character) && text[pos] != character;
    text[pos] = character;
    const HexReading outcome = readAgreed(text);
    if (isWrong && !outcome.error.isSet())
        fail("a wrong offset must be an error:\n" + text.toStdString());
    reading.written = outcome.bytes;
}

const std::vector<Target> hexReaderTargets = {
    toolTarget("hexDump", readDump),
    toolTarget("hexText", readAnyText),
    toolTarget("damagedDump", readDamagedDump),
};
