#pragma once

#include "captureFile.h"
#include "traceOutput.h"

#include <netinet/in.h>

#include <array>
#include <cstdint>

// The packets of a traced client, as if it had talked to the station directly: with the addresses of both, complete
// handshakes and consistent sequence numbers. Neither the relay nor its addresses appear.

// A TCP connection. Each call writes the packets of what has happened.
class CapturedConnection {
public:
    static constexpr int largestPiece = 65535 - 40; // fills an IPv4 packet

    CapturedConnection(CaptureFile& captureFile, int number, const sockaddr_in& client, const sockaddr_in& station);

    void begun();                                   // the client requests the connection
    void accepted();                                // the station accepts it
    void refused();                                 // the station refuses it
    void piece(Side from, const QByteArray& bytes); // of at most largestPiece bytes
    void ended(Side from);                          // that side ends its stream
    void broken(Side by);

private:
    struct End {
        sockaddr_in address;
        uint32_t next; // sequence number of the next byte
    };

    End& end(Side side) { return ends[side == Side::client ? 0 : 1]; }
    void send(Side from, int flags, const QByteArray& bytes = {});

    CaptureFile& file;
    std::array<End, 2> ends;
    bool isAccepted = false;
};

void captureDatagram(CaptureFile& file, const sockaddr_in& from, const sockaddr_in& to, const QByteArray& bytes);
