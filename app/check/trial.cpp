// The module, renderers and messages of a running check.
#include "app/check/trial.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <utility>

#include "drawing/files/path.h"

namespace vorna::app::check {

namespace {

std::string one_line(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < 0x20; }, ' ');
    return text;
}

std::FILE* opened(const std::string& path) {
#if defined(_WIN32)
    return _wfopen(drawing::path_of(path).c_str(), L"wb");
#else
    return std::fopen(path.c_str(), "wb");
#endif
}

} // namespace

std::string place_of(std::string_view slot, const Configuration& configuration) {
    return std::string(slot) + ", " + std::string(configuration.name);
}

Journal::Journal(const std::string& path) : file_(opened(path)) {
    if (!file_) {
        throw std::runtime_error(path + ": cannot be written");
    }
    write("", "");
}

void Journal::begin(std::string_view check) {
    check_ = check;
    at("");
}

void Journal::at(const std::string& place) {
    write("", "at\t" + check_ + '\t' + one_line(place) + '\n');
}

void Journal::end(const std::string& reason) {
    write("ended\t" + check_ + '\t' + one_line(reason) + '\n', "");
}

// Readers stop at the line of the running check, because bytes of longer, older lines may follow it.
void Journal::write(const std::string& ended, const std::string& running) {
    const std::string text = ended + (running.empty() ? "idle\n" : running);
    std::fseek(file_.get(), end_, SEEK_SET);
    std::fwrite(text.data(), 1, text.size(), file_.get());
    std::fflush(file_.get());
    end_ += static_cast<long>(ended.size());
}

Journal::Contents Journal::read(const std::string& path) {
    Contents contents;
    std::ifstream file(drawing::path_of(path), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        const std::size_t check = line.find('\t');
        const std::size_t reason = line.find('\t', check + 1);
        if (reason == std::string::npos) {
            break;
        }
        const Entry entry{line.substr(check + 1, reason - check - 1), line.substr(reason + 1)};
        if (line.compare(0, check, "ended") != 0) {
            contents.running = entry;
            break;
        }
        contents.ended.push_back(entry);
    }
    return contents;
}

int Trial::scaled(int count) const noexcept {
    return std::max(1, count * task_.effort / 100);
}

const vorna::Module& Trial::module() {
    if (!module_) {
        module_ = std::make_unique<vorna::Module>(task_.module);
    }
    return *module_;
}

void Trial::at(std::string place) {
    place_ = std::move(place);
    journal_.at(place_);
}

Tried_Renderer::Tried_Renderer(Trial& trial, const Configuration& configuration, const Window& window)
    // The guards stay accessible, so that the check of the guards can name the byte that was overwritten.
    : buffers_(
          [padding = window.padding](auto format) {
              return Buffer_Layout{0, padding * vorna::bytes_per_pixel(format)};
          },
          Guard_Access::open) {
    VT_Renderer_Data prototype;
    prototype.buffer_creation = buffers_.callback();
    configure(prototype.current_options, configuration, window.size, window.origin);
    renderer_ = trial.module().create_renderer(prototype);
    if (!renderer_) {
        trial.fail("VD_Renderer returned no renderer");
    }
    establish_and_begin();
}

Tried_Renderer::~Tried_Renderer() {
    renderer_->end_picture_all();
}

void Tried_Renderer::establish(const Configuration& configuration, const Window& window) {
    renderer_->end_picture_all();
    configure(renderer_->current_renderer_options_for_update(), configuration, window.size, window.origin);
    establish_and_begin();
}

void Tried_Renderer::set_option(const char* name, const VT_Option_Content& content) {
    if (VT_Option* option = renderer_->requested_table.find(name)) {
        option->set(content);
        renderer_->end_picture_all();
        establish_and_begin();
    }
}

void Tried_Renderer::establish_and_begin() {
    renderer_->establish_all();
    renderer_->begin_picture_all();
}

namespace {

// By rows, because checks read all pixels after every call.
template <class Pixel> void append_row(const std::uint8_t* row, std::int32_t width, std::vector<std::uint32_t>& pixels) {
    for (std::int32_t column = 0; column < width; ++column) {
        Pixel pixel;
        std::memcpy(&pixel, row + static_cast<std::size_t>(column) * sizeof(Pixel), sizeof(Pixel));
        pixels.push_back(pixel);
    }
}

std::vector<std::uint32_t> pixels_of(const Guarded_Buffer& buffer) {
    std::vector<std::uint32_t> pixels;
    pixels.reserve(static_cast<std::size_t>(buffer.width) * static_cast<std::size_t>(buffer.height));
    for (std::int32_t row = 0; row < buffer.height; ++row) {
        const auto append = buffer.format == Buffer_Format::index8    ? append_row<std::uint8_t>
                            : buffer.format == Buffer_Format::depth16 ? append_row<std::uint16_t>
                                                                      : append_row<std::uint32_t>;
        append(buffer.rows[row], buffer.width, pixels);
    }
    return pixels;
}

// value(buffer, position of the pixel)
template <class Value> void fill(Tried_Renderer& renderer, Value value) {
    for (Guarded_Buffer* buffer : {&renderer.color(), renderer.depth()}) {
        std::size_t position = 0;
        for (std::int32_t row = 0; buffer && row < buffer->height; ++row) {
            for (std::int32_t column = 0; column < buffer->width; ++column) {
                buffer->set_pixel(column, row, value(*buffer, position++));
            }
        }
    }
}

} // namespace

Contents contents_of(Tried_Renderer& renderer) {
    return {renderer.color().width, pixels_of(renderer.color()),
            renderer.depth() ? pixels_of(*renderer.depth()) : std::vector<std::uint32_t>()};
}

void fill_with_noise(Tried_Renderer& renderer, std::uint64_t seed) {
    Random random(seed);
    fill(renderer, [&random](const Guarded_Buffer&, std::size_t) {
        return static_cast<std::uint32_t>(random.number(INT32_MIN, INT32_MAX));
    });
}

void restore(Tried_Renderer& renderer, const Contents& contents) {
    fill(renderer, [&contents](const Guarded_Buffer& buffer, std::size_t position) {
        return (buffer.format == Buffer_Format::depth16 ? contents.depths : contents.colors)[position];
    });
}

void clear(Tried_Renderer& renderer) {
    fill(renderer,
         [](const Guarded_Buffer& buffer, std::size_t) { return buffer.format == Buffer_Format::depth16 ? 0xFFFFU : 0U; });
}

std::string pixel_name(const Contents& contents, std::size_t position, bool in_depths) {
    const auto width = static_cast<std::size_t>(contents.width);
    return "column " + std::to_string(position % width) + ", row " + std::to_string(position / width) + " of the " +
           (in_depths ? "depth" : "colour") + " buffer";
}

std::string difference(const Contents& expected, const Contents& found) {
    const auto text_of = [](std::uint32_t value) {
        char text[16];
        std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(value));
        return std::string(text);
    };
    for (const auto member : {&Contents::colors, &Contents::depths}) {
        const auto& a = expected.*member;
        const auto& b = found.*member;
        if (a.size() != b.size()) {
            return "the buffers have different sizes";
        }
        const auto at = static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin()).first - a.begin());
        if (at < a.size()) {
            return pixel_name(found, at, member == &Contents::depths) + " is " + text_of(b[at]) + " instead of " + text_of(a[at]);
        }
    }
    return {};
}

} // namespace vorna::app::check
