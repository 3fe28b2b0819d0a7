// Canvases of the C interface: a renderer, its buffers, and the attributes of what is drawn.
#pragma once

#include "vorna/c_image.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

typedef struct vorna_canvas vorna_canvas;
typedef struct vorna_recording vorna_recording;

typedef struct vorna_canvas_settings {
    size_t struct_size;
    const char* module;         // path of the renderer module; null = the installed one
    int32_t width, height;      // of the window in pixels, 1 to 16384
    int32_t origin_x, origin_y; // device coordinates of the window's lower left pixel, within 2^30 of 0
    int32_t indexed;            // 8-bit palette indices instead of 32-bit colours
    int32_t depth_buffer;       // with 16 bits for each pixel
    int32_t alpha_blending;     // of translucent 32-bit colours
    int32_t clip_regions;       // vorna_set_clip_region is in force
    // 1 to 256 colours. Null = a cube of 6 x 6 x 6 colours and forty greys.
    const vorna_color* palette;
    size_t palette_size;
    // A box of the palette's entries, by which smooth colours are dithered: 1 to 256 levels of each channel, of which blue counts
    // first, from the entry cube_first on. Levels of 0 = none.
    int32_t cube_red, cube_green, cube_blue, cube_first;
    // The caller's memory for the colour buffer: `height` rows from the top down, `stride` bytes apart, or without gaps when
    // stride is 0. It must stay until the canvas is freed or configured anew. Null = the canvas makes its own.
    void* pixels;
    size_t stride;
    int32_t records; // whether what is drawn is recorded, for vorna_canvas_finish_recording
    // Threads that draw: at most 1024; 0 = as many as there are processors; at first 1. The pixels do not depend on them. With
    // more than one, drawing functions keep copies of points, colours and pixels, and the threads draw later, see vorna_flush.
    uint32_t threads;
} vorna_canvas_settings;

// Fills the settings with the defaults: no size, colours without depth buffer. size: sizeof(vorna_canvas_settings).
vorna_status vorna_canvas_settings_init(vorna_canvas_settings* settings, size_t size);

// Pixels and depths are zero at first. VORNA_INVALID_ARGUMENT for settings outside their ranges, VORNA_FAILED for a module that
// cannot be loaded.
vorna_status vorna_canvas_create(const vorna_canvas_settings* settings, vorna_canvas** canvas);

// Changes everything but `module`, `records` and `threads`, which are not read, between pictures. Buffers keep their pixels when
// size and format stay, unless `pixels` changes; the clip becomes the window. After an error everything is as before.
vorna_status vorna_canvas_configure(vorna_canvas* canvas, const vorna_canvas_settings* settings);

// Set one of the renderer's named options between pictures: a switch or a whole number, or a colour's levels. The clip becomes
// the window. VORNA_INVALID_ARGUMENT when the renderer has no option of that name and kind.
vorna_status vorna_canvas_set_option(vorna_canvas* canvas, const char* name, int32_t value);
vorna_status vorna_canvas_set_color_option(vorna_canvas* canvas, const char* name, int32_t red, int32_t green, int32_t blue);

// The device pixels of the window.
vorna_status vorna_canvas_window(vorna_canvas* canvas, vorna_rectangle* window);

// Drawing functions are called between these two, else they give VORNA_INVALID_ARGUMENT. background: fills the window, and its
// depths with the farthest one; null = pixels and depths stay. The end presents the window.
vorna_status vorna_begin_picture(vorna_canvas* canvas, const vorna_color* background);
vorna_status vorna_end_picture(vorna_canvas* canvas);

// Draws what a canvas with several threads has kept. Functions that end a picture, present or read pixels do so themselves; call
// it before you read a buffer's memory, the caller's own `pixels` included, and before you change the pixels of a texture. A
// function that draws kept calls may fail with what an earlier call would have failed with.
vorna_status vorna_flush(vorna_canvas* canvas);

typedef struct vorna_presentation {
    vorna_rectangle area; // the device pixels to show, inside the window
    int32_t x, y;         // where their top left pixel belongs, counted from the top left of the window rightwards and downwards
    vorna_buffer buffer;  // the pixels of the area
} vorna_presentation;

// Sets the function that shows what is presented; null = none. It is called by vorna_end_picture and vorna_present before they
// return. It must not call functions of the canvas, nor leave by an exception or a jump.
typedef void vorna_present_function(void* context, const vorna_presentation* presentation);
vorna_status vorna_canvas_on_present(vorna_canvas* canvas, vorna_present_function* function, void* context);
// Presents the part of the area that lies in the window; null = the window.
vorna_status vorna_present(vorna_canvas* canvas, const vorna_rectangle* area);

// The colour buffer without a copy. Valid until the canvas is configured or freed.
vorna_status vorna_canvas_buffer(vorna_canvas* canvas, vorna_buffer* buffer);
// Copies the window's colours, or its depths, into the caller's memory: `height` rows of `width` from the top down, stride bytes
// apart, or without gaps when stride is 0. Palette indices become colours. Without depth buffer depths give
// VORNA_INVALID_ARGUMENT.
vorna_status vorna_canvas_read_pixels(vorna_canvas* canvas, vorna_color* pixels, size_t stride);
vorna_status vorna_canvas_read_depths(vorna_canvas* canvas, uint16_t* depths, size_t stride);

// Attributes: they hold from when they are set, also for later pictures.

// Whole numbers.
enum {
    VORNA_FACE_PATTERN = 1, // 0 to 73 = stock patterns, of which 64 is solid; 74 = the bitmap; 75 and more = hatches. At first 64
    VORNA_FACE_FLAGS = 2,   // a sum of 1 = gaps in the contrast colour, 2 = cells and gaps exchanged, 8 = translucent
    VORNA_FACE_MODE = 3,    // drawing mode
    VORNA_FACE_INDEX = 4,   // palette indices, 0 to 255; setting a colour sets its index to the nearest one
    VORNA_FACE_CONTRAST_INDEX = 5,
    VORNA_LINE_WIDTH = 16, // pixels. At first 1
    VORNA_LINE_STYLE = 17, // 0 = solid, 1 = dashed, 2 = dotted, 3 = dash dot, 4 = dash dot dot, 5 = long dashed
    VORNA_LINE_FLAGS = 18, // 2 = smoothed
    VORNA_LINE_MODE = 19,  // drawing mode
    VORNA_LINE_INDEX = 20,
    VORNA_LINE_CAP = 21,      // 0 = butt, 1 = round, 2 = square
    VORNA_LINE_JOIN = 22,     // 0 = round, 1 = miter, 2 = bevel
    VORNA_MARKER_SYMBOL = 32, // 0 = dot, 1 = plus, 2 = cross, 3 and 4 = circle and filled circle, 5 and 6 = square and filled
                              // square, 7 = triangle, 8 = star
    VORNA_MARKER_SIZE = 33,   // pixels. At first 1
    VORNA_MARKER_MODE = 34,   // drawing mode
    VORNA_MARKER_INDEX = 35,
    VORNA_DRAWING_FLAGS = 48, // a sum of 4 = second blend, 8 = translucent
    VORNA_DEPTH_USE = 49,     // 0 = drawing neither tests nor writes depth. At first 1
    VORNA_DEPTH_WRITE = 50,   // 0 = drawing does not write depth. At first 1
    VORNA_DEPTH_TEST = 51     // what passes: 1 = nearer, 2 = nearer or equal, 5 = farther. At first 2
};

// VORNA_INVALID_ARGUMENT for other attributes, and for values that an attribute does not have.
vorna_status vorna_set_attribute(vorna_canvas* canvas, int32_t attribute, int32_t value);
vorna_status vorna_get_attribute(vorna_canvas* canvas, int32_t attribute, int32_t* value);

// Colours.
enum {
    VORNA_COLOR = 64,          // of faces, lines and markers; can only be set
    VORNA_CONTRAST_COLOR = 65, // of faces and lines; can only be set
    VORNA_FACE_COLOR = 66,
    VORNA_FACE_CONTRAST_COLOR = 67,
    VORNA_LINE_COLOR = 68,
    VORNA_LINE_CONTRAST_COLOR = 69,
    VORNA_MARKER_COLOR = 70
};

vorna_status vorna_set_color(vorna_canvas* canvas, int32_t attribute, vorna_color color);
vorna_status vorna_get_color(vorna_canvas* canvas, int32_t attribute, vorna_color* color);

// The hard clip, the device pixels that forms 2D, 2DI and 3D and images are cut to; null = the window, as at first.
vorna_status vorna_set_clip(vorna_canvas* canvas, const vorna_rectangle* clip);

// The clip region: closed contours in device pixels, inside by the even-odd rule. point_counts: the points of each contour, which
// lie one after the other in points. x, y: the region is moved by so many pixels. No contours = no region. The settings must have
// clip_regions.
vorna_status vorna_set_clip_region(vorna_canvas* canvas, size_t contours, const size_t* point_counts, const vorna_point* points,
                                   int32_t x, int32_t y);

// The bitmap of face pattern 74: width * height cells, the lowest row first; other than 0 = set. Sides of 1 to 16384. cells: null
// = none.
vorna_status vorna_set_face_bitmap(vorna_canvas* canvas, int32_t width, int32_t height, const uint8_t* cells);

// The texture of faces, which keeps its pixels alive; null = none. Renderers draw VORNA_RGB32 without gaps between rows whose
// sides are powers of two up to 16384; other formats give VORNA_INVALID_ARGUMENT. matrix: null, or four rows of four by which (u,
// v, 0, 1) is multiplied. color: null for white, or the colour where the texture cannot be drawn.
vorna_status vorna_set_texture(vorna_canvas* canvas, const vorna_image* image, const double* matrix, const vorna_color* color);

// How a line is cut into dashes. Lengths are in pixels.
typedef struct vorna_line_type {
    int32_t kind;             // 7 = cased: the casing is drawn first and the line over it
    int32_t mode;             // 2 = leading and trailing parts are a dot instead of a dash
    double width;             // of the casing
    vorna_color color;        // of the casing
    double leading, trailing; // lengths of the dashes before and after the repeated elements
    size_t elements;
    const double* lengths; // one for each element, 0 or more
    const int32_t* kinds;  // one for each element: above 0 a dash, below 0 a gap, 0 a dot
} vorna_line_type;

// types: one for the whole line, or with per_segment one for each segment; a null pointer in it = a segment without a line type.
// scale multiplies all lengths. No types = plain lines.
vorna_status vorna_set_line_types(vorna_canvas* canvas, size_t count, const vorna_line_type* const* types, int32_t per_segment,
                                  double scale);

// Ends the recording of what is drawn and hands it over. Between pictures; once.
vorna_status vorna_canvas_finish_recording(vorna_canvas* canvas, vorna_recording** recording);

void vorna_canvas_free(vorna_canvas* canvas);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
