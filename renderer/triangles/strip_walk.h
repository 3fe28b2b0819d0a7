// The walk over a strip that only partly lies where it can be drawn as it is.
#pragma once

#include <cstdint>

namespace krb {

// Where a triangle lies by what holds for all of its area.
enum class Placement { outside, across, inside };

// outcodes: of the triangle's three points.
inline Placement placement_of(const std::uint16_t* outcodes) noexcept {
    if ((outcodes[0] & outcodes[1] & outcodes[2]) != 0) {
        return Placement::outside;
    }
    return (outcodes[0] | outcodes[1] | outcodes[2]) != 0 ? Placement::across : Placement::inside;
}

// A strip of count points. Calls run(first point, count of points) for each stretch of triangles inside and piece(first point of
// a triangle) for triangles across, in the order of the strip; placement tells them apart by the triangle's first point.
template <class Place, class Run, class Piece> void walk_strip(std::int32_t count, Place placement, Run run, Piece piece) {
    std::int32_t start = 0;
    const auto flush = [&](std::int32_t k) {
        if (k > start) {
            run(start, k - start + 2);
        }
        start = k + 1;
    };
    for (std::int32_t k = 0; k < count - 2; ++k) {
        const Placement place = placement(k);
        if (place != Placement::inside) {
            flush(k);
            if (place == Placement::across) {
                piece(k);
            }
        }
    }
    flush(count - 2);
}

} // namespace krb
