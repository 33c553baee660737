// Sends two integers by the ready-made command setTime. `gqtool station` sets its clock to the first.
//   setServerTime HOST PORT FIRST SECOND

#include <gqLib/tcpApi.h>

#include <cstdio>
#include <cstdlib>

//! [setServerTime]
int setServerTime(gqdb::CTcpAPI& client, int first, int second)
{
    const int result = client.checkConnect();
    return result == 1 ? client.setTime(first, second) : result;
}
//! [setServerTime]

int main(int argc, char* argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "usage: setServerTime HOST PORT FIRST SECOND\n");
        return 2;
    }
    gqdb::CTcpAPI client;
    client.connect(argv[1], std::atoi(argv[2]));
    client.close(); // the link is now down, as after any failure
    const int answer = setServerTime(client, std::atoi(argv[3]), std::atoi(argv[4]));
    if (!client.isConnected()) {
        std::fprintf(stderr, "no answer: %d\n", answer);
        return 1;
    }
    std::printf("answer %d\n", answer);
    return 0;
}
