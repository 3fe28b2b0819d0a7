// What the page of a report is made of. Comments in the markup name what stands in their place.
#pragma once

#include <string_view>

namespace vorna::drawing::report {

extern const std::string_view page_markup, page_style, page_script;

} // namespace vorna::drawing::report
