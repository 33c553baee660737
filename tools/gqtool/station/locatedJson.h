#pragma once

#include <QHash>
#include <QJsonValue>
#include <QString>

// A JSON text, with the line of each member for messages.
class LocatedJson {
public:
    // Returns false with place and reason in `error` if the text is not JSON or an object has a member twice.
    bool parse(const QByteArray& text, QString& error);

    const QJsonValue& value() const { return root; }

    // Returns the line of a member or item such as "commands[3].reply", or of what encloses it if it is missing.
    int lineOf(const QString& path) const;

private:
    QJsonValue root;
    QHash<QString, int> lines; // by path
};
