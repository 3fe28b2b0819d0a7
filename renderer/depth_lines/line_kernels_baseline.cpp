// Line kernels of the baseline set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET baseline::single
#include "renderer/core/lanes_portable.h"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET baseline
#include "renderer/core/lanes_baseline.h"
#include "renderer/depth_lines/line_kernels.inl"
