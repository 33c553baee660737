#pragma once

// Defines a function with two forms: one for processors with AVX2 (most since 2013), one for all other x86-64
// processors. Each call selects the form for its processor; the results are the same. The body of both is the inline
// function of the same name with Loop appended. The plain form is after the #else. For 4,000 samples, the AVX2 form
// takes this part of the plain form's time (g++ 12, -O3): quantise() 0.74, quantiseToBytes() 0.61, unquantise() 0.63,
// unquantiseBytes() 0.73, scaleRaw() 0.48, scaleBytes() 0.55. Internal, for samples.cpp.

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
