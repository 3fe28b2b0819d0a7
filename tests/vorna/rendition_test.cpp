// Renditions and line types.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/rendition.h"

namespace {

TEST(Rendition, Shifted_Clips_Are_Made_Once_For_Each_Clip_And_Offset) {
    VT_Rendition rendition;
    EXPECT_FALSE(rendition.shifted_complex_clip());

    const VT_Reference<VT_Contour_Set> clip(new VT_Contour_Set({{{1, 2, 0}, {5, 2, 0}, {3, 8, 0}}}));
    rendition.clip.complex_clip = clip;
    rendition.clip.window_offset = {-10, 20};
    const VT_Reference<const VT_Contour_Set> shifted = rendition.shifted_complex_clip();
    EXPECT_EQ(shifted->contours()[0][2].x, -7);
    EXPECT_EQ(shifted->contours()[0][2].y, 28);
    EXPECT_EQ(clip->contours()[0][2].x, 3) << "the clip itself stays";
    EXPECT_EQ(rendition.shifted_complex_clip()->serial(), shifted->serial());
    EXPECT_EQ(VT_Rendition(rendition).shifted_complex_clip()->serial(), shifted->serial());

    rendition.clip.window_offset.x = -11;
    EXPECT_EQ(rendition.shifted_complex_clip()->contours()[0][2].x, -8);
    clip->translate(1, 0);
    EXPECT_EQ(rendition.shifted_complex_clip()->contours()[0][2].x, -7) << "a changed clip is shifted anew";
}

TEST(Rendition, Hard_Clip_Replaces_Or_Restricts) {
    VT_Rendition rendition;
    const auto sides = [&rendition] {
        const VT_Int_Rectangle& clip = rendition.clip.hard_clip;
        return std::array{clip.left, clip.right, clip.bottom, clip.top};
    };
    rendition.set_hard_clip_unrestricted({0, 100, 10, 50}, false);
    rendition.set_hard_clip_unrestricted({-10, 80, 5, 90}, true);
    EXPECT_THAT(sides(), testing::ElementsAre(0, 80, 10, 50));
    rendition.set_hard_clip_unrestricted({5, 90, 20, 40}, true);
    EXPECT_THAT(sides(), testing::ElementsAre(5, 80, 20, 40));
    rendition.set_hard_clip_unrestricted({-10, 800, -20, 90}, false);
    EXPECT_THAT(sides(), testing::ElementsAre(-10, 800, -20, 90));
}

TEST(Line_Type, Scaling_Multiplies_The_Lengths_Along_The_Line) {
    VT_Line_Type type;
    type.leading[0] = 1;
    type.leading[1] = 2;
    type.trailing[0] = 3;
    type.trailing[1] = 4;
    type.width = 5;
    type.lengths = {6, 0, 7};
    type.kinds = {1, 0, -1};
    type.scale(2.5);
    EXPECT_THAT(type.leading, testing::ElementsAre(2.5, 5));
    EXPECT_THAT(type.trailing, testing::ElementsAre(7.5, 10));
    EXPECT_THAT(type.lengths, testing::ElementsAre(15, 0, 17.5));
    EXPECT_THAT(type.kinds, testing::ElementsAre(1, 0, -1));
    EXPECT_EQ(type.width, 5);
}

} // namespace
