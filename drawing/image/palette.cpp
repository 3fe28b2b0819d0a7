// Palettes that users choose, and colours as entries of any palette.
#include "drawing/image/palette.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "drawing/files/input_file.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/color_name.h"
#include "drawing/image/png_reader.h"

namespace vorna::drawing {
namespace {

constexpr std::size_t most_colors = 256;
constexpr std::size_t known_colors = std::size_t{1} << 15;
constexpr std::string_view blanks = " \t\r";

std::string_view take_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t start = line.find_first_not_of(blanks);
    return start == line.npos ? std::string_view() : line.substr(start, line.find_last_not_of(blanks) - start + 1);
}

// Red, green and blue; a name may follow.
bool read_levels(std::string_view line, VT_RGB32& color) {
    std::uint8_t levels[3];
    const char *place = line.data(), *const end = place + line.size();
    for (std::uint8_t& level : levels) {
        while (place != end && blanks.find(*place) != blanks.npos) {
            ++place;
        }
        const auto [stop, error] = std::from_chars(place, end, level);
        if (error != std::errc{} || (stop != end && blanks.find(*stop) == blanks.npos)) {
            return false;
        }
        place = stop;
    }
    color = {levels[2], levels[1], levels[0], 255};
    return true;
}

std::vector<VT_RGB32> colors_of_png(const std::string& file, std::string_view content, Load_Limits& limits) {
    std::vector<VT_RGB32> colors;
    try {
        const Png_Image image = read_png(file, content, limits);
        for (std::size_t i = 0; i + 2 < image.palette.size() && image.colors == Png_Image::Colors::palette; i += 3) {
            const auto level = [&](std::size_t channel) { return static_cast<std::uint8_t>(image.palette[i + channel]); };
            colors.push_back({level(2), level(1), level(0), 255});
        }
    } catch (const Png_Error& error) {
        throw Usage_Error(file + ": " + error.what());
    }
    if (colors.empty()) {
        throw Usage_Error(file + ": expected a PNG file with a palette, found one of full colours or greys");
    }
    return colors;
}

std::vector<VT_RGB32> colors_of_text(const std::string& file, std::string_view content) {
    std::vector<VT_RGB32> colors;
    std::string_view text = content;
    const bool gimp = take_line(text) == "GIMP Palette";
    text = content;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = take_line(text);
        const bool is_head =
            gimp && (number == 1 || line.starts_with("Name:") || line.starts_with("Columns:") || line.starts_with('#'));
        if (line.empty() || is_head) {
            continue;
        }
        VT_RGB32 color;
        if (gimp ? !read_levels(line, color) : !line.starts_with('#')) {
            throw Usage_Error(file + ":" + std::to_string(number) + ": expected " +
                              (gimp ? "red, green and blue from 0 to 255" : "a colour as #rrggbb") + ", found '" +
                              std::string(line.substr(0, 40)) + "'");
        }
        if (!gimp) {
            const auto named = color_named(line);
            if (!named) {
                throw Usage_Error(file + ":" + std::to_string(number) + ": expected a colour as #rrggbb, found '" +
                                  std::string(line.substr(0, 40)) + "'");
            }
            color = *named;
        }
        colors.push_back(color);
    }
    return colors;
}

std::int32_t lightness(VT_RGB32 color) {
    return 299 * color.red + 587 * color.green + 114 * color.blue;
}

} // namespace

VT_Reference<const VT_Palette> cube_palette(VT_Int_RGB levels) {
    const auto channel = [](std::int32_t level, std::int32_t count) {
        return static_cast<std::uint8_t>(level * 255 / (count - 1));
    };
    std::vector<VT_RGB32> colors;
    colors.reserve(most_colors);
    for (std::int32_t i = 0; i < levels.red * levels.green * levels.blue; ++i) {
        colors.push_back({channel(i % levels.blue, levels.blue), channel(i / levels.blue % levels.green, levels.green),
                          channel(i / levels.blue / levels.green, levels.red), 255});
    }
    return VT_Reference<const VT_Palette>(new VT_Palette(std::move(colors), VT_Color_Cube(levels, 1.0F, 0)));
}

std::vector<VT_RGB32> read_palette(const std::string& file, Load_Limits& limits) {
    return palette_colors(name_of_input(file), read_input(file, limits, std::size_t{64} << 20), limits);
}

std::vector<VT_RGB32> palette_colors(const std::string& file, std::string_view content, Load_Limits& limits) {
    std::vector<VT_RGB32> colors =
        content.starts_with("\x89PNG") ? colors_of_png(file, content, limits) : colors_of_text(file, content);
    if (colors.empty() || colors.size() > most_colors) {
        throw Usage_Error(file + ": expected a palette of 1 to 256 colours, found " + std::to_string(colors.size()));
    }
    return colors;
}

Palette_Dither::Palette_Dither(std::vector<VT_RGB32> colors, const std::vector<VT_RGB32>& flat)
    : colors_(std::move(colors)), flat_(flat), known_(known_colors) {
}

std::uint8_t Palette_Dither::nearest_to(std::int32_t red, std::int32_t green, std::int32_t blue) const noexcept {
    std::size_t best = 0;
    std::int32_t least = INT32_MAX;
    for (std::size_t i = 0; i < colors_.size(); ++i) {
        const std::int32_t r = colors_[i].red - red, g = colors_[i].green - green, b = colors_[i].blue - blue;
        const std::int32_t distance = r * r + g * g + b * b;
        if (distance < least) {
            least = distance;
            best = i;
        }
    }
    return static_cast<std::uint8_t>(best);
}

// Each entry makes up for the errors of those before it. What no mixture reaches would pile up: errors are bounded.
Palette_Dither::Pattern Palette_Dither::pattern_of(VT_RGB32 color) const {
    static constexpr std::int32_t farthest = 4096;
    Pattern pattern;
    if (std::ranges::find(flat_, color) != flat_.end()) {
        pattern.fill(nearest(color));
        return pattern;
    }
    std::int32_t red = 0, green = 0, blue = 0;
    const auto add = [](std::int32_t& error, std::int32_t wanted, std::int32_t found) {
        error = std::clamp(error + wanted - found, -farthest, farthest);
    };
    for (std::uint8_t& index : pattern) {
        index = nearest_to(color.red + red, color.green + green, color.blue + blue);
        add(red, color.red, colors_[index].red);
        add(green, color.green, colors_[index].green);
        add(blue, color.blue, colors_[index].blue);
    }
    std::ranges::sort(pattern, {}, [this](std::uint8_t index) { return std::pair(lightness(colors_[index]), index); });
    return pattern;
}

std::uint8_t Palette_Dither::index(VT_RGB32 color, std::int32_t x, std::int32_t y) {
    static constexpr std::uint8_t thresholds[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    color.alpha = 255;
    const std::uint32_t word = vorna::word_of(color);
    Entry& entry = known_[(word * 2654435761U) >> 17];
    if (entry.color != word) {
        entry = {word, pattern_of(color)};
    }
    return entry.pattern[thresholds[y & 3][x & 3]];
}

} // namespace vorna::drawing
