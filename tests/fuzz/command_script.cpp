// Command lines that run in this process.
#include "tests/fuzz/command_script.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include "app/cli/command_line.h"
#include "app/cli/parser.h"
#include "app/view/window.h"
#include "drawing/files/shell_command.h"
#include "tests/fuzz/fuzzing.h"

namespace fuzzing {
namespace {

constexpr std::string_view border = "--- ";

bool is_digit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Digits beyond the first so many of each number fall away.
std::string with_short_numbers(std::string text, std::size_t most_digits) {
    std::size_t digits = 0;
    std::erase_if(text, [&](char c) {
        digits = is_digit(c) ? digits + 1 : 0;
        return digits > most_digits;
    });
    return text;
}

bool has(const std::vector<std::string>& arguments, std::string_view name) {
    return std::ranges::any_of(arguments,
                               [&](const std::string& a) { return a == name || a.starts_with(std::string(name) + "="); });
}

void shorten(std::vector<std::string>& arguments) {
    static constexpr std::array<std::pair<std::string_view, std::size_t>, 7> costly{{{"--size", 2},
                                                                                     {"--tile-size", 2},
                                                                                     {"--supersample", 1},
                                                                                     {"--tiles-of", 1},
                                                                                     {"--turntable", 1},
                                                                                     {"--repeat", 1},
                                                                                     {"--threads", 1}}};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t equals = arguments[i].find('=');
        const std::string name = arguments[i].substr(0, equals);
        const auto found = std::ranges::find(costly, name, [](const auto& entry) { return entry.first; });
        if (found != costly.end() && equals != name.npos) {
            arguments[i] = name + "=" + with_short_numbers(arguments[i].substr(equals + 1), found->second);
        } else if (found != costly.end() && i + 1 < arguments.size()) {
            arguments[i + 1] = with_short_numbers(arguments[i + 1], found->second);
        } else if (name == "--module") { // modules may do what they like
            arguments[i] = "--module=none";
        }
    }
    if (has(arguments, "render") && !has(arguments, "--size")) {
        arguments.insert(arguments.end(), {"--size", "40x30"});
    }
}

// Nothing is read from standard input and nothing printed while it lives.
class Silence {
public:
    Silence() : output_(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
        if (nothing < 0 || output_ < 0 || dup2(nothing, STDIN_FILENO) < 0 || dup2(nothing, STDOUT_FILENO) < 0) {
            fail("no silence");
        }
        close(nothing);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() {
        std::cout.flush();
        std::fflush(stdout);
        dup2(output_, STDOUT_FILENO);
        close(output_);
    }

private:
    int output_;
};

// Follows scripts as a window does.
class Unseen_Window final : public vorna::app::view::Window {
public:
    void show(const vorna::drawing::Raster&, const VT_Palette&, VT_Int_Pair) override {}
    void run(vorna::app::view::Controls& controls, const std::vector<vorna::app::view::Script_Step>& script) override {
        controls.resize({40, 30}, 1);
        controls.draw();
        for (const vorna::app::view::Script_Step& step : script) {
            if (follow(controls, step) == vorna::app::view::Answer::close) {
                return;
            }
            if (controls.has_changed()) {
                controls.draw();
            }
        }
        controls.refine();
        controls.draw();
        controls.show();
        controls.title();
    }

private:
    static char letter_of(const std::string& name) {
        namespace key = vorna::app::view::key;
        static constexpr std::array<std::pair<std::string_view, char>, 10> names{{{"F1", 'h'},
                                                                                  {"Escape", 'q'},
                                                                                  {"Home", key::home},
                                                                                  {"End", key::end},
                                                                                  {"Left", key::left},
                                                                                  {"Right", key::right},
                                                                                  {"Up", key::up},
                                                                                  {"Down", key::down},
                                                                                  {"PageUp", key::page_up},
                                                                                  {"PageDown", key::page_down}}};
        const auto found = std::ranges::find(names, name, [](const auto& entry) { return entry.first; });
        return found != names.end() ? found->second : name.front();
    }

    static vorna::app::view::Answer follow(vorna::app::view::Controls& controls, const vorna::app::view::Script_Step& step) {
        using Kind = vorna::app::view::Script_Step::Kind;
        const vorna::app::view::Place by{static_cast<double>(step.to.x) - step.from.x,
                                         static_cast<double>(step.to.y) - step.from.y};
        switch (step.kind) {
        case Kind::key:
            return controls.press(letter_of(step.key), step.shift || step.ctrl);
        case Kind::drag:
            if (step.button == vorna::app::view::Script_Step::Button::left) {
                controls.press_at({static_cast<double>(step.from.x), static_cast<double>(step.from.y)});
                controls.turn(by);
                controls.release();
            } else {
                controls.move(by);
            }
            break;
        case Kind::wheel:
            controls.zoom(std::pow(1.2, step.clicks), {static_cast<double>(step.to.x), static_cast<double>(step.to.y)});
            break;
        case Kind::resize:
            controls.resize({step.to.x % 64 + 1, step.to.y % 64 + 1}, 1);
            break;
        }
        return vorna::app::view::Answer::none;
    }
};

} // namespace

Command_Script parsed_commands(std::string_view text) {
    Command_Script script;
    while (!text.empty() && !text.starts_with(border)) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::vector<std::string>& line = script.lines.emplace_back();
        for (std::string_view rest = text.substr(0, end); !rest.empty();) {
            const bool quoted = rest.front() == '"';
            rest.remove_prefix(quoted);
            const std::size_t length = std::min(rest.find(quoted ? '"' : ' '), rest.size());
            if (length > 0 || quoted) {
                line.emplace_back(rest.substr(0, length));
            }
            rest.remove_prefix(std::min(length + 1, rest.size()));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    while (text.starts_with(border)) {
        const std::size_t line = std::min(text.find('\n'), text.size());
        const std::string name(text.substr(border.size(), line - border.size()));
        text.remove_prefix(std::min(line + 1, text.size()));
        const std::size_t end = std::min(text.find("\n" + std::string(border)), text.size());
        script.files.emplace_back(name, text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return script;
}

std::string text_of(const Command_Script& script) {
    std::string text;
    for (const auto& line : script.lines) {
        for (const std::string& argument : line) {
            const bool quoted = argument.empty() || argument.find(' ') != argument.npos;
            text += (text.empty() || text.back() == '\n' ? "" : " ") + (quoted ? '"' + argument + '"' : argument);
        }
        text += '\n';
    }
    for (std::size_t i = 0; i < script.files.size(); ++i) {
        text += (i == 0 ? "" : "\n") + std::string(border) + script.files[i].first + '\n' + script.files[i].second;
    }
    return text;
}

bool is_harmless(const Command_Script& script) {
    const auto leads_away = [](const std::string& text) { return text.find_first_of(std::string_view("/\0", 2)) != text.npos; };
    for (const auto& line : script.lines) {
        if (std::ranges::any_of(line, leads_away)) {
            return false;
        }
    }
    for (const auto& [name, content] : script.files) {
        if (name.empty() || name.size() > 100 || name == "." || name == ".." || leads_away(name)) {
            return false;
        }
        for (const char* side : {"\"width\"", "\"height\""}) {
            for (std::size_t at = content.find(side); at != content.npos; at = content.find(side, at + 1)) {
                const std::size_t number = std::min(content.find_first_of("0123456789", at), content.size());
                if (content.find_first_not_of("0123456789", number) > number + 3) {
                    return false;
                }
            }
        }
    }
    constexpr std::size_t most_lines = 6;
    return script.lines.size() <= most_lines;
}

Command_Folder::Command_Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "vorna-fuzz-XXXXXX").string();
    before_ = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (!mkdtemp(name.data()) || before_ < 0 || chdir(name.c_str()) != 0) {
        fail("no folder for commands");
    }
    path_ = name;
}

Command_Folder::~Command_Folder() {
    if (fchdir(before_) != 0) {
        fail("the folder before is gone");
    }
    close(before_);
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void Command_Folder::write_files(const Command_Script& script) const {
    for (const auto& [name, content] : script.files) {
        std::ofstream(name, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
    }
}

std::vector<std::string> Command_Folder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

void Command_Folder::clear() const {
    for (const std::string& name : names()) {
        std::filesystem::remove_all(name);
    }
}

vorna::app::Ending run_command(std::vector<std::string> arguments, const std::function<void()>& before_parsing) {
    if (has(arguments, "check") && !has(arguments, "--list")) {
        arguments.emplace_back("--list"); // checks take their time, and processes
    }
    if (!has(arguments, "--dry-run")) {
        shorten(arguments);
    }
    const Silence silence;
    vorna::app::fail_with(vorna::app::exit_status::failed);
    vorna::app::Ending outcome{vorna::app::exit_status::done, {}};
    const vorna::app::Program program = vorna::app::make_program();
    try {
        if (before_parsing) {
            before_parsing();
        }
        const vorna::app::Request request = vorna::app::parsed(program, arguments);
        if (request.given.command) {
            outcome.status = request.given.command->run(request.given);
        }
        return outcome;
    } catch (const std::runtime_error& error) {
        outcome = vorna::app::ending_of(error);
    }
    if (outcome.message.empty()) {
        fail("a command was refused without a word");
    }
    return outcome;
}

} // namespace fuzzing

// In place of the one that looks for a window system.
std::unique_ptr<vorna::app::view::Window> vorna::app::view::open_window(const std::string&, const std::string&,
                                                                        std::optional<VT_Int_Pair>) {
    return std::make_unique<fuzzing::Unseen_Window>();
}

// In place of the one that runs commands: an answer that depends on the recording's size alone.
vorna::drawing::Shell_Ending vorna::drawing::run_shell(const std::string&, const std::string& recording,
                                                       std::chrono::milliseconds, const std::string&) {
    const auto size = std::filesystem::file_size(recording);
    return {Shell_Ending::Kind::exited, size % 4 == 3 && size < 600 ? 1 : 0};
}
