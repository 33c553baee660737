#include "support/threads.h"

#include "gqLibUnix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <pthread.h>

using Order = std::vector<std::string>;

// --- CMutex ---

class OpenMutex : public gqdb::CMutex {
public:
    using CMutex::handle;
};

static_assert(std::is_same_v<decltype(OpenMutex::handle), pthread_mutex_t>);
static_assert(sizeof(gqdb::CMutex) == sizeof(pthread_mutex_t));
static_assert(std::is_same_v<decltype(&gqdb::CMutex::lock), void (gqdb::CMutex::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CMutex::unlock), void (gqdb::CMutex::*)()>);

TEST(Mutex, startsUnlocked)
{
    OpenMutex mutex;
    EXPECT_TRUE(isFreeForOthers(mutex.handle));
}

TEST(Mutex, isFreeAfterAsManyUnlocksAsLocks)
{
    OpenMutex mutex;
    mutex.lock();
    mutex.lock();
    EXPECT_TRUE(isFree(mutex.handle)); // for this thread
    EXPECT_FALSE(isFreeForOthers(mutex.handle));
    mutex.unlock();
    EXPECT_FALSE(isFreeForOthers(mutex.handle));
    mutex.unlock();
    EXPECT_TRUE(isFreeForOthers(mutex.handle));
}

TEST(Mutex, blocksAnotherThread)
{
    gqdb::CMutex mutex;
    Order order;
    mutex.lock();
    OtherThread other;
    other.begin([&] {
        mutex.lock();
        order.push_back("other");
        mutex.unlock();
    });
    order.push_back("owner");
    mutex.unlock();
    other.finish();
    EXPECT_EQ(order, (Order{"owner", "other"}));
}

TEST(Mutex, excludesOtherThreads)
{
    gqdb::CMutex mutex;
    int sum = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 5000; ++round) {
                mutex.lock();
                ++sum;
                mutex.unlock();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, 20000);
}

// --- CMutexLocker ---

class OpenLocker : public gqdb::CMutexLocker {
public:
    using CMutexLocker::CMutexLocker;
    using CMutexLocker::mutex;
};

static_assert(std::is_same_v<decltype(OpenLocker::mutex), gqdb::CMutex*>);
static_assert(sizeof(gqdb::CMutexLocker) == sizeof(gqdb::CMutex*));
static_assert(std::is_convertible_v<gqdb::CMutex*, gqdb::CMutexLocker>);

TEST(MutexLocker, convertsFromAPointerToAMutex)
{
    OpenMutex mutex;
    {
        const gqdb::CMutexLocker locker = &mutex;
        EXPECT_FALSE(isFreeForOthers(mutex.handle));
    }
    EXPECT_TRUE(isFreeForOthers(mutex.handle));
}

TEST(MutexLocker, holdsTheMutexForItsLifetime)
{
    OpenMutex mutex;
    {
        const OpenLocker locker(&mutex);
        EXPECT_EQ(locker.mutex, &mutex);
        EXPECT_FALSE(isFreeForOthers(mutex.handle));
    }
    EXPECT_TRUE(isFreeForOthers(mutex.handle));
}

TEST(MutexLocker, locksAMutexThatItsThreadAlreadyHolds)
{
    OpenMutex mutex;
    {
        const gqdb::CMutexLocker outer(&mutex);
        {
            const gqdb::CMutexLocker inner(&mutex);
            EXPECT_FALSE(isFreeForOthers(mutex.handle));
        }
        EXPECT_FALSE(isFreeForOthers(mutex.handle));
    }
    EXPECT_TRUE(isFreeForOthers(mutex.handle));
}

// --- CReadWriteLock ---

class OpenReadWriteLock : public gqdb::CReadWriteLock {
public:
    using CReadWriteLock::readerCount;
    using CReadWriteLock::readerGuard;
    using CReadWriteLock::writeMutex;
};

static_assert(std::is_same_v<decltype(OpenReadWriteLock::readerCount), int>);
static_assert(std::is_same_v<decltype(OpenReadWriteLock::readerGuard), pthread_mutex_t>);
static_assert(std::is_same_v<decltype(OpenReadWriteLock::writeMutex), pthread_mutex_t>);
static_assert(std::is_same_v<decltype(&gqdb::CReadWriteLock::lockForRead), void (gqdb::CReadWriteLock::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CReadWriteLock::unlockForRead), void (gqdb::CReadWriteLock::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CReadWriteLock::lockForWrite), void (gqdb::CReadWriteLock::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CReadWriteLock::unlockForWrite), void (gqdb::CReadWriteLock::*)()>);

class ReadWriteLock : public testing::Test {
protected:
    OpenReadWriteLock lock;
    OtherThread other;

    bool isFreeToWrite() { return isFreeForOthers(lock.writeMutex); }
    bool isFreeToJoin() { return isFreeForOthers(lock.readerGuard); }
};

TEST_F(ReadWriteLock, keepsTheOrderOfItsFields)
{
    const char* base = reinterpret_cast<const char*>(&lock);
    const size_t guard = sizeof(void*); // a mutex is aligned as a pointer is
    EXPECT_EQ(reinterpret_cast<const char*>(&lock.readerCount), base);
    EXPECT_EQ(reinterpret_cast<const char*>(&lock.readerGuard), base + guard);
    EXPECT_EQ(reinterpret_cast<const char*>(&lock.writeMutex), base + guard + sizeof(pthread_mutex_t));
    EXPECT_EQ(sizeof(gqdb::CReadWriteLock), guard + 2 * sizeof(pthread_mutex_t));
}

TEST_F(ReadWriteLock, startsUnlocked)
{
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_TRUE(isFreeToJoin());
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, allowsTwoThreadsToReadAtOnce)
{
    lock.lockForRead();
    EXPECT_EQ(lock.readerCount, 1);
    other.run([&] { lock.lockForRead(); });
    EXPECT_EQ(lock.readerCount, 2);
    EXPECT_TRUE(isFreeToJoin());
    EXPECT_FALSE(isFreeToWrite());
    other.run([&] { lock.unlockForRead(); });
    EXPECT_EQ(lock.readerCount, 1);
    EXPECT_FALSE(isFreeToWrite());
    lock.unlockForRead();
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, countsConcurrentReaders)
{
    const auto readOften = [this] {
        for (int round = 0; round < 50000; ++round) {
            lock.lockForRead();
            lock.unlockForRead();
        }
    };
    lock.lockForRead(); // first and last reader
    OtherThread another;
    another.begin(readOften);
    other.begin(readOften);
    another.finish();
    other.finish();
    EXPECT_EQ(lock.readerCount, 1);
    lock.unlockForRead();
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, makesAWriterWaitForTheLastReader)
{
    std::atomic<int> readersSeen = -1;
    OtherThread writer;
    lock.lockForRead();
    other.run([&] { lock.lockForRead(); });
    writer.begin([&] {
        lock.lockForWrite();
        readersSeen = lock.readerCount;
        lock.unlockForWrite();
    });
    other.run([&] { lock.unlockForRead(); });
    EXPECT_EQ(lock.readerCount, 1);
    EXPECT_EQ(readersSeen, -1);
    lock.unlockForRead();
    writer.finish();
    EXPECT_EQ(readersSeen, 0);
}

TEST_F(ReadWriteLock, allowsReadersToJoinPastAWaitingWriter)
{
    std::atomic<bool> written = false;
    OtherThread writer;
    lock.lockForRead();
    writer.begin([&] {
        lock.lockForWrite();
        written = true;
        lock.unlockForWrite();
    });
    for (int i = 0; i < 100; ++i) {
        other.run([&] { lock.lockForRead(); });
        EXPECT_EQ(lock.readerCount, 2);
        other.run([&] { lock.unlockForRead(); });
    }
    EXPECT_FALSE(written);
    lock.unlockForRead();
    writer.finish();
    EXPECT_TRUE(written);
}

TEST_F(ReadWriteLock, makesTheFirstReaderWaitForAWriterHoldingTheGuard)
{
    std::atomic<bool> reads = false;
    lock.lockForWrite();
    other.begin([&] {
        lock.lockForRead();
        reads = true;
    });
    EXPECT_TRUE(comesTrue([&] { return !isFreeToJoin(); })); // stays so: other readers wait there
    EXPECT_FALSE(isFreeToJoin());
    EXPECT_FALSE(reads);
    lock.unlockForWrite();
    other.finish();
    EXPECT_TRUE(reads);
    EXPECT_EQ(lock.readerCount, 1);
    EXPECT_TRUE(isFreeToJoin());
    other.run([&] { lock.unlockForRead(); });
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, makesAWriterWaitForAnotherWriter)
{
    Order order;
    lock.lockForWrite();
    EXPECT_FALSE(isFreeToWrite());
    EXPECT_TRUE(isFreeToJoin());
    EXPECT_EQ(lock.readerCount, 0);
    other.begin([&] {
        lock.lockForWrite();
        order.push_back("second");
        lock.unlockForWrite();
    });
    order.push_back("first");
    lock.unlockForWrite();
    other.finish();
    EXPECT_EQ(order, (Order{"first", "second"}));
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, allowsAThreadToWriteTwice)
{
    lock.lockForWrite();
    lock.lockForWrite();
    lock.unlockForWrite();
    EXPECT_FALSE(isFreeToWrite());
    lock.unlockForWrite();
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, allowsAWriterToRead)
{
    lock.lockForWrite();
    lock.lockForRead();
    EXPECT_EQ(lock.readerCount, 1);
    lock.unlockForRead();
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_FALSE(isFreeToWrite());
    lock.unlockForWrite();
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, allowsTheFirstReaderToWriteDespiteOtherReaders)
{
    lock.lockForRead();
    other.run([&] { lock.lockForRead(); });
    lock.lockForWrite();
    EXPECT_EQ(lock.readerCount, 2);
    lock.unlockForWrite();
    other.run([&] { lock.unlockForRead(); });
    EXPECT_FALSE(isFreeToWrite());
    lock.unlockForRead();
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLock, excludesReadersAndWriters)
{
    int value = 0;
    std::atomic<bool> arrives = false;
    const auto letArrive = [&] {
        while (!arrives.exchange(false))
            std::this_thread::yield();
        std::this_thread::yield(); // to its lock, and past it if it does not wait
    };
    for (int round = 0; round < 25; ++round) {
        lock.lockForRead();
        other.begin([&] {
            arrives = true;
            lock.lockForWrite();
            ++value;
            lock.unlockForWrite();
        });
        letArrive();
        EXPECT_EQ(value, 2 * round);
        lock.unlockForRead();
        other.finish();

        int seen = -1;
        lock.lockForWrite();
        other.begin([&] {
            arrives = true;
            lock.lockForRead();
            seen = value;
            lock.unlockForRead();
        });
        letArrive();
        ++value;
        lock.unlockForWrite();
        other.finish();
        EXPECT_EQ(seen, value);
    }
}

// --- Unlocks by a thread that does not hold the lock: they fail silently ---

class ReadWriteLockWrongThread : public ReadWriteLock {
protected:
    void SetUp() override
    {
        if (underThreadSanitizer)
            GTEST_SKIP() << "ThreadSanitizer reports such an unlock";
    }
};

TEST_F(ReadWriteLockWrongThread, staysLockedForTheFirstReaderIfAnotherLeavesLast)
{
    lock.lockForRead();
    other.run([&] { lock.lockForRead(); });
    lock.unlockForRead();
    other.run([&] { lock.unlockForRead(); }); // EPERM
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_FALSE(isFreeToWrite());
    EXPECT_TRUE(isFreeToJoin());
    EXPECT_TRUE(isFree(lock.writeMutex)); // held by this thread
    lock.unlockForRead();                 // releases it without a read lock
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLockWrongThread, keepsTheCountAtZeroWithoutAReader)
{
    lock.unlockForRead();
    lock.unlockForRead();
    EXPECT_EQ(lock.readerCount, 0);
    EXPECT_TRUE(isFreeToJoin());
    EXPECT_TRUE(isFreeToWrite());
    lock.lockForRead(); // still works
    EXPECT_EQ(lock.readerCount, 1);
    EXPECT_FALSE(isFreeToWrite());
    lock.unlockForRead();
    EXPECT_TRUE(isFreeToWrite());
}

TEST_F(ReadWriteLockWrongThread, isNotReleasedByTheUnlocksOfOthers)
{
    lock.lockForWrite();
    other.run([&] { lock.unlockForWrite(); });
    EXPECT_FALSE(isFreeToWrite());
    other.run([&] { lock.unlockForRead(); });
    EXPECT_FALSE(isFreeToWrite());
    lock.unlockForWrite();
    EXPECT_TRUE(isFreeToWrite());
}
