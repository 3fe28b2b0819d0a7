// The filters of PNG rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "drawing/image/compression.h"

namespace vorna::drawing {

// Filters rows that lie one after the other in memory. bytes: rows without the filter's number; above: the row above the first,
// null for zeros. step: bytes of a pixel, 1 to 4. filtered: gets each row with its filter's number in front.
// Returns whether all rows became differences.
//
// Rows are filtered in groups, with one filter for a group, since a search finds in one row what it knows from others only where
// they have the same filter. The filter is chosen without compressing: it is the one that leaves fewest bits in a sample of the
// pixels. After "sub" and "up" a pixel has as many bits as its differences to the left and upper pixel need, and fewer when they
// are those of the pixel before; without a filter a pixel unlike the left one has a fixed number of bits, fewer when its colour
// was there shortly before. Shaded surfaces so get differences, and lines, flat colours and their smoothed borders remain
// colours.
bool filter_rows(const std::uint8_t* bytes, const std::uint8_t* above, std::size_t row_bytes, std::size_t rows, std::size_t step,
                 Compression compression, std::uint8_t* filtered);

} // namespace vorna::drawing
