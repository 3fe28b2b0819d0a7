// The mask cache: which clip regions it keeps, and when it rasterizes.
#include <gtest/gtest.h>

#include "renderer/core/software_z_buffer.h"
#include "renderer/mask/mask_cache.h"
#include "renderer/mask/region_mask.h"
#include "vorna/draw.h"

namespace {

class Mask_Cache : public testing::Test {
protected:
    Mask_Cache() : renderer(VT_Renderer_Data()) {
        renderer.requested_table.find("Use Mask")->set(true);
        renderer.current_options.set_window_size({40, 20});
        renderer.establish_all();
    }

    static VT_Reference<VT_Rendition> clipped_to(float right) {
        VT_Reference<VT_Rendition> rendition(new VT_Rendition);
        const VT_Contour_Set::Contour box{{0, 0, 0}, {right, 0, 0}, {right, 20, 0}, {0, 20, 0}};
        rendition->clip.complex_clip = VT_Reference<const VT_Contour_Set>(new VT_Contour_Set({box}));
        return rendition;
    }
    // Whether a mask leaves a pixel of row 3.
    static bool is_open(const Frame_Buffer_Mask& mask, std::int32_t column) {
        return (mask.row(3)[column >> 3] & 0x80 >> (column & 7)) == 0;
    }
    // How many pixels of a row the newest mask leaves.
    int open_pixels() const {
        int open = 0;
        for (std::int32_t column = 0; column < 40; ++column) {
            open += is_open(*renderer.mask_cache->newest, column) ? 1 : 0;
        }
        return open;
    }

    krb::Software_Z_Buffer renderer;
};

TEST_F(Mask_Cache, keeps_four_regions_and_gives_the_oldest_mask_to_a_fifth) {
    VT_Reference<VT_Rendition> renditions[5];
    Frame_Buffer_Mask* masks[5];
    for (int i = 0; i < 5; ++i) {
        renditions[i] = clipped_to(static_cast<float>(5 + i));
    }
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(krb::find_mask(renderer, *renditions[i]));
        masks[i] = renderer.mask_cache->newest;
        EXPECT_EQ(open_pixels(), 5 + i);
    }
    // The first one is used again: the second is now the one unused for longest.
    ASSERT_TRUE(krb::find_mask(renderer, *renditions[0]));
    EXPECT_EQ(renderer.mask_cache->newest, masks[0]);
    ASSERT_TRUE(krb::find_mask(renderer, *renditions[4]));
    EXPECT_EQ(renderer.mask_cache->newest, masks[1]);
    EXPECT_EQ(open_pixels(), 9);
    EXPECT_EQ(renderer.mask_cache->count, 4);
    EXPECT_EQ(renderer.mask_cache->oldest, masks[2]);
    // What is still there is found, not made again.
    for (const int i : {3, 2, 0, 3}) {
        ASSERT_TRUE(krb::find_mask(renderer, *renditions[i]));
        EXPECT_EQ(renderer.mask_cache->newest, masks[i]);
        EXPECT_EQ(renderer.mask_cache->newest->key(), renditions[i]->clip.complex_clip->serial());
    }
}

TEST_F(Mask_Cache, looks_for_the_shifted_clip_only_when_an_offset_is_negative) {
    const VT_Reference<VT_Rendition> rendition = clipped_to(12);
    rendition->clip.window_offset = {3, 0};
    ASSERT_TRUE(krb::find_mask(renderer, *rendition));
    EXPECT_EQ(open_pixels(), 12);
    rendition->clip.window_offset = {-3, 0};
    ASSERT_TRUE(krb::find_mask(renderer, *rendition));
    EXPECT_EQ(open_pixels(), 9);
    EXPECT_EQ(renderer.mask_cache->count, 2);
    ASSERT_TRUE(krb::find_mask(renderer, *rendition));
    EXPECT_EQ(renderer.mask_cache->count, 2);
}

// A window whose last cells are cut off.
TEST(Region_Mask, counts_the_cells_with_excluded_pixels_in_the_window) {
    const VT_Int_Pair size{100, 70};
    const VT_Contour_Set::Contour triangle{{-10, -10, 0}, {180, -10, 0}, {40, 110, 0}};
    krb::Region_Mask mask;
    mask.rasterize(size, {0, 0}, VT_Contour_Set({triangle}));
    std::uint32_t clipped[3][4] = {};
    std::uint32_t sum = 0;
    for (std::int32_t y = 0; y < size.y; ++y) {
        for (std::int32_t x = 0; x < size.x; ++x) {
            if ((mask.row(y)[x >> 3] & 0x80 >> (x & 7)) != 0) {
                clipped[y / 32][x / 32] = 1;
            }
        }
    }
    const krb::Clipped_Cells cells = mask.clipped_cells();
    ASSERT_EQ(cells.row, 5);
    for (std::int32_t rows = 0; rows <= 3; ++rows) {
        for (std::int32_t columns = 0; columns <= 4; ++columns) {
            std::uint32_t expected = 0;
            for (std::int32_t i = 0; i < rows * 4; ++i) {
                expected += i % 4 < columns ? clipped[i / 4][i % 4] : 0;
            }
            EXPECT_EQ(cells.before[rows * cells.row + columns], expected) << columns << " columns, " << rows << " rows";
            sum = expected;
        }
    }
    EXPECT_TRUE(0 < sum && sum < 12) << "some cells are clipped and some are not";
}

TEST_F(Mask_Cache, is_shared_through_the_option_emptied_at_establish_and_gone_without_it) {
    ASSERT_TRUE(krb::find_mask(renderer, *clipped_to(7)));
    auto* published = renderer.requested_table.find("Mask Cache")->as_object<krb::Mask_Cache_Data>();
    ASSERT_EQ(published, renderer.mask_cache.get());

    VT_Renderer_Data prototype;
    prototype.requested_table.add(VT_Option("Mask Cache", 1, VT_Pointer(VT_Reference<VT_Counted>(published))));
    prototype.requested_table.add(VT_Option("Use Mask", 0, false));
    krb::Software_Z_Buffer other(prototype);
    other.requested_table.find("Use Mask")->set(true);
    other.current_options.set_window_size({16, 16});
    other.establish_all();
    EXPECT_EQ(other.mask_cache.get(), published);
    EXPECT_EQ(published->count, 0);
    // Each window has its own mask of a region.
    other.current_options.set_window_origin({5, 0});
    other.establish_all();
    const VT_Reference<VT_Rendition> clipped = clipped_to(7);
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(krb::find_mask(renderer, *clipped));
        EXPECT_EQ(open_pixels(), 7);
        ASSERT_TRUE(krb::find_mask(other, *clipped));
        EXPECT_TRUE(is_open(*published->newest, 1));
        EXPECT_FALSE(is_open(*published->newest, 2));
    }
    EXPECT_EQ(published->count, 2);

    EXPECT_FALSE(krb::find_mask(renderer, VT_Rendition()));
    renderer.requested_table.find("Use Mask")->set(false);
    renderer.establish_all();
    EXPECT_FALSE(renderer.mask_cache);
    EXPECT_FALSE(krb::find_mask(renderer, *clipped_to(7)));
}

// What a renderer with a clone forgets, the cache's own renderer still draws through.
TEST_F(Mask_Cache, survives_that_a_renderer_with_its_clone_is_established) {
    const VT_Reference<VT_Rendition> rendition = clipped_to(7);
    ASSERT_TRUE(krb::find_mask(renderer, *rendition));
    const VT_Reference<VT_Counted> clone(renderer.mask_cache->clone());
    krb::Software_Z_Buffer other{VT_Renderer_Data()};
    other.requested_table.find("Use Mask")->set(true);
    other.requested_table.find("Mask Cache")->set(clone);
    other.current_options.set_window_size({9, 9});
    other.establish_all();
    ASSERT_TRUE(krb::find_mask(other, *clipped_to(3)));
    EXPECT_EQ(open_pixels(), 7);
    renderer.establish_all();
    ASSERT_TRUE(krb::find_mask(renderer, *rendition));
    EXPECT_EQ(open_pixels(), 7);
}

// The host's own buffers have pixels, an application's may have none; a mask of such a window has no rows.
TEST_F(Mask_Cache, draws_nothing_in_a_window_without_pixels) {
    struct Empty_Buffer final : Frame_Buffer {
        Empty_Buffer() {
            height = 5;
            format = Buffer_Format::rgb32;
            rows = starts;
        }
        std::uint8_t* starts[5]{};
    };
    renderer.current_options.set_window_size({0, 5});
    renderer.current_options.set_color_system(1);
    renderer.requested_table.find("Color Buffer")->set(VT_Pointer(VT_Reference<VT_Counted>(new Empty_Buffer)));
    renderer.establish_all();
    const VT_Reference<VT_Rendition> rendition = clipped_to(7);
    const VT_DCI_Point points[] = {{0, 0, 0}, {0, 4, 0}, {3, 2, 0}};
    VD_Draw_2DI_Polymarker(renderer, *rendition, 3, points);
    VD_Draw_DCI_Polytriangle(renderer, *rendition, 3, points);
    VD_Draw_2DI_Polyline(renderer, *rendition, 3, points);
}

} // namespace
