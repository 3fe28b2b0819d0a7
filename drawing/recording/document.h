// Documents, JSON or CBOR, from untrusted sources.
#pragma once

#include <cstddef>
#include <functional>
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

// Whether the bytes begin as a CBOR document does that is an object.
bool is_cbor(std::string_view bytes) noexcept;

// The document, CBOR where is_cbor says so, else JSON. take_memory: is told of the bytes that values of a CBOR document take, as
// it grows; it throws where they are too many. Throws Recording_Error for bytes that are neither, for strings in chunks, for keys
// that an object gives twice, for numbers beyond all types, and for values nested deeper than a recording ever is.
nlohmann::json parse_document(std::string_view bytes, const std::function<void(std::size_t)>& take_memory = {});

} // namespace vorna::drawing::recording
