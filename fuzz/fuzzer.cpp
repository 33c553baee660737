// gqFuzz TARGET [LIBFUZZER-OPTION|DIRECTORY|FILE]...

#include "target.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static const Target* target = nullptr;

// Takes the name of the target off the arguments.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    static const std::vector<Target> targets = allTargets();
    for (const Target& each : targets) {
        if (*argc > 1 && std::strcmp(each.name, (*argv)[1]) == 0)
            target = &each;
    }
    if (target == nullptr) {
        std::fprintf(stderr, "usage: gqFuzz TARGET [option of libFuzzer, directory or file]...; the targets are\n");
        for (const Target& each : targets)
            std::puts(each.name);
        std::exit(2);
    }
    (*argv)[1] = (*argv)[0];
    ++*argv;
    --*argc;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    runTarget(*target, reinterpret_cast<const char*>(data), static_cast<int>(size));
    return 0;
}
