// Frame buffers and shared images.
#include <cstdint>
#include <stdexcept>

#include <gtest/gtest.h>

#include "host/frame_buffer.h"

namespace {

TEST(Frame_Buffer, Rows_Are_Aligned_Contiguous_Top_First_And_Zero) {
    struct Case {
        Buffer_Format format;
        int width, bytes_per_row;
    };
    for (const Case& c :
         {Case{Buffer_Format::index8, 1, 64}, Case{Buffer_Format::index8, 65, 192}, Case{Buffer_Format::rgb32, 16, 64},
          Case{Buffer_Format::rgb32, 17, 192}, Case{Buffer_Format::depth16, 65, 192}}) {
        const VT_Reference<Frame_Buffer> buffer = vorna::make_frame_buffer(c.width, 5, c.format);
        EXPECT_EQ(buffer->reference_count(), 1U);
        EXPECT_EQ(buffer->width, c.width);
        EXPECT_EQ(buffer->height, 5);
        EXPECT_EQ(buffer->format, c.format);
        EXPECT_EQ(buffer->bytes_per_row, c.bytes_per_row);
        for (int r = 0; r < 5; ++r) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer->rows[r]) % 64, 0U);
            EXPECT_EQ(buffer->rows[0] - buffer->rows[r], std::ptrdiff_t{r} * c.bytes_per_row);
        }
        int sum = 0;
        for (int i = 0; i < 5 * c.bytes_per_row; ++i) {
            sum += buffer->rows[4][i];
        }
        EXPECT_EQ(sum, 0);
    }
}

TEST(Frame_Buffer, Refuses_Sizes_And_Formats_That_Cannot_Be) {
    EXPECT_THROW(vorna::make_frame_buffer(0, 1, Buffer_Format::rgb32), std::invalid_argument);
    EXPECT_THROW(vorna::make_frame_buffer(1, 16385, Buffer_Format::rgb32), std::invalid_argument);
    EXPECT_THROW(vorna::make_frame_buffer(1, 1, Buffer_Format::whatever_is_there), std::invalid_argument);
    EXPECT_EQ(vorna::make_frame_buffer(16384, 1, Buffer_Format::rgb32)->bytes_per_row, 65600);
}

TEST(Shared_Image, Borrows_Copies_Or_Owns) {
    std::uint8_t pixels[6] = {1, 2, 3, 4, 5, 6};
    VT_Shared_Image borrowed(2, 2, Buffer_Format::index8, 3, pixels, false, true);
    VT_Shared_Image copied(2, 2, Buffer_Format::index8, 3, pixels, true, false);
    VT_Shared_Image own(2, 2, Buffer_Format::index8, 3, nullptr, false, false);
    const VT_Shared_Image clone = borrowed;
    pixels[3] = 9;
    EXPECT_EQ(borrowed.row(1)[0], 9);
    EXPECT_EQ(copied.row(1)[0], 4);
    EXPECT_EQ(own.row(1)[0], 0);
    EXPECT_EQ(clone.row(1)[0], 4) << "a copy does not hang on borrowed memory";
    EXPECT_TRUE(clone.bottom_up());
    EXPECT_NE(clone.serial(), borrowed.serial());
}

} // namespace
