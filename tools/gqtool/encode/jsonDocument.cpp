#include "jsonDocument.h"
#include "gqtool/jsonError.h"
#include "shared/text.h"

#include <istream>
#include <nlohmann/json.hpp>
#include <streambuf>
#include <utility>

static const int deepest = 1000;       // nested objects and arrays
static const size_t usualMembers = 16; // of an object

// --- Text ---------------------------------------------------------------------------------------------------------

// The text up to the first zero byte, at which the parser would end in any case.
class SourceBuffer : public std::streambuf {
public:
    explicit SourceBuffer(ByteSource& text) : source(text) {}

    // Returns the line of the zero byte that the parser has reached; 0 if there is none.
    int lineOfZero() const { return hasEnded ? line : 0; }

protected:
    int_type underflow() override
    {
        piece.resize(0);
        hasEnded = isNulNext;
        if (hasEnded || !source.read(piece))
            return traits_type::eof();
        const int nul = piece.indexOf('\0');
        isNulNext = nul >= 0;
        if (isNulNext)
            piece.truncate(nul);
        line += piece.count('\n');
        if (piece.isEmpty())
            return underflow();
        setg(piece.data(), piece.data(), piece.data() + piece.size());
        return traits_type::to_int_type(*gptr());
    }

private:
    ByteSource& source;
    QByteArray piece;
    int line = 1; // of the end of the piece
    bool isNulNext = false;
    bool hasEnded = false;
};

// --- Events -------------------------------------------------------------------------------------------------------

// Receives the parser's events. Builds a value only if it is a member or an item.
class DocumentReader {
public:
    using number_integer_t = Json::number_integer_t;
    using number_unsigned_t = Json::number_unsigned_t;
    using number_float_t = Json::number_float_t;
    using string_t = Json::string_t;
    using binary_t = Json::binary_t;

    explicit DocumentReader(DocumentListener& receiver) : listener(receiver) {}

    // NOLINTBEGIN(readability-identifier-naming): the parser's names
    bool null() { return take(nullptr); }
    bool boolean(bool value) { return take(value); }
    bool number_integer(number_integer_t value) { return take(value); }
    bool number_unsigned(number_unsigned_t value) { return take(value); }
    bool number_float(number_float_t value, const string_t&) { return take(value); }
    bool string(string_t& value) { return take(std::move(value)); }
    bool binary(binary_t&) { return false; } // not in JSON text
    bool start_object(size_t)
    {
        Json object = Json::object();
        object.get_ref<Json::object_t&>().reserve(usualMembers);
        return begin(std::move(object));
    }
    bool end_object() { return end(); }
    bool start_array(size_t) { return begin(Json::array()); }
    bool end_array() { return end(); }
    bool key(string_t& name)
    {
        if (depth > 1 && !isSkipped) {
            open.back().key = std::move(name);
        } else if (depth == 1) {
            memberName = std::move(name);
            isSkipped = !listener.wants(memberName);
        }
        return true;
    }
    bool parse_error(size_t, const std::string&, const std::exception& exception)
    {
        error = jsonErrorText(exception.what());
        return false;
    }
    // NOLINTEND(readability-identifier-naming)

    QString error;

private:
    struct Open {
        Json* value;
        std::string key; // of the next member
    };

    bool fail(const QString& text)
    {
        error = text;
        return false;
    }

    bool take(Json value)
    {
        if (depth == 0)
            return fail(Text::tr("must be a JSON object") + gotText(value));
        if (isSkipped)
            return true;
        if (open.empty())
            pass(value);
        else
            put(std::move(value));
        return true;
    }

    bool begin(Json value)
    {
        if (depth == 0 && !value.is_object())
            return fail(Text::tr("must be a JSON object, got an array"));
        if (depth == deepest)
            return fail(Text::tr("%1 must have at most %2 nested objects and arrays")
                            .arg(QString::fromStdString(memberName))
                            .arg(deepest));
        ++depth;
        if (depth == 1 || isSkipped)
            return true;
        if (depth == 2 && value.is_array() && listener.beginItems(memberName)) {
            passesItems = true;
        } else if (open.empty()) {
            root = std::move(value);
            open.push_back({&root, {}});
        } else {
            open.push_back({put(std::move(value)), {}});
        }
        return true;
    }

    bool end()
    {
        --depth;
        if (open.empty()) { // the document, a skipped value, or an array whose items were passed
            passesItems = false;
            return true;
        }
        open.pop_back();
        if (open.empty())
            pass(root);
        return true;
    }

    Json* put(Json value)
    {
        Open& parent = open.back();
        if (parent.value->is_array())
            return &parent.value->emplace_back(std::move(value));
        return &((*parent.value)[parent.key] = std::move(value));
    }

    void pass(const Json& value)
    {
        if (passesItems)
            listener.item(value);
        else
            listener.member(memberName, value);
    }

    DocumentListener& listener;
    int depth = 0; // of open objects and arrays
    std::string memberName;
    bool isSkipped = false;   // the member
    bool passesItems = false; // of the member
    Json root;
    std::vector<Open> open; // objects and arrays of the value
};

QString readDocument(ByteSource& text, DocumentListener& listener)
{
    SourceBuffer buffer(text);
    std::istream stream(&buffer);
    DocumentReader reader(listener);
    Json::sax_parse(stream, &reader);
    return buffer.lineOfZero() > 0 ? QString(zeroByteText(buffer.lineOfZero())) : reader.error;
}
