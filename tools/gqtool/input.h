#pragma once

#include <QByteArray>
#include <QCommandLineOption>
#include <QString>

class QCommandLineParser;

// Converts hex text, two digits per byte, with or without separators. Skips white space, colons, 0x before digits, and
// comments from # to the end of the line. Returns false and an `error` with its place.
bool parseHex(const QByteArray& text, QByteArray& bytes, QString& error);

// Reads a file, or standard input for "-". Returns false and the reason in `error`.
bool readAll(const QString& path, QByteArray& content, QString& error);

// The bytes that a sub-command works on: hex text on the command line, or hex text or raw bytes of a file or standard
// input.
class Input {
public:
    // Adds --file, --raw and the argument BYTES to `parser`.
    explicit Input(QCommandLineParser& parser);

    // Reads the source that `parser` names; `words` are the arguments for BYTES. On an error, prints it and returns
    // false with the exit code.
    bool read(const QCommandLineParser& parser, const QStringList& words, QByteArray& bytes, int& exitCode) const;

private:
    QCommandLineOption fileOption;
    QCommandLineOption rawOption;
};
