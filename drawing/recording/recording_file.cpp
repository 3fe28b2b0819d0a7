// Recordings in files, plain or compressed.
#include "drawing/recording/recording_file.h"

#include <new>
#include <stdexcept>
#include <string>

#include "drawing/files/gzip.h"
#include "drawing/files/input_file.h"
#include "drawing/files/json_memory.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/recording_writer.h"

namespace vorna::drawing::recording {

Recording load(const std::string& path, Load_Limits& limits) {
    const std::string name = name_of_input(path);
    try {
        std::string text = read_input(path, limits, most_bytes);
        if (is_gzip(text)) {
            text = unpacked_input(name, text, limits, most_bytes);
        }
        limits.take_memory(name, json_memory(text) + 2 * text.size());
        return read_recording(text);
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(name + ": not enough memory to read it");
    }
}

std::string file_of(const Recording& recording, const std::string& path) {
    std::string text = json_of(recording);
    if (text.size() > most_bytes) {
        throw std::runtime_error(path + ": the recording would be longer than the " + std::to_string(most_bytes >> 20) +
                                 " MiB that a recording may have");
    }
    return path.ends_with(".gz") ? gzip(text) : text;
}

} // namespace vorna::drawing::recording
