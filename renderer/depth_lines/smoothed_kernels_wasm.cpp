// Kernels for smoothed lines of the wasm set.
#define KRB_KERNEL_SET wasm
#include "renderer/kernels/blended_pixels_wasm.inl"
#include "renderer/depth_lines/smoothed_kernels.inl"
