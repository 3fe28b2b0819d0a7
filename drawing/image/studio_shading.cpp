// Shades an object in a tile from its colours, normals, faces and depths.
//
// The height of a pixel's neighbour is how far it lies in front of the plane of the pixel's face, in pixels. In the depth buffer
// planes are straight in perspective too, so that a face never hides itself:
// height = (depth + slope . offset - depth of the neighbour) * pixels per step of depth.
#include "drawing/image/studio_shading.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace vorna::drawing {
namespace {

constexpr std::size_t block_size = Studio_Planes::block;
using Lane_Floats = std::array<float, block_size>;

float least(float a, float b) {
    return a < b ? a : b;
}

float most(float a, float b) {
    return a > b ? a : b;
}

float clamped(float value) {
    return least(most(value, 0.0F), 1.0F);
}

} // namespace

// These functions are compiled for AVX2 and AVX-512 too where the loader can choose. Either way a lane gets the same operations.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && !defined(__SANITIZE_THREAD__)
#define FOR_WIDER_LANES_TOO [[gnu::target_clones("avx512f", "avx2", "default")]]
#else
#define FOR_WIDER_LANES_TOO
#endif

// Neighbouring pixels of a row. place: of the first one in the planes.
struct Studio_Shading::Block {
    std::size_t place;
    Lane_Floats depth, scale, across, up; // slopes in pixels
    Lane_Floats slack;            // heights up to which a neighbour may still lie in the plane: points are rounded to pixels
    Lane_Floats occlusion, light; // light: a factor, of lines, ridges and grooves
    std::array<std::uint32_t, block_size> colors;
};

Studio_Sizes Studio_Sizes::of(std::int32_t height, std::int32_t supersample) {
    constexpr std::int32_t largest_reach = 128;
    const std::int32_t reach = std::clamp(height * supersample / 15, 6, largest_reach);
    return {reach, supersample * std::max(1, (height + 600) / 1200), supersample > 1 ? 2 : 1};
}

// Places on a spiral by the golden angle, so that they lie in all directions, denser and heavier near the pixel.
Studio_Shading::Studio_Shading(const Studio_Sizes& sizes, std::int32_t supersample, const VT_Int_Rectangle& image,
                               const Studio_Lights& lights, std::vector<Studio_Face> faces, std::vector<float> pixels_per_step,
                               Studio_Ground ground)
    : sizes_(sizes), supersample_(supersample), image_(image), lights_(lights), faces_(std::move(faces)),
      pixels_per_step_(std::move(pixels_per_step)), ground_(std::move(ground)),
      samples_(static_cast<std::size_t>(sizes.row_sets)) {
    constexpr double cosine = -0.7373688780783197, sine = 0.6754902942615238;
    constexpr int count = 32; // of all sets
    std::vector<float> totals(samples_.size());
    double x = 1, y = 0;
    for (int i = 0; i < count; ++i) {
        const double part = (i + 0.75) / count, distance = sizes.reach * part * std::sqrt(part);
        const auto across = static_cast<std::int32_t>(std::floor(x * distance + 0.5)),
                   up = static_cast<std::int32_t>(std::floor(y * distance + 0.5));
        const double turned = x * cosine - y * sine;
        y = x * sine + y * cosine;
        x = turned;
        if (across != 0 || up != 0) {
            const double over_distance = 1 / std::sqrt(static_cast<double>(across * across + up * up));
            const auto set = static_cast<std::size_t>(i % sizes.row_sets);
            samples_[set].push_back(
                {across, up, static_cast<float>(over_distance), static_cast<float>(1 - 0.6 * part * std::sqrt(part))});
            totals[set] += samples_[set].back().weight;
        }
    }
    for (std::size_t set = 0; set < samples_.size(); ++set) {
        for (Sample& sample : samples_[set]) {
            sample.weight /= totals[set];
        }
    }
}

FOR_WIDER_LANES_TOO void Studio_Shading::gather(const Studio_Planes& planes, Block& block) const {
    const std::uint32_t* numbers = &planes.faces[block.place];
    for (std::size_t i = 0; i < block_size; ++i) {
        const float depth = planes.depths[block.place + i];
        const float scale = pixels_per_step_[static_cast<std::size_t>(static_cast<std::int32_t>(depth))];
        const Studio_Face& face = faces_[numbers[i]];
        block.depth[i] = depth;
        block.scale[i] = scale;
        block.across[i] = face.across * scale;
        block.up[i] = face.up * scale;
    }
    for (std::size_t i = 0; i < block_size; ++i) {
        block.slack[i] = 0.6F * (1.0F + std::abs(block.across[i]) + std::abs(block.up[i]));
    }
}

// A neighbour occludes by the angle at which it rises above the plane, and less when it rises so high that it is rather something
// else far in front.
FOR_WIDER_LANES_TOO void Studio_Shading::add_occlusion(const Studio_Planes& planes, const std::vector<Sample>& samples,
                                                       Block& block) const {
    block.occlusion.fill(0);
    const float over_range = 1.0F / (1.2F * static_cast<float>(sizes_.reach));
    for (const Sample& sample : samples) {
        const float* depths =
            &planes.depths[block.place -
                           static_cast<std::size_t>(sample.up * static_cast<std::ptrdiff_t>(planes.stride) - sample.across)];
        const auto across = static_cast<float>(sample.across), up = static_cast<float>(sample.up);
        const float over_distance = sample.over_distance, weight = sample.weight;
        for (std::size_t i = 0; i < block_size; ++i) {
            const float height = (block.depth[i] - depths[i]) * block.scale[i] + (block.across[i] * across + block.up[i] * up);
            const float rising = least((height - block.slack[i]) * over_distance - 0.06F, 1.0F);
            const float falling = 2.0F - height * over_range;
            block.occlusion[i] += most(least(rising, falling), 0.0F) * weight;
        }
    }
}

// Outlines, where the patch or the depth changes; ridges and grooves, where the normals on both sides turn away from each other
// or towards each other. The border of the image is no outline.
FOR_WIDER_LANES_TOO void Studio_Shading::add_lines(const Studio_Planes& planes, std::int32_t x, std::int32_t y,
                                                   Block& block) const {
    const std::int32_t before = sizes_.line / 2, after = sizes_.line - before;
    const auto line = static_cast<float>(sizes_.line);
    struct Neighbour {
        std::int32_t across, up;
    };
    const std::array<Neighbour, 4> neighbours{{{after, 0}, {-std::max(before, 1), 0}, {0, after}, {0, -std::max(before, 1)}}};
    Lane_Floats drawn, bend, center_across, center_up;
    drawn.fill(0);
    bend.fill(0);
    const std::uint32_t *normals = &planes.normals[block.place], *patches = &planes.patches[block.place];
    for (std::size_t i = 0; i < block_size; ++i) {
        center_across[i] = static_cast<float>(static_cast<std::int32_t>(normals[i] >> 16 & 255));
        center_up[i] = static_cast<float>(static_cast<std::int32_t>(normals[i] >> 8 & 255));
    }
    for (std::size_t k = 0; k < neighbours.size(); ++k) {
        const auto [columns, rows] = neighbours[k];
        const std::size_t place =
            block.place - static_cast<std::size_t>(rows * static_cast<std::ptrdiff_t>(planes.stride) - columns);
        const float* depths = &planes.depths[place];
        const std::uint32_t *others = &planes.patches[place], *other_normals = &planes.normals[place];
        const auto across = static_cast<float>(columns), up = static_cast<float>(rows);
        const float along_x = across > 0 ? 1.0F : across < 0 ? -1.0F : 0.0F, along_y = up > 0 ? 1.0F : up < 0 ? -1.0F : 0.0F;
        // Lines of one pixel lie on one side of a crease only.
        const bool draws_creases = k % 2 == 0 || before > 0;
        const float crease = draws_creases ? 0.62F : 0.0F;
        if (y + rows < image_.bottom || y + rows > image_.top) {
            continue;
        }
        const std::int32_t first = image_.left - x - columns, last = image_.right - x - columns;
        for (std::size_t i = 0; i < block_size; ++i) {
            const float height = (block.depth[i] - depths[i]) * block.scale[i] + (block.across[i] * across + block.up[i] * up);
            const float jump = std::abs(height) - 4.0F * block.slack[i] - line;
            // Of a step in depth only the nearer side has a line.
            const float behind = clamped((-height - 5.0F * block.slack[i] - 2.0F * line) * 0.2F);
            const float other_patch = others[i] != patches[i] ? crease : 0.0F;
            const auto lane = static_cast<std::int32_t>(i);
            const float seen = lane >= first && lane <= last ? 1.0F : 0.0F;
            drawn[i] = most(drawn[i], most(behind, jump < 0.0F ? other_patch : 0.0F) * seen);
            const float turned =
                (static_cast<float>(static_cast<std::int32_t>(other_normals[i] >> 16 & 255)) - center_across[i]) * along_x +
                (static_cast<float>(static_cast<std::int32_t>(other_normals[i] >> 8 & 255)) - center_up[i]) * along_y;
            bend[i] += jump < 0.0F ? turned * seen : 0.0F;
        }
    }
    for (std::size_t i = 0; i < block_size; ++i) {
        const float ridge = clamped(bend[i] * (1.0F / 220.0F)), groove = clamped(bend[i] * (-1.0F / 200.0F));
        block.light[i] = (1.0F + 0.35F * ridge) * (1.0F - 0.5F * groove) * (1.0F - 0.72F * drawn[i]);
    }
}

FOR_WIDER_LANES_TOO void Studio_Shading::light(const Studio_Planes& planes, Block& block) const {
    Lane_Floats red, green, blue, highlight;
    std::array<std::int32_t, block_size> columns, rows;
    const std::uint32_t *normals = &planes.normals[block.place], *numbers = &planes.faces[block.place];
    std::array<std::uint32_t, block_size>& colors = block.colors;
    for (std::size_t i = 0; i < block_size; ++i) {
        const auto part = [&](int shift) {
            return static_cast<float>(static_cast<std::int32_t>(normals[i] >> shift & 255) - 128);
        };
        const float x = part(16), y = part(8), z = most(part(0), 0.0F);
        const float scale = 127.0F / std::sqrt(x * x + y * y + z * z + 1.0F);
        columns[i] = static_cast<std::int32_t>(x * scale + 128.5F);
        rows[i] = static_cast<std::int32_t>(y * scale + 128.5F);
    }
    for (std::size_t i = 0; i < block_size; ++i) {
        const Studio_Light& found = lights_.at(columns[i], rows[i]);
        red[i] = found.red;
        green[i] = found.green;
        blue[i] = found.blue;
        highlight[i] = found.highlight;
    }
    constexpr float of_channel = 1.0F / (255.0F * 255.0F * 65535.0F), of_level = 1.0F / 65535.0F;
    for (std::size_t i = 0; i < block_size; ++i) {
        const float open = (1.0F - 0.95F * least(block.occlusion[i] * 1.9F, 1.0F)) * block.light[i];
        const float gloss = highlight[i] * of_level;
        const auto channel = [&](int shift, float amount) {
            const auto own = static_cast<float>(static_cast<std::int32_t>(colors[i] >> shift & 255));
            const float seen = (own * own * of_channel * amount + gloss) * open;
            return static_cast<std::uint32_t>(static_cast<std::int32_t>(std::sqrt(least(seen, 1.0F)) * 255.0F + 0.5F));
        };
        const std::uint32_t shaded =
            (colors[i] & 0xFF000000U) | channel(16, red[i]) << 16 | channel(8, green[i]) << 8 | channel(0, blue[i]);
        colors[i] = numbers[i] != 0 ? shaded : colors[i];
    }
}

void Studio_Shading::shade_row(const Studio_Planes& planes, std::int32_t x, std::int32_t y, const Column_Range& columns,
                               Block& block, std::uint8_t* pixels) const {
    const std::vector<Sample>& samples = samples_[static_cast<std::size_t>(y % sizes_.row_sets)];
    for (std::int32_t column = columns.first; column < columns.end; column += Studio_Planes::block) {
        const std::size_t bytes = 4 * static_cast<std::size_t>(std::min(Studio_Planes::block, columns.end - column));
        std::uint8_t* shown = pixels + 4 * std::ptrdiff_t{column};
        std::memcpy(block.colors.data(), shown, bytes);
        std::ranges::transform(block.colors, block.colors.begin(), pixel_word);
        gather(planes, block);
        add_occlusion(planes, samples, block);
        add_lines(planes, x + column, y, block);
        light(planes, block);
        std::ranges::transform(block.colors, block.colors.begin(), pixel_word);
        std::memcpy(shown, block.colors.data(), bytes);
        block.place += block_size;
    }
}

namespace {

// Darkens the pixels without a face. scales: by square of so many columns, of the values that pixels hold.
void shade_ground(const std::uint32_t* numbers, const std::vector<float>& scales, const Column_Range& squares,
                  std::int32_t columns, std::uint8_t* pixels) {
    for (std::int32_t square = squares.first; square < squares.end; ++square) {
        const float scale = scales[static_cast<std::size_t>(square)];
        for (std::int32_t column = square * columns; column < (square + 1) * columns; ++column) {
            if (numbers[column] == 0) {
                std::uint8_t* pixel = pixels + 4 * std::ptrdiff_t{column};
                for (int channel = 0; channel < 3; ++channel) {
                    pixel[channel] = static_cast<std::uint8_t>(static_cast<float>(pixel[channel]) * scale + 0.5F);
                }
            }
        }
    }
}

} // namespace

// The ground's light changes slowly: it is that of whole pixels of the image.
void Studio_Shading::shade(const Studio_Planes& planes, const VT_Int_Rectangle& window, const VT_Int_Rectangle& kept,
                           std::uint8_t* top, std::ptrdiff_t row_bytes) const {
    Block block{};
    const std::int32_t n = supersample_, first_column = kept.left - window.left;
    std::vector<float> ground(static_cast<std::size_t>((kept.right - kept.left + 1) / n));
    Column_Range darkened;
    for (std::int32_t y = kept.top; y >= kept.bottom; --y) {
        const std::int32_t row = window.top - y;
        std::uint8_t* pixels = top + row * row_bytes;
        const Column_Range& faces = planes.rows[static_cast<std::size_t>(row)];
        const Column_Range columns{std::max(faces.first, first_column), std::min(faces.end, kept.right - window.left + 1)};
        if (!columns.is_empty()) {
            block.place = planes.place(columns.first, row);
            shade_row(planes, window.left, y, columns, block, pixels);
        }
        if (y == kept.top || y % n == n - 1) {
            darkened = ground_.shade(kept.left, y - y % n, n, ground);
            for (std::int32_t square = darkened.first; square < darkened.end; ++square) {
                float& scale = ground[static_cast<std::size_t>(square)];
                scale = std::sqrt(scale);
            }
        }
        shade_ground(&planes.faces[planes.place(first_column, row)], ground, darkened, n,
                     pixels + 4 * std::ptrdiff_t{first_column});
    }
}

} // namespace vorna::drawing
