// A recording: a renderer configuration and the calls that draw into it, as plain data.
//
// Keys that a document leaves out are empty here. The replay fills in defaults, because some depend on the current window and
// palette. Long lists are shared, so that a rendition can be copied and laid over another cheaply.
#pragma once

#include <cstdint>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

#include "drawing/recording/keys.h"
#include "host/actions.h"
#include "host/line_type.h"
#include "host/rendition.h"

namespace vorna::drawing::recording {

template <class Element> using Shared_List = std::shared_ptr<const std::vector<Element>>;

// Top-level keys that `establish` can change too.

struct Window {
    std::optional<std::int32_t> width;
    std::optional<std::int32_t> height;
    std::optional<VT_Int_Pair> origin;
    std::optional<bool> local_coordinates;

    static constexpr auto keys =
        std::tuple(given("width", &Window::width, form::Side()), given("height", &Window::height, form::Side()),
                   given("origin", &Window::origin), given("local_coordinates", &Window::local_coordinates));
};

struct Cube {
    std::int32_t base = 0;
    VT_Int_RGB levels;

    static constexpr auto keys =
        std::tuple(required("base", &Cube::base, form::Byte()), required("levels", &Cube::levels, form::Cube_Levels()));
};

struct Palette {
    std::optional<std::vector<VT_RGB32>> colors; // none = those of the default palette
    // Not given: the default palette's own cube, or no cube when there are colours. Given as null: no cube.
    std::optional<std::optional<Cube>> cube;

    static constexpr auto keys =
        std::tuple(given("colors", &Palette::colors, form::Opaque_Colors()), given("cube", &Palette::cube));
};

using Option_Setting = std::variant<bool, std::int32_t, VT_Int_RGB>;
using Option_Settings = std::vector<std::pair<std::string, Option_Setting>>;

struct Configuration {
    Window window;
    std::optional<std::int32_t> color_system;
    std::optional<std::int32_t> buffer_depth;
    std::optional<bool> alpha_blending;
    std::optional<Palette> palette;
    Option_Settings options;

    static constexpr auto keys =
        std::tuple(given("window", &Configuration::window), given("color_system", &Configuration::color_system),
                   given("buffer_depth", &Configuration::buffer_depth), given("alpha_blending", &Configuration::alpha_blending),
                   given("palette", &Configuration::palette), given("options", &Configuration::options));
};

// The rendition, key by key.

struct Bitmap {
    std::optional<std::int32_t> width;
    std::optional<std::int32_t> height;
    std::optional<Shared_List<std::string>> rows; // of 0 and 1, the lowest first

    static constexpr auto keys = std::tuple(given("width", &Bitmap::width, form::Side()),
                                            given("height", &Bitmap::height, form::Side()), given("rows", &Bitmap::rows));
};

struct Texture {
    std::optional<std::int32_t> width;
    std::optional<std::int32_t> height;
    std::optional<Shared_List<VT_RGB32>> texels; // the row at v = 1 first
    std::optional<VT_RGB32> color;               // of the material: shows where no texture can be drawn
    std::optional<VT_Matrix> matrix;             // that texture parameters are multiplied by

    static constexpr auto keys =
        std::tuple(given("width", &Texture::width, form::Side()), given("height", &Texture::height, form::Side()),
                   given("texels", &Texture::texels), given("color", &Texture::color), given("matrix", &Texture::matrix));
};

struct Face {
    std::optional<VT_RGB32> color;
    std::optional<std::uint8_t> index;
    std::optional<VT_RGB32> contrast_color;
    std::optional<std::uint8_t> contrast_index;
    std::optional<std::int32_t> pattern;
    std::optional<std::uint32_t> flags;
    std::optional<std::int32_t> mode; // instead of the rendition's drawing mode
    std::optional<Bitmap> bitmap;
    std::optional<Texture> texture;

    static constexpr auto keys = std::tuple(
        attribute("color", &Face::color, &VT_Face_Attributes::color),
        index_attribute("index", &Face::index, &VT_Face_Attributes::index, &VT_Face_Attributes::color),
        attribute("contrast_color", &Face::contrast_color, &VT_Face_Attributes::contrast_color),
        index_attribute("contrast_index", &Face::contrast_index, &VT_Face_Attributes::contrast_index,
                        &VT_Face_Attributes::contrast_color),
        attribute("pattern", &Face::pattern, &VT_Face_Attributes::pattern, form::Not_Negative()),
        attribute("flags", &Face::flags, &VT_Face_Attributes::flags), attribute("mode", &Face::mode, &VT_Face_Attributes::mode),
        attribute("bitmap", &Face::bitmap, &VT_Face_Attributes::bitmap),
        attribute("texture", &Face::texture, &VT_Face_Attributes::material));
};

struct Line_Element {
    double length = 0;
    std::int32_t kind = 0; // above 0 dash, below 0 gap, 0 dot
};

struct Line_Type {
    std::int32_t kind = 0;
    double width = 0;
    VT_RGB32 color;
    std::int32_t mode = 0;
    double leading = 0;
    double trailing = 0;
    std::vector<Line_Element> elements;

    static constexpr auto keys =
        std::tuple(always("kind", &Line_Type::kind), always("width", &Line_Type::width), always("color", &Line_Type::color),
                   always("mode", &Line_Type::mode), always("leading", &Line_Type::leading),
                   always("trailing", &Line_Type::trailing), always("elements", &Line_Type::elements));
};

struct Line_Type_Set {
    std::optional<bool> per_segment;
    std::optional<double> scale;
    std::optional<Shared_List<std::optional<Line_Type>>> types; // an empty entry is a segment drawn without a line type

    static constexpr auto keys = std::tuple(given("per_segment", &Line_Type_Set::per_segment),
                                            given("scale", &Line_Type_Set::scale), given("types", &Line_Type_Set::types));
};

struct Line {
    std::optional<VT_RGB32> color;
    std::optional<std::uint8_t> index;
    std::optional<std::int32_t> weight;
    std::optional<std::int32_t> style;
    std::optional<std::uint32_t> flags;
    std::optional<std::int32_t> mode;                       // instead of the rendition's drawing mode
    std::optional<std::optional<Line_Type_Set>> line_types; // given as null: a plain line
    std::optional<std::int32_t> cap;
    std::optional<std::int32_t> join;

    static constexpr auto keys = std::tuple(
        attribute("color", &Line::color, &VT_Line_Attributes::color),
        index_attribute("index", &Line::index, &VT_Line_Attributes::index, &VT_Line_Attributes::color),
        attribute("weight", &Line::weight, &VT_Line_Attributes::weight),
        attribute("style", &Line::style, &VT_Line_Attributes::style),
        attribute("flags", &Line::flags, &VT_Line_Attributes::flags), attribute("mode", &Line::mode, &VT_Line_Attributes::mode),
        attribute("line_types", &Line::line_types, &VT_Line_Attributes::line_types),
        attribute("cap", &Line::cap, &VT_Line_Attributes::cap), attribute("join", &Line::join, &VT_Line_Attributes::join));
};

struct Marker {
    std::optional<VT_RGB32> color;
    std::optional<std::uint8_t> index;
    std::optional<std::int32_t> symbol;
    std::optional<std::int32_t> size;
    std::optional<std::int32_t> mode; // instead of the rendition's drawing mode

    static constexpr auto keys =
        std::tuple(attribute("color", &Marker::color, &VT_Marker_Attributes::color),
                   index_attribute("index", &Marker::index, &VT_Marker_Attributes::index, &VT_Marker_Attributes::color),
                   attribute("symbol", &Marker::symbol, &VT_Marker_Attributes::symbol),
                   attribute("size", &Marker::size, &VT_Marker_Attributes::size),
                   attribute("mode", &Marker::mode, &VT_Marker_Attributes::mode));
};

struct Rendition {
    std::optional<VT_Int_Rectangle> hard_clip;
    std::optional<bool> depth_test;
    std::optional<std::int32_t> drawing_mode;
    std::optional<std::uint32_t> flags;
    std::optional<std::optional<Shared_List<std::vector<VT_Point>>>> complex_clip; // given as null: no clip
    std::optional<VT_Int_Pair> window_offset;
    Face face;
    Line line;
    Marker marker;

    static constexpr auto keys =
        std::tuple(given("hard_clip", &Rendition::hard_clip), given("depth_test", &Rendition::depth_test),
                   given("drawing_mode", &Rendition::drawing_mode), given("flags", &Rendition::flags),
                   given("complex_clip", &Rendition::complex_clip), given("window_offset", &Rendition::window_offset),
                   given("face", &Rendition::face), given("line", &Rendition::line), given("marker", &Rendition::marker));
};

// The rendition with another one laid over it key by key.
Rendition overlaid(const Rendition& under, const Rendition& over);

// Calls: their arguments, one kind of struct for each signature of a slot.

template <class Point> struct Points {
    std::vector<Point> points;

    static constexpr auto keys = std::tuple(required("points", &Points::points));
};

template <class Point> struct Colorized {
    std::vector<Point> points;
    std::optional<std::vector<VT_RGB32>> colors = std::vector<VT_RGB32>(); // none: the rendition's own
    bool single = false;

    static constexpr auto keys =
        std::tuple(required("points", &Colorized::points), always("colors", &Colorized::colors, form::Nullable()),
                   given("single", &Colorized::single));
};

template <class Point> struct Gouraud {
    std::vector<Point> points;
    std::vector<VT_RGB32> colors;

    static constexpr auto keys = std::tuple(required("points", &Gouraud::points), always("colors", &Gouraud::colors));
};

// Texture parameters of each point.
inline constexpr std::int32_t parameter_width = 2;

template <class Point> struct Textured {
    std::vector<Point> points;
    std::vector<VT_RGB32> colors;
    std::vector<VT_Parameter> parameters; // parameter_width of them a point

    static constexpr auto keys = std::tuple(required("points", &Textured::points), always("colors", &Textured::colors),
                                            always("parameters", &Textured::parameters));
};

template <class Point> struct Polygon {
    std::vector<Point> points;
    std::optional<VT_RGB32> color;

    static constexpr auto keys =
        std::tuple(required("points", &Polygon::points), given("color", &Polygon::color, form::Nullable()));
};

struct Dot {
    VT_DCI_Point point;
    std::optional<VT_RGB32> color;

    static constexpr auto keys = std::tuple(required("point", &Dot::point), given("color", &Dot::color, form::Nullable()));
};

struct Ellipse {
    VT_DCI_Point center;
    VT_DCI_Point radii;
    double start = 0;
    double end = 2 * std::numbers::pi;
    double rotation = 0;
    std::optional<VT_RGB32> color;

    static constexpr auto keys = std::tuple(
        required("center", &Ellipse::center), required("radii", &Ellipse::radii), always("start", &Ellipse::start),
        always("end", &Ellipse::end), always("rotation", &Ellipse::rotation), given("color", &Ellipse::color, form::Nullable()));
};

// Rows of equal length one after the other, the top row first.
template <class Pixel> struct Image_Rows {
    std::int32_t row_pixels = 0;
    std::vector<Pixel> pixels;
};

// The columns and rows from one corner to the other; less than 1 of either means no pixels.
struct Corner_Size {
    std::int64_t columns, rows;
};

constexpr Corner_Size corner_size(const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right) {
    return {std::int64_t{bottom_right.x} - top_left.x + 1, std::int64_t{top_left.y} - bottom_right.y + 1};
}

template <class Pixel> struct Corner_Image {
    VT_DCI_Point start; // top left
    VT_DCI_Point end;   // bottom right
    Image_Rows<Pixel> pixels;

    static constexpr auto keys = std::tuple(required("start", &Corner_Image::start), required("end", &Corner_Image::end),
                                            required("pixels", &Corner_Image::pixels, form::Sized()));
};

using Index8_Image = Corner_Image<std::uint8_t>;
using RGB32_Image = Corner_Image<VT_RGB32>;

struct Image {
    Buffer_Format format = Buffer_Format::rgb32;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> bytes; // rows as they lie in memory, the lowest first

    static constexpr auto keys =
        std::tuple(required("format", &Image::format), required("width", &Image::width, form::Side()),
                   required("height", &Image::height, form::Side()), required("pixels", &Image::bytes, form::Sized()));
};

struct Placed_Image {
    VT_DCI_Point start;
    std::optional<Image> image;

    static constexpr auto keys =
        std::tuple(required("start", &Placed_Image::start), always("image", &Placed_Image::image, form::Nullable()));
};

struct Window_Fill {
    VT_Int_Rectangle rectangle;
    std::optional<std::int32_t> fill;
    std::optional<VT_RGB32> color;
    std::optional<std::uint8_t> index;

    static constexpr auto keys =
        std::tuple(required("rectangle", &Window_Fill::rectangle), given("fill", &Window_Fill::fill, form::Not_Negative()),
                   given("color", &Window_Fill::color), given("index", &Window_Fill::index));
};

struct Depth_Clear {
    VT_Int_Rectangle rectangle;

    static constexpr auto keys = std::tuple(required("rectangle", &Depth_Clear::rectangle));
};

struct Depth_Write {
    VT_DCI_Point top_left;
    VT_DCI_Point bottom_right;
    std::optional<Image_Rows<std::uint16_t>> depths;

    static constexpr auto keys =
        std::tuple(required("top_left", &Depth_Write::top_left), required("bottom_right", &Depth_Write::bottom_right),
                   always("depths", &Depth_Write::depths, form::Sized()));
};

struct Image_Read {
    VT_DCI_Point top_left;
    VT_DCI_Point bottom_right;
    Buffer_Format format = Buffer_Format::whatever_is_there;

    static constexpr auto keys =
        std::tuple(required("top_left", &Image_Read::top_left), required("bottom_right", &Image_Read::bottom_right),
                   required("format", &Image_Read::format));
};

struct ZBuffer_Write {
    bool value = true;

    static constexpr auto keys = std::tuple(required("value", &ZBuffer_Write::value));
};

struct ZBuffer_Test {
    std::int32_t value = 0;

    static constexpr auto keys = std::tuple(required("value", &ZBuffer_Test::value));
};

struct Establish {
    Configuration configuration;

    static constexpr auto keys = std::tuple(given("", &Establish::configuration, form::Inlined()));
};

struct Present {
    VT_Int_Rectangle rectangle;

    static constexpr auto keys = std::tuple(required("rectangle", &Present::rectangle));
};

// The arguments of a slot's signature besides renderer and rendition.
template <class Signature> struct Arguments_Of_Signature;
template <class Point> struct Arguments_Of_Signature<VT_Draw_Points<Point>> { using Type = Points<Point>; };
template <class Point> struct Arguments_Of_Signature<VT_Draw_Colorized<Point>> { using Type = Colorized<Point>; };
template <class Point> struct Arguments_Of_Signature<VT_Draw_Gouraud<Point>> { using Type = Gouraud<Point>; };
template <class Point> struct Arguments_Of_Signature<VT_Draw_Textured<Point>> { using Type = Textured<Point>; };
template <> struct Arguments_Of_Signature<VT_Draw_Dot> { using Type = Dot; };
template <> struct Arguments_Of_Signature<VT_Draw_Ellipse> { using Type = Ellipse; };
template <> struct Arguments_Of_Signature<VT_Draw_Index8_Image> { using Type = Index8_Image; };
template <> struct Arguments_Of_Signature<VT_Draw_RGB32_Image> { using Type = RGB32_Image; };
template <> struct Arguments_Of_Signature<VT_Draw_Image> { using Type = Placed_Image; };
template <> struct Arguments_Of_Signature<VT_Write_Depth> { using Type = Depth_Write; };
template <> struct Arguments_Of_Signature<VT_Read_Image> { using Type = Image_Read; };

// Arguments of a slot, given as a member of the action table. Polygons have the signature of Gouraud primitives, and the window
// actions share one signature; these slots are listed one by one.
template <auto Slot> struct Slot_Arguments;
template <class Function, Action_Slot<Function> VT_Action_Table::*Slot>
struct Slot_Arguments<Slot> : Arguments_Of_Signature<Function> {};
template <> struct Slot_Arguments<&VT_Action_Table::draw_2d_polygon> { using Type = Polygon<VT_Point>; };
template <> struct Slot_Arguments<&VT_Action_Table::draw_dc_polygon> { using Type = Polygon<VT_Point>; };
template <> struct Slot_Arguments<&VT_Action_Table::draw_2di_polygon> { using Type = Polygon<VT_DCI_Point>; };
template <> struct Slot_Arguments<&VT_Action_Table::draw_dci_polygon> { using Type = Polygon<VT_DCI_Point>; };
template <> struct Slot_Arguments<&VT_Action_Table::draw_3d_polygon> { using Type = Polygon<VT_Point_D>; };
template <> struct Slot_Arguments<&VT_Action_Table::draw_window> { using Type = Window_Fill; };
template <> struct Slot_Arguments<&VT_Action_Table::clear_depth_rectangle> { using Type = Depth_Clear; };

using Arguments =
    std::variant<Points<VT_Point>, Points<VT_DCI_Point>, Points<VT_Point_D>, Colorized<VT_Point>, Colorized<VT_DCI_Point>,
                 Colorized<VT_Point_D>, Gouraud<VT_Point>, Gouraud<VT_DCI_Point>, Gouraud<VT_Point_D>, Textured<VT_Point>,
                 Textured<VT_DCI_Point>, Textured<VT_Point_D>, Polygon<VT_Point>, Polygon<VT_DCI_Point>, Polygon<VT_Point_D>, Dot,
                 Ellipse, Index8_Image, RGB32_Image, Placed_Image, Window_Fill, Depth_Clear, Depth_Write, Image_Read,
                 ZBuffer_Write, ZBuffer_Test, Establish, Present>;

struct Call_Kind;

struct Call {
    const Call_Kind* kind = nullptr; // never null in a recording that was read
    Arguments arguments;
    std::shared_ptr<const Rendition> rendition; // laid over the recording's; null = nothing is. Calls may share it
    bool standard = false;                      // drawn by the host as if the renderer left the slot empty
};

struct Recording {
    Configuration configuration;
    bool zbuffer_write = true;
    std::int32_t zbuffer_test = 2;
    std::optional<VT_Int_Rectangle> output; // device pixels that are written; none = the window
    Rendition rendition;
    std::vector<Call> calls;
};

} // namespace vorna::drawing::recording
