// Random drawing.
#include "tests/support/scene.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tests/support/model/model.h"

namespace {

constexpr std::uint8_t telling_alphas[] = {0, 1, 127, 128, 254, 255, 255};

} // namespace

VT_RGB32 random_color(Random& random) {
    const std::uint8_t alpha = random.chance(70) ? random.one_of(telling_alphas) : random.byte();
    if (random.chance(40)) {
        // Few colours, so that merging and blending meet equal ones and the background.
        constexpr std::uint8_t levels[] = {0, 15, 240, 255};
        return {random.one_of(levels), random.one_of(levels), random.one_of(levels), alpha};
    }
    return {random.byte(), random.byte(), random.byte(), alpha};
}

VT_Int_Rectangle window_of(const Renderer_Setup& setup) {
    return {setup.origin.x, setup.origin.x + setup.size.x - 1, setup.origin.y, setup.origin.y + setup.size.y - 1};
}

VT_Int_Rectangle random_rectangle(Random& random, const VT_Int_Rectangle& within) {
    VT_Int_Rectangle rectangle{random.number(within.left, within.right), random.number(within.left, within.right),
                               random.number(within.bottom, within.top), random.number(within.bottom, within.top)};
    if (rectangle.left > rectangle.right) {
        std::swap(rectangle.left, rectangle.right);
    }
    if (rectangle.bottom > rectangle.top) {
        std::swap(rectangle.bottom, rectangle.top);
    }
    if (random.chance(30)) {
        rectangle.left = within.left;
        rectangle.right = within.right;
    }
    return rectangle;
}

std::vector<VT_RGB32> random_colors(Random& random, std::size_t count) {
    std::vector<VT_RGB32> colors;
    const bool nearly_flat = random.chance(40);
    const VT_RGB32 base = random_color(random);
    const auto near = [&](std::uint8_t value) {
        return static_cast<std::uint8_t>(std::clamp(value + random.number(-2, 2), 0, 255));
    };
    while (colors.size() < count) {
        colors.push_back(nearly_flat && random.chance(90)
                             ? VT_RGB32{near(base.blue), near(base.green), near(base.red), random.one_of(telling_alphas)}
                             : random_color(random));
    }
    return colors;
}

VT_Reference<const VT_Contour_Set> random_region(Random& random, const Renderer_Setup& setup) {
    std::vector<VT_Contour_Set::Contour> contours(static_cast<std::size_t>(random.number(0, 3)));
    for (auto& contour : contours) {
        for (std::int32_t i = random.number(3, 9); i > 0; --i) {
            contour.push_back({static_cast<float>(setup.origin.x + random.number(-20, setup.size.x + 20)),
                               static_cast<float>(setup.origin.y + random.number(-20, setup.size.y + 20)), 0});
        }
    }
    return new VT_Contour_Set(std::move(contours));
}

namespace {

VT_Reference<const VT_Palette> random_palette(Random& random) {
    if (random.chance(50)) {
        return nullptr;
    }
    std::vector<VT_RGB32> colors;
    for (std::int32_t count = random.number(1, 256); count > 0; --count) {
        colors.push_back({random.byte(), random.byte(), random.byte(), 255});
    }
    std::optional<VT_Color_Cube> cube;
    if (random.chance(70)) {
        const VT_Int_RGB levels{random.number(2, 8), random.number(2, 8), random.number(2, 4)};
        cube.emplace(levels, random.chance(30) ? 0.5F : 1.0F, random.number(0, 255));
    }
    return VT_Reference<const VT_Palette>(new VT_Palette(std::move(colors), cube));
}

} // namespace

Renderer_Setup random_setup(Random& random, std::size_t renderer_case) {
    Renderer_Setup setup;
    setup.color_system = renderer_cases[renderer_case].color_system;
    setup.depth = renderer_cases[renderer_case].depth;
    setup.alpha = renderer_cases[renderer_case].alpha;
    setup.size = {random.chance(30) ? random.number(1, 20) : random.number(1, 100), random.number(1, 60)};
    constexpr std::int32_t reaches[] = {0, 10, 300, 100000};
    const std::int32_t reach = random.one_of(reaches);
    setup.origin = {random.number(-reach, reach), random.number(-reach, reach)};
    constexpr std::int32_t levels[] = {0, 1, 4, 250, 255, 256};
    setup.background = random.chance(50) ? VT_Int_RGB{255, 255, 255}
                                         : VT_Int_RGB{random.one_of(levels), random.one_of(levels), random.one_of(levels)};
    setup.force_merge = random.chance(15);
    setup.palette = random_palette(random);
    setup.palette_before = random.chance(20) ? random_palette(random) : nullptr;
    // Pixels lie at multiples of their size, and nothing more is promised.
    const std::int32_t unit = setup.has_indices() ? 1 : 4;
    setup.color_layout = {random.number(0, 63 / unit) * unit, random.number(0, 40 / unit) * unit};
    setup.depth_layout = {random.number(0, 31) * 2, random.number(0, 20) * 2};
    return setup;
}

namespace {

VT_Reference<const VT_Pattern_Bitmap> random_bitmap(Random& random) {
    const std::int32_t width = random.number(1, 20), height = random.number(1, 12);
    std::vector<std::uint8_t> cells;
    cells.reserve(static_cast<std::size_t>(width * height));
    for (std::int32_t i = 0; i < width * height; ++i) {
        cells.push_back(random.chance(50) ? static_cast<std::uint8_t>(random.number(1, 255)) : std::uint8_t{0});
    }
    return VT_Reference<const VT_Pattern_Bitmap>(new VT_Pattern_Bitmap(width, height, std::move(cells)));
}

VT_Reference<VT_Rendition> random_rendition(Random& random, const Renderer_Setup& setup) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->set_color(random_color(random));
    rendition->line.color = random_color(random);
    rendition->set_contrast_color(random_color(random));
    rendition->face.index = random.byte();
    rendition->face.contrast_index = random.byte();
    rendition->line.index = random.byte();

    VT_Face_Attributes& face = rendition->face;
    if (random.chance(45)) {
        face.pattern = random.chance(30) ? vorna::face_pattern::bitmap : random.number(0, 73);
    } else if (random.chance(3)) {
        face.pattern = random.number(75, 80);
    }
    face.bitmap = random_bitmap(random);
    face.flags = (random.chance(30) ? vorna::face_flag::opaque_pattern : 0) |
                 (random.chance(15) ? vorna::face_flag::inverted_pattern : 0) |
                 (random.chance(20) ? vorna::face_flag::translucent : 0) |
                 (random.chance(2) ? vorna::face_flag::special_shading : 0);

    const std::int32_t mode = random.chance(25) ? vorna::merge_drawing_mode : random.number(0, 30);
    rendition->face.mode = mode;
    rendition->line.mode = mode;
    rendition->marker.mode = mode;

    rendition->clip.hard_clip = window_of(setup);
    rendition->clip.depth_test = random.chance(80);
    return rendition;
}

// Points of one call: where they lie and how far apart.
class Point_Cloud {
public:
    Point_Cloud(Random& random, const VT_Int_Rectangle& window) : random_(random), area_(window) {
        if (random.chance(40)) {
            // Small triangles, as in a fine mesh.
            const std::int32_t reach = random.number(1, 6);
            const std::int32_t x = random.number(window.left, window.right), y = random.number(window.bottom, window.top);
            area_ = {std::max(window.left, x - reach), std::min(window.right, x + reach), std::max(window.bottom, y - reach),
                     std::min(window.top, y + reach)};
        } else if (random.chance(25)) {
            // Slivers.
            area_.left = random.number(window.left, window.right);
            area_.right = std::min(window.right, area_.left + random.number(0, 3));
        }
        z_least_ = random.chance(40) ? 0 : random.number(0, 65535);
        z_most_ = random.chance(40) ? 65535 : random.number(z_least_, std::min(65535, z_least_ + 300));
        z_most_ = std::max(z_most_, z_least_);
        only_extreme_z_ = random.chance(15);
    }

    VT_DCI_Point next(const std::vector<VT_DCI_Point>& before) {
        VT_DCI_Point point{random_.number(area_.left, area_.right), random_.number(area_.bottom, area_.top),
                           random_.number(z_least_, z_most_)};
        if (only_extreme_z_) {
            point.z = random_.chance(50) ? z_least_ : z_most_;
        }
        // Repeated points, horizontal and vertical edges.
        if (!before.empty() && random_.chance(20)) {
            const VT_DCI_Point& earlier = random_.one_of(before);
            const std::int32_t what = random_.number(1, 3);
            point.x = (what & 1) ? earlier.x : point.x;
            point.y = (what & 2) ? earlier.y : point.y;
        }
        return point;
    }

private:
    Random& random_;
    VT_Int_Rectangle area_;
    std::int32_t z_least_ = 0, z_most_ = 0;
    bool only_extreme_z_ = false;
};

// Floating points that round to somewhere in the window; many lie at the limits of rounding.
std::vector<VT_Point> floating(Random& random, const std::vector<VT_DCI_Point>& points, const VT_Int_Rectangle& window) {
    constexpr float telling_fractions[] = {0.0F, 0.25F, 0.4999F, 0.5F, 0.49999997F, 0.499999F, 0.75F, 0.9999F};
    const auto near = [&](std::int32_t value) {
        const float fraction = random.one_of(telling_fractions);
        return static_cast<float>(value) + (random.chance(50) ? fraction : -fraction);
    };
    std::vector<VT_Point> result;
    for (const VT_DCI_Point& point : points) {
        const VT_Point moved{near(point.x), near(point.y), near(point.z)};
        const VT_DCI_Point landed = model::rounded({moved})[0];
        const bool fits = landed.x >= window.left && landed.x <= window.right && landed.y >= window.bottom &&
                          landed.y <= window.top && landed.z >= 0 && landed.z <= 65535;
        const VT_Point exact{static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)};
        result.push_back(fits ? moved : exact);
    }
    return result;
}

// Single pixels follow regions; triangles are not modelled with them.
void clip_to_region(Random& random, VT_Clip_Attributes& clip, const Renderer_Setup& setup) {
    if (random.chance(30)) {
        clip.complex_clip = random_region(random, setup);
        clip.window_offset = {random.number(-2, 2), random.number(-2, 2)};
    }
}

// What is special to markers, of which some lie beside the window: points and hard clip may reach anywhere, depths have 32 bits.
void set_markers(Random& random, Call& call, const Renderer_Setup& setup) {
    const VT_Int_Rectangle window = window_of(setup);
    VT_Clip_Attributes& clip = call.rendition->clip;
    if (random.chance(50)) {
        clip.hard_clip = random_rectangle(random, {window.left - 3, window.right + 3, window.bottom - 3, window.top + 3});
    }
    clip_to_region(random, clip, setup);
    VT_Marker_Attributes& marker = call.rendition->marker;
    marker.color = random_color(random);
    marker.index = random.byte();
    marker.symbol = random.chance(3) ? random.number(1, 8) : 0;
    marker.size = random.chance(10) ? random.number(0, 3) : 1;
    constexpr VT_DCI_Point shifts[] = {{0, 0, 0}, {0, 0, 0},  {0, 0, 65536}, {0, 0, -65536},
                                       {1, 0, 0}, {-1, 1, 0}, {0, -2, 0},    {2, 2, 1 << 30}};
    for (VT_DCI_Point& point : call.points) {
        const VT_DCI_Point& shift = random.one_of(shifts);
        point = {point.x + shift.x, point.y + shift.y, point.z + shift.z};
        // On the sides, inside and one pixel outside.
        if (random.chance(20)) {
            point.x = (random.chance(50) ? clip.hard_clip.right : window.right) + random.number(0, 1);
        } else if (random.chance(20)) {
            point.y = (random.chance(50) ? clip.hard_clip.bottom : window.bottom) - random.number(0, 1);
        }
    }
    call.single_color = random.chance(30);
    if (random.chance(40)) {
        call.colors = random_colors(random, call.single_color ? 1 : call.points.size());
    }
}

Call random_call(Random& random, const Renderer_Setup& setup) {
    const VT_Int_Rectangle window = window_of(setup);
    Call call;
    call.rendition = random_rendition(random, setup);
    call.z_write = random.chance(75);
    constexpr std::int32_t z_tests[] = {2, 2, 1, 5, 0, 7};
    call.z_test = random.one_of(z_tests);

    constexpr Call_Kind kinds[] = {Call_Kind::dot,     Call_Kind::marker,    Call_Kind::flat,
                                   Call_Kind::flat,    Call_Kind::colorized, Call_Kind::colorized,
                                   Call_Kind::gouraud, Call_Kind::gouraud,   Call_Kind::gouraud};
    call.kind = random.one_of(kinds);
    if (random.chance(4)) {
        call.kind = setup.depth && random.chance(60) ? Call_Kind::clear_depth : Call_Kind::draw_window;
    }
    if (call.kind == Call_Kind::draw_window || call.kind == Call_Kind::clear_depth) {
        VT_Window_Attributes& painted = call.rendition->window;
        const bool may_reach_out = call.kind == Call_Kind::draw_window;
        const std::int32_t reach = may_reach_out ? 30 : 0;
        painted.rectangle =
            random_rectangle(random, {window.left - reach, window.right + reach, window.bottom - reach, window.top + reach});
        painted.color = random_color(random);
        painted.index = random.byte();
        painted.fill = random.chance(15) ? random.number(0, 73) : vorna::face_pattern::solid;
        return call;
    }

    Point_Cloud cloud(random, window);
    std::int32_t count = random.chance(70) ? random.number(3, 8) : random.number(3, 40);
    if (random.chance(2)) {
        count = random.number(0, 2);
    }
    if (call.kind == Call_Kind::dot) {
        count = 1;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        call.points.push_back(cloud.next(call.points));
    }

    if (call.kind == Call_Kind::marker) {
        set_markers(random, call, setup);
        return call;
    }
    const std::size_t triangle_count = call.points.size() < 3 ? 0 : call.points.size() - 2;
    if (call.kind == Call_Kind::dot) {
        call.colors = random_colors(random, random.chance(50) ? 1 : 0);
        // Dots compare their whole depth, not its low 16 bits.
        call.points[0].z += random.chance(10) ? random.number(-3, 3) * 65536 : 0;
        clip_to_region(random, call.rendition->clip, setup);
    } else if (call.kind == Call_Kind::colorized) {
        call.single_color = random.chance(30);
        call.colors = random_colors(random, call.single_color ? 1 : triangle_count);
    } else if (call.kind == Call_Kind::gouraud) {
        call.colors = random_colors(random, call.points.size());
    }
    if (call.kind != Call_Kind::dot && !call.points.empty() && random.chance(25)) {
        call.floating_points = floating(random, call.points, window);
        call.points = model::rounded(call.floating_points);
    }
    return call;
}

const char* name_of(Call_Kind kind) {
    switch (kind) {
    case Call_Kind::dot:
        return "dot";
    case Call_Kind::marker:
        return "polymarker";
    case Call_Kind::flat:
        return "flat polytriangle";
    case Call_Kind::colorized:
        return "colorized polytriangle";
    case Call_Kind::gouraud:
        return "gouraud polytriangle";
    case Call_Kind::draw_window:
        return "draw window";
    case Call_Kind::clear_depth:
        return "clear depth";
    }
    return "";
}

std::ostream& operator<<(std::ostream& out, VT_RGB32 color) {
    return out << std::hex << vorna::word_of(color) << std::dec;
}

} // namespace

std::string describe(const Call& call) {
    std::ostringstream out;
    const VT_Face_Attributes& face = call.rendition->face;
    const char* const shapes[] = {"", "device line, ", "plane line, "};
    const VT_Int_Rectangle& clip = call.rendition->clip.hard_clip;
    out << shapes[static_cast<int>(call.shape)] << (call.floating_points.empty() ? "" : "DC ") << name_of(call.kind) << ", clip "
        << clip.left << ' ' << clip.right << ' ' << clip.bottom << ' ' << clip.top << ", region "
        << static_cast<bool>(call.rendition->clip.complex_clip) << ", line flags " << call.rendition->line.flags << ", z test "
        << call.z_test << ", z write " << call.z_write << ", depth switch " << call.rendition->clip.depth_test << ", pattern "
        << face.pattern << ", flags " << face.flags << ", mode " << face.mode << ", face " << face.color << ", contrast "
        << face.contrast_color << ", line " << call.rendition->line.color << " = " << int{call.rendition->line.index}
        << ", marker " << call.rendition->marker.color << " = " << int{call.rendition->marker.index} << " of symbol "
        << call.rendition->marker.symbol << " and size " << call.rendition->marker.size << ", single color " << call.single_color
        << "\n  points";
    for (const VT_DCI_Point& point : call.points) {
        out << " (" << point.x << ' ' << point.y << ' ' << point.z << ')';
    }
    out << "\n  colors";
    for (const VT_RGB32 color : call.colors) {
        out << ' ' << color;
    }
    return out.str();
}

Scene random_scene(std::size_t renderer_case, std::uint64_t seed) {
    Random random(seed * std::size(renderer_cases) + renderer_case);
    Scene scene;
    scene.setup = random_setup(random, renderer_case);
    scene.setup.use_mask = random.chance(80);
    const model::Model blank(scene.setup);
    const auto pixel_count = static_cast<std::size_t>(scene.setup.size.x) * static_cast<std::size_t>(scene.setup.size.y);
    const bool is_untouched = random.chance(40);
    const bool is_far = random.chance(50);
    while (scene.colors.size() < pixel_count) {
        std::uint32_t pixel = scene.setup.has_indices() ? random.byte() : vorna::word_of(random_color(random));
        scene.colors.push_back(is_untouched || random.chance(40) ? blank.background : pixel);
        scene.depths.push_back(is_far ? std::uint16_t{0xFFFF} : static_cast<std::uint16_t>(random.number(0, 65535)));
    }
    for (std::int32_t count = random.number(2, 8); count > 0; --count) {
        scene.calls.push_back(random_call(random, scene.setup));
    }
    return scene;
}
