// The module, renderers with guarded buffers, and messages of a running check.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/check/configuration.h"
#include "app/check/guarded_buffer.h"
#include "app/check/random.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/module.h"

namespace vorna::app::check {

// The requirements on a module: those of the host and its applications on every renderer, or the whole interface of krb.vrd, for
// modules that replace it.
enum class Profile { host, krb };

struct Task {
    std::string module; // path
    Profile profile = Profile::host;
    std::uint64_t seed = 0;
    int effort = 100; // percent of the usual number of random scenes and renderers
};

// A module fails a check. The message is the reason, after the place if there is one.
class Check_Failed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Writes the current check and place of a process to a file, so that its parent knows where it died.
class Journal {
public:
    // Throws std::runtime_error when the file cannot be written.
    explicit Journal(const std::string& path);

    void begin(std::string_view check);
    void at(const std::string& place);
    // reason: empty when the check has passed.
    void end(const std::string& reason);

    struct Entry {
        std::string check, reason;
    };
    struct Contents {
        std::vector<Entry> ended;
        std::optional<Entry> running; // the reason is the place
    };
    static Contents read(const std::string& path);

private:
    void write(const std::string& ended, const std::string& running);

    struct Close {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_;
    std::string check_;
    long end_ = 0; // file position after the ended checks
};

struct Window {
    VT_Int_Pair size{61, 43};
    VT_Int_Pair origin{-9, 20};
    std::int32_t padding = 0; // pixels after each row

    // In device coordinates.
    VT_Int_Rectangle area() const noexcept { return {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1}; }
};

// The place of a call, for messages.
std::string place_of(std::string_view slot, const Configuration& configuration);

// One run of a check.
class Trial {
public:
    Trial(const Task& task, Journal& journal) : task_(task), journal_(journal) {}

    const std::string& path() const noexcept { return task_.module; }
    Profile profile() const noexcept { return task_.profile; }
    // A generator for each part of a check.
    Random random(std::size_t part = 0) const { return Random(task_.seed * 1000003 + part); }
    // The count in proportion to the effort, at least 1.
    int scaled(int count) const noexcept;

    // Loads the module at the first call.
    const vorna::Module& module();

    // Sets the place that is named when the check fails or the process dies.
    void at(std::string place);
    // The reason, after the place.
    std::string placed(const std::string& reason) const { return place_.empty() ? reason : place_ + ": " + reason; }
    // Throws Check_Failed with place and reason.
    [[noreturn]] void fail(const std::string& reason) const { throw Check_Failed(placed(reason)); }
    void expect(bool is_right, const char* reason) const {
        if (!is_right) {
            fail(reason);
        }
    }

private:
    const Task& task_;
    Journal& journal_;
    std::string place_;
    std::unique_ptr<vorna::Module> module_;
};

// An established renderer of the module with a begun picture.
class Tried_Renderer {
public:
    Tried_Renderer(Trial& trial, const Configuration& configuration, const Window& window = {});
    Tried_Renderer(const Tried_Renderer&) = delete;
    Tried_Renderer& operator=(const Tried_Renderer&) = delete;
    ~Tried_Renderer();

    VT_Renderer_Data& operator*() noexcept { return *renderer_; }
    VT_Renderer_Data* operator->() noexcept { return renderer_.get(); }

    Buffer_Maker& buffers() noexcept { return buffers_; }
    // The renderer's buffers; the depth buffer is null without depth.
    Guarded_Buffer& color() noexcept { return *buffers_.latest(false); }
    Guarded_Buffer* depth() noexcept { return has_depth() ? buffers_.latest(true) : nullptr; }

    // Ends the picture, changes configuration and window, establishes and begins a picture.
    void establish(const Configuration& configuration, const Window& window);
    // Sets a requested option if the module has it, establishes and begins a picture.
    void set_option(const char* name, const VT_Option_Content& content);

private:
    bool has_depth() { return renderer_->current_renderer_options().buffer_depth() >= 1; }
    void establish_and_begin();

    Buffer_Maker buffers_;
    vorna::Module::Renderer renderer_;
};

// All pixels of the buffers, the lowest row first.
struct Contents {
    std::int32_t width = 0;
    std::vector<std::uint32_t> colors, depths;

    friend bool operator==(const Contents&, const Contents&) = default;
};

Contents contents_of(Tried_Renderer& renderer);
// Buffers of the same size and format get the same noise.
void fill_with_noise(Tried_Renderer& renderer, std::uint64_t seed);
// Sets the buffers to contents that were read from them.
void restore(Tried_Renderer& renderer, const Contents& contents);
// Colours 0 and the farthest depth.
void clear(Tried_Renderer& renderer);
// The first pixel that differs, as text; empty when all are equal.
std::string difference(const Contents& expected, const Contents& found);
// The place of a pixel as text.
std::string pixel_name(const Contents& contents, std::size_t position, bool in_depths);

} // namespace vorna::app::check
