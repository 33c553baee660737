#include "decodeTable.h"

#include "gqtool/map/commandMap.h"
#include "shared/console.h"
#include "shared/text.h"

#include <algorithm>
#include <charconv>

static const size_t shownBytes = 8; // of a field
static const int shownText = 100;   // characters of a value
static const size_t offsetWidth = 6;
static const size_t bytesWidth = 3 * shownBytes + 3;
static const size_t blockBytes = 1 << 16; // that are printed at a time

// --- Columns ------------------------------------------------------------------------------------------------------

static void appendOffset(std::string& text, long long offset)
{
    char digits[20];
    const char* end = offset < 0 ? digits : std::to_chars(digits, digits + sizeof digits, offset).ptr;
    const auto count = static_cast<size_t>(end - digits);
    text.append(offsetWidth - std::min(count, offsetWidth), ' ');
    text.append(digits, count);
    text += "  ";
}

static void appendBytes(std::string& text, std::string_view bytes)
{
    const char* const digits = "0123456789abcdef";
    const size_t start = text.size();
    for (const char byte : bytes.substr(0, shownBytes)) {
        if (text.size() > start)
            text += ' ';
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[byte & 0xf];
    }
    if (bytes.size() > shownBytes)
        text += " ...";
    text.append(bytesWidth - (text.size() - start), ' ');
    text += "  ";
}

static void appendValue(std::string& text, const DecodedRow& row)
{
    const size_t start = text.size();
    const bool isCommand = row.name != nullptr && row.name == std::string_view("command"); // of a frame
    const std::string remark = row.remark == nullptr ? std::string() : row.remark->toStdString();
    if (isCommand)
        text += commandText(static_cast<unsigned char>(std::get<long long>(row.value))).toStdString();
    else
        appendJson(text, row.remark == nullptr ? row.value : FieldValue(remark));
    if (text.size() - start <= shownText)
        return;
    const size_t most = 4 * static_cast<size_t>(shownText + 1); // bytes of a character more than are shown
    const QString first = QString::fromUtf8(text.data() + start, static_cast<int>(std::min(text.size() - start, most)));
    if (first.size() > shownText)
        text.replace(start, std::string::npos, (first.left(shownText) + "...").toStdString());
}

// --- Lines --------------------------------------------------------------------------------------------------------

void DecodeTable::row(const DecodedRow& row)
{
    appendOffset(text, row.offset);
    appendBytes(text, row.bytes);
    Line line = {text.size(), 0, 0, 0};
    row.appendLabel(text);
    line.nameEnd = text.size();
    line.nameWidth = line.nameEnd - line.bytesEnd;
    if (row.name != nullptr && *row.name == '(') // a label, which may be Chinese
        line.nameWidth = static_cast<size_t>(columnsOf(QString::fromStdString(text.substr(line.bytesEnd))));
    appendValue(text, row);
    line.valueEnd = text.size();
    nameWidth = std::max(nameWidth, line.nameWidth);
    lines.push_back(line);
    if (text.size() > blockBytes)
        flush();
}

void DecodeTable::flush()
{
    QByteArray printed;
    printed.reserve(static_cast<int>(text.size() + lines.size() * (nameWidth + 3)));
    size_t start = 0;
    for (const Line& line : lines) {
        const size_t padding = nameWidth - line.nameWidth + 2;
        printed.append(text.data() + start, static_cast<int>(line.nameEnd - start));
        printed.append(static_cast<int>(padding), ' ');
        printed.append(text.data() + line.nameEnd, static_cast<int>(line.valueEnd - line.nameEnd));
        printed.append('\n');
        start = line.valueEnd;
    }
    text.clear();
    lines.clear();
    printBytes(printed);
}

bool DecodeTable::finish(const Decoding& decoding)
{
    flush();
    if (!decoding.restStart.isEmpty()) {
        appendOffset(text, decoding.restOffset);
        appendBytes(text, {decoding.restStart.constData(), static_cast<size_t>(decoding.restStart.size())});
        printLine(QString::fromStdString(text) +
                  (decoding.faults.listed().empty() ? Text::tr("(rest), %1") : Text::tr("(not read), %1"))
                      .arg(bytesText(input.size() - decoding.restOffset)));
    }
    printLine(decoding.readerCalled ? Text::tr("library: %1, %2").arg(decoding.result).arg(decoding.meaning)
                                    : Text::tr("library: %1").arg(decoding.meaning));
    return true;
}
