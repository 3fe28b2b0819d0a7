// The common base of viewers: the session that draws, the help panel, and files of the shown image.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/view/commands.h"
#include "app/view/numbered_files.h"
#include "app/view/window.h"
#include "drawing/job/frame_drawer.h"
#include "drawing/recording/session.h"
#include "host/rendition.h"

namespace vorna::app::view {

// The word quoted for a shell.
std::string shell_word(const std::string& word);
std::string with_commas(std::size_t number);

class Base_Viewer : public Controls {
public:
    void resize(VT_Int_Pair size, std::int32_t letter_scale) override;
    Answer press(char key, bool reversed) override;
    bool has_changed() const override { return changed_; }
    void show() override;

protected:
    // A session with its window established, and renditions with and without depth test.
    struct Canvas {
        drawing::Session session;
        VT_Reference<VT_Rendition> rendition, flat_rendition;

        explicit Canvas(const drawing::Module_Choice& module) : session(module) {}
    };

    // file: the input. folder: for screenshots and recordings. margin: pixels of the session's window above and to the right of
    // the shown image. threads: that draw, see Frame_Drawer.
    Base_Viewer(const drawing::Module_Choice& module, std::string file, std::string folder, std::int32_t margin, unsigned threads,
                Screen& screen);

    // Performs all commands but those that press handles: help, files, full screen and quit.
    virtual void perform(Command command) = 0;
    // Sets up the session and its renditions for the size and the current options.
    virtual void establish(Canvas& canvas) = 0;
    // Draws a picture in full detail, without the help.
    virtual void paint(Canvas& canvas) = 0;
    // The command that draws the shown image into a file; empty when there is none.
    virtual std::string command_for(const std::string& image) const = 0;

    virtual std::vector<std::string> help() const { return help_lines(); }

    // Draws a frame into the canvas' pixels by all threads. Returns false, and draws nothing, where one thread alone is faster.
    bool draw_by_threads(drawing::Drawing& drawing, const drawing::Background& background);
    void draw_help();
    drawing::Raster shown() const; // the last image, without the margin
    std::string file_name() const; // of the input, without its folder
    std::string speed_text() const;

    const drawing::Module_Choice module_;
    Canvas canvas_;
    drawing::Frame_Drawer frames_;
    std::optional<drawing::Tile_Grid> shared_grid_; // of the last frame; none = the canvas' renderer has drawn it
    VT_Int_Pair size_{1, 1};
    bool established_ = false, changed_ = true, shows_help_ = false;
    double time_ = 0; // milliseconds for drawing and showing the last picture

private:
    static std::int32_t present(void* viewer, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y);

    void take_screenshot();
    void record();

    const std::string file_;
    const std::int32_t margin_;
    Screen& screen_;
    std::int32_t letter_scale_ = 1;
    Numbered_Files numbered_files_;
};

} // namespace vorna::app::view
