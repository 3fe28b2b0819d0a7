// Running the built command as a user does.
#include "tests/replay/command_line.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

#include <sys/wait.h>

namespace replay_tests {

namespace {

std::string quoted(const std::string& argument) {
    return "'" + argument + "'";
}

} // namespace

Outcome run_vorna(const std::vector<std::string>& arguments, const std::string& input) {
    const Temporary_Folder folder;
    std::string line = quoted(VORNA_COMMAND);
    for (const std::string& argument : arguments) {
        line += ' ' + quoted(argument);
    }
    line += " < " + quoted(folder.file("in", input)) + " > " + quoted(folder.file("out")) + " 2> " + quoted(folder.file("err"));
    const int result = std::system(line.c_str());
    return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, read_file(folder.file("err"))};
}

Temporary_Folder::Temporary_Folder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() / ("vorna-test-" + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directory(path_);
}

Temporary_Folder::~Temporary_Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string Temporary_Folder::file(const std::string& name, const std::string& bytes) const {
    std::ofstream(path_ / name, std::ios::binary) << bytes;
    return file(name);
}

std::vector<std::string> Temporary_Folder::names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path.string() + ": cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace replay_tests
