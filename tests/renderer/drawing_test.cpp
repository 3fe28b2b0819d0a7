// What the renderer draws is what the model draws, with every kernel set and to the last byte.
#include <iterator>

#include <gtest/gtest.h>

#include "tests/support/comparison.h"
#include "tests/support/scene.h"

namespace {

constexpr std::uint64_t first_seed = 1;

// One test a renderer case.
class Drawing : public testing::TestWithParam<std::size_t> {
protected:
    static std::size_t index() { return GetParam(); }
    static Renderer_Setup setup() { return setup_of_case(GetParam()); }
};

std::string name_of_case(const testing::TestParamInfo<std::size_t>& of) {
    const auto& is = renderer_cases[of.param];
    return std::string(is.color_system == 1 ? "Colors" : "Indices") + (is.depth ? "_Depth" : "") + (is.alpha ? "_Alpha" : "");
}

INSTANTIATE_TEST_SUITE_P(Every_case, Drawing, testing::Range(std::size_t{0}, std::size(renderer_cases)), name_of_case);

// Where the renderer and the model part in a scene, and with which call; empty when they do not.
std::string difference_in(const Scene& scene) {
    Comparison comparison(scene.setup);
    comparison.set_contents(scene.colors, scene.depths);
    for (std::size_t k = 0; k < scene.calls.size(); ++k) {
        const std::string difference = comparison.draw(scene.calls[k]);
        if (!difference.empty()) {
            return difference + "\n" + describe(scene.setup) + "\ncall " + std::to_string(k) + ": " + describe(scene.calls[k]);
        }
    }
    return {};
}

Call triangle_call(Call_Kind kind, std::vector<VT_DCI_Point> points, const Renderer_Setup& setup) {
    Call call;
    call.kind = kind;
    call.rendition = VT_Reference<VT_Rendition>(new VT_Rendition);
    call.rendition->set_color({200, 120, 40, 90});
    call.rendition->clip.hard_clip = {setup.origin.x, setup.origin.x + setup.size.x - 1, setup.origin.y,
                                      setup.origin.y + setup.size.y - 1};
    call.points = std::move(points);
    for (std::size_t i = 0; i < call.points.size(); ++i) {
        const auto level = static_cast<std::uint8_t>(i * 61);
        call.colors.push_back({level, static_cast<std::uint8_t>(255 - level), 77, static_cast<std::uint8_t>(60 + level)});
    }
    return call;
}

} // namespace

TEST_P(Drawing, Random_scenes_match_the_model) {
    for (int i = 0; i < scaled(700); ++i) {
        const std::uint64_t seed = first_seed + static_cast<std::uint64_t>(i);
        Scene scene = random_scene(index(), seed);
        if (i % 12 == 0) {
            // Nothing is promised about the address of a buffer or the distance of its rows, only that rows hold their pixels.
            scene.setup.color_layout = {i / 12 % 64, i / 12 % 17};
            scene.setup.depth_layout = {i / 12 % 37, i / 12 % 9};
        }
        const std::string difference = difference_in(scene);
        ASSERT_TRUE(difference.empty()) << difference << "\nseed " << seed;
    }
}

TEST_P(Drawing, Spans_of_every_length_at_every_alignment_match_the_model) {
    Renderer_Setup wanted = setup();
    wanted.size = {90, 3};
    const std::vector<std::uint32_t> colors(270, wanted.has_indices() ? 7 : 0x80405060);
    const std::vector<std::uint16_t> depths(270, 0x9000);
    const std::int32_t unit = wanted.has_indices() ? 1 : 4;
    const std::int32_t column_step = scaled(3) < 3 ? 5 : 1;
    for (std::int32_t offset = 0; offset < 64; offset += 5 * unit) {
        wanted.color_layout = {offset, 3 * unit};
        wanted.depth_layout = {offset / 2 * 2, 6};
        Comparison comparison(wanted);
        for (std::int32_t length = 1; length <= 70; ++length) {
            for (std::int32_t left = 0; left < 16; left += column_step) {
                const std::int32_t right = left + length;
                comparison.set_contents(colors, depths);
                for (const Call_Kind kind : {Call_Kind::colorized, Call_Kind::gouraud}) {
                    // The second triangle of the strip is empty; the first one is the row 1 from left up to right.
                    const Call call =
                        triangle_call(kind, {{left, 1, 0}, {right, 1, 65535}, {left, 2, 30000}, {right, 2, 100}}, wanted);
                    const std::string difference = comparison.draw(call);
                    ASSERT_TRUE(difference.empty()) << difference << "\n" << describe(wanted) << "\n" << describe(call);
                }
            }
        }
    }
}

// Every quotient of a step counts, also after thousands of them.
TEST_P(Drawing, Long_spans_and_edges_match_the_model) {
    Random random(7);
    for (int i = 0; i < scaled(60); ++i) {
        const bool is_wide = i % 2 == 0;
        const std::int32_t length = random.number(100, 3000);
        Renderer_Setup wanted = setup();
        wanted.size = is_wide ? VT_Int_Pair{length, 6} : VT_Int_Pair{30, length};
        Comparison comparison(wanted);
        std::vector<VT_DCI_Point> points;
        for (int k = 0; k < 5; ++k) {
            const std::int32_t along = random.number(0, length - 1), across = random.number(0, is_wide ? 5 : 29);
            points.push_back({is_wide ? along : across, is_wide ? across : along, random.number(0, 65535)});
        }
        comparison.set_contents(std::vector<std::uint32_t>(static_cast<std::size_t>(wanted.size.x * wanted.size.y), 99),
                                std::vector<std::uint16_t>(static_cast<std::size_t>(wanted.size.x * wanted.size.y), 0xFFFF));
        const Call call = triangle_call(Call_Kind::gouraud, points, wanted);
        const std::string difference = comparison.draw(call);
        ASSERT_TRUE(difference.empty()) << difference << "\n" << describe(wanted) << "\n" << describe(call);
    }
}

// Where the middle vertex lies on the long edge, the tie decides whether the pixels by which the edges part later are drawn.
TEST_P(Drawing, Middle_vertices_on_the_long_edge_match_the_model) {
    Renderer_Setup wanted = setup();
    wanted.size = {160, 540};
    const VT_DCI_Point leaning_right[]{{0, 0, 9}, {71, 256, 9}, {147, 530, 9}};
    for (const std::int32_t direction : {1, -1}) {
        Comparison comparison(wanted);
        const std::vector<std::uint16_t> far_depths(160 * 540, 0xFFFF);
        comparison.set_contents(std::vector<std::uint32_t>(160 * 540, 0), far_depths);
        std::vector<VT_DCI_Point> points;
        points.reserve(std::size(leaning_right));
        for (const VT_DCI_Point& point : leaning_right) {
            points.push_back({direction > 0 ? point.x : 159 - point.x, point.y, point.z});
        }
        const Call call = triangle_call(Call_Kind::colorized, points, wanted);
        const std::string difference = comparison.draw(call);
        ASSERT_TRUE(difference.empty()) << difference << "\n" << describe(call);
    }
}

// Depths far outside 16 bits wrap the same way everywhere.
TEST_P(Drawing, Depths_beyond_sixteen_bits_match_the_model) {
    Renderer_Setup wanted = setup();
    wanted.size = {64, 40};
    Random random(99);
    constexpr std::int32_t heights[] = {0, 1, 2, 4, 8, 16, 17, 39};
    for (int i = 0; i < scaled(60); ++i) {
        Comparison comparison(wanted);
        comparison.set_contents(std::vector<std::uint32_t>(64 * 40, 0), std::vector<std::uint16_t>(64 * 40, 0xFFFF));
        std::vector<VT_DCI_Point> points;
        points.reserve(6);
        for (int k = 0; k < 6; ++k) {
            points.push_back({random.number(0, 63), random.one_of(heights), random.number(INT32_MIN, INT32_MAX)});
        }
        for (const Call_Kind kind : {Call_Kind::flat, Call_Kind::colorized, Call_Kind::gouraud}) {
            const Call call = triangle_call(kind, points, wanted);
            const std::string difference = comparison.draw(call);
            ASSERT_TRUE(difference.empty()) << difference << "\n" << describe(wanted) << "\n" << describe(call);
        }
    }
}
