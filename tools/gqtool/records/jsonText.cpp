#include "jsonText.h"
#include "shared/compactJson.h"
#include "shared/text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

static const int shownText = 60; // characters of a value in a message

// --- Values -------------------------------------------------------------------------------------------------------

std::string jsonText(const QJsonValue& value)
{
    const QByteArray array = compactJson(QJsonDocument(QJsonArray{value})); // a document must be an array or object
    return array.mid(1, array.size() - 2).toStdString();
}

std::string jsonText(const QString& text)
{
    return jsonText(QJsonValue(text));
}

std::string jsonText(const std::vector<int>& values)
{
    JsonBuilder json;
    json.begin(nullptr, '[');
    for (const int value : values)
        json.add(nullptr, value);
    json.end(']');
    return std::move(json.text);
}

template <typename Number>
static void appendNumber(std::string& json, Number value)
{
    char digits[40];
    json.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// The image of a NaN has no leading zeros.
static void appendImage(std::string& json, unsigned long long image)
{
    json += "{\"nan\": \"" + QString::number(image, 16).toStdString() + "\"}";
}

static void append(std::string& json, long long value)
{
    appendNumber(json, value);
}

static void append(std::string& json, double value)
{
    if (std::isnan(value)) {
        unsigned long long image = 0;
        std::memcpy(&image, &value, sizeof value);
        appendImage(json, image);
    } else if (std::isinf(value)) { // JSON numbers lack it
        json += value > 0 ? "\"inf\"" : "\"-inf\"";
    } else if (value == 0 && std::signbit(value)) { // parsers lose the sign
        json += "\"-0\"";
    } else {
        appendNumber(json, value);
    }
}

static void append(std::string& json, float value)
{
    if (std::isnan(value)) {
        unsigned int image = 0;
        std::memcpy(&image, &value, sizeof value);
        return appendImage(json, image);
    }
    if (std::isinf(value) || value == 0)
        return append(json, static_cast<double>(value));
    const size_t start = json.size();
    appendNumber(json, value);
    // Most programs read a JSON number as a double and then round that to float, which can give the adjacent float.
    if (static_cast<float>(std::strtod(json.c_str() + start, nullptr)) != value) {
        json.resize(start);
        appendNumber(json, static_cast<double>(value));
    }
}

static bool isPlainAscii(std::string_view bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return byte >= ' ' && byte < 0x7f && byte != '"' && byte != '\\'; });
}

static void append(std::string& json, std::string_view view)
{
    if (isPlainAscii(view)) {
        ((json += '"') += view) += '"';
        return;
    }
    const auto bytes = QByteArray::fromRawData(view.data(), static_cast<int>(view.size()));
    const QString text = QString::fromUtf8(bytes);
    bool isPlain = text.toUtf8() == bytes;
    for (const QChar character : text)
        isPlain = isPlain && character.category() != QChar::Other_Control;
    json += isPlain ? jsonText(text) : "{\"hex\": \"" + bytes.toHex().toStdString() + "\"}";
}

static void append(std::string& json, const JsonText& value)
{
    json += value.text;
}

void appendJson(std::string& json, const FieldValue& value)
{
    std::visit([&](const auto& known) { append(json, known); }, value);
}

// --- Objects and arrays -------------------------------------------------------------------------------------------

void JsonBuilder::separate(const char* name)
{
    if (!isFirst)
        text += ", ";
    isFirst = false;
    if (name != nullptr)
        ((text += '"') += name) += "\": ";
}

void JsonBuilder::begin(const char* name, char bracket)
{
    separate(name);
    text += bracket;
    isFirst = true;
}

void JsonBuilder::end(char bracket)
{
    text += bracket;
    isFirst = false;
}

void JsonBuilder::add(const char* name, const FieldValue& value)
{
    separate(name);
    appendJson(text, value);
}

// --- Reading ------------------------------------------------------------------------------------------------------

static QString gotText(const std::string& json)
{
    const QString text = QString::fromStdString(json);
    return Text::tr(", got %1").arg(text.size() > shownText ? text.left(shownText) + "..." : text);
}

QString gotText(const Json& value)
{
    return gotText(value.dump());
}

QString gotText(const QJsonValue& value)
{
    return gotText(jsonText(value));
}

bool takeHex(const Json& value, QByteArray& bytes)
{
    if (!value.is_string())
        return false;
    const QByteArray digits = QByteArray::fromStdString(value.get_ref<const std::string&>());
    bytes = QByteArray::fromHex(digits);
    return bytes.toHex() == digits.toLower();
}

bool takeBytes(const Json& value, QByteArray& bytes)
{
    if (value.is_string()) {
        bytes = QByteArray::fromStdString(value.get_ref<const std::string&>());
        return true;
    }
    return value.is_object() && value.size() == 1 && value.contains("hex") && takeHex(value["hex"], bytes);
}
