// Texts of drawings as faces.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "drawing/files/load_limits.h"
#include "drawing/map/dxf/drawing.h"
#include "drawing/map/dxf/form.h"
#include "drawing/map/dxf/placement.h"
#include "drawing/map/dxf/text_codes.h"
#include "drawing/map/label_font.h"

namespace vorna::drawing::map::dxf {

class Text_Maker {
public:
    // font: file; empty = the default font, and texts are left out where it is missing.
    Text_Maker(const std::string& file, const Drawing& drawing, const std::string& font, Load_Limits& limits)
        : file_(file), values_(file), drawing_(drawing), font_file_(font), limits_(limits) {}

    // A text or attribute in one line, `text` being its value. False without a font.
    bool add_line(const Entity& entity, std::string_view text, Forms& forms);
    // A text of paragraphs. False without a font.
    bool add_paragraphs(const Entity& entity, Forms& forms);

    // A text of paragraphs beside a place.
    struct Box {
        Placement place;
        double width = 0;          // of lines, which break at spaces; 0 = as long as they are
        std::int64_t position = 1; // the place in the box: 1 to 9 in three rows from the top left
        double step = 1;           // factor of the distance between lines
    };
    bool add_paragraphs(std::string_view text, const Letters& letters, const Box& box, Forms& forms);
    // Letters in one line around a place. False without a font.
    bool add_centered(std::string_view text, const Placement& place, double height, Forms& forms);
    // Why texts are left out; empty = they are not.
    const std::string& refusal() const noexcept { return refusal_; }

private:
    struct Piece;
    struct Line;
    // Of a text whose capitals are 1 high.
    struct Outline {
        Face face;
        double width;
    };

    bool has_font();
    Text_Style style_of(const Entity& entity) const;
    const Outline& outline_of(const std::string& text);
    double width_of(const std::string& text, const Letters& letters);
    double width_of(const Token& token);
    void add_text(const std::string& text, const Letters& letters, const Placement& at, Forms& forms);
    void add_token(const Token& token, const Placement& at, Forms& forms);
    void add_bar(const Placement& at, double y, double width, const Letters& letters, Forms& forms);
    std::vector<Line> lines_of(const std::vector<Token>& tokens, double width);

    const std::string& file_;
    Values values_;
    const Drawing& drawing_;
    const std::string& font_file_;
    Load_Limits& limits_;
    std::unique_ptr<Label_Font> font_;
    double cap_height_ = 1; // of the font
    std::string refusal_;
    std::map<std::string, Outline, std::less<>> outlines_;
};

} // namespace vorna::drawing::map::dxf
