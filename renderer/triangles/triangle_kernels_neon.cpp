// Triangle kernels of the neon set.
#define KRB_KERNEL_SET neon
#include "renderer/kernels/lanes_neon.inl"
#include "renderer/triangles/triangle_kernels.inl"
