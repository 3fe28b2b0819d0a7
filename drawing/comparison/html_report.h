// A comparison as a page for a browser.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "drawing/comparison/folder_comparison.h"

namespace vorna::drawing::comparison {

struct Html_Settings {
    std::optional<std::uint64_t> memory;                  // bytes that reading an image pair may take, as in Load_Limits
    std::uint64_t most_embedded = std::uint64_t{1} << 28; // bytes of image data, after which pairs are listed without images
};

// One file that needs no other and no network: the pairs that are not the same, with both images, their difference and the shell
// commands that accept the second one in place of the first. The files are read again, one pair at a time. write: takes the
// page's next bytes. Throws Usage_Error when an image of a pair cannot be read again.
void write_html(const Report& report, const Html_Settings& settings, const std::function<void(std::string_view)>& write);

} // namespace vorna::drawing::comparison
