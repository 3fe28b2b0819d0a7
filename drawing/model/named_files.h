// Files that a model, or a file that belongs to it, names.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "drawing/files/load_limits.h"

namespace vorna::drawing::model {

// A name is relative to the file that has it; else the file lies beside that one under the same name whatever its capitals, as on
// the machine that it was written on. Folders may be parted by either slash. Each folder is listed once.
class Named_Files {
public:
    // model: whose folder the files must lie in, unless the limits allow more. Both must outlive the object.
    Named_Files(const std::string& model, Load_Limits& limits) : model_(model), limits_(limits) {}

    // The path of a file that is there. What lies outside is not even looked for.
    std::optional<std::string> find(const std::string& file, const std::string& name);
    // That path, or where the file should be.
    std::string path(const std::string& file, const std::string& name);

private:
    using Names = std::map<std::string, std::string>; // in lower case, and as they are

    const Names& names_in(const std::filesystem::path& folder);

    const std::string& model_;
    Load_Limits& limits_;
    std::map<std::string, Names> folders_;
};

} // namespace vorna::drawing::model
