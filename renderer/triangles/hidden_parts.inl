// What of a triangle lies behind the farthest depths of blocks, see Depth_Blocks. Included after kernels/span.inl.
//
// Depths along edges and spans start half a unit above a whole number and move by steps that are truncated towards 0. So the
// depth of a pixel lies between the least and the greatest depth of the triangle's points, as long as these have 16 bits, and in
// a block whose farthest depth is nearer than the least one no pixel passes the test less or equal, nor the test less.
#pragma once

#include <cassert>
#include <cstdint>
#include <cstring>

#include "renderer/core/fixed_point.h"
#include "renderer/triangles/triangle_kernels.h"

namespace krb::KRB_KERNEL_SET {
namespace {

// ---- blocks

// The farthest depth from a column on, block_columns of them as far as the window has them, in rows first to last.
inline std::uint16_t farthest_depth_in(const Pixel_Target& target, std::int32_t column, std::int32_t row, std::int32_t last_row) {
    std::uint16_t farthest[block_columns] = {};
    if (column + block_columns <= target.width) {
        for (; row <= last_row; ++row) {
            std::uint16_t depths[block_columns];
            std::memcpy(depths, target.depth_rows[row] + std::int64_t{2} * column, sizeof depths);
            for (int i = 0; i < block_columns; ++i) {
                farthest[i] = farthest[i] < depths[i] ? depths[i] : farthest[i];
            }
        }
    } else {
        for (; row <= last_row; ++row) {
            for (int i = 0; i < target.width - column; ++i) {
                std::uint16_t depth;
                std::memcpy(&depth, target.depth_rows[row] + std::int64_t{2} * (column + i), sizeof depth);
                farthest[i] = farthest[i] < depth ? depth : farthest[i];
            }
        }
    }
    for (int half = block_columns / 2; half > 0; half /= 2) {
        for (int i = 0; i < half; ++i) {
            farthest[i] = farthest[i] < farthest[i + half] ? farthest[i + half] : farthest[i];
        }
    }
    return farthest[0];
}

inline std::int32_t depth_at(const Pixel_Target& target, std::int32_t column, std::int32_t row) {
    std::uint16_t depth;
    std::memcpy(&depth, target.depth_rows[row] + std::int64_t{2} * column, sizeof depth);
    return depth;
}

// Whether the block hides what is not nearer than that depth, by its pixels. Most that do not are found out by a corner.
KRB_NEVER_INLINE bool pixels_hide(const Pixel_Target& target, std::int32_t block, std::int32_t block_row, std::int32_t nearest) {
    const std::int32_t column = block << block_column_bits;
    const std::int32_t last_column = (column + block_columns < target.width ? column + block_columns : target.width) - 1;
    Block_Looks& looks = *target.block_looks;
    const std::int32_t first = block_row << block_row_bits;
    const std::int32_t row = first < looks.first_row ? looks.first_row : first;
    const std::int32_t last_row = (first + block_rows < looks.end_row ? first + block_rows : looks.end_row) - 1;
    if (depth_at(target, column, row) >= nearest || depth_at(target, last_column, last_row) >= nearest ||
        depth_at(target, last_column, row) >= nearest || depth_at(target, column, last_row) >= nearest) {
        return false;
    }
    ++looks.blocks_read;
    const std::uint16_t farthest = farthest_depth_in(target, column, row, last_row);
    target.block_depths[std::int64_t{block_row} * target.blocks_in_row + block] = farthest;
    return farthest < nearest;
}

inline bool block_hides(const Pixel_Target& target, std::int32_t block, std::int32_t block_row, std::int32_t nearest) {
    return target.block_depths[std::int64_t{block_row} * target.blocks_in_row + block] < nearest ||
           pixels_hide(target, block, block_row, nearest);
}

// ---- triangles

// The pixels that triangles of a strip may cover, and the nearest depth of their points.
struct Covered {
    std::int32_t first_column, end_column, first_row, end_row;
    std::int32_t nearest;
    bool bounds_depths; // whether no pixel is nearer

    KRB_ALWAYS_INLINE Covered(const Triangle_Target& target, const VT_DCI_Point* points, std::int32_t count) {
        std::int32_t least_x = INT32_MAX, most_x = INT32_MIN, least_y = INT32_MAX, most_y = INT32_MIN;
        nearest = INT32_MAX;
        std::uint32_t depth_bits = 0;
        for (std::int32_t i = 0; i < count; ++i) {
            const std::int32_t x = wrapping_subtract(points[i].x, target.origin_x);
            const std::int32_t y = wrapping_subtract(points[i].y, target.origin_y);
            least_x = x < least_x ? x : least_x;
            most_x = x > most_x ? x : most_x;
            least_y = y < least_y ? y : least_y;
            most_y = y > most_y ? y : most_y;
            nearest = points[i].z < nearest ? points[i].z : nearest;
            depth_bits |= static_cast<std::uint32_t>(points[i].z);
        }
        bounds_depths = depth_bits <= farthest_depth;
        first_column = wrapping_subtract(least_x, target.column_bias);
        end_column = wrapping_subtract(most_x, target.column_bias);
        first_row = least_y;
        end_row = most_y;
        if (target.scissored) {
            first_column = first_column < target.first_column ? target.first_column : first_column;
            end_column = end_column > target.end_column ? target.end_column : end_column;
            first_row = first_row < target.first_row ? target.first_row : first_row;
            end_row = end_row > target.end_row ? target.end_row : end_row;
        }
    }
    bool is_empty() const { return first_column >= end_column || first_row >= end_row; }
    std::int32_t first_block() const { return first_column >> block_column_bits; }
    std::int32_t end_block() const { return ((end_column - 1) >> block_column_bits) + 1; }
    std::int32_t first_block_row() const { return first_row >> block_row_bits; }
    std::int32_t end_block_row() const { return ((end_row - 1) >> block_row_bits) + 1; }
};

// The columns of a row, or of a row of blocks, in which a triangle may be visible, half-open.
struct Visible_Columns {
    std::int32_t first, end;
};

// Rows of blocks of the tallest triangle that is looked at.
inline constexpr std::int32_t most_block_rows = 256;

struct Visible_Part {
    std::int32_t first_block_row;
    Visible_Columns columns[most_block_rows]; // of the rows of blocks from that one on
};

enum class Visibility { hidden, in_part, whole };

// Notes whether looking at blocks was worth it. After looks that were not, more and more chances are passed up.
inline void note_look(const Pixel_Target& target, bool is_worth_it) {
    constexpr std::int32_t longest_pause = 64;
    Block_Looks& looks = *target.block_looks;
    looks.pause_after_next = is_worth_it ? looks.pause_after_next / 4 : 2 * looks.pause_after_next + 1;
    looks.pause_after_next = looks.pause_after_next < longest_pause ? looks.pause_after_next : longest_pause;
    looks.pause = is_worth_it ? 0 : looks.pause_after_next;
}

KRB_ALWAYS_INLINE bool takes_chance(const Pixel_Target& target) {
    Block_Looks& looks = *target.block_looks;
    if (looks.pause > 0) {
        --looks.pause;
        return false;
    }
    return true;
}

KRB_NEVER_INLINE Visibility visibility_by_blocks(const Triangle_Target& target, const VT_DCI_Point* points, Visible_Part& part) {
    const Covered covered(target, points, 3);
    if (covered.is_empty() || !covered.bounds_depths) {
        return Visibility::whole;
    }
    const std::int32_t rows = covered.end_block_row() - covered.first_block_row();
    const std::int32_t columns = covered.end_block() - covered.first_block();
    if (rows > most_block_rows) {
        return Visibility::whole;
    }
    std::int32_t visible_blocks = 0;
    target.block_looks->blocks_read = 0;
    part.first_block_row = covered.first_block_row();
    for (std::int32_t i = 0; i < rows; ++i) {
        const std::int32_t row = covered.first_block_row() + i;
        std::int32_t first = covered.first_block();
        std::int32_t end = covered.end_block();
        while (first < end && block_hides(target, first, row, covered.nearest)) {
            ++first;
        }
        while (first < end - 1 && block_hides(target, end - 1, row, covered.nearest)) {
            --end;
        }
        visible_blocks += end - first;
        part.columns[i] = {first << block_column_bits, end << block_column_bits};
    }
    const std::int32_t blocks = rows * columns;
    // A block that is read counts as half a hidden one.
    note_look(target, 2 * (blocks - visible_blocks) > target.block_looks->blocks_read + blocks / 2);
    if (visible_blocks == 0) {
        return Visibility::hidden;
    }
    return 4 * visible_blocks <= 3 * blocks ? Visibility::in_part : Visibility::whole;
}

// Blocks are looked at only where a few pixels of the triangle are hidden: for most triangles nothing else would come of it.
// These pixels are often not in the cache, so that after a triangle that is visible there the next two are drawn without looking.
inline Visibility visibility_of(const Triangle_Target& target, const VT_DCI_Point* points, Visible_Part& part) {
    constexpr std::int32_t least_rows = block_rows, tall = 2 * block_rows, pause_after_visible_pixels = 2;
    if (!takes_chance(target)) {
        return Visibility::whole;
    }
    if (!target.scissored) {
        const auto least = [](std::int32_t a, std::int32_t b) { return a < b ? a : b; };
        const auto most = [](std::int32_t a, std::int32_t b) { return a > b ? a : b; };
        const auto of_three = [&](std::int32_t VT_DCI_Point::*axis, auto choice) {
            return choice(choice(points[0].*axis, points[1].*axis), points[2].*axis);
        };
        const std::int32_t rows = of_three(&VT_DCI_Point::y, most) - of_three(&VT_DCI_Point::y, least);
        if (rows < least_rows || of_three(&VT_DCI_Point::x, most) == of_three(&VT_DCI_Point::x, least)) {
            return Visibility::whole;
        }
        const std::int32_t nearest = of_three(&VT_DCI_Point::z, least);
        // Halfway between a point and the middle of the other two: inside, since the last column and row are left out.
        const auto hides_near = [&](int k) {
            const auto between = [&](std::int32_t VT_DCI_Point::*axis, std::int32_t origin) {
                return ((points[0].*axis - origin) + (points[1].*axis - origin) + (points[2].*axis - origin) +
                        (points[k].*axis - origin)) >>
                       2;
            };
            return depth_at(target, between(&VT_DCI_Point::x, target.origin_x), between(&VT_DCI_Point::y, target.origin_y)) <
                   nearest;
        };
        if (!hides_near(1) && (rows < tall || (!hides_near(0) && !hides_near(2)))) {
            target.block_looks->pause = pause_after_visible_pixels;
            return Visibility::whole;
        }
    }
    return visibility_by_blocks(target, points, part);
}

// Which columns of the rows of the triangle that is being filled may be drawn.
struct Span_Limits {
    bool exist;

    explicit Span_Limits(const Triangle_Target& target) : exist(target.scissored) {}

    // For a target with blocks; false when the triangle is hidden.
    KRB_ALWAYS_INLINE bool find(const Triangle_Target& target, const VT_DCI_Point* points) {
        const Visibility visibility = visibility_of(target, points, visible_);
        is_in_part_ = visibility == Visibility::in_part;
        exist = target.scissored || is_in_part_;
        return visibility != Visibility::hidden;
    }

    Visible_Columns in_row(const Triangle_Target& target, std::int32_t row) const {
        Visible_Columns limits{0, target.width};
        if (target.scissored) {
            limits = {target.first_column, target.end_column};
        }
        if (is_in_part_) {
            const Visible_Columns& part = visible_.columns[(row >> block_row_bits) - visible_.first_block_row];
            limits = {limits.first < part.first ? part.first : limits.first, limits.end < part.end ? limits.end : part.end};
        }
        return limits;
    }

private:
    bool is_in_part_ = false;
    Visible_Part visible_;
};

// ---- batches

// Notes that a batch was found visible by one pixel.
inline void note_visible_pixel(const Pixel_Target& target) {
    constexpr std::int32_t longest_pause = 7;
    Block_Looks& looks = *target.block_looks;
    if (looks.pause_after_next < longest_pause) {
        looks.pause_after_next = 2 * looks.pause_after_next + 1;
    }
    looks.pause = looks.pause_after_next;
}

KRB_NEVER_INLINE bool are_hidden_by_blocks(const Triangle_Target& target, const VT_DCI_Point* points, std::int32_t count) {
    const Covered covered(target, points, count);
    bool hides = !covered.is_empty() && covered.bounds_depths;
    for (std::int32_t row = covered.first_block_row(); hides && row < covered.end_block_row(); ++row) {
        for (std::int32_t block = covered.first_block(); hides && block < covered.end_block(); ++block) {
            hides = block_hides(target, block, row, covered.nearest);
        }
    }
    // Triangles that are large for a batch are looked at one by one when they are drawn.
    constexpr std::int32_t most_blocks = 64;
    const std::int64_t blocks =
        std::int64_t{covered.end_block() - covered.first_block()} * (covered.end_block_row() - covered.first_block_row());
    if (hides || blocks <= most_blocks) {
        note_look(target, hides);
    }
    return hides;
}

// Whether the triangles of so many points, which lie in the window, are all hidden. Blocks are looked at only where a point lies
// well behind what is drawn: small triangles of one surface lie a little behind their neighbours half of the time. After a batch
// that is visible there, fewer and fewer are looked at, since reading that pixel takes up to a tenth of the time of a batch.
KRB_NEVER_INLINE inline bool are_hidden(const Triangle_Target& target, const VT_DCI_Point* points, std::int32_t count) {
    constexpr std::int32_t least_distance = 256;
    const std::int32_t column = points[1].x - target.origin_x;
    const std::int32_t row = points[1].y - target.origin_y;
    if (column >= target.width || row >= target.end_row || depth_at(target, column, row) + least_distance >= points[1].z) {
        note_visible_pixel(target);
        return false;
    }
    return are_hidden_by_blocks(target, points, count);
}

} // namespace
} // namespace krb::KRB_KERNEL_SET
