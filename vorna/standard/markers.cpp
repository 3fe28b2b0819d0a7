// Standard markers and dots.
//
// Float forms are rounded and drawn through the slots of the integer forms. Integer forms are drawn as dots in the colour of the
// marker, by the rules of the dot slot. The standard function of dots draws nothing.
#include <algorithm>
#include <vector>

#include "vorna/draw.h"
#include "vorna/standard/conversion.h"
#include "vorna/standard/standard_call.h"

namespace vorna {

namespace {

// The pixels of a square that belong to a symbol. Offsets from the point of the marker: the same on all sides, for even sizes one
// more to the left and below.
class Symbol {
public:
    explicit Symbol(const VT_Marker_Attributes& marker)
        : number_(marker.symbol >= marker_symbol::plus && marker.symbol <= marker_symbol::star ? marker.symbol
                                                                                               : marker_symbol::dot),
          size_(number_ == marker_symbol::dot ? 1 : std::max(marker.size, 1)), low_(-(std::int64_t{size_} / 2)),
          high_(low_ + size_ - 1) {}

    std::int64_t low() const noexcept { return low_; }
    std::int64_t high() const noexcept { return high_; }

    bool operator()(std::int64_t x, std::int64_t y) const noexcept {
        switch (number_) {
        case marker_symbol::plus:
            return is_on_plus(x, y);
        case marker_symbol::cross:
            return is_on_cross(x, y);
        case marker_symbol::star:
            return is_on_plus(x, y) || is_on_cross(x, y);
        case marker_symbol::circle:
        case marker_symbol::square:
        case marker_symbol::triangle:
            return is_inside(x, y) && !(is_inside(x - 1, y) && is_inside(x + 1, y) && is_inside(x, y - 1) && is_inside(x, y + 1));
        default:
            return is_inside(x, y);
        }
    }

private:
    static bool is_on_plus(std::int64_t x, std::int64_t y) noexcept { return x == 0 || y == 0; }
    bool is_on_cross(std::int64_t x, std::int64_t y) const noexcept { return x == y || x == low_ + high_ - y; }

    // The filled figure of an outline.
    bool is_inside(std::int64_t x, std::int64_t y) const noexcept {
        if (x < low_ || x > high_ || y < low_ || y > high_) {
            return false;
        }
        // Twice the distance from the centre, which for even sizes lies between pixels.
        const std::int64_t u = 2 * x - low_ - high_;
        const std::int64_t v = 2 * y - low_ - high_;
        switch (number_) {
        case marker_symbol::circle:
        case marker_symbol::filled_circle:
            return u * u + v * v < std::int64_t{size_} * size_;
        case marker_symbol::triangle:
            return (u < 0 ? -u : u) <= high_ - y + (size_ % 2 == 0 ? 1 : 0);
        default:
            return true;
        }
    }

    std::int32_t number_;
    std::int32_t size_;
    std::int64_t low_, high_;
};

// The pixels of a symbol, row by row, as offsets from the point of the marker.
std::vector<VT_Int_Pair> pixels_of(const Symbol& symbol) {
    std::vector<VT_Int_Pair> pixels;
    for (std::int64_t y = symbol.low(); y <= symbol.high(); ++y) {
        for (std::int64_t x = symbol.low(); x <= symbol.high(); ++x) {
            if (symbol(x, y)) {
                pixels.push_back({static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)});
            }
        }
    }
    return pixels;
}

// pixels: of the symbol; empty = not known. color: null = that of the marker.
void draw_marker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, const VT_Int_Rectangle& visible, const Symbol& symbol,
                 const std::vector<VT_Int_Pair>& pixels, const VT_DCI_Point& at, const VT_RGB32* color) {
    const bool is_inside = at.x + symbol.low() >= visible.left && at.x + symbol.high() <= visible.right &&
                           at.y + symbol.low() >= visible.bottom && at.y + symbol.high() <= visible.top;
    if (is_inside && !pixels.empty()) {
        for (const VT_Int_Pair& pixel : pixels) {
            const VT_DCI_Point dot{at.x + pixel.x, at.y + pixel.y, at.z};
            VD_Draw_DCI_Dot(renderer, rendition, &dot, color);
        }
        return;
    }
    const std::int64_t bottom = std::max<std::int64_t>(at.y + symbol.low(), visible.bottom);
    const std::int64_t top = std::min<std::int64_t>(at.y + symbol.high(), visible.top);
    const std::int64_t left = std::max<std::int64_t>(at.x + symbol.low(), visible.left);
    const std::int64_t right = std::min<std::int64_t>(at.x + symbol.high(), visible.right);
    for (std::int64_t y = bottom; y <= top; ++y) {
        for (std::int64_t x = left; x <= right; ++x) {
            if (symbol(x - at.x, y - at.y)) {
                const VT_DCI_Point dot{static_cast<std::int32_t>(x), static_cast<std::int32_t>(y), at.z};
                VD_Draw_DCI_Dot(renderer, rendition, &dot, color);
            }
        }
    }
}

void draw_markers(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
                  const VT_RGB32* colors, bool single_color) {
    const VT_Int_Rectangle visible = visible_rectangle(renderer, rendition);
    if (count < 1 || is_empty(visible)) {
        return;
    }
    const Symbol symbol(rendition.marker);
    // Dots take the attributes of lines.
    const VT_Reference<VT_Rendition> dots(static_cast<VT_Rendition*>(rendition.clone()));
    dots->line.color = rendition.marker.color;
    dots->line.index = rendition.marker.index;
    dots->line.mode = rendition.marker.mode;
    // Each pixel's place in a symbol is computed once for several markers of a usual size.
    constexpr std::int64_t largest_listed = 64;
    const bool lists_pixels = count > 1 && symbol.high() - symbol.low() < largest_listed;
    const std::vector<VT_Int_Pair> pixels = lists_pixels ? pixels_of(symbol) : std::vector<VT_Int_Pair>();
    for (std::int32_t i = 0; i < count; ++i) {
        draw_marker(renderer, *dots, visible, symbol, pixels, points[i], colors ? colors + (single_color ? 0 : i) : nullptr);
    }
}

// Calls draw(index of the point, the point) for each marker; markers beyond whole coordinates are left out.
template <class Draw> void for_each_3d_marker(std::int32_t count, const VT_Point_D* points, Draw draw) {
    for (std::int32_t i = 0; i < count; ++i) {
        if (std::abs(points[i].x) <= farthest_coordinate && std::abs(points[i].y) <= farthest_coordinate) {
            const VT_DCI_Point point = nearest_point(points[i]);
            draw(i, &point);
        }
    }
}

} // namespace

} // namespace vorna

void VD_Standard_Draw_2D_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2D_Polymarker");
    vorna::draw_rounded(VD_Draw_2DI_Polymarker, renderer, rendition, count, points);
}

void VD_Standard_Draw_DC_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DC_Polymarker");
    vorna::draw_rounded_inside(VD_Draw_DCI_Polymarker, VD_Draw_2DI_Polymarker, renderer, rendition, count, points);
}

void VD_Standard_Draw_2DI_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                     const VT_DCI_Point* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2DI_Polymarker");
    vorna::draw_markers(renderer, rendition, count, points, nullptr, true);
}

void VD_Standard_Draw_DCI_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                     const VT_DCI_Point* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Polymarker");
    vorna::draw_markers(renderer, rendition, count, points, nullptr, true);
}

void VD_Standard_Draw_3D_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                    const VT_Point_D* points) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_3D_Polymarker");
    vorna::for_each_3d_marker(
        count, points, [&](std::int32_t, const VT_DCI_Point* point) { VD_Draw_2DI_Polymarker(renderer, rendition, 1, point); });
}

void VD_Standard_Draw_2D_Colorized_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                              const VT_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2D_Colorized_Polymarker");
    vorna::draw_rounded(VD_Draw_2DI_Colorized_Polymarker, renderer, rendition, count, points, colors, single_color);
}

void VD_Standard_Draw_DC_Colorized_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                              const VT_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DC_Colorized_Polymarker");
    vorna::draw_rounded_inside(VD_Draw_DCI_Colorized_Polymarker, VD_Draw_2DI_Colorized_Polymarker, renderer, rendition, count,
                               points, colors, single_color);
}

void VD_Standard_Draw_2DI_Colorized_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                               const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_2DI_Colorized_Polymarker");
    vorna::draw_markers(renderer, rendition, count, points, colors, single_color);
}

void VD_Standard_Draw_DCI_Colorized_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                               const VT_DCI_Point* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Colorized_Polymarker");
    vorna::draw_markers(renderer, rendition, count, points, colors, single_color);
}

void VD_Standard_Draw_3D_Colorized_Polymarker(VT_Renderer_Data& renderer, const VT_Rendition& rendition, std::int32_t count,
                                              const VT_Point_D* points, const VT_RGB32* colors, bool single_color) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_3D_Colorized_Polymarker");
    vorna::for_each_3d_marker(count, points, [&](std::int32_t i, const VT_DCI_Point* point) {
        VD_Draw_2DI_Colorized_Polymarker(renderer, rendition, 1, point, colors && !single_color ? colors + i : colors,
                                         single_color);
    });
}

// All shapes are made of dots in the end; there is no simpler primitive to draw them with.
void VD_Standard_Draw_DCI_Dot(VT_Renderer_Data& renderer, const VT_Rendition&, const VT_DCI_Point*, const VT_RGB32*) {
    const vorna::Standard_Call call(renderer, "VD_Standard_Draw_DCI_Dot");
}
