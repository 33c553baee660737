// Asks a server for its state ten times a second and reconnects after failures. Runs until a signal ends it.
//   returningClient HOST PORT     against: gqtool station

#include <gqLib/gqLibUnix.h>
#include <gqLib/returningClient.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: returningClient HOST PORT\n");
        return 2;
    }
    //! [loop]
    gqdb::CReturningTcpClient client(argv[1], std::atoi(argv[2]), 3000); // time-outs in ms
    for (;;) {
        int result = client.ready(); // connects if necessary
        if (result == 1)
            result = client.systemState();
        if (client.isConnected())
            std::printf("state %d\n", result);
        else
            std::printf("no answer, %d\n", result);
        std::fflush(stdout);
        gqdb::sleep(100);
    }
    //! [loop]
}
