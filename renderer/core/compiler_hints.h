// Compiler hints. Macros, since compilers remove calls of functions that only prefetch.
#pragma once

#if defined(__GNUC__)
// Prefetches memory for reading.
#define KRB_FETCH_EARLY(address) __builtin_prefetch(address)
// Prefetches memory for writing, which costs more and saves a second transfer: for runs of pixels, not for single ones.
#define KRB_FETCH_TO_WRITE(address) __builtin_prefetch(address, 1)
// Hides from the compiler how the vector was computed.
#define KRB_HIDE_ORIGIN(vector) __asm__("" : "+v"(vector))
// Has the compiler read an array from memory, and not take the elements out of the vectors that were stored to it one by one.
#define KRB_KEEP_IN_MEMORY(array) __asm__("" : "+m"(array))
// The number of the lowest bit that is set; there is one. The library's function would be a weak symbol in Debug builds.
#define KRB_LOWEST_BIT(bits) __builtin_ctz(bits)
// For small functions in kernels that compilers would not inline otherwise, because there are many of them.
#define KRB_ALWAYS_INLINE [[gnu::always_inline]] inline
// For functions whose registers and stack would burden the caller, which seldom calls them.
#define KRB_NEVER_INLINE [[gnu::noinline]]
#else
#define KRB_FETCH_EARLY(address) static_cast<void>(address)
#define KRB_FETCH_TO_WRITE(address) static_cast<void>(address)
#define KRB_HIDE_ORIGIN(vector) static_cast<void>(vector)
#define KRB_KEEP_IN_MEMORY(array) static_cast<void>(array)
#define KRB_LOWEST_BIT(bits) static_cast<int>(_tzcnt_u32(bits))
#define KRB_ALWAYS_INLINE __forceinline
#define KRB_NEVER_INLINE __declspec(noinline)
#endif
