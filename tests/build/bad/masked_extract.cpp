// A masked extraction to memory, which kernels must not have.
#include <immintrin.h>

void store_part(void* to, __m512i vector, __mmask8 lanes) {
    __asm__("vextracti32x8 $0, %1, %0%{%2%}" : "=m"(*static_cast<__m256i_u*>(to)) : "v"(vector), "Yk"(lanes));
}
