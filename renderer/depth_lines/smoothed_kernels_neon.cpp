// Kernels for smoothed lines of the neon set.
#define KRB_KERNEL_SET neon
#include "renderer/kernels/blended_pixels_neon.inl"
#include "renderer/depth_lines/smoothed_kernels.inl"
