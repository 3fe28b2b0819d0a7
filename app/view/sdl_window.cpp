// A module that opens windows with SDL.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

#include <SDL.h>

#include "app/view/window.h"
#include "host/export.h"

namespace vorna::app::view {
namespace {

constexpr VT_Int_Pair preferred_size{1280, 960};
// Milliseconds without events after which a draft is drawn in full detail.
constexpr int draft_pause = 150;
constexpr double wheel_step = 1.2;
// The number of moves of a scripted drag.
constexpr int drag_parts = 8;

void check(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(std::string(what) + ": " + SDL_GetError());
    }
}

// Initialises SDL and shuts it down.
struct Library {
    Library() {
        // Without a display SDL opens an invisible window. That is wanted only when its driver is named.
        const bool named = std::getenv("SDL_VIDEODRIVER") != nullptr;
        if (!named && !std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) {
            throw std::runtime_error("no display to open a window on: neither DISPLAY nor WAYLAND_DISPLAY is set");
        }
        SDL_SetMainReady();
        check(SDL_Init(SDL_INIT_VIDEO) == 0, "no display to open a window on");
        const std::string_view driver = SDL_GetCurrentVideoDriver();
        if (!named && (driver == "offscreen" || driver == "dummy")) {
            SDL_Quit();
            throw std::runtime_error("no display to open a window on: DISPLAY and WAYLAND_DISPLAY lead to none");
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { SDL_Quit(); }
};

template <auto Destroy> struct Destroyer {
    template <class Thing> void operator()(Thing* thing) const { Destroy(thing); }
};

class Sdl_Window final : public Window {
public:
    Sdl_Window(const char* title, VT_Int_Pair size) {
        const bool is_given = size != VT_Int_Pair{};
        VT_Int_Pair fitting = is_given ? size : preferred_size;
        if (SDL_Rect usable; !is_given && SDL_GetDisplayUsableBounds(0, &usable) == 0) {
            fitting = {std::clamp(usable.w * 4 / 5, 1, preferred_size.x), std::clamp(usable.h * 4 / 5, 1, preferred_size.y)};
        }
        window_.reset(SDL_CreateWindow(title, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, fitting.x, fitting.y,
                                       SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI));
        check(window_ != nullptr, "no window");
        renderer_.reset(SDL_CreateRenderer(window_.get(), -1, SDL_RENDERER_PRESENTVSYNC));
        if (!renderer_) {
            renderer_.reset(SDL_CreateRenderer(window_.get(), -1, SDL_RENDERER_SOFTWARE));
        }
        check(renderer_ != nullptr, "nothing to show pictures with");
    }

    void run(Controls& controls, const std::vector<Script_Step>& script) override {
        controls_ = &controls;
        fit();
        for (auto step = script.begin(); !closed_;) {
            if (controls.has_changed()) {
                controls.draw();
                title_is_old_ = true;
            }
            if (step != script.end()) {
                push(*step++);
                continue;
            }
            SDL_Event event;
            if (SDL_WaitEventTimeout(&event, controls.is_draft() || title_is_old_ ? draft_pause : -1) != 0) {
                do {
                    handle(event);
                } while (!closed_ && SDL_PollEvent(&event) != 0);
            } else {
                controls.refine();
                show_title();
            }
            if (SDL_GetTicks64() - title_time_ > 4 * draft_pause) {
                show_title();
            }
        }
        controls_ = nullptr;
    }

    void show(const drawing::Raster& pixels, const VT_Palette& palette, VT_Int_Pair place) override {
        const VT_Int_Pair size = size_in_pixels();
        if (!texture_ || texture_size_ != size) {
            texture_.reset(
                SDL_CreateTexture(renderer_.get(), SDL_PIXELFORMAT_BGRA32, SDL_TEXTUREACCESS_STREAMING, size.x, size.y));
            check(texture_ != nullptr, "no room for a picture");
            SDL_SetTextureBlendMode(texture_.get(), SDL_BLENDMODE_NONE);
            texture_size_ = size;
        }
        const SDL_Rect target{place.x, place.y, std::min(pixels.width, size.x - place.x),
                              std::min(pixels.height, size.y - place.y)};
        void* memory = nullptr;
        int pitch = 0;
        check(SDL_LockTexture(texture_.get(), &target, &memory, &pitch) == 0, "no access to a picture");
        std::array<VT_RGB32, 256> colors;
        for (std::size_t i = 0; i < colors.size(); ++i) {
            colors[i] = palette.color(static_cast<std::uint8_t>(i));
        }
        for (int r = 0; r < target.h; ++r) {
            const std::uint8_t* from = pixels.top + std::ptrdiff_t{r} * pixels.row_bytes;
            std::uint8_t* to = static_cast<std::uint8_t*>(memory) + std::ptrdiff_t{r} * pitch;
            if (pixels.format == Buffer_Format::index8) {
                std::transform(from, from + target.w, reinterpret_cast<VT_RGB32*>(to),
                               [&colors](std::uint8_t index) { return colors[index]; });
            } else {
                std::memcpy(to, from, 4 * static_cast<std::size_t>(target.w));
            }
        }
        SDL_UnlockTexture(texture_.get());
        SDL_RenderCopy(renderer_.get(), texture_.get(), nullptr, nullptr);
        SDL_RenderPresent(renderer_.get());
    }

private:
    VT_Int_Pair size_in_window() const {
        VT_Int_Pair size;
        SDL_GetWindowSize(window_.get(), &size.x, &size.y);
        return {std::max(size.x, 1), std::max(size.y, 1)};
    }

    VT_Int_Pair size_in_pixels() const {
        VT_Int_Pair size;
        check(SDL_GetRendererOutputSize(renderer_.get(), &size.x, &size.y) == 0, "no size of the window");
        return {std::max(size.x, 1), std::max(size.y, 1)};
    }

    // On displays with high resolution a window's unit covers several pixels.
    Place in_pixels(int x, int y) const { return {x * pixels_per_unit_, y * pixels_per_unit_}; }

    void fit() {
        const VT_Int_Pair size = size_in_pixels();
        pixels_per_unit_ = static_cast<double>(size.x) / size_in_window().x;
        // Letters are smaller in windows that are too small for the help panel.
        const int scale = std::min(size.x / 400, size.y / 250);
        controls_->resize(size, std::clamp(scale, 1, std::max(2, static_cast<int>(std::lround(2 * pixels_per_unit_)))));
    }

    void show_title() {
        title_time_ = SDL_GetTicks64();
        if (title_is_old_) {
            SDL_SetWindowTitle(window_.get(), controls_->title().c_str());
            title_is_old_ = false;
        }
    }

    void handle(const SDL_Event& event) {
        switch (event.type) {
        case SDL_QUIT:
            closed_ = true;
            return;
        case SDL_WINDOWEVENT:
            if (event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) {
                fit();
            } else if (event.window.event == SDL_WINDOWEVENT_EXPOSED && !controls_->has_changed()) {
                controls_->show();
            }
            return;
        case SDL_RENDER_TARGETS_RESET:
        case SDL_RENDER_DEVICE_RESET:
            texture_.reset();
            fit();
            return;
        case SDL_KEYDOWN:
            press(event.key.keysym);
            return;
        case SDL_MOUSEBUTTONDOWN:
            button_ = event.button.button;
            if (button_ == SDL_BUTTON_LEFT && (SDL_GetModState() & KMOD_SHIFT) != 0) {
                button_ = SDL_BUTTON_MIDDLE;
            }
            pointer_ = in_pixels(event.button.x, event.button.y);
            SDL_CaptureMouse(SDL_TRUE);
            if (button_ == SDL_BUTTON_LEFT) {
                controls_->press_at(pointer_);
            }
            return;
        case SDL_MOUSEBUTTONUP:
            SDL_CaptureMouse(SDL_FALSE);
            if (std::exchange(button_, 0) == SDL_BUTTON_LEFT) {
                controls_->release();
            }
            return;
        case SDL_MOUSEMOTION:
            drag_to(in_pixels(event.motion.x, event.motion.y));
            return;
        case SDL_MOUSEWHEEL:
            controls_->zoom(std::pow(wheel_step, event.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -event.wheel.preciseY
                                                                                                 : event.wheel.preciseY),
                            pointer_);
            return;
        default:
            return;
        }
    }

    void drag_to(const Place& place) {
        const Place by{place.x - pointer_.x, place.y - pointer_.y};
        pointer_ = place;
        if (button_ == SDL_BUTTON_LEFT) {
            controls_->turn(by);
        } else if (button_ == SDL_BUTTON_MIDDLE || button_ == SDL_BUTTON_RIGHT) {
            controls_->move(by);
        }
    }

    static char letter_of(SDL_Keycode key) {
        switch (key) {
        case SDLK_F1:
            return 'h';
        case SDLK_ESCAPE:
            return 'q';
        case SDLK_HOME:
            return key::home;
        case SDLK_END:
            return key::end;
        case SDLK_LEFT:
            return key::left;
        case SDLK_RIGHT:
            return key::right;
        case SDLK_UP:
            return key::up;
        case SDLK_DOWN:
            return key::down;
        case SDLK_PAGEUP:
            return key::page_up;
        case SDLK_PAGEDOWN:
            return key::page_down;
        case SDLK_EQUALS:
        case SDLK_KP_PLUS:
            return '+';
        case SDLK_KP_MINUS:
            return '-';
        case SDLK_KP_1:
            return '1';
        case SDLK_KP_3:
            return '3';
        case SDLK_KP_5:
            return '5';
        case SDLK_KP_7:
            return '7';
        default:
            return key > 0 && key < 0x80 ? static_cast<char>(key) : '\0';
        }
    }

    void press(const SDL_Keysym& key) {
        switch (controls_->press(letter_of(key.sym), (key.mod & (KMOD_SHIFT | KMOD_CTRL)) != 0)) {
        case Answer::close:
            closed_ = true;
            return;
        case Answer::change_full_screen: {
            const bool is_full = (SDL_GetWindowFlags(window_.get()) & SDL_WINDOW_FULLSCREEN) != 0;
            SDL_SetWindowFullscreen(window_.get(), is_full ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
            return;
        }
        case Answer::none:
            return;
        }
    }

    // Sends the events of a step as if they came from mouse and keyboard.
    void push(const Script_Step& step) {
        const auto send = [this](SDL_EventType type, auto fill) {
            SDL_Event event{};
            event.type = type;
            fill(event);
            event.key.windowID = SDL_GetWindowID(window_.get());
            SDL_PushEvent(&event);
        };
        const auto move = [&](VT_Int_Pair to) {
            send(SDL_MOUSEMOTION, [&](SDL_Event& event) {
                event.motion.x = to.x;
                event.motion.y = to.y;
            });
        };
        const SDL_Keymod before = SDL_GetModState();
        const int modifiers = (step.shift ? KMOD_LSHIFT : KMOD_NONE) | (step.ctrl ? KMOD_LCTRL : KMOD_NONE);
        SDL_SetModState(static_cast<SDL_Keymod>(before | modifiers));
        switch (step.kind) {
        case Script_Step::Kind::key: {
            send(SDL_KEYDOWN, [&](SDL_Event& event) {
                event.key.keysym.sym = SDL_GetKeyFromName(step.key.c_str());
                event.key.keysym.mod = static_cast<Uint16>(modifiers);
            });
            break;
        }
        case Script_Step::Kind::drag: {
            const auto press_or_release = [&](SDL_EventType type, VT_Int_Pair at) {
                send(type, [&](SDL_Event& event) {
                    event.button.button = step.button == Script_Step::Button::left     ? SDL_BUTTON_LEFT
                                          : step.button == Script_Step::Button::middle ? SDL_BUTTON_MIDDLE
                                                                                       : SDL_BUTTON_RIGHT;
                    event.button.x = at.x;
                    event.button.y = at.y;
                });
            };
            move(step.from);
            press_or_release(SDL_MOUSEBUTTONDOWN, step.from);
            for (int i = 1; i <= drag_parts; ++i) {
                move({step.from.x + (step.to.x - step.from.x) * i / drag_parts,
                      step.from.y + (step.to.y - step.from.y) * i / drag_parts});
            }
            press_or_release(SDL_MOUSEBUTTONUP, step.to);
            break;
        }
        case Script_Step::Kind::wheel:
            move(step.to);
            send(SDL_MOUSEWHEEL, [&](SDL_Event& event) {
                event.wheel.y = step.clicks;
                event.wheel.preciseY = static_cast<float>(step.clicks);
            });
            break;
        case Script_Step::Kind::resize:
            SDL_SetWindowSize(window_.get(), step.to.x, step.to.y);
            break;
        }
        SDL_Event event;
        while (!closed_ && SDL_PollEvent(&event) != 0) {
            handle(event);
        }
        SDL_SetModState(before);
    }

    Library library_;
    std::unique_ptr<SDL_Window, Destroyer<SDL_DestroyWindow>> window_;
    std::unique_ptr<SDL_Renderer, Destroyer<SDL_DestroyRenderer>> renderer_;
    std::unique_ptr<SDL_Texture, Destroyer<SDL_DestroyTexture>> texture_;
    VT_Int_Pair texture_size_;
    Controls* controls_ = nullptr;
    double pixels_per_unit_ = 1;
    Place pointer_;
    int button_ = 0; // the pressed mouse button
    bool closed_ = false, title_is_old_ = false;
    Uint64 title_time_ = 0;
};

} // namespace

// Exceptions do not cross the module's border, because its types may differ from the command's.
extern "C" VORNA_MODULE_EXPORT Window* vorna_open_window(const char* title, const VT_Int_Pair* size, std::string* error) {
    try {
        return new Sdl_Window(title, *size);
    } catch (const std::exception& exception) {
        *error = exception.what();
        return nullptr;
    }
}

static_assert(std::is_same_v<decltype(vorna_open_window), Window_Opener>);

} // namespace vorna::app::view
