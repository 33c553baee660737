#pragma once

#include <QCoreApplication> // QT_TRANSLATE_NOOP
#include <QStringList>

// A text for people: in their language, and in English for JSON, which is the same in all languages. It converts to a
// QString in their language. translations/ has the languages; lupdate finds the texts.
class Text {
public:
    Text() = default;

    // Translates `source`, which must be a literal, or a literal in a table, marked by QT_TRANSLATE_NOOP("Text", ...).
    static Text tr(const char* source);

    // A name, a number or what another program wrote.
    static Text untranslated(const QString& text) { return {text, text}; }

    // Replaces placeholders as QString::arg does. Arguments can be texts, too.
    template <typename... Values>
    Text arg(const Values&... values) const
    {
        return {local.arg(localOf(values)...), source.arg(englishOf(values)...)};
    }

    const QString& english() const { return source; }
    operator QString() const { return local; } // NOLINT(google-explicit-constructor): messages are texts
    std::string toStdString() const { return local.toStdString(); }
    bool isEmpty() const { return local.isEmpty(); }

    friend Text operator+(const Text& first, const Text& second)
    {
        return {first.local + second.local, first.source + second.source};
    }

    friend bool operator==(const Text& text, const QString& other) { return text.local == other; }

private:
    Text(const QString& localText, const QString& englishText) : local(localText), source(englishText) {}

    template <typename Value>
    static const Value& localOf(const Value& value)
    {
        return value;
    }
    static const QString& localOf(const Text& text) { return text.local; }
    template <typename Value>
    static const Value& englishOf(const Value& value)
    {
        return value;
    }
    static const QString& englishOf(const Text& text) { return text.source; }

    QString local;
    QString source;
};

// True for embeddings, overrides and isolates, which change the direction of text: one text can look like another.
bool isDirectionControl(QChar character);

// Returns the text with the characters replaced that a terminal obeys, and with direction controls replaced.
QString harmlessText(QString text);

// Returns the error of a zero byte in line `line` of a text: parsers would end there.
Text zeroByteText(int line);

// Returns the system's description of an error number.
Text errorText(int error);

// Returns the description of an error that a library gives in English.
Text libraryText(const QString& english);

// Returns a number of bytes: "1 byte", "2 bytes".
Text bytesText(long long count);

// Returns names as a sentence lists them: "int, ints, bytes".
Text listText(const QStringList& names);

// Returns the number of columns that a text takes in a terminal: Chinese characters take two.
int columnsOf(const QString& text);

// Returns the text, followed by blanks if it takes fewer columns.
QString padded(const QString& text, int columns);
