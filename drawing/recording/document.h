// JSON documents from untrusted sources.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "drawing/files/usage_error.h"

namespace vorna::drawing::recording {

// What is wrong with a recording: the path of the key, and what was expected. The name of the file is not part of it.
class Recording_Error : public Usage_Error {
public:
    using Usage_Error::Usage_Error;
};

// Bytes that a document may have, unpacked.
inline constexpr std::size_t most_bytes = std::size_t{1} << 28;

// Throws Recording_Error for text that is not JSON, for keys that an object gives twice, for numbers beyond all types, and for
// values nested deeper than a recording ever is.
nlohmann::json parse_document(std::string_view text);

} // namespace vorna::drawing::recording
