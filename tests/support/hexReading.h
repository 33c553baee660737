#pragma once

#include "gqtool/dump/hexReader.h"

#include <climits>

// What a HexReader returns for a text.
struct HexReading {
    QByteArray bytes;
    HexError error;
};

// Reads a text in pieces of this size. Stops after `mostBytes`, because * can mean any number of bytes.
inline HexReading readInPieces(const QByteArray& text, int pieceSize, HexReader::Content content,
                               int mostBytes = INT_MAX)
{
    int pos = 0;
    HexReader reader(
        [&] {
            QByteArray piece = text.mid(pos, pieceSize);
            pos += piece.size();
            return piece;
        },
        content);
    HexReading reading;
    for (QByteArray bytes = reader.read(); !bytes.isEmpty() && reading.bytes.size() < mostBytes; bytes = reader.read())
        reading.bytes += bytes;
    reading.error = reader.error();
    return reading;
}
