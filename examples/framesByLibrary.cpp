// Asks a station for integers, as framesByHand does, with the same bytes on the wire.
//   framesByLibrary HOST PORT COUNT     against: gqtool station

#include <gqLib/returningClient.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

//! [build]
static QByteArray buildRequest(gqdb::CSocketAPI& client, unsigned char command, int value)
{
    QByteArray frame;
    client.addHeader(command, 0, 0, frame); // counts the sequence
    gqdb::CByte2Val::int2Byte(value, frame);
    gqdb::CSocketAPI::addEnd(frame); // sets the length
    return frame;
}
//! [build]

int main(int argc, char* argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: framesByLibrary HOST PORT COUNT\n");
        return 2;
    }
    //! [use]
    gqdb::CReturningTcpClient client(argv[1], std::atoi(argv[2]), 3000);
    int result = client.ready(); // connects, reads the greeting
    if (result != 1) {
        std::fprintf(stderr, "framesByLibrary: no server at %s: %d\n", argv[1], result);
        return 1;
    }
    std::vector<int> values;
    result = client.requestInts(buildRequest(client, 0x20, std::atoi(argv[3])), 0, values);
    if (result != 1) {
        std::fprintf(stderr, "framesByLibrary: no values: %d\n", result);
        return 1;
    }
    //! [use]
    for (const int value : values)
        std::printf("%d\n", value);
    return 0;
}
