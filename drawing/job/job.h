// A job: a drawing, how its image is made, and where it goes.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "drawing/files/thread_pool.h"
#include "drawing/image/background.h"
#include "drawing/image/blank_check.h"
#include "drawing/image/image.h"
#include "drawing/image/image_form.h"
#include "drawing/image/palette.h"
#include "drawing/image/pixel_finish.h"
#include "drawing/job/drawing.h"
#include "drawing/job/image_part.h"
#include "drawing/job/image_plan.h"
#include "drawing/job/image_stream.h"
#include "drawing/recording/recorder.h"

namespace vorna::drawing {

struct Job_Settings {
    Image_Part part;              // the size of the image, and which part of it is made
    std::int32_t tile_size = 0;   // a multiple of 8; 0 = chosen
    std::int32_t supersample = 1; // columns and rows of drawn pixels for one
    unsigned threads = 0;         // 0 = as many as there are processors
    std::uint64_t max_memory = std::uint64_t{1} << 30;
    std::uint64_t kept_memory = 0;  // bytes of it for images that stay in memory
    std::uint64_t other_memory = 0; // bytes of it that everything but the image takes; 0 = what the process has
    Background background;
    bool transparent = false;               // instead of the background
    bool linear = false;                    // see Finish_Settings
    bool depths = false;                    // 16-bit grey: the depth buffer instead of colours; neither enlarged nor transparent
    VT_Reference<const VT_Palette> palette; // that the renderer draws with; null = 32 bits a pixel
    std::vector<VT_RGB32> mapped_palette;   // that 32-bit pixels are mapped to; empty = none
    std::vector<VT_RGB32> flat_colors;      // that mapping does not dither, besides the background
    std::string input;                      // what is drawn, for messages
    std::string output;                     // file, "-" = standard output; of numbered frames a template for names
    Image_File file = Image_File::png;      // the format of the files
    Compression compression = Compression::standard;
    std::uint32_t pixels_per_metre = 0;   // on paper, for files to tell; 0 = not said
    bool is_numbered = false;             // whether frames have numbers, see frame_name
    std::string record;                   // file for what is drawn as a recording; empty = none
    int repeat = 1;                       // how often everything is drawn, for measuring
    bool measures = false;                // whether tiles are drawn once more than needed, for measuring
    bool hash = false;                    // whether digests are wanted
    bool allow_empty = false;             // whether an image may show nothing but the background
    std::function<void(double)> progress; // is told how much is done, 0 to 1; none = nobody is
    // Is told the digests when all files are complete and before they appear: where it throws, none does.
    std::function<void(const std::vector<std::string>&)> tell_digests;
};

struct Job_Times { // milliseconds
    double plan = 0;
    double prepare = 0;        // of the last image
    std::vector<double> draws; // with preparing
    std::vector<double> tiles; // by tile, the least of what drawing it has taken; empty unless tiles are drawn for measuring
    double written = 0;        // drawing and writing together, in images of several tiles
};

struct Job_Result {
    std::vector<std::string> digests; // SHA-256 of the samples of the file, by frame; empty unless asked for
    Job_Times times;
};

class Job {
public:
    // Plans the job. Settings and drawing must outlive it. Throws Usage_Error for settings that exclude each other, and for what
    // does not fit into memory.
    Job(const Job_Settings& settings, const Module_Choice& module, Drawing& drawing);

    const Image_Plan& plan() const noexcept { return plan_; }
    const Image_Form& form() const noexcept { return form_; }
    unsigned threads() const noexcept { return frames_at_once_ > plan_.threads ? frames_at_once_ : plan_.threads; }
    std::uint64_t image_memory() const noexcept { return plan_.memory * frames_at_once_; }
    std::uint64_t other_memory() const noexcept { return other_memory_; }
    double plan_time() const noexcept { return times_.plan; }

    // Throws what writing would throw, as far as that can be known before.
    void check_files() const;
    // Files appear whole or not at all. Throws std::runtime_error for an image that shows nothing, and Interrupted.
    Job_Result write_files();
    // The only frame, in memory. Of images with palette indices their colours.
    Image make_image();
    // The samples of the only frame as form() says, rows from the top down without gaps, into memory of the caller.
    void make_samples(std::uint8_t* samples);
    // Draws the only frame and calls take for each tile in the thread that has drawn it: the session, the tile's window, and the
    // pixels of the image that the tile is for. Several threads may call it at once.
    using Take_Tile = std::function<void(Session& session, const VT_Int_Rectangle& window, const VT_Int_Rectangle& kept)>;
    void draw_frame(const Take_Tile& take);

private:
    // A thread's renderer, and what becomes of its pixels.
    struct Worker {
        Worker(const Module_Choice& module, const Finish_Settings& settings) : renderer(module), finish(settings) {}

        Tile_Renderer renderer;
        Pixel_Finish finish;
    };

    void choose_form();
    void make_plan();
    void add_workers(std::size_t count);
    // That of a thread, which makes it when it first needs it.
    Worker& worker_of(std::size_t thread);
    void prepare(std::int32_t frame) { drawing_.prepare(plan_.grid, settings_.supersample, frame); }
    void draw_tile(Worker& worker, std::size_t tile) const;
    void draw_tiles_for_measuring();
    // Calls take for each tile of the only frame in the thread that has drawn it.
    void draw_all_tiles(const std::function<void(Worker&, std::size_t)>& take);
    void store_tile(Worker& worker, std::size_t tile, const Row_Places& places);
    bool is_covered();
    void refuse_blank();
    // drawn: the worker that has drawn the only tile; null = threads draw the tiles.
    void write(Output_File& file, std::string& digest, unsigned threads, Worker* drawn, std::function<void(double)> progress);
    void tell_digests(const Job_Result& result) const;
    void write_image(Job_Result& result);
    void write_frames(Job_Result& result);
    void write_frames_side_by_side(std::vector<std::unique_ptr<Output_File>>& files, std::vector<std::string>& digests);
    std::string file_of(std::int32_t frame) const;

    const Job_Settings& settings_;
    const Module_Choice module_;
    Drawing& drawing_;
    Drawing_Needs needs_;
    std::optional<Palette_Dither> dither_;
    Finish_Settings finish_;
    Image_Form form_;
    std::optional<Blank_Check> blank_check_;
    std::vector<std::unique_ptr<Worker>> workers_; // by thread
    std::mutex making_workers_;
    std::optional<recording::Recorder> recorder_;
    Image_Plan plan_;
    std::uint64_t other_memory_ = 0;
    unsigned frames_at_once_ = 1;
    Job_Times times_;
    Thread_Pool pool_;
};

} // namespace vorna::drawing
