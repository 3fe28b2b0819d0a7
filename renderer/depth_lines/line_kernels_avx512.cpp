// Line kernels of the AVX-512 set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET avx512::single
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET avx512
#include "renderer/kernels/lanes_avx512.inl"
#include "renderer/depth_lines/line_kernels.inl"
