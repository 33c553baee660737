#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

// Floats by their images, as "3f800000 7fc00001": a last bit shows, a NaN is equal to itself, -0 differs from 0.
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

// Doubles in the same way.
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
