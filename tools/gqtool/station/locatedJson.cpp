#include "locatedJson.h"
#include "gqtool/jsonError.h"
#include "shared/text.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

using nlohmann::json;

static const size_t mostNested = 1000; // the paths of all members take memory in the square of it

// --- The position -------------------------------------------------------------------------------------------------

struct Position {
    int line = 1;
    char last = '\0'; // the last byte that was read
};

// Reads a text and counts its lines, since the parser does not report the lines of what it finds.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* first, Position* counted) : at(first), position(counted) {}

    reference operator*() const { return *at; }
    CountingIterator& operator++()
    {
        position->last = *at++;
        position->line += position->last == '\n' ? 1 : 0;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return at == other.at; }
    bool operator!=(const CountingIterator& other) const { return at != other.at; }

private:
    const char* at;
    Position* position;
};

// --- The values ---------------------------------------------------------------------------------------------------

class LocatedJsonBuilder : public nlohmann::json_sax<json> {
public:
    LocatedJsonBuilder(const Position& reading, QHash<QString, int>& lineOfPath) : position(reading), lines(lineOfPath)
    {
    }

    bool null() override { return add(QJsonValue(QJsonValue::Null)); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return addNumber(static_cast<qint64>(value)); }
    bool number_unsigned(number_unsigned_t value) override { return addNumber(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t& /*text*/) override { return addNumber(value); }
    bool string(string_t& value) override { return add(QString::fromStdString(value)); }
    bool binary(binary_t& /*value*/) override { return false; } // not in JSON texts
    bool start_object(std::size_t /*size*/) override { return begin(false, position.line); }
    bool end_object() override { return end(); }
    bool start_array(std::size_t /*size*/) override { return begin(true, position.line); }
    bool end_array() override { return end(); }
    bool key(string_t& name) override
    {
        open.back().name = QString::fromStdString(name);
        const QString path = pathOfNext();
        if (open.back().members.contains(open.back().name)) {
            error = Text::tr("line %1: %2 is there already, in line %3").arg(position.line).arg(path).arg(lines[path]);
            return false;
        }
        lines[path] = position.line;
        return true;
    }
    bool parse_error(std::size_t /*at*/, const std::string& /*token*/, const json::exception& exception) override
    {
        const int syntaxError = 101; // the other one is a number beyond the range of double
        error = jsonErrorText(exception.what());
        if (exception.id != syntaxError)
            error = Text::tr("line %1: %2").arg(lineOfNumber()).arg(error);
        return false;
    }

    QJsonValue root;
    QString error;

private:
    struct Open {
        QString path;
        bool isArray;
        QString name; // of the member that follows
        QJsonArray items;
        QJsonObject members;
    };

    QString pathOfNext() const
    {
        if (open.empty())
            return {};
        const Open& last = open.back();
        if (last.isArray)
            return QString("%1[%2]").arg(last.path).arg(last.items.size());
        return last.path.isEmpty() ? last.name : last.path + '.' + last.name;
    }
    void locate(int line)
    {
        const QString path = pathOfNext();
        if (!lines.contains(path))
            lines[path] = line;
    }
    bool begin(bool isArray, int line)
    {
        if (open.size() == mostNested) {
            error = Text::tr("line %1: must nest at most %2 arrays and objects").arg(line).arg(mostNested);
            return false;
        }
        locate(line);
        open.push_back({pathOfNext(), isArray, {}, {}, {}});
        return true;
    }
    bool end()
    {
        const Open ended = std::move(open.back());
        open.pop_back();
        return store(ended.isArray ? QJsonValue(ended.items) : QJsonValue(ended.members));
    }
    // The parser has read the byte after a number.
    int lineOfNumber() const { return position.line - (position.last == '\n' ? 1 : 0); }
    bool addNumber(const QJsonValue& value)
    {
        locate(lineOfNumber());
        return store(value);
    }
    bool add(const QJsonValue& value)
    {
        locate(position.line);
        return store(value);
    }
    bool store(const QJsonValue& value)
    {
        if (open.empty())
            root = value;
        else if (open.back().isArray)
            open.back().items.append(value);
        else
            open.back().members[open.back().name] = value;
        return true;
    }

    const Position& position;
    QHash<QString, int>& lines;
    std::vector<Open> open;
};

// ------------------------------------------------------------------------------------------------------------------

bool LocatedJson::parse(const QByteArray& text, QString& error)
{
    lines.clear();
    const auto nul = text.indexOf('\0'); // which would end the text for the parser
    if (nul >= 0) {
        error = zeroByteText(text.left(nul).count('\n') + 1);
        return false;
    }
    Position position;
    LocatedJsonBuilder builder(position, lines);
    const CountingIterator first(text.constData(), &position);
    const CountingIterator last(text.constData() + text.size(), &position);
    if (!json::sax_parse(first, last, &builder)) {
        error = builder.error;
        return false;
    }
    root = builder.root;
    return true;
}

int LocatedJson::lineOf(const QString& path) const
{
    QString known = path;
    while (!known.isEmpty() && !lines.contains(known))
        known.truncate(static_cast<int>(std::max<qsizetype>({known.lastIndexOf('.'), known.lastIndexOf('['), 0})));
    return lines.value(known, 1);
}
