#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

#include <pthread.h>

// For tests that put several threads in order, without sleeping. A wait that never ends is left to the time limit of
// the test.

// ThreadSanitizer speaks up at what some tests do on purpose.
#if defined(__SANITIZE_THREAD__)
static constexpr bool underThreadSanitizer = true;
#elif defined(__has_feature)
static constexpr bool underThreadSanitizer = __has_feature(thread_sanitizer);
#else
static constexpr bool underThreadSanitizer = false;
#endif

// Counts what other threads wait for.
class Counter {
public:
    void add()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ++count;
        changed.notify_all(); // with the lock held: whoever waits may be about to end this object
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

// Does one task after the other, in a thread of its own.
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
    std::thread thread; // last: works on all of the above
};

// Whether this thread could lock the mutex now.
inline bool isFree(pthread_mutex_t& mutex)
{
    if (::pthread_mutex_trylock(&mutex) != 0)
        return false;
    ::pthread_mutex_unlock(&mutex);
    return true;
}

// Whether another thread could.
inline bool isFreeForOthers(pthread_mutex_t& mutex)
{
    bool result = false;
    std::thread([&] { result = isFree(mutex); }).join();
    return result;
}

// Asks again and again; false if five seconds were not enough.
inline bool comesTrue(const std::function<bool()>& condition)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        std::this_thread::yield();
    }
    return true;
}
