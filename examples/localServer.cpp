// Echoes what each client sends. Serves one client at a time, from this machine only, until a signal ends it.
//   localServer

#include <gqLib/gqSocketUnix.h>

#include <sys/socket.h>

#include <cstdio>
#include <memory>

//! [listenLocally]
// Listens on loopback only. "127.0.0.1" would bind every interface.
bool listenLocally(CTcpServer& server, int port)
{
    return server.open("127.1", port, 5) == 1;
}
//! [listenLocally]

//! [frugal]
class FrugalServer : public CTcpServer {
public:
    // Returns a connection that the caller deletes, or null on failure. Leaves no second descriptor open.
    CTcpSocket* acceptOne()
    {
        const int descriptor = ::accept(*handle, nullptr, nullptr);
        if (descriptor < 0)
            return nullptr;
        CTcpSocket* connection = new CTcpSocket;
        connection->close();
        connection->setSocket({descriptor});
        return connection;
    }
};
//! [frugal]

int main()
{
    FrugalServer server;
    std::string address;
    int port = 0;
    if (!listenLocally(server, port) || server.getSockName(address, port) != 1) {
        std::fprintf(stderr, "localServer: cannot listen\n");
        return 1;
    }
    std::printf("listening on %s:%d\n", address.c_str(), port);
    std::fflush(stdout);
    while (const std::unique_ptr<CTcpSocket> connection{server.acceptOne()}) {
        char data[4096];
        int size = 0;
        while ((size = connection->recv(data, sizeof data)) > 0)
            connection->send(data, size);
    }
    return 1;
}
