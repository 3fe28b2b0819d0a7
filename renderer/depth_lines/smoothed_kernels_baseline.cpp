// Kernels for smoothed lines of the baseline set.
#define KRB_KERNEL_SET baseline
#include "renderer/kernels/blended_pixels_baseline.inl"
#include "renderer/depth_lines/smoothed_kernels.inl"
