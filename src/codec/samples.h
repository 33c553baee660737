#pragma once

#include <cstddef>

// Arithmetic of samples, for the scaling operations and the stored waves. Internal.
namespace gqdb {

// Largest and smallest of at least one value, as if compared one by one from the first: a NaN counts only as the first
// value, and of equal values the first is kept, which matters for 0 and -0.
void limitsOf(const float* values, size_t count, float& highest, float& lowest);

// Maps `lower` to `upper` onto 0 to 65535, in single precision, truncated towards zero. A result that no int
// holds, or NaN, gives -2147483648.
void quantise(const float* values, size_t count, float upper, float lower, int* raw);

// As quantise(), but to two bytes for each value: the low 16 bits of the integer, least significant byte first.
void quantiseToBytes(const float* values, size_t count, float upper, float lower, char* bytes);

// Maps 0 to 65535 onto `lower` to `upper`: the quotient by 65535 in double precision, the rest in single.
void unquantise(const int* raw, size_t count, float upper, float lower, float* values);

// As unquantise(), from unsigned integers of two bytes.
void unquantiseBytes(const char* bytes, size_t count, float upper, float lower, float* values);

// The product by `scale` in double precision, rounded to single, plus `offset` in double precision, rounded again.
void scaleRaw(const int* raw, size_t count, double scale, double offset, float* values);

// As scaleRaw(), from signed integers of two bytes.
void scaleBytes(const char* bytes, size_t count, double scale, double offset, float* values);

} // namespace gqdb
