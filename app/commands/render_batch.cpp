// `render` with --output-folder.
#include "app/commands/render_batch.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
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
    if (name.extension() == ".gz" || name.extension() == ".zst") {
        name.replace_extension();
    }
    name.replace_extension(options.image.format.empty() ? "png" : options.image.format);
    return (drawing::path_of(options.output_folder) / name).string();
}

// Throws Usage_Error for files that would become the same image. Names are made twice and not kept: there may be millions.
void check_image_names(const Render_Options& options, const std::vector<std::string>& files) {
    std::vector<std::pair<std::size_t, std::size_t>> hashes; // of the image, and the file
    hashes.reserve(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (files[i] == "-") {
            throw drawing::Usage_Error("--output-folder: expected files with names, found standard input");
        }
        hashes.emplace_back(std::hash<std::string>()(image_name(options, files[i])), i);
    }
    std::ranges::sort(hashes);
    for (std::size_t i = 0; i < hashes.size(); ++i) {
        for (std::size_t k = i + 1; k < hashes.size() && hashes[k].first == hashes[i].first; ++k) {
            const std::string &one = files[hashes[i].second], &other = files[hashes[k].second], image = image_name(options, one);
            if (image == image_name(options, other)) {
                throw drawing::Usage_Error("--output-folder: expected files with different names, found " + one + " and " +
                                           other + ", which would both become " + image);
            }
        }
    }
}

// Files that threads take one after the other, with a message for each that cannot be drawn.
class Batch {
public:
    // options: without the files.
    Batch(const Render_Options& options, const std::vector<std::string>& files, const Draw_One& draw_one)
        : options_(options), files_(files), draw_one_(draw_one) {}

    // The manifest begins once the options are checked.
    void begin() { manifest_.emplace(options_.manifest); }

    // The work of one thread.
    void work(unsigned threads, bool shows_progress) {
        for (std::size_t i = next_++; i < files_.size() && !interrupted_ && !ends_; i = next_++) {
            draw(i, std::max<unsigned>(1, threads / static_cast<unsigned>(std::min<std::size_t>(files_.size(), threads))));
            ++done_;
            if (shows_progress) {
                progress_.show(static_cast<double>(done_) / static_cast<double>(files_.size()));
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
        for (const auto& [file, message] : messages_) {
            print(stderr, "vorna: " + drawing::printable(message) + '\n');
            status = exit_status::failed;
        }
        return status;
    }

private:
    void draw(std::size_t file, unsigned threads) {
        std::error_code none;
        const std::string &name = files_[file], image = image_name(options_, name);
        if (const fs::path path = drawing::path_of(image);
            options_.resume && fs::is_regular_file(path, none) && fs::file_size(path, none) > 0) {
            note(file, image, "kept", "", 0);
            return;
        }
        const Time_Limit limit(options_.time_limit);
        Render_Options own = options_;
        own.models = {name};
        own.image.output = image;
        own.threads = threads;
        own.base_memory = base_memory_;
        std::string message; // why it fails
        try {
            try {
                draw_one_(own);
            } catch (const std::exception& error) {
                drawing::Interruption::check(); // else the reason may be a call that the signal ended
                message = ending_of(error).message;
                message = message.starts_with(name) ? message : name + ": " + message;
            }
        } catch (const drawing::Interrupted& interrupted) {
            if (interrupted.signal != 0) {
                interrupted_ = interrupted.signal;
                return;
            }
            message = name + ": expected an image within " + text_of(options_.time_limit) + " s, found none; " +
                      "--time-limit sets how long";
        }
        note(file, image, message.empty() ? "drawn" : "failed", message, limit.seconds());
    }

    // Without its manifest the batch ends.
    void note(std::size_t file, const std::string& image, const char* status, const std::string& message, double seconds) {
        try {
            manifest_->add(files_[file], image, status, message, seconds);
        } catch (const std::exception&) {
            const std::lock_guard lock(noting_);
            failure_ = failure_ ? failure_ : std::current_exception();
            ends_ = true;
        }
        if (!message.empty()) {
            const std::lock_guard lock(noting_);
            messages_.emplace(file, message);
        }
    }

    const Render_Options& options_;
    const std::vector<std::string>& files_;
    const Draw_One& draw_one_;
    const std::uint64_t base_memory_ = drawing::resident_memory();
    std::map<std::size_t, std::string> messages_; // by file that has failed
    std::atomic<std::size_t> next_ = 0, done_ = 0;
    std::atomic<int> interrupted_ = 0;
    std::optional<Manifest> manifest_;
    std::mutex noting_;
    std::exception_ptr failure_; // of the manifest
    std::atomic<bool> ends_ = false;
    Progress progress_;
};

} // namespace

int render_batch(const Render_Options& options, const Draw_One& check, const Draw_One& draw_one) {
    refuse_standard_output("--output-folder", options.output_folder);
    drawing::refuse_same_files(options.models, {options.manifest});
    check_image_names(options, options.models);
    // Each file is drawn with a copy of the options, which has only this file.
    Render_Options common = options;
    const std::vector<std::string> files = std::exchange(common.models, {});
    Batch batch(common, files, draw_one);
    Render_Options first = common;
    first.models = {files.front()};
    first.image.output = image_name(options, files.front());
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
    drawing::run_on_threads(std::min<std::size_t>(threads, files.size()),
                            [&](std::size_t thread) { batch.work(threads, thread == 0); });
    return batch.finish();
}

} // namespace vorna::app
