// For programs that count their lines: writes the counters before a signal, kill() or _exit() ends the program, too.
// Linked only in the coverage preset.

#include <csignal>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" void __gcov_dump(); // NOLINT(bugprone-reserved-identifier): part of gcc

// Another signal must not interrupt the writing: files that are written twice at a time are damaged. Files that a test's
// soft limit cuts are damaged, too.
[[gnu::destructor]] static void protectWriting()
{
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    rlimit size = {};
    getrlimit(RLIMIT_FSIZE, &size);
    size.rlim_cur = size.rlim_max;
    setrlimit(RLIMIT_FSIZE, &size);
}

static void writeCounters()
{
    protectWriting();
    __gcov_dump();
}

static void endBySignal(int signal)
{
    writeCounters();
    std::signal(signal, SIG_DFL);
    raise(signal); // takes effect once the handler returns
}

[[gnu::constructor]] static void handleSignals()
{
    std::signal(SIGTERM, endBySignal);
    std::signal(SIGINT, endBySignal);
}

extern "C" int kill(pid_t process, int signal) noexcept
{
    if (process == getpid()) {
        writeCounters();
        std::signal(signal, SIG_DFL);
    }
    return static_cast<int>(syscall(SYS_kill, process, signal));
}

extern "C" void _exit(int code)
{
    writeCounters();
    syscall(SYS_exit_group, code);
    __builtin_unreachable();
}
