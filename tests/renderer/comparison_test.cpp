// Comparisons find what they are there to find.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/comparison.h"

namespace {

using testing::HasSubstr;

Call dot_at(std::int32_t x, std::int32_t y) {
    Call call;
    call.rendition = VT_Reference<VT_Rendition>(new VT_Rendition);
    call.points = {{x, y, 0}};
    call.colors = {{1, 2, 3, 255}};
    return call;
}

// The complaint after something happened to the last kernel set's renderer.
template <class Accident> std::string complaint_after(Accident accident) {
    Renderer_Setup setup;
    setup.size = {9, 5};
    setup.color_layout = {4, 8};
    Comparison comparison(setup);
    comparison.set_contents(std::vector<std::uint32_t>(45, 0xFF000000U), std::vector<std::uint16_t>(45, 0xFFFF));
    EXPECT_EQ(comparison.draw(dot_at(1, 1)), "");
    accident(comparison.renderer(available_kernel_sets().size() - 1));
    std::string complaint = comparison.draw(dot_at(2, 2));
    // The renderer's own check of its guards must find them whole again.
    comparison.renderer(available_kernel_sets().size() - 1).color().renew_padding();
    return complaint;
}

} // namespace

TEST(Comparisons, See_pixels_depths_guards_and_calls_that_reach_the_host) {
    const std::string pixel = complaint_after([](Test_Renderer& renderer) { renderer.color().set_pixel(8, 4, 0xFF000001U); });
    EXPECT_THAT(pixel, HasSubstr("kernel set " + available_kernel_sets().back()));
    EXPECT_THAT(pixel, HasSubstr("colour 0xff000001 instead of 0xff000000 at column 8, row 4"));
    EXPECT_THAT(complaint_after([](Test_Renderer& renderer) { renderer.depth()->set_pixel(0, 0, 0xFFFE); }),
                HasSubstr("depth 0xfffe instead of 0xffff at column 0, row 0"));
    EXPECT_THAT(complaint_after([](Test_Renderer& renderer) { renderer.color().rows[3][9 * 4 + 7] ^= 1; }),
                HasSubstr("guard byte 7 after row 3 was overwritten"));
    EXPECT_THAT(complaint_after([](Test_Renderer& renderer) {
                    renderer->standard_observer.function(renderer->standard_observer.context, "VD_Standard_Draw_DCI_Dot");
                }),
                HasSubstr("reached VD_Standard_Draw_DCI_Dot instead of nothing of the host"));
}
