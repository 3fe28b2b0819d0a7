// Tokens of a JSON text, read without a document.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace vorna::drawing::map {

// Every function that reads or skips returns whether the text continues with valid JSON of that kind, and moves behind it. Where
// one returns false, the library's parser reads the whole document and names the mistake.
class Json_Scanner {
public:
    explicit Json_Scanner(std::string_view text) noexcept : next_(text.data()), end_(text.data() + text.size()) {}

    const char* place() const noexcept { return next_; }
    bool at_end() const noexcept { return next_ == end_; }
    bool is_at(char c) const noexcept { return next_ != end_ && *next_ == c; }

    void skip_space() noexcept {
        while (next_ != end_ && (*next_ == ' ' || *next_ == '\n' || *next_ == '\r' || *next_ == '\t')) {
            ++next_;
        }
    }
    bool skip(char c) noexcept {
        const bool is_there = is_at(c);
        next_ += is_there ? 1 : 0;
        return is_there;
    }
    void skip_sign() noexcept { ++next_; }

    // The level of the outermost list of a value: "[[1,2]]" has 2.
    int list_depth() const noexcept {
        int depth = 0;
        Json_Scanner ahead = *this;
        for (; ahead.skip('['); ahead.skip_space()) {
            ++depth;
        }
        return depth;
    }

    struct String {
        std::string_view text; // between the quotation marks
        bool has_escape = false;

        std::string_view token() const noexcept { return {text.data() - 1, text.size() + 2}; }
    };
    bool read_string(String& string);
    // Refuses what a double cannot hold.
    bool read_number(double& number) noexcept {
        // Quotients of integers up to 2^53 and powers up to 10^22, both exact, are rounded as from_chars rounds.
        constexpr std::uint64_t most_exact = std::uint64_t{1} << 53;
        constexpr std::ptrdiff_t most_digits = 18; // that 64 bits hold
        const char* const start = next_;
        const bool is_negative = skip('-');
        const char* const whole = next_;
        std::uint64_t digits = read_digits(0);
        if (next_ == whole || (*whole == '0' && next_ - whole > 1)) {
            return false;
        }
        std::ptrdiff_t count = next_ - whole, decimals = 0;
        if (skip('.')) {
            const char* const first = next_;
            digits = read_digits(digits);
            decimals = next_ - first;
            count += decimals;
            if (decimals == 0) {
                return false;
            }
        }
        if (count <= most_digits && digits <= most_exact && !is_at('e') && !is_at('E')) {
            const double quotient = static_cast<double>(digits) / powers_of_ten[decimals];
            number = is_negative && (digits > 0 || decimals > 0) ? -quotient : quotient; // integers have no -0
            return true;
        }
        return skip_exponent() && convert(start, number);
    }
    bool skip_value() { return skip_value(0); }

    // Calls read() at each element.
    template <class Read> bool read_array(Read read) {
        if (!skip('[')) {
            return false;
        }
        skip_space();
        if (skip(']')) {
            return true;
        }
        do {
            skip_space();
            if (!read()) {
                return false;
            }
            skip_space();
        } while (skip(','));
        return skip(']');
    }

    // Calls read(key) at the value of each member.
    template <class Read> bool read_object(Read read) {
        if (!skip('{')) {
            return false;
        }
        skip_space();
        if (skip('}')) {
            return true;
        }
        do {
            String key;
            skip_space();
            if (!read_string(key)) {
                return false;
            }
            skip_space();
            if (!skip(':')) {
                return false;
            }
            skip_space();
            if (!read(key)) {
                return false;
            }
            skip_space();
        } while (skip(','));
        return skip('}');
    }

private:
    static constexpr double powers_of_ten[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                               1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};

    // Behind `before`, as one number, which more than 19 digits overflow.
    std::uint64_t read_digits(std::uint64_t before) noexcept {
        for (; next_ != end_ && *next_ >= '0' && *next_ <= '9'; ++next_) {
            before = 10 * before + static_cast<std::uint64_t>(*next_ - '0');
        }
        return before;
    }
    bool skip_exponent() noexcept {
        if (!skip('e') && !skip('E')) {
            return true;
        }
        if (!skip('+')) {
            skip('-');
        }
        const char* const first = next_;
        read_digits(0);
        return next_ != first;
    }
    bool convert(const char* start, double& number) const noexcept {
        const auto [stop, error] = std::from_chars(start, next_, number);
        return error == std::errc{} && stop == next_;
    }
    bool skip_word(std::string_view word) noexcept;
    bool skip_value(int depth);

    const char *next_, *end_;
};

} // namespace vorna::drawing::map
