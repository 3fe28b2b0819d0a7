// A renderer that leaves out triangles by the farthest depths of blocks draws what another one draws, and no depth is farther
// than its block's entry.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/check/scene.h"
#include "renderer/core/software_z_buffer.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr VT_Int_Pair blocks_of(VT_Int_Pair size) {
    return {(size.x + krb::block_columns - 1) / krb::block_columns, (size.y + krb::block_rows - 1) / krb::block_rows};
}

// Two renderers that draw the same, one of them with blocks.
class Blocks_Beside_None {
public:
    Blocks_Beside_None(const Renderer_Setup& setup, const std::string& kernels)
        : size_(setup.size), with_(setup, kernels), without_(setup, kernels) {
        with_->requested_table.add(VT_Option("Depth Blocks", 0, true));
        for_both(
            [](Test_Renderer& renderer) { renderer->requested_table.add(VT_Option("Scissor Rows", 0, VT_Pointer(nullptr))); });
        establish();
    }

    template <class Step> void for_both(Step step) {
        step(with_);
        step(without_);
    }
    void establish() {
        for_both([](Test_Renderer& renderer) { renderer->establish_all(); });
        first_row_ = 0;
        last_row_ = size_.y - 1;
    }
    void set_scissor_rows(std::int32_t first, std::int32_t last) {
        const std::int32_t rows[] = {first, last};
        for_both([&](Test_Renderer& renderer) {
            renderer->current_table.find("Scissor Rows")->as_setter<VT_Int_Setter>()(*renderer, rows);
        });
        first_row_ = first;
        last_row_ = last;
    }
    void set_z_test(std::int32_t mode) {
        for_both([mode](Test_Renderer& renderer) { renderer.set_z_test(mode); });
        is_greater_ = mode == 5;
    }
    // After calls that may fill whole rows, padding included.
    void renew_padding() {
        for_both([](Test_Renderer& renderer) {
            renderer.color().renew_padding();
            renderer.depth()->renew_padding();
        });
    }
    bool has_same_pixels() {
        for (std::int32_t row = 0; row < size_.y; ++row) {
            for (std::int32_t column = 0; column < size_.x; ++column) {
                if (with_.color().pixel(column, row) != without_.color().pixel(column, row) ||
                    with_.depth()->pixel(column, row) != without_.depth()->pixel(column, row)) {
                    return false;
                }
            }
        }
        return true;
    }
    // Where a depth is farther than its block's entry; empty when none is.
    std::string depth_beyond_entry() {
        krb::Depth_Blocks& blocks = krb::renderer_of(*with_).depth_blocks;
        for (std::int32_t row = first_row_; row <= last_row_ && !is_greater_; ++row) {
            for (std::int32_t column = 0; column < size_.x; ++column) {
                const std::uint16_t entry =
                    blocks.entries()[row / krb::block_rows * blocks.in_row() + column / krb::block_columns];
                if (with_.depth()->pixel(column, row) > entry) {
                    return "column " + std::to_string(column) + ", row " + std::to_string(row);
                }
            }
        }
        return {};
    }
    std::int64_t lowered_entries() {
        krb::Depth_Blocks& blocks = krb::renderer_of(*with_).depth_blocks;
        const VT_Int_Pair count = blocks_of(size_);
        const std::uint16_t* const entries = blocks.entries();
        return count.x * count.y - std::count(entries, entries + count.x * count.y, krb::farthest_depth);
    }

private:
    VT_Int_Pair size_;
    Test_Renderer with_, without_;
    std::int32_t first_row_ = 0, last_row_ = 0; // of the scissor
    bool is_greater_ = false;
};

// A band of triangles, most of them in one layer of depths.
struct Band {
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;
    std::vector<VT_Parameter> parameters;
    VT_Reference<VT_Rendition> rendition;
    std::int32_t kind;

    Band(Random& random, const VT_Int_Rectangle& window) : rendition(vorna::app::check::random_rendition(random, window)) {
        const VT_Int_Rectangle area = random.chance(20) ? grown(window, random.number(1, 60)) : window;
        const std::int32_t left = random.number(area.left, area.right), bottom = random.number(area.bottom, area.top);
        const std::int32_t height = random.number(1, random.chance(50) ? 12 : area.top + 1 - bottom);
        const std::int32_t leg = random.number(1, random.chance(50) ? 12 : 80);
        const std::int32_t range = random.chance(80) ? random.number(0, 3000) : 65535;
        const std::int32_t nearest = random.number(0, 65535 - range);
        const bool is_wild = random.chance(5);
        for (std::int32_t x = left; x <= area.right + 1 && points.size() < 200; x += leg) {
            for (const std::int32_t y : {bottom, std::min(bottom + height, area.top + 1)}) {
                const std::int32_t beyond = is_wild ? random.number(-2, 2) * 65536 : 0;
                points.push_back({x, y, nearest + random.number(0, range) + beyond});
                for (int k = 0; k < 2; ++k) {
                    parameters.push_back(static_cast<float>(random.number(0, 1000)) / 1000);
                }
            }
        }
        colors = random_colors(random, points.size());
        rendition->clip.depth_test = true;
        if (random.chance(70)) {
            rendition->face.pattern = vorna::face_pattern::solid;
            rendition->face.flags = 0;
        }
        kind = random.number(0, 2);
    }

    void draw(VT_Renderer_Data& renderer) const {
        const auto count = static_cast<std::int32_t>(points.size());
        if (kind == 0) {
            VD_Draw_DCI_Colorized_Polytriangle(renderer, *rendition, count, points.data(), colors.data(), false);
        } else if (kind == 1) {
            VD_Draw_DCI_Gouraud_Polytriangle(renderer, *rendition, count, points.data(), colors.data());
        } else {
            VD_Draw_DCI_Textured_Polytriangle(renderer, *rendition, count, points.data(), colors.data(), parameters.data(), 2,
                                              nullptr, nullptr);
        }
    }
};

void take_step(Random& random, const VT_Int_Rectangle& window, Blocks_Beside_None& both) {
    if (random.chance(70)) {
        const Band band(random, window);
        both.for_both([&](Test_Renderer& renderer) { band.draw(*renderer); });
    } else if (random.chance(60)) {
        const auto& slots = vorna::app::check::slot_names();
        const auto slot = slots[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(slots.size()) - 1))];
        const vorna::app::check::Window place{{window.right - window.left + 1, window.top - window.bottom + 1},
                                              {window.left, window.bottom}};
        const vorna::app::check::Call call = vorna::app::check::random_call(random, slot, place);
        both.for_both([&](Test_Renderer& renderer) { call.draw_with(*renderer); });
        both.renew_padding();
    } else if (random.chance(40)) {
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        rendition->window.rectangle = random.chance(30) ? window : random_rectangle(random, window);
        both.for_both([&](Test_Renderer& renderer) { VD_Clear_Depth_Rectangle(*renderer, *rendition); });
        both.renew_padding();
    } else if (random.chance(20)) {
        both.establish();
    } else if (random.chance(20)) {
        const std::int32_t last = random.number(0, window.top - window.bottom);
        both.set_scissor_rows(random.number(0, last), last);
    } else if (random.chance(50)) {
        constexpr std::int32_t modes[] = {1, 2, 5};
        both.set_z_test(random.one_of(modes));
        if (random.chance(50)) {
            // Before a clear raises the bounds that were lowered.
            both.set_z_test(5);
            const Band band(random, window);
            both.for_both([&](Test_Renderer& renderer) { band.draw(*renderer); });
            both.set_z_test(random.number(1, 2));
        }
    } else {
        const bool is_written = random.chance(60);
        both.for_both([&](Test_Renderer& renderer) { renderer.set_z_write(is_written); });
    }
}

} // namespace

TEST(Depth_Blocks, Change_no_pixel_and_bound_every_depth) {
    constexpr std::size_t cases_with_depth[] = {3, 4, 5};
    for (const std::string& kernels : available_kernel_sets()) {
        std::int64_t lowered = 0;
        for (int i = 0; i < scaled(60); ++i) {
            Random random(static_cast<std::uint64_t>(i) + 1);
            Renderer_Setup setup = random_setup(random, random.one_of(cases_with_depth));
            setup.size = {random.number(16, 170), random.number(1, 130)};
            Blocks_Beside_None both(setup, kernels);
            for (int step = 0; step < 120; ++step) {
                take_step(random, window_of(setup), both);
                ASSERT_EQ(both.depth_beyond_entry(), "")
                    << "kernel set " << kernels << ", scene " << i << ", step " << step << ", " << describe(setup);
                lowered += both.lowered_entries();
            }
            ASSERT_TRUE(both.has_same_pixels()) << "kernel set " << kernels << ", scene " << i << ", " << describe(setup);
        }
        EXPECT_GT(lowered, 1000) << "kernel set " << kernels << ": no scene hides anything";
    }
}

TEST(Depth_Blocks, Are_looked_at_less_where_batches_are_visible) {
    const Renderer_Setup setup = setup_of_case(4, {256, 64});
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = rendition->window.rectangle = window_of(setup);
    rendition->clip.depth_test = true;
    const VT_RGB32 color{1, 2, 3, 255};
    for (const std::string& kernels : available_kernel_sets()) {
        if (kernels == "portable") {
            continue; // has no batches
        }
        Test_Renderer renderer(setup, kernels);
        renderer->requested_table.add(VT_Option("Depth Blocks", 0, true));
        renderer->establish_all();
        VD_Clear_Depth_Rectangle(*renderer, *rendition);
        const auto draw = [&](const std::vector<VT_DCI_Point>& points) {
            VD_Draw_DCI_Colorized_Polytriangle(*renderer, *rendition, static_cast<std::int32_t>(points.size()), points.data(),
                                               &color, true);
        };
        std::vector<VT_DCI_Point> narrow;
        for (std::int32_t i = 0; i < 64; ++i) {
            narrow.push_back({4 * (i / 2), 60 * (i % 2), 40000});
        }
        const krb::Block_Looks& looks = *krb::renderer_of(*renderer).depth_blocks.looks();
        draw(narrow);
        draw(narrow);
        EXPECT_EQ(looks.pause_after_next, 7) << "kernel set " << kernels << ", visible";
        draw({{0, 0, 100}, {0, 64, 100}, {256, 0, 100}, {256, 64, 100}});
        draw(narrow);
        draw(narrow);
        EXPECT_EQ(looks.pause_after_next, 0) << "kernel set " << kernels << ", hidden";
    }
}
