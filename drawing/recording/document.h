// JSON documents from untrusted sources.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "drawing/files/usage_error.h"

namespace vorna::drawing::recording {

// What is wrong with a picture: the path of the key, and what was expected. The name of the file is not part of it.
class Picture_Error : public Usage_Error {
public:
    using Usage_Error::Usage_Error;
};

// Bytes that a document may have, unpacked.
inline constexpr std::size_t most_bytes = std::size_t{1} << 28;

// Throws Picture_Error for text that is not JSON, for keys that an object gives twice, for numbers beyond all types, and for
// values nested deeper than a picture ever is.
nlohmann::json parse_document(std::string_view text);

} // namespace vorna::drawing::recording
