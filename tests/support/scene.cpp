// Random scenes for the comparison with the naive model.
#include "tests/support/scene.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "tests/support/model/model.h"

VT_Int_Rectangle window_of(const Renderer_Setup& setup) {
    return {setup.origin.x, setup.origin.x + setup.size.x - 1, setup.origin.y, setup.origin.y + setup.size.y - 1};
}

VT_Reference<const VT_Contour_Set> random_region(Random& random, const Renderer_Setup& setup) {
    return vorna::app::check::random_region(random, window_of(setup));
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
    // Only multiples of the pixel size are guaranteed.
    const std::int32_t unit = setup.has_indices() ? 1 : 4;
    setup.color_layout = {random.number(0, 63 / unit) * unit, random.number(0, 40 / unit) * unit};
    setup.depth_layout = {random.number(0, 31) * 2, random.number(0, 20) * 2};
    return setup;
}

namespace {

VT_Reference<VT_Rendition> random_rendition(Random& random, const Renderer_Setup& setup) {
    VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    VT_Face_Attributes& face = rendition->face;
    face = random_face(random);
    if (random.chance(15)) {
        face.pattern = vorna::face_pattern::bitmap;
    } else if (random.chance(3)) {
        face.pattern = random.number(75, 80);
    }
    face.flags |= random.chance(20) ? vorna::face_flag::translucent : 0;
    face.flags |= random.chance(2) ? vorna::face_flag::special_shading : 0;
    rendition->line.color = random_color(random);
    rendition->line.index = random.byte();

    const std::int32_t mode = random.chance(25) ? vorna::merge_drawing_mode : random.number(0, 30);
    face.mode = mode;
    rendition->line.mode = mode;
    rendition->marker.mode = mode;

    rendition->clip.hard_clip = window_of(setup);
    rendition->clip.depth_test = random.chance(80);
    return rendition;
}

// Floating points near the given ones that round into the window; many lie at the limits of rounding.
std::vector<VT_Point> floating(Random& random, const std::vector<VT_DCI_Point>& points, const VT_Int_Rectangle& window) {
    constexpr float limit_fractions[] = {0.0F, 0.25F, 0.4999F, 0.5F, 0.49999997F, 0.499999F, 0.75F, 0.9999F};
    const auto near = [&](std::int32_t value) {
        const float fraction = random.one_of(limit_fractions);
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

// For single pixels: the model draws triangles without regions.
void clip_to_region(Random& random, VT_Clip_Attributes& clip, const Renderer_Setup& setup) {
    if (random.chance(30)) {
        clip.complex_clip = random_region(random, setup);
        clip.window_offset = {random.number(-2, 2), random.number(-2, 2)};
    }
}

// Sets what markers add: points and hard clips beside the window, and depths of 32 bits.
void set_markers(Random& random, Call& call, const Renderer_Setup& setup) {
    const VT_Int_Rectangle window = window_of(setup);
    VT_Clip_Attributes& clip = call.rendition->clip;
    if (random.chance(50)) {
        clip.hard_clip = random_rectangle(random, grown(window, 3));
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
        const std::int32_t reach = call.kind == Call_Kind::draw_window ? 30 : 0;
        call.rendition->window = vorna::app::check::random_window_attributes(random, grown(window, reach));
        return call;
    }

    vorna::app::check::Point_Cloud cloud(random, window);
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

} // namespace

std::string describe(const Call& call) {
    std::ostringstream out;
    constexpr const char* shapes[] = {"", "device line, ", "plane line, "};
    constexpr const char* kinds[] = {"dot", "markers", "flat", "colorized", "gouraud", "draw window", "clear depth"};
    out << shapes[static_cast<int>(call.shape)] << (call.floating_points.empty() ? "" : "DC ")
        << kinds[static_cast<int>(call.kind)] << ", z test " << call.z_test << ", z write " << call.z_write << ", single color "
        << call.single_color << "\n  " << describe(*call.rendition) << "\n  points";
    for (const VT_DCI_Point& point : call.points) {
        out << " (" << point.x << ' ' << point.y << ' ' << point.z << ')';
    }
    out << "\n  colors";
    for (const VT_RGB32 color : call.colors) {
        out << ' ' << std::hex << vorna::word_of(color);
    }
    return out.str();
}

void fill_with_noise(Test_Renderer& renderer) {
    Random random(7);
    for (std::int32_t row = 0; row < renderer.color().height; ++row) {
        for (std::int32_t column = 0; column < renderer.color().width; ++column) {
            renderer.color().set_pixel(column, row, vorna::word_of(random_color(random)));
            if (renderer.depth()) {
                renderer.depth()->set_pixel(column, row, static_cast<std::uint32_t>(random.number(0, 65535)));
            }
        }
    }
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
