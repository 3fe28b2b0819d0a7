// Line kernels of the baseline set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET baseline::single
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET baseline
#include "renderer/kernels/lanes_baseline.inl"
#include "renderer/depth_lines/line_kernels.inl"
