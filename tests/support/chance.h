#pragma once

#include "support/recordChecks.h"

#include <limits>
#include <random>
#include <string>
#include <vector>

// Random numbers, bytes and texts, reproducible by seed.
class Chance {
public:
    explicit Chance(unsigned int seed) : engine(seed) {}

    unsigned int word() { return static_cast<unsigned int>(engine()); }
    int below(int limit) { return int(word() % static_cast<unsigned int>(limit)); }
    bool once(int in) { return below(in) == 0; }

    std::vector<unsigned char> bytes(int size)
    {
        std::vector<unsigned char> made(static_cast<size_t>(size));
        for (unsigned char& byte : made)
            byte = static_cast<unsigned char>(word());
        return made;
    }
    std::string text(int longest)
    {
        const std::vector<unsigned char> made = bytes(below(longest + 1));
        return std::string(made.begin(), made.end());
    }
    // Any bits, including NaN, infinity and subnormal numbers.
    float anyFloat()
    {
        static const float special[] = {0.0f,
                                        -0.0f,
                                        1.0f,
                                        -1.0f,
                                        0.5f,
                                        65535.0f,
                                        1e-45f,
                                        -1e-39f,
                                        3.4e38f,
                                        -3.4e38f,
                                        std::numeric_limits<float>::infinity(),
                                        -std::numeric_limits<float>::infinity(),
                                        std::numeric_limits<float>::quiet_NaN()};
        switch (below(4)) {
        case 0:
            return special[below(13)];
        case 1:
            return floatOf(word());
        default:
            return float(int(word())) / float(1 + below(1 << 20));
        }
    }
    std::vector<float> anyFloats(int count)
    {
        std::vector<float> values;
        for (int i = 0; i < count; ++i)
            values.push_back(anyFloat());
        return values;
    }
    double anyDouble()
    {
        switch (below(4)) {
        case 0:
            return double(anyFloat());
        case 1:
            return doubleOf((static_cast<unsigned long long>(word()) << 32) | word());
        default:
            return double(int(word())) / double(1 + below(1 << 30));
        }
    }

private:
    std::mt19937 engine;
};
