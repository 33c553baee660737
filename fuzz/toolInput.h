#pragma once

#include "gqtool/records/recordFields.h"
#include "target.h"

#include <QString>

// What the targets of gqtool's readers share.

// Takes numbers and bytes from the start of the input. After its end, numbers are 0.
class InputBytes {
public:
    explicit InputBytes(const Reading& reading) : bytes(reading.buf, reading.size) {}

    int left() const { return bytes.size() - pos; }
    int number() { return pos < bytes.size() ? static_cast<unsigned char>(bytes[pos++]) : 0; }
    int number(int below) { return number() % below; }
    QByteArray take(int count);
    QByteArray rest() { return take(left()); }

private:
    QByteArray bytes;
    int pos = 0;
};

// Returns the form of records that the next number selects.
const Form& takeForm(InputBytes& input);

// Writes a file for gqtool to read and replaces the previous one. Returns its path.
QString inputFile(const QByteArray& content);

// Returns LINE of an error "PATH: line LINE: ..."; fails if the text has no such line.
int lineOfError(const QString& error, const QString& path, const QByteArray& text);

void requireNoFault(const std::string& fault); // "" if there is none

// Independent of gqtool's code. frameEndAt returns the end of the frame at `start`, or 0 if it is incomplete.
int frameEndAt(const QByteArray& stream, int start);
QByteArray frameOf(int command, int sequence, const QByteArray& payload);
QByteArray word4(int value);
