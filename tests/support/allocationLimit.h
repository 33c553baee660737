#pragma once

#include <cstddef>

// With allocationLimit.cpp in a program, an allocation of more bytes at once fails as it would on a machine without the
// memory. So counts beyond any memory can be tried wherever the tests run, under AddressSanitizer too.
extern std::size_t allocationLimit; // 100 MB
