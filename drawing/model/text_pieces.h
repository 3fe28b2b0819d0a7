// A text in pieces of whole lines, for threads that read them side by side.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "drawing/files/helpers.h"
#include "drawing/files/load_limits.h"

namespace vorna::drawing::model {

class Text_Pieces {
public:
    // In the nearest caches together with what is made of them.
    static constexpr std::size_t usual_size = std::size_t{1} << 17;

    explicit Text_Pieces(std::string_view text, std::size_t size = usual_size) : text_(text), size_(size) {}

    // Some may be empty: long lines are in one piece.
    std::size_t count() const noexcept { return text_.size() / size_ + 1; }
    std::string_view operator[](std::size_t piece) const noexcept {
        const std::size_t start = line_at(piece * size_);
        return text_.substr(start, line_at((piece + 1) * size_) - start);
    }

private:
    // Where the first line begins at or behind a place. A line that a backslash continues ends with the next one.
    std::size_t line_at(std::size_t place) const noexcept {
        if (place == 0 || place >= text_.size()) {
            return std::min(place, text_.size());
        }
        for (--place; place < text_.size(); ++place) {
            place = text_.find('\n', place);
            if (place == text_.npos) {
                break;
            }
            std::size_t before = place;
            before -= before > 0 && text_[before - 1] == '\r';
            if (before == 0 || text_[before - 1] != '\\') {
                return place + 1;
            }
        }
        return text_.size();
    }

    std::string_view text_;
    std::size_t size_;
};

// As many of the threads as may hold pieces at once in an eighth of the memory that is left, at least one: whether a file can be
// read must not depend on their number. place_bytes: memory of a piece.
inline std::size_t threads_for_pieces(const Load_Limits& limits, std::uint64_t place_bytes) {
    std::size_t threads = limits.threads();
    while (threads > 1 && places_in_order(threads) * place_bytes > limits.memory_left() / 8) {
        threads /= 2;
    }
    return threads;
}

} // namespace vorna::drawing::model
