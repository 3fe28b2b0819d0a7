// Kernels for smoothed lines of the AVX2 set.
#define KRB_KERNEL_SET avx2
#include "renderer/depth_lines/blended_pixels_baseline.h"
#include "renderer/depth_lines/smoothed_kernels.inl"
