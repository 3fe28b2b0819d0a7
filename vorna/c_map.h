// Maps of the C interface: GeoJSON, TopoJSON and DXF as images.
#pragma once

#include "vorna/c_model.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

typedef struct vorna_map vorna_map;

// How faces are filled.
enum {
    VORNA_FILL_AUTOMATIC = 0, // palette for maps, own for drawings
    VORNA_FILL_PALETTE = 1,   // a shape's own colour, else one different from its neighbours'
    VORNA_FILL_OWN = 2,       // a shape's own colour, else none
    VORNA_FILL_NONE = 3,
    VORNA_FILL_COLOR = 4 // fill_color
};

// The visible part of a map, and its style, as the options of `vorna render` have them. Texts and pointers may be null.
typedef struct vorna_map_settings {
    size_t struct_size;
    const char* layer;               // object of a TopoJSON file; null = its first
    const char* projection;          // null = equirectangular for maps, plane for drawings
    const char* clip_to;             // name, id or number of a shape that clips the map
    int32_t has_box;                 // a switch: shows the box instead of everything
    double west, south, east, north; // degrees, or a drawing's units; west > east: over the antimeridian
    int32_t has_center;              // a switch: the projection's centre
    double center_x, center_y;       // degrees
    int32_t fill;                    // VORNA_FILL_AUTOMATIC, …
    vorna_color fill_color;
    double opacity;              // of fills, 0 to 1; at first 1
    const vorna_color* water;    // null = the background
    double graticule;            // degrees between meridians and parallels, 0.1 to 90; 0 = none
    int32_t borders, outlines;   // switches, at first 1: borders between shapes, and those that belong to one shape only
    const double* border_dashes; // lengths of alternate dashes and gaps, in widths of the line; null = solid
    size_t border_dash_count;    // even
    const double* outline_dashes;
    size_t outline_dash_count;
    const vorna_color* border_color; // null = the shapes' own
    int32_t border_width;            // pixels; at first 1
    const vorna_color* casing;       // null = none
    int32_t casing_width;            // pixels on each side; at first 2
    vorna_color marker_color;
    int32_t marker_symbol, marker_size; // as VORNA_MARKER_SYMBOL; pixels
    int32_t labels;                     // a switch
    int32_t label_size;                 // pixels; at first 12
    vorna_color label_color;
    const char* font;    // file; null = the default font
    const char* overlay; // file of a map that is drawn over this one; null = none
    vorna_color overlay_color;
    int32_t merges; // a switch: the overlay is merged with the pixels below
} vorna_map_settings;

// Fills the settings with the defaults. size: sizeof(vorna_map_settings).
vorna_status vorna_map_settings_init(vorna_map_settings* settings, size_t size);

// A file, also compressed by gzip. settings, reading: null = the defaults. VORNA_INVALID_INPUT names the file and the place in
// it.
vorna_status vorna_map_read(const char* file, const vorna_map_settings* settings, const vorna_reading* reading, vorna_map** map);

// The content of a file in memory, size bytes. format: "json" or "dxf". Messages call it "map".
vorna_status vorna_map_parse(const char* format, const char* text, size_t size, const vorna_map_settings* settings,
                             const vorna_reading* reading, vorna_map** map);

// An image of VORNA_RGB32, and a PNG file, as of models. A map draws one image at a time. settings: null = the defaults.
vorna_status vorna_map_render(vorna_map* map, const vorna_image_settings* settings, vorna_image** image);
vorna_status vorna_map_render_file(vorna_map* map, const vorna_image_settings* settings, const char* file, char* digest);

void vorna_map_free(vorna_map* map);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
