// The help of a command, from its table: help, manual pages and completions are made of it.
#pragma once

#include <string>
#include <vector>

#include "app/cli/options.h"

namespace vorna::app::manual {

struct Option_Entry {
    std::vector<std::string> names; // as typed, -o, --output; none: an argument
    std::string value;              // what stands for it, COLOR; empty for flags
    std::string kind;               // of files, words or numbers; for options the same
    bool value_optional = false;    // given as --edges=feature or not at all
    bool required = false, repeated = false;
    std::string text;                 // a sentence with choices, range, default and what it goes together with
    std::vector<std::string> choices; // values that it knows by name
};

struct Option_Group {
    std::string title;
    std::vector<Option_Entry> options;
};

struct Page {
    std::string name; // vorna render
    std::string summary;
    std::vector<Option_Entry> arguments;
    std::vector<Option_Group> groups; // the last one holds what all commands take
    std::vector<Page> commands;       // of the program itself
    std::vector<Section> sections;    // Examples first: lines of a command, and indented by four what it does
};

Page page_of(const Program& program);
Page page_of(const Program& program, const Command& command);

// What is typed after the name: [OPTIONS] -o FILE.png model
std::string synopsis_of(const Page& page);

// A value as it follows the option's name: " COLOR", "[=KIND]", nothing for flags.
std::string value_text_of(const Option_Entry& option);

} // namespace vorna::app::manual
