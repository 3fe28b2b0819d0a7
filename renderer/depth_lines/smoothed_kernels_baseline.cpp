// Kernels for smoothed lines of the baseline set.
#define KRB_KERNEL_SET baseline
#include "renderer/depth_lines/blended_pixels_baseline.h"
#include "renderer/depth_lines/smoothed_kernels.inl"
