// Span kernels of the AVX-512 set.
#define KRB_KERNEL_SET avx512
#include "renderer/core/lanes_avx512.h"
#include "renderer/primitives/span_kernels.inl"
