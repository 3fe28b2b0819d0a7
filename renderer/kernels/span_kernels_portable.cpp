// Span kernels of the portable set.
#define KRB_KERNEL_SET portable
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/kernels/span_kernels.inl"
