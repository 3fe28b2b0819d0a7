// A renderer's life: options set, windows, pixels and buffers changed, drawn with, cloned caches, destroyed. Guards are checked
// after every step.
#include <optional>

#include "app/check/scene.h"
#include "tests/fuzz/guarded_buffers.h"
#include "vorna/draw.h"

namespace {

using namespace fuzzing;
using namespace vorna::app::check;

constexpr int most_steps = 24;

class Life {
public:
    explicit Life(Bytes& input) : input_(input), buffers_({input.byte() % 64, input.byte() % 12}) {
        VT_Renderer_Data prototype;
        prototype.buffer_creation = buffers_.callback();
        change_options(prototype.current_options);
        renderer_ = loaded_module().create_renderer(prototype);
    }

    void live() {
        for (int step = 0; step < most_steps && !input_.at_end(); ++step) {
            buffers_.check(take_step());
        }
        renderer_.reset();
        buffers_.check(false);
    }

private:
    // True when it may have filled rows as one block.
    bool take_step() {
        switch (input_.choice(10)) {
        case 0:
            change_options(renderer_->current_renderer_options_for_update());
            establish();
            return false;
        case 1:
            set_option();
            if (input_.flag()) {
                establish();
            }
            return false;
        case 2:
            establish();
            return false;
        case 3:
            if (established_) {
                renderer_->begin_picture_all();
            }
            return false;
        case 4:
            if (established_) {
                renderer_->end_picture_all();
                renderer_->update_all(window_.area());
            }
            return false;
        case 5:
            renderer_->optimize_current_renderer_options();
            return false;
        case 6:
            set_depth_rules();
            return false;
        default:
            return draw();
        }
    }

    void change_options(VT_Renderer_Options& options) {
        window_.size = {input_.byte() % 70 + 1, input_.byte() % 40 + 1};
        window_.origin = {input_.byte() - 128, input_.byte() - 128};
        options.set_window_size(window_.size);
        options.set_window_origin(window_.origin);
        const std::uint8_t bits = input_.byte();
        options.set_color_system(bits & 1);
        options.set_buffer_depth((bits & 2) != 0 ? 16 : 0);
        options.set_alpha_blending((bits & 4) != 0);
        options.set_local_coordinates((bits & 8) != 0);
        options.set_backing_store((bits & 16) != 0);
        options.set_supports_complex_clip((bits & 32) != 0);
        if ((bits & 8) != 0) {
            window_.origin = {};
        }
        if ((bits & 64) != 0) {
            const auto levels = [&] { return static_cast<std::int32_t>(input_.byte() % 6 + 1); };
            std::vector<VT_RGB32> colors(input_.byte() + std::size_t{1});
            std::optional<VT_Color_Cube> cube;
            if (input_.flag()) {
                cube = VT_Color_Cube({levels(), levels(), levels()}, 1.0F, input_.byte());
            }
            options.set_palette(new VT_Palette(std::move(colors), cube));
        }
    }

    void establish() {
        renderer_->establish_all();
        established_ = true;
    }

    // Any option, as the host or an application sets it; also a buffer of the application's own that does not fit.
    void set_option() {
        VT_Option& option = renderer_->requested_table[input_.choice(renderer_->requested_table.size())];
        const std::string& name = option.name();
        if (name == "Color Buffer" || name == "Depth Buffer") {
            if (input_.flag()) {
                option.set(VT_Pointer(nullptr));
                return;
            }
            constexpr Buffer_Format formats[] = {Buffer_Format::index8, Buffer_Format::rgb32, Buffer_Format::depth16};
            const VT_Int_Pair size = input_.flag() ? window_.size : VT_Int_Pair{input_.byte() % 70 + 1, input_.byte() % 40 + 1};
            VT_Reference<Frame_Buffer> buffer;
            const Buffer_Format format = formats[input_.choice(3)];
            const VT_Buffer_Creation creation = buffers_.callback();
            creation.function(creation.context, size.x, size.y, &format, buffer);
            option.set(VT_Pointer(VT_Reference<VT_Counted>(buffer)));
            return;
        }
        switch (option.value()->content.index()) {
        case 0:
            option.set(input_.flag());
            break;
        case 1:
            option.set(static_cast<std::int32_t>(input_.word()));
            break;
        case 2:
            option.set(VT_Int_RGB{input_.byte(), input_.byte(), input_.byte()});
            break;
        default:
            break; // objects and functions of the renderer's own
        }
    }

    void set_depth_rules() {
        if (const auto* write = renderer_->current_table.find("ZBuffer Write"); write && write->as_setter<VT_Bool_Setter>()) {
            write->as_setter<VT_Bool_Setter>()(*renderer_, input_.flag());
        }
        const auto mode = static_cast<std::int32_t>(input_.byte());
        if (const auto* test = renderer_->current_table.find("ZBuffer Test"); test && test->as_setter<VT_Int_Setter>()) {
            test->as_setter<VT_Int_Setter>()(*renderer_, &mode);
        }
    }

    // A call that its slot allows in this window, in one step of four through a clip region.
    bool draw() {
        const std::string_view slot = slot_names()[input_.choice(slot_names().size())];
        Random random(input_.word());
        const Call call = random_call(random, slot, window_);
        if (random.chance(25)) {
            call.rendition->clip.complex_clip = random_region(random, window_.area());
            call.rendition->clip.window_offset = {random.number(-3, 3), random.number(-3, 3)};
        }
        if (established_) {
            call.draw_with(*renderer_);
        }
        return slot == "draw_window" || slot == "clear_depth_rectangle";
    }

    Bytes& input_;
    Guarded_Buffers buffers_;
    Window window_;
    bool established_ = false;
    vorna::Module::Renderer renderer_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes input(text_of(data, size));
    Life(input).live();
    return 0;
}
