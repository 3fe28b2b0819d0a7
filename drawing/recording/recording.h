// A recording: a renderer configuration and the calls that draw into it, as plain data.
//
// What a document leaves out stays empty here; defaults are filled in when the recording is replayed, because some depend on the
// window and the palette in force. Long lists are shared, so that a rendition can be copied and laid over another cheaply.
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

#include "host/actions.h"
#include "host/line_type.h"

namespace vorna::drawing::recording {

template <class Element> using Shared_List = std::shared_ptr<const std::vector<Element>>;

// Top-level keys that `establish` can change too.

struct Window {
    std::optional<std::int32_t> width;
    std::optional<std::int32_t> height;
    std::optional<VT_Int_Pair> origin;
    std::optional<bool> local_coordinates;
};

struct Cube {
    std::int32_t base = 0;
    VT_Int_RGB levels;
};

struct Palette {
    std::optional<std::vector<VT_RGB32>> colors; // none = those of the default palette
    // Not given: the default palette's own cube, or no cube when there are colours. Given as null: no cube.
    std::optional<std::optional<Cube>> cube;
};

using Option_Setting = std::variant<bool, std::int32_t, VT_Int_RGB>;

struct Configuration {
    Window window;
    std::optional<std::int32_t> color_system;
    std::optional<std::int32_t> buffer_depth;
    std::optional<bool> alpha_blending;
    std::optional<Palette> palette;
    std::vector<std::pair<std::string, Option_Setting>> options;
};

// The rendition, key by key. Every group lists its members for those who go through all of them.

struct Bitmap {
    std::optional<std::int32_t> width;
    std::optional<std::int32_t> height;
    std::optional<Shared_List<std::string>> rows; // of 0 and 1, the lowest first

    static constexpr auto keys = std::tuple(&Bitmap::width, &Bitmap::height, &Bitmap::rows);
};

struct Texture {
    std::optional<std::int32_t> width;
    std::optional<std::int32_t> height;
    std::optional<Shared_List<VT_RGB32>> texels; // the row at v = 1 first
    std::optional<VT_RGB32> color;               // of the material: shows where no texture can be drawn
    std::optional<VT_Matrix> matrix;             // that texture parameters are multiplied by

    static constexpr auto keys =
        std::tuple(&Texture::width, &Texture::height, &Texture::texels, &Texture::color, &Texture::matrix);
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

    static constexpr auto keys = std::tuple(&Face::color, &Face::index, &Face::contrast_color, &Face::contrast_index,
                                            &Face::pattern, &Face::flags, &Face::mode, &Face::bitmap, &Face::texture);
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
};

struct Line_Type_Set {
    std::optional<bool> per_segment;
    std::optional<double> scale;
    std::optional<Shared_List<std::optional<Line_Type>>> types; // an empty entry is a segment drawn without a line type

    static constexpr auto keys = std::tuple(&Line_Type_Set::per_segment, &Line_Type_Set::scale, &Line_Type_Set::types);
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

    static constexpr auto keys = std::tuple(&Line::color, &Line::index, &Line::weight, &Line::style, &Line::flags, &Line::mode,
                                            &Line::line_types, &Line::cap, &Line::join);
};

struct Marker {
    std::optional<VT_RGB32> color;
    std::optional<std::uint8_t> index;
    std::optional<std::int32_t> symbol;
    std::optional<std::int32_t> size;
    std::optional<std::int32_t> mode; // instead of the rendition's drawing mode

    static constexpr auto keys = std::tuple(&Marker::color, &Marker::index, &Marker::symbol, &Marker::size, &Marker::mode);
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
        std::tuple(&Rendition::hard_clip, &Rendition::depth_test, &Rendition::drawing_mode, &Rendition::flags,
                   &Rendition::complex_clip, &Rendition::window_offset, &Rendition::face, &Rendition::line, &Rendition::marker);
};

// The rendition with another one laid over it key by key.
Rendition overlaid(const Rendition& under, const Rendition& over);

// Calls: their arguments, one kind of struct for each signature of a slot.

template <class Point> struct Points { std::vector<Point> points; };

template <class Point> struct Colorized {
    std::vector<Point> points;
    std::optional<std::vector<VT_RGB32>> colors = std::vector<VT_RGB32>(); // none: the rendition's own
    bool single = false;
};

template <class Point> struct Gouraud {
    std::vector<Point> points;
    std::vector<VT_RGB32> colors;
};

template <class Point> struct Textured {
    static constexpr std::int32_t parameter_width = 2;

    std::vector<Point> points;
    std::vector<VT_RGB32> colors;
    std::vector<VT_Parameter> parameters; // parameter_width of them a point
};

template <class Point> struct Polygon {
    std::vector<Point> points;
    std::optional<VT_RGB32> color;
};

struct Dot {
    VT_DCI_Point point;
    std::optional<VT_RGB32> color;
};

struct Ellipse {
    VT_DCI_Point center;
    VT_DCI_Point radii;
    double start = 0;
    double end = 2 * std::numbers::pi;
    double rotation = 0;
    std::optional<VT_RGB32> color;
};

// Rows of equal length one after the other, the top row first.
template <class Pixel> struct Image_Rows {
    std::int32_t row_pixels = 0;
    std::vector<Pixel> pixels;
};

template <class Pixel> struct Corner_Image {
    VT_DCI_Point start; // top left
    VT_DCI_Point end;   // bottom right
    Image_Rows<Pixel> pixels;
};

using Index8_Image = Corner_Image<std::uint8_t>;
using RGB32_Image = Corner_Image<VT_RGB32>;

struct Image {
    Buffer_Format format = Buffer_Format::rgb32;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<std::uint8_t> bytes; // rows as they lie in memory, the lowest first
};

struct Placed_Image {
    VT_DCI_Point start;
    std::optional<Image> image;
};

struct Window_Fill {
    VT_Int_Rectangle rectangle;
    std::optional<std::int32_t> fill;
    std::optional<VT_RGB32> color;
    std::optional<std::uint8_t> index;
};

struct Depth_Clear {
    VT_Int_Rectangle rectangle;
};

struct Depth_Write {
    VT_DCI_Point top_left;
    VT_DCI_Point bottom_right;
    std::optional<Image_Rows<std::uint16_t>> depths;
};

struct Image_Read {
    VT_DCI_Point top_left;
    VT_DCI_Point bottom_right;
    Buffer_Format format = Buffer_Format::whatever_is_there;
};

struct ZBuffer_Write {
    bool value = true;
};

struct ZBuffer_Test {
    std::int32_t value = 0;
};

struct Establish {
    Configuration configuration;
};

struct Present {
    VT_Int_Rectangle rectangle;
};

// What a slot's signature takes besides renderer and rendition.
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

// Arguments of a slot, given as a member of the action table. Polygons share their signature with Gouraud primitives, and window
// actions theirs with each other, but not what it means.
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
