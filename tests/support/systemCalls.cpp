#undef _FORTIFY_SOURCE // its inline forms of these functions prevent their definition

#include "support/systemCalls.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/can/raw.h>
#include <net/if.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pthread.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

// --- The script ---

struct Answer {
    long result = 0;
    int error = 0;
    QByteArray out;
    std::array<std::vector<int>, 3> ready; // of a select

    void handOut(void* target, size_t room) const
    {
        if (!out.isEmpty()) // the target may be null otherwise
            std::memcpy(target, out.constData(), std::min(size_t(out.size()), room));
    }
};

class SystemCallScript {
public:
    std::map<std::string, std::deque<Answer>> answers;
    std::string lines;
    SystemCalls::NewThread newThread;
    termios lineSettings = {};
    std::map<const pthread_mutex_t*, std::string> mutexes; // with their names
    int mutexCount = 0;                                    // of all ever initialised

    bool knows(const pthread_mutex_t* mutex) const { return mutexes.count(mutex) != 0; }

    // Records the call and returns its answer.
    template <typename... Arguments>
    Answer call(const char* function, const Arguments&... arguments)
    {
        std::ostringstream line;
        [[maybe_unused]] const char* separator = "";
        line << function << "(";
        ((line << separator << arguments, separator = ", "), ...);
        lines += line.str() + ")\n";

        std::deque<Answer>& waiting = answers[function];
        Answer answer;
        if (!waiting.empty()) {
            answer = waiting.front();
            waiting.pop_front();
        }
        if (answer.result < 0)
            errno = answer.error;
        return answer;
    }
};

static thread_local SystemCallScript* active = nullptr;

SystemCalls::SystemCalls() : script(new SystemCallScript)
{
    active = script.get();
}

SystemCalls::~SystemCalls()
{
    active = nullptr;
    for (const auto& [function, waiting] : script->answers)
        EXPECT_TRUE(waiting.empty()) << waiting.size() << " answers of " << function << " were not used";
}

void SystemCalls::answer(const std::string& function, long result, const QByteArray& out)
{
    script->answers[function].push_back({result, 0, out, {}});
}

void SystemCalls::refuse(const std::string& function, int error)
{
    script->answers[function].push_back({-1, error, {}, {}});
}

void SystemCalls::answerSelect(int result, const Descriptors& readable, const Descriptors& writable,
                               const Descriptors& exceptional)
{
    script->answers["select"].push_back({result, 0, {}, {readable, writable, exceptional}});
}

SystemCalls::NewThread SystemCalls::newThread() const
{
    return script->newThread;
}

void SystemCalls::name(const pthread_mutex_t& mutex, const std::string& text)
{
    ASSERT_TRUE(script->knows(&mutex)) << text << " was not initialised";
    script->mutexes[&mutex] = text;
}

termios SystemCalls::lineSettings() const
{
    return script->lineSettings;
}

std::string SystemCalls::take()
{
    return std::exchange(script->lines, {});
}

// --- Text of a call ---

std::string timeOption(const std::string& wide)
{
    if (sizeof(timeval) == 16)
        return "[" + wide + "], 16";
    return "[" + wide.substr(0, 12) + wide.substr(24, 11) + "], 8";
}

#define NAME(constant)                                                                                                 \
    {                                                                                                                  \
        constant, #constant                                                                                            \
    }

static std::string named(int value, std::initializer_list<std::pair<int, const char*>> names)
{
    for (const auto& [constant, name] : names) {
        if (constant == value)
            return name;
    }
    return std::to_string(value);
}

static std::string familyName(int family)
{
    return named(family, {NAME(AF_INET), NAME(AF_CAN), NAME(AF_UNIX)});
}

static std::string typeName(int type)
{
    return named(type, {NAME(SOCK_STREAM), NAME(SOCK_DGRAM), NAME(SOCK_RAW)});
}

static std::string levelName(int level)
{
    return named(level, {NAME(SOL_SOCKET), NAME(IPPROTO_IP), NAME(IPPROTO_TCP), NAME(SOL_CAN_RAW)});
}

static std::string optionName(int level, int option)
{
    switch (level) {
    case SOL_SOCKET:
        return named(option, {NAME(SO_REUSEADDR), NAME(SO_LINGER), NAME(SO_RCVBUF), NAME(SO_SNDBUF), NAME(SO_RCVTIMEO),
                              NAME(SO_SNDTIMEO), NAME(SO_ERROR), NAME(SO_KEEPALIVE), NAME(SO_BROADCAST)});
    case IPPROTO_IP:
        return named(option, {NAME(IP_ADD_MEMBERSHIP), NAME(IP_DROP_MEMBERSHIP), NAME(IP_MULTICAST_IF),
                              NAME(IP_MULTICAST_LOOP), NAME(IP_MULTICAST_TTL)});
    case IPPROTO_TCP:
        return named(option, {NAME(TCP_NODELAY)});
    case SOL_CAN_RAW:
        return named(option, {NAME(CAN_RAW_FILTER), NAME(CAN_RAW_RECV_OWN_MSGS), NAME(CAN_RAW_FD_FRAMES)});
    default:
        return std::to_string(option);
    }
}

static std::string flagName(int flags)
{
    return named(flags, {NAME(MSG_NOSIGNAL), NAME(MSG_DONTWAIT)});
}

static std::string bytes(const void* data, size_t size)
{
    return "[" + hex(QByteArray(static_cast<const char*>(data), int(size))) + "]";
}

static std::string addressText(const sockaddr* address, socklen_t size)
{
    if (address->sa_family == AF_CAN && size >= 8) { // 0 family, 4 index of the interface
        int index = 0;
        std::memcpy(&index, reinterpret_cast<const char*>(address) + 4, sizeof index);
        return "{AF_CAN, " + std::to_string(index) + "}";
    }
    if (address->sa_family != AF_INET || size < sizeof(sockaddr_in))
        return bytes(address, size);
    sockaddr_in inet = {};
    std::memcpy(&inet, address, sizeof inet);
    const QByteArray port(reinterpret_cast<const char*>(&inet.sin_port), sizeof inet.sin_port);
    const QByteArray host(reinterpret_cast<const char*>(&inet.sin_addr), sizeof inet.sin_addr);
    return "{AF_INET, " + hex(port) + ", " + hex(host) + "}";
}

// Bit n of a set is bit n % 8 of its byte n / 8.
static std::string setText(const fd_set* set, int count)
{
    if (set == nullptr)
        return "null";
    const auto* octets = reinterpret_cast<const unsigned char*>(set);
    std::string text;
    for (int descriptor = 0; descriptor < count; ++descriptor) {
        if ((octets[descriptor / 8] >> (descriptor % 8) & 1) != 0)
            text += (text.empty() ? "" : ", ") + std::to_string(descriptor);
    }
    return "{" + text + "}";
}

static void writeSet(fd_set* set, int count, const std::vector<int>& ready)
{
    if (set == nullptr)
        return;
    auto* octets = reinterpret_cast<unsigned char*>(set);
    const int wordSize = int(sizeof(unsigned long));
    std::fill_n(octets, (count + 8 * wordSize - 1) / (8 * wordSize) * wordSize, '\0');
    for (const int descriptor : ready)
        octets[descriptor / 8] |= static_cast<unsigned char>(1 << descriptor % 8);
}

static std::string timeText(const timeval* time)
{
    if (time == nullptr)
        return "null";
    return "{" + std::to_string(time->tv_sec) + ", " + std::to_string(time->tv_usec) + "}";
}

// The libc function that is replaced below.
template <typename Function>
static Function* libc(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

static std::string attributesText(const pthread_attr_t* attributes)
{
    if (attributes == nullptr)
        return "null";
    int state = 0;
    int inheritance = 0;
    ::pthread_attr_getdetachstate(attributes, &state);
    ::pthread_attr_getinheritsched(attributes, &inheritance);

    pthread_attr_t same;
    ::pthread_attr_init(&same); // clears all bytes, including padding
    ::pthread_attr_setdetachstate(&same, state);
    ::pthread_attr_setinheritsched(&same, inheritance);
    const bool more = std::memcmp(&same, attributes, sizeof same) != 0;
    libc<decltype(::pthread_attr_destroy)>("pthread_attr_destroy")(&same);

    return "{" + named(state, {NAME(PTHREAD_CREATE_DETACHED), NAME(PTHREAD_CREATE_JOINABLE)}) + ", " +
           named(inheritance, {NAME(PTHREAD_INHERIT_SCHED), NAME(PTHREAD_EXPLICIT_SCHED)}) +
           (more ? ", and more}" : "}");
}

static std::string attributesText(const pthread_mutexattr_t* attributes)
{
    if (attributes == nullptr)
        return "null";
    int type = 0;
    ::pthread_mutexattr_gettype(attributes, &type);
    pthread_mutexattr_t same;
    ::pthread_mutexattr_init(&same);
    ::pthread_mutexattr_settype(&same, type);
    const bool more = std::memcmp(&same, attributes, sizeof same) != 0;
    ::pthread_mutexattr_destroy(&same);
    return named(type, {NAME(PTHREAD_MUTEX_NORMAL), NAME(PTHREAD_MUTEX_RECURSIVE), NAME(PTHREAD_MUTEX_ERRORCHECK)}) +
           (more ? ", and more" : "");
}

// --- The functions ---

extern "C" {

int socket(int family, int type, int protocol) noexcept
{
    if (active == nullptr)
        return libc<decltype(::socket)>("socket")(family, type, protocol);
    return int(active->call("socket", familyName(family), typeName(type), protocol).result);
}

int setsockopt(int descriptor, int level, int option, const void* value, socklen_t size) noexcept
{
    if (active == nullptr)
        return libc<decltype(::setsockopt)>("setsockopt")(descriptor, level, option, value, size);
    const std::string name = optionName(level, option);
    return int(active->call("setsockopt", descriptor, levelName(level), name, bytes(value, size), size).result);
}

int getsockopt(int descriptor, int level, int option, void* value, socklen_t* size) noexcept
{
    if (active == nullptr)
        return libc<decltype(::getsockopt)>("getsockopt")(descriptor, level, option, value, size);
    const Answer answer = active->call("getsockopt", descriptor, levelName(level), optionName(level, option), *size);
    answer.handOut(value, *size);
    return int(answer.result);
}

int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept
{
    if (active == nullptr)
        return libc<decltype(::bind)>("bind")(descriptor, address, size);
    return int(active->call("bind", descriptor, addressText(address, size), size).result);
}

int listen(int descriptor, int backlog) noexcept
{
    if (active == nullptr)
        return libc<decltype(::listen)>("listen")(descriptor, backlog);
    return int(active->call("listen", descriptor, backlog).result);
}

int accept(int descriptor, sockaddr* address, socklen_t* size)
{
    if (active == nullptr)
        return libc<decltype(::accept)>("accept")(descriptor, address, size);
    const Answer answer = active->call("accept", descriptor, *size);
    answer.handOut(address, *size);
    return int(answer.result);
}

int connect(int descriptor, const sockaddr* address, socklen_t size)
{
    if (active == nullptr)
        return libc<decltype(::connect)>("connect")(descriptor, address, size);
    return int(active->call("connect", descriptor, addressText(address, size), size).result);
}

int shutdown(int descriptor, int how) noexcept
{
    if (active == nullptr)
        return libc<decltype(::shutdown)>("shutdown")(descriptor, how);
    return int(
        active->call("shutdown", descriptor, named(how, {NAME(SHUT_RD), NAME(SHUT_WR), NAME(SHUT_RDWR)})).result);
}

int getpeername(int descriptor, sockaddr* address, socklen_t* size) noexcept
{
    if (active == nullptr)
        return libc<decltype(::getpeername)>("getpeername")(descriptor, address, size);
    const Answer answer = active->call("getpeername", descriptor, *size);
    answer.handOut(address, *size);
    return int(answer.result);
}

int getsockname(int descriptor, sockaddr* address, socklen_t* size) noexcept
{
    if (active == nullptr)
        return libc<decltype(::getsockname)>("getsockname")(descriptor, address, size);
    const Answer answer = active->call("getsockname", descriptor, *size);
    answer.handOut(address, *size);
    return int(answer.result);
}

ssize_t send(int descriptor, const void* data, size_t size, int flags)
{
    if (active == nullptr)
        return libc<decltype(::send)>("send")(descriptor, data, size, flags);
    return active->call("send", descriptor, bytes(data, size), size, flagName(flags)).result;
}

ssize_t recv(int descriptor, void* buffer, size_t size, int flags)
{
    if (active == nullptr)
        return libc<decltype(::recv)>("recv")(descriptor, buffer, size, flags);
    const Answer answer = active->call("recv", descriptor, size, flagName(flags));
    answer.handOut(buffer, size);
    return answer.result;
}

ssize_t sendto(int descriptor, const void* data, size_t size, int flags, const sockaddr* address, socklen_t addressSize)
{
    if (active == nullptr)
        return libc<decltype(::sendto)>("sendto")(descriptor, data, size, flags, address, addressSize);
    return active
        ->call("sendto", descriptor, bytes(data, size), size, flagName(flags), addressText(address, addressSize),
               addressSize)
        .result;
}

ssize_t recvfrom(int descriptor, void* buffer, size_t size, int flags, sockaddr* address, socklen_t* addressSize)
{
    if (active == nullptr)
        return libc<decltype(::recvfrom)>("recvfrom")(descriptor, buffer, size, flags, address, addressSize);
    const Answer answer = active->call("recvfrom", descriptor, size, flagName(flags), *addressSize);
    const int count = std::max(int(answer.result), 0);
    const QByteArray data = answer.out.left(count);
    const QByteArray sender = answer.out.mid(count);
    std::memcpy(buffer, data.constData(), std::min(size_t(data.size()), size));
    std::memcpy(address, sender.constData(), std::min(size_t(sender.size()), size_t(*addressSize)));
    return answer.result;
}

int select(int count, fd_set* readable, fd_set* writable, fd_set* exceptional, timeval* time)
{
    if (active == nullptr)
        return libc<decltype(::select)>("select")(count, readable, writable, exceptional, time);
    const Answer answer = active->call("select", count, setText(readable, count), setText(writable, count),
                                       setText(exceptional, count), timeText(time));
    if (answer.result >= 0) {
        writeSet(readable, count, answer.ready[0]);
        writeSet(writable, count, answer.ready[1]);
        writeSet(exceptional, count, answer.ready[2]);
    }
    return int(answer.result);
}

int close(int descriptor)
{
    if (active == nullptr)
        return libc<decltype(::close)>("close")(descriptor);
    return int(active->call("close", descriptor).result);
}

int fcntl(int descriptor, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long); // as wide as a pointer, which some commands expect
    va_end(arguments);
    if (active == nullptr)
        return libc<decltype(::fcntl)>("fcntl")(descriptor, command, argument);
    return int(active->call("fcntl", descriptor, named(command, {NAME(F_GETFL), NAME(F_SETFL)}), int(argument)).result);
}

sighandler_t signal(int number, sighandler_t handler) noexcept
{
    if (active == nullptr)
        return libc<decltype(::signal)>("signal")(number, handler);
    const std::string name = named(number, {NAME(SIGPIPE)});
    const char* action = handler == SIG_IGN ? "SIG_IGN" : handler == SIG_DFL ? "SIG_DFL" : "a function";
    return active->call("signal", name, action).result < 0 ? SIG_ERR : SIG_DFL;
}

int pthread_create(pthread_t* handle, const pthread_attr_t* attributes, void* (*entry)(void*), void* argument) noexcept
{
    if (active == nullptr)
        return libc<decltype(::pthread_create)>("pthread_create")(handle, attributes, entry, argument);
    active->newThread = {handle, entry, argument};
    const Answer answer = active->call("pthread_create", attributesText(attributes));
    answer.handOut(handle, sizeof *handle);
    return int(answer.result);
}

int pthread_attr_destroy(pthread_attr_t* attributes) noexcept
{
    if (active != nullptr)
        active->call("pthread_attr_destroy", attributesText(attributes));
    return libc<decltype(::pthread_attr_destroy)>("pthread_attr_destroy")(attributes); // frees their memory
}

int pthread_cancel(pthread_t handle)
{
    if (active == nullptr)
        return libc<decltype(::pthread_cancel)>("pthread_cancel")(handle);
    return int(active->call("pthread_cancel", handle).result);
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept
{
    if (active == nullptr)
        return libc<decltype(::pthread_mutex_init)>("pthread_mutex_init")(mutex, attributes);
    std::string& name = active->mutexes[mutex];
    name = "mutex " + std::to_string(++active->mutexCount);
    return int(active->call("pthread_mutex_init", name, attributesText(attributes)).result);
}

int pthread_mutexattr_destroy(pthread_mutexattr_t* attributes) noexcept
{
    ::pthread_mutexattr_settype(attributes,
                                PTHREAD_MUTEX_ERRORCHECK); // use after destruction shows in the recorded call
    return libc<decltype(::pthread_mutexattr_destroy)>("pthread_mutexattr_destroy")(attributes);
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    if (active == nullptr || !active->knows(mutex))
        return libc<decltype(::pthread_mutex_lock)>("pthread_mutex_lock")(mutex);
    return int(active->call("pthread_mutex_lock", active->mutexes[mutex]).result);
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    if (active == nullptr || !active->knows(mutex))
        return libc<decltype(::pthread_mutex_unlock)>("pthread_mutex_unlock")(mutex);
    return int(active->call("pthread_mutex_unlock", active->mutexes[mutex]).result);
}

int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept
{
    if (active == nullptr || !active->knows(mutex))
        return libc<decltype(::pthread_mutex_destroy)>("pthread_mutex_destroy")(mutex);
    const std::string name = active->mutexes[mutex];
    active->mutexes.erase(mutex);
    return int(active->call("pthread_mutex_destroy", name).result);
}

int sched_yield() noexcept
{
    if (active == nullptr)
        return libc<decltype(::sched_yield)>("sched_yield")();
    return int(active->call("sched_yield").result);
}

unsigned int sleep(unsigned int seconds)
{
    if (active == nullptr)
        return libc<decltype(::sleep)>("sleep")(seconds);
    return static_cast<unsigned int>(active->call("sleep", seconds).result);
}

int usleep(useconds_t microseconds)
{
    if (active == nullptr)
        return libc<decltype(::usleep)>("usleep")(microseconds);
    return int(active->call("usleep", microseconds).result);
}

ssize_t read(int descriptor, void* buffer, size_t size)
{
    if (active == nullptr)
        return libc<decltype(::read)>("read")(descriptor, buffer, size);
    const Answer answer = active->call("read", descriptor, size);
    answer.handOut(buffer, size);
    return answer.result;
}

ssize_t write(int descriptor, const void* data, size_t size)
{
    if (active == nullptr)
        return libc<decltype(::write)>("write")(descriptor, data, size);
    return active->call("write", descriptor, bytes(data, size), size).result;
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (active == nullptr)
        return libc<decltype(::ioctl)>("ioctl")(descriptor, request, argument);
    auto* interface = static_cast<ifreq*>(argument);
    const std::string name(interface->ifr_name, ::strnlen(interface->ifr_name, sizeof interface->ifr_name));
    const Answer answer = active->call("ioctl", descriptor, named(int(request), {NAME(SIOCGIFINDEX)}), name);
    answer.handOut(&interface->ifr_ifindex, sizeof interface->ifr_ifindex);
    return int(answer.result);
}

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (active == nullptr)
        return libc<decltype(::open)>("open")(path, flags, mode);
    return int(active->call("open", path, named(flags, {NAME(O_RDWR | O_NOCTTY | O_NONBLOCK)})).result);
}

int isatty(int descriptor) noexcept
{
    if (active == nullptr)
        return libc<decltype(::isatty)>("isatty")(descriptor);
    return int(active->call("isatty", descriptor).result);
}

int tcgetattr(int descriptor, termios* settings) noexcept
{
    if (active == nullptr)
        return libc<decltype(::tcgetattr)>("tcgetattr")(descriptor, settings);
    const Answer answer = active->call("tcgetattr", descriptor);
    answer.handOut(settings, sizeof *settings);
    return int(answer.result);
}

int tcsetattr(int descriptor, int when, const termios* settings) noexcept
{
    if (active == nullptr)
        return libc<decltype(::tcsetattr)>("tcsetattr")(descriptor, when, settings);
    active->lineSettings = *settings;
    const std::string name = named(when, {NAME(TCSANOW), NAME(TCSADRAIN), NAME(TCSAFLUSH)});
    return int(active->call("tcsetattr", descriptor, name).result);
}

int tcflush(int descriptor, int queues) noexcept
{
    if (active == nullptr)
        return libc<decltype(::tcflush)>("tcflush")(descriptor, queues);
    const std::string name = named(queues, {NAME(TCIFLUSH), NAME(TCOFLUSH), NAME(TCIOFLUSH)});
    return int(active->call("tcflush", descriptor, name).result);
}

} // extern "C"
