#include "gqtool/dump/packetPayloads.h"

#include "toolInput.h"

// Payloads of the packets in a dump.

struct ExtractedPayload {
    QByteArray bytes;
    QString error;
};

static ExtractedPayload payloadOf(const QByteArray& packet, bool isKnown, int pieceSize)
{
    PacketPayloads packets;
    packets.begin(isKnown);
    ExtractedPayload payload;
    for (int pos = 0; pos < packet.size(); pos += pieceSize) {
        if (!packets.add(packet.mid(pos, pieceSize), payload.bytes))
            return {payload.bytes, packets.error()};
    }
    packets.end(payload.bytes);
    payload.error = packets.error();
    return payload;
}

static void readAny(Reading& reading)
{
    InputBytes input(reading);
    const bool isKnown = input.number(2) == 0;
    const int pieceSize = input.number() + 1;
    const QByteArray packet = input.rest();
    const ExtractedPayload whole = payloadOf(packet, isKnown, std::max<int>(packet.size(), 1));
    const ExtractedPayload pieces = payloadOf(packet, isKnown, pieceSize);
    require(pieces.error == whole.error && pieces.bytes == whole.bytes, "the pieces of a packet must not matter");
    require(isKnown || whole.error.isEmpty(), "bytes that are no packet must pass");
    require(packet.contains(whole.bytes), "the payload must be bytes of the packet");
    require(whole.error.isEmpty() || whole.bytes.isEmpty(), "a faulty packet must have no payload");
}

static QByteArray bigEndian(int value)
{
    return QByteArray(1, static_cast<char>(value >> 8)) + static_cast<char>(value);
}

static QByteArray linkHeader(int kind)
{
    switch (kind) {
    case 0:
        return {};
    case 1:
        return QByteArray(12, '\x02') + bigEndian(0x0800); // Ethernet
    case 2:
        return QByteArray(12, '\x02') + bigEndian(0x8100) + bigEndian(7) + bigEndian(0x0800);
    case 3:
        return QByteArray(14, '\x01') + bigEndian(0x0800); // cooked
    case 4:
        return bigEndian(0x0800) + QByteArray(18, '\x01'); // cooked, version 2
    default:
        return QByteArray::fromHex("02000000");
    }
}

// The first bytes select headers, whose lengths and positions are known here.
static void readMade(Reading& reading)
{
    InputBytes input(reading);
    const QByteArray link = linkHeader(input.number(6));
    const bool isKnown = input.number(2) == 0;
    const bool isTcp = input.number(2) == 0;
    const int ipWords = 5 + input.number(11);
    const int tcpWords = 5 + input.number(11);
    const int paddingSize = input.number(61);
    const int fragment = input.number() == 0 ? 0x2000 : 0x4000; // more fragments follow, or none may
    const int missing = input.number() == 0 ? 1 : 0;
    const int pieceSize = input.number() + 1;
    const QByteArray content = input.rest();

    const QByteArray transport =
        isTcp ? QByteArray(12, '\x01') + static_cast<char>(tcpWords << 4) + QByteArray(4 * tcpWords - 13, '\x01')
              : QByteArray(8, '\x01');
    const int total = 4 * ipWords + transport.size() + content.size();
    const QByteArray ip = QByteArray(1, static_cast<char>(0x40 + ipWords)) + '\0' + bigEndian(total) + bigEndian(1) +
                          bigEndian(fragment) + '\x40' + static_cast<char>(isTcp ? 6 : 17) +
                          QByteArray(4 * ipWords - 10, '\x01');
    QByteArray packet = link + ip + transport + content;
    if (missing == 0)
        packet += QByteArray(paddingSize, '\0');
    else
        packet.chop(1);

    const ExtractedPayload payload = payloadOf(packet, isKnown, pieceSize);
    const bool isFaulty = fragment == 0x2000 || missing > 0;
    require(payload.error.isEmpty() != (isFaulty && isKnown),
            "a known packet must be refused if and only if it is a fragment or cut");
    const QByteArray expected = !isFaulty ? content : isKnown ? QByteArray() : packet;
    if (payload.bytes != expected)
        fail("the payload is " + payload.bytes.toHex(' ').toStdString() + ", must be " +
             expected.toHex(' ').toStdString());
}

const std::vector<Target> packetPayloadTargets = {
    toolTarget("packetBytes", readAny),
    toolTarget("packetPayload", readMade),
};
