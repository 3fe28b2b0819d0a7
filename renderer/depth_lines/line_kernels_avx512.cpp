// Line kernels of the AVX-512 set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET avx512::single
#include "renderer/core/lanes_portable.h"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET avx512
#include "renderer/core/lanes_avx512.h"
#include "renderer/depth_lines/line_kernels.inl"
