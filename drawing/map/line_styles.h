// Names of line styles and symbols.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drawing/map/map_paint.h"

namespace vorna::drawing::map {

// solid, dashed and others; "none" is not among them.
const std::vector<std::string>& dash_names();

// By a name, or lengths of dashes and gaps between commas, each up to 10000; none for another text.
std::optional<Dashes> dashes_of(const std::string& text);

std::vector<std::string> symbol_names();
// One of vorna::marker_symbol.
std::optional<std::int32_t> symbol_of(const std::string& name);

// Finite numbers between commas; empty for another text.
std::vector<double> numbers_between_commas(const std::string& text);

} // namespace vorna::drawing::map
