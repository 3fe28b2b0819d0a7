// Lines of text as an image.
#include "app/view/text_panel.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/color.h"

namespace vorna::app::view {
namespace {

// Rows of five dots, the highest first; the seventh lies on the baseline. Missing rows are empty.
struct Glyph {
    char letter;
    std::string_view rows;
};

constexpr std::array glyphs{
    Glyph{'a', "...../...../.###./....#/.####/#...#/.####"},
    Glyph{'b', "#..../#..../####./#...#/#...#/#...#/####."},
    Glyph{'c', "...../...../.####/#..../#..../#..../.####"},
    Glyph{'d', "....#/....#/.####/#...#/#...#/#...#/.####"},
    Glyph{'e', "...../...../.###./#...#/#####/#..../.###."},
    Glyph{'f', "..##./.#..#/.#.../###../.#.../.#.../.#..."},
    Glyph{'g', "...../...../.####/#...#/#...#/#...#/.####/....#/.###."},
    Glyph{'h', "#..../#..../####./#...#/#...#/#...#/#...#"},
    Glyph{'i', "..#../...../.##../..#../..#../..#../.###."},
    Glyph{'j', "...#./...../..##./...#./...#./...#./...#./#..#./.##.."},
    Glyph{'k', "#..../#..../#..#./#.#../##.../#.#../#..#."},
    Glyph{'l', ".##../..#../..#../..#../..#../..#../.###."},
    Glyph{'m', "...../...../##.#./#.#.#/#.#.#/#.#.#/#.#.#"},
    Glyph{'n', "...../...../####./#...#/#...#/#...#/#...#"},
    Glyph{'o', "...../...../.###./#...#/#...#/#...#/.###."},
    Glyph{'p', "...../...../####./#...#/#...#/#...#/####./#..../#...."},
    Glyph{'q', "...../...../.####/#...#/#...#/#...#/.####/....#/....#"},
    Glyph{'r', "...../...../#.##./##..#/#..../#..../#...."},
    Glyph{'s', "...../...../.####/#..../.###./....#/####."},
    Glyph{'t', ".#.../.#.../####./.#.../.#.../.#..#/..##."},
    Glyph{'u', "...../...../#...#/#...#/#...#/#..##/.##.#"},
    Glyph{'v', "...../...../#...#/#...#/#...#/.#.#./..#.."},
    Glyph{'w', "...../...../#...#/#.#.#/#.#.#/#.#.#/.#.#."},
    Glyph{'x', "...../...../#...#/.#.#./..#../.#.#./#...#"},
    Glyph{'y', "...../...../#...#/#...#/#...#/#...#/.####/....#/.###."},
    Glyph{'z', "...../...../#####/...#./..#../.#.../#####"},
    Glyph{'F', "#####/#..../#..../####./#..../#..../#...."},
    Glyph{'0', ".###./#...#/#..##/#.#.#/##..#/#...#/.###."},
    Glyph{'1', "..#../.##../..#../..#../..#../..#../.###."},
    Glyph{'2', ".###./#...#/....#/...#./..#../.#.../#####"},
    Glyph{'3', "#####/...#./..#../...#./....#/#...#/.###."},
    Glyph{'4', "...#./..##./.#.#./#..#./#####/...#./...#."},
    Glyph{'5', "#####/#..../####./....#/....#/#...#/.###."},
    Glyph{'6', "..##./.#.../#..../####./#...#/#...#/.###."},
    Glyph{'7', "#####/....#/...#./..#../.#.../.#.../.#..."},
    Glyph{'8', ".###./#...#/#...#/.###./#...#/#...#/.###."},
    Glyph{'9', ".###./#...#/#...#/.####/....#/...#./.##.."},
    Glyph{',', "...../...../...../...../...../.##../..#../.#..."},
    Glyph{'.', "...../...../...../...../...../.##../.##.."},
    Glyph{':', "...../...../.##../.##../...../.##../.##.."},
    Glyph{'+', "...../..#../..#../#####/..#../..#.."},
    Glyph{'-', "...../...../...../#####"},
    Glyph{'\'', "..#../..#../.#..."},
    Glyph{'_', "...../...../...../...../...../...../...../#####"},
    Glyph{'#', ".#.#./.#.#./#####/.#.#./#####/.#.#./.#.#."},
    Glyph{'(', "...#./..#../.#.../.#.../.#.../..#../...#."},
    Glyph{')', ".#.../..#../...#./...#./...#./..#../.#..."},
    Glyph{'[', ".###./.#.../.#.../.#.../.#.../.#.../.###."},
    Glyph{']', ".###./...#./...#./...#./...#./...#./.###."},
    Glyph{';', "...../...../.##../.##../...../.##../..#../.#..."},
    Glyph{'/', "....#/....#/...#./..#../.#.../#..../#...."},
    Glyph{'>', ".#.../..#../...#./....#/...#./..#../.#..."},
    Glyph{'=', "...../...../#####/...../#####"},
    Glyph{'%', "##..#/##..#/...#./..#../.#.../#..##/#..##"},
    Glyph{'*', "...../#.#.#/.###./#####/.###./#.#.#"},
};

// In dots: the width of a letter and its gap, the height of a line and its gap, and the border around the text.
constexpr std::int32_t letter_width = 6, line_height = 11, border = 6;
constexpr VT_RGB32 foreground{240, 240, 240, 255}, highlight{96, 208, 255, 255};

bool has_dot(char letter, std::int32_t x, std::int32_t y) {
    const auto* found = std::ranges::find(glyphs, letter, &Glyph::letter);
    const auto place = static_cast<std::size_t>(letter_width) * static_cast<std::size_t>(y) + static_cast<std::size_t>(x);
    return found != glyphs.end() && place < found->rows.size() && found->rows[place] == '#';
}

} // namespace

VT_Int_Pair panel_size(std::size_t letters, std::size_t lines, std::int32_t scale) {
    return {(static_cast<std::int32_t>(letters) * letter_width + 2 * border) * scale,
            (static_cast<std::int32_t>(lines) * line_height + 2 * border) * scale};
}

std::size_t letters_in(std::int32_t panel_width, std::int32_t scale) {
    return static_cast<std::size_t>(std::max(panel_width / scale - 2 * border, 0) / letter_width);
}

VT_Reference<VT_Shared_Image> text_panel(const std::vector<std::string>& lines, std::int32_t scale, std::size_t highlighted) {
    std::size_t longest = 0;
    std::ranges::for_each(lines, [&](const std::string& line) { longest = std::max(longest, line.size()); });
    const auto [width, height] = panel_size(longest, lines.size(), scale);
    VT_Reference<VT_Shared_Image> image(
        new VT_Shared_Image(width, height, Buffer_Format::rgb32, 4 * width, nullptr, false, false));
    for (std::int32_t row = 0; row < height; ++row) {
        auto* pixels = reinterpret_cast<VT_RGB32*>(image->row(row));
        const std::int32_t y = row / scale - border, line = y / line_height;
        const bool written = y >= 0 && line < static_cast<std::int32_t>(lines.size());
        const VT_RGB32 letters = static_cast<std::size_t>(line) == highlighted ? highlight : foreground;
        for (std::int32_t column = 0; column < width; ++column) {
            const std::int32_t x = column / scale - border;
            const auto letter = static_cast<std::size_t>(x / letter_width);
            const bool dot = written && x >= 0 && letter < lines[static_cast<std::size_t>(line)].size() &&
                             has_dot(lines[static_cast<std::size_t>(line)][letter], x % letter_width, y % line_height);
            pixels[column] = dot ? letters : panel_background;
        }
    }
    return image;
}

} // namespace vorna::app::view
