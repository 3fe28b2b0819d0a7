// What 3D polylines hand to the 2DI slots.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "renderer/core/software_z_buffer.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr double band = 0x40000000;

// The calls of the slots, as text.
std::string& handed_over() {
    static std::string calls;
    return calls;
}

void note(const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points, const VT_RGB32* colors,
          std::int32_t color_count) {
    std::string& calls = handed_over();
    const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
    EXPECT_EQ((std::vector<int>{clip.left, clip.right, clip.bottom, clip.top}), (std::vector<int>{0, 31, 4, 20}));
    calls += calls.empty() ? "" : " | ";
    for (std::int32_t i = 0; i < count; ++i) {
        calls += (i > 0 ? " " : "") + std::to_string(points[i].x) + "," + std::to_string(points[i].y);
    }
    for (std::int32_t i = 0; i < color_count; ++i) {
        calls += " #" + std::to_string(colors[i].red);
    }
}

// A window of 32 x 32 pixels at (100, -10).
class Polylines_3D : public testing::Test {
protected:
    Polylines_3D() : renderer_(setup()) {
        renderer_->current_table.find("Enable Tiling")->set(true);
        renderer_->establish();
        renderer_->actions.draw_2di_polyline.function = [](VT_Renderer_Data&, const VT_Rendition& rendition, std::int32_t count,
                                                           const VT_DCI_Point* points) {
            note(rendition, count, points, nullptr, 0);
        };
        renderer_->actions.draw_2di_colorized_polyline.function = [](VT_Renderer_Data&, const VT_Rendition& rendition,
                                                                     std::int32_t count, const VT_DCI_Point* points,
                                                                     const VT_RGB32* colors, bool single) {
            note(rendition, count, points, colors, !colors ? 0 : single ? 1 : count - 1);
        };
        renderer_->actions.draw_2di_gouraud_polyline.function =
            [](VT_Renderer_Data&, const VT_Rendition& rendition, std::int32_t count, const VT_DCI_Point* points,
               const VT_RGB32* colors) { note(rendition, count, points, colors, count); };
        rendition_->clip.hard_clip = {90, 500, -6, 10};
    }

    static Renderer_Setup setup() {
        Renderer_Setup setup;
        setup.origin = {100, -10};
        return setup;
    }

    // Plain, colorized with a colour for each segment and for all, Gouraud; the colours' red counts the points from 0 on by tens.
    enum class Kind { plain, colorized, single, gouraud };
    std::string pieces(const std::vector<VT_Point_D>& points, Kind kind = Kind::plain) {
        handed_over().clear();
        std::vector<VT_RGB32> colors(points.size());
        for (std::size_t i = 0; i < colors.size(); ++i) {
            colors[i].red = static_cast<std::uint8_t>(10 * i);
        }
        const auto count = static_cast<std::int32_t>(points.size());
        if (kind == Kind::plain) {
            VD_Draw_3D_Polyline(*renderer_, *rendition_, count, points.data());
        } else if (kind == Kind::gouraud) {
            VD_Draw_3D_Gouraud_Polyline(*renderer_, *rendition_, count, points.data(), colors.data());
        } else {
            VD_Draw_3D_Colorized_Polyline(*renderer_, *rendition_, count, points.data(), colors.data(), kind == Kind::single);
        }
        EXPECT_EQ(krb::renderer_of(*renderer_).window_origin, (VT_Int_Pair{100, -10}));
        return handed_over();
    }

    Test_Renderer renderer_;
    VT_Reference<VT_Rendition> rendition_{new VT_Rendition};
};

} // namespace

TEST_F(Polylines_3D, Are_rounded_before_they_are_moved_into_the_tile) {
    EXPECT_EQ(pieces({{-0.5, 0.5, 0}, {2.5, -2.5, 0}, {100.49, -10.51, 0}}), "-100,11 -97,8 0,-1");
    EXPECT_EQ(pieces({{100, 0, 0}}), "");
    EXPECT_EQ(pieces({{100, 0, 0}, {101, 1, 0}}, Kind::single), "0,10 1,11 #0");
}

TEST_F(Polylines_3D, Are_cut_at_the_guard_band) {
    const double right = 100 + band;
    // Out of the band, along it, and in again: the colours go with their segments and points.
    const std::vector<VT_Point_D> out_and_in{{100, 0, 0},         {right, 0, 0},  {right + 10, 0, 0},
                                             {right + 10, 10, 0}, {right, 10, 0}, {100, 10, 0}};
    const std::string edge = std::to_string(0x40000000);
    EXPECT_EQ(pieces(out_and_in), "0,10 " + edge + ",10 " + edge + ",10 | " + edge + ",20 " + edge + ",20 0,20");
    EXPECT_EQ(pieces(out_and_in, Kind::colorized),
              "0,10 " + edge + ",10 " + edge + ",10 #0 #10 | " + edge + ",20 " + edge + ",20 0,20 #30 #40");
    handed_over().clear();
    VD_Draw_3D_Colorized_Polyline(*renderer_, *rendition_, 6, out_and_in.data(), nullptr, false); // no colours stay none
    EXPECT_EQ(handed_over(), pieces(out_and_in));
    EXPECT_EQ(pieces(out_and_in, Kind::gouraud),
              "0,10 " + edge + ",10 " + edge + ",10 #0 #10 #10 | " + edge + ",20 " + edge + ",20 0,20 #40 #40 #50");
    // Through the band from outside to outside, and past it.
    EXPECT_EQ(pieces({{right + 200, 0, 0}, {100 - band - 200, 0, 0}, {100 - band - 200, 5, 0}}, Kind::colorized),
              edge + ",10 -" + edge + ",10 #0");
    EXPECT_EQ(pieces({{right + 1, 0, 0}, {right + 2, 5, 0}}), "");
    EXPECT_EQ(pieces({{101 - band, -15 - band, 0}, {95 - band, -9 - band, 0}}), "");
}

TEST_F(Polylines_3D, May_be_of_any_length) {
    for (const int count : {64, 65, 200}) {
        std::vector<VT_Point_D> points(static_cast<std::size_t>(count), {100, 0, 0});
        const std::string inside = pieces(points, Kind::gouraud);
        EXPECT_EQ(std::count(inside.begin(), inside.end(), ','), count);
        points.back().x = 1e12;
        const std::string cut = pieces(points, Kind::gouraud);
        EXPECT_EQ(std::count(cut.begin(), cut.end(), ','), count);
    }
}

// What the renderer hands back while it draws a tile. A texture of palette indices is drawn by the host throughout where there is
// no depth buffer.
TEST(Tiles, Standard_functions_draw_in_them_wherever_they_lie) {
    constexpr VT_Int_Pair size{32, 24};
    for (std::size_t renderer_case = 0; renderer_case < std::size(renderer_cases); ++renderer_case) {
        std::string pictures[2];
        for (const VT_Int_Pair origin : {VT_Int_Pair{0, 0}, VT_Int_Pair{4000, -700}}) {
            Test_Renderer renderer(setup_of_case(renderer_case, size, origin));
            renderer->current_table.find("Enable Tiling")->set(true);
            renderer->establish();
            const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
            rendition->clip.hard_clip = {origin.x - 9, origin.x + 999, origin.y - 9, origin.y + 999};
            rendition->line.weight = 5;
            rendition->line.style = vorna::line_style::dashed;
            rendition->set_color({250, 120, 30, 255});
            rendition->line.index = 190;
            const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
            const VT_Reference<VT_Shared_Image> texture(
                new VT_Shared_Image(3, 3, Buffer_Format::index8, 3, nullptr, false, true));
            for (std::uint8_t i = 0; i < 9; ++i) {
                texture->row(i / 3)[i % 3] = static_cast<std::uint8_t>(20 * i);
            }
            material->texture = texture;
            rendition->face.material = material;
            const double x = origin.x;
            const double y = origin.y;
            const VT_Point_D points[] = {{x + 2, y + 1, 500}, {x + 40, y + 3, 90}, {x + 5, y + 20, 700}, {x + 30, y + 30, 100}};
            const VT_RGB32 colors[] = {{255, 200, 255, 255}, {255, 255, 90, 255}, {90, 255, 255, 255}, {255, 255, 255, 255}};
            const VT_Parameter parameters[] = {0, 0, 1, 0, 0, 1, 1, 1};
            rendition->window.rectangle = {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1};
            VD_Clear_Depth_Rectangle(*renderer, *rendition);
            VD_Draw_3D_Textured_Polytriangle(*renderer, *rendition, 4, points, colors, parameters, 2, nullptr, nullptr);
            VD_Draw_3D_Polyline(*renderer, *rendition, 4, points);
            std::string& picture = pictures[origin.x == 0 ? 0 : 1];
            for (std::int32_t i = 0; i < size.x * size.y; ++i) {
                picture += std::to_string(renderer.color().pixel(i % size.x, i / size.x)) + ' ';
            }
        }
        EXPECT_EQ(pictures[0], pictures[1]) << "case " << renderer_case;
        EXPECT_NE(pictures[0].find_first_not_of("0 "), std::string::npos) << "something is drawn";
    }
}
