// The classes as programs built against version 1 use them, on 64-bit Linux: derived classes access the protected
// fields and override the virtual operations. A moved field does not compile.

#include "gqFileLog.h"
#include "gqLibUnix.h"
#include "gqSerialUnix.h"
#include "gqSocketUnix.h"
#include "gqTools.h"
#include "tcpApi.h"
#include "udpApi.h"

#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

using namespace gqdb;

// Both compilers lay out classes with virtual operations and bases as the platform's C++ ABI specifies.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

#define AT(type, field, position) static_assert(offsetof(type, field) == (position), #type "::" #field " has moved")

// --- Sizes ----------------------------------------------------------------------------------------------------------

static_assert(sizeof(CByte2Val) == 1);
static_assert(sizeof(CByte2Rdb) == 1);
static_assert(sizeof(CByte2Fep) == 1);
static_assert(sizeof(CSocketAPI) == 96);
static_assert(sizeof(CTcpAPI) == 104);
static_assert(sizeof(CUdpAPI) == 104);

static_assert(sizeof(CAbstractSocket) == 64);
static_assert(sizeof(CTcpSocket) == 64);
static_assert(sizeof(CTcpServer) == 64);
static_assert(sizeof(CUdpServer) == 136);
static_assert(sizeof(CUdpClient) == 64);
static_assert(sizeof(CSocketCan) == 64);
static_assert(sizeof(SocketOwner) == 4);
static_assert(sizeof(TcpSocketStatus) == 32);
static_assert(sizeof(CGqSocket) == 1);
static_assert(sizeof(CSerial) == 16);

static_assert(sizeof(CThread) == 24);
static_assert(sizeof(CMutex) == 40);
static_assert(sizeof(CMutexLocker) == 8);
static_assert(sizeof(CReadWriteLock) == 88);

static_assert(sizeof(CGqFileLog::LogData) == 16);
static_assert(sizeof(CGqFileLog) == 112);
static_assert(sizeof(CGqTools) == 1);

// --- Fields ---------------------------------------------------------------------------------------------------------

AT(SocketOwner, descriptor, 0);

AT(TcpSocketStatus, socket, 0);
AT(TcpSocketStatus, readable, 8);
AT(TcpSocketStatus, writable, 12);
AT(TcpSocketStatus, exceptional, 16);
AT(TcpSocketStatus, context, 24);

AT(CGqFileLog::LogData, text, 0);
AT(CGqFileLog::LogData, seconds, 8);
AT(CGqFileLog::LogData, milliseconds, 12);

struct SocketApiFields : CSocketAPI {
    static void check()
    {
        AT(SocketApiFields, serverHost, 8); // after the pointer to the virtual table
        AT(SocketApiFields, serverPort, 40);
        AT(SocketApiFields, connected, 44);
        AT(SocketApiFields, recvBuffer, 48);
        AT(SocketApiFields, recvFrame, 56);
        AT(SocketApiFields, recvFrameSize, 64);
        AT(SocketApiFields, sendSeq, 68);
        AT(SocketApiFields, reserved1, 72);
        AT(SocketApiFields, recvOverTm, 76);
        AT(SocketApiFields, sendOverTm, 80);
        AT(SocketApiFields, reserved2, 84);
        AT(SocketApiFields, reserved3, 88);
    }
};

struct TcpApiFields : CTcpAPI {
    static void check() { AT(TcpApiFields, socket, 96); }
};

struct UdpApiFields : CUdpAPI {
    static void check() { AT(UdpApiFields, socket, 96); }
};

struct AbstractSocketFields : CAbstractSocket {
    static void check()
    {
        AT(AbstractSocketFields, handle, 8);
        AT(AbstractSocketFields, opened, 16);
        AT(AbstractSocketFields, address, 24);
        AT(AbstractSocketFields, port, 56);
    }
};

struct UdpServerFields : CUdpServer {
    static void check()
    {
        AT(UdpServerFields, multicastGroup, 64);
        AT(UdpServerFields, multicastInterface, 96);
        AT(UdpServerFields, multicastJoined, 128);
    }
};

struct SerialFields : CSerial {
    static void check()
    {
        AT(SerialFields, opened, 0);
        AT(SerialFields, handle, 8);
    }
};

struct ThreadFields : CThread {
    static void check()
    {
        AT(ThreadFields, threadId, 8);
        AT(ThreadFields, threadHandle, 16);
    }
};

struct MutexFields : CMutex {
    static void check() { AT(MutexFields, handle, 0); }
};

struct MutexLockerFields : CMutexLocker {
    static void check() { AT(MutexLockerFields, mutex, 0); }
};

struct ReadWriteLockFields : CReadWriteLock {
    static void check()
    {
        AT(ReadWriteLockFields, readerCount, 0);
        AT(ReadWriteLockFields, readerGuard, 8);
        AT(ReadWriteLockFields, writeMutex, 48);
    }
};

struct FileLogFields : CGqFileLog {
    static void check()
    {
        AT(FileLogFields, file, 0);
        AT(FileLogFields, withTime, 16);
        AT(FileLogFields, savedCount, 20);
        AT(FileLogFields, queue, 24);
        AT(FileLogFields, queueMutex, 32);
        AT(FileLogFields, fileMutex, 72);
    }
};

// --- Virtual operations ---------------------------------------------------------------------------------------------

// The slot number. A pointer to a virtual operation contains the slot's byte offset plus 1.
static const auto slot = [](auto operation) {
    ptrdiff_t content = 0;
    std::memcpy(&content, &operation, sizeof content);
    return (content - 1) / ptrdiff_t(sizeof(void*));
};

// An operation that a derived class adds is in the slot after the last one of its base.
struct ApiUser : CSocketAPI {
    virtual void next() {}
};

struct TcpApiUser : CTcpAPI {
    virtual void next() {}
};

struct UdpApiUser : CUdpAPI {
    virtual void next() {}
};

TEST(ApiSlots, containTheTwoTimeOuts)
{
    EXPECT_EQ(slot(&CSocketAPI::setRecvOverTm), 0);
    EXPECT_EQ(slot(&CSocketAPI::setSendOverTm), 1);
    EXPECT_EQ(slot(&ApiUser::next), 2);
}

TEST(ApiSlots, areTheSameInTheClients)
{
    EXPECT_EQ(slot(&CTcpAPI::setRecvOverTm), 0);
    EXPECT_EQ(slot(&CTcpAPI::setSendOverTm), 1);
    EXPECT_EQ(slot(&TcpApiUser::next), 2);
    EXPECT_EQ(slot(&UdpApiUser::next), 2);
}

struct SocketUser : CAbstractSocket {
    virtual void next() {}
};

struct TcpSocketUser : CTcpSocket {
    virtual void next() {}
};

struct TcpServerUser : CTcpServer {
    virtual void next() {}
};

struct UdpServerUser : CUdpServer {
    virtual void next() {}
};

struct UdpClientUser : CUdpClient {
    virtual void next() {}
};

struct SocketCanUser : CSocketCan {
    virtual void next() {}
};

TEST(EndpointSlots, containTheTwoTimeOutsAndClose)
{
    EXPECT_EQ(slot(&CAbstractSocket::setRecvOverTm), 0);
    EXPECT_EQ(slot(&CAbstractSocket::setSendOverTm), 1);
    EXPECT_EQ(slot(&CAbstractSocket::close), 2);
    EXPECT_EQ(slot(&SocketUser::next), 3);
}

TEST(EndpointSlots, areTheSameInTheEndpoints)
{
    EXPECT_EQ(slot(&TcpSocketUser::next), 3);
    EXPECT_EQ(slot(&TcpServerUser::next), 3);
    EXPECT_EQ(slot(&UdpServerUser::next), 3);
    EXPECT_EQ(slot(&UdpClientUser::next), 3);
    EXPECT_EQ(slot(&SocketCanUser::next), 3);
}

struct ThreadUser : CThread {
    virtual void next() {}
};

TEST(ThreadSlots, containBothFormsOfTheDestructorAndRun)
{
    EXPECT_EQ(slot(&CThread::run), 2);
    EXPECT_EQ(slot(&ThreadUser::next), 3);
}
