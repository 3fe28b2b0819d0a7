// Kernels that draw many small triangles at once load and store whole vectors of pixels: none reaches beyond a buffer.
#include <algorithm>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "renderer/kernels/kernel_sets.h"
#include "renderer/triangles/triangle_kernels.h"
#include "tests/reliability/fenced_buffer.h"

namespace {

constexpr std::int32_t height = 7;

// A strip over a whole window, and the buffers that it is drawn to.
struct Fenced_Strip {
    VT_Reference<Fenced_Buffer> color, depth;
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;

    Fenced_Strip(std::int32_t width, Fenced_Buffer::Side side)
        : color(new Fenced_Buffer(width, height, Buffer_Format::rgb32, side)),
          depth(new Fenced_Buffer(width, height, Buffer_Format::depth16, side)) {
        std::fill_n(depth->bytes(), depth->size(), std::uint8_t{0xFF});
        for (std::int32_t i = 0; i < width + 2; ++i) {
            points.push_back({std::min(i, width), i % 2 == 0 ? 0 : height, 100 * i});
            colors.push_back(vorna::color_of(0xFF000000U | static_cast<std::uint32_t>(i) * 0x00112031U));
        }
    }

    void draw(const krb::Kernel_Set& set, krb::Shading shading) {
        using enum krb::Pixel_Rule;
        const auto configuration = [](krb::Shading of) {
            return krb::Triangle_Configuration{of, krb::Pixel_Format::rgb32, krb::Depth_Rule::less_or_equal, store,
                                               krb::Clip_Rule::open};
        };
        krb::Triangle_Target target{};
        target.color_rows = color->rows;
        target.depth_rows = depth->rows;
        target.color_row_bytes = -color->bytes_per_row;
        target.depth_row_bytes = -depth->bytes_per_row;
        target.width = color->width;
        target.height = target.end_row = height;
        set.triangles->strips[configuration(shading)](target,
                                                      {static_cast<std::int32_t>(points.size()), points.data(), colors.data(),
                                                       false, set.triangles->strips[configuration(krb::Shading::flat)], nullptr});
    }

    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> all(color->bytes(), color->bytes() + color->size());
        all.insert(all.end(), depth->bytes(), depth->bytes() + depth->size());
        return all;
    }
};

TEST(Fenced_Triangles, small_ones_touch_nothing_beyond_the_buffers) {
    for (const krb::Kernel_Set* set : krb::supported_kernel_sets()) {
        for (std::int32_t width = set->least_width; width < 40; ++width) {
            for (const auto side : {Fenced_Buffer::Side::front, Fenced_Buffer::Side::back}) {
                for (const auto shading : {krb::Shading::flat, krb::Shading::gouraud}) {
                    SCOPED_TRACE(testing::Message() << set->name << ", " << width << " columns");
                    Fenced_Strip expected(width, side), drawn(width, side);
                    expected.draw(krb::portable_kernel_set(), shading);
                    drawn.draw(*set, shading);
                    ASSERT_TRUE(drawn.color->is_intact() && drawn.depth->is_intact());
                    ASSERT_EQ(drawn.bytes(), expected.bytes());
                }
            }
        }
    }
}

} // namespace
