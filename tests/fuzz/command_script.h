// Command lines with the files that they read, as one text: a command a line, then files, each behind a line "--- name". They run
// in this process and in a folder of their own.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/cli/messages.h"

namespace fuzzing {

struct Command_Script {
    std::vector<std::vector<std::string>> lines; // arguments without the program's name
    std::vector<std::pair<std::string, std::string>> files;
};

// Arguments with spaces stand between quotes.
Command_Script parsed_commands(std::string_view text);
std::string text_of(const Command_Script& script);

// Whether it writes nowhere but in its folder and takes no more than its time: no argument has a slash, no picture a large
// window.
bool is_harmless(const Command_Script& script);

// An empty folder that is the current one as long as it lives.
class Command_Folder {
public:
    Command_Folder();
    Command_Folder(const Command_Folder&) = delete;
    Command_Folder& operator=(const Command_Folder&) = delete;
    ~Command_Folder();

    void write_files(const Command_Script& script) const;
    std::vector<std::string> names() const;
    void clear() const;

private:
    std::string path_;
    int before_;
};

// What vorna does with these arguments, whose sizes and counts are cut short where it would draw. Standard input is empty, and
// what is printed is lost. before_parsing is called when the tables of options are made. Ends the process for an exception that
// users are not told of, but for std::bad_alloc.
vorna::app::Ending run_command(std::vector<std::string> arguments, const std::function<void()>& before_parsing = {});

} // namespace fuzzing
