// The text of --help.
#include "app/cli/help.h"

#include <sstream>

#include "app/cli/page.h"

namespace vorna::app::manual {
namespace {

constexpr std::size_t width = 80, text_column = 26;

// Words from a column on, in as many lines as they need; the first one begins behind what stands there.
std::string wrapped(const std::string& text, std::size_t column, std::size_t at) {
    std::string lines;
    std::istringstream stream(text);
    stream.exceptions(std::ios::badbit); // a failed allocation must not cut the text short
    for (std::string word; stream >> word;) {
        if (at > column && at + 1 + word.size() > width) {
            lines += '\n';
            at = 0;
        }
        const std::size_t space = at < column ? column - at : at == column ? 0 : 1;
        lines += std::string(space, ' ') + word;
        at += space + word.size();
    }
    return lines + '\n';
}

// A name and what it means, beside it or below.
std::string row(const std::string& name, const std::string& text) {
    const std::string start = "  " + name;
    return start.size() < text_column ? start + wrapped(text, text_column, start.size())
                                      : start + '\n' + wrapped(text, text_column, 0);
}

std::string name_of(const Option_Entry& option) {
    std::string text;
    for (const std::string& name : option.names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return option.names.empty() ? option.value : text + value_text_of(option);
}

// Words that belong together stand together: a command stays in one line, what it does is wrapped.
std::string section_text(const Section& section) {
    std::string text = '\n' + section.title + ":\n";
    for (const std::string& line : section.lines) {
        text += "  " + line + '\n';
    }
    return text;
}

} // namespace

std::string help_of(const Page& page) {
    std::string text = wrapped(page.summary, 0, 0) + "\nUsage: " + page.name + synopsis_of(page) + '\n';
    if (!page.commands.empty()) {
        text += "\nCommands:\n";
        for (const Page& command : page.commands) {
            text += row(command.name.substr(page.name.size() + 1), command.summary);
        }
    }
    if (!page.arguments.empty()) {
        text += "\nArguments:\n";
        for (const Option_Entry& argument : page.arguments) {
            text += row(name_of(argument), argument.text);
        }
    }
    for (const Option_Group& group : page.groups) {
        text += '\n' + group.title + ":\n";
        for (const Option_Entry& option : group.options) {
            text += row(name_of(option), option.text);
        }
    }
    for (const Section& section : page.sections) {
        text += section_text(section);
    }
    return text;
}

} // namespace vorna::app::manual
