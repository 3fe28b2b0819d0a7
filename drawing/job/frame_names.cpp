// Names of the frames of a turntable.
#include "drawing/job/frame_names.h"

#include <algorithm>
#include <optional>

#include "drawing/files/usage_error.h"

namespace vorna::drawing {
namespace {

struct Place {
    std::size_t start, length, digits;
};

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// A place that begins there.
std::optional<Place> place_at(const std::string& pattern, std::size_t start, std::int32_t count) {
    if (pattern.compare(start, 2, "{}") == 0) {
        return Place{start, 2, std::to_string(count - 1).size()};
    }
    if (pattern[start] != '%') {
        return std::nullopt;
    }
    std::size_t end = start + 1;
    std::size_t digits = 0;
    if (end < pattern.size() && pattern[end] == '0') {
        while (++end < pattern.size() && is_digit(pattern[end]) && digits < 20) {
            digits = 10 * digits + static_cast<std::size_t>(pattern[end] - '0');
        }
    }
    return end < pattern.size() && pattern[end] == 'd' ? std::optional(Place{start, end + 1 - start, digits}) : std::nullopt;
}

} // namespace

std::string frame_name(const std::string& pattern, std::int32_t frame, std::int32_t count) {
    std::optional<Place> place;
    bool once = true;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (const std::optional<Place> found = place_at(pattern, i, count)) {
            once = !place;
            place = found;
        }
    }
    if (!place || !once) {
        throw Usage_Error("-o: expected one place for the frame's number, as in frame-%03d.png or frame-{}.png, found '" +
                          pattern + "'");
    }
    std::string number = std::to_string(frame);
    number.insert(0, place->digits - std::min(place->digits, number.size()), '0');
    return std::string(pattern).replace(place->start, place->length, number);
}

} // namespace vorna::drawing
