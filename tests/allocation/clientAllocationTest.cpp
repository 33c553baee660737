// Each allocation of the clients fails: in building, sending, receiving and parsing, and in connecting. The flag, the
// socket and the elements received before stay as they were. A request on the same link works again once the unread
// rest of the reply is gone, and a CReturningTcpClient or CReturningUdpClient after close() and ready().

#include "returningClient.h"
#include "support/failingAllocations.h"
#include "support/frames.h"
#include "support/goldenFile.h"
#include "support/openTcpClient.h"
#include "support/openUdpClient.h"
#include "support/plainSockets.h"

#include <QDir>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using gqdb::CReturningTcpClient;
using gqdb::CReturningUdpClient;
using gqdb::CSocketAPI;
using gqdb::CTcpAPI;
using gqdb::CUdpAPI;

using Ints = std::vector<int>;
using Bytes = std::vector<unsigned char>;

// --- Replies ------------------------------------------------------------------------------------------------------

static QByteArray frameOf(const std::function<void(QByteArray&)>& addPayload)
{
    QByteArray frame;
    CSocketAPI::addHeader(0x30, 0, 0, 0, 0, frame);
    addPayload(frame);
    CSocketAPI::addEnd(frame);
    return frame;
}

static QByteArray intsFrame()
{
    return frameOf([](QByteArray& frame) { CSocketAPI::list2Byte(Ints(100, 7), frame); });
}

static QByteArray bytesFrame()
{
    return frameOf([](QByteArray& frame) { CSocketAPI::list2Byte(Bytes(400, 7), frame); });
}

static QByteArray textsFrame()
{
    return frameOf([](QByteArray& frame) {
        const std::string text(60, 'x');
        CSocketAPI::int2Byte(5, frame);
        for (int i = 0; i < 5; ++i) {
            CSocketAPI::short2Byte(62, frame);
            CSocketAPI::str2Byte(text, frame);
        }
    });
}

// --- Requests of both clients -------------------------------------------------------------------------------------

// What a request has received.
struct Received {
    int result = 0;
    Ints ints{1, 2};
    Bytes bytes{1, 2};
    QStringList texts{"1", "2"};

    // The elements before the request, and possibly those of the reply.
    void expectSomeOf(const Received& whole) const
    {
        EXPECT_TRUE(ints == Received().ints || ints == whole.ints);
        EXPECT_TRUE(bytes == Received().bytes || bytes == whole.bytes);
        EXPECT_EQ(texts, whole.texts.mid(0, texts.size()));
        EXPECT_GE(texts.size(), 2);
    }
};

template <typename Client>
struct Request {
    const char* name;
    std::function<QByteArray()> reply;
    std::function<void(Client&, Received&)> send;
};

static const QByteArray ask = frameOf([](QByteArray& frame) { CSocketAPI::int2Byte(1, frame); });

template <typename Client>
static const std::vector<Request<Client>>& requests()
{
    static const auto one = [] { return reply7; };
    static const std::vector<Request<Client>> all = {
        {"systemState", one, [](Client& c, Received& r) { r.result = c.systemState(); }},
        {"systemTime", one, [](Client& c, Received& r) { r.result = c.systemTime(); }},
        {"clear", one, [](Client& c, Received& r) { r.result = c.clear(); }},
        {"setTime", one, [](Client& c, Received& r) { r.result = c.setTime(1, 2); }},
        {"setState", one, [](Client& c, Received& r) { r.result = c.setState(1); }},
        {"requestInt", one, [](Client& c, Received& r) { r.result = c.requestInt(ask); }},
        {"requestInt of an integer", one, [](Client& c, Received& r) { r.result = c.requestInt(0x30, 1); }},
        {"requestInt of a list", one, [](Client& c, Received& r) { r.result = c.requestInt(0x30, Ints(300, 7)); }},
        {"requestInts", intsFrame, [](Client& c, Received& r) { r.result = c.requestInts(ask, 3, r.ints); }},
        {"requestBytes", bytesFrame, [](Client& c, Received& r) { r.result = c.requestBytes(ask, 3, r.bytes); }},
        {"requestStrings", textsFrame, [](Client& c, Received& r) { r.result = c.requestStrings(ask, 3, r.texts); }},
    };
    return all;
}

// --- On a link that is up -----------------------------------------------------------------------------------------

// The reply in one read, in two, and byte by byte.
static std::vector<QByteArray> pieces(const QByteArray& frame, int size)
{
    std::vector<QByteArray> result;
    for (int pos = 0; pos < frame.size(); pos += size)
        result.push_back(frame.mid(pos, size));
    return result;
}

TEST(TcpClientAllocation, leavesALinkThatWorksOnceTheReplyIsRead)
{
    for (const auto& request : requests<CTcpAPI>()) {
        const QByteArray frame = request.reply();
        for (const int size : {int(frame.size()), int(frame.size() + 1) / 2, 9}) {
            const testing::ScopedTrace trace(__FILE__, __LINE__, request.name);
            Received whole;
            failEachAllocation([&] {
                LinkedTcpClient client;
                for (const QByteArray& piece : pieces(frame, size))
                    client.give(piece);
                Received received;
                const bool done = attempt([&] { request.send(client, received); });
                EXPECT_EQ(client.link(), "up, open");
                if (failedAllocations() == 0 && whole.result == 0)
                    whole = received; // of the first trial
                EXPECT_EQ(received.result, done ? whole.result : 0);
                received.expectSomeOf(whole);
                char rest[10000];
                while (::recv(client.descriptor(), rest, sizeof rest, MSG_DONTWAIT) > 0) {
                }
                client.give(reply7);
                EXPECT_EQ(client.requestInt(ask), 7); // the next call
            });
        }
    }
}

TEST(TcpClientAllocation, leavesALinkThatWorksAfterSending)
{
    failEachAllocation([] {
        LinkedTcpClient client;
        const bool first = attempt([&] { EXPECT_EQ(client.sendDatas(0x30), 1); });
        const bool second = first && attempt([&] { EXPECT_EQ(client.sendInt(0x30, 1), 1); });
        const bool third = second && attempt([&] { EXPECT_EQ(client.sendInts(0x30, Ints(300, 7)), 1); });
        EXPECT_EQ(client.take().size(), first ? 13 : 0);
        EXPECT_EQ(client.take().size(), second ? 17 : 0);
        EXPECT_EQ(client.take().size(), third ? 1217 : 0);
        EXPECT_EQ(client.link(), "up, open");
    });
}

TEST(UdpClientAllocation, leavesALinkThatWorksOnceTheReplyIsRead)
{
    for (const auto& request : requests<CUdpAPI>()) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, request.name);
        Received whole;
        failEachAllocation([&] {
            LinkedUdpClient client;
            client.give(request.reply());
            Received received;
            const bool done = attempt([&] { request.send(client, received); });
            EXPECT_EQ(client.link(), "up, open");
            if (failedAllocations() == 0 && whole.result == 0)
                whole = received; // of the first trial
            EXPECT_EQ(received.result, done ? whole.result : 0);
            received.expectSomeOf(whole);
            char rest[10000];
            while (::recv(client.descriptor(), rest, sizeof rest, MSG_DONTWAIT) > 0) {
            }
            client.give(reply7);
            EXPECT_EQ(client.requestInt(ask), 7); // the next call
        });
    }
}

// --- Frames and payloads ------------------------------------------------------------------------------------------

TEST(FrameAllocation, leavesTheCounterOfAFrameThatIsNotBuilt)
{
    failEachAllocation([] {
        OpenUdpClient client;
        QByteArray frame;
        const bool begun = attempt([&] { client.addHeader(0x30, 0, 0, frame); });
        EXPECT_EQ(client.sendSeq, begun ? 1 : 0);
        EXPECT_EQ(frame.size(), begun ? 10 : 0);
        const QByteArray header = frame;
        const bool ended = begun && attempt([&] { EXPECT_EQ(OpenUdpClient::addEnd(frame), 1); });
        EXPECT_TRUE(ended ? frame.size() == 64 : frame.startsWith(header.left(1)));
    });
}

// All golden frames that a client receives, whole and byte by byte. What was assembled before the failure stays, and
// once it is dropped the frame can be assembled again.
TEST(FrameAllocation, leavesThePartOfTheFrameThatWasAssembled)
{
    const QStringList names = QDir(GQLIB_GOLDEN "/frames").entryList({"*.hex"});
    EXPECT_GE(names.size(), 30);
    for (const QString& name : names) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, name.toStdString());
        const QByteArray bytes = goldenFile("frames/" + name.toStdString());
        for (const int size : {int(bytes.size()), 1}) {
            const auto feed = [&](OpenUdpClient& client) {
                bool complete = false;
                for (const QByteArray& piece : pieces(bytes, size)) {
                    int pos = 0;
                    while (!complete && pos < piece.size())
                        complete = client.recvData(piece.constData(), piece.size(), pos);
                }
                return complete;
            };
            OpenUdpClient whole;
            const bool complete = feed(whole);
            failEachAllocation([&] {
                OpenUdpClient client;
                bool result = false;
                const bool done = attempt([&] { result = feed(client); });
                EXPECT_TRUE(done ? client.recvFrame == whole.recvFrame : whole.recvFrame.startsWith(client.recvFrame));
                EXPECT_EQ(result, done && complete);
                client.dropFrame();
                EXPECT_EQ(feed(client), complete); // the next call
                EXPECT_EQ(client.recvFrame, whole.recvFrame);
            });
        }
    }
}

TEST(FrameAllocation, leavesTheElementsThatWereParsed)
{
    const QByteArray ints = intsFrame().mid(10);
    const QByteArray bytes = bytesFrame().mid(10);
    const QByteArray texts = textsFrame().mid(10);
    failEachAllocation([&] {
        OpenUdpClient client;
        Received received;
        const bool first = attempt([&] { client.parseInts(ints.constData(), ints.size(), received.ints); });
        EXPECT_EQ(received.ints.size(), first ? 102U : 2U);
        const bool second = attempt([&] { client.parseBytes(bytes.constData(), bytes.size(), received.bytes); });
        EXPECT_EQ(received.bytes.size(), second ? 402U : 2U);
        const bool third = attempt([&] { client.parseStrings(texts.constData(), texts.size(), received.texts); });
        EXPECT_EQ(received.texts.size() == 7, third);
        EXPECT_EQ(received.texts.mid(0, 2), Received().texts);
    });
}

// --- Connecting ---------------------------------------------------------------------------------------------------

// A server in a process of its own, so that its memory and descriptors are not examined. It greets each connection and
// replies to each read and each datagram with the integer 7.
class AnsweringProcess {
public:
    AnsweringProcess() : listener(plainSocket()), datagrams(::socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in any = {};
        any.sin_family = AF_INET;
        any.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&any), sizeof any), 0);
        EXPECT_EQ(::listen(listener, 50), 0);
        socklen_t size = sizeof any;
        EXPECT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&any), &size), 0);
        port = ntohs(any.sin_port);
        EXPECT_EQ(::bind(datagrams, reinterpret_cast<const sockaddr*>(&any), sizeof any), 0);
        child = ::fork();
        if (child == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            serve();
        }
    }

    ~AnsweringProcess()
    {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }

    AnsweringProcess(const AnsweringProcess&) = delete;
    AnsweringProcess& operator=(const AnsweringProcess&) = delete;

    int port = 0; // of both protocols

private:
    [[noreturn]] void serve() const
    {
        std::vector<pollfd> ends = {{listener, POLLIN, 0}, {datagrams, POLLIN, 0}};
        for (;;) {
            ::poll(ends.data(), ends.size(), -1);
            char bytes[10000];
            for (size_t i = 2; i < ends.size(); ++i) {
                if (ends[i].revents == 0)
                    continue;
                if (::recv(ends[i].fd, bytes, sizeof bytes, 0) > 0) {
                    ::send(ends[i].fd, reply7.constData(), size_t(reply7.size()), MSG_NOSIGNAL);
                } else {
                    ::close(ends[i].fd);
                    ends[i].fd = -1; // poll skips it
                }
            }
            sockaddr_in from = {};
            socklen_t size = sizeof from;
            if (ends[1].revents != 0 &&
                ::recvfrom(datagrams, bytes, sizeof bytes, 0, reinterpret_cast<sockaddr*>(&from), &size) > 0)
                ::sendto(datagrams, reply7.constData(), size_t(reply7.size()), 0,
                         reinterpret_cast<const sockaddr*>(&from), size);
            if (ends[0].revents != 0) {
                const int connection = ::accept(listener, nullptr, nullptr);
                ::send(connection, greeting.constData(), size_t(greeting.size()), MSG_NOSIGNAL);
                ends.push_back({connection, POLLIN, 0});
            }
        }
    }

    Descriptor listener;
    Descriptor datagrams;
    pid_t child = -1;
};

TEST(ConnectAllocation, leavesNothingOfAClientThatIsNotConstructed)
{
    failEachAllocation([] {
        std::unique_ptr<CTcpAPI> client;
        attempt([&] { client = std::make_unique<CTcpAPI>(); });
    });
    failEachAllocation([] {
        std::unique_ptr<CUdpAPI> client;
        attempt([&] { client = std::make_unique<CUdpAPI>(); });
    });
    failEachAllocation([] {
        std::unique_ptr<CReturningTcpClient> client;
        attempt([&] { client = std::make_unique<CReturningTcpClient>("127.000.000.001 ", 1, 1); });
    });
    failEachAllocation([] {
        std::unique_ptr<CReturningUdpClient> client;
        attempt([&] { client = std::make_unique<CReturningUdpClient>("127.000.000.001 ", 1, 1); });
    });
}

static const std::string longHost = "0x7F.0x00.0x00.0x01"; // longer than a std::string holds without an allocation

TEST(ConnectAllocation, leavesALinkThatWorksAfterClosing)
{
    const AnsweringProcess server;
    failEachAllocation([&] {
        OpenTcpClient client;
        int result = 0;
        const bool done = attempt([&] { result = client.connect(longHost, server.port); });
        EXPECT_TRUE(done ? result == (failedAllocations() > 0 ? -1 : 1) : !client.isConnected());
        EXPECT_EQ(client.isConnected(), result == 1);
        client.close();
        EXPECT_EQ(client.connect(longHost, server.port), 1); // the next calls
        EXPECT_EQ(client.systemState(), 7);
    });
    failEachAllocation([&] {
        BufferedUdpClient client;
        const bool done = attempt([&] { EXPECT_EQ(client.connect(longHost, server.port), 1); });
        EXPECT_EQ(client.isConnected(), done);
        client.close();
        EXPECT_EQ(client.connect(longHost, server.port), 1);
        EXPECT_EQ(client.systemState(), 7);
    });
}

template <typename Client>
static void failsInReturningClient(int port)
{
    failEachAllocation([&] {
        Client client(longHost, port, 5000);
        Received received;
        attempt([&] {
            if (client.ready() == 1)
                received.result = client.systemState();
        });
        EXPECT_TRUE(received.result == 7 || failedAllocations() > 0);
        client.close();
        EXPECT_EQ(client.ready(), 1);
        EXPECT_EQ(client.systemState(), 7);
    });
}

TEST(ConnectAllocation, leavesAReturningClientThatWorksAfterClosing)
{
    const AnsweringProcess server;
    failsInReturningClient<CReturningTcpClient>(server.port);
    failsInReturningClient<CReturningUdpClient>(server.port);
}
