// The common base of viewers.
#include "app/view/base_viewer.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <utility>

#include "app/cli/messages.h"
#include "app/commands/model_options.h"
#include "app/view/text_panel.h"
#include "drawing/files/output_file.h"
#include "drawing/files/path.h"
#include "drawing/image/image_file.h"
#include "drawing/recording/recorder.h"
#include "drawing/recording/recording_file.h"
#include "vorna/draw.h"

namespace vorna::app::view {

std::string shell_word(const std::string& word) {
    const auto is_plain = [](unsigned char c) {
        return std::isalnum(c) || c >= 0x80 || std::string("-_./=,+:@%").find(static_cast<char>(c)) != std::string::npos;
    };
    if (!word.empty() && std::ranges::all_of(word, is_plain)) {
        return word;
    }
    std::string text = "'";
    for (const char c : word) {
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return text + "'";
}

std::string with_commas(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t i = text.size(); i > 3;) {
        i -= 3;
        text.insert(i, 1, ',');
    }
    return text;
}

Base_Viewer::Base_Viewer(const drawing::Module_Choice& module, std::string file, std::string folder, std::int32_t margin,
                         unsigned threads, Screen& screen)
    : module_(module), canvas_(module), frames_(module, threads), file_(std::move(file)), margin_(margin), screen_(screen),
      numbered_files_(file_, std::move(folder)) {
    canvas_.session.renderer().presentation = {present, this};
}

void Base_Viewer::resize(VT_Int_Pair size, std::int32_t letter_scale) {
    const VT_Int_Pair fitting{std::clamp(size.x, 1, largest_picture_side), std::clamp(size.y, 1, largest_picture_side)};
    letter_scale_ = letter_scale;
    if (fitting != size_) {
        size_ = fitting;
        established_ = false;
    }
    changed_ = true;
}

Answer Base_Viewer::press(char key, bool reversed) {
    const auto command = command_of(key, reversed);
    if (!command) {
        return Answer::none;
    }
    switch (*command) {
    case Command::quit:
        return Answer::close;
    case Command::full_screen:
        return Answer::change_full_screen;
    case Command::help:
        shows_help_ = !shows_help_;
        changed_ = true;
        break;
    case Command::screenshot:
        take_screenshot();
        break;
    case Command::record:
        record();
        break;
    default:
        perform(*command);
    }
    return Answer::none;
}

void Base_Viewer::show() {
    if (established_) {
        canvas_.session.renderer().update_all({0, size_.x - 1, 0, size_.y - 1});
    }
}

// The renderer's rows include the margin above the image.
std::int32_t Base_Viewer::present(void* viewer, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                  const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y) {
    auto& self = *static_cast<Base_Viewer*>(viewer);
    drawing::Raster raster = drawing::raster_of(*buffer);
    raster.top = buffer->rows[top_left.y] + std::ptrdiff_t{top_left.x} * vorna::bytes_per_pixel(raster.format);
    raster.width = bottom_right.x - top_left.x + 1;
    raster.height = top_left.y - bottom_right.y + 1;
    self.screen_.show(raster, self.canvas_.session.palette(), {x, y - self.margin_});
    return 0;
}

bool Base_Viewer::draw_by_threads(drawing::Drawing& drawing, const drawing::Background& background) {
    shared_grid_ = frames_.shared_grid(drawing, size_);
    if (!shared_grid_) {
        return false;
    }
    drawing.prepare(*shared_grid_, 1, 0);
    frames_.draw(drawing, *shared_grid_, background, canvas_.session.color_buffer());
    return true;
}

void Base_Viewer::draw_help() {
    const VT_Reference<VT_Shared_Image> panel = text_panel(help(), letter_scale_);
    const VT_Reference<VT_Rendition> rendition(new VT_Rendition);
    rendition->clip.hard_clip = canvas_.session.window();
    rendition->clip.depth_test = false;
    const std::int32_t gap = 8 * letter_scale_;
    const VT_DCI_Point start{gap, size_.y - 1 - gap, 0};
    VD_Draw_DCI_Image(canvas_.session.renderer(), *rendition, &start, &*panel);
}

drawing::Raster Base_Viewer::shown() const {
    drawing::Raster raster = drawing::raster_of(canvas_.session.color_buffer());
    raster.top += margin_ * raster.row_bytes;
    raster.height -= margin_;
    raster.width -= margin_;
    return raster;
}

// Saves the image in full detail, without the help.
void Base_Viewer::take_screenshot() {
    const bool help = std::exchange(shows_help_, false);
    refine();
    draw();
    shows_help_ = help;
    changed_ = help;
    const std::string name = numbered_files_.next(".png");
    try {
        drawing::write_file(name, drawing::png_of(shown(), canvas_.session.palette()));
    } catch (const std::runtime_error& error) {
        print(stderr, "vorna: " + drawing::printable(error.what()) + '\n');
        return;
    }
    print(stdout, drawing::printable(shell_word(name)) + '\n');
    if (const std::string command = command_for(name); !command.empty()) {
        print(stdout, "  " + drawing::printable(command) + '\n');
    }
    std::fflush(stdout);
}

// Draws with another renderer, because a recording includes all calls since its renderer was created. Neither the help nor the
// image of depths is recorded.
void Base_Viewer::record() {
    const std::string ending = ".json.gz", name = numbered_files_.next(ending);
    try {
        Canvas canvas(module_);
        drawing::recording::Recorder recorder(canvas.session);
        establish(canvas);
        paint(canvas);
        drawing::write_file(name,
                            drawing::recording::file_of(recorder.finish(VT_Int_Rectangle{0, size_.x - 1, 0, size_.y - 1}), name));
    } catch (const std::runtime_error& error) {
        print(stderr, "vorna: " + drawing::printable(error.what()) + '\n');
        return;
    }
    const std::string image = name.substr(0, name.size() - ending.size()) + ".png";
    const std::string word = drawing::printable(shell_word(name));
    print(stdout, word + "\n  vorna replay " + word + " --color " + drawing::printable(shell_word(image)) + '\n');
    std::fflush(stdout);
}

std::string Base_Viewer::file_name() const {
    return file_name_of(file_);
}

std::string Base_Viewer::speed_text() const {
    char speed[96];
    std::snprintf(speed, sizeof speed, ", %.1f ms, %.0f frames/s", time_, 1000 / std::max(time_, 0.01));
    return speed + (shared_grid_ ? ", " + std::to_string(frames_.threads_used()) + " threads" : std::string());
}

} // namespace vorna::app::view
