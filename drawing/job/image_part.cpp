// Parts of an image.
#include "drawing/job/image_part.h"

#include <algorithm>
#include <initializer_list>

#include "host/frame_buffer.h"

namespace vorna::drawing {

namespace {

constexpr std::size_t longest_origin = 64;
// Rectangles without pixels, for parts that have no cut.
constexpr VT_Int_Rectangle no_cut{1, 0, 1, 0}, share_mark{2, 0, 2, 0};

// Where part k of so many begins; the end of the last one for k = parts. No part is empty while there are 8 pixels for each.
std::int32_t border(std::int32_t size, std::int32_t parts, std::int32_t k) noexcept {
    if (k == parts) {
        return size;
    }
    const std::int32_t eights = (size + 7) / 8;
    return static_cast<std::int32_t>(std::int64_t{eights} * k / parts) * 8;
}

bool is_cut_at_eights(std::int32_t first, std::int32_t last, std::int32_t size) noexcept {
    return first >= 0 && first <= last && last < size && first % 8 == 0 && ((last + 1) % 8 == 0 || last + 1 == size);
}

void add_number(std::string& text, std::int32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += static_cast<char>(value >> shift & 0xFF);
    }
}

} // namespace

bool Image_Part::is_possible() const noexcept {
    if (cut) {
        return is_cut_at_eights(cut->left, cut->right, size.x) && is_cut_at_eights(cut->bottom, cut->top, size.y);
    }
    return columns <= (size.x + 7) / 8 && rows <= (size.y + 7) / 8;
}

VT_Int_Rectangle Image_Part::area() const noexcept {
    if (cut) {
        return *cut;
    }
    const std::int32_t column = number % columns, row = rows - 1 - number / columns; // from the bottom
    return {border(size.x, columns, column), border(size.x, columns, column + 1) - 1, border(size.y, rows, row),
            border(size.y, rows, row + 1) - 1};
}

// Five numbers; of parts with a cut, a share or an origin four more, an empty rectangle for no cut, and the origin. Another empty
// rectangle says that the five numbers of a share stand before the origin.
std::string Image_Part::bytes() const {
    std::string text;
    for (const std::int32_t value : {size.x, size.y, columns, rows, number}) {
        add_number(text, value);
    }
    if (cut || share || !origin.empty()) {
        const VT_Int_Rectangle area = share ? share_mark : cut.value_or(no_cut);
        for (const std::int32_t value : {area.left, area.right, area.bottom, area.top}) {
            add_number(text, value);
        }
        if (share) {
            for (const std::int32_t value :
                 {share->count, share->first, share->end, share->supersample, share->transparent ? 1 : 0}) {
                add_number(text, value);
            }
        }
        text += origin.substr(0, longest_origin);
    }
    return text;
}

bool Image_Part::read(const std::string& bytes) {
    std::size_t place = 0;
    const auto read_numbers = [&](std::initializer_list<std::int32_t*> values) {
        for (std::int32_t* value : values) {
            std::uint32_t read = 0;
            for (int k = 0; k < 4; ++k) {
                read = read << 8 | static_cast<std::uint8_t>(place < bytes.size() ? bytes[place] : '\xFF');
                ++place;
            }
            if (read > INT32_MAX) {
                return false;
            }
            *value = static_cast<std::int32_t>(read);
        }
        return place <= bytes.size();
    };
    VT_Int_Rectangle area = no_cut;
    is_whole = false;
    share.reset();
    if (!read_numbers({&size.x, &size.y, &columns, &rows, &number}) ||
        (place < bytes.size() && !read_numbers({&area.left, &area.right, &area.bottom, &area.top}))) {
        return false;
    }
    if (area == share_mark) {
        Triangle_Share& own = share.emplace();
        std::int32_t transparent = 0;
        if (!read_numbers({&own.count, &own.first, &own.end, &own.supersample, &transparent}) || own.count > most_shares ||
            own.first >= own.end || std::max(size.x, size.y) > largest_buffer_side || own.end > own.count ||
            own.supersample < 1 || size.x % own.supersample != 0 || size.y % own.supersample != 0 || own.supersample > 8 ||
            columns != 1 || rows != 1) {
            return false;
        }
        own.transparent = transparent != 0;
    }
    origin = bytes.substr(place);
    cut = area.left > area.right ? std::nullopt : std::optional(area);
    constexpr std::int32_t most = 1 << 20;
    return origin.size() <= longest_origin && size.x > 0 && size.y > 0 && size.x <= most && size.y <= most && columns > 0 &&
           rows > 0 && is_possible() && number < std::int64_t{columns} * rows;
}

bool belong_together(const Image_Part& one, const Image_Part& other) noexcept {
    return one.size == other.size && one.columns == other.columns && one.rows == other.rows &&
           one.cut.has_value() == other.cut.has_value() && one.share.has_value() == other.share.has_value() &&
           (!one.share || (one.share->count == other.share->count && one.share->supersample == other.share->supersample &&
                           one.share->transparent == other.share->transparent)) &&
           one.origin == other.origin;
}

} // namespace vorna::drawing
