// Parses command lines by the tables of options.
#include "app/cli/parser.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "app/cli/command.h"
#include "app/cli/help.h"
#include "app/cli/nearest_name.h"
#include "app/cli/page.h"
#include "vorna/version.h"

namespace vorna::app {
namespace {

// From the table to the parser.

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ",") + name;
    }
    return text;
}

CLI::Option* add_flag(CLI::App& parser, const Option& option) {
    if (const auto* text = std::get_if<std::string*>(&option.target)) {
        return parser.add_flag(joined(option.names) + "{" + option.value.bare + "}", **text);
    }
    if (const auto* flag = std::get_if<bool*>(&option.target)) {
        return parser.add_flag(joined(option.names), **flag);
    }
    return parser.add_flag(joined(option.names));
}

CLI::Option* add_value(CLI::App& parser, const Option& option) {
    const std::string names = joined(option.names);
    return std::visit(
        [&]<class Variable>(const Variable& target) {
            if constexpr (std::is_same_v<Variable, std::monostate>) {
                return parser.add_option(names);
            } else if constexpr (std::is_pointer_v<Variable>) {
                return parser.add_option(names, *target);
            } else {
                return parser.add_option_function<std::string>(names, target);
            }
        },
        option.target);
}

bool takes_no_value(const Option& option) {
    return option.value.word.empty() || !option.value.bare.empty();
}

// Alone or with a value: NAME=VALUE.
bool is_option_of(const CLI::App& parser, const std::string& text) {
    return text.size() > 1 && text.front() == '-' &&
           (parser.get_option_no_throw(text.substr(0, text.find('='))) ||
            (parser.get_parent() && is_option_of(*parser.get_parent(), text)));
}

// Rejects empty values, the next option as the value of the one before it, and values of options that take none.
void reject_malformed_values(CLI::App& parser, CLI::Option& added, const Option& option) {
    if (!option.value.bare.empty()) {
        added.multi_option_policy(CLI::MultiOptionPolicy::Throw);
        return;
    }
    if (takes_no_value(option)) {
        added.check(
            [](const std::string& text) { return text == "true" ? std::string() : "expected no value, found '" + text + "'"; });
        return;
    }
    const bool has_short_name = option.names.size() > 1;
    added.check([&parser, word = option.value.word, has_short_name](const std::string& text) -> std::string {
        const std::string expected = "expected " + word;
        if (text.empty()) {
            return expected + ", found ''";
        }
        if (text.front() == '=' && has_short_name) {
            return expected + " without =, found '" + text + "'";
        }
        return is_option_of(parser, text) ? expected + ", found the option " + text : "";
    });
}

bool is_given(const std::vector<std::string>& arguments, const std::string& name) {
    return std::ranges::any_of(arguments, [&](const std::string& text) { return text == name || text.starts_with(name + "="); });
}

void add_option(CLI::App& parser, const Option& option, const std::vector<std::string>& arguments) {
    CLI::Option& added = takes_no_value(option) ? *add_flag(parser, option) : *add_value(parser, option);
    added.type_name(option.value.word)
        ->required(option.is_required && (option.unless.empty() || !is_given(arguments, option.unless)));
    if (option.names.back().starts_with('-') && std::holds_alternative<std::vector<std::string>*>(option.target)) {
        added.take_all()->expected(1);
    }
    if (option.value.problem) {
        added.check(option.value.problem, "");
    }
    reject_malformed_values(parser, added, option);
}

void add_options(CLI::App& parser, const Command& command, const std::vector<std::string>& arguments) {
    for (const Option& argument : command.arguments) {
        add_option(parser, argument, arguments);
    }
    for (const Option& option : command.options) {
        if (!parser.get_option_no_throw(option.names.back())) { // help and version are the parser's own
            add_option(parser, option, arguments);
        }
    }
    for (const Option& option : command.options) {
        CLI::Option& added = *parser.get_option(option.names.back());
        for (const std::string& name : option.needs) {
            added.needs(parser.get_option(name));
        }
        for (const std::string& name : option.excludes) {
            added.excludes(parser.get_option(name));
        }
    }
}

// Messages.

const Command& command_named(const Program& program, const std::string& name) {
    return *std::ranges::find(program.commands, name, &Command::name);
}

std::vector<std::string> command_names(const Program& program) {
    std::vector<std::string> names;
    for (const Command& command : program.commands) {
        names.push_back(command.name);
    }
    return names;
}

// With those that every command takes.
std::vector<std::string> option_names(const manual::Page& page) {
    std::vector<std::string> names;
    for (const manual::Option_Group& group : page.groups) {
        for (const manual::Option_Entry& option : group.options) {
            names.insert(names.end(), option.names.begin(), option.names.end());
        }
    }
    return names;
}

std::string ask_help(const manual::Page& page, const std::string& hint, const char* what) {
    return hint + (hint.empty() ? "; " : " ") + page.name + " --help " + what;
}

std::string short_name_of(const manual::Page& page) {
    return page.name.substr(page.name.find(' ') + 1);
}

// For an argument where none is expected.
std::string unexpected_message(const manual::Page& page, const std::string& extra) {
    const std::string name = extra.substr(0, extra.find('='));
    if (extra.size() > 1 && extra.front() == '-') {
        const std::vector<std::string> known = option_names(page);
        if (std::ranges::find(known, name) != known.end()) {
            return name + ": expected behind the command, as " + page.name + " " + name + ", found before it";
        }
        return name + ": no option of " + page.name + ask_help(page, nearest_name(name, known), "lists them");
    }
    return short_name_of(page) + ": expected no further argument, found '" + extra + "'" +
           ask_help(page, "", "tells what it takes");
}

std::string missing_message(const CLI::App& parser, const manual::Page& page) {
    const auto options = parser.get_options([](const CLI::Option* o) { return o->get_required() && o->count() == 0; });
    std::string wanted = "more";
    if (!options.empty()) {
        const CLI::Option& first = *options.front();
        const std::string name = first.get_snames().empty() ? first.get_name() : "-" + first.get_snames().front();
        wanted = (first.get_positional() ? "" : name + " ") + first.get_type_name();
    }
    return short_name_of(page) + ": expected " + wanted + ", found none" + ask_help(page, "", "tells what it takes");
}

std::string no_command_message(const Program& program, const std::vector<std::string>& rest) {
    const manual::Page page = manual::page_of(program);
    if (rest.empty()) {
        return "expected a command, found none" + ask_help(page, "", "lists them");
    }
    const std::string& found = rest.front();
    if (found.size() > 1 && found.front() == '-') {
        return unexpected_message(page, found);
    }
    return "expected a command, found '" + found + "'" +
           ask_help(page, nearest_name(found, command_names(program)), "lists them");
}

// For an option without one that it needs, or with one that it excludes; empty when there is none.
std::string dependency_message(const CLI::App& command) {
    for (const CLI::Option* option : command.get_options()) {
        for (const CLI::Option* other : option->get_needs()) {
            if (option->count() > 0 && other->count() == 0) {
                return option->get_name() + ": expected " + other->get_name() + " beside it, found none";
            }
        }
        for (const CLI::Option* other : option->get_excludes()) {
            if (option->count() > 0 && other->count() > 0) {
                return option->get_name() + ": expected no " + other->get_name() + " beside it, found both";
            }
        }
    }
    return {};
}

// For an option given too often, or without its value. The parser's message begins with the option's name.
std::string count_message(const CLI::App& parser, const std::string& message) {
    const std::string name = message.substr(0, message.find(':'));
    const CLI::Option* option = parser.get_option_no_throw(name);
    if (!option && parser.get_parent()) {
        option = parser.get_parent()->get_option_no_throw(name);
    }
    if (!option) {
        return message;
    }
    if (option->count() > 1) {
        return name + ": expected once, found " + std::to_string(option->count()) + " times";
    }
    return name + ": expected " + option->get_type_name() + " behind it, found nothing";
}

std::string usage_message(const Program& program, const CLI::App& application, const CLI::ParseError& error) {
    const auto commands = application.get_subcommands();
    const std::vector<std::string> rest = application.remaining(true);
    const bool misses = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    if (commands.empty() && misses) {
        return no_command_message(program, rest);
    }
    const CLI::App& parser = commands.empty() ? application : *commands.front();
    const manual::Page page =
        commands.empty() ? manual::page_of(program) : manual::page_of(program, command_named(program, parser.get_name()));
    const bool depends = dynamic_cast<const CLI::RequiresError*>(&error) || dynamic_cast<const CLI::ExcludesError*>(&error);
    // A misspelt option is why another one is missing.
    if (!rest.empty() && (misses || depends || dynamic_cast<const CLI::ExtrasError*>(&error))) {
        return unexpected_message(page, rest.front());
    }
    if (misses) {
        return missing_message(parser, page);
    }
    if (std::string message = dependency_message(parser); depends && !message.empty()) {
        return message;
    }
    return dynamic_cast<const CLI::ArgumentMismatch*>(&error) ? count_message(parser, error.what()) : error.what();
}

// The arguments as the library parses them: what follows -- are files, whatever their names begin with. Throws Usage_Error for
// the value of an option that takes it behind an equals sign only.
std::vector<std::string> prepared_arguments(const Program& program, std::vector<std::string> arguments) {
    const auto rest = std::ranges::find(arguments, "--");
    if (rest != arguments.end()) {
        for (auto file = rest + 1; file != arguments.end(); ++file) {
            if (file->size() > 1 && file->front() == '-') {
                file->insert(0, "./");
            }
        }
        arguments.erase(rest);
    }
    const std::vector<std::string> names = command_names(program);
    const auto name = std::ranges::find_first_of(arguments, names);
    if (name == arguments.end()) {
        return arguments;
    }
    for (const Option& option : command_named(program, *name).options) {
        const auto given = option.value.bare.empty() ? arguments.end() : std::ranges::find_first_of(arguments, option.names);
        if (given != arguments.end() && given + 1 != arguments.end() &&
            std::ranges::find(option.value.choices, *(given + 1)) != option.value.choices.end()) {
            throw drawing::Usage_Error(*given + ": expected " + *given + "=" + *(given + 1) + ", found '" + *given + " " +
                                       *(given + 1) + "'; a file of that name is ./" + *(given + 1));
        }
    }
    return arguments;
}

// The library's parser, made from the table. Commands that the arguments do not name have no options there: adding all of them
// takes longer than all else that a short command does.
class Library_Parser {
public:
    Library_Parser(const Program& program, const std::vector<std::string>& arguments)
        : program_(program), application_(program.itself.summary, program.itself.name) {
        application_.set_help_flag("-h,--help");
        application_.set_version_flag("--version", program.itself.name + " " + VORNA_VERSION_TEXT);
        application_.allow_windows_style_options(false); // a path may begin with a slash there too
        application_.require_subcommand(1);
        add_options(application_, program.itself, arguments);
        reject_malformed_values(application_, *application_.get_option("--version"), {});
        reject_malformed_values(application_, *application_.get_option("--help"), {});
        for (const Command& command : program.commands) {
            CLI::App& parser = *application_.add_subcommand(command.name, command.summary);
            parser.fallthrough();
            if (std::ranges::find(arguments, command.name) != arguments.end()) {
                add_options(parser, command, arguments);
                reject_malformed_values(parser, *parser.get_option("--help"), {});
            }
        }
    }

    Request parse(std::vector<std::string> arguments) {
        try {
            // The library takes them from the end.
            std::ranges::reverse(arguments);
            application_.parse(std::move(arguments));
        } catch (const CLI::CallForVersion& version) {
            return {{}, std::string(version.what()) + '\n'};
        } catch (const CLI::CallForHelp&) {
            const Command* command = chosen_command();
            return {{}, manual::help_of(command ? manual::page_of(program_, *command) : manual::page_of(program_))};
        } catch (const CLI::ParseError& error) {
            throw drawing::Usage_Error(usage_message(program_, application_, error));
        }
        Request request{{chosen_command(), *program_.module, {}, {}}, {}};
        const CLI::App& parser = *application_.get_subcommands().front();
        for (const CLI::App* each : {&parser, static_cast<const CLI::App*>(&application_)}) {
            for (const CLI::Option* option : each->get_options([](const CLI::Option* o) { return o->count() > 0; })) {
                request.given.names.push_back(option->get_name());
                request.given.values.push_back(option->results());
            }
        }
        return request;
    }

private:
    const Command* chosen_command() const {
        const auto commands = application_.get_subcommands();
        return commands.empty() ? nullptr : &command_named(program_, commands.front()->get_name());
    }

    const Program& program_;
    CLI::App application_;
};

} // namespace

Request parsed(const Program& program, std::vector<std::string> arguments) {
    arguments = prepared_arguments(program, std::move(arguments));
    return Library_Parser(program, arguments).parse(arguments);
}

int run_command_line(const Program& program, std::vector<std::string> arguments) {
    const Request request = parsed(program, std::move(arguments));
    if (!request.given.command) {
        std::cout << request.text;
        return exit_status::done;
    }
    return request.given.command->run(request.given);
}

} // namespace vorna::app
