// Statuses and plain types of the C interface; vorna.h includes everything.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "vorna/version.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

typedef int32_t vorna_status;

enum {
    VORNA_OK = 0,
    VORNA_INVALID_ARGUMENT = 1, // a null pointer, or a count or number that the function does not accept
    VORNA_INVALID_INPUT = 2,    // a file, document or setting that the caller can mend
    VORNA_OUT_OF_MEMORY = 3,    // the handles are as before the call; a drawing may be incomplete
    VORNA_FAILED = 4,           // all other failures: a module that cannot be loaded, a file that cannot be written
    VORNA_INTERRUPTED = 5       // a signal came while a file was written; see vorna_model_render_file
};

// What the latest call of this thread that failed says, one line; empty before the first. Valid until the next call that fails.
const char* vorna_last_message(void);

// The version of the loaded library: as VORNA_VERSION_TEXT, and as VORNA_VERSION, of the headers.
const char* vorna_version(void);
int32_t vorna_version_number(void);

// Frees memory that a function hands over and that is no handle. Accepts null.
void vorna_free(void* memory);

// A colour and a 32-bit pixel: four bytes in this order. Alpha 255 is opaque.
typedef struct vorna_color {
    uint8_t blue, green, red, alpha;
} vorna_color;

static inline vorna_color vorna_rgba(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) {
    vorna_color color;
    color.blue = blue;
    color.green = green;
    color.red = red;
    color.alpha = alpha;
    return color;
}

// Points. Numbers must be finite.
typedef struct vorna_point {
    float x, y, z;
} vorna_point;

typedef struct vorna_point_d {
    double x, y, z;
} vorna_point_d;

typedef struct vorna_point_i {
    int32_t x, y, z;
} vorna_point_i;

// A place in a texture: u to the right, v upwards, 0 to 1 from border to border.
typedef struct vorna_texture_point {
    float u, v;
} vorna_texture_point;

// Device pixels, inclusive on every side.
typedef struct vorna_rectangle {
    int32_t left, right, bottom, top;
} vorna_rectangle;

// Formats of pixels.
enum {
    VORNA_INDEX8 = 1,      // palette indices, uint8_t
    VORNA_RGB32 = 2,       // vorna_color
    VORNA_DEPTH16 = 3,     // depths, uint16_t; smaller ones are nearer
    VORNA_PRESENTATION = 9 // vorna_color, of an image that vorna_draw_dci_image lays over the whole window
};

// Pixels in memory, rows from the top down.
typedef struct vorna_buffer {
    void* pixels;          // the top left one
    size_t stride;         // bytes from the start of a row to the start of the one below it
    int32_t width, height; // columns and rows
    int32_t format;        // VORNA_INDEX8, …
} vorna_buffer;

// Limits of reading files and documents. A null pointer to these settings stands for the defaults.
typedef struct vorna_reading {
    size_t struct_size;
    uint64_t max_memory;          // bytes; 0 = 1 GiB, or 64 times the size of the files where that is more
    int32_t outside_of_folder;    // whether files that models name may lie outside of the models' folders
    int32_t accepts_no_triangles; // whether models may be empty
    uint32_t threads;             // at most 1024; 0 = as many as there are processors
    double crease; // degrees between faces that are smoothed where models lack normals; below 0 = 30, or as the file says
    const double*
        section; // null, or X, Y, Z and OFFSET of a plane: of models all that lies where X x + Y y + Z z > OFFSET is removed
    const char* input_format; // of the files, as a suffix: obj, json and so on; null = by their names or contents
} vorna_reading;

// Fills the settings with the defaults. size: sizeof(vorna_reading). VORNA_INVALID_ARGUMENT for a null pointer or a size that the
// struct has in no version.
vorna_status vorna_reading_init(vorna_reading* reading, size_t size);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
