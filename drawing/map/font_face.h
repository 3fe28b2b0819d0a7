// One font of a file, with its letters' outlines.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

struct Shaped_Glyph {
    std::uint32_t glyph;
    std::uint32_t cluster; // index of its first character
    Position offset;       // from where it would stand, in multiples of the font's size
    double advance;
};

// A part of a text in one direction and one script.
struct Text_Run {
    std::span<const char32_t> text; // all of it
    std::size_t first, count;
    std::uint32_t script; // HarfBuzz's number
    bool leftwards;
};

class Font_Face {
public:
    // Throws Usage_Error that names the file when it cannot be read or holds no font with outlines.
    Font_Face(const std::string& file, int index, Load_Limits& limits);
    Font_Face(const Font_Face&) = delete;
    Font_Face& operator=(const Font_Face&) = delete;
    ~Font_Face();

    bool has(char32_t character) const;
    // HarfBuzz shapes where it is there and knows the font's format. Else letters stand from left to right with kerning in pairs.
    // Appends glyphs in the order in which they stand from left to right.
    void shape(const Text_Run& run, std::vector<Shaped_Glyph>& glyphs) const;
    // In multiples of the font's size; stays as long as the font. file: for messages.
    const Face& outline(std::uint32_t glyph, const std::string& file, Load_Limits& limits);

private:
    struct Library;

    void shape_simply(const Text_Run& run, std::vector<Shaped_Glyph>& glyphs) const;

    std::string bytes_;
    std::unique_ptr<Library> library_;
    double unit_; // of the font, in multiples of its size
    std::unordered_map<std::uint32_t, Face> outlines_;
};

} // namespace vorna::drawing::map
