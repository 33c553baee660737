#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

// A job measured twice: as the library does it, and with the bare calls that nobody could do it without. Each side is
// a benchmark of its own; what counts is the ratio of their least times.

enum class Clock { processor, wall };

// One row of the table: the library is to stay within `ratio` times the bare side; 0 where there is no aim.
struct Aim {
    Clock clock;
    double ratio;
};

using Side = std::function<void(benchmark::State&)>;

// Registers both sides. Each proves its own result before its loop, for a benchmark is called many times.
void compare(const std::string& job, const std::vector<Aim>& aims, const Side& library, const Side& bare);

// Runs what compare has registered and what the filter leaves, then prints the table, in Markdown. False if nothing ran.
bool runComparisons(std::ostream& out);

// Ends the program: a wrong result has no time worth telling.
[[noreturn]] void fail(const std::string& what);
