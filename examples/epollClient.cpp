// Asks several servers for their state at the same time, in one thread with epoll(7): the program reads its sockets
// itself and uses the library for the frames.
//   epollClient MS HOST:PORT...     against: gqtool station; MS is the longest wait

#include <gqLib/udpApi.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <string>

#include <arpa/inet.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

//! [reader]
// Assembles the frames of a connection from the bytes that the program has read. It opens no socket.
class FrameReader : public gqdb::CUdpAPI {
public:
    // Call recvData(bytes, count, pos) until it returns false. Each time it returns true, a frame is complete:
    // takeInt() reads the integer in it and drops the frame. Returns false with a code in `value` if there is none:
    // 0 for a bad frame, -5 if the payload is too short, the code of an error frame, or -2 if it has none.
    bool takeInt(int& value)
    {
        int len = 0;
        const bool ok = isRecvOk(len);
        const bool error = ok && static_cast<unsigned char>(recvFrame.at(9)) == errorCommand;
        value = 0;
        if (ok) {
            // The length field may exceed the frame.
            len = std::min(len, static_cast<int>(recvFrame.size()) - headerSize);
            if (parseInt(recvFrame.constData() + headerSize, len, value) != 1)
                value = error ? -2 : -5;
        }
        const bool read = ok && !error && len >= 4;
        recvFrame.resize(0);
        recvFrameSize = 0;
        return read;
    }
};
//! [reader]

// One connection: waits for the greeting, sends a request, waits for the reply.
class Link {
public:
    explicit Link(const std::string& endpoint) : name(endpoint)
    {
        const size_t colon = name.find(':');
        sockaddr_in peer = {};
        peer.sin_family = AF_INET;
        if (colon == std::string::npos || inet_pton(AF_INET, name.substr(0, colon).c_str(), &peer.sin_addr) != 1)
            return;
        peer.sin_port = htons(static_cast<uint16_t>(std::atoi(name.c_str() + colon + 1)));
        descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0 && errno != EINPROGRESS)
            finish("failed");
    }
    ~Link() { finish("no answer"); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    int number() const { return descriptor; }

    //! [readable]
    // Call when the socket is readable.
    void readAll()
    {
        char bytes[4096];
        const ssize_t count = ::recv(descriptor, bytes, sizeof bytes, 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (count <= 0) {
            finish("closed");
            return;
        }
        int pos = 0;
        while (descriptor >= 0 && reader.recvData(bytes, static_cast<int>(count), pos))
            useFrame();
    }
    //! [readable]

private:
    void useFrame()
    {
        int value = 0;
        const bool read = reader.takeInt(value);
        if (!greeted && read && value > 0) {
            greeted = true;
            sendRequest();
        } else {
            finish(greeted && read ? "state " + std::to_string(value) : "refused: " + std::to_string(value));
        }
    }

    //! [request]
    void sendRequest()
    {
        QByteArray frame;
        reader.addHeader(gqdb::CSocketAPI::systemStateCommand, 0, 0, frame);
        gqdb::CByte2Val::int2Byte(0, frame);
        gqdb::CSocketAPI::addEnd(frame); // not that of CUdpAPI, which pads datagrams
        if (::send(descriptor, frame.constData(), static_cast<size_t>(frame.size()), MSG_NOSIGNAL) != frame.size())
            finish("closed");
    }
    //! [request]

    void finish(const std::string& result)
    {
        if (descriptor < 0)
            return;
        std::printf("%s %s\n", name.c_str(), result.c_str());
        ::close(descriptor);
        descriptor = -1;
    }

    const std::string name;
    FrameReader reader;
    int descriptor = -1;
    bool greeted = false;
};

int main(int argc, char* argv[])
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: epollClient MS HOST:PORT...\n");
        return 2;
    }
    const int poller = epoll_create1(0);
    std::list<Link> links;
    int open = 0;
    for (int i = 2; i < argc; ++i) {
        Link& link = links.emplace_back(argv[i]);
        epoll_event event = {};
        event.events = EPOLLIN;
        event.data.ptr = &link;
        if (epoll_ctl(poller, EPOLL_CTL_ADD, link.number(), &event) == 0)
            ++open;
        else
            std::printf("%s is no address\n", argv[i]);
    }
    epoll_event event = {};
    while (open > 0 && epoll_wait(poller, &event, 1, std::atoi(argv[1])) == 1) {
        auto* link = static_cast<Link*>(event.data.ptr);
        link->readAll();
        if (link->number() < 0) // closing has removed it from the set
            --open;
    }
    ::close(poller);
    return 0;
}
