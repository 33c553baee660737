// The classes as programs built against version 1 use them, on 64-bit Linux: derived classes access the protected
// fields. Nothing runs: a moved field does not compile.

#include "gqFileLog.h"
#include "gqLibUnix.h"
#include "gqSerialUnix.h"
#include "gqSocketUnix.h"
#include "gqTools.h"
#include "tcpApi.h"
#include "udpApi.h"

#include <cstddef>

#include <pthread.h>

using namespace gqdb;

// Both compilers lay out classes with virtual operations and bases as the platform's C++ ABI specifies.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

#define AT(type, field, position) static_assert(offsetof(type, field) == (position), #type "::" #field " has moved")

static const size_t mutexSize = sizeof(pthread_mutex_t); // 40 on x86-64, 48 on arm64

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
static_assert(sizeof(CMutex) == mutexSize);
static_assert(sizeof(CMutexLocker) == 8);
static_assert(sizeof(CReadWriteLock) == 8 + 2 * mutexSize);

static_assert(sizeof(CGqFileLog::LogData) == 16);
static_assert(sizeof(CGqFileLog) == 32 + 2 * mutexSize);
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
        AT(ReadWriteLockFields, writeMutex, 8 + mutexSize);
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
        AT(FileLogFields, fileMutex, 32 + mutexSize);
    }
};
