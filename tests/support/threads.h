#pragma once

#include "support/slowness.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

#include <pthread.h>

// For tests that order several threads without sleeping. A wait that never ends is caught by the time limit of the
// test.

// ThreadSanitizer reports what some tests do on purpose.
#if defined(__SANITIZE_THREAD__)
static constexpr bool underThreadSanitizer = true;
#elif defined(__has_feature)
static constexpr bool underThreadSanitizer = __has_feature(thread_sanitizer);
#else
static constexpr bool underThreadSanitizer = false;
#endif

// Counts events that other threads wait for.
class Counter {
public:
    void add()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ++count;
        changed.notify_all(); // with the lock held: the waiting thread may destroy this object
    }

    void waitFor(int wanted)
    {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return count >= wanted; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
};

// Runs tasks one after the other in its own thread.
class OtherThread {
public:
    OtherThread() : thread(&OtherThread::work, this) {}

    ~OtherThread()
    {
        begin(nullptr);
        thread.join();
    }

    OtherThread(const OtherThread&) = delete;
    OtherThread& operator=(const OtherThread&) = delete;

    void begin(std::function<void()> newTask)
    {
        task = std::move(newTask);
        begun.add();
        ++tasks;
    }

    void finish() { done.waitFor(tasks); }

    void run(std::function<void()> newTask)
    {
        begin(std::move(newTask));
        finish();
    }

private:
    void work()
    {
        for (int number = 1; begun.waitFor(number), task; ++number) {
            task();
            done.add();
        }
    }

    std::function<void()> task; // null ends the thread
    int tasks = 0;
    Counter begun;
    Counter done;
    std::thread thread; // last member: uses all of the above
};

// Returns true if this thread can lock the mutex now.
inline bool isFree(pthread_mutex_t& mutex)
{
    if (::pthread_mutex_trylock(&mutex) != 0)
        return false;
    ::pthread_mutex_unlock(&mutex);
    return true;
}

// Returns true if another thread can lock the mutex now.
inline bool isFreeForOthers(pthread_mutex_t& mutex)
{
    bool result = false;
    std::thread([&] { result = isFree(mutex); }).join();
    return result;
}

// Polls until the condition is true. Returns false after five seconds, later if this machine is slow.
inline bool comesTrue(const std::function<bool()>& condition)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(5 * slowness());
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        std::this_thread::yield();
    }
    return true;
}
