// A texture as the renderer can draw it.
#include "drawing/model/texture.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <mutex>
#include <numbers>

namespace vorna::drawing::model {
namespace {

constexpr std::int32_t largest_side = 4096;
// Of an image that shows a texture several times.
constexpr int largest_side_log2 = 14, largest_image_log2 = 24;
// Coordinates this little beyond a border are meant to lie on it.
constexpr double border_width = 1.0 / 1024;
// Part of a texel that coordinates keep from the image's borders, against rounding on the way from point to point.
constexpr double hair = 1.0 / 256;

std::int32_t drawn_side(std::int32_t side) {
    return std::min(static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(side))), largest_side);
}

int log2_of(std::int32_t power) {
    return std::countr_zero(static_cast<std::uint32_t>(power));
}

Transparency resolved(Transparency transparency, float opacity, const Image& image) {
    if (transparency != Transparency::by_image) {
        return transparency;
    }
    if (opacity < 1) {
        return Transparency::blended;
    }
    bool cut_out = false;
    for (const VT_RGB32& pixel : image.pixels) {
        if (pixel.alpha > 0 && pixel.alpha < 255) {
            return Transparency::blended;
        }
        cut_out |= pixel.alpha == 0;
    }
    return cut_out ? Transparency::cut_out : Transparency::none;
}

// The texel of a texture of so many texels that stands at a place, counted from the texture's border on.
std::int32_t wrapped(std::int32_t place, std::int32_t size, Wrap wrap) {
    if (wrap == Wrap::clamp) {
        return std::clamp(place, 0, size - 1);
    }
    const std::int32_t within = place & (size - 1);
    return wrap == Wrap::mirror && (place & size) != 0 ? size - 1 - within : within;
}

} // namespace

Texture::Texture(std::string name, const Image& image, const Material& material, Load_Limits& limits)
    : name_(std::move(name)), limits_(limits), given_size_{image.width, image.height}, wraps_{material.wrap_u, material.wrap_v},
      transparency_(resolved(material.transparency, material.opacity, image)) {
    Load_Limits::Loan memory = memory_of(drawn_side(image.width), drawn_side(image.height));
    Image drawn = resampled(image, drawn_side(image.width), drawn_side(image.height), wraps_[0], wraps_[1]);
    if (transparency_ == Transparency::none) {
        std::ranges::for_each(drawn.pixels, [](VT_RGB32& pixel) { pixel.alpha = 255; });
    }
    if (transparency_ == Transparency::cut_out) {
        least_alpha_ = static_cast<std::int32_t>(std::ceil(std::clamp(material.cut_off, 0.0F, 1.01F) * 255));
    }
    log2_sides_ = {log2_of(drawn.width), log2_of(drawn.height)};
    levels_.emplace(Level{0, 0}, std::pair(std::move(drawn), std::move(memory)));
}

std::string Texture::summary() const {
    const auto size = [](std::int32_t width, std::int32_t height) {
        return std::to_string(width) + "x" + std::to_string(height);
    };
    const std::string given = size(given_size_.x, given_size_.y), used = size(1 << log2_sides_[0], 1 << log2_sides_[1]);
    return given == used ? given : given + " as " + used;
}

Texture::Tiles Texture::tiles(double low, double high, Wrap wrap) {
    auto first = static_cast<std::int32_t>(std::floor(low + border_width));
    const auto end = std::max(static_cast<std::int32_t>(std::ceil(high - border_width)), first + 1);
    if (wrap == Wrap::mirror) {
        first &= ~1; // Odd ones are the mirrored ones.
    }
    return {first, static_cast<std::int32_t>(std::bit_width(static_cast<std::uint32_t>(end - first - 1)))};
}

// About one texel for a pixel, as far as the image's size allows.
Texture::Level Texture::chosen_level(const double (&covered)[2], const std::array<Tiles, 2>& tiles) const {
    Level level{};
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const std::int32_t side = log2_sides_[axis];
        for (double texels = std::ldexp(covered[axis], side); texels > std::numbers::sqrt2 && level[axis] < side; texels /= 2) {
            ++level[axis];
        }
    }
    const bool alone = tiles[0].log2_count == 0 && tiles[1].log2_count == 0;
    const auto log2_side = [&](std::size_t axis) {
        // One texel is the same wherever it is looked at.
        return level[axis] == log2_sides_[axis] ? 0 : log2_sides_[axis] - level[axis] + tiles[axis].log2_count;
    };
    while (!alone &&
           (std::max(log2_side(0), log2_side(1)) > largest_side_log2 || log2_side(0) + log2_side(1) > largest_image_log2)) {
        ++level[log2_side(0) > log2_side(1) ? 0 : 1];
    }
    return level;
}

Texture::Cut Texture::cut(const double (&covered)[2], const double (&low)[2], const double (&high)[2]) {
    std::array<Tiles, 2> shown{tiles(low[0], high[0], wraps_[0]), tiles(low[1], high[1], wraps_[1])};
    const Level level = chosen_level(covered, shown);
    Cut result;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        if (level[axis] == log2_sides_[axis]) {
            shown[axis].log2_count = 0;
        }
        const double count = std::ldexp(1.0, shown[axis].log2_count);
        result.first[axis] = shown[axis].first;
        result.scale[axis] = 1 / count;
        result.texel[axis] = std::ldexp(1.0, level[axis] - log2_sides_[axis]);
        result.low[axis] = hair * result.texel[axis] / count;
        result.high[axis] = 1 - result.low[axis];
    }
    result.material = material(level, shown);
    return result;
}

// Halved from the next larger one that there is.
const Image& Texture::image(const Level& level) {
    if (const auto found = levels_.find(level); found != levels_.end()) {
        return found->second.first;
    }
    const Image& larger = image(level[0] > level[1] ? Level{level[0] - 1, level[1]} : Level{level[0], level[1] - 1});
    const std::int32_t width = 1 << (log2_sides_[0] - level[0]), height = 1 << (log2_sides_[1] - level[1]);
    Load_Limits::Loan memory = memory_of(width, height);
    std::pair made(resampled(larger, width, height, wraps_[0], wraps_[1]), std::move(memory));
    return levels_.emplace(level, std::move(made)).first->second.first;
}

VT_Reference<const VT_Basic_Material> Texture::material(const Level& level, const std::array<Tiles, 2>& tiles) {
    const auto origin = [&](std::size_t axis) {
        // Where a texture repeats, all places to begin at are the same.
        return wraps_[axis] == Wrap::clamp && level[axis] < log2_sides_[axis] ? tiles[axis].first : 0;
    };
    const std::array<std::int32_t, 6> key{level[0], level[1], origin(0), tiles[0].log2_count, origin(1), tiles[1].log2_count};
    {
        const std::shared_lock looking(lock_);
        if (const auto found = materials_.find(key); found != materials_.end()) {
            return found->second.first;
        }
    }
    const std::unique_lock making(lock_);
    if (const auto found = materials_.find(key); found != materials_.end()) {
        return found->second.first;
    }
    Made made;
    try {
        made = made_material(level, tiles, {origin(0), origin(1)});
    } catch (const Load_Error&) {
        if (materials_.empty()) {
            throw;
        }
        materials_.clear(); // views that were looked at before
        made = made_material(level, tiles, {origin(0), origin(1)});
    }
    return materials_.emplace(key, std::move(made)).first->second.first;
}

Texture::Made Texture::made_material(const Level& level, const std::array<Tiles, 2>& tiles, VT_Int_Pair origin) {
    const Image& texture = image(level);
    const std::int32_t width = texture.width << tiles[0].log2_count, height = texture.height << tiles[1].log2_count;
    Load_Limits::Loan memory = memory_of(width, height);
    const VT_Reference<VT_Shared_Image> repeated(
        new VT_Shared_Image(width, height, Buffer_Format::rgb32, 4 * width, nullptr, false, false));
    for (std::int32_t r = 0; r < height; ++r) {
        const std::int32_t up = origin.y * texture.height + height - 1 - r;
        const VT_RGB32* row = texture.row(texture.height - 1 - wrapped(up, texture.height, wraps_[1]));
        auto* texels = reinterpret_cast<VT_RGB32*>(repeated->row(r));
        for (std::int32_t c = 0; c < width; ++c) {
            texels[c] = row[wrapped(origin.x * texture.width + c, texture.width, wraps_[0])];
            if (transparency_ == Transparency::cut_out) {
                texels[c].alpha = texels[c].alpha < least_alpha_ ? 0 : 255;
            }
        }
    }
    const VT_Reference<VT_Basic_Material> made(new VT_Basic_Material);
    made->texture = repeated;
    return {made, std::move(memory)};
}

} // namespace vorna::drawing::model
