#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Values as JSON text, and JSON that is read. Objects that are read keep the order of their members.
using Json = nlohmann::ordered_json;

// A value that is JSON text already.
struct JsonText {
    std::string_view text;
};

// A value of a field. A text or bytes become a JSON string, or {"hex": ...} if they are not text.
using FieldValue = std::variant<long long, float, double, std::string_view, JsonText>;

void appendJson(std::string& json, const FieldValue& value);

std::string jsonText(const QJsonValue& value);
std::string jsonText(const QString& text);
std::string jsonText(const std::vector<int>& values);

// Builds objects and arrays.
class JsonBuilder {
public:
    void begin(const char* name, char bracket);
    void end(char bracket);
    void add(const char* name, const FieldValue& value);

    std::string text; // may be taken out in parts

private:
    void separate(const char* name);

    bool isFirst = true; // of the open object or array
};

// ", got VALUE" for the end of a message; a long value is cut.
QString gotText(const Json& value);
QString gotText(const QJsonValue& value);

// Reads a text or bytes. Returns false if the value is neither a string nor {"hex": ...}.
bool takeBytes(const Json& value, QByteArray& bytes);

// Reads hex digits, two per byte. Returns false if there is anything else.
bool takeHex(const Json& value, QByteArray& bytes);
