// Manual pages in roff's macros.
#include "app/cli/roff.h"

#include <algorithm>
#include <cctype>

#include "app/cli/page.h"

namespace vorna::app::manual {
namespace {

// As it is: roff would take a hyphen for a dash between words, and a line that begins with a dot for a macro.
std::string plain(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return escaped.starts_with('.') || escaped.starts_with('\'') ? "\\&" + escaped : escaped;
}

std::string bold(const std::string& text) {
    return "\\fB" + plain(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + plain(text) + "\\fR";
}

std::string upper(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string heading(const std::string& title) {
    return ".SH " + upper(title) + '\n';
}

std::string entry(const std::string& name, const std::string& text) {
    return ".TP\n" + name + '\n' + plain(text) + '\n';
}

std::string name_of(const Option_Entry& option) {
    std::string text;
    for (const std::string& name : option.names) {
        text += (text.empty() ? "" : ", ") + bold(name);
    }
    if (option.names.empty()) {
        return italic(option.value);
    }
    const std::string value = value_text_of(option);
    return text + (option.value_optional ? plain(value) : value.empty() ? "" : " " + italic(option.value));
}

// Commands with what they do below them; everything else stands as it is written.
std::string section_text(const Section& section) {
    std::string text = heading(section.title);
    const bool examples = section.title == "Examples", table = section.title != "Exit status" && !examples;
    text += table ? ".nf\n" : "";
    for (const std::string& line : section.lines) {
        if (examples) {
            text += line.starts_with("    ") ? plain(line.substr(4)) + '\n' : ".TP\n" + bold(line) + '\n';
        } else {
            text += plain(line) + '\n';
        }
    }
    return text + (table ? ".fi\n" : "");
}

std::string reference(const Page& page) {
    return bold(file_name_of(page)) + "(1)";
}

} // namespace

std::string file_name_of(const Page& page) {
    std::string name = page.name;
    std::ranges::replace(name, ' ', '-');
    return name;
}

std::string roff_of(const Page& page, const Page& program, const std::string& version) {
    const std::string name = file_name_of(page);
    std::string summary = page.summary;
    summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    summary.resize(summary.size() - (summary.ends_with('.') ? 1 : 0));
    std::string text = ".TH " + upper(name) + " 1 \"\" \"vorna " + version + "\" \"User Commands\"\n";
    text += heading("Name") + name + " \\- " + plain(summary) + '\n';
    text += heading("Synopsis") + bold(page.name) + plain(synopsis_of(page)) + '\n';
    if (!page.commands.empty()) {
        text += heading("Commands");
        for (const Page& command : page.commands) {
            text += entry(bold(command.name.substr(page.name.size() + 1)),
                          command.summary + " See " + file_name_of(command) + "(1).");
        }
    }
    if (!page.arguments.empty()) {
        text += heading("Arguments");
        for (const Option_Entry& argument : page.arguments) {
            text += entry(name_of(argument), argument.text + '.');
        }
    }
    text += heading("Options");
    for (const Option_Group& group : page.groups) {
        text += ".SS " + group.title + '\n';
        for (const Option_Entry& option : group.options) {
            text += entry(name_of(option), option.text + '.');
        }
    }
    for (const Section& section : page.sections) {
        text += section_text(section);
    }
    if (&page == &program) {
        text += heading("Environment") + entry(bold("KRB_KERNELS"), "The instruction set to draw with, as --kernels names it.");
    }
    std::string others = &page == &program ? "" : reference(program);
    for (const Page& command : program.commands) {
        if (command.name != page.name) {
            others += (others.empty() ? "" : ",\n") + reference(command);
        }
    }
    return text + heading("See also") + others + '\n';
}

} // namespace vorna::app::manual
