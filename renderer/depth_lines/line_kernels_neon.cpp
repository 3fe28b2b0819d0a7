// Line kernels of the neon set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET neon::single
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET neon
#include "renderer/kernels/lanes_neon.inl"
#include "renderer/depth_lines/line_kernels.inl"
