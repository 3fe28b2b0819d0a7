// Texts made safe for documents and shells.
#pragma once

#include <string>
#include <string_view>

namespace vorna::drawing::comparison {

// Text for elements and quoted attributes of XML and HTML. Characters that XML does not have, and bytes that are not UTF-8,
// become U+FFFD.
std::string markup_escaped(std::string_view text);

// Base64 (RFC 4648) with its padding, for the URLs of pages.
std::string base64(std::string_view bytes);

// The text as one word of a POSIX shell. Any bytes but 0 may be in it.
std::string shell_quoted(std::string_view text);

// Whether a text can be shown and copied as it is: UTF-8 without control characters.
bool is_plain(const std::string& text);

} // namespace vorna::drawing::comparison
