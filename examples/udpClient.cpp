// Asks a server for its time by datagrams.
//   udpClient HOST PORT     against: gqtool station --udp

#include <gqLib/udpApi.h>

#include <cstdio>
#include <cstdlib>

//! [readBuffer]
// A client that can read replies: the library's own class has no read buffer.
class UdpClient : public gqdb::CUdpAPI {
public:
    UdpClient() { recvBuffer = new char[rawBufferSize]; } // given back by the base class
};
//! [readBuffer]

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: udpClient HOST PORT\n");
        return 2;
    }
    UdpClient client;
    if (client.connect(argv[1], std::atoi(argv[2])) != 1) {
        std::fprintf(stderr, "can't reach %s\n", argv[1]);
        return 1;
    }
    const int time = client.systemTime();
    if (time <= 0) { // 0 after 3 seconds: ask again; -1 closed the socket: connect again
        std::fprintf(stderr, "no reply: %d\n", time);
        return 1;
    }
    std::printf("time %d\n", time);
    return 0;
}
