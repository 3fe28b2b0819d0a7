// Triangle kernels of the portable set.
#define KRB_KERNEL_SET portable
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/triangles/triangle_kernels.inl"
