#include "decodeCsv.h"

#include "gqtool/records/recordDecoding.h"
#include "shared/console.h"
#include "shared/text.h"

#include <charconv>
#include <utility>

static const size_t blockBytes = 1 << 16; // that are printed at a time

enum Depth { inList = 1, inItem = 2 };

// --- Cells --------------------------------------------------------------------------------------------------------

static void appendQuoted(std::string& text, std::string_view cell)
{
    if (cell.find_first_of(",\"\r\n") == std::string_view::npos) {
        text += cell;
        return;
    }
    text += '"';
    for (const char character : cell) {
        if (character == '"')
            text += '"';
        text += character;
    }
    text += '"';
}

template <typename Number>
static void append(std::string& text, Number value)
{
    char digits[40];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// A text as it is; bytes that are no text as in JSON, {"hex": ...}.
static void append(std::string& text, std::string_view bytes)
{
    const auto raw = QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size()));
    if (!raw.contains('\0') && QString::fromUtf8(raw).toUtf8() == raw)
        return appendQuoted(text, bytes);
    std::string json;
    appendJson(json, bytes);
    appendQuoted(text, json);
}

static void append(std::string& text, const JsonText& value)
{
    appendQuoted(text, value.text);
}

// --- Lines --------------------------------------------------------------------------------------------------------

DecodeCsv::DecodeCsv(const Form& list, const ByteWindow& bytes, QString source, OutputFile& output)
    : input(bytes), inputName(std::move(source)), file(output)
{
    for (const std::string& name : fieldNames(list)) {
        separate();
        appendQuoted(text, name);
    }
    text += '\n';
    linesEnd = text.size();
    width = columns;
}

void DecodeCsv::separate()
{
    if (columns > 0)
        text += ',';
    ++columns;
}

void DecodeCsv::begin(const char* /*name*/, char /*bracket*/)
{
    ++depth;
    if (depth == inItem)
        columns = 0;
}

void DecodeCsv::end(char /*bracket*/)
{
    --depth;
    if (depth != inList)
        return;
    if (columns < width) { // a field is incomplete
        text.resize(linesEnd);
        return;
    }
    text += '\n';
    linesEnd = text.size();
    if (linesEnd > blockBytes)
        flush();
}

void DecodeCsv::member(const char* /*name*/, const FieldValue& value)
{
    separate();
    std::visit([this](const auto& known) { append(text, known); }, value);
}

void DecodeCsv::flush()
{
    file.add(QByteArray(text.data(), static_cast<int>(linesEnd)));
    text.erase(0, linesEnd);
    linesEnd = 0;
}

bool DecodeCsv::finish(const Decoding& decoding)
{
    flush();
    const long long rest = input.size() - decoding.restOffset;
    const bool isWhole = decoding.faults.listed().empty();
    if (isWhole && rest > 0)
        printError(Text::tr("%1: byte %2: the table leaves out %3 after the list")
                       .arg(inputName)
                       .arg(decoding.restOffset)
                       .arg(bytesText(rest)));
    return isWhole ? file.end() : file.discard();
}
