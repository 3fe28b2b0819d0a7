// Each call of the C interface draws the bytes that the drawing function of the C++ library draws.
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "tests/c_api/canvas_pair.h"

namespace {

#define FORMS(EACH)                                                                                                              \
    EACH(2d, 2D, vorna_point, VT_Point, false)                                                                                   \
    EACH(dc, DC, vorna_point, VT_Point, true)                                                                                    \
    EACH(2di, 2DI, vorna_point_i, VT_DCI_Point, false)                                                                           \
    EACH(dci, DCI, vorna_point_i, VT_DCI_Point, true)                                                                            \
    EACH(3d, 3D, vorna_point_d, VT_Point_D, false)

// The calls without colours, with one for all, with one for each segment or so, and with one for each point.
#define PLAIN(form, Form, name, Name, Point, Host, is_inside)                                                                    \
    {                                                                                                                            \
        const auto points = given.points<Point>(is_inside);                                                                      \
        EXPECT_OK(vorna_draw_##form##_##name(pair.c(), points.size(), points.data()));                                           \
        VD_Draw_##Form##_##Name(pair.canvas(), host<Host>(points));                                                              \
        pair.expect_same(#form "_" #name);                                                                                       \
    }
#define COLORIZED(form, Form, name, Name, Point, Host, is_inside, fewer)                                                         \
    for (const bool is_single : {false, true}) {                                                                                 \
        const auto points = given.points<Point>(is_inside);                                                                      \
        EXPECT_OK(vorna_draw_##form##_colorized_##name(pair.c(), points.size(), points.data(),                                   \
                                                       is_single ? 1 : points.size() - fewer, given.colors.data()));             \
        if (is_single) {                                                                                                         \
            VD_Draw_##Form##_Colorized_##Name(pair.canvas(), host<Host>(points), host(given.colors[0]));                         \
        } else {                                                                                                                 \
            VD_Draw_##Form##_Colorized_##Name(pair.canvas(), host<Host>(points), host<VT_RGB32>(given.colors));                  \
        }                                                                                                                        \
        pair.expect_same(#form "_colorized_" #name);                                                                             \
    }
#define SHADED(form, Form, name, Name, Point, Host, is_inside)                                                                   \
    {                                                                                                                            \
        const auto points = given.points<Point>(is_inside);                                                                      \
        EXPECT_OK(vorna_draw_##form##_gouraud_##name(pair.c(), points.size(), points.data(), given.colors.data()));              \
        VD_Draw_##Form##_Gouraud_##Name(pair.canvas(), host<Host>(points), host<VT_RGB32>(given.colors));                        \
        pair.expect_same(#form "_gouraud_" #name);                                                                               \
    }
#define TEXTURED_AND_POLYGON(form, Form, Point, Host, is_inside)                                                                 \
    {                                                                                                                            \
        const auto points = given.points<Point>(is_inside);                                                                      \
        EXPECT_OK(vorna_draw_##form##_textured_polytriangle(pair.c(), points.size(), points.data(), given.colors.data(),         \
                                                            given.texture_points.data()));                                       \
        VD_Draw_##Form##_Textured_Polytriangle(pair.canvas(), host<Host>(points), host<VT_RGB32>(given.colors),                  \
                                               host<VT_Parameter>(given.texture_points));                                        \
        pair.expect_same(#form "_textured_polytriangle");                                                                        \
        const auto corners = given.points<Point>(is_inside), others = given.points<Point>(is_inside);                            \
        EXPECT_OK(vorna_draw_##form##_polygon(pair.c(), 9, corners.data(), nullptr));                                            \
        VD_Draw_##Form##_Polygon(pair.canvas(), host<Host>(corners));                                                            \
        pair.expect_same(#form "_polygon");                                                                                      \
        EXPECT_OK(vorna_draw_##form##_polygon(pair.c(), 9, others.data(), &given.colors[2]));                                    \
        VD_Draw_##Form##_Polygon(pair.canvas(), host<Host>(others), host(given.colors[2]));                                      \
        pair.expect_same(#form "_polygon with a colour");                                                                        \
    }
#define DRAW_FORM(form, Form, Point, Host, is_inside)                                                                            \
    PLAIN(form, Form, polyline, Polyline, Point, Host, is_inside)                                                                \
    PLAIN(form, Form, polytriangle, Polytriangle, Point, Host, is_inside)                                                        \
    PLAIN(form, Form, polymarker, Polymarker, Point, Host, is_inside)                                                            \
    COLORIZED(form, Form, polyline, Polyline, Point, Host, is_inside, 1)                                                         \
    COLORIZED(form, Form, polytriangle, Polytriangle, Point, Host, is_inside, 2)                                                 \
    COLORIZED(form, Form, polymarker, Polymarker, Point, Host, is_inside, 0)                                                     \
    SHADED(form, Form, polyline, Polyline, Point, Host, is_inside)                                                               \
    SHADED(form, Form, polytriangle, Polytriangle, Point, Host, is_inside)                                                       \
    TEXTURED_AND_POLYGON(form, Form, Point, Host, is_inside)

void set_texture(Pair& pair) {
    std::vector<vorna_color> texels;
    for (int i = 0; i < 64; ++i) {
        texels.push_back(vorna_rgba(static_cast<std::uint8_t>(4 * i), static_cast<std::uint8_t>(255 - 3 * i), 90, 255));
    }
    const vorna_buffer buffer{texels.data(), 32, 8, 8, VORNA_RGB32};
    vorna_image *wrapped = nullptr, *image = nullptr;
    EXPECT_OK(vorna_image_wrap(&buffer, &wrapped));
    EXPECT_OK(vorna_image_create(8, 8, VORNA_RGB32, &image));
    vorna_buffer own;
    EXPECT_OK(vorna_image_buffer(image, &own));
    std::memcpy(own.pixels, texels.data(), 256);
    const double matrix[16] = {2, 0, 0, 0.25, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_OK(vorna_set_texture(pair.c(), image, matrix, nullptr));
    vorna_image_free(image); // the canvas keeps the pixels
    vorna_image_free(wrapped);
    const VT_Reference<VT_Basic_Material> material(new VT_Basic_Material);
    material->texture =
        new VT_Shared_Image(8, 8, Buffer_Format::rgb32, 32, reinterpret_cast<std::uint8_t*>(texels.data()), true, false);
    material->texture_matrix.m[0][0] = 2;
    material->texture_matrix.m[0][3] = 0.25;
    material->has_texture_matrix = true;
    pair.rendition().face.material = material;
}

// Every attribute, each with a value of its own.
void set_attributes(Pair& pair) {
    vorna_canvas* const c = pair.c();
    VT_Rendition& own = pair.rendition();
    pair.canvas().set_color(vorna::rgb(200, 40, 30, 200));
    EXPECT_OK(vorna_set_color(c, VORNA_COLOR, vorna_rgba(200, 40, 30, 200)));
    const auto set_color = [&](std::int32_t name, VT_RGB32& member, std::uint8_t* index, VT_RGB32 color) {
        member = color;
        if (index) {
            *index = pair.canvas().index_of(color);
        }
        EXPECT_OK(vorna_set_color(c, name, {color.blue, color.green, color.red, color.alpha}));
        vorna_color found;
        EXPECT_OK(vorna_get_color(c, name, &found));
        EXPECT_EQ(host(found), color);
    };
    set_color(VORNA_FACE_CONTRAST_COLOR, own.face.contrast_color, &own.face.contrast_index, vorna::rgb(0, 90, 0));
    set_color(VORNA_LINE_COLOR, own.line.color, &own.line.index, vorna::rgb(20, 40, 160));
    set_color(VORNA_LINE_CONTRAST_COLOR, own.line.contrast_color, nullptr, vorna::rgb(20, 140, 160));
    set_color(VORNA_MARKER_COLOR, own.marker.color, &own.marker.index, vorna::rgb(160, 0, 160));
    set_color(VORNA_FACE_COLOR, own.face.color, &own.face.index, vorna::rgb(210, 160, 30, 180));
    const auto set = [&](std::int32_t name, auto& member, std::int32_t value) {
        member = static_cast<std::remove_reference_t<decltype(member)>>(value);
        EXPECT_OK(vorna_set_attribute(c, name, value));
        std::int32_t found = -1;
        EXPECT_OK(vorna_get_attribute(c, name, &found));
        EXPECT_EQ(found, value) << name;
    };
    set(VORNA_FACE_PATTERN, own.face.pattern, 74);
    set(VORNA_FACE_FLAGS, own.face.flags, vorna::face_flag::opaque_pattern);
    set(VORNA_LINE_WIDTH, own.line.weight, 3);
    set(VORNA_LINE_STYLE, own.line.style, vorna::line_style::dash_dot);
    set(VORNA_LINE_CAP, own.line.cap, vorna::line_cap::square);
    set(VORNA_LINE_JOIN, own.line.join, vorna::line_join::miter);
    set(VORNA_MARKER_SYMBOL, own.marker.symbol, vorna::marker_symbol::star);
    set(VORNA_MARKER_SIZE, own.marker.size, 9);
    set(VORNA_DRAWING_FLAGS, own.drawing_flags, 8);
    set(VORNA_DEPTH_USE, own.clip.depth_test, 1);
    const std::uint8_t cells[] = {1, 0, 0, 1, 1, 0};
    own.face.bitmap = new VT_Pattern_Bitmap(3, 2, {cells, cells + 6});
    EXPECT_OK(vorna_set_face_bitmap(c, 3, 2, cells));
    own.clip.hard_clip = {-2, 80, 9, 70};
    const vorna_rectangle clip{-2, 80, 9, 70};
    EXPECT_OK(vorna_set_clip(c, &clip));
    const std::vector<vorna_point> region{{0, 10, 0},  {70, 20, 0}, {60, 66, 0}, {10, 60, 0},
                                          {20, 20, 0}, {40, 20, 0}, {40, 40, 0}};
    const std::size_t counts[] = {4, 3};
    EXPECT_OK(vorna_set_clip_region(c, 2, counts, region.data(), 3, -2));
    const auto contour = [&](std::size_t first, std::size_t count) {
        const auto part = host<VT_Point>(region).subspan(first, count);
        return VT_Contour_Set::Contour(part.begin(), part.end());
    };
    own.clip.complex_clip = new VT_Contour_Set({contour(0, 4), contour(4, 3)});
    own.clip.window_offset = {3, -2};
}

void draw_lists(Pair& pair) {
    Arguments given;
    FORMS(DRAW_FORM)
}

class Each_Format : public testing::TestWithParam<Pair_Settings> {};

TEST_P(Each_Format, lists_draw_what_the_library_draws) {
    Pair pair(GetParam());
    set_texture(pair);
    draw_lists(pair);
}

TEST_P(Each_Format, attributes_are_those_of_the_library) {
    Pair pair(GetParam());
    set_texture(pair);
    set_attributes(pair);
    draw_lists(pair);
}

TEST_P(Each_Format, line_types_and_depth_settings_are_those_of_the_library) {
    Pair pair(GetParam());
    const double lengths[] = {5, 3, 0};
    const std::int32_t kinds[] = {1, -1, 0};
    const vorna_line_type given{0, 2, 0, {}, 4, 6, 3, lengths, kinds};
    const vorna_line_type* const types[] = {&given, nullptr};
    EXPECT_OK(vorna_set_line_types(pair.c(), 2, types, 1, 1.5));
    const VT_Reference<VT_Line_Type> type(new VT_Line_Type);
    type->mode = 2;
    type->leading[0] = 4;
    type->trailing[0] = 6;
    type->lengths = {5, 3, 0};
    type->kinds = {1, -1, 0};
    const VT_Reference<VT_Line_Type_Set> set(new VT_Line_Type_Set);
    set->per_segment = true;
    set->scale = 1.5;
    set->types = {type, VT_Line_Type::None};
    pair.rendition().line.line_types = set;
    EXPECT_OK(vorna_set_attribute(pair.c(), VORNA_DEPTH_TEST, 1));
    EXPECT_OK(vorna_set_attribute(pair.c(), VORNA_DEPTH_WRITE, 0));
    pair.canvas().set_depth_test(vorna::Depth_Test::nearer);
    pair.canvas().set_depth_write(false);
    const std::vector<vorna_point_i> points{{0, 10, 700}, {60, 60, 700}, {80, 20, 700}};
    EXPECT_OK(vorna_draw_2di_polyline(pair.c(), 3, points.data()));
    VD_Draw_2DI_Polyline(pair.canvas(), host<VT_DCI_Point>(points));
    std::int32_t test = 0, write = -1;
    EXPECT_OK(vorna_get_attribute(pair.c(), VORNA_DEPTH_TEST, &test));
    EXPECT_OK(vorna_get_attribute(pair.c(), VORNA_DEPTH_WRITE, &write));
    EXPECT_EQ(test, 1);
    EXPECT_EQ(write, 0);
    pair.expect_same("2di_polyline with line types");
}

TEST_P(Each_Format, shapes_and_images_draw_what_the_library_draws) {
    Pair pair(GetParam());
    vorna_canvas* const c = pair.c();
    vorna::Canvas& canvas = pair.canvas();
    const vorna_color red = vorna_rgba(220, 30, 20, 255);
    const vorna_point_i at{20, 30, 500}, radii{15, 9, 0};
    const VT_DCI_Point host_at{20, 30, 500}, host_radii{15, 9, 0};
    EXPECT_OK(vorna_set_color(c, VORNA_COLOR, vorna_rgba(10, 90, 20, 255)));
    canvas.set_color(vorna::rgb(10, 90, 20));

    EXPECT_OK(vorna_draw_dci_ellipse(c, &at, &radii, 0, 6.3, 0.5, &red));
    VD_Draw_DCI_Ellipse(canvas, host_at, host_radii, host(red), 0, 6.3, 0.5);
    pair.expect_same("dci_ellipse");
    EXPECT_OK(vorna_draw_dci_elliptical_arc(c, &at, &radii, 0.2, 4, 0, nullptr));
    VD_Draw_DCI_Elliptical_Arc(canvas, host_at, host_radii, 0.2, 4);
    pair.expect_same("dci_elliptical_arc");
    const vorna_point_i dots[] = {{60, 50, 400}, {61, 50, 400}};
    EXPECT_OK(vorna_draw_dci_dot(c, &dots[0], &red));
    EXPECT_OK(vorna_draw_dci_dot(c, &dots[1], nullptr));
    VD_Draw_DCI_Dot(canvas, {60, 50, 400}, host(red));
    VD_Draw_DCI_Dot(canvas, {61, 50, 400});
    pair.expect_same("dci_dot");

    std::vector<std::uint8_t> indices(12 * 8);
    std::vector<vorna_color> colors(12 * 8);
    std::vector<std::uint16_t> depths(12 * 8);
    for (std::size_t i = 0; i < indices.size(); ++i) {
        indices[i] = static_cast<std::uint8_t>(i * 7);
        colors[i] = vorna_rgba(indices[i], static_cast<std::uint8_t>(i), 200, 255);
        depths[i] = static_cast<std::uint16_t>(300 - i);
    }
    // Of rows of twelve, ten; beyond the window's left and upper side.
    const vorna_point_i corner{-10, 78, 350}, other{70, 20, 340};
    EXPECT_OK(vorna_draw_dci_index8_image(c, &corner, indices.data(), 10, 8, 12));
    VD_Draw_DCI_Index8_Image(canvas, {-10, 78, 350}, {.pixels = indices, .size = {10, 8}, .stride = 12});
    EXPECT_OK(vorna_draw_dci_rgb32_image(c, &other, colors.data(), 10, 8, 48));
    VD_Draw_DCI_RGB32_Image(canvas, {70, 20, 340}, {.pixels = host<VT_RGB32>(colors), .size = {10, 8}, .stride = 12});
    EXPECT_OK(vorna_write_depth_rectangle(c, &at, depths.data(), 12, 8, 0));
    VD_Write_Depth_Rectangle(canvas, host_at, {.pixels = depths, .size = {12, 8}});
    pair.expect_same("images");
    const vorna_buffer buffer{colors.data(), 48, 12, 8, VORNA_RGB32};
    vorna_image* image = nullptr;
    EXPECT_OK(vorna_image_wrap(&buffer, &image));
    EXPECT_OK(vorna_draw_dci_image(c, &at, image));
    vorna_image_free(image);
    const VT_Reference<VT_Shared_Image> shared(
        new VT_Shared_Image(12, 8, Buffer_Format::rgb32, 48, reinterpret_cast<std::uint8_t*>(colors.data()), false, false));
    VD_Draw_DCI_Image(canvas, {20, 30, 500}, *shared);
    pair.expect_same("dci_image");

    const vorna_rectangle area{40, 55, 40, 200};
    EXPECT_OK(vorna_draw_window(c, &area, 5, red));
    pair.rendition().window = {{40, 55, 40, 200}, 5, host(red), canvas.index_of(host(red))};
    VD_Draw_Window(canvas);
    const vorna_rectangle cleared{18, 25, 26, 31};
    EXPECT_OK(vorna_clear_depth_rectangle(c, &cleared));
    pair.rendition().window.rectangle = {18, 25, 26, 31};
    VD_Clear_Depth_Rectangle(canvas);
    pair.expect_same("window actions");
}

TEST_P(Each_Format, buffers_and_images_read_what_was_drawn) {
    Pair pair(GetParam());
    Arguments given;
    const auto points = given.points<vorna_point>(false);
    EXPECT_OK(vorna_draw_2d_gouraud_polytriangle(pair.c(), points.size(), points.data(), given.colors.data()));
    std::vector<vorna_color> pixels(width * height);
    EXPECT_OK(vorna_canvas_read_pixels(pair.c(), pixels.data(), 0));
    vorna_image *color = nullptr, *depth = nullptr, *part = nullptr;
    const vorna_rectangle area{3, 12, 20, 24};
    EXPECT_OK(vorna_read_color_image(pair.c(), nullptr, &color));
    EXPECT_OK(vorna_read_color_image(pair.c(), &area, &part));
    EXPECT_OK(vorna_read_depth_image(pair.c(), nullptr, &depth));
    vorna_buffer all, some, own, depths;
    EXPECT_OK(vorna_image_buffer(color, &all));
    EXPECT_OK(vorna_image_buffer(part, &some));
    EXPECT_OK(vorna_image_buffer(depth, &depths));
    EXPECT_OK(vorna_canvas_buffer(pair.c(), &own));
    vorna_color palette[256];
    EXPECT_OK(vorna_image_palette(part, palette));
    EXPECT_EQ(own.width, width);
    EXPECT_EQ(some.width, 10);
    EXPECT_EQ(some.height, 5);
    std::vector<std::uint16_t> read(width * height);
    EXPECT_OK(vorna_canvas_read_depths(pair.c(), read.data(), 0));
    EXPECT_EQ(depths.format, VORNA_DEPTH16);
    EXPECT_EQ(std::memcmp(depths.pixels, read.data(), 2 * read.size()), 0);
    const auto pixel = [&](const vorna_buffer& buffer, int row, int column) {
        const auto* const start = static_cast<const std::uint8_t*>(buffer.pixels) + static_cast<std::size_t>(row) * buffer.stride;
        return buffer.format == VORNA_INDEX8 ? host(palette[start[column]])
                                             : host(reinterpret_cast<const vorna_color*>(start)[column]);
    };
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const VT_RGB32 expected = host(pixels[static_cast<std::size_t>(row * width + column)]);
            ASSERT_EQ(pixel(all, row, column), expected);
            ASSERT_EQ(pixel(own, row, column), expected);
            const int part_row = row - (5 + height - 1 - 24), part_column = column - 10;
            if (part_row >= 0 && part_row < 5 && part_column >= 0 && part_column < 10) {
                ASSERT_EQ(pixel(some, part_row, part_column), expected);
            }
        }
    }
    for (vorna_image* const image : {color, depth, part}) {
        vorna_image_free(image);
    }
}

INSTANTIATE_TEST_SUITE_P(C_Calls, Each_Format,
                         testing::Values(Pair_Settings{false, 1}, Pair_Settings{true, 1}, Pair_Settings{false, 3},
                                         Pair_Settings{true, 3}),
                         [](const auto& tested) {
                             return std::string(tested.param.is_indexed ? "indexed" : "colors") +
                                    (tested.param.threads > 1 ? "_by_threads" : "");
                         });

} // namespace
