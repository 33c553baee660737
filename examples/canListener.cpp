// Prints the data bytes of each CAN frame on an interface. Ends when none arrives for ten seconds.
//   canListener can0

#include <gqLib/byte2Val.h>
#include <gqLib/gqSocketUnix.h>

#include <cstdio>

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: canListener INTERFACE\n");
        return 2;
    }
    CSocketCan can;
    if (can.open(argv[1], 0, 0, false) != 1) {
        std::fprintf(stderr, "canListener: cannot open %s\n", argv[1]);
        return 1;
    }
    std::printf("\n");                   // the last line that open prints has no line end
    while (can.isReadable(10000) == 1) { // recv itself has no time-out
        char data[8];
        const int size = can.recv(data, sizeof data);
        std::printf("%s\n", qPrintable(gqdb::CByte2Val::buf2str(data, size)));
        std::fflush(stdout);
    }
    can.close(); // the destructor does not
    return 0;
}
