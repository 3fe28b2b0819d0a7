// Triangle kernels of the portable set.
#define KRB_KERNEL_SET portable
#include "renderer/core/lanes_portable.h"
#include "renderer/triangles/triangle_kernels.inl"
