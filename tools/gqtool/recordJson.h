#pragma once

#include "recordFields.h"

#include <QJsonValue>
#include <QStringList>

// Records as JSON, with the fields in the order of the bytes. tests/golden/README.md tells the shape.

// --- Values as JSON text ------------------------------------------------------------------------------------------

QString jsonText(const QString& text);
QString jsonText(const QByteArray& bytes); // of a text or of bytes: a string, or {"hex": ...}
QString jsonText(float value);
QString jsonText(double value);
QString jsonText(const std::vector<float>& values);
QString jsonText(const std::vector<int>& values);

// Puts objects and arrays together.
class JsonBuilder {
public:
    void begin(const char* name, char bracket);
    void end(char bracket);
    void add(const char* name, const QString& value);

    QString text;

private:
    void separate(const char* name);
};

// --- Records to JSON ----------------------------------------------------------------------------------------------

// What a content holds.
QString jsonOf(Content& content);

// The same without what the library's readers do not give back, for comparisons.
QString comparableJsonOf(Content& content);

// --- JSON to records ----------------------------------------------------------------------------------------------

// Fills `content`. What is wrong, each with the path of its field; empty if nothing is.
QStringList takeJson(const QJsonValue& value, Content& content);

// A text or bytes. False if the value is neither a string nor {"hex": ...}.
bool takeBytes(const QJsonValue& value, QByteArray& bytes);
