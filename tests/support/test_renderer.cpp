// The renderer module as a host meets it.
#include "tests/support/test_renderer.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <tuple>

#include <gtest/gtest.h>

namespace {

constexpr const char* kernel_variable = "KRB_KERNELS";

void set_environment(const char* name, const std::string& value) {
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

void unset_environment(const char* name) {
#if defined(_WIN32)
    _putenv_s(name, "");
#else
    unsetenv(name);
#endif
}

std::vector<std::string> find_kernel_sets() {
    if (const char* const forced = std::getenv(kernel_variable)) {
        return {forced};
    }
    std::vector<std::string> available;
    for (const char* kernels : {"portable", "baseline", "avx2", "avx512", "neon"}) {
        try {
            const Kernel_Choice choice(kernels);
            const VT_Renderer_Data prototype;
            renderer_module().create_renderer(prototype);
            available.emplace_back(kernels);
        } catch (const std::invalid_argument& reason) {
            std::cout << "Kernel set " << kernels << " is left out: " << reason.what() << '\n';
        }
    }
    return available;
}

template <class Setter> Setter published_setter(VT_Renderer_Data& renderer, const char* name) {
    const VT_Option* const option = renderer.current_table.find(name);
    return option ? option->as_setter<Setter>() : nullptr;
}

} // namespace

const vorna::Module& renderer_module() {
    static const auto* const module = new vorna::Module(KRB_MODULE);
    return *module;
}

const std::vector<std::string>& available_kernel_sets() {
    static const std::vector<std::string> available = find_kernel_sets();
    if (std::getenv("VORNA_TEST_ONE_SET")) {
        ADD_FAILURE() << "draws with every kernel set: list it in tests_with_every_set (tests/CMakeLists.txt)";
    }
    return available;
}

Kernel_Choice::Kernel_Choice(const std::string& kernels) : is_set_(!kernels.empty()) {
    if (is_set_) {
        if (const char* const before = std::getenv(kernel_variable)) {
            was_set_ = true;
            before_ = before;
        }
        set_environment(kernel_variable, kernels);
    }
}

Kernel_Choice::~Kernel_Choice() {
    if (was_set_) {
        set_environment(kernel_variable, before_);
    } else if (is_set_) {
        unset_environment(kernel_variable);
    }
}

Test_Renderer::Test_Renderer(const Renderer_Setup& setup, const std::string& kernels)
    : description_(describe(setup) + (kernels.empty() ? "" : ", kernels " + kernels)),
      buffers_(
          [setup](Buffer_Format format) { return format == Buffer_Format::depth16 ? setup.depth_layout : setup.color_layout; },
          vorna::app::check::Guard_Access::trapped) {
    VT_Renderer_Data prototype;
    prototype.buffer_creation = buffers_.callback();
    prototype.standard_observer = {note_standard_call, this};
    VT_Renderer_Options& options = prototype.current_options;
    options.set_color_system(setup.color_system);
    options.set_buffer_depth(setup.depth ? 16 : 0);
    options.set_alpha_blending(setup.alpha);
    options.set_window_size(setup.size);
    options.set_window_origin(setup.origin);
    if (setup.palette_before || setup.palette) {
        options.set_palette(setup.palette_before ? setup.palette_before : setup.palette);
    }
    const Kernel_Choice choice(kernels);
    renderer_ = renderer_module().create_renderer(prototype);
    renderer_->requested_table.find("Merge Control Background Color")->set(setup.background);
    renderer_->requested_table.find("Force Merge Control On")->set(setup.force_merge);
    renderer_->requested_table.find("Use Mask")->set(setup.use_mask);
    renderer_->establish_all();
    if (setup.palette_before) {
        renderer_->current_options.set_palette(setup.palette ? setup.palette : new VT_Palette);
        renderer_->establish_all();
    }
}

Test_Renderer::~Test_Renderer() {
    renderer_.reset();
    for (const auto& buffer : buffers_.made()) {
        EXPECT_EQ(buffer->broken_guard(), "") << description_;
    }
}

void Test_Renderer::set_z_write(bool on) {
    published_setter<VT_Bool_Setter>(data(), "ZBuffer Write")(data(), on);
}

void Test_Renderer::set_z_test(std::int32_t mode) {
    published_setter<VT_Int_Setter>(data(), "ZBuffer Test")(data(), &mode);
}

void Test_Renderer::note_standard_call(void* context, const char* name) {
    static_cast<Test_Renderer*>(context)->handed_over_.emplace_back(name);
}

int scaled(int count) {
#if defined(__SANITIZE_ADDRESS__) || defined(_DEBUG)
    constexpr double usual = 0.2;
#else
    constexpr double usual = 1.0;
#endif
    const char* const wanted = std::getenv("VORNA_TEST_SCALE");
    return std::max(1, static_cast<int>(count * (wanted ? std::atof(wanted) : usual)));
}

std::string describe(const Renderer_Setup& setup) {
    const auto pair = [](std::int32_t a, const char* between, std::int32_t b) {
        return std::to_string(a) + between + std::to_string(b);
    };
    const auto layout = [&](const Buffer_Layout& of) { return pair(of.offset, "+", of.padding); };
    return std::string(setup.has_indices() ? "8-bit" : "32-bit") + (setup.depth ? ", depth" : ", no depth") +
           (setup.alpha ? ", alpha" : ", opaque") + ", window " + pair(setup.size.x, "x", setup.size.y) + " at " +
           pair(setup.origin.x, ",", setup.origin.y) + ", layouts " + layout(setup.color_layout) + " and " +
           layout(setup.depth_layout) + ", background " + std::to_string(setup.background.red) + "," +
           pair(setup.background.green, ",", setup.background.blue) + (setup.force_merge ? ", merge forced" : "") +
           (setup.use_mask ? ", mask" : "") + (setup.palette_before ? ", another palette before" : "");
}

namespace {

std::ostream& operator<<(std::ostream& out, VT_RGB32 color) {
    return out << std::hex << vorna::word_of(color) << std::dec;
}

std::ostream& operator<<(std::ostream& out, const VT_Int_Rectangle& r) {
    return out << r.left << ' ' << r.right << ' ' << r.bottom << ' ' << r.top;
}

std::ostream& operator<<(std::ostream& out, const VT_Line_Type_Set& set) {
    out << set.types.size() << " line types, scale " << set.scale << (set.per_segment ? " per segment" : "");
    if (set.types.empty()) {
        return out;
    }
    const VT_Line_Type& type = *set.types.front();
    out << " kind " << type.kind << " width " << type.width << " mode " << type.mode << " leading " << type.leading[0]
        << " trailing " << type.trailing[0];
    for (std::size_t i = 0; i < type.lengths.size(); ++i) {
        out << ' ' << type.kinds[i] << ':' << type.lengths[i];
    }
    return out;
}

} // namespace

std::string describe(const VT_Rendition& rendition) {
    const auto& [face, line, marker] = std::tie(rendition.face, rendition.line, rendition.marker);
    std::ostringstream out;
    out << "face " << face.color << " = " << int{face.index} << ", contrast " << face.contrast_color << ", pattern "
        << face.pattern << ", flags " << face.flags << ", mode " << face.mode << "; line " << line.color << " = "
        << int{line.index} << ", weight " << line.weight << ", style " << line.style << ", flags " << line.flags << ", mode "
        << line.mode << ", cap " << line.cap << ", join " << line.join << ", " << *line.line_types << "; marker " << marker.color
        << " = " << int{marker.index} << ", symbol " << marker.symbol << ", size " << marker.size << ", mode " << marker.mode
        << "; clip " << rendition.clip.hard_clip << ", region " << static_cast<bool>(rendition.clip.complex_clip)
        << ", depth test " << rendition.clip.depth_test << "; window " << rendition.window.rectangle << ", fill "
        << rendition.window.fill << "; flags " << rendition.drawing_flags;
    return out.str();
}
