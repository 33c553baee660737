#pragma once

#include "gqLibExport.h"

#include <pthread.h>

// Threads, locks and small helpers, thin over POSIX threads. Results of the pthread calls are looked at by start()
// alone.
namespace gqdb {

// A thread to derive from; run() is its whole work. Threads are detached: there is no join, and the only way to learn
// of an end is to poll isRunning().
//
// start() and terminate() belong to one thread at a time. isRunning() may be asked from any: it is a plain read of a
// cell that the thread clears at its end, without a lock or an atomic operation, so that it tells the end but orders
// nothing else. What the thread has made, take under a lock.
class GQLIB_EXPORT CThread {
public:
    CThread();

    // Neither stops the thread nor waits for it. Destroy the object only once isRunning() is false: a thread that still
    // runs goes on in a dead object, and writes into it at its end.
    virtual ~CThread();

    CThread(const CThread&) = delete;
    CThread& operator=(const CThread&) = delete;

    // An exception that leaves it ends the program.
    virtual void run() = 0;

    // Starts run() in a detached thread, with the scheduling of its starter and the system's stack size. Whether
    // pthread_create(3) made one. After its end it can be started anew. A second start while the first still runs is
    // not refused: whichever leaves run() first clears isRunning() for both. Behind a false isRunning() may say
    // anything: do not terminate() then.
    bool start();

    // Asks for cancellation, if a thread was started: see pthread_cancel(3). Does not wait. A cancelled thread goes on
    // counting as running; call setExitState() once you know that it has ended: an object in run() whose destructor
    // sets a flag under a lock can tell, for cancellation runs it. Code in run() that swallows every
    // exception (catch (...)) makes the program end, for cancellation unwinds the stack. Never call it on a thread that
    // has ended by cancellation, nor while it may be ending by itself: its handle is no longer valid then.
    void terminate();

    // From start() until run() returns or setExitState() is called.
    bool isRunning();

    // Lets isRunning() answer false. Every thread does so itself behind run().
    void setExitState();

protected:
    int threadId; // the low 32 bits of the handle, as start() found it: 0 if the thread had ended by then; for display
    pthread_t* threadHandle; // owned; 0 in it: not running
};

// A recursive mutex: one thread may lock it several times and has to unlock it as often. There is no try-lock.
class GQLIB_EXPORT CMutex {
public:
    CMutex();
    ~CMutex();
    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    void lock();   // waits without limit while another thread has it
    void unlock(); // by the thread that locked it

protected:
    pthread_mutex_t handle;
};

// Holds a mutex for its lifetime. The mutex is not owned, and must not be null.
class GQLIB_EXPORT CMutexLocker {
public:
    CMutexLocker(CMutex* mutexToLock); // locks
    ~CMutexLocker();                   // unlocks
    CMutexLocker(const CMutexLocker&) = delete;
    CMutexLocker& operator=(const CMutexLocker&) = delete;

protected:
    CMutex* mutex;
};

// Many readers or one writer. Readers join as long as one of them is in, so that writers can starve.
//
// The lock belongs to the thread of the first reader, and only that thread can give it back. Where another thread is
// the last reader out, its unlock fails unseen (EPERM), and the lock stays with the first reader's thread for good:
// writers in all other threads wait for ever, the next reader among them waits too, and from then on so does everyone
// who reads or stops reading. Use it only where the thread that is first in is last out too; else use a CMutex, or
// std::shared_mutex.
//
// A thread may lock twice, if it unlocks as often. But take care where one both reads and writes:
//   - a writer may read as well as long as no other thread reads or waits to; else both wait for ever
//   - the first reader gets the write lock at once, even while others read: it keeps none of them out
//   - any other reader that asks for writing waits for itself
//
// ThreadSanitizer reports an inverted order of its two mutexes. It does no harm: a last reader takes them the other way
// round only while readerCount keeps the first ones off the second mutex.
class GQLIB_EXPORT CReadWriteLock {
public:
    CReadWriteLock();
    ~CReadWriteLock();
    CReadWriteLock(const CReadWriteLock&) = delete;
    CReadWriteLock& operator=(const CReadWriteLock&) = delete;

    void lockForRead();    // waits while another thread writes
    void unlockForRead();  // without a reader it changes nothing but gives a held write lock of this thread back
    void lockForWrite();   // waits while another thread writes or any reads, but see above
    void unlockForWrite(); // by the thread that locked it

protected:
    int readerCount;
    pthread_mutex_t readerGuard; // held while readerCount changes, and while the first reader waits for a writer
    pthread_mutex_t writeMutex;  // of the writer, or of the first reader on behalf of all
};

// Sleeps for so many milliseconds, not seconds as sleep(3) does; from 0 down it yields the processor once. A signal
// ends it, or one of its two steps (whole seconds, then the rest), early. Behind `using namespace gqdb` a bare sleep(1)
// is this one, a millisecond: write ::sleep for seconds.
GQLIB_EXPORT void sleep(int ms);

// Sleeps for so many microseconds; from 0 down it returns at once. A signal ends it early.
GQLIB_EXPORT void usleep(int us);

// A 64-bit value of two halves. A negative `low` of the signed form fills the upper half with ones, whatever `high`
// was.
GQLIB_EXPORT long long int2Int64(int high, int low);
GQLIB_EXPORT unsigned long long int2UInt64(unsigned int high, unsigned int low);

} // namespace gqdb
