// Prints each datagram sent to a multicast group, and its sender. Ends when none arrives for ten seconds.
//   multicastReceiver GROUP PORT [INTERFACE]     multicastReceiver 239.1.2.3 5000 192.168.1.7

#include <gqLib/byte2Val.h>
#include <gqLib/gqSocketUnix.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[])
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: multicastReceiver GROUP PORT [INTERFACE]\n");
        return 2;
    }
    CUdpServer receiver;
    if (receiver.openMulticast(argv[1], std::atoi(argv[2]), argc > 3 ? argv[3] : "") != 1) {
        std::fprintf(stderr, "multicastReceiver: cannot join %s\n", argv[1]);
        return 1;
    }
    std::printf("listening\n");
    std::fflush(stdout);
    while (receiver.isReadable(10000) == 1) {
        char data[65536];
        std::string sender;
        int port = 0;
        const int size = receiver.recvfrom(data, sizeof data, sender, port);
        std::printf("%s:%d  %s\n", sender.c_str(), port, qPrintable(gqdb::CByte2Val::buf2str(data, size)));
        std::fflush(stdout);
    }
    return 0;
}
