// Running the built command as a user does.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace replay_tests {

struct Outcome {
    int status;
    std::string errors; // what it wrote to standard error
    std::string output; // what it wrote to standard output
};

// Runs `vorna` with these arguments and this standard input.
Outcome run_vorna(const std::vector<std::string>& arguments, const std::string& input = "");

// A folder that is removed with all that is in it.
class Temporary_Folder {
public:
    Temporary_Folder();
    Temporary_Folder(const Temporary_Folder&) = delete;
    Temporary_Folder& operator=(const Temporary_Folder&) = delete;
    ~Temporary_Folder();

    std::string file(const std::string& name) const { return (path_ / name).string(); }
    // Writes the file and returns its path.
    std::string file(const std::string& name, const std::string& bytes) const;
    // Names of everything in the folder, sorted.
    std::vector<std::string> names() const;

private:
    std::filesystem::path path_;
};

std::string read_file(const std::filesystem::path& path);

} // namespace replay_tests
