// A font's letters as faces.
#pragma once

#include <memory>
#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/map/shapes.h"

namespace vorna::drawing::map {

class Label_Font {
public:
    virtual ~Label_Font() = default;

    // Outlines in pixels, fitted to the pixel grid, from the start of the base line.
    struct Text {
        Face outline;
        double width;
    };
    // text: UTF-8; what is none is left out, and so is what lies beyond the width. Throws Load_Error, which names the file.
    virtual Text text_of(const std::string& text, double most_width, const std::string& file, Load_Limits& limits) const = 0;
    // Of capitals.
    virtual double height() const = 0;
};

// size: of the font in pixels. file: empty = the default font. Throws Usage_Error when there is none.
std::unique_ptr<Label_Font> load_label_font(const std::string& file, int size);

} // namespace vorna::drawing::map
