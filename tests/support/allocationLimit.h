#pragma once

#include <cstddef>

// In a program linked with allocationLimit.cpp, a single allocation above this many bytes fails, as on a machine short
// of memory. So huge counts can be tested on any machine, also under AddressSanitizer.
extern std::size_t allocationLimit; // 100 MB

// While an object exists, larger blocks are allocated after all, a few at a time: address space of the full size,
// between inaccessible pages, that maps the same few megabytes repeatedly. So gigabytes can be filled on machines that
// lack them. What is written to a block also appears elsewhere in it.
class RepeatedMemory {
public:
    RepeatedMemory();
    ~RepeatedMemory();
    RepeatedMemory(const RepeatedMemory&) = delete;
    RepeatedMemory& operator=(const RepeatedMemory&) = delete;
};
