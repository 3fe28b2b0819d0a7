// Maps of the C interface: GeoJSON, TopoJSON, DXF and others as images.
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

// Units of scale bars.
enum { VORNA_NO_SCALE = 0, VORNA_KILOMETRES = 1, VORNA_MILES = 2 };

// The visible part of a map, and its style, as the options of `vorna render` have them. Texts and pointers may be null.
typedef struct vorna_map_settings {
    size_t struct_size;
    const char* layer;               // layers between commas; null = the first object of a TopoJSON file, all layers of others
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
    const char* font;    // file or family; null = the default font
    const char* overlay; // file of a map that is drawn over this one; null = none
    vorna_color overlay_color;
    int32_t merges;                // a switch: the overlay is merged with the pixels below
    const char* layout;            // sheet of paper of a drawing; null = the drawing without paper
    const char* filter;            // the shapes to draw, as "pop > 1e6"; null = all
    const char* fill_by;           // field that gives the colours; null = none
    const char* classes;           // "quantiles", "equal", "natural", "categories"; null = quantiles, for texts categories
    const double* breaks;          // between classes, increasing, instead of a method; null = none
    size_t break_count;            // at most 63
    const char* ramp;              // a name of ColorBrewer's; null = YlGnBu, for categories Set2 or Set3
    int32_t class_count;           // 1 to 64; at first 5
    int32_t reverse_ramp;          // a switch
    const char* width_by;          // field of numbers that gives widths of lines; null = none
    int32_t widths[2];             // of the least and the greatest value, pixels; at first 1 and 8
    const char* label_by;          // field of labels instead of the names; null = none
    const char* label_key;         // field of numbers: labels with greater ones are placed first; null = those of larger shapes
    double halo;                   // width around letters, 0 to 20 pixels; at first 1
    const vorna_color* halo_color; // null = white or black, in contrast to the letters
    const char* style;             // style file; null = none
    const char* title;             // null = none
    const char* attribution;       // null = none
    int32_t legend;                // a switch: colours and values of fill_by
    int32_t map_scale;             // VORNA_NO_SCALE, …: a scale bar
    int32_t flip_y;                // of a plane: 1 = y grows downwards, -1 = upwards; 0 = as the coordinates tell
    int32_t reserved;              // 0
} vorna_map_settings;

// Fills the settings with the defaults. size: sizeof(vorna_map_settings).
vorna_status vorna_map_settings_init(vorna_map_settings* settings, size_t size);

// A file, also compressed by gzip. settings, reading: null = the defaults. VORNA_INVALID_INPUT names the file and the place in
// it.
vorna_status vorna_map_read(const char* file, const vorna_map_settings* settings, const vorna_reading* reading, vorna_map** map);

// Several files, each drawn over those before it. count: 1 or more.
vorna_status vorna_map_read_files(size_t count, const char* const* files, const vorna_map_settings* settings,
                                  const vorna_reading* reading, vorna_map** map);

// The content of a file in memory, size bytes. format: "json" or "dxf". Messages call it "map".
vorna_status vorna_map_parse(const char* format, const char* text, size_t size, const vorna_map_settings* settings,
                             const vorna_reading* reading, vorna_map** map);

// An image of VORNA_RGB32, and a PNG file, as of models. A map draws one image at a time. settings: null = the defaults.
vorna_status vorna_map_render(vorna_map* map, const vorna_image_settings* settings, vorna_image** image);
vorna_status vorna_map_render_file(vorna_map* map, const vorna_image_settings* settings, const char* file, char* digest);

// The parts of the files that are not drawn, and letters that no font has, a line each, as of models: their number, which images
// may raise, and the line with a number from 0 on. The line lives until the number is asked for again.
vorna_status vorna_map_warning_count(vorna_map* map, size_t* count);
vorna_status vorna_map_warning(const vorna_map* map, size_t number, const char** line);

void vorna_map_free(vorna_map* map);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
