// Runs of small triangles, many at once; see small_triangles.inl.
#pragma once

#include <cstdint>

#include "renderer/triangles/triangle_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// The triangles that a strip begins with.
struct Strip_Beginning {
    std::int32_t drawn; // small ones
    std::int32_t left;  // those after them that are to be drawn one by one
};

// Configurations and sets without a faster way to draw small triangles than large ones.
template <Triangle_Configuration configuration> struct Small_Triangles { static constexpr bool exist = false; };

} // namespace
} // namespace krb::KRB_KERNEL_SET
