// Commands that draw something in parts and join them.
#include "app/commands/plan_commands.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "app/cli/command.h"
#include "app/cli/messages.h"
#include "drawing/files/usage_error.h"

namespace vorna::app {
namespace {

// As a shell reads it.
std::string quoted(const Words& words) {
    std::string line;
    for (const std::string& word : words) {
        if (word.find_first_of("\r\n") != std::string::npos) {
            throw drawing::Usage_Error("--plan-lines: expected names and values without line breaks, found '" + word + "'");
        }
        constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_=,./:@%+";
        line += line.empty() ? "" : " ";
        if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) {
            line += word;
            continue;
        }
        line += '\'';
        for (const char c : word) {
            line += c == '\'' ? std::string("'\\''") : std::string(1, c);
        }
        line += '\'';
    }
    return line + '\n';
}

} // namespace

std::string own_name() {
    namespace fs = std::filesystem;
    const fs::path self = executable_path();
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "";
    std::error_code none;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const fs::path found = fs::path(rest.substr(0, end)) / "vorna";
        if (fs::exists(found, none)) {
            return fs::equivalent(found, self, none) ? "vorna" : self.string();
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return self.string();
}

void add_files(Words& words, const Words& files) {
    words.emplace_back("--");
    words.insert(words.end(), files.begin(), files.end());
}

void print_commands(const std::vector<Part_Command>& parts, const Words& join_command, const char* join,
                    nlohmann::ordered_json head, bool lines) {
    if (lines) {
        std::string text;
        for (const Part_Command& part : parts) {
            text += part.is_done ? "" : quoted(part.command);
        }
        print(stdout, text + quoted(join_command));
        return;
    }
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Part_Command& part : parts) {
        nlohmann::ordered_json entry{{"number", list.size()}, {"file", part.file}};
        if (part.facts.is_object()) {
            entry.update(part.facts);
        }
        entry["done"] = part.is_done;
        entry["command"] = part.command;
        list.push_back(std::move(entry));
    }
    head["parts"] = std::move(list);
    head[join] = {{"command", join_command}};
    print(stdout, head.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n');
}

} // namespace vorna::app
