// Sends a text to a multicast group.
//   multicastSender GROUP PORT TEXT [INTERFACE]     multicastSender 239.1.2.3 5000 hello 192.168.1.7

#include <gqLib/gqSocketUnix.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char* argv[])
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: multicastSender GROUP PORT TEXT [INTERFACE]\n");
        return 2;
    }
    CUdpClient sender;
    const std::string text = argv[3];
    if (sender.openMulticast(argc > 4 ? argv[4] : "") != 1 ||
        sender.sendto(text.data(), static_cast<int>(text.size()), argv[1], std::atoi(argv[2])) < 0) {
        std::fprintf(stderr, "multicastSender: cannot send to %s\n", argv[1]);
        return 1;
    }
    return 0;
}
