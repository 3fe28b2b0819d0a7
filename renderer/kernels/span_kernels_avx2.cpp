// Span kernels of the AVX2 set.
#define KRB_KERNEL_SET avx2
#include "renderer/kernels/lanes_avx2.inl"
#include "renderer/kernels/span_kernels.inl"
