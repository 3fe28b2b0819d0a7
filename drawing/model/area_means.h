// Means of a channel of an image over rectangles of it.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "drawing/image/image.h"
#include "drawing/model/mesh.h"

namespace vorna::drawing::model {

// A rectangle of texture coordinates.
struct Texture_Area {
    Texture_Point low{HUGE_VALF, HUGE_VALF}, high{-HUGE_VALF, -HUGE_VALF};

    void include(const Texture_Point& place);
};

// By vertex, what the triangles around it show of their images.
std::vector<Texture_Area> vertex_areas(const Mesh& mesh);

// Sums over a grid of at most 64 x 64 cells, in integers: an area counts the cells that it touches. Along an axis on which it
// reaches over the image's border, it counts as the whole axis.
class Area_Means {
public:
    enum class Channel { green, blue, lightest };
    Area_Means(const Image& image, Channel channel, Wrap wrap_u, Wrap wrap_v);

    // 0 to 1.
    float of(const Texture_Area& area) const;

private:
    static constexpr std::int32_t most_cells = 64;
    struct Sum {
        std::uint64_t values = 0, count = 0;
    };
    using Range = std::array<std::size_t, 2>; // of cells, the second one excluded

    Range range(float low, float high, Wrap wrap, std::size_t cells) const;
    const Sum& up_to(std::size_t column, std::size_t row) const { return sums_[row * (columns_ + 1) + column]; }

    std::array<Wrap, 2> wraps_;
    std::size_t columns_, rows_;
    std::vector<Sum> sums_; // of all cells to the left and above
};

} // namespace vorna::drawing::model
