#pragma once

#include "hexDigits.h"

// Finds out from the text column of a line whether the bytes of its words are in the order of memory. xxd -e writes the
// last byte of a word first.
class WordOrder {
public:
    enum Order {
        noMatter, // or the line does not show it
        asWritten,
        reversed,
        either, // large words whose text fits both orders
    };

    // Add the groups of digits of the line, then what follows them.
    void addGroup(const char* digits, int count);
    void addText(const QByteArray& column) { text = column.trimmed(); }

    // Takes the bytes of the line in the order in which they are written.
    Order found(const QByteArray& written) const;

    // Returns true if each group has the 8 binary digits of a byte, as of xxd -b.
    bool isBinary() const;

private:
    QByteArray other; // the bytes in the other order
    int groups = 0;
    int largest = 0; // group, in bytes
    bool areBinary = true;
    QByteArray text;
};
