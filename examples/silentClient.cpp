// Prints a server's state and nothing else: suppresses the line that the library prints.
//   silentClient HOST PORT

#include <gqLib/tcpApi.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

//! [silent]
int readStateSilently(const std::string& host, int port)
{
    std::cout.setstate(std::ios::failbit);
    gqdb::CTcpAPI client; // sets its time-outs
    std::cout.clear();
    const int result = client.connect(host, port);
    return result == 1 ? client.systemState() : result;
}
//! [silent]

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: silentClient HOST PORT\n");
        return 2;
    }
    std::printf("%d\n", readStateSilently(argv[1], std::atoi(argv[2])));
    return 0;
}
