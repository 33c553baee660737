#include "logBench.h"

#include "comparison.h"
#include "gqFileLog.h"

#include <QTemporaryDir>

#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

static const char message[] = "pump 3: pressure 4.25 bar, above its limit"; // what a line says, on every side
static const int batch = 20000;                                             // lines between two saves

static const QString& folder()
{
    static const QTemporaryDir dir;
    static const QString path = dir.path();
    return path;
}

// --- What a caller pays -------------------------------------------------------------------------------------------

// Runs `call` so many times in all, in one thread or shared out among several.
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

// What no queue can do without: a look at the clock, a lock, and the store.
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

static void compareSave()
{
    static const int batches = 5;
    const auto library = [](benchmark::State& state) {
        CGqFileLog log;
        const QString text = message;
        for (auto _ : state) {
            log.init(folder() + "/library.log");
            for (int i = 0; i < batches; ++i) {
                for (int line = 0; line < batch; ++line)
                    log.info(text);
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
    compare(std::to_string(batches * batch) + " info, save each " + std::to_string(batch), library,
            {{"spdlog file", {{Clock::wall, 1.1}}, file}});
}

// ------------------------------------------------------------------------------------------------------------------

void compareLog()
{
    compareInfo(1);
    compareInfo(4);
    compareSave();
}
