// The pictures of a tile that the studio look is made of.
#include "drawing/image/studio_planes.h"

#include <algorithm>
#include <cstring>

namespace vorna::drawing {
namespace {

constexpr std::uint32_t number_bits = 0xFFFFFF;

// From the first word that is not 0 to the last one. Whole blocks of zeros are passed over by a loop that compilers vectorise.
Column_Range used_columns(const std::uint8_t* row, std::int32_t width) {
    constexpr std::int32_t block = 64;
    const auto is_used = [row](std::int32_t first, std::int32_t end) {
        std::uint32_t all = 0;
        for (std::int32_t i = first; i < end; ++i) {
            std::uint32_t word;
            std::memcpy(&word, row + std::ptrdiff_t{4} * i, 4);
            all |= word;
        }
        return all != 0;
    };
    Column_Range range{0, width};
    while (range.end - range.first >= block && !is_used(range.first, range.first + block)) {
        range.first += block;
    }
    while (range.end - range.first >= block && !is_used(range.end - block, range.end)) {
        range.end -= block;
    }
    while (!range.is_empty() && !is_used(range.first, range.first + 1)) {
        ++range.first;
    }
    while (!range.is_empty() && !is_used(range.end - 1, range.end)) {
        --range.end;
    }
    return range.is_empty() ? Column_Range() : range;
}

} // namespace

void Studio_Planes::resize(std::int32_t columns, std::int32_t rows_below, std::int32_t room_around) {
    if (columns == width && rows_below == height && room_around == room) {
        return;
    }
    width = columns;
    height = rows_below;
    room = room_around;
    stride = static_cast<std::size_t>(width + 2 * room + block);
    const std::size_t count = stride * static_cast<std::size_t>(height + 2 * room);
    rows.assign(static_cast<std::size_t>(height), {});
    normals.assign(count, 0);
    faces.assign(count, 0);
    patches.assign(count, no_patch);
    depths.assign(count, 65535.0F);
}

void Studio_Planes::clear(std::int32_t row, const Column_Range& columns) {
    if (columns.is_empty()) {
        return;
    }
    const std::size_t first = place(columns.first, row);
    const auto fill = [&](auto& plane, auto value) { std::fill_n(&plane[first], columns.size(), value); };
    fill(normals, 0U);
    fill(faces, 0U);
    fill(patches, no_patch);
    fill(depths, 65535.0F);
}

void Studio_Planes::take_numbers(const Raster& drawn) {
    box_ = {width, -1, height, -1};
    for (std::int32_t row = 0; row < height; ++row) {
        const std::uint8_t* numbers = drawn.top + row * drawn.row_bytes;
        const Column_Range before = rows[static_cast<std::size_t>(row)], now = used_columns(numbers, width);
        rows[static_cast<std::size_t>(row)] = now;
        if (now.is_empty()) {
            clear(row, before);
            continue;
        }
        clear(row, {before.first, std::min(before.end, now.first)});
        clear(row, {std::max(before.first, now.end), before.end});
        box_ = {std::min(box_.left, now.first), std::max(box_.right, now.end - 1), std::min(box_.bottom, row), row};
        std::uint32_t* stored = &faces[place(now.first, row)];
        std::memcpy(stored, numbers + std::ptrdiff_t{4} * now.first, 4 * static_cast<std::size_t>(now.size()));
        for (std::int32_t i = 0; i < now.size(); ++i) {
            stored[i] = pixel_word(stored[i]) & number_bits;
        }
    }
}

void Studio_Planes::take_normals(const Raster& drawn) {
    for (std::int32_t row = 0; row < height; ++row) {
        const Column_Range& range = rows[static_cast<std::size_t>(row)];
        if (!range.is_empty()) {
            std::uint32_t* const words = &normals[place(range.first, row)];
            std::memcpy(words, drawn.top + row * drawn.row_bytes + std::ptrdiff_t{4} * range.first,
                        4 * static_cast<std::size_t>(range.size()));
            std::transform(words, words + range.size(), words, pixel_word);
        }
    }
}

void Studio_Planes::take_faces(const Raster& depths_of_box, const std::vector<Studio_Face>& by_number) {
    for (std::int32_t row = 0; row < height; ++row) {
        const Column_Range& range = rows[static_cast<std::size_t>(row)];
        if (range.is_empty()) {
            continue;
        }
        const std::size_t first = place(range.first, row);
        const std::uint8_t* depth =
            depths_of_box.top + (row - box_.bottom) * depths_of_box.row_bytes + std::ptrdiff_t{2} * (range.first - box_.left);
        for (std::size_t i = 0; i < static_cast<std::size_t>(range.size()); ++i) {
            std::uint16_t value;
            std::memcpy(&value, depth + 2 * i, 2);
            depths[first + i] = value;
        }
        const Studio_Face* const seen = by_number.data();
        for (std::size_t i = 0; i < static_cast<std::size_t>(range.size()); ++i) {
            patches[first + i] = seen[faces[first + i]].patch;
        }
    }
}

} // namespace vorna::drawing
