// Files that appear whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace app {

// Files written together: all of them are complete beside their places before the first one moves there. What has not been
// committed is removed.
class Output_Files {
public:
    Output_Files() = default;
    Output_Files(const Output_Files&) = delete;
    Output_Files& operator=(const Output_Files&) = delete;
    ~Output_Files();

    // "-" is standard output, which is written at commit. Throws std::runtime_error that names the file.
    void add(const std::string& name, std::string_view bytes);
    void commit();

private:
    struct Pending {
        std::filesystem::path temporary;
        std::filesystem::path target;
    };
    std::vector<Pending> pending_;
    std::string standard_output_;
};

// One file by itself.
void write_file(const std::string& path, std::string_view bytes);

} // namespace app
