#pragma once

#include <QByteArray>
#include <QString>

// What a file contains if it is not what a command expects. The functions take the first bytes of the file, of which
// inputKindBytes suffice.
static const int inputKindBytes = 4096;

// Returns the format of a capture file, such as "pcap"; empty for anything else.
QString captureFormat(const QByteArray& start);

// Returns true for a byte order mark of UTF-16, with which some shells begin the files that they write.
bool isUtf16(const QByteArray& start);

// Returns true for text that is read as a hex dump or hex text.
bool isHexText(const QByteArray& start);

// Returns true if control characters show that the bytes are no text.
bool isBinary(const QByteArray& start);
