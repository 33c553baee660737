#pragma once

#include <QByteArray>
#include <QCommandLineOption>
#include <QString>

class QCommandLineParser;

// The bytes of hex text: two digits a byte, bytes apart or together. Skips white space, colons, 0x ahead of digits, and
// comments from a # to the end of the line. False with what is wrong, and where, in `error`.
bool parseHex(const QByteArray& text, QByteArray& bytes, QString& error);

// The content of a file, or of standard input for "-". False with what is wrong in `error`.
bool readAll(const QString& path, QByteArray& content, QString& error);

// The bytes that a sub-command works on: hex text on the command line, or a file or standard input, hex text or raw.
class Input {
public:
    // Adds --file and --raw, and tells of the argument BYTES.
    explicit Input(QCommandLineParser& parser);

    // Reads the source that `parser` names; `words` are the arguments that are left for bytes. False when there are
    // none to go on with: the reason is told, and the exit code given.
    bool read(const QCommandLineParser& parser, const QStringList& words, QByteArray& bytes, int& exitCode) const;

private:
    QCommandLineOption fileOption;
    QCommandLineOption rawOption;
};
