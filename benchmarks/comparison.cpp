#include "comparison.h"

#include <QString>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

// A registered job, for the table.
struct Comparison {
    std::string job;
    std::vector<Peer> peers;
};

static std::vector<Comparison> comparisons;

static std::string benchmarkName(const std::string& job, const std::string& side)
{
    return job + ": " + side;
}

void compare(const std::string& job, const Side& library, const std::vector<Peer>& peers)
{
    comparisons.push_back({job, peers});
    benchmark::RegisterBenchmark(benchmarkName(job, "library").c_str(), library);
    for (const Peer& peer : peers)
        benchmark::RegisterBenchmark(benchmarkName(job, peer.name).c_str(), peer.side);
}

Side copySide(const QByteArray& bytes)
{
    return [bytes](benchmark::State& state) {
        QByteArray target(bytes.size(), '\0');
        char* room = target.data();
        std::memcpy(room, bytes.constData(), size_t(bytes.size()));
        if (target != bytes)
            fail("the copied bytes differ");
        for (auto _ : state) {
            std::memcpy(room, bytes.constData(), size_t(bytes.size()));
            benchmark::DoNotOptimize(room);
            benchmark::ClobberMemory();
        }
    };
}

Side freshCopySide(const std::vector<float>& samples)
{
    return [=](benchmark::State& state) {
        for (auto _ : state) {
            std::vector<float> copy(samples.begin(), samples.end());
            benchmark::DoNotOptimize(copy.data());
            benchmark::ClobberMemory();
        }
    };
}

// --- Measuring ----------------------------------------------------------------------------------------------------

// The shortest time of one iteration in nanoseconds, for each clock separately.
struct LeastTimes {
    double processor;
    double wall;
};

class LeastTimesReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override;

    // Null if that benchmark did not run.
    const LeastTimes* find(const std::string& name) const;

private:
    std::map<std::string, LeastTimes> times;
};

void LeastTimesReporter::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration)
            continue; // an aggregate, such as a mean
        const double perIteration = 1e9 / static_cast<double>(run.iterations);
        const LeastTimes now = {run.cpu_accumulated_time * perIteration, run.real_accumulated_time * perIteration};
        LeastTimes& least = times.emplace(run.run_name.function_name, now).first->second;
        least = {std::min(least.processor, now.processor), std::min(least.wall, now.wall)};
    }
}

const LeastTimes* LeastTimesReporter::find(const std::string& name) const
{
    const auto found = times.find(name);
    return found == times.end() ? nullptr : &found->second;
}

// --- The table ----------------------------------------------------------------------------------------------------

static std::string decimals(double value, int digits)
{
    return QString::number(value, 'f', digits).toStdString();
}

static void printRow(std::ostream& out, const std::string& job, const std::string& peer, const Aim& aim,
                     const LeastTimes& library, const LeastTimes& other)
{
    const bool isWall = aim.clock == Clock::wall;
    const double libraryTime = isWall ? library.wall : library.processor;
    const double otherTime = isWall ? other.wall : other.processor;
    const double ratio = libraryTime / otherTime;
    std::string verdict = "-";
    if (aim.ratio > 0)
        verdict = QString::number(aim.ratio).toStdString() + (ratio <= aim.ratio ? ", met" : ", MISSED");
    char row[200];
    std::snprintf(row, sizeof row, "| %-34s | %-16s | %-9s | %10s | %10s | %5s | %-9s |\n", job.c_str(), peer.c_str(),
                  isWall ? "wall" : "processor", decimals(libraryTime, 1).c_str(), decimals(otherTime, 1).c_str(),
                  decimals(ratio, 2).c_str(), verdict.c_str());
    out << row;
}

bool runComparisons(std::ostream& out)
{
    LeastTimesReporter reporter;
    if (benchmark::RunSpecifiedBenchmarks(&reporter) == 0)
        return false;
    out << "| job                                | beside           | clock     | library ns |  beside ns | ratio "
           "| aim       |\n"
           "| ---------------------------------- | ---------------- | --------- | ---------: | ---------: | ----: "
           "| --------- |\n";
    for (const Comparison& comparison : comparisons) {
        const LeastTimes* library = reporter.find(benchmarkName(comparison.job, "library"));
        for (const Peer& peer : comparison.peers) {
            const LeastTimes* other = reporter.find(benchmarkName(comparison.job, peer.name));
            if (library == nullptr || other == nullptr)
                continue; // filtered out
            for (const Aim& aim : peer.aims)
                printRow(out, comparison.job, peer.name, aim, *library, *other);
        }
    }
    return true;
}

void fail(const std::string& what)
{
    std::fprintf(stderr, "gqBench: %s\n", what.c_str());
    std::exit(EXIT_FAILURE);
}
