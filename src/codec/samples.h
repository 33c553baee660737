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

// Maps 0 to 65535 onto `lower` to `upper`: the quotient by 65535 in double precision, the rest in single.
void unquantise(const int* raw, size_t count, float upper, float lower, float* values);

} // namespace gqdb
