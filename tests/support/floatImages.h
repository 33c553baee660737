#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// Floats as their bits in hex, such as "3f800000 7fc00001": shows the last bit, equates a NaN with itself,
// distinguishes -0 from 0.
inline std::string images(const std::vector<float>& values)
{
    std::string text;
    for (float value : values) {
        unsigned int image;
        std::memcpy(&image, &value, sizeof image);
        char digits[10];
        std::snprintf(digits, sizeof digits, text.empty() ? "%08x" : " %08x", image);
        text += digits;
    }
    return text;
}

// The same for doubles.
inline std::string doubleImages(const std::vector<double>& values)
{
    std::string text;
    for (double value : values) {
        unsigned long long image;
        std::memcpy(&image, &value, sizeof image);
        char digits[18];
        std::snprintf(digits, sizeof digits, text.empty() ? "%016llx" : " %016llx", image);
        text += digits;
    }
    return text;
}
