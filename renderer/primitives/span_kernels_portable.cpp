// Span kernels of the portable set.
#define KRB_KERNEL_SET portable
#include "renderer/core/lanes_portable.h"
#include "renderer/primitives/span_kernels.inl"
