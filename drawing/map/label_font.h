// Texts as letters: outlines of a font, shaped and in the order in which they stand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

// Lengths are in pixels, outlines in multiples of the font's size, not fitted to pixels; y grows upwards.
struct Letter {
    const Face* outline; // belongs to the font
    Position at;         // its origin; the text's base line begins at (0, 0)
    // The part of the base line that belongs to the letter, or to it and those it cannot be parted from.
    double start, end;
};

struct Text {
    std::vector<Letter> letters;
    double size = 0, width = 0;
};

class Label_Font {
public:
    virtual ~Label_Font() = default;

    // text: UTF-8. Skips invalid UTF-8 and what no font shows, and ends after longest_text characters or, roughly, beyond the
    // width. Throws Load_Error, which names the file.
    virtual Text text_of(const std::string& text, double size, double most_width, const std::string& file,
                         Load_Limits& limits) = 0;
    // The height of capitals, in multiples of the size.
    virtual double height() const = 0;
    // Finds fonts for the characters of a text that will be asked for, so that warnings are known before.
    virtual void note(const std::string& text, Load_Limits& limits) = 0;
    // What the noted texts lack, a line each: letters that no font shows, libraries that are missing.
    virtual std::vector<std::string> warnings() const = 0;

    static constexpr std::size_t longest_text = 4096;
};

// name: a file, or a family that fontconfig knows; empty = DejaVu Sans. Throws Usage_Error when there is no such font.
std::unique_ptr<Label_Font> load_label_font(const std::string& name, Load_Limits& limits);

// The text as one face, its base line beginning at the given place.
Face face_of(const Text& text, Position at);

} // namespace vorna::drawing::map
