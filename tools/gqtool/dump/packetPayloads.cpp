#include "packetPayloads.h"
#include "shared/text.h"

#include <algorithm>

static const int largestPacket = 65535;
static const int largestLink = 20;    // header
static const int largestPadding = 60; // of Ethernet, and its check sequence
static const int smallestIp = 20;     // header

static int byteAt(const QByteArray& bytes, int pos)
{
    return pos < bytes.size() ? static_cast<unsigned char>(bytes[pos]) : 0;
}

static int wordAt(const QByteArray& bytes, int pos) // in network order
{
    return byteAt(bytes, pos) * 256 + byteAt(bytes, pos + 1);
}

// Returns true if an IPv4 header with TCP or UDP can begin there.
static bool hasIpHeader(const QByteArray& packet, int pos)
{
    const int size = 4 * (byteAt(packet, pos) & 15);
    const int protocol = byteAt(packet, pos + 9);
    return byteAt(packet, pos) >> 4 == 4 && size >= smallestIp && packet.size() >= pos + size &&
           wordAt(packet, pos + 2) > size && (protocol == 6 || protocol == 17);
}

// Returns the position of the IPv4 header, or -1 if there is none.
static int findIpHeader(const QByteArray& packet)
{
    const int ipType = 0x0800;
    if (hasIpHeader(packet, 0))
        return 0;
    if (wordAt(packet, 12) == ipType && hasIpHeader(packet, 14)) // Ethernet
        return 14;
    if (wordAt(packet, 12) == 0x8100 && wordAt(packet, 16) == ipType && hasIpHeader(packet, 18)) // with a VLAN
        return 18;
    if (wordAt(packet, 14) == ipType && hasIpHeader(packet, 16)) // Linux cooked capture
        return 16;
    if (wordAt(packet, 0) == ipType && hasIpHeader(packet, 20)) // version 2 of it
        return 20;
    const bool isLoopback = packet.startsWith(QByteArray::fromHex("02000000"));
    return isLoopback && hasIpHeader(packet, 4) ? 4 : -1;
}

struct PacketParts {
    int start = 0;
    int size = 0;
    int excess = 0; // bytes after the packet
    QString fault;
};

// Finds the payload of a packet whose IPv4 header begins at `ip`.
static PacketParts findPayload(const QByteArray& packet, int ip)
{
    const int total = wordAt(packet, ip + 2);
    const int transport = ip + 4 * (byteAt(packet, ip) & 15);
    const bool isTcp = byteAt(packet, ip + 9) == 6;
    const int headerSize = isTcp ? 4 * (byteAt(packet, transport + 12) >> 4) : 8;
    PacketParts parts;
    parts.start = transport + headerSize;
    parts.size = ip + total - parts.start;
    parts.excess = packet.size() - ip - total;
    if ((wordAt(packet, ip + 6) & 0x3fff) != 0)
        parts.fault = Text::tr("a packet is a fragment; gqtool does not reassemble it");
    else if (parts.excess < 0)
        parts.fault =
            Text::tr("a packet needs %1 bytes, got %2; capture with tcpdump -s 0").arg(total).arg(packet.size() - ip);
    else if (parts.size < 0 || (isTcp && headerSize < 20))
        parts.fault = Text::tr("the %1 header of a packet is malformed").arg(isTcp ? "TCP" : "UDP");
    return parts;
}

void PacketPayloads::begin(bool isKnownPacket)
{
    isKnown = isKnownPacket;
    isPassing = false;
    packet.clear();
}

bool PacketPayloads::add(const QByteArray& bytes, QByteArray& payload)
{
    if (isPassing) {
        payload += bytes;
        return true;
    }
    packet += bytes;
    const bool isTooLong = packet.size() > largestLink + largestPacket + largestPadding;
    if (isKnown) {
        fault = isTooLong ? Text::tr("a packet must have at most %1 bytes").arg(largestPacket) : QString();
        return !isTooLong;
    }
    const bool hasHeader = packet.size() < largestLink + 4 * 15 || findIpHeader(packet) >= 0;
    if (isTooLong || !hasHeader) {
        payload += packet;
        packet.clear();
        isPassing = true;
    }
    return true;
}

bool PacketPayloads::end(QByteArray& payload)
{
    const int ip = findIpHeader(packet);
    if (ip >= 0) {
        const PacketParts found = findPayload(packet, ip);
        if (found.fault.isEmpty() && (isKnown || found.excess <= largestPadding)) {
            payload += packet.mid(found.start, found.size);
            packet.clear();
        } else if (isKnown) {
            fault = found.fault;
        }
    }
    if (!isKnown)
        payload += packet;
    packet.clear();
    return fault.isEmpty();
}
