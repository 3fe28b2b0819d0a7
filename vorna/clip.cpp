// Outcodes of points relative to a rectangle.
#include "host/clip.h"

namespace {

template <class Coordinate>
std::uint16_t side(Coordinate value, Coordinate low, Coordinate high, std::uint16_t under, std::uint16_t over) {
    return value > high ? over : value < low ? under : std::uint16_t{0};
}

// NaN counts as inside, because every comparison with it is false.
template <class Coordinate, class Point>
std::int32_t clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const Point* points, std::uint16_t* outcodes) {
    const auto left = static_cast<Coordinate>(rectangle.left);
    const auto right = static_cast<Coordinate>(rectangle.right);
    const auto bottom = static_cast<Coordinate>(rectangle.bottom);
    const auto top = static_cast<Coordinate>(rectangle.top);
    std::uint16_t any = 0;
    std::uint16_t all = 0xFFFF;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto code =
            static_cast<std::uint16_t>(side(points[i].x, left, right, vorna::outcode::left, vorna::outcode::right) |
                                       side(points[i].y, bottom, top, vorna::outcode::below, vorna::outcode::above));
        outcodes[i] = code;
        any = static_cast<std::uint16_t>(any | code);
        all = static_cast<std::uint16_t>(all & code);
    }
    return any == 0 ? count : all != 0 ? 0 : -1;
}

} // namespace

std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_DCI_Point* points, std::uint16_t* outcodes) {
    return clip<std::int32_t>(rectangle, count, points, outcodes);
}

std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point* points, std::uint16_t* outcodes) {
    return clip<float>(rectangle, count, points, outcodes);
}

std::int32_t VD_Clip(const VT_Int_Rectangle& rectangle, std::int32_t count, const VT_Point_D* points, std::uint16_t* outcodes) {
    return clip<double>(rectangle, count, points, outcodes);
}
