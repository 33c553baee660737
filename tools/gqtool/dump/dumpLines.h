#pragma once

#include "wordOrder.h"

// Reads the lines of a hex dump: an offset, bytes, and a text column, which shows the order of bytes in words but adds
// no bytes. A line * repeats the preceding line up to the next offset. Each packet of a dump begins with offset 0,
// after an empty line or, in a dump of tcpdump, after the line that summarises it.
class DumpLines {
public:
    enum Verdict {
        isDump,
        isNoDump,
        needsNextLine,
    };

    // Returns whether a text that begins with this line is a dump. If that depends on the next line, pass it too.
    static Verdict recognise(const QByteArray& first, const QByteArray* next = nullptr);

    // Returns true if the line begins with offset 0 as tcpdump prints it.
    static bool beginsPacketOfTcpdump(const QByteArray& line);

    struct Line {
        bool beginsPacket = false;
        bool isSummarised = false; // the packet has a summary
        qint64 repeated = 0;       // number of bytes to add before `bytes` by repeating `pattern`
        QByteArray pattern;
        QByteArray bytes;
    };

    // Reads the next line, without its end. Returns false after an error.
    bool read(const QByteArray& text, Line& line);

    // Ends the dump.
    bool end();

    qint64 lineNumber() const { return number; }
    const HexError& error() const { return firstError; }

private:
    struct Offset {
        qint64 value = 0;
        QByteArray digits;
        char mark = 0;          // ':', '|', ' ' for two blanks or more, 0 for one or the end of the line
        bool hasPrefix = false; // 0x
        int end = 0;            // position of the first character after offset, mark and blanks
    };

    struct Row {
        QByteArray bytes;
        QString word; // the first group of more than one byte
        WordOrder order;
    };

    static bool findOffset(const QByteArray& text, Offset& offset);
    static bool isOfOd(const Offset& offset);
    static bool isEndOfOd(const QByteArray& text, const Offset& first, const Row& row);
    static bool readRow(const QByteArray& text, const Offset& offset, Row& row, HexError& error);
    bool readOffset(const QByteArray& text, const Offset& offset, Line& line);
    bool checkWords(const Offset& offset, const Row& row);
    bool checkOffset(const Offset& offset, Line& line);
    bool fail(const QString& text);

    qint64 number = 0; // of the line
    HexError firstError;

    bool hasBegun = false;
    bool isTcpdump = false;
    bool isSummarised = false;
    bool mayRestart = true;   // at offset 0
    bool isRepeating = false; // after *
    qint64 size = 0;          // bytes of the packet so far
    QByteArray previous;      // the bytes of the preceding line

    bool isOrderKnown = false; // a text column has shown the order of bytes in words
    HexError unknownOrder;     // the first words that may have either order
};
