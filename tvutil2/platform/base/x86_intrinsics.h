// The vector instructions of one family of machines; elsewhere nothing.
#pragma once

#if defined(__x86_64__)
#if !defined(__clang__)
// g++ 12 takes the deliberately undefined operands of its own intrinsics for mistakes.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>
#endif
