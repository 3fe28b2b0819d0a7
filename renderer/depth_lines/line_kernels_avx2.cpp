// Line kernels of the AVX2 set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET avx2::single
#include "renderer/core/lanes_portable.h"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET avx2
#include "renderer/core/lanes_avx2.h"
#include "renderer/depth_lines/line_kernels.inl"
