// Commands as they are typed, with the files that they read. Changes follow the tables of options: each option that a command has
// may come, with values that it knows by name, or that look as its help says.
#include <cctype>
#include <cstring>

#include "app/check/random.h"
#include "app/cli/command_line.h"
#include "app/cli/page.h"
#include "tests/fuzz/command_script.h"
#include "tests/fuzz/fuzzing.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

using namespace fuzzing;
using vorna::app::check::Random;

const vorna::app::manual::Page& manual_page() {
    static const vorna::app::manual::Page page = vorna::app::manual::page_of(vorna::app::make_program());
    return page;
}

std::string number(Random& random) {
    constexpr const char* odd[] = {"0",   "-1",    "1e300", "-1e300",     "nan",        "inf",
                                   "1.5", "1e-40", "65536", "2147483648", "4294967296", "99999999999999999999"};
    return random.chance(25) ? random.one_of(odd) : std::to_string(random.number(0, random.chance(50) ? 9 : 99));
}

std::string file(Random& random, const Command_Script& script) {
    constexpr const char* written[] = {"out.png", "out%02d.png", "out.json", "out.json.gz", "0.png", "1.png", "-", "."};
    return !script.files.empty() && random.chance(60) ? random.one_of(script.files).first : random.one_of(written);
}

// What stands for a value says what it looks like: WxH, X,Y,Z, FILE.png.
std::string value_of(Random& random, const vorna::app::manual::Option_Entry& option, const Command_Script& script) {
    constexpr const char* words[] = {
        "red",       "#f08040", "none",  "palette", "512K", "4,2", "+proj=ortho +lat_0=40", "+proj=utm +zone=33",
        "EPSG:3857", "0..3",    "Middle"};
    if (!option.choices.empty() && random.chance(80)) {
        return random.one_of(option.choices);
    }
    if ((option.kind.find_first_of("FPM") != option.kind.npos || option.kind == "RECORDING") &&
        random.chance(60)) { // files, parts, palettes, models, maps
        return file(random, script);
    }
    if (random.chance(30)) {
        return random.one_of(words);
    }
    std::string value;
    for (const char c : option.value) {
        const bool is_letter = std::isupper(static_cast<unsigned char>(c)) != 0;
        if (is_letter && (value.empty() || value.back() != '\0')) {
            value += number(random) + '\0';
        } else if (!is_letter && c != '[' && c != ']') {
            value += c;
        }
    }
    std::erase(value, '\0');
    return value;
}

void change_line(Random& random, std::vector<std::string>& line, const Command_Script& script) {
    const auto& commands = manual_page().commands;
    const auto place = [&] { return line.begin() + random.number(0, static_cast<std::int32_t>(line.size()) - 1); };
    const auto known = std::ranges::find_if(commands, [&](const auto& page) {
        return std::ranges::find(line, page.name.substr(page.name.find(' ') + 1)) != line.end();
    });
    const vorna::app::manual::Page& page = known == commands.end() ? random.one_of(commands) : *known;
    switch (line.empty() ? 0 : random.number(0, 9)) {
    case 0:
        line.insert(line.begin(), page.name.substr(page.name.find(' ') + 1));
        break;
    case 1:
        line.erase(place());
        break;
    case 2:
        *place() = file(random, script);
        break;
    case 3: {
        const std::string copy = *place();
        line.insert(place(), copy);
        break;
    }
    default: {
        const vorna::app::manual::Option_Entry& option = random.one_of(random.one_of(page.groups).options);
        const std::string name = random.one_of(option.names);
        if (option.value.empty()) {
            line.push_back(name);
        } else if (option.value_optional || random.chance(10)) {
            line.push_back(name + "=" + value_of(random, option, script));
        } else {
            line.insert(line.end(), {name, value_of(random, option, script)});
        }
    }
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most, unsigned seed) {
    Random random(seed);
    Command_Script script = parsed_commands(text_of(data, size));
    if (!script.files.empty() && random.chance(35)) {
        std::string& content =
            script.files[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(script.files.size()) - 1))].second;
        const std::size_t before = content.size();
        content.resize(before + 64);
        content.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(content.data()), before, content.size()));
    } else {
        if (script.lines.empty()) {
            script.lines.emplace_back();
        }
        auto& line = script.lines[static_cast<std::size_t>(random.number(0, static_cast<std::int32_t>(script.lines.size()) - 1))];
        for (int i = random.number(1, 3); i > 0; --i) {
            change_line(random, line, script);
        }
    }
    const std::string text = text_of(script);
    if (text.size() > most) {
        return LLVMFuzzerMutate(data, size, most);
    }
    std::memcpy(data, text.data(), text.size());
    return text.size();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Command_Script script = parsed_commands(text_of(data, size));
    if (!is_harmless(script)) {
        return 0;
    }
    loaded_module();
    const Command_Folder folder;
    folder.write_files(script);
    for (const auto& line : script.lines) {
        run_command(line);
    }
    for (const std::string& name : folder.names()) {
        if (name.find(".part-") != name.npos) {
            fail(name + " was left behind");
        }
    }
    return 0;
}
