// Span kernels of the wasm set.
#define KRB_KERNEL_SET wasm
#include "renderer/kernels/lanes_wasm.inl"
#include "renderer/kernels/span_kernels.inl"
