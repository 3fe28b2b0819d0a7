// The size of a block of texels.
#pragma once

#include <cstdint>

namespace krb {

struct Texel_Shape {
    std::int32_t rows, columns;
};

} // namespace krb
