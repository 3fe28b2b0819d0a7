// Files that are written together, and their names.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drawing/files/interruption.h"
#include "drawing/files/output_file.h"

namespace vorna::drawing {

// Files written together: all of them are complete beside their places before the first one moves there. After the first file of
// which that is true, an interrupt takes effect in add and commit, which throw Interrupted.
class Output_Files {
public:
    // Throw std::runtime_error that names the file, and Usage_Error for one that is written already.
    void add(const std::string& name, std::string_view bytes);
    void add(const std::string& name, const std::function<void(Output_File&)>& write); // which writes all its bytes
    void add(std::unique_ptr<Output_File> file);                                       // that has all its bytes
    // Writes standard output and the like first, because that fails more often than moving files does: then no file appears.
    void commit();

private:
    std::optional<Interruption> interruption_;
    std::vector<std::unique_ptr<Output_File>> files_;
    bool has_standard_output_ = false;
};

// Throws Usage_Error when a file to be written is one of those that are read, whatever links lead to it, or two of those to be
// written are the same. Empty names stand for none; devices and standard streams may be both.
void refuse_same_files(const std::vector<std::string>& read, const std::vector<std::string>& written);

// Whether it is standard output, as "-" or under one of the names that the system gives it.
bool is_standard_output(const std::string& name);

} // namespace vorna::drawing
