// Which slots establish fills in which case, and that it touches no others: `vorna check` sees new renderers only.
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/check/krb_profile.h"
#include "host/rendition.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr std::int32_t untouched_mark = 7;

// Establishes again over slots that are marked, so that untouched ones show.
void establish_over_marks(VT_Renderer_Data& renderer) {
    vorna::for_each_action([&](std::string_view, auto slot, auto* standard) {
        renderer.actions.*slot = {nullptr, standard, 99, untouched_mark};
    });
    renderer.establish();
}

struct Installed {
    bool is_touched, is_host_function;
};

// Slots by name; the fields that every write sets are checked on the way.
std::map<std::string_view, Installed> installed_in(VT_Renderer_Data& renderer) {
    std::map<std::string_view, Installed> slots;
    vorna::for_each_action([&](std::string_view name, auto slot, auto* standard) {
        const auto& action = renderer.actions.*slot;
        slots[name] = {action.enabled != untouched_mark, action.function == standard};
        if (action.enabled != untouched_mark) {
            EXPECT_EQ(action.owner, &renderer) << name;
            EXPECT_NE(action.function, nullptr) << name;
            EXPECT_EQ(action.reserved, 0U) << name;
            EXPECT_EQ(action.enabled, 1) << name;
        }
    });
    return slots;
}

void expect_case(VT_Renderer_Data& renderer, std::size_t index, bool is_tiled) {
    const auto slots = installed_in(renderer);
    for (const auto& [name, slot] : slots) {
        SCOPED_TRACE(std::string(name) + " in " + describe(setup_of_case(index)));
        const char expected = vorna::app::check::krb_slot_letter(name, index, is_tiled);
        EXPECT_EQ(slot.is_touched, expected != '-');
        if (expected == 'h') {
            EXPECT_TRUE(slot.is_host_function);
        } else if (expected != '-') {
            EXPECT_FALSE(slot.is_host_function);
        }
    }
}

// An application may empty slots: polygons then draw through the host's standard strips, as drawing functions do.
TEST(Action_Table, Polygons_draw_through_the_standard_function_of_an_empty_slot) {
    Test_Renderer renderer(setup_of_case(1));
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {0, 31, 0, 31};
    const VT_Point corners[] = {{2, 2, 0}, {20, 2, 0}, {2, 20, 0}};
    renderer->actions.draw_2d_polytriangle = {};
    VD_Draw_2D_Polygon(*renderer, *rendition, 3, corners, nullptr);
    EXPECT_EQ(renderer.take_handed_over(), std::vector<std::string>{"VD_Standard_Draw_2D_Polytriangle"});
    renderer->actions.draw_2d_colorized_polytriangle.enabled = 0;
    const VT_RGB32 color{1, 2, 3, 255};
    VD_Draw_2D_Polygon(*renderer, *rendition, 3, corners, &color);
    EXPECT_EQ(renderer.take_handed_over(), std::vector<std::string>{"VD_Standard_Draw_2D_Colorized_Polytriangle"});
    EXPECT_EQ(renderer.color().pixel(4, 4), vorna::word_of(color));
}

} // namespace

TEST(Action_table, Holds_what_each_case_needs_and_leaves_the_rest_alone) {
    for (std::size_t index = 0; index < std::size(renderer_cases); ++index) {
        Test_Renderer renderer(setup_of_case(index));
        establish_over_marks(*renderer);
        expect_case(*renderer, index, false);
        renderer->current_table.find("Enable Tiling")->set(true);
        establish_over_marks(*renderer);
        expect_case(*renderer, index, true);
    }
}

TEST(Action_table, Takes_other_color_systems_for_palette_indices) {
    Renderer_Setup setup = setup_of_case(3);
    setup.color_system = 2;
    Test_Renderer renderer(setup);
    establish_over_marks(*renderer);
    expect_case(*renderer, 3, false);
}

TEST(Action_table, Keeps_slots_of_earlier_options_that_the_present_ones_do_not_name) {
    Test_Renderer renderer(setup_of_case(4));
    const auto textured = renderer->actions.draw_dci_textured_polytriangle;
    const auto read_depth = renderer->actions.read_depth_image;
    renderer->current_options.set_buffer_depth(0);
    renderer->establish_all();
    EXPECT_EQ(renderer->actions.draw_dci_textured_polytriangle.function, textured.function);
    EXPECT_EQ(renderer->actions.read_depth_image.function, read_depth.function);
    EXPECT_EQ(renderer->actions.read_depth_image.enabled, 1);
}

// A kept member that drew would take pixels of four bytes for ones of one, or the other way round.
TEST(Action_table, Kept_members_leave_pixels_of_the_other_format_to_the_host) {
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {0, 9, 0, 9};
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    material->texture = new VT_Shared_Image(2, 2, Buffer_Format::rgb32, 8, nullptr, false, false);
    rendition->face.material = material;
    const VT_DCI_Point points[] = {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}};
    const VT_RGB32 colors[3] = {};
    const VT_Parameter parameters[6] = {};
    for (const std::int32_t color_system : {0, 1}) {
        Test_Renderer renderer(setup_of_case(color_system == 0 ? 3 : 4));
        renderer->current_options.set_buffer_depth(0);
        renderer->current_options.set_color_system(1 - color_system);
        renderer->establish_all();
        VD_Draw_DCI_Textured_Polytriangle(*renderer, *rendition, 3, points, colors, parameters, 2, nullptr, nullptr);
        VD_Draw_2DI_Textured_Polytriangle(*renderer, *rendition, 3, points, colors, parameters, 2, nullptr, nullptr);
        EXPECT_EQ(renderer.take_handed_over(), (std::vector<std::string>{"VD_Standard_Draw_DCI_Textured_Polytriangle",
                                                                         "VD_Standard_Draw_2DI_Textured_Polytriangle"}));
    }
}

TEST(Action_table, Textures_alone_follow_alpha_blending_in_8_bits) {
    Test_Renderer renderer(setup_of_case(3));
    const auto functions = [&](bool alpha) {
        renderer->current_options.set_alpha_blending(alpha);
        renderer->establish_all();
        std::map<std::string_view, std::uintptr_t> installed;
        vorna::for_each_action([&](std::string_view name, auto slot, auto*) {
            installed[name] = reinterpret_cast<std::uintptr_t>((renderer->actions.*slot).function);
        });
        return installed;
    };
    const auto opaque = functions(false), blended = functions(true);
    for (const auto& [name, function] : opaque) {
        const bool is_textured = name.ends_with("textured_polytriangle") && !name.starts_with("draw_3d");
        EXPECT_EQ(function != blended.at(name), is_textured) << name;
    }
    EXPECT_EQ(functions(false), opaque);
}

TEST(Action_table, Leaves_ellipses_to_the_host_when_both_tables_ask_for_hardcopy) {
    Test_Renderer renderer(setup_of_case(1));
    const auto is_hosts = [&] {
        renderer->establish();
        return renderer->actions.draw_dci_ellipse.function == &VD_Standard_Draw_DCI_Ellipse &&
               renderer->actions.draw_dci_elliptical_arc.function == &VD_Standard_Draw_DCI_Elliptical_Arc;
    };
    EXPECT_FALSE(is_hosts());
    renderer->current_table.find("Hardcopy Mode")->set(true);
    EXPECT_FALSE(is_hosts());
    renderer->requested_table.find("Hardcopy Mode")->set(true);
    EXPECT_TRUE(is_hosts());
}
