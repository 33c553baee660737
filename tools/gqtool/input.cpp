#include "input.h"

#include "command.h"
#include "shared/console.h"

#include <QFile>

#include <unistd.h>

#include <functional>
#include <optional>
#include <utility>

static const int largestInput = 1 << 30; // bytes; a QByteArray holds at most twice as many

Input::Input(CommandLine& line)
    : fileOption(line.text("file", "read the bytes from FILE; - means standard input", "FILE")),
      rawOption(line.flag("raw", "read the bytes themselves, not hex text or a dump")),
      bytesArgument(line.argumentList(
          "BYTES", "hex text or a hex dump, or - for standard input; reads what xxd, hexdump -C, od -A x -t x1, "
                   "tcpdump -x and Wireshark print, C arrays, and digits in groups"))
{
}

// A file, or standard input for "-".
class InputPieces {
public:
    explicit InputPieces(const QString& path) : file(path)
    {
        isOpen = path == "-" ? file.open(STDIN_FILENO, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    }

    // Returns the next piece; empty at the end or after an error.
    QByteArray next() { return isOpen ? file.read(1 << 16) : QByteArray(); }

    // Returns why it could not be read; empty on success.
    QString error() const { return file.error() == QFileDevice::NoError ? QString() : file.errorString(); }

private:
    QFile file;
    bool isOpen;
};

// Collects pieces until an empty one. Returns false if they are too large.
static bool collect(const std::function<QByteArray()>& next, QByteArray& content, QString& error)
{
    content.clear();
    for (QByteArray piece = next(); !piece.isEmpty() && content.size() <= largestInput; piece = next())
        content += piece;
    if (content.size() > largestInput)
        error = QString("more than %1 bytes").arg(largestInput);
    return content.size() <= largestInput;
}

bool readAll(const QString& path, QByteArray& content, QString& error)
{
    InputPieces pieces(path);
    if (!collect([&pieces] { return pieces.next(); }, content, error))
        return false;
    error = pieces.error();
    return error.isEmpty();
}

QString Input::path() const
{
    return bytesArgument.texts() == QStringList{"-"} ? "-" : fileOption.text();
}

QString Input::source() const
{
    return path().isEmpty() ? "BYTES" : path() == "-" ? "standard input" : path();
}

bool Input::read(QByteArray& bytes, int& exitCode, HexReader::Content content) const
{
    const QStringList words = bytesArgument.texts();
    const bool isRaw = rawOption.isSet();
    QString mistake;
    if (fileOption.isSet() && !words.isEmpty())
        mistake = "BYTES and --file exclude each other";
    else if (path().isEmpty() && words.isEmpty())
        mistake = "BYTES, --file FILE or - is required";
    else if (path().isEmpty() && isRaw)
        mistake = "--raw requires --file or -; BYTES on the command line are hex text";
    if (!mistake.isEmpty()) {
        exitCode = usageError(mistake);
        return false;
    }

    exitCode = exitFailed;
    std::optional<InputPieces> file;
    if (!path().isEmpty())
        file.emplace(path());
    QByteArray text = words.join(' ').toUtf8();
    const auto nextPiece = [&file, &text] { return file ? file->next() : std::exchange(text, QByteArray()); };
    HexReader reader(nextPiece, content);
    QString error;
    const bool fits =
        isRaw ? collect(nextPiece, bytes, error) : collect([&reader] { return reader.read(); }, bytes, error);
    if (fits && file)
        error = file->error();
    if (!error.isEmpty()) {
        printError(QString("cannot read %1: %2").arg(source(), error));
        return false;
    }
    if (reader.error().isSet()) {
        printError(source() + ": " + reader.error().message());
        return false;
    }
    exitCode = exitGood;
    return true;
}
