// The renderer object: its options and its life, besides what `vorna check --profile krb` looks at.
#include <gtest/gtest.h>

#include "app/check/krb_profile.h"
#include "tests/support/model/model.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

class Renderer_Object : public testing::Test {
protected:
    VT_Renderer_Data prototype_;
};

} // namespace

TEST_F(Renderer_Object, Keeps_a_mask_cache_option_that_is_there) {
    const VT_Reference<VT_Counted> something(new VT_Option_Value(true));
    for (VT_Option_Table* table : {&prototype_.requested_table, &prototype_.current_table}) {
        table->add(VT_Option("Mask Cache", 6, VT_Pointer(something)));
    }
    const auto renderer = renderer_module().create_renderer(prototype_);
    for (const VT_Option_Table* table : {&renderer->requested_table, &renderer->current_table}) {
        EXPECT_EQ(table->size(), std::size(vorna::app::check::known_options));
        EXPECT_EQ(table->find("Mask Cache")->scope(), 6);
        EXPECT_EQ(table->find("Mask Cache")->as_object<VT_Option_Value>(), something.get());
    }
}

TEST_F(Renderer_Object, Installs_nothing_before_establish) {
    prototype_.set_standard_actions(true);
    const auto renderer = renderer_module().create_renderer(prototype_);
    vorna::for_each_action(
        [&](std::string_view name, auto slot, auto*) { EXPECT_EQ((renderer->actions.*slot).enabled, 0) << name; });
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
