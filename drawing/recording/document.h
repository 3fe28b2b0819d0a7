// JSON documents from untrusted sources.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "drawing/files/usage_error.h"

namespace vorna::drawing::recording {

// An error in a recording: the path of the key, and what was expected there. Does not name the file.
class Recording_Error : public Usage_Error {
public:
    using Usage_Error::Usage_Error;
};

// Largest size of an unpacked document in bytes.
inline constexpr std::size_t most_bytes = std::size_t{1} << 28;

// Throws Recording_Error for text that is not JSON, for keys that an object gives twice, for numbers beyond all types, and for
// values nested deeper than a recording ever is.
nlohmann::json parse_document(std::string_view text);

} // namespace vorna::drawing::recording
