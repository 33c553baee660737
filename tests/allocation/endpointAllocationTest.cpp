// Each allocation of endpoints, serial lines, threads and locks fails. No failure leaves a descriptor open.

#include "gqLibUnix.h"
#include "gqSerialUnix.h"
#include "support/failingAllocations.h"
#include "support/openEndpoints.h"
#include "support/plainSockets.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

// --- Constructors -------------------------------------------------------------------------------------------------

class IdleThread : public gqdb::CThread {
public:
    void run() override {}
};

template <typename Object>
static void failsInConstructor()
{
    failEachAllocation([] {
        std::unique_ptr<Object> object;
        const bool done = attempt([&] { object = std::make_unique<Object>(); });
        EXPECT_EQ(done, object != nullptr);
    });
}

TEST(EndpointAllocation, leavesNothingOfAnObjectThatIsNotConstructed)
{
    failsInConstructor<CTcpSocket>();
    failsInConstructor<CTcpServer>();
    failsInConstructor<CUdpServer>();
    failsInConstructor<CUdpClient>();
    failsInConstructor<CSocketCan>();
    failsInConstructor<CSerial>();
    failsInConstructor<IdleThread>();
    failsInConstructor<gqdb::CMutex>();
    failsInConstructor<gqdb::CReadWriteLock>();
}

// --- Operations ---------------------------------------------------------------------------------------------------

// A limit of open descriptors that admits those that select(2) needs memory for.
class ManyDescriptors {
public:
    ManyDescriptors()
    {
        EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &kept), 0);
        rlimit raised = kept;
        raised.rlim_cur = std::min<rlim_t>(kept.rlim_max, 4096);
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &raised), 0);
    }
    ~ManyDescriptors() { ::setrlimit(RLIMIT_NOFILE, &kept); }
    ManyDescriptors(const ManyDescriptors&) = delete;
    ManyDescriptors& operator=(const ManyDescriptors&) = delete;

private:
    rlimit kept = {};
};

TEST(EndpointAllocation, leavesTheOutputsOfAWaitUnchanged)
{
    const ManyDescriptors many;
    failEachAllocation([] {
        CTcpSocket socket;
        moveTo(socket, 1500);
        int readable = -7;
        int writable = -7;
        int exceptional = -7;
        const bool done = attempt([&] { socket.select(0, readable, writable, exceptional); });
        EXPECT_EQ(readable, done ? 1 : -7);
        EXPECT_EQ(writable, done ? 1 : -7);
        EXPECT_EQ(exceptional, done ? 0 : -7);
        attempt([&] { EXPECT_EQ(socket.isReadable(0), 1); });
        attempt([&] { EXPECT_EQ(socket.isWritable(0), 0); });
        EXPECT_TRUE(socket.isValid());
    });
    failEachAllocation([] {
        CTcpSocket socket;
        moveTo(socket, 1500);
        std::vector<TcpSocketStatus> rows(1);
        rows[0].socket = &socket;
        rows[0].readable = -7;
        const bool done = attempt([&] { EXPECT_EQ(CGqSocket::select(rows, 0), 2); });
        EXPECT_EQ(rows[0].readable, done ? 1 : -7);
    });
}

TEST(EndpointAllocation, isNotNeededToWaitForADescriptorUpTo1023)
{
    const ManyDescriptors many;
    CTcpSocket socket;
    moveTo(socket, 1023);
    ASSERT_EQ(descriptorOf(socket), 1023);
    failEachAllocation([&] {
        EXPECT_TRUE(attempt([&] {
            int readable = 0;
            int writable = 0;
            int exceptional = 0;
            socket.select(0, readable, writable, exceptional);
            socket.isReadable(0);
            socket.isWritable(0);
        }));
        EXPECT_EQ(failedAllocations(), 0);
    });
}

TEST(EndpointAllocation, isNotNeededToSetTimeOuts)
{
    failEachAllocation([] {
        CTcpSocket socket;
        EXPECT_TRUE(attempt([&] {
            socket.setRecvOverTm(1234567);
            socket.setSendOverTm(1234567);
        }));
        EXPECT_EQ(failedAllocations(), 0);
    });
}

TEST(EndpointAllocation, isNotNeededForAddresses)
{
    CUdpServer server;
    ASSERT_EQ(server.openP2P("127.0.0.1", 0), 1);
    failEachAllocation([&] {
        std::string address;
        int port = 0;
        EXPECT_TRUE(attempt([&] { EXPECT_EQ(server.getSockName(address, port), 1); }));
        CUdpClient client;
        client.connect("127.0.0.1", port, false);
        EXPECT_TRUE(attempt([&] { EXPECT_EQ(client.getPeerName(address, port), 1); }));
        client.send("x", 1);
        char byte = 0;
        EXPECT_TRUE(attempt([&] { EXPECT_EQ(server.recvfrom(&byte, 1, address, port), 1); }));
        EXPECT_TRUE(attempt([&] { EXPECT_EQ(server.sendto(&byte, 1, address, port), 1); }));
        EXPECT_EQ(failedAllocations(), 0);
    });
}

static void acceptWithoutMemory(bool asDescriptor0)
{
    CTcpServer server;
    ASSERT_EQ(server.open("127.0.0.1", 0, 5), 1);
    std::string address;
    int port = 0;
    ASSERT_EQ(server.getSockName(address, port), 1);
    failEachAllocation([&] {
        Descriptor peer = connected("127.0.0.1", port);
        std::optional<Replacement> standardInput;
        if (asDescriptor0) {
            standardInput.emplace(STDIN_FILENO, STDIN_FILENO);
            ::close(STDIN_FILENO);
        }
        const std::set<int> before = openDescriptors();
        std::unique_ptr<CTcpSocket> connection;
        const bool done = attempt([&] { connection.reset(server.accept()); });
        const AllocationsUntouched untouched;
        EXPECT_EQ(done, connection != nullptr);
        EXPECT_EQ(openedSince(before).size(), done ? 2U : 0U);
        connection.reset();
        for (const int constructorsOwn : openedSince(before)) // documented
            ::close(constructorsOwn);
        EXPECT_TRUE(becomes(peer, POLLIN | POLLHUP));
    });
}

TEST(EndpointAllocation, closesAnAcceptedConnection)
{
    for (const bool asDescriptor0 : {false, true}) {
        SCOPED_TRACE(asDescriptor0 ? "as descriptor 0" : "as any descriptor");
        acceptWithoutMemory(asDescriptor0);
    }
}

TEST(EndpointAllocation, leavesNoSocketOfAGroupThatIsNotJoined)
{
    const std::string group = "0xEF.0xFF.0x00.0x01"; // longer than a std::string holds without an allocation
    const std::string loopback = "0x7F.0x00.0x00.0x01";
    failEachAllocation([&] {
        CUdpServer server;
        int result = 0;
        const bool done = attempt([&] { result = server.openMulticast(group, 0, loopback); });
        EXPECT_EQ(result, done ? 1 : 0);
        server.close();
        EXPECT_EQ(server.openMulticast(group, 0, loopback), 1);
    });
}

TEST(EndpointAllocation, leavesNoSocketIfAMessageCannotBePrinted)
{
    failEachAllocationInChild([] {
        CUdpClient client;
        attempt([&] { EXPECT_EQ(client.openMulticast("203.0.113.1"), -2); });
    });
}

TEST(EndpointAllocation, leavesTheNameOfACanInterface)
{
    failEachAllocation([] {
        Open<CSocketCan> can;
        const bool done = attempt([&] { EXPECT_EQ(can.open("no interface has this name", 0, 0, false), -1); });
        EXPECT_EQ(can.address.empty(), !done);
        can.close();
    });
}

TEST(EndpointAllocation, leavesASerialLineClosed)
{
    failEachAllocationInChild([] {
        CSerial serial;
        attempt([&] { EXPECT_EQ(serial.open(9999, 9600, 8, 1, 0, 0), 0); });
        EXPECT_FALSE(serial.isOpen());
    });
}

// --- Threads and locks --------------------------------------------------------------------------------------------

// libc keeps the stacks of up to five threads that have ended, and reuses their memory.
class ThreadsThatHoldStacks {
public:
    ThreadsThatHoldStacks()
    {
        for (std::thread& thread : threads)
            thread = std::thread([this] { end.waitFor(1); });
    }
    ~ThreadsThatHoldStacks()
    {
        end.add();
        for (std::thread& thread : threads)
            thread.join();
    }
    ThreadsThatHoldStacks(const ThreadsThatHoldStacks&) = delete;
    ThreadsThatHoldStacks& operator=(const ThreadsThatHoldStacks&) = delete;

private:
    Counter end;
    std::thread threads[8];
};

TEST(ThreadAllocation, startsNoThreadOrOneThatEnds)
{
    failEachAllocation([] {
        {
            const ThreadsThatHoldStacks holders;
            IdleThread thread;
            bool started = false;
            attempt([&] { started = thread.start(); });
            EXPECT_EQ(started, failedAllocations() == 0);
            EXPECT_TRUE(!started || comesTrue([&] { return !thread.isRunning(); }));
            EXPECT_TRUE(thread.start()); // the next call
            EXPECT_TRUE(comesTrue([&] { return !thread.isRunning(); }));
        }
        keepBlocks();
    });
}

TEST(ThreadAllocation, isNotNeededForLocks)
{
    failEachAllocation([] {
        gqdb::CMutex mutex;
        gqdb::CReadWriteLock lock;
        EXPECT_TRUE(attempt([&] {
            const gqdb::CMutexLocker locker(&mutex);
            lock.lockForRead();
            lock.unlockForRead();
            lock.lockForWrite();
            lock.unlockForWrite();
        }));
        EXPECT_EQ(failedAllocations(), 0);
    });
}
