// Prints what jobs of the library allocate and keep, and the memory and time of many links of one process. Counts the
// calls of malloc() and realloc(), through which the library, Qt and the C++ library get their memory.

#include "byte2Rdb.h"
#include "gqFileLog.h"
#include "tcpApi.h"

#include <QTemporaryDir>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <vector>

#include <arpa/inet.h>
#include <malloc.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using gqdb::BlobWaveHead;
using gqdb::CByte2Rdb;
using gqdb::CTcpAPI;
using gqdb::FloatPoint;
using gqdb::FloatRealData;

// --- Counting -----------------------------------------------------------------------------------------------------

static long allocations = 0;

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_realloc(void* old, size_t size);

void* malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void* realloc(void* old, size_t size)
{
    ++allocations;
    return __libc_realloc(old, size);
}
}

static long heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>(info.uordblks + info.hblkhd);
}

static long residentBytes()
{
    long pages = 0;
    long resident = 0;
    FILE* const file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr || std::fscanf(file, "%ld %ld", &pages, &resident) != 2)
        std::abort();
    std::fclose(file);
    return resident * sysconf(_SC_PAGESIZE);
}

// Prints what a job allocates and what it keeps, divided by `count`.
static void measure(const char* name, int count, const std::function<void()>& job)
{
    const long firstAllocations = allocations;
    const long firstBytes = heapBytes();
    job();
    const double calls = static_cast<double>(allocations - firstAllocations) / count;
    const double bytes = static_cast<double>(heapBytes() - firstBytes) / count;
    std::printf("| %-46s | %11.2f | %10.1f |\n", name, calls, bytes);
}

[[noreturn]] static void fail(const char* what)
{
    std::fprintf(stderr, "gqMemory: %s\n", what);
    std::exit(EXIT_FAILURE);
}

// --- The peer of all links ----------------------------------------------------------------------------------------

// Greets each connection and echoes what it receives.
[[noreturn]] static void greetAndEcho(int listener)
{
    static const char greeting[] = "\x68\x04\0\0\0\0\0\0\0\0\x01\0\0\0\0\0\x16"; // the integer 1
    const int waiting = epoll_create1(0);
    epoll_event event = {EPOLLIN, {}};
    event.data.fd = listener;
    epoll_ctl(waiting, EPOLL_CTL_ADD, listener, &event);
    while (epoll_wait(waiting, &event, 1, -1) == 1) {
        char bytes[4096];
        if (event.data.fd == listener) {
            event.data.fd = accept(listener, nullptr, nullptr);
            event.events = EPOLLIN;
            epoll_ctl(waiting, EPOLL_CTL_ADD, event.data.fd, &event);
            send(event.data.fd, greeting, sizeof greeting - 1, MSG_NOSIGNAL);
        } else {
            const ssize_t count = recv(event.data.fd, bytes, sizeof bytes, 0);
            if (count <= 0)
                close(event.data.fd);
            else
                send(event.data.fd, bytes, static_cast<size_t>(count), MSG_NOSIGNAL);
        }
    }
    _exit(EXIT_FAILURE);
}

// Returns its port.
static int startPeer()
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0 || listen(listener, 100) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        fail("cannot listen on the loopback address");
    const pid_t process = fork();
    if (process < 0)
        fail("cannot start the peer's process");
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL); // ends with the program
        greetAndEcho(listener);
    }
    close(listener);
    return ntohs(address.sin_port);
}

// --- Jobs ---------------------------------------------------------------------------------------------------------

static void measureRequests(int port)
{
    std::unique_ptr<CTcpAPI> client;
    measure("a CTcpAPI", 1, [&] { client = std::make_unique<CTcpAPI>(); });
    measure("its first connect", 1, [&] {
        if (client->connect("127.0.0.1", port) != 1)
            fail("no connection");
    });
    const int count = 1000;
    measure("requestInt and its reply", count, [&] {
        for (int i = 0; i < count; ++i) {
            if (client->requestInt(1, 7) != 7)
                fail("another reply");
        }
    });
}

static void measureRecords()
{
    const int count = 10000;
    const std::vector<FloatRealData> values(count);
    QByteArray data;
    std::vector<FloatRealData> back;
    measure("FloatRealData, encoded to a new array", count, [&] { CByte2Rdb::floatRealDatas2Byte(values, data); });
    measure("FloatRealData, decoded to a new list", count, [&] {
        if (CByte2Rdb::byte2FloatRealDatas(data.constData(), data.size(), back) != 1)
            fail("no records");
    });
    measure("FloatRealData, again to the emptied array", count, [&] {
        data.resize(0);
        CByte2Rdb::floatRealDatas2Byte(values, data);
    });
    measure("FloatRealData, again to the emptied list", count, [&] {
        back.clear();
        CByte2Rdb::byte2FloatRealDatas(data.constData(), data.size(), back);
    });

    for (const size_t length : {size_t(15), size_t(40)}) {
        FloatPoint point;
        for (std::string* text : {&point.text1, &point.text2, &point.text3, &point.text4, &point.text5})
            text->assign(length, 'x');
        const std::vector<FloatPoint> points(count, point);
        QByteArray bytes;
        std::vector<FloatPoint> list;
        const bool isShort = length == 15;
        measure(isShort ? "FloatPoint, 5 texts of 15 bytes, encoded" : "FloatPoint, 5 texts of 40 bytes, encoded",
                count, [&] { CByte2Rdb::floatPoints2Byte(points, bytes); });
        measure(isShort ? "FloatPoint, 5 texts of 15 bytes, decoded" : "FloatPoint, 5 texts of 40 bytes, decoded",
                count, [&] {
                    if (CByte2Rdb::byte2FloatPoints(bytes.constData(), bytes.size(), list) != 1)
                        fail("no records");
                });
    }
}

static void measureWaves()
{
    const int count = 1000000;
    const std::vector<float> samples(count, 1.5f);
    std::vector<unsigned char> raw(4 * samples.size());
    std::vector<unsigned char> packed(CByte2Rdb::waveBlockSize);
    for (const char flags : {'\0', '\2', '\6'}) {
        BlobWaveHead head;
        head.waveFlags = flags;
        std::vector<unsigned char> stored;
        std::vector<float> back;
        std::vector<int> marks;
        measure(flags == 0   ? "a sample, packed as a float"
                : flags == 2 ? "a sample, packed in 16 bits"
                             : "a sample, packed in 16 bits, compressed",
                count, [&] {
                    if (CByte2Rdb::wave2Byte(head, samples, {}, raw.data(), packed.data(), stored) != 1)
                        fail("no wave");
                });
        measure("a sample, unpacked", count, [&] {
            if (CByte2Rdb::byte2Wave(stored, packed.data(), head, back, marks) != 1)
                fail("no samples");
        });
    }
}

static void measureLog()
{
    const QTemporaryDir folder;
    CGqFileLog log;
    log.init(folder.filePath("lines.log"));
    const QString text = "pump 3: pressure 4.25 bar, above its limit";
    const int count = 20000;
    measure("a line queued by info, text shared", count, [&] {
        for (int i = 0; i < count; ++i)
            log.info(text);
    });
    measure("the same line, saved", count, [&] { log.save(); });
    measure("a line queued by info, its own text", count, [&] {
        for (int i = 0; i < count; ++i)
            log.info(QString("pump 3: pressure 4.25 bar, above its limit"));
    });
}

// --- Links --------------------------------------------------------------------------------------------------------

static void measureLinks(int port, int most)
{
    std::printf("\n| links | resident KB each | connect us each | request us each |\n"
                "| ----: | ---------------: | --------------: | --------------: |\n");
    using Clock = std::chrono::steady_clock;
    const auto microseconds = [](Clock::time_point first, size_t count) {
        return std::chrono::duration<double, std::micro>(Clock::now() - first).count() / static_cast<double>(count);
    };
    for (const int count : {10, 100, 1000, 2000, 5000, 10000}) {
        if (count > most)
            break;
        const long before = residentBytes();
        std::vector<std::unique_ptr<CTcpAPI>> links;
        const auto first = Clock::now();
        for (int i = 0; i < count; ++i) {
            links.push_back(std::make_unique<CTcpAPI>());
            if (links.back()->connect("127.0.0.1", port) != 1)
                fail("a link has no connection: is the limit of open files too low?");
        }
        const double connecting = microseconds(first, links.size());
        const auto second = Clock::now();
        for (const auto& link : links) {
            if (link->requestInt(1, 7) != 7)
                fail("another reply");
        }
        const double requesting = microseconds(second, links.size());
        const double resident = static_cast<double>(residentBytes() - before) / 1024 / count;
        std::printf("| %5d | %16.1f | %15.1f | %15.1f |\n", count, resident, connecting, requesting);
    }
}

int main(int argc, char** argv)
{
    const int most = argc > 1 ? std::atoi(argv[1]) : 5000;
    std::cout.rdbuf(nullptr); // each new client prints a line
    rlimit files = {};
    getrlimit(RLIMIT_NOFILE, &files);
    files.rlim_cur = files.rlim_max;
    setrlimit(RLIMIT_NOFILE, &files);
    const int port = startPeer();

    std::printf("| job                                            | allocations | bytes kept |\n"
                "| ---------------------------------------------- | ----------: | ---------: |\n");
    measureRequests(port);
    measureRecords();
    measureWaves();
    measureLog();
    measureLinks(port, most);
    return 0;
}
