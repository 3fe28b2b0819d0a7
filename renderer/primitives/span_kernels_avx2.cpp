// Span kernels of the AVX2 set.
#define KRB_KERNEL_SET avx2
#include "renderer/core/lanes_avx2.h"
#include "renderer/primitives/span_kernels.inl"
