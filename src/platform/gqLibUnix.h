#pragma once

#include "gqLibExport.h"

#include <pthread.h>

// Threads, locks and small helpers over POSIX threads. Only start() checks the result of its pthread call.
namespace gqdb {

// Base class of a thread, whose work is run(). Threads are detached: they cannot be joined, and the only way to detect
// the end of one is to poll isRunning().
//
// Only one thread at a time may call start() and terminate(). Any thread may call isRunning(), which reads a variable
// that the thread clears at its end, without a lock or an atomic operation: false does not make other data of the
// thread visible. Protect the results of a thread with a lock.
class GQLIB_EXPORT CThread {
public:
    CThread();

    // Neither stops the thread nor waits for it. Destroy the object only once isRunning() is false: a running thread
    // keeps using the object and writes to it at its end.
    virtual ~CThread();

    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    // An exception that leaves run() ends the program.
    virtual void run() = 0;

    // Starts run() in a detached thread with the scheduling of the caller and the default stack size. Returns true if
    // pthread_create(3) succeeded. After its end, the thread can be started again. A second start while the first still
    // runs is not refused: the first of the two that leaves run() makes isRunning() return false for both. If start()
    // returned false, isRunning() is meaningless; do not call terminate().
    bool start();

    // Requests cancellation of a running thread with pthread_cancel(3) and does not wait. isRunning() stays true; call
    // setExitState() once the thread has ended. To detect that, let the destructor of an object in run() set a flag
    // under a lock: cancellation unwinds the stack. Code in run() that catches all exceptions (catch (...)) without
    // rethrowing ends the program. Do not call terminate() on a cancelled thread, nor while the thread may be ending:
    // the handle is no longer valid then.
    void terminate();

    // Returns true from start() until run() returns or setExitState() is called.
    bool isRunning();

    // Makes isRunning() return false. Each thread does this itself after run().
    void setExitState();

protected:
    int threadId; // low 32 bits of the handle as read by start(), 0 if the thread had already ended; for display
    pthread_t* threadHandle; // points to the handle, 0 if not running; owned
};

// A recursive mutex: a thread may lock it several times and must unlock it as often. There is no try-lock.
class GQLIB_EXPORT CMutex {
public:
    CMutex();
    ~CMutex();
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    void lock();   // waits indefinitely while another thread holds it
    void unlock(); // only the thread that locked it can unlock it

protected:
    pthread_mutex_t handle;
};

// Locks a mutex for its lifetime. The mutex is not owned and must not be null.
class GQLIB_EXPORT CMutexLocker {
public:
    CMutexLocker(CMutex* mutexToLock); // locks
    ~CMutexLocker();                   // unlocks
    CMutexLocker(const CMutexLocker&) = delete;
    CMutexLocker& operator=(const CMutexLocker&) = delete;

protected:
    CMutex* mutex;
};

// Several readers or one writer. While one thread reads, further readers are admitted, so that writers can starve.
//
// The thread of the first reader owns the lock, and only that thread can release it. If another thread is the last
// reader to unlock, its unlock fails without notice (EPERM) and the first reader's thread keeps the lock: writers in
// all other threads wait indefinitely, and so does the next reader among them; after that, every lockForRead and
// unlockForRead waits too. Use this class only if the first thread to lock for reading is the last to unlock; otherwise
// use CMutex or std::shared_mutex.
//
// A thread may lock several times if it unlocks as often. Take care if it both reads and writes:
//   - a writer may also read unless another thread is waiting to read: then both wait indefinitely
//   - the first reader gets the write lock immediately, even while others read
//   - any other reader that locks for writing waits indefinitely
//
// ThreadSanitizer reports an inverted order of the two mutexes. There is no deadlock: only a last reader takes them in
// the other order, while readerCount keeps first readers from the second mutex.
class GQLIB_EXPORT CReadWriteLock {
public:
    CReadWriteLock();
    ~CReadWriteLock();
    CReadWriteLock(const CReadWriteLock&) = delete;
    CReadWriteLock& operator=(const CReadWriteLock&) = delete;

    void lockForRead();    // waits while another thread writes
    void unlockForRead();  // if there is no reader, releases a write lock of this thread
    void lockForWrite();   // waits while another thread writes or reads, with the exceptions above
    void unlockForWrite(); // only the thread that locked it can unlock it

protected:
    int readerCount;
    pthread_mutex_t readerGuard; // held while readerCount changes, and while the first reader waits for a writer
    pthread_mutex_t writeMutex;  // held by the writer, or by the first reader on behalf of all readers
};

// Sleeps for `ms` milliseconds (not seconds, as sleep(3) does); 0 or a negative value yields the processor once. From
// 1000 on it sleeps in two steps, whole seconds and the rest. A signal ends the current step early. In a scope with
// `using namespace gqdb`, call ::sleep for the function of the system.
GQLIB_EXPORT void sleep(int ms);

// Sleeps for `us` microseconds; returns immediately if it is 0 or negative. A signal ends it early.
GQLIB_EXPORT void usleep(int us);

// Return the 64-bit value of two halves. In the signed form, a negative `low` sets all bits of the upper half, whatever
// `high` is.
GQLIB_EXPORT long long int2Int64(int high, int low);
GQLIB_EXPORT unsigned long long int2UInt64(unsigned int high, unsigned int low);

} // namespace gqdb
