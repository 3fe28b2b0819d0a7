// Drawing a span of a row in groups of lanes: clip, depth, colour. Included once for each vocabulary of lanes, after
// pixel_formats.inl.

#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstring>

namespace krb::KRB_KERNEL_SET {
namespace {

// What is left of a span that does not fill all lanes.
struct Tail {
    std::int32_t column; // of lane 0
    std::int32_t back;   // how far lane 0 lies before the next pixel
    Active lanes;
};

// Without masked memory a short group is drawn inside a full one that lies in the same row.
inline Tail tail_of(std::int32_t column, std::int32_t count, std::int32_t width) {
    if constexpr (masked_memory) {
        (void)width;
        return {column, 0, first_lanes(count)};
    } else {
        const std::int32_t last = width - lane_count;
        const std::int32_t start = column < last ? column : last;
        return {start, column - start, lanes_between(column - start, column - start + count)};
    }
}

template <class Lanes> struct Is_Whole_Group { static constexpr bool value = false; };
template <> struct Is_Whole_Group<All> { static constexpr bool value = true; };

// Draws one span group by group. Rules of a family are:
//   Target              what the kernel is called with, a Pixel_Target
//   Format, Depth, Pixel, clip: the rules of the configuration
//   fetches_ahead       long spans fetch memory of a later row early, which no processor predicts
//   hides_transparent   pixels of alpha 0 are not drawn, depth included
//   row_to_come(target, row) where fetches_ahead: a row that is soon drawn as this one is
//   pattern_bits(target, column, row) where clip is patterned: bit i tells whether the pattern draws the pixel i columns on
template <class Rules, class Source>
requires Format_Rules<typename Rules::Format> && Depth_Rules<typename Rules::Depth> && Pixel_Rules<typename Rules::Pixel>
struct Span {
    using Format = typename Rules::Format;
    using Depth = typename Rules::Depth;
    using Pixel = typename Rules::Pixel;
    static constexpr std::int32_t pixel_bytes = Format::bytes;
    // Nothing is read and nothing moves: the span is one value in every pixel.
    static constexpr bool is_solid =
        !Source::moves && !Depth::reads && !Pixel::reads && Format::stores_words && Rules::clip != Clip_Rule::patterned;
    // The bytes of the source are stored.
    static constexpr bool is_copy = !Depth::reads && !Pixel::reads && requires(const Source& pixels) { pixels.bytes(); };
    // Depths are tested in pairs of groups where the set has a word for it.
    template <class Lanes>
    static constexpr bool tests_pairs =
        std::same_as<Depth, Less_Or_Equal> && !Rules::hides_transparent && requires(Lanes depths) {
        packed_pair(depths, depths);
    };
    // Transparent pixels are left by the blend.
    static constexpr bool blends_visible =
        Rules::hides_transparent && std::same_as<Pixel, Blend> && Format::stores_words && !Depth::reads;

    const typename Rules::Target& target;
    std::int32_t row;
    std::uint8_t* color_row;
    std::uint8_t* depth_row;
    Source source;
    Ramp depth;
    bool gaps; // the pixels that the pattern leaves out

    // count is above 0, and the pixels lie in the window. Without masked memory the window is at least lane_count pixels wide.
    void draw(std::int32_t column, std::int32_t count) {
        assert(lies_in_window(target, row, column, count));
        assert(masked_memory || lane_count <= target.width);
        if constexpr (Rules::clip == Clip_Rule::open) {
            draw_open(column, count);
        } else if constexpr (Rules::clip == Clip_Rule::masked) {
            draw_masked(column, count);
        } else {
            for (; count > 0; count -= lane_count, column += lane_count) {
                draw_patterned_group(column, count);
            }
        }
    }

    // One pixel; for vocabularies of one lane.
    void draw_single(std::int32_t column) {
        assert(lies_in_window(target, row, column, 1));
        if (Rules::clip == Clip_Rule::open || (mask_bits(target.mask_rows[row], column) & 1) != 0) {
            draw_drawable(column, All{});
        }
    }

    KRB_ALWAYS_INLINE void skip(std::int32_t pixels) {
        source.skip(pixels);
        if constexpr (Depth::reads) {
            depth.skip(pixels);
        }
    }

private:
    void draw_open(std::int32_t column, std::int32_t count) {
        if constexpr (is_solid) {
            if (count >= lane_count) {
                fill_solid(column, count);
            } else {
                store_first_pixels(color_row + std::int64_t{pixel_bytes} * column, source.pixel_lanes(), count);
            }
            return;
        }
        if constexpr (is_copy) {
            copy_pixels(column, count);
            return;
        }
        const std::int32_t whole = count - (count & (lane_count - 1));
        draw_whole_groups(column, whole);
        if (count > whole) {
            const Tail tail = tail_of(column + whole, count - whole, target.width);
            if constexpr (Rules::fetches_ahead) {
                fetch_group(rows_to_come(), tail.column);
            }
            rewind(tail);
            draw_drawable(tail.column, tail.lanes);
        }
    }

    // Stretches inside the region are drawn as open ones, stretches outside skipped; only groups at its edge are tested pixel
    // by pixel.
    void draw_masked(std::int32_t column, std::int32_t count) {
        assert(target.mask_rows);
        const std::uint8_t* mask_row = target.mask_rows[row];
        if (count < lane_count) {
            draw_selected_group(column, count, mask_bits(mask_row, column));
            return;
        }
        while (count > 0) {
            const std::int32_t open = stretch_of(mask_row, column, count, 0);
            if constexpr (is_solid || is_copy) {
                if (open == count) {
                    draw_open(column, count);
                    return;
                }
            }
            std::int32_t done = open - (open & (lane_count - 1));
            if (done > 0) {
                draw_whole_groups(column, done);
            } else {
                done = stretch_of(mask_row, column, count, 0xFF);
                if (done > 0) {
                    skip(done);
                } else {
                    done = lane_count;
                    draw_selected_group(column, count, mask_bits(mask_row, column));
                }
            }
            column += done;
            count -= done;
        }
    }

    void draw_patterned_group(std::int32_t column, std::int32_t count) {
        std::uint32_t bits = Rules::pattern_bits(target, column, row);
        bits = gaps ? ~bits : bits;
        if (target.mask_rows) {
            bits &= mask_bits(target.mask_rows[row], column);
        }
        draw_selected_group(column, count, bits);
    }

    // Draws the pixels of the next group whose bits are set; bit 0 is the first one's.
    void draw_selected_group(std::int32_t column, std::int32_t count, std::uint32_t bits) {
        if (count >= lane_count) {
            draw_drawable(column, lanes_of_bits(bits));
            advance_group();
        } else {
            const Tail tail = tail_of(column, count, target.width);
            rewind(tail);
            draw_drawable(tail.column, tail.lanes & lanes_of_bits(bits << tail.back));
        }
    }

    // count is a multiple of lane_count.
    void draw_whole_groups(std::int32_t column, std::int32_t count) {
        if constexpr (is_solid) {
            if (count > 0) {
                fill_solid(column, count);
            }
        } else if constexpr (is_copy) {
            copy_pixels(column, count);
        } else if (count > 0) {
            [[maybe_unused]] Rows ahead{};
            if constexpr (Rules::fetches_ahead) {
                ahead = rows_to_come();
            }
            // In short spans a group without a partner would be too frequent.
            const bool in_pairs = count >= 12 * lane_count;
            for (; count > 0; count -= lane_count, column += lane_count) {
                if constexpr (Rules::fetches_ahead) {
                    fetch_group(ahead, column);
                }
                if constexpr (tests_pairs<Int>) {
                    if (in_pairs && count >= 2 * lane_count && draw_pair(column, depth.value)) {
                        column += lane_count;
                        count -= lane_count;
                        continue;
                    }
                }
                draw_drawable(column, All{});
                advance_group();
            }
        }
    }

    struct Rows {
        const std::uint8_t* color;
        const std::uint8_t* depth;
    };

    KRB_ALWAYS_INLINE Rows rows_to_come() const {
        const std::int32_t later = Rules::row_to_come(target, row);
        return {target.color_rows[later], Depth::reads ? target.depth_rows[later] : nullptr};
    }

    KRB_ALWAYS_INLINE static void fetch_group(const Rows& rows, std::int32_t column) {
        KRB_FETCH_TO_WRITE(rows.color + std::int64_t{pixel_bytes} * column);
        if constexpr (Depth::reads) {
            KRB_FETCH_TO_WRITE(rows.depth + std::int64_t{2} * column);
        }
    }

    // Two groups whose pixels all pass the depth test or all fail. False if it is neither: then nothing is done.
    template <class Lanes> KRB_ALWAYS_INLINE bool draw_pair(std::int32_t column, Lanes first) {
        const auto depths_of = [](Lanes value) { return shift_right<15>(value) & splat(0xFFFF); };
        std::uint8_t* const at = depth_row + std::int64_t{2} * column;
        const auto depths = packed_pair(depths_of(first), depths_of(first + splat(lane_count) * depth.step));
        const auto passed = less_or_equal(depths, load_pair(at, first));
        if (all(passed)) {
            store_pair(at, depths);
            write<Pixel>(column, source.template prepare<All>(All{}));
            advance_group();
            write<Pixel>(column + lane_count, source.template prepare<All>(All{}));
        } else if (none(passed)) {
            advance_group();
        } else {
            return false;
        }
        advance_group();
        return true;
    }

    // count is at least lane_count: whole vectors at aligned addresses, and one at each end that may overlap them.
    void fill_solid(std::int32_t column, std::int32_t count) {
        constexpr std::int64_t vector_bytes = std::int64_t{lane_count} * pixel_bytes;
        std::uint8_t* at = color_row + std::int64_t{pixel_bytes} * column;
        std::uint8_t* const last = at + std::int64_t{pixel_bytes} * (count - lane_count);
        store_pixels(at, source.pixel_lanes(), All{});
        // Advances by whole pixels, also in rows that start at odd addresses.
        const auto misaligned = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(at) % std::uintptr_t{vector_bytes});
        at += (vector_bytes - misaligned) / pixel_bytes * pixel_bytes;
        std::int64_t ahead = 0;
        if constexpr (Rules::fetches_ahead) {
            ahead = target.color_rows[Rules::row_to_come(target, row)] - color_row;
        }
        for (; at < last; at += vector_bytes) {
            if constexpr (Rules::fetches_ahead) {
                KRB_FETCH_TO_WRITE(at + ahead);
            }
            store_pixels(at, source.pixel_lanes(), All{});
        }
        store_pixels(last, source.pixel_lanes(), All{});
    }

    // Prefetches each cache line once: of the row to come, and of the source's next row where rows lie one behind the other.
    void copy_pixels(std::int32_t column, std::int32_t count) {
        constexpr std::int64_t line_bytes = 64;
        std::uint8_t* to = color_row + std::int64_t{pixel_bytes} * column;
        const std::uint8_t* from = source.bytes();
        const std::int64_t ahead = rows_to_come().color - color_row;
        std::int64_t bytes = std::int64_t{pixel_bytes} * count;
        const auto copy_line = [&] {
            KRB_FETCH_TO_WRITE(to + ahead);
            KRB_FETCH_EARLY(from + source.row_bytes());
            std::memcpy(to, from, std::size_t{line_bytes});
            to += line_bytes;
            from += line_bytes;
        };
        // Four at once, since processors foresee the end of a short loop only.
        for (; bytes >= 4 * line_bytes; bytes -= 4 * line_bytes) {
            copy_line();
            copy_line();
            copy_line();
            copy_line();
        }
        if (bytes > 0) {
            std::memcpy(to, from, static_cast<std::size_t>(bytes));
        }
        source.skip(count);
    }

    // Inlined, so that the span's values stay in registers.
    KRB_ALWAYS_INLINE void advance_group() {
        if constexpr (Depth::reads || Source::moves) {
            const Int lanes = splat(lane_count);
            source.advance_group(lanes);
            if constexpr (Depth::reads) {
                depth.advance_group(lanes);
            }
        }
    }

    // Back to where lane 0 of a short group lies.
    void rewind(const Tail& tail) {
        if constexpr (!masked_memory) {
            skip(-tail.back);
        }
    }

    template <class Lanes> KRB_ALWAYS_INLINE void draw_drawable(std::int32_t column, Lanes lanes) {
        if constexpr (Depth::reads) {
            std::uint8_t* at = depth_row + std::int64_t{2} * column;
            const Int depths = shift_right<15>(depth.value) & splat(0xFFFF);
            const Active passed = Depth::pass(target, lanes, depths, load_depths(at, lanes));
            // A short group is drawn whatever passes: the branch would cost more than it saves.
            if constexpr (Is_Whole_Group<Lanes>::value) {
                if (none(passed)) {
                    return;
                }
            }
            const Active visible = visible_lanes<Lanes>(passed);
            if (Depth::writes(target)) {
                store_depths(at, depths, visible);
            }
            write<Pixel>(column, visible);
        } else if constexpr (blends_visible) {
            write<Visible_Blend>(column, source.template prepare<Lanes>(lanes));
        } else {
            write<Pixel>(column, visible_lanes<Lanes>(lanes));
        }
    }

    // Group is All for groups that lie in the span as a whole.
    template <class Group, class Lanes> KRB_ALWAYS_INLINE auto visible_lanes(Lanes lanes) {
        const auto prepared = source.template prepare<Group>(lanes);
        if constexpr (Rules::hides_transparent) {
            return without(prepared & first_lanes(lane_count), equal(source.alpha_lanes(), splat(0)));
        } else {
            return prepared;
        }
    }

    template <class Rule, class Lanes> KRB_ALWAYS_INLINE void write(std::int32_t column, Lanes lanes) {
        Format::template write<Rule>(target, row, color_row + std::int64_t{pixel_bytes} * column, source, lanes);
    }
};

} // namespace
} // namespace krb::KRB_KERNEL_SET
