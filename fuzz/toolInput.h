#pragma once

#include "target.h"

#include <QString>

// What the targets of gqtool's readers share.

// Takes numbers from the start of the input.
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

// Writes the file that gqtool is to read, in place of the last one. Returns its path.
QString inputFile(const QByteArray& content);

// The line in an error "PATH: line LINE: ...", which the text must have.
int lineOfError(const QString& error, const QString& path, const QByteArray& text);

void requireNoFault(const std::string& fault); // "" if there is none

// Without any code of gqtool: the end of the frame that begins there, if all of it is there; otherwise 0.
int frameEndAt(const QByteArray& stream, int start);
QByteArray frameOf(int command, int sequence, const QByteArray& payload);
QByteArray word4(int value);
