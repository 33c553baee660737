// A user's program: both ways to include, a codec, a wave, which needs zlib, a frame and clients without a server.

#include "byte2Rdb.h"
#include "byte2Val.h"
#include <gqLib/returningClient.h>
#include <gqLib/tcpApi.h>

#include <cstdio>

int main()
{
    gqdb::CTcpAPI client;
    QByteArray frame;
    client.addHeader(0x10, 0, 0, frame);
    gqdb::CByte2Val::int2Byte(1, frame);
    gqdb::CTcpAPI::addEnd(frame);
    if (frame.toHex() != "680400000000000000100100000000"
                         "0016") {
        std::fprintf(stderr, "wrong frame: %s\n", frame.toHex().constData());
        return 1;
    }
    gqdb::BlobWaveHead head;
    unsigned char raw[4];
    std::vector<unsigned char> stored;
    if (gqdb::CByte2Rdb::wave2Byte(head, std::vector<float>{1}, {}, raw, nullptr, stored) != 1 ||
        stored.size() != 100) {
        std::fprintf(stderr, "a wave of one sample must have 100 bytes, got %zu\n", stored.size());
        return 1;
    }
    gqdb::CReturningTcpClient tcpClient("no address", 1, 1000); // inline: needs the symbols of the base classes
    gqdb::CReturningUdpClient udpClient("no address", 1, 1000);
    if (tcpClient.ready() != -1 || udpClient.ready() != -1) {
        std::fprintf(stderr, "ready() must return -1 without an address\n");
        return 1;
    }
    return client.isConnected() ? 1 : 0;
}
