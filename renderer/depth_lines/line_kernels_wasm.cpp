// Line kernels of the wasm set: the pixels in one lane, then everything in many.
#define KRB_KERNEL_SET wasm::single
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/depth_lines/line_pixels.inl"
#undef KRB_KERNEL_SET

#define KRB_KERNEL_SET wasm
#include "renderer/kernels/lanes_wasm.inl"
#include "renderer/depth_lines/line_kernels.inl"
