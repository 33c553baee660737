#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <vector>

// Values as JSON text.
QString jsonText(const QJsonValue& value);
QString jsonText(const QString& text);
QString jsonText(const QByteArray& bytes); // a string, or {"hex": ...} if the bytes are not text
QString jsonText(float value);
QString jsonText(double value);
QString jsonText(const std::vector<float>& values);
QString jsonText(const std::vector<int>& values);

// ", got VALUE" for the end of a message; a long value is cut.
QString gotText(const QJsonValue& value);

// Builds objects and arrays.
class JsonBuilder {
public:
    void begin(const char* name, char bracket);
    void end(char bracket);
    void add(const char* name, const QString& value);

    QString text;

private:
    void separate(const char* name);
};

// Reads a text or bytes. Returns false if the value is neither a string nor {"hex": ...}.
bool takeBytes(const QJsonValue& value, QByteArray& bytes);
