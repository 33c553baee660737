// Asks a server for its time by datagrams.
//   udpClient HOST PORT     against: gqtool station --udp

#include <gqLib/udpApi.h>

#include <cstdio>
#include <cstdlib>

// A client that can read replies: the library's own class has no read buffer.
class UdpClient : public gqdb::CUdpAPI {
public:
    UdpClient() { recvBuffer = new char[rawBufferSize]; } // given back by the base class
};

int main(int argc, char* argv[])
{
    UdpClient client;
    if (argc != 3 || client.connect(argv[1], std::atoi(argv[2])) != 1) {
        std::fprintf(stderr, "usage: udpClient HOST PORT\n");
        return 2;
    }
    const int time = client.systemTime();
    if (time == 0) // 3 seconds, unless setRecvOverTm says otherwise; the socket stays open, so ask again
        std::printf("no reply\n");
    else
        std::printf("time %d\n", time);
    return time > 0 ? 0 : 1;
}
