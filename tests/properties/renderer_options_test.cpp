// The renderer object: its options, its setters, its life.
#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

#include "tests/model/model.h"
#include "tests/properties/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

struct Registered_Option {
    const char* name;
    std::int32_t scope;
    VT_Option_Content initial;
};

const VT_Option_Content nothing = VT_Pointer(nullptr);

const Registered_Option registered_options[] = {
    {"Margin", 0, 0},
    {"Color Buffer", 0, nothing},
    {"Depth Buffer", 0, nothing},
    {"Use Mask", 0, false},
    {"Clip Phase", 0, false},
    {"Enable Tiling", 0, false},
    {"Merge Control Background Color", 0, VT_Int_RGB{255, 255, 255}},
    {"Force Merge Control On", 0, false},
    {"ZBuffer Write", 0, nothing},
    {"ZBuffer Test", 0, nothing},
    {"Mask Cache", 1, nothing},
    {"Supports Advanced Planvex Rendering", 0, true},
    {"Supports Antialiased Lines", 0, false},
    {"Supports Gooch Shader", 0, false},
    {"Supports Shadow Mapping Shader", 0, false},
    {"Shadow Mapping Quality", 0, 0},
    {"Max Active Lights", 0, std::numeric_limits<std::int32_t>::max()},
    {"No KVX Image Support", 0, true},
    {"Hardcopy Mode", 0, false},
};

class Renderer_Object : public testing::Test {
protected:
    VT_Renderer_Data prototype_;
};

} // namespace

TEST_F(Renderer_Object, Registers_its_options_in_order_in_both_tables) {
    const auto renderer = renderer_module().create_renderer(prototype_);
    for (const VT_Option_Table* table : {&renderer->requested_table, &renderer->current_table}) {
        ASSERT_EQ(table->size(), std::size(registered_options));
        for (std::size_t i = 0; i < table->size(); ++i) {
            const VT_Option& option = (*table)[i];
            const Registered_Option& expected = registered_options[i];
            EXPECT_EQ(option.name(), expected.name);
            EXPECT_EQ(option.scope(), expected.scope) << expected.name;
            const bool is_setter = table == &renderer->current_table && option.name().rfind("ZBuffer ", 0) == 0;
            EXPECT_EQ(option.value()->content == expected.initial, !is_setter) << expected.name;
        }
    }
}

TEST_F(Renderer_Object, Keeps_a_mask_cache_option_that_is_there) {
    const VT_Reference<VT_Counted> something(new VT_Option_Value(true));
    for (VT_Option_Table* table : {&prototype_.requested_table, &prototype_.current_table}) {
        table->add(VT_Option("Mask Cache", 6, VT_Pointer(something)));
    }
    const auto renderer = renderer_module().create_renderer(prototype_);
    for (const VT_Option_Table* table : {&renderer->requested_table, &renderer->current_table}) {
        EXPECT_EQ(table->size(), std::size(registered_options));
        EXPECT_EQ(table->find("Mask Cache")->scope(), 6);
        EXPECT_EQ(table->find("Mask Cache")->as_object<VT_Option_Value>(), something.get());
    }
}

TEST_F(Renderer_Object, Declares_what_it_can_do_and_installs_nothing_before_establish) {
    prototype_.set_standard_actions(true);
    const auto renderer = renderer_module().create_renderer(prototype_);
    EXPECT_EQ(renderer->declared_options.buffer_depth(), 16);
    EXPECT_TRUE(renderer->declared_options.backing_store());
    EXPECT_TRUE(renderer->declared_options.supports_complex_clip());
    for_each_action([&](std::string_view name, auto slot, auto*) { EXPECT_EQ((renderer->actions.*slot).enabled, 0) << name; });
}

TEST_F(Renderer_Object, Refuses_kernel_sets_that_do_not_exist) {
    const Kernel_Choice choice("steam");
    EXPECT_THROW(renderer_module().create_renderer(prototype_), std::invalid_argument);
}

// A background index drawn on the background shows the alternate index.
TEST_F(Renderer_Object, Finds_the_alternate_index_of_any_palette) {
    Random random(3);
    int without_alternate = 0;
    for (int i = 0; i < scaled(300); ++i) {
        Renderer_Setup setup;
        setup.color_system = 0;
        setup.depth = false;
        setup.size = {1, 1};
        setup.force_merge = true;
        setup.background = {random.byte(), random.byte(), random.byte()};
        // Up to sixteen colours, near each other or not: some are never met on the way.
        std::vector<VT_RGB32> colors;
        const std::int32_t reach = random.number(0, 255);
        for (std::int32_t count = random.number(1, 16); count > 0; --count) {
            const auto channel = [&] { return static_cast<std::uint8_t>(random.number(0, reach)); };
            colors.push_back({channel(), channel(), channel(), 255});
        }
        setup.palette = VT_Reference<const VT_Palette>(new VT_Palette(std::move(colors)));
        const model::Model model(setup);
        without_alternate += model.alternate == model.background ? 1 : 0;

        Test_Renderer renderer(setup);
        const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        rendition->line.index = static_cast<std::uint8_t>(model.background);
        const VT_DCI_Point corner{0, 0, 0};
        renderer.color().set_pixel(0, 0, model.background);
        VD_Draw_DCI_Dot(*renderer, *rendition, &corner, nullptr);
        ASSERT_EQ(renderer.color().pixel(0, 0), model.alternate) << "palette " << i;
    }
    EXPECT_GT(without_alternate, 0);
}
