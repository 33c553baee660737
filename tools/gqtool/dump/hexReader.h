#pragma once

#include "dumpLines.h"
#include "hexText.h"
#include "packetPayloads.h"

#include <functional>

// Reads the bytes of a hex text or a hex dump, piece by piece and in bounded memory. docs/guide/hexDumps.md describes
// the forms. A text is a dump if its first line begins with an offset, or if its second line begins with the number of
// bytes before it; everything else is hex text.
class HexReader {
public:
    enum Content {
        everyByte,
        payloads, // of TCP and UDP, if the packets of a dump are IPv4 packets
    };

    // Returns the next piece of the text, of any size; empty at its end.
    using Source = std::function<QByteArray()>;

    explicit HexReader(Source source, Content content = everyByte);

    // Returns the next bytes, in most cases those of one piece of the text; empty at the end or after an error. Bytes
    // before an error may be returned first.
    QByteArray read();

    // Not set if read() returned empty because the text ended.
    const HexError& error() const { return firstError; }

private:
    enum Form { unknown, text, dump };

    void readPiece(QByteArray& bytes);
    void end(QByteArray& bytes);
    void skipComments();
    Form formOfUnread();
    void readLines(QByteArray& bytes);
    void repeatLine(QByteArray& bytes);
    void add(const QByteArray& part, QByteArray& bytes);
    void endPacket(QByteArray& bytes);

    Source nextPiece;
    Content content;
    Form form = unknown;
    QByteArray unread;
    int next = 0;             // position in `unread`
    int examined = 0;         // characters that did not suffice to know the form
    bool isAtEnd = false;     // of the source
    bool hasBegun = false;    // a byte order mark has been skipped
    bool isInComment = false; // before the first line of bytes
    bool hasEnded = false;
    HexError firstError;

    HexText hexText;
    DumpLines lines;
    DumpLines::Line line; // the current one
    PacketPayloads packets;
    qint64 packetLine = 1; // number of the packet's first line
};

// Reads a whole text. Returns false and an `error` with its place.
bool readHex(const QByteArray& text, QByteArray& bytes, HexError& error);
