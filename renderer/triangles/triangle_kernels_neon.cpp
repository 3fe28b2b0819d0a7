// Triangle kernels of the neon set.
#define KRB_KERNEL_SET neon
#define KRB_BATCH_LANES "renderer/triangles/batch_lanes_neon.inl"
#include "renderer/kernels/lanes_neon.inl"
#include "renderer/triangles/triangle_kernels.inl"
