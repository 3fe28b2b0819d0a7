// The drawing library: models and maps, from files or arrays, as images.
//
// Everything throws std::exception with a message of one line: Usage_Error for input and settings that the caller can mend, any
// other for failures. Settings outside of their ranges, which are those of the command's options, are wrong input. Different
// threads may use different objects at the same time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drawing/export.h"
#include "drawing/files/interrupted.h"
#include "drawing/files/usage_error.h"
#include "drawing/image/image.h"
#include "drawing/image_samples.h"
#include "drawing/job/print_settings.h"
#include "drawing/map/map_settings.h"
#include "drawing/model/camera.h"
#include "drawing/model/mesh.h"
#include "drawing/model/model_look.h"
#include "drawing/recordings.h"

namespace vorna::drawing {

// Sets the stop check of the calling thread; null = none, as at first. Calls of the thread that take long call it often, but
// never from other threads that help them, and throw Interrupted once it returns true. It must not throw.
VORNA_DRAWING_API void set_stop_check(bool (*is_asked_to_stop)()) noexcept;

// What reading may cost and touch.
struct Reading {
    std::uint64_t max_memory = 0;      // bytes; 0 = 1 GiB, or 64 times what the files have where that is more
    bool outside_of_folder = false;    // whether files that models name may lie outside of the models' folders
    unsigned threads = 0;              // 0 = as many as there are processors
    bool accepts_no_triangles = false; // whether models may be empty, without triangles, lines and points
    // Degrees, 0 to 180, between faces that are shaded as one surface where a model gives no normals. None: 30, or the file's
    // smoothing groups.
    std::optional<double> crease;
    std::optional<model::Section> section; // cuts models open
    std::string input_format;              // of files, as a suffix: obj, json and so on; empty = by their names or contents
};

// Triangles with their materials, lines and points.
class VORNA_DRAWING_API Model {
public:
    // Files that are drawn together, each where its coordinates have it.
    explicit Model(const std::vector<std::string>& files, const Reading& reading = {});
    // Arrays. The lists that a mesh may leave out may be empty; normals that are missing are computed.
    explicit Model(model::Mesh mesh);
    // Meshes of arrays that are drawn together: normals are computed for each by itself. Of reading everything but memory,
    // folders and format counts.
    explicit Model(std::vector<model::Mesh> meshes, const Reading& reading = {});
    Model(Model&&) noexcept;
    Model& operator=(Model&&) noexcept;
    ~Model();

    std::size_t triangle_count() const;
    std::size_t line_count() const;
    std::size_t point_count() const;
    // The axis that points up in the first file, by its format; y in arrays.
    model::Up_Axis up_axis() const;
    // What of the materials could not be read, and which files were not read as their names say, a line each.
    const std::vector<std::string>& warnings() const;

private:
    friend struct Image_Maker;
    friend class Model_Images;
    struct Content;
    std::unique_ptr<Content> content_;
};

// Lays an image of colours over all triangles of a mesh that has texture coordinates.
VORNA_DRAWING_API void add_texture(model::Mesh& mesh, const Image_Samples& texture);

// What of a model is drawn, how, and from where.
struct Model_View : model::Model_Style {
    model::Camera_Settings camera; // its aspect is the image's; an aim is in the model's coordinates
    bool studio = false;           // soft light, dark corners, outlines and a shadow on the ground; 32 bits a pixel
};

// What a map is read from: a file, or the text that a file would hold.
struct Map_Input {
    std::string name;   // of the file; of a text, for messages
    std::string format; // of a text: json or dxf; empty = a file
    std::string text;
};

// A map (GeoJSON, TopoJSON and others) or a drawing (DXF).
class VORNA_DRAWING_API Map {
public:
    // file: also compressed by gzip.
    explicit Map(const std::string& file, const map::Map_Settings& settings = {}, const Reading& reading = {});
    // Several, one or more, that are drawn one over the other.
    explicit Map(const std::vector<Map_Input>& inputs, const map::Map_Settings& settings = {}, const Reading& reading = {});
    // text: what a file holds. name: for messages. format: json or dxf.
    Map(const std::string& name, const std::string& format, std::string text, const map::Map_Settings& settings = {},
        const Reading& reading = {});
    Map(Map&&) noexcept;
    Map& operator=(Map&&) noexcept;
    ~Map();

    // What of the file is not drawn, a line each.
    std::vector<std::string> warnings() const;

private:
    friend struct Image_Maker;
    struct Content;
    std::unique_ptr<Content> content_;
};

// Camera_Settings::half_tangent of a vertical field of view in degrees, below 180; the same bit by bit on every machine.
VORNA_DRAWING_API double half_tangent_of_view(double degrees);

// How an image is made. Its bytes depend neither on threads nor on memory.
struct Image_Settings {
    // Sides up to 262144, unless print gives paper; of maps a height of 0 is chosen, and where print gives a scale a size of
    // {0, 0}.
    VT_Int_Pair size{1280, 960};
    Print_Settings print;
    VT_RGB32 background{255, 255, 255, 255};
    std::optional<VT_RGB32> lower_background; // of models: makes the background a gradient from the image's top to its bottom
    bool transparent = false;                 // instead of the background
    bool indexed = false;                     // 8 bits a pixel, of the standard palette or one with the map's own colours
    bool smooth_lines = false;
    // The mean of so many pixels each way, 1 to 8: smooth faces and lines. 0 = 2 for models that are neither indexed nor
    // smooth_lines nor larger than 2^24 pixels, else 1.
    std::int32_t supersample = 0;
    unsigned threads = 0;                              // at most 1024; 0 = as many as there are processors
    std::uint64_t max_memory = std::uint64_t{1} << 30; // bytes, with those of an image that is kept in memory
    std::uint64_t other_memory = 0;                    // bytes of it that are not the image's; 0 = all memory of the process
    bool allow_empty = true;                           // whether an image may show nothing but the background
    std::string module;                                // path of the renderer; empty = the installed one
};

// That of the paper, where the settings give one.
VORNA_DRAWING_API VT_Int_Pair size_of(const Image_Settings& settings);

// An image in memory, four bytes a pixel. Of settings with 8 bits it has the colours of the palette.
// warnings: gets a line for the textures that are left out because they cannot be read; null = nobody is told.
VORNA_DRAWING_API Image make_image(const Model& model, const Model_View& view, const Image_Settings& settings,
                                   std::vector<std::string>* warnings = nullptr);
VORNA_DRAWING_API Image make_image(const Map& map, const Image_Settings& settings);
// The same with 8 bits a pixel as indices.
VORNA_DRAWING_API Image_Samples make_samples(const Map& map, const Image_Settings& settings);

// Parts of an image of a model.
struct Planes {
    bool colors = true;
    bool depths = false; // of faces, as the renderer draws them: neither supersampled nor smoothed
    bool faces = false;  // numbers of triangles
};

// Of the planes that are not asked for the samples are null.
struct Model_Image {
    Image_Samples colors; // of settings with 8 bits indices
    // From 0 at the distance `near` from the eye along the line of sight to 65535 at `far`, and where no face is. Linear without
    // perspective; with it 65535 * (1 - near / distance) / (1 - near / far). Distances are in the model's unit.
    Image_Samples depths;
    Image_Samples faces; // by the order of the mesh's or all meshes' triangles, of files as they are drawn
    double near = 0, far = 0;
};

// Images of a model from any number of cameras. What depends on the model alone is done once.
class VORNA_DRAWING_API Model_Images {
public:
    // The model must outlive the object. The camera of the view, and the size and paper of the settings, are not used.
    Model_Images(const Model& model, const Model_View& view, const Image_Settings& settings);
    Model_Images(Model_Images&&) noexcept;
    Model_Images& operator=(Model_Images&&) noexcept;
    ~Model_Images();

    // One thread at a time.
    Model_Image draw(const model::Camera_Settings& camera, VT_Int_Pair size, const Planes& planes = {});
    // Textures that are left out because they cannot be read, once colours or the depths of textured faces were drawn.
    const std::vector<std::string>& warnings() const;

private:
    struct Content;
    std::unique_ptr<Content> content_;
};

// A PNG file, which appears whole or not at all; larger than memory, if need be. Returns the SHA-256 of its samples. While it is
// written a signal that asks the program to end waits until what is unfinished is removed.
VORNA_DRAWING_API std::string write_image(const std::string& file, const Model& model, const Model_View& view,
                                          const Image_Settings& settings, std::vector<std::string>* warnings = nullptr);
VORNA_DRAWING_API std::string write_image(const std::string& file, const Map& map, const Image_Settings& settings);

} // namespace vorna::drawing
