// Kernels for smoothed lines of the portable set.
#define KRB_KERNEL_SET portable
#include "renderer/depth_lines/blended_pixels_portable.h"
#include "renderer/depth_lines/smoothed_kernels.inl"
