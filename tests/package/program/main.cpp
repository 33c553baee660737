// A user's program: both ways to include, a codec, a frame and a client without a server.

#include "byte2Val.h"
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
    return client.isConnected() ? 1 : 0;
}
