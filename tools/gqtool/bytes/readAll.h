#pragma once

#include "byteSource.h"

static const int largestInput = 1 << 30; // bytes; a QByteArray holds at most twice as many

// Reads a file, or standard input for "-", into `content`, which must be empty. Returns false and sets `error` if
// reading fails or the input has more than `most` bytes.
bool readAll(const QString& path, QByteArray& content, QString& error, int most = largestInput);

// Reads a source to its end into `content`, which must be empty. Returns false if it has more than `most` bytes.
bool readAll(ByteSource& source, QByteArray& content, int most = largestInput);
QString tooLargeText(int most);
