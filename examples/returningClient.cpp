// Asks a server for its state ten times a second, and comes back when the server does. Ends by a signal.
//   returningClient HOST PORT     against: gqtool station

#include <gqLib/gqLibUnix.h>
#include <gqLib/gqSocketUnix.h>
#include <gqLib/tcpApi.h>

#include <cstdio>
#include <cstdlib>

//! [comeBack]
class ReturningClient : public gqdb::CTcpAPI {
public:
    // Call before each request. After a failure it drops all that was left and opens a socket with the time-outs.
    void comeBack()
    {
        if (isConnected())
            return;
        close();
        recvFrame.clear();
        recvFrameSize = 0;
        socket->open();
        setRecvOverTm(recvOverTm); // the times that were set last
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
    client.connect(argv[1], std::atoi(argv[2])); // once, for it keeps the address; the loop sees to a failure
    for (;;) {
        client.comeBack();
        const int state = client.systemState(); // connects if need be
        if (client.isConnected())
            std::printf("state %d\n", state);
        else
            std::printf("no answer, %d\n", state);
        std::fflush(stdout);
        gqdb::sleep(100);
    }
    //! [loop]
}
