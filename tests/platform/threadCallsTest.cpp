#include "support/hex.h"
#include "support/systemCalls.h"

#include "gqLibUnix.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <memory>
#include <string>

class ThreadCalls : public testing::Test {
protected:
    SystemCalls calls;
};

// --- Threads ---

// Checks whether it counts as running meanwhile.
class WatchedThread : public gqdb::CThread {
public:
    void run() override
    {
        ++runs;
        ranRunning = isRunning();
    }

    int runs = 0;
    bool ranRunning = false;

    using CThread::threadHandle;
    using CThread::threadId;
};

using ThreadStartCalls = ThreadCalls;

static const std::string startCalls = "pthread_create({PTHREAD_CREATE_DETACHED, PTHREAD_INHERIT_SCHED})\n"
                                      "pthread_attr_destroy({PTHREAD_CREATE_DETACHED, PTHREAD_INHERIT_SCHED})\n";

TEST_F(ThreadStartCalls, createsADetachedThreadWithInheritedScheduling)
{
    WatchedThread thread;
    EXPECT_EQ(calls.take(), "");
    EXPECT_TRUE(thread.start());
    EXPECT_EQ(calls.take(), startCalls);
    EXPECT_EQ(calls.newThread().handle, thread.threadHandle);
    EXPECT_EQ(thread.runs, 0); // runs only in the new thread
}

TEST_F(ThreadStartCalls, keepsTheLowHalfOfTheHandle)
{
    const struct {
        QByteArray handle; // in memory order
        unsigned int low;
    } handles[] = {
        {"88776655 44332211"_hex, 0x55667788},
        {"01000080 00000000"_hex, 0x80000001},
        {"00000000 01000000"_hex, 0},
    };
    for (const auto& [handle, low] : handles) {
        calls.answer("pthread_create", 0, handle);
        WatchedThread thread;
        EXPECT_TRUE(thread.start());
        EXPECT_EQ(unsigned(thread.threadId), low);
        EXPECT_EQ(thread.isRunning(), sizeof(pthread_t) == 8 || low != 0); // the last handle is 0 if it has 32 bits
    }
}

TEST_F(ThreadStartCalls, failsIfNoThreadCanBeCreated)
{
    for (const int error : {EAGAIN, EINVAL, EPERM, -1}) {
        calls.answer("pthread_create", error);
        WatchedThread thread;
        EXPECT_FALSE(thread.start());
        EXPECT_EQ(calls.take(), startCalls);
        EXPECT_FALSE(thread.isRunning());
        EXPECT_EQ(thread.threadId, 0);
    }
}

TEST_F(ThreadStartCalls, usesTheCellLeftByAFailedStart)
{
    calls.answer("pthread_create", EAGAIN, "07000000 00000000"_hex);
    WatchedThread thread;
    EXPECT_FALSE(thread.start());
    EXPECT_EQ(thread.threadId, 7);
    EXPECT_TRUE(thread.isRunning());
}

TEST_F(ThreadStartCalls, keepsTheFirstThreadIfTheSecondCannotBeCreated)
{
    calls.answer("pthread_create", 0, "07000000 00000000"_hex);
    calls.answer("pthread_create", EAGAIN);
    WatchedThread thread;
    EXPECT_TRUE(thread.start());
    EXPECT_FALSE(thread.start());
    EXPECT_EQ(calls.take(), startCalls + startCalls);
    EXPECT_EQ(thread.threadId, 7);
    EXPECT_TRUE(thread.isRunning());
}

TEST_F(ThreadStartCalls, createsAThreadThatCallsRunAndCountsAsRunning)
{
    calls.answer("pthread_create", 0, "07000000 00000000"_hex);
    WatchedThread thread;
    thread.start();
    const SystemCalls::NewThread made = calls.newThread();
    EXPECT_EQ(made.entry(made.argument), nullptr);
    EXPECT_EQ(thread.runs, 1);
    EXPECT_TRUE(thread.ranRunning);
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(thread.threadId, 7);
}

using ThreadTerminateCalls = ThreadCalls;

TEST_F(ThreadTerminateCalls, cancelsTheHandleAndChangesNothing)
{
    const bool isWide = sizeof(pthread_t) == 8;
    calls.answer("pthread_create", 0, isWide ? "00000000 01000000"_hex : "00000080"_hex);
    WatchedThread thread;
    thread.start();
    calls.take();
    thread.terminate();
    EXPECT_EQ(calls.take(), isWide ? "pthread_cancel(4294967296)\n" : "pthread_cancel(2147483648)\n");
    EXPECT_EQ(*thread.threadHandle, isWide ? 4294967296ull : 2147483648ull);
    EXPECT_TRUE(thread.isRunning());
}

TEST_F(ThreadTerminateCalls, cancelsAgainWhateverTheResult)
{
    calls.answer("pthread_create", 0, "07000000 00000000"_hex);
    calls.answer("pthread_cancel", ESRCH);
    WatchedThread thread;
    thread.start();
    calls.take();
    thread.terminate();
    EXPECT_TRUE(thread.isRunning());
    thread.terminate();
    EXPECT_EQ(calls.take(), "pthread_cancel(7)\n"
                            "pthread_cancel(7)\n");
}

TEST_F(ThreadTerminateCalls, cancelsNothingWithoutAThread)
{
    calls.answer("pthread_create", 0, "07000000 00000000"_hex);
    WatchedThread thread;
    thread.terminate();
    EXPECT_EQ(calls.take(), "");
    thread.start();
    calls.take();
    thread.setExitState();
    thread.terminate();
    EXPECT_EQ(calls.take(), "");
}

using ThreadDestructorCalls = ThreadCalls;

TEST_F(ThreadDestructorCalls, leavesTheThreadRunning)
{
    calls.answer("pthread_create", 0, "07000000 00000000"_hex);
    auto thread = std::make_unique<WatchedThread>();
    thread->start();
    calls.take();
    thread.reset();
    EXPECT_EQ(calls.take(), "");
}

// --- Mutexes ---

// Leaves other bytes than 0 where the next call has its variables.
[[gnu::noinline]] static void dirtyStack()
{
    volatile char bytes[1024];
    for (volatile char& byte : bytes)
        byte = '\xff';
}

class OpenMutex : public gqdb::CMutex {
public:
    using CMutex::handle;
};

using MutexCalls = ThreadCalls;

TEST_F(MutexCalls, createsARecursiveMutexAndDestroysIt)
{
    {
        dirtyStack();
        const gqdb::CMutex mutex;
        EXPECT_EQ(calls.take(), "pthread_mutex_init(mutex 1, PTHREAD_MUTEX_RECURSIVE)\n");
    }
    EXPECT_EQ(calls.take(), "pthread_mutex_destroy(mutex 1)\n");
}

TEST_F(MutexCalls, locksAndUnlocks)
{
    OpenMutex mutex;
    calls.name(mutex.handle, "handle");
    calls.take();
    mutex.lock();
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(handle)\n");
    mutex.unlock();
    EXPECT_EQ(calls.take(), "pthread_mutex_unlock(handle)\n");
}

TEST_F(MutexCalls, continuesAfterAFailure)
{
    calls.answer("pthread_mutex_init", ENOMEM);
    calls.answer("pthread_mutex_lock", EAGAIN);
    calls.answer("pthread_mutex_unlock", EPERM);
    calls.answer("pthread_mutex_destroy", EBUSY);
    {
        gqdb::CMutex mutex;
        mutex.lock();
        mutex.unlock();
    }
    EXPECT_EQ(calls.take(), "pthread_mutex_init(mutex 1, PTHREAD_MUTEX_RECURSIVE)\n"
                            "pthread_mutex_lock(mutex 1)\n"
                            "pthread_mutex_unlock(mutex 1)\n"
                            "pthread_mutex_destroy(mutex 1)\n");
}

using MutexLockerCalls = ThreadCalls;

TEST_F(MutexLockerCalls, locksOnceAndUnlocksOnce)
{
    gqdb::CMutex mutex;
    calls.take();
    {
        const gqdb::CMutexLocker locker(&mutex);
        EXPECT_EQ(calls.take(), "pthread_mutex_lock(mutex 1)\n");
    }
    EXPECT_EQ(calls.take(), "pthread_mutex_unlock(mutex 1)\n");
}

// --- The read-write lock ---

class OpenReadWriteLock : public gqdb::CReadWriteLock {
public:
    using CReadWriteLock::readerCount;
    using CReadWriteLock::readerGuard;
    using CReadWriteLock::writeMutex;
};

class ReadWriteLockCalls : public ThreadCalls {
protected:
    OpenReadWriteLock lock;

    ReadWriteLockCalls()
    {
        initialisation = calls.take();
        calls.name(lock.readerGuard, "readerGuard");
        calls.name(lock.writeMutex, "writeMutex");
    }

    std::string initialisation;
};

TEST_F(ReadWriteLockCalls, createsTwoRecursiveMutexes)
{
    EXPECT_EQ(initialisation, "pthread_mutex_init(mutex 1, PTHREAD_MUTEX_RECURSIVE)\n"
                              "pthread_mutex_init(mutex 2, PTHREAD_MUTEX_RECURSIVE)\n");
}

TEST_F(ReadWriteLockCalls, destroysBoth)
{
    {
        const gqdb::CReadWriteLock other;
        calls.take();
    }
    const std::string destruction = calls.take();
    const std::string third = "pthread_mutex_destroy(mutex 3)\n";
    const std::string fourth = "pthread_mutex_destroy(mutex 4)\n";
    EXPECT_TRUE(destruction == third + fourth || destruction == fourth + third) << destruction;
}

TEST_F(ReadWriteLockCalls, locksTheWriteMutexForTheFirstReaderHoldingTheGuard)
{
    lock.lockForRead();
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_lock(writeMutex)\n"
                            "pthread_mutex_unlock(readerGuard)\n");
    EXPECT_EQ(lock.readerCount, 1);
}

TEST_F(ReadWriteLockCalls, countsFurtherReadersUnderTheGuard)
{
    lock.lockForRead();
    calls.take();
    lock.lockForRead();
    lock.lockForRead();
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_unlock(readerGuard)\n"
                            "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_unlock(readerGuard)\n");
    EXPECT_EQ(lock.readerCount, 3);
}

TEST_F(ReadWriteLockCalls, unlocksTheWriteMutexForTheLastReaderHoldingTheGuard)
{
    lock.lockForRead();
    lock.lockForRead();
    calls.take();
    lock.unlockForRead();
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_unlock(readerGuard)\n");
    EXPECT_EQ(lock.readerCount, 1);
    lock.unlockForRead();
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_unlock(writeMutex)\n"
                            "pthread_mutex_unlock(readerGuard)\n");
    EXPECT_EQ(lock.readerCount, 0);
}

TEST_F(ReadWriteLockCalls, unlocksEvenWithoutAReader)
{
    for (const int count : {0, -1, -5}) {
        lock.readerCount = count;
        lock.unlockForRead();
        EXPECT_EQ(calls.take(), "pthread_mutex_lock(readerGuard)\n"
                                "pthread_mutex_unlock(writeMutex)\n"
                                "pthread_mutex_unlock(readerGuard)\n");
        EXPECT_EQ(lock.readerCount, 0);
    }
}

TEST_F(ReadWriteLockCalls, locksOnlyTheWriteMutexForAWriter)
{
    lock.lockForWrite();
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(writeMutex)\n");
    EXPECT_EQ(lock.readerCount, 0);
    lock.unlockForWrite();
    EXPECT_EQ(calls.take(), "pthread_mutex_unlock(writeMutex)\n");
    EXPECT_EQ(lock.readerCount, 0);
}

TEST_F(ReadWriteLockCalls, countsWhateverTheResults)
{
    for (const int error : {EAGAIN, EDEADLK})
        calls.answer("pthread_mutex_lock", error);
    for (int i = 0; i < 3; ++i)
        calls.answer("pthread_mutex_unlock", EPERM);
    lock.lockForRead();
    EXPECT_EQ(lock.readerCount, 1);
    lock.unlockForRead();
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_EQ(calls.take(), "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_lock(writeMutex)\n"
                            "pthread_mutex_unlock(readerGuard)\n"
                            "pthread_mutex_lock(readerGuard)\n"
                            "pthread_mutex_unlock(writeMutex)\n"
                            "pthread_mutex_unlock(readerGuard)\n");
}

// --- Sleeping ---

using SleepCalls = ThreadCalls;

TEST_F(SleepCalls, yieldsFromZeroDown)
{
    for (const int ms : {0, -1, -5, -1000, INT_MIN}) {
        SCOPED_TRACE(ms);
        gqdb::sleep(ms);
        EXPECT_EQ(calls.take(), "sched_yield()\n");
    }
}

TEST_F(SleepCalls, usesMicrosecondsBelowASecond)
{
    gqdb::sleep(1);
    EXPECT_EQ(calls.take(), "usleep(1000)\n");
    gqdb::sleep(45);
    EXPECT_EQ(calls.take(), "usleep(45000)\n");
    gqdb::sleep(999);
    EXPECT_EQ(calls.take(), "usleep(999000)\n");
}

TEST_F(SleepCalls, usesOnlySecondsForWholeSeconds)
{
    gqdb::sleep(1000);
    EXPECT_EQ(calls.take(), "sleep(1)\n");
    gqdb::sleep(60000);
    EXPECT_EQ(calls.take(), "sleep(60)\n");
}

TEST_F(SleepCalls, sleepsSecondsAndThenTheRest)
{
    gqdb::sleep(1001);
    EXPECT_EQ(calls.take(), "sleep(1)\n"
                            "usleep(1000)\n");
    gqdb::sleep(2500);
    EXPECT_EQ(calls.take(), "sleep(2)\n"
                            "usleep(500000)\n");
    gqdb::sleep(INT_MAX);
    EXPECT_EQ(calls.take(), "sleep(2147483)\n"
                            "usleep(647000)\n");
}

TEST_F(SleepCalls, doesNotResumeAfterAnInterruption)
{
    calls.answer("sleep", 2); // seconds left
    calls.refuse("usleep", EINTR);
    gqdb::sleep(2500);
    EXPECT_EQ(calls.take(), "sleep(2)\n"
                            "usleep(500000)\n");
    calls.refuse("usleep", EINTR);
    gqdb::sleep(500);
    EXPECT_EQ(calls.take(), "usleep(500000)\n");
}

using UsleepCalls = ThreadCalls;

TEST_F(UsleepCalls, makesNoCallFromZeroDown)
{
    for (const int us : {0, -1, -1000000, INT_MIN}) {
        SCOPED_TRACE(us);
        gqdb::usleep(us);
        EXPECT_EQ(calls.take(), "");
    }
}

TEST_F(UsleepCalls, passesTheMicrosecondsUnchanged)
{
    gqdb::usleep(1);
    EXPECT_EQ(calls.take(), "usleep(1)\n");
    gqdb::usleep(1000000);
    EXPECT_EQ(calls.take(), "usleep(1000000)\n");
    gqdb::usleep(INT_MAX);
    EXPECT_EQ(calls.take(), "usleep(2147483647)\n");
}

TEST_F(UsleepCalls, doesNotResumeAfterAnInterruption)
{
    calls.refuse("usleep", EINTR);
    gqdb::usleep(500);
    EXPECT_EQ(calls.take(), "usleep(500)\n");
}
