// Tokens of a JSON text, read without a document.
#include "drawing/map/json_scanner.h"

#include <nlohmann/json.hpp>

#include "drawing/files/printable.h"

namespace vorna::drawing::map {
namespace {

constexpr int deepest_value = 64;

} // namespace

bool Json_Scanner::read_string(String& string) {
    if (!skip('"')) {
        return false;
    }
    const char* const start = next_;
    bool is_ascii = true;
    string.has_escape = false;
    for (; next_ != end_ && *next_ != '"'; ++next_) {
        const auto c = static_cast<unsigned char>(*next_);
        if (c < 0x20) {
            return false;
        }
        is_ascii = is_ascii && c < 0x80;
        if (c == '\\') {
            string.has_escape = true;
            if (++next_ == end_) {
                return false;
            }
        }
    }
    string.text = {start, static_cast<std::size_t>(next_ - start)};
    if (!skip('"')) {
        return false;
    }
    return string.has_escape ? nlohmann::json::accept(string.token()) : is_ascii || is_utf8(string.text);
}

bool Json_Scanner::skip_word(std::string_view word) noexcept {
    const bool is_there = std::string_view(next_, static_cast<std::size_t>(end_ - next_)).starts_with(word);
    next_ += is_there ? word.size() : 0;
    return is_there;
}

bool Json_Scanner::skip_value(int depth) {
    if (at_end() || depth > deepest_value) {
        return false;
    }
    String string;
    double number = 0;
    switch (*next_) {
    case '"':
        return read_string(string);
    case '{':
        return read_object([&](const String&) { return skip_value(depth + 1); });
    case '[':
        return read_array([&] { return skip_value(depth + 1); });
    case 't':
        return skip_word("true");
    case 'f':
        return skip_word("false");
    case 'n':
        return skip_word("null");
    default:
        return read_number(number);
    }
}

} // namespace vorna::drawing::map
