// Limits of reading, and memory that is handed over.
#pragma once

#include <cstddef>
#include <optional>

#include "drawing/drawing.h"
#include "drawing/files/load_limits.h"
#include "vorna/c_types.h"

namespace vorna::c {

// Null stands for the defaults.
drawing::Reading reading_of(const vorna_reading* given);
drawing::Load_Limits limits_of(const vorna_reading* given);

// Of X, Y, Z and OFFSET; null = none.
std::optional<drawing::model::Section> section_of(const double* plane);

// A copy of the bytes with a zero byte behind them, for vorna_free. Throws std::bad_alloc.
char* copied(const char* bytes, std::size_t size);

} // namespace vorna::c
