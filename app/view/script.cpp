// Mouse and key events from a file.
#include "app/view/script.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include "app/cli/command.h"

namespace vorna::app::view {
namespace {

class Line {
public:
    Line(const std::string& file, int number, const std::string& text)
        : place_(file + ":" + std::to_string(number)), words_(text) {
        words_.exceptions(std::ios::badbit); // a failed allocation must not look like the end of the line
    }

    bool next_word(std::string& word) { return static_cast<bool>(words_ >> word); }

    Script_Step step(const std::string& kind) {
        using Kind = Script_Step::Kind;
        Script_Step step;
        if (kind == "key") {
            step.kind = Kind::key;
            step.key = with_modifiers(step, word("a key"));
            constexpr std::string_view names[] = {"F1",    "Home", "Escape", "End",    "Left",
                                                  "Right", "Up",   "Down",   "PageUp", "PageDown"};
            if (step.key.size() != 1 && std::ranges::find(names, step.key) == std::end(names)) {
                fail("a letter, a sign, F1, Escape, Home, End, PageUp, PageDown or an arrow such as Left", step.key);
            }
        } else if (kind == "drag") {
            step.kind = Kind::drag;
            const std::string button = with_modifiers(step, word("a button"));
            if (button != "left" && button != "middle" && button != "right") {
                fail("left, middle or right", button);
            }
            step.button = button == "left"     ? Script_Step::Button::left
                          : button == "middle" ? Script_Step::Button::middle
                                               : Script_Step::Button::right;
            step.from = pair(',');
            step.to = pair(',');
        } else if (kind == "click") {
            step.kind = Kind::drag;
            step.from = step.to = pair(',');
        } else if (kind == "wheel") {
            step.kind = Kind::wheel;
            const std::string clicks = word("a number of clicks");
            std::istringstream stream(clicks);
            if (!(stream >> step.clicks) || !stream.eof()) {
                fail("a number of clicks", clicks);
            }
            step.to = pair(',');
        } else if (kind == "resize") {
            step.kind = Kind::resize;
            step.to = pair('x');
            if (step.to.x < 1 || step.to.y < 1) {
                fail("a size of 1 or more", std::to_string(step.to.x) + "x" + std::to_string(step.to.y));
            }
        } else {
            fail("key, drag, click, wheel or resize", kind);
        }
        if (std::string more; next_word(more)) {
            fail("the end of the line", more);
        }
        return step;
    }

private:
    [[noreturn]] void fail(const std::string& expected, const std::string& found) const {
        throw drawing::Usage_Error(place_ + ": expected " + expected + ", found " +
                                   (found.empty() ? "the end of the line" : "'" + found + "'"));
    }

    std::string word(const char* expected) {
        std::string word;
        if (!next_word(word)) {
            fail(expected, "");
        }
        return word;
    }

    static std::string with_modifiers(Script_Step& step, const std::string& name) {
        step.ctrl = name.starts_with("ctrl+");
        step.shift = name.starts_with("shift+");
        return step.ctrl || step.shift ? name.substr(name.find('+') + 1) : name;
    }

    VT_Int_Pair pair(char separator) {
        const std::string expected = std::string("X") + separator + "Y", text = word(expected.c_str());
        std::istringstream stream(text);
        VT_Int_Pair pair;
        char found = 0;
        if (!(stream >> pair.x >> found >> pair.y) || found != separator || stream.peek() != EOF) {
            fail(expected, text);
        }
        // Beyond any window, and sums of coordinates do not overflow.
        constexpr std::int32_t farthest = 32767;
        if (std::min(pair.x, pair.y) < -farthest || std::max(pair.x, pair.y) > farthest) {
            fail(expected + " up to " + std::to_string(farthest), text);
        }
        return pair;
    }

    std::string place_;
    std::istringstream words_;
};

} // namespace

std::vector<Script_Step> parsed_script(const std::string& file, std::string_view text) {
    std::vector<Script_Step> steps;
    std::istringstream lines{std::string(text)};
    lines.exceptions(std::ios::badbit);
    int number = 0;
    for (std::string text_line; std::getline(lines, text_line);) {
        Line line(file, ++number, text_line.substr(0, text_line.find('#')));
        if (std::string kind; line.next_word(kind)) {
            steps.push_back(line.step(kind));
        }
    }
    return steps;
}

} // namespace vorna::app::view
