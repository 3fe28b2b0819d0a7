// The window that goes through a recording call by call. Independent of the window system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/view/frame.h"
#include "app/view/image_place.h"
#include "app/view/numbered_files.h"
#include "app/view/window.h"
#include "drawing/files/load_limits.h"
#include "drawing/recording/pixel_history.h"
#include "drawing/recording/step_views.h"
#include "drawing/recording/steps.h"

namespace vorna::app::view {

// The lines of the help panel.
std::vector<std::string> inspector_help_lines();

struct Inspected {
    const drawing::recording::Recording& recording;
    std::string file;
    drawing::Module_Choice module;
    drawing::recording::Steps_Settings settings;
    drawing::Load_Limits& limits; // memory of images and histories
};

class Inspector final : public Controls {
public:
    // Makes all calls once. folder: for screenshots. Throws as `replay` does.
    Inspector(Inspected inspected, const std::string& folder, Screen& screen);

    void resize(VT_Int_Pair size, std::int32_t letter_scale) override;
    void press_at(const Place& pointer) override;
    void release() override;
    void turn(const Place& by) override;
    void move(const Place& by) override;
    void zoom(double factor, const Place& pointer) override;
    Answer press(char key, bool reversed) override;
    bool has_changed() const override { return has_changed_; }
    void draw() override;
    bool is_draft() const override { return false; }
    void refine() override {}
    void show() override;
    std::string title() const override;

private:
    using View = drawing::recording::Step_View;
    enum class Marking { outline, dimmed, none };

    static constexpr double click_reach = 3; // pixels that the pointer may move in a click

    void go_to(std::int64_t position);
    void go_to_slide(double x);
    void go_in_history(bool forwards);
    void go_to_slow_call(bool forwards);
    void choose(View view);
    void note_times();
    void take_screenshot();

    // The pixel of the shown image; reads its history.
    void choose_pixel(VT_Int_Pair pixel);

    // Parts of the frame.
    void update_image();
    void paint_image();
    void paint_marks();
    void paint_pixel();
    void paint_times();
    void paint_texts();
    void paint_history();
    std::vector<std::string> texts() const;
    std::string call_text() const;
    std::string change_text() const;

    VT_Int_Rectangle shown() const; // device pixels
    Box box_of(const VT_Int_Rectangle& device) const;
    Box area_of_image() const, area_of_times() const;
    bool has_changed_pixel(std::int32_t column, std::int32_t row) const;

    const Inspected inspected_;
    Screen& screen_;
    Numbered_Files files_;
    std::unique_ptr<drawing::recording::Recording_Steps> steps_;
    VT_Int_Rectangle last_window_;
    std::vector<double> times_; // microseconds of the calls
    double longest_time_ = 0;
    std::vector<std::size_t> by_time_; // calls, the slowest first
    std::optional<std::size_t> slow_;  // the position in by_time_ that was gone to last

    std::size_t wanted_ = 0; // position
    View view_ = View::colors;
    Marking marking_ = Marking::outline;
    Image_Place place_;
    drawing::recording::Step_Image image_; // of the whole window of the recording
    drawing::Load_Limits::Loan image_memory_;
    std::optional<std::pair<std::size_t, View>> image_is_of_;

    std::optional<VT_Int_Pair> pixel_; // device coordinates
    std::optional<drawing::recording::Pixel_History> history_;
    std::vector<std::string> history_lines_;
    std::string message_; // why the last key did nothing; empty = it did

    std::optional<Place> pressed_; // the pointer, while the left button is
    double dragged_ = 0;           // pixels
    bool is_sliding_ = false;

    VT_Int_Pair size_{1, 1};
    std::int32_t letter_scale_ = 1;
    Frame frame_;
    bool has_changed_ = true, is_drawn_ = false, shows_help_ = false;
    double time_ = 0; // milliseconds to go to the position and to draw the frame
};

} // namespace vorna::app::view
