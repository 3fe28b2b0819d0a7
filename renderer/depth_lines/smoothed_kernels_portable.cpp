// Kernels for smoothed lines of the portable set.
#define KRB_KERNEL_SET portable
#include "renderer/kernels/blended_pixels_portable.inl"
#include "renderer/depth_lines/smoothed_kernels.inl"
