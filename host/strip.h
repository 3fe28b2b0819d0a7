// Strips of triangles: the order of a convex polygon's corners, and the walk over a strip that lies only partly in a rectangle.
#pragma once

#include <cstdint>

namespace vorna {

// The strip of a convex polygon takes the corners alternately from the front and from the back: p0, p1, p(n-1), p2, p(n-2), ...
// Returns which corner of the polygon, in boundary order, is corner i of the strip.
constexpr std::int32_t strip_order(std::int32_t i, std::int32_t count) noexcept {
    return i == 0 ? 0 : i % 2 == 1 ? (i + 1) / 2 : count - i / 2;
}

// Position of a triangle relative to a rectangle, as far as the outcodes of its corners tell.
enum class Placement { outside, across, inside };

// outcodes: those of the three corners.
constexpr Placement placement_of(const std::uint16_t* outcodes) noexcept {
    if ((outcodes[0] & outcodes[1] & outcodes[2]) != 0) {
        return Placement::outside;
    }
    return (outcodes[0] | outcodes[1] | outcodes[2]) != 0 ? Placement::across : Placement::inside;
}

// The placements of a strip's triangles; outcodes: one for each point, in use until the walk ends.
constexpr auto placements_by(const std::uint16_t* outcodes) noexcept {
    return [outcodes](std::int32_t k) { return placement_of(outcodes + k); };
}

// Walks over a strip of count points, of which triangle k has the points k, k + 1 and k + 2. Calls run(first point, count of
// points) for each sequence of triangles inside and piece(k) for each triangle across, in the order of the strip.
// placement(k): that of triangle k.
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

} // namespace vorna
