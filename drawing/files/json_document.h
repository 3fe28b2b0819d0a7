// Reads JSON documents.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string_view>

#include "drawing/files/interruption.h"
#include "drawing/files/json_release.h"

namespace vorna::drawing {

// The library's builder of documents, with looks for interruptions.
template <class Json> class Json_Builder : public nlohmann::detail::json_sax_dom_parser<Json> {
    using Base = nlohmann::detail::json_sax_dom_parser<Json>;

public:
    using Base::Base;

    bool start_object(std::size_t size) {
        look();
        return Base::start_object(size);
    }
    bool start_array(std::size_t size) {
        look();
        return Base::start_array(size);
    }
    bool number_float(typename Json::number_float_t value, const typename Json::string_t& text) {
        look();
        return Base::number_float(value, text);
    }

private:
    void look() {
        constexpr unsigned values = 4096;
        if (++count_ % values == 0) {
            Interruption::check();
        }
    }

    unsigned count_ = 0;
};

// Reads the text into the document, which owns what there is of it when memory runs out: the library's own function would
// destroy it and end the process, see json_release.h. Throws Json::exception, or with `throws` off returns false, for text that
// is not JSON; Interrupted.
template <class Json> bool read_json(std::string_view text, Released_Json<Json>& document, bool throws = true) {
    Json_Builder<Json> builder(*document, throws);
    return Json::sax_parse(text.begin(), text.end(), &builder);
}

} // namespace vorna::drawing
