#include "textEncoding.h"
#include "shared/text.h"

#include <QTextCodec>

#include <algorithm>
#include <nlohmann/json.hpp>

static const QTextCodec* codec = nullptr; // null: UTF-8
static QString codecName;                 // as the user gave it; Qt's may be another: GBK for GB2312
static bool hasOtherTexts = false;        // texts that are not UTF-8, although no encoding was set

bool setTextEncoding(const QString& name)
{
    const QTextCodec* found = QTextCodec::codecForName(name.toLatin1());
    codec = found == QTextCodec::codecForName("UTF-8") ? nullptr : found;
    codecName = name;
    return found != nullptr;
}

QStringList textEncodings()
{
    QStringList names;
    for (const QByteArray& name : QTextCodec::availableCodecs())
        names.append(name);
    return names;
}

static bool convert(const QByteArray& bytes, QString& text)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    text = codec->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

static bool convert(const QString& text, QByteArray& bytes)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader); // without a byte order mark
    bytes = codec->fromUnicode(text.constData(), text.size(), &state);
    return state.invalidChars == 0;
}

// Codecs may replace a character without reporting it. So the converted text must give the original again.
static bool decodeText(const QByteArray& bytes, QString& text)
{
    QByteArray again;
    return convert(bytes, text) && convert(text, again) && again == bytes;
}

static bool encodeText(const QString& text, QByteArray& bytes)
{
    QString again;
    return convert(text, bytes) && convert(bytes, again) && again == text;
}

static bool isPrintable(const QString& text)
{
    return std::none_of(text.begin(), text.end(),
                        [](QChar character) { return character.category() == QChar::Other_Control; });
}

static bool isUtf8(std::string_view bytes)
{
    if (std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; }))
        return true;
    const auto raw = QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size()));
    return QString::fromUtf8(raw.constData(), raw.size()).toUtf8() == raw;
}

Text encodingHint()
{
    return hasOtherTexts ? Text::tr("some texts are not UTF-8; --encoding NAME, such as GBK, converts them") : Text();
}

RecordText::RecordText(std::string_view textBytes) : bytes(textBytes)
{
    if (codec == nullptr) {
        hasOtherTexts = hasOtherTexts || !isUtf8(bytes);
        return;
    }
    const auto raw = QByteArray::fromRawData(bytes.data(), static_cast<int>(bytes.size()));
    QString text;
    if (decodeText(raw, text) && isPrintable(text))
        utf8 = text.toStdString();
    else
        hexJson = "{\"hex\": \"" + raw.toHex().toStdString() + "\"}";
}

FieldValue RecordText::value() const
{
    if (!hexJson.empty())
        return JsonText{hexJson};
    return codec == nullptr ? bytes : std::string_view(utf8);
}

QString takeUtf8(const Json& value, QByteArray& bytes)
{
    return takeBytes(value, bytes)
               ? QString()
               : Text::tr("must be a string of valid Unicode or {\"hex\": DIGITS}") + gotText(value);
}

QString takeRecordText(const Json& value, QByteArray& bytes)
{
    QString fault = takeUtf8(value, bytes);
    if (!fault.isEmpty())
        return fault;
    if (codec != nullptr && value.is_string() && !encodeText(QString::fromUtf8(bytes.constData(), bytes.size()), bytes))
        return Text::tr("must be a text that can be written in %1, or {\"hex\": DIGITS}").arg(codecName) +
               gotText(value);
    return {};
}
