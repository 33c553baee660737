#include "wordOrder.h"

#include <algorithm>

static const int binaryDigits = 8; // of a byte
static const int largeWord = 4;    // bytes; smaller words of the other order are printed only on request

void WordOrder::addGroup(const char* digits, int count)
{
    areBinary = areBinary && count == binaryDigits &&
                std::all_of(digits, digits + count, [](char digit) { return digit == '0' || digit == '1'; });
    for (int at = count - 2; at >= 0; at -= 2)
        appendDigits(digits + at, 2, other);
    ++groups;
    largest = std::max(largest, count / 2);
}

bool WordOrder::isBinary() const
{
    return areBinary && !text.isEmpty() && text.size() <= groups;
}

// Returns the text column of these bytes, without blanks at its ends.
static QByteArray textOf(const QByteArray& bytes)
{
    QByteArray text;
    for (const char byte : bytes)
        text += byte >= ' ' && byte < 0x7f ? byte : '.';
    return text.trimmed();
}

WordOrder::Order WordOrder::found(const QByteArray& written) const
{
    if (text.isEmpty() || written == other)
        return noMatter;
    const bool fitsWritten = textOf(written) == text;
    const bool fitsOther = textOf(other) == text;
    if (fitsWritten && fitsOther)
        return largest < largeWord ? noMatter : either;
    return fitsWritten ? asWritten : fitsOther ? reversed : noMatter;
}
