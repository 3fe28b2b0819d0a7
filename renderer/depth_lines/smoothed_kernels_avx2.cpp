// Kernels for smoothed lines of the AVX2 set.
#define KRB_KERNEL_SET avx2
#include "renderer/kernels/blended_pixels_baseline.inl"
#include "renderer/depth_lines/smoothed_kernels.inl"
