#include "apiBench.h"
#include "codecBench.h"
#include "comparison.h"
#include "definitionBench.h"
#include "logBench.h"
#include "recordBench.h"
#include "toolsBench.h"
#include "waveBench.h"

#include <iostream>
#include <vector>

int main(int argc, char** argv)
{
    // Defaults, before the user's arguments so that those override them. The sides of a job take turns in random order;
    // the shortest of many short runs is least disturbed by a busy machine.
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char repetitions[] = "--benchmark_repetitions=21";
    char minTime[] = "--benchmark_min_time=0.05";
    std::vector<char*> arguments = {argv[0], interleaving, repetitions, minTime};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;

    // Each new client prints a line, which must not appear in the table.
    std::ostream out(std::cout.rdbuf());
    std::cout.rdbuf(nullptr);

    compareApi();
    compareCodec();
    compareRecords();
    compareDefinitions();
    compareWaves();
    compareLog();
    compareTools();
    const bool ran = runComparisons(out);
    std::cout.rdbuf(out.rdbuf());
    return ran ? 0 : 1;
}
