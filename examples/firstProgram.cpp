// Asks a station for its time and for a list. Usage: firstProgram PORT, the port that `gqtool station` prints.

#include <gqLib/tcpApi.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[])
{
    //! [connect]
    gqdb::CTcpAPI client;
    if (client.connect("127.0.0.1", argc > 1 ? std::atoi(argv[1]) : 0) != 1) {
        std::puts("no station");
        return 1;
    }
    //! [connect]
    //! [ask]
    const int time = client.systemTime();
    if (client.isConnected()) // only this distinguishes a reply from a failure
        std::printf("time %d\n", time);
    //! [ask]

    //! [request]
    QByteArray frame; // a request of your own: header, payload, end
    client.addHeader(0x20, 0, 0, frame);
    gqdb::CByte2Val::int2Byte(5, frame);
    gqdb::CTcpAPI::addEnd(frame);
    std::vector<int> values;
    if (client.requestInts(frame, 5, values) == 1)
        std::printf("%zu values, the last one %d\n", values.size(), values.back());
    //! [request]
}
