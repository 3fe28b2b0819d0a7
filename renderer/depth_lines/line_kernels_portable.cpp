// Line kernels of the portable set, whose vocabulary has one lane anyway.
namespace krb::portable {
namespace single = krb::portable;
}

#define KRB_KERNEL_SET portable
#include "renderer/kernels/lanes_portable.inl"
#include "renderer/depth_lines/line_kernels.inl"
