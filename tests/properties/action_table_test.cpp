// Which slots establish fills in which case, and that it touches no others: `vorna check` sees new renderers only.
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "app/check/krb_profile.h"
#include "renderer/host/rendition.h"
#include "tests/support/test_renderer.h"

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
        const char expected = app::check::krb_slot_letter(name, index, is_tiled);
        EXPECT_EQ(slot.is_touched, expected != '-');
        if (expected == 'h') {
            EXPECT_TRUE(slot.is_host_function);
        } else if (expected != '-') {
            EXPECT_FALSE(slot.is_host_function);
        }
    }
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
