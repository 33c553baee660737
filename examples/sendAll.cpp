// Sends BYTES bytes of a pattern completely, even if the peer reads slowly.
//   sendAll HOST PORT BYTES

#include <gqLib/gqSocketUnix.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

//! [sendAll]
// Returns true once the system has taken all bytes, false if the link is dead. Calls `stalled` after each send time-out
// and gives up if that returns false.
static bool sendAll(CTcpSocket& socket, const char* data, int size, bool (*stalled)(int left))
{
    int done = 0;
    while (done < size) {
        const int count = socket.send(data + done, size - done);
        if (count > 0) {
            done += count; // often fewer than passed: send the rest
        } else if (count == 0) {
            if (!stalled(size - done))
                return false;
        } else if (errno != EINTR) { // after EINTR nothing was sent: try again
            return false;
        }
    }
    return true;
}
//! [sendAll]

static bool goOn(int left)
{
    std::printf("no room, %d left\n", left);
    std::fflush(stdout);
    return true; // a real program gives up at some point
}

int main(int argc, char* argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: sendAll HOST PORT BYTES\n");
        return 2;
    }
    std::string data(std::strtoul(argv[3], nullptr, 10), '\0');
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(i % 251);

    CTcpSocket socket;
    socket.setSendOverTm(200); // also limits connecting
    if (socket.connect(argv[1], std::atoi(argv[2]), false) != 1 ||
        !sendAll(socket, data.data(), static_cast<int>(data.size()), goOn)) {
        std::fprintf(stderr, "sendAll: cannot send to %s\n", argv[1]);
        return 1;
    }
    std::printf("sent\n");
    std::fflush(stdout);
    char end;
    socket.recv(&end, 1); // waits until the peer closes: closing first would discard unsent bytes
    return 0;
}
