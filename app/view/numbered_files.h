// Names of files in a folder that are not there yet.
#pragma once

#include <string>

namespace vorna::app::view {

class Numbered_Files {
public:
    // file: an input, whose name without ending begins the names.
    Numbered_Files(std::string file, std::string folder);

    // ending: with its point.
    std::string next(const std::string& ending);

private:
    const std::string file_, folder_;
    int number_ = 1;
};

// The name without folders.
std::string file_name_of(const std::string& path);

} // namespace vorna::app::view
