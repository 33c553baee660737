#pragma once

#include "bytes/readAll.h"
#include "commandLine.h"
#include "gqtool/dump/hexReader.h"

#include <QByteArray>
#include <QString>

#include <memory>

// "65536 bytes read, of 100000000", for the progress.
QString progressText(const ByteSource& source);

// The bytes that a sub-command works on: hex text or a hex dump on the command line, in a file or on standard input, or
// the raw bytes of a file or of standard input.
class Input {
public:
    // Adds --file, --raw and the argument BYTES to `line`.
    explicit Input(CommandLine& line);

    // Returns the name of the source for messages: a file, "standard input" or "BYTES".
    QString source() const;

    // Opens the source that the command line names. On wrong usage, prints an error and returns null.
    std::unique_ptr<ByteSource> open(HexReader::Content content = HexReader::everyByte) const;

    // Reads the whole source. On an error, also if it has more than `most` bytes, prints it and returns false with the
    // exit code.
    bool read(QByteArray& bytes, int& exitCode, int most = largestInput) const;

private:
    QString path() const; // of the file; "-" for standard input; empty without a file

    Option fileOption;
    Option rawOption;
    Option bytesArgument;
};
