#pragma once

#include <QByteArray>
#include <QString>

// Takes the payloads out of packets: skips an IPv4 header and the TCP or UDP header after it, and a link-layer header
// (Ethernet, Linux cooked capture or loopback) before it. Payloads are in the order of the packets, those of both
// directions and of retransmissions included.
class PacketPayloads {
public:
    // Begins a packet. Bytes without such headers have no payload if they are known to be a packet; otherwise they are
    // passed on unchanged.
    void begin(bool isKnownPacket);

    // Adds bytes of the packet. Appends to `payload` what is known not to be a header. Returns false after an error.
    bool add(const QByteArray& bytes, QByteArray& payload);

    // Ends the packet, if one has begun. Returns false if it is cut.
    bool end(QByteArray& payload);

    const QString& error() const { return fault; }

private:
    bool isKnown = false;
    bool isPassing = false; // all bytes are passed on: they are no packet
    QByteArray packet;
    QString fault;
};
