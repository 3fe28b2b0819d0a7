// `render` with --output-folder.
#include "app/commands/render_batch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "app/cli/progress.h"
#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/memory.h"
#include "drawing/files/output_file.h"
#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"

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

// A thread that ends the process when a signal asks for it, whatever the other threads do: those that read a file do not look for
// signals. Where the system gives no thread, a signal takes effect at the end of a file.
class Signal_Watch {
public:
    Signal_Watch() {
        try {
            thread_ = std::jthread([](const std::stop_token& stop) { wait(stop); });
        } catch (const std::system_error&) {
        }
    }

private:
    static void wait(const std::stop_token& stop) {
        constexpr std::chrono::milliseconds period(50);
        std::mutex mutex;
        std::unique_lock lock(mutex);
        std::condition_variable_any stopped;
        try {
            while (!stop.stop_requested()) {
                stopped.wait_for(lock, stop, period, [] { return false; });
                drawing::Interruption::check();
            }
        } catch (const drawing::Interrupted& interrupted) {
            drawing::Output_File::remove_unfinished();
            if (drawing::is_terminal(stderr)) {
                std::fputc('\n', stderr); // below the line of progress
            }
            drawing::end_by_signal(interrupted.signal);
        }
    }

    std::jthread thread_;
};

// Files that threads take one after the other, with a message for each that cannot be drawn.
class Batch {
public:
    Batch(const Render_Options& options, const Draw_One& draw_one)
        : options_(options), draw_one_(draw_one), names_(image_names(options)), messages_(names_.size()) {}

    const std::string& first_image() const { return names_.front(); }
    // The work of one thread.
    void work(unsigned threads, bool shows_progress) {
        for (std::size_t i = next_++; i < names_.size() && !interrupted_; i = next_++) {
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
        if (const fs::path image = drawing::path_of(names_[file]);
            options_.resume && fs::is_regular_file(image, none) && fs::file_size(image, none) > 0) {
            return;
        }
        Render_Options own = options_;
        own.models = {options_.models[file]};
        own.image.output = names_[file];
        own.threads = threads;
        own.base_memory = base_memory_;
        try {
            try {
                draw_one_(own);
            } catch (const std::exception& error) {
                drawing::Interruption::check(); // else the reason may be a call that the signal ended
                const std::string message = ending_of(error).message, &name = own.models.front();
                messages_[file] = message.starts_with(name) ? message : name + ": " + message;
            }
        } catch (const drawing::Interrupted& interrupted) {
            interrupted_ = interrupted.signal;
        }
    }

    const Render_Options& options_;
    const Draw_One& draw_one_;
    const std::uint64_t base_memory_ = drawing::resident_memory();
    std::vector<std::string> names_;
    std::vector<std::optional<std::string>> messages_; // by file: why it failed
    std::atomic<std::size_t> next_ = 0, done_ = 0;
    std::atomic<int> interrupted_ = 0;
    Progress progress_;
};

} // namespace

int render_batch(const Render_Options& options, const Draw_One& check, const Draw_One& draw_one) {
    refuse_standard_output("--output-folder", options.output_folder);
    Batch batch(options, draw_one);
    Render_Options first = options;
    first.image.output = batch.first_image();
    check(first);
    std::error_code error;
    fs::create_directories(drawing::path_of(options.output_folder), error);
    if (error) {
        throw std::runtime_error(options.output_folder + ": cannot be made: " + error.message());
    }
    const unsigned threads = options.threads > 0 ? options.threads : std::max(1U, std::thread::hardware_concurrency());
    // It outlives those of the single files, whose beginnings and ends overlap.
    const drawing::Interruption interruption;
    const Signal_Watch watch;
    drawing::run_on_threads(std::min<std::size_t>(threads, options.models.size()),
                            [&](std::size_t thread) { batch.work(threads, thread == 0); });
    return batch.finish();
}

} // namespace vorna::app
