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
    Sdl_Canvas(const Surface& surface, const Subject& subject) : subject_(subject) {
        if (const auto* scene = std::get_if<Scene>(&subject)) {
            make_vertices(*scene, surface.shading);
            SDL_SetRenderDrawBlendMode(renderer_.get(), surface.alpha ? SDL_BLENDMODE_BLEND : SDL_BLENDMODE_NONE);
        } else if (const auto* image = std::get_if<Image>(&subject)) {
            // Without an alpha channel in the target blending is quickest, with the target's own format copying.
            source_.reset(checked(SDL_CreateRGBSurfaceWithFormatFrom(const_cast<VT_RGB32*>(image->pixels.data()), image->size.x,
                                                                     image->size.y, 32, 4 * image->size.x,
                                                                     surface.alpha ? blended_format : target_format)));
            SDL_SetSurfaceBlendMode(source_.get(), surface.alpha ? SDL_BLENDMODE_BLEND : SDL_BLENDMODE_NONE);
        }
    }

    void draw() override {
        std::visit([this](const auto& subject) { draw_all(subject); }, subject_);
    }
    void finish() override { SDL_RenderFlush(renderer_.get()); }

private:
    static constexpr std::uint32_t target_format = SDL_PIXELFORMAT_RGB888, blended_format = SDL_PIXELFORMAT_ARGB8888;

    // A flat triangle takes the colour of its third point.
    void make_vertices(const Scene& scene, Shading shading) {
        scene.for_each_strip([&](const Strip& strip) {
            for (std::int32_t k = 0; k + 2 < strip.length; ++k) {
                for (std::int32_t i = k; i < k + 3; ++i) {
                    const VT_RGB32 color = strip.colors[shading == Shading::flat ? k + 2 : i];
                    vertices_.push_back({{static_cast<float>(strip.points[i].x), static_cast<float>(from_top(strip.points[i].y))},
                                         {color.red, color.green, color.blue, color.alpha},
                                         {}});
                }
            }
        });
    }

    void draw_all(const Scene&) {
        SDL_RenderGeometry(renderer_.get(), nullptr, vertices_.data(), static_cast<int>(vertices_.size()), nullptr, 0);
    }

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
            circles.filled ? fill_round(center, circles.radii[i], circles.colors[i])
                           : draw_round(center, circles.radii[i], circles.colors[i]);
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
        SDL_FillRects(target_.get(), spans_.data(), static_cast<int>(spans_.size()), vorna::word_of(color));
    }

    void draw_round(VT_DCI_Point center, std::int32_t radius, VT_RGB32 color) {
        if (radius != outline_radius_) {
            outline_ = polygon_round(radius);
            outline_.push_back(outline_.front());
            corners_.resize(outline_.size());
            outline_radius_ = radius;
        }
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

    const Subject& subject_;
    Surface_Holder source_{nullptr, SDL_FreeSurface};
    Surface_Holder target_{
        checked(SDL_CreateRGBSurfaceWithFormatFrom(pixels(), window_size.x, window_size.y, 32, bytes_per_row(), target_format)),
        SDL_FreeSurface};
    std::unique_ptr<SDL_Renderer, decltype(&SDL_DestroyRenderer)> renderer_{checked(SDL_CreateSoftwareRenderer(target_.get())),
                                                                            SDL_DestroyRenderer};
    std::vector<SDL_Rect> spans_;   // of a filled circle
    std::vector<VT_Point> outline_; // closed
    std::int32_t outline_radius_ = 0;
    std::vector<SDL_Vertex> vertices_; // three a triangle
    std::vector<SDL_Point> corners_;
};

} // namespace

std::unique_ptr<Canvas> make_sdl_canvas(const Surface& surface, const Subject& subject) {
    return std::make_unique<Sdl_Canvas>(surface, subject);
}

} // namespace bench
