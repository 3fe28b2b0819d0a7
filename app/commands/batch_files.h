// The files of a batch, and what became of each.
#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vorna::app {

// The files as given; the files of a list, one name a line, without empty lines; and in place of a folder the files in it that
// can be read by their suffixes, in the order of their names. list: empty = none, "-" = standard input. Throws Usage_Error.
std::vector<std::string> batch_files(const std::vector<std::string>& given, const std::string& list);

// A file with a line of JSON for each image, written as the images are finished, so that it tells of every image also when the
// process is killed. Existing lines are kept.
class Manifest {
public:
    // name: empty = nothing is written, "-" = standard output. Throws std::runtime_error.
    explicit Manifest(const std::string& name);

    // status: drawn, kept or failed; message: why it failed. For any thread. Throws std::runtime_error.
    void add(const std::string& file, const std::string& image, const char* status, const std::string& message, double seconds);

private:
    struct Close {
        void operator()(std::FILE* file) const noexcept {
            if (file != stdout) {
                std::fclose(file);
            }
        }
    };

    std::string name_;
    std::unique_ptr<std::FILE, Close> file_;
    std::mutex writing_;
};

} // namespace vorna::app
