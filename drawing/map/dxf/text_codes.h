// The codes in texts of drawings: letters, breaks and fractions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "drawing/map/dxf/form.h"

namespace vorna::drawing::map::dxf {

// How letters look. Sizes in the drawing's units.
struct Letters {
    double height = 1;  // of capitals
    double width = 1;   // factor
    double oblique = 0; // radians
    std::optional<Color> color{};
    bool underlined = false, overlined = false, struck = false;
};

enum class Alignment { left, center, right };

// A paragraph's lines. Indents in the drawing's units.
struct Paragraph {
    std::optional<Alignment> alignment{}; // none = that of the whole text
    double first_indent = 0, left_indent = 0;
};

struct Token {
    enum class Kind { word, space, tab, line_end, fraction } kind = Kind::word;
    std::string text{}, below{}; // UTF-8; below: of fractions
    bool has_bar = false;        // of fractions
    Letters letters{};
    Paragraph paragraph{};
};

// Bytes that are not UTF-8 are taken for Windows-1252, which older files use.
std::string utf8_of(std::string_view bytes);

// A text of one line: %% codes and \U+.
std::vector<Token> tokens_of_line(std::string_view text, const Letters& letters);

// A text of paragraphs with formatting codes.
std::vector<Token> tokens_of_paragraphs(std::string_view text, const Letters& letters);

} // namespace vorna::drawing::map::dxf
