// A window that shows pictures and hears mouse and keys: what lies between a viewer and the window system. The command reaches
// windows through a module of its own, so that only who opens one loads a window system.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/view/script.h"
#include "drawing/image/image_file.h"

namespace vorna::app::view {

// Places in a picture are in pixels from its upper left corner.
struct Place {
    double x = 0, y = 0;
};

// Where pictures are shown.
class Screen {
public:
    Screen() = default;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    virtual ~Screen() = default;

    // A rectangle of the picture; its upper left pixel goes to that place. Palette: for indices only.
    virtual void show(const drawing::Raster& pixels, const VT_Palette& palette, VT_Int_Pair place) = 0;
};

// What a window is told to do about a key.
enum class Answer { none, change_full_screen, close };

// What a window shows, and tells about mouse and keys.
class Controls {
public:
    Controls() = default;
    Controls(const Controls&) = delete;
    Controls& operator=(const Controls&) = delete;
    virtual ~Controls() = default;

    // Of the picture, in pixels. letter_scale: how many pixels wide the dots of letters are.
    virtual void resize(VT_Int_Pair size, std::int32_t letter_scale) = 0;
    // The pointer moved so many pixels to the right and downwards.
    virtual void turn(const Place& by) = 0;
    virtual void move(const Place& by) = 0;
    virtual void zoom(double factor, const Place& pointer) = 0;
    // A letter or sign; reversed: with shift or control.
    virtual Answer press(char key, bool reversed) = 0;

    // Whether something has changed since the last picture.
    virtual bool has_changed() const = 0;
    // Draws the picture anew and shows it.
    virtual void draw() = 0;
    // Whether the last picture was made in haste, because the camera moved and the model is large.
    virtual bool is_draft() const = 0;
    // Asks for the same picture in full.
    virtual void refine() = 0;
    // Shows again what was drawn.
    virtual void show() = 0;
    // What is shown and how fast, in a line.
    virtual std::string title() const = 0;
};

class Window : public Screen {
public:
    // Until it is closed. The script's steps come first, each after the picture of the one before it.
    virtual void run(Controls& controls, const std::vector<Script_Step>& script) = 0;
};

// size: none = what suits the display. Throws std::runtime_error when there is no display, or nothing that opens windows.
std::unique_ptr<Window> open_window(const std::string& title, std::optional<VT_Int_Pair> size);

// The module's entry point: the window, or null and what is wrong. size: 0 by 0 = what suits the display.
using Window_Opener = Window*(const char* title, const VT_Int_Pair* size, std::string* error);
inline constexpr const char* window_opener = "vorna_open_window";
inline constexpr const char* window_module = "vorna-window.so";

} // namespace vorna::app::view
