#pragma once

#include <algorithm>
#include <cstdlib>

// How many times as long as usual tests wait for what they expect: 1, or more under an emulator, where scripts/port sets
// the variable. What they expect does not depend on it.
inline int slowness()
{
    const char* text = std::getenv("GQLIB_TEST_SLOWNESS");
    return text == nullptr ? 1 : std::max(1, std::atoi(text));
}
