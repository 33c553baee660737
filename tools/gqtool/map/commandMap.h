#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

struct Form;

// A command of a server, with the forms of its payloads. docs/guide/commandMap.md describes the words of a map.
struct MappedCommand {
    unsigned char number = 0;
    QString name;
    QString request;               // "-", "int", "intPair", "ints" or "hex"
    QString reply;                 // "int", "ints", "bytes" or "strings"
    const Form* records = nullptr; // of the bytes of the reply; null if they have no form
    int line = 0;                  // number of its line in the map
};

// A server's commands, read from a text table with one command per line.
class CommandMap {
public:
    // Adds the commands of the file at `path`. Returns false and prints the errors if it cannot be read or has wrong
    // lines: "plant.map: line 3: COMMAND must be ...".
    bool read(const QString& path);

    // Adds the commands of a text, except those of wrong lines. Returns the errors, such as
    // "line 3: COMMAND must be ...".
    QStringList add(const QByteArray& text);

    // Return null if there is no such command.
    const MappedCommand* find(const QString& name) const;
    const MappedCommand* find(unsigned char number) const;
    const MappedCommand* findWord(const QString& nameOrNumber) const;

    const std::vector<MappedCommand>& all() const { return commands; }
    QStringList names() const;

private:
    QString addLine(const QString& line, int number);

    std::vector<MappedCommand> commands;
};

// Returns "int", "ints", "bytes" and "strings", the forms of a reply.
QStringList replyForms();

// "0x35"
QString commandText(unsigned char command);
