// Texts of drawings as faces.
#include "drawing/map/dxf/texts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vorna::drawing::map::dxf {
namespace {

// In heights of capitals.
constexpr double line_step = 5.0 / 3, descent = 0.3, tab_width = 4, stroke = 0.06, fraction_size = 0.7;

Placement shifted(double x, double y) {
    return {{1, 0}, {0, 1}, {x, y}};
}

} // namespace

struct Text_Maker::Piece {
    const Token* token;
    double x, width;
};

struct Text_Maker::Line {
    std::vector<Piece> pieces;
    double width = 0, height = 0; // height: of the highest capitals
    Paragraph paragraph;
    double indent = 0;
};

bool Text_Maker::has_font() {
    if (!font_ && refusal_.empty()) {
        try {
            font_ = load_label_font(font_file_, limits_);
            cap_height_ = font_->height() > 0 ? font_->height() : 1;
        } catch (const Usage_Error& error) {
            if (!font_file_.empty()) {
                throw;
            }
            refusal_ = error.what();
        }
    }
    return font_ != nullptr;
}

Text_Style Text_Maker::style_of(const Entity& entity) const {
    const std::string_view name = values_.text(entity, 7);
    const Text_Style* style = find(drawing_.text_styles, name.empty() ? "Standard" : name);
    return style ? *style : Text_Style{};
}

const Text_Maker::Outline& Text_Maker::outline_of(const std::string& text) {
    const auto known = outlines_.find(text);
    if (known != outlines_.end()) {
        return known->second;
    }
    const map::Text made = font_->text_of(text, 1 / cap_height_, INFINITY, file_, limits_);
    Outline outline{face_of(made, {0, 0}), made.width};
    std::size_t positions = 0;
    std::ranges::for_each(outline.face, [&](const Path& ring) { positions += ring.size(); });
    limits_.take_memory(file_, sizeof(Outline) + text.size() + 64 + positions * sizeof(Position));
    return outlines_.emplace(text, std::move(outline)).first->second;
}

double Text_Maker::width_of(const std::string& text, const Letters& letters) {
    return outline_of(text).width * letters.height * letters.width;
}

double Text_Maker::width_of(const Token& token) {
    const double letter = token.letters.height * token.letters.width;
    switch (token.kind) {
    case Token::Kind::word:
        return width_of(token.text, token.letters);
    case Token::Kind::fraction:
        return fraction_size * std::max(width_of(token.text, token.letters), width_of(token.below, token.letters));
    case Token::Kind::space:
        return width_of(" ", token.letters);
    case Token::Kind::tab:
        return tab_width * letter;
    default:
        return 0;
    }
}

void Text_Maker::add_text(const std::string& text, const Letters& letters, const Placement& at, Forms& forms) {
    const Face& outline = outline_of(text).face;
    if (outline.empty()) {
        return;
    }
    const double h = letters.height;
    const Placement placement = at * Placement{{h * letters.width, 0}, {h * std::tan(letters.oblique), h}, {}};
    std::size_t positions = 0;
    std::ranges::for_each(outline, [&](const Path& ring) { positions += ring.size(); });
    limits_.take_work(file_, positions);
    Load_Limits::Loan memory(limits_, file_, 2 * sizeof(Form) + positions * sizeof(Position));
    Form& form = forms.emplace_back();
    form.memory = std::move(memory);
    form.color = letters.color;
    Face& face = form.shape.faces.emplace_back(outline);
    for (Path& ring : face) {
        std::ranges::transform(ring, ring.begin(), placement);
    }
}

// A line, which is drawn however thin it is.
void Text_Maker::add_bar(const Placement& at, double y, double width, const Letters& letters, Forms& forms) {
    Load_Limits::Loan memory(limits_, file_, 2 * sizeof(Form));
    Form& form = forms.emplace_back();
    form.memory = std::move(memory);
    form.color = letters.color;
    form.is_solid_line = true;
    form.shape.lines.push_back({at({0, y}), at({width, y})});
    form.shape.pen.width = stroke * letters.height * at.scale();
}

// at: where its base line starts.
void Text_Maker::add_token(const Token& token, const Placement& at, Forms& forms) {
    const Letters& letters = token.letters;
    const double width = width_of(token), h = letters.height;
    if (token.kind == Token::Kind::word) {
        add_text(token.text, letters, at, forms);
    } else if (token.kind == Token::Kind::fraction) {
        Letters small = letters;
        small.height *= fraction_size;
        const double above = (width - width_of(token.text, small)) / 2, below = (width - width_of(token.below, small)) / 2;
        add_text(token.text, small, at * shifted(above, h * 0.62), forms);
        add_text(token.below, small, at * shifted(below, h * 0.38 - small.height), forms);
        if (token.has_bar) {
            add_bar(at, h / 2, width, letters, forms);
        }
    }
    for (const auto& [drawn, y] :
         {std::pair(letters.underlined, -0.2 * h), {letters.struck, 0.5 * h}, {letters.overlined, 1.2 * h}}) {
        if (drawn && width > 0) {
            add_bar(at, y, width, letters, forms);
        }
    }
}

bool Text_Maker::add_line(const Entity& entity, std::string_view text, Forms& forms) {
    enum : std::int64_t { left, center, right, aligned, middle, fit };
    if (!has_font()) {
        return false;
    }
    const Text_Style style = style_of(entity);
    Letters letters;
    letters.height = values_.number(entity, 40, style.height > 0 ? style.height : 1);
    letters.width = values_.number(entity, 41, style.width);
    letters.oblique = std::clamp(values_.number(entity, 51, style.oblique), -85.0, 85.0) * degree;
    const Load_Limits::Loan memory(limits_, file_, text.size() * sizeof(Token));
    std::vector<Token> tokens = tokens_of_line(text, letters);
    double width = 0;
    std::ranges::for_each(tokens, [&](const Token& token) { width += width_of(token); });
    const std::int64_t across = values_.integer(entity, 72, 0);
    const std::int64_t up = values_.integer(entity, entity.type == "TEXT" ? 73 : 74, 0);
    const Position first = values_.position(entity, 10), second = values_.position(entity, 11, first);
    double angle = values_.number(entity, 50, 0) * degree;
    Position start = (across == left && up == 0) || across == aligned || across == fit ? first : second;
    const double h = letters.height;
    double x = 0, y = up == 1 ? descent * h : up == 2 ? -h / 2 : up == 3 ? -h : 0;
    Placement sized;
    if (across == aligned || across == fit) {
        const double length = std::hypot(second.x - first.x, second.y - first.y);
        const double factor = width > 0 && length > 0 ? length / width : 1;
        angle = length > 0 ? std::atan2(second.y - first.y, second.x - first.x) : angle;
        sized = {{factor, 0}, {0, across == aligned ? factor : 1}, {}};
        y = 0;
    } else if (across == center || across == middle) {
        x = -width / 2;
        y = across == middle ? -h / 2 : y;
    } else if (across == right) {
        x = -width;
    }
    constexpr std::int64_t backward = 2, upside_down = 4;
    const Placement mirrored{{values_.has_flag(entity, 71, backward) ? -1.0 : 1.0, 0},
                             {0, values_.has_flag(entity, 71, upside_down) ? -1.0 : 1.0},
                             {}};
    const Placement base = Placement::turned(angle, start) * mirrored * sized;
    for (const Token& token : tokens) {
        add_token(token, base * shifted(x, y), forms);
        x += width_of(token);
    }
    return true;
}

bool Text_Maker::add_centered(std::string_view text, const Placement& place, double height, Forms& forms) {
    if (!has_font()) {
        return false;
    }
    Letters letters;
    letters.height = height;
    const std::vector<Token> tokens = tokens_of_paragraphs(text, letters);
    double width = 0;
    std::ranges::for_each(tokens, [&](const Token& token) { width += width_of(token); });
    double x = -width / 2;
    for (const Token& token : tokens) {
        add_token(token, place * shifted(x, -height / 2), forms);
        x += width_of(token);
    }
    return true;
}

// width: of lines, which break at spaces; 0 = as long as they are.
std::vector<Text_Maker::Line> Text_Maker::lines_of(const std::vector<Token>& tokens, double width) {
    std::vector<Line> lines(1);
    const auto start_line = [&](const Token& token, bool is_first) {
        Line line;
        line.paragraph = token.paragraph;
        line.indent = token.paragraph.left_indent + (is_first ? token.paragraph.first_indent : 0);
        line.height = token.letters.height;
        lines.push_back(std::move(line));
    };
    bool is_empty = true; // without a word
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        if (i == 0) {
            lines.clear();
            start_line(token, true);
        }
        if (token.kind == Token::Kind::line_end) {
            start_line(i + 1 < tokens.size() ? tokens[i + 1] : token, true);
            is_empty = true;
            continue;
        }
        const double own = width_of(token);
        const bool is_blank = token.kind == Token::Kind::space || token.kind == Token::Kind::tab;
        // Words without a blank between them stay together.
        double together = own;
        for (std::size_t next = i + 1; !is_blank && next < tokens.size() && next < i + 16; ++next) {
            const Token::Kind kind = tokens[next].kind;
            if (kind != Token::Kind::word && kind != Token::Kind::fraction) {
                break;
            }
            together += width_of(tokens[next]);
        }
        const bool after_blank = i > 0 && tokens[i - 1].kind == Token::Kind::space;
        if (width > 0 && !is_empty && after_blank && !is_blank &&
            lines.back().indent + lines.back().width + together > width * (1 + 1e-9)) {
            start_line(token, false);
            is_empty = true;
        }
        Line& line = lines.back();
        if (is_blank && is_empty && line.pieces.empty() && i > 0 && tokens[i - 1].kind != Token::Kind::line_end) {
            continue; // the blank at which the line before ends
        }
        line.pieces.push_back({&token, line.width, own});
        line.width += own;
        line.height = is_empty ? token.letters.height : std::max(line.height, token.letters.height);
        is_empty = is_empty && is_blank;
    }
    for (Line& line : lines) { // blanks at the end have no width
        while (!line.pieces.empty() && line.pieces.back().token->kind == Token::Kind::space) {
            line.width -= line.pieces.back().width;
            line.pieces.pop_back();
        }
    }
    return lines;
}

bool Text_Maker::add_paragraphs(const Entity& entity, Forms& forms) {
    const Text_Style style = style_of(entity);
    Letters letters;
    letters.height = values_.number(entity, 40, style.height > 0 ? style.height : 1);
    letters.width = style.width;
    letters.oblique = std::clamp(style.oblique, -85.0, 85.0) * degree;
    std::string text;
    for (const Group& group : entity.groups) {
        if (group.code == 1 || group.code == 3) {
            text += group.value;
        }
    }
    double angle = values_.number(entity, 50, 0) * degree;
    if (entity.find(11)) {
        const Position direction = values_.position(entity, 11, {1, 0});
        angle = std::atan2(direction.y, direction.x);
    }
    return add_paragraphs(text, letters,
                          {Placement::turned(angle, values_.position(entity, 10)), std::max(values_.number(entity, 41, 0), 0.0),
                           values_.integer(entity, 71, 1), values_.number(entity, 44, 1)},
                          forms);
}

bool Text_Maker::add_paragraphs(std::string_view text, const Letters& letters, const Box& box, Forms& forms) {
    if (!has_font()) {
        return false;
    }
    const Load_Limits::Loan memory(limits_, file_, text.size() * (sizeof(Token) + sizeof(Piece)));
    const std::vector<Token> tokens = tokens_of_paragraphs(text, letters);
    const std::vector<Line> lines = lines_of(tokens, box.width);
    const double step = line_step * box.step;
    double height = lines.front().height;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        height += step * lines[i].height;
    }
    const std::int64_t position = std::clamp<std::int64_t>(box.position, 1, 9) - 1;
    const auto side = static_cast<Alignment>(position % 3);
    const double top = position / 3 == 0 ? 0 : position / 3 == 1 ? height / 2 : height;
    const auto share = [](Alignment a) { return a == Alignment::left ? 0.0 : a == Alignment::center ? 0.5 : 1.0; };
    double y = top - lines.front().height;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const Line& line = lines[i];
        y -= i > 0 ? step * line.height : 0;
        const double own = share(line.paragraph.alignment.value_or(side));
        const double x = -box.width * share(side) + (box.width - line.width) * own + (own == 0 ? line.indent : 0);
        for (const Piece& piece : line.pieces) {
            add_token(*piece.token, box.place * shifted(x + piece.x, y), forms);
        }
    }
    return true;
}

} // namespace vorna::drawing::map::dxf
