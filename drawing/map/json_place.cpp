// Where a value stands in the text of a JSON document.
#include "drawing/map/json_place.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vorna::drawing::map {
namespace {

class Json_Walker {
public:
    explicit Json_Walker(std::string_view text) : text_(text) {}

    std::size_t place() {
        skip_blanks();
        return at_;
    }

    // Moves to the value that the step leads to; the result is the place of its key or of itself. npos: it leads nowhere.
    std::size_t enter(const Json_Step& step) {
        const auto* key = std::get_if<std::string>(&step);
        skip_blanks();
        if (at_ == text_.size() || text_[at_] != (key ? '{' : '[')) {
            return text_.npos;
        }
        ++at_;
        for (std::size_t i = 0;; ++i) {
            skip_blanks();
            if (at_ >= text_.size() || text_[at_] == '}' || text_[at_] == ']') {
                return text_.npos;
            }
            const std::size_t start = at_;
            bool is_found = !key && i == std::get<std::size_t>(step);
            if (key) {
                skip_string();
                is_found = nlohmann::json::parse(text_.substr(start, at_ - start)) == *key;
                skip_blanks();
                ++at_; // the colon
                skip_blanks();
            }
            if (is_found) {
                return start;
            }
            skip_value();
            skip_blanks();
            at_ += at_ < text_.size() && text_[at_] == ',' ? 1U : 0U;
        }
    }

private:
    void skip_blanks() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }

    void skip_string() {
        for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
            at_ += text_[at_] == '\\' ? 1U : 0U;
        }
        at_ = std::min(at_ + 1, text_.size());
    }

    void skip_value() {
        std::size_t depth = 0;
        do {
            if (text_[at_] == '"') {
                skip_string();
                continue;
            }
            depth += text_[at_] == '{' || text_[at_] == '[' ? 1U : 0U;
            const bool closes = text_[at_] == '}' || text_[at_] == ']';
            if (closes && depth == 0) {
                return; // of the outer value, after a number or a word
            }
            depth -= closes ? 1U : 0U;
            ++at_;
        } while (at_ < text_.size() && (depth > 0 || text_[at_] != ','));
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

} // namespace

std::string line_and_column(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const auto line = std::ranges::count(before, '\n') + 1;
    const std::size_t start = before.rfind('\n') + 1; // 0 when there is none
    return "line " + std::to_string(line) + ", column " + std::to_string(before.size() - start + 1);
}

std::string json_place(std::string_view text, const std::vector<Json_Step>& path) {
    Json_Walker walker(text);
    std::size_t place = walker.place();
    for (const Json_Step& step : path) {
        const std::size_t next = walker.enter(step);
        if (next == text.npos) {
            break;
        }
        place = next;
    }
    return line_and_column(text, place);
}

} // namespace vorna::drawing::map
