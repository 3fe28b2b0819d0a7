// Models of the C interface: from files or arrays to images.
#pragma once

#include "vorna/c_image.h"

#if defined(__cplusplus)
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

// Triangles with their materials, lines and points.
typedef struct vorna_model vorna_model;

// Files that are drawn together, each where its coordinates have it. count: 1 or more. reading: may be null. VORNA_INVALID_INPUT
// names the file and the place in it.
vorna_status vorna_model_read(size_t count, const char* const* files, const vorna_reading* reading, vorna_model** model);

// Arrays, which are copied. Those that may be null stand for nothing.
typedef struct vorna_mesh {
    size_t struct_size;
    size_t vertex_count;
    const vorna_point* positions;              // finite, of any size and anywhere
    const vorna_point* normals;                // null, or one for each vertex; missing and zero ones are computed
    const vorna_color* colors;                 // null, or one for each vertex; alpha 0 = no colour of its own
    const vorna_texture_point* texture_points; // null, or one for each vertex
    const vorna_image* texture;                // null, or VORNA_RGB32 of sides up to 16384, laid over all triangles
    size_t triangle_count;
    const uint32_t* triangles; // three vertices for each
    size_t line_count;
    const uint32_t* lines; // two vertices for each
    size_t point_count;
    const uint32_t* points; // one vertex for each
    const double* section;  // null, or a plane that cuts the mesh open, as in vorna_reading
} vorna_mesh;

// Fills the struct with zeros and its size. size: sizeof(vorna_mesh).
vorna_status vorna_mesh_init(vorna_mesh* mesh, size_t size);

// VORNA_INVALID_INPUT for numbers of vertices that do not exist and for a mesh without anything to draw.
vorna_status vorna_model_create(const vorna_mesh* mesh, vorna_model** model);

// The numbers of what is drawn. Each may be null.
vorna_status vorna_model_counts(const vorna_model* model, size_t* triangles, size_t* lines, size_t* points);

// The parts of the files that could not be read, a line each: their number, and the line with a number from 0 on. The line lives
// as long as the model.
vorna_status vorna_model_warning_count(const vorna_model* model, size_t* count);
vorna_status vorna_model_warning(const vorna_model* model, size_t number, const char** line);

// Values of the members of vorna_view.
enum { VORNA_FLAT = 0, VORNA_GOURAUD = 1, VORNA_TEXTURED = 2, VORNA_WIREFRAME = 3, VORNA_HIDDEN_LINE = 4, VORNA_AUTOMATIC = 5 };
enum { VORNA_LIT = 0, VORNA_OWN = 1, VORNA_NORMALS = 2 };
enum { VORNA_NO_EDGES = 0, VORNA_ALL_EDGES = 1, VORNA_FEATURE_EDGES = 2 };
enum {
    VORNA_FRONT = 0,
    VORNA_BACK = 1,
    VORNA_LEFT = 2,
    VORNA_RIGHT = 3,
    VORNA_TOP = 4,
    VORNA_BOTTOM = 5,
    VORNA_ISO = 6 // at first
};
enum { VORNA_Y_UP = 0, VORNA_Z_UP = 1, VORNA_X_UP = 2, VORNA_MINUS_Y_UP = 3, VORNA_MINUS_Z_UP = 4, VORNA_MINUS_X_UP = 5 };

// How a model is drawn, and from where. Ranges are those of the options of `vorna render`; outside of them VORNA_INVALID_INPUT.
typedef struct vorna_view {
    size_t struct_size;
    int32_t shading;          // VORNA_FLAT, …; at first VORNA_AUTOMATIC: textured where the model has materials, else Gouraud
    int32_t tint;             // VORNA_LIT, …: the faces' colours with light, without it, or their normals
    int32_t culls_back_faces; // a switch
    vorna_point_d light;      // the direction to it, in view space: right, up, towards the viewer
    double specular;          // a factor for highlights, 0 to 10; at first 1
    int32_t studio;           // a switch: the studio look
    int32_t edges;            // VORNA_NO_EDGES, …
    const vorna_color* edge_color; // null = one that stands out
    const vorna_color* color;      // of the faces; null = the model's own
    int32_t line_width;            // of the model's lines, pixels; at first 1
    int32_t point_size;            // of the model's points, pixels; 0 = by their number
    int32_t axes, scale_bar;       // switches; a scale bar needs parallel projection
    int32_t view;                  // VORNA_FRONT, …
    int32_t up;                    // the model's axis that points up: VORNA_Y_UP, …
    int32_t orthographic;          // a switch: parallel projection instead of perspective
    double zoom;                   // at first 1, which shows the whole model
    double field_of_view;          // vertical, in degrees, 1 to 150; 0 = 30 and a little
    int32_t has_aim;               // a switch: the camera stands at `eye` and looks at `target`, in coordinates of the model,
    vorna_point_d eye, target;     // instead of `view`
    vorna_point_d upward;          // the direction that points up in the image
} vorna_view;

// Fills the settings with the defaults. size: sizeof(vorna_view).
vorna_status vorna_view_init(vorna_view* view, size_t size);

// How an image of a model or map is made. Its bytes depend neither on threads nor on memory.
typedef struct vorna_image_settings {
    size_t struct_size;
    int32_t width, height;               // pixels; at first 1280 x 960. Of maps a height of 0 is chosen
    vorna_color background;              // at first white
    const vorna_color* lower_background; // of models: null, or the background becomes a gradient from top to bottom
    int32_t transparent;                 // a switch: no background
    int32_t indexed;                     // a switch: colours of a palette of 256 only
    int32_t smooth_lines;                // a switch
    int32_t supersample;                 // 1 to 8: the mean of so many pixels each way; 0 = chosen
    uint32_t threads;                    // at most 1024; 0 = as many as there are processors
    uint64_t max_memory;                 // bytes; at first 1 GiB
    int32_t refuses_empty;               // a switch: an image of nothing but the background is VORNA_FAILED
    const char* module;                  // path of the renderer module; null = the installed one
    // Images that are printed, as the options of `vorna render` have them:
    double dpi;        // pixels per inch of paper, 1 to 10000, which files state; 0 = 300 with paper or scale, else not stated
    const char* paper; // instead of width and height: A4, A4-landscape, 200x100mm; null = none
    const char* scale; // as 1:50000; of models without perspective. Maps of 0 x 0 pixels become as large as they need to be
    const char*
        unit; // with scale, of coordinates of drawings, models and planes: mm, cm, m, km, in, ft; null = mm, of planes none
} vorna_image_settings;

// Fills the settings with the defaults. size: sizeof(vorna_image_settings).
vorna_status vorna_image_settings_init(vorna_image_settings* settings, size_t size);

// An image of VORNA_RGB32. view, settings: null = the defaults.
vorna_status vorna_model_render(const vorna_model* model, const vorna_view* view, const vorna_image_settings* settings,
                                vorna_image** image);

// A PNG file, which may be larger than memory and appears whole or not at all. digest: null, or 65 bytes for the SHA-256 of its
// samples in hexadecimal digits and a zero byte. Signals that ask the process to end (SIGINT, SIGTERM, SIGHUP) wait until the
// unfinished file is removed; the signal is then raised again, and where that does not end the process the function gives
// VORNA_INTERRUPTED.
vorna_status vorna_model_render_file(const vorna_model* model, const vorna_view* view, const vorna_image_settings* settings,
                                     const char* file, char* digest);

void vorna_model_free(vorna_model* model);

// A model that is drawn from many cameras: what depends on the model alone is done once. The model must outlive the scene.
typedef struct vorna_scene vorna_scene;

// view: its camera is not used. settings: their size is not used. null = the defaults.
vorna_status vorna_scene_create(const vorna_model* model, const vorna_view* view, const vorna_image_settings* settings,
                                vorna_scene** scene);

// One image from the camera of a view. Null pointers stand for results that are not wanted; one at least must be.
// color: VORNA_RGB32, or VORNA_INDEX8 with indexed settings.
// depth: VORNA_DEPTH16 of the faces, neither supersampled nor smoothed: from 0 at the distance `nearest` from the eye along the
// line of sight to 65535 at `farthest`, and where no face is. Linear without perspective; with it 65535 * (1 - nearest /
// distance) / (1 - nearest / farthest). Distances are in the model's unit. faces: width * height numbers of triangles, rows from
// the top down, by the order of the arrays, of files as they are drawn; -1 where no face is.
vorna_status vorna_scene_draw(vorna_scene* scene, const vorna_view* camera, int32_t width, int32_t height, vorna_image** color,
                              vorna_image** depth, int32_t* faces, double* nearest, double* farthest);

void vorna_scene_free(vorna_scene* scene);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#if defined(__cplusplus)
}
#endif
