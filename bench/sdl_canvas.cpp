// The peer: SDL2's software renderer.
#include <cmath>
#include <stdexcept>

#include <SDL.h>

#include "bench/memory_canvas.h"

namespace bench {

namespace {

template <class Object> Object* checked(Object* object) {
    if (!object) {
        throw std::runtime_error(std::string("SDL2: ") + SDL_GetError());
    }
    return object;
}

using Surface_Holder = std::unique_ptr<SDL_Surface, decltype(&SDL_FreeSurface)>;

class Sdl_Canvas final : public Memory_Canvas {
public:
    Sdl_Canvas(const Surface& surface, const Primitives& primitives) : primitives_(primitives) {
        if (const auto* circles = std::get_if<Circles>(&primitives)) {
            outline_ = polygon_round(circles->radius);
            outline_.push_back(outline_.front());
            corners_.resize(outline_.size());
        } else if (const auto* image = std::get_if<Image>(&primitives)) {
            // Without an alpha channel in the target blending is quickest, with the target's own format copying.
            source_.reset(checked(SDL_CreateRGBSurfaceWithFormatFrom(const_cast<VT_RGB32*>(image->pixels.data()), image->size.x,
                                                                     image->size.y, 32, 4 * image->size.x,
                                                                     surface.alpha ? blended_format : target_format)));
            SDL_SetSurfaceBlendMode(source_.get(), surface.alpha ? SDL_BLENDMODE_BLEND : SDL_BLENDMODE_NONE);
        }
    }

    void draw() override {
        std::visit([this](const auto& primitives) { draw_all(primitives); }, primitives_);
    }
    void finish() override { SDL_RenderFlush(renderer_.get()); }

private:
    static constexpr std::uint32_t target_format = SDL_PIXELFORMAT_RGB888, blended_format = SDL_PIXELFORMAT_ARGB8888;

    void draw_all(const Lines& lines) {
        for (std::size_t i = 0; i < lines.points.size(); i += 2) {
            const VT_DCI_Point from = lines.points[i], to = lines.points[i + 1];
            set_color(lines.colors[i]);
            SDL_RenderDrawLine(renderer_.get(), from.x, from_top(from.y), to.x, from_top(to.y));
        }
    }

    void draw_all(const Circles& circles) {
        for (std::size_t i = 0; i < circles.centers.size(); ++i) {
            const VT_DCI_Point center = circles.centers[i];
            circles.filled ? fill_round(center, circles.radius, circles.colors[i]) : draw_round(center, circles.colors[i]);
        }
    }

    // The rows by the midpoint walk, as whoever draws circles with this library must do.
    void fill_round(VT_DCI_Point center, std::int32_t radius, VT_RGB32 color) {
        const std::int32_t middle = from_top(center.y);
        spans_.clear();
        const auto add = [&](std::int32_t row, std::int32_t half_width) {
            spans_.push_back({center.x - half_width, row, 2 * half_width + 1, 1});
        };
        add(middle, radius);
        std::int32_t decision = 1 - radius, i = 0, j = radius;
        for (;;) {
            const std::int32_t outer = j;
            ++i;
            const bool inwards = decision > 0;
            j -= inwards;
            decision += 2 * (i - (inwards ? j : 0)) + 1;
            if (inwards && outer >= i) {
                add(middle - outer, i - 1);
                add(middle + outer, i - 1);
            }
            if (j < i) {
                break;
            }
            add(middle - i, j);
            add(middle + i, j);
        }
        SDL_FillRects(target_.get(), spans_.data(), static_cast<int>(spans_.size()), word_of(color));
    }

    void draw_round(VT_DCI_Point center, VT_RGB32 color) {
        for (std::size_t i = 0; i < corners_.size(); ++i) {
            corners_[i] = {center.x + static_cast<int>(std::lround(outline_[i].x)),
                           from_top(center.y) + static_cast<int>(std::lround(outline_[i].y))};
        }
        set_color(color);
        SDL_RenderDrawLines(renderer_.get(), corners_.data(), static_cast<int>(corners_.size()));
    }

    void draw_all(const Image& image) {
        SDL_Rect place{image.place.x, from_top(image.place.y + image.size.y - 1), image.size.x, image.size.y};
        SDL_BlitSurface(source_.get(), nullptr, target_.get(), &place);
    }

    void draw_all(const Polylines&) {}

    void set_color(VT_RGB32 color) { SDL_SetRenderDrawColor(renderer_.get(), color.red, color.green, color.blue, color.alpha); }

    const Primitives& primitives_;
    Surface_Holder source_{nullptr, SDL_FreeSurface};
    Surface_Holder target_{
        checked(SDL_CreateRGBSurfaceWithFormatFrom(pixels(), window_size.x, window_size.y, 32, bytes_per_row, target_format)),
        SDL_FreeSurface};
    std::unique_ptr<SDL_Renderer, decltype(&SDL_DestroyRenderer)> renderer_{checked(SDL_CreateSoftwareRenderer(target_.get())),
                                                                            SDL_DestroyRenderer};
    std::vector<SDL_Rect> spans_;   // of a filled circle
    std::vector<VT_Point> outline_; // closed
    std::vector<SDL_Point> corners_;
};

} // namespace

std::unique_ptr<Canvas> make_sdl_canvas(const Surface& surface, const Primitives& primitives) {
    return std::make_unique<Sdl_Canvas>(surface, primitives);
}

} // namespace bench
