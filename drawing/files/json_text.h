// Writes JSON documents, value by value.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vorna::drawing {

// A document of the library could not be destroyed without memory: its destructor asks for some, and ends the process when there
// is none. The text is that which the library's dump makes of the same document. Characters beyond ASCII are escaped, and invalid
// UTF-8 is replaced.
class Json_Text {
public:
    // indented: a line for each value, with a space for each level; else no spaces.
    explicit Json_Text(bool indented) : indented_(indented) {}

    std::string take() { return std::move(text_); }

    void start_object() { open('{'); }
    void end_object() { close('}'); }
    void start_list() { open('['); }
    void end_list() { close(']'); }
    // Of the next value, in an object.
    void name(std::string_view name) {
        separate();
        text_.append(literal(name)).append(indented_ ? ": " : ":");
        has_name_ = true;
    }

    // A number, a text, true, false or null.
    template <class Value> void value(const Value& value) {
        separate();
        text_ += literal(value);
    }
    template <class Value> void member(std::string_view key, const Value& of_key) {
        name(key);
        value(of_key);
    }
    template <class Value> void list(std::string_view key, std::initializer_list<Value> values) {
        name(key);
        start_list();
        for (const Value& element : values) {
            value(element);
        }
        end_list();
    }

private:
    template <class Value> static std::string literal(const Value& value) {
        using Json = nlohmann::json;
        return Json(value).dump(-1, ' ', true, Json::error_handler_t::replace);
    }

    void separate() {
        if (std::exchange(has_name_, false) || are_empty_.empty()) {
            return;
        }
        if (std::exchange(are_empty_.back(), char{0}) == 0) {
            text_ += ',';
        }
        begin_line();
    }
    void begin_line() {
        if (indented_) {
            text_.append("\n").append(are_empty_.size(), ' ');
        }
    }
    void open(char bracket) {
        separate();
        text_ += bracket;
        are_empty_.push_back(1);
    }
    void close(char bracket) {
        const bool was_empty = are_empty_.back() != 0;
        are_empty_.pop_back();
        if (!was_empty) {
            begin_line();
        }
        text_ += bracket;
    }

    const bool indented_;
    bool has_name_ = false; // and the value that belongs to it is missing
    std::string text_;
    std::vector<char> are_empty_; // whether they are,  open lists and objects, outermost first
};

} // namespace vorna::drawing
