#include "capturedPackets.h"

#include <netinet/ip.h>
#include <netinet/tcp.h>
#include <netinet/udp.h>

#include <cstddef>

// --- IPv4 ---------------------------------------------------------------------------------------------------------

// The Internet checksum (RFC 1071): the complement of the sum of 2-byte words in one's complement.
static uint16_t checksum(const QByteArray& bytes)
{
    uint32_t sum = 0;
    for (int i = 0; i < bytes.size(); ++i)
        sum += static_cast<uint32_t>(static_cast<unsigned char>(bytes.at(i))) << (i % 2 == 0 ? 8 : 0);
    while (sum > 0xffff)
        sum = (sum & 0xffff) + (sum >> 16);
    return htons(static_cast<uint16_t>(~sum));
}

static QByteArray bytesOf(const void* head, size_t size)
{
    return {static_cast<const char*>(head), static_cast<int>(size)};
}

static void set(QByteArray& bytes, size_t offset, uint16_t value)
{
    bytes.replace(static_cast<int>(offset), sizeof value, bytesOf(&value, sizeof value));
}

// Writes a TCP segment or datagram as a packet, with the checksum that is still missing at `checkOffset`.
static void write(CaptureFile& file, const sockaddr_in& from, const sockaddr_in& to, uint8_t protocol,
                  QByteArray content, size_t checkOffset)
{
    struct {
        in_addr source;
        in_addr destination;
        uint8_t zero;
        uint8_t protocol;
        uint16_t size;
    } const pseudoHead = {from.sin_addr, to.sin_addr, 0, protocol, htons(static_cast<uint16_t>(content.size()))};
    const uint16_t check = checksum(bytesOf(&pseudoHead, sizeof pseudoHead) + content);
    set(content, checkOffset, check == 0 && protocol == IPPROTO_UDP ? 0xffff : check); // 0: a datagram without one

    ip head = {};
    head.ip_v = 4;
    head.ip_hl = sizeof head / 4;
    head.ip_len = htons(static_cast<uint16_t>(sizeof head + static_cast<size_t>(content.size())));
    head.ip_off = htons(IP_DF);
    head.ip_ttl = IPDEFTTL;
    head.ip_p = protocol;
    head.ip_src = from.sin_addr;
    head.ip_dst = to.sin_addr;
    head.ip_sum = checksum(bytesOf(&head, sizeof head));
    file.write(bytesOf(&head, sizeof head) + content);
}

// --- TCP ----------------------------------------------------------------------------------------------------------

// Largest segment, no operation, window scale: no window of the capture is ever full.
static const QByteArray openingOptions = QByteArray::fromHex("0204ffd7"
                                                             "01"
                                                             "03030e");

CapturedConnection::CapturedConnection(CaptureFile& captureFile, int number, const sockaddr_in& client,
                                       const sockaddr_in& station)
    : file(captureFile), ends{{{client, static_cast<uint32_t>(number) << 16U}, // differs if a port is used again
                               {station, (static_cast<uint32_t>(number) << 16U) + (1U << 31U)}}}
{
}

void CapturedConnection::send(Side from, int flags, const QByteArray& bytes)
{
    End& sender = end(from);
    const End& receiver = end(from == Side::client ? Side::station : Side::client);
    const bool isOpening = (flags & TH_SYN) != 0;
    const QByteArray options = isOpening ? openingOptions : QByteArray();
    tcphdr head = {};
    head.th_sport = sender.address.sin_port;
    head.th_dport = receiver.address.sin_port;
    head.th_seq = htonl(sender.next);
    head.th_ack = (flags & TH_ACK) != 0 ? htonl(receiver.next) : 0;
    head.th_off = static_cast<uint8_t>((sizeof head + static_cast<size_t>(options.size())) / 4) & 0xfU;
    head.th_flags = static_cast<uint8_t>(flags);
    head.th_win = htons(0xffff);
    write(file, sender.address, receiver.address, IPPROTO_TCP, bytesOf(&head, sizeof head) + options + bytes,
          offsetof(tcphdr, th_sum));
    sender.next += static_cast<uint32_t>(bytes.size()) + (isOpening || (flags & TH_FIN) != 0 ? 1 : 0);
}

void CapturedConnection::begun()
{
    send(Side::client, TH_SYN);
}

void CapturedConnection::accepted()
{
    isAccepted = true;
    send(Side::station, TH_SYN | TH_ACK);
    send(Side::client, TH_ACK);
}

void CapturedConnection::refused()
{
    send(Side::station, TH_RST | TH_ACK);
}

void CapturedConnection::piece(Side from, const QByteArray& bytes)
{
    send(from, TH_PUSH | TH_ACK, bytes);
}

void CapturedConnection::ended(Side from)
{
    send(from, TH_FIN | TH_ACK);
    send(from == Side::client ? Side::station : Side::client, TH_ACK);
}

void CapturedConnection::broken(Side by)
{
    send(by, isAccepted ? TH_RST | TH_ACK : TH_RST);
}

// --- UDP ----------------------------------------------------------------------------------------------------------

void captureDatagram(CaptureFile& file, const sockaddr_in& from, const sockaddr_in& to, const QByteArray& bytes)
{
    udphdr head = {};
    head.uh_sport = from.sin_port;
    head.uh_dport = to.sin_port;
    head.uh_ulen = htons(static_cast<uint16_t>(sizeof head + static_cast<size_t>(bytes.size())));
    write(file, from, to, IPPROTO_UDP, bytesOf(&head, sizeof head) + bytes, offsetof(udphdr, uh_sum));
}
