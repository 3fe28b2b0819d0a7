// Kernels of lines and spans by themselves: for every configuration of their lists every instruction set writes the same bytes.
#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/contour.h"
#include "renderer/configuration_words.h"
#include "renderer/kernels/kernel_sets.h"
#include "renderer/lines/line_setup.h"
#include "renderer/mask/region_mask.h"
#include "tests/support/random_rules.h"

namespace {

constexpr std::int32_t width = 61, height = 40, guard = 96;

// Rows of noise, the highest first, that start at odd places. What lies between them must never change.
struct Rows {
    std::int32_t stride;
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t*> start;

    explicit Rows(std::int32_t row_bytes) : stride(row_bytes + guard), bytes(static_cast<std::size_t>(stride * (height + 2))) {
        for (std::int32_t row = 0; row < height; ++row) {
            start.push_back(bytes.data() + (height - row) * stride + guard / 2 + 3);
        }
    }
    void fill(std::uint32_t seed) {
        std::mt19937 random(seed);
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(random());
        }
    }
};

// One random call. All drawings go to the same memory, since the dither phase follows addresses.
class Call {
public:
    explicit Call(std::uint32_t seed) : seed_(seed), random_(seed), dither_(krb::make_dither(VT_Color_Cube({6, 5, 4}, 1, 7))) {
        for (std::uint8_t& byte : mask_.bytes) {
            byte = static_cast<std::uint8_t>(below(3) == 0 ? below(256) : below(2) == 0 ? 0 : 255);
        }
        mask_rows_.assign(mask_.start.begin(), mask_.start.end());
    }

    std::int32_t below(std::int32_t end) { return static_cast<std::int32_t>(random_() % static_cast<std::uint32_t>(end)); }
    VT_DCI_Point point(std::int32_t margin) {
        return {below(width + 2 * margin) - margin, below(height + 2 * margin) - margin, below(65536)};
    }
    VT_RGB32 color() {
        VT_RGB32 color = vorna::color_of(static_cast<std::uint32_t>(random_()));
        color.alpha = below(3) == 0 ? std::uint8_t{255} : color.alpha;
        return color;
    }

    template <class Target> Target target(krb::Clip_Rule clip) {
        Target target{};
        target.color_rows = color_rows().start.data();
        target.depth_rows = depth_rows().start.data();
        target.color_row_bytes = -color_rows().stride;
        target.depth_row_bytes = -depth_rows().stride;
        target.width = width;
        target.height = target.end_row = height;
        set_random_rules(target, [this](std::int32_t end) { return below(end); });
        target.dither = &dither_;
        target.dither_row = below(8);
        target.mask_rows = clip == krb::Clip_Rule::masked ? mask_rows_.data() : nullptr;
        return target;
    }

    // draw(kernel set) once for each set.
    template <class Draw> void expect_same_bytes(const std::string& configuration, Draw draw) const {
        const auto drawn = [&](const krb::Kernel_Set& set) {
            color_rows().fill(seed_);
            depth_rows().fill(~seed_);
            draw(set);
            return std::pair(color_rows().bytes, depth_rows().bytes);
        };
        const auto expected = drawn(krb::portable_kernel_set());
        for (const krb::Kernel_Set* set : krb::supported_kernel_sets()) {
            ASSERT_EQ(drawn(*set), expected) << set->name << ", configuration " << configuration << ", seed " << seed_;
        }
    }

private:
    static Rows& color_rows() {
        static Rows rows(4 * width);
        return rows;
    }
    static Rows& depth_rows() {
        static Rows rows(2 * width);
        return rows;
    }

    std::uint32_t seed_;
    std::mt19937 random_;
    krb::Dither dither_;
    Rows mask_{width / 8 + 4};
    std::vector<const std::uint8_t*> mask_rows_;
};

// Calls test(configuration, its words, call) for every configuration and seed.
template <class List, class Test> void for_every(const List& list, Test test) {
    for (const auto& configuration : list.each) {
        for (std::uint32_t seed = 0; seed < 40; ++seed) {
            Call call(seed);
            test(configuration, krb::words_of(configuration), call);
        }
    }
}

struct Random_Polyline {
    std::vector<VT_DCI_Point> points;
    std::vector<VT_RGB32> colors;

    explicit Random_Polyline(Call& call) {
        for (std::int32_t i = 2 + call.below(12); i > 0; --i) {
            if (points.empty() || call.below(2) == 0) {
                points.push_back(call.point(call.below(3) * 12));
            } else {
                const VT_DCI_Point& last = points.back();
                const std::int32_t reach = call.below(4) * 6;
                const auto near = [&](std::int32_t coordinate) { return coordinate + call.below(2 * reach + 1) - reach; };
                points.push_back({near(last.x), near(last.y), call.below(65536)});
            }
            colors.push_back(call.color());
        }
    }
};

} // namespace

TEST(Kernel_Lists, polylines_are_the_same_in_every_set) {
    for_every(krb::polyline_configurations, [](const krb::Line_Configuration& c, const std::string& words, Call& call) {
        const Random_Polyline line(call);
        const auto target = call.target<krb::Line_Target>(c.clip);
        const krb::Polyline polyline{static_cast<std::int32_t>(line.points.size()), line.points.data(), line.colors.data(),
                                     c.shading == krb::Line_Shading::flat && call.below(2) == 0,
                                     static_cast<std::uint8_t>(call.below(256))};
        call.expect_same_bytes(words, [&](const krb::Kernel_Set& set) { set.lines->polylines[c](target, polyline); });
    });
}

TEST(Kernel_Lists, short_segments_in_all_directions_are_the_same_in_every_set) {
    Call call(1);
    const krb::Line_Configuration c = krb::polyline_configurations.each[0];
    ASSERT_TRUE(c.shading == krb::Line_Shading::index && c.pixel == krb::Pixel_Rule::store && c.clip == krb::Clip_Rule::open);
    const auto target = call.target<krb::Line_Target>(c.clip);
    for (std::int32_t dy = -17; dy <= 17; ++dy) {
        for (std::int32_t dx = -17; dx <= 17; ++dx) {
            const VT_DCI_Point points[] = {{30, 20, 0}, {30 + dx, 20 + dy, 0}};
            const krb::Polyline polyline{2, points, nullptr, true, static_cast<std::uint8_t>(call.below(256))};
            call.expect_same_bytes(krb::words_of(c) + " to " + std::to_string(dx) + ", " + std::to_string(dy),
                                   [&](const krb::Kernel_Set& set) { set.lines->polylines[c](target, polyline); });
        }
    }
}

TEST(Kernel_Lists, masked_polylines_do_not_depend_on_what_is_known_of_the_mask) {
    for_every(krb::polyline_configurations, [](const krb::Line_Configuration& c, const std::string& words, Call& call) {
        if (c.clip != krb::Clip_Rule::masked) {
            return;
        }
        VT_Contour_Set::Contour triangle;
        for (int i = 0; i < 3; ++i) {
            const VT_DCI_Point corner = call.point(40);
            triangle.push_back({static_cast<float>(corner.x), static_cast<float>(corner.y), 0});
        }
        krb::Region_Mask mask;
        mask.rasterize({width, height}, {0, 0}, VT_Contour_Set({triangle}));
        const Random_Polyline line(call);
        auto target = call.target<krb::Line_Target>(c.clip);
        target.mask_rows = mask.rows();
        const krb::Polyline polyline{static_cast<std::int32_t>(line.points.size()), line.points.data(), line.colors.data(), false,
                                     7};
        call.expect_same_bytes(words, [&](const krb::Kernel_Set& set) {
            target.clipped_cells = &set == &krb::portable_kernel_set() ? krb::Clipped_Cells{} : mask.clipped_cells();
            set.lines->polylines[c](target, polyline);
        });
    });
}

TEST(Kernel_Lists, cut_segments_are_the_same_in_every_set) {
    for_every(krb::cut_segment_configurations, [](const krb::Line_Configuration& c, const std::string& words, Call& call) {
        const auto target = call.target<krb::Line_Target>(c.clip);
        const VT_Int_Rectangle rectangle{call.below(20), width - 1 - call.below(20), call.below(15), height - 1 - call.below(15)};
        const VT_DCI_Point inside{rectangle.left + call.below(rectangle.right - rectangle.left + 1),
                                  rectangle.bottom + call.below(rectangle.top - rectangle.bottom + 1), call.below(65536)};
        VT_DCI_Point outside = call.point(100);
        while (outside.x >= rectangle.left && outside.x <= rectangle.right && outside.y >= rectangle.bottom &&
               outside.y <= rectangle.top) {
            outside = call.point(100);
        }
        krb::Cut_Segment segment{};
        const bool enters = call.below(2) == 0;
        segment.from = enters ? outside : inside;
        segment.to = enters ? inside : outside;
        if (!krb::set_visible_part(rectangle, segment)) {
            return;
        }
        const krb::Line_Ramps ramps(segment.from, segment.to, segment);
        segment.ramps_from = ramps.start();
        segment.paint.color = call.color();
        segment.paint.depth = ramps.depth(segment.from.z, segment.to.z);
        for (krb::Fixed_Interpolator* channel :
             {&segment.paint.blue, &segment.paint.green, &segment.paint.red, &segment.paint.alpha}) {
            *channel = ramps.channel(call.below(256), call.below(256));
        }
        call.expect_same_bytes(words, [&](const krb::Kernel_Set& set) { set.lines->cut_segments[c](target, segment); });
    });
}

TEST(Kernel_Lists, smoothed_polylines_are_the_same_in_every_set) {
    for_every(krb::smoothed_configurations, [](const krb::Smoothed_Configuration& c, const std::string& words, Call& call) {
        const Random_Polyline line(call);
        auto target = call.target<krb::Smoothed_Target>(c.clip);
        target.visible = {call.below(20), width - 1 - call.below(20), call.below(15), height - 1 - call.below(15)};
        target.clip = target.visible;
        const krb::Polyline polyline{static_cast<std::int32_t>(line.points.size()), line.points.data(), line.colors.data(),
                                     call.below(2) == 0, 0};
        call.expect_same_bytes(words, [&](const krb::Kernel_Set& set) { set.smoothed->polylines[c](target, polyline); });
    });
}

TEST(Kernel_Lists, filled_rows_are_the_same_in_every_set) {
    for_every(krb::fill_configurations, [](const krb::Span_Configuration& c, const std::string& words, Call& call) {
        const auto target = call.target<krb::Pixel_Target>(c.clip);
        const std::int32_t last = call.below(height / 2);
        const std::int32_t x = call.below(width);
        std::vector<std::int32_t> extents;
        for (std::int32_t row = 0; row <= last; ++row) {
            extents.push_back(call.below(std::min(x, width - 1 - x) + 2) - 1);
        }
        const krb::Mirrored_Rows shape{x, last + call.below(height - 2 * last), last, extents.data()};
        const VT_RGB32 color = call.color();
        call.expect_same_bytes(words, [&](const krb::Kernel_Set& set) { set.spans->fill[c](target, shape, color); });
    });
}

TEST(Kernel_Lists, copied_rows_are_the_same_in_every_set) {
    for_every(krb::copy_configurations, [](const krb::Span_Configuration& c, const std::string& words, Call& call) {
        const auto target = call.target<krb::Pixel_Target>(c.clip);
        const std::int32_t column = call.below(width);
        const krb::Pixel_Span span{call.below(height), column, 1 + call.below(width - column)};
        std::vector<VT_RGB32> source;
        for (std::int32_t i = 0; i < span.count; ++i) {
            source.push_back(call.color());
            source.back().alpha = call.below(4) == 0 ? std::uint8_t{0} : source.back().alpha;
        }
        const krb::Fixed_Interpolator depth{call.below(65536) << 15, call.below(1 << 20) - (1 << 19)};
        call.expect_same_bytes(words, [&](const krb::Kernel_Set& set) {
            set.spans->copy[c](target, span, reinterpret_cast<const std::uint8_t*>(source.data()), depth);
        });
    });
}
