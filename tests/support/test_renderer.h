// The renderer module as a host meets it: loaded by path, set up through options, drawing into guarded buffers.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/check/guarded_buffer.h"
#include "host/renderer_data.h"
#include "host/rendition.h"
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
    const vorna::app::check::Buffer_Maker& buffers() const noexcept { return buffers_; }

    void set_z_write(bool on);
    void set_z_test(std::int32_t mode);

    // The standard functions that drew for the renderer since the last time, in order.
    std::vector<std::string> take_handed_over() { return std::exchange(handed_over_, {}); }

private:
    static void note_standard_call(void* context, const char* name);

    std::string description_;
    vorna::app::check::Buffer_Maker buffers_;
    std::vector<std::string> handed_over_;
    vorna::Module::Renderer renderer_;
};

// How often a seeded property is tried: count times the environment variable VORNA_TEST_SCALE (1 when unset, less when
// sanitizers slow everything down), at least once.
int scaled(int count);

std::string describe(const VT_Rendition& rendition);
