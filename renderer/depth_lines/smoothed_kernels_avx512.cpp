// Kernels for smoothed lines of the AVX-512 set.
#define KRB_KERNEL_SET avx512
#include "renderer/kernels/blended_pixels_baseline.inl"
#include "renderer/depth_lines/smoothed_kernels.inl"
