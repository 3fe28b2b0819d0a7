// `render` with --output-folder.
#include "app/commands/render_batch.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/heap.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "app/commands/batch_files.h"
#include "app/commands/job_limits.h"
#include "app/commands/option_choices.h"
#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/files/path.h"

namespace vorna::app {
namespace {

namespace fs = std::filesystem;

// The file's name with the image's suffix instead of its own, in the folder.
std::string image_name(const Render_Options& options, const std::string& file) {
    fs::path name = drawing::path_of(file).filename();
    if (name.extension() == ".gz") {
        name.replace_extension();
    }
    name.replace_extension(options.image.format.empty() ? "png" : options.image.format);
    return (drawing::path_of(options.output_folder) / name).string();
}

std::vector<std::string> image_names(const Render_Options& options) {
    std::map<std::string, std::string> files; // by image
    std::vector<std::string> names;
    for (const std::string& file : options.models) {
        if (file == "-") {
            throw drawing::Usage_Error("--output-folder: expected files with names, found standard input");
        }
        names.push_back(image_name(options, file));
        if (const auto [other, added] = files.emplace(names.back(), file); !added) {
            throw drawing::Usage_Error("--output-folder: expected files with different names, found " + other->second + " and " +
                                       file + ", which would both become " + names.back());
        }
    }
    return names;
}

// Files that threads take one after the other, with a message for each that cannot be drawn.
class Batch {
public:
    Batch(const Render_Options& options, const Draw_One& draw_one)
        : options_(options), draw_one_(draw_one), names_(image_names(options)), messages_(names_.size()) {}

    // The manifest begins once the options are checked.
    void begin() { manifest_.emplace(options_.manifest); }

    const std::string& first_image() const { return names_.front(); }
    // The work of one thread.
    void work(unsigned threads, bool shows_progress) {
        for (std::size_t i = next_++; i < names_.size() && !interrupted_ && !ends_; i = next_++) {
            draw(i, std::max<unsigned>(1, threads / static_cast<unsigned>(std::min<std::size_t>(names_.size(), threads))));
            ++done_;
            if (shows_progress) {
                progress_.show(static_cast<double>(done_) / static_cast<double>(names_.size()));
            }
        }
    }

    int finish() {
        if (interrupted_) {
            throw drawing::Interrupted{interrupted_};
        }
        if (failure_) {
            std::rethrow_exception(failure_);
        }
        int status = exit_status::done;
        for (const std::optional<std::string>& message : messages_) {
            if (message) {
                print(stderr, "vorna: " + drawing::printable(*message) + '\n');
                status = exit_status::failed;
            }
        }
        return status;
    }

private:
    void draw(std::size_t file, unsigned threads) {
        std::error_code none;
        const std::string& name = options_.models[file];
        if (const fs::path image = drawing::path_of(names_[file]);
            options_.resume && fs::is_regular_file(image, none) && fs::file_size(image, none) > 0) {
            note(file, "kept", 0);
            return;
        }
        const Time_Limit limit(options_.time_limit);
        Render_Options own = options_;
        own.models = {name};
        own.image.output = names_[file];
        own.threads = threads;
        own.base_memory = base_memory_;
        try {
            try {
                draw_one_(own);
            } catch (const std::exception& error) {
                drawing::Interruption::check(); // else the reason may be a call that the signal ended
                const std::string message = ending_of(error).message;
                messages_[file] = message.starts_with(name) ? message : name + ": " + message;
            }
        } catch (const drawing::Interrupted& interrupted) {
            if (interrupted.signal != 0) {
                interrupted_ = interrupted.signal;
                return;
            }
            messages_[file] = name + ": expected an image within " + text_of(options_.time_limit) + " s, found none; " +
                              "--time-limit sets how long";
        }
        note(file, messages_[file] ? "failed" : "drawn", limit.seconds());
    }

    // Without its manifest the batch ends.
    void note(std::size_t file, const char* status, double seconds) {
        try {
            manifest_->add(options_.models[file], names_[file], status, messages_[file].value_or(""), seconds);
        } catch (const std::exception&) {
            const std::lock_guard lock(failing_);
            failure_ = failure_ ? failure_ : std::current_exception();
            ends_ = true;
        }
    }

    const Render_Options& options_;
    const Draw_One& draw_one_;
    const std::uint64_t base_memory_ = drawing::resident_memory();
    std::vector<std::string> names_;
    std::vector<std::optional<std::string>> messages_; // by file: why it failed
    std::atomic<std::size_t> next_ = 0, done_ = 0;
    std::atomic<int> interrupted_ = 0;
    std::optional<Manifest> manifest_;
    std::mutex failing_;
    std::exception_ptr failure_; // of the manifest
    std::atomic<bool> ends_ = false;
    Progress progress_;
};

} // namespace

int render_batch(const Render_Options& options, const Draw_One& check, const Draw_One& draw_one) {
    refuse_standard_output("--output-folder", options.output_folder);
    drawing::refuse_same_files(options.models, {options.manifest});
    Batch batch(options, draw_one);
    Render_Options first = options;
    first.image.output = batch.first_image();
    check(first);
    std::error_code error;
    fs::create_directories(drawing::path_of(options.output_folder), error);
    if (error) {
        throw std::runtime_error(options.output_folder + ": cannot be made: " + error.message());
    }
    batch.begin();
    const unsigned threads = options.threads > 0 ? options.threads : drawing::processor_count();
    // It outlives those of the single files, whose beginnings and ends overlap.
    const drawing::Interruption interruption;
    allow_several_heaps();
    const Signal_Watch watch;
    drawing::run_on_threads(std::min<std::size_t>(threads, options.models.size()),
                            [&](std::size_t thread) { batch.work(threads, thread == 0); });
    return batch.finish();
}

} // namespace vorna::app
