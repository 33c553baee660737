#include "inputKind.h"

#include "hexReader.h"

#include <algorithm>

QString captureFormat(const QByteArray& start)
{
    const QByteArray magic = start.left(4).toHex();
    if (magic == "0a0d0d0a")
        return "pcapng";
    const bool isPcap = magic == "d4c3b2a1" || magic == "a1b2c3d4" || // times in microseconds
                        magic == "4d3cb2a1" || magic == "a1b23c4d";   // in nanoseconds
    return isPcap ? "pcap" : QString();
}

bool isUtf16(const QByteArray& start)
{
    return start.startsWith("\xff\xfe") || start.startsWith("\xfe\xff");
}

bool isHexText(const QByteArray& start)
{
    const QByteArray first = start.left(inputKindBytes);
    const int lastLine = start.size() < inputKindBytes ? -1 : first.lastIndexOf('\n');
    const QByteArray text = lastLine < 0 ? first : first.left(lastLine); // the last line may be cut
    QByteArray bytes;
    HexError error;
    return !isBinary(text) && readHex(text, bytes, error) && !bytes.isEmpty();
}

bool isBinary(const QByteArray& start)
{
    return std::any_of(start.begin(), start.end(), [](char character) {
        const auto code = static_cast<unsigned char>(character);
        return (code < ' ' && (code < '\t' || code > '\r')) || code == 0x7f;
    });
}
