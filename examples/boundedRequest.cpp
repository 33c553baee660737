// Asks a server for its state and waits at most MS milliseconds for the whole reply.
//   boundedRequest HOST PORT MS

#include <gqLib/returningClient.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

//! [client]
class BoundedClient : public gqdb::CReturningTcpClient {
public:
    using CReturningTcpClient::CReturningTcpClient;

    // Sends a finished frame and reads the integer of the reply; call ready() first. Returns 1, 0 if the reply is not
    // complete within `ms`, or another result code of the client.
    int requestIntWithin(int ms, const QByteArray& frame, int& value)
    {
        using namespace std::chrono;
        const auto end = steady_clock::now() + milliseconds(ms);
        if (sendDatas(frame) != 1)
            return -1;
        int pos = 0;
        int count = 0;
        do {
            const auto left = duration_cast<milliseconds>(end - steady_clock::now()).count();
            if (left <= 0 || socket->isReadable(static_cast<int>(left)) != 1) {
                close();
                return 0;
            }
            count = socket->recv(recvBuffer, rawBufferSize);
            if (count <= 0) {
                close();
                return -1;
            }
            pos = 0;
        } while (!recvData(recvBuffer, count, pos));

        int len = 0;
        if (!isRecvOk(len)) {
            close();
            return 0;
        }
        // The length field may exceed the frame.
        len = std::min(len, static_cast<int>(recvFrame.size()) - headerSize);
        const int result = parseInt(recvFrame.constData() + headerSize, len, value);
        const bool isError = static_cast<unsigned char>(recvFrame.at(9)) == errorCommand;
        return result == 1 && isError ? value : result;
    }
};
//! [client]

int main(int argc, char* argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: boundedRequest HOST PORT MS\n");
        return 2;
    }
    BoundedClient client(argv[1], std::atoi(argv[2]), 3000);
    if (client.ready() != 1) {
        std::fprintf(stderr, "boundedRequest: cannot reach %s\n", argv[1]);
        return 1;
    }
    QByteArray frame;
    client.addHeader(1, 0, 0, frame); // systemState
    gqdb::CByte2Val::int2Byte(0, frame);
    gqdb::CTcpAPI::addEnd(frame);
    int state = 0;
    const int result = client.requestIntWithin(std::atoi(argv[3]), frame, state);
    if (result != 1) {
        std::fprintf(stderr, "no state: %d\n", result);
        return 1;
    }
    std::printf("state %d\n", state);
    return 0;
}
