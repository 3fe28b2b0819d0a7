// Canvas::establish: puts all requested options into force, or none.
#include "vorna/canvas.h"

#include "vorna/canvas_threads.h"

namespace vorna {

namespace {

void require_possible_window(const VT_Renderer_Options& options) {
    const VT_Int_Pair size = options.window_size();
    if (std::min(size.x, size.y) < 1 || std::max(size.x, size.y) > largest_buffer_side) {
        throw std::invalid_argument("a window has 1 to " + std::to_string(largest_buffer_side) + " columns and rows, not " +
                                    std::to_string(size.x) + " x " + std::to_string(size.y));
    }
    const VT_Int_Pair origin = window_origin(options);
    if (!is_window_in_range(origin, size)) {
        throw std::invalid_argument("a window lies between -2^30 and 2^30, not at (" + std::to_string(origin.x) + ", " +
                                    std::to_string(origin.y) + ")");
    }
}

// Whether the buffer has the size and format, and rows as renderers expect them.
bool has_pixels(const Frame_Buffer* buffer, VT_Int_Pair size, Buffer_Format format) {
    const std::int32_t pixel_bytes = bytes_per_pixel(format);
    if (!buffer || VT_Int_Pair{buffer->width, buffer->height} != size || buffer->format != format || pixel_bytes == 0 ||
        buffer->bytes_per_row < size.x * pixel_bytes || !buffer->rows) {
        return false;
    }
    for (std::int32_t r = 1; r < size.y; ++r) {
        if (buffer->rows[r] != buffer->rows[r - 1] - buffer->bytes_per_row) {
            return false;
        }
    }
    return buffer->rows[0] != nullptr;
}

[[noreturn]] void refuse_buffer(VT_Int_Pair size, Buffer_Format format) {
    const std::int32_t pixel_bytes = bytes_per_pixel(format);
    throw std::invalid_argument("a buffer of format " + std::to_string(static_cast<std::int32_t>(format)) + " and " +
                                std::to_string(size.x) + " x " + std::to_string(size.y) +
                                " pixels was expected, with bytes_per_row of " + std::to_string(size.x * pixel_bytes) +
                                " or more and rows[r + 1] = rows[r] - bytes_per_row");
}

// One call of establish. Unless keep() is called, the destructor restores renderer and options. A renderer that failed may have
// dropped its buffers: the option "Color Buffer" still holds the old colours, and the canvas holds the old depths.
class Attempt {
public:
    Attempt(VT_Renderer_Data& renderer, VT_Reference<Frame_Buffer> depth_buffer, bool has_pixels)
        : renderer_(renderer), options_(renderer.current_renderer_options()), requested_table_(renderer.requested_table),
          current_table_(renderer.current_option_table()), actions_(renderer.actions), creation_(renderer.buffer_creation),
          depth_buffer_(std::move(depth_buffer)), had_pixels_(has_pixels) {
        renderer_.buffer_creation = {create_buffer, this};
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt() {
        if (!is_kept_) {
            go_back();
        }
        renderer_.buffer_creation = creation_;
    }

    // Throws std::invalid_argument when a buffer that the application has made does not fit.
    void require_buffers() const {
        if (refused_format_ != Buffer_Format{}) {
            refuse_buffer(refused_size_, refused_format_);
        }
    }
    // The new depth buffer, or the old one when none was made.
    VT_Reference<Frame_Buffer> depth_buffer() const noexcept { return new_depth_buffer_ ? new_depth_buffer_ : depth_buffer_; }
    void keep() noexcept { is_kept_ = true; }

private:
    static void create_buffer(void* context, std::int32_t width, std::int32_t height, const Buffer_Format* format,
                              VT_Reference<Frame_Buffer>& buffer) {
        auto& attempt = *static_cast<Attempt*>(context);
        const bool is_depth = *format == Buffer_Format::depth16;
        if (attempt.goes_back_) {
            buffer = is_depth ? attempt.depth_buffer_ : nullptr;
            return;
        }
        attempt.creation_.function(attempt.creation_.context, width, height, format, buffer);
        if (!has_pixels(buffer.get(), {width, height}, *format)) {
            buffer = nullptr;
            attempt.refused_size_ = {width, height};
            attempt.refused_format_ = *format;
        } else if (is_depth) {
            attempt.new_depth_buffer_ = buffer;
        }
    }

    // The renderer may have added options in between; none is ever removed.
    static void put_back(VT_Option_Table& table, VT_Option_Table& before) noexcept {
        for (std::size_t i = 0; i < before.size(); ++i) {
            table[i] = std::move(before[i]);
        }
    }

    void go_back() noexcept {
        goes_back_ = true;
        renderer_.current_renderer_options_for_update() = options_;
        put_back(renderer_.requested_table, requested_table_);
        put_back(renderer_.current_option_table(), current_table_);
        if (had_pixels_) {
            try {
                renderer_.establish();
            } catch (...) {
                // The old buffers are there. A renderer that fails for another reason has no buffers and draws nothing.
            }
        }
        renderer_.actions = actions_;
    }

    VT_Renderer_Data& renderer_;
    const VT_Renderer_Options options_;
    VT_Option_Table requested_table_, current_table_;
    const VT_Action_Table actions_;
    const VT_Buffer_Creation creation_;
    const VT_Reference<Frame_Buffer> depth_buffer_;
    VT_Reference<Frame_Buffer> new_depth_buffer_;
    VT_Int_Pair refused_size_;
    Buffer_Format refused_format_{};
    bool had_pixels_;
    bool goes_back_ = false;
    bool is_kept_ = false;
};

} // namespace

void Canvas::draw_with(const Module& module, unsigned threads) {
    threads_ = std::make_shared<Canvas_Threads>(module.maker(), *renderer_, threads);
}

const VT_Action_Table& Canvas::actions_of_kept_calls() const noexcept {
    return threads_->own_actions();
}

void Canvas::draw_kept_calls() const {
    threads_->flush_and_choose();
}

void Canvas::watch_drawing(Thread_Watch watch) {
    threads_->watch(std::move(watch));
}

void Canvas::establish() {
    require_possible_window(requested_);
    flush();
    const Canvas_Threads::Own_Slots own_slots(threads_.get());
    struct Alone_On_Failure {
        Canvas_Threads* threads;
        ~Alone_On_Failure() {
            if (threads) {
                threads->draw_alone_from_now();
            }
        }
    } on_failure{threads_.get()};
    Attempt attempt(*renderer_, depth_buffer_, find_color_buffer() != nullptr);
    renderer_->current_renderer_options_for_update() = requested_;
    renderer_->establish_all();
    attempt.require_buffers();
    if (const Frame_Buffer& buffer = color_buffer(); !has_pixels(&buffer, requested_.window_size(), buffer.format)) {
        refuse_buffer(requested_.window_size(), buffer.format);
    }
    const VT_Reference<Frame_Buffer> depth_buffer = has_depth_buffer() ? attempt.depth_buffer() : nullptr;
    if (threads_) {
        threads_->establish_workers(VT_Reference<Frame_Buffer>(find_color_buffer()), depth_buffer);
    }
    attempt.keep();
    on_failure.threads = nullptr;
    depth_buffer_ = depth_buffer;
    rendition_->clip.hard_clip = window();
}

} // namespace vorna
