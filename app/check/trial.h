// What a check works with: the module, renderers made by it that draw into guarded buffers, and the place that it has reached.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/check/guarded_buffer.h"
#include "app/check/random.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
#include "vorna/module.h"

namespace vorna::app::check {

// How strictly a module is looked at: by what the host and its applications need of every renderer, or by the whole interface of
// krb.vrd, whose place the module can then take.
enum class Profile { host, krb };

struct Task {
    std::string module; // path
    Profile profile = Profile::host;
    std::uint64_t seed = 0;
    int effort = 100; // percent of the usual number of random scenes and renderers
};

// A module that does not do what it should: the reason, and the place if there is one.
class Check_Failed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Keeps on file what a process is doing, so that another one can tell where it died.
class Journal {
public:
    // Throws std::runtime_error when the file cannot be written.
    explicit Journal(const std::string& path);

    void begin(std::string_view check);
    void at(const std::string& place);
    // An empty reason: the check has passed.
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
    long end_ = 0; // of what has ended
};

// The six cases that renderers tell apart.
struct Configuration {
    std::string_view name;
    std::int32_t color_system;
    bool depth, alpha;

    bool has_indices() const noexcept { return color_system != 1; }
};

inline constexpr Configuration configurations[] = {
    {"8-bit", 0, false, false},           {"32-bit", 1, false, false},           {"32-bit alpha", 1, false, true},
    {"8-bit with depth", 0, true, false}, {"32-bit with depth", 1, true, false}, {"32-bit alpha with depth", 1, true, true},
};

struct Window {
    VT_Int_Pair size{61, 43};
    VT_Int_Pair origin{-9, 20};
    std::int32_t padding = 0; // pixels after each row

    // In device coordinates.
    VT_Int_Rectangle area() const noexcept { return {origin.x, origin.x + size.x - 1, origin.y, origin.y + size.y - 1}; }
};

// One run of a check.
class Trial {
public:
    Trial(const Task& task, Journal& journal) : task_(task), journal_(journal) {}

    const std::string& path() const noexcept { return task_.module; }
    Profile profile() const noexcept { return task_.profile; }
    // A generator of its own for each part of a check.
    Random random(std::size_t part = 0) const { return Random(task_.seed * 1000003 + part); }
    // This many, or fewer when less effort is asked for.
    int scaled(int count) const noexcept;

    // Loaded when it is first asked for.
    const vorna::Module& module();

    // The place that a failure, or the end of the process, is blamed on.
    void at(std::string place);
    // The reason behind the place.
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

// A renderer of the module, established, with its picture begun.
class Tried_Renderer {
public:
    Tried_Renderer(Trial& trial, const Configuration& configuration, const Window& window = {});
    Tried_Renderer(const Tried_Renderer&) = delete;
    Tried_Renderer& operator=(const Tried_Renderer&) = delete;
    ~Tried_Renderer();

    VT_Renderer_Data& operator*() noexcept { return *renderer_; }
    VT_Renderer_Data* operator->() noexcept { return renderer_.get(); }

    Buffer_Maker& buffers() noexcept { return buffers_; }
    // The buffers that it draws into; the depth buffer is null without depth.
    Guarded_Buffer& color() noexcept { return *buffers_.latest(false); }
    Guarded_Buffer* depth() noexcept { return has_depth() ? buffers_.latest(true) : nullptr; }

    // Ends the picture, changes configuration and window, and begins anew.
    void establish(const Configuration& configuration, const Window& window);
    // Sets a requested option if the module has it, and establishes.
    void set_option(const char* name, const VT_Option_Content& content);

private:
    bool has_depth() { return renderer_->current_renderer_options().buffer_depth() >= 1; }
    void establish_and_begin();

    Buffer_Maker buffers_;
    vorna::Module::Renderer renderer_;
};

// Every pixel of the buffers, from the lowest row up.
struct Contents {
    std::int32_t width = 0;
    std::vector<std::uint32_t> colors, depths;

    friend bool operator==(const Contents&, const Contents&) = default;
};

Contents contents_of(Tried_Renderer& renderer);
// The same noise in buffers of the same size and format.
void fill_with_noise(Tried_Renderer& renderer, std::uint64_t seed);
// Puts contents back that the same buffers had.
void restore(Tried_Renderer& renderer, const Contents& contents);
// Everything at zero and, with depth, as far away as can be.
void clear(Tried_Renderer& renderer);
// Says where the contents differ; empty when they are the same.
std::string difference(const Contents& expected, const Contents& found);
// The place of a pixel in words.
std::string pixel_name(const Contents& contents, std::size_t position, bool in_depths);

} // namespace vorna::app::check
