// A mask that knows which of its cells have excluded pixels.
#include "renderer/mask/region_mask.h"

#include <algorithm>

namespace krb {

void Region_Mask::rasterize(VT_Int_Pair size, VT_Int_Pair origin, const VT_Contour_Set& contours) {
    constexpr std::int32_t side = 1 << Clipped_Cells::side_bits;
    static_assert(side == 32, "a row of a cell is four bytes of the mask");
    establish_configuration(size.x, size.y, origin.x, origin.y);
    // A window without pixels has no rows.
    const std::int32_t columns = rows() ? (size.x + side - 1) / side : 0;
    const std::int32_t cell_rows = rows() ? (size.y + side - 1) / side : 0;
    row_ = columns + 1;
    before_.assign(static_cast<std::size_t>(row_) * static_cast<std::size_t>(cell_rows + 1), 0);
    // Last, since it makes the mask one that is found.
    clear_and_rasterize_mask(contours);
    // Bits beyond the window do not count.
    const std::int32_t beyond = columns * side - size.x;
    for (std::int32_t y = 0; y < cell_rows; ++y) {
        const std::uint32_t* const below = before_.data() + std::int64_t{row_} * y;
        std::uint32_t* const sums = before_.data() + std::int64_t{row_} * (y + 1);
        for (std::int32_t r = y * side; r < std::min((y + 1) * side, size.y); ++r) {
            const std::uint8_t* bytes = row(r);
            for (std::int32_t x = 0; x < columns; ++x, bytes += 4) {
                const std::uint32_t bits = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
                                           std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
                sums[x + 1] |= x + 1 < columns ? bits : bits >> beyond;
            }
        }
        std::uint32_t in_row = 0;
        for (std::int32_t x = 1; x < row_; ++x) {
            in_row += sums[x] != 0 ? 1 : 0;
            sums[x] = below[x] + in_row;
        }
    }
}

} // namespace krb
