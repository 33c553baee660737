// Sets the state of a server to each value in turn, by datagrams, and prints the replies.
//   udpClient HOST PORT MS STATE...     against: gqtool station --udp; MS is the longest wait for a reply

#include <gqLib/returningClient.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

//! [client]
class UdpClient : public gqdb::CReturningUdpClient {
public:
    using CReturningUdpClient::CReturningUdpClient;

    // Sends one integer up to `attempts` times and reads the integer of the reply. Returns 1, or the last code.
    int request(unsigned char command, int payload, int attempts, int& reply)
    {
        int result = 0;
        for (; attempts > 0; --attempts) {
            int len = 0;
            result = ready();
            if (result == 1)
                result = sendInt(command, payload);
            if (result == 1)
                result = recvDatas(len);
            if (result == 1)
                result = readInt(len, reply);
            if (result != 0 && result != -1)
                break; // a reply, or the code of an error frame
        }
        return result;
    }

private:
    int readInt(int len, int& value)
    {
        // -10 after an error frame with code 1, which leaves none.
        len = std::min(len, static_cast<int>(recvFrame.size()) - headerSize);
        return len < 4 ? -5 : parseInt(recvFrame.constData() + headerSize, len, value);
    }
};
//! [client]

int main(int argc, char* argv[])
{
    if (argc < 5) {
        std::fprintf(stderr, "usage: udpClient HOST PORT MS STATE...\n");
        return 2;
    }
    //! [use]
    UdpClient client(argv[1], std::atoi(argv[2]), std::atoi(argv[3]));
    for (int i = 4; i < argc; ++i) {
        int reply = 0;
        const int result = client.request(6, std::atoi(argv[i]), 3, reply); // setState
        if (result != 1) {
            std::fprintf(stderr, "no reply: %d\n", result);
            return 1;
        }
        std::printf("%d\n", reply);
    }
    //! [use]
    return 0;
}
