// Hours of use in one process: nothing grows, and no guard byte changes. A tenth of an hour's pictures in an ordinary run; all
// with VORNA_TEST_SCALE=20.
#include <algorithm>
#include <cstdio>
#include <memory>

#include <gtest/gtest.h>
#include <unistd.h>

#include "drawing/files/address_sanitizer.h"
#include "tests/reliability/calls.h"
#include "tests/reliability/counted_heap.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr int pictures = 10'000;
constexpr int warming_pictures = 1'000;
constexpr int establish_cycles = 500; // fewer would not be warm after a tenth

// Pages that the process holds, in KiB.
long resident_kib() {
    long total = 0;
    long resident = 0;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/self/statm", "r"), std::fclose);
    if (!file || std::fscanf(file.get(), "%ld %ld", &total, &resident) != 2) {
        return 0;
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// What the process holds after the first steps, when everything is warm, and at its end.
class Growth {
public:
    explicit Growth(int steps, int warm_steps) : steps_(steps), warm_steps_(warm_steps) {}

    void look_after(int step) {
        if (step == warm_steps_) {
            allocations_ = live_allocations();
            resident_ = resident_kib();
        }
    }

    void expect_none(const char* what) const {
        std::printf("%d %s: %lld allocations at the end of all that were made, %lld after %d; resident %ld KiB, %ld after %d\n",
                    steps_, what, static_cast<long long>(live_allocations()), static_cast<long long>(allocations_), warm_steps_,
                    resident_kib(), resident_, warm_steps_);
        EXPECT_EQ(live_allocations(), allocations_);
#if !defined(HAS_ADDRESS_SANITIZER)
        // Pages that the system's allocator keeps vary a little.
        EXPECT_LE(resident_kib(), resident_ + 512);
#endif
    }

private:
    int steps_, warm_steps_;
    std::int64_t allocations_ = 0;
    long resident_ = 0;
};

// Buffers with guards, of which only those in use are kept.
class Buffer_Watch {
public:
    VT_Buffer_Creation callback() noexcept { return {create, this}; }
    void expect_intact() const {
        for (const auto& buffer : in_use_) {
            if (buffer) {
                EXPECT_EQ(buffer->broken_guard(), "");
            }
        }
    }

private:
    static void create(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                       VT_Reference<Frame_Buffer>& buffer) {
        auto& watch = *static_cast<Buffer_Watch*>(context);
        VT_Reference<Guarded_Buffer>& slot = watch.in_use_[*format == Buffer_Format::depth16 ? 1 : 0];
        if (slot) {
            EXPECT_EQ(slot->broken_guard(), "");
        }
        slot = new Guarded_Buffer(width, height, *format, {});
        buffer = slot;
    }

    VT_Reference<Guarded_Buffer> in_use_[2];
};

vorna::Module::Renderer make_renderer(Buffer_Watch& buffers) {
    VT_Renderer_Data prototype;
    prototype.buffer_creation = buffers.callback();
    auto renderer = renderer_module().create_renderer(prototype);
    renderer->requested_table.find("Use Mask")->set(true);
    renderer->requested_table.find("Enable Tiling")->set(true);
    return renderer;
}

// An empty window, then some slots in turn, with another region and another way of drawing each time.
void draw_picture(VT_Renderer_Data& renderer, int number, const VT_Int_Rectangle& window) {
    Random random(static_cast<std::uint64_t>(number));
    Numbers numbers(random, window, false);
    const VT_Reference<VT_Rendition> rendition = vorna::app::check::random_rendition(random, window);
    rendition->window.rectangle = window;
    renderer.begin_picture_all();
    VD_Draw_Window(renderer, *rendition);
    VD_Clear_Depth_Rectangle(renderer, *rendition);
    if (random.chance(50)) {
        rendition->clip.complex_clip = region_in(window, random.number(0, 9));
    }
    const auto& slots = point_slot_names();
    for (int i = 0; i < 4; ++i) {
        const std::string_view slot = slots[static_cast<std::size_t>(number * 4 + i) % slots.size()];
        make_call(slot, numbers, random.number(3, 8)).draw(renderer, *rendition);
    }
    renderer.end_picture_all();
    renderer.update_all(window);
}

} // namespace

TEST(Endurance, Pictures_Leave_Nothing_Behind) {
    constexpr VT_Int_Rectangle window{-7, 52, 3, 42};
    const int count = std::max(scaled(pictures), 4 * warming_pictures);
    Buffer_Watch buffers[std::size(renderer_cases)];
    std::vector<vorna::Module::Renderer> renderers;
    for (std::size_t c = 0; c < std::size(renderer_cases); ++c) {
        renderers.push_back(make_renderer(buffers[c]));
        configure(renderers[c]->current_renderer_options_for_update(), renderer_cases[c], {60, 40}, {window.left, window.bottom});
        renderers[c]->establish_all();
    }
    Growth growth(count, warming_pictures);
    for (int i = 1; i <= count; ++i) {
        const std::size_t c = static_cast<std::size_t>(i) % renderers.size();
        draw_picture(*renderers[c], i, window);
        if (i % 100 == 0) {
            buffers[c].expect_intact();
        }
        growth.look_after(i);
    }
    growth.expect_none("pictures");
    for (const Buffer_Watch& watch : buffers) {
        watch.expect_intact();
    }
}

TEST(Endurance, Changing_Windows_Leave_Nothing_Behind) {
    const int count = std::max(establish_cycles, scaled(establish_cycles));
    Buffer_Watch buffers;
    const auto renderer = make_renderer(buffers);
    Growth growth(count, count / 10);
    for (int i = 1; i <= count; ++i) {
        Random random(static_cast<std::uint64_t>(i));
        const bool is_looked_at = i == count / 10 || i == count; // with the same window, and so the same buffers
        const VT_Int_Pair size = is_looked_at ? VT_Int_Pair{50, 40} : VT_Int_Pair{random.number(1, 90), random.number(1, 70)};
        const VT_Int_Pair origin = is_looked_at ? VT_Int_Pair{} : VT_Int_Pair{random.number(-50, 50), random.number(-50, 50)};
        const auto c = is_looked_at ? std::size_t{5} : static_cast<std::size_t>(random.number(0, 5));
        configure(renderer->current_renderer_options_for_update(), renderer_cases[c], size, origin);
        renderer->establish_all();
        draw_picture(*renderer, is_looked_at ? 1 : i, {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1});
        buffers.expect_intact();
        growth.look_after(i);
    }
    growth.expect_none("establish cycles");
}
