// The classes as programs built against version 1 use them: derived classes access the protected fields. The first
// position is that with 64-bit pointers, the second that with 32-bit ones. Nothing runs: a moved field does not compile.

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

static constexpr size_t here(size_t wide, size_t narrow)
{
    return sizeof(void*) == 8 ? wide : narrow;
}

#define SIZE(type, wide, narrow) static_assert(sizeof(type) == here(wide, narrow), #type " has another size")
#define AT(type, field, wide, narrow)                                                                                  \
    static_assert(offsetof(type, field) == here(wide, narrow), #type "::" #field " has moved")

static const size_t mutexSize = sizeof(pthread_mutex_t); // 40 on x86-64, 48 on arm64, 24 on armhf

// --- Sizes ----------------------------------------------------------------------------------------------------------

SIZE(CByte2Val, 1, 1);
SIZE(CByte2Rdb, 1, 1);
SIZE(CByte2Fep, 1, 1);
SIZE(CSocketAPI, 96, 72);
SIZE(CTcpAPI, 104, 76);
SIZE(CUdpAPI, 104, 76);

SIZE(CAbstractSocket, 64, 40);
SIZE(CTcpSocket, 64, 40);
SIZE(CTcpServer, 64, 40);
SIZE(CUdpServer, 136, 92);
SIZE(CUdpClient, 64, 40);
SIZE(CSocketCan, 64, 40);
SIZE(SocketOwner, 4, 4);
SIZE(TcpSocketStatus, 32, 20);
SIZE(CGqSocket, 1, 1);
SIZE(CSerial, 16, 8);

SIZE(CThread, 24, 12);
SIZE(CMutex, mutexSize, mutexSize);
SIZE(CMutexLocker, 8, 4);
SIZE(CReadWriteLock, 8 + 2 * mutexSize, 4 + 2 * mutexSize);

SIZE(CGqFileLog::LogData, 16, 12);
SIZE(CGqFileLog, 32 + 2 * mutexSize, 20 + 2 * mutexSize);
SIZE(CGqTools, 1, 1);

// --- Fields ---------------------------------------------------------------------------------------------------------

AT(SocketOwner, descriptor, 0, 0);

AT(TcpSocketStatus, socket, 0, 0);
AT(TcpSocketStatus, readable, 8, 4);
AT(TcpSocketStatus, writable, 12, 8);
AT(TcpSocketStatus, exceptional, 16, 12);
AT(TcpSocketStatus, context, 24, 16);

AT(CGqFileLog::LogData, text, 0, 0);
AT(CGqFileLog::LogData, seconds, 8, 4);
AT(CGqFileLog::LogData, milliseconds, 12, 8);

struct SocketApiFields : CSocketAPI {
    static void check()
    {
        AT(SocketApiFields, serverHost, 8, 4); // after the pointer to the virtual table
        AT(SocketApiFields, serverPort, 40, 28);
        AT(SocketApiFields, connected, 44, 32);
        AT(SocketApiFields, recvBuffer, 48, 36);
        AT(SocketApiFields, recvFrame, 56, 40);
        AT(SocketApiFields, recvFrameSize, 64, 44);
        AT(SocketApiFields, sendSeq, 68, 48);
        AT(SocketApiFields, reserved1, 72, 52);
        AT(SocketApiFields, recvOverTm, 76, 56);
        AT(SocketApiFields, sendOverTm, 80, 60);
        AT(SocketApiFields, reserved2, 84, 64);
        AT(SocketApiFields, reserved3, 88, 68);
    }
};

struct TcpApiFields : CTcpAPI {
    static void check() { AT(TcpApiFields, socket, 96, 72); }
};

struct UdpApiFields : CUdpAPI {
    static void check() { AT(UdpApiFields, socket, 96, 72); }
};

struct AbstractSocketFields : CAbstractSocket {
    static void check()
    {
        AT(AbstractSocketFields, handle, 8, 4);
        AT(AbstractSocketFields, opened, 16, 8);
        AT(AbstractSocketFields, address, 24, 12);
        AT(AbstractSocketFields, port, 56, 36);
    }
};

struct UdpServerFields : CUdpServer {
    static void check()
    {
        AT(UdpServerFields, multicastGroup, 64, 40);
        AT(UdpServerFields, multicastInterface, 96, 64);
        AT(UdpServerFields, multicastJoined, 128, 88);
    }
};

struct SerialFields : CSerial {
    static void check()
    {
        AT(SerialFields, opened, 0, 0);
        AT(SerialFields, handle, 8, 4);
    }
};

struct ThreadFields : CThread {
    static void check()
    {
        AT(ThreadFields, threadId, 8, 4);
        AT(ThreadFields, threadHandle, 16, 8);
    }
};

struct MutexFields : CMutex {
    static void check() { AT(MutexFields, handle, 0, 0); }
};

struct MutexLockerFields : CMutexLocker {
    static void check() { AT(MutexLockerFields, mutex, 0, 0); }
};

struct ReadWriteLockFields : CReadWriteLock {
    static void check()
    {
        AT(ReadWriteLockFields, readerCount, 0, 0);
        AT(ReadWriteLockFields, readerGuard, 8, 4);
        AT(ReadWriteLockFields, writeMutex, 8 + mutexSize, 4 + mutexSize);
    }
};

struct FileLogFields : CGqFileLog {
    static void check()
    {
        AT(FileLogFields, file, 0, 0);
        AT(FileLogFields, withTime, 16, 8);
        AT(FileLogFields, savedCount, 20, 12);
        AT(FileLogFields, queue, 24, 16);
        AT(FileLogFields, queueMutex, 32, 20);
        AT(FileLogFields, fileMutex, 32 + mutexSize, 20 + mutexSize);
    }
};
