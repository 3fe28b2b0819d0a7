// Reads JSON documents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "drawing/files/interruption.h"
#include "drawing/files/json_release.h"

namespace vorna::drawing {

// Builds a document from the library's events, with looks for interruptions. Whatever memory lacks, the document so far owns
// everything but empty lists and objects; the library's own builder would copy and destroy whole members, and end the process.
template <class Json> class Json_Builder {
public:
    Json_Builder(Json& document, bool throws) : document_(document), throws_(throws) {}

    bool null() { return add(Json()) != nullptr; }
    bool boolean(bool value) { return add(Json(value)) != nullptr; }
    bool number_integer(typename Json::number_integer_t value) { return add(Json(value)) != nullptr; }
    bool number_unsigned(typename Json::number_unsigned_t value) { return add(Json(value)) != nullptr; }
    bool number_float(typename Json::number_float_t value, const std::string& /*text*/) { return add(Json(value)) != nullptr; }
    bool string(std::string& text) { return add(Json(std::move(text))) != nullptr; }
    bool binary(typename Json::binary_t& bytes) { return add(Json(std::move(bytes))) != nullptr; }

    bool start_object(std::size_t /*size*/) { return start(Json::value_t::object); }
    bool start_array(std::size_t /*size*/) { return start(Json::value_t::array); }
    bool end_object() { return end(); }
    bool end_array() { return end(); }

    bool key(std::string& name) {
        auto& members = open_.back()->template get_ref<typename Json::object_t&>();
        if constexpr (requires { members.capacity(); }) {
            make_room(members);
        }
        member_ = &members[name];
        return true;
    }

    template <class Error> bool parse_error(std::size_t /*place*/, const std::string& /*token*/, const Error& error) {
        if (throws_) {
            throw error;
        }
        return false;
    }

private:
    Json* add(Json&& value) {
        constexpr unsigned values = 4096;
        if (++count_ % values == 0) {
            Interruption::check();
        }
        if (open_.empty()) {
            document_ = std::move(value);
            return &document_;
        }
        if (open_.back()->is_array()) {
            auto& elements = open_.back()->template get_ref<typename Json::array_t&>();
            elements.push_back(std::move(value));
            return &elements.back();
        }
        *member_ = std::move(value);
        return member_;
    }

    bool start(typename Json::value_t type) {
        Json* const added = add(Json(type));
        open_.push_back(added);
        return true;
    }

    bool end() {
        open_.pop_back();
        return true;
    }

    // A list of members copies them where it grows, since their names are constant. Here only names are copied.
    template <class Members> static void make_room(Members& members) {
        if (members.size() < members.capacity()) {
            return;
        }
        Members larger;
        larger.reserve(2 * members.size() + 4);
        for (const auto& member : members) {
            larger.emplace_back(member.first, Json());
        }
        for (std::size_t i = 0; i < members.size(); ++i) {
            std::swap(larger.begin()[static_cast<std::ptrdiff_t>(i)].second,
                      members.begin()[static_cast<std::ptrdiff_t>(i)].second);
        }
        members.swap(larger);
    }

    Json& document_;
    bool throws_;
    unsigned count_ = 0;
    std::vector<Json*> open_; // lists and objects, outermost first
    Json* member_ = nullptr;  // of the innermost object
};

// Reads the text into the document, which owns what there is of it when memory runs out, see json_release.h. Throws
// Json::exception, or with `throws` off returns false, for text that is not JSON; Interrupted.
template <class Json> bool read_json(std::string_view text, Released_Json<Json>& document, bool throws = true) {
    Json_Builder<Json> builder(*document, throws);
    return Json::sax_parse(text.begin(), text.end(), &builder);
}

// Whether it is this text. The library's comparison makes a value of the text first, and ends the process when memory lacks.
template <class Json> bool is_text(const Json& value, std::string_view text) noexcept {
    const auto* const own = value.template get_ptr<const typename Json::string_t*>();
    return own && *own == text;
}

} // namespace vorna::drawing
