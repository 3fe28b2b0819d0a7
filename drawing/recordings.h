// Recordings, documents of what an application draws: made on a canvas, and drawn again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "drawing/export.h"
#include "drawing/image_samples.h"
#include "vorna/canvas.h"

namespace vorna::drawing {

struct Replay_Settings {
    std::uint64_t max_memory = 0; // bytes that reading may take; 0 = as Reading has it
    std::string module;           // path of the renderer; empty = the installed one
    // The calls that are made, counted from 0, `last` included; of earlier ones only those that set the renderer up are made.
    std::size_t first = 0, last = SIZE_MAX;
};

// The part of the window that the recording shows.
struct Replay_Image {
    Image_Samples colors; // of recordings with palette indices those
    Image_Samples depths; // null samples without a depth buffer
    std::string report;   // JSON: what happened besides drawing
};

// Draws a recording from a file, plain or compressed by gzip. Throws Usage_Error that names the file for errors in it, and
// std::runtime_error for calls that are recorded but cannot be drawn.
VORNA_DRAWING_API Replay_Image replay_file(const std::string& file, const Replay_Settings& settings = {});
// The same of a document; name: what messages call it.
VORNA_DRAWING_API Replay_Image replay_text(const std::string& name, const std::string& text,
                                           const Replay_Settings& settings = {});

// Writes a document to a file, compressed by gzip when its name ends in .gz, which appears whole or not at all. The document is
// not read.
VORNA_DRAWING_API void write_document(const std::string& file, const std::string& text);

// A canvas whose calls are recorded, from its first picture on.
class VORNA_DRAWING_API Recorded_Canvas {
public:
    // module: path of the renderer; empty = the installed one. Throws as the constructors of Module and Canvas do.
    explicit Recorded_Canvas(const Canvas_Settings& settings, const std::string& module = {});
    Recorded_Canvas(const Recorded_Canvas&) = delete;
    Recorded_Canvas& operator=(const Recorded_Canvas&) = delete;
    ~Recorded_Canvas();

    // establish() must not be called.
    Canvas& canvas() noexcept;
    // Ends the recording, once, and returns the document. The canvas goes on without it. Throws std::runtime_error when
    // something was drawn that recordings cannot hold.
    std::string finish();

private:
    struct Content;
    std::unique_ptr<Content> content_;
};

} // namespace vorna::drawing
