#pragma once

// Defines a function twice: for AVX2, which processors since 2013 have, and for every other processor of its family.
// Each call takes the form for its processor; the results are the same. The body is the inline function that has the
// same name with Loop appended. The plain form is after the #else. With g++ 12 and -O3, quantiseToBytes() and
// scaleBytes() take 0.54 of its time, unquantiseBytes() 0.73; with clang 14, unquantise() takes 0.3.
// Internal, for samples.cpp.

#if defined(__x86_64__) && !defined(GQLIB_PLAIN_FORMS)

#define GQLIB_VECTOR_LOOP(name, parameters, arguments)                                                                 \
    [[gnu::target("avx2")]] static void name##Avx2 parameters                                                          \
    {                                                                                                                  \
        name##Loop arguments;                                                                                          \
    }                                                                                                                  \
    void name parameters                                                                                               \
    {                                                                                                                  \
        if (__builtin_cpu_supports("avx2"))                                                                            \
            name##Avx2 arguments;                                                                                      \
        else                                                                                                           \
            name##Loop arguments;                                                                                      \
    }

#else

#define GQLIB_VECTOR_LOOP(name, parameters, arguments)                                                                 \
    void name parameters                                                                                               \
    {                                                                                                                  \
        name##Loop arguments;                                                                                          \
    }

#endif
