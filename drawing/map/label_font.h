// Texts as faces, made from a font's outlines.
#pragma once

#include <memory>
#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

class Label_Font {
public:
    virtual ~Label_Font() = default;

    // Outlines in pixels, fitted to the pixel grid; the origin is the start of the base line.
    struct Text {
        Face outline;
        double width;
    };
    // text: UTF-8. Skips invalid UTF-8, and letters beyond the width. Throws Load_Error, which names the file.
    virtual Text text_of(const std::string& text, double most_width, const std::string& file, Load_Limits& limits) const = 0;
    // The height of capitals.
    virtual double height() const = 0;
};

// size: of the font, in pixels. file: empty = the default font. Throws Usage_Error when the font cannot be opened.
std::unique_ptr<Label_Font> load_label_font(const std::string& file, int size);

} // namespace vorna::drawing::map
