#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <unordered_map>

// Runs tasks in the calling thread, each once: when a descriptor is ready, or after a time. A task may add and remove
// others.
class EventLoop {
public:
    using Task = std::function<void()>;

    EventLoop();
    ~EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    // Replace what the descriptor was waiting for. An error or the end of its stream also makes it ready.
    void whenReadable(int descriptor, Task task);
    void whenWritable(int descriptor, Task task);

    // Must be called before the descriptor is closed.
    void forget(int descriptor);

    void after(int ms, Task task);

    // Returns only if waiting fails, with errno.
    void run();

private:
    using Clock = std::chrono::steady_clock;

    void await(int descriptor, unsigned int events, Task task);
    int msToNextTimer() const;
    void runTimers();
    void runTaskOf(int descriptor);

    int epoll;
    std::unordered_map<int, Task> waiting; // by descriptor
    std::multimap<Clock::time_point, Task> timers;
};
