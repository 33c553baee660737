// Asks a station for its time and for a list: firstProgram PORT, with the port that `gqtool station` prints.

#include <tcpApi.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[])
{
    gqdb::CTcpAPI client;
    if (client.connect("127.0.0.1", argc > 1 ? std::atoi(argv[1]) : 0) != 1)
        return 1;
    std::printf("the station's time: %d\n", client.systemTime());

    QByteArray frame; // a request of our own: header, payload, end
    client.addHeader(0x20, 0, 0, frame);
    gqdb::CByte2Val::int2Byte(5, frame);
    client.addEnd(frame);
    std::vector<int> values;
    if (client.requestInts(frame, 5, values) == 1)
        std::printf("%zu values, the last one %d\n", values.size(), values.back());
    return client.close() == 1 ? 0 : 1;
}
