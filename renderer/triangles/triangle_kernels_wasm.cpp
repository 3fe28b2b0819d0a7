// Triangle kernels of the wasm set.
#define KRB_KERNEL_SET wasm
#define KRB_BATCH_LANES "renderer/triangles/batch_lanes_wasm.inl"
#include "renderer/kernels/lanes_wasm.inl"
#include "renderer/triangles/triangle_kernels.inl"
