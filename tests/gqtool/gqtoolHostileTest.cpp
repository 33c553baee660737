// gqtool station and gqtool trace with peers that send anything, too much, too little or too slowly: others are served
// meanwhile, and memory and descriptors stay bounded. docs/guide/security.md has the limits.

#include "stationClients.h"
#include "support/inputFile.h"
#include "support/processState.h"
#include "support/runningTrace.h"

#include <list>
#include <random>

// --- Peers --------------------------------------------------------------------------------------------------------

static const int manyLinks = 100;

// A connection that nobody expects to be kept. It never waits, and ignores what the other side does with it.
class HostilePeer {
public:
    explicit HostilePeer(int port) : connection(connected("127.0.0.1", port)) {}

    // Sends as much of this as is accepted now. Returns the number of bytes.
    ssize_t push(const QByteArray& bytes) const
    {
        return ::send(connection, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    bool isClosed() const { return becomes(connection, POLLRDHUP | POLLHUP | POLLERR); }

private:
    Descriptor connection;
};

static std::list<HostilePeer> peersOf(int port, int count)
{
    std::list<HostilePeer> peers;
    for (int i = 0; i < count; ++i)
        peers.emplace_back(port);
    return peers;
}

static const QByteArray askBytes = "68 04000000 0000 00 00 21 a0860100 0000 16"_hex; // 100000 bytes, in 25 frames
static const QByteArray hugeHeader = "68 f2ffff7f 0000 00 00 06"_hex;                // the longest frame of all

struct LinesFile {
    QString text() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString(file.readAll()) : QString();
    }

    QTemporaryDir folder;
    QString path = folder.filePath("lines");
};

// A trace whose lines go to a file, since nobody would read a pipe meanwhile.
struct FiledTrace : LinesFile, RunningProgram {
    explicit FiledTrace(const QString& station, const QStringList& options = {})
        : RunningProgram(GQTOOL, QStringList{"trace", "--listen", "0"} + options + QStringList{station}, path)
    {
        const QRegularExpression pattern("listening on 127\\.0\\.0\\.1:(\\d+) for");
        EXPECT_TRUE(comesTrue([&] { return pattern.match(text()).hasMatch(); }));
        port = pattern.match(text()).captured(1).toInt();
    }

    int port = 0;
};

// A station without a trace, or one that a trace forwards to. `port` is the one to attack.
class Target {
public:
    Target(bool isTraced, const QStringList& traceOptions = {}, const QStringList& stationOptions = {})
        : station(QStringList{"--quiet"} + stationOptions)
    {
        if (isTraced)
            trace = std::make_unique<FiledTrace>(station.endpoint, traceOptions);
        port = isTraced ? trace->port : station.port();
        first = descriptorsOf(attacked().pid());
        EXPECT_TRUE(serves());
        firstMemory = memoryOf(attacked().pid());
    }

    RunningProgram& attacked() { return trace ? static_cast<RunningProgram&>(*trace) : station; }

    // A new client gets its greeting and its reply.
    bool serves() const
    {
        const Descriptor client = connected("127.0.0.1", port);
        give(client, setState7);
        return taken(client, greeting.size() + state7.size()) == hex(greeting + state7);
    }

    // Resident memory since the start, in kB.
    int growth() { return memoryOf(attacked().pid()) - firstMemory; }

    bool hasItsDescriptorsBack()
    {
        return comesTrue([this] { return descriptorsOf(attacked().pid()) <= first; });
    }

    int port = 0;

private:
    RunningStation station;
    std::unique_ptr<FiledTrace> trace;
    int first = 0;
    int firstMemory = 0;
};

// AddressSanitizer keeps freed memory.
#ifdef __SANITIZE_ADDRESS__
#define EXPECT_GROWTH(target, most)
#else
#define EXPECT_GROWTH(target, most) EXPECT_LE((target).growth(), most)
#endif

// With a station alone, and with a trace between.
class GqtoolHostile : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Programs, GqtoolHostile, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "trace" : "station"; });

// --- Bytes --------------------------------------------------------------------------------------------------------

TEST_P(GqtoolHostile, servesOthersWhileRandomBytesArriveOnManyLinks)
{
    Target target(GetParam());
    std::mt19937 chance(24);
    for (int round = 0; round < 5; ++round) {
        const std::list<HostilePeer> peers = peersOf(target.port, manyLinks);
        for (const HostilePeer& peer : peers) {
            QByteArray bytes(2000, '\0');
            for (char& byte : bytes)
                byte = char(chance() % 8 == 0 ? 0x68 : chance());
            peer.push(bytes);
        }
        ASSERT_TRUE(target.serves());
    }
    EXPECT_TRUE(target.serves());
    EXPECT_TRUE(target.hasItsDescriptorsBack());
    EXPECT_GROWTH(target, 20000);
}

TEST_P(GqtoolHostile, servesOthersWhileAFrameOf2GiBArrives)
{
    Target target(GetParam());
    const HostilePeer peer(target.port);
    peer.push(hugeHeader);
    const QByteArray bytes(1 << 16, 'x');
    for (int i = 0; i < 1000 && peer.push(bytes) > 0; ++i) // the station closes the link at the header
        ;
    EXPECT_TRUE(target.serves());
    EXPECT_TRUE(peer.isClosed());
    EXPECT_TRUE(target.hasItsDescriptorsBack());
    EXPECT_GROWTH(target, 4000);
}

// The header announces the largest request that the station takes, which never becomes complete.
TEST_P(GqtoolHostile, keepsNoMoreThanAMebibyteOfARequest)
{
    Target target(GetParam());
    {
        const std::list<HostilePeer> peers = peersOf(target.port, 10);
        for (const HostilePeer& peer : peers) {
            QByteArray bytes = "68 00001000 0000 00 00 06"_hex + QByteArray(1 << 20, 'x');
            for (ssize_t sent = 0; bytes.size() > 0; sent = peer.push(bytes)) {
                bytes.remove(0, int(std::max<ssize_t>(sent, 0)));
                ASSERT_TRUE(target.serves());
            }
        }
        EXPECT_GROWTH(target, 2 * 10 * 1100);
    }
    EXPECT_TRUE(target.serves());
    EXPECT_TRUE(target.hasItsDescriptorsBack());
}

TEST_P(GqtoolHostile, endsALinkAtARequestOfMoreThanAMebibyte)
{
    Target target(GetParam());
    {
        const HostilePeer peer(target.port);
        peer.push("68 01001000 0000 00 00 06"_hex);
        EXPECT_TRUE(peer.isClosed());
    } // until the peer ends its side, too, a trace keeps the link
    EXPECT_TRUE(target.hasItsDescriptorsBack());
}

// --- Rates --------------------------------------------------------------------------------------------------------

TEST_P(GqtoolHostile, servesOthersWhilePeersFloodItAndNeverRead)
{
    Target target(GetParam(), {}, {"--gap", "0"});
    {
        const std::list<HostilePeer> peers = peersOf(target.port, 5);
        const QByteArray requests = askBytes.repeated(300);
        for (int round = 0; round < 5; ++round) {
            for (const HostilePeer& peer : peers)
                peer.push(requests);
            ASSERT_TRUE(target.serves());
        }
        EXPECT_GROWTH(target, 5 * 900);
    }
    EXPECT_TRUE(target.serves());
    EXPECT_TRUE(target.hasItsDescriptorsBack());
}

TEST_P(GqtoolHostile, servesOthersWhileManyLinksSendByteByByte)
{
    Target target(GetParam());
    {
        std::vector<Descriptor> links;
        for (int i = 0; i < manyLinks; ++i)
            links.push_back(connected("127.0.0.1", target.port));
        for (const char byte : setState7) {
            for (const Descriptor& link : links)
                give(link, QByteArray(1, byte));
            ASSERT_TRUE(target.serves());
        }
        for (const Descriptor& link : links)
            EXPECT_EQ(taken(link, 34), hex(greeting + state7));
    }
    EXPECT_TRUE(target.hasItsDescriptorsBack());
    EXPECT_GROWTH(target, 4000);
}

TEST_P(GqtoolHostile, reportsThousandsOfLinksOnceAndServesWhenTheyAreGone)
{
    rlimit own = {};
    ::getrlimit(RLIMIT_NOFILE, &own);
    own.rlim_cur = own.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &own);
    Target target(GetParam());
    limitDescriptors(target.attacked().pid(), 64);
    {
        const std::list<HostilePeer> peers = peersOf(target.port, 2000);
        EXPECT_EQ(target.attacked().nextError(), "gqtool: cannot accept another client now: Too many open files");
        const int busy = processorMs(target.attacked().pid());
        std::this_thread::sleep_for(std::chrono::milliseconds(1000));
        EXPECT_LE(processorMs(target.attacked().pid()), busy + 50);
    }
    EXPECT_TRUE(target.serves());
    EXPECT_TRUE(target.hasItsDescriptorsBack());
    EXPECT_GROWTH(target, 4000);
    target.attacked().end();
    EXPECT_EQ(target.attacked().outcome().errors, "");
}

// 270 peers send all but the end of a request of 1 MiB; 256 MiB are kept, and the other peers are disconnected.
TEST(GqtoolHostileStation, keeps256MiBOfTheRequestsOfAllLinks)
{
    Target target(false);
    {
        const QByteArray bytes = "68 00001000 0000 00 00 06"_hex + QByteArray(1 << 20, 'x');
        std::vector<Descriptor> peers;
        const auto closed = [&peers] {
            return std::count_if(peers.begin(), peers.end(), [](const Descriptor& peer) {
                return becomes(peer, POLLRDHUP | POLLHUP | POLLERR, 0);
            });
        };
        for (int i = 0; i < 270; ++i) {
            peers.push_back(connected("127.0.0.1", target.port));
            EXPECT_EQ(taken(peers.back(), greeting.size()), hex(greeting));
            for (int sent = 0; sent < bytes.size();) {
                const ssize_t count =
                    ::send(peers.back(), bytes.constData() + sent, size_t(bytes.size() - sent), MSG_NOSIGNAL);
                if (count <= 0)
                    break;
                sent += int(count);
            }
            ASSERT_TRUE(target.serves()) << i;
        }
        EXPECT_TRUE(comesTrue([&] { return closed() >= 13; })) << closed();
        EXPECT_TRUE(target.serves());
        EXPECT_LE(closed(), 16);
        EXPECT_GROWTH(target, 2 * 270 * 1100);
    }
    EXPECT_TRUE(target.hasItsDescriptorsBack());
    const Descriptor client = connected("127.0.0.1", target.port);
    give(client, "68 00001000 0000 00 00 06 07000000"_hex + QByteArray((1 << 20) - 4, 'x') + "0000 16"_hex);
    EXPECT_EQ(taken(client, greeting.size() + state7.size()), hex(greeting + state7));
}

// In pieces of a byte, each byte of a reply takes 65 bytes of memory, so 41 replies of 100,000 bytes fit into 256 MiB.
TEST(GqtoolHostileStation, keeps256MiBOfTheRepliesOfAllLinks)
{
    const QTemporaryDir folder;
    const QString log = folder.filePath("station.log");
    Target target(false, {}, {"--pieces", "1", "--gap", "600000", "--log", log});
    std::vector<Descriptor> peers;
    for (int i = 0; i < 50; ++i) {
        peers.push_back(connected("127.0.0.1", target.port));
        give(peers.back(), askBytes);
    }
    EXPECT_TRUE(comesTrue([&] {
        return std::count_if(peers.begin(), peers.end(), [](const Descriptor& peer) {
                   return becomes(peer, POLLRDHUP | POLLHUP | POLLERR, 0);
               }) >= 9;
    }));
    EXPECT_TRUE(target.serves());
    EXPECT_TRUE(comesTrue([&] {
        return contentOf(log).count(": the requests and replies of all links exceed 256 MiB") >= 9;
    })) << contentOf(log).toStdString();
}

// Requests that have arrived together are answered in turns.
TEST(GqtoolHostileStation, answersOthersAmongTheRequestsOfALink)
{
    RunningStation station;
    const Descriptor many = connected("127.0.0.1", station.port());
    const Descriptor other = connected("127.0.0.1", station.port());
    for (const int link : {int(many), int(other)})
        EXPECT_EQ(taken(link, greeting.size()), hex(greeting));
    ::kill(station.pid(), SIGSTOP);
    give(many, setState7.repeated(200));
    give(other, askState);
    ::kill(station.pid(), SIGCONT);
    EXPECT_EQ(taken(many, 200 * state7.size()), hex(state7.repeated(200)));
    EXPECT_EQ(taken(other, state1.size()).substr(27, 2), "01"); // the command
    int before = 0;                                             // requests of the first link
    for (QString line = station.nextLine(); !line.contains(" command 0x01, "); line = station.nextLine()) {
        ASSERT_NE(line, "no line");
        before += line.contains(" command ") ? 1 : 0;
    }
    EXPECT_LE(before, 32);
}

// Eight bytes make five lines.
TEST(GqtoolHostileTrace, printsAllLinesOfAPieceAfterItsLinkIsBroken)
{
    RunningStation station({"--quiet"});
    FiledTrace trace(station.endpoint);
    {
        const Descriptor client = connected("127.0.0.1", trace.port);
        EXPECT_EQ(taken(client, greeting.size()), hex(greeting));
        give(client, "68 68 68 68 ff ff ff ff"_hex.repeated(1000));
        const linger reset = {1, 0};
        ::setsockopt(client, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    }
    EXPECT_TRUE(comesTrue([&] { return trace.text().count("bad length") == 4000; }))
        << trace.text().count("bad length");
}

// --- Datagrams ----------------------------------------------------------------------------------------------------

static const QByteArray longRequest = "68 60ea0000 0000 00 00 06"_hex + QByteArray(60000, 'x') + "0000 16"_hex;

TEST(GqtoolHostileUdp, theStationKeeps16MiBOfDatagramsThatWait)
{
    ScriptedStation station("command 6 every late 600000", {"--quiet"});
    DatagramClient other(station);
    other.send(askState);
    EXPECT_EQ(other.next().substr(0, 2), "68");
    [[maybe_unused]] const int before = memoryOf(station.pid());
    DatagramClient hostile(station);
    for (int i = 0; i < 800; ++i) { // 48 MB
        hostile.send(longRequest);
        other.send(askState);
        ASSERT_EQ(other.next().substr(0, 2), "68") << i; // all before it have been taken
    }
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LE(memoryOf(station.pid()), before + 20000);
#endif
}

// Each datagram sets the state to its number. The first one waits, and 1000 wait for it.
TEST(GqtoolHostileUdp, theStationKeeps1000DatagramsOfAnAddress)
{
    ScriptedStation station("command 6 1 late 3000", {"--quiet"});
    DatagramClient other(station);
    DatagramClient hostile(station);
    const auto state = [&] {
        other.send(askState);
        return other.next().substr(30, 11);
    };
    for (int i = 0; i < 1200; ++i) {
        hostile.send("68 04000000 0000 00 00 06"_hex + char(i % 256) + char(i / 256) + "0000 0000 16"_hex);
        ASSERT_EQ(state(), "01 00 00 00") << i; // all before it have been taken, none is answered
    }
    EXPECT_TRUE(comesTrue([&] { return state() == "e8 03 00 00"; })); // 1000
}

// A sender can be forged: two stations would send each other error frames without end.
TEST(GqtoolHostileUdp, theStationIgnoresErrorFrames)
{
    ScriptedStation station("");
    DatagramClient client(station);
    client.send("68 04000000 0000 00 00 ff feffffff 0000 16"_hex);
    client.send(setState7);
    EXPECT_EQ(client.next().substr(27, 2), "06"); // the command of the reply
    EXPECT_FALSE(becomes(client.socket, POLLIN, 100));
}

// With the station's own address as the sender, it would answer itself without end.
TEST(GqtoolHostileUdp, theStationTakesNoRequestFromItself)
{
    const Descriptor raw(::socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_UDP));
    if (raw < 0)
        GTEST_SKIP() << "needs the right to open a raw socket";
    ScriptedStation station("");
    const QByteArray port = QByteArray(1, char(station.port() >> 8)) + char(station.port());
    const QByteArray datagram = port + port + QByteArray(1, '\0') + char(8 + setState7.size()) + "0000"_hex + setState7;
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::sendto(raw, datagram.constData(), size_t(datagram.size()), 0,
                       reinterpret_cast<const sockaddr*>(&address), sizeof address),
              datagram.size());
    DatagramClient client(station);
    client.send(askState);
    EXPECT_EQ(client.next().substr(30, 11), "01 00 00 00");
}

TEST(GqtoolHostileUdp, theStationAnswersUpTo1000AddressesAtATime)
{
    ScriptedStation station("command 6 every late 3000", {"--quiet"});
    std::list<DatagramClient> hostile;
    for (int i = 0; i < 1000; ++i)
        hostile.emplace_back(station);
    DatagramClient other(station);
    int sent = 0;
    for (DatagramClient& one : hostile) {
        if (sent++ % 50 == 0) { // the socket of the station has room for about 250
            other.send(askState);
            EXPECT_EQ(other.next().substr(0, 2), "68");
        }
        one.send(setState7);
    }
    other.send(askState);
    EXPECT_FALSE(becomes(other.socket, POLLIN, 100));
    EXPECT_TRUE(comesTrue([&] {
        other.send(askState);
        return becomes(other.socket, POLLIN, 100);
    }));
}

TEST(GqtoolHostileUdp, servesOthersAmongRandomDatagrams)
{
    for (const bool isTraced : {false, true}) {
        SCOPED_TRACE(isTraced);
        RunningStation station({"--udp", "--quiet"});
        FiledTrace trace(station.endpoint, {"--udp"});
        RunningProgram& attacked = isTraced ? static_cast<RunningProgram&>(trace) : station;
        const int port = isTraced ? trace.port : station.port();
        limitDescriptors(attacked.pid(), 32); // fewer than there are addresses
        [[maybe_unused]] const int before = memoryOf(attacked.pid());
        std::mt19937 chance(24);
        std::list<DatagramSocket> hostile(100);
        for (int round = 0; round < 5; ++round) {
            for (DatagramSocket& one : hostile) {
                QByteArray bytes(int(chance() % 1000), '\0');
                for (char& byte : bytes)
                    byte = char(chance() % 8 == 0 ? 0x68 : chance());
                one.sendTo(port, bytes);
            }
            DatagramSocket other;
            EXPECT_TRUE(comesTrue([&] { // the queue of the socket may be full
                other.sendTo(port, askState);
                return other.isReadable(100) && other.take().substr(0, 2) == "68";
            }));
        }
#ifndef __SANITIZE_ADDRESS__
        EXPECT_LE(memoryOf(attacked.pid()), before + 8000);
#endif
        attacked.end();
        EXPECT_EQ(attacked.outcome().errors, "");
    }
}

TEST(GqtoolHostileUdp, traceKeeps256Addresses)
{
    RunningStation station({"--udp", "--quiet"});
    FiledTrace trace(station.endpoint, {"--udp"});
    const int before = descriptorsOf(trace.pid());
    std::list<DatagramSocket> clients(300);
    for (DatagramSocket& client : clients) {
        client.sendTo(trace.port, askState);
        EXPECT_EQ(client.take().substr(0, 2), "68");
    }
    EXPECT_EQ(descriptorsOf(trace.pid()), before + 256);
}

// --- trace alone --------------------------------------------------------------------------------------------------

// Passes 64 MiB of a frame that announces 2 GiB, and returns the growth of the trace's peak memory in kB.
static int growthByALongFrame(const QStringList& options)
{
    Listener server(5);
    FiledTrace trace(QString("127.0.0.1:%1").arg(server.port()), options);
    const int before = memoryOf(trace.pid(), "VmHWM");
    {
        const Descriptor client = connected("127.0.0.1", trace.port);
        const Descriptor sink = server.accept();
        give(client, hugeHeader);
        EXPECT_EQ(taken(sink, 10), hex(hugeHeader));
        const QByteArray piece(1 << 16, 'x');
        for (int i = 0; i < 1024; ++i) {
            give(client, piece);
            EXPECT_EQ(received(sink, size_t(piece.size())).size(), size_t(piece.size()));
        }
        ::shutdown(client, SHUT_WR);
        EXPECT_TRUE(isAtEnd(sink));
    }
    EXPECT_TRUE(comesTrue([&] { return trace.text().contains("cut, 67108874 of 2147483647 bytes"); }));
    return memoryOf(trace.pid(), "VmHWM") - before;
}

TEST(GqtoolHostileTrace, keeps64KiBOfAPayload)
{
    [[maybe_unused]] const int growth = growthByALongFrame({});
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LE(growth, 4000);
#endif
}

TEST(GqtoolHostileTrace, records4MiBOfAPayload)
{
    QTemporaryDir folder;
    const QString recording = folder.filePath("recording");
    [[maybe_unused]] const int growth = growthByALongFrame({"--record", recording});
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LE(growth, 100000);
#endif
    EXPECT_TRUE(contentOf(recording).contains('"' + QByteArray("78").repeated(4 << 20) + '"'));
}

// Sends until nothing more is accepted for a while, or until 64 MiB are.
static void fill(int descriptor)
{
    const QByteArray piece(1 << 16, 'x');
    for (int i = 0; i < 1024 && becomes(descriptor, POLLOUT, 300); ++i)
        ::send(descriptor, piece.constData(), size_t(piece.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
}

TEST(GqtoolHostileTrace, stopsReadingASideWhoseOtherSideDoesNotRead)
{
    for (const bool isOfClient : {true, false}) {
        SCOPED_TRACE(isOfClient);
        Listener server(5);
        FiledTrace trace(QString("127.0.0.1:%1").arg(server.port()));
        const Descriptor client = connected("127.0.0.1", trace.port);
        const Descriptor sink = server.accept();
        [[maybe_unused]] const int before = memoryOf(trace.pid());
        give(isOfClient ? client : sink, hugeHeader);
        fill(isOfClient ? client : sink);
        EXPECT_FALSE(becomes(isOfClient ? client : sink, POLLOUT, 0));
#ifndef __SANITIZE_ADDRESS__
        EXPECT_LE(memoryOf(trace.pid()), before + 2000);
#endif
    }
}
