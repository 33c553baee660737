#pragma once

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <functional>
#include <thread>

#include <pthread.h>

// Makes a blocking call in this thread while signals arrive every millisecond until the call ends. Their handler does
// nothing; `flags` as for sigaction(2). Returns the call's result and keeps its errno. Signals that arrive while the
// call is not waiting have no effect, so timing does not matter.
inline int interrupted(const std::function<int()>& call, int flags = 0)
{
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    action.sa_flags = flags;
    ::sigaction(SIGUSR1, &action, nullptr); // kept, as a signal may still be pending

    sigset_t signalSet;
    ::sigemptyset(&signalSet);
    ::sigaddset(&signalSet, SIGUSR1);

    std::atomic<bool> ended{false};
    const pthread_t caller = ::pthread_self();
    std::thread signaller([&] {
        while (!ended) {
            ::pthread_kill(caller, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const int result = call();
    const int error = errno;
    ::pthread_sigmask(SIG_BLOCK, &signalSet, nullptr);
    ended = true;
    signaller.join();

    const timespec now = {0, 0};
    ::sigtimedwait(&signalSet, nullptr, &now); // the last signal must not interrupt the rest of the test
    ::pthread_sigmask(SIG_UNBLOCK, &signalSet, nullptr);
    errno = error;
    return result;
}
