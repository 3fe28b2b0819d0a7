// What compilers are told beyond the language. Macros, since a function that only fetches is taken for one that does nothing.
#pragma once

#if defined(__GNUC__)
// Asks for memory that is soon needed.
#define KRB_FETCH_EARLY(address) __builtin_prefetch(address)
// And says that it is written then, which costs more and saves a second request: for stretches of pixels, not for single ones.
#define KRB_FETCH_TO_WRITE(address) __builtin_prefetch(address, 1)
// The vector, of which the compiler knows nothing any more.
#define KRB_HIDE_ORIGIN(vector) __asm__("" : "+v"(vector))
// For small functions in kernels that compilers would rather call, because there are many of them.
#define KRB_ALWAYS_INLINE [[gnu::always_inline]] inline
#else
#define KRB_FETCH_EARLY(address) static_cast<void>(address)
#define KRB_FETCH_TO_WRITE(address) static_cast<void>(address)
#define KRB_HIDE_ORIGIN(vector) static_cast<void>(vector)
#define KRB_ALWAYS_INLINE __forceinline
#endif
