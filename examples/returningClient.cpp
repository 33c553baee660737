// Asks a server for its state ten times a second and reconnects after failures. Runs until a signal ends it.
//   returningClient HOST PORT     against: gqtool station

#include <gqLib/gqLibUnix.h>
#include <gqLib/gqSocketUnix.h>
#include <gqLib/tcpApi.h>

#include <cstdio>
#include <cstdlib>

//! [comeBack]
class ReturningClient : public gqdb::CTcpAPI {
public:
    // Call before each request. After a failure it discards the partial reply and opens a new socket with time-outs.
    void comeBack()
    {
        if (isConnected())
            return;
        close();
        recvFrame.clear();
        recvFrameSize = 0;
        socket->open();
        setRecvOverTm(recvOverTm); // the values set last
        setSendOverTm(sendOverTm);
    }
};
//! [comeBack]

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: returningClient HOST PORT\n");
        return 2;
    }
    //! [loop]
    ReturningClient client;
    client.connect(argv[1], std::atoi(argv[2])); // once: it stores the address; the loop handles a failure
    for (;;) {
        client.comeBack();
        const int state = client.systemState(); // connects if necessary
        if (client.isConnected())
            std::printf("state %d\n", state);
        else
            std::printf("no answer, %d\n", state);
        std::fflush(stdout);
        gqdb::sleep(100);
    }
    //! [loop]
}
