// For programs under QEMU's user emulation, which has waitid(P_PIDFD) but not clone(CLONE_PIDFD). QProcess tries the
// first and then relies on the second. Without the first it uses fork(2). scripts/port links this to every program.

#include <cerrno>
#include <cstdarg>

#include <dlfcn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

extern "C" [[gnu::visibility("default")]] long syscall(long number, ...)
{
    using Call = long (*)(long, ...);
    static const Call next = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "syscall"));
    long arguments[6];
    va_list list;
    va_start(list, number);
    for (long& argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && arguments[0] == P_PIDFD) {
        errno = EINVAL;
        return -1;
    }
    return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}
