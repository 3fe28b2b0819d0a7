// Span kernels of the baseline set, x86-64-v2.
#define KRB_KERNEL_SET baseline
#include "renderer/kernels/lanes_baseline.inl"
#include "renderer/kernels/span_kernels.inl"
