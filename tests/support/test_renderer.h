// The renderer module as a host meets it: loaded by path, set up through options, drawing into guarded buffers.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/check/guarded_buffer.h"
#include "renderer/host/renderer_data.h"
#include "tests/support/renderer_setup.h"
#include "vorna/module.h"

// The module under test. It stays loaded to the end of the process.
const vorna::Module& renderer_module();

// The kernel sets that this build and this processor have, or the one that the environment forces; says on standard output which
// are left out.
const std::vector<std::string>& available_kernel_sets();

// While it lives, renderers are made with the named kernel set; an empty name leaves the choice to the environment.
class Kernel_Choice {
public:
    explicit Kernel_Choice(const std::string& kernels);
    Kernel_Choice(const Kernel_Choice&) = delete;
    Kernel_Choice& operator=(const Kernel_Choice&) = delete;
    ~Kernel_Choice();

private:
    bool is_set_, was_set_ = false;
    std::string before_;
};

// Gives guarded buffers of the wanted layouts to renderers and keeps them, so that the guards can be looked at.
class Buffer_Maker {
public:
    Buffer_Maker() = default;
    Buffer_Maker(const Buffer_Layout& color_layout, const Buffer_Layout& depth_layout)
        : color_layout_(color_layout), depth_layout_(depth_layout) {}
    Buffer_Maker(const Buffer_Maker&) = delete;
    Buffer_Maker& operator=(const Buffer_Maker&) = delete;

    VT_Buffer_Creation callback() noexcept { return {create, this}; }
    const std::vector<VT_Reference<Guarded_Buffer>>& made() const noexcept { return made_; }
    // The latest buffer of colours or of depths; null when none was made.
    Guarded_Buffer* latest(bool depths) const noexcept;

private:
    static void create(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                       VT_Reference<Frame_Buffer>& buffer);

    Buffer_Layout color_layout_, depth_layout_;
    std::vector<VT_Reference<Guarded_Buffer>> made_;
};

// An established renderer. Its guards are checked when it goes.
class Test_Renderer {
public:
    explicit Test_Renderer(const Renderer_Setup& setup, const std::string& kernels = {});
    Test_Renderer(const Test_Renderer&) = delete;
    Test_Renderer& operator=(const Test_Renderer&) = delete;
    ~Test_Renderer();

    VT_Renderer_Data& data() noexcept { return *renderer_; }
    VT_Renderer_Data& operator*() noexcept { return *renderer_; }
    VT_Renderer_Data* operator->() noexcept { return renderer_.get(); }

    Guarded_Buffer& color() noexcept { return *buffers_.latest(false); }
    // Null without depth.
    Guarded_Buffer* depth() noexcept { return buffers_.latest(true); }
    const Buffer_Maker& buffers() const noexcept { return buffers_; }

    void set_z_write(bool on);
    void set_z_test(std::int32_t mode);

    // The standard functions that drew for the renderer since the last time, in order.
    std::vector<std::string> take_handed_over() { return std::exchange(handed_over_, {}); }

private:
    static void note_standard_call(void* context, const char* name);

    std::string description_;
    Buffer_Maker buffers_;
    std::vector<std::string> handed_over_;
    vorna::Module::Renderer renderer_;
};

// How often a seeded property is tried: count times the environment variable VORNA_TEST_SCALE (1 when unset, less when
// sanitizers slow everything down), at least once.
int scaled(int count);
