#include "input.h"

#include "command.h"
#include "commandLine.h"
#include "shared/console.h"

#include <QCommandLineParser>
#include <QFile>

#include <unistd.h>

#include <cctype>

static const int largestInput = 1 << 30; // bytes; a QByteArray holds at most twice as many

// --- Hex text -----------------------------------------------------------------------------------------------------

static int digitValue(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

static bool isSeparator(char character)
{
    return character == ':' || character == ' ' || (character >= '\t' && character <= '\r');
}

static QString placeOf(const QByteArray& text, int position)
{
    const QByteArray before = text.left(position);
    return QString("line %1, column %2").arg(before.count('\n') + 1).arg(position - before.lastIndexOf('\n'));
}

static QString badDigit(const QByteArray& text, int position)
{
    const auto character = static_cast<unsigned char>(text.at(position));
    if (character >= ' ' && character < 0x7f)
        return QString("%1: '%2' is not a hex digit").arg(placeOf(text, position)).arg(QChar(character));
    return QString("%1: byte 0x%2 is not a hex digit; use --raw for raw bytes")
        .arg(placeOf(text, position))
        .arg(character, 2, 16, QChar('0'));
}

bool parseHex(const QByteArray& text, QByteArray& bytes, QString& error)
{
    bytes.clear();
    bytes.reserve(text.size() / 2);
    for (int i = 0; i < text.size();) {
        if (text.at(i) == '#') {
            const int end = text.indexOf('\n', i);
            i = end < 0 ? text.size() : end;
            continue;
        }
        if (isSeparator(text.at(i))) {
            ++i;
            continue;
        }
        // A group of digits.
        const int start = i;
        if (text.at(i) == '0' && i + 1 < text.size() && (text.at(i + 1) == 'x' || text.at(i + 1) == 'X'))
            i += 2;
        const int firstDigit = i;
        while (i < text.size() && digitValue(text.at(i)) >= 0)
            ++i;
        if (i < text.size() && text.at(i) != '#' && !isSeparator(text.at(i))) {
            error = badDigit(text, i);
            return false;
        }
        if (i == firstDigit || (i - firstDigit) % 2 != 0) {
            error = QString("%1: '%2' must have %3 digits")
                        .arg(placeOf(text, start), QString(text.mid(start, i - start).left(20)),
                             i == firstDigit ? "hex" : "an even number of hex");
            return false;
        }
        for (int digit = firstDigit; digit < i; digit += 2)
            bytes.append(static_cast<char>(digitValue(text.at(digit)) * 16 + digitValue(text.at(digit + 1))));
    }
    return true;
}

// --- Sources ------------------------------------------------------------------------------------------------------

Input::Input(QCommandLineParser& parser)
    : fileOption("file", "read the bytes from FILE; - means standard input", "FILE"),
      rawOption("raw", "read the bytes themselves, not hex text")
{
    parser.addOptions({fileOption, rawOption});
    parser.addPositionalArgument("BYTES",
                                 "Hex text, or - for standard input. White space, colons, 0x and comments from # "
                                 "to the end of the line are skipped.",
                                 "[BYTES...]");
}

bool readAll(const QString& path, QByteArray& content, QString& error)
{
    QFile file(path);
    const bool isOpen = path == "-" ? file.open(STDIN_FILENO, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    QByteArray part;
    do {
        part = isOpen ? file.read(1 << 16) : QByteArray();
        content += part;
    } while (!part.isEmpty() && content.size() <= largestInput);
    const bool fits = content.size() <= largestInput;
    error = fits ? file.errorString() : QString("more than %1 bytes").arg(largestInput);
    return fits && file.error() == QFileDevice::NoError;
}

bool Input::read(const QCommandLineParser& parser, const QStringList& words, QByteArray& bytes, int& exitCode) const
{
    const bool isStandardInput = words == QStringList{"-"};
    const QString path = isStandardInput ? "-" : parser.value(fileOption);
    const bool isRaw = parser.isSet(rawOption);
    QString mistake;
    if (parser.isSet(fileOption) && !words.isEmpty())
        mistake = "BYTES and --file exclude each other";
    else if (path.isEmpty() && words.isEmpty())
        mistake = "BYTES, --file FILE or - is required";
    else if (path.isEmpty() && isRaw)
        mistake = "--raw requires --file or -; BYTES on the command line are hex text";
    if (!mistake.isEmpty()) {
        exitCode = usageError(mistake);
        return false;
    }

    exitCode = exitFailed;
    const QString source = path.isEmpty() ? "BYTES" : path == "-" ? "standard input" : path;
    QByteArray content = words.join(' ').toUtf8();
    QString error;
    if (!path.isEmpty()) {
        content.clear();
        if (!readAll(path, content, error)) {
            printError(QString("cannot read %1: %2").arg(source, error));
            return false;
        }
    }
    if (isRaw) {
        bytes = content;
    } else if (!parseHex(content, bytes, error)) {
        printError(source + ": " + error);
        return false;
    }
    exitCode = exitGood;
    return true;
}
