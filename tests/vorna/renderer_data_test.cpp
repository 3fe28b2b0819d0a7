// The renderer base, the dispatch, and standard functions.
#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vorna/draw.h"

namespace {

using testing::ElementsAre;

class Recording_Renderer final : public VT_Renderer_Data {
public:
    explicit Recording_Renderer(const VT_Renderer_Data& prototype) : VT_Renderer_Data(prototype) {
        declared_options.set_buffer_depth(16);
        standard_observer = {
            [](void* context, const char* name) { static_cast<Recording_Renderer*>(context)->log.push_back(name); }, this};
    }

    std::int32_t establish() override {
        log.push_back("establish at depth " + std::to_string(current_options.buffer_depth()));
        return 7;
    }
    void begin_picture() override { log.push_back("begin"); }
    void end_picture() override { log.push_back("end"); }
    std::int32_t update(const VT_Int_Rectangle& r) override {
        return presentation.function(presentation.context, {r.left, r.top, 0}, {r.right, r.bottom, 0}, nullptr, 0, 0) + 5;
    }

    std::vector<std::string> log;
};

TEST(Renderer_Data, Life_Cycle_Runs_The_Renderers_Hooks) {
    VT_Renderer_Data prototype;
    prototype.current_options.set_buffer_depth(32);
    prototype.requested_table.add({"Width", 0, 1});
    Recording_Renderer renderer(prototype);
    EXPECT_EQ(renderer.establish_all(), 7);
    EXPECT_NE(renderer.current_table.find("Width"), nullptr);
    renderer.begin_picture_all();
    renderer.end_picture_all();
    EXPECT_EQ(renderer.update_all({0, 1, 0, 1}), 5) << "the presentation by default shows nothing and returns 0";
    EXPECT_THAT(renderer.log, ElementsAre("establish at depth 16", "begin", "end"));
    renderer.current_options.set_buffer_depth(0);
    renderer.establish_all();
    EXPECT_EQ(renderer.log.back(), "establish at depth 0") << "no depth buffer stays none";
}

TEST(Dispatch, Takes_The_Slot_When_It_Is_Enabled_Else_The_Standard_Function) {
    static std::int32_t drawn;
    VT_Renderer_Data prototype;
    Recording_Renderer renderer(prototype);
    const VT_Rendition rendition;
    const VT_DCI_Point points[2] = {};
    renderer.current_options.set_window_size({1, 1});
    VD_Draw_DCI_Polyline(renderer, rendition, 2, points);
    EXPECT_THAT(renderer.log, ElementsAre("VD_Standard_Draw_DCI_Polyline"));

    drawn = 0;
    renderer.actions.draw_dci_polyline = {
        &renderer, [](VT_Renderer_Data&, const VT_Rendition&, std::int32_t count, const VT_DCI_Point*) { drawn = count; }, 0, 1};
    VD_Draw_DCI_Polyline(renderer, rendition, 2, points);
    EXPECT_EQ(drawn, 2);
    EXPECT_EQ(renderer.log.size(), 1U);
}

// A window of images: the host's painting goes through the slot that stores pixels as they are.
struct Painted : testing::Test {
    Painted() : renderer(prototype) {
        canvas = this;
        renderer.current_options.set_window_size({12, 10});
        renderer.current_options.set_window_origin({100, -50});
        renderer.actions.draw_dci_rgb32_image = {&renderer, image, 0, 1};
        rendition.window.color = {1, 2, 3, 128};
        rendition.drawing_flags = vorna::drawing_flag::translucent;
        rendition.clip.complex_clip = new VT_Contour_Set(std::vector<VT_Contour_Set::Contour>{});
    }

    static void image(VT_Renderer_Data&, const VT_Rendition& paint, const VT_DCI_Point* start, const VT_DCI_Point* end,
                      std::int32_t stride, const VT_RGB32* pixels, std::int32_t, const VT_Packing*) {
        EXPECT_FALSE(paint.clip.depth_test || paint.clip.complex_clip);
        EXPECT_EQ(paint.drawing_flags, 0U);
        for (std::int32_t y = start->y + 50; y >= end->y + 50; --y) {
            for (std::int32_t x = start->x - 100; x <= end->x - 100; ++x) {
                ASSERT_TRUE(x >= 0 && x < 12 && y >= 0 && y < 10) << x << ", " << y;
                EXPECT_EQ(pixels[(start->y + 50 - y) * stride / 4 + x + 100 - start->x], (VT_RGB32{1, 2, 3, 128}));
                ++canvas->count[y][x];
            }
        }
    }

    // Rows from the top down, as one looks at them.
    std::vector<std::string> picture() const {
        std::vector<std::string> rows;
        for (int y = 9; y >= 0; --y) {
            std::string row;
            for (const int dots : count[y]) {
                row += dots == 0 ? '.' : dots == 1 ? '#' : '!';
            }
            rows.push_back(row);
        }
        return rows;
    }

    static inline Painted* canvas;
    VT_Renderer_Data prototype;
    Recording_Renderer renderer;
    VT_Rendition rendition;
    int count[10][12] = {};
};

TEST_F(Painted, Rectangle_Is_Cut_To_The_Window_And_Filled_To_Its_Last_Pixel) {
    VD_Span_DC_Rectangle(renderer, rendition, 104, 1000, -47, -45);
    EXPECT_THAT(picture(), ElementsAre("............", "............", "............", "............", "....########",
                                       "....########", "....########", "............", "............", "............"));
    EXPECT_THAT(renderer.log, ElementsAre("VD_Span_DC_Rectangle"));
    VD_Span_DC_Rectangle(renderer, rendition, 0, 99, -100, 100);
    EXPECT_EQ(renderer.standard_depth, 0);
}

TEST_F(Painted, Bitmaps_Repeat_From_Their_Lowest_Row) {
    rendition.window.fill = vorna::face_pattern::bitmap;
    VD_Span_DC_Rectangle(renderer, rendition, 100, 111, -50, -41);
    EXPECT_EQ(std::count(&count[0][0], &count[0][0] + 120, 0), 120) << "no bitmap, nothing to paint";
    rendition.face.bitmap =
        VT_Reference<const VT_Pattern_Bitmap>(new VT_Pattern_Bitmap(5, 3, {1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}));
    rendition.window.rectangle = {100, 111, -50, -41};
    VD_Draw_Window(renderer, rendition);
    EXPECT_THAT(picture(), ElementsAre("##...##...##", "............", "..#....#....", "##...##...##", "............",
                                       "..#....#....", "##...##...##", "............", "..#....#....", "##...##...##"));
    EXPECT_THAT(renderer.log, ElementsAre("VD_Span_DC_Rectangle", "VD_Standard_Draw_Window")) << "the outermost only";
}

} // namespace
