// Writes manual pages and completions into a folder, when the command is built: share/ as it is installed.
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "app/cli/command_line.h"
#include "app/cli/completion.h"
#include "app/cli/page.h"
#include "app/cli/roff.h"
#include "vorna/version.h"

namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw std::runtime_error(path.string() + ": cannot be written");
    }
}

void write_all(const fs::path& folder) {
    using namespace vorna::app::manual;
    const Page program = page_of(vorna::app::make_program());
    write(folder / "man/man1/vorna.1", roff_of(program, program, VORNA_VERSION_TEXT));
    for (const Page& command : program.commands) {
        write(folder / "man/man1" / (file_name_of(command) + ".1"), roff_of(command, program, VORNA_VERSION_TEXT));
    }
    write(folder / "bash-completion/completions/vorna", bash_completion_of(program));
    write(folder / "zsh/vendor-completions/_vorna", zsh_completion_of(program));
    write(folder / "fish/vendor_completions.d/vorna.fish", fish_completion_of(program));
}

} // namespace

int main(int count, char** arguments) {
    try {
        if (count != 2) {
            throw std::runtime_error("expected a folder");
        }
        write_all(arguments[1]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "vorna_manual: " << error.what() << '\n';
        return 1;
    }
}
