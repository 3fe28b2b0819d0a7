// Ellipses and circles: what is drawn is what a plain list of the outline's pixels says, with every kernel set.
#include <algorithm>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/model/model.h"
#include "tests/support/scene.h"
#include "tests/support/test_renderer.h"
#include "vorna/draw.h"

namespace {

constexpr VT_Int_Pair window_size{97, 89};

Renderer_Setup setup_of(bool alpha, VT_Int_Pair size = window_size) {
    Renderer_Setup setup;
    setup.depth = false;
    setup.alpha = alpha;
    setup.size = size;
    return setup;
}

struct Ellipse {
    VT_DCI_Point center, radii;
    VT_RGB32 color;
    bool filled;
    double rotation;

    std::int32_t a() const { return is_turned() ? radii.y : radii.x; }
    std::int32_t b() const { return is_turned() ? radii.x : radii.y; }
    void draw(VT_Renderer_Data& renderer, const VT_Rendition& rendition) const {
        if (filled) {
            VD_Draw_DCI_Ellipse(renderer, rendition, &center, &radii, 0.0, 2 * std::numbers::pi, rotation, &color);
        } else {
            VD_Draw_DCI_Elliptical_Arc(renderer, rendition, &center, &radii, 0.0, 2 * std::numbers::pi, rotation, &color);
        }
    }

private:
    bool is_turned() const { return rotation == std::numbers::pi / 2 || rotation == 3 * std::numbers::pi / 2; }
};

// Renderers get what lies in the hard clip.
VT_Reference<VT_Rendition> wide_rendition() {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = {-9999, 9999, -9999, 9999};
    return rendition;
}

using Pixels = std::vector<VT_Int_Pair>; // columns and rows; a pixel that is listed twice is drawn twice

Pixels circle(std::int32_t x, std::int32_t y, std::int32_t r) {
    Pixels pixels{{x - r, y}, {x + r, y}, {x, y + r}, {x, y - r}};
    std::int32_t d = 1 - r, i = 0, j = r;
    while (true) {
        ++i;
        if (d > 0) {
            --j;
        }
        d += d > 0 ? 2 * (i - j) + 1 : 2 * i + 1;
        if (j < i) {
            return pixels;
        }
        pixels.insert(pixels.end(), {{x - j, y + i}, {x - j, y - i}, {x + j, y + i}, {x + j, y - i}});
        if (j == i) {
            return pixels;
        }
        pixels.insert(pixels.end(), {{x - i, y + j}, {x - i, y - j}, {x + i, y + j}, {x + i, y - j}});
    }
}

Pixels outline(const Ellipse& of) {
    const std::int32_t x = of.center.x, y = of.center.y, a = of.a(), b = of.b();
    if (a == 0 || b == 0) {
        Pixels line;
        for (std::int32_t k = -a - b; k <= a + b; ++k) {
            line.push_back(b == 0 ? VT_Int_Pair{x + k, y} : VT_Int_Pair{x, y + k});
        }
        return line;
    }
    if (a == b) {
        return circle(x, y, a);
    }
    Pixels pixels{{x - a, y}, {x + a, y}};
    std::int32_t px = 0, py = 2 * a * a * b, d = a * a / 4 - a * a * b + b * b, i = 0, j = b;
    const auto store = [&] { pixels.insert(pixels.end(), {{x - i, y + j}, {x + i, y + j}, {x - i, y - j}, {x + i, y - j}}); };
    do {
        px += 2 * b * b;
        store();
        if (d >= 0) {
            py -= 2 * a * a;
            --j;
            d += px - py + b * b;
        } else {
            d += px + b * b;
        }
        ++i;
    } while (px < py);
    while (j >= 1) {
        py -= 2 * a * a;
        store();
        --j;
        if (d < 1) {
            px += 2 * b * b;
            ++i;
            d = d - py + px + a * a;
        } else {
            d = d - py - a * a;
        }
    }
    return pixels;
}

// From the leftmost to the rightmost pixel of every row.
Pixels inside(const Pixels& outline) {
    Pixels pixels;
    for (std::int32_t row = 0; row < window_size.y; ++row) {
        std::int32_t left = window_size.x, right = -1;
        for (const VT_Int_Pair& pixel : outline) {
            left = pixel.y == row ? std::min(left, pixel.x) : left;
            right = pixel.y == row ? std::max(right, pixel.x) : right;
        }
        for (; left <= right; ++left) {
            pixels.push_back({left, row});
        }
    }
    return pixels;
}

std::uint32_t blended(std::uint32_t stored, VT_RGB32 color) {
    const VT_RGB32 old = vorna::color_of(stored);
    const int weight = color.alpha == 255 ? 256 : color.alpha;
    const auto channel = [weight](int from, int to) { return static_cast<std::uint8_t>(from + (((to - from) * weight) >> 8)); };
    return vorna::word_of({channel(old.blue, color.blue), channel(old.green, color.green), channel(old.red, color.red), 255});
}

// Everything but two overlapping rectangles' difference: edges at all columns, stretches of both kinds.
struct Region {
    VT_Int_Rectangle first, second; // columns and rows, the far ones excluded

    explicit Region(Random& random) : first(rectangle(random)), second(rectangle(random)) {}
    bool contains(VT_Int_Pair at) const { return contains(first, at) != contains(second, at); }
    VT_Reference<const VT_Contour_Set> contours() const {
        return VT_Reference<const VT_Contour_Set>(new VT_Contour_Set({contour(first), contour(second)}));
    }

private:
    static VT_Int_Rectangle rectangle(Random& random) {
        const std::int32_t left = random.number(0, 60), bottom = random.number(0, 40);
        return {left, left + random.number(1, 60), bottom, bottom + random.number(1, 60)};
    }
    static bool contains(const VT_Int_Rectangle& r, VT_Int_Pair at) {
        return at.x >= r.left && at.x < r.right && at.y >= r.bottom && at.y < r.top;
    }
    static VT_Contour_Set::Contour contour(const VT_Int_Rectangle& r) {
        const auto point = [](std::int32_t x, std::int32_t y) {
            return VT_Point{static_cast<float>(x), static_cast<float>(y), 0};
        };
        return {point(r.left, r.bottom), point(r.right, r.bottom), point(r.right, r.top), point(r.left, r.top)};
    }
};

Ellipse random_ellipse(Random& random) {
    Ellipse ellipse{};
    const std::int32_t longest = random.one_of(std::vector<std::int32_t>{2, 6, 20, 40});
    ellipse.radii = {random.number(0, longest), random.number(0, longest), 0};
    if (random.chance(40)) {
        ellipse.radii.y = ellipse.radii.x;
    }
    if (random.chance(15)) {
        constexpr VT_DCI_Point zero_decisions[] = {{12, 22, 0}, {16, 25, 0}, {21, 11, 0}, {30, 15, 0}, {30, 23, 0}, {40, 20, 0}};
        ellipse.radii = random.one_of(zero_decisions); // the decision value of the lower half becomes 0 exactly
    }
    ellipse.filled = random.chance(50);
    ellipse.rotation = random.number(0, 3) * std::numbers::pi / 2;
    ellipse.center = {random.number(ellipse.a(), window_size.x - 1 - ellipse.a()),
                      random.number(ellipse.b(), window_size.y - 1 - ellipse.b()), random.number(-9, 99999)};
    ellipse.color = vorna::color_of(static_cast<std::uint32_t>(random.number(INT32_MIN, INT32_MAX)));
    if (random.chance(40) || ellipse.radii.x == 0 || ellipse.radii.y == 0) {
        ellipse.color.alpha = 255;
    }
    return ellipse;
}

std::string describe(const Ellipse& ellipse) {
    return std::string(ellipse.filled ? "filled " : "outline ") + std::to_string(ellipse.a()) + " x " +
           std::to_string(ellipse.b()) + " at " + std::to_string(ellipse.center.x) + ", " + std::to_string(ellipse.center.y) +
           ", alpha " + std::to_string(ellipse.color.alpha);
}

} // namespace

TEST(Ellipses, Cover_their_outline_or_all_inside_it) {
    for (int seed = 0; seed < scaled(400); ++seed) {
        Random random(static_cast<std::uint64_t>(seed));
        const Region region(random);
        const bool masked = random.chance(40);
        const VT_Reference<VT_Rendition> rendition = wide_rendition();
        if (masked) {
            rendition->clip.complex_clip = region.contours();
        }
        const Ellipse ellipse = random_ellipse(random);
        const auto stored = static_cast<std::uint32_t>(random.number(INT32_MIN, INT32_MAX));
        model::Plane expected(window_size, stored);
        const Pixels edge = outline(ellipse);
        for (const VT_Int_Pair& pixel : ellipse.filled ? inside(edge) : edge) {
            if (!masked || region.contains(pixel)) {
                std::uint32_t& to = expected.at(pixel.x, pixel.y);
                to = ellipse.color.alpha == 255 ? vorna::word_of(ellipse.color) : blended(to, ellipse.color);
            }
        }
        for (const std::string& kernels : available_kernel_sets()) {
            Renderer_Setup setup = setup_of(random.chance(50));
            // Centres are columns and rows wherever the window lies; regions are not.
            setup.origin = masked ? VT_Int_Pair{} : VT_Int_Pair{random.number(-99, 99), random.number(-99, 99)};
            setup.color_layout = {random.number(0, 64), random.number(0, 9)};
            Test_Renderer renderer(setup, kernels);
            renderer->requested_table.find("Use Mask")->set(true);
            renderer->establish_all();
            for (std::int32_t i = 0; i < window_size.x * window_size.y; ++i) {
                renderer.color().set_pixel(i % window_size.x, i / window_size.x, stored);
            }
            ellipse.draw(*renderer, *rendition);
            for (std::int32_t i = 0; i < window_size.x * window_size.y; ++i) {
                const VT_Int_Pair at{i % window_size.x, i / window_size.x};
                ASSERT_EQ(renderer.color().pixel(at.x, at.y), expected.at(at.x, at.y))
                    << describe(ellipse) << ", kernels " << kernels << ", column " << at.x << " row " << at.y << " seed " << seed;
            }
        }
    }
}

// The products of these radii do not fit into 32 bits: what appears has no meaning, but nothing is written beyond the radii.
TEST(Ellipses, Stay_inside_when_their_arithmetic_wraps) {
    constexpr VT_Int_Pair radii[] = {{162, 2583}, {1100, 1000}};
    for (const VT_Int_Pair& of : radii) {
        for (const bool filled : {true, false}) {
            Test_Renderer renderer(setup_of(false, {2 * of.x + 1, 2 * of.y + 1}));
            const Ellipse ellipse{{of.x, of.y, 0}, {of.x, of.y, 0}, {1, 2, 3, 255}, filled, 0};
            ellipse.draw(*renderer, *wide_rendition());
            EXPECT_NE(renderer.color().pixel(0, of.y), 0U);
        }
    }
}

TEST(Ellipses, Go_to_the_host_unless_plain_whole_and_straight) {
    struct Case {
        VT_DCI_Point radii;
        double start, end, rotation;
        std::int32_t weight, style;
        std::uint32_t flags;
        bool host_fills, host_outlines;
    };
    constexpr double full = 2 * std::numbers::pi;
    constexpr Case cases[] = {
        {{5, 3, 0}, 0, full, 0, 1, 0, 0, false, false},
        {{-1, 3, 0}, 0, full, 0, 1, 0, 0, true, true},
        {{3, -1, 0}, 0, full, 0, 1, 0, 0, true, true},
        {{5, 5, 0}, 0.1, full, 0, 1, 0, 0, true, true},
        {{5, 5, 0}, 0, 6.28, 0, 1, 0, 0, true, true},
        // Angles count as they are in single precision.
        {{5, 5, 0}, 0, 6.2831855, 0.5, 0, 0, 0, false, false},
        {{5, 4, 0}, 0, full, 0.5, 1, 0, 0, true, true},
        {{5, 0, 0}, 0, full, 0.5, 1, 0, 0, true, true},
        {{5, 4, 0}, 0, full, 3.1415927, 1, 0, 0, false, false},
        {{5, 4, 0}, 0, full, 0, 2, 0, 0, true, true},
        {{5, 4, 0}, 0, full, 0, 1, 1, 0, true, true},
        {{5, 4, 0}, 0, full, 0, 1, 0, vorna::line_flag::smoothed, false, true},
    };
    const VT_DCI_Point center{20, 20, 0};
    const VT_RGB32 color{1, 2, 3, 255};
    const auto handed = [](bool host, const char* name) {
        return host ? std::vector<std::string>{name} : std::vector<std::string>{};
    };
    Test_Renderer renderer(setup_of(false));
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        const VT_Reference<VT_Rendition> rendition = wide_rendition();
        rendition->line.weight = c.weight;
        rendition->line.style = c.style;
        rendition->line.flags = c.flags;
        VD_Draw_DCI_Ellipse(*renderer, *rendition, &center, &c.radii, c.start, c.end, c.rotation, &color);
        EXPECT_EQ(renderer.take_handed_over(), handed(c.host_fills, "VD_Standard_Draw_DCI_Ellipse"));
        VD_Draw_DCI_Elliptical_Arc(*renderer, *rendition, &center, &c.radii, c.start, c.end, c.rotation, &color);
        EXPECT_EQ(renderer.take_handed_over(), handed(c.host_outlines, "VD_Standard_Draw_DCI_Elliptical_Arc"));
    }
    // The slots stay when there is no 32-bit buffer any more.
    renderer->current_options.set_color_system(0);
    renderer->establish_all();
    VD_Draw_DCI_Ellipse(*renderer, *wide_rendition(), &center, &cases[0].radii, 0.0, full, 0.0, &color);
    EXPECT_EQ(renderer.take_handed_over(), handed(true, "VD_Standard_Draw_DCI_Ellipse"));
}
