// The one place for compiler extensions; everything else is standard C++20.
#pragma once

// Lets the compiler check a printf-style format; both indices count from 1.
#if defined(__MINGW32__) && !defined(__clang__)
#define BX_PRINTF(formatIndex, firstArgument) __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define BX_PRINTF(formatIndex, firstArgument) __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define BX_PRINTF(formatIndex, firstArgument)
#endif

// For what a loop does for each of its vectors.
#if defined(__GNUC__)
#define BX_ALWAYS_INLINE __attribute__((always_inline)) inline
#define BX_NEVER_INLINE __attribute__((noinline))
#else
#define BX_ALWAYS_INLINE inline
#endif

// Whether the processor, and the system, have AVX2 with FMA, or AVX-512 as far as it is used. Also before
// main: the runtime's own check may not have run by then.
#define BX_PROCESSOR_HAS_AVX2                                                                                \
    (__builtin_cpu_init(), __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
#define BX_PROCESSOR_HAS_AVX512                                                                              \
    (BX_PROCESSOR_HAS_AVX2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&     \
     __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl"))
// Byte shuffles, for single functions: the rest of the program runs on every processor.
#define BX_PROCESSOR_HAS_SSSE3 (__builtin_cpu_init(), __builtin_cpu_supports("ssse3"))
#define BX_FOR_SSSE3 __attribute__((target("ssse3")))
