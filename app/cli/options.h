// The options of a command as a table, which the parser, help, manual pages and completions read.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "drawing/recording/session.h"

namespace vorna::app {

// What an option takes. Flags take nothing and have an empty word.
struct Value {
    std::string word;                 // stands for the value in the help: COLOR, FILE.png, WxH
    std::vector<std::string> choices; // values that have names, for help and completion
    std::string range;                // "1 to 100", for the help
    std::string bare;                 // not empty: the value of the option alone; another one is given behind an equals sign
    // The reason for which a text is refused, empty when it is accepted. May be null: accepts every text.
    std::function<std::string(const std::string&)> problem;
};

// Accepts every text.
Value text_value(std::string word);
// Accepts every text; the choices are for help and completion, and the command checks what else it is given.
Value suggested_value(std::string word, std::vector<std::string> choices);
// Accepts the choices only.
Value choice_value(std::string word, std::vector<std::string> choices);
// Accepts numbers in [least, most], for std::int64_t whole ones only.
Value whole_value(const std::string& word, std::int64_t least, std::int64_t most);
Value number_value(const std::string& word, double least, double most);
// Accepts names of files to write, unless they end as files of other kinds do: images, models and documents. endings: in lower
// case and without the dot, the preferred one first.
Value output_value(std::string word, std::vector<std::string> endings);
// The same value for an option that may stand alone and then means `bare`.
Value optional_value(std::string bare, Value value);

// The kinds of input that an option is for.
enum class Applies_To { every_input, models, maps };

// Where a value is stored: in a variable, or by a function. Nowhere: the option is accepted and has no effect of its own.
using Target = std::variant<std::monostate, bool*, int*, unsigned*, std::uint64_t*, double*, std::string*,
                            std::vector<std::string>*, std::function<void(const std::string&)>>;

inline constexpr const char* default_group = "Options";

struct Option {
    std::vector<std::string> names; // as they are typed, the long one last; of an argument its name in the synopsis
    Value value = {};
    std::string text;                  // a sentence without full stop; choices, range, default and dependencies are added to it
    Target target = {};                // must outlive the table; the struct of options is shared with the command's `run`
    std::string group = default_group; // heading in the help; empty: the option is not shown
    Applies_To applies_to = Applies_To::every_input;
    std::string by_default = {}; // as the help shows it
    bool is_required = false;
    std::string unless = {};                            // long name of an option that takes the place of a required one
    std::vector<std::string> needs = {}, excludes = {}; // long names of options of the same table
};

struct Example {
    std::string command, meaning;
};

// Lines below a heading of the help.
struct Section {
    std::string title;
    std::vector<std::string> lines;
};

struct Command;

// What the parser has found, besides the values that it has stored.
struct Given {
    const Command* command = nullptr;
    drawing::Module_Choice module;  // empty members: not given
    std::vector<std::string> names; // long ones of the options that were given

    bool has(std::string_view name) const;
};

struct Command {
    std::string name;
    std::string summary;
    std::vector<Option> arguments;
    std::vector<Option> options;
    std::vector<Example> examples;
    std::vector<Section> sections; // behind the examples
    std::string statuses = "0 done, 1 failed, 2 wrong usage or input.";
    std::function<int(const Given&)> run; // returns the exit status
};

// The program and its commands. Its own options are those that every command takes.
struct Program {
    Command itself;
    std::vector<Command> commands;
    std::shared_ptr<drawing::Module_Choice> module = std::make_shared<drawing::Module_Choice>(); // target of its options
};

// --max-memory, of every command that reads files of unknown origin.
Option memory_option(std::string& text);

// Throws Usage_Error for an option that does not apply to the input.
void reject_options_of_other_kind(const Given& given, bool is_map, const std::string& input);

// The option of a table that has this long name. It must be there.
Option& option_named(std::vector<Option>& table, std::string_view name);

// iso, front or back
std::string list_of(const std::vector<std::string>& names);

} // namespace vorna::app
