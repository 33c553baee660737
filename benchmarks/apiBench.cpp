#include "apiBench.h"

#include "comparison.h"
#include "echoPeer.h"
#include "gqSocketUnix.h"
#include "tcpApi.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include <arpa/inet.h>
#include <modbus/modbus.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

using gqdb::CSocketAPI;
using gqdb::CTcpAPI;

// --- Reassembly ---------------------------------------------------------------------------------------------------

// Makes the frame of a client accessible.
class OpenClient : public CTcpAPI {
public:
    // Feeds the reassembly without a network, in reads of `step` bytes. Returns true if the last read completed the
    // frame.
    bool take(const QByteArray& bytes, int step)
    {
        bool whole = false;
        for (int start = 0; start < bytes.size(); start += step) {
            int pos = 0;
            whole = recvData(bytes.constData() + start, std::min(step, bytes.size() - start), pos);
        }
        return whole;
    }

    const QByteArray& taken() const { return recvFrame; }

    // Drops the frame as the client does after each reply: keeps memory up to the size of one read.
    void drop()
    {
        if (recvFrame.capacity() > rawBufferSize)
            recvFrame.clear();
        else
            recvFrame.resize(0);
        recvFrameSize = 0;
    }
};

// Copies the same reads to their place in the frame.
static void copy(const QByteArray& bytes, int step, char* target)
{
    for (int start = 0; start < bytes.size(); start += step)
        std::memcpy(target + start, bytes.constData() + start, size_t(std::min(step, bytes.size() - start)));
}

// Returns a frame of `size` bytes in total, whose payload is full of start and end bytes.
static QByteArray frameOf(int size)
{
    QByteArray frame;
    CSocketAPI::addHeader(1, 0, 0, 0, 0, frame);
    for (int i = 0; i < size - CSocketAPI::frameOverhead; ++i)
        frame.append(static_cast<char>(i * 7));
    CSocketAPI::addEnd(frame);
    return frame;
}

static void compareReassembly(const std::string& job, int frameSize, int step, double aim)
{
    const QByteArray frame = frameOf(frameSize);
    const auto library = [=](benchmark::State& state) {
        OpenClient client;
        if (!client.take(frame, step) || client.taken() != frame)
            fail(job + ": the library's frame differs");
        client.drop();
        for (auto _ : state) {
            if (!client.take(frame, step))
                fail(job + ": the library's frame is incomplete");
            benchmark::DoNotOptimize(client.taken().constData());
            client.drop();
        }
    };
    const auto bare = [=](benchmark::State& state) {
        QByteArray target(frame.size(), '\0');
        copy(frame, step, target.data());
        if (target != frame)
            fail(job + ": the copied frame differs");
        char* bytes = target.data();
        for (auto _ : state) {
            copy(frame, step, bytes);
            benchmark::DoNotOptimize(bytes);
            benchmark::ClobberMemory();
        }
    };
    compare(job, library, {{"memcpy", {{Clock::processor, aim}}, bare}});
}

// --- Round trip ---------------------------------------------------------------------------------------------------

static const unsigned char command = 1;
static const int value = 12345;
// Start, length 4, sequence 0, arg2, arg1, command, value, checksum, end.
static const QByteArray request = QByteArray::fromHex("68 04000000 0000 00 00 01 39300000 0000 16");
static const QByteArray timeRequest = QByteArray::fromHex("68 04000000 0000 00 00 02 39300000 0000 16");
static const QByteArray greeting = QByteArray::fromHex("68 04000000 0000 00 00 00 01000000 0000 16");

// A request and its reply without a client: the same socket options in the same calls, one send, one recv.
class BareClient {
public:
    explicit BareClient(int port);
    ~BareClient() { close(descriptor); }
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;

    // Sends the request and receives as many bytes. Returns false on failure.
    bool roundTrip(const QByteArray& bytes)
    {
        return send(descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL) == bytes.size() &&
               receive() == bytes.size();
    }

    ssize_t receive() { return recv(descriptor, buffer.get(), CSocketAPI::rawBufferSize, MSG_NOSIGNAL); }
    QByteArray received(int size) const { return QByteArray(buffer.get(), size); }

private:
    int descriptor;
    std::unique_ptr<char[]> buffer;
};

BareClient::BareClient(int port)
    : descriptor(socket(AF_INET, SOCK_STREAM, 0)), buffer(new char[CSocketAPI::rawBufferSize])
{
    const char oneByte = 1; // refused by the system; the library makes the same call
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &oneByte, sizeof oneByte);
    const int on = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const linger drop = {1, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &drop, sizeof drop);
    const int kernelBuffer = 921600;
    setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kernelBuffer, sizeof kernelBuffer);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof kernelBuffer);
    const timeval limit = {9, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);

    sockaddr_in peer = {};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<uint16_t>(port));
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0 ||
        receive() != greeting.size() || received(greeting.size()) != greeting)
        fail("the bare client was not greeted");
}

// Returns the library's request as it is on the wire: the peer echoes it.
static void checkRequest(OpenClient& client)
{
    int len = 0;
    if (client.sendInt(command, value) != 1 || client.recvDatas(len) != 1)
        fail("the library's request did not come back");
    QByteArray echo = client.taken();
    echo[5] = echo[6] = 0; // the sequence, which differs in each request
    if (echo != request)
        fail("the library's request differs");
    client.drop();
}

static Side bareSide(BareClient& client, const QByteArray& bytes)
{
    return [&client, bytes](benchmark::State& state) {
        const OneCore core;
        if (!client.roundTrip(bytes) || client.received(bytes.size()) != bytes)
            fail("the bare reply differs");
        for (auto _ : state) {
            if (!client.roundTrip(bytes))
                fail("the bare reply did not come");
        }
    };
}

static void compareRoundTrips()
{
    // Peers before clients: the process of a peer inherits open descriptors.
    static EchoPeer libraryPeer(greeting);
    static EchoPeer barePeer(greeting);
    static EchoPeer qtPeer({});
    static EchoPeer modbusPeer({});

    static OpenClient client;
    if (client.connect("127.0.0.1", libraryPeer.port()) != 1)
        fail("the library's client was not greeted");
    static BareClient bareClient(barePeer.port());

    static QTcpSocket qtSocket;
    qtSocket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(qtPeer.port()));
    if (!qtSocket.waitForConnected())
        fail("QTcpSocket has no connection");
    static modbus_t* const master = modbus_new_tcp("127.0.0.1", modbusPeer.port());
    if (modbus_connect(master) != 0)
        fail("libmodbus has no connection");

    const auto library = [](benchmark::State& state) {
        const OneCore core;
        checkRequest(client);
        for (auto _ : state) {
            if (client.requestInt(command, value) != value)
                fail("the library's reply differs");
        }
    };
    const auto libraryTime = [](benchmark::State& state) {
        const OneCore core;
        for (auto _ : state) {
            if (client.systemTime() <= 0) // the echo of the time in the request
                fail("the library's time differs");
        }
    };
    const auto qt = [](benchmark::State& state) {
        const OneCore core;
        for (auto _ : state) {
            qtSocket.write(request);
            if (!qtSocket.waitForReadyRead() || qtSocket.readAll() != request)
                fail("the reply to QTcpSocket differs");
        }
    };
    // Writes one register: the reply repeats the request.
    const auto modbus = [](benchmark::State& state) {
        const OneCore core;
        for (auto _ : state) {
            if (modbus_write_register(master, 1, value) != 1)
                fail("the reply to libmodbus differs");
        }
    };
    compare("requestInt and its reply", library,
            {{"send, recv", {{Clock::processor, 1.1}, {Clock::wall, 0}}, bareSide(bareClient, request)},
             {"QTcpSocket", {{Clock::processor, 1}}, qt},
             {"libmodbus", {{Clock::processor, 1}}, modbus}});
    compare("systemTime and its reply", libraryTime,
            {{"send, recv", {{Clock::processor, 1.1}}, bareSide(bareClient, timeRequest)}});
}

// --- Many sockets -------------------------------------------------------------------------------------------------

// Sockets whose send buffers are full, so that only a byte to read ends a wait.
class ManySockets {
public:
    ManySockets(int count, int readable)
    {
        for (int i = 0; i < count; ++i) {
            int pair[2];
            if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, pair) != 0)
                fail("select: no sockets");
            const int least = 1;
            setsockopt(pair[0], SOL_SOCKET, SO_SNDBUF, &least, sizeof least);
            while (::send(pair[0], "0123456789abcdef", 16, 0) > 0) {
            }
            if (i < readable && ::send(pair[1], "x", 1, 0) != 1)
                fail("select: no byte to read");
            own.push_back(std::make_unique<Link>(pair[0]));
            peers.push_back(pair[1]);
            CTcpSocket* const socket = own.back().get();
            rows.emplace_back();
            rows.back().socket = socket;
        }
    }
    ManySockets(const ManySockets&) = delete;
    ManySockets& operator=(const ManySockets&) = delete;
    ~ManySockets()
    {
        for (const int peer : peers)
            ::close(peer);
    }

    int descriptor(size_t i) const { return own[i]->descriptor(); }

    std::vector<TcpSocketStatus> rows;

private:
    // Takes over a descriptor instead of the one that the constructor opened.
    class Link : public CTcpSocket {
    public:
        explicit Link(int descriptor)
        {
            dup2(descriptor, *handle);
            ::close(descriptor);
        }
        int descriptor() const { return *handle; }
    };

    std::vector<std::unique_ptr<Link>> own;
    std::vector<int> peers;
};

static void compareSelect(int count, int readable)
{
    const auto library = [=](benchmark::State& state) {
        ManySockets sockets(count, readable);
        for (auto _ : state) {
            if (CGqSocket::select(sockets.rows, 1000) != readable)
                fail("select: another number of sockets is ready");
        }
    };
    // The prepared sets are copied for each call, which overwrites them.
    const auto bare = [=](benchmark::State& state) {
        const ManySockets sockets(count, readable);
        int highest = 0;
        for (size_t i = 0; i < sockets.rows.size(); ++i)
            highest = std::max(highest, sockets.descriptor(i));
        std::vector<fd_mask> prepared(static_cast<size_t>(highest / NFDBITS + 1));
        for (size_t i = 0; i < sockets.rows.size(); ++i) {
            const int descriptor = sockets.descriptor(i);
            prepared[static_cast<size_t>(descriptor / NFDBITS)] |= fd_mask(1) << (descriptor % NFDBITS);
        }
        std::vector<fd_mask> sets[3];
        for (auto _ : state) {
            for (std::vector<fd_mask>& set : sets)
                set = prepared;
            timeval time = {1, 0};
            if (::select(highest + 1, reinterpret_cast<fd_set*>(sets[0].data()),
                         reinterpret_cast<fd_set*>(sets[1].data()), reinterpret_cast<fd_set*>(sets[2].data()),
                         &time) != readable)
                fail("select: another number of sockets is ready for the bare call");
        }
    };
    compare("select, " + std::to_string(count) + " sockets, " + std::to_string(readable) + " ready", library,
            {{"select(2)", {{Clock::processor, 1.3}}, bare}});
}

// ------------------------------------------------------------------------------------------------------------------

void compareApi()
{
    compareReassembly("frame of 1 MiB in reads of 64 KiB", 1 << 20, 1 << 16, 2);
    compareReassembly("frame of 100 bytes in one read", 100, 100, 8);
    compareReassembly("frame of 100 bytes in reads of 7", 100, 7, 3.2);
    compareReassembly("frame of 1 MiB in reads of 7 bytes", 1 << 20, 7, 3);
    compareRoundTrips();
    compareSelect(50, 1);
    compareSelect(5000, 50);
}
