#include "eventLoop.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <utility>

EventLoop::EventLoop() : epoll(epoll_create1(EPOLL_CLOEXEC)) {}

EventLoop::~EventLoop()
{
    close(epoll);
}

void EventLoop::whenReadable(int descriptor, Task task)
{
    await(descriptor, EPOLLIN, std::move(task));
}

void EventLoop::whenWritable(int descriptor, Task task)
{
    await(descriptor, EPOLLOUT, std::move(task));
}

// EPOLLONESHOT: a descriptor without a task reports nothing, not even the end of its stream.
void EventLoop::await(int descriptor, unsigned int events, Task task)
{
    epoll_event event = {};
    event.events = events | EPOLLONESHOT;
    event.data.fd = descriptor;
    if (epoll_ctl(epoll, EPOLL_CTL_MOD, descriptor, &event) != 0)
        epoll_ctl(epoll, EPOLL_CTL_ADD, descriptor, &event);
    waiting[descriptor] = std::move(task);
}

void EventLoop::forget(int descriptor)
{
    epoll_ctl(epoll, EPOLL_CTL_DEL, descriptor, nullptr);
    waiting.erase(descriptor);
}

void EventLoop::after(int ms, Task task)
{
    timers.emplace(Clock::now() + std::chrono::milliseconds(ms), std::move(task));
}

int EventLoop::msToNextTimer() const
{
    if (timers.empty())
        return -1;
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(timers.begin()->first - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

void EventLoop::runTimers()
{
    const Clock::time_point now = Clock::now();
    while (!timers.empty() && timers.begin()->first <= now) {
        const Task task = std::move(timers.begin()->second);
        timers.erase(timers.begin());
        task();
    }
}

void EventLoop::runTaskOf(int descriptor)
{
    const auto found = waiting.find(descriptor);
    if (found == waiting.end()) // forgotten by a task since epoll_wait returned
        return;
    const Task task = std::move(found->second);
    waiting.erase(found);
    task();
}

void EventLoop::run()
{
    epoll_event events[64];
    for (;;) {
        const int count = epoll_wait(epoll, events, 64, msToNextTimer());
        if (count < 0 && errno != EINTR)
            return;
        for (int i = 0; i < count; ++i)
            runTaskOf(events[i].data.fd);
        runTimers();
    }
}
