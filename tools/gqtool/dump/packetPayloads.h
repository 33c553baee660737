#pragma once

#include <QByteArray>
#include <QString>

// Takes the payloads out of packets: skips an IPv4 header and the TCP or UDP header after it, and a link-layer header
// (Ethernet, Linux cooked capture or loopback) before it. Payloads are in the order of the packets, those of both
// directions and of retransmissions included.
class PacketPayloads {
public:
    // Begins a packet. If it is known to be one, a packet without such headers has no payload; otherwise its bytes are
    // passed on unchanged.
    void begin(bool isKnown);

    // Adds bytes of the packet. Appends to `payload` what is known not to be a header. Returns false after an error.
    bool add(const QByteArray& bytes, QByteArray& payload);

    // Ends the packet, if one has begun. Returns false if it is cut.
    bool end(QByteArray& payload);

    const QString& error() const { return fault; }

private:
    bool isKnown = false;
    bool isPassing = false; // it is no packet
    QByteArray packet;
    QString fault;
};
