#pragma once

#include <cstddef>

// Arithmetic of samples, for the scaling operations and the stored waves. Internal.
namespace gqdb {

// Largest and smallest of at least one value, as if compared one by one from the first: a NaN counts only there, and of
// equal values the first stays, which tells 0 from -0.
void limitsOf(const float* values, size_t count, float& highest, float& lowest);

// Maps `lower` to `upper` onto 0 to 65535, in single precision, truncated towards zero. What no int holds, a NaN among
// it, gives -2147483648.
void quantise(const float* values, size_t count, float upper, float lower, int* raw);

// Maps 0 to 65535 onto `lower` to `upper`: the quotient by 65535 in double precision, the rest in single.
void unquantise(const int* raw, size_t count, float upper, float lower, float* values);

} // namespace gqdb
