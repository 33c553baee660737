#include "logBench.h"

#include "comparison.h"
#include "gqFileLog.h"

#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <functional>
#include <mutex>
#include <thread>

#include <fcntl.h>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

static const char message[] = "pump 3: pressure 4.25 bar, above its limit"; // of each line, on every side
static const int batch = 20000;                                             // lines between two saves

static const QString& folder()
{
    static const QTemporaryDir dir;
    static const QString path = dir.path();
    return path;
}

// --- What a caller pays -------------------------------------------------------------------------------------------

// Calls `call` `count` times in total, in one thread or divided among several.
static void callFrom(int threads, const std::function<void(int)>& call)
{
    if (threads == 1) {
        call(batch);
        return;
    }
    std::vector<std::thread> running;
    running.reserve(static_cast<size_t>(threads));
    for (int i = 0; i < threads; ++i)
        running.emplace_back(call, batch / threads);
    for (std::thread& thread : running)
        thread.join();
}

// The minimum that every queue needs: reading the clock, a lock, and a store.
class BareQueue {
public:
    void add(const QString& text)
    {
        const auto now = std::chrono::system_clock::now();
        const std::lock_guard<std::mutex> lock(mutex);
        lines.emplace_back(text, now.time_since_epoch().count());
    }
    void clear() { lines.clear(); }

private:
    std::mutex mutex;
    std::vector<std::pair<QString, long long>> lines;
};

static void compareInfo(int threads)
{
    const auto library = [threads](benchmark::State& state) {
        CGqFileLog log;
        log.init(folder() + "/queued.log");
        const QString text = message;
        for (auto _ : state) {
            callFrom(threads, [&](int count) {
                for (int i = 0; i < count; ++i)
                    log.info(text);
            });
            state.PauseTiming();
            log.save();
            state.ResumeTiming();
        }
    };
    const auto bare = [threads](benchmark::State& state) {
        BareQueue queue;
        const QString text = message;
        for (auto _ : state) {
            callFrom(threads, [&](int count) {
                for (int i = 0; i < count; ++i)
                    queue.add(text);
            });
            state.PauseTiming();
            queue.clear();
            state.ResumeTiming();
        }
    };
    const auto asynchronous = [threads](benchmark::State& state) {
        const auto pool = std::make_shared<spdlog::details::thread_pool>(2 * batch, 1);
        const auto sink = std::make_shared<spdlog::sinks::null_sink_mt>();
        const auto log =
            std::make_shared<spdlog::async_logger>("bench", sink, pool, spdlog::async_overflow_policy::overrun_oldest);
        for (auto _ : state) {
            callFrom(threads, [&](int count) {
                for (int i = 0; i < count; ++i)
                    log->info(message);
            });
            state.PauseTiming();
            while (pool->queue_size() > 0)
                std::this_thread::yield();
            state.ResumeTiming();
        }
    };
    compare(std::to_string(batch) + " info, " + std::to_string(threads) + (threads == 1 ? " thread" : " threads"),
            library, {{"clock, lock", {{Clock::wall, 2}}, bare}, {"spdlog async", {{Clock::wall, 1}}, asynchronous}});
}

// --- Lines to the file --------------------------------------------------------------------------------------------

enum class Times { same, different };

static const unsigned int firstSecond = 1700000000;
static const int movedAside = 30000; // lines, at the end of a batch

// Lines a millisecond apart, or all of one time.
static QList<CGqFileLog::LogData> someLines(int count, Times times)
{
    QList<CGqFileLog::LogData> lines;
    for (int i = 0; i < count; ++i) {
        const auto apart = static_cast<unsigned int>(times == Times::same ? 0 : i);
        lines.append({message, firstSecond + apart / 1000, apart % 1000});
    }
    return lines;
}

static void compareSaveAlone(int count, Times times, double aim)
{
    const auto library = [=](benchmark::State& state) {
        CGqFileLog log;
        log.init(folder() + "/library.log");
        const QList<CGqFileLog::LogData> lines = someLines(count, times);
        for (auto _ : state) {
            if (!log.saveDatas(lines))
                fail("save: no file");
        }
    };
    // Writes all lines by one call, to a file that is renamed as often.
    const auto bare = [=](benchmark::State& state) {
        const std::string name = folder().toStdString() + "/bare.log";
        const QByteArray bytes = (QByteArray("<09:05:07.000> ") + message + "\n").repeated(count);
        int written = 0;
        for (auto _ : state) {
            const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
            if (file < 0 || ::write(file, bytes.constData(), size_t(bytes.size())) != bytes.size())
                fail("save: the bare write failed");
            ::close(file);
            written += count;
            if (written >= movedAside) {
                std::rename(name.c_str(), (name + ".bak").c_str());
                written = 0;
            }
        }
    };
    const char* const name = times == Times::same ? " lines, one time" : " lines, all times";
    compare("save of " + std::to_string(count) + name, library, {{"write of them", {{Clock::processor, aim}}, bare}});
}

static void compareSave(Times times)
{
    static const int batches = 5;
    const auto library = [=](benchmark::State& state) {
        CGqFileLog log;
        const QString text = message;
        for (auto _ : state) {
            log.init(folder() + "/library.log");
            for (int i = 0; i < batches; ++i) {
                for (unsigned int line = 0; line < batch; ++line) {
                    if (times == Times::same)
                        log.info(text);
                    else
                        log.info(text, firstSecond + line / 1000, line % 1000);
                }
                log.save();
            }
        }
        QFile older(folder() + "/library.log.bak");
        if (!older.open(QIODevice::ReadOnly) || !older.readLine().endsWith("> " + QByteArray(message) + "\n"))
            fail("save: the library's line differs");
        older.remove();
    };
    const auto file = [](benchmark::State& state) {
        for (auto _ : state) {
            const std::string name = folder().toStdString() + "/spdlog.log";
            spdlog::logger log("bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(name, true));
            log.set_pattern("<%H:%M:%S.%e> %v");
            for (int i = 0; i < batches; ++i) {
                for (int line = 0; line < batch; ++line)
                    log.info(message);
                log.flush();
            }
        }
        QFile written(folder() + "/spdlog.log");
        if (!written.open(QIODevice::ReadOnly) || !written.readLine().endsWith("> " + QByteArray(message) + "\n"))
            fail("save: spdlog's line differs");
    };
    compare(std::to_string(batches * batch) + " info, save, " + (times == Times::same ? "one time" : "all times"),
            library, {{"spdlog file", {{Clock::wall, 1.2}}, file}});
}

// ------------------------------------------------------------------------------------------------------------------

void compareLog()
{
    compareInfo(1);
    compareInfo(4);
    compareSaveAlone(20000, Times::same, 8);
    compareSaveAlone(20000, Times::different, 8);
    compareSaveAlone(100, Times::same, 6);
    compareSaveAlone(100, Times::different, 6);
    compareSave(Times::same);
    compareSave(Times::different);
}
