// Numbers from the ends of what their types hold, through every drawing function and every standard function: nothing beside the
// pixels is read or written, and every call ends soon.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <span>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "drawing/files/address_sanitizer.h"
#include "tests/reliability/calls.h"
#include "tests/reliability/fenced_buffer.h"
#include "tests/reliability/last_words.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

// A call into a window of some thousand pixels; in processor time, so that other programs do not count.
#if defined(HAS_ADDRESS_SANITIZER)
constexpr double most_seconds = 20;
#else
constexpr double most_seconds = 3;
#endif

double processor_seconds() {
    std::timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// What buffers hold before a call; little endian.
constexpr std::int32_t stored_depths[] = {65535, 65535, 65535, 65535, 65534, 32768, 1, 0};
constexpr std::int32_t stored_words[] = {0, 255, 128, 7, -1, 0x00FFFFFF, 0x0A0000FF, INT32_MIN};

// A renderer between fences.
class Fenced_Renderer {
public:
    Fenced_Renderer(Random& random, std::size_t renderer_case, VT_Int_Pair size, VT_Int_Pair origin, bool tiles)
        : side_(random.chance(50) ? Fenced_Buffer::Side::back : Fenced_Buffer::Side::front) {
        VT_Renderer_Data prototype;
        prototype.buffer_creation = {create, this};
        configure(prototype.current_options, renderer_cases[renderer_case], size, origin);
        renderer_ = renderer_module().create_renderer(prototype);
        const auto set = [&](const char* option, const VT_Option_Content& value) {
            renderer_->requested_table.find(option)->set(value);
        };
        set("Use Mask", random.chance(85));
        set("Enable Tiling", tiles);
        set("Hardcopy Mode", random.chance(15));
        set("Force Merge Control On", random.chance(10));
        set("Merge Control Background Color", VT_Int_RGB{random.one_of(stored_words), 0, INT32_MIN});
        renderer_->establish_all();
        fill(random);
    }

    // Depths of every distance, most of them far, so that each test finds some to pass; colours among them the background of
    // merge control.
    void fill(Random& random) {
        for (const auto& buffer : made_) {
            const auto words = buffer->format == Buffer_Format::depth16 ? std::span<const std::int32_t>(stored_depths)
                                                                        : std::span<const std::int32_t>(stored_words);
            const std::size_t bytes = buffer->format == Buffer_Format::index8    ? 1
                                      : buffer->format == Buffer_Format::depth16 ? 2
                                                                                 : 4;
            for (std::size_t i = 0; i < buffer->size(); i += bytes) {
                const std::int32_t word = random.one_of(words);
                std::memcpy(buffer->bytes() + i, &word, bytes);
            }
        }
    }

    // How depths are compared and whether they are written: the three modes that there are, and what is none.
    std::string set_depth_rules(Random& random, std::int32_t any) {
        const std::int32_t modes[] = {1, 2, 5, random.number(-1, 8), any};
        const std::int32_t mode = random.one_of(modes);
        const bool is_written = random.chance(70);
        renderer_->current_table.find("ZBuffer Test")->as_setter<VT_Int_Setter>()(*renderer_, &mode);
        renderer_->current_table.find("ZBuffer Write")->as_setter<VT_Bool_Setter>()(*renderer_, is_written);
        return "depth mode " + std::to_string(mode) + (is_written ? " written" : "");
    }

    VT_Renderer_Data& operator*() noexcept { return *renderer_; }
    const std::vector<VT_Reference<Fenced_Buffer>>& buffers() const noexcept { return made_; }
    bool is_intact() const noexcept {
        bool intact = true;
        for (const auto& buffer : made_) {
            intact = intact && buffer->is_intact();
        }
        return intact;
    }

private:
    static void create(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                       VT_Reference<Frame_Buffer>& buffer) {
        auto& self = *static_cast<Fenced_Renderer*>(context);
        self.made_.emplace_back(new Fenced_Buffer(width, height, *format, self.side_));
        buffer = self.made_.back();
    }

    Fenced_Buffer::Side side_;
    std::vector<VT_Reference<Fenced_Buffer>> made_;
    vorna::Module::Renderer renderer_;
};

// The pixels that a call must leave alone: those beside the hard clip.
class Pixels_Beside {
public:
    Pixels_Beside(const Fenced_Renderer& renderer, const VT_Int_Rectangle& window, const VT_Int_Rectangle& clip)
        : renderer_(renderer), cut_{std::max(window.left, clip.left), std::min(window.right, clip.right),
                                    std::max(window.bottom, clip.bottom), std::min(window.top, clip.top)},
          window_(window) {
        for (const auto& buffer : renderer.buffers()) {
            before_.emplace_back(buffer->bytes(), buffer->bytes() + buffer->size());
        }
    }

    bool are_untouched() const {
        // A clip that shows nothing becomes the nearest column or row of a tile.
        if (cut_.left > cut_.right || cut_.bottom > cut_.top) {
            return true;
        }
        for (std::size_t i = 0; i < before_.size(); ++i) {
            const Fenced_Buffer& buffer = *renderer_.buffers()[i];
            const std::int32_t pixel_bytes = buffer.bytes_per_row / buffer.width;
            for (std::int32_t row = 0; row < buffer.height; ++row) {
                const bool is_shown = row >= cut_.bottom - window_.bottom && row <= cut_.top - window_.bottom;
                const std::int32_t first = is_shown ? (cut_.left - window_.left) * pixel_bytes : buffer.bytes_per_row;
                const std::int32_t last = is_shown ? (cut_.right + 1 - window_.left) * pixel_bytes : buffer.bytes_per_row;
                const std::uint8_t* const now = buffer.rows[row];
                const std::uint8_t* const then = before_[i].data() + (now - buffer.bytes());
                if (!std::equal(now, now + first, then) || !std::equal(now + last, now + buffer.bytes_per_row, then + last)) {
                    return false;
                }
            }
        }
        return true;
    }

private:
    const Fenced_Renderer& renderer_;
    const VT_Int_Rectangle cut_, window_;
    std::vector<std::vector<std::uint8_t>> before_;
};

// Windows lie anywhere that integers can say, up to the very ends.
std::int32_t random_origin(Random& random, std::int32_t size) {
    const std::int32_t places[] = {
        0, 0, -9, 30000, 100000, -100000, 1 << 29, 1 << 30, -(1 << 30), INT32_MIN, INT32_MAX - size + 1};
    return random.one_of(places);
}

// Now and then as wide or high as buffers of an application may be.
VT_Int_Pair random_size(Random& random) {
    constexpr std::int32_t lengths[] = {16384, 32767, 32768, 40000, 70000};
    switch (random.number(1, 25)) {
    case 1:
        return {random.one_of(lengths), random.number(1, 3)};
    case 2:
        return {random.number(1, 3), random.one_of(lengths)};
    default:
        return {random.number(1, 80), random.number(1, 50)};
    }
}

int draw_hostile_calls(const std::string& kernels, std::size_t renderer_case, std::uint64_t seed, int rounds) {
    Random random(seed * 6 + renderer_case);
    const VT_Int_Pair size = random_size(random);
    const VT_Int_Pair origin{random_origin(random, size.x), random_origin(random, size.y)};
    const VT_Int_Rectangle window{origin.x, origin.x + (size.x - 1), origin.y, origin.y + (size.y - 1)};
    const Kernel_Choice choice(kernels);
    Fenced_Renderer renderer(random, renderer_case, size, origin, random.chance(60));
    Numbers numbers(random, window, true);
    int drawn = 0;
    for (int i = 0; i < rounds; ++i) {
        renderer.fill(random);
        for (const std::string_view slot : vorna::app::check::slot_names()) {
            const std::int32_t count = random.chance(10) ? random.number(-1, 2) : random.number(2, 9);
            const Slot_Call call = make_call(slot, numbers, random.chance(3) ? 70 : count,
                                             random.chance(25) ? Callee::standard_function : Callee::drawing_function);
            // On the stack, where a reference that is taken and given up ends the process.
            const VT_Rendition rendition(*hostile_rendition(numbers));
            const std::string rules = renderer.set_depth_rules(random, numbers.any());
            std::string words = "seed " + std::to_string(seed) + ", case " + std::to_string(renderer_case) + ", kernels " +
                                kernels + ", window " + std::to_string(size.x) + " x " + std::to_string(size.y) + " at " +
                                std::to_string(origin.x) + ", " + std::to_string(origin.y) + ": ";
            words.append(call.slot).append(call.description).append("; ").append(describe(rendition)).append(", ").append(rules);
            set_last_words(words);
            const Pixels_Beside beside(renderer, window, rendition.clip.hard_clip);
            const double before = processor_seconds();
            call.draw(*renderer, rendition);
            EXPECT_LT(processor_seconds() - before, most_seconds) << words;
            EXPECT_TRUE(renderer.is_intact()) << words;
            EXPECT_TRUE(!vorna::app::check::clips_to_hard_clip(call.slot) || beside.are_untouched())
                << "beside the hard clip, " << words;
            ++drawn;
            if (testing::Test::HasFailure()) {
                return drawn;
            }
        }
    }
    return drawn;
}

} // namespace

TEST(Hostile_Numbers, Nothing_Beside_The_Pixels_Is_Touched_And_Every_Call_Ends) {
    const End_Of_Words end;
    int calls = 0;
    for (const std::string& kernels : available_kernel_sets()) {
        for (std::size_t renderer_case = 0; renderer_case < std::size(renderer_cases); ++renderer_case) {
            for (int seed = 0; seed < scaled(30); ++seed) {
                calls += draw_hostile_calls(kernels, renderer_case, static_cast<std::uint64_t>(seed), 3);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
    std::printf("%d calls\n", calls);
}

// Two points, or three, at every pair of places where something begins to wrap, in every integer slot that cuts.
TEST(Hostile_Numbers, Extremes_Meet_In_Every_Pair) {
    const End_Of_Words end;
    constexpr VT_Int_Pair size{20, 12};
    constexpr VT_Int_Rectangle window{-3, 16, 5, 16};
    constexpr std::int32_t places[] = {INT32_MIN, -0x40000001, -32769, -4001, -3, 4, 16, 17, 28761, 32768, 0x40000001, INT32_MAX};
    for (std::size_t i = 0; i < std::size(renderer_cases) * available_kernel_sets().size(); ++i) {
        const std::size_t renderer_case = i % std::size(renderer_cases);
        const Kernel_Choice choice(available_kernel_sets()[i / std::size(renderer_cases)]);
        Random random(renderer_case);
        Fenced_Renderer renderer(random, renderer_case, size, {window.left, window.bottom}, true);
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        rendition->set_color({200, 100, 50, 128});
        rendition->clip.hard_clip = {-1, 12, 6, 13};
        const VT_RGB32 colors[] = {{255, 0, 0, 255}, {0, 255, 0, 128}, {0, 0, 255, 0}};
        const Pixels_Beside beside(renderer, window, rendition->clip.hard_clip);
        set_last_words("extremes, case " + std::to_string(renderer_case));
        const double before = processor_seconds();
        for (const std::int32_t x : places) {
            renderer.set_depth_rules(random, x);
            for (const std::int32_t y : places) {
                for (const std::int32_t end_x : places) {
                    for (const std::int32_t end_y : places) {
                        const VT_DCI_Point points[] = {{x, y, end_x}, {end_x, end_y, y}, {9, 8, INT32_MIN}};
                        VD_Draw_2DI_Polyline(*renderer, *rendition, 2, points);
                        VD_Draw_2DI_Colorized_Polyline(*renderer, *rendition, 3, points, colors, false);
                        VD_Draw_2DI_Gouraud_Polyline(*renderer, *rendition, 2, points, colors);
                        VD_Draw_2DI_Polytriangle(*renderer, *rendition, 3, points);
                        VD_Draw_2DI_Gouraud_Polytriangle(*renderer, *rendition, 3, points, colors);
                        VD_Draw_2DI_Polymarker(*renderer, *rendition, 3, points);
                        const VT_Point_D transformed[] = {
                            {double(x), double(y), 0}, {double(end_x), double(end_y), 9}, {9, 8, 1e9}};
                        VD_Draw_3D_Gouraud_Polytriangle(*renderer, *rendition, 3, transformed, colors);
                        VD_Draw_3D_Gouraud_Polyline(*renderer, *rendition, 3, transformed, colors);
                    }
                }
            }
        }
        EXPECT_TRUE(renderer.is_intact());
        EXPECT_TRUE(beside.are_untouched()) << "case " << renderer_case;
        EXPECT_LT(processor_seconds() - before, 4 * most_seconds);
    }
}
