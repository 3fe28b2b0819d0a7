// What is common to pictures in a window: a renderer that draws them, the help over them, and files of what is shown.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/view/commands.h"
#include "app/view/window.h"
#include "drawing/recording/session.h"
#include "host/rendition.h"

namespace vorna::app::view {

// As a shell reads it back.
std::string shell_word(const std::string& word);
std::string with_commas(std::size_t number);

class Base_Viewer : public Controls {
public:
    void resize(VT_Int_Pair size, std::int32_t letter_scale) override;
    Answer press(char key, bool reversed) override;
    bool has_changed() const override { return changed_; }
    void show() override;

protected:
    // What draws: a session with its window established, and renditions with and without depth test.
    struct Canvas {
        drawing::Session session;
        VT_Reference<VT_Rendition> rendition, flat_rendition;

        explicit Canvas(const drawing::Module_Choice& module) : session(module) {}
    };

    // file: what is shown. folder: for files of it. margin: what the window has above and to the right of the picture.
    Base_Viewer(const drawing::Module_Choice& module, std::string file, std::string folder, std::int32_t margin, Screen& screen);

    // What a key asks for, but for the help, files, the full screen and the end.
    virtual void perform(Command command) = 0;
    // Fits the session and its renditions to the size and to what is to be drawn.
    virtual void establish(Canvas& canvas) = 0;
    // A whole picture, in full and without the help.
    virtual void paint(Canvas& canvas) = 0;
    // The command that draws what is shown into the image; empty when there is none.
    virtual std::string command_for(const std::string& image) const = 0;

    virtual std::vector<std::string> help() const { return help_lines(); }

    void draw_help();
    std::string file_name() const; // of what is shown, without its folder
    std::string speed_text() const;

    const drawing::Module_Choice module_;
    Canvas canvas_;
    VT_Int_Pair size_{1, 1};
    bool established_ = false, changed_ = true, shows_help_ = false;
    double time_ = 0; // milliseconds that the last picture took, until it was shown

private:
    static std::int32_t present(void* viewer, const VT_DCI_Point& top_left, const VT_DCI_Point& bottom_right,
                                const VT_Reference<Frame_Buffer>& buffer, std::int32_t x, std::int32_t y);

    // A name for a file in the folder that no file has.
    std::string free_name(const std::string& ending);
    void take_screenshot();
    void record();

    const std::string file_, folder_;
    const std::int32_t margin_;
    Screen& screen_;
    std::int32_t letter_scale_ = 1;
    int next_number_ = 1; // of files
};

} // namespace vorna::app::view
