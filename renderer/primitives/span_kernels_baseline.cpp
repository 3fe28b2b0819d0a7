// Span kernels of the baseline set, x86-64-v2.
#define KRB_KERNEL_SET baseline
#include "renderer/core/lanes_baseline.h"
#include "renderer/primitives/span_kernels.inl"
