// Buffers between guards for the renderers of fuzzers.
#pragma once

#include <string>
#include <vector>

#include "app/check/guarded_buffer.h"
#include "host/renderer_data.h"
#include "tests/fuzz/fuzzing.h"

namespace fuzzing {

// Gives a renderer its buffers and keeps hold of them. Rows have a padding of guards, all rows together are trapped.
class Guarded_Buffers {
public:
    explicit Guarded_Buffers(const vorna::app::check::Buffer_Layout& layout) : layout_(layout) {}
    Guarded_Buffers(const Guarded_Buffers&) = delete;
    Guarded_Buffers& operator=(const Guarded_Buffers&) = delete;

    VT_Buffer_Creation callback() noexcept { return {create, this}; }

    // Ends the process when a guard has been overwritten. fills_blocks: rows of full width have been filled as one block, their
    // padding with them.
    void check(bool fills_blocks) {
        for (const auto& buffer : made_) {
            if (fills_blocks) {
                buffer->renew_padding();
            }
            if (const std::string broken = buffer->broken_guard(); !broken.empty()) {
                fail(broken);
            }
        }
    }

private:
    static void create(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                       VT_Reference<Frame_Buffer>& buffer) {
        auto& self = *static_cast<Guarded_Buffers*>(context);
        buffer = nullptr;
        self.made_.emplace_back(new vorna::app::check::Guarded_Buffer(width, height, *format, self.layout_));
        buffer = self.made_.back();
    }

    vorna::app::check::Buffer_Layout layout_;
    std::vector<VT_Reference<vorna::app::check::Guarded_Buffer>> made_;
};

} // namespace fuzzing
