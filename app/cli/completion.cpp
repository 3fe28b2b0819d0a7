// Completion for shells.
#include "app/cli/completion.h"

#include <array>
#include <cctype>
#include <string_view>
#include <utility>
#include <vector>

#include "app/cli/page.h"
#include "drawing/image/color_name.h"
#include "drawing/job/formats.h"

namespace vorna::app::manual {
namespace {

// The values that a shell offers.
struct Candidates {
    std::vector<std::string> words;
    std::vector<std::string> endings; // of files, without the dot; folders beside them
    bool any_file = false, folder = false;
};

template <class Is_Meant> std::vector<std::string> suffixes_of(Is_Meant is_meant) {
    std::vector<std::string> suffixes;
    for (const drawing::Format& format : drawing::formats()) {
        if (is_meant(format)) {
            suffixes.emplace_back(format.suffix);
        }
    }
    return suffixes;
}

// By the name of the kind: FILE.png is a file that ends so.
Candidates candidates_of(const Option_Entry& option) {
    static const std::array<std::pair<std::string_view, std::vector<std::string>>, 6> kinds{{
        {"MODEL", suffixes_of([](const drawing::Format&) { return true; })}, // commands that draw models draw maps too
        {"MAP", suffixes_of([](const drawing::Format& format) { return format.kind == drawing::Input_Kind::map; })},
        {"RECORDING", {"json", "gz", "zst", "cbor"}},
        {"IMAGE", {"png", "jpg", "jpeg", "webp", "tga", "bmp", "dds", "json", "gz", "zst", "cbor"}}, // or a recording
        {"MODULE", {"vrd"}},
        {"FONT", {"ttf", "otf", "ttc", "pfb"}},
    }};
    Candidates candidates;
    candidates.words = option.choices;
    if (option.kind == "COLOR") {
        for (const std::string& name : drawing::color_names()) {
            candidates.words.push_back(name);
        }
    }
    for (const auto& [name, endings] : kinds) {
        if (option.kind == name) {
            candidates.endings = endings;
        }
    }
    const std::size_t dot = option.kind.find('.');
    if (dot != std::string::npos && std::islower(static_cast<unsigned char>(option.kind[dot + 1]))) {
        candidates.endings = {option.kind.substr(dot + 1)};
    }
    if (option.kind == "PALETTE") {
        candidates.words = {"cube"};
    }
    candidates.any_file = option.kind == "FILE" || option.kind == "PALETTE";
    candidates.folder = option.kind == "FOLDER";
    return candidates;
}

std::string joined(const std::vector<std::string>& words, const std::string& between = " ") {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : between) + word;
    }
    return text;
}

std::string short_name_of(const Page& command) {
    return command.name.substr(command.name.find(' ') + 1);
}

std::vector<std::string> names_of(const std::vector<Page>& commands) {
    std::vector<std::string> names;
    names.reserve(commands.size());
    for (const Page& command : commands) {
        names.push_back(short_name_of(command));
    }
    return names;
}

std::string option_words(const Page& page) {
    std::string words;
    for (const Option_Group& group : page.groups) {
        for (const Option_Entry& option : group.options) {
            words += (words.empty() ? "" : " ") + joined(option.names) +
                     (option.value_optional ? " " + option.names.back() + "=" : "");
        }
    }
    return words;
}

// The statement that offers them.
std::string bash_candidates(const Candidates& candidates) {
    std::vector<std::string> statements;
    if (!candidates.words.empty()) {
        statements.push_back("_vorna_words \"" + joined(candidates.words) + "\"");
    }
    if (!candidates.endings.empty()) {
        statements.push_back("_vorna_files " + joined(candidates.endings));
    } else if (candidates.any_file) {
        statements.emplace_back("_vorna_files ''");
    } else if (candidates.folder) {
        statements.emplace_back("_vorna_files");
    }
    return statements.empty() ? ":" : joined(statements, "; ");
}

std::string bash_cases(const Page& page, const std::string& command) {
    std::string text;
    for (const Option_Group& group : page.groups) {
        for (const Option_Entry& option : group.options) {
            if (option.value.empty()) {
                continue;
            }
            std::string pattern;
            for (const std::string& name : option.names) {
                pattern.append(pattern.empty() ? "" : " | ").append(command).append(":").append(name);
            }
            const std::string offered = bash_candidates(candidates_of(option)) + "; return";
            text +=
                "    " + pattern + ") " + (option.value_optional ? "[[ $equals ]] && { " + offered + "; }" : offered) + " ;;\n";
        }
    }
    return text;
}

std::string bash_arguments(const Page& page) {
    return page.arguments.empty() ? ":" : bash_candidates(candidates_of(page.arguments.front()));
}

constexpr const char* bash_start = R"(# bash completion for vorna, written when it was built.
_vorna_words() {
    COMPREPLY+=($(compgen -W "$1" -- "$cur"))
}

# Files with one of these endings, and folders.
_vorna_files() {
    local file ending
    compopt -o filenames 2>/dev/null
    while IFS= read -r file; do
        if [[ -d ${file/#\~\//$HOME/} ]]; then
            COMPREPLY+=("$file")
            continue
        fi
        for ending; do
            if [[ -z $ending || ${file,,} == *".$ending" ]]; then
                COMPREPLY+=("$file")
                break
            fi
        done
    done < <(compgen -f -- "$cur")
}

_vorna() {
    local cur=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD-1]} equals= command= i
    COMPREPLY=()
    # Bash splits --option=value into three words.
    if [[ $cur == = ]]; then
        cur= equals='='
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD-2]} equals='='
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
        --module | --kernels) ((i++)) ;;
        -* | =) ;;
        *) command=${COMP_WORDS[i]}; break ;;
        esac
    done
    case $command:$option in
)";

// zsh's quotes within quotes, and what its own notation would take for a part of them.
std::string zsh_text(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '\''                                       ? "'\\''"
                   : c == '[' || c == ']' || c == ':' || c == '\\' ? std::string("\\") + c
                                                                   : std::string(1, c);
    }
    return escaped;
}

std::string zsh_action(const Candidates& candidates) {
    if (!candidates.endings.empty()) {
        return "_files -g \"(#i)*.(" + joined(candidates.endings, "|") + ")\"";
    }
    if (!candidates.words.empty()) {
        return "(" + joined(candidates.words) + ")";
    }
    return candidates.folder ? "_files -/" : candidates.any_file ? "_files" : "";
}

std::string zsh_argument(const Option_Entry& option, const std::string& name) {
    const bool is_long = name.starts_with("--");
    std::string text = "'";
    if (option.repeated) {
        text += "*";
    } else if (option.names.size() > 1) {
        text += "(" + joined(option.names) + ")";
    }
    text += name +
            (option.value.empty()    ? ""
             : option.value_optional ? "=-"
             : is_long               ? "="
                                     : "+") +
            "[" + zsh_text(option.text) + "]";
    if (!option.value.empty()) {
        text += (option.value_optional ? "::" : ":") + zsh_text(option.value) + ":" + zsh_action(candidates_of(option));
    }
    return text + "'";
}

std::string zsh_arguments(const Page& page, const std::string& indent) {
    std::string text;
    for (const Option_Group& group : page.groups) {
        for (const Option_Entry& option : group.options) {
            for (const std::string& name : option.names) {
                text += " \\\n" + indent + zsh_argument(option, name);
            }
        }
    }
    for (const Option_Entry& argument : page.arguments) {
        text += " \\\n" + indent + "'" + (argument.repeated ? "*" : "") + ":" + zsh_text(argument.value) + ":" +
                zsh_action(candidates_of(argument)) + "'";
    }
    return text;
}

std::string fish_text(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return "'" + escaped + "'";
}

constexpr const char* fish_start = R"(# fish completion for vorna, written when it was built.
# Files with one of these endings, and folders.
function __vorna_files
    set -l word (string replace -r -- '^-[^=]*=' '' (commandline -ct))
    __fish_complete_path $word | string match -rie -- '/(?:\t|$)|\.(?:'$argv')(?:\t|$)'
end

complete -c vorna -f
)";

// What follows an option or stands for an argument.
std::string fish_candidates(const Candidates& candidates) {
    std::vector<std::string> sources;
    if (!candidates.words.empty()) {
        sources.push_back(joined(candidates.words));
    }
    if (!candidates.endings.empty()) {
        sources.push_back("(__vorna_files \"" + joined(candidates.endings, "|") + "\")");
    }
    if (candidates.folder) {
        sources.emplace_back("(__fish_complete_directories)");
    }
    return sources.empty() ? "" : " -a " + fish_text(joined(sources));
}

std::string fish_options(const Page& page, const std::string& condition) {
    std::string text;
    for (const Option_Group& group : page.groups) {
        for (const Option_Entry& option : group.options) {
            const Candidates candidates = candidates_of(option);
            text += "complete -c vorna -n " + condition;
            for (const std::string& name : option.names) {
                text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            if (!option.value.empty() && !option.value_optional) {
                text += candidates.any_file ? " -rF" : " -x";
            }
            text += fish_candidates(candidates) + " -d " + fish_text(option.text) + '\n';
        }
    }
    for (const Option_Entry& argument : page.arguments) {
        text += "complete -c vorna -n " + condition + fish_candidates(candidates_of(argument)) + '\n';
    }
    return text;
}

} // namespace

std::string bash_completion_of(const Page& program) {
    std::string text = bash_start;
    for (const Page& command : program.commands) {
        text += bash_cases(command, short_name_of(command));
    }
    text += bash_cases(program, "") + "    esac\n    [[ $equals ]] && return\n    case $command:$cur in\n";
    for (const Page& command : program.commands) {
        const std::string name = short_name_of(command);
        text += "    " + name + ":-*) _vorna_words \"" + option_words(command) + "\" ;;\n";
        text += "    " + name + ":*) " + bash_arguments(command) + " ;;\n";
    }
    text += "    :-*) _vorna_words \"" + option_words(program) + "\" ;;\n";
    text += "    :*) _vorna_words \"" + joined(names_of(program.commands)) + "\" ;;\n";
    text += "    esac\n    [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace 2>/dev/null\n    return 0\n}\n\ncomplete -F _vorna "
            "vorna\n";
    return text;
}

std::string zsh_completion_of(const Page& program) {
    std::string text = "#compdef vorna\n# zsh completion for vorna, written when it was built.\n_vorna() {\n    local "
                       "curcontext=$curcontext state line\n"
                       "    local -a commands=(";
    for (const Page& command : program.commands) {
        text += "\n        '" + short_name_of(command) + ":" + zsh_text(command.summary) + "'";
    }
    text += "\n    )\n    _arguments -C" + zsh_arguments(program, "        ") +
            " \\\n        '1: :->command' \\\n        '*:: :->arguments' && return\n    case $state in\n"
            "    command) _describe -t commands command commands ;;\n    arguments)\n        case $line[1] in\n";
    for (const Page& command : program.commands) {
        text += "        " + short_name_of(command) + ")\n            _arguments" + zsh_arguments(command, "                ") +
                " ;;\n";
    }
    return text + "        esac ;;\n    esac\n}\n_vorna \"$@\"\n";
}

std::string fish_completion_of(const Page& program) {
    std::string text = fish_start;
    for (const Page& command : program.commands) {
        text += "complete -c vorna -n __fish_use_subcommand -a " + short_name_of(command) + " -d " + fish_text(command.summary) +
                '\n';
    }
    text += fish_options(program, "__fish_use_subcommand");
    for (const Page& command : program.commands) {
        text += fish_options(command, "'__fish_seen_subcommand_from " + short_name_of(command) + "'");
    }
    return text;
}

} // namespace vorna::app::manual
