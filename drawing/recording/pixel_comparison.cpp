// After which call two recordings draw different pixels.
#include "drawing/recording/pixel_comparison.h"

#include <condition_variable>
#include <cstring>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "drawing/files/interruption.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/call_kinds.h"
#include "drawing/recording/replay.h"

namespace vorna::drawing::recording {

namespace {

// A replay in a thread of its own, which waits after every call; meanwhile the caller may read the session.
class Waiting_Replay {
public:
    Waiting_Replay(const Recording& recording, const Module_Choice& module, bool is_first)
        : recording_(recording), is_first_(is_first), session_(module), thread_([this] { run(); }) {}
    Waiting_Replay(const Waiting_Replay&) = delete;
    Waiting_Replay& operator=(const Waiting_Replay&) = delete;
    ~Waiting_Replay() {
        {
            const std::lock_guard lock(mutex_);
            stops_ = true;
        }
        changed_.notify_one();
        thread_.join();
    }

    // Waits until the renderer is set up.
    void start() { wait(); }
    // Makes the next call; nothing after the last one.
    void step() {
        {
            const std::lock_guard lock(mutex_);
            replays_ = !is_done_;
        }
        changed_.notify_one();
        wait();
    }
    Session& session() noexcept { return session_; }

private:
    struct Stop {};

    void wait() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !replays_; });
        if (!failure_) {
            return;
        }
        try {
            std::rethrow_exception(failure_);
        } catch (const std::runtime_error& error) {
            throw Replay_Failure(is_first_, error.what());
        }
    }
    void run() {
        try {
            Replay_Settings settings;
            settings.reports_standard = false;
            // It waits before the first call, when the renderer has been set up, and after each one.
            settings.before_call = [this](std::size_t call) {
                if (call == 0) {
                    pause();
                }
            };
            settings.after_call = [this](std::size_t) { pause(); };
            replay(recording_, session_, settings);
        } catch (const Stop&) {
        } catch (...) {
            failure_ = std::current_exception();
        }
        {
            const std::lock_guard lock(mutex_);
            is_done_ = true;
            replays_ = false;
        }
        changed_.notify_one();
    }
    void pause() {
        std::unique_lock lock(mutex_);
        replays_ = false;
        changed_.notify_one();
        changed_.wait(lock, [this] { return replays_ || stops_; });
        if (stops_) {
            throw Stop();
        }
    }

    const Recording& recording_;
    bool is_first_;
    Session session_;
    std::exception_ptr failure_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool replays_ = true, is_done_ = false, stops_ = false; // replays_: it is the thread's turn, and the caller waits
    std::thread thread_;
};

std::string text_of(const std::uint8_t* pixel, Buffer_Format format) {
    if (format == Buffer_Format::depth16) {
        std::uint16_t depth;
        std::memcpy(&depth, pixel, sizeof depth);
        return std::to_string(depth);
    }
    if (format == Buffer_Format::index8) {
        return std::to_string(*pixel);
    }
    return '(' + std::to_string(pixel[2]) + ',' + std::to_string(pixel[1]) + ',' + std::to_string(pixel[0]) + ',' +
           std::to_string(pixel[3]) + ')';
}

using Kind = Pixel_Difference::Kind;

// Both rasters show the window and have one format.
std::optional<Pixel_Difference> of_rasters(const Raster& a, const Raster& b, const VT_Int_Rectangle& window, Kind kind) {
    const auto pixel_bytes = static_cast<std::size_t>(vorna::bytes_per_pixel(a.format));
    std::optional<Pixel_Difference> found;
    for (std::int32_t r = 0; r < a.height; ++r) {
        const std::uint8_t *in_a = a.top + r * a.row_bytes, *in_b = b.top + r * b.row_bytes;
        if (std::memcmp(in_a, in_b, static_cast<std::size_t>(a.width) * pixel_bytes) == 0) {
            continue;
        }
        for (std::int32_t x = 0; x < a.width; ++x, in_a += pixel_bytes, in_b += pixel_bytes) {
            if (std::memcmp(in_a, in_b, pixel_bytes) == 0) {
                continue;
            }
            if (!found) {
                found = Pixel_Difference{
                    {}, kind, 0, {window.left + x, window.top - r}, text_of(in_a, a.format), text_of(in_b, b.format)};
            }
            ++found->count;
        }
    }
    return found;
}

std::optional<Pixel_Difference> of_palettes(const VT_Palette& a, const VT_Palette& b) {
    std::optional<Pixel_Difference> found;
    for (std::int32_t i = 0; i < 256; ++i) {
        const VT_RGB32 in_a = a.color(static_cast<std::uint8_t>(i)), in_b = b.color(static_cast<std::uint8_t>(i));
        if (in_a == in_b) {
            continue;
        }
        if (!found) {
            const auto text = [](const VT_RGB32& color) { return text_of(&color.blue, Buffer_Format::rgb32); };
            found = Pixel_Difference{{}, Kind::palettes, 0, {i, 0}, text(in_a), text(in_b)};
        }
        ++found->count;
    }
    return found;
}

std::string window_text(Session& session) {
    const VT_Int_Rectangle window = session.window();
    const bool has_indices = session.color_buffer().format == Buffer_Format::index8;
    return std::to_string(window.right - window.left + 1) + " x " + std::to_string(window.top - window.bottom + 1) + " at [" +
           std::to_string(window.left) + ", " + std::to_string(window.bottom) + "], " +
           (has_indices ? "palette indices" : "32-bit colours") + (session.has_depth_buffer() ? " and depths" : ", no depths");
}

std::optional<Pixel_Difference> of_sessions(Session& a, Session& b) {
    a.canvas().flush();
    b.canvas().flush();
    if (const std::string in_a = window_text(a), in_b = window_text(b); in_a != in_b) {
        return Pixel_Difference{{}, Kind::windows, 0, {}, in_a, in_b};
    }
    const Raster colors = raster_of(a.color_buffer());
    if (colors.format == Buffer_Format::index8) {
        if (auto found = of_palettes(a.palette(), b.palette())) {
            return found;
        }
    }
    if (auto found = of_rasters(colors, raster_of(b.color_buffer()), a.window(), Kind::colors)) {
        return found;
    }
    return a.has_depth_buffer() ? of_rasters(raster_of(*a.read_depth()), raster_of(*b.read_depth()), a.window(), Kind::depths)
                                : std::nullopt;
}

} // namespace

std::string text_of(const Pixel_Difference& difference) {
    const std::string when = difference.call ? "after call " + std::to_string(*difference.call) : "before the first call";
    const std::string values = difference.first + " and " + difference.second;
    const std::string count = std::to_string(difference.count) + (difference.count == 1 ? " pixel differ, " : " pixels differ, ");
    const std::string at = "first at [" + std::to_string(difference.place.x) + ", " + std::to_string(difference.place.y) + "]: ";
    switch (difference.kind) {
    case Kind::windows:
        return when + " the windows differ: " + values;
    case Kind::palettes:
        return when + " colours of the palettes differ: " + std::to_string(difference.count) + ", first " +
               std::to_string(difference.place.x) + ": " + values;
    case Kind::colors:
        return when + " the colours of " + count + at + values;
    case Kind::depths:
        break;
    }
    return when + " the depths of " + count + at + values;
}

std::optional<Pixel_Difference> compare_pixels(const Recording& a, const Recording& b, const Document_Difference& documents,
                                               const Module_Choice& module) {
    Waiting_Replay of_a(a, module, true), of_b(b, module, false);
    of_a.start();
    of_b.start();
    std::optional<Pixel_Difference> found = of_sessions(of_a.session(), of_b.session());
    // After a call to set up that differs, equal calls may draw different pixels.
    // `output` is cut out of the window after drawing.
    bool is_setup_equal = std::ranges::all_of(documents.setup, [](const Value_Difference& value) {
        return value.path == "output" || value.path.starts_with("output.");
    });
    for (std::size_t call = 0; !found && call < documents.differing.size(); ++call) {
        Interruption::check();
        of_a.step();
        of_b.step();
        if (documents.differing[call] || !is_setup_equal) {
            found = of_sessions(of_a.session(), of_b.session());
            const auto is_setup = [call](const Recording& each) {
                return call < each.calls.size() && sets_up(*each.calls[call].kind);
            };
            is_setup_equal = is_setup_equal && !is_setup(a) && !is_setup(b);
            if (found) {
                found->call = call;
            }
        }
    }
    return found;
}

} // namespace vorna::drawing::recording
