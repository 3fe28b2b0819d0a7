// What the module's functions give to JavaScript. Each takes numbers and addresses and returns the address of one Answer, which
// the next call overwrites. JavaScript reads its members as 32-bit integers in this order (web/package/module.js).
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <emscripten/em_macros.h>

#include "drawing/files/usage_error.h"
#include "drawing/image_samples.h"

#define VORNA_WEB_FUNCTION extern "C" EMSCRIPTEN_KEEPALIVE

namespace vorna::web {

struct Plane {
    std::int32_t kind = 0; // of Image_Samples, -1 = no plane
    std::int32_t width = 0, height = 0;
    const std::uint8_t* bytes = nullptr;
    const VT_RGB32* palette = nullptr; // four bytes a colour: blue, green, red, alpha
    std::int32_t palette_size = 0;
};

struct Answer {
    std::int32_t status = 0; // 0 = done, 1 = wrong input, 2 = failed
    const char* text = nullptr;
    std::int32_t text_size = 0;
    std::int32_t handle = 0;
    Plane colors, depths;
};

// The one answer, and what it points to.
class Answers {
public:
    // Clears the answer, lets the work fill it in, and catches what it throws.
    template <class Work> const Answer* of(const Work& work) noexcept {
        answer = Answer{};
        answer.colors.kind = answer.depths.kind = -1;
        try {
            text.clear();
            work(*this);
        } catch (const drawing::Usage_Error& error) {
            fail(1, error.what());
        } catch (const std::bad_alloc&) {
            fail(2, "out of memory");
        } catch (const std::exception& error) {
            fail(2, error.what());
        }
        answer.text = text.data();
        answer.text_size = static_cast<std::int32_t>(text.size());
        return &answer;
    }

    void set_planes(drawing::Image_Samples color_samples, drawing::Image_Samples depth_samples = {}) {
        colors_ = std::move(color_samples);
        depths_ = std::move(depth_samples);
        answer.colors = plane_of(colors_);
        answer.depths = plane_of(depths_);
    }

    Answer answer;
    std::string text;

private:
    static Plane plane_of(const drawing::Image_Samples& samples) {
        return {samples.bytes ? static_cast<std::int32_t>(samples.kind) : -1,
                samples.width,
                samples.height,
                samples.bytes.get(),
                samples.palette.data(),
                static_cast<std::int32_t>(samples.palette.size())};
    }
    void fail(std::int32_t status, const char* message) {
        answer.status = status;
        text = message;
    }

    drawing::Image_Samples colors_, depths_;
};

inline Answers answers;

inline std::string_view text_at(const char* bytes, std::size_t size) {
    return {bytes, size};
}

// Objects that JavaScript knows by numbers from 1 on.
template <class Object> class Handles {
public:
    std::int32_t add(Object object) {
        objects_.push_back(std::make_unique<Object>(std::move(object)));
        return static_cast<std::int32_t>(objects_.size());
    }
    Object& operator[](std::int32_t handle) {
        if (handle < 1 || handle > static_cast<std::int32_t>(objects_.size()) ||
            !objects_[static_cast<std::size_t>(handle) - 1]) {
            throw drawing::Usage_Error("the object has been closed");
        }
        return *objects_[static_cast<std::size_t>(handle) - 1];
    }
    void close(std::int32_t handle) {
        static_cast<void>((*this)[handle]);
        objects_[static_cast<std::size_t>(handle) - 1].reset();
    }

private:
    std::vector<std::unique_ptr<Object>> objects_;
};

} // namespace vorna::web
