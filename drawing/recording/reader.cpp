// Reading typed data out of a JSON document.
#include "drawing/recording/reader.h"

namespace vorna::drawing::recording {

std::string Reader::path() const {
    if (!outer_) {
        return {};
    }
    const std::string before = outer_->path();
    if (key_.data() == nullptr) {
        return before + '[' + std::to_string(index_) + ']';
    }
    return before + (before.empty() ? "" : ".") + std::string(key_);
}

void Reader::fail(const std::string& what) const {
    const std::string where = path();
    throw Recording_Error(where + (where.empty() ? "" : ": ") + what);
}

void Reader::expected(const std::string& what) const {
    fail("expected " + what);
}

void Reader::expected_in(const std::string& inner_path, const std::string& what) const {
    const std::string outer_path = path();
    throw Recording_Error(outer_path + (outer_path.empty() ? "" : ".") + inner_path + ": expected " + what);
}

void Reader::require(std::string_view name, bool is_required) const {
    if (is_required && !value_->contains(name)) {
        fail("the key '" + std::string(name) + "' is missing");
    }
}

void Reader::unknown_key(std::initializer_list<std::string_view> known) const {
    std::string names;
    for (const std::string_view name : known) {
        names.append(names.empty() ? "" : ", ").append(name);
    }
    fail("unknown key, expected one of: " + names);
}

bool boolean(const Reader& reader) {
    if (!reader.value().is_boolean()) {
        reader.expected("true or false");
    }
    return reader.value().get<bool>();
}

double number(const Reader& reader) {
    if (!reader.value().is_number()) {
        reader.expected("a number");
    }
    return reader.value().get<double>();
}

} // namespace vorna::drawing::recording
