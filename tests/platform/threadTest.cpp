#include "support/threads.h"

#include "gqLibUnix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

#include <pthread.h>

// --- Threads ---

// Counts the end of its thread, after all that the library does there, and also after a cancellation.
class EndOfThread {
public:
    ~EndOfThread() { counter->add(); }

    Counter* counter = nullptr;
};

// Runs the given work.
class TestThread : public gqdb::CThread {
public:
    explicit TestThread(std::function<void()> toDo = [] {}) : work(std::move(toDo)) {}

    void run() override
    {
        static thread_local EndOfThread end;
        end.counter = &ended;
        work();
    }

    void startAndWait()
    {
        EXPECT_TRUE(start());
        ended.waitFor(++waits);
    }

    std::function<void()> work;
    Counter ended; // threads
    int waits = 0;

    using CThread::threadHandle;
    using CThread::threadId;
};

// Counts, then waits for its cancellation without a blocking call: ThreadSanitizer loses track of a thread that is
// cancelled in one.
static void waitForCancellation(Counter& reached)
{
    reached.add();
    while (true) {
        ::pthread_testcancel();
        std::this_thread::yield();
    }
}

static_assert(std::is_abstract_v<gqdb::CThread>);
static_assert(std::has_virtual_destructor_v<gqdb::CThread>);
static_assert(std::is_same_v<decltype(&gqdb::CThread::run), void (gqdb::CThread::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CThread::start), bool (gqdb::CThread::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CThread::terminate), void (gqdb::CThread::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CThread::isRunning), bool (gqdb::CThread::*)()>);
static_assert(std::is_same_v<decltype(&gqdb::CThread::setExitState), void (gqdb::CThread::*)()>);
static_assert(std::is_same_v<decltype(TestThread::threadId), int>);
static_assert(std::is_same_v<decltype(TestThread::threadHandle), pthread_t*>);

TEST(ThreadClass, keepsTheOrderOfItsFieldsAfterTheTable)
{
    const TestThread thread;
    const char* base = reinterpret_cast<const char*>(static_cast<const gqdb::CThread*>(&thread));
    EXPECT_EQ(reinterpret_cast<const char*>(&thread.threadId) - base, ptrdiff_t(sizeof(void*)));
    EXPECT_EQ(reinterpret_cast<const char*>(&thread.threadHandle) - base, ptrdiff_t(2 * sizeof(void*)));
    EXPECT_EQ(sizeof(gqdb::CThread), 3 * sizeof(void*));
}

// The table of virtual operations: complete destructor, deleting destructor, run.
static void (*operationOf(gqdb::CThread& thread, int slot))(gqdb::CThread*)
{
    return (*reinterpret_cast<void (***)(gqdb::CThread*)>(&thread))[slot];
}

TEST(ThreadClass, hasRunAfterBothFormsOfTheDestructor)
{
    int runs = 0;
    TestThread thread([&] { ++runs; });
    std::thread([&] { operationOf(thread, 2)(&thread); }).join();
    EXPECT_EQ(runs, 1);
}

TEST(ThreadClass, isDeletedThroughItsBase)
{
    struct Watched : TestThread {
        explicit Watched(bool& flag) : destroyed(flag) {}
        ~Watched() override { destroyed = true; }
        bool& destroyed;
    };
    bool destroyed = false;
    gqdb::CThread* thread = new Watched(destroyed);
    delete thread;
    EXPECT_TRUE(destroyed);

    destroyed = false;
    thread = new Watched(destroyed);
    operationOf(*thread, 1)(thread); // AddressSanitizer reports it if this does not free
    EXPECT_TRUE(destroyed);
}

TEST(ThreadClass, startsNotRunning)
{
    TestThread thread;
    EXPECT_EQ(thread.threadId, 0);
    ASSERT_NE(thread.threadHandle, nullptr);
    EXPECT_EQ(*thread.threadHandle, pthread_t(0));
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadStart, runsInAnotherThreadUntilRunReturns)
{
    Counter running;
    Counter gate;
    pthread_t self = {};
    TestThread thread([&] {
        self = ::pthread_self();
        running.add();
        gate.waitFor(1);
    });
    EXPECT_TRUE(thread.start());
    running.waitFor(1);
    EXPECT_TRUE(thread.isRunning());
    EXPECT_EQ(*thread.threadHandle, self);
    EXPECT_NE(self, ::pthread_self());
    EXPECT_EQ(unsigned(thread.threadId), unsigned(self)); // the low half
    gate.add();
    thread.ended.waitFor(1);
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(*thread.threadHandle, pthread_t(0));
    EXPECT_EQ(unsigned(thread.threadId), unsigned(self));
}

TEST(ThreadStart, createsADetachedThread)
{
    int state = -1;
    TestThread thread([&] {
        pthread_attr_t attributes;
        ::pthread_getattr_np(::pthread_self(), &attributes);
        ::pthread_attr_getdetachstate(&attributes, &state);
        ::pthread_attr_destroy(&attributes);
    });
    thread.startAndWait();
    EXPECT_EQ(state, PTHREAD_CREATE_DETACHED);
}

TEST(ThreadStart, countsAsRunningInsideRun)
{
    bool running = false;
    TestThread thread;
    thread.work = [&] { running = thread.isRunning(); };
    thread.startAndWait();
    EXPECT_TRUE(running);
}

TEST(ThreadStart, showsItsEndToAPollingThread)
{
    TestThread thread;
    EXPECT_TRUE(thread.start());
    EXPECT_TRUE(comesTrue([&] { return !thread.isRunning(); }));
    thread.ended.waitFor(1);
}

TEST(ThreadStart, restartsAfterItsEnd)
{
    int runs = 0;
    TestThread thread([&] { ++runs; });
    for (int i = 1; i <= 3; ++i) {
        thread.startAndWait();
        EXPECT_EQ(runs, i);
        EXPECT_FALSE(thread.isRunning());
    }
}

// Two threads of one object, each with its own gate.
class TwoThreads : public testing::Test {
protected:
    std::atomic<int> begun = 0;
    Counter running;
    Counter gates[2];
    TestThread thread{[this] {
        const int number = begun++;
        running.add();
        gates[number].waitFor(1);
    }};

    void startBoth()
    {
        EXPECT_TRUE(thread.start());
        running.waitFor(1);
        const pthread_t first = *thread.threadHandle;
        EXPECT_TRUE(thread.start());
        running.waitFor(2);
        EXPECT_NE(*thread.threadHandle, first);
        EXPECT_EQ(unsigned(thread.threadId), unsigned(*thread.threadHandle)); // the second thread
        EXPECT_TRUE(thread.isRunning());
    }
};

using ThreadSecondStart = TwoThreads;

TEST_F(ThreadSecondStart, countsAsEndedOnceTheFirstThreadHasLeft)
{
    startBoth();
    gates[0].add();
    thread.ended.waitFor(1);
    EXPECT_FALSE(thread.isRunning()); // although the second still runs
    gates[1].add();
    thread.ended.waitFor(2);
    EXPECT_FALSE(thread.isRunning());
}

TEST_F(ThreadSecondStart, countsAsEndedOnceTheSecondThreadHasLeft)
{
    startBoth();
    gates[1].add();
    thread.ended.waitFor(1);
    EXPECT_FALSE(thread.isRunning());
    gates[0].add();
    thread.ended.waitFor(2);
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadTerminate, doesNothingBeforeAStart)
{
    TestThread thread;
    thread.terminate();
    EXPECT_FALSE(thread.isRunning());
    thread.startAndWait();
}

TEST(ThreadTerminate, doesNothingAfterTheEnd)
{
    TestThread thread;
    thread.startAndWait();
    thread.terminate();
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadTerminate, leavesACancelledThreadCountingAsRunning)
{
    Counter reached;
    TestThread thread([&] { waitForCancellation(reached); });
    EXPECT_TRUE(thread.start());
    reached.waitFor(1);
    const pthread_t handle = *thread.threadHandle;
    thread.terminate();
    thread.ended.waitFor(1);
    EXPECT_TRUE(thread.isRunning());
    EXPECT_EQ(*thread.threadHandle, handle);
    EXPECT_EQ(unsigned(thread.threadId), unsigned(handle));
    thread.setExitState();
    EXPECT_FALSE(thread.isRunning());
    thread.terminate(); // there is no thread
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadTerminate, lastsUntilTheNextCancellationPoint)
{
    Counter reached;
    std::atomic<bool> asked = false;
    bool wentOn = false;
    bool passedThePoint = false;
    TestThread thread([&] {
        reached.add();
        while (!asked)
            std::this_thread::yield();
        wentOn = true;
        ::pthread_testcancel();
        passedThePoint = true;
    });
    EXPECT_TRUE(thread.start());
    reached.waitFor(1);
    thread.terminate();
    EXPECT_TRUE(thread.isRunning());
    asked = true;
    thread.ended.waitFor(1);
    EXPECT_TRUE(wentOn);
    EXPECT_FALSE(passedThePoint);
}

TEST(ThreadTerminate, allowsAnotherStart)
{
    Counter reached;
    TestThread thread([&] { waitForCancellation(reached); });
    EXPECT_TRUE(thread.start());
    reached.waitFor(1);
    thread.terminate();
    thread.ended.waitFor(1);
    thread.work = [] {};
    EXPECT_TRUE(thread.start());
    thread.ended.waitFor(2);
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadTerminate, cancelsOnlyTheThreadOfTheLatestStart)
{
    Counter running;
    Counter gate;
    std::atomic<int> begun = 0;
    TestThread thread([&] {
        if (begun++ == 1)
            waitForCancellation(running);
        running.add();
        gate.waitFor(1);
    });
    EXPECT_TRUE(thread.start());
    running.waitFor(1);
    EXPECT_TRUE(thread.start());
    running.waitFor(2);
    thread.terminate();
    thread.ended.waitFor(1);
    EXPECT_TRUE(thread.isRunning());
    gate.add();
    thread.ended.waitFor(2);
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadSetExitState, makesARunningThreadCountAsEnded)
{
    Counter running;
    Counter gate;
    TestThread thread([&] {
        running.add();
        gate.waitFor(1);
    });
    EXPECT_TRUE(thread.start());
    running.waitFor(1);
    const int id = thread.threadId;
    thread.setExitState();
    EXPECT_FALSE(thread.isRunning());
    EXPECT_EQ(*thread.threadHandle, pthread_t(0));
    EXPECT_EQ(thread.threadId, id);
    thread.terminate(); // there is no thread
    gate.add();
    thread.ended.waitFor(1);
    EXPECT_FALSE(thread.isRunning());
}

TEST(ThreadSetExitState, doesNothingWithoutACell)
{
    TestThread thread;
    const std::unique_ptr<pthread_t> cell(std::exchange(thread.threadHandle, nullptr));
    *cell = 1;
    thread.setExitState();
    thread.terminate();
    EXPECT_EQ(thread.threadHandle, nullptr); // so the destructor has nothing to free
    EXPECT_EQ(*cell, pthread_t(1));
}

// --- Sleeping ---

using Clock = std::chrono::steady_clock;

TEST(Sleep, lastsAtLeastThatManyMilliseconds)
{
    const Clock::time_point start = Clock::now();
    gqdb::sleep(20);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(20));
}

TEST(Usleep, lastsAtLeastThatManyMicroseconds)
{
    const Clock::time_point start = Clock::now();
    gqdb::usleep(20000);
    EXPECT_GE(Clock::now() - start, std::chrono::microseconds(20000));
}

// --- Values of two halves ---

static_assert(std::is_same_v<decltype(&gqdb::int2Int64), long long (*)(int, int)>);
static_assert(std::is_same_v<decltype(&gqdb::int2UInt64), unsigned long long (*)(unsigned int, unsigned int)>);

TEST(Int2Int64, combinesTheHalves)
{
    EXPECT_EQ(gqdb::int2Int64(0, 0), 0);
    EXPECT_EQ(gqdb::int2Int64(1, 2), 0x0000000100000002);
    EXPECT_EQ(gqdb::int2Int64(0x12345678, 0x7ABCDEF0), 0x123456787ABCDEF0);
    EXPECT_EQ(gqdb::int2Int64(INT_MAX, INT_MAX), 0x7FFFFFFF7FFFFFFF);
    EXPECT_EQ(gqdb::int2Int64(-1, 0), -4294967296);
    EXPECT_EQ(gqdb::int2Int64(-1, 5), -4294967291);
    EXPECT_EQ(gqdb::int2Int64(INT_MIN, 0), LLONG_MIN);
}

TEST(Int2Int64, losesTheUpperHalfIfTheLowerIsNegative)
{
    for (const int high : {0, 1, 0x12345678, INT_MAX, -1, INT_MIN}) {
        EXPECT_EQ(gqdb::int2Int64(high, -1), -1);
        EXPECT_EQ(gqdb::int2Int64(high, -2), -2);
        EXPECT_EQ(gqdb::int2Int64(high, INT_MIN), -2147483648LL);
    }
}

TEST(Int2UInt64, combinesTheHalves)
{
    EXPECT_EQ(gqdb::int2UInt64(0, 0), 0u);
    EXPECT_EQ(gqdb::int2UInt64(1, 0xFFFFFFFF), 0x00000001FFFFFFFFu);
    EXPECT_EQ(gqdb::int2UInt64(0, 0x80000000), 0x80000000u);
    EXPECT_EQ(gqdb::int2UInt64(0x80000000, 0), 0x8000000000000000u);
    EXPECT_EQ(gqdb::int2UInt64(0x12345678, 0x9ABCDEF0), 0x123456789ABCDEF0u);
    EXPECT_EQ(gqdb::int2UInt64(UINT_MAX, UINT_MAX), ULLONG_MAX);
}
