// A job: its files.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <mutex>
#include <utility>

#include "drawing/files/helpers.h"
#include "drawing/files/interruption.h"
#include "drawing/files/output_file.h"
#include "drawing/files/output_files.h"
#include "drawing/image/sha256.h"
#include "drawing/job/frame_names.h"
#include "drawing/job/job.h"
#include "drawing/recording/recording_file.h"

namespace vorna::drawing {
namespace {

using Clock = std::chrono::steady_clock;

double milliseconds_since(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

} // namespace

std::string Job::file_of(std::int32_t frame) const {
    return settings_.is_numbered ? frame_name(settings_.output, frame, drawing_.frame_count()) : settings_.output;
}

void Job::check_files() const {
    for (std::int32_t frame = 0; frame < (settings_.is_numbered ? drawing_.frame_count() : 1); ++frame) {
        Output_File::check(file_of(frame));
    }
    if (!settings_.record.empty()) {
        Output_File::check(settings_.record);
    }
}

// The same file whatever the plan.
void Job::write(Output_File& file, std::string& digest, unsigned threads, Worker* drawn, std::function<void(double)> progress) {
    const Tile_Grid& grid = plan_.grid;
    Row_Source source;
    source.band_ends = plan_.band_ends;
    source.parts = static_cast<std::uint32_t>(grid.columns());
    source.make = [&](unsigned thread, std::uint32_t band, std::uint32_t part, const Row_Places& places) {
        const auto row = static_cast<std::size_t>(grid.rows()) - 1 - band;
        const std::size_t tile = row * source.parts + part;
        Worker& worker = drawn ? *drawn : worker_of(thread);
        if (!drawn) {
            draw_tile(worker, tile);
        }
        store_tile(worker, tile, places);
    };
    Sha256 sum;
    stream_image(file, form_, source, {threads, plan_.rows_ahead, settings_.hash ? &sum : nullptr, std::move(progress)});
    if (settings_.hash) {
        digest = sum.finish();
    }
}

void Job::tell_digests(const Job_Result& result) const {
    if (settings_.hash && settings_.tell_digests) {
        settings_.tell_digests(result.digests);
    }
}

void Job::write_image(Job_Result& result) {
    Output_Files files;
    const bool several = plan_.grid.count() > 1;
    const bool measured = !several || settings_.measures || settings_.repeat > 1;
    add_workers(several ? plan_.threads : 1);
    for (int i = 0; i < settings_.repeat; ++i) {
        const auto start = Clock::now();
        prepare(0);
        times_.prepare = milliseconds_since(start);
        if (measured) {
            draw_tiles_for_measuring();
        }
        times_.draws.push_back(milliseconds_since(start));
        if (recorder_ && i == 0) {
            // The window may be larger than the image.
            const VT_Int_Rectangle pixels = plan_.grid.pixels(0);
            const auto shown = pixels == plan_.grid.window(0) ? std::nullopt : std::optional(pixels);
            files.add(settings_.record, recording::file_of(recorder_->finish(shown), settings_.record));
        }
    }
    const auto start = Clock::now();
    std::string digest;
    const Interruption interruption;
    auto file = std::make_unique<Output_File>(settings_.output);
    write(*file, digest, plan_.threads, several ? nullptr : workers_.front().get(), settings_.progress);
    refuse_blank();
    files.add(std::move(file));
    if (settings_.hash) {
        result.digests.push_back(std::move(digest));
    }
    tell_digests(result);
    files.commit();
    times_.written = milliseconds_since(start);
}

// Frames of one tile at the same time. What is prepared is one frame's, so they are drawn in turn; compressing takes longer.
void Job::write_frames_side_by_side(std::vector<std::unique_ptr<Output_File>>& files, std::vector<std::string>& digests) {
    std::mutex drawing, noting;
    std::exception_ptr failure;
    const std::int32_t count = drawing_.frame_count();
    std::atomic<std::int32_t> next{0};
    std::int32_t done = 0;
    const auto work = [&](std::size_t thread) {
        try {
            Worker& worker = worker_of(thread);
            for (std::int32_t frame = next++; frame < count; frame = next++) {
                const auto f = static_cast<std::size_t>(frame);
                {
                    const std::lock_guard lock(drawing);
                    const auto start = Clock::now();
                    prepare(frame);
                    draw_tile(worker, 0);
                    times_.draws.push_back(milliseconds_since(start));
                }
                files[f] = std::make_unique<Output_File>(file_of(frame));
                write(*files[f], digests[f], 1, &worker, {});
                files[f]->close();
                const std::lock_guard lock(noting);
                ++done;
                if (settings_.progress) {
                    settings_.progress(static_cast<double>(done) / count);
                }
            }
        } catch (...) {
            const std::lock_guard lock(noting);
            failure = failure ? failure : std::current_exception();
            next = count;
        }
    };
    run_on_threads(frames_at_once_, work);
    if (failure) {
        std::rethrow_exception(failure);
    }
}

// All frames are complete beside their places before the first one moves there.
void Job::write_frames(Job_Result& result) {
    const auto count = static_cast<std::size_t>(drawing_.frame_count());
    std::vector<std::unique_ptr<Output_File>> files(count);
    std::vector<std::string> digests(count);
    const auto start = Clock::now();
    const Interruption interruption;
    add_workers(plan_.grid.count() > 1 ? plan_.threads : frames_at_once_);
    if (plan_.grid.count() == 1) {
        write_frames_side_by_side(files, digests);
    } else {
        for (std::size_t f = 0; f < count; ++f) {
            const auto frame = static_cast<std::int32_t>(f);
            const auto prepare_start = Clock::now();
            prepare(frame);
            times_.prepare = milliseconds_since(prepare_start);
            files[f] = std::make_unique<Output_File>(file_of(frame));
            write(*files[f], digests[f], plan_.threads, nullptr, [&](double done) {
                if (settings_.progress) {
                    settings_.progress((static_cast<double>(f) + done) / static_cast<double>(count));
                }
            });
            files[f]->close();
        }
    }
    refuse_blank();
    if (settings_.hash) {
        result.digests = std::move(digests);
    }
    tell_digests(result);
    for (const std::unique_ptr<Output_File>& file : files) {
        file->commit();
    }
    times_.written = milliseconds_since(start);
}

Job_Result Job::write_files() {
    const Thread_Pool::Use use(&pool_);
    check_files();
    Job_Result result;
    if (settings_.is_numbered) {
        write_frames(result);
    } else {
        write_image(result);
    }
    result.times = times_;
    return result;
}

} // namespace vorna::drawing
