// Sends each word by a separate write, with Nagle's algorithm off, so that no write waits for an acknowledgement.
//   promptSocket HOST PORT WORD...

#include <gqLib/gqSocketUnix.h>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>
#include <string>

//! [prompt]
class PromptSocket : public CTcpSocket {
public:
    // Call after each open.
    bool sendAtOnce()
    {
        const int on = 1;
        return setsockopt(*handle, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0;
    }
};
//! [prompt]

int main(int argc, char* argv[])
{
    if (argc < 4) {
        std::fprintf(stderr, "usage: promptSocket HOST PORT WORD...\n");
        return 2;
    }
    PromptSocket socket; // the constructor opens it
    if (!socket.sendAtOnce() || socket.connect(argv[1], std::atoi(argv[2]), false) != 1) {
        std::fprintf(stderr, "promptSocket: cannot reach %s\n", argv[1]);
        return 1;
    }
    for (int i = 3; i < argc; ++i) {
        const std::string word = std::string(argv[i]) + "\n";
        if (socket.send(word.data(), static_cast<int>(word.size())) != static_cast<int>(word.size()))
            return 1;
    }
    char end;
    socket.recv(&end, 1); // waits until the peer closes: closing first would discard unsent bytes
    return 0;
}
