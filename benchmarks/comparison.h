#pragma once

#include <QByteArray>

#include <benchmark/benchmark.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

// Compares the time of a job in the library with that of the system or library calls that every solution needs, or of
// another library. Each side is a separate benchmark; the result is the ratio of their shortest times.

enum class Clock { processor, wall };

// One row of the table: the library must take at most `ratio` times as long as the other side; 0 means no aim.
struct Aim {
    Clock clock;
    double ratio;
};

using Side = std::function<void(benchmark::State&)>;

// Another way to do the job, with a row of the table for each aim.
struct Peer {
    std::string name;
    std::vector<Aim> aims;
    Side side;
};

// Returns a side that only copies `bytes`, into memory that is already allocated.
Side copySide(const QByteArray& bytes);

// Returns a side that copies `samples` into a new vector each time.
Side freshCopySide(const std::vector<float>& samples);

// Registers all sides. Each checks its result before its loop, because a benchmark is called many times.
void compare(const std::string& job, const Side& library, const std::vector<Peer>& peers);

// Runs the registered benchmarks that match the filter, then prints the table in Markdown. Returns false if none ran.
bool runComparisons(std::ostream& out);

// Prints the message and ends the program: the time of a wrong result is meaningless.
[[noreturn]] void fail(const std::string& what);
