#pragma once

#include <QString>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

// The operations on samples, one rounding at a time.

// All NaNs are equal, whatever their bits.
inline std::string shown(float value)
{
    unsigned int image;
    std::memcpy(&image, &value, 4);
    return value != value ? "NaN" : QString::number(image, 16).toStdString();
}

inline std::string shown(const std::vector<float>& values)
{
    std::string all;
    for (const float value : values)
        all += shown(value) + " ";
    return all;
}

// Each step is stored, so that no compiler uses higher precision or fuses two steps.
inline int quantised(float value, float upper, float lower)
{
    volatile float range = upper - lower;
    volatile float step = value - lower;
    step = step / range;
    step = step * 65535.0f;
    const double wide = double(step);
    return wide > -2147483649.0 && wide < 2147483648.0 ? int(wide) : INT_MIN;
}

inline float unquantised(int raw, float upper, float lower)
{
    volatile float range = upper - lower;
    volatile double quotient = double(raw) / 65535.0;
    volatile float step = float(quotient);
    step = step * range;
    step = step + lower;
    return step;
}

inline float onLine(int raw, double scale, double offset)
{
    volatile double product = double(raw) * scale;
    volatile float step = float(product);
    volatile double sum = double(step) + offset;
    return float(sum);
}

inline void findLimits(const std::vector<float>& values, double& upper, double& lower)
{
    for (size_t i = 0; i < values.size(); ++i) {
        const double value = double(values[i]);
        if (i == 0 || value > upper)
            upper = value;
        if (i == 0 || lower > value)
            lower = value;
    }
}
