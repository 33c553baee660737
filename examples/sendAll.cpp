// Sends bytes of a pattern to a peer that may be slow, all of them.
//   sendAll HOST PORT BYTES

#include <gqLib/gqSocketUnix.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

//! [sendAll]
// True once all bytes are taken; false if the link is dead. Tells `stalled` each time that there was no room in time,
// which ends the attempt if it answers false.
static bool sendAll(CTcpSocket& socket, const char* data, int size, bool (*stalled)(int left))
{
    int done = 0;
    while (done < size) {
        const int count = socket.send(data + done, size - done);
        if (count > 0) {
            done += count; // often less than was asked for: the rest is ours to send
        } else if (count == 0) {
            if (!stalled(size - done))
                return false;
        } else if (errno != EINTR) { // a signal came ahead of the first byte: nothing was sent, ask again
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
    return true; // a program with something better to do gives up after a while
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
    socket.setSendOverTm(200); // holds for connecting too
    if (socket.connect(argv[1], std::atoi(argv[2]), false) != 1 ||
        !sendAll(socket, data.data(), static_cast<int>(data.size()), goOn)) {
        std::fprintf(stderr, "can't send to %s\n", argv[1]);
        return 1;
    }
    std::printf("sent\n");
    std::fflush(stdout);
    char end;
    socket.recv(&end, 1); // waits until the other end closes: closing first would drop what is still on the way
    return 0;
}
