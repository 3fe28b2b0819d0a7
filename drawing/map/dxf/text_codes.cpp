// The codes in texts of drawings.
#include "drawing/map/dxf/text_codes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "drawing/files/printable.h"
#include "drawing/files/text_encoding.h"
#include "drawing/map/dxf/colors.h"
#include "drawing/map/dxf/drawing.h"
#include "drawing/map/dxf/placement.h"

namespace vorna::drawing::map::dxf {
namespace {

constexpr std::size_t deepest_group = 64;

// A number at the start, which is removed; none for other texts.
std::optional<double> take_number(std::string_view& text) {
    double value = 0;
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || !std::isfinite(value)) {
        return std::nullopt;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

// Up to a semicolon, which is removed too.
std::string_view take_argument(std::string_view& text) {
    const std::size_t end = std::min(text.find(';'), text.size());
    const std::string_view argument = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return argument;
}

// Digits of a character's number in a base, exactly `count` of them.
bool take_character(std::string_view& text, std::size_t prefix, std::size_t count, int base, std::string& result) {
    unsigned number = 0;
    if (text.size() < prefix + count) {
        return false;
    }
    const char* const start = text.data() + prefix;
    const auto [end, error] = std::from_chars(start, start + count, number, base);
    if (error != std::errc{} || end != start + count) {
        return false;
    }
    const bool is_half = number >= 0xD800 && number < 0xE000; // of a pair: two codes
    if (number >= ' ' && !is_half) {
        append_utf8(result, number);
    }
    text.remove_prefix(prefix + count);
    return true;
}

class Tokenizer {
public:
    explicit Tokenizer(const Letters& letters) : letters_(letters), first_(letters) {}

    std::vector<Token> line(std::string_view text) {
        while (!text.empty()) {
            if (!take_percent_code(text) && !take_character(text, text.starts_with("\\U+") ? 3 : text.size(), 4, 16, word_)) {
                word_ += text.front();
                text.remove_prefix(1);
            }
        }
        end_word();
        return std::move(tokens_);
    }

    std::vector<Token> paragraphs(std::string_view text) {
        while (!text.empty()) {
            const char c = text.front();
            if (take_percent_code(text)) {
                continue;
            }
            if (c == '\\' && text.size() > 1) {
                take_backslash_code(text);
                continue;
            }
            text.remove_prefix(1);
            if (c == '{') {
                end_word();
                if (groups_.size() < deepest_group) {
                    groups_.push_back(letters_);
                }
            } else if (c == '}') {
                end_word();
                if (!groups_.empty()) {
                    letters_ = groups_.back();
                    groups_.pop_back();
                }
            } else if (c == '^' && !text.empty()) {
                const char control = text.front();
                text.remove_prefix(1);
                control == 'I' ? end_word_with(Token::Kind::tab) : control == 'J' ? end_word_with(Token::Kind::line_end) : void();
                word_ += control == ' ' ? "^" : "";
            } else if (c == ' ') {
                end_word_with(Token::Kind::space);
            } else if (c == '\t') {
                end_word_with(Token::Kind::tab);
            } else if (static_cast<unsigned char>(c) >= ' ') {
                word_ += c;
            }
        }
        end_word();
        return std::move(tokens_);
    }

private:
    void add(Token::Kind kind, std::string text) {
        Token token{kind, std::move(text)};
        token.letters = letters_;
        token.paragraph = paragraph_;
        tokens_.push_back(std::move(token));
    }

    void end_word() {
        if (!word_.empty()) {
            add(Token::Kind::word, word_);
            word_.clear();
        }
    }

    void end_word_with(Token::Kind kind) {
        end_word();
        add(kind, "");
    }

    void toggle(bool& flag) {
        end_word();
        flag = !flag;
    }

    bool take_percent_code(std::string_view& text) {
        if (!text.starts_with("%%") || text.size() < 3) {
            return false;
        }
        switch (Name_Less::lowered(text[2])) {
        case 'c':
            word_ += "\u00D8";
            break;
        case 'd':
            word_ += "\u00B0";
            break;
        case 'p':
            word_ += "\u00B1";
            break;
        case '%':
            word_ += '%';
            break;
        case 'u':
            toggle(letters_.underlined);
            break;
        case 'o':
            toggle(letters_.overlined);
            break;
        case 'k':
            toggle(letters_.struck);
            break;
        default:
            return take_character(text, 2, 3, 10, word_);
        }
        text.remove_prefix(3);
        return true;
    }

    void take_backslash_code(std::string_view& text) {
        if (take_character(text, text.starts_with("\\U+") ? 3 : text.size(), 4, 16, word_)) {
            return;
        }
        const char code = text[1];
        text.remove_prefix(2);
        switch (code) {
        case 'P':
        case 'X':
        case 'N':
            end_word_with(Token::Kind::line_end);
            break;
        case '~':
            word_ += "\u00A0";
            break;
        case 'L':
        case 'l':
            end_word();
            letters_.underlined = code == 'L';
            break;
        case 'O':
        case 'o':
            end_word();
            letters_.overlined = code == 'O';
            break;
        case 'K':
        case 'k':
            end_word();
            letters_.struck = code == 'K';
            break;
        case 'S':
            add_fraction(text);
            break;
        case 'A':
        case 'C':
        case 'c':
        case 'F':
        case 'f':
        case 'H':
        case 'Q':
        case 'T':
        case 'W':
        case 'p':
            end_word();
            set(code, take_argument(text));
            break;
        default: // a character that means itself
            word_ += code;
        }
    }

    void set(char code, std::string_view argument) {
        if (code == 'p') {
            set_paragraph(argument);
            return;
        }
        const std::optional<double> value = take_number(argument);
        const bool is_factor = argument.starts_with('x');
        if (!value) {
            return;
        }
        if (code == 'H' && *value > 0) {
            letters_.height = is_factor ? letters_.height * *value : *value;
        } else if (code == 'W' && *value > 0) {
            letters_.width = is_factor ? letters_.width * *value : *value;
        } else if (code == 'Q' && std::abs(*value) < 85) {
            letters_.oblique = *value * degree;
        } else if (code == 'C') {
            const auto number = static_cast<std::int64_t>(std::clamp(*value, 0.0, 256.0));
            letters_.color = number == by_block || number == by_layer ? first_.color
                                                                      : std::optional<Color>(std::in_place, table_color(number));
        } else if (code == 'c') { // 0xBBGGRR
            const auto number = static_cast<std::int64_t>(std::clamp(*value, 0.0, 16777215.0));
            letters_.color = Color(true_color((number & 0xFF) << 16 | (number & 0xFF00) | number >> 16));
        }
    }

    // Numbers after i and l are indents in heights of letters, a letter after q is the alignment.
    void set_paragraph(std::string_view argument) {
        while (!argument.empty()) {
            const char key = argument.front();
            argument.remove_prefix(1);
            if (key == 'q' && !argument.empty()) {
                const char side = argument.front();
                paragraph_.alignment = side == 'c'   ? std::optional(Alignment::center)
                                       : side == 'r' ? std::optional(Alignment::right)
                                       : side == 'l' ? std::optional(Alignment::left)
                                                     : std::nullopt;
                argument.remove_prefix(1);
            } else if (key == 't') {
                return; // places of tabs
            } else if (key == 'i' || key == 'l') {
                const std::optional<double> value = take_number(argument);
                (key == 'i' ? paragraph_.first_indent : paragraph_.left_indent) = value.value_or(0) * first_.height;
            }
        }
    }

    void add_fraction(std::string_view& text) {
        end_word();
        std::string parts[2];
        bool below = false, has_bar = false;
        char c = 0;
        for (std::string_view rest = take_argument(text); !rest.empty();) {
            if (take_percent_code(rest)) {
                parts[below] += std::exchange(word_, {});
                continue;
            }
            c = rest.front();
            rest.remove_prefix(1);
            if (c == '\\' && !rest.empty()) {
                parts[below] += rest.front();
                rest.remove_prefix(1);
            } else if (!below && (c == '^' || c == '/' || c == '#')) {
                below = true;
                has_bar = c != '^';
            } else {
                parts[below] += c;
            }
        }
        add(Token::Kind::fraction, parts[0]);
        tokens_.back().below = parts[1];
        tokens_.back().has_bar = has_bar;
    }

    Letters letters_;
    const Letters first_;
    Paragraph paragraph_;
    std::vector<Letters> groups_;
    std::string word_;
    std::vector<Token> tokens_;
};

} // namespace

std::string utf8_of(std::string_view bytes) {
    // What Windows-1252 has instead of the control characters from U+0080.
    static constexpr char16_t specials[] =
        u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D\u008F"
        u"\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D\u017E\u0178";
    if (is_utf8(bytes)) {
        return std::string(bytes);
    }
    std::string text;
    for (const char byte : bytes) {
        const auto c = static_cast<unsigned char>(byte);
        append_utf8(text, c >= 0x80 && c < 0xA0 ? specials[c - 0x80] : c);
    }
    return text;
}

std::vector<Token> tokens_of_line(std::string_view text, const Letters& letters) {
    return Tokenizer(letters).line(utf8_of(text));
}

std::vector<Token> tokens_of_paragraphs(std::string_view text, const Letters& letters) {
    return Tokenizer(letters).paragraphs(utf8_of(text));
}

} // namespace vorna::drawing::map::dxf
