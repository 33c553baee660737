#pragma once

#include <cstddef>

// With allocationLimit.cpp in a program, an allocation of more bytes at once fails as it would on a machine without the
// memory. So counts beyond any memory can be tried wherever the tests run, under AddressSanitizer too.
extern std::size_t allocationLimit; // 100 MB

// While one lives, larger blocks come after all, a few at a time: address space of the full size, between pages that
// cannot be touched, over the same few megabytes again and again. So gigabytes can be filled where there are none.
// What is written shows up elsewhere in the block too.
class RepeatedMemory {
public:
    RepeatedMemory();
    ~RepeatedMemory();
    RepeatedMemory(const RepeatedMemory&) = delete;
    RepeatedMemory& operator=(const RepeatedMemory&) = delete;
};
