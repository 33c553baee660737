#pragma once

#include <QByteArray>

#include <benchmark/benchmark.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

// A job measured as the library does it and as others do it: with the bare calls that nobody could do it without, or
// with another library. Each side is a benchmark of its own; what counts is the ratio of their least times.

enum class Clock { processor, wall };

// One row of the table: the library is to stay within `ratio` times the other side; 0 where there is no aim.
struct Aim {
    Clock clock;
    double ratio;
};

using Side = std::function<void(benchmark::State&)>;

// Another way to do the job, a row for each aim.
struct Peer {
    std::string name;
    std::vector<Aim> aims;
    Side side;
};

// A side that copies `bytes` as they are, into room that is there already.
Side copySide(const QByteArray& bytes);

// Registers all sides. Each proves its own result before its loop, for a benchmark is called many times.
void compare(const std::string& job, const Side& library, const std::vector<Peer>& peers);

// Runs what compare has registered and what the filter leaves, then prints the table, in Markdown. False if nothing
// ran.
bool runComparisons(std::ostream& out);

// Ends the program: a wrong result has no time worth telling.
[[noreturn]] void fail(const std::string& what);
