// Triangle kernels of the baseline set, x86-64-v2.
#define KRB_KERNEL_SET baseline
#define KRB_BATCH_LANES "renderer/triangles/batch_lanes_baseline.inl"
#include "renderer/kernels/lanes_baseline.inl"
#include "renderer/triangles/triangle_kernels.inl"
