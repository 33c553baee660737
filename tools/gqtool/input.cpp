#include "input.h"

#include "command.h"
#include "shared/console.h"
#include "shared/text.h"

#include <utility>

static const int largestInput = 1 << 30; // bytes; a QByteArray holds at most twice as many

QString progressText(const ByteSource& source)
{
    return source.total() > 0 ? Text::tr("%1 bytes read, of %2").arg(source.done()).arg(source.total())
                              : Text::tr("%1 bytes read").arg(source.done());
}

QString moreErrorsText(long long count)
{
    return (count == 1 ? Text::tr("%1 more error; --max-errors N lists N")
                       : Text::tr("%1 more errors; --max-errors N lists N"))
        .arg(count);
}

// --- Sources ------------------------------------------------------------------------------------------------------

// The bytes of hex text or a hex dump.
class HexSource : public ByteSource {
public:
    HexSource(std::unique_ptr<ByteSource> hexText, QString textName, HexReader::Content content)
        : text(std::move(hexText)), name(std::move(textName)), reader([this] { return nextPiece(); }, content)
    {
        text->beforeRead = [this](bool isReady) { beforeRead(isReady); };
    }

    bool read(QByteArray& bytes) override
    {
        const QByteArray piece = reader.read();
        bytes += piece;
        return !piece.isEmpty();
    }
    QString error() const override
    {
        const QString reason = text->error();
        return reason.isEmpty() && reader.error().isSet()
                   ? QString(Text::tr("%1: %2").arg(name, reader.error().message()))
                   : reason;
    }
    long long done() const override { return text->done(); }
    long long total() const override { return text->total(); }

private:
    QByteArray nextPiece()
    {
        QByteArray piece;
        text->read(piece);
        return piece;
    }

    std::unique_ptr<ByteSource> text;
    QString name;
    HexReader reader;
};

// Reads a source to its end. Returns false if it is too large.
static bool collect(ByteSource& source, QByteArray& content)
{
    content.clear();
    while (content.size() <= largestInput && source.read(content)) {
    }
    return content.size() <= largestInput;
}

static QString tooLarge()
{
    return Text::tr("more than %1 bytes").arg(largestInput);
}

bool readAll(const QString& path, QByteArray& content, QString& error)
{
    FileSource file(path);
    error = collect(file, content) ? file.reason() : tooLarge();
    return error.isEmpty();
}

// ------------------------------------------------------------------------------------------------------------------

Input::Input(CommandLine& line)
    : fileOption(line.text("file", Text::tr("read the bytes from FILE; - means standard input"), "FILE")),
      rawOption(line.flag("raw", Text::tr("read the bytes themselves, not hex text or a dump"))),
      bytesArgument(line.argumentList(
          "BYTES",
          Text::tr("hex text or a hex dump, or - for standard input; reads what xxd, hexdump -C, od -A x -t x1, "
                   "tcpdump -x and Wireshark print, C arrays, and digits in groups")))
{
}

QString Input::path() const
{
    return bytesArgument.texts() == QStringList{"-"} ? "-" : fileOption.text();
}

QString Input::source() const
{
    return path().isEmpty() ? "BYTES" : path() == "-" ? QString(Text::tr("standard input")) : path();
}

std::unique_ptr<ByteSource> Input::open(HexReader::Content content) const
{
    const QStringList words = bytesArgument.texts();
    QString mistake;
    if (fileOption.isSet() && !words.isEmpty())
        mistake = Text::tr("BYTES and --file exclude each other");
    else if (path().isEmpty() && words.isEmpty())
        mistake = Text::tr("BYTES, --file FILE or - is required");
    else if (path().isEmpty() && rawOption.isSet())
        mistake = Text::tr("--raw requires --file or -; BYTES on the command line are hex text");
    if (!mistake.isEmpty()) {
        usageError(mistake);
        return nullptr;
    }
    if (path().isEmpty())
        return std::make_unique<HexSource>(std::make_unique<MemorySource>(words.join(' ').toUtf8()), source(), content);
    auto opened = std::make_unique<FileSource>(path());
    if (rawOption.isSet())
        return opened;
    return std::make_unique<HexSource>(std::move(opened), source(), content);
}

bool Input::read(QByteArray& bytes, int& exitCode) const
{
    const std::unique_ptr<ByteSource> opened = open();
    exitCode = opened == nullptr ? exitUsage : exitFailed;
    if (opened == nullptr)
        return false;
    const QString error =
        collect(*opened, bytes) ? opened->error() : Text::tr("cannot read %1: %2").arg(source(), tooLarge());
    if (!error.isEmpty())
        printError(error);
    exitCode = error.isEmpty() ? exitGood : exitFailed;
    return error.isEmpty();
}
