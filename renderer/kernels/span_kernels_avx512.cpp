// Span kernels of the AVX-512 set.
#define KRB_KERNEL_SET avx512
#include "renderer/kernels/lanes_avx512.inl"
#include "renderer/kernels/span_kernels.inl"
