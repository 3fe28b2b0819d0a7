// What the command says of arguments that it does not understand.
#include "app/cli/usage.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "app/cli/command.h"
#include "app/cli/nearest_name.h"
#include "app/cli/page.h"

namespace vorna::app {
namespace {

bool takes_no_value(const CLI::Option& option) {
    return option.get_items_expected_max() == 0;
}

const CLI::App* parsed_command(const CLI::App& application) {
    const auto commands = application.get_subcommands();
    return commands.empty() ? &application : commands.front();
}

std::vector<std::string> command_names(const CLI::App& application) {
    std::vector<std::string> names;
    for (const CLI::App* command : application.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
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

bool is_option_of(const CLI::App& command, const std::string& text) {
    return text.size() > 1 && text.front() == '-' &&
           (command.get_option_no_throw(text) || (command.get_parent() && is_option_of(*command.get_parent(), text)));
}

std::string ask_help(const manual::Page& page, const std::string& hint, const char* what) {
    return hint + (hint.empty() ? "; " : " ") + page.name + " --help " + what;
}

std::string short_name_of(const manual::Page& page) {
    return page.name.substr(page.name.find(' ') + 1);
}

// What nothing was expected of.
std::string message_of_extra(const manual::Page& page, const std::string& extra) {
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

std::string value_name_of(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

std::string message_of_missing(const CLI::App& command) {
    const auto options = command.get_options([](const CLI::Option* o) { return o->get_required() && o->count() == 0; });
    std::string wanted = "more";
    if (!options.empty()) {
        const CLI::Option& first = *options.front();
        const std::string name = first.get_snames().empty() ? first.get_name() : "-" + first.get_snames().front();
        wanted = (first.get_positional() ? "" : name + " ") + value_name_of(first);
    }
    const manual::Page page = manual::page_of(command);
    return short_name_of(page) + ": expected " + wanted + ", found none" + ask_help(page, "", "tells what it takes");
}

std::string message_of_no_command(const CLI::App& application, const std::vector<std::string>& rest) {
    const manual::Page page = manual::page_of(application);
    if (rest.empty()) {
        return "expected a command, found none" + ask_help(page, "", "lists them");
    }
    const std::string& found = rest.front();
    if (found.size() > 1 && found.front() == '-') {
        return message_of_extra(page, found);
    }
    return "expected a command, found '" + found + "'" +
           ask_help(page, nearest_name(found, command_names(application)), "lists them");
}

// Options that go together, or do not; empty when all is well.
std::string message_of_company(const CLI::App& command) {
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

// The parser's message begins with the option's name.
std::string message_of_count(const CLI::App& command, const std::string& message) {
    const std::string name = message.substr(0, message.find(':'));
    const CLI::Option* option = command.get_option_no_throw(name);
    if (!option && command.get_parent()) {
        option = command.get_parent()->get_option_no_throw(name);
    }
    if (!option) {
        return message;
    }
    if (option->count() > 1) {
        return name + ": expected once, found " + std::to_string(option->count()) + " times";
    }
    return name + ": expected " + value_name_of(*option) + " behind it, found nothing";
}

void check_option(CLI::App& command, CLI::Option& option) {
    if (takes_no_value(option)) {
        if (!option.get_fnames().empty()) {
            option.multi_option_policy(CLI::MultiOptionPolicy::Throw);
        } else {
            option.check([](const std::string& text) {
                return text == "true" ? std::string() : "expected no value, found '" + text + "'";
            });
        }
        return;
    }
    option.check([&command, &option](const std::string& text) -> std::string {
        const std::string expected = "expected " + value_name_of(option);
        if (text.empty()) {
            return expected + ", found ''";
        }
        if (text.front() == '=' && !option.get_snames().empty()) {
            return expected + " without =, found '" + text + "'";
        }
        return is_option_of(command, text) ? expected + ", found the option " + text : "";
    });
}

} // namespace

void refuse_what_makes_no_sense(CLI::App& application) {
    std::vector<CLI::App*> commands = application.get_subcommands([](CLI::App*) { return true; });
    commands.push_back(&application);
    for (CLI::App* command : commands) {
        for (CLI::Option* option : command->get_options()) {
            check_option(*command, *option);
        }
    }
}

std::vector<std::string> prepared_arguments(const CLI::App& application, std::vector<std::string> arguments) {
    const auto rest = std::ranges::find(arguments, "--");
    if (rest != arguments.end()) {
        for (auto file = rest + 1; file != arguments.end(); ++file) {
            if (file->size() > 1 && file->front() == '-') {
                file->insert(0, "./");
            }
        }
        arguments.erase(rest);
    }
    const std::vector<std::string> names = command_names(application);
    const auto name = std::ranges::find_first_of(arguments, names);
    if (name == arguments.end()) {
        return arguments;
    }
    for (const manual::Option_Group& group : manual::page_of(*application.get_subcommand(*name)).groups) {
        for (const manual::Option_Entry& option : group.options) {
            const auto given = option.value_optional ? std::ranges::find_first_of(arguments, option.names) : arguments.end();
            if (given != arguments.end() && given + 1 != arguments.end() &&
                std::ranges::find(option.choices, *(given + 1)) != option.choices.end()) {
                throw drawing::Usage_Error(*given + ": expected " + *given + "=" + *(given + 1) + ", found '" + *given + " " +
                                           *(given + 1) + "'; a file of that name is ./" + *(given + 1));
            }
        }
    }
    return arguments;
}

std::string usage_message(const CLI::App& application, const CLI::ParseError& error) {
    const CLI::App& command = *parsed_command(application);
    const std::vector<std::string> rest = application.remaining(true);
    if (&command == &application && dynamic_cast<const CLI::RequiredError*>(&error)) {
        return message_of_no_command(application, rest);
    }
    const bool misses = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const bool in_company = dynamic_cast<const CLI::RequiresError*>(&error) || dynamic_cast<const CLI::ExcludesError*>(&error);
    // A misspelt option is why another one is missing.
    if (!rest.empty() && (misses || in_company || dynamic_cast<const CLI::ExtrasError*>(&error))) {
        return message_of_extra(manual::page_of(command), rest.front());
    }
    if (misses) {
        return message_of_missing(command);
    }
    if (std::string message = message_of_company(command); in_company && !message.empty()) {
        return message;
    }
    return dynamic_cast<const CLI::ArgumentMismatch*>(&error) ? message_of_count(command, error.what()) : error.what();
}

} // namespace vorna::app
