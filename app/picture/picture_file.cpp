// Pictures in files, plain or compressed.
#include "app/picture/picture_file.h"

#include <new>
#include <stdexcept>
#include <string>

#include "app/gzip.h"
#include "app/input_file.h"
#include "app/picture/document.h"
#include "app/picture/picture_reader.h"
#include "app/picture/picture_writer.h"

namespace app::picture {

namespace {

std::string unpacked(const std::string& text) {
    try {
        return gunzip(text, most_bytes);
    } catch (const std::runtime_error& error) {
        throw Picture_Error(error.what());
    }
}

} // namespace

Picture load(const std::string& path) {
    try {
        const std::string text = read_input(path, most_bytes);
        return read_picture(is_gzip(text) ? unpacked(text) : text);
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(name_of_input(path) + ": not enough memory to read it");
    }
}

std::string file_of(const Picture& picture, const std::string& path) {
    std::string text = json_of(picture);
    if (text.size() > most_bytes) {
        throw std::runtime_error(path + ": the recording would be longer than the " + std::to_string(most_bytes >> 20) +
                                 " MiB that a picture may have");
    }
    return path.ends_with(".gz") ? gzip(text) : text;
}

} // namespace app::picture
