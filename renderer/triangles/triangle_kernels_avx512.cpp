// Triangle kernels of the AVX-512 set.
#define KRB_KERNEL_SET avx512
#define KRB_BATCH_LANES "renderer/triangles/batch_lanes_avx512.inl"
#include "renderer/kernels/lanes_avx512.inl"
#include "renderer/triangles/triangle_kernels.inl"
