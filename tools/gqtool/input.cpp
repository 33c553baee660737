#include "input.h"

#include "command.h"
#include "gqtool/dump/inputKind.h"
#include "shared/console.h"
#include "shared/text.h"

#include <utility>

QString progressText(const ByteSource& source)
{
    return source.total() > 0 ? Text::tr("%1 read, of %2").arg(bytesText(source.done())).arg(source.total())
                              : Text::tr("%1 read").arg(bytesText(source.done()));
}

// --- Sources ------------------------------------------------------------------------------------------------------

// Says how to convert a capture file; empty for any other file.
static QString captureAdvice(const FileSource& file, const QByteArray& start)
{
    const QString format = captureFormat(start);
    return format.isEmpty()
               ? QString()
               : QString(Text::tr(
                             "%1 is a %2 capture; convert it with 'tshark -r %3 -x -o tcp.desegment_tcp_streams:FALSE'")
                             .arg(file.name(), format, file.isStandardInput() ? "FILE" : file.name()));
}

// The bytes of a file.
class RawSource : public ByteSource {
public:
    explicit RawSource(const QString& path) : file(path)
    {
        file.beforeRead = [this](bool isReady) { beforeRead(isReady); };
    }

    bool read(QByteArray& bytes) override
    {
        const int size = bytes.size();
        const bool isRead = file.read(bytes);
        start += bytes.mid(size, inputKindBytes - start.size());
        return isRead;
    }
    QString error() const override { return file.error(); }
    QString hint() const override
    {
        return isHexText(start)
                   ? QString(
                         Text::tr("%1 looks like hex text or a hex dump, which is read without --raw").arg(file.name()))
                   : captureAdvice(file, start);
    }
    long long done() const override { return file.done(); }
    long long total() const override { return file.total(); }

private:
    FileSource file;
    QByteArray start;
};

// The bytes of hex text or a hex dump.
class HexSource : public ByteSource {
public:
    // `hexFile` is `hexText` if that is a file, else null.
    HexSource(std::unique_ptr<ByteSource> hexText, const FileSource* hexFile, QString textName,
              HexReader::Content content)
        : text(std::move(hexText)), file(hexFile), name(std::move(textName)),
          reader([this] { return nextPiece(); }, content)
    {
        text->beforeRead = [this](bool isReady) { beforeRead(isReady); };
    }

    bool read(QByteArray& bytes) override
    {
        const QByteArray piece = reader.read();
        bytes += piece;
        hasBytes = hasBytes || !piece.isEmpty();
        return !piece.isEmpty();
    }
    QString error() const override
    {
        const QString reason = text->error();
        return reason.isEmpty() && reader.error().isSet() ? hexError() : reason;
    }
    long long done() const override { return text->done(); }
    long long total() const override { return text->total(); }

private:
    QByteArray nextPiece()
    {
        QByteArray piece;
        text->read(piece);
        start += piece.left(inputKindBytes - start.size());
        return piece;
    }

    QString hexError() const
    {
        QString advice = file == nullptr ? QString() : captureAdvice(*file, start);
        if (!advice.isEmpty())
            return advice;
        if (isUtf16(start))
            return Text::tr("%1: UTF-16 text; save it as UTF-8 or ASCII").arg(name);
        const HexError& error = reader.error();
        const bool isNoHex = !hasBytes && error.column == 1;
        const bool isRaw = file != nullptr && (isNoHex || isBinary(start));
        return Text::tr("%1: %2").arg(name, error.message()) + (isRaw ? Text::tr("; use --raw for raw bytes") : Text());
    }

    std::unique_ptr<ByteSource> text;
    const FileSource* file; // null for the command line
    QString name;
    HexReader reader;
    QByteArray start; // of the text
    bool hasBytes = false;
};

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
        return std::make_unique<HexSource>(std::make_unique<MemorySource>(words.join(' ').toUtf8()), nullptr, source(),
                                           content);
    if (rawOption.isSet())
        return std::make_unique<RawSource>(path());
    auto opened = std::make_unique<FileSource>(path());
    const FileSource* file = opened.get();
    return std::make_unique<HexSource>(std::move(opened), file, source(), content);
}

bool Input::read(QByteArray& bytes, int& exitCode, int most) const
{
    const std::unique_ptr<ByteSource> opened = open();
    exitCode = opened == nullptr ? exitUsage : exitFailed;
    if (opened == nullptr)
        return false;
    const QString error = readAll(*opened, bytes, most)
                              ? opened->error()
                              : Text::tr("cannot read %1: %2").arg(source(), tooLargeText(most));
    if (!error.isEmpty())
        printError(error);
    else if (!opened->hint().isEmpty())
        printError(opened->hint());
    exitCode = error.isEmpty() ? exitGood : exitFailed;
    return error.isEmpty();
}
