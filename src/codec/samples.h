#pragma once

#include <cstddef>

// Arithmetic of samples, for the scaling operations and the stored waves. Internal.
namespace gqdb {

// Stores the largest and the smallest of at least one value, as if compared one by one from the first: a NaN is ignored
// unless it is the first value, and of equal values the first is kept, which matters for 0 and -0.
void limitsOf(const float* values, size_t count, float& highest, float& lowest);

// The same, and stores each value as its four bytes, least significant byte first.
void storeWithLimits(const float* values, size_t count, char* bytes, float& highest, float& lowest);

// Maps `lower` to 0 and `upper` to 65535, in single precision, truncated towards zero. A result outside the range of
// int, or NaN, becomes -2147483648.
void quantise(const float* values, size_t count, float upper, float lower, int* raw);

// The same, stored as two bytes for each value: the low 16 bits of the integer, least significant byte first.
void quantiseToBytes(const float* values, size_t count, float upper, float lower, char* bytes);

// Maps 0 to `lower` and 65535 to `upper`: divides by 65535 in double precision, the rest is in single.
void unquantise(const int* raw, size_t count, float upper, float lower, float* values);

// The same, from unsigned integers of two bytes.
void unquantiseBytes(const char* bytes, size_t count, float upper, float lower, float* values);

// Multiplies by `scale` in double precision, rounds to single, adds `offset` in double precision and rounds again.
void scaleRaw(const int* raw, size_t count, double scale, double offset, float* values);

// The same, from signed integers of two bytes.
void scaleBytes(const char* bytes, size_t count, double scale, double offset, float* values);

} // namespace gqdb
