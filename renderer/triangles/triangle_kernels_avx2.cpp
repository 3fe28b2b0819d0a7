// Triangle kernels of the AVX2 set.
#define KRB_KERNEL_SET avx2
#define KRB_BATCH_LANES "renderer/triangles/batch_lanes_avx2.inl"
#include "renderer/kernels/lanes_avx2.inl"
#include "renderer/triangles/triangle_kernels.inl"
