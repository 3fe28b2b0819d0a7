// Commands that draw something in parts and join them, as lines for a shell or as JSON.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace vorna::app {

using Words = std::vector<std::string>;

struct Part_Command {
    std::string file;
    nlohmann::ordered_json facts; // what the JSON says of it alone
    bool is_done = false;         // the file is there
    Words command;
};

// The name by which the command finds itself: short where the shell finds the same file.
std::string own_name();

// Adds names of files, those that begin with a dash too.
void add_files(Words& words, const Words& files);

// lines: instead of JSON, of parts that are not done and of the join, which is last. join: its name in the JSON. head: of the
// JSON, before the parts. Throws Usage_Error for words that are no part of a line.
void print_commands(const std::vector<Part_Command>& parts, const Words& join_command, const char* join,
                    nlohmann::ordered_json head, bool lines);

} // namespace vorna::app
