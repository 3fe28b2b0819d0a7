// Parts of an image.
#include "drawing/job/image_part.h"

#include <algorithm>

namespace vorna::drawing {

namespace {

constexpr std::size_t longest_origin = 64;

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

// Five numbers; of parts with a cut or an origin four more, an empty rectangle for no cut, and the origin.
std::string Image_Part::bytes() const {
    std::string text;
    for (const std::int32_t value : {size.x, size.y, columns, rows, number}) {
        add_number(text, value);
    }
    if (cut || !origin.empty()) {
        const VT_Int_Rectangle area = cut.value_or(VT_Int_Rectangle{1, 0, 1, 0});
        for (const std::int32_t value : {area.left, area.right, area.bottom, area.top}) {
            add_number(text, value);
        }
        text += origin.substr(0, longest_origin);
    }
    return text;
}

bool Image_Part::read(const std::string& bytes) {
    VT_Int_Rectangle area{1, 0, 1, 0};
    std::int32_t* const values[] = {&size.x, &size.y, &columns, &rows, &number, &area.left, &area.right, &area.bottom, &area.top};
    constexpr std::size_t without_cut = 5;
    const std::size_t count = bytes.size() == 4 * without_cut ? without_cut : std::size(values);
    if (bytes.size() < 4 * count || bytes.size() > 4 * count + longest_origin) {
        return false;
    }
    is_whole = false;
    std::size_t place = 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t read = 0;
        for (int k = 0; k < 4; ++k) {
            read = read << 8 | static_cast<std::uint8_t>(bytes[place++]);
        }
        if (read > INT32_MAX) {
            return false;
        }
        *values[i] = static_cast<std::int32_t>(read);
    }
    origin = bytes.substr(place);
    cut = area.left > area.right ? std::nullopt : std::optional(area);
    constexpr std::int32_t most = 1 << 20;
    return size.x > 0 && size.y > 0 && size.x <= most && size.y <= most && columns > 0 && rows > 0 && is_possible() &&
           number < std::int64_t{columns} * rows;
}

bool belong_together(const Image_Part& one, const Image_Part& other) noexcept {
    return one.size == other.size && one.columns == other.columns && one.rows == other.rows &&
           one.cut.has_value() == other.cut.has_value() && one.origin == other.origin;
}

} // namespace vorna::drawing
