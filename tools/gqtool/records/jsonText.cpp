#include "jsonText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

static const int shownText = 60; // characters of a value in a message

QString jsonText(const QJsonValue& value)
{
    const QByteArray array =
        QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact); // a document must be an array or object
    return QString::fromUtf8(array.mid(1, array.size() - 2));
}

QString jsonText(const QString& text)
{
    return jsonText(QJsonValue(text));
}

QString gotText(const QJsonValue& value)
{
    const QString text = jsonText(value);
    return ", got " + (text.size() > shownText ? text.left(shownText) + "..." : text);
}

QString jsonText(const QByteArray& bytes)
{
    const QString text = QString::fromUtf8(bytes);
    bool isPlain = text.toUtf8() == bytes;
    for (const QChar character : text)
        isPlain = isPlain && character.category() != QChar::Other_Control;
    return isPlain ? jsonText(text) : QString("{\"hex\": \"%1\"}").arg(QString(bytes.toHex()));
}

static QString imageText(unsigned long long image, int digits)
{
    return QString("{\"nan\": \"%1\"}").arg(image, digits, 16, QChar('0'));
}

// Returns the text for an infinite value, which JSON numbers lack, and for -0, whose sign parsers lose; else nothing.
static QString oddNumber(double value)
{
    if (std::isinf(value))
        return value > 0 ? "\"inf\"" : "\"-inf\"";
    return value == 0 && std::signbit(value) ? "\"-0\"" : "";
}

QString jsonText(double value)
{
    if (std::isnan(value)) {
        unsigned long long image = 0;
        std::memcpy(&image, &value, sizeof value);
        return imageText(image, 16);
    }
    char digits[40];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
    const QString odd = oddNumber(value);
    return odd.isEmpty() ? QString::fromLatin1(digits, static_cast<int>(result.ptr - digits)) : odd;
}

QString jsonText(float value)
{
    if (std::isnan(value)) {
        unsigned int image = 0;
        std::memcpy(&image, &value, sizeof value);
        return imageText(image, 8);
    }
    char digits[40];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits - 1, value);
    *result.ptr = '\0';
    // Most programs read a JSON number as a double and then round that to float, which can give the adjacent float.
    if (static_cast<float>(std::strtod(digits, nullptr)) != value)
        return jsonText(static_cast<double>(value));
    const QString odd = oddNumber(value);
    return odd.isEmpty() ? QString(digits) : odd;
}

QString jsonText(const std::vector<float>& values)
{
    QStringList texts;
    for (const float value : values)
        texts.append(jsonText(value));
    return '[' + texts.join(", ") + ']';
}

QString jsonText(const std::vector<int>& values)
{
    QStringList texts;
    for (const int value : values)
        texts.append(QString::number(value));
    return '[' + texts.join(", ") + ']';
}

void JsonBuilder::separate(const char* name)
{
    if (!text.isEmpty() && !text.endsWith('{') && !text.endsWith('['))
        text += ", ";
    if (name != nullptr)
        text += QString("\"%1\": ").arg(name);
}

void JsonBuilder::begin(const char* name, char bracket)
{
    separate(name);
    text += bracket;
}

void JsonBuilder::end(char bracket)
{
    text += bracket;
}

void JsonBuilder::add(const char* name, const QString& value)
{
    separate(name);
    text += value;
}

bool takeBytes(const QJsonValue& value, QByteArray& bytes)
{
    if (value.isString()) {
        bytes = value.toString().toUtf8();
        return QString::fromUtf8(bytes.constData(), bytes.size()) == value.toString(); // may contain zero bytes
    }
    const QJsonObject object = value.toObject();
    const QByteArray digits = object["hex"].toString().toLatin1();
    bytes = QByteArray::fromHex(digits);
    return object.size() == 1 && object["hex"].isString() && bytes.toHex() == digits.toLower();
}
