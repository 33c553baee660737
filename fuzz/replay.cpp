// fuzzReplay              runs every target on every seed
// fuzzReplay --write DIR  writes the seeds to files, as libFuzzer wants them

#include "seeds.h"
#include "target.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

static int writeSeeds(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const QByteArray& seed : allSeeds()) {
        std::ofstream file(folder / std::to_string(++number), std::ios::binary);
        if (!file.write(seed.constData(), seed.size())) {
            std::fprintf(stderr, "fuzzReplay: cannot write to %s\n", folder.c_str());
            return 1;
        }
    }
    return 0;
}

static int replay()
{
    const std::vector<Target> targets = allTargets();
    const std::vector<QByteArray> seeds = allSeeds();
    for (const Target& target : targets) {
        for (const QByteArray& seed : seeds) {
            const std::unique_ptr<char[]> bytes(new char[static_cast<size_t>(seed.size())]);
            std::copy(seed.begin(), seed.end(), bytes.get());
            runTarget(target, bytes.get(), seed.size());
        }
    }
    std::printf("%zu targets, %zu seeds\n", targets.size(), seeds.size());
    return 0;
}

int main(int argc, char* argv[])
{
    if (argc == 3 && std::strcmp(argv[1], "--write") == 0)
        return writeSeeds(argv[2]);
    if (argc == 1)
        return replay();
    std::fprintf(stderr, "usage: fuzzReplay [--write DIR]\n");
    return 2;
}
