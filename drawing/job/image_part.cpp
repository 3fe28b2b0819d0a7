// Parts of an image.
#include "drawing/job/image_part.h"

namespace vorna::drawing {

namespace {

// Where part k of so many begins; the end of the last one for k = parts. No part is empty while there are 8 pixels for each.
std::int32_t border(std::int32_t size, std::int32_t parts, std::int32_t k) noexcept {
    if (k == parts) {
        return size;
    }
    const std::int32_t eights = (size + 7) / 8;
    return static_cast<std::int32_t>(std::int64_t{eights} * k / parts) * 8;
}

} // namespace

VT_Int_Rectangle Image_Part::area() const noexcept {
    const std::int32_t column = number % columns, row = rows - 1 - number / columns; // from the bottom
    return {border(size.x, columns, column), border(size.x, columns, column + 1) - 1, border(size.y, rows, row),
            border(size.y, rows, row + 1) - 1};
}

std::string Image_Part::bytes() const {
    std::string text;
    for (const std::int32_t value : {size.x, size.y, columns, rows, number}) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            text += static_cast<char>(value >> shift & 0xFF);
        }
    }
    return text;
}

bool Image_Part::read(const std::string& bytes) {
    std::int32_t* const values[] = {&size.x, &size.y, &columns, &rows, &number};
    if (bytes.size() != 4 * std::size(values)) {
        return false;
    }
    is_whole = false;
    std::size_t place = 0;
    for (std::int32_t* value : values) {
        std::uint32_t read = 0;
        for (int i = 0; i < 4; ++i) {
            read = read << 8 | static_cast<std::uint8_t>(bytes[place++]);
        }
        if (read > INT32_MAX) {
            return false;
        }
        *value = static_cast<std::int32_t>(read);
    }
    constexpr std::int32_t most = 1 << 20;
    return size.x > 0 && size.y > 0 && size.x <= most && size.y <= most && columns > 0 && rows > 0 && is_possible() &&
           number < std::int64_t{columns} * rows;
}

} // namespace vorna::drawing
