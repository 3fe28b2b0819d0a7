// Running the built command as a user does.
#include "tests/support/command_line.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/wait.h>
#endif

namespace replay_tests {

namespace {

#if defined(_WIN32)

HANDLE opened(const std::string& path, DWORD access, DWORD creation) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, creation, FILE_ATTRIBUTE_NORMAL,
                       nullptr);
}

// The status of the command, its streams joined to these files. No argument of ours holds quotes or ends in a backslash.
int run(const std::vector<std::string>& arguments, const std::string& in, const std::string& out, const std::string& err) {
    std::string line = '"' + std::string(VORNA_COMMAND) + '"';
    for (const std::string& argument : arguments) {
        line += " \"" + argument + '"';
    }
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = opened(in, GENERIC_READ, OPEN_EXISTING);
    start.hStdOutput = opened(out, GENERIC_WRITE, CREATE_ALWAYS);
    start.hStdError = opened(err, GENERIC_WRITE, CREATE_ALWAYS);
    PROCESS_INFORMATION process = {};
    DWORD status = static_cast<DWORD>(-1);
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process)) {
        WaitForSingleObject(process.hProcess, INFINITE);
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
    }
    for (const HANDLE file : {start.hStdInput, start.hStdOutput, start.hStdError}) {
        CloseHandle(file);
    }
    return static_cast<int>(status);
}

// Lines as programs write them, without what the system adds at their ends.
std::string text_of(std::string written) {
    std::erase(written, '\r');
    return written;
}

#else

std::string quoted(const std::string& argument) {
    return "'" + argument + "'";
}

int run(const std::vector<std::string>& arguments, const std::string& in, const std::string& out, const std::string& err) {
    std::string line = VORNA_EMULATOR + quoted(VORNA_COMMAND); // a cross-built command needs an emulator
    for (const std::string& argument : arguments) {
        line += ' ' + quoted(argument);
    }
    line += " < " + quoted(in) + " > " + quoted(out) + " 2> " + quoted(err);
    const int result = std::system(line.c_str());
    return WIFEXITED(result) ? WEXITSTATUS(result) : -1;
}

std::string text_of(std::string written) {
    return written;
}

#endif

} // namespace

Outcome run_vorna(const std::vector<std::string>& arguments, const std::string& input) {
    const Temporary_Folder folder;
    const std::string errors = folder.file("err"), output = folder.file("out");
    const int status = run(arguments, folder.file("in", input), output, errors);
    return {status, text_of(read_file(errors)), text_of(read_file(output))};
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
