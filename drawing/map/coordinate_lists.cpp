// The coordinates of a GeoJSON text.
#include "drawing/map/coordinate_lists.h"

#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

#include "drawing/files/interruption.h"

namespace vorna::drawing::map {
namespace {

constexpr std::string_view key = "\"coordinates\"";
constexpr int deepest = 4;

bool is_space(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

// Every function returns whether the text goes on as it should.
class Coordinate_Lists::Scanner {
public:
    Scanner(std::string_view text, Coordinate_Lists& lists)
        : next_(text.data()), end_(text.data() + text.size()), lists_(lists) {}

    bool split() {
        const char* copied = next_;
        while (next_ != end_) {
            if (*next_ != '"') {
                ++next_;
                continue;
            }
            const char* start = next_;
            bool has_escape = false;
            if (!skip_string(has_escape)) {
                return false;
            }
            const std::string_view found(start, static_cast<std::size_t>(next_ - start));
            skip_space();
            if (next_ == end_ || *next_ != ':') {
                continue; // a string and no key
            }
            if (has_escape) {
                return false;
            }
            ++next_;
            skip_space();
            if (found != key || next_ == end_ || *next_ != '[') {
                continue;
            }
            lists_.rest_.append(copied, next_).append(1, '[').append(std::to_string(lists_.values_.size())).append(1, ']');
            if (!read_value()) {
                return false;
            }
            copied = next_;
        }
        lists_.rest_.append(copied, end_);
        return true;
    }

private:
    void skip_space() {
        while (next_ != end_ && is_space(*next_)) {
            ++next_;
        }
    }

    // From its first quotation mark behind its last.
    bool skip_string(bool& has_escape) {
        for (++next_; next_ != end_; ++next_) {
            if (*next_ == '"') {
                ++next_;
                return true;
            }
            if (*next_ == '\\') {
                has_escape = true;
                if (++next_ == end_) {
                    return false;
                }
            }
        }
        return false;
    }

    bool skip_any(std::string_view signs) {
        const bool is_there = next_ != end_ && signs.find(*next_) != signs.npos;
        next_ += is_there ? 1 : 0;
        return is_there;
    }

    bool skip_digits() {
        const char* start = next_;
        while (next_ != end_ && is_digit(*next_)) {
            ++next_;
        }
        return next_ != start;
    }

    // As JSON has numbers: from_chars accepts others too.
    bool read_number(double& number) {
        const char* start = next_;
        skip_any("-");
        const char* digits = next_;
        if (!skip_digits() || (*digits == '0' && next_ - digits > 1) || (skip_any(".") && !skip_digits())) {
            return false;
        }
        if (skip_any("eE")) {
            skip_any("+-");
            if (!skip_digits()) {
                return false;
            }
        }
        const auto [stop, error] = std::from_chars(start, next_, number);
        return error == std::errc{} && stop == next_;
    }

    // Behind a list's first bracket: two numbers or more, of which two count.
    bool read_position() {
        constexpr std::size_t positions_between_looks = 4096;
        if (lists_.positions_.size() % positions_between_looks == 0) {
            Interruption::check();
        }
        double place[2] = {}, more = 0;
        std::size_t count = 0;
        do {
            skip_space();
            if (!read_number(count < 2 ? place[count] : more)) {
                return false;
            }
            ++count;
            skip_space();
        } while (skip_any(","));
        lists_.positions_.push_back({place[0], place[1]});
        return count >= 2 && skip_any("]");
    }

    // The first position tells how deep all lists must be.
    bool read_value() {
        Value value;
        for (const char* c = next_; c != end_ && (*c == '[' || is_space(*c)); ++c) {
            value.depth += *c == '[' ? 1 : 0;
        }
        if (value.depth > deepest) {
            return false;
        }
        value.parts.first = count_at(value.depth);
        const bool is_sound = read_lists(value.depth);
        value.parts.end = count_at(value.depth);
        lists_.values_.push_back(value);
        return is_sound;
    }

    // How many parts values of this depth have so far.
    std::size_t count_at(int depth) const {
        return depth <= 1 ? lists_.positions_.size() : depth <= 3 ? lists_.paths_.size() : lists_.polygons_.size();
    }

    bool read_lists(int depth) {
        if (!skip_any("[")) {
            return false;
        }
        if (depth == 1) {
            return read_position();
        }
        const std::size_t first = depth == 2 ? lists_.positions_.size() : lists_.paths_.size();
        do {
            skip_space();
            if (!read_lists(depth - 1)) {
                return false;
            }
            skip_space();
        } while (skip_any(","));
        if (!skip_any("]")) {
            return false;
        }
        if (depth == 2) {
            lists_.paths_.push_back({first, lists_.positions_.size()});
        } else if (depth == 3) {
            lists_.polygons_.push_back({first, lists_.paths_.size()});
        }
        return true;
    }

    const char *next_, *end_;
    Coordinate_Lists& lists_;
};

std::optional<Coordinate_Lists> Coordinate_Lists::split(const std::string& file, std::string_view text, Load_Limits& limits) {
    // "[[[1,2]]]," becomes a position, a path and a polygon, in lists with as much room again; the rest is a copy.
    constexpr std::uint64_t memory_per_byte = 12;
    Coordinate_Lists lists;
    lists.memory_ = Load_Limits::Loan(limits, file, memory_per_byte * text.size());
    lists.rest_.reserve(text.size());
    return Scanner(text, lists).split() ? std::optional(std::move(lists)) : std::nullopt;
}

Path Coordinate_Lists::path(std::size_t number) const {
    const auto place = [this](std::size_t position) { return positions_.begin() + static_cast<std::ptrdiff_t>(position); };
    return {place(paths_[number].first), place(paths_[number].end)};
}

} // namespace vorna::drawing::map
