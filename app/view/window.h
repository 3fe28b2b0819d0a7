// The interface between a viewer and a window system. Windows are in a module of their own, so that the window system is loaded
// only when a window is opened.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/view/script.h"
#include "drawing/image/image_file.h"

namespace vorna::app::view {

// A place in the shown image, in pixels from its upper left corner.
struct Place {
    double x = 0, y = 0;
};

// Keys without a letter or sign, as Controls::press gets them.
namespace key {
inline constexpr char left = 1, right = 2, up = 3, down = 4, page_up = 5, page_down = 6, home = 7, end = 8;
} // namespace key

// Shows images.
class Screen {
public:
    Screen() = default;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    virtual ~Screen() = default;

    // Shows a rectangle of pixels, its upper left pixel at the place. palette: used for indices only.
    virtual void show(const drawing::Raster& pixels, const VT_Palette& palette, VT_Int_Pair place) = 0;
};

// The window's reaction to a key.
enum class Answer { none, change_full_screen, close };

// Receives the events of a window and draws its contents.
class Controls {
public:
    Controls() = default;
    Controls(const Controls&) = delete;
    Controls& operator=(const Controls&) = delete;
    virtual ~Controls() = default;

    // size: of the shown image in pixels. letter_scale: the width of a letter's dot in pixels.
    virtual void resize(VT_Int_Pair size, std::int32_t letter_scale) = 0;
    // The left button is pressed and released; in between the pointer's moves arrive as turns.
    virtual void press_at(const Place& /*pointer*/) {}
    virtual void release() {}
    // by: the pointer's move in pixels to the right and down.
    virtual void turn(const Place& by) = 0;
    virtual void move(const Place& by) = 0;
    virtual void zoom(double factor, const Place& pointer) = 0;
    // key: a letter, a sign or one of the namespace key. reversed: with shift or control.
    virtual Answer press(char key, bool reversed) = 0;

    // Whether the image must be drawn again.
    virtual bool has_changed() const = 0;
    // Draws the image and shows it.
    virtual void draw() = 0;
    // Whether the shown image is a draft, because the camera moved and the model is large.
    virtual bool is_draft() const = 0;
    // Requests the same image in full detail.
    virtual void refine() = 0;
    // Shows the last image again.
    virtual void show() = 0;
    // The input, the options and the drawing time in one line.
    virtual std::string title() const = 0;
};

class Window : public Screen {
public:
    // Handles events until the window is closed. The steps of the script come first; each waits until the image of the step
    // before is shown.
    virtual void run(Controls& controls, const std::vector<Script_Step>& script) = 0;
};

// size: none = a size that suits the display. Throws std::runtime_error when there is no display or no module for windows.
// command: begins the message.
std::unique_ptr<Window> open_window(const std::string& command, const std::string& title, std::optional<VT_Int_Pair> size);

// The module's entry point. Returns the window, or null and sets error. size: 0 by 0 = a size that suits the display.
using Window_Opener = Window*(const char* title, const VT_Int_Pair* size, std::string* error);
inline constexpr const char* window_opener = "vorna_open_window";
inline constexpr const char* window_module = "vorna-window.so";

} // namespace vorna::app::view
