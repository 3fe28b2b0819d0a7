// Triangle kernels of the AVX-512 set.
#define KRB_KERNEL_SET avx512
#define KRB_SMALL_TRIANGLES "renderer/triangles/small_triangles_avx512.h"
#include "renderer/kernels/lanes_avx512.inl"
#include "renderer/triangles/triangle_kernels.inl"
